#pragma once

#include <string>
#include <string_view>

// PostgreSQL addresses and the passwords in them. An address that is stored or shown has none.

/// The address without passwords: behind the user's name, and as "password" and "sslpassword" among the options,
/// however they are spelled. A password with bare '/' or '@' in it, which makes the address wrong, goes as well.
/// A folder comes back as it is.
std::string WithoutPassword(std::string_view archive);

/// True when a PostgreSQL address carries a password.
bool HasPassword(std::string_view archive);

/// The address with this password in place of any other; of a folder, the folder.
std::string WithPassword(std::string_view archive, std::string_view password);

/// True for the text of a failed connection that says the server asks for a password and none was at hand, neither in
/// the environment nor in the user's password file.
bool AsksForPassword(std::string_view error_text);

/// What a person calls the place: the folder, or "utente@server/database" of an address, as far as it names them.
std::string ArchivePlace(const std::string &archive);

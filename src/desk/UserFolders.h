#pragma once

#include <filesystem>
#include <string>

// Where the files of one user lie, by the rules of the XDG base directories.

/// An environment variable; empty when it is not set.
std::string Environment(const char *name);

/// The data folder of this user: $XDG_DATA_HOME/lumera or ~/.local/share/lumera.
std::filesystem::path UserDataFolder();
/// The folder of what the user prefers: $XDG_CONFIG_HOME/lumera or ~/.config/lumera.
std::filesystem::path UserConfigFolder();
/// Where the files of a PostgreSQL company go: a folder named after the database.
std::filesystem::path DataFolderOf(const std::string &archive);
/// The archive that is meant when none is named: $LUMERA_ARCHIVIO, else "archivio" in the data folder.
std::string DefaultArchive();

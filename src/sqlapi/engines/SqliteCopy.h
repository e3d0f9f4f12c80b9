#pragma once

#include <string>

struct sqlite3;

/// Copies a whole database, as it is at one instant, into a file that does not exist yet. Writers are not held up.
/// @param path  of the source, for the check that it is not copied onto itself
/// @throws SAException; then no file is left behind
void CopySqliteDatabase(sqlite3 *source, const std::string &path, const std::string &file);

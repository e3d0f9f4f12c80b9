#pragma once

#include "sqlapi/SACommand.h"

#include <filesystem>

/// Copies the current company's archive into a new embedded archive file, consistent while others work: of an embedded
/// archive by the engine's own backup, of a PostgreSQL one table by table within one read transaction. The file is
/// written beside its place and renamed when it is whole.
/// @return the number of rows copied, 0 for a backup by the engine
/// @throws SAException, FileError; then no file is left
long CopyArchive(SACommand *cmd, const std::filesystem::path &file);

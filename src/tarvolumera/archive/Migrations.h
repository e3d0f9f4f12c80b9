#pragma once

#include "sqlapi/SACommand.h"

/// The archive version this program writes: the number of the last file in schema/ ("0001_archivio.sql" is 1).
long ProgramArchiveVersion();

/// The version of the connected archive. @throws SAException Corrupt when it is no archive of ours
long ArchiveVersion(SACommand *cmd);

/// Throws unless the archive has this program's version: a newer one is refused (SA_UserGenerated_Error), an older one
/// is brought up first with MigrateArchive.
void RequireKnownVersion(SACommand *cmd);

/// Runs the archive files above the stored version, each in a transaction of its own together with its version number,
/// so that a run which breaks off goes on where it stopped. An empty database becomes an archive.
/// @return the number of files run
int MigrateArchive(SACommand *cmd);

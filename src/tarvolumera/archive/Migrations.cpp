#include "tarvolumera/archive/Migrations.h"

#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/TarvoPostgreSQL.h"
#include "tarvolumera/archive/Resources.h"
#include "tarvolumera/archive/SchemaText.h"

#include <charconv>
#include <fmt/format.h>

namespace {

long VersionOf(std::string_view file)
{
    long version = 0;
    std::from_chars(file.data(), file.data() + file.size(), version);
    return version;
}

bool IsEmpty(SACommand *cmd)
{
    const bool postgres = cmd->Connection()->Engine() == SAEngine::PostgreSQL;
    SACommand query(cmd->Connection(),
                    postgres ? "SELECT COUNT(*) AS numrec FROM information_schema.tables WHERE table_schema = 'admin'"
                             : "SELECT COUNT(*) AS numrec FROM admin.sqlite_master");
    query.Execute();
    return query.FetchNext() && query.Field("numrec").asLong() == 0;
}

/// Stations that open the same archive after an update all want to bring it up: the first one does, the others wait for
/// it. On SQLite a write transaction is that lock already.
void LockVersion(SACommand *cmd)
{
    if (cmd->Connection()->Engine() != SAEngine::PostgreSQL) return;
    SACommand lock(cmd->Connection(), "LOCK TABLE admin.versione IN EXCLUSIVE MODE");
    lock.Execute();
}

/// @return false when another station has run it meanwhile
bool RunFile(SACommand *cmd, std::string_view file)
{
    SATransaction transaction(cmd);
    const long version = VersionOf(file);
    if (version > 1) {
        LockVersion(cmd);
        if (ArchiveVersion(cmd) >= version) return false;
    } else if (cmd->Connection()->Engine() == SAEngine::PostgreSQL) {
        cmd->Connection()->ExecuteScript("CREATE SCHEMA IF NOT EXISTS admin;");
    }
    for (const std::string &statement : SchemaStatements(ResourceText(file))) {
        SACommand run(cmd->Connection(), statement);
        run.Execute();
    }
    SACommand record(
        cmd->Connection(),
        "INSERT INTO admin.versione (ver_numero, ver_data, ver_programma) VALUES (:numero, :data, :programma)");
    record.Param("numero").setAsLong(version);
    record.Param("data").setAsDateTime(ToSqlDate(CurrentUserInterface().Today()));
    record.Param("programma").setAsString(LUMERA_VERSION);
    record.Execute();
    transaction.Commit();
    return true;
}

} // namespace

long ProgramArchiveVersion()
{
    long version = 0;
    for (const std::string_view file : ResourceNames("0")) version = std::max(version, VersionOf(file));
    return version;
}

long ArchiveVersion(SACommand *cmd)
{
    try {
        SACommand query(cmd->Connection(), "SELECT MAX(ver_numero) AS versione FROM admin.versione");
        query.Execute();
        return query.FetchNext() ? query.Field("versione").asLong() : 0;
    } catch (const SAException &error) {
        if (!CTarvoPostgreSQL::IsTableNotExistErr(error)) throw;
        throw SAException(SA_UserGenerated_Error, 20070, "Il database non è un archivio di Lumera Contabilità.",
                          SAFault::Corrupt);
    }
}

void RequireKnownVersion(SACommand *cmd)
{
    const long stored = ArchiveVersion(cmd);
    const long known = ProgramArchiveVersion();
    if (stored > known)
        throw SAException(SA_UserGenerated_Error, 20071,
                          fmt::format("L'archivio è di una versione più recente del programma ({} contro {}).\n\n"
                                      "Aggiornare il programma per aprirlo.",
                                      stored, known));
    if (stored < known) MigrateArchive(cmd);
}

int MigrateArchive(SACommand *cmd)
{
    const long stored = IsEmpty(cmd) ? 0 : ArchiveVersion(cmd);
    int run = 0;
    for (const std::string_view file : ResourceNames("0")) {
        if (VersionOf(file) > stored && RunFile(cmd, file)) ++run;
    }
    return run;
}

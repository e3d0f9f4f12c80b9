#include "sqlapi/engines/SqliteFaults.h"

#include <sqlite3.h>

#include <cerrno>
#include <string>

namespace {

SAFault OfConstraint(int extended)
{
    switch (extended) {
    case SQLITE_CONSTRAINT_UNIQUE:
    case SQLITE_CONSTRAINT_PRIMARYKEY:
    case SQLITE_CONSTRAINT_ROWID:
        return SAFault::UniqueViolation;
    case SQLITE_CONSTRAINT_FOREIGNKEY:
        return SAFault::ForeignKeyViolation;
    case SQLITE_CONSTRAINT_CHECK:
        return SAFault::CheckViolation;
    case SQLITE_CONSTRAINT_NOTNULL:
        return SAFault::NotNullViolation;
    default:
        return SAFault::Other;
    }
}

// SQLite has one code for all errors of a text; only the message tells a missing table from a misspelt word.
SAFault OfText(const std::string &message, StatementKind::Subject subject)
{
    if (!message.starts_with("no such table") && !message.starts_with("no such view")) return SAFault::Other;
    if (subject == StatementKind::Subject::Table) return SAFault::TableNotFound;
    if (subject == StatementKind::Subject::View) return SAFault::ViewNotFound;
    return SAFault::RelationNotFound;
}

SAFault FaultOf(sqlite3 *database, int code, const std::string &message, StatementKind::Subject subject)
{
    switch (code & 0xff) {
    case SQLITE_CONSTRAINT:
        return OfConstraint(code);
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return SAFault::Busy;
    case SQLITE_FULL:
        return SAFault::DiskFull;
    case SQLITE_READONLY:
        return SAFault::ReadOnly;
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
        return SAFault::Corrupt;
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
        return SAFault::CannotOpen;
    case SQLITE_ERROR:
        return OfText(message, subject);
    case SQLITE_IOERR: {
        const int system = sqlite3_system_errno(database);
        return system == ENOSPC || system == EDQUOT ? SAFault::DiskFull : SAFault::Other;
    }
    default:
        return SAFault::Other;
    }
}

} // namespace

SAException SqliteError(sqlite3 *database, int code, StatementKind::Subject subject)
{
    const int last = sqlite3_extended_errcode(database);
    // The database knows the extended code unless the call failed before it got there.
    const bool is_same = (last & 0xff) == (code & 0xff);
    const int extended = is_same ? last : code;
    const std::string message = is_same ? sqlite3_errmsg(database) : sqlite3_errstr(code);
    return {SA_DBMS_API_Error, extended, message, FaultOf(database, extended, message, subject)};
}

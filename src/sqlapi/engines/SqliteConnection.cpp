#include "sqlapi/engines/SqliteConnection.h"

#include "sqlapi/engines/SqliteCopy.h"
#include "sqlapi/engines/SqliteFaults.h"
#include "sqlapi/engines/SqliteFunctions.h"
#include "sqlapi/engines/SqliteStatement.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <thread>

namespace {

// SQLite keeps the pointer, so the text must outlive every connection.
constexpr char kSchemaName[] = "admin";

sqlite3 *OpenFile(const std::string &path, SAOpenMode mode)
{
    std::error_code error;
    const auto type = std::filesystem::status(path, error).type();
    if (type == std::filesystem::file_type::not_found && mode == SAOpenMode::Existing)
        throw SAException(SA_DBMS_API_Error, SQLITE_CANTOPEN, "file inesistente: " + path, SAFault::CannotOpen);
    if (type == std::filesystem::file_type::directory)
        throw SAException(SA_DBMS_API_Error, SQLITE_CANTOPEN_ISDIR, "this is a folder: " + path, SAFault::CannotOpen);

    // One thread uses a session at a time, so SQLite's own locking of the handle would only cost.
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    if (mode == SAOpenMode::Create) flags |= SQLITE_OPEN_CREATE;
    sqlite3 *database = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &database, flags, nullptr);
    if (code == SQLITE_OK) return database;
    SAException failure = SqliteError(database, code);
    sqlite3_close_v2(database);
    throw SAException(SA_DBMS_API_Error, failure.ErrNativeCode(), failure.ErrText() + ": " + path, failure.Fault());
}

} // namespace

SqliteConnection::SqliteConnection(const std::string &path, SAOpenMode mode)
    : path_(path), database_(OpenFile(path, mode))
{
    Configure();
    identity_ = Identify(path_);
}

SqliteConnection::~SqliteConnection()
{
    DropStatements();
}

void SqliteConnection::Configure()
{
    sqlite3 *database = database_.get();
    sqlite3_db_config(database, SQLITE_DBCONFIG_MAINDBNAME, kSchemaName);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    sqlite3_busy_handler(database, OnBusy, this);
    RegisterSqliteFunctions(database);
    UseWriteAheadLog();
    RunControl("PRAGMA synchronous=FULL");
    RunControl("PRAGMA foreign_keys=ON");
    RunControl("PRAGMA case_sensitive_like=ON");
    RunControl("PRAGMA temp_store=MEMORY");
    RunControl("PRAGMA cache_size=-16384");
    RunControl("PRAGMA journal_size_limit=67108864");
}

// The change to write-ahead logging happens once in the life of a file and needs it alone; SQLite reports a lock there
// without asking the busy handler. An archive on a read-only medium stays as it is.
void SqliteConnection::UseWriteAheadLog()
{
    for (int attempt = 0;; ++attempt) {
        const int code = TryRun("PRAGMA journal_mode=WAL");
        if ((code & 0xff) == SQLITE_BUSY && OnBusy(this, attempt) != 0) continue;
        if (code == SQLITE_OK || (code & 0xff) == SQLITE_READONLY) return;
        SAException failure = SqliteError(database_.get(), code);
        throw SAException(SA_DBMS_API_Error, failure.ErrNativeCode(), failure.ErrText() + ": " + path_,
                          failure.Fault());
    }
}

// Waits grow from 1 to 50 ms and are never the same twice, so that stations that met once do not meet again.
int SqliteConnection::OnBusy(void *self, int calls)
{
    using namespace std::chrono;
    auto *connection = static_cast<SqliteConnection *>(self);
    const auto now = steady_clock::now();
    if (calls == 0) connection->busy_since_ = now;
    if (now - connection->busy_since_ >= kBusyLimit) return 0;
    thread_local std::minstd_rand random{std::random_device{}()};
    const int longest_us = std::min(50'000, 1'000 << std::min(calls, 6));
    std::this_thread::sleep_for(microseconds(std::uniform_int_distribution<int>(longest_us / 2, longest_us)(random)));
    return 1;
}

int SqliteConnection::TryRun(const char *text)
{
    return sqlite3_exec(database_.get(), text, nullptr, nullptr, nullptr);
}

void SqliteConnection::RunControl(const char *text)
{
    if (const int code = TryRun(text); code != SQLITE_OK) throw SqliteError(database_.get(), code);
}

bool SqliteConnection::SettleReaders()
{
    if (readers_.empty()) return false;
    const std::vector<SqliteStatement *> readers = std::move(readers_);
    readers_.clear();
    for (SqliteStatement *reader : readers) reader->TakeRest();
    return true;
}

std::shared_ptr<EngineStatement> SqliteConnection::Prepare(const std::string &text, const StatementKind &kind)
{
    return std::make_shared<SqliteStatement>(*this, text, kind);
}

void SqliteConnection::RunText(std::string_view text, const StatementKind &kind)
{
    SqliteStatement statement(*this, std::string(text), kind);
    statement.Execute({});
    while (statement.FetchNext()) {
    }
}

void SqliteConnection::Begin(SATransactionKind kind)
{
    EndReadOnly(); // left on when the text of a command ended the transaction
    if (kind == SATransactionKind::Read) {
        RunControl("BEGIN DEFERRED");
        is_read_transaction_ = true;
        RunControl("PRAGMA query_only=ON");
        return;
    }
    int code = TryRun("BEGIN IMMEDIATE");
    // An open query pins the state it reads. When another station has stored something since, SQLite refuses to write
    // on top of that state; waiting would not help.
    if ((code & 0xff) == SQLITE_BUSY && SettleReaders()) code = TryRun("BEGIN IMMEDIATE");
    if (code != SQLITE_OK) throw SqliteError(database_.get(), code);
}

void SqliteConnection::Commit()
{
    EndReadOnly();
    // A full disk makes SQLite roll back by itself.
    if (!InTransaction()) throw SAException(SA_DBMS_API_Error, SQLITE_ABORT, "the transaction was rolled back");
    const int code = TryRun("COMMIT");
    if (code == SQLITE_OK) return;
    const SAException failure = SqliteError(database_.get(), code);
    Rollback();
    throw failure;
}

void SqliteConnection::Rollback()
{
    EndReadOnly();
    if (!InTransaction()) return;
    SettleReaders(); // their rows outlive the transaction, as on the server
    RunControl("ROLLBACK");
}

void SqliteConnection::EndReadOnly()
{
    if (!is_read_transaction_) return;
    is_read_transaction_ = false;
    RunControl("PRAGMA query_only=OFF");
}

void SqliteConnection::SetDurability(SADurability durability)
{
    RunControl(durability == SADurability::Full ? "PRAGMA synchronous=FULL" : "PRAGMA synchronous=NORMAL");
    durability_ = durability;
}

void SqliteConnection::CopyTo(const std::string &file)
{
    CopySqliteDatabase(database_.get(), path_, file);
}

bool SqliteConnection::IsUsable()
{
    return Identify(path_) == identity_ && identity_ != FileIdentity{};
}

SqliteConnection::FileIdentity SqliteConnection::Identify(const std::string &path)
{
    struct stat info = {};
    if (stat(path.c_str(), &info) != 0) return {};
    return {static_cast<std::uint64_t>(info.st_dev), static_cast<std::uint64_t>(info.st_ino)};
}

#include "sqlapi/engines/PostgresConnection.h"

#include "sqlapi/engines/PostgresFaults.h"
#include "sqlapi/engines/PostgresStatement.h"

#include <fmt/format.h>
#include <poll.h>

#include <cstring>

namespace {

constexpr std::size_t kRetiredAtOnce = 16;

/// The password of the address, so that it can be kept out of messages.
std::string PasswordOf(const std::string &target)
{
    char *reason = nullptr;
    PQconninfoOption *options = PQconninfoParse(target.c_str(), &reason);
    if (options == nullptr) {
        // The library's reason quotes the address, password included.
        PQfreemem(reason);
        throw SAException(SA_Library_Error, 0, "the PostgreSQL address cannot be read", SAFault::CannotOpen);
    }
    std::string password;
    for (const PQconninfoOption *option = options; option->keyword != nullptr; ++option)
        if (std::strcmp(option->keyword, "password") == 0 && option->val != nullptr) password = option->val;
    PQconninfoFree(options);
    return password;
}

PGconn *OpenSession(const std::string &target)
{
    const std::string password = PasswordOf(target);
    // What stands before "dbname" can be overruled by the address.
    const char *keywords[] = {"connect_timeout", "fallback_application_name", "dbname", "client_encoding", nullptr};
    const char *values[] = {"15", "Lumera Contabilita", target.c_str(), "UTF8", nullptr};
    PGconn *connection = PQconnectdbParams(keywords, values, 1);
    if (connection == nullptr) throw std::bad_alloc();
    if (PQstatus(connection) == CONNECTION_OK) return connection;
    const SAException failure = PostgresOpenError(connection, password);
    PQfinish(connection);
    throw failure;
}

void IgnoreNotice(void *, const PGresult *) {}

} // namespace

PostgresConnection::PostgresConnection(const std::string &target) : connection_(OpenSession(target))
{
    PQsetNoticeReceiver(connection_.get(), IgnoreNotice, nullptr);
    // Values are read in these formats whatever the server's own settings are.
    RunControl("SET datestyle TO ISO, YMD; SET bytea_output TO hex; SET extra_float_digits TO 1;"
               "SET standard_conforming_strings TO on");
}

PostgresConnection::~PostgresConnection()
{
    DropStatements();
}

PostgresResult PostgresConnection::RunControl(const char *text, StatementKind::Subject subject)
{
    SettleStream();
    PostgresResult result(PQexec(connection_.get(), text));
    switch (PQresultStatus(result.get())) {
    case PGRES_COMMAND_OK:
    case PGRES_TUPLES_OK:
    case PGRES_EMPTY_QUERY:
        return result;
    case PGRES_COPY_IN:
    case PGRES_COPY_OUT:
        RefuseCopy(PQresultStatus(result.get()));
    default:
        throw PostgresError(connection_.get(), result.get(), subject);
    }
}

void PostgresConnection::SettleStream()
{
    if (streaming_ == nullptr) return;
    PostgresStatement *statement = streaming_;
    streaming_ = nullptr;
    statement->TakeRest();
}

void PostgresConnection::Drain()
{
    while (const PostgresResult rest{PQgetResult(connection_.get())}) {
    }
}

void PostgresConnection::RefuseCopy(ExecStatusType status)
{
    if (status == PGRES_COPY_IN) {
        PQputCopyEnd(connection_.get(), "COPY is not supported");
    } else {
        char *line = nullptr;
        while (PQgetCopyData(connection_.get(), &line, 0) > 0) PQfreemem(line);
    }
    Drain();
    throw LibraryError("COPY is not supported");
}

std::string PostgresConnection::NewStatementName()
{
    return fmt::format("s{}", ++last_name_);
}

void PostgresConnection::Retire(std::string name)
{
    retired_.push_back(std::move(name));
}

void PostgresConnection::FreeRetired()
{
    // In a failed transaction the server refuses everything; they keep for later.
    if (retired_.size() < kRetiredAtOnce || PQtransactionStatus(connection_.get()) == PQTRANS_INERROR) return;
    std::string text;
    for (const std::string &name : retired_) text += "DEALLOCATE " + name + ";";
    retired_.clear();
    RunControl(text.c_str());
}

void PostgresConnection::NoteSchemaChange()
{
    ++schema_version_;
    schema_changed_in_transaction_ = InTransaction();
}

std::shared_ptr<EngineStatement> PostgresConnection::Prepare(const std::string &text, const StatementKind &kind)
{
    return std::make_shared<PostgresStatement>(*this, text, kind);
}

void PostgresConnection::RunText(std::string_view text, const StatementKind &kind)
{
    RunControl(std::string(text).c_str(), kind.subject);
    if (kind.changes_schema) NoteSchemaChange();
}

void PostgresConnection::Begin(SATransactionKind kind)
{
    schema_changed_in_transaction_ = false;
    RunControl(kind == SATransactionKind::Read ? "BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY" : "BEGIN");
}

// After an error the server answers COMMIT with a friendly ROLLBACK.
void PostgresConnection::Commit()
{
    if (!InTransaction() && !IsLost()) throw LibraryError("no transaction is open");
    const PostgresResult result = RunControl("COMMIT");
    if (std::strcmp(PQcmdStatus(result.get()), "COMMIT") == 0) return;
    if (schema_changed_in_transaction_) ++schema_version_;
    throw SAException(SA_DBMS_API_Error, PostgresNativeCode("25P02"),
                      "the transaction was rolled back because a statement in it failed");
}

void PostgresConnection::Rollback()
{
    if (IsLost() || !InTransaction()) return;
    RunControl("ROLLBACK");
    if (schema_changed_in_transaction_) ++schema_version_;
    schema_changed_in_transaction_ = false;
}

bool PostgresConnection::InTransaction() const
{
    // While rows are streaming the status is "active" and says nothing; it was known when the query was sent.
    if (streaming_ != nullptr) return streaming_->WasSentInTransaction();
    const PGTransactionStatusType status = PQtransactionStatus(connection_.get());
    return status == PQTRANS_INTRANS || status == PQTRANS_INERROR;
}

void PostgresConnection::SetDurability(SADurability durability)
{
    RunControl(durability == SADurability::Full ? "RESET synchronous_commit" : "SET synchronous_commit TO off");
    durability_ = durability;
}

void PostgresConnection::CopyTo(const std::string &)
{
    throw LibraryError("only an archive in a file can be copied; a server has its own backup");
}

// An idle session has nothing to read. If there is something, it is nearly always the server's farewell.
bool PostgresConnection::IsUsable()
{
    if (IsLost() || PQtransactionStatus(connection_.get()) != PQTRANS_IDLE) return false;
    pollfd socket = {PQsocket(connection_.get()), POLLIN, 0};
    return poll(&socket, 1, 0) == 0;
}

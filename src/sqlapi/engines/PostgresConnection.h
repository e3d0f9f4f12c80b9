#pragma once

#include "sqlapi/engines/Engine.h"

#include <libpq-fe.h>

#include <memory>
#include <string>
#include <vector>

class PostgresStatement;

struct FreePostgresResult {
    void operator()(PGresult *result) const { PQclear(result); }
};
using PostgresResult = std::unique_ptr<PGresult, FreePostgresResult>;

/// A session with a PostgreSQL server.
///
/// The protocol lets one statement at a time give its rows. Whoever wants to send something calls SettleStream first,
/// which takes the rest of the rows of the streaming statement, if any, into memory.
class PostgresConnection final : public EngineConnection {
  public:
    explicit PostgresConnection(const std::string &target);
    ~PostgresConnection() override;

    PGconn *Handle() const { return connection_.get(); }

    void SettleStream();
    void SetStreaming(PostgresStatement *statement) { streaming_ = statement; }
    void EndStreaming(const PostgresStatement *statement)
    {
        if (streaming_ == statement) streaming_ = nullptr;
    }
    /// Fetches what is left of the answer to the statement sent last.
    void Drain();
    [[noreturn]] void RefuseCopy(ExecStatusType status); ///< leaves the session ready for the next statement

    std::string NewStatementName();
    /// Frees a prepared statement on the server; a few are collected first, to save round trips.
    void Retire(std::string name);
    void FreeRetired();

    /// Grows with every change of the schema made here; a statement prepared before may stand for other columns.
    int SchemaVersion() const { return schema_version_; }
    void NoteSchemaChange();

    SAEngine Engine() const override { return SAEngine::PostgreSQL; }
    void Begin(SATransactionKind kind) override;
    void Commit() override;
    void Rollback() override;
    bool InTransaction() const override;
    void SetDurability(SADurability durability) override;
    void CopyTo(const std::string &file) override;
    bool IsLost() const override { return PQstatus(connection_.get()) != CONNECTION_OK; }
    bool IsUsable() override;

  private:
    struct CloseConnection {
        void operator()(PGconn *connection) const { PQfinish(connection); }
    };

    std::shared_ptr<EngineStatement> Prepare(const std::string &text, const StatementKind &kind) override;
    void RunText(std::string_view text, const StatementKind &kind) override;

    /// @throws SAException when the statement fails
    PostgresResult RunControl(const char *text, StatementKind::Subject subject = StatementKind::Subject::None);

    std::unique_ptr<PGconn, CloseConnection> connection_;
    PostgresStatement *streaming_ = nullptr;
    std::vector<std::string> retired_;
    unsigned long last_name_ = 0;
    int schema_version_ = 0;
    bool schema_changed_in_transaction_ = false;
};

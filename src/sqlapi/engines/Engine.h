#pragma once

#include "sqlapi/SACommand.h"
#include "sqlapi/engines/StatementCache.h"
#include "sqlapi/engines/StatementKind.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// A prepared statement of one session. Execute runs it up to its first row; FetchNext moves on to that row and then
/// from row to row; Finish drops what was not fetched. The column functions read the current row, without a copy.
class EngineStatement {
  public:
    EngineStatement(std::string sql, const StatementKind &kind);
    virtual ~EngineStatement() = default;
    EngineStatement(const EngineStatement &) = delete;
    EngineStatement &operator=(const EngineStatement &) = delete;

    const std::string &Sql() const { return sql_; } ///< as the caller wrote it, the key of the cache
    const StatementKind &Kind() const { return kind_; }
    const std::vector<std::string> &ParameterNames() const { return parameter_names_; }

    virtual void Execute(const std::vector<SAParam> &parameters) = 0;
    virtual bool FetchNext() = 0;
    virtual void Finish() noexcept = 0;

    /// From an Execute that gave rows until the end of the rows or Finish. Such a statement may not be handed to
    /// another.
    bool InUse() const { return stage_ != Stage::Idle; }

    long RowsAffected() const { return rows_affected_; }

    const std::vector<std::string> &Columns() const { return columns_; }
    int ColumnsVersion() const { return columns_version_; } ///< differs when Columns was read anew

    virtual bool IsNull(int column) = 0;
    virtual long long Int64(int column) = 0;
    virtual double Double(int column) = 0;
    virtual std::string_view Text(int column) = 0;
    virtual std::vector<std::byte> Bytes(int column) = 0;

  protected:
    enum class Stage { Idle, BeforeFirstRow, OnRow };

    void SetColumns(std::vector<std::string> columns)
    {
        columns_ = std::move(columns);
        ++columns_version_;
    }

    Stage stage_ = Stage::Idle;
    long rows_affected_ = 0;

  private:
    std::string sql_;
    StatementKind kind_;
    std::vector<std::string> parameter_names_;
    std::vector<std::string> columns_;
    int columns_version_ = 0;
};

/// One session with an engine; owns its prepared statements. Used by one thread at a time.
class EngineConnection {
  public:
    virtual ~EngineConnection() = default;
    EngineConnection(const EngineConnection &) = delete;
    EngineConnection &operator=(const EngineConnection &) = delete;

    /// Opens a session; the target decides the engine. @throws SAException CannotOpen, Corrupt, ConnectionLost
    static std::unique_ptr<EngineConnection> Open(const std::string &target, SAOpenMode mode);
    /// The key under which sessions of a target are pooled: the target, file paths made absolute.
    static std::string PoolKey(const std::string &target);

    virtual SAEngine Engine() const = 0;

    /// A statement for the text that nobody is using: a cached one, or a new one.
    std::shared_ptr<EngineStatement> Statement(const std::string &text);
    /// The same, but null when there is none in the cache.
    std::shared_ptr<EngineStatement> CachedStatement(const std::string &text) { return statements_.Find(text); }

    /// Runs one statement of a script; rows are dropped.
    StatementKind Run(std::string_view text);

    virtual void Begin(SATransactionKind kind) = 0;
    /// @throws SAException when the engine gave the transaction up instead of storing it; then none is open any more
    virtual void Commit() = 0;
    virtual void Rollback() = 0; ///< a lost session has nothing left to roll back: no error
    virtual bool InTransaction() const = 0;
    virtual void SetDurability(SADurability durability) = 0;
    virtual void CopyTo(const std::string &file) = 0;

    virtual bool IsLost() const = 0;
    /// Asked of a pooled session before it is used again.
    virtual bool IsUsable() = 0;
    /// Makes the session as good as new for its next user. False when that cannot be had and it must be closed.
    bool PrepareForPool() noexcept;

  protected:
    EngineConnection() = default;

    virtual std::shared_ptr<EngineStatement> Prepare(const std::string &text, const StatementKind &kind) = 0;
    virtual void RunText(std::string_view text, const StatementKind &kind) = 0;

    /// To be called by the destructor of the engine, while it can still give statements back.
    void DropStatements() { statements_.Clear(); }

    SADurability durability_ = SADurability::Full;

  private:
    StatementCache statements_;
    bool changed_by_user_ = false; ///< SET, PRAGMA, temporary tables: not to be met by the next user
};

/// The error of this library's own checks.
SAException LibraryError(std::string text);

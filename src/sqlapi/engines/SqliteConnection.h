#pragma once

#include "sqlapi/engines/Engine.h"

#include <sqlite3.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class SqliteStatement;

/// A session with an archive in a SQLite file, opened so that its schema is called "admin" as on the server.
///
/// Write-ahead logging: readers never wait for the writer. Two writers wait for each other up to kBusyLimit.
/// LIKE minds upper and lower case, UPPER and LOWER know accents, and "..." is always a name, as on PostgreSQL.
class SqliteConnection final : public EngineConnection {
  public:
    static constexpr std::chrono::seconds kBusyLimit{30};

    /// @param path  absolute
    SqliteConnection(const std::string &path, SAOpenMode mode);
    ~SqliteConnection() override;

    sqlite3 *Handle() const { return database_.get(); }

    /// Statements that still have rows to give hold a read lock on the state they began with.
    void AddReader(SqliteStatement *statement) { readers_.push_back(statement); }
    void RemoveReader(SqliteStatement *statement) { std::erase(readers_, statement); }

    /// Takes the rest of the rows of all open statements into memory and frees their locks.
    /// @return whether there were any, so that what failed because of them can be tried again
    bool SettleReaders();

    SAEngine Engine() const override { return SAEngine::SQLite; }
    void Begin(SATransactionKind kind) override;
    void Commit() override;
    void Rollback() override;
    bool InTransaction() const override { return sqlite3_get_autocommit(database_.get()) == 0; }
    void SetDurability(SADurability durability) override;
    void CopyTo(const std::string &file) override;
    bool IsLost() const override { return false; }
    bool IsUsable() override;

  private:
    struct FileIdentity {
        std::uint64_t device = 0;
        std::uint64_t number = 0;
        friend bool operator==(const FileIdentity &, const FileIdentity &) = default;
    };
    struct CloseDatabase {
        void operator()(sqlite3 *database) const { sqlite3_close_v2(database); }
    };

    static FileIdentity Identify(const std::string &path);
    static int OnBusy(void *self, int calls);

    std::shared_ptr<EngineStatement> Prepare(const std::string &text, const StatementKind &kind) override;
    void RunText(std::string_view text, const StatementKind &kind) override;

    void Configure();
    void UseWriteAheadLog();
    int TryRun(const char *text);
    void RunControl(const char *text);
    void EndReadOnly();

    std::string path_;
    std::unique_ptr<sqlite3, CloseDatabase> database_;
    FileIdentity identity_;
    std::vector<SqliteStatement *> readers_;
    std::chrono::steady_clock::time_point busy_since_;
    bool is_read_transaction_ = false;
};

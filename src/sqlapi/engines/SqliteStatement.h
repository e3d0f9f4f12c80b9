#pragma once

#include "sqlapi/engines/Engine.h"

#include <sqlite3.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class SqliteConnection;

/// A statement on a SQLite archive. Rows come straight from the engine; only when the read lock is in the way of a
/// write of the same session are the remaining ones taken into memory.
class SqliteStatement final : public EngineStatement {
  public:
    SqliteStatement(SqliteConnection &connection, std::string text, const StatementKind &kind);
    ~SqliteStatement() override;

    void Execute(const std::vector<SAParam> &parameters) override;
    bool FetchNext() override;
    void Finish() noexcept override;

    void TakeRest(); ///< called by the connection, which has already forgotten it as a reader

    bool IsNull(int column) override;
    long long Int64(int column) override;
    double Double(int column) override;
    std::string_view Text(int column) override;
    std::vector<std::byte> Bytes(int column) override;

  private:
    struct FreeStatement {
        void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
    };
    struct FreeValue {
        void operator()(sqlite3_value *value) const { sqlite3_value_free(value); }
    };
    struct Bind;

    int FirstStep();
    bool NextTaken();
    void ReadColumns();
    sqlite3_value *Value(int column) const;
    static std::size_t Index(int column) { return static_cast<std::size_t>(column); }

    SqliteConnection &connection_;
    std::unique_ptr<sqlite3_stmt, FreeStatement> statement_; ///< null when the text holds nothing to run
    bool is_read_only_ = true;
    bool is_reader_ = false; ///< known to the connection as one
    int prepare_count_ = -1; ///< how often SQLite had prepared the statement when the columns were read
    std::vector<std::array<char, 32>> number_texts_; ///< of the floating point columns read as text, one per column

    bool is_taken_ = false; ///< the rows from the current one on are in taken_
    std::vector<std::unique_ptr<sqlite3_value, FreeValue>> taken_;
    std::size_t taken_row_ = 0;
    std::optional<SAException> taken_error_; ///< met while taking rows, thrown where the reader would have met it
};

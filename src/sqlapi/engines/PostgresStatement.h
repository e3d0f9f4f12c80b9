#pragma once

#include "sqlapi/engines/PostgresConnection.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A statement on a PostgreSQL server: prepared at its first execution when it is likely to come again, sent once
/// otherwise. Rows of a query are streamed; rows returned by a writing statement are complete when Execute returns.
class PostgresStatement final : public EngineStatement {
  public:
    PostgresStatement(PostgresConnection &connection, std::string text, const StatementKind &kind);
    ~PostgresStatement() override;

    void Execute(const std::vector<SAParam> &parameters) override;
    bool FetchNext() override;
    void Finish() noexcept override;

    void TakeRest(); ///< called by the connection, for which the statement is no longer streaming
    bool WasSentInTransaction() const { return was_in_transaction_; }

    bool IsNull(int column) override { return CellAt(column).data == nullptr; }
    long long Int64(int column) override;
    double Double(int column) override;
    std::string_view Text(int column) override;
    std::vector<std::byte> Bytes(int column) override;

  private:
    struct Cell {
        const char *data; ///< null for NULL
        std::size_t size;
        std::string_view View() const { return {data, size}; }
    };
    struct TakenCell {
        std::size_t offset;
        int size; ///< -1 for NULL
    };
    struct Bind;

    void PrepareOnServer();
    void Forget();
    PostgresResult Send(const std::vector<SAParam> &parameters);
    void Receive(PostgresResult first);
    bool MustPrepareAgain(const PGresult *result) const;
    void ReadColumns(const PGresult *result);
    bool NextStreamed();
    bool NextTaken();
    void TakeRow(const PGresult *result, int row);
    std::size_t TakenRows() const { return Columns().empty() ? 0 : taken_.size() / Columns().size(); }
    Cell CellAt(int column) const;
    Oid TypeOf(int column) const { return types_[static_cast<std::size_t>(column)]; }

    PostgresConnection &connection_;
    std::string numbered_sql_;
    std::string name_; ///< on the server; empty while not prepared there
    int schema_version_ = 0;
    bool are_columns_known_ = false;
    bool was_in_transaction_ = false;
    std::vector<Oid> types_;
    std::vector<std::string> decoded_texts_; ///< of columns whose text is not what the server sends, one per column

    std::vector<std::array<char, 32>> number_texts_; ///< one per parameter
    std::vector<const char *> values_;
    std::vector<int> lengths_;
    std::vector<int> formats_;

    PostgresResult result_; ///< the current row, or all rows of a writing statement
    int row_ = 0;
    bool is_streaming_ = false;

    bool is_taken_ = false; ///< the rows from the current one on are in taken_
    std::vector<TakenCell> taken_;
    std::string taken_bytes_;
    std::size_t taken_row_ = 0;
    std::optional<SAException> taken_error_; ///< met while taking rows, thrown where the reader would have met it
};

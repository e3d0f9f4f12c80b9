#include "bench/BareClient.h"

#include <array>

namespace {

class SqliteClient final : public BareClient {
  public:
    explicit SqliteClient(const std::string &file)
        : database_(OpenSqlite(file)), begin_(Prepare("BEGIN IMMEDIATE")), commit_(Prepare("COMMIT"))
    {
    }

    std::size_t Prepare(const std::string &text) override
    {
        statements_.push_back(PrepareSqlite(database_.get(), text));
        return statements_.size() - 1;
    }
    long long Ask(std::size_t statement, std::span<const BareValue> values) override
    {
        sqlite3_stmt *query = Step(statement, values);
        const long long value = sqlite3_data_count(query) == 0 ? 0 : sqlite3_column_int64(query, 0);
        sqlite3_reset(query);
        return value;
    }
    std::string AskBytes(std::size_t statement, std::span<const BareValue> values) override
    {
        sqlite3_stmt *query = Step(statement, values);
        const auto *bytes = static_cast<const char *>(sqlite3_column_blob(query, 0));
        std::string value(bytes, static_cast<std::size_t>(sqlite3_column_bytes(query, 0)));
        sqlite3_reset(query);
        return value;
    }
    void Do(std::size_t statement, std::span<const BareValue> values) override
    {
        sqlite3_reset(Step(statement, values));
    }
    void Begin(int) override { Do(begin_, {}); }
    void Commit() override { Do(commit_, {}); }

  private:
    sqlite3_stmt *Step(std::size_t number, std::span<const BareValue> values)
    {
        sqlite3_stmt *statement = statements_[number].get();
        int place = 0;
        for (const BareValue &value : values) BindSqlite(statement, ++place, value);
        const int result = sqlite3_step(statement);
        if (result != SQLITE_ROW && result != SQLITE_DONE) throw BareError(database_.get());
        return statement;
    }

    BareSqlite database_;
    std::vector<BareStatement> statements_;
    std::size_t begin_, commit_;
};

class PostgresClient final : public BareClient {
  public:
    explicit PostgresClient(const std::string &address)
        : connection_(OpenPostgres(address)),
          lock_(Prepare("SELECT pg_advisory_xact_lock(CAST($1 AS INTEGER), CAST($2 AS INTEGER))"))
    {
    }

    std::size_t Prepare(const std::string &text) override
    {
        names_.push_back("s" + std::to_string(names_.size()));
        PreparePostgres(connection_.get(), names_.back().c_str(), text);
        return names_.size() - 1;
    }
    long long Ask(std::size_t statement, std::span<const BareValue> values) override
    {
        const BareResult result = Execute(statement, values, 0, PGRES_TUPLES_OK);
        return PQntuples(result.get()) == 0 ? 0 : std::atoll(PQgetvalue(result.get(), 0, 0));
    }
    std::string AskBytes(std::size_t statement, std::span<const BareValue> values) override
    {
        const BareResult result = Execute(statement, values, 1, PGRES_TUPLES_OK);
        if (PQntuples(result.get()) == 0) return {};
        return {PQgetvalue(result.get(), 0, 0), static_cast<std::size_t>(PQgetlength(result.get(), 0, 0))};
    }
    void Do(std::size_t statement, std::span<const BareValue> values) override
    {
        Execute(statement, values, 0, PGRES_COMMAND_OK);
    }
    void Begin(int series) override
    {
        Control("BEGIN");
        const std::array values = {BareValue{BareValue::Kind::Integer, 1282764133, 0, "1282764133"},
                                   BareValue{BareValue::Kind::Integer, series, 0, std::to_string(series)}};
        Ask(lock_, values);
    }
    void Commit() override { Control("COMMIT"); }

  private:
    void Control(const char *text)
    {
        const BareResult result(PQexec(connection_.get(), text));
        if (PQresultStatus(result.get()) != PGRES_COMMAND_OK) throw BareError(connection_.get());
    }
    BareResult Execute(std::size_t statement, std::span<const BareValue> values, int result_format,
                       ExecStatusType expected)
    {
        texts_.clear();
        lengths_.clear();
        formats_.clear();
        for (const BareValue &value : values) {
            texts_.push_back(value.kind == BareValue::Kind::Null ? nullptr : value.text.c_str());
            lengths_.push_back(static_cast<int>(value.text.size()));
            formats_.push_back(value.kind == BareValue::Kind::Bytes ? 1 : 0);
        }
        BareResult result(PQexecPrepared(connection_.get(), names_[statement].c_str(), static_cast<int>(values.size()),
                                         texts_.data(), lengths_.data(), formats_.data(), result_format));
        if (PQresultStatus(result.get()) != expected) throw BareError(connection_.get());
        return result;
    }

    BarePostgres connection_;
    std::vector<std::string> names_;
    std::vector<const char *> texts_;
    std::vector<int> lengths_, formats_;
    std::size_t lock_;
};

} // namespace

std::unique_ptr<BareClient> OpenBareClient(SAEngine engine, const std::string &target)
{
    if (engine == SAEngine::SQLite) return std::make_unique<SqliteClient>(target);
    return std::make_unique<PostgresClient>(target);
}

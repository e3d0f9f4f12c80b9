#include "sqlapi/engines/PostgresStatement.h"

#include "sqlapi/engines/NamedParameters.h"
#include "sqlapi/engines/PostgresFaults.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

// Fixed numbers of the server's own types.
constexpr Oid kBoolean = 16;
constexpr Oid kBytes = 17;
constexpr Oid kPaddedText = 1042;

int HexDigit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : 0;
}

/// Decodes "\x0aff" byte by byte.
template <class Add>
void DecodeBytes(std::string_view text, Add add)
{
    for (std::size_t i = 2; i + 1 < text.size(); i += 2) add(HexDigit(text[i]) * 16 + HexDigit(text[i + 1]));
}

double ReadDouble(std::string_view text)
{
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

} // namespace

/// Makes one value ready to be sent. Texts and bytes stay where the parameter has them.
struct PostgresStatement::Bind {
    PostgresStatement &statement;
    std::size_t index;

    void operator()(std::monostate) const { Set(nullptr, 0, 0); }
    void operator()(long long value) const { SetNumber(value); }
    void operator()(double value) const { SetNumber(value); }
    void operator()(const std::string &value) const
    {
        // Texts are sent up to the first zero byte; the server could not store one anyway.
        if (std::memchr(value.data(), 0, value.size()) != nullptr)
            throw LibraryError("a text with a zero byte cannot be stored");
        Set(value.c_str(), 0, 0);
    }
    void operator()(const SADateTime &value) const
    {
        const std::string text = value.HasTime() ? value.DateTimeText() : value.DateText();
        auto &buffer = statement.number_texts_[index];
        buffer[text.copy(buffer.data(), buffer.size() - 1)] = '\0';
        Set(buffer.data(), 0, 0);
    }
    void operator()(const std::vector<std::byte> &value) const
    {
        Set(value.empty() ? "" : reinterpret_cast<const char *>(value.data()), static_cast<int>(value.size()), 1);
    }

  private:
    template <class Number>
    void SetNumber(Number value) const
    {
        auto &buffer = statement.number_texts_[index];
        *std::to_chars(buffer.data(), buffer.data() + buffer.size() - 1, value).ptr = '\0';
        Set(buffer.data(), 0, 0);
    }
    void Set(const char *value, int length, int format) const
    {
        statement.values_[index] = value;
        statement.lengths_[index] = length;
        statement.formats_[index] = format;
    }
};

PostgresStatement::PostgresStatement(PostgresConnection &connection, std::string text, const StatementKind &kind)
    : EngineStatement(std::move(text), kind), connection_(connection), numbered_sql_(NumberParameters(Sql(), '$'))
{
}

PostgresStatement::~PostgresStatement()
{
    Finish();
    Forget();
}

void PostgresStatement::Forget()
{
    if (!name_.empty()) connection_.Retire(std::move(name_));
    name_.clear();
}

void PostgresStatement::PrepareOnServer()
{
    are_columns_known_ = false;
    schema_version_ = connection_.SchemaVersion();
    connection_.FreeRetired();
    std::string name = connection_.NewStatementName();
    const PostgresResult result(PQprepare(connection_.Handle(), name.c_str(), numbered_sql_.c_str(), 0, nullptr));
    if (PQresultStatus(result.get()) != PGRES_COMMAND_OK)
        throw PostgresError(connection_.Handle(), result.get(), Kind().subject);
    name_ = std::move(name);
}

void PostgresStatement::Execute(const std::vector<SAParam> &parameters)
{
    Finish();
    connection_.SettleStream();
    rows_affected_ = 0;
    number_texts_.resize(parameters.size());
    values_.resize(parameters.size());
    lengths_.resize(parameters.size());
    formats_.resize(parameters.size());
    for (std::size_t i = 0; i < parameters.size(); ++i) std::visit(Bind{*this, i}, parameters[i].Get());

    was_in_transaction_ = connection_.InTransaction();
    PostgresResult first = Send(parameters);
    if (MustPrepareAgain(first.get())) {
        connection_.Drain();
        Forget();
        first = Send(parameters);
    }
    Receive(std::move(first));
    if (Kind().changes_schema) connection_.NoteSchemaChange();
}

/// @return the first part of the answer
PostgresResult PostgresStatement::Send(const std::vector<SAParam> &parameters)
{
    if (!name_.empty() && schema_version_ != connection_.SchemaVersion()) Forget();
    if (name_.empty() && Kind().IsRepeatable()) PrepareOnServer();
    const int count = static_cast<int>(parameters.size());
    const int sent = Kind().IsRepeatable()
                         ? PQsendQueryPrepared(connection_.Handle(), name_.c_str(), count, values_.data(),
                                               lengths_.data(), formats_.data(), 0)
                         : PQsendQueryParams(connection_.Handle(), numbered_sql_.c_str(), count, nullptr,
                                             values_.data(), lengths_.data(), formats_.data(), 0);
    if (sent == 0) throw PostgresError(connection_.Handle(), nullptr);
    if (Kind().reads_only) PQsetSingleRowMode(connection_.Handle());
    return PostgresResult(PQgetResult(connection_.Handle()));
}

// Another station has changed a table, and "*" means other columns than when the statement was prepared. Inside a
// transaction the error has ended it; outside, the statement is simply prepared again.
bool PostgresStatement::MustPrepareAgain(const PGresult *result) const
{
    if (PQresultStatus(result) != PGRES_FATAL_ERROR || was_in_transaction_ || name_.empty()) return false;
    const char *function = PQresultErrorField(result, PG_DIAG_SOURCE_FUNCTION);
    return function != nullptr && std::strcmp(function, "RevalidateCachedQuery") == 0;
}

void PostgresStatement::Receive(PostgresResult first)
{
    const ExecStatusType status = PQresultStatus(first.get());
    switch (status) {
    case PGRES_SINGLE_TUPLE:
    case PGRES_TUPLES_OK:
        if (!are_columns_known_) ReadColumns(first.get());
        break;
    case PGRES_COMMAND_OK:
    case PGRES_EMPTY_QUERY:
        break;
    case PGRES_COPY_IN:
    case PGRES_COPY_OUT:
        connection_.RefuseCopy(status);
    default: {
        const SAException failure = PostgresError(connection_.Handle(), first.get(), Kind().subject);
        connection_.Drain();
        throw failure;
    }
    }
    if (status == PGRES_SINGLE_TUPLE) {
        is_streaming_ = true;
        connection_.SetStreaming(this);
    } else {
        connection_.Drain();
        const bool is_query = std::strncmp(PQcmdStatus(first.get()), "SELECT", 6) == 0;
        if (Kind().changes_rows && !is_query) rows_affected_ = std::atol(PQcmdTuples(first.get()));
        if (PQntuples(first.get()) == 0) return;
    }
    result_ = std::move(first);
    row_ = 0;
    stage_ = Stage::BeforeFirstRow;
}

void PostgresStatement::ReadColumns(const PGresult *result)
{
    const int count = PQnfields(result);
    std::vector<std::string> names;
    types_.clear();
    for (int column = 0; column < count; ++column) {
        names.emplace_back(PQfname(result, column));
        types_.push_back(PQftype(result, column));
    }
    decoded_texts_.assign(names.size(), {});
    SetColumns(std::move(names));
    are_columns_known_ = Kind().IsRepeatable();
}

bool PostgresStatement::FetchNext()
{
    if (stage_ == Stage::Idle) return false;
    if (stage_ == Stage::BeforeFirstRow) {
        stage_ = Stage::OnRow;
        return true;
    }
    if (is_taken_) return NextTaken();
    if (is_streaming_) return NextStreamed();
    if (++row_ < PQntuples(result_.get())) return true;
    Finish();
    return false;
}

bool PostgresStatement::NextStreamed()
{
    result_.reset(); // first, so that its memory serves the next row
    result_.reset(PQgetResult(connection_.Handle()));
    const ExecStatusType status = PQresultStatus(result_.get());
    if (status == PGRES_SINGLE_TUPLE) return true;
    if (status == PGRES_TUPLES_OK) {
        Finish();
        return false;
    }
    const SAException failure = PostgresError(connection_.Handle(), result_.get(), Kind().subject);
    Finish();
    throw failure;
}

bool PostgresStatement::NextTaken()
{
    if (++taken_row_ < TakenRows()) return true;
    const std::optional<SAException> failure = std::move(taken_error_);
    Finish();
    if (failure) throw *failure;
    return false;
}

void PostgresStatement::Finish() noexcept
{
    result_.reset();
    stage_ = Stage::Idle;
    if (is_streaming_) {
        connection_.Drain();
        connection_.EndStreaming(this);
        is_streaming_ = false;
    }
    if (!is_taken_) return;
    is_taken_ = false;
    taken_.clear();
    taken_bytes_ = {};
    taken_row_ = 0;
    taken_error_.reset();
}

void PostgresStatement::TakeRest()
{
    is_streaming_ = false;
    is_taken_ = true;
    taken_row_ = 0;
    while (PQresultStatus(result_.get()) == PGRES_SINGLE_TUPLE) {
        TakeRow(result_.get(), 0);
        result_.reset();
        result_.reset(PQgetResult(connection_.Handle()));
    }
    if (PQresultStatus(result_.get()) != PGRES_TUPLES_OK)
        taken_error_ = PostgresError(connection_.Handle(), result_.get(), Kind().subject);
    result_.reset();
    connection_.Drain();
}

void PostgresStatement::TakeRow(const PGresult *result, int row)
{
    for (int column = 0; column < PQnfields(result); ++column) {
        const bool is_null = PQgetisnull(result, row, column) != 0;
        const int size = is_null ? -1 : PQgetlength(result, row, column);
        taken_.push_back({taken_bytes_.size(), size});
        if (!is_null) taken_bytes_.append(PQgetvalue(result, row, column), static_cast<std::size_t>(size));
    }
}

PostgresStatement::Cell PostgresStatement::CellAt(int column) const
{
    if (is_taken_) {
        const TakenCell &cell = taken_[taken_row_ * Columns().size() + static_cast<std::size_t>(column)];
        if (cell.size < 0) return {nullptr, 0};
        return {taken_bytes_.data() + cell.offset, static_cast<std::size_t>(cell.size)};
    }
    if (PQgetisnull(result_.get(), row_, column) != 0) return {nullptr, 0};
    return {PQgetvalue(result_.get(), row_, column),
            static_cast<std::size_t>(PQgetlength(result_.get(), row_, column))};
}

long long PostgresStatement::Int64(int column)
{
    const Cell cell = CellAt(column);
    if (cell.data == nullptr) return 0;
    if (TypeOf(column) == kBoolean) return cell.size > 0 && cell.data[0] == 't' ? 1 : 0;
    long long value = 0;
    const char *end = cell.data + cell.size;
    const auto [stop, error] = std::from_chars(cell.data, end, value);
    if (stop == end && error == std::errc()) return value;
    // A sum or a numeric column: cut to the whole number, as SQLite does.
    const double number = ReadDouble(cell.View());
    constexpr double kLimit = 9.2e18;
    return std::fabs(number) < kLimit ? static_cast<long long>(number) : 0;
}

double PostgresStatement::Double(int column)
{
    const Cell cell = CellAt(column);
    if (cell.data == nullptr) return 0;
    if (TypeOf(column) == kBoolean) return static_cast<double>(Int64(column));
    return ReadDouble(cell.View());
}

std::string_view PostgresStatement::Text(int column)
{
    const Cell cell = CellAt(column);
    if (cell.data == nullptr) return {};
    std::string_view text = cell.View();
    std::string &decoded = decoded_texts_[static_cast<std::size_t>(column)];
    switch (TypeOf(column)) {
    case kPaddedText:
        return text.substr(0, text.find_last_not_of(' ') + 1); // CHAR(n) comes filled with blanks
    case kBoolean:
        return text == "t" ? "1" : "0";
    case kBytes:
        decoded.clear();
        DecodeBytes(text, [&decoded](int byte) { decoded += static_cast<char>(byte); });
        return decoded;
    default:
        return text;
    }
}

std::vector<std::byte> PostgresStatement::Bytes(int column)
{
    const std::string_view text = Text(column);
    const auto *bytes = reinterpret_cast<const std::byte *>(text.data());
    return {bytes, bytes + text.size()};
}

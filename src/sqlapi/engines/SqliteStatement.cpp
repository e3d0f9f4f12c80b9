#include "sqlapi/engines/SqliteStatement.h"

#include "sqlapi/engines/NamedParameters.h"
#include "sqlapi/engines/SqlLexer.h"
#include "sqlapi/engines/SqliteConnection.h"
#include "sqlapi/engines/SqliteFaults.h"
#include "sqlapi/engines/ZeroDialect.h"

#include <algorithm>
#include <charconv>

namespace {

bool IsBlank(std::string_view text)
{
    SqlLexer lexer(text);
    for (SqlToken token; lexer.Next(token);)
        if (!token.IsBlank() && !token.IsSymbol(';')) return false;
    return true;
}

} // namespace

/// Binds one value. Texts and bytes are not copied for a statement that is over when Execute returns; a query may still
/// look at them while its rows are fetched.
struct SqliteStatement::Bind {
    sqlite3_stmt *statement;
    int number;
    sqlite3_destructor_type lifetime;

    int operator()(std::monostate) const { return sqlite3_bind_null(statement, number); }
    int operator()(long long value) const { return sqlite3_bind_int64(statement, number, value); }
    int operator()(double value) const { return sqlite3_bind_double(statement, number, value); }
    int operator()(const std::string &value) const
    {
        return sqlite3_bind_text64(statement, number, value.data(), value.size(), lifetime, SQLITE_UTF8);
    }
    int operator()(const SADateTime &value) const
    {
        const std::string text = value.HasTime() ? value.DateTimeText() : value.DateText();
        return sqlite3_bind_text64(statement, number, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    }
    int operator()(const std::vector<std::byte> &value) const
    {
        // A null pointer would mean NULL, and an empty vector may have one.
        if (value.empty()) return sqlite3_bind_zeroblob(statement, number, 0);
        return sqlite3_bind_blob64(statement, number, value.data(), value.size(), lifetime);
    }
};

SqliteStatement::SqliteStatement(SqliteConnection &connection, std::string text, const StatementKind &kind)
    : EngineStatement(std::move(text), kind), connection_(connection)
{
    const std::string sql = TranslateZeroDialect(NumberParameters(Sql(), '?'));
    sqlite3_stmt *statement = nullptr;
    const char *rest = nullptr;
    const unsigned flags = kind.IsRepeatable() ? SQLITE_PREPARE_PERSISTENT : 0;
    const int code = sqlite3_prepare_v3(connection_.Handle(), sql.c_str(), static_cast<int>(sql.size() + 1), flags,
                                        &statement, &rest);
    statement_.reset(statement);
    if (code != SQLITE_OK) throw SqliteError(connection_.Handle(), code, kind.subject);
    // SQLite would silently leave out whatever follows the first statement.
    if (!IsBlank(rest)) throw LibraryError("the command has more than one statement");
    is_read_only_ = !statement || sqlite3_stmt_readonly(statement) != 0;
}

SqliteStatement::~SqliteStatement()
{
    Finish();
}

void SqliteStatement::Execute(const std::vector<SAParam> &parameters)
{
    Finish();
    rows_affected_ = 0;
    if (!statement_) return;

    // The translation may have dropped a parameter together with the words around it.
    const int count = std::min(static_cast<int>(parameters.size()), sqlite3_bind_parameter_count(statement_.get()));
    const sqlite3_destructor_type lifetime = is_read_only_ ? SQLITE_TRANSIENT : SQLITE_STATIC;
    for (int i = 0; i < count; ++i) {
        const int code = std::visit(Bind{statement_.get(), i + 1, lifetime}, parameters[Index(i)].Get());
        if (code != SQLITE_OK) throw SqliteError(connection_.Handle(), code);
    }

    const int code = FirstStep();
    ReadColumns();
    if (code == SQLITE_DONE) {
        sqlite3_reset(statement_.get());
    } else {
        stage_ = Stage::BeforeFirstRow;
        // A writing statement that returns rows keeps the writer's place until the last one is read.
        if (is_read_only_) {
            connection_.AddReader(this);
            is_reader_ = true;
        } else {
            TakeRest();
        }
    }
    if (!is_read_only_ && Kind().changes_rows)
        rows_affected_ = static_cast<long>(sqlite3_changes64(connection_.Handle()));
}

/// @return SQLITE_ROW or SQLITE_DONE
int SqliteStatement::FirstStep()
{
    for (bool is_retry = false;; is_retry = true) {
        const int code = sqlite3_step(statement_.get());
        if (code == SQLITE_ROW || code == SQLITE_DONE) return code;
        const SAException failure = SqliteError(connection_.Handle(), code, Kind().subject);
        sqlite3_reset(statement_.get());
        // Queries of this very session are in the way: of dropping what they read, or of writing on a state that
        // others have changed since.
        const bool is_ours = (code & 0xff) == SQLITE_LOCKED || code == SQLITE_BUSY_SNAPSHOT;
        if (is_retry || !is_ours || !connection_.SettleReaders()) throw failure;
    }
}

bool SqliteStatement::FetchNext()
{
    if (stage_ == Stage::Idle) return false;
    if (stage_ == Stage::BeforeFirstRow) {
        stage_ = Stage::OnRow;
        return true;
    }
    if (is_taken_) return NextTaken();
    const int code = sqlite3_step(statement_.get());
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) {
        Finish();
        return false;
    }
    const SAException failure = SqliteError(connection_.Handle(), code, Kind().subject);
    Finish();
    throw failure;
}

bool SqliteStatement::NextTaken()
{
    if ((++taken_row_ + 1) * Columns().size() <= taken_.size()) return true;
    const std::optional<SAException> failure = std::move(taken_error_);
    Finish();
    if (failure) throw *failure;
    return false;
}

void SqliteStatement::Finish() noexcept
{
    if (is_reader_) connection_.RemoveReader(this);
    is_reader_ = false;
    if (stage_ != Stage::Idle) sqlite3_reset(statement_.get());
    stage_ = Stage::Idle;
    if (!is_taken_) return;
    is_taken_ = false;
    taken_.clear();
    taken_row_ = 0;
    taken_error_.reset();
}

void SqliteStatement::TakeRest()
{
    is_reader_ = false;
    is_taken_ = true;
    taken_row_ = 0;
    const int columns = static_cast<int>(Columns().size());
    int code = SQLITE_ROW;
    while (code == SQLITE_ROW) {
        for (int column = 0; column < columns; ++column)
            taken_.emplace_back(sqlite3_value_dup(sqlite3_column_value(statement_.get(), column)));
        code = sqlite3_step(statement_.get());
    }
    if (code != SQLITE_DONE) taken_error_ = SqliteError(connection_.Handle(), code, Kind().subject);
    sqlite3_reset(statement_.get());
}

// SQLite prepares a statement again by itself when a table has changed, and "*" may then mean other columns.
void SqliteStatement::ReadColumns()
{
    const int count = sqlite3_stmt_status(statement_.get(), SQLITE_STMTSTATUS_REPREPARE, 0);
    if (count == prepare_count_) return;
    prepare_count_ = count;
    std::vector<std::string> names;
    for (int column = 0; column < sqlite3_column_count(statement_.get()); ++column) {
        const char *name = sqlite3_column_name(statement_.get(), column);
        names.emplace_back(name == nullptr ? "" : name);
    }
    number_texts_.resize(names.size());
    SetColumns(std::move(names));
}

// Without a mutex on the connection the values of the current row may be read like any others.
sqlite3_value *SqliteStatement::Value(int column) const
{
    if (is_taken_) return taken_[taken_row_ * Columns().size() + Index(column)].get();
    return sqlite3_column_value(statement_.get(), column);
}

bool SqliteStatement::IsNull(int column)
{
    return sqlite3_value_type(Value(column)) == SQLITE_NULL;
}

long long SqliteStatement::Int64(int column)
{
    return sqlite3_value_int64(Value(column));
}

double SqliteStatement::Double(int column)
{
    return sqlite3_value_double(Value(column));
}

std::string_view SqliteStatement::Text(int column)
{
    sqlite3_value *value = Value(column);
    // SQLite writes 100.0 and 15 digits; the server writes 100 and as many as it takes to read the same number again.
    if (sqlite3_value_type(value) == SQLITE_FLOAT) {
        std::array<char, 32> &text = number_texts_[Index(column)];
        const char *end = std::to_chars(text.data(), text.data() + text.size(), sqlite3_value_double(value)).ptr;
        return {text.data(), static_cast<std::size_t>(end - text.data())};
    }
    const unsigned char *text = sqlite3_value_text(value);
    if (text == nullptr) return {};
    return {reinterpret_cast<const char *>(text), static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

std::vector<std::byte> SqliteStatement::Bytes(int column)
{
    sqlite3_value *value = Value(column);
    const auto *bytes = static_cast<const std::byte *>(sqlite3_value_blob(value));
    if (bytes == nullptr) return {};
    return {bytes, bytes + sqlite3_value_bytes(value)};
}

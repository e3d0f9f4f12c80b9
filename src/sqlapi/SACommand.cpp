#include "sqlapi/SACommand.h"

#include "sqlapi/engines/Engine.h"
#include "sqlapi/engines/NamedParameters.h"
#include "sqlapi/engines/SqlLexer.h"

#include <algorithm>

void SAParam::setAsString(std::string_view value)
{
    // Keeps the memory of the previous text: loops set the same parameter again and again.
    if (auto *text = std::get_if<std::string>(&value_))
        text->assign(value);
    else
        value_.emplace<std::string>(value);
}

void SAParam::setAsDateTime(const SADateTime &value)
{
    if (value.IsNull())
        setAsNull();
    else
        value_ = value;
}

void SAParam::setAsBytes(std::span<const std::byte> value)
{
    value_.emplace<std::vector<std::byte>>(value.begin(), value.end());
}

SAField::SAField(EngineStatement *statement, int column, std::string name)
    : statement_(statement), column_(column), name_(std::move(name))
{
}

bool SAField::isNull() const
{
    return statement_ == nullptr || statement_->IsNull(column_);
}

long SAField::asLong() const
{
    return static_cast<long>(asInt64());
}

long long SAField::asInt64() const
{
    return statement_ == nullptr ? 0 : statement_->Int64(column_);
}

double SAField::asDouble() const
{
    return statement_ == nullptr ? 0.0 : statement_->Double(column_);
}

std::string_view SAField::asStringView() const
{
    return statement_ == nullptr ? std::string_view() : statement_->Text(column_);
}

SADateTime SAField::asDateTime() const
{
    return SADateTime::Parse(asStringView());
}

std::vector<std::byte> SAField::asBytes() const
{
    return statement_ == nullptr ? std::vector<std::byte>() : statement_->Bytes(column_);
}

SACommand::SACommand() = default;

SACommand::SACommand(SAConnection *connection, std::string_view text)
{
    setConnection(connection);
    setCommandText(text);
}

SACommand::~SACommand()
{
    setConnection(nullptr);
}

void SACommand::setConnection(SAConnection *connection)
{
    if (connection == connection_) return;
    LetGo();
    if (connection_ != nullptr) std::erase(connection_->commands_, this);
    connection_ = connection;
    if (connection_ != nullptr) connection_->commands_.push_back(this);
}

void SACommand::setCommandText(std::string_view text)
{
    Close();
    if (text == text_) {
        for (SAParam &param : params_) param.setAsNull();
        return;
    }
    LetGo();
    text_ = text;
    params_.clear();
    last_param_ = 0;
    // Table objects set the same few texts over and over; a prepared statement knows its parameters without a search.
    if (connection_ != nullptr && connection_->isConnected())
        statement_ = connection_->Session().CachedStatement(text_);
    const std::vector<std::string> names = statement_ ? statement_->ParameterNames() : ParameterNames(text_);
    params_.reserve(names.size());
    for (const std::string &name : names) params_.emplace_back(name);
}

namespace {

/// The element of this name, looked for from the one behind `last` onwards and around; `last` becomes its place.
template <class Named>
Named *FindFromLast(std::vector<Named> &all, std::string_view name, std::size_t &last)
{
    std::size_t place = last + 1;
    for (std::size_t i = 0; i < all.size(); ++i, ++place) {
        if (place >= all.size()) place = 0;
        // Nearly always it is the first one tried, spelt as it stands: a compare of bytes then says so at once.
        if (all[place].Name() != name && !EqualNoCase(all[place].Name(), name)) continue;
        last = place;
        return &all[place];
    }
    return nullptr;
}

template <class Named>
Named &AtNumber(std::vector<Named> &all, int number, const char *what)
{
    if (number < 1 || static_cast<std::size_t>(number) > all.size())
        throw LibraryError(std::string("no ") + what + " number " + std::to_string(number));
    return all[static_cast<std::size_t>(number) - 1];
}

} // namespace

SAParam &SACommand::Param(std::string_view name)
{
    if (SAParam *found = FindFromLast(params_, name, last_param_)) return *found;
    throw LibraryError("the statement has no parameter :" + std::string(name));
}

SAParam &SACommand::Param(int index)
{
    return AtNumber(params_, index, "parameter");
}

void SACommand::RequireConnection() const
{
    if (connection_ == nullptr || !connection_->isConnected()) throw LibraryError("the command has no open connection");
}

void SACommand::Execute()
{
    RequireConnection();
    if (text_.empty()) throw LibraryError("the command has no text");
    Close();
    rows_affected_ = 0;
    try {
        // Meanwhile another command may have been given the statement this one used before.
        if (!statement_ || statement_->InUse()) {
            statement_ = connection_->Session().Statement(text_);
            columns_version_ = kUnread;
        }
        statement_->Execute(params_);
    } catch (const SAException &error) {
        connection_->NoteFailure(error);
        throw;
    }
    has_rows_ = statement_->InUse();
    rows_affected_ = statement_->RowsAffected();
    if (statement_->Kind().rolls_back_part) connection_->failed_ = false;
    if (statement_->ColumnsVersion() != columns_version_) ReadColumns();
}

bool SACommand::FetchNext()
{
    if (!has_rows_) return false;
    try {
        has_rows_ = statement_->FetchNext();
    } catch (const SAException &error) {
        has_rows_ = false;
        AttachFields(nullptr);
        connection_->NoteFailure(error);
        throw;
    }
    if (has_rows_ != is_on_row_) AttachFields(has_rows_ ? statement_.get() : nullptr);
    return has_rows_;
}

SAField &SACommand::Field(std::string_view name)
{
    if (SAField *found = FindFromLast(fields_, name, last_field_)) return *found;
    throw LibraryError("the result has no column " + std::string(name));
}

SAField &SACommand::Field(int index)
{
    return AtNumber(fields_, index, "column");
}

int SACommand::FieldCount() const
{
    return static_cast<int>(fields_.size());
}

long SACommand::RowsAffected() const
{
    return rows_affected_;
}

void SACommand::Close()
{
    if (is_on_row_) AttachFields(nullptr);
    if (has_rows_) statement_->Finish();
    has_rows_ = false;
}

void SACommand::LetGo()
{
    Close();
    statement_.reset();
    columns_version_ = kUnread;
    fields_.clear();
    last_field_ = 0;
    rows_affected_ = 0;
}

void SACommand::ReadColumns()
{
    fields_.clear();
    last_field_ = 0;
    int column = 0;
    for (const std::string &name : statement_->Columns()) fields_.emplace_back(nullptr, column++, name);
    columns_version_ = statement_->ColumnsVersion();
}

// Fields lead to the statement only while the command is on a row of its own: once it has given the statement back,
// another command may be reading rows with it.
void SACommand::AttachFields(EngineStatement *statement)
{
    is_on_row_ = statement != nullptr;
    for (SAField &field : fields_) field.statement_ = statement;
}

#pragma once

#include "sqlapi/SAConnection.h"
#include "sqlapi/SADateTime.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// A named parameter of a command. A value set stays until the next setCommandText, so a command can be executed again
/// with only some of its parameters changed. A parameter never set is bound as NULL.
class SAParam {
  public:
    using Value = std::variant<std::monostate, long long, double, std::string, SADateTime, std::vector<std::byte>>;

    explicit SAParam(std::string name) : name_(std::move(name)) {}

    const std::string &Name() const { return name_; }

    void setAsNull() { value_ = std::monostate{}; }
    void setAsShort(short value) { value_ = static_cast<long long>(value); }
    void setAsLong(long value) { value_ = static_cast<long long>(value); }
    void setAsInt64(long long value) { value_ = value; }
    void setAsBool(bool value) { value_ = static_cast<long long>(value); } ///< flags are stored as 0 and 1
    void setAsDouble(double value) { value_ = value; }
    void setAsString(std::string_view value);
    void setAsDateTime(const SADateTime &value); ///< without a time of day it is bound as a date; null date = NULL
    void setAsBytes(std::span<const std::byte> value);

    const Value &Get() const { return value_; }

  private:
    std::string name_;
    Value value_;
};

/// One column of the current row. NULL reads as 0, "", no date or no bytes; isNull tells.
/// A view is valid until the next FetchNext, Execute or Close of its command, and until something else is executed on
/// the connection (which may have to take the rest of the rows into memory first).
class SAField {
  public:
    SAField(EngineStatement *statement, int column, std::string name);

    const std::string &Name() const { return name_; }
    bool isNull() const;
    long asLong() const;
    short asShort() const { return static_cast<short>(asLong()); }
    long long asInt64() const;
    bool asBool() const { return asInt64() != 0; }
    double asDouble() const;
    std::string asString() const { return std::string(asStringView()); }
    std::string_view asStringView() const;
    SADateTime asDateTime() const;
    std::vector<std::byte> asBytes() const;

  private:
    friend class SACommand;
    EngineStatement *statement_; ///< null while the command is on no row: everything reads as NULL
    int column_;
    std::string name_;
};

/// One SQL statement with named parameters (":name") and the rows it gives.
///
/// Rows are streamed: FetchNext brings one row and nothing is kept. On PostgreSQL only one command of a connection can
/// stream at a time: a second command executed meanwhile first takes the rest of the rows of the first one into memory.
/// A long loop that runs further queries therefore joins them, or uses a second connection.
///
/// Statements are prepared once per connection and cached by text. The text of the zero dialect is accepted on SQLite
/// (EXTRACT, CONVERT, text "+", GRANT ...); see engines/ZeroDialect.h.
class SACommand {
  public:
    SACommand();
    explicit SACommand(SAConnection *connection, std::string_view text = {});
    ~SACommand();
    SACommand(const SACommand &) = delete;
    SACommand &operator=(const SACommand &) = delete;

    void setConnection(SAConnection *connection);
    SAConnection *Connection() const { return connection_; }

    /// Forgets rows and parameters of the previous text. Setting the same text again keeps the prepared statement.
    void setCommandText(std::string_view text);
    const std::string &CommandText() const { return text_; }

    /// @throws SAException SA_Library_Error when the text has no such parameter
    SAParam &Param(std::string_view name);
    SAParam &Param(int index); ///< 1-based, in the order of first appearance
    int ParamCount() const { return static_cast<int>(params_.size()); }

    void Execute();

    /// Moves to the next row; false at the end. Errors met while streaming are thrown here.
    bool FetchNext();

    SAField &Field(std::string_view name); ///< case-insensitive; @throws SAException SA_Library_Error when missing
    SAField &Field(int index);             ///< 1-based
    int FieldCount() const;

    long RowsAffected() const; ///< of the last INSERT, UPDATE or DELETE

    /// Drops the rows not fetched yet and frees the statement for others. Called by Execute, setCommandText,
    /// ~SACommand.
    void Close();

  private:
    friend class SAConnection;

    static constexpr int kUnread = -1;

    void RequireConnection() const;
    void ReadColumns();
    void AttachFields(EngineStatement *statement);
    void LetGo(); ///< closes and forgets the statement, which goes away with the session

    SAConnection *connection_ = nullptr;
    std::string text_;
    std::vector<SAParam> params_;
    std::vector<SAField> fields_;
    std::shared_ptr<EngineStatement> statement_;
    std::size_t last_param_ = 0;    ///< parameters and fields are mostly named in order, so the search starts ...
    std::size_t last_field_ = 0;    ///< ... behind the last one found
    int columns_version_ = kUnread; ///< of statement_ when fields_ was made
    bool has_rows_ = false;         ///< rows may follow, the statement is ours
    bool is_on_row_ = false;
    long rows_affected_ = 0;
};

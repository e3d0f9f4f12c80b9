#pragma once

#include "tarvolumera/TableDescription.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// What SqlTransaction does with a record.
inline constexpr int kInsert = 0, kUpdate = 1, kDelete = 2;

/// The base of all table objects: connection, dialect, browse order, and the operations that need no record type.
/// Table objects are stateless but for the browse order, so one global object per table serves all units of work.
class CTarvoPostgreSQL {
  public:
    explicit CTarvoPostgreSQL(TableDescription description) : description_(std::move(description)) {}
    virtual ~CTarvoPostgreSQL() = default;
    CTarvoPostgreSQL(const CTarvoPostgreSQL &) = delete;
    CTarvoPostgreSQL &operator=(const CTarvoPostgreSQL &) = delete;

    const TableDescription &Description() const { return description_; }
    const std::string &ColumnList() const { return description_.ColumnList(); }
    const std::string &TableName() const { return description_.Table(); }

    /// Connects the given connection to the company's archive and binds the command to it.
    /// @param read_only  opens a read transaction, so that all queries of the unit see one picture of the archive
    /// @param company  company code; 0 or the current company's. Another code is refused: an archive holds one company.
    /// @return true; failures are thrown as SAException
    bool OpenConnection(SAConnection *connection, SACommand *command, bool read_only = false, long company = 0) const;

    /// The SQL dialect: 1 PostgreSQL, 0 the embedded engine. The same as lumera_db_type.
    long GetDbType() const;

    /// The browse order of a record dialog; what the numbers mean is the table's own (see JournalOrder).
    int GetIndex() const { return index_; }
    virtual void SetIndex(int index) { index_ = index; }

    /// Adapts a query text written in the zero dialect to the current one, after putting the three numbers in the place
    /// of its "%ld" in their order. For work-table names and constant codes only; values are bound.
    std::string QueryAdapt(std::string_view text, long first = 0, long second = 0, long third = 0) const;

    /// True when the error says that a table (a view) does not exist. A query over something missing cannot tell which
    /// of the two it was, and answers true to both.
    static bool IsTableNotExistErr(const SAException &error);
    static bool IsViewNotExistErr(const SAException &error);

    /// Creates the table with its indexes (and its views) from the archive's own text; does nothing more when it
    /// exists.
    void Create(SACommand *cmd) const;

  protected:
    bool FetchRecord(SACommand *query, void *record) const; ///< Execute, first row into the record
    void Transact(SACommand *cmd, int operation, const void *record) const;

  private:
    TableDescription description_;
    int index_ = 0;
};

/// Binds the passed command's connection, or opens one of its own when the command is null, as the rule for work that
/// calls further work demands. Ends with the scope.
class CommandScope {
  public:
    explicit CommandScope(SACommand *cmd);
    SACommand *get() { return cmd_; }
    SACommand *operator->() { return cmd_; }

  private:
    std::unique_ptr<SAConnection> connection_;
    std::unique_ptr<SACommand> own_;
    SACommand *cmd_;
};

/// A table with its record type: the operations every table has. Single-key search; tables with other keys add theirs.
template <class Record>
class CTable : public CTarvoPostgreSQL {
  public:
    using CTarvoPostgreSQL::CTarvoPostgreSQL;

    /// Copies the current row of the command into the record.
    void ReadFields(SACommand *cmd, Record *record) const { Description().Read(cmd, record); }

    /// Empties the record; tables that number their records themselves propose the next number.
    virtual void Blank(SACommand *, Record *record) const { *record = Record{}; }

    /// Writes the record: 0 inserts, 1 updates, 2 deletes. @throws SAException; an update or delete that meets no
    /// record throws with fault Changed.
    virtual void SqlTransaction(SACommand *cmd, int operation, Record *record) const
    {
        CommandScope scope(cmd);
        Transact(scope.get(), operation, record);
    }

    /// Runs the query behind "SELECT columns FROM table" and calls back row by row until the callback says false.
    /// @param condition  " WHERE ... ORDER BY ..."   @param bind  sets the parameters
    void ForEach(SACommand *cmd, std::string_view condition, const std::function<void(SACommand &)> &bind,
                 const std::function<bool(const Record &)> &each) const
    {
        CommandScope scope(cmd);
        SACommand query(scope->Connection(), Description().SelectText() + std::string(condition));
        if (bind) bind(query);
        query.Execute();
        while (query.FetchNext()) {
            Record record{};
            ReadFields(&query, &record);
            if (!each(record)) break;
        }
    }

    /// The first record of a query as in ForEach.
    bool First(SACommand *cmd, std::string_view condition, const std::function<void(SACommand &)> &bind,
               Record *record) const
    {
        bool found = false;
        ForEach(cmd, condition, bind, [&](const Record &row) {
            *record = row;
            found = true;
            return false;
        });
        return found;
    }

  protected:
    /// Reads the record whose key members are already set in it. Leaves it untouched when there is none.
    bool SearchByKeys(SACommand *cmd, Record *record) const
    {
        CommandScope scope(cmd);
        SACommand query(scope->Connection(), Description().SearchText());
        Description().Bind(&query, record);
        return FetchRecord(&query, record);
    }
};

/// A table whose key is one code: CCodeTable<CODIVA, &CODIVA::iva_codice>.
template <class Record, auto Key>
class CCodeTable : public CTable<Record> {
  public:
    using CTable<Record>::CTable;

    /// True when found, then the record is filled; otherwise it is blank.
    bool Search(SACommand *cmd, long code, Record *record, bool = false) const
    {
        *record = Record{};
        if (code == 0) return false;
        record->*Key = code;
        if (this->SearchByKeys(cmd, record)) return true;
        *record = Record{};
        return false;
    }

    /// Highest code plus one; no lock, so only a proposal.
    long NextCode(SACommand *cmd) const
    {
        CommandScope scope(cmd);
        const char *key = this->Description().Columns().front().name;
        SACommand query(scope->Connection(),
                        std::string("SELECT MAX(") + key + ") AS codice FROM " + this->TableName());
        query.Execute();
        return query.FetchNext() ? query.Field(1).asLong() + 1 : 1;
    }
};

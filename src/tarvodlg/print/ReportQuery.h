#pragma once

#include "sqlapi/SACommand.h"
#include "tarvodlg/print/ReportCells.h"

/// The query of a layout with its selection: tables put in, formula checked and bound, rows streamed. A sub-report
/// opens its one again and again with other parameters.
class ReportQuery {
  public:
    /// How the rows come while sub-reports run further queries on the same connection. PostgreSQL streams one query of
    /// a connection at a time, so the rows of the main one are then fetched in portions, through a cursor.
    enum class Rows { Streamed, Portions };

    /// @param tables  layout's table name -> real table; names that the layout does not have are left aside
    /// @throws ReportError for tables and columns that are not there, SAException
    ReportQuery(SAConnection *connection, const ReportLayout &layout, const std::string &selection,
                const std::map<std::string, std::string> &tables, Rows rows);
    ~ReportQuery();
    ReportQuery(const ReportQuery &) = delete;
    ReportQuery &operator=(const ReportQuery &) = delete;

    /// Runs the query with these parameters; the columns are known afterwards. Call it inside a transaction.
    /// @throws ReportError for a query that the engine does not take, SAException
    void Open(const ReportValues &parameters);
    bool Fetch(ReportRow *row);
    void Close();

    const ReportColumns &Columns() const { return columns_; }

  private:
    void CheckFormula(SAConnection *connection) const;
    const std::string &RealTable(std::string_view name) const; ///< empty when the layout does not have it
    std::string Text(const std::string &condition) const;
    void Bind(const ReportValues &parameters, const SelectionFormula::Sql &selection);
    void Execute();
    void ReadColumns();

    const ReportLayout &layout_;
    SelectionFormula formula_;
    std::map<std::string, std::string, std::less<>> tables_;
    bool in_portions_;
    SACommand command_; ///< the query, or the cursor's declaration
    SACommand fetch_;   ///< the next rows of the cursor
    bool is_cursor_open_ = false;
    ReportColumns columns_;
};

/// The value as a parameter of a statement.
void BindValue(SAParam *parameter, const ReportValue &value);

/// Checks the parameters given against those of the layout and gives them the layout's kinds.
/// @throws ReportError naming one that is missing, unknown or of another kind
ReportValues CheckedParameters(const ReportLayout &layout, const ReportValues &given);

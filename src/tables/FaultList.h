#pragma once

#include "tables/TableChecks.h"

/// Codes have 32 bits in the archive; PostgreSQL refuses a query with a larger one.
inline bool IsCode(long code)
{
    return code > 0 && code <= 2'147'483'647;
}

/// Gathers the faults of a record in the order in which its fields are checked.
class FaultList {
  public:
    /// @param cmd  a command on the archive   @param prefix  of the table's columns: "cli_"
    FaultList(SACommand *cmd, std::string prefix) : cmd_(cmd), prefix_(std::move(prefix)) {}

    SACommand *Cmd() const { return cmd_; }
    /// From now on faults belong to this template row; 0 = the record itself.
    void SetRow(int row) { row_ = row; }

    // Fields are named without the prefix. A question gets its "Vuoi Continuare ?" here.
    void Refuse(std::string_view field, std::string text);
    void Ask(std::string_view field, const std::string &text);
    void RefuseIf(bool wrong, std::string_view field, std::string text);

    /// The code is in its range, and free when the record is new.
    /// @return false when it is out of range, so that it must not be looked for
    bool Code(std::string_view field, long code, const CTarvoPostgreSQL &table, const void *record, bool is_new);
    void Description(std::string_view field, std::string_view text);
    void Flag(std::string_view field, long value);
    void Range(std::string_view field, double value, double least, double most);
    /// Refuses a set of code and account of which only a part is given, or that is no sub-account of the chart.
    void Account(std::string_view field, const AccountKey &account);
    /// Refuses a code that its table does not have; 0 = none given.
    /// @param what  "Il pagamento", for "Il pagamento 99 non esiste."
    template <class Record, auto Key>
    void Reference(std::string_view field, const CCodeTable<Record, Key> &table, long code, std::string_view what)
    {
        Record record;
        if (code != 0 && (!IsCode(code) || !table.Search(cmd_, code, &record))) Missing(field, code, what);
    }

    std::vector<FieldFault> Take() { return std::move(faults_); }

  private:
    void Missing(std::string_view field, long code, std::string_view what);

    SACommand *cmd_;
    std::string prefix_;
    int row_ = 0;
    std::vector<FieldFault> faults_;
};

/// Whether the table has a record with the keys of this one.
bool RecordExists(SACommand *cmd, const CTarvoPostgreSQL &table, const void *record);

/// The number of rows that a condition finds, for what is in use already.
/// @param text  "SELECT COUNT(*) FROM ..."   @param bind  sets its parameters
long CountRows(SACommand *cmd, std::string_view text, const std::function<void(SACommand &)> &bind);

#include "tarvolumera/PSQLpno.h"

#include <array>

namespace {

/// One browse order. The conditions are keyset conditions: position by value, never by offset.
struct Order {
    const char *next;
    const char *order_by;
    const char *seek; ///< bound on the leading key, so that the engine starts in the index at the current record
};

constexpr std::array<Order, kJournalOrders> kOrders = {{
    {" WHERE pno_codice > :codice", "pno_codice", nullptr},
    {" WHERE (pno_data = :data AND pno_codice > :codice) OR (pno_data > :data)", "pno_data, pno_codice",
     "pno_data >= :data"},
    {" WHERE (pno_data_doc = :data AND pno_codice > :codice) OR (pno_data_doc > :data)", "pno_data_doc, pno_codice",
     "pno_data_doc >= :data"},
    {" WHERE (pno_doc = :num AND pno_codice > :codice) OR (pno_doc > :num)", "pno_doc, pno_codice", "pno_doc >= :num"},
    {" WHERE (pno_cau = :num AND pno_data = :data AND pno_codice > :codice) OR (pno_cau = :num AND pno_data > :data)"
     " OR (pno_cau > :num)",
     "pno_cau, pno_data, pno_codice", "(pno_cau, pno_data) >= (:num, :data)"},
    {" WHERE (pno_rel = :rel AND pno_cli_for = :num AND pno_data = :data AND pno_codice > :codice)"
     " OR (pno_rel = :rel AND pno_cli_for = :num AND pno_data > :data) OR (pno_rel = :rel AND pno_cli_for > :num)"
     " OR (pno_rel > :rel)",
     "pno_rel, pno_cli_for, pno_data, pno_codice", "(pno_rel, pno_cli_for, pno_data) >= (:rel, :num, :data)"},
}};

std::string Replaced(std::string text, char from, char to)
{
    for (char &c : text)
        if (c == from) c = to;
    return text;
}

std::string Descending(const std::string &order_by)
{
    std::string keys;
    for (const char c : order_by) {
        if (c == ',') keys += " DESC";
        keys += c;
    }
    return keys + " DESC";
}

} // namespace

std::string CPSQLpno::OrderBy(JournalOrder order, bool descending)
{
    const std::string keys = kOrders[order].order_by;
    return " ORDER BY " + (descending ? Descending(keys) : keys);
}

std::string CPSQLpno::NextCondition(JournalOrder order)
{
    return kOrders[order].next + OrderBy(order, false);
}

std::string CPSQLpno::PreviousCondition(JournalOrder order)
{
    return Replaced(kOrders[order].next, '>', '<') + OrderBy(order, true);
}

bool CPSQLpno::Browse(SACommand *cmd, PNOTA *entry, const std::string &text, bool from_entry) const
{
    CommandScope scope(cmd);
    SACommand query(scope->Connection(), text + " LIMIT 1");
    if (from_entry) {
        const auto order = static_cast<JournalOrder>(GetIndex());
        for (int i = 1; i <= query.ParamCount(); ++i) {
            SAParam &param = query.Param(i);
            if (param.Name() == "codice") param.setAsLong(entry->pno_codice);
            if (param.Name() == "rel") param.setAsLong(entry->pno_rel);
            if (param.Name() == "data")
                param.setAsDateTime(ToSqlDate(order == kByDocumentDate ? entry->pno_data_doc : entry->pno_data));
            if (param.Name() != "num") continue;
            if (order == kByDocumentNumber)
                param.setAsString(entry->pno_doc);
            else
                param.setAsLong(order == kByCausale ? entry->pno_cau : entry->pno_cli_for);
        }
    }
    query.Execute();
    if (!query.FetchNext()) return false;
    const long code = query.Field("pno_codice").asLong();
    query.Close();
    return Search(scope.get(), code, entry);
}

namespace {

/// The seek bound goes into a sub-query, which both engines merge into the outer one: the keyset condition alone, being
/// a chain of OR, would read the index from its beginning.
std::string BrowseText(JournalOrder order, bool backwards, const std::string &condition)
{
    const char *seek = kOrders[order].seek;
    if (seek == nullptr) return "SELECT pno_codice FROM admin.pnota1" + condition;
    const std::string bound = backwards ? Replaced(seek, '>', '<') : seek;
    return "SELECT pno_codice FROM (SELECT * FROM admin.pnota1 WHERE " + bound + ") AS pnota1" + condition;
}

/// The engines disagree on which end of an order NULL stands, so entries without document date are left out of theirs.
std::string EndText(JournalOrder order)
{
    return order == kByDocumentDate
               ? "SELECT pno_codice FROM (SELECT * FROM admin.pnota1 WHERE pno_data_doc IS NOT NULL) AS pnota1"
               : "SELECT pno_codice FROM admin.pnota1";
}

} // namespace

void CPSQLpno::SetIndex(int index)
{
    if (index < 0 || index >= kJournalOrders)
        throw SAException(SA_Library_Error, 0, "Ordine di scorrimento inesistente.");
    CTable::SetIndex(index);
}

bool CPSQLpno::Next(SACommand *cmd, PNOTA *entry) const
{
    const auto order = static_cast<JournalOrder>(GetIndex());
    if (order == kByDocumentDate && entry->pno_data_doc == 0) return First(cmd, entry);
    return Browse(cmd, entry, BrowseText(order, false, NextCondition(order)), true);
}

bool CPSQLpno::Previous(SACommand *cmd, PNOTA *entry) const
{
    const auto order = static_cast<JournalOrder>(GetIndex());
    if (order == kByDocumentDate && entry->pno_data_doc == 0) return Last(cmd, entry);
    return Browse(cmd, entry, BrowseText(order, true, PreviousCondition(order)), true);
}

bool CPSQLpno::First(SACommand *cmd, PNOTA *entry) const
{
    const auto order = static_cast<JournalOrder>(GetIndex());
    return Browse(cmd, entry, EndText(order) + OrderBy(order, false), false);
}

bool CPSQLpno::Last(SACommand *cmd, PNOTA *entry) const
{
    const auto order = static_cast<JournalOrder>(GetIndex());
    return Browse(cmd, entry, EndText(order) + OrderBy(order, true), false);
}

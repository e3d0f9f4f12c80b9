#include "ledger/JournalSearch.h"

#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dates.h"

#include <array>

namespace {

struct Search {
    const char *condition;
    const char *last;
    /// Bound on the leading keys: conditions that are a chain of OR would read the index from its beginning.
    const char *seek;
};

constexpr std::array<Search, kJournalOrders> kSearches = {{
    {" WHERE pno_codice >= :codice ORDER BY pno_codice", " ORDER BY pno_codice DESC", "pno_codice >= :codice"},
    {" WHERE pno_data >= :data ORDER BY pno_data, pno_codice", " ORDER BY pno_data DESC, pno_codice DESC",
     "pno_data >= :data"},
    {" WHERE pno_data_doc >= :data ORDER BY pno_data_doc, pno_codice", " ORDER BY pno_data_doc DESC, pno_data_doc DESC",
     "pno_data_doc >= :data"},
    {" WHERE pno_doc >= :numdoc ORDER BY pno_doc, pno_codice", " ORDER BY pno_doc DESC, pno_doc DESC",
     "pno_doc >= :numdoc"},
    {" WHERE (pno_cau = :codice AND pno_data >= :data) OR (pno_cau > :codice) ORDER BY pno_cau, pno_data, pno_codice",
     " ORDER BY  pno_cau DESC, pno_data DESC, pno_codice DESC", "(pno_cau, pno_data) >= (:codice, :data)"},
    {" WHERE pno_rel = :rel AND ((pno_cli_for = :codice AND pno_data >= :data) OR (pno_cli_for > :codice))"
     " ORDER BY pno_rel, pno_cli_for, pno_data, pno_codice",
     " ORDER BY pno_rel DESC, pno_cli_for DESC, pno_data DESC, pno_codice DESC",
     "(pno_rel, pno_cli_for, pno_data) >= (:rel, :codice, :data)"},
}};

/// The same bound in the names of the journal's own browsing, with which a search goes on.
constexpr std::array<const char *, kJournalOrders> kSeekAfter = {
    "pno_codice > :codice",
    "pno_data >= :data",
    "pno_data_doc >= :data",
    "pno_doc >= :num",
    "(pno_cau, pno_data) >= (:num, :data)",
    "(pno_rel, pno_cli_for, pno_data) >= (:rel, :num, :data)"};

std::string Lines(const std::string &journal, const std::string &condition)
{
    return "SELECT " + JournalLineColumns() + " FROM " + journal + JournalLineJoins() + condition;
}

std::string LinesFrom(const std::string &bound, const std::string &condition)
{
    return Lines("(SELECT * FROM admin.pnota1 WHERE " + bound + ") AS pnota1", condition);
}

SADateTime FromFirstDay(long day)
{
    return ToSqlDate(day != 0 ? day : DateToJulian(1, 1, 1));
}

std::vector<JournalLine> Fetch(SACommand *query)
{
    std::vector<JournalLine> lines;
    query->Execute();
    while (query->FetchNext()) lines.push_back(ReadJournalLine(query));
    return lines;
}

std::string Limit(std::size_t count)
{
    return " LIMIT " + std::to_string(count);
}

} // namespace

const char *SearchCondition(JournalOrder key)
{
    return kSearches.at(key).condition;
}

const char *LastEntryOrder(JournalOrder key)
{
    return kSearches.at(key).last;
}

JournalSearchValue SearchValueOf(JournalOrder key, const JournalLine &line)
{
    JournalSearchValue value;
    value.key = key;
    value.codice = key == kByNumber ? line.codice : key == kByCausale ? line.cau : line.cli_for;
    value.data = key == kByDocumentDate ? line.data_doc : line.data;
    value.doc = line.doc;
    value.rel = line.rel;
    return value;
}

std::vector<JournalLine> SearchJournal(SACommand *cmd, const JournalSearchValue &value, std::size_t count)
{
    const Search &search = kSearches.at(value.key);
    SACommand query(cmd->Connection(), LinesFrom(search.seek, search.condition) + Limit(count));
    for (int i = 1; i <= query.ParamCount(); ++i) {
        SAParam &param = query.Param(i);
        if (param.Name() == "codice") param.setAsLong(value.codice);
        if (param.Name() == "data") param.setAsDateTime(FromFirstDay(value.data));
        if (param.Name() == "numdoc") param.setAsString(value.doc);
        if (param.Name() == "rel") param.setAsLong(value.rel);
    }
    return Fetch(&query);
}

std::vector<JournalLine> SearchJournalAfter(SACommand *cmd, JournalOrder key, const JournalLine &line,
                                            std::size_t count)
{
    SACommand query(cmd->Connection(), LinesFrom(kSeekAfter.at(key), CPSQLpno::NextCondition(key)) + Limit(count));
    const JournalSearchValue from = SearchValueOf(key, line);
    for (int i = 1; i <= query.ParamCount(); ++i) {
        SAParam &param = query.Param(i);
        if (param.Name() == "codice") param.setAsLong(line.codice);
        if (param.Name() == "data") param.setAsDateTime(ToSqlDate(from.data));
        if (param.Name() == "rel") param.setAsLong(from.rel);
        if (param.Name() != "num") continue;
        if (key == kByDocumentNumber)
            param.setAsString(from.doc);
        else
            param.setAsLong(from.codice);
    }
    std::vector<JournalLine> lines = Fetch(&query);
    if (key == kByCounterpart) std::erase_if(lines, [&](const JournalLine &next) { return next.rel != line.rel; });
    return lines;
}

std::optional<JournalLine> LastOfOrder(SACommand *cmd, JournalOrder key)
{
    std::string journal = "admin.pnota1";
    // The engines disagree on which end of an order NULL stands.
    if (key == kByDocumentDate) journal = "(SELECT * FROM admin.pnota1 WHERE pno_data_doc IS NOT NULL) AS pnota1";
    // Without a bound the embedded engine sorts the whole journal instead of reading the index from its end.
    if (key == kByDocumentNumber) journal = "(SELECT * FROM admin.pnota1 WHERE pno_doc >= '') AS pnota1";
    SACommand query(cmd->Connection(), Lines(journal, LastEntryOrder(key)) + Limit(1));
    std::vector<JournalLine> lines = Fetch(&query);
    return lines.empty() ? std::nullopt : std::optional(std::move(lines.front()));
}

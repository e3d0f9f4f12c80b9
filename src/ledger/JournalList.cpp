#include "ledger/JournalList.h"

#include "sqlapi/SACommand.h"
#include "tarvolumera/TableDescription.h"

#include <limits>

namespace {

constexpr long kNoUpperBound = std::numeric_limits<std::int32_t>::max(); ///< entry numbers have 32 bits

SACommand &Bound(SACommand &query, const JournalPrintFilter &filter)
{
    query.Param("n_start").setAsLong(filter.n_start);
    query.Param("n_stop").setAsLong(filter.n_stop == 0 ? kNoUpperBound : filter.n_stop);
    if (filter.d_start != 0) query.Param("d_start").setAsDateTime(ToSqlDate(filter.d_start));
    if (filter.d_stop != 0) query.Param("d_stop").setAsDateTime(ToSqlDate(filter.d_stop));
    if (filter.codsez != 0) query.Param("codsez").setAsLong(filter.codsez);
    if (filter.codcac != 0) query.Param("codcac").setAsLong(filter.codcac);
    return query;
}

long FirstNumber(SACommand *cmd, const char *text)
{
    SACommand query(cmd->Connection(), std::string(text) + " LIMIT 1");
    query.Execute();
    return query.FetchNext() ? query.Field("pno_codice").asLong() : 0;
}

} // namespace

JournalLine LineOf(const PNOTA &entry)
{
    JournalLine line;
    line.codice = entry.pno_codice;
    line.data = entry.pno_data;
    line.data_doc = entry.pno_data_doc;
    line.sez = entry.pno_sez;
    line.cau = entry.pno_cau;
    line.reg = entry.pno_reg;
    line.rel = entry.pno_rel;
    line.cli_for = entry.pno_cli_for;
    line.tot_doc = entry.pno_tot_doc;
    line.dare = entry.pno_dare;
    line.avere = entry.pno_avere;
    line.desc = entry.pno_desc.empty() ? entry.pno_des_cau.str() : entry.pno_desc.str();
    line.doc = entry.pno_doc.str();
    line.clifor = entry.des_clifor.str();
    return line;
}

const char *CounterpartLetter(long rel)
{
    return rel == kCustomer ? "C" : rel == kSupplier ? "F" : "N";
}

std::string JournalListCondition(const JournalPrintFilter &filter)
{
    std::string condition = " WHERE pno_codice BETWEEN :n_start AND :n_stop";
    if (filter.d_start != 0) condition += " AND pno_data >= :d_start";
    if (filter.d_stop != 0) condition += " AND pno_data <= :d_stop";
    if (filter.codsez != 0) condition += " AND pno_sez = :codsez";
    if (filter.codcac != 0) condition += " AND pno_cau = :codcac";
    return condition;
}

bool PassesFilter(const JournalPrintFilter &filter, const PNOTA &entry)
{
    if (entry.pno_codice < filter.n_start || (filter.n_stop != 0 && entry.pno_codice > filter.n_stop)) return false;
    if (filter.d_start != 0 && entry.pno_data < filter.d_start) return false;
    if (filter.d_stop != 0 && entry.pno_data > filter.d_stop) return false;
    if (filter.codsez != 0 && entry.pno_sez != filter.codsez) return false;
    return filter.codcac == 0 || entry.pno_cau == filter.codcac;
}

long CountJournal(SACommand *cmd, const JournalPrintFilter &filter)
{
    SACommand query(cmd->Connection(), "SELECT COUNT(*) AS numrec FROM admin.pnota1" + JournalListCondition(filter));
    Bound(query, filter).Execute();
    return query.FetchNext() ? query.Field("numrec").asLong() : 0;
}

void ForEachJournalLine(SACommand *cmd, const JournalPrintFilter &filter,
                        const std::function<void(JournalLine &&)> &each)
{
    SACommand query(cmd->Connection(), "SELECT " + JournalLineColumns() + " FROM admin.pnota1" + JournalLineJoins() +
                                           JournalListCondition(filter) + "\nORDER BY pno_data DESC, pno_codice DESC");
    Bound(query, filter).Execute();
    while (query.FetchNext()) each(ReadJournalLine(&query));
}

long LowestEntry(SACommand *cmd)
{
    return FirstNumber(cmd, "SELECT pno_codice FROM admin.pnota1 ORDER BY pno_codice");
}

long HighestEntry(SACommand *cmd)
{
    return FirstNumber(cmd, "SELECT pno_codice FROM admin.pnota1 ORDER BY pno_codice DESC");
}

const std::string &JournalLineColumns()
{
    static const std::string columns = "pno_codice, pno_data, pno_desc, pno_des_cau, pno_data_doc, pno_tot_doc, "
                                       "pno_sez, pno_cau, pno_reg, pno_rel, pno_cli_for,"
                                       " pno_doc, pno_dare, pno_avere, COALESCE(cli_desc, for_desc) AS des_clifor";
    return columns;
}

const std::string &JournalLineJoins()
{
    static const std::string joins = " LEFT JOIN admin.clienti1 ON cli_codice = pno_cliente"
                                     " LEFT JOIN admin.fornito1 ON for_codice = pno_fornitore";
    return joins;
}

// By place, in the order of JournalLineColumns: a list of a whole year would look up a million and a half names.
JournalLine ReadJournalLine(SACommand *query)
{
    int column = 0;
    const auto next = [&]() -> SAField & { return query->Field(++column); };
    JournalLine line;
    line.codice = next().asLong();
    line.data = FromSqlDate(next().asDateTime());
    line.desc = next().asStringView();
    SAField &description_of_causale = next();
    if (line.desc.empty()) line.desc = description_of_causale.asStringView();
    line.data_doc = FromSqlDate(next().asDateTime());
    line.tot_doc = next().asDouble();
    line.sez = next().asLong();
    line.cau = next().asLong();
    line.reg = next().asLong();
    line.rel = next().asLong();
    line.cli_for = next().asLong();
    line.doc = next().asStringView();
    line.dare = next().asDouble();
    line.avere = next().asDouble();
    line.clifor = next().asStringView();
    return line;
}

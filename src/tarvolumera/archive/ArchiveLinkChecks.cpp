#include "tarvolumera/archive/ArchiveChecks.h"

#include "tarvolumera/JournalEntry.h"

#include <fmt/format.h>

namespace {

/// A column, or a group of them, that points to a record of another table.
struct Link {
    const char *where;
    const char *text;
    const char *child;
    const char *columns; ///< of the child: its key and what points, for the texts and the order
    const char *is_set;  ///< when the link is in use
    const char *parent;
    const char *parent_key; ///< a column of the parent that is never NULL
    const char *on;
};

constexpr char kEntryPlace[] = "Movimento {pno_codice}";
constexpr char kRowPlace[] = "Movimento {row_codice} riga {row_idx}";
constexpr char kInstalmentPlace[] = "Scadenza {sca_relaz:s} {sca_num}";
constexpr char kCustomerPlace[] = "Cliente {cli_codice}";
constexpr char kSupplierPlace[] = "Fornitore {for_codice}";

constexpr Link kLinks[] = {
    {kEntryPlace, "la causale {pno_cau} non esiste", "pnota1", "pno_codice, pno_cau", "pno_cau IS NOT NULL", "caucont1",
     "cac_codice", "cac_codice = pno_cau"},
    {kEntryPlace, "la sezione {pno_sez} non esiste", "pnota1", "pno_codice, pno_sez", "pno_sez IS NOT NULL", "sezioni",
     "sez_codice", "sez_codice = pno_sez"},
    {kEntryPlace, "il pagamento {pno_pag} non esiste", "pnota1", "pno_codice, pno_pag", "pno_pag IS NOT NULL",
     "pagament", "pag_codice", "pag_codice = pno_pag"},
    {kEntryPlace, "il cliente {pno_cli_for} non esiste", "pnota1", "pno_codice, pno_cli_for", "pno_cliente IS NOT NULL",
     "clienti1", "cli_codice", "cli_codice = pno_cliente"},
    {kEntryPlace, "il fornitore {pno_cli_for} non esiste", "pnota1", "pno_codice, pno_cli_for",
     "pno_fornitore IS NOT NULL", "fornito1", "for_codice", "for_codice = pno_fornitore"},
    {kEntryPlace, "l'aggregazione {pno_agr} non esiste", "pnota1", "pno_codice, pno_agr", "pno_agr IS NOT NULL",
     "aggregaz", "agr_codice", "agr_codice = pno_agr"},

    {kRowPlace, "il movimento non esiste", "pnotaro2", "row_codice, row_idx", "row_codice IS NOT NULL", "pnota1",
     "pno_codice", "pno_codice = row_codice"},
    {kRowPlace, "il conto {row_mas}.{row_con} non esiste", "pnotaro2", "row_codice, row_idx, row_mas, row_con",
     "row_con IS NOT NULL", "conti", "con_mas", "con_mas = row_mas AND con_codice = row_con"},
    {kRowPlace, "il sottoconto {row_mas}.{row_con}.{row_sot} non esiste", "pnotaro2",
     "row_codice, row_idx, row_mas, row_con, row_sot", "row_conto IS NOT NULL", "sotcon", "sot_mas",
     "sot_mas = row_mas AND sot_con = row_con AND sot_codice = row_conto"},
    {kRowPlace, "il cliente {row_clfo} non esiste", "pnotaro2", "row_codice, row_idx, row_clfo",
     "row_cliente IS NOT NULL", "clienti1", "cli_codice", "cli_codice = row_cliente"},
    {kRowPlace, "il fornitore {row_clfo} non esiste", "pnotaro2", "row_codice, row_idx, row_clfo",
     "row_fornitore IS NOT NULL", "fornito1", "for_codice", "for_codice = row_fornitore"},
    {kRowPlace, "la causale {row_cau} non esiste", "pnotaro2", "row_codice, row_idx, row_cau", "row_cau IS NOT NULL",
     "caucont1", "cac_codice", "cac_codice = row_cau"},

    {"Movimento {pcc_pno} riga {pcc_riga}", "il centro di costo {pcc_cdc} non esiste", "pnotacdc",
     "pcc_pno, pcc_idx, pcc_riga, pcc_cdc", "pcc_cdc IS NOT NULL", "centri1", "cdc_codice", "cdc_codice = pcc_cdc"},
    {"Movimento {pcc_pno} riga {pcc_riga}", "il centro di costo {pcc_cdc} divide una riga che non esiste", "pnotacdc",
     "pcc_pno, pcc_idx, pcc_riga, pcc_cdc", "pcc_riga IS NOT NULL", "pnotaro2", "row_codice",
     "row_codice = pcc_pno AND row_idx = pcc_riga"},
    {"Allegato {pat_codice}", "il movimento {pat_pno} non esiste", "pnotaall", "pat_codice, pat_pno",
     "pat_pno IS NOT NULL", "pnota1", "pno_codice", "pno_codice = pat_pno"},
    {"Immagine del movimento {pni_codice}", "il movimento non esiste", "pnotaim1", "pni_codice",
     "pni_codice IS NOT NULL", "pnota1", "pno_codice", "pno_codice = pni_codice"},
    {"Corrispettivi del {cor_data:d} sez. {cor_sez}", "il movimento {cor_pno} non esiste", "pnotacor",
     "cor_data, cor_sez, cor_pno", "cor_pno IS NOT NULL", "pnota1", "pno_codice", "pno_codice = cor_pno"},
    {"Corrispettivi del {cor_data:d} sez. {cor_sez}", "la sezione non esiste", "pnotacor", "cor_data, cor_sez",
     "cor_sez IS NOT NULL", "sezioni", "sez_codice", "sez_codice = cor_sez"},
    {"Cointestatario {coi_codice}", "il movimento {coi_pno} non esiste", "pnotacoi", "coi_codice, coi_pno",
     "coi_pno IS NOT NULL", "pnota1", "pno_codice", "pno_codice = coi_pno"},
    {"Cointestatario {coi_codice} del movimento {coi_pno}", "il cliente {coi_cli_for} non esiste", "pnotacoi",
     "coi_codice, coi_pno, coi_cli_for", "coi_rel = 0 AND coi_cli_for <> 0", "clienti1", "cli_codice",
     "cli_codice = coi_cli_for"},
    {"Cointestatario {coi_codice} del movimento {coi_pno}", "il fornitore {coi_cli_for} non esiste", "pnotacoi",
     "coi_codice, coi_pno, coi_cli_for", "coi_rel = 1 AND coi_cli_for <> 0", "fornito1", "for_codice",
     "for_codice = coi_cli_for"},

    {kInstalmentPlace, "il movimento {sca_pno} non esiste", "scadenze", "sca_relaz, sca_num, sca_pno",
     "sca_pno IS NOT NULL", "pnota1", "pno_codice", "pno_codice = sca_pno"},
    {kInstalmentPlace, "il cliente {sca_cli_for} non esiste", "scadenze", "sca_relaz, sca_num, sca_cli_for",
     "sca_cliente IS NOT NULL", "clienti1", "cli_codice", "cli_codice = sca_cliente"},
    {kInstalmentPlace, "il fornitore {sca_cli_for} non esiste", "scadenze", "sca_relaz, sca_num, sca_cli_for",
     "sca_fornitore IS NOT NULL", "fornito1", "for_codice", "for_codice = sca_fornitore"},
    {kInstalmentPlace, "il pagamento {sca_pag} non esiste", "scadenze", "sca_relaz, sca_num, sca_pag",
     "sca_pag IS NOT NULL", "pagament", "pag_codice", "pag_codice = sca_pag"},
    {kInstalmentPlace, "la banca {sca_ban} non esiste", "scadenze", "sca_relaz, sca_num, sca_ban",
     "sca_ban IS NOT NULL", "banche1", "ban_codice", "ban_codice = sca_ban"},
    {kInstalmentPlace, "la sezione {sca_sez} non esiste", "scadenze", "sca_relaz, sca_num, sca_sez",
     "sca_sez IS NOT NULL", "sezioni", "sez_codice", "sez_codice = sca_sez"},
    {kInstalmentPlace, "l'agente {sca_age} non esiste", "scadenze", "sca_relaz, sca_num, sca_age",
     "sca_age IS NOT NULL", "agenti1", "age_codice", "age_codice = sca_age"},

    {kCustomerPlace, "il pagamento {cli_pag} non esiste", "clienti1", "cli_codice, cli_pag", "cli_pag IS NOT NULL",
     "pagament", "pag_codice", "pag_codice = cli_pag"},
    {kCustomerPlace, "la banca {cli_ban} non esiste", "clienti1", "cli_codice, cli_ban", "cli_ban IS NOT NULL",
     "banche1", "ban_codice", "ban_codice = cli_ban"},
    {kCustomerPlace, "l'agente {cli_age} non esiste", "clienti1", "cli_codice, cli_age", "cli_age IS NOT NULL",
     "agenti1", "age_codice", "age_codice = cli_age"},
    {kSupplierPlace, "il pagamento {for_pag} non esiste", "fornito1", "for_codice, for_pag", "for_pag IS NOT NULL",
     "pagament", "pag_codice", "pag_codice = for_pag"},
    {kSupplierPlace, "la banca {for_ban} non esiste", "fornito1", "for_codice, for_ban", "for_ban IS NOT NULL",
     "banche1", "ban_codice", "ban_codice = for_ban"},
    {kSupplierPlace, "la causale {for_cau} non esiste", "fornito1", "for_codice, for_cau", "for_cau IS NOT NULL",
     "caucont1", "cac_codice", "cac_codice = for_cau"},
    {"Causale {cac_codice}", "la sezione {cac_sez} non esiste", "caucont1", "cac_codice, cac_sez",
     "cac_sez IS NOT NULL", "sezioni", "sez_codice", "sez_codice = cac_sez"},
    {"Sottoconto {sot_mas}.{sot_con}.{sot_codice}", "il conto {sot_mas}.{sot_con} non esiste", "sotcon",
     "sot_mas, sot_con, sot_codice", "sot_con IS NOT NULL", "conti", "con_mas",
     "con_mas = sot_mas AND con_codice = sot_con"},
    {"Conto {con_mas}.{con_codice}", "il mastro {con_mas} non esiste", "conti", "con_mas, con_codice",
     "con_mas IS NOT NULL", "mastri", "mas_codice", "mas_codice = con_mas"},
};

ArchiveQuery MissingParent(const Link &link)
{
    return {"Collegamenti", link.where, link.text,
            fmt::format("SELECT {0} FROM admin.{1} LEFT JOIN admin.{2} ON {3} WHERE {4} AND {5} IS NULL ORDER BY {0}",
                        link.columns, link.child, link.parent, link.on, link.is_set, link.parent_key)};
}

/// Each of the seven VAT lines of an entry has its code.
ArchiveQuery MissingVatCode(std::size_t line)
{
    const std::string column = fmt::format("pno_iva_{}", line);
    const std::string text = fmt::format("il codice IVA {{{}}} della riga IVA {} non esiste", column, line + 1);
    const std::string columns = "pno_codice, " + column, is_set = column + " IS NOT NULL",
                      on = "iva_codice = " + column;
    return MissingParent(
        {kEntryPlace, text.c_str(), "pnota1", columns.c_str(), is_set.c_str(), "codiva", "iva_codice", on.c_str()});
}

} // namespace

std::vector<ArchiveQuery> ArchiveLinkQueries()
{
    std::vector<ArchiveQuery> queries;
    for (const Link &link : kLinks) queries.push_back(MissingParent(link));
    for (std::size_t line = 0; line < kVatLines; ++line) queries.push_back(MissingVatCode(line));
    return queries;
}

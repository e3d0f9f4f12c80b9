#include "tarvolumera/archive/ArchiveChecks.h"

#include <fmt/format.h>

namespace {

constexpr char kBalance[] = "Quadratura", kTotals[] = "Totali", kRows[] = "Righe", kProtocols[] = "Protocolli",
               kNumbers[] = "Numerazione", kVat[] = "IVA", kCostCentres[] = "Centri di costo", kSchedule[] = "Scadenze",
               kDocuments[] = "Allegati", kDates[] = "Date";

constexpr char kEntry[] = "Movimento {codice}";
constexpr char kRow[] = "Movimento {codice} riga {riga}";
constexpr char kInstalment[] = "Scadenza {lato:s} {num}";

// Amounts are doubles: sums that are less than half a cent apart are the same amount.
#define DIFFER(a, b) "ABS((" a ") - (" b ")) >= 0.005"
#define DARE "COALESCE(SUM(CASE WHEN row_tipo IN ('D', 'd') THEN row_importo ELSE 0 END), 0)"
#define AVERE "COALESCE(SUM(CASE WHEN row_tipo IN ('A', 'a') THEN row_importo ELSE 0 END), 0)"
#define FIRST_YEAR "1980" // no entry is older; a year before it is a slip of the hand or a broken date

std::vector<ArchiveQuery> BalanceQueries()
{
    return {
        {kBalance, kEntry, "Dare {dare:e}, Avere {avere:e}, differenza {differenza:e}",
         "SELECT row_codice AS codice, " DARE " AS dare, " AVERE " AS avere, " DARE " - " AVERE " AS differenza"
         " FROM admin.pnotaro2 GROUP BY row_codice HAVING " DIFFER(DARE, AVERE) " ORDER BY row_codice"},
        {kBalance, kEntry, "il movimento non ha righe",
         "SELECT pno_codice AS codice FROM admin.pnota1 WHERE NOT EXISTS"
         " (SELECT 1 FROM admin.pnotaro2 WHERE row_codice = pno_codice) ORDER BY pno_codice"},
        {kTotals, kEntry,
         "in testata Dare {t_dare:e}, Avere {t_avere:e}, sbilancio {t_squ:e}; nelle righe Dare {dare:e}, Avere "
         "{avere:e}",
         "SELECT pno_codice AS codice, pno_dare AS t_dare, pno_avere AS t_avere, pno_tot_squ AS t_squ, " DARE
         " AS dare, " AVERE
         " AS avere FROM admin.pnota1 LEFT JOIN admin.pnotaro2 ON row_codice = pno_codice GROUP BY pno_codice"
         " HAVING " DIFFER("pno_dare", DARE) " OR " DIFFER("pno_avere", AVERE) " OR " DIFFER(
             "pno_tot_squ", DARE " - " AVERE) " ORDER BY pno_codice"},
    };
}

std::vector<ArchiveQuery> RowQueries()
{
    return {
        {kRows, kRow,
         "data {r_data:d}, sezione {r_sez}, operazione {r_ope}; in testata data {data:d}, sezione {sez}, operazione "
         "{ope}",
         "SELECT row_codice AS codice, row_idx AS riga, row_data AS r_data, row_sez AS r_sez, row_operazione AS r_ope,"
         " pno_data AS data, pno_sez AS sez, pno_operazione AS ope"
         " FROM admin.pnotaro2 JOIN admin.pnota1 ON pno_codice = row_codice"
         " WHERE row_data <> pno_data OR row_sez <> pno_sez OR row_operazione <> pno_operazione"
         " ORDER BY row_codice, row_idx"},
        {kRows, kRow, "il lato \"{lato}\" non è né Dare né Avere",
         "SELECT row_codice AS codice, row_idx AS riga, row_tipo AS lato FROM admin.pnotaro2"
         " WHERE row_tipo NOT IN ('D', 'A', 'd', 'a') ORDER BY row_codice, row_idx"},
        {kRows, kRow, "l'importo {importo:e} è negativo",
         "SELECT row_codice AS codice, row_idx AS riga, row_importo AS importo FROM admin.pnotaro2"
         " WHERE row_importo < 0 ORDER BY row_codice, row_idx"},
        {kRows, kRow, "la posizione è fuori dalle 100 righe di un movimento",
         "SELECT row_codice AS codice, row_idx AS riga FROM admin.pnotaro2"
         " WHERE row_idx NOT BETWEEN 1 AND 100 ORDER BY row_codice, row_idx"},
        // Receivables and payables are read by master and sub-account in one report, by row_rel and row_clfo in
        // another: both must tell the same.
        {kRows, kRow,
         "sul conto {mas}.{con}.{sot} la riga porta il tipo {rel} e il cliente/fornitore {clfo}, non concordi con il "
         "mastro",
         "SELECT row_codice AS codice, row_idx AS riga, row_mas AS mas, row_con AS con, row_sot AS sot, row_rel AS rel,"
         " row_clfo AS clfo FROM admin.pnotaro2 CROSS JOIN admin.ditte"
         " WHERE row_rel <> CASE row_mas WHEN dit_mas_cli THEN 0 WHEN dit_mas_for THEN 1 ELSE 2 END"
         " OR row_clfo <> CASE WHEN row_mas IN (dit_mas_cli, dit_mas_for) THEN row_sot ELSE 0 END"
         " ORDER BY row_codice, row_idx"},
    };
}

std::vector<ArchiveQuery> NumberQueries()
{
    return {
        {kProtocols, kEntry, "manca il protocollo del registro {reg:r}",
         "SELECT pno_codice AS codice, pno_reg AS reg FROM admin.pnota1"
         " WHERE pno_reg BETWEEN 2 AND 7 AND (pno_prot IS NULL OR pno_prot <= 0) ORDER BY pno_codice"},
        {kProtocols, kEntry, "il protocollo {prot} non è ammesso nel registro {reg:r}",
         "SELECT pno_codice AS codice, pno_reg AS reg, pno_prot AS prot FROM admin.pnota1"
         " WHERE pno_reg = 1 AND pno_prot IS NOT NULL ORDER BY pno_codice"},
        {kProtocols, kEntry, "il registro {reg} non esiste",
         "SELECT pno_codice AS codice, pno_reg AS reg FROM admin.pnota1"
         " WHERE pno_reg NOT BETWEEN 1 AND 7 ORDER BY pno_codice"},
        {kNumbers, kEntry, "il numero non è valido",
         "SELECT pno_codice AS codice FROM admin.pnota1 WHERE pno_codice <= 0 ORDER BY pno_codice"},
        {kNumbers, kEntry, "il numero è assegnato a {quanti} movimenti",
         "SELECT pno_codice AS codice, COUNT(*) AS quanti FROM admin.pnota1 GROUP BY pno_codice HAVING COUNT(*) > 1"
         " ORDER BY pno_codice"},
        {kNumbers, kInstalment, "il numero non è valido",
         "SELECT sca_relaz AS lato, sca_num AS num FROM admin.scadenze WHERE sca_num <= 0 ORDER BY sca_relaz, sca_num"},
        // Registers and settlements take every VAT line, whatever the flag of the entry says.
        {kVat, kEntry, "il movimento non è IVA ma ha righe IVA",
         "SELECT pno_codice AS codice FROM admin.pnota1 WHERE pno_cau_iva = 0 AND COALESCE(pno_iva_0, pno_iva_1,"
         " pno_iva_2, pno_iva_3, pno_iva_4, pno_iva_5, pno_iva_6) IS NOT NULL ORDER BY pno_codice"},
        {kCostCentres, kRow, "la riga vale {importo:e}, i centri di costo {diviso:e}",
         "SELECT pcc_pno AS codice, pcc_riga AS riga, MAX(row_importo) AS importo, SUM(pcc_importo) AS diviso"
         " FROM admin.pnotacdc JOIN admin.pnotaro2 ON row_codice = pcc_pno AND row_idx = pcc_riga"
         " GROUP BY pcc_pno, pcc_riga HAVING " DIFFER("SUM(pcc_importo)",
                                                      "MAX(row_importo)") " ORDER BY pcc_pno, pcc_riga"},
    };
}

std::vector<ArchiveQuery> InstalmentQueries()
{
    return {
        {kSchedule, kInstalment, "rata {rata} di {rate}", // entered by hand or imported, it has 0 of 0
         "SELECT sca_relaz AS lato, sca_num AS num, sca_rata AS rata, sca_rate AS rate FROM admin.scadenze"
         " WHERE (sca_rata <> 0 OR sca_rate <> 0) AND (sca_rata < 1 OR sca_rata > sca_rate) ORDER BY sca_relaz, "
         "sca_num"},
        {kSchedule, kInstalment,
         "i segni di ultima rata ({ultima}) e di rata non ultima ({non_ultima}) si contraddicono",
         "SELECT sca_relaz AS lato, sca_num AS num, sca_ultima AS ultima, sca_non_ultima AS non_ultima"
         " FROM admin.scadenze WHERE sca_ultima + sca_non_ultima <> 1 ORDER BY sca_relaz, sca_num"},
        {kSchedule, kInstalment, "risulta pagata o incassata senza data",
         "SELECT sca_relaz AS lato, sca_num AS num FROM admin.scadenze WHERE sca_pagato <> 0 AND sca_data_pag IS NULL"
         " ORDER BY sca_relaz, sca_num"},
        {kSchedule, kInstalment, "l'anno {anno} non è quello della data {data:d}",
         "SELECT sca_relaz AS lato, sca_num AS num, sca_anno AS anno, sca_data AS data FROM admin.scadenze"
         " WHERE sca_anno <> EXTRACT(YEAR FROM sca_data) ORDER BY sca_relaz, sca_num"},
        {kSchedule, kInstalment,
         "è del {lato:s} {clifor}, il movimento {codice} ha tipo {rel} e cliente/fornitore {pno_clifor}",
         "SELECT sca_relaz AS lato, sca_num AS num, sca_cli_for AS clifor, pno_codice AS codice, pno_rel AS rel,"
         " pno_cli_for AS pno_clifor FROM admin.scadenze JOIN admin.pnota1 ON pno_codice = sca_pno"
         " WHERE sca_relaz <> pno_rel OR sca_cli_for <> pno_cli_for ORDER BY sca_relaz, sca_num"},
    };
}

/// The instalments of one entry together. An entry to which one was added by hand (instalment 0) is left alone.
std::vector<ArchiveQuery> InstalmentSetQueries()
{
    return {
        // Paid instalments of past years are purged, so there only too many of them are wrong.
        {kSchedule, kEntry, "ha {quante} scadenze, {diverse} numeri di rata diversi, su {rate} rate",
         "SELECT sca_pno AS codice, COUNT(*) AS quante, COUNT(DISTINCT sca_rata) AS diverse, MAX(sca_rate) AS rate"
         " FROM admin.scadenze JOIN admin.pnota1 ON pno_codice = sca_pno CROSS JOIN admin.ditte"
         " GROUP BY sca_pno HAVING MIN(sca_rata) > 0"
         " AND (MIN(sca_rate) <> MAX(sca_rate) OR COUNT(*) > MAX(sca_rate) OR COUNT(*) > COUNT(DISTINCT sca_rata)"
         " OR (COUNT(*) < MAX(sca_rate) AND EXTRACT(YEAR FROM MAX(pno_data)) >= MAX(dit_anno))) ORDER BY sca_pno"},
        {kSchedule, kEntry, "nessuna delle {rate} rate è segnata come ultima",
         "SELECT sca_pno AS codice, MAX(sca_rate) AS rate FROM admin.scadenze WHERE sca_pno IS NOT NULL"
         " GROUP BY sca_pno HAVING MIN(sca_rata) > 0 AND COUNT(*) = MAX(sca_rate) AND MAX(sca_ultima) = 0"
         " ORDER BY sca_pno"},
        {kSchedule, kEntry, "l'ultima rata scade il {ultima:d}, ma ce n'è una che scade il {fine:d}",
         "SELECT sca_pno AS codice, MAX(CASE WHEN sca_ultima = 1 THEN sca_data END) AS ultima, MAX(sca_data) AS fine"
         " FROM admin.scadenze WHERE sca_pno IS NOT NULL GROUP BY sca_pno"
         " HAVING MIN(sca_rata) > 0 AND COUNT(*) = MAX(sca_rate)"
         " AND MAX(CASE WHEN sca_ultima = 1 THEN sca_data END) <> MAX(sca_data) ORDER BY sca_pno"},
    };
}

std::vector<ArchiveQuery> DocumentAndDateQueries()
{
    return {
        {kDocuments, "Allegato {allegato} del movimento {codice}", "{nome}: {byte} byte invece di {attesi}",
         "SELECT pat_codice AS allegato, pat_pno AS codice, pat_fname AS nome, LENGTH(pat_data) AS byte,"
         " pat_bytes_size AS attesi FROM admin.pnotaall WHERE LENGTH(pat_data) <> pat_bytes_size ORDER BY pat_codice"},
        {kDocuments, "Documento {doc} anno {anno}", "{nome}: {byte} byte invece di {attesi}",
         "SELECT all_codice AS doc, all_anno AS anno, all_fname AS nome, LENGTH(all_data) AS byte,"
         " all_bytes_size AS attesi FROM admin.allegati WHERE LENGTH(all_data) <> all_bytes_size"
         " ORDER BY all_anno, all_codice"},
        // Lists of invoices show the summaries and never look into the files.
        {kDocuments, "Documento {doc} anno {anno}",
         "{nome}: manca il riepilogo che l'elenco delle fatture ricevute mostra (si scrive aprendo l'elenco)",
         "SELECT all_codice AS doc, all_anno AS anno, all_fname AS nome FROM admin.allegati WHERE all_tab_tipo = 20"
         " AND NOT EXISTS (SELECT 1 FROM admin.fatture WHERE fat_codice = all_codice AND fat_documento = 1)"
         " ORDER BY all_anno, all_codice"},
        {kDocuments, "Documento {doc} anno {anno}",
         "{nome}: il riepilogo nell'elenco delle fatture ricevute non è quello del documento ({numero} del {data:d})",
         "SELECT all_codice AS doc, all_anno AS anno, all_fname AS nome, fat_numero AS numero, fat_data AS data"
         " FROM admin.fatture JOIN admin.allegati ON all_codice = fat_codice"
         " WHERE fat_anno <> all_anno OR fat_fname <> all_fname OR fat_acquisita <> all_date_time"
         " OR fat_documento > fat_documenti OR (fat_documento = 1 AND (fat_documenti <>"
         " (SELECT COUNT(*) FROM admin.fatture b WHERE b.fat_codice = all_codice)"
         " OR (all_num_fat <> '' AND fat_guasto = '' AND SUBSTR(fat_numero, 1, 20) <> all_num_fat)"
         " OR (fat_guasto = '' AND fat_data <> all_data_fat))) ORDER BY all_anno, all_codice, fat_documento"},
        {kDates, kEntry, "la data di registrazione {data:d} non è valida",
         "SELECT pno_codice AS codice, pno_data AS data FROM admin.pnota1"
         " WHERE EXTRACT(YEAR FROM pno_data) NOT BETWEEN " FIRST_YEAR " AND 9999 ORDER BY pno_codice"},
        {kDates, kRow, "la data {data:d} non è valida",
         "SELECT row_codice AS codice, row_idx AS riga, row_data AS data FROM admin.pnotaro2"
         " WHERE EXTRACT(YEAR FROM row_data) NOT BETWEEN " FIRST_YEAR " AND 9999 ORDER BY row_codice, row_idx"},
    };
}

#undef DIFFER
#undef DARE
#undef AVERE
#undef FIRST_YEAR

} // namespace

const std::vector<ArchiveQuery> &ArchiveQueries()
{
    static const std::vector<ArchiveQuery> all = [] {
        std::vector<ArchiveQuery> queries;
        for (const auto &group : {BalanceQueries(), RowQueries(), ArchiveLinkQueries(), NumberQueries(),
                                  InstalmentQueries(), InstalmentSetQueries(), DocumentAndDateQueries()})
            queries.insert(queries.end(), group.begin(), group.end());
        return queries;
    }();
    return all;
}

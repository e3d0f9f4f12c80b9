#include "tarvolumera/ReceivedInvoices.h"

CPSQLfat sqlfat;

CPSQLfat::CPSQLfat()
    : CTable({"fatture",
              {LUMERA_COLUMN(FATTURE, fat_codice, kKey), LUMERA_COLUMN(FATTURE, fat_documento, kKey),
               LUMERA_PLAIN(FATTURE, fat_documenti), LUMERA_PLAIN(FATTURE, fat_anno), LUMERA_PLAIN(FATTURE, fat_fname),
               LUMERA_PLAIN(FATTURE, fat_acquisita), LUMERA_PLAIN(FATTURE, fat_cedente),
               LUMERA_PLAIN(FATTURE, fat_piva), LUMERA_PLAIN(FATTURE, fat_codfis), LUMERA_PLAIN(FATTURE, fat_tipo),
               LUMERA_PLAIN(FATTURE, fat_numero), LUMERA_DATE(FATTURE, fat_data), LUMERA_PLAIN(FATTURE, fat_totale),
               LUMERA_PLAIN(FATTURE, fat_firmata), LUMERA_PLAIN(FATTURE, fat_sdi), LUMERA_PLAIN(FATTURE, fat_guasto)}})
{
}

bool CPSQLfat::Search(SACommand *cmd, long code, long document, FATTURE *record, bool) const
{
    *record = FATTURE{};
    record->fat_codice = code;
    record->fat_documento = document;
    const bool found = SearchByKeys(cmd, record);
    if (!found) *record = FATTURE{};
    return found;
}

long CPSQLfat::CountOfMissing(SACommand *cmd) const
{
    // Two counts that indexes answer: looking for each file would read the page of every one of them.
    CommandScope scope(cmd);
    SACommand query(scope->Connection(), "SELECT (SELECT COUNT(*) FROM admin.allegati WHERE all_tab_tipo = :tipo)"
                                         " - (SELECT COUNT(*) FROM admin.fatture WHERE fat_documento = 1) AS mancanti");
    query.Param("tipo").setAsLong(kReceivedInvoices);
    query.Execute();
    query.FetchNext();
    return query.Field("mancanti").asLong();
}

std::vector<long> CPSQLfat::Missing(SACommand *cmd, long most) const
{
    CommandScope scope(cmd);
    SACommand query(scope->Connection(),
                    "SELECT all_codice FROM admin.allegati WHERE all_tab_tipo = :tipo AND NOT EXISTS"
                    " (SELECT 1 FROM admin.fatture WHERE fat_codice = all_codice AND fat_documento = 1)"
                    " ORDER BY all_codice LIMIT :quante");
    query.Param("tipo").setAsLong(kReceivedInvoices);
    query.Param("quante").setAsLong(most);
    query.Execute();
    std::vector<long> codes;
    while (query.FetchNext()) codes.push_back(query.Field("all_codice").asLong());
    return codes;
}

#include "tarvolumera/Sincro.h"

#include "tarvolumera/Attachments.h"
#include "tarvolumera/Protocols.h"

CPSQLsyn sqlsyn;

CPSQLsyn::CPSQLsyn()
    : CCodeTable({"sincro",
                  {LUMERA_COLUMN(SINCRO, syn_codice, kKey), LUMERA_PLAIN(SINCRO, syn_nome),
                   LUMERA_PLAIN(SINCRO, syn_impronta), LUMERA_PLAIN(SINCRO, syn_versione),
                   LUMERA_PLAIN(SINCRO, syn_esito), LUMERA_PLAIN(SINCRO, syn_testo), LUMERA_PLAIN(SINCRO, syn_quando)}})
{
}

bool CPSQLsyn::SearchVersion(SACommand *cmd, std::string_view name, std::string_view version, SINCRO *record) const
{
    const auto bind = [&](SACommand &query) {
        query.Param("nome").setAsString(name);
        query.Param("versione").setAsString(version);
    };
    return First(cmd, " WHERE syn_nome = :nome AND syn_versione = :versione ORDER BY syn_codice", bind, record);
}

bool CPSQLsyn::SearchContent(SACommand *cmd, std::string_view name, std::string_view digest, SINCRO *record) const
{
    const auto bind = [&](SACommand &query) {
        query.Param("nome").setAsString(name);
        query.Param("impronta").setAsString(digest);
    };
    return First(cmd, " WHERE syn_nome = :nome AND syn_impronta = :impronta ORDER BY syn_codice", bind, record);
}

void CPSQLsyn::Store(SACommand *cmd, SINCRO *record) const
{
    CommandScope scope(cmd);
    SATransaction transaction(scope.get());
    LockNumbers(scope.get(), NumberSeries::Files); // another station may be looking at the same folder
    record->syn_quando = CurrentMoment();
    SINCRO there;
    if (SearchContent(scope.get(), record->syn_nome, record->syn_impronta, &there)) {
        record->syn_codice = there.syn_codice;
        Transact(scope.get(), kUpdate, record);
    } else {
        SACommand query(scope->Connection(), "SELECT COALESCE(MAX(syn_codice),0) AS codice FROM admin.sincro");
        query.Execute();
        record->syn_codice = query.FetchNext() ? query.Field("codice").asLong() + 1 : 1;
        query.Close();
        Transact(scope.get(), kInsert, record);
    }
    transaction.Commit();
}

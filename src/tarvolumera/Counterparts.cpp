#include "tarvolumera/Counterparts.h"

CPSQLcli sqlcli;
CPSQLfor sqlfor;

CPSQLcli::CPSQLcli()
    : CCodeTable({"clienti1",
                  {LUMERA_COLUMN(CLIENTI, cli_codice, kKey),
                   LUMERA_PLAIN(CLIENTI, cli_desc),
                   LUMERA_PLAIN(CLIENTI, cli_rag_soc1),
                   LUMERA_PLAIN(CLIENTI, cli_rag_soc2),
                   LUMERA_PLAIN(CLIENTI, cli_pers),
                   LUMERA_PLAIN(CLIENTI, cli_ditta_ind),
                   LUMERA_PLAIN(CLIENTI, cli_indirizzo),
                   LUMERA_PLAIN(CLIENTI, cli_cap),
                   LUMERA_PLAIN(CLIENTI, cli_citta),
                   LUMERA_PLAIN(CLIENTI, cli_prov),
                   LUMERA_PLAIN(CLIENTI, cli_naz),
                   LUMERA_PLAIN(CLIENTI, cli_piva),
                   LUMERA_PLAIN(CLIENTI, cli_codfis),
                   LUMERA_PLAIN(CLIENTI, cli_telefono),
                   LUMERA_PLAIN(CLIENTI, cli_email),
                   LUMERA_PLAIN(CLIENTI, cli_pec),
                   LUMERA_PLAIN(CLIENTI, cli_cod_dest),
                   LUMERA_PLAIN(CLIENTI, cli_iban),
                   LUMERA_CODE(CLIENTI, cli_mas),
                   LUMERA_CODE(CLIENTI, cli_con),
                   LUMERA_CODE(CLIENTI, cli_pag),
                   LUMERA_CODE(CLIENTI, cli_ban),
                   LUMERA_CODE(CLIENTI, cli_age),
                   LUMERA_DATE(CLIENTI, cli_data_cessazione),
                   LUMERA_PLAIN(CLIENTI, cli_escludi_iva)}})
{
}

CPSQLfor::CPSQLfor()
    : CCodeTable({"fornito1",
                  {LUMERA_COLUMN(FORNITORI, for_codice, kKey),
                   LUMERA_PLAIN(FORNITORI, for_desc),
                   LUMERA_PLAIN(FORNITORI, for_rag_soc1),
                   LUMERA_PLAIN(FORNITORI, for_rag_soc2),
                   LUMERA_PLAIN(FORNITORI, for_pers),
                   LUMERA_PLAIN(FORNITORI, for_ditta_ind),
                   LUMERA_PLAIN(FORNITORI, for_indirizzo),
                   LUMERA_PLAIN(FORNITORI, for_cap),
                   LUMERA_PLAIN(FORNITORI, for_citta),
                   LUMERA_PLAIN(FORNITORI, for_prov),
                   LUMERA_PLAIN(FORNITORI, for_naz),
                   LUMERA_PLAIN(FORNITORI, for_piva),
                   LUMERA_PLAIN(FORNITORI, for_codfis),
                   LUMERA_PLAIN(FORNITORI, for_telefono),
                   LUMERA_PLAIN(FORNITORI, for_email),
                   LUMERA_PLAIN(FORNITORI, for_pec),
                   LUMERA_PLAIN(FORNITORI, for_iban),
                   LUMERA_PLAIN(FORNITORI, for_rea),
                   LUMERA_PLAIN(FORNITORI, for_socio_unico),
                   LUMERA_PLAIN(FORNITORI, for_stato_liq),
                   LUMERA_CODE(FORNITORI, for_mas),
                   LUMERA_CODE(FORNITORI, for_con),
                   LUMERA_CODE(FORNITORI, for_cau),
                   LUMERA_CODE(FORNITORI, for_pag),
                   LUMERA_CODE(FORNITORI, for_ban),
                   LUMERA_DATE(FORNITORI, for_data_cessazione),
                   LUMERA_PLAIN(FORNITORI, for_escludi_iva)}})
{
}

long GetContoCliente(const CLIENTI *customer)
{
    const bool own = customer->cli_mas == lumera_db_impo.dit_mas_cli && customer->cli_con != 0;
    return own ? customer->cli_con : lumera_db_impo.dit_con_cli;
}

long GetContoFornitore(const FORNITORI *supplier)
{
    const bool own = supplier->for_mas == lumera_db_impo.dit_mas_for && supplier->for_con != 0;
    return own ? supplier->for_con : lumera_db_impo.dit_con_for;
}

#include "tarvolumera/Lookups.h"

CPSQLsez sqlsez;
CPSQLban sqlban;
CPSQLage sqlage;
CPSQLcdc sqlcdc;
CPSQLagr sqlagr;
CPSQLdst sqldst;
CPSQLnaz sqlnaz;
CPSQLprv sqlprv;

CPSQLsez::CPSQLsez()
    : CCodeTable({"sezioni",
                  {LUMERA_COLUMN(SEZIONI, sez_codice, kKey), LUMERA_PLAIN(SEZIONI, sez_desc),
                   LUMERA_PLAIN(SEZIONI, sez_esc_liq_iva), LUMERA_PLAIN(SEZIONI, sez_esc_spesometro),
                   LUMERA_PLAIN(SEZIONI, sez_esc_ventilazione)}})
{
}

CPSQLban::CPSQLban()
    : CCodeTable(
          {"banche1",
           {LUMERA_COLUMN(BANCHE, ban_codice, kKey), LUMERA_PLAIN(BANCHE, ban_desc), LUMERA_PLAIN(BANCHE, ban_abi),
            LUMERA_PLAIN(BANCHE, ban_cab), LUMERA_PLAIN(BANCHE, ban_iban), LUMERA_PLAIN(BANCHE, ban_bic),
            LUMERA_CODE(BANCHE, ban_mas), LUMERA_CODE(BANCHE, ban_con), LUMERA_CODE(BANCHE, ban_sot)}})
{
}

CPSQLage::CPSQLage()
    : CCodeTable({"agenti1", {LUMERA_COLUMN(AGENTI, age_codice, kKey), LUMERA_PLAIN(AGENTI, age_desc)}})
{
}

CPSQLcdc::CPSQLcdc()
    : CCodeTable({"centri1", {LUMERA_COLUMN(CENTRI, cdc_codice, kKey), LUMERA_PLAIN(CENTRI, cdc_desc)}})
{
}

CPSQLagr::CPSQLagr()
    : CCodeTable({"aggregaz", {LUMERA_COLUMN(AGGREGAZ, agr_codice, kKey), LUMERA_PLAIN(AGGREGAZ, agr_desc)}})
{
}

CPSQLdst::CPSQLdst()
    : CTable({"destina1",
              {LUMERA_COLUMN(DESTINAZIONI, dst_rel, kKey), LUMERA_COLUMN(DESTINAZIONI, dst_cli_for, kKey),
               LUMERA_COLUMN(DESTINAZIONI, dst_codice, kKey), LUMERA_PLAIN(DESTINAZIONI, dst_desc),
               LUMERA_PLAIN(DESTINAZIONI, dst_indirizzo), LUMERA_PLAIN(DESTINAZIONI, dst_cap),
               LUMERA_PLAIN(DESTINAZIONI, dst_citta), LUMERA_PLAIN(DESTINAZIONI, dst_prov)}})
{
}

bool CPSQLdst::Search(SACommand *cmd, long rel, long cli_for, long code, DESTINAZIONI *record, bool) const
{
    *record = DESTINAZIONI{};
    record->dst_rel = rel;
    record->dst_cli_for = cli_for;
    record->dst_codice = code;
    const bool found = SearchByKeys(cmd, record);
    if (!found) *record = DESTINAZIONI{};
    return found;
}

CPSQLnaz::CPSQLnaz()
    : CTable({"nazioni",
              {LUMERA_COLUMN(NAZIONI, naz_codice, kKey), LUMERA_PLAIN(NAZIONI, naz_desc), LUMERA_PLAIN(NAZIONI, naz_ue),
               LUMERA_PLAIN(NAZIONI, naz_stato_estero), LUMERA_PLAIN(NAZIONI, naz_luogo_nascita)}})
{
}

bool CPSQLnaz::Search(SACommand *cmd, std::string_view code, NAZIONI *record, bool) const
{
    *record = NAZIONI{};
    record->naz_codice = code;
    const bool found = SearchByKeys(cmd, record);
    if (!found) *record = NAZIONI{};
    return found;
}

CPSQLprv::CPSQLprv()
    : CTable({"province",
              {LUMERA_COLUMN(PROVINCE, prv_codice, kKey), LUMERA_PLAIN(PROVINCE, prv_desc),
               LUMERA_PLAIN(PROVINCE, prv_attuale)}})
{
}

bool CPSQLprv::Search(SACommand *cmd, std::string_view code, PROVINCE *record, bool) const
{
    *record = PROVINCE{};
    record->prv_codice = code;
    const bool found = SearchByKeys(cmd, record);
    if (!found) *record = PROVINCE{};
    return found;
}

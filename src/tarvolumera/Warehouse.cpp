#include "tarvolumera/Warehouse.h"

CPSQLart sqlart;
CPSQLarf sqlarf;
CPSQLcam sqlcam;
CPSQLtes sqltes;
CPSQLrig sqlrig;

CPSQLart::CPSQLart()
    : CTable({"articoli",
              {LUMERA_COLUMN(ARTICOLI, art_codice, kKey), LUMERA_PLAIN(ARTICOLI, art_desc),
               LUMERA_PLAIN(ARTICOLI, art_um), LUMERA_PLAIN(ARTICOLI, art_ean)}})
{
}

bool CPSQLart::Search(SACommand *cmd, std::string_view code, ARTICOLI *record, bool) const
{
    *record = ARTICOLI{};
    const std::string wanted = ToUpper(Trimmed(code));
    if (wanted.empty() || Utf8Length(wanted) > record->art_codice.MaxLength()) return false; // cut, it would be another
    record->art_codice = wanted;
    if (SearchByKeys(cmd, record)) return true;
    *record = ARTICOLI{};
    return false;
}

bool CPSQLart::SearchByEan(SACommand *cmd, std::string_view ean, ARTICOLI *record) const
{
    *record = ARTICOLI{};
    const std::string wanted(Trimmed(ean));
    if (wanted.empty()) return false;
    int found = 0;
    ARTICOLI article;
    ForEach(
        cmd, " WHERE art_ean = :ean", [&](SACommand &query) { query.Param("ean").setAsString(wanted); },
        [&](const ARTICOLI &row) {
            article = row;
            return ++found < 2;
        });
    if (found == 1) *record = article;
    return found == 1;
}

CPSQLarf::CPSQLarf()
    : CTable({"artforn",
              {LUMERA_COLUMN(ARTFORN, arf_fornitore, kKey), LUMERA_COLUMN(ARTFORN, arf_codice, kKey),
               LUMERA_PLAIN(ARTFORN, arf_articolo)}})
{
}

bool CPSQLarf::Search(SACommand *cmd, long supplier, std::string_view code, ARTFORN *record, bool) const
{
    *record = ARTFORN{};
    record->arf_fornitore = supplier;
    record->arf_codice = Trimmed(code);
    if (SearchByKeys(cmd, record)) return true;
    *record = ARTFORN{};
    return false;
}

void CPSQLarf::Remember(SACommand *cmd, const ARTFORN &pair) const
{
    CommandScope scope(cmd);
    ARTFORN known, wanted = pair;
    const bool is_known = Search(scope.get(), pair.arf_fornitore, pair.arf_codice, &known);
    if (is_known && known.arf_articolo == pair.arf_articolo) return;
    SqlTransaction(scope.get(), is_known ? kUpdate : kInsert, &wanted);
}

CPSQLcam::CPSQLcam()
    : CCodeTable(
          {"caumag",
           {LUMERA_COLUMN(CAUMAG, cam_codice, kKey), LUMERA_PLAIN(CAUMAG, cam_desc), LUMERA_PLAIN(CAUMAG, cam_tipo)}})
{
}

CPSQLtes::CPSQLtes()
    : CCodeTable({"testate1",
                  {LUMERA_COLUMN(TESTATE, tes_codice, kKey), LUMERA_PLAIN(TESTATE, tes_anno),
                   LUMERA_PLAIN(TESTATE, tes_cod_for), LUMERA_PLAIN(TESTATE, tes_n_fat),
                   LUMERA_DATE(TESTATE, tes_d_fat), LUMERA_CODE(TESTATE, tes_cau), LUMERA_DATE(TESTATE, tes_data),
                   LUMERA_PLAIN(TESTATE, tes_rif), LUMERA_PLAIN(TESTATE, tes_totale)}})
{
}

CPSQLrig::CPSQLrig()
    : CTable({"righe1",
              {LUMERA_COLUMN(RIGHE, rig_codice, kKey), LUMERA_COLUMN(RIGHE, rig_idx, kKey),
               LUMERA_PLAIN(RIGHE, rig_articolo), LUMERA_PLAIN(RIGHE, rig_desc), LUMERA_PLAIN(RIGHE, rig_um),
               LUMERA_PLAIN(RIGHE, rig_qta), LUMERA_PLAIN(RIGHE, rig_prezzo), LUMERA_PLAIN(RIGHE, rig_sconto_1),
               LUMERA_PLAIN(RIGHE, rig_sconto_2), LUMERA_PLAIN(RIGHE, rig_sconto_3), LUMERA_PLAIN(RIGHE, rig_importo),
               LUMERA_PLAIN(RIGHE, rig_aliquota)}})
{
}

#include "tables/FaultList.h"

#include <fmt/format.h>

// Articles and warehouse reasons.

std::vector<FieldFault> CheckArticolo(SACommand *cmd, const ARTICOLI &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "art_");
    // A code of 0 is how editors and files ask for a new record.
    if (Trimmed(record.art_codice).empty() || record.art_codice == "0")
        faults.Refuse("codice", "Codice mancante.");
    else if (is_new && RecordExists(scope.get(), sqlart, &record))
        faults.Refuse("codice", fmt::format("Il codice {} è già presente.", record.art_codice.str()));
    faults.Description("desc", record.art_desc);
    if (record.art_ean.empty()) return faults.Take();

    if (const std::string fault = EanFault(record.art_ean); !fault.empty())
        faults.Ask("ean", fmt::format("Codice a barre {}: {}.", record.art_ean.str(), fault));
    ARTICOLI other;
    if (sqlart.First(
            scope.get(), " WHERE art_ean = :ean AND art_codice <> :codice ORDER BY art_codice",
            [&](SACommand &query) {
                query.Param("ean").setAsString(record.art_ean);
                query.Param("codice").setAsString(record.art_codice);
            },
            &other))
        faults.Ask("ean", fmt::format("L'articolo {} ha lo stesso codice a barre.", other.art_codice.str()));
    return faults.Take();
}

std::vector<FieldFault> CheckCausaleMagazzino(SACommand *cmd, const CAUMAG &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "cam_");
    faults.Code("codice", record.cam_codice, sqlcam, &record, is_new);
    faults.Description("desc", record.cam_desc);
    faults.RefuseIf(record.cam_tipo != "C" && record.cam_tipo != "S", "tipo", "Indicare C (carico) o S (scarico).");
    faults.RefuseIf(record.cam_tipo == "S" && record.cam_codice != 0 &&
                        lumera_db_flag.flg_cau_magazzino == record.cam_codice,
                    "tipo", "La causale è quella delle fatture ricevute: deve restare di carico.");
    return faults.Take();
}

#include "tables/FaultList.h"

#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/InstalmentRules.h"
#include "tarvolumera/JournalEntry.h"
#include "tarvolumera/fatturapa/FatturaCodes.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

// What drives an entry: causali, VAT codes, payment terms.

namespace {

/// The register fixes whose documents it holds; the journal alone takes any.
void CheckRegister(FaultList &faults, const CAUCONT &record)
{
    const bool known = record.cac_reg >= kJournalOnly && record.cac_reg <= kEuSales;
    if (!known) return faults.Refuse("reg", "Il registro va da 1 a 7.");
    if (record.cac_rel < kCustomer || record.cac_rel > kNoCounterpart)
        return faults.Refuse("rel", "Soggetto: 0 cliente, 1 fornitore, 2 nessuno.");
    faults.Flag("iva", record.cac_iva);
    faults.Flag("iva_sosp", record.cac_iva_sosp);
    faults.RefuseIf(record.cac_iva == 1 && record.cac_reg == kJournalOnly, "iva",
                    "Le righe IVA vogliono un registro IVA.");
    faults.RefuseIf(record.cac_iva_sosp == 1 && record.cac_iva == 0, "iva_sosp",
                    "L'IVA in sospensione vuole le righe IVA.");
    const bool sales = record.cac_reg == kSales || record.cac_reg == kSuspendedSales || record.cac_reg == kEuSales;
    const bool unusual =
        (IsPurchaseRegister(record.cac_reg) && record.cac_rel != kSupplier) || (sales && record.cac_rel != kCustomer);
    if (unusual)
        faults.Ask("rel", fmt::format("Nel registro {} il soggetto è di solito un {}.", RegisterName(record.cac_reg),
                                      sales ? "cliente" : "fornitore"));
}

void CheckTemplateRow(FaultList &faults, const CAUCONT_RIGA &row)
{
    MASTRI master;
    CONTI account;
    SOTTOCON sub_account;
    SACommand *cmd = faults.Cmd();
    if (row.car_mas == 0) {
        faults.RefuseIf(row.car_con != 0 || row.car_sot != 0, "mas", "Manca il mastro.");
        return;
    }
    const bool on_counterpart = MasterRelation(lumera_db_impo, row.car_mas) != kNoCounterpart;
    if (!sqlmas.Search(cmd, row.car_mas, &master))
        faults.Refuse("mas", fmt::format("Il mastro {} non esiste.", row.car_mas));
    else if (row.car_con == 0 && row.car_sot != 0)
        faults.Refuse("con", "Manca il conto.");
    else if (row.car_con != 0 && !sqlcon.Search(cmd, row.car_mas, row.car_con, &account))
        faults.Refuse("con", fmt::format("Il conto {}.{} non esiste.", row.car_mas, row.car_con));
    else if (row.car_sot != 0 && !on_counterpart &&
             !sqlsot.Search(cmd, row.car_mas, row.car_con, row.car_sot, &sub_account))
        faults.Refuse("sot", fmt::format("Il conto {}.{}.{} non esiste.", row.car_mas, row.car_con, row.car_sot));
    else if (row.car_sot != 0 && on_counterpart && !AccountExists(cmd, {row.car_mas, row.car_con, row.car_sot}))
        faults.Refuse("sot", fmt::format("Il soggetto {} non esiste.", row.car_sot));
    faults.RefuseIf(row.car_tipo < 0 || row.car_tipo > 2, "tipo", "Segno: 0 dare, 1 avere, 2 a scelta.");
    faults.Flag("auto", row.car_auto);
}

} // namespace

std::vector<FieldFault> CheckCausale(SACommand *cmd, const CAUCONT &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "cac_");
    faults.Code("codice", record.cac_codice, sqlcac, &record, is_new);
    faults.Description("desc", record.cac_desc);
    CheckRegister(faults, record);
    faults.Reference("sez", sqlsez, record.cac_sez, "La sezione");
    const long document = record.cac_tipo_documento;
    faults.RefuseIf(document != 0 && !fatturapa::IsKnownTipoDocumento(fmt::format("TD{:02}", document)),
                    "tipo_documento", fmt::format("Il tipo documento {} non esiste.", document));
    faults.Flag("nota_variazione", record.cac_nota_variazione);
    faults.Flag("allegati", record.cac_allegati);
    FaultList rows(scope.get(), "car_");
    for (std::size_t i = 0; i < record.righe.size(); ++i) {
        rows.SetRow(static_cast<int>(i + 1));
        CheckTemplateRow(rows, record.righe[i]);
    }
    std::vector<FieldFault> all = faults.Take();
    for (FieldFault &fault : rows.Take()) {
        fault.text = fmt::format("Riga n. {}: {}", fault.row, fault.text);
        all.push_back(std::move(fault));
    }
    return all;
}

namespace {

bool NeedsRate(long kind)
{
    return kind == kVatTaxable || kind == kVatNonDeductible || kind == kVatReverseChargeOwn || kind == kVatCapitalGoods;
}

/// The document of a reverse charge, of a margin or of another state bears no tax, but a code of the kind may carry the
/// rate at which the buyer integrates it.
bool MayHaveRate(long kind)
{
    return NeedsRate(kind) || kind == kVatMargin || kind == kVatReverseCharge || kind == kVatOtherState;
}

/// "N3" for kind 3; kinds of taxable operations have none.
std::string NatureFamily(long kind)
{
    return std::string(fatturapa::IvaTipToNatura(static_cast<short>(kind)));
}

void CheckNature(FaultList &faults, const CODIVA &record)
{
    const std::string family = NatureFamily(record.iva_tip);
    const std::string &nature = record.iva_natura.str();
    if (family.empty()) {
        // A reverse charge that is owed here comes on documents of nature N6, so the code may carry it.
        const bool own_charge = record.iva_tip == kVatReverseChargeOwn && nature.starts_with("N6");
        faults.RefuseIf(!nature.empty() && !own_charge, "natura", "Questo tipo di codice non ha natura.");
    } else if (!nature.starts_with(family)) {
        faults.Refuse("natura", fmt::format("La natura di questo tipo di codice è {}.", family));
    }
    faults.RefuseIf(!nature.empty() && !fatturapa::IsKnownNatura(nature), "natura",
                    fmt::format("La natura {} non esiste.", nature));
}

void CheckRates(FaultList &faults, const CODIVA &record)
{
    const bool may_have_tax = MayHaveRate(record.iva_tip);
    faults.Range("aliq", record.iva_aliq, 0, 100);
    faults.RefuseIf(NeedsRate(record.iva_tip) && TestIfZero(record.iva_aliq), "aliq",
                    "Aliquota mancante per un'operazione con imposta.");
    faults.RefuseIf(!may_have_tax && !TestIfZero(record.iva_aliq), "aliq",
                    "Questo tipo di codice non ha imposta: aliquota 0.");
    faults.Range("inded", record.iva_inded, 0, 100);
    faults.RefuseIf(!may_have_tax && !TestIfZero(record.iva_inded), "inded",
                    "Senza imposta non c'è una parte indetraibile.");
    faults.RefuseIf(record.iva_tip == kVatNonDeductible && !TestIfZero(record.iva_inded) &&
                        !TestIfZero(record.iva_inded - 100),
                    "inded", "Un codice indetraibile lo è per intero.");
}

/// The entries keep rate and kind of their day; a code that means something else from now on deserves a thought.
void AskAboutUse(FaultList &faults, const CODIVA &record)
{
    CODIVA stored;
    if (!sqliva.Search(faults.Cmd(), record.iva_codice, &stored)) return;
    if (stored.iva_tip == record.iva_tip && TestIfZero(stored.iva_aliq - record.iva_aliq)) return;
    std::string condition;
    for (std::size_t i = 0; i < kVatLines; ++i)
        condition += fmt::format("{}pno_iva_{} = :codice", i == 0 ? "" : " OR ", i);
    const long entries = CountRows(faults.Cmd(), "SELECT COUNT(*) FROM admin.pnota1 WHERE " + condition,
                                   [&](SACommand &query) { query.Param("codice").setAsLong(record.iva_codice); });
    if (entries > 0)
        faults.Ask("aliq",
                   fmt::format("Il codice è già usato in prima nota ({}): quanto è registrato non cambia.", entries));
}

void AskAboutPreferred(FaultList &faults, const CODIVA &record)
{
    if (record.iva_aliq_default != 1) return;
    CODIVA other;
    const bool found = sqliva.First(
        faults.Cmd(),
        " WHERE iva_aliq = :aliq AND iva_tip = :tip AND iva_aliq_default = 1 AND iva_codice <> :codice ORDER BY "
        "iva_codice",
        [&](SACommand &query) {
            query.Param("aliq").setAsDouble(record.iva_aliq);
            query.Param("tip").setAsLong(record.iva_tip);
            query.Param("codice").setAsLong(record.iva_codice);
        },
        &other);
    if (found)
        faults.Ask("aliq_default", fmt::format("Per aliquota e tipo è già preferito il codice {} {}", other.iva_codice,
                                               other.iva_desc.str()));
}

} // namespace

std::vector<FieldFault> CheckCodiva(SACommand *cmd, const CODIVA &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "iva_");
    faults.Code("codice", record.iva_codice, sqliva, &record, is_new);
    faults.Description("desc", record.iva_desc);
    faults.Flag("aliq_default", record.iva_aliq_default);
    if (record.iva_tip < kVatTaxable || record.iva_tip > kVatOtherState) {
        faults.Refuse("tip", "Il tipo va da 1 a 14.");
        return faults.Take();
    }
    CheckRates(faults, record);
    CheckNature(faults, record);
    if (!is_new) AskAboutUse(faults, record);
    AskAboutPreferred(faults, record);
    return faults.Take();
}

namespace {

constexpr std::array<std::string_view, 3> kStartRules = {"DATA FATTURA", "DATA DIVERSA", "FINE MESE"};
constexpr long kPaymentKindMax = 99, kDaysMax = 999;

template <std::size_t N>
bool IsOneOf(const std::array<std::string_view, N> &known, std::string_view text)
{
    return std::find(known.begin(), known.end(), text) != known.end();
}

void CheckMonth(FaultList &faults, const char *field, std::string_view month)
{
    faults.RefuseIf(!month.empty() && MonthOfName(month) == 0, field,
                    fmt::format("«{}» non è un mese: scriverlo intero, come AGOSTO.", month));
}

/// Yearly instalments on a fixed day, for one, come to the same excluded month again and again.
void CheckExcludedMonths(FaultList &faults, const PAGAMENTI &record)
{
    const long days = record.pag_gg_int;
    if (!GeneratesInstalments(record) || days < 0 || days > kDaysMax) return; // told already
    faults.RefuseIf(!LeavesExcludedMonths(record), "gg_int",
                    fmt::format("Con rate ogni {} giorni una scadenza può non uscire mai dai mesi esclusi: cambiare "
                                "l'intervallo o i mesi.",
                                days));
}

} // namespace

std::vector<FieldFault> CheckPagamento(SACommand *cmd, const PAGAMENTI &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "pag_");
    faults.Code("codice", record.pag_codice, sqlpag, &record, is_new);
    faults.Description("desc", record.pag_desc);
    faults.Range("tipo_pag", static_cast<double>(record.pag_tipo_pag), 0, kPaymentKindMax);
    // Collections find their causale by this text.
    if (record.pag_tipo_pag == kPaymentRiba && ToUpper(Trimmed(record.pag_tipo)) != "RI.BA.")
        faults.Ask("tipo", "Le ricevute bancarie si riconoscono dal testo RI.BA.");
    faults.Flag("genera", record.pag_genera);
    faults.RefuseIf(!IsOneOf(kStartRules, record.pag_ini), "ini",
                    "Decorrenza: DATA FATTURA, DATA DIVERSA o FINE MESE.");
    faults.Range("gg_ini", static_cast<double>(record.pag_gg_ini), 0, kDaysMax);
    faults.Range("gg_int", static_cast<double>(record.pag_gg_int), 0, kDaysMax);
    const long least = GeneratesInstalments(record) ? 1 : 0;
    faults.RefuseIf(record.pag_num_rate < least || record.pag_num_rate > kInstalmentsMax, "num_rate",
                    fmt::format("Le rate vanno da {} a {}.", least, kInstalmentsMax));
    faults.RefuseIf(record.pag_num_rate == kInstalmentsMax && InstalmentCount(record) > kInstalmentsMax, "num_rate",
                    fmt::format("Con quella dell'IVA le rate sono più di {}.", kInstalmentsMax));
    CheckMonth(faults, "mese_esc_1", record.pag_mese_esc_1);
    CheckMonth(faults, "mese_esc_2", record.pag_mese_esc_2);
    CheckMonth(faults, "mese_esc_3", record.pag_mese_esc_3);
    faults.Flag("rate_uguali", record.pag_rate_uguali);
    faults.Flag("iva_separata", record.pag_iva_separata);
    faults.Range("gg_fisso_1", static_cast<double>(record.pag_gg_fisso_1), 0, 31);
    faults.Range("gg_fisso_2", static_cast<double>(record.pag_gg_fisso_2), 0, 31);
    faults.RefuseIf(record.pag_gg_fisso_2 != 0 && record.pag_gg_fisso_1 == record.pag_gg_fisso_2, "gg_fisso_2",
                    "I due giorni fissi sono uguali.");
    CheckExcludedMonths(faults, record);
    return faults.Take();
}

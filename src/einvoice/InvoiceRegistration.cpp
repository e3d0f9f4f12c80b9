#include "einvoice/InvoiceRegistration.h"

#include "einvoice/InvoiceComparison.h"
#include "einvoice/InvoiceDocuments.h"
#include "einvoice/InvoiceRounding.h"
#include "ledger/EntryEditing.h"
#include "ledger/EntryStorage.h"
#include "schedule/Instalments.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Causali.h"
#include "tarvolumera/FiscalCodes.h"
#include "tarvolumera/MasterRecords.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/Schedule.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fmt/printf.h>

namespace {

constexpr const char *kTooManyRates = "Non è possibile gestire più di 7 aliquote iva!";

bool Stop(std::string *reason, const std::string &text)
{
    AfxMessageBox(text, MB_OK | MB_ICONSTOP);
    *reason = text;
    return false;
}

/// The causale of the registration: asked for, the supplier's, or chosen in the browser on the company's default.
bool ChooseCausale(SACommand *cmd, const FORNITORI &supplier, long wanted, const RegistrationChoices &choices,
                   CAUCONT *causale, std::string *reason)
{
    long code = wanted != 0 ? wanted : supplier.for_cau;
    if (code == 0 && choices.choose_causale) code = choices.choose_causale(lumera_db_flag.flg_cau_fatture);
    if (code == 0) {
        *reason = "Nessuna causale contabile scelta.";
        return false;
    }
    if (!sqlcac.Search(cmd, code, causale)) return Stop(reason, fmt::format("La causale {} non esiste.", code));
    if (!IsPurchaseRegister(causale->cac_reg))
        return Stop(reason, "Il registro della causale contabile preimpostata non è valido!");
    if (causale->cac_iva != 1) return Stop(reason, "La causale deve essere una causale iva!");
    return true;
}

/// The browser's choice for a rate and nature that the table of VAT codes does not have.
long AskVatCode(const fatturapa::DatiRiepilogoType &row, const RegistrationChoices &choices)
{
    std::string text = fmt::sprintf("Selezionare Aliquota IVA %.2f", row.AliquotaIVA);
    text += "\n\nNatura : ";
    text += fatturapa::NaturaText(row.Natura);
    if (!row.RiferimentoNormativo.empty()) text += "\n\nRif.to Normativo : " + row.RiferimentoNormativo;
    AfxMessageBox(text, MB_OK | MB_ICONEXCLAMATION);
    return choices.choose_vat_code ? choices.choose_vat_code(row) : 0;
}

bool VatCodeFor(SACommand *cmd, const fatturapa::DatiRiepilogoType &row, const RegistrationChoices &choices,
                CODIVA *code)
{
    if (sqliva.SearchByRate(cmd, row.AliquotaIVA, fatturapa::NaturaToIvaTip(row.Natura), code)) return true;
    const long chosen = AskVatCode(row, choices);
    if (chosen == 0 || !sqliva.Search(cmd, chosen, code)) return false;
    if (!TestIfZero(code->iva_aliq - row.AliquotaIVA))
        AfxMessageBox("L'aliquota iva selezionata non è conforme a quanto indicato in fattura!",
                      MB_OK | MB_ICONINFORMATION);
    return true;
}

PNOTA NewEntry(SACommand *cmd, const FORNITORI &supplier, const CAUCONT &causale,
               const fatturapa::DatiGeneraliDocumentoType &document, long registration_day)
{
    PNOTA entry;
    sqlpno.Blank(cmd, &entry);
    entry.pno_data = registration_day != 0 ? registration_day : document.Data;
    entry.pno_data_doc = document.Data;
    entry.pno_cli_for = supplier.for_codice;
    EnterCausale(cmd, &entry, causale);
    EnterDocumentNumber(&entry, document.Numero);
    EnterTerms(cmd, &entry, supplier.for_pag);
    return entry;
}

/// A supplier that is stored only together with the entry is not found when the causale looks it up.
void TakeNewSupplier(const FORNITORI &supplier, PNOTA *entry)
{
    entry->pno_cli_for = supplier.for_codice;
    entry->des_clifor = supplier.for_desc;
    for (PNOTA_RIGA &row : entry->righe) {
        if (row.row_mas != lumera_db_impo.dit_mas_for) continue;
        row.row_con = GetContoFornitore(&supplier);
        row.row_sot = supplier.for_codice;
        row.des_sot = supplier.for_desc;
    }
}

/// Another station may have stored the seller, or given the proposed code to somebody else, since the entry was
/// prepared.
void StoreNewSupplier(SACommand *cmd, const fatturapa::PartyType &seller, PreparedInvoice *prepared, PNOTA *entry)
{
    FORNITORI &supplier = prepared->new_supplier;
    FORNITORI there;
    const long code = FindSupplierOf(cmd, seller);
    if (code != 0) {
        sqlfor.Search(cmd, code, &supplier);
    } else {
        if (sqlfor.Search(cmd, supplier.for_codice, &there)) supplier.for_codice = sqlfor.NextCode(cmd);
        sqlfor.SqlTransaction(cmd, kInsert, &supplier);
    }
    TakeNewSupplier(supplier, entry);
    prepared->supplier = supplier;
    // The duplicates were counted under the code that was proposed.
    if (code != 0 && FindDuplicateDocument(cmd, *entry, DuplicateYear::OfDocument) != 0)
        throw SAException(SA_UserGenerated_Error, 20066,
                          "Il documento è stato registrato in questo momento da un'altra stazione.");
}

PNOTA_RIGA *FirstFreeRow(PNOTA *entry)
{
    std::size_t free = 0;
    for (std::size_t i = 0; i < kEntryRows; ++i) {
        if (entry->righe[i].InUse()) free = i + 1;
    }
    return free < kEntryRows ? &entry->righe[free] : nullptr;
}

/// Stamp duty that the seller charges on is an amount excluded from the taxable base (art. 15): it gets a VAT line of
/// its own, so that total, instalments and cost hold it. False when there is no free line or no such VAT code.
bool AddExcludedLine(SACommand *cmd, double amount, PNOTA *entry)
{
    CODIVA code;
    const auto free =
        std::find_if(entry->iva.begin(), entry->iva.end(), [](const PNOTA_IVA &line) { return line.iva == 0; });
    if (free == entry->iva.end() || !sqliva.SearchByRate(cmd, 0, kVatExcluded, &code)) return false;
    *free = {code.iva_codice, code.iva_tip, 0, amount, 0, 0};
    sqlpno.RecalcPNota(cmd, entry, 1, 0, 0, 0, 0);
    return true;
}

/// Posts what the document's total has beyond its VAT summary, so that the supplier is owed what the invoice says.
/// Above the company's limit the user decides, and a No stops.
bool PostRounding(SACommand *cmd, const fatturapa::FatturaElettronicaBody &body, PreparedInvoice *prepared,
                  std::string *reason)
{
    const TotalReading reading = ReadTotal(body);
    if (TestIfZero(reading.rounding)) return true;
    const double difference = SignOf(body) * reading.rounding;
    const std::string figures = fmt::format(
        "Totale documento {}, riepilogo IVA {}, differenza {} ({}).", FormatAmount(fatturapa::TotaleDocumento(body)),
        FormatAmount(fatturapa::SumOfSummary(body).totale), FormatAmount(reading.rounding), reading.how);
    if (reading.is_stamp_duty && AddExcludedLine(cmd, difference, &prepared->entry)) {
        prepared->notes.push_back(figures + " Registrata come esclusa art. 15.");
        return true;
    }
    const AccountKey account = difference > 0 ? lumera_db_flag.RoundingExpense() : lumera_db_flag.RoundingIncome();
    PNOTA_RIGA *row = FirstFreeRow(&prepared->entry);
    const bool postable =
        std::fabs(difference) <= lumera_db_flag.flg_arr_limite + 1e-9 && account.IsSet() && row != nullptr;
    if (!postable) {
        if (AfxMessageBox(figures + "\n\nVuoi Continuare ?", MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES) {
            *reason = figures;
            return false;
        }
        prepared->notes.push_back(figures + " Non registrata.");
        return true;
    }
    row->row_mas = account.mas;
    row->row_con = account.con;
    row->row_sot = account.sot;
    row->row_tipo = difference > 0 ? "D" : "A";
    row->row_base = row->row_tipo;
    row->row_importo = std::fabs(difference);
    row->row_cau = prepared->entry.pno_cau;
    row->row_descac = prepared->entry.pno_des_cau;
    row->row_n_doc = prepared->entry.pno_doc;
    sqlpno.RecalcPNota(cmd, &prepared->entry, 1, difference, 0, 0, 0);
    prepared->notes.push_back(figures + " Le scadenze non la comprendono.");
    return true;
}

void Doubt(PreparedInvoice *prepared, std::string text)
{
    prepared->doubts.push_back(text);
    prepared->notes.push_back(std::move(text));
}

/// The members of a VAT group share its VAT number; who of them the invoice is from, only the fiscal code tells. A
/// person who is stored with his VAT number as fiscal code too is no such case: the codes differ in length.
void CheckFiscalCode(const fatturapa::PartyType &seller, PreparedInvoice *prepared)
{
    const std::string in_file = NormalisedFiscalCode(seller.DatiAnagrafici.CodiceFiscale);
    const std::string stored = NormalisedFiscalCode(prepared->supplier.for_codfis);
    const std::string vat_number = fatturapa::VatNumber(seller.DatiAnagrafici.IdFiscaleIVA);
    const bool is_same = in_file == stored || in_file.size() != stored.size();
    if (in_file.empty() || is_same || prepared->supplier.for_piva != vat_number) return;
    Doubt(prepared, fmt::format("Il fornitore {} ha la stessa partita IVA ma il codice fiscale {}, in fattura {}: può "
                                "essere un altro.",
                                prepared->supplier.for_codice, stored, in_file));
}

/// What the total says in another way than the entry: amounts that are not paid to the supplier were taken off.
void NoteTotal(const fatturapa::FatturaElettronicaBody &body, PreparedInvoice *prepared)
{
    const TotalReading reading = ReadTotal(body);
    if (TestIfZero(reading.left_out)) return;
    prepared->notes.push_back(fmt::format("Il totale indicato, {}, è {}: registrato {}.",
                                          FormatAmount(fatturapa::TotaleDocumento(body)), reading.how,
                                          FormatAmount(prepared->entry.pno_tot_doc)));
}

void NoteWhatMatters(const fatturapa::FatturaElettronicaBody &body, PreparedInvoice *prepared)
{
    const auto &document = body.DatiGenerali.DatiGeneraliDocumento;
    if (fatturapa::IsCreditNote(document.TipoDocumento))
        prepared->notes.push_back(SignOf(body) < 0
                                      ? "Trattata come nota di credito: importi positivi nel file, segno invertito."
                                      : "Trattata come nota di credito: importi già negativi nel file.");
    bool reverse_charge = false, split = false;
    for (const auto &row : body.DatiBeniServizi.DatiRiepilogo) {
        reverse_charge = reverse_charge || fatturapa::NaturaToIvaTip(row.Natura) == kVatReverseCharge;
        split = split || row.EsigibilitaIVA == "S";
    }
    if (reverse_charge) prepared->notes.push_back("Inversione contabile: integrare l'imposta nel movimento.");
    if (split)
        Doubt(prepared, "Scissione dei pagamenti: l'imposta non è dovuta al fornitore, va tolta dalle scadenze.");
    for (const auto &withholding : document.DatiRitenuta)
        prepared->notes.push_back(fmt::format("Ritenuta d'acconto di {} da trattenere al pagamento.",
                                              FormatAmount(withholding.ImportoRitenuta)));
}

PNOTA_ALLEGATO AttachmentFrom(const ALLEGATI &filed)
{
    PNOTA_ALLEGATO file;
    file.pat_desc = filed.all_desc;
    file.pat_fname = filed.all_fname;
    file.pat_data = filed.all_data;
    return file;
}

/// The readable document filed under that name, if it is the invoice's and not that of another one of the same name.
bool FindPdfByName(SACommand *cmd, const ALLEGATI &filed, const std::string &name, long year, ALLEGATI *pdf)
{
    SACommand query(cmd->Connection(), "SELECT all_codice, all_desc, all_fname FROM admin.allegati WHERE all_fname ="
                                       " :name AND all_anno = :anno");
    query.Param("name").setAsString(name);
    query.Param("anno").setAsLong(year);
    query.Execute();
    std::vector<long> codes;
    while (query.FetchNext()) codes.push_back(query.Field("all_codice").asLong());
    return std::any_of(codes.begin(), codes.end(),
                       [&](long code) { return sqlall.Search(cmd, year, code, pdf) && IsInvoicePdf(*pdf, filed); });
}

/// Whether anything at all is filed under one of the names: most invoices have no readable document, and then each name
/// of each year would be asked for in vain.
bool HasAnyNamed(SACommand *cmd, const std::vector<std::array<std::string, 2>> &names, const std::array<long, 2> &years)
{
    SACommand query(cmd->Connection(),
                    "SELECT all_codice FROM admin.allegati WHERE all_anno IN (:anno1, :anno2) AND all_fname IN"
                    " (:name1, :name2, :name3, :name4, :name5, :name6) LIMIT 1");
    query.Param("anno1").setAsLong(years[0]);
    query.Param("anno2").setAsLong(years[1]);
    int number = 0;
    for (const std::array<std::string, 2> &pair : names)
        for (const std::string &name : pair) query.Param(fmt::format("name{}", ++number)).setAsString(name);
    query.Execute();
    return query.FetchNext();
}

/// What the buyer sends to the exchange system himself, in the name of a seller who is mostly abroad: it integrates an
/// invoice that is owed without tax, and is no second debt.
bool IsOwnIntegration(const std::string &type)
{
    constexpr const char *kTypes[] = {"TD16", "TD17", "TD18", "TD19", "TD20", "TD22", "TD23", "TD28", "TD29"};
    return std::ranges::find(kTypes, type) != std::end(kTypes);
}

/// The company's own self-invoices come back from the exchange system and are no purchases; amounts in another currency
/// cannot be booked as euro without the bookkeeper knowing.
bool IsOrdinaryPurchase(const CFattureElettronicheDB &content, const fatturapa::DatiGeneraliDocumentoType &document,
                        std::string *reason)
{
    const std::string seller = fatturapa::VatNumber(content.Header().CedentePrestatore.DatiAnagrafici.IdFiscaleIVA);
    if (!seller.empty() && seller == lumera_db_impo.dit_piva.str())
        return Stop(reason, "Il cedente è la ditta stessa: è un'autofattura, da registrare in prima nota.");
    const auto goes_on = [&](const std::string &text) {
        if (AfxMessageBox(text + "\n\nVuoi Continuare ?", MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES)
            return true;
        *reason = text;
        return false;
    };
    if (IsOwnIntegration(document.TipoDocumento) &&
        !goes_on(fmt::format("Il documento è di tipo {}: lo emette chi acquista, e non è un debito verso il fornitore.",
                             document.TipoDocumento)))
        return false;
    return document.Divisa.empty() || document.Divisa == "EUR" ||
           goes_on(fmt::format("Gli importi del documento sono in {}, non in euro.", document.Divisa));
}

} // namespace

bool FillVatLines(SACommand *cmd, const fatturapa::FatturaElettronicaBody &body, const RegistrationChoices &choices,
                  PNOTA *entry)
{
    const int sign = SignOf(body);
    entry->iva = {};
    std::size_t line = 0;
    for (const auto &row : body.DatiBeniServizi.DatiRiepilogo) {
        if (line == kVatLines) {
            AfxMessageBox(kTooManyRates, MB_OK | MB_ICONSTOP);
            return false;
        }
        CODIVA code;
        if (!VatCodeFor(cmd, row, choices, &code)) return false;
        PNOTA_IVA &target = entry->iva[line++];
        target.iva = code.iva_codice;
        target.tip = code.iva_tip;
        target.ind = code.iva_inded;
        target.aliq = row.AliquotaIVA;
        target.impo = sign * Round(row.ImponibileImporto, 2);
        target.imposta = sign * Round(row.Imposta, 2);
        if (row.EsigibilitaIVA == "S") entry->pno_split_payment = 1;
    }
    return line > 0;
}

bool PrepareInvoiceEntry(SACommand *cmd, const ALLEGATI &filed, const CFattureElettronicheDB &content,
                         std::size_t document, long causale_code, const RegistrationChoices &choices,
                         PreparedInvoice *prepared, std::string *reason)
{
    CommandScope scope(cmd);
    const fatturapa::FatturaElettronicaBody &body = content.Documents().at(document);
    const auto &general = body.DatiGenerali.DatiGeneraliDocumento;
    if (body.DatiBeniServizi.DatiRiepilogo.size() > kVatLines) return Stop(reason, kTooManyRates);
    if (!IsOrdinaryPurchase(content, general, reason)) return false;
    bool is_new = false;
    if (!CreaFornnitore(scope.get(), content.Header().CedentePrestatore, choices, &prepared->supplier, &is_new)) {
        *reason = "Fornitore non individuato.";
        return false;
    }
    if (is_new) prepared->new_supplier = prepared->supplier;
    CAUCONT causale;
    if (!ChooseCausale(scope.get(), prepared->supplier, causale_code, choices, &causale, reason)) return false;

    prepared->entry = NewEntry(scope.get(), prepared->supplier, causale, general, choices.registration_day);
    prepared->entry.pno_all = filed.all_codice;
    prepared->entry.pno_all_doc = static_cast<long>(document + 1);
    if (is_new) TakeNewSupplier(prepared->supplier, &prepared->entry);
    if (lumera_db_flag.flg_fatture_altro_anno == 0 && Year(prepared->entry.pno_data) != lumera_db_impo.dit_anno)
        return Stop(reason, "Non è possibile contabilizzare il documento nell'anno corrente!");
    if (!FillVatLines(scope.get(), body, choices, &prepared->entry)) {
        *reason = "Codice IVA non individuato.";
        return false;
    }
    const long duplicate = FindDuplicateDocument(scope.get(), prepared->entry, DuplicateYear::OfRegistration);
    if ((duplicate != 0 && choices.skip_duplicates) || !ConfirmDuplicate(duplicate)) {
        *reason = fmt::format("Già registrata il {}.", FormatDate(duplicate));
        return false;
    }
    sqlpno.RecalcPNota(scope.get(), &prepared->entry, 1, 0, 0, 0, 0);
    if (!PostRounding(scope.get(), body, prepared, reason)) return false;
    NoteTotal(body, prepared);
    NoteWhatMatters(body, prepared);
    if (!is_new) CheckFiscalCode(content.Header().CedentePrestatore, prepared);
    if (!choices.leave_doubtful || prepared->doubts.empty()) return true;
    *reason = prepared->doubts.front();
    return false;
}

void AttachFiles(SACommand *cmd, const ALLEGATI &filed, PNOTA *entry)
{
    entry->allegati.push_back(AttachmentFrom(filed));
    CommandScope scope(cmd);
    const std::vector<std::array<std::string, 2>> all_names = InvoicePdfNames(filed.all_fname);
    const std::array<long, 2> years = {filed.all_anno, lumera_db_impo.dit_anno};
    if (!HasAnyNamed(scope.get(), all_names, years)) return;
    ALLEGATI pdf;
    for (const std::array<std::string, 2> &names : all_names)
        for (const std::string &name : names)
            for (const long year : years)
                if (FindPdfByName(scope.get(), filed, name, year, &pdf)) {
                    entry->allegati.push_back(AttachmentFrom(pdf));
                    return;
                }
}

void AttachReadable(const ALLEGATI &pdf, PNOTA *entry)
{
    const bool has_it = std::any_of(entry->allegati.begin(), entry->allegati.end(),
                                    [&](const PNOTA_ALLEGATO &file) { return file.pat_fname == pdf.all_fname; });
    if (!has_it) entry->allegati.push_back(AttachmentFrom(pdf));
}

RegistrationOutcome RegisterInvoice(SACommand *cmd, long code, std::size_t document, long causale,
                                    const RegistrationChoices &choices)
{
    CommandScope scope(cmd);
    RegistrationOutcome outcome;
    CFattureElettronicheDB content;
    const ALLEGATI filed = LoadInvoice(scope.get(), code, &content);
    if (document >= content.Count()) {
        outcome.reason = fmt::format("Il file contiene {} documenti.", content.Count());
        return outcome;
    }
    PreparedInvoice prepared;
    std::optional<InstalmentProposal> instalments;
    std::string why_not;
    {
        const MasterRecords known(scope.get()); // but what StoreEntry checks, it reads itself
        if (!PrepareInvoiceEntry(scope.get(), filed, content, document, causale, choices, &prepared, &outcome.reason))
            return outcome;
        instalments = ProposeWholeInstalments(scope.get(), prepared.entry, &why_not);
    }
    AttachFiles(scope.get(), filed, &prepared.entry);
    outcome.notes = prepared.notes;
    if (!why_not.empty()) outcome.notes.push_back(why_not);
    if (instalments && !ConfirmTotal(instalments->rows, instalments->total)) {
        outcome.reason = "Scadenze non confermate.";
        return outcome;
    }
    if (choices.why_not) outcome.reason = choices.why_not(prepared);
    if (!outcome.reason.empty()) return outcome;
    StoreTogether together;
    together.new_counterpart = prepared.new_supplier.for_codice;
    if (together.new_counterpart != 0)
        together.before = [&](SACommand *inner, PNOTA *entry) {
            StoreNewSupplier(inner, content.Header().CedentePrestatore, &prepared, entry);
        };
    if (instalments)
        together.after = [&](SACommand *inner, const PNOTA &entry) {
            outcome.instalments = StoreInstalments(inner, entry, *instalments);
        };
    const StoreOutcome stored = StoreEntry(scope.get(), &prepared.entry, true, together);
    if (!stored.stored) {
        outcome.reason = stored.reason;
        return outcome;
    }
    if (prepared.supplier.for_pag == 0)
        AfxMessageBox("Nessuna modalità di pagamento impostata sul fornitore!\n\nNessuna scadenza generata.",
                      MB_OK | MB_ICONEXCLAMATION);
    for (std::string &difference : CompareWithInvoice(content.Documents()[document], prepared.entry))
        outcome.notes.push_back(std::move(difference));
    outcome.registered = true;
    outcome.entry = std::move(prepared.entry);
    return outcome;
}

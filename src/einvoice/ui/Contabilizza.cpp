#include "einvoice/ui/Contabilizza.h"

#include "einvoice/InvoiceComparison.h"
#include "einvoice/InvoiceDocuments.h"
#include "einvoice/InvoicePdf.h"
#include "einvoice/ui/InvoicePane.h"
#include "ledger/EntryStorage.h"
#include "ledger/ui/PNota.h"
#include "schedule/ui/GenScadenze.h"
#include "tables/ui/Fornitori.h"
#include "tables/ui/Lookups.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace {

/// What the browser of suppliers starts its search with: the seller's name, or the beginning of it that some supplier
/// has; legal forms and commas are written in many ways. Empty when even its first word is nobody's.
std::string SearchForSeller(const std::string &name)
{
    const BrowseDescription *suppliers = FindBrowse("fornitori");
    if (!suppliers) return name;
    CommandScope scope(nullptr);
    std::string text = name;
    while (!text.empty() && MatchCodes(scope.get(), *suppliers, {}, text, 1).empty()) {
        const std::size_t blank = text.find_last_of(' ');
        text.resize(blank == std::string::npos ? 0 : blank);
    }
    return text;
}

long ChooseSupplier(CWnd *parent, const fatturapa::PartyType &seller)
{
    CFornitoriBr browser(parent);
    browser.m_search = SearchForSeller(fatturapa::NameOf(seller.DatiAnagrafici.Anagrafica));
    return browser.DoModal() == IDOK ? browser.m_codice : 0;
}

bool ConfirmSupplier(CWnd *parent, FORNITORI *prepared)
{
    CFornitori editor(parent);
    editor.Propose(*prepared);
    editor.m_single = true;
    editor.DoModal();
    return editor.m_saved && sqlfor.Search(nullptr, editor.m_codice, prepared);
}

template <class Browser>
long Choose(CWnd *parent, long code)
{
    Browser browser(parent);
    browser.m_codice = code;
    return browser.DoModal() == IDOK ? browser.m_codice : 0;
}

/// One document of a filed invoice on its way into the journal.
class Contabilizzazione {
  public:
    Contabilizzazione(CWnd *parent, long code, std::size_t document) : parent_(parent), code_(code), document_(document)
    {
    }

    long Run()
    {
        if (!CTarvoDialog::Guarded(LUMERA_TAG, [this] { is_prepared_ = Prepare(); }) || !is_prepared_) return 0;
        LoadPages();
        if (!CTarvoDialog::Guarded(LUMERA_TAG, [this] { EditNew(); }) || stored_.pno_codice == 0) return 0;
        // From here on the entry is in the archive, whatever else fails.
        CTarvoDialog::Guarded(LUMERA_TAG, [this] { Compare(); });
        if (stored_.pno_codice == 0) return 0; // deleted again while it was being corrected
        CTarvoDialog::Guarded(LUMERA_TAG, [this] { GenerateInstalments(); });
        CTarvoDialog::Guarded(LUMERA_TAG, [this] { OfferPayment(); });
        return stored_.pno_codice;
    }

  private:
    bool Prepare()
    {
        CommandScope scope(nullptr);
        filed_ = LoadInvoice(scope.get(), code_, &content_);
        if (document_ >= content_.Count()) {
            AfxMessageBox(fmt::format("Il file contiene {} documenti.", content_.Count()), MB_OK | MB_ICONSTOP);
            return false;
        }
        std::string reason; // was shown, or is the user's own answer
        if (!PrepareInvoiceEntry(scope.get(), filed_, content_, document_, 0, WindowChoices(parent_), &prepared_,
                                 &reason))
            return false;
        AttachFiles(scope.get(), filed_, &prepared_.entry);
        accepted_ = CompareWithInvoice(Body(), prepared_.entry);
        return true;
    }

    const fatturapa::FatturaElettronicaBody &Body() const { return content_.Documents()[document_]; }

    /// The pages to read while the entry is completed. Without them it is registered just the same.
    void LoadPages()
    {
        try {
            if (content_.Count() > 1) {
                pages_ = RenderInvoicePdf(content_, document_);
                return;
            }
            const ALLEGATI pdf = StoredInvoicePdf(nullptr, code_);
            pages_ = AsText(pdf.all_data);
            AttachReadable(pdf, &prepared_.entry);
        } catch (const std::exception &error) {
            pages_fault_ = fmt::format("La fattura non può essere mostrata:\n\n{}", error.what());
        }
    }

    void ShowPages(CPNota *editor) const
    {
        auto *pane = new InvoicePane(pages_, editor);
        if (!pages_fault_.empty()) pane->ShowFault(pages_fault_);
        editor->ShowBeside({.widget = pane,
                            .caption = "Fattura",
                            .name = "la fattura",
                            .scroll = [pane](int steps) { pane->ScrollPages(steps); },
                            .zoom = [pane](double factor) { pane->ZoomBy(factor); }});
    }

    void EditNew()
    {
        CPNota editor(nullptr, parent_);
        editor.m_pnota = prepared_.entry;
        editor.m_single = true;
        editor.m_note = fmt::format("{}", fmt::join(prepared_.notes, "\n"));
        ShowPages(&editor);
        editor.DoModal();
        if (editor.m_saved) Reread(editor.m_pnota.pno_codice);
    }

    /// What counts is in the archive, not in the window that was closed.
    void Reread(long number)
    {
        if (!sqlpno.Search(nullptr, number, &stored_)) stored_ = PNOTA();
    }

    /// Names what differs until it is corrected or the user leaves it as it is. What he was asked about before the
    /// editor opened is not asked again.
    void Compare()
    {
        while (stored_.pno_codice != 0) {
            const std::vector<std::string> differences = CompareWithInvoice(Body(), stored_);
            if (differences.empty() || differences == accepted_) return;
            const std::string text =
                fmt::format("Il movimento registrato differisce dalla fattura:\n\n{}\n\nVuoi correggerlo?",
                            fmt::join(differences, "\n"));
            if (AfxMessageBox(text, MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES || !Correct()) return;
        }
    }

    /// @return false when the entry was left as it is
    bool Correct()
    {
        CPNota editor(nullptr, parent_);
        editor.m_pnota = stored_;
        editor.m_open = editor.m_single = true;
        ShowPages(&editor);
        editor.DoModal();
        Reread(stored_.pno_codice);
        return editor.m_saved;
    }

    /// By the terms that the entry has: the supplier's, unless the user chose others in the editor.
    void GenerateInstalments()
    {
        FORNITORI supplier;
        const bool has_terms = sqlfor.Search(nullptr, stored_.pno_cli_for, &supplier) && supplier.for_pag != 0;
        if (!has_terms && stored_.pno_pag == 0) {
            AfxMessageBox("Nessuna modalità di pagamento impostata sul fornitore!\n\nNessuna scadenza generata.",
                          MB_OK | MB_ICONEXCLAMATION);
            return;
        }
        CGenScadenze instalments(&stored_, parent_);
        instalments.DoModal();
    }

    void OfferPayment()
    {
        if (!OffersImmediatePayment(nullptr, stored_) ||
            AfxMessageBox("Vuoi Inserire adesso il pagamento?", MB_YESNO | MB_ICONQUESTION) != IDYES)
            return;
        CPNota editor(nullptr, parent_);
        editor.m_pnota = PrepareImmediatePayment(nullptr, stored_);
        editor.m_single = true;
        editor.DoModal();
    }

    CWnd *parent_;
    long code_;
    std::size_t document_;
    ALLEGATI filed_;
    CFattureElettronicheDB content_;
    bool is_prepared_ = false;
    PreparedInvoice prepared_;
    std::vector<std::string> accepted_; ///< differences that the user took before the editor opened
    std::string pages_, pages_fault_;
    PNOTA stored_; ///< without a number: not stored
};

} // namespace

RegistrationChoices WindowChoices(CWnd *parent)
{
    RegistrationChoices choices;
    choices.choose_supplier = [parent](const fatturapa::PartyType &seller) { return ChooseSupplier(parent, seller); };
    choices.confirm_supplier = [parent](FORNITORI *prepared) { return ConfirmSupplier(parent, prepared); };
    choices.choose_causale = [parent](long proposed) { return Choose<CCaucontBr>(parent, proposed); };
    choices.choose_vat_code = [parent](const fatturapa::DatiRiepilogoType &) { return Choose<CCodivaBr>(parent, 0); };
    return choices;
}

long ContabilizzaFattura(CWnd *parent, long code, std::size_t document)
{
    // An entry is large: it does not live on the stack.
    return std::make_unique<Contabilizzazione>(parent, code, document)->Run();
}

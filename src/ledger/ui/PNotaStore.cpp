// Storing and deleting in the entry editor, and the windows that belong to a stored entry.
#include "ledger/ui/PNotaForm.h"

#include "ledger/EntryStorage.h"
#include "ledger/ui/GestionePrimaNota.h"
#include "ledger/ui/PNotaAllegati.h"
#include "schedule/ui/GenScadenze.h"
#include "tables/ui/LookupBrowser.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/FormBuilder.h"

#include <QAbstractButton>
#include <QMenu>
#include <fmt/format.h>

namespace {

/// What the invoice-data communication takes from an entry beside its amounts.
class SpesometroDialog : public CTarvoDialog {
  public:
    SpesometroDialog(const PNOTA &entry, CWnd *parent)
        : CTarvoDialog(parent), m_excluded(entry.pno_esc_spesometro), m_split(entry.pno_split_payment)
    {
        setWindowTitle("Spesometro");
        FormBuilder form(this);
        form.Flag("&Escluso dalla comunicazione dei dati fattura", m_excluded);
        form.Flag("&Scissione dei pagamenti (split payment)", m_split);
        AddCommand({.caption = "F2 - &Salva", .icon = "salva", .run = [this] {
                        ReadFields();
                        OnOK();
                    }});
    }

    long m_excluded, m_split;

  protected:
    bool OnInitDialog() override
    {
        ShowFields();
        return true;
    }
};

} // namespace

void CPNota::FocusFault(const EntryFault &fault)
{
    Form &f = *form_;
    const long line = static_cast<long>(fault.index) + 1;
    const auto to_cell = [line](CSpreadSheet *grid, long column) {
        grid->setFocus();
        grid->SetActiveCell(line, column);
    };
    switch (fault.field) {
    case EntryField::Causale:
        return SetFocusTo(f.causale);
    case EntryField::Section:
        return SetFocusTo(f.section);
    case EntryField::Date:
        return SetFocusTo(f.day);
    case EntryField::Counterpart:
        return SetFocusTo(f.counterpart);
    case EntryField::VatCode:
        return to_cell(f.vat, kVatCode);
    case EntryField::RowAccount:
        return to_cell(f.rows, kRowCon);
    case EntryField::RowSubAccount:
        return to_cell(f.rows, kRowSot);
    case EntryField::RowSide:
        return to_cell(f.rows, kRowSide);
    case EntryField::Balance:
    case EntryField::None:
        return;
    }
}

int CPNota::Cheek(SACommand *cmd)
{
    GetField();
    const EntryFault fault = ValidateEntry(cmd, &m_pnota);
    ShowTotals();
    if (fault && fault.field != EntryField::Balance) SetStatus(ToQt(DescribeFault(fault)));
    FocusFault(fault);
    return fault ? 1 : 0;
}

/// The checks, the questions and their order are StoreEntry's; what another station did meanwhile comes as an error
/// and leaves the entry on screen as it was typed.
void CPNota::Store()
{
    GetField();
    if (m_pnota.pno_codice == 0) return;
    const bool is_new = form_->is_new;
    const StoreOutcome outcome = StoreEntry(nullptr, &m_pnota, is_new);
    if (!outcome.stored) {
        ShowTotals();
        // An imbalance is described better than by saying that there is one.
        if (outcome.fault.field != EntryField::Balance) SetStatus(ToQt(outcome.reason));
        return FocusFault(outcome.fault);
    }
    m_saved = true;
    SetChanged(false);
    ShowInList(is_new);
    if (m_single) return EndDialog(IDOK);
    if (!is_new) {
        SetField();
        return SetFocusTo(form_->document);
    }
    form_->is_new = false; // whatever fails from here on, the entry is in the archive
    CGenScadenze instalments(&m_pnota, this);
    instalments.DoModal();
    AfterNewStored(!instalments.m_proposed     ? ""
                   : instalments.m_stored == 0 ? ", senza scadenze"
                   : instalments.m_stored == 1 ? ", 1 scadenza"
                                               : fmt::format(", {} scadenze", instalments.m_stored));
}

/// @param instalments  what became of them, for the end of the message; empty when there were none to generate
void CPNota::AfterNewStored(const std::string &instalments)
{
    const auto stored = std::make_unique<PNOTA>(m_pnota);
    const std::string protocol = stored->pno_prot == 0 ? "" : fmt::format(", protocollo {}", stored->pno_prot);
    const std::string told = fmt::format("Registrato il movimento {}{}{}", stored->pno_codice, protocol, instalments);
    Guarded(LUMERA_TAG, [&] {
        if (OffersAttachments(nullptr, *stored) &&
            AfxMessageBox("Vuoi inserire allegati ?", MB_YESNO | MB_ICONQUESTION) == IDYES)
            OnAllegati();
    });
    bool pays = false;
    Guarded(LUMERA_TAG, [&] {
        pays = OffersImmediatePayment(nullptr, *stored) &&
               AfxMessageBox("Vuoi Inserire adesso il pagamento?", MB_YESNO | MB_ICONQUESTION) == IDYES;
    });
    CDateField::SetWorkingDate(stored->pno_data); // the next one is likely to be of the same day
    if (pays)
        m_pnota = PrepareImmediatePayment(nullptr, *stored);
    else
        Blank();
    m_row = 0;
    ShowEntry(true);
    SetStatus(ToQt(told));
    if (!pays) return EnterFirstField();
    SetChanged(true); // a payment that is left behind is asked about
    SetFocusTo(form_->total);
}

void CPNota::ShowInList(bool is_new)
{
    if (!form_->list) return;
    Guarded(LUMERA_TAG, [&] {
        const long row = is_new ? 0 : form_->list->RowOf(m_pnota.pno_codice);
        if (is_new || row != 0) form_->list->SetRow(row, &m_pnota);
    });
}

void CPNota::OnRecordSalva()
{
    Guarded(LUMERA_TAG, [this] { Store(); });
}

void CPNota::OnRecordElimina()
{
    Guarded(LUMERA_TAG, [this] { Delete(); });
}

void CPNota::Delete()
{
    if (form_->is_new) return;
    if (AfxMessageBox(fmt::format("Vuoi veramente eliminare il movimento n. {} del {}?", m_pnota.pno_codice,
                                  FormatDate(m_pnota.pno_data)),
                      MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES)
        return;
    if (!DeleteEntry(nullptr, &m_pnota)) return;
    m_saved = true;
    if (form_->list)
        if (const long row = form_->list->RowOf(m_pnota.pno_codice)) form_->list->DeleteRow(row);
    if (m_single) return EndDialog(IDOK);
    ShowAfterDelete();
}

/// The entry that follows in the browse order, or the last one of it.
void CPNota::ShowAfterDelete()
{
    auto shown = std::make_unique<PNOTA>(m_pnota);
    CommandScope scope(nullptr);
    m_row = 0;
    const bool is_any = sqlpno.Next(scope.get(), shown.get()) || sqlpno.Last(scope.get(), shown.get());
    if (is_any)
        m_pnota = std::move(*shown);
    else
        Blank();
    ShowEntry(!is_any);
}

void CPNota::OnClickStore()
{
    if (IsRecordLoaded()) OnAllegati();
}

void CPNota::OnAllegati()
{
    CPNotaAllegati attachments(m_pnota.pno_codice, this);
    attachments.DoModal();
    CountFiles();
}

void CPNota::OnImmagini()
{
    CPrimaNotaImg image(m_pnota.pno_codice, this);
    image.DoModal();
}

void CPNota::OnIntegrazioni()
{
    QMenu menu(this);
    QAction *holders = menu.addAction("&Cointestatari");
    holders->setEnabled(IsRecordLoaded());
    const QAction *communication = menu.addAction("&Spesometro");
    menu.addSeparator();
    const auto mark = [&](const QString &caption, long PNOTA::*which) {
        QAction *action = menu.addAction(caption);
        action->setEnabled(IsRecordLoaded());
        action->setCheckable(true);
        action->setChecked(m_pnota.*which != 0);
        return action;
    };
    const QAction *checked = mark("&Verificato", &PNOTA::pno_verifica);
    const QAction *exported = mark("&Esportato al consulente", &PNOTA::pno_trasf);
    menu.addSeparator();
    const QAction *dates = menu.addAction("Controllo &date dei movimenti");
    menu.setActiveAction(holders->isEnabled() ? holders : menu.actions().at(1));
    const QWidget *button = form_->integrations;
    const QAction *chosen = menu.exec(button->mapToGlobal(button->rect().bottomLeft()));
    if (chosen == holders) OnCointestatari();
    if (chosen == communication) OnSpesometro();
    if (chosen == checked) Mark(&PNOTA::pno_verifica);
    if (chosen == exported) Mark(&PNOTA::pno_trasf);
    if (chosen == dates) CheckDate();
}

void CPNota::Mark(long PNOTA::*mark)
{
    MarkEntry(nullptr, &m_pnota, mark, m_pnota.*mark == 0 ? 1 : 0);
    m_saved = true;
    const bool is_set = m_pnota.*mark != 0;
    SetStatus(mark == &PNOTA::pno_trasf
                  ? (is_set ? "Segnato come esportato al consulente" : "Non più segnato come esportato")
                  : (is_set ? "Segnato come verificato" : "Non più segnato come verificato"));
}

void CPNota::OnCointestatari()
{
    CCointestatari holders(m_pnota.pno_codice, this);
    holders.DoModal();
}

void CPNota::OnSpesometro()
{
    SpesometroDialog dialog(m_pnota, this);
    if (dialog.DoModal() != IDOK) return;
    if (dialog.m_excluded == m_pnota.pno_esc_spesometro && dialog.m_split == m_pnota.pno_split_payment) return;
    m_pnota.pno_esc_spesometro = dialog.m_excluded;
    m_pnota.pno_split_payment = dialog.m_split;
    SetChanged(true);
}

namespace {

struct CodeRecord {
    const char *table = nullptr;
    RecordKeys keys;
};

} // namespace

void CPNota::OpenEditor()
{
    const Form &f = *form_;
    const QWidget *focus = focusWidget();
    const auto is_in = [focus](QWidget *widget) { return focus && (focus == widget || widget->isAncestorOf(focus)); };
    CodeRecord record;
    const auto take = [&record](const char *table, long code) {
        if (code != 0) record = {table, {std::to_string(code)}};
    };
    if (is_in(f.counterpart))
        take(m_pnota.pno_rel == kCustomer ? "clienti" : "fornitori", m_pnota.pno_cli_for);
    else if (is_in(f.section))
        take("sezioni", m_pnota.pno_sez);
    else if (is_in(f.terms))
        take("pagamenti", m_pnota.pno_pag);
    else if (is_in(f.vat) && f.vat->ActiveRow() > 0)
        take("codiva", m_pnota.iva[static_cast<std::size_t>(f.vat->ActiveRow() - 1)].iva);
    else
        take("causali", m_pnota.pno_cau);
    if (!record.table || !HasEditor(record.table)) return BeepRefused();
    ::OpenEditor(record.table, this, record.keys, true);
}

void CPNota::OnUpdateRecordApri(CCmdUI *command)
{
    command->Enable(m_pnota.pno_cau != 0);
}

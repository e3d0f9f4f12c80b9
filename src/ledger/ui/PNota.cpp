// The header of the entry editor: what its fields do when they are left, opening, browsing.
#include "ledger/ui/PNotaForm.h"

#include "ledger/EntryEditing.h"
#include "ledger/EntryStorage.h"
#include "ledger/Maintenance.h"
#include "ledger/QuickEntry.h"
#include "ledger/VatLines.h"
#include "ledger/ui/GestionePrimaNota.h"
#include "ledger/ui/PNotaCerca.h"
#include "tables/ui/Lookups.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/Pickers.h"

#include <QLabel>
#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace {

bool HasNoVatLines(const PNOTA &entry)
{
    return std::all_of(entry.iva.begin(), entry.iva.end(), [](const PNOTA_IVA &line) {
        return line.iva == 0 && TestIfZero(line.impo) && TestIfZero(line.imposta);
    });
}

} // namespace

bool CPNota::IsRecordLoaded() const
{
    return !form_->is_new;
}

bool CPNota::OnInitDialog()
{
    ShowNote();
    if (m_single && !m_open) {
        form_->prepared = std::make_unique<PNOTA>(m_pnota);
        ShowPrepared();
        // Once more when the window is there: as it appears, a grid goes to its first cell.
        QMetaObject::invokeMethod(
            this, [this] { FocusMissing(); }, Qt::QueuedConnection);
        return true;
    }
    long number = m_open ? m_pnota.pno_codice : 0;
    if (!m_single && OfferMaintenance(&number)) { // which may have given the entry another number
        if (m_open) sqlpno.Search(nullptr, number, &m_pnota);
        if (form_->list) form_->list->LoadTable(nullptr, true);
    }
    if (!m_open) Blank();
    ShowEntry(!m_open);
    if (m_open)
        SetFocusTo(form_->document);
    else
        SetFocusTo(form_->causale);
    return true;
}

void CPNota::EnterFirstField()
{
    SetFocusTo(form_->causale);
}

void CPNota::ShowEntry(bool is_new)
{
    Form &f = *form_;
    f.is_new = is_new;
    f.typed_total = 0;
    f.protocol_order.clear();
    f.changed_line.reset();
    f.changed_row.reset();
    CountFiles();
    Protect(nullptr);
    SetField();
    SetChanged(false);
}

void CPNota::ShowPrepared()
{
    ShowEntry(true);
    form_->protocol_order = DescribeProtocolOrder(nullptr, m_pnota);
    ShowTotals();
    SetChanged(true);
    FocusMissing();
}

void CPNota::FocusMissing()
{
    const PNOTA &entry = m_pnota;
    const bool has_counterpart = entry.pno_rel == kCustomer || entry.pno_rel == kSupplier;
    if (entry.pno_cau == 0) return SetFocusTo(form_->causale);
    if (has_counterpart && entry.pno_cli_for == 0) return SetFocusTo(form_->counterpart);
    if (entry.pno_cau_iva == 1 && entry.pno_doc.empty()) return SetFocusTo(form_->document);
    if (TestIfZero(entry.pno_tot_doc)) return SetFocusTo(form_->total);
    for (std::size_t i = 0; i < kEntryRows; ++i) {
        const PNOTA_RIGA &row = entry.righe[i];
        if (row.InUse() && row.row_con == 0) return FocusFault({EntryField::RowAccount, i});
        if (row.InUse() && row.row_sot == 0) return FocusFault({EntryField::RowSubAccount, i});
    }
    SetFocusTo(form_->document);
}

void CPNota::Blank()
{
    auto blank = std::make_unique<PNOTA>();
    sqlpno.Blank(nullptr, blank.get());
    blank->pno_data = CDateField::WorkingDate();
    m_pnota = std::move(*blank);
    m_row = 0;
}

/// The field is left before the next one is looked for: what can be entered depends on it, on the causale most of all.
bool CPNota::focusNextPrevChild(bool next)
{
    return !LeaveFocusedField() || CTarvoRecordDialog::focusNextPrevChild(next);
}

void CPNota::CountFiles()
{
    form_->files = form_->is_new ? static_cast<long>(m_pnota.allegati.size()) // which are stored with it
                                 : CountAttachments(nullptr, m_pnota.pno_codice);
}

bool CPNota::Attempt(const char *tag, const std::function<void()> &work)
{
    auto before = std::make_unique<PNOTA>(m_pnota);
    if (Guarded(tag, work)) return true;
    m_pnota = std::move(*before);
    return false;
}

std::function<bool()> CPNota::Event(std::string tag, bool (CPNota::*handler)())
{
    return [this, tag = std::move(tag), handler] {
        bool is_good = false;
        return Attempt(tag.c_str(), [&] { is_good = (this->*handler)(); }) && is_good;
    };
}

// --- fields

bool CPNota::OnLostFocusEventCodCau()
{
    GetField();
    CommandScope scope(nullptr);
    EnterCausale(scope.get(), &m_pnota, form_->typed.causale);
    form_->typed_total = 0;
    form_->protocol_order = DescribeProtocolOrder(scope.get(), m_pnota);
    Protect(scope.get());
    SetField();
    return true;
}

/// The number of a stored entry brings that entry; any other one is refused, since entries are numbered when stored.
bool CPNota::OnLostFocusEventNumero()
{
    const long wanted = std::lround(form_->number->Value());
    if (wanted == m_pnota.pno_codice) return true;
    auto found = std::make_unique<PNOTA>();
    const bool may_go = wanted != 0 && sqlpno.Search(nullptr, wanted, found.get());
    form_->number->SetValue(static_cast<double>(m_pnota.pno_codice));
    form_->number->SetModified(false);
    if (!may_go) return false;
    if (!ConfirmDiscard()) return true;
    m_pnota = std::move(*found);
    m_row = 0;
    ShowEntry(false);
    return true;
}

bool CPNota::OnLostFocusEventDesCau()
{
    GetField();
    EnterCausaleDescription(&m_pnota, form_->typed.causale_text.str());
    SetField();
    return true;
}

bool CPNota::OnLostFocusEventSezione()
{
    GetField();
    EnterSection(nullptr, &m_pnota, form_->typed.section);
    form_->protocol_order = DescribeProtocolOrder(nullptr, m_pnota);
    SetField();
    return true;
}

bool CPNota::OnLostFocusEventNumDoc()
{
    GetField();
    EnterDocumentNumber(&m_pnota, form_->typed.document.str());
    SetField();
    return true;
}

bool CPNota::OnLostFocusEventCodClifor()
{
    GetField();
    EnterCounterpart(nullptr, &m_pnota, form_->typed.counterpart);
    SetField();
    return true;
}

bool CPNota::OnLostFocusEventCodPag()
{
    GetField();
    EnterTerms(nullptr, &m_pnota, form_->typed.terms);
    SetField();
    return true;
}

/// The total alone tells the first VAT line of an invoice, where its VAT code is known from earlier ones.
bool CPNota::OnLostFocusEventTotDoc()
{
    GetField();
    CommandScope scope(nullptr);
    EnterDocumentTotal(scope.get(), &m_pnota, form_->typed.total);
    form_->typed_total = m_pnota.pno_cau_iva == 1 ? m_pnota.pno_tot_doc : 0;
    if (form_->is_new && !TestIfZero(form_->typed_total) && HasNoVatLines(m_pnota)) {
        if (const long code = UsualVatCode(scope.get(), m_pnota)) {
            ProposeTaxable(scope.get(), 1, code);
            EnterVatCode(scope.get(), &m_pnota, 0, code);
            ProtectIva();
        }
    }
    SetField();
    return true;
}

/// Another year has a numbering of its own; within the year an entry keeps its protocol.
bool CPNota::OnLostFocusEventData()
{
    GetField();
    const long previous = std::exchange(m_pnota.pno_data, form_->typed.day);
    const bool is_other_year = previous == 0 || Year(previous) != Year(m_pnota.pno_data);
    if (m_pnota.pno_sez != 0 && m_pnota.pno_data != 0 && is_other_year)
        EnterSection(nullptr, &m_pnota, m_pnota.pno_sez);
    form_->protocol_order = DescribeProtocolOrder(nullptr, m_pnota);
    SetField();
    return true;
}

bool CPNota::OnLostFocusEventDataDoc()
{
    GetField();
    EnterDocumentDate(&m_pnota, form_->typed.document_day);
    return KeepWorkingDate();
}

/// The date of a document does not become the day on which the next entries are registered.
bool CPNota::KeepWorkingDate()
{
    CDateField::SetWorkingDate(m_pnota.pno_data);
    return true;
}

/// A protocol typed by the user is fixed; an emptied one is the next free one again.
bool CPNota::OnLostFocusEventProt()
{
    GetField();
    m_pnota.pno_prot = form_->typed.protocol;
    m_pnota.pno_prot_fisso = m_pnota.pno_prot != 0 ? 1 : 0;
    if (m_pnota.pno_prot == 0) EnterSection(nullptr, &m_pnota, m_pnota.pno_sez);
    form_->protocol_order = DescribeProtocolOrder(nullptr, m_pnota);
    SetField();
    return true;
}

void CPNota::OnDblClickCodClifor()
{
    form_->counterpart->Browse();
}

void CPNota::OnDblClickCodPag()
{
    form_->terms->Browse();
}

void CPNota::OnDblClickCodCau()
{
    form_->causale->Browse();
}

void CPNota::OnDblClickSezione()
{
    form_->section->Browse();
}

// --- commands over the entry on screen

void CPNota::OnRecordNuovo()
{
    if (!ConfirmDiscard()) return;
    Blank();
    ShowEntry(true);
    EnterFirstField();
}

/// The copy is of what is stored: changes on screen belong to the entry that is left.
void CPNota::OnCopia()
{
    const bool was_changed = IsChanged();
    if (!IsRecordLoaded() || !ConfirmDiscard()) return;
    CommandScope scope(nullptr);
    auto original = std::make_unique<PNOTA>(m_pnota);
    if (was_changed) sqlpno.Search(scope.get(), m_pnota.pno_codice, original.get());
    m_pnota = CopyAsNew(scope.get(), *original, CDateField::WorkingDate());
    m_row = 0;
    ShowEntry(true);
    form_->protocol_order = DescribeProtocolOrder(scope.get(), m_pnota);
    SetStatus(ToQt(fmt::format("Copia del movimento {}", original->pno_codice)) +
              (form_->protocol_order.empty() ? QString() : QStringLiteral(". ") + ToQt(form_->protocol_order)));
    SetChanged(true); // a copy that is left behind is asked about
    SetFocusTo(form_->document);
}

void CPNota::OnRecordAnnulla()
{
    Guarded(LUMERA_TAG, [this] { Reread(); });
}

void CPNota::Reread()
{
    if (form_->prepared) {
        m_pnota = *form_->prepared;
        return ShowPrepared();
    }
    if (form_->is_new) {
        Blank();
        ShowEntry(true);
        return EnterFirstField();
    }
    if (!sqlpno.Search(nullptr, m_pnota.pno_codice, &m_pnota)) {
        AfxMessageBox(fmt::format("Il movimento n. {} non esiste più.", m_pnota.pno_codice), MB_OK | MB_ICONSTOP);
        return;
    }
    ShowEntry(false);
}

void CPNota::OnRecordCerca()
{
    Guarded(LUMERA_TAG, [this] { Find(); });
}

void CPNota::Find()
{
    GetField();
    // What is typed is what is searched for, also in a field that was not left.
    auto chosen = std::make_unique<PNOTA>(m_pnota);
    const Form::Typed &typed = form_->typed;
    chosen->pno_codice = std::lround(form_->number->Value());
    chosen->pno_data = typed.day;
    chosen->pno_data_doc = typed.document_day;
    chosen->pno_doc = typed.document;
    chosen->pno_cau = typed.causale;
    chosen->pno_cli_for = typed.counterpart;
    CPNotaCerca search(chosen.get(), this);
    if (search.DoModal() != IDOK || !ConfirmDiscard()) return;
    m_pnota = std::move(*chosen);
    m_row = 0;
    ShowEntry(false);
}

void CPNota::OnRecordPrec()
{
    Guarded(LUMERA_TAG, [this] { GoTo(false); });
}

void CPNota::OnRecordSucc()
{
    Guarded(LUMERA_TAG, [this] { GoTo(true); });
}

void CPNota::GoTo(bool forward)
{
    if (!ConfirmDiscard()) return;
    auto neighbour = std::make_unique<PNOTA>(m_pnota);
    CommandScope scope(nullptr);
    const bool is_found =
        forward ? sqlpno.Next(scope.get(), neighbour.get()) : sqlpno.Previous(scope.get(), neighbour.get());
    if (!is_found) return BeepRefused();
    m_pnota = std::move(*neighbour);
    m_row = 0;
    ShowEntry(false);
}

void CPNota::CheckDate()
{
    CDataSel period(this);
    period.m_title = "Controllo Date Movimenti";
    const int year = static_cast<int>(lumera_db_impo.dit_anno);
    period.m_start = DateToJulian(1, 1, year); // in a single month nearly every entry would be a fault
    period.m_stop = DateToJulian(31, 12, year);
    if (period.DoModal() != IDOK) return;
    const long faults = ::CheckDate(period.m_start, period.m_stop);
    SetStatus(faults == 0 ? QStringLiteral("Nessuna data fuori dal periodo")
                          : QStringLiteral("%1 date fuori dal periodo").arg(faults));
}

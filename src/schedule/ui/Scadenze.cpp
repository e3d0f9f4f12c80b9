// What the instalment editor does with its record: fields that bring others, storing, deleting, browsing, its commands.
#include "schedule/ui/Scadenze.h"

#include "schedule/InstalmentEditing.h"
#include "schedule/PostalSlip.h"
#include "schedule/ui/ScadenzeCerca.h"
#include "schedule/ui/ScadenzeForm.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <QApplication>
#include <cmath>
#include <fmt/format.h>

InstalmentHooks &ScheduleHooks()
{
    static InstalmentHooks hooks;
    return hooks;
}

CScadenze::CScadenze(CWnd *parent) : CTarvoRecordDialog(parent), form_(std::make_unique<Form>()) {}

CScadenze::~CScadenze() = default;

/// Once, and not in the constructor, because the words of the form depend on the side.
void CScadenze::Build()
{
    if (form_->number) return;
    BuildForm();
    BuildFacts();
    AddCommands();
}

/// Controls that are made while the window already shows would come too late for the focus.
void CScadenze::setVisible(bool visible)
{
    if (visible) Build();
    CTarvoRecordDialog::setVisible(visible);
}

bool CScadenze::OnInitDialog()
{
    Build();
    SCADENZE record;
    if (m_num == 0) {
        Blank();
        SetField();
    } else if (sqlsca.Search(nullptr, m_relaz, m_num, &record)) {
        ShowRecord(record, false);
    } else {
        AfxMessageBox(fmt::format("La scadenza n. {} non esiste più.", m_num), MB_OK | MB_ICONERROR);
        return false;
    }
    EnterFirstField();
    return true;
}

/// The first field that can be typed into: of a paid instalment that is the description.
void CScadenze::EnterFirstField()
{
    const Form &f = *form_;
    for (const char *column : {"sca_cli_for", "sca_data", "sca_desc"})
        if (!f.fields.at(column)->IsProtected()) return SetFocusTo(f.fields.at(column));
}

/// The field is left before the next one is entered: what it brings along is shown anew, and would take away the
/// selection of the next one.
bool CScadenze::focusNextPrevChild(bool next)
{
    return !LeaveFocusedField() || CTarvoRecordDialog::focusNextPrevChild(next);
}

bool CScadenze::IsRecordLoaded() const
{
    return !form_->is_new;
}

bool CScadenze::IsOpenAndUnchanged() const
{
    return IsRecordLoaded() && !IsChanged() && InstalmentState(form_->loaded).empty();
}

void CScadenze::Blank()
{
    sqlsca.Blank(nullptr, &m_scadenza, m_relaz);
    form_->is_new = true;
    form_->loaded = SCADENZE{};
}

void CScadenze::ShowRecord(const SCADENZE &record, bool is_new)
{
    m_scadenza = record;
    form_->is_new = is_new;
    form_->loaded = is_new ? SCADENZE{} : record;
    SetField();
    SetStatus({});
}

void CScadenze::ShowTyped()
{
    const long counterpart = m_scadenza.sca_cli_for, terms = m_scadenza.sca_pag;
    form_->typed = {counterpart, terms};
    ShowFields();
    SetChanged(true);
}

// --- fields

/// The number of a stored instalment brings it; any other is refused, since instalments are numbered when stored.
bool CScadenze::OnLostFocusEventNumero()
{
    const long wanted = std::lround(form_->number->Value());
    if (wanted == m_scadenza.sca_num) return true;
    SCADENZE found;
    const bool exists = wanted != 0 && sqlsca.Search(nullptr, m_relaz, wanted, &found);
    form_->number->SetValue(static_cast<double>(m_scadenza.sca_num));
    if (!exists) return false;
    if (ConfirmDiscard()) ShowRecord(found, false);
    return true;
}

/// A No gives the former counterpart back.
bool CScadenze::OnLostFocusEventCodClifor()
{
    GetField();
    const long code = form_->typed.counterpart;
    if (code == m_scadenza.sca_cli_for) return true;
    CommandScope scope(nullptr);
    const bool is_taken = ConfirmCounterpart(scope.get(), m_relaz, code);
    if (is_taken) EnterCounterpart(scope.get(), &m_scadenza, code);
    ShowTyped();
    return is_taken;
}

bool CScadenze::OnLostFocusEventCodPag()
{
    GetField();
    if (form_->typed.terms == m_scadenza.sca_pag) return true;
    EnterTerms(nullptr, &m_scadenza, form_->typed.terms);
    ShowTyped();
    return true;
}

// --- commands

void CScadenze::OnRecordNuovo()
{
    if (!ConfirmDiscard()) return;
    Blank();
    SetField();
    SetStatus({});
    EnterFirstField();
}

void CScadenze::OnUpdateRecordApri(CCmdUI *command)
{
    command->Enable(ScheduleHooks().open_entry && IsRecordLoaded() && form_->loaded.sca_pno != 0);
}

void CScadenze::OnRecordApri()
{
    if (!ScheduleHooks().open_entry || !ConfirmDiscard()) return;
    ScheduleHooks().open_entry(form_->loaded.sca_pno);
    Reload();
}

void CScadenze::OnRecordSalva()
{
    GetField();
    const bool is_new = form_->is_new;
    CommandScope scope(nullptr);
    const InstalmentOutcome outcome = StoreInstalment(scope.get(), &m_scadenza, is_new ? nullptr : &form_->loaded);
    if (!outcome.done) {
        const auto field = form_->fields.find(outcome.column);
        if (field != form_->fields.end()) SetFocusTo(field->second);
        return;
    }
    m_saved = true;
    m_num = m_scadenza.sca_num;
    const std::string told =
        fmt::format("Registrata la scadenza n. {}{}", m_num, outcome.warning.empty() ? "" : ". " + outcome.warning);
    if (is_new) {
        Blank();
        SetField();
        EnterFirstField();
    } else {
        ShowRecord(SCADENZE(m_scadenza), false);
    }
    SetStatus(ToQt(told));
}

void CScadenze::OnRecordElimina()
{
    const long number = form_->loaded.sca_num;
    CommandScope scope(nullptr);
    const InstalmentOutcome outcome = DeleteInstalment(scope.get(), form_->loaded);
    if (!outcome.done) return;
    m_saved = true;
    ShowAfterDelete(number);
    SetStatus(ToQt(
        fmt::format("Eliminata la scadenza n. {}{}", number, outcome.warning.empty() ? "" : ". " + outcome.warning)));
}

/// The one that follows, or the one before; a blank one when there is none left.
void CScadenze::ShowAfterDelete(long number)
{
    CommandScope scope(nullptr);
    SCADENZE shown;
    if (NeighbourInstalment(scope.get(), m_relaz, number, true, m_sez, &shown) ||
        NeighbourInstalment(scope.get(), m_relaz, number, false, m_sez, &shown))
        return ShowRecord(shown, false);
    Blank();
    SetField();
}

void CScadenze::OnUpdateRecordAnnulla(CCmdUI *command)
{
    command->Enable(IsRecordLoaded() || IsChanged());
}

void CScadenze::OnRecordAnnulla()
{
    if (!ConfirmDiscard()) return;
    if (form_->is_new) {
        Blank();
        SetField();
        EnterFirstField();
    } else {
        Reload();
    }
}

/// @return false when another station has deleted it; what is on screen then stays
bool CScadenze::Reload()
{
    SCADENZE record;
    if (!sqlsca.Search(nullptr, m_relaz, form_->loaded.sca_num, &record)) {
        AfxMessageBox(fmt::format("La scadenza n. {} non esiste più.", form_->loaded.sca_num), MB_OK | MB_ICONERROR);
        return false;
    }
    ShowRecord(record, false);
    return true;
}

void CScadenze::OnRecordCerca()
{
    CScadenzeCerca search(m_relaz, this, m_sez);
    SCADENZE found;
    if (search.DoModal() != IDOK || !ConfirmDiscard()) return;
    if (sqlsca.Search(nullptr, m_relaz, search.m_num, &found)) return ShowRecord(found, false);
    AfxMessageBox(fmt::format("La scadenza n. {} non esiste più.", search.m_num), MB_OK | MB_ICONERROR);
}

void CScadenze::GoTo(bool forward)
{
    if (!ConfirmDiscard()) return;
    SCADENZE neighbour;
    if (!NeighbourInstalment(nullptr, m_relaz, form_->loaded.sca_num, forward, m_sez, &neighbour)) {
        BeepRefused();
        return SetStatus(forward ? "Non c'è una scadenza successiva" : "Non c'è una scadenza precedente");
    }
    ShowRecord(neighbour, false);
}

void CScadenze::OnPaga()
{
    const InstalmentHooks &hooks = ScheduleHooks();
    if (!hooks.pay || !hooks.pay(this, form_->loaded)) return;
    m_saved = true;
    Reload();
}

void CScadenze::OnBollettino()
{
    PrintPostalSlip(form_->loaded);
}

void CScadenze::OnDividi()
{
    SCADENZE first = form_->loaded, second;
    if (!SplitByDialog(this, &first, &second)) return;
    m_saved = true;
    ShowRecord(first, false);
    SetStatus(ToQt(fmt::format("Divisa: la scadenza n. {} è di {} il {}", second.sca_num,
                               FormatAmount(second.sca_importo), FormatDate(second.sca_data))));
}

namespace {

class SplitDialog : public CTarvoDialog {
  public:
    SplitDialog(CWnd *parent, const SCADENZE &whole) : CTarvoDialog(parent), m_first(whole), day_(whole.sca_data)
    {
        setWindowTitle("Divisione Scadenza");
        FormBuilder form(this);
        QLabel *shown = form.Info("Scadenza");
        shown->setText(ToQt(fmt::format("n. {} del {} di {}", whole.sca_num, FormatDate(whole.sca_data),
                                        FormatAmount(whole.sca_importo))));
        part_ = form.Amount("&Importo da staccare", amount_);
        form.Date("con s&cadenza", day_);
        rest_ = form.Info("Restano");
        OnLostFocusEvent(part_, [this] {
            ShowRest();
            return true;
        });
        AddCommand({.caption = "F2 - &OK", .icon = "salva", .run = [this] { OnOK(); }});
    }

    SCADENZE m_first, m_second;

  protected:
    bool OnInitDialog() override
    {
        ShowFields();
        ShowRest();
        return true;
    }

    void OnOK() override
    {
        ReadFields();
        CommandScope scope(nullptr);
        const InstalmentOutcome outcome = SplitInstalment(scope.get(), &m_first, amount_, day_, &m_second);
        if (outcome.done) return EndDialog(IDOK);
        SetFocusTo(part_);
    }

    void OnCancel() override { EndDialog(IDCANCEL); } // one amount and a date are soon typed again

  private:
    void ShowRest()
    {
        rest_->setText(ToQt(fmt::format("{} il {}", FormatAmount(Round(m_first.sca_importo - part_->Value(), 2)),
                                        FormatDate(m_first.sca_data))));
    }

    double amount_ = 0;
    long day_;
    CAmountField *part_;
    QLabel *rest_;
};

} // namespace

bool SplitByDialog(CWnd *parent, SCADENZE *first, SCADENZE *second)
{
    SplitDialog dialog(parent, *first);
    if (dialog.DoModal() != IDOK) return false;
    *first = dialog.m_first;
    *second = dialog.m_second;
    return true;
}

void EditScadenza(short side, long number)
{
    bool exists = false;
    RunUnit(LUMERA_TAG, [&](SACommand *cmd) {
        SCADENZE record;
        exists = sqlsca.Search(cmd, side, number, &record);
    });
    if (!exists) return;
    CScadenze editor(QApplication::activeWindow());
    editor.m_relaz = side;
    editor.m_num = number;
    editor.DoModal();
}

#include "schedule/ui/ScadenzeCerca.h"

#include "schedule/ui/ScheduleGrid.h"
#include "tables/ui/Lookups.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/FormBuilder.h"

#include <QKeyEvent>
#include <QScreen>
#include <QVBoxLayout>

namespace {

constexpr std::size_t kListed = 500; ///< who wants to see further types a later value
constexpr long kHighestNumber = 999'999'999;

} // namespace

struct CScadenzeCerca::Form {
    ScheduleSearchValue value;
    long number = 0, counterpart = 0; ///< as typed; the value has the one that is looked for
    CSpreadSheet *grid = nullptr;
};

CScadenzeCerca::CScadenzeCerca(short relaz, CWnd *parent, long section)
    : CTarvoDialog(parent), form_(std::make_unique<Form>())
{
    setWindowTitle(relaz == kCustomer ? QStringLiteral("Cerca Scadenze Clienti")
                                      : QStringLiteral("Cerca Scadenze Fornitori"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    form_->value.relaz = relaz;
    form_->value.codsez = section;
    BuildFields();
    AddCommand({.caption = "F2 - &OK",
                .tooltip = "Sceglie la scadenza evidenziata (anche Invio)",
                .icon = {},
                .run = [this] { OnOK(); },
                .update = [this](CCmdUI *command) { command->Enable(form_->grid->ActiveRow() > 0); }});
    const QSize wanted(CharactersWide(this, 130), fontMetrics().lineSpacing() * 30);
    resize(wanted.boundedTo(screen()->availableSize() * 0.9));
}

CScadenzeCerca::~CScadenzeCerca() = default;

void CScadenzeCerca::BuildFields()
{
    ScheduleSearchValue &value = form_->value;
    auto *fields = new QWidget(Content());
    {
        FormBuilder form(this, fields);
        const auto looks_for = [this](CTarvoField *field, ScheduleKey key) {
            OnLostFocusEvent(field, [this, key] { return OnValue(key); });
        };
        looks_for(form.Number("&Numero", form_->number, 0, kHighestNumber), kByInstalment);
        looks_for(form.Beside().Date("S&cadenza dal", value.data), kByDueDate);
        looks_for(form.Beside().Text("&Fattura", value.fattura), kByInvoice);
        looks_for(form.Code(value.relaz == kCustomer ? "C&liente" : "Fo&rnitore", form_->counterpart,
                            Lookup(value.relaz == kCustomer ? "clienti" : "fornitori")),
                  kByCounterpartOfInstalment);
    }
    fields->layout()->setContentsMargins(0, 0, 0, 0);
    form_->grid = new CSpreadSheet(Content());
    form_->grid->SetColumns(ScheduleColumns());
    form_->grid->RememberLayout("CScadenzeCerca");
    form_->grid->on_dbl_click = [this](long, long) { OnOK(); };
    auto *box = new QVBoxLayout(Content());
    box->setContentsMargins(0, 0, 0, 0);
    box->addWidget(fields);
    box->addWidget(form_->grid, 1);
}

/// Until something is typed, what falls due next is listed.
bool CScadenzeCerca::OnInitDialog()
{
    ShowFields();
    ScheduleSearchValue next = form_->value;
    next.key = kByDueDate;
    next.data = CurrentUserInterface().Today();
    Search(next);
    return true;
}

bool CScadenzeCerca::OnValue(ScheduleKey key)
{
    ReadFields();
    SetChanged(false);
    ScheduleSearchValue &value = form_->value;
    // Date and customer go together, in whatever order they were typed.
    const bool by_both = key == kByDueDate || key == kByCounterpartOfInstalment;
    value.key = !by_both ? key : form_->counterpart != 0 ? kByCounterpartOfInstalment : kByDueDate;
    value.codice = key == kByInstalment ? form_->number : form_->counterpart;
    Search(value);
    return true;
}

void CScadenzeCerca::Search(const ScheduleSearchValue &value)
{
    CommandScope scope(nullptr);
    const std::vector<ScheduleLine> lines = SearchSchedule(scope.get(), value, kListed);
    CSpreadSheet *grid = form_->grid;
    {
        const SpreadUpdate update(grid);
        const ScheduleColours colours;
        const long today = CurrentUserInterface().Today();
        grid->SetRowCount(static_cast<long>(lines.size()));
        long row = 0;
        for (const ScheduleLine &line : lines) ShowScheduleLine(grid, ++row, line, colours.Of(line.scadenza, today));
    }
    if (!lines.empty()) grid->SetActiveCell(1, kNumColumn);
    SetStatus(lines.empty()            ? QStringLiteral("Nessuna scadenza")
              : lines.size() < kListed ? QString()
                                       : QStringLiteral("Le prime %1 scadenze").arg(kListed));
}

bool CScadenzeCerca::PreTranslateMessage(QKeyEvent *message)
{
    const bool is_enter = message->key() == Qt::Key_Return || message->key() == Qt::Key_Enter;
    const Qt::KeyboardModifiers modifiers = message->modifiers() & ~Qt::KeypadModifier;
    if (is_enter && modifiers == Qt::NoModifier && focusWidget() && FieldOf(focusWidget())) {
        if (LeaveFocusedField() && form_->grid->RowCount() > 0) form_->grid->setFocus();
        return true;
    }
    return CTarvoDialog::PreTranslateMessage(message);
}

void CScadenzeCerca::OnOK()
{
    m_num = form_->grid->RowData(form_->grid->ActiveRow());
    if (m_num == 0) return BeepRefused();
    EndDialog(IDOK);
}

void CScadenzeCerca::OnCancel()
{
    EndDialog(IDCANCEL);
}

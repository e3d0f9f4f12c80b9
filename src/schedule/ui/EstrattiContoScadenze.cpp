#include "schedule/ui/EstrattiContoScadenze.h"

#include "schedule/ui/CounterpartLookup.h"
#include "schedule/ui/Scadenze.h"
#include "schedule/ui/ScheduleGrid.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvolumera/Counterparts.h"

#include <fmt/format.h>

namespace {

using Type = CSpreadSheet::Type;

enum Column : long {
    kCode = 1,
    kName,
    kInvoice,
    kInvoiceDate,
    kPart,
    kDue,
    kLate,
    kAmount,
    kState,
    kPaid,
    kOpen,
    kOverdue,
    kBalance
};

enum Kind : long { kOpenOnly = 1, kAllOfThem = 0 };

void ShowLine(CSpreadSheet *grid, long row, const StatementLine &line, short side)
{
    grid->SetRowData(row, line.num);
    grid->SetLong(row, kCode, line.code);
    grid->SetText(row, kName, line.name);
    grid->SetText(row, kInvoice, line.fattura);
    grid->SetLong(row, kInvoiceDate, line.data_fattura);
    grid->SetText(row, kPart, InstalmentOfInvoice(line.rata, line.rate));
    grid->SetLong(row, kDue, line.data);
    grid->SetLong(row, kLate, line.days_late);
    grid->SetNumber(row, kAmount, line.importo);
    grid->SetText(row, kState, StatementStateName(line.state, side));
    grid->SetLong(row, kPaid, line.data_pag);
    grid->SetNumber(row, kOpen, line.open);
    grid->SetNumber(row, kOverdue, line.overdue);
    grid->SetNumber(row, kBalance, line.balance);
    grid->SetRowColor(row, line.overdue != 0 ? OverdueColour() : QColor());
}

} // namespace

struct CEstrattiContoScadenze::Form {
    long side = kCustomer, first_code = 0, shown_side = kCustomer, shown_first = 0; ///< shown: before the last change
    long last_code = 0, d_start = 0, d_stop = 0, open_only = kOpenOnly, reference_day = 0;
    CCodeField *last_field = nullptr;
    CDateField *d_stop_field = nullptr, *reference_field = nullptr;
    QLabel *first_name = nullptr, *last_name = nullptr;
};

CEstrattiContoScadenze::CEstrattiContoScadenze(CWnd *parent)
    : ScheduleViewWindow(parent), form_(std::make_unique<Form>())
{
    setWindowTitle(QStringLiteral("Estratti conto scadenze"));
    BuildFilters();
    BuildGrid();
    AddViewCommands("F2 - Modifica", "Apre la scadenza selezionata (anche Invio)",
                    "Stampa gli estratti conto, uno per nominativo");
}

CEstrattiContoScadenze::~CEstrattiContoScadenze() = default;

void CEstrattiContoScadenze::BuildFilters()
{
    Form &own = *form_;
    FormBuilder form(this, FilterArea());
    ReloadOn(form.Choice(QStringLiteral("&Conti di"), own.side,
                         {{kCustomer, QStringLiteral("Clienti")}, {kSupplier, QStringLiteral("Fornitori")}}));
    CCodeField *first = form.Beside().Code(QStringLiteral("&dal codice"), own.first_code);
    own.first_name = form.Beside().Info({});
    own.last_field = form.Beside().Code(QStringLiteral("al c&odice"), own.last_code);
    own.last_name = form.Beside().Info({});
    first->SetLookup(std::make_shared<CounterpartLookup>(own.side), own.first_name);
    own.last_field->SetLookup(std::make_shared<CounterpartLookup>(own.side), own.last_name);
    first->on_dbl_click = [first] { first->Browse(); };
    own.last_field->on_dbl_click = [field = own.last_field] { field->Browse(); };
    ReloadOn(form.Choice(QStringLiteral("Scade&nze"), own.open_only,
                         {{kOpenOnly, QStringLiteral("Aperte")}, {kAllOfThem, QStringLiteral("Tutte")}}));
    ReloadOn(form.Beside().Date(QStringLiteral("d&ovute dal"), own.d_start));
    ReloadOn(own.d_stop_field = form.Beside().Date(QStringLiteral("al"), own.d_stop));
    ReloadOn(own.reference_field = form.Beside().Date(QStringLiteral("situa&zione al"), own.reference_day));
    ReloadOn(first);
    ReloadOn(own.last_field);
}

void CEstrattiContoScadenze::BuildGrid()
{
    std::vector<CSpreadSheet::Column> columns = {GridColumn("Codice", Type::Code, 7),
                                                 GridColumn("Nome", Type::Text, 16),
                                                 GridColumn("Fattura", Type::Text, 12),
                                                 GridColumn("Data fatt.", Type::Date, 10),
                                                 GridColumn("Rata", Type::Text, 5),
                                                 GridColumn("Scadenza", Type::Date, 10),
                                                 GridColumn("Ritardo", Type::Code, 7),
                                                 SumColumn("Importo", 13),
                                                 GridColumn("Stato", Type::Text, 10),
                                                 GridColumn("Pagata il", Type::Date, 10),
                                                 SumColumn("Aperto", 13),
                                                 SumColumn("Scaduto", 13),
                                                 GridColumn("Saldo", Type::Amount, 13)};
    columns[kName - 1].stretch = true;
    columns[kBalance - 1].blank_zero = false;
    Spread()->SetColumns(std::move(columns));
    Spread()->ShowSums(true);
    Spread()->SetFootText(kName, QStringLiteral("Totale"));
}

bool CEstrattiContoScadenze::OnInitDialog()
{
    form_->side = form_->shown_side = m_relaz;
    form_->first_code = form_->last_code = form_->shown_first = m_codice;
    form_->reference_day = m_al != 0 ? m_al : CurrentUserInterface().Today();
    SetField();
    LoadTable(nullptr, true);
    Spread()->setFocus();
    return true;
}

StatementFilter CEstrattiContoScadenze::Filter() const
{
    StatementFilter filter;
    filter.side = static_cast<short>(form_->side);
    filter.first_code = form_->first_code;
    filter.last_code = form_->last_code;
    filter.d_start = form_->d_start;
    filter.d_stop = form_->d_stop;
    filter.open_only = form_->open_only == kOpenOnly;
    filter.reference_day = form_->reference_day;
    return filter;
}

bool CEstrattiContoScadenze::CheckFilter()
{
    Form &own = *form_;
    if (own.side != own.shown_side) own.first_code = own.last_code = 0; // codes of the other table
    // A code by itself means that one counterpart; a range is made by naming its end afterwards.
    if (own.first_code != own.shown_first) own.last_code = own.first_code;
    own.shown_side = own.side;
    own.shown_first = own.first_code;
    if (own.last_code != 0 && own.last_code < own.first_code)
        return Refuse(own.last_field, "Il secondo codice è prima del primo.");
    if (own.d_stop != 0 && own.d_stop < own.d_start)
        return Refuse(own.d_stop_field, "La seconda data è prima della prima.");
    return own.reference_day != 0 || Refuse(own.reference_field, "Indicare il giorno della situazione.");
}

void CEstrattiContoScadenze::ReadRows(SACommand *cmd, bool with_progress)
{
    const StatementFilter filter = Filter();
    const StatementTotals totals = ReadStatementTotals(cmd, filter);
    std::optional<CTarvoProgressDlg> progress;
    if (with_progress && totals.count > 0) {
        progress.emplace();
        progress->SetStatus("Lettura scadenze in corso...");
        progress->SetRange(0, totals.count);
    }
    const long selected = Spread()->RowData(Spread()->ActiveRow());
    const SpreadUpdate update(Spread());
    Spread()->Clear();
    Spread()->SetRowCount(totals.count);
    long row = 0, place = 1;
    ForEachStatementLine(cmd, filter, [&](StatementLine &&line) {
        if (++row > Spread()->RowCount()) Spread()->SetRowCount(row); // stored since they were counted
        ShowLine(Spread(), row, line, filter.side);
        if (line.num == selected) place = row;
        if (progress) progress->StepIt();
    });
    Spread()->SetRowCount(row);
    if (row > 0) Spread()->SetActiveCell(place, kInvoice);
    SetStatus(row == 0
                  ? QStringLiteral("Nessuna scadenza")
                  : Counted(row, "scadenza", "scadenze") + QStringLiteral(", aperte %1, scadute %2")
                                                               .arg(ToQt(FormatAmount(FromCents(totals.open))),
                                                                    ToQt(FormatAmount(FromCents(totals.overdue)))));
}

void CEstrattiContoScadenze::OnRecordApri()
{
    const long number = Spread()->RowData(Spread()->ActiveRow());
    if (number == 0) return;
    EditScadenza(static_cast<short>(form_->side), number);
    LoadTable(nullptr, true);
    Spread()->setFocus();
}

void CEstrattiContoScadenze::OnRecordStampa()
{
    PrintStatements(Filter());
}

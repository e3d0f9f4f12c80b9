#include "schedule/ui/ScadenzeSt.h"

#include "schedule/ui/Scadenze.h"
#include "schedule/ui/ScheduleGrid.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvolumera/Counterparts.h"

#include <QBoxLayout>
#include <fmt/format.h>

namespace {

using Type = CSpreadSheet::Type;

enum Side : long { kCustomersAndSuppliers = 0, kOnlyCustomers, kOnlySuppliers };
enum Period : long { kName = 1, kFrom, kTo, kCount, kCollect, kPay, kBalance, kRunning };
enum Line : long {
    kDue = 1,
    kLetter,
    kCode,
    kCounterpart,
    kInvoice,
    kInvoiceDate,
    kPart,
    kDescription,
    kToCollect,
    kToPay
};

constexpr int kProposedDays = 60;

/// Instalments are numbered side by side: both in one number behind the row.
long KeyOf(const DueLine &line)
{
    return line.num * 2 + line.relaz;
}

void ShowLine(CSpreadSheet *grid, long row, const DueLine &line, long today)
{
    const bool is_customer = line.relaz == kCustomer;
    grid->SetRowData(row, KeyOf(line));
    grid->SetLong(row, kDue, line.data);
    grid->SetText(row, kLetter, is_customer ? "C" : "F");
    grid->SetLong(row, kCode, line.cli_for);
    grid->SetText(row, kCounterpart, line.nome);
    grid->SetText(row, kInvoice, line.fattura);
    grid->SetLong(row, kInvoiceDate, line.data_fattura);
    grid->SetText(row, kPart, InstalmentOfInvoice(line.rata, line.rate));
    grid->SetText(row, kDescription, line.desc);
    grid->SetNumber(row, is_customer ? kToCollect : kToPay, line.importo);
    grid->ClearCell(row, is_customer ? kToPay : kToCollect);
    grid->SetRowColor(row, line.data < today ? OverdueColour() : QColor());
}

void ShowGroup(CSpreadSheet *grid, long row, const DueGroup &group)
{
    grid->SetRowData(row, group.number);
    grid->SetText(row, kName, group.name);
    grid->SetLong(row, kFrom, group.range.first_day);
    grid->SetLong(row, kTo, group.range.last_day);
    grid->SetLong(row, kCount, group.count);
    grid->SetNumber(row, kCollect, FromCents(group.collect));
    grid->SetNumber(row, kPay, FromCents(group.pay));
    grid->SetNumber(row, kBalance, FromCents(group.Balance()));
    grid->SetNumber(row, kRunning, FromCents(group.running));
    grid->SetRowColor(row, group.number == 0 ? OverdueColour() : QColor());
}

} // namespace

struct CScadenzeSt::Form {
    long d_start = 0, d_stop = 0, length = static_cast<long>(DueLength::Week), side = kCustomersAndSuppliers;
    CDateField *d_stop_field = nullptr;
    CSpreadSheet *periods = nullptr;
    std::vector<DueGroup> groups;
    bool is_filling = false;
};

CScadenzeSt::CScadenzeSt(CWnd *parent) : ScheduleViewWindow(parent), form_(std::make_unique<Form>())
{
    setWindowTitle(QStringLiteral("Scadenzario"));
    BuildFilters();
    BuildPeriods();
    BuildGrid();
    AddViewCommands("F2 - Modifica", "Apre la scadenza selezionata (anche Invio)",
                    "Stampa le scadenze per settimana o per mese");
}

CScadenzeSt::~CScadenzeSt() = default;

void CScadenzeSt::BuildFilters()
{
    FormBuilder form(this, FilterArea());
    ReloadOn(form.Date(QStringLiteral("&Dal giorno"), form_->d_start));
    ReloadOn(form_->d_stop_field = form.Beside().Date(QStringLiteral("&al giorno"), form_->d_stop));
    ReloadOn(form.Beside().Choice(QStringLiteral("&per"), form_->length,
                                  {{static_cast<long>(DueLength::Week), QStringLiteral("Settimana")},
                                   {static_cast<long>(DueLength::Month), QStringLiteral("Mese")}}));
    ReloadOn(form.Beside().Choice(QStringLiteral("&Scadenze di"), form_->side,
                                  {{kCustomersAndSuppliers, QStringLiteral("Clienti e fornitori")},
                                   {kOnlyCustomers, QStringLiteral("Clienti")},
                                   {kOnlySuppliers, QStringLiteral("Fornitori")}}));
}

void CScadenzeSt::BuildPeriods()
{
    CSpreadSheet *periods = form_->periods = new CSpreadSheet(Content());
    std::vector<CSpreadSheet::Column> columns = {GridColumn("Periodo", Type::Text, 28),
                                                 GridColumn("Dal", Type::Date, 11),
                                                 GridColumn("Al", Type::Date, 11),
                                                 GridColumn("Scadenze", Type::Code, 9),
                                                 SumColumn("Da incassare"),
                                                 SumColumn("Da pagare"),
                                                 SumColumn("Saldo"),
                                                 GridColumn("Saldo progressivo", Type::Amount, 17)};
    columns[kName - 1].stretch = true;
    columns[kBalance - 1].blank_zero = columns[kRunning - 1].blank_zero = false;
    periods->SetColumns(std::move(columns));
    periods->ShowSums(true);
    periods->SetFootText(kName, QStringLiteral("Totale"));
    periods->RememberLayout(QStringLiteral("CScadenzeSt/periodi"));
    periods->setAccessibleName(QStringLiteral("Periodi"));
    periods->on_row_changed = [this](long) {
        if (form_->is_filling) return;
        Guarded(LUMERA_TAG, [this] {
            CommandScope scope(nullptr);
            FillOrClear([&] { ReadPeriod(scope.get()); });
        });
    };
    periods->on_dbl_click = [this](long, long) { Spread()->setFocus(); };
    static_cast<QBoxLayout *>(Content()->layout())->insertWidget(1, periods, 2);
    static_cast<QBoxLayout *>(Content()->layout())->setStretchFactor(Spread(), 3);
    setTabOrder(periods, Spread());
}

void CScadenzeSt::BuildGrid()
{
    std::vector<CSpreadSheet::Column> columns = {GridColumn("Scadenza", Type::Date, 11),
                                                 GridColumn("C/F", Type::Text, 4),
                                                 GridColumn("Codice", Type::Code, 8),
                                                 GridColumn("Cliente o fornitore", Type::Text, 30),
                                                 GridColumn("Fattura", Type::Text, 14),
                                                 GridColumn("Data fatt.", Type::Date, 11),
                                                 GridColumn("Rata", Type::Text, 6),
                                                 GridColumn("Descrizione", Type::Text, 24),
                                                 SumColumn("Da incassare"),
                                                 SumColumn("Da pagare")};
    columns[kDescription - 1].stretch = true;
    Spread()->SetColumns(std::move(columns));
    Spread()->ShowSums(true);
    Spread()->SetFootText(kCounterpart, QStringLiteral("Totale"));
}

bool CScadenzeSt::OnInitDialog()
{
    form_->d_start = CurrentUserInterface().Today();
    form_->d_stop = LastDayOfMonth(form_->d_start + kProposedDays);
    const bool is_asked = m_dal != 0 || m_al != 0;
    if (is_asked) {
        form_->d_start = m_dal;
        form_->d_stop = m_al;
        form_->length = static_cast<long>(DueLength::Month);
    }
    SetField();
    LoadTable(nullptr, true);
    // What was asked for, not what was due before it.
    const bool has_earlier = is_asked && form_->groups.size() > 1 && form_->groups.front().number == 0;
    if (has_earlier) form_->periods->SetActiveCell(2, kName);
    form_->periods->setFocus();
    return true;
}

DueListFilter CScadenzeSt::Filter() const
{
    DueListFilter filter;
    filter.customers = form_->side != kOnlySuppliers;
    filter.suppliers = form_->side != kOnlyCustomers;
    filter.d_start = form_->d_start;
    filter.d_stop = form_->d_stop;
    filter.length = static_cast<DueLength>(form_->length);
    return filter;
}

bool CScadenzeSt::CheckFilter()
{
    if (form_->d_stop == 0 || form_->d_stop >= form_->d_start) return true;
    return Refuse(form_->d_stop_field, "La seconda data è prima della prima.");
}

bool CScadenzeSt::HasRows() const
{
    return !form_->groups.empty();
}

void CScadenzeSt::ReadRows(SACommand *cmd, bool)
{
    form_->groups = ReadDueGroups(cmd, Filter());
    ShowPeriods();
    ReadPeriod(cmd);
    const long count = TotalOf(form_->groups).count;
    SetStatus(count == 0 ? QStringLiteral("Nessuna scadenza aperta")
                         : Counted(count, "scadenza", "scadenze") + QStringLiteral(" in ") +
                               Counted(static_cast<long>(form_->groups.size()), "periodo", "periodi"));
}

/// The period that was selected stays so, where it is still there.
void CScadenzeSt::ShowPeriods()
{
    CSpreadSheet *grid = form_->periods;
    form_->is_filling = true;
    const long from = grid->Long(grid->ActiveRow(), kFrom);
    long active = 1;
    {
        const SpreadUpdate update(grid);
        grid->SetRowCount(static_cast<long>(form_->groups.size()));
        long row = 0;
        for (const DueGroup &group : form_->groups) {
            ShowGroup(grid, ++row, group);
            if (group.range.first_day == from) active = row;
        }
    }
    if (grid->RowCount() > 0) grid->SetActiveCell(active, kName);
    form_->is_filling = false;
}

void CScadenzeSt::ReadPeriod(SACommand *cmd)
{
    const long active = form_->periods->ActiveRow(), selected = Spread()->RowData(Spread()->ActiveRow());
    const SpreadUpdate update(Spread());
    Spread()->Clear();
    if (active < 1 || active > static_cast<long>(form_->groups.size())) return;
    const DueGroup &group = form_->groups[static_cast<std::size_t>(active) - 1];
    const long today = CurrentUserInterface().Today();
    Spread()->SetRowCount(group.count);
    long row = 0, place = 1;
    ForEachDue(cmd, Filter(), group.range, [&](DueLine &&line) {
        if (++row > Spread()->RowCount()) Spread()->SetRowCount(row); // stored since the sums were read
        ShowLine(Spread(), row, line, today);
        if (KeyOf(line) == selected) place = row;
    });
    Spread()->SetRowCount(row);
    if (row > 0) Spread()->SetActiveCell(place, kDue);
}

void CScadenzeSt::OnRecordApri()
{
    const long key = Spread()->RowData(Spread()->ActiveRow());
    if (key == 0) return;
    EditScadenza(static_cast<short>(key % 2), key / 2);
    LoadTable(nullptr, true);
    Spread()->setFocus();
}

void CScadenzeSt::OnRecordStampa()
{
    PrintDueList(Filter());
}

void CScadenzeSt::Export()
{
    FilePicking picking;
    picking.title = "Esporta";
    picking.filter = "Foglio Excel (*.xlsx)|*.xlsx|File CSV (*.csv)|*.csv||";
    picking.default_extension = "xlsx";
    picking.save = true;
    picking.proposed = "Scadenzario.xlsx";
    const std::vector<std::filesystem::path> picked = CurrentUserInterface().PickFiles(picking);
    if (picked.empty()) return;
    const bool is_csv = picked.front().extension() == ".csv";
    if (PrintDueList(Filter(), ReportDestination{is_csv ? ReportTarget::Csv : ReportTarget::Xlsx, picked.front()}))
        AfxMessageBox(fmt::format("Esportazione conclusa con {} righe!", TotalOf(form_->groups).count),
                      MB_OK | MB_ICONINFORMATION);
}

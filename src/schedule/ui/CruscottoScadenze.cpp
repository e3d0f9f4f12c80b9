#include "schedule/ui/CruscottoScadenze.h"

#include "schedule/ui/ScadenzeSt.h"
#include "schedule/ui/ScheduleChart.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/FormBuilder.h"

#include <QHBoxLayout>
#include <QKeyEvent>

namespace {

constexpr int kChartStretch = 3, kLateStretch = 2, kFiguresStretch = 3, kMonthsStretch = 2;

enum MonthColumn : long { kMonth = 1, kCollect, kCollectOverdue, kCollected, kPay, kPayOverdue, kPaid, kNet, kBalance };
enum LateColumn : long { kCustomerName = 1, kCount, kOldest, kDays, kAmount };

QLabel *Label(const QString &text, double size, bool bold, QPalette::ColorRole role, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * size);
    font.setBold(bold);
    label->setFont(font);
    label->setForegroundRole(role);
    return label;
}

} // namespace

struct CCruscottoScadenze::Form {
    OutlookFilter filter;
    CashOutlook outlook;
    CAmountField *months = nullptr, *cash = nullptr;
    CScheduleChart *chart = nullptr;
    CSpreadSheet *late = nullptr;
    QLabel *no_late = nullptr;

    /// A figure at the head of the window, with a smaller remark below it.
    struct Tile {
        QLabel *amount = nullptr, *remark = nullptr;
    };
    Tile collect, pay, balance;
};

CCruscottoScadenze::CCruscottoScadenze(CWnd *parent) : ScheduleViewWindow(parent), form_(std::make_unique<Form>())
{
    setWindowTitle(QStringLiteral("Cruscotto Scadenze"));
    BuildFilters();
    auto *column = static_cast<QVBoxLayout *>(Content()->layout());
    column->insertWidget(1, NewTiles());
    auto *figures = new QHBoxLayout;
    form_->chart = new CScheduleChart(Content());
    figures->addWidget(form_->chart, kChartStretch);
    figures->addWidget(NewLateList(), kLateStretch);
    column->insertLayout(2, figures, kFiguresStretch);
    BuildGrid();
    column->setStretchFactor(Spread(), kMonthsStretch);
    AddCommands();
    setTabOrder(form_->cash, form_->chart);
    setTabOrder(form_->chart, form_->late);
    setTabOrder(form_->late, Spread());
}

CCruscottoScadenze::~CCruscottoScadenze() = default;

void CCruscottoScadenze::BuildFilters()
{
    FormBuilder form(this, FilterArea());
    form_->months = form.Number(QStringLiteral("&Mesi"), form_->filter.months, 1, kOutlookMonthsMax);
    form_->cash = form.Beside().Amount(QStringLiteral("&Disponibilità iniziale"), form_->filter.cash);
    form_->cash->setToolTip(QStringLiteral("Il denaro in cassa e in banca oggi: da qui parte il saldo progressivo"));
    ReloadOn(form_->months);
    ReloadOn(form_->cash);
}

QWidget *CCruscottoScadenze::NewTiles()
{
    auto *tiles = new QWidget(Content());
    auto *row = new QHBoxLayout(tiles);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(fontMetrics().averageCharWidth() * 6);
    const auto tile = [&](const char *caption) {
        auto *column = new QVBoxLayout;
        column->setSpacing(0);
        Form::Tile made;
        column->addWidget(Label(QString::fromUtf8(caption), 0.9, false, QPalette::PlaceholderText, tiles));
        column->addWidget(made.amount = Label({}, 1.5, true, QPalette::WindowText, tiles));
        column->addWidget(made.remark = Label({}, 0.9, false, QPalette::WindowText, tiles));
        row->addLayout(column);
        return made;
    };
    form_->collect = tile("Da incassare");
    form_->pay = tile("Da pagare");
    form_->balance = tile("Saldo finale");
    row->addStretch(1);
    return tiles;
}

QWidget *CCruscottoScadenze::NewLateList()
{
    auto *side = new QWidget(Content());
    auto *column = new QVBoxLayout(side);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(Label(QStringLiteral("Clienti in ritardo"), 1, true, QPalette::WindowText, side));
    form_->late = new CSpreadSheet(side);
    form_->late->setAccessibleName(QStringLiteral("Clienti in ritardo"));
    using Type = CSpreadSheet::Type;
    std::vector<CSpreadSheet::Column> columns = {
        GridColumn("Cliente", Type::Text, 16), GridColumn("Scad.", Type::Code, 5),
        GridColumn("La prima", Type::Date, 10), GridColumn("Giorni", Type::Code, 6),
        GridColumn("Importo", Type::Amount, 12)};
    columns.front().stretch = true;
    form_->late->SetColumns(std::move(columns));
    form_->late->RememberLayout(QStringLiteral("CCruscottoScadenze/ritardi"));
    column->addWidget(form_->late, 1);
    form_->no_late = Label(QStringLiteral("Nessun cliente è in ritardo."), 1, false, QPalette::PlaceholderText, side);
    column->addWidget(form_->no_late, 1, Qt::AlignTop);
    return side;
}

void CCruscottoScadenze::BuildGrid()
{
    std::vector<CSpreadSheet::Column> columns = {GridColumn("Mese", CSpreadSheet::Type::Text, 24),
                                                 SumColumn("Da incassare"),
                                                 SumColumn("di cui scadute"),
                                                 SumColumn("Incassate"),
                                                 SumColumn("Da pagare"),
                                                 SumColumn("di cui scadute"),
                                                 SumColumn("Pagate"),
                                                 SumColumn("Saldo"),
                                                 GridColumn("Progressivo", CSpreadSheet::Type::Amount, 15)};
    columns[kMonth - 1].stretch = true;
    columns[kBalance - 1].blank_zero = false;
    Spread()->SetColumns(std::move(columns));
    Spread()->AllowSorting(false); // the months stand in their order, as in the chart
    Spread()->ShowSums(true);
    Spread()->SetFootText(kMonth, QStringLiteral("Totali"));
    Spread()->on_row_changed = [this](long row) { ShowPeriod(static_cast<int>(row - 1)); };
    form_->chart->on_select = [this](int period) {
        Spread()->SetActiveCell(period + 1, std::max(1L, Spread()->ActiveColumn()));
        ShowPeriod(period);
    };
    form_->chart->on_open = [this](int) { Guarded(LUMERA_TAG, [this] { OnRecordApri(); }); };
}

void CCruscottoScadenze::AddCommands()
{
    UseCommands({RecordCommand::Apri});
    SetCommandCaption(RecordCommand::Apri, QStringLiteral("F2 - Scadenze"),
                      QStringLiteral("Apre le scadenze aperte del mese selezionato (anche Invio)"));
    AddToolbarCommand({.caption = QStringLiteral("Aggiorna"),
                       .tooltip = QStringLiteral("Legge di nuovo le scadenze"),
                       .icon = QStringLiteral("aggiorna"),
                       .run = [this] { LoadTable(nullptr, true); },
                       .shortcut = QStringLiteral("F5")});
    UseCommands({RecordCommand::Stampa});
    SetCommandCaption(RecordCommand::Stampa, QStringLiteral("F9 - Stampa"),
                      QStringLiteral("Stampa le cifre dei mesi e i clienti in ritardo"));
    AddToolbarCommand({.caption = QStringLiteral("Esporta"),
                       .tooltip = QStringLiteral("Salva le cifre dei mesi in un foglio Excel o in un file CSV"),
                       .icon = QStringLiteral("esporta"),
                       .run = [this] { Export(); },
                       .update = [this](CCmdUI *command) { command->Enable(HasRows()); },
                       .shortcut = QStringLiteral("Ctrl+E")});
}

bool CCruscottoScadenze::OnInitDialog()
{
    SetField();
    LoadTable(nullptr, false);
    form_->chart->setFocus();
    return true;
}

bool CCruscottoScadenze::CheckFilter()
{
    if (form_->filter.months >= 1 && form_->filter.months <= kOutlookMonthsMax) return true;
    return Refuse(form_->months, "I mesi vanno da 1 a 36.");
}

bool CCruscottoScadenze::HasRows() const
{
    return !form_->outlook.IsEmpty();
}

void CCruscottoScadenze::ReadRows(SACommand *cmd, bool)
{
    form_->outlook = ReadCashOutlook(cmd, form_->filter, CurrentUserInterface().Today());
    ShowTiles();
    ShowLate();
    ShowMonths();
    form_->chart->SetOutlook(form_->outlook);
    ShowPeriod(form_->chart->Selected());
}

void CCruscottoScadenze::ShowTiles()
{
    const auto euro = [](long long cents) { return ToQt(FormatAmount(FromCents(cents))); };
    const auto show = [&](const Form::Tile &tile, const CashSums &sums, const char *one, const char *many) {
        tile.amount->setText(euro(sums.Open()));
        tile.remark->setText(sums.overdue == 0 ? Counted(sums.count, one, many)
                                               : QStringLiteral("%1 già scadute").arg(euro(sums.overdue)));
        tile.remark->setForegroundRole(sums.overdue == 0 ? QPalette::PlaceholderText : QPalette::BrightText);
    };
    const CashOutlook &outlook = form_->outlook;
    show(form_->collect, outlook.collect, "scadenza", "scadenze");
    show(form_->pay, outlook.pay, "scadenza", "scadenze");
    const long long balance = outlook.periods.back().balance;
    form_->balance.amount->setText(euro(balance));
    form_->balance.amount->setForegroundRole(balance < 0 ? QPalette::BrightText : QPalette::WindowText);
    form_->balance.remark->setText(outlook.cash == 0 ? QStringLiteral("incassato e pagato tutto")
                                                     : QStringLiteral("con %1 di oggi").arg(euro(outlook.cash)));
    form_->balance.remark->setForegroundRole(QPalette::PlaceholderText);
}

void CCruscottoScadenze::ShowLate()
{
    const SpreadUpdate update(form_->late);
    form_->late->SetRowCount(static_cast<long>(form_->outlook.late.size()));
    long row = 0;
    for (const LateCustomer &customer : form_->outlook.late) {
        ++row;
        form_->late->SetRowData(row, customer.code);
        form_->late->SetText(row, kCustomerName, customer.name);
        form_->late->SetLong(row, kCount, customer.count);
        form_->late->SetLong(row, kOldest, customer.oldest_day);
        form_->late->SetLong(row, kDays, form_->outlook.today - customer.oldest_day);
        form_->late->SetNumber(row, kAmount, FromCents(customer.cents));
    }
    form_->late->setVisible(row > 0);
    form_->no_late->setVisible(row == 0);
}

void CCruscottoScadenze::ShowMonths()
{
    CSpreadSheet *grid = Spread();
    const SpreadUpdate update(grid);
    const QColor alarm = palette().color(QPalette::BrightText);
    grid->SetRowCount(static_cast<long>(form_->outlook.periods.size()));
    long row = 0;
    for (const CashPeriod &period : form_->outlook.periods) {
        grid->SetText(++row, kMonth, period.name);
        const std::pair<MonthColumn, long long> amounts[] = {{kCollect, period.collect.Open()},
                                                             {kCollectOverdue, period.collect.overdue},
                                                             {kCollected, period.collect.paid},
                                                             {kPay, period.pay.Open()},
                                                             {kPayOverdue, period.pay.overdue},
                                                             {kPaid, period.pay.paid},
                                                             {kNet, period.collect.Open() - period.pay.Open()},
                                                             {kBalance, period.balance}};
        for (const auto &[column, cents] : amounts) grid->SetNumber(row, column, FromCents(cents));
        grid->SetRowColor(row, period.kind == CashPeriod::Kind::Earlier ? alarm : QColor());
    }
}

void CCruscottoScadenze::ShowPeriod(int period)
{
    if (period < 0 || period >= static_cast<int>(form_->outlook.periods.size())) return;
    form_->chart->Select(period);
    SetStatus(ToQt(DescribePeriod(form_->outlook.periods[static_cast<std::size_t>(period)])));
}

void CCruscottoScadenze::OnRecordApri()
{
    const int selected = form_->chart->Selected();
    if (selected < 0) return;
    const CashPeriod &period = form_->outlook.periods[static_cast<std::size_t>(selected)];
    QWidget *focus = focusWidget();
    {
        CScadenzeSt list(this);
        list.m_dal = period.first_day;
        list.m_al = period.last_day;
        list.DoModal();
    }
    if (focus) focus->setFocus();
    LoadTable(nullptr, false); // an instalment may have been changed there
}

void CCruscottoScadenze::OnUpdateRecordApri(CCmdUI *command)
{
    command->Enable(HasRows());
}

bool CCruscottoScadenze::PreTranslateMessage(QKeyEvent *message)
{
    const bool is_enter = message->key() == Qt::Key_Return || message->key() == Qt::Key_Enter;
    if (!is_enter || message->modifiers() != Qt::NoModifier || focusWidget() != form_->chart)
        return ScheduleViewWindow::PreTranslateMessage(message);
    if (HasRows()) Guarded(LUMERA_TAG, [this] { OnRecordApri(); });
    return true;
}

void CCruscottoScadenze::OnRecordStampa()
{
    PrintCashOutlook(form_->filter, form_->outlook.today);
}

#include "schedule/ui/GestioneScadenze.h"

#include "schedule/ScheduleDates.h"
#include "schedule/SchedulePrint.h"
#include "schedule/ui/CounterpartLookup.h"
#include "schedule/ui/DestinationLookup.h"
#include "schedule/ui/Scadenze.h"
#include "schedule/ui/ScadenzeCerca.h"
#include "schedule/ui/ScheduleGrid.h"
#include "tables/ui/Lookups.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/widgets/FormBuilder.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLocale>
#include <QTimer>
#include <algorithm>
#include <fmt/printf.h>

namespace {

constexpr int kFillAfterMs = 10; ///< the window is painted first

/// Everything before anything is shown: a list that could not be read to its end must not stand there as whole.
std::vector<ScheduleLine> ReadLines(SACommand *cmd, const ScheduleFilter &filter, bool with_progress)
{
    const long count = CountSchedule(cmd, filter);
    std::optional<CTarvoProgressDlg> progress;
    if (with_progress && count > 0) {
        progress.emplace();
        progress->SetStatus("Lettura Scadenze in Corso....");
        progress->SetRange(0, count);
    }
    std::vector<ScheduleLine> lines;
    lines.reserve(static_cast<std::size_t>(count));
    ForEachScheduleLine(cmd, filter, [&](const ScheduleLine &line) {
        lines.push_back(line);
        if (progress) progress->StepIt();
    });
    return lines;
}

/// How the user sorted a list, to sort it again when it is filled anew.
struct Sorting {
    explicit Sorting(const CSpreadSheet *grid)
    {
        const QHeaderView *titles = grid->horizontalHeader();
        if (!titles->isSortIndicatorShown()) return;
        column = titles->sortIndicatorSection() + 1;
        ascending = titles->sortIndicatorOrder() == Qt::AscendingOrder;
    }
    long column = 0; ///< 0 = in the order of the query
    bool ascending = true;
};

} // namespace

struct CGestioneScadenze::List {
    ScheduleFilter filter;
    ScheduleSums sums;
    bool loading = false;
    QTimer *timer = nullptr;
    CChoiceField *state = nullptr;
    CDateField *d_start = nullptr, *d_stop = nullptr;
    CCodeField *codsez = nullptr, *codclf = nullptr, *coddst = nullptr, *codage = nullptr;
    QLabel *section = nullptr, *counterpart = nullptr, *destination = nullptr, *agent = nullptr;

    struct Sum {
        QLabel *caption = nullptr, *amount = nullptr;
    };
    Sum total, open, overdue, paid;
};

CGestioneScadenze::CGestioneScadenze(CWnd *parent) : CTarvoRecordBrowseDialog(parent), list_(std::make_unique<List>())
{
    BuildFilters();
    Spread()->SetColumns(ScheduleColumns());
    BuildSums();
    AddCommands();
    setMinimumSize(CharactersWide(this, 90), fontMetrics().lineSpacing() * 20);
    list_->timer = new QTimer(this);
    list_->timer->setSingleShot(true);
    connect(list_->timer, &QTimer::timeout, this, [this] { LoadTable(nullptr, true); });
}

CGestioneScadenze::~CGestioneScadenze() = default;

void CGestioneScadenze::BuildFilters()
{
    List &list = *list_;
    FormBuilder form(this, FilterArea());
    list.state = form.Choice("&Stato", list.filter.state,
                             {{kAllInstalments, {}}, {kOpenInstalments, {}}, {kPaidInstalments, {}}});
    list.d_start = form.Beside().Date("Scadenza &dal", list.filter.d_start);
    list.d_stop = form.Beside().Date("a&l", list.filter.d_stop);
    list.codsez = form.Beside().Code("Se&zione IVA", list.filter.codsez);
    list.section = form.Beside().Info({});
    list.codclf = form.Code("&Intestatario", list.filter.codclf);
    list.counterpart = form.Beside().Info({});
    list.coddst = form.Beside().Code("D&estinazione", list.filter.coddst);
    list.destination = form.Beside().Info({});
    list.codage = form.Beside().Code("&Agente", list.filter.codage);
    list.agent = form.Beside().Info({});

    list.codsez->SetLookup(Lookup("sezioni"), list.section);
    list.codclf->SetLookup(std::make_shared<CounterpartLookup>(list.filter.relaz), list.counterpart);
    list.coddst->SetLookup(LookupDestination([&filter = list.filter] {
                               return DestinationOwner{filter.relaz, filter.codclf};
                           }),
                           list.destination);
    list.codage->SetLookup(Lookup("agenti"), list.agent);
    list.state->setSizeAdjustPolicy(QComboBox::AdjustToContents);

    for (CTarvoField *field : std::initializer_list<CTarvoField *>{list.state, list.d_start, list.d_stop, list.codsez,
                                                                   list.coddst, list.codage})
        OnLostFocusEvent(field, [this] { return TakeFilter(); });
    OnLostFocusEvent(list.codclf, [this] { return OnCounterpart(); });
    connect(list.state, &QComboBox::activated, this, [this] { Guarded(LUMERA_TAG, [this] { TakeFilter(); }); });
}

void CGestioneScadenze::BuildSums()
{
    auto *strip = new QWidget(Content());
    auto *row = new QHBoxLayout(strip);
    row->setContentsMargins(0, 0, 0, 0);
    row->addStretch(1);
    for (List::Sum *sum : {&list_->total, &list_->open, &list_->overdue, &list_->paid}) {
        sum->caption = new QLabel(strip);
        sum->amount = new QLabel(strip);
        QFont bold = sum->amount->font();
        bold.setBold(true);
        sum->amount->setFont(bold);
        row->addSpacing(fontMetrics().averageCharWidth() * 3);
        row->addWidget(sum->caption);
        row->addWidget(sum->amount);
    }
    Content()->layout()->addWidget(strip);
}

void CGestioneScadenze::AddCommands()
{
    UseCommands({RecordCommand::Apri, RecordCommand::Nuovo});
    SetCommandCaption(RecordCommand::Apri, "F2 - Modifica", "Apre la scadenza selezionata (anche Invio)");
    SetCommandCaption(RecordCommand::Nuovo, "F3 - Nuova", "Inserisce una nuova scadenza (anche Ins)");
    AddToolbarCommand({.caption = "Trova",
                       .tooltip = "Cerca una scadenza per numero, data, fattura o intestatario",
                       .icon = "cerca",
                       .run = [this] { OnRecordTrova(); },
                       .shortcut = "F5"});
    AddToolbarCommand(
        {.caption = "F8 - Fornitori",
         .tooltip = "Passa dai clienti ai fornitori e viceversa",
         .icon = "scadenze",
         .run = [this] { OnAltroLato(); },
         .update =
             [this](CCmdUI *command) { command->SetText(m_relaz == kCustomer ? "F8 - Fornitori" : "F8 - Clienti"); }});
    UseCommands({RecordCommand::Stampa});
    SetCommandCaption(RecordCommand::Stampa, "F9 - Stampa", "Stampa le scadenze elencate, con i totali per mese");
    AddToolbarCommand({.caption = "Esporta",
                       .tooltip = "Salva l'elenco in un foglio Excel o in un file CSV",
                       .icon = "esporta",
                       .run = [this] { OnExport(); },
                       .update = [this](CCmdUI *command) { command->Enable(Spread()->RowCount() > 0); },
                       .shortcut = "Ctrl+E"});
    AddToolbarCommand({.caption = "Controlla date",
                       .tooltip = "Cerca le date fuori da un periodo in tutte le scadenze",
                       .icon = "calendario",
                       .run = [this] { OnControllaDate(); },
                       .shortcut = "Ctrl+D"});
}

bool CGestioneScadenze::OnInitDialog()
{
    list_->filter = {};
    list_->filter.state = m_stato;
    ShowSide();
    Spread()->setFocus();
    list_->timer->start(kFillAfterMs);
    return true;
}

void CGestioneScadenze::OnCancel()
{
    EndDialog(IDCANCEL); // filters are nothing to be lost
}

/// Title, words and fields of the side; the list itself is filled by LoadTable.
void CGestioneScadenze::ShowSide()
{
    const bool customers = m_relaz == kCustomer;
    list_->filter.relaz = m_relaz;
    setWindowTitle(customers ? QStringLiteral("Gestione Scadenze Clienti")
                             : QStringLiteral("Gestione Scadenze Fornitori"));
    for (long state = kAllInstalments; state <= kPaidInstalments; ++state)
        list_->state->setItemText(static_cast<int>(state), ToQt(StateWords(m_relaz, state)));
    list_->total.caption->setText(QStringLiteral("Totale"));
    list_->open.caption->setText(customers ? QStringLiteral("Da incassare") : QStringLiteral("Da pagare"));
    list_->overdue.caption->setText(QStringLiteral("di cui scadute"));
    list_->paid.caption->setText(customers ? QStringLiteral("Incassate") : QStringLiteral("Pagate"));
    SetField();
    OnKickIdle();
}

void CGestioneScadenze::SetField()
{
    CTarvoRecordBrowseDialog::SetField();
    ShowRestrictions();
}

void CGestioneScadenze::ShowRestrictions()
{
    const auto all = [](const CCodeField *field, QLabel *words, const char *text) {
        if (field->Value() == 0) words->setText(ToQt(text));
    };
    all(list_->codsez, list_->section, "TUTTE");
    all(list_->codclf, list_->counterpart, "TUTTI");
    all(list_->coddst, list_->destination, "TUTTE");
    all(list_->codage, list_->agent, "TUTTI");
}

void CGestioneScadenze::LoadTable(SACommand *cmd, bool progress)
{
    if (list_->loading) return; // the progress window lets events through
    list_->loading = true;
    Guarded(LUMERA_TAG, [&] {
        CommandScope scope(cmd);
        const std::vector<ScheduleLine> lines = ReadLines(scope.get(), list_->filter, progress);
        const long selected = Selected(), row_before = Spread()->ActiveRow(), today = CurrentUserInterface().Today();
        const Sorting sorting(Spread());
        const ScheduleColours colours;
        list_->sums = {};
        {
            const SpreadUpdate update(Spread());
            Spread()->SetRowCount(static_cast<long>(lines.size()));
            long row = 0;
            for (const ScheduleLine &line : lines) {
                ShowScheduleLine(Spread(), ++row, line, colours.Of(line.scadenza, today));
                list_->sums.Add(line.scadenza, today);
            }
            if (sorting.column != 0) Spread()->Sort(sorting.column, sorting.ascending);
        }
        Select(selected, row_before);
        ShowSums();
        OnKickIdle(); // commands on what is listed now
    });
    list_->loading = false;
}

void CGestioneScadenze::ShowSums()
{
    const ScheduleSums &sums = list_->sums;
    const auto show = [](const List::Sum &sum, long long cents) {
        sum.amount->setText(ToQt(FormatAmount(FromCents(cents))));
        sum.amount->setAccessibleName(sum.caption->text());
    };
    show(list_->total, sums.total);
    show(list_->open, sums.open);
    show(list_->overdue, sums.overdue);
    show(list_->paid, sums.paid);
    QPalette palette = list_->total.amount->palette();
    if (sums.overdue != 0) palette.setColor(QPalette::WindowText, OverdueColour());
    list_->overdue.amount->setPalette(palette);

    const QString number = QLocale(QLocale::Italian, QLocale::Italy).toString(static_cast<qlonglong>(sums.count));
    SetStatus(sums.count == 0   ? QStringLiteral("Nessuna scadenza")
              : sums.count == 1 ? QStringLiteral("1 scadenza")
                                : number + QStringLiteral(" scadenze"));
}

bool CGestioneScadenze::TakeFilter()
{
    GetField();
    SetChanged(false);
    ShowRestrictions();
    LoadTable(nullptr, true);
    return true;
}

bool CGestioneScadenze::OnCounterpart()
{
    list_->coddst->SetValue(0); // a destination is somebody's
    return TakeFilter();
}

long CGestioneScadenze::RowOf(long number) const
{
    for (long row = 1; row <= Spread()->RowCount(); ++row)
        if (Spread()->RowData(row) == number) return row;
    return 0;
}

long CGestioneScadenze::Selected() const
{
    return Spread()->RowData(Spread()->ActiveRow());
}

/// @param row_otherwise  where the cursor stays when the instalment is not listed any more
void CGestioneScadenze::Select(long number, long row_otherwise)
{
    if (Spread()->RowCount() == 0) return;
    const long listed = number == 0 ? 0 : RowOf(number);
    const long row = listed != 0 ? listed : std::clamp(row_otherwise, 1L, Spread()->RowCount());
    Spread()->SetActiveCell(row, std::max(Spread()->ActiveColumn(), 1L));
}

void CGestioneScadenze::OnRecordApri()
{
    const long number = Selected();
    if (number == 0) return;
    SCADENZE instalment;
    if (!sqlsca.Search(nullptr, m_relaz, number, &instalment)) {
        AfxMessageBox(fmt::sprintf("La scadenza %ld non esiste più in archivio.", number), MB_ICONERROR);
        return LoadTable(nullptr, true);
    }
    CScadenze editor(this);
    editor.m_relaz = m_relaz;
    editor.m_num = number;
    editor.m_sez = list_->filter.codsez;
    editor.DoModal();
    Follow(editor);
}

void CGestioneScadenze::OnRecordNuovo()
{
    CScadenze editor(this);
    editor.m_relaz = m_relaz;
    editor.DoModal();
    Follow(editor);
}

/// The editor browses, so that it may have stored or deleted more than the instalment it was opened on.
void CGestioneScadenze::Follow(const CScadenze &editor)
{
    Spread()->setFocus();
    if (!editor.m_saved) return;
    LoadTable(nullptr, true);
    SCADENZE stored;
    if (RowOf(editor.m_num) != 0)
        Select(editor.m_num);
    else if (sqlsca.Search(nullptr, m_relaz, editor.m_num, &stored))
        SetStatus(QStringLiteral("La scadenza %1 è registrata e non rientra nel filtro").arg(editor.m_num));
}

void CGestioneScadenze::OnRecordTrova()
{
    CScadenzeCerca search(m_relaz, this);
    if (search.DoModal() != IDOK) return;
    Spread()->setFocus();
    if (RowOf(search.m_num) != 0) return Select(search.m_num);
    BeepRefused();
    SetStatus(QStringLiteral("La scadenza %1 non rientra nel filtro").arg(search.m_num));
}

void CGestioneScadenze::OnAltroLato()
{
    if (list_->loading) return;
    m_relaz = m_relaz == kCustomer ? kSupplier : kCustomer;
    list_->filter.codclf = list_->filter.coddst = 0; // the other side has other codes
    ShowSide();
    Spread()->setFocus();
    Spread()->SetRowCount(0); // nothing of one side stands under the title of the other
    LoadTable(nullptr, true);
}

void CGestioneScadenze::OnControllaDate()
{
    if (!AskScheduleDates()) return;
    const auto period = PickDatePeriod();
    if (!period) return;
    if (CheckScheduleDates(*period) == 0) AfxMessageBox("Nessuna data fuori dal periodo.", MB_ICONINFORMATION);
}

void CGestioneScadenze::OnRecordStampa()
{
    PrintSchedule(list_->filter);
}

void CGestioneScadenze::OnUpdateRecordApri(CCmdUI *command)
{
    command->Enable(Selected() != 0);
}

void CGestioneScadenze::OnUpdateRecordStampa(CCmdUI *command)
{
    command->Enable(Spread()->RowCount() > 0);
}

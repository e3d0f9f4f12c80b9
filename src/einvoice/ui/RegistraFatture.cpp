#include "einvoice/ui/RegistraFatture.h"

#include "einvoice/ui/Contabilizza.h"
#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/SpreadColumns.h"
#include "tarvodlg/widgets/Theme.h"
#include "tarvolumera/TarvoPostgreSQL.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QTimer>
#include <algorithm>
#include <fmt/format.h>

namespace {

constexpr int kFillAfterMs = 10; ///< the window is painted first

enum Column : long { kTaken = 1, kDate, kNumber, kSupplierName, kCausale, kVat, kTotal, kInstalments, kState };

/// A line of the plan with what the user and the run made of it.
struct Shown {
    BatchLine line;
    bool is_taken = false;
    std::string outcome; ///< of this run; empty = none yet
};

struct Counts {
    long ready = 0, open = 0, registered = 0, taken = 0, instalments = 0;
    long long total = 0; ///< cents of what is taken
};

std::string Plural(long count, const char *one, const char *many)
{
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

std::string StateOf(const Shown &shown)
{
    const BatchLine &line = shown.line;
    if (!shown.outcome.empty()) return shown.outcome;
    if (line.is_registered)
        return line.invoice.entry == 0
                   ? "Registrata"
                   : fmt::format("Registrata: movimento {}, protocollo {}", line.invoice.entry, line.invoice.protocol);
    if (!line.is_ready) return line.reason;
    std::string state = "Pronta";
    for (const std::string &note : line.notes) state += (state == "Pronta" ? ": " : " ") + note;
    return state;
}

} // namespace

struct CRegistraFatture::List {
    std::vector<Shown> lines; ///< a row of the grid has its index + 1 as data
    bool is_loaded = false;
    bool is_running = false, is_stopping = false;
    const char *what = "";
    QTimer *timer = nullptr;
    QProgressBar *progress = nullptr;
    QLabel *detail = nullptr, *taken = nullptr, *total = nullptr, *instalments = nullptr;

    Shown *Of(long data)
    {
        return data > 0 && data <= static_cast<long>(lines.size()) ? &lines[static_cast<std::size_t>(data) - 1]
                                                                   : nullptr;
    }
    Counts Count() const
    {
        Counts counts;
        for (const Shown &shown : lines) {
            ++(shown.line.is_registered ? counts.registered : shown.line.is_ready ? counts.ready : counts.open);
            if (!shown.is_taken) continue;
            ++counts.taken;
            counts.instalments += shown.line.instalments;
            counts.total += ToCents(shown.line.total);
        }
        return counts;
    }
};

CRegistraFatture::CRegistraFatture(CWnd *parent) : CTarvoRecordBrowseDialog(parent), list_(std::make_unique<List>())
{
    setWindowTitle("Registra fatture elettroniche");
    BuildGrid();
    BuildFoot();
    AddCommands();
    setMinimumSize(CharactersWide(this, 90), fontMetrics().lineSpacing() * 20);
    list_->timer = new QTimer(this);
    list_->timer->setSingleShot(true);
    connect(list_->timer, &QTimer::timeout, this, [this] { LoadTable(nullptr, true); });
}

CRegistraFatture::~CRegistraFatture() = default;

QSize CRegistraFatture::sizeHint() const
{
    return WholeListSize(CTarvoRecordBrowseDialog::sizeHint(), Spread());
}

void CRegistraFatture::BuildGrid()
{
    using Type = CSpreadSheet::Type;
    const auto column = ListColumn;
    std::vector<CSpreadSheet::Column> columns = {
        column("Reg.", Type::Text, 4),       column("Data", Type::Date, 10),    column("Numero", Type::Text, 11),
        column("Fornitore", Type::Text, 24), column("Causale", Type::Text, 22), column("Codici IVA", Type::Text, 9),
        column("Totale", Type::Amount, 11),  column("Scad.", Type::Code, 5),    column("Stato", Type::Text, 36)};
    columns[kSupplierName - 1].stretch = columns[kState - 1].stretch = true;
    Spread()->SetColumns(std::move(columns));
    Spread()->setAccessibleName("Fatture da registrare");
    Spread()->on_key_press = [this](long row, long, QKeyEvent *key) {
        if (key->key() != Qt::Key_Space || key->modifiers() != Qt::NoModifier) return false;
        Toggle(row);
        return true;
    };
    Spread()->on_row_changed = [this](long) { ShowDetail(); };
    Spread()->on_click = [this](long row, long clicked) {
        if (clicked == kTaken) Toggle(row);
    };
}

void CRegistraFatture::BuildFoot()
{
    list_->detail = new QLabel(Content());
    list_->detail->setTextFormat(Qt::PlainText);
    list_->detail->setWordWrap(true);
    list_->detail->setMinimumHeight(2 * fontMetrics().lineSpacing());
    list_->detail->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    list_->detail->setAccessibleName("Stato della fattura");
    Content()->layout()->addWidget(list_->detail);
    auto *strip = new QWidget(Content());
    auto *row = new QHBoxLayout(strip);
    row->setContentsMargins(0, 0, 0, 0);
    list_->progress = new QProgressBar(strip);
    list_->progress->setTextVisible(false);
    list_->progress->setAccessibleName("Avanzamento");
    list_->progress->setMaximumWidth(CharactersWide(this, 30));
    QSizePolicy policy = list_->progress->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    list_->progress->setSizePolicy(policy);
    list_->progress->hide();
    row->addWidget(list_->progress, 1);
    row->addStretch(1);
    const auto sum = [&](const char *caption) {
        auto *amount = new QLabel(strip);
        QFont bold = amount->font();
        bold.setBold(true);
        amount->setFont(bold);
        amount->setAccessibleName(QString::fromUtf8(caption));
        row->addSpacing(fontMetrics().averageCharWidth() * 3);
        row->addWidget(new QLabel(QString::fromUtf8(caption), strip));
        row->addWidget(amount);
        return amount;
    };
    list_->taken = sum("Da registrare");
    list_->total = sum("Totale");
    list_->instalments = sum("Scadenze");
    Content()->layout()->addWidget(strip);
}

void CRegistraFatture::AddCommands()
{
    const auto when = [this](auto condition) {
        return [this, condition](CCmdUI *command) { command->Enable(!list_->is_running && condition()); };
    };
    AddToolbarCommand({.caption = "F2 - &Registra",
                       .tooltip = "Registra in prima nota le fatture segnate, con le loro scadenze",
                       .icon = "salva",
                       .run = [this] { OnRegistra(); },
                       .update = when([this] { return list_->Count().taken > 0; })});
    UseCommands({RecordCommand::Apri});
    SetCommandCaption(RecordCommand::Apri, "F4 - Contabilizza", "Completa la fattura nella prima nota (anche Invio)");
    AddToolbarCommand({.caption = "F5 - Aggiorna",
                       .tooltip = "Controlla di nuovo tutte le fatture",
                       .icon = "aggiorna",
                       .run = [this] { LoadTable(nullptr, true); },
                       .update = when([] { return true; })});
    AddToolbarCommand({.caption = "Tutte/Nessuna",
                       .tooltip = "Segna tutte le fatture pronte, o nessuna (una sola: barra spaziatrice)",
                       .icon = "tabelle",
                       .run = [this] { OnTutte(); },
                       .update = when([this] { return list_->Count().ready > 0; }),
                       .shortcut = "Ctrl+A"});
    AddToolbarCommand({.caption = "Esporta",
                       .tooltip = "Salva l'elenco in un foglio Excel o in un file CSV",
                       .icon = "esporta",
                       .run = [this] { OnExport(); },
                       .update = when([this] { return Spread()->RowCount() > 0; }),
                       .shortcut = "Ctrl+E"});
    AddToolbarCommand(
        {.caption = "Interrompi",
         .tooltip = "Si ferma dopo la fattura in corso (Esc)",
         .icon = "annulla",
         .run = [this] { OnInterrompi(); },
         .update = [this](CCmdUI *command) { command->Enable(list_->is_running && !list_->is_stopping); }});
}

bool CRegistraFatture::OnInitDialog()
{
    ShowSums();
    Spread()->setFocus();
    list_->timer->start(kFillAfterMs);
    return true;
}

void CRegistraFatture::OnCancel()
{
    if (list_->is_running) return OnInterrompi();
    EndDialog(IDCANCEL); // marks are nothing to be lost
}

/// While something runs only Esc is heard: every other command would work on lines that are being stored.
bool CRegistraFatture::PreTranslateMessage(QKeyEvent *message)
{
    if (!list_->is_running) return CTarvoRecordBrowseDialog::PreTranslateMessage(message);
    if (message->key() == Qt::Key_Escape) OnInterrompi();
    return true;
}

void CRegistraFatture::OnUpdateRecordApri(CCmdUI *command)
{
    const BatchLine *line = Active();
    command->Enable(!list_->is_running && line != nullptr && !line->is_registered);
}

void CRegistraFatture::OnInterrompi()
{
    if (!list_->is_running) return;
    list_->is_stopping = true;
    SetStatus(QStringLiteral("Interruzione dopo la fattura in corso..."));
}

void CRegistraFatture::Run(const char *what, const std::function<void()> &work)
{
    list_->is_running = true;
    list_->is_stopping = false;
    list_->what = what;
    list_->progress->setRange(0, 0);
    list_->progress->show();
    SetStatus(QStringLiteral("%1...").arg(QString::fromUtf8(what)));
    OnKickIdle();
    QApplication::processEvents();
    Guarded(LUMERA_TAG, work);
    list_->is_running = false;
    list_->progress->hide();
}

bool CRegistraFatture::Step(long done, long of)
{
    list_->progress->setRange(0, static_cast<int>(of));
    list_->progress->setValue(static_cast<int>(done));
    if (!list_->is_stopping) SetStatus(ToQt(fmt::format("{} {} di {}: Esc interrompe", list_->what, done, of)));
    QApplication::processEvents();
    return !list_->is_stopping;
}

void CRegistraFatture::LoadTable(SACommand *cmd, bool)
{
    if (list_->is_running) return; // events are let through
    Run("Controllo fatture", [&] {
        const BatchPlan plan =
            PlanRegistration(cmd, m_targets, {}, [this](long done, long of) { return Step(done, of); });
        list_->lines.clear();
        for (const BatchLine &line : plan.lines) list_->lines.push_back({line, line.is_ready, {}});
        list_->is_loaded = true;
        ShowPlan();
    });
    ShowSums();
    ShowState();
    OnKickIdle();
}

void CRegistraFatture::ShowPlan()
{
    const SpreadUpdate update(Spread());
    Spread()->SetRowCount(static_cast<long>(list_->lines.size()));
    for (long row = 1; row <= Spread()->RowCount(); ++row) {
        Spread()->SetRowData(row, row);
        ShowLine(row);
    }
    if (Spread()->RowCount() > 0) Spread()->SetActiveCell(1, kSupplierName);
    ShowDetail();
}

void CRegistraFatture::ShowLine(long row)
{
    const Shown *shown = list_->Of(Spread()->RowData(row));
    if (shown == nullptr) return;
    const BatchLine &line = shown->line;
    CSpreadSheet *grid = Spread();
    grid->SetText(row, kTaken, shown->is_taken ? "SI" : "");
    grid->SetLong(row, kDate, line.invoice.day);
    grid->SetText(row, kNumber, OnOneLine(line.invoice.number));
    grid->SetText(row, kSupplierName, OnOneLine(line.supplier_name));
    grid->SetText(row, kCausale, line.causale == 0 ? "" : fmt::format("{} {}", line.causale, line.causale_text));
    grid->SetText(row, kVat, line.vat_codes);
    grid->SetNumber(row, kTotal, line.total);
    grid->SetLong(row, kInstalments, line.instalments);
    grid->SetText(row, kState, OnOneLine(StateOf(*shown)));
    grid->SetRowColor(row, line.is_registered ? Readable(QColor(0, 128, 0))
                           : line.is_ready    ? QColor()
                                              : Readable(QColor(192, 0, 0)));
    if (row == grid->ActiveRow()) ShowDetail();
}

/// The whole state of the active line, which its column may cut.
void CRegistraFatture::ShowDetail()
{
    const Shown *shown = list_->Of(Spread()->RowData(Spread()->ActiveRow()));
    list_->detail->setText(shown != nullptr ? ToQt(OnOneLine(StateOf(*shown))) : QString());
}

void CRegistraFatture::ShowSums()
{
    const Counts counts = list_->Count();
    list_->taken->setText(QString::number(counts.taken));
    list_->total->setText(ToQt(FormatAmount(FromCents(counts.total))));
    list_->instalments->setText(QString::number(counts.instalments));
}

/// How the list stands: "48 registrate, 3 da completare".
void CRegistraFatture::ShowState()
{
    const Counts counts = list_->Count();
    std::vector<std::string> parts;
    if (counts.registered > 0) parts.push_back(Plural(counts.registered, "registrata", "registrate"));
    if (counts.ready > 0) parts.push_back(Plural(counts.ready, "pronta", "pronte"));
    if (counts.open > 0) parts.push_back(fmt::format("{} da completare", counts.open));
    std::string text = fmt::format("{}", fmt::join(parts, ", "));
    if (text.empty()) text = list_->is_loaded ? "Nessuna fattura da registrare" : "Elenco non caricato";
    if (list_->is_stopping) text = "Interrotto: " + text;
    SetStatus(ToQt(text));
}

BatchLine *CRegistraFatture::Active()
{
    Shown *shown = list_->Of(Spread()->RowData(Spread()->ActiveRow()));
    return shown != nullptr ? &shown->line : nullptr;
}

void CRegistraFatture::Toggle(long row)
{
    Shown *shown = list_->is_running ? nullptr : list_->Of(Spread()->RowData(row));
    if (shown == nullptr || !shown->line.is_ready) return BeepRefused();
    shown->is_taken = !shown->is_taken;
    ShowLine(row);
    ShowSums();
    OnKickIdle();
}

void CRegistraFatture::OnTutte()
{
    const Counts counts = list_->Count();
    const bool take = counts.taken < counts.ready;
    const SpreadUpdate update(Spread());
    for (long row = 1; row <= Spread()->RowCount(); ++row) {
        Shown *shown = list_->Of(Spread()->RowData(row));
        shown->is_taken = take && shown->line.is_ready;
        ShowLine(row);
    }
    ShowSums();
}

/// @param place  of the line in the plan, from 1; the user may have sorted the rows
void CRegistraFatture::TakeOutcome(const BatchOutcome &outcome, long place)
{
    Shown *shown = list_->Of(place);
    const BatchResult &result = outcome.outcome;
    shown->is_taken = shown->line.is_ready = false;
    shown->line.is_registered = result.registered;
    if (result.registered) {
        ++m_registered;
        shown->line.instalments = result.instalments;
        shown->outcome = fmt::format("Registrata: movimento {}, protocollo {}", result.entry, result.protocol);
        for (const std::string &note : result.notes) shown->outcome += ". " + note;
    } else {
        shown->line.reason = result.reason;
    }
    long row = place;
    if (Spread()->RowData(row) != place)
        for (row = Spread()->RowCount(); row > 0 && Spread()->RowData(row) != place;) --row;
    ShowLine(row);
    Spread()->SetActiveCell(row, kSupplierName); // what is being stored is in sight
}

void CRegistraFatture::OnRegistra()
{
    BatchPlan plan;
    std::vector<long> places; // in the order of the plan
    for (std::size_t i = 0; i < list_->lines.size(); ++i) {
        if (!list_->lines[i].is_taken) continue;
        plan.lines.push_back(list_->lines[i].line);
        places.push_back(static_cast<long>(i) + 1);
    }
    if (list_->is_running || plan.lines.empty()) return BeepRefused();
    const long of = static_cast<long>(plan.lines.size());
    long done = 0;
    Run("Registrazione", [&] {
        RegisterPlanned(nullptr, plan, {}, [&](const BatchOutcome &outcome) {
            TakeOutcome(outcome, places[static_cast<std::size_t>(done)]);
            ShowSums();
            return Step(++done, of);
        });
    });
    if (done == of) list_->is_stopping = false; // nothing was left to break off
    ShowSums();
    ShowState();
    OnKickIdle();
}

void CRegistraFatture::OnRecordApri()
{
    const long row = Spread()->ActiveRow(), place = Spread()->RowData(row);
    const Shown *chosen = list_->is_running ? nullptr : list_->Of(place);
    if (chosen == nullptr || chosen->line.is_registered) return BeepRefused();
    const BatchTarget target{chosen->line.invoice.code, chosen->line.invoice.document};
    if (ContabilizzaFattura(this, target.code, target.document) != 0) ++m_registered;
    Spread()->setFocus();
    Guarded(LUMERA_TAG, [&] { // also when nothing was stored: terms or codes may have been set meanwhile
        const BatchPlan plan = PlanRegistration(nullptr, {target}, {});
        Shown *shown = list_->Of(place);
        *shown = {plan.lines.front(), plan.lines.front().is_ready, {}};
        ShowLine(row);
    });
    list_->is_stopping = false;
    ShowSums();
    ShowState();
    OnKickIdle();
}

#include "ledger/ui/GestionePrimaNota.h"

#include "ledger/JournalList.h"
#include "ledger/ui/PNota.h"
#include "ledger/ui/PNotaAllegati.h"
#include "ledger/ui/PNotaCerca.h"
#include "sqlapi/SACommand.h"
#include "tables/ui/Lookups.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/SpreadColumns.h"
#include "tarvodlg/widgets/Theme.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <QApplication>
#include <QLocale>
#include <QTimer>
#include <fmt/printf.h>

namespace {

constexpr int kFillAfterMs = 10; ///< the window is painted first
constexpr long kHighestNumber = 999'999'999;
const QString kAll = QStringLiteral("TUTTE");

using Type = CSpreadSheet::Type;

enum Column : long {
    kNumber = 1,
    kDate,
    kDescription,
    kDocumentDate,
    kTotal,
    kSection,
    kCausale,
    kRegister,
    kName,
    kKind,
    kCode,
    kDocument,
    kDare,
    kAvere
};

/// Of the rows, made once for a whole list: what is readable depends on the theme and takes its time.
struct LineColours {
    QColor supplier = Readable(QColor(192, 0, 0)), none = Readable(QColor(0, 128, 0)), customer{};

    const QColor &Of(long rel) const
    {
        if (rel == kNoCounterpart) return none;
        return rel == kSupplier ? supplier : customer;
    }
};

void ShowLine(CSpreadSheet *grid, long row, const JournalLine &line, const LineColours &colours = {})
{
    grid->SetRowData(row, line.codice);
    grid->SetLong(row, kNumber, line.codice);
    grid->SetLong(row, kDate, line.data);
    grid->SetText(row, kDescription, line.desc);
    grid->SetLong(row, kDocumentDate, line.data_doc);
    grid->SetNumber(row, kTotal, line.tot_doc);
    grid->SetLong(row, kSection, line.sez);
    grid->SetLong(row, kCausale, line.cau);
    grid->SetText(row, kRegister, RegisterName(line.reg));
    grid->SetText(row, kName, line.clifor);
    grid->SetText(row, kKind, CounterpartLetter(line.rel));
    grid->SetLong(row, kCode, line.cli_for);
    grid->SetText(row, kDocument, line.doc);
    grid->SetNumber(row, kDare, line.dare);
    grid->SetNumber(row, kAvere, line.avere);
    grid->SetRowColor(row, colours.Of(line.rel));
}

/// Everything before anything is shown: a list that could not be read to its end must not stand there as whole.
std::vector<JournalLine> ReadLines(SACommand *cmd, const JournalPrintFilter &filter, bool with_progress)
{
    const long count = CountJournal(cmd, filter);
    std::optional<CTarvoProgressDlg> progress;
    if (with_progress && count > 0) {
        progress.emplace();
        progress->SetStatus("Lettura Movimenti in Corso....");
        progress->SetRange(0, count);
    }
    std::vector<JournalLine> lines;
    lines.reserve(static_cast<std::size_t>(count));
    ForEachJournalLine(cmd, filter, [&](JournalLine &&line) {
        lines.push_back(std::move(line));
        if (progress) progress->StepIt();
    });
    return lines;
}

} // namespace

struct CGestionePrimaNota::List {
    JournalPrintFilter filter;
    long highest = 0; ///< entry number of the journal, when it was last looked at
    bool loading = false;
    QTimer *timer = nullptr;
    CAmountField *n_start = nullptr, *n_stop = nullptr;
    CDateField *d_start = nullptr, *d_stop = nullptr;
    CCodeField *codsez = nullptr, *codcac = nullptr;
    QLabel *section = nullptr, *causale = nullptr;
};

CGestionePrimaNota::CGestionePrimaNota(CWnd *parent) : CTarvoRecordBrowseDialog(parent), list_(std::make_unique<List>())
{
    setWindowTitle("Gestione Prima Nota");
    BuildFilters();
    BuildGrid();
    AddCommands();
    OnGetMinMaxInfo();
    list_->timer = new QTimer(this);
    connect(list_->timer, &QTimer::timeout, this, [this] { OnTimer(); });
}

CGestionePrimaNota::~CGestionePrimaNota() = default;

void CGestionePrimaNota::BuildFilters()
{
    List &list = *list_;
    FormBuilder form(this, FilterArea());
    list.n_start = form.Number("Dal n&umero", list.filter.n_start, 0, kHighestNumber);
    list.n_stop = form.Beside().Number("al numero", list.filter.n_stop, 0, kHighestNumber);
    list.d_start = form.Beside().Date("dalla &data", list.filter.d_start);
    list.d_stop = form.Beside().Date("alla data", list.filter.d_stop);
    list.codsez = form.Code("Se&zione IVA", list.filter.codsez);
    list.section = form.Beside().Info({});
    list.codcac = form.Beside().Code("&Causale", list.filter.codcac);
    list.causale = form.Beside().Info({});
    list.codsez->SetLookup(Lookup("sezioni"), list.section);
    list.codcac->SetLookup(Lookup("causali"), list.causale);
    list.codsez->on_dbl_click = [this] { OnDblClickCodSez(); };
    list.codcac->on_dbl_click = [this] { OnDblClickCodCac(); };

    OnLostFocusEvent(list.n_start, [this] { return OnEnKillfocusNStart(); });
    OnLostFocusEvent(list.n_stop, [this] { return OnEnKillfocusNStop(); });
    OnLostFocusEvent(list.d_start, [this] { return OnEnKillfocusStart(); });
    OnLostFocusEvent(list.d_stop, [this] { return OnEnKillfocusStop(); });
    OnLostFocusEvent(list.codsez, [this] { return OnEnKillfocusCodSez(); });
    OnLostFocusEvent(list.codcac, [this] { return OnEnKillfocusCodCac(); });
}

void CGestionePrimaNota::BuildGrid()
{
    const auto column = ListColumn;
    // All of them fit into 1280 points; on a wider screen the texts take what is left.
    std::vector<CSpreadSheet::Column> columns = {
        column("Numero", Type::Code, 6),         column("Data", Type::Date, 10),
        column("Descrizione", Type::Text, 14),   column("Data doc.", Type::Date, 10),
        column("Totale doc.", Type::Amount, 11), column("Sez.", Type::Code, 4),
        column("Caus.", Type::Code, 5),          column("Registro", Type::Text, 13),
        column("Intestatario", Type::Text, 18),  column("C/F", Type::Text, 3),
        column("Codice", Type::Code, 6),         column("N. doc.", Type::Text, 9),
        column("Dare", Type::Amount, 12),        column("Avere", Type::Amount, 12)};
    columns[kDescription - 1].stretch = columns[kRegister - 1].stretch = columns[kName - 1].stretch = true;
    columns[kDare - 1].sum = columns[kAvere - 1].sum = true;
    Spread()->SetColumns(std::move(columns));
    Spread()->ShowSums(true);
}

void CGestionePrimaNota::AddCommands()
{
    UseCommands({RecordCommand::Apri, RecordCommand::Nuovo});
    SetCommandCaption(RecordCommand::Apri, "F2 - Modifica", "Apre il movimento selezionato (anche Invio)");
    SetCommandCaption(RecordCommand::Nuovo, "F3 - Nuova", "Inserisce una nuova scrittura (anche Ins)");
    AddToolbarCommand({.caption = "F7 - &Allegati",
                       .tooltip = "Documenti allegati al movimento selezionato",
                       .icon = "allegati",
                       .run = [this] { OnAllegati(); },
                       .update = [this](CCmdUI *command) { OnUpdateAllegati(command); }});
    AddToolbarCommand({.caption = "Trova",
                       .tooltip = "Cerca un movimento per numero, data, documento, causale o intestatario",
                       .icon = "cerca",
                       .run = [this] { OnRecordTrova(); },
                       .update = [this](CCmdUI *command) { OnUpdateRecordTrova(command); },
                       .shortcut = "F5"});
    UseCommands({RecordCommand::Stampa});
    SetCommandCaption(RecordCommand::Stampa, "F9 - Stampa", "Stampa i movimenti elencati");
    AddToolbarCommand({.caption = "Esporta",
                       .tooltip = "Salva l'elenco in un foglio Excel o in un file CSV",
                       .icon = "esporta",
                       .run = [this] { OnExport(); },
                       .update = [this](CCmdUI *command) { command->Enable(Spread()->RowCount() > 0); },
                       .shortcut = "Ctrl+E"});
}

bool CGestionePrimaNota::OnInitDialog()
{
    CommandScope scope(nullptr);
    list_->filter = {};
    list_->filter.n_start = LowestEntry(scope.get());
    list_->filter.n_stop = list_->highest = HighestEntry(scope.get());
    SetField();
    Spread()->setFocus();
    list_->timer->start(kFillAfterMs);
    return true;
}

void CGestionePrimaNota::OnGetMinMaxInfo()
{
    setMinimumSize(CharactersWide(this, 80), fontMetrics().lineSpacing() * 20);
}

/// The layout gives the list the room of the window; in a lower one the selected entry must not get out of sight.
void CGestionePrimaNota::OnSize()
{
    Spread()->scrollTo(Spread()->currentIndex());
}

void CGestionePrimaNota::resizeEvent(QResizeEvent *event)
{
    CTarvoRecordBrowseDialog::resizeEvent(event);
    OnSize();
}

void CGestionePrimaNota::OnTimer()
{
    list_->timer->stop();
    LoadTable(nullptr, true);
}

QSize CGestionePrimaNota::sizeHint() const
{
    return WholeListSize(CTarvoRecordBrowseDialog::sizeHint(), Spread());
}

void CGestionePrimaNota::OnCancel()
{
    EndDialog(IDCANCEL); // filters are nothing to be lost
}

void CGestionePrimaNota::SetField()
{
    CTarvoRecordBrowseDialog::SetField();
    ShowRestrictions();
}

void CGestionePrimaNota::ShowRestrictions()
{
    if (list_->codsez->Value() == 0) list_->section->setText(kAll);
    if (list_->codcac->Value() == 0) list_->causale->setText(kAll);
}

void CGestionePrimaNota::LoadTable(SACommand *cmd, bool progress)
{
    if (list_->loading) return; // the progress window lets events through
    list_->loading = true;
    Guarded(LUMERA_TAG, [&] {
        CommandScope scope(cmd);
        const std::vector<JournalLine> lines = ReadLines(scope.get(), list_->filter, progress);
        const long selected = Selected();
        {
            const SpreadUpdate update(Spread());
            const LineColours colours;
            Spread()->SetRowCount(static_cast<long>(lines.size()));
            long row = 0;
            for (const JournalLine &line : lines) ShowLine(Spread(), ++row, line, colours);
        }
        Select(selected);
        ShowCount();
        OnKickIdle(); // commands on what is listed now
    });
    list_->loading = false;
}

bool CGestionePrimaNota::TakeFilter()
{
    GetField();
    SetChanged(false);
    ShowRestrictions();
    LoadTable(nullptr, true);
    return true;
}

bool CGestionePrimaNota::OnEnKillfocusStart()
{
    return TakeFilter();
}

bool CGestionePrimaNota::OnEnKillfocusStop()
{
    return TakeFilter();
}

bool CGestionePrimaNota::OnEnKillfocusNStart()
{
    return TakeFilter();
}

bool CGestionePrimaNota::OnEnKillfocusNStop()
{
    return TakeFilter();
}

bool CGestionePrimaNota::OnEnKillfocusCodSez()
{
    return TakeFilter();
}

bool CGestionePrimaNota::OnEnKillfocusCodCac()
{
    return TakeFilter();
}

void CGestionePrimaNota::OnDblClickCodSez()
{
    list_->codsez->Browse();
    ShowRestrictions();
}

void CGestionePrimaNota::OnDblClickCodCac()
{
    list_->codcac->Browse();
    ShowRestrictions();
}

long CGestionePrimaNota::RowOf(long code) const
{
    for (long row = 1; row <= Spread()->RowCount(); ++row)
        if (Spread()->RowData(row) == code) return row;
    return 0;
}

bool CGestionePrimaNota::TestFilter(const PNOTA *entry) const
{
    return PassesFilter(list_->filter, *entry);
}

void CGestionePrimaNota::SetRow(long row, const PNOTA *entry)
{
    const bool is_newest = row == 0 && entry->pno_codice > list_->highest;
    if (is_newest && list_->filter.n_stop == list_->highest) MoveUpperBound(entry->pno_codice);

    const long listed = Spread()->RowData(row) == entry->pno_codice ? row : RowOf(entry->pno_codice);
    if (!TestFilter(entry)) {
        if (listed != 0) DeleteRow(listed);
        SetStatus(QStringLiteral("Il movimento %1 è registrato e non rientra nel filtro").arg(entry->pno_codice));
        return;
    }
    if (listed == 0) Spread()->InsertRow(1);
    ShowLine(Spread(), std::max(listed, 1L), LineOf(*entry));
    if (listed == 0) Spread()->SetActiveCell(1, kNumber);
    ShowCount();
}

void CGestionePrimaNota::DeleteRow(long row)
{
    Spread()->DeleteRow(row);
    ShowCount();
}

void CGestionePrimaNota::MoveUpperBound(long highest)
{
    list_->filter.n_stop = list_->highest = highest;
    SetField();
}

void CGestionePrimaNota::ShowCount()
{
    const long rows = Spread()->RowCount();
    const QString number = QLocale(QLocale::Italian, QLocale::Italy).toString(static_cast<qlonglong>(rows));
    SetStatus(rows == 0   ? QStringLiteral("Nessun movimento")
              : rows == 1 ? QStringLiteral("1 movimento")
                          : number + QStringLiteral(" movimenti"));
}

long CGestionePrimaNota::Selected() const
{
    return Spread()->RowData(Spread()->ActiveRow());
}

void CGestionePrimaNota::Select(long code)
{
    if (Spread()->RowCount() == 0) return;
    const long row = code == 0 ? 0 : RowOf(code);
    Spread()->SetActiveCell(std::max(row, 1L), std::max(Spread()->ActiveColumn(), 1L));
}

bool CGestionePrimaNota::ReadSelected(PNOTA *entry)
{
    const long code = Selected();
    if (code == 0) return false;
    if (sqlpno.Search(nullptr, code, entry)) return true;
    AfxMessageBox(fmt::sprintf("Il movimento %ld non esiste più in archivio.", code), MB_ICONERROR);
    DeleteRow(RowOf(code));
    return false;
}

void CGestionePrimaNota::OnRecordApri()
{
    CPNota editor(this, this);
    if (!ReadSelected(&editor.m_pnota)) return;
    const long code = editor.m_pnota.pno_codice;
    editor.m_open = true;
    editor.m_row = RowOf(code);
    editor.DoModal();
    Spread()->setFocus();
}

void CGestionePrimaNota::OnRecordNuovo()
{
    const long highest_before = list_->highest;
    const bool follows = list_->filter.n_stop == highest_before;
    {
        CPNota editor(this, this);
        editor.DoModal();
    }
    Spread()->setFocus();
    CommandScope scope(nullptr);
    const long highest = HighestEntry(scope.get());
    if (highest == highest_before) return;
    list_->highest = highest;
    if (!follows) return;
    MoveUpperBound(highest);
    LoadTable(scope.get(), true);
}

void CGestionePrimaNota::OnAllegati()
{
    if (const long code = Selected()) CPNotaAllegati(code, this).DoModal();
}

void CGestionePrimaNota::OnRecordTrova()
{
    PNOTA entry;
    if (CPNotaCerca(&entry, this).DoModal() != IDOK) return;
    Spread()->setFocus();
    if (RowOf(entry.pno_codice) != 0) return Select(entry.pno_codice);
    BeepRefused();
    SetStatus(QStringLiteral("Il movimento %1 non rientra nel filtro").arg(entry.pno_codice));
}

void CGestionePrimaNota::OnRecordStampa()
{
    PrintJournalList(list_->filter);
}

void CGestionePrimaNota::OnUpdateRecordApri(CCmdUI *command)
{
    command->Enable(Selected() != 0);
}

void CGestionePrimaNota::OnUpdateAllegati(CCmdUI *command)
{
    command->Enable(Selected() != 0);
}

void CGestionePrimaNota::OnUpdateRecordTrova(CCmdUI *command)
{
    command->Enable(list_->highest != 0);
}

void CGestionePrimaNota::OnUpdateRecordStampa(CCmdUI *command)
{
    command->Enable(Spread()->RowCount() > 0);
}

void EditPNota(long code)
{
    if (code == 0) return;
    CPNota editor(nullptr, QApplication::activeWindow());
    bool is_found = false;
    RunUnit(LUMERA_TAG, [&](SACommand *cmd) { is_found = sqlpno.Search(cmd, code, &editor.m_pnota); });
    if (!is_found) return;
    editor.m_open = true;
    editor.DoModal();
}

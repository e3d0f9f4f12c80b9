#include "einvoice/ui/FattureElettronicheList.h"

#include "einvoice/InvoiceDocuments.h"
#include "einvoice/InvoiceSummary.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/Pickers.h"
#include "tarvodlg/widgets/SpreadColumns.h"
#include "tarvodlg/widgets/TarvoTabsDialog.h"
#include "tarvodlg/widgets/Theme.h"
#include "tarvolumera/Company.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLocale>
#include <QSettings>
#include <QSplitter>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <fmt/printf.h>
#include <set>

namespace {

constexpr int kFillAfterMs = 10;    ///< the window is painted first
constexpr int kFollowAfterMs = 120; ///< who holds an arrow key down waits for no file
const QString kSplitterKey = QStringLiteral("windows/CFattureElettroniche/splitter");

using Type = CSpreadSheet::Type;

/// Made once for a whole list: what is readable depends on the theme and takes its time.
struct RowColours {
    QColor unreadable = Readable(QColor(192, 0, 0)), unknown = Readable(QColor(176, 84, 0)),
           registered = Readable(QColor(0, 112, 48)), open{};

    const QColor &Of(const InvoiceRow &invoice) const
    {
        if (!invoice.fault.empty()) return unreadable;
        if (invoice.is_registered) return registered;
        return invoice.supplier == 0 ? unknown : open;
    }
};

long DayOf(const SADateTime &moment)
{
    return DateToJulian(moment.GetDay(), moment.GetMonth(), moment.GetYear());
}

void ShowInvoice(CSpreadSheet *grid, long row, const InvoiceRow &invoice, bool is_marked, const RowColours &colours)
{
    const bool is_readable = invoice.fault.empty();
    const auto yes = [](bool is) { return is ? "SI" : "NO"; };
    grid->SetText(row, kMark, is_marked ? "X" : "");
    grid->SetLong(row, kAcquired, DayOf(invoice.acquired));
    grid->SetText(row, kTime, fmt::sprintf("%02d:%02d", invoice.acquired.GetHour(), invoice.acquired.GetMinute()));
    grid->SetText(row, kType, is_readable ? invoice.type_text : "ILLEGGIBILE");
    grid->SetText(row, kNumber, invoice.number);
    grid->SetLong(row, kDate, invoice.day);
    grid->SetText(row, kSellerName, is_readable ? invoice.seller_name : invoice.fault);
    grid->SetText(row, kSupplierName, is_readable ? invoice.supplier_name : "");
    grid->SetText(row, kVatNumber, invoice.vat_number.empty() ? invoice.fiscal_code : invoice.vat_number);
    if (is_readable)
        grid->SetNumber(row, kTotal, invoice.total);
    else
        grid->ClearCell(row, kTotal);
    grid->SetText(row, kRegistered, is_readable ? yes(invoice.is_registered) : "");
    grid->SetLong(row, kEntry, invoice.entry);
    grid->SetLong(row, kProtocol, invoice.protocol);
    grid->SetText(row, kWarehouse, is_readable ? yes(invoice.is_in_warehouse) : "");
    grid->SetText(row, kSigned, is_readable ? yes(invoice.is_signed) : "");
    grid->SetText(row, kFile, invoice.file_name);
    grid->SetRowColor(row, colours.Of(invoice));
}

using Key = std::pair<long, std::size_t>;

Key KeyOf(const InvoiceRow &invoice)
{
    return {invoice.code, invoice.document};
}

} // namespace

QString CountedInvoices(long count)
{
    return QLocale(QLocale::Italian, QLocale::Italy).toString(static_cast<qlonglong>(count)) +
           (count == 1 ? QStringLiteral(" fattura") : QStringLiteral(" fatture"));
}

CFattureElettroniche::CFattureElettroniche(CWnd *parent)
    : CTarvoRecordBrowseDialog(parent), list_(std::make_unique<List>())
{
    setWindowTitle(QStringLiteral("Fatture Elettroniche Passive"));
    BuildFilters();
    BuildGrid();
    BuildPages();
    AddCommands();
    AddFootCommands();
    setMinimumSize(CharactersWide(this, 90), fontMetrics().lineSpacing() * 24);
    list_->fill = new QTimer(this);
    list_->fill->setSingleShot(true);
    connect(list_->fill, &QTimer::timeout, this, [this] { LoadTable(nullptr, true); });
    list_->follow = new QTimer(this);
    list_->follow->setSingleShot(true);
    connect(list_->follow, &QTimer::timeout, this, [this] { Guarded(LUMERA_TAG, [this] { ShowChosen(); }); });
}

CFattureElettroniche::~CFattureElettroniche() = default;

void CFattureElettroniche::BuildFilters()
{
    List &list = *list_;
    FormBuilder form(this, FilterArea());
    list.seller_field = form.Text("&Cedente o fornitore", list.seller, 30);
    list.number_field = form.Beside().Text("&Numero", list.number, 16);
    list.state_field = form.Beside().Choice("&Stato", list.state,
                                            {{static_cast<long>(InvoiceState::Any), "Tutte"},
                                             {static_cast<long>(InvoiceState::ToRegister), "Da registrare"},
                                             {static_cast<long>(InvoiceState::Registered), "Registrate"},
                                             {static_cast<long>(InvoiceState::ToLoad), "Da caricare in magazzino"},
                                             {static_cast<long>(InvoiceState::InWarehouse), "Caricate in magazzino"},
                                             {static_cast<long>(InvoiceState::Unreadable), "Illeggibili"}});
    list.state_field->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    for (CTarvoField *field :
         std::initializer_list<CTarvoField *>{list.seller_field, list.number_field, list.state_field})
        OnLostFocusEvent(field, [this] { return TakeFilter(); });
    connect(list.state_field, &QComboBox::activated, this, [this] { Guarded(LUMERA_TAG, [this] { TakeFilter(); }); });
}

void CFattureElettroniche::BuildGrid()
{
    const auto column = ListColumn;
    // All of them fit into 1280 points; on a wider screen the names take what is left.
    std::vector<CSpreadSheet::Column> columns = {
        column("Sel.", Type::Text, 3),      column("Acquisita", Type::Date, 10), column("Ora", Type::Text, 5),
        column("Tipo", Type::Text, 10),     column("Numero", Type::Text, 10),    column("Data", Type::Date, 10),
        column("Cedente", Type::Text, 12),  column("Fornitore", Type::Text, 17), column("Partita IVA", Type::Text, 11),
        column("Totale", Type::Amount, 10), column("Reg.", Type::Text, 4),       column("Movim.", Type::Code, 6),
        column("Protoc.", Type::Code, 6),   column("Mag.", Type::Text, 4),       column("Firma", Type::Text, 5),
        column("Nome file", Type::Text, 8)};
    columns[kTotal - 1].blank_zero = false;
    columns[kSellerName - 1].stretch = columns[kSupplierName - 1].stretch = columns[kFile - 1].stretch = true;
    Spread()->SetColumns(std::move(columns));
    Spread()->setAccessibleName(QStringLiteral("Fatture ricevute"));
    Spread()->on_row_changed = [this](long) { RowChosen(); };
    Spread()->on_dbl_click = [this](long, long) { OnLeggi(); };
    Spread()->on_click = [this](long row, long cell) {
        if (cell == kMark) Mark(row, Spread()->Text(row, kMark).empty());
    };
    Spread()->on_key_press = [this](long row, long, QKeyEvent *key) { return OnKeyPressSpread(row, key); };
}

void CFattureElettroniche::BuildPages()
{
    List &list = *list_;
    list.splitter = new QSplitter(Qt::Vertical, Content());
    Content()->layout()->removeWidget(Spread());
    list.splitter->addWidget(Spread());
    list.tabs = new CTarvoTabs(this, list.splitter);
    list.splitter->addWidget(list.tabs);
    list.splitter->setChildrenCollapsible(false);
    list.splitter->setStretchFactor(0, 3);
    list.splitter->setStretchFactor(1, 2);
    static_cast<QVBoxLayout *>(Content()->layout())->addWidget(list.splitter, 1);

    const auto add = [&](CFattureElettronichePage *page, const char *title) {
        list.tabs->AddPage(page, QString::fromUtf8(title));
        list.pages.push_back(page);
    };
    add(new CFattureElettronicheFor(this), "&Fornitore");
    add(new CFattureElettronicheRows(this), "&Dettaglio Linee");
    add(new CFattureElettronicheIva(this), "&Dettaglio Iva");
    add(new CFattureElettronichePagamenti(this), "&Pagamenti");
    add(new CFattureElettronicheAllegati(this), "&Allegati");

    // Who goes to a page wants to see it now.
    const auto hurry = [this] {
        if (list_->follow->isActive()) Guarded(LUMERA_TAG, [this] { ShowChosen(); });
    };
    connect(list.tabs->findChild<QTabWidget *>(), &QTabWidget::currentChanged, this, hurry);
    connect(qApp, &QApplication::focusChanged, this, [this, hurry](QWidget *, QWidget *now) {
        if (now && list_->tabs->isAncestorOf(now)) hurry();
    });
}

bool CFattureElettroniche::OnInitDialog()
{
    List &list = *list_;
    list.first = m_first;
    list.last = m_last;
    if ((m_first == 0 || m_last == 0) && !AskPeriod()) return false;
    if (m_only_open) list.state = static_cast<long>(InvoiceState::ToRegister);
    ShowTitle();
    SetField();
    list.splitter->restoreState(QSettings().value(kSplitterKey).toByteArray());
    if (!list.tabs->Init()) return false;
    Spread()->setFocus();
    list.fill->start(kFillAfterMs);
    return true;
}

/// Proposes the working year, and on to today when that is over.
bool CFattureElettroniche::AskPeriod()
{
    const long today = CurrentUserInterface().Today();
    const int year = lumera_db_impo.dit_anno != 0 ? static_cast<int>(lumera_db_impo.dit_anno) : Year(today);
    CDataSel period(isVisible() ? this : parentWidget());
    period.m_title = QStringLiteral("Seleziona Periodo Acquisizione");
    period.m_start = list_->first != 0 ? list_->first : DateToJulian(1, 1, year);
    period.m_stop = list_->last != 0 ? list_->last : std::max(DateToJulian(31, 12, year), today);
    if (period.DoModal() != IDOK) return false;
    list_->first = period.m_start;
    list_->last = period.m_stop;
    return true;
}

void CFattureElettroniche::OnFiltra()
{
    const bool is_chosen = AskPeriod();
    Spread()->setFocus();
    if (!is_chosen) return;
    ShowTitle();
    LoadTable(nullptr, true);
}

void CFattureElettroniche::ShowTitle()
{
    const long first = list_->first, last = list_->last;
    setWindowTitle(ToQt(fmt::sprintf("Fatture Elettroniche Passive  [%02d/%02d/%04d  -  %02d/%02d/%04d]", Day(first),
                                     Month(first), Year(first), Day(last), Month(last), Year(last))));
}

bool CFattureElettroniche::TakeFilter()
{
    GetField();
    SetChanged(false);
    LoadTable(nullptr, true);
    return true;
}

bool CFattureElettroniche::HasFilters() const
{
    return !list_->seller.empty() || !list_->number.empty() || list_->state != static_cast<long>(InvoiceState::Any);
}

void CFattureElettroniche::LoadTable(SACommand *cmd, bool progress)
{
    List &list = *list_;
    if (list.loading) return; // the progress window lets events through
    list.loading = true;
    Guarded(LUMERA_TAG, [&] {
        CommandScope scope(cmd);
        SummariseOlderInvoices(scope.get());
        std::optional<CTarvoProgressDlg> window;
        if (progress) {
            window.emplace();
            window->SetStatus("Lettura fatture in corso...");
        }
        std::set<Key> marked;
        for (const Row &row : list.rows)
            if (row.is_marked) marked.insert(KeyOf(row.invoice));
        const Row *active = Active();
        const Key chosen = active ? KeyOf(active->invoice) : Key{m_select, 0};

        // Everything before anything is shown: a list not read to its end must not stand there as whole.
        std::vector<Row> rows;
        const InvoiceFilter filter{list.first, list.last, list.seller.str(), list.number.str(),
                                   static_cast<InvoiceState>(list.state)};
        StreamInvoices(scope.get(), filter, [&](const InvoiceRow &invoice) {
            rows.push_back({invoice, marked.contains(KeyOf(invoice))});
            return true;
        });
        list.rows = std::move(rows);
        CountRows();
        const QHeaderView *titles = Spread()->horizontalHeader();
        const bool is_sorted = titles->isSortIndicatorShown();
        const long column = titles->sortIndicatorSection() + 1;
        const bool ascending = titles->sortIndicatorOrder() == Qt::AscendingOrder;
        {
            const SpreadUpdate update(Spread());
            const RowColours colours;
            Spread()->SetRowCount(static_cast<long>(list.rows.size()));
            for (std::size_t i = 0; i < list.rows.size(); ++i) {
                const long row = static_cast<long>(i) + 1;
                Spread()->SetRowData(row, static_cast<long>(i));
                ShowInvoice(Spread(), row, list.rows[i].invoice, list.rows[i].is_marked, colours);
            }
            if (is_sorted) Spread()->Sort(column, ascending);
        }
        Select(chosen.first, chosen.second);
        OnKickIdle(); // commands on what is listed now
    });
    list.loading = false;
}

CFattureElettroniche::Row *CFattureElettroniche::Active() const
{
    const long row = Spread()->ActiveRow();
    if (row == 0) return nullptr;
    const auto index = static_cast<std::size_t>(Spread()->RowData(row));
    return index < list_->rows.size() ? &list_->rows[index] : nullptr;
}

void CFattureElettroniche::Select(long code, std::size_t document)
{
    long found = 0;
    for (long row = 1; code != 0 && row <= Spread()->RowCount(); ++row) {
        const InvoiceRow &invoice = list_->rows[static_cast<std::size_t>(Spread()->RowData(row))].invoice;
        if (invoice.code != code) continue;
        if (found == 0 || invoice.document == document) found = row;
        if (invoice.document == document) break;
    }
    if (Spread()->RowCount() > 0) Spread()->SetActiveCell(std::max(found, 1L), std::max(Spread()->ActiveColumn(), 1L));
    RowChosen(); // another invoice may stand in the same row
}

void CFattureElettroniche::RowChosen()
{
    ShowState();
    list_->follow->start(kFollowAfterMs);
}

void CFattureElettroniche::ShowChosen()
{
    List &list = *list_;
    list.follow->stop();
    const Row *row = Active();
    if (!row) return ShowNothing();
    std::unique_ptr<Opened> next;
    if (!list.opened || list.opened->code != row->invoice.code) {
        try {
            next = Open(row->invoice.code);
        } catch (...) {
            ShowNothing(); // not the invoice of another row
            if (RemoveWhatIsGone(row->invoice.code)) return;
            throw;
        }
    }
    const Opened &shown = next ? *next : *list.opened;
    const bool has_it = row->invoice.document < shown.content.Count();
    for (CFattureElettronichePage *page : list.pages)
        page->Refresh(has_it ? &shown.content : nullptr, row->invoice.document);
    if (next) list.opened = std::move(next); // the pages looked at the one before until here
    if (!list.opened->fault.empty()) ShowState();
}

void CFattureElettroniche::ShowNothing()
{
    for (CFattureElettronichePage *page : list_->pages) page->Refresh(nullptr, 0);
    list_->opened.reset();
}

std::unique_ptr<CFattureElettroniche::Opened> CFattureElettroniche::Open(long code)
{
    auto opened = std::make_unique<Opened>();
    opened->code = code;
    try {
        CommandScope scope(nullptr);
        opened->filed = LoadInvoice(scope.get(), code, &opened->content);
        ALLEGATI pdf;
        opened->has_pdf = FindInvoicePdf(scope.get(), opened->filed, &pdf);
    } catch (const InvoiceFileError &error) {
        opened->fault = error.what();
        opened->content = {};
    }
    return opened;
}

void CFattureElettroniche::CountRows()
{
    List &list = *list_;
    list.open = list.marked = 0;
    for (const Row &row : list.rows) {
        if (row.invoice.fault.empty() && row.invoice.code != 0 && !row.invoice.is_registered) ++list.open;
        if (row.is_marked) ++list.marked;
    }
}

void CFattureElettroniche::ShowState()
{
    const List &list = *list_;
    if (Spread()->RowCount() == 0)
        return SetStatus(
            HasFilters()
                ? QStringLiteral("Nessuna fattura del periodo con questi filtri")
                : QStringLiteral("Nessuna fattura nel periodo: F2 carica i file ricevuti, Filtra cambia il periodo"));
    const Row *row = Active();
    std::string fault = row ? row->invoice.fault : std::string();
    if (row && fault.empty() && list.opened && list.opened->code == row->invoice.code) fault = list.opened->fault;
    if (!fault.empty()) return SetStatus(QStringLiteral("File illeggibile: ") + ToQt(OnOneLine(fault)));
    QString text = CountedInvoices(Spread()->RowCount());
    if (list.open > 0) text += QStringLiteral(", %1 da registrare").arg(list.open);
    if (list.marked > 0)
        text += QStringLiteral(", %1 %2")
                    .arg(list.marked)
                    .arg(list.marked == 1 ? QStringLiteral("selezionata") : QStringLiteral("selezionate"));
    SetStatus(text);
}

void CFattureElettroniche::ShowRow(long grid_row)
{
    const Row &row = list_->rows[static_cast<std::size_t>(Spread()->RowData(grid_row))];
    ShowInvoice(Spread(), grid_row, row.invoice, row.is_marked, RowColours{});
}

void CFattureElettroniche::Mark(long grid_row, bool marked)
{
    if (grid_row < 1 || grid_row > Spread()->RowCount()) return;
    list_->rows[static_cast<std::size_t>(Spread()->RowData(grid_row))].is_marked = marked;
    Spread()->SetText(grid_row, kMark, marked ? "X" : "");
    CountRows();
    ShowState();
}

void CFattureElettroniche::MarkAll()
{
    const SpreadUpdate update(Spread());
    const bool marked = list_->marked < Spread()->RowCount(); // a second time takes all marks away
    for (long row = 1; row <= Spread()->RowCount(); ++row) {
        list_->rows[static_cast<std::size_t>(Spread()->RowData(row))].is_marked = marked;
        Spread()->SetText(row, kMark, marked ? "X" : "");
    }
    CountRows();
    ShowState();
}

bool CFattureElettroniche::OnKeyPressSpread(long grid_row, QKeyEvent *key)
{
    if (key->key() == Qt::Key_Space && key->modifiers() == Qt::NoModifier) {
        Mark(grid_row, Spread()->Text(grid_row, kMark).empty());
        return true;
    }
    if (key->key() != Qt::Key_A || key->modifiers() != Qt::ControlModifier) return false;
    MarkAll();
    return true;
}

bool CFattureElettroniche::PreTranslateMessage(QKeyEvent *message)
{
    if (list_->tabs->PreTranslateMessage(message)) return true;
    if (message->key() == Qt::Key_Escape && list_->tabs->isAncestorOf(focusWidget())) {
        Spread()->setFocus(); // from the pages back to the list, and from there out
        return true;
    }
    return CTarvoRecordBrowseDialog::PreTranslateMessage(message);
}

void CFattureElettroniche::OnKickIdle()
{
    CTarvoRecordBrowseDialog::OnKickIdle();
    list_->tabs->OnKickIdle();
}

QSize CFattureElettroniche::sizeHint() const
{
    return WholeListSize(CTarvoRecordBrowseDialog::sizeHint(), Spread());
}

void CFattureElettroniche::OnCancel()
{
    EndDialog(IDCANCEL); // filters are nothing to be lost
}

void CFattureElettroniche::done(int result)
{
    list_->fill->stop();
    list_->follow->stop();
    if (isVisible()) QSettings().setValue(kSplitterKey, list_->splitter->saveState());
    CTarvoRecordBrowseDialog::done(result);
}

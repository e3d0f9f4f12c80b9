#include "ledger/ui/PNotaCerca.h"

#include "ledger/JournalSearch.h"
#include "tables/ui/Lookups.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/DialogKeys.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/SpreadColumns.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListWidget>
#include <QScreen>
#include <QScrollBar>
#include <QStackedWidget>
#include <fmt/printf.h>

namespace {

constexpr std::size_t kPage = 60; ///< more than a screen shows
constexpr long kAhead = 40;       ///< rows left below the selected one when the next page is read
constexpr long kHighestNumber = 999'999'999;

using Type = CSpreadSheet::Type;

/// Customers or suppliers, as the kind beside the field says.
class CounterpartLookup : public CodeLookup {
  public:
    explicit CounterpartLookup(const long &rel) : rel_(rel) {}
    std::optional<std::string> Describe(const std::string &code) override { return Now().Describe(code); }
    std::vector<LookupMatch> Match(const std::string &typed, std::size_t max) override
    {
        return Now().Match(typed, max);
    }
    std::optional<std::string> Browse(CWnd *parent, const std::string &code_or_text) override
    {
        return Now().Browse(parent, code_or_text);
    }

  private:
    TableLookup &Now() { return rel_ == kSupplier ? suppliers_ : customers_; }

    const long &rel_;
    TableLookup customers_{"clienti"}, suppliers_{"fornitori"};
};

void ShowLine(CSpreadSheet *grid, long row, const JournalLine &line)
{
    grid->SetRowData(row, line.codice);
    grid->SetLong(row, 1, line.codice);
    grid->SetLong(row, 2, line.data);
    grid->SetLong(row, 3, line.cau);
    grid->SetText(row, 4, line.doc);
    grid->SetLong(row, 5, line.data_doc);
    grid->SetText(row, 6, CounterpartLetter(line.rel));
    grid->SetText(row, 7, line.clifor);
    grid->SetNumber(row, 8, line.tot_doc);
    grid->SetText(row, 9, line.desc);
}

} // namespace

struct CPNotaCerca::Form {
    /// One for each key, so that going from key to key loses nothing that was typed.
    std::array<JournalSearchValue, kJournalOrders> values;
    JournalOrder key = kByNumber;
    QListWidget *keys = nullptr;
    QStackedWidget *pages = nullptr;
    CSpreadSheet *grid = nullptr;
    std::optional<JournalLine> last; ///< of the list
    bool is_whole = true;            ///< nothing follows the last line
    bool more_is_due = false;

    JournalSearchValue &Value() { return values[static_cast<std::size_t>(key)]; }
};

CPNotaCerca::CPNotaCerca(PNOTA *entry, CWnd *parent)
    : CTarvoDialog(parent), entry_(entry), form_(std::make_unique<Form>())
{
    setWindowTitle("Cerca Prima Nota");
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    const JournalLine line = LineOf(*entry);
    for (int key = 0; key < kJournalOrders; ++key)
        form_->values[static_cast<std::size_t>(key)] = SearchValueOf(static_cast<JournalOrder>(key), line);
    BuildKeys();
    BuildValues();
    auto *top = new QHBoxLayout;
    top->setSpacing(fontMetrics().averageCharWidth() * 3);
    top->addWidget(form_->keys);
    top->addWidget(form_->pages, 1);
    auto *box = new QVBoxLayout(Content());
    box->setContentsMargins(0, 0, 0, 0);
    box->addLayout(top);
    BuildList();
    box->addWidget(form_->grid, 1);
    AddCommand({.caption = "F2 - &OK",
                .tooltip = "Sceglie il movimento evidenziato (anche Invio)",
                .icon = {},
                .run = [this] { OnOK(); },
                .update = [this](CCmdUI *command) { command->Enable(form_->grid->ActiveRow() > 0); }});
    const QSize wanted(CharactersWide(this, 130), fontMetrics().lineSpacing() * 34);
    resize(wanted.boundedTo(screen()->availableSize() * 0.9));
}

CPNotaCerca::~CPNotaCerca()
{
    form_->grid->verticalScrollBar()->disconnect(this); // it moves once more while the grid is destroyed
}

void CPNotaCerca::BuildKeys()
{
    QListWidget *&keys = form_->keys;
    keys = new QListWidget(Content());
    keys->setAccessibleName("Chiave di ricerca");
    keys->addItems({"1 - Numero movimento", "2 - Data registrazione", "3 - Data documento", "4 - Numero documento",
                    "5 - Causale e data", "6 - Cliente o fornitore e data"});
    keys->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    keys->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    for (int row = 0; row < keys->count(); ++row)
        keys->item(row)->setSizeHint({keys->sizeHintForColumn(0), keys->fontMetrics().height() * 4 / 3});
    const int frame = 2 * keys->frameWidth();
    keys->setFixedSize(keys->sizeHintForColumn(0) + frame + keys->fontMetrics().averageCharWidth() * 2,
                       keys->sizeHintForRow(0) * keys->count() + frame);
    keys->setCurrentRow(0);
    connect(keys, &QListWidget::currentRowChanged, this,
            [this](int key) { Guarded(LUMERA_TAG, [&] { ChooseKey(key); }); });
}

void CPNotaCerca::AddDate(FormBuilder &form, const QString &label, long &member)
{
    OnLostFocusEvent(form.Date(label, member), [this] { return OnValue(); });
}

void CPNotaCerca::BuildValues()
{
    QStackedWidget *&pages = form_->pages;
    pages = new QStackedWidget(Content());
    for (int key = 0; key < kJournalOrders; ++key) {
        auto *page = new QWidget(pages);
        pages->addWidget(page);
        FormBuilder form(this, page);
        JournalSearchValue &value = form_->values[static_cast<std::size_t>(key)];
        const auto code = [&](const QString &label, std::shared_ptr<CodeLookup> lookup) {
            OnLostFocusEvent(form.Code(label, value.codice, std::move(lookup)), [this] { return OnValue(); });
        };
        switch (static_cast<JournalOrder>(key)) {
        case kByNumber:
            OnLostFocusEvent(form.Number("&Numero", value.codice, 0, kHighestNumber), [this] { return OnValue(); });
            break;
        case kByDate:
            AddDate(form, "&Data registrazione", value.data);
            break;
        case kByDocumentDate:
            AddDate(form, "&Data documento", value.data);
            break;
        case kByDocumentNumber:
            OnLostFocusEvent(form.Text("&Numero documento", value.doc), [this] { return OnValue(); });
            break;
        case kByCausale:
            code("&Causale", Lookup("causali"));
            AddDate(form, "dalla &data", value.data);
            break;
        default:
            if (value.rel == kNoCounterpart) value.rel = kCustomer;
            OnLostFocusEvent(form.Choice("&Tipo", value.rel, {{kCustomer, "Cliente"}, {kSupplier, "Fornitore"}}),
                             [this] { return OnValue(); });
            code("&Codice", std::make_shared<CounterpartLookup>(value.rel));
            AddDate(form, "dalla &data", value.data);
            break;
        }
        page->layout()->setContentsMargins(0, 0, 0, 0);
    }
}

void CPNotaCerca::BuildList()
{
    CSpreadSheet *&grid = form_->grid;
    grid = new CSpreadSheet(Content());
    const auto column = ListColumn;
    std::vector<CSpreadSheet::Column> columns = {
        column("Numero", Type::Code, 8),        column("Data", Type::Date, 11),
        column("Caus.", Type::Code, 6),         column("N. documento", Type::Text, 14),
        column("Data doc.", Type::Date, 11),    column("C/F", Type::Text, 4),
        column("Intestatario", Type::Text, 24), column("Totale doc.", Type::Amount, 13),
        column("Descrizione", Type::Text, 20)};
    columns.back().stretch = true;
    grid->SetColumns(std::move(columns));
    grid->RememberLayout("CPNotaCerca");
    grid->on_dbl_click = [this](long, long) { OnOK(); };
    grid->on_row_changed = [this](long) { LoadMoreSoon(); };
    connect(grid->verticalScrollBar(), &QScrollBar::valueChanged, this, [this] { LoadMoreSoon(); });
}

bool CPNotaCerca::OnInitDialog()
{
    form_->keys->setFocus();
    const int key = sqlpno.GetIndex();
    if (key == form_->keys->currentRow())
        ChooseKey(key);
    else
        form_->keys->setCurrentRow(key);
    return true;
}

void CPNotaCerca::ChooseKey(int key)
{
    if (key < 0) return;
    form_->key = static_cast<JournalOrder>(key);
    form_->pages->setCurrentIndex(key);
    Propose();
    ShowFields();
    Search();
}

/// Without a value of the caller's record the search begins at the end of the journal, where the work is.
void CPNotaCerca::Propose()
{
    JournalSearchValue &value = form_->Value();
    const bool by_day = form_->key == kByDate || form_->key == kByDocumentDate;
    const bool has_value = form_->key == kByDocumentNumber ? !value.doc.empty()
                           : by_day                        ? value.data != 0
                                                           : value.codice != 0;
    if (has_value) return;
    CommandScope scope(nullptr);
    const std::optional<JournalLine> last = LastOfOrder(scope.get(), form_->key);
    if (!last || (form_->key == kByCounterpart && last->rel == kNoCounterpart)) return;
    value = SearchValueOf(form_->key, *last);
}

bool CPNotaCerca::OnValue()
{
    ReadFields();
    if (form_->key == kByCounterpart) ShowFields(); // the name of the code is another one with another kind
    SetChanged(false);
    Search();
    return true;
}

void CPNotaCerca::Search()
{
    CommandScope scope(nullptr);
    std::vector<JournalLine> lines = SearchJournal(scope.get(), form_->Value(), kPage);
    QString status;
    form_->is_whole = lines.size() < kPage;
    if (lines.empty()) {
        const std::optional<JournalLine> last = LastOfOrder(scope.get(), form_->key);
        if (last && (form_->key != kByCounterpart || last->rel == form_->Value().rel)) lines.push_back(*last);
        status = lines.empty() ? QStringLiteral("Nessun movimento")
                               : QStringLiteral("Nessun movimento da lì in poi: questo è l'ultimo");
    }
    CSpreadSheet *grid = form_->grid;
    {
        const SpreadUpdate update(grid);
        grid->SetRowCount(static_cast<long>(lines.size()));
        long row = 0;
        for (const JournalLine &line : lines) ShowLine(grid, ++row, line);
    }
    form_->last.reset();
    if (!lines.empty()) {
        form_->last = lines.back();
        grid->SetActiveCell(1, 1);
    }
    SetStatus(status);
}

void CPNotaCerca::LoadMoreSoon()
{
    const CSpreadSheet *grid = form_->grid;
    const bool is_near = grid->ActiveRow() + kAhead > grid->RowCount() ||
                         grid->verticalScrollBar()->value() + kAhead > grid->verticalScrollBar()->maximum();
    if (form_->is_whole || form_->more_is_due || !is_near) return;
    form_->more_is_due = true; // not in the middle of the grid's own move
    QMetaObject::invokeMethod(
        this, [this] { Guarded(LUMERA_TAG, [this] { LoadMore(); }); }, Qt::QueuedConnection);
}

void CPNotaCerca::LoadMore()
{
    form_->more_is_due = false;
    if (form_->is_whole || !form_->last) return;
    CommandScope scope(nullptr);
    const std::vector<JournalLine> lines = SearchJournalAfter(scope.get(), form_->key, *form_->last, kPage);
    form_->is_whole = lines.size() < kPage;
    if (lines.empty()) return;
    form_->last = lines.back();
    CSpreadSheet *grid = form_->grid;
    long row = grid->RowCount();
    grid->SetRowCount(row + static_cast<long>(lines.size()));
    for (const JournalLine &line : lines) ShowLine(grid, ++row, line);
}

bool CPNotaCerca::PreTranslateMessage(QKeyEvent *message)
{
    const Qt::KeyboardModifiers modifiers = message->modifiers() & ~Qt::KeypadModifier;
    const bool in_keys = focusWidget() == form_->keys;
    const int digit = message->key() - Qt::Key_1;
    const bool chooses = modifiers == Qt::AltModifier || (in_keys && modifiers == Qt::NoModifier);
    if (chooses && digit >= 0 && digit < kJournalOrders) {
        if (!LeaveFocusedField()) return true;
        form_->keys->setCurrentRow(digit);
        EnterValue();
        return true;
    }
    const bool goes_on = message->key() == Qt::Key_Return || message->key() == Qt::Key_Enter;
    if (in_keys && goes_on && modifiers == Qt::NoModifier) {
        EnterValue();
        return true;
    }
    return CTarvoDialog::PreTranslateMessage(message);
}

void CPNotaCerca::EnterValue()
{
    if (QWidget *first = EdgeOf(form_->pages->currentWidget(), true)) first->setFocus(Qt::TabFocusReason);
    if (CTarvoField *field = focusWidget() ? FieldOf(focusWidget()) : nullptr) field->SelectAll();
}

void CPNotaCerca::OnOK()
{
    const long code = form_->grid->RowData(form_->grid->ActiveRow());
    if (code == 0) return BeepRefused();
    if (!sqlpno.Search(nullptr, code, entry_)) {
        AfxMessageBox(fmt::sprintf("Il movimento %ld non esiste più in archivio.", code), MB_ICONERROR);
        return Search();
    }
    sqlpno.SetIndex(form_->key);
    EndDialog(IDOK);
}

void CPNotaCerca::OnCancel()
{
    EndDialog(IDCANCEL);
}

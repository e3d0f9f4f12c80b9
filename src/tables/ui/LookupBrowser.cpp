#include "tables/ui/LookupBrowser.h"

#include "tables/BrowseKeys.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/SpreadSheet.h"

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QScreen>
#include <QScrollBar>
#include <QSettings>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <map>

namespace {

constexpr int kFirstRows = 200;        ///< more than a screen shows; the others follow while the user looks
constexpr int kFillMilliseconds = 8;   ///< at a time, so that the next key never waits
constexpr std::size_t kLongNumber = 5; ///< from here on digits may be part of a VAT number or a telephone too

using Kind = BrowseColumn::Kind;

CSpreadSheet::Column GridColumn(const BrowseDescription &description, const BrowseColumn &column)
{
    CSpreadSheet::Column grid;
    grid.title = ToQt(column.title);
    grid.width = column.width;
    grid.locked = true;
    grid.stretch = std::string_view(column.column) == description.description;
    switch (column.kind) {
    case Kind::Code:
        grid.type = CSpreadSheet::Type::Code;
        break;
    case Kind::Amount:
        grid.type = CSpreadSheet::Type::Amount;
        break;
    case Kind::Date:
        grid.type = CSpreadSheet::Type::Date;
        break;
    case Kind::Text:
    case Kind::Flag:
    case Kind::Choice:
        break;
    }
    return grid;
}

void ShowCell(CSpreadSheet *grid, long row, long column, const BrowseColumn &description, const ReportValue &cell)
{
    if (std::holds_alternative<std::monostate>(cell)) return; // rows begin empty
    if (const auto *number = std::get_if<long long>(&cell); number && description.kind == Kind::Code)
        grid->SetLong(row, column, static_cast<long>(*number));
    else if (const auto *amount = std::get_if<double>(&cell))
        grid->SetNumber(row, column, *amount);
    else if (const auto *date = std::get_if<ReportDate>(&cell))
        grid->SetLong(row, column, date->day);
    else
        grid->SetText(row, column, CellText(description, cell));
}

/// A record that is kept for what was done with it and is not offered for new work: a customer that ceased, a province
/// that was abolished.
bool IsCeased(const BrowseDescription &description, const BrowseRow &row, long today)
{
    for (std::size_t i = 0; i < description.columns.size(); ++i) {
        const std::string_view column = description.columns[i].column;
        if (column.ends_with("_data_cessazione")) {
            const auto *date = std::get_if<ReportDate>(&row.cells[i]);
            return date && date->day != 0 && date->day <= today;
        }
        if (column.ends_with("_attuale")) {
            const auto *flag = std::get_if<long long>(&row.cells[i]);
            return flag && *flag == 0;
        }
    }
    return false;
}

bool KnowsCeased(const BrowseDescription &description)
{
    return std::any_of(description.columns.begin(), description.columns.end(), [](const BrowseColumn &column) {
        const std::string_view name = column.column;
        return name.ends_with("_data_cessazione") || name.ends_with("_attuale");
    });
}

/// Everything that letters are looked for in, one line per cell so that no match runs from one into the next.
std::string SearchText(const BrowseRow &row)
{
    std::string text;
    for (const ReportValue &cell : row.cells)
        if (const auto *words = std::get_if<std::string>(&cell)) text += Folded(*words) + '\n';
    return text;
}

std::vector<std::string> Words(const QString &typed)
{
    std::vector<std::string> words;
    for (const QString &word : typed.split(' ', Qt::SkipEmptyParts)) words.push_back(Folded(FromQt(word)));
    return words;
}

bool IsKeyPart(std::string_view word)
{
    return word.find_first_not_of("0123456789.") == std::string_view::npos;
}

} // namespace

struct CLookupBrowser::List {
    struct Row {
        BrowseRow row;
        std::string search, code; ///< code: all keys, "310.2.5"
        bool is_ceased = false;

        bool Matches(const std::string &word) const
        {
            if (IsKeyPart(word)) {
                const bool is_code = code.starts_with(word) || row.keys.back().starts_with(word);
                return is_code || (word.size() >= kLongNumber && search.find(word) != std::string::npos);
            }
            return row.keys.back() == word || search.find(word) != std::string::npos;
        }
    };

    List(const BrowseDescription &shown_description, FixedKeys fixed_keys)
        : description(shown_description), fixed(std::move(fixed_keys))
    {
    }

    const BrowseDescription &description;
    FixedKeys fixed;
    std::vector<Row> rows;          ///< of the table, in its order
    std::vector<std::size_t> shown; ///< those in the grid
    std::size_t filled = 0;         ///< how many of the shown ones are in the grid already
    QLineEdit *search = nullptr;
    CSpreadSheet *grid = nullptr;
    QTimer *filling = nullptr;
    std::size_t hidden = 0; ///< ceased ones that match and are not listed
    QString filtered_by;    ///< text of the search at the last Filter
    bool has_commands = false;

    QString SettingsName() const { return "browser/" + ToQt(description.name); }

    std::size_t Find(const RecordKeys &keys) const
    {
        const auto found = std::find_if(rows.begin(), rows.end(), [&](const Row &row) { return row.row.keys == keys; });
        return static_cast<std::size_t>(found - rows.begin());
    }
};

CLookupBrowser::CLookupBrowser(CWnd *parent, const BrowseDescription &description, FixedKeys fixed)
    : CTarvoDialog(parent), list_(std::make_unique<List>(description, std::move(fixed)))
{
    setWindowTitle(ToQt(description.title));
    BuildForm();
}

CLookupBrowser::~CLookupBrowser() = default;

void CLookupBrowser::BuildForm()
{
    List &list = *list_;
    auto *box = new QVBoxLayout(Content());
    box->setContentsMargins(0, 0, 0, 0);
    list.search = new QLineEdit(Content());
    list.search->setPlaceholderText("Codice, o parte della descrizione");
    list.search->setClearButtonEnabled(true);
    list.search->setAccessibleName("Cerca");
    box->addWidget(list.search);

    list.grid = new CSpreadSheet(Content());
    list.grid->setFocusPolicy(Qt::NoFocus); // the focus stays where one types
    std::vector<CSpreadSheet::Column> columns;
    int width = 0;
    for (const BrowseColumn &column : list.description.columns) {
        columns.push_back(GridColumn(list.description, column));
        width += CharactersWide(list.grid, column.width);
    }
    list.grid->SetColumns(std::move(columns));
    list.grid->RememberLayout(list.SettingsName());
    list.grid->on_dbl_click = [this](long, long) { OnOK(); };
    box->addWidget(list.grid, 1);

    connect(list.search, &QLineEdit::textChanged, this, [this] { Guarded(LUMERA_TAG, [this] { Filter(); }); });
    list.filling = new QTimer(this);
    connect(list.filling, &QTimer::timeout, this, [this] { Guarded(LUMERA_TAG, [this] { FillSome(); }); });

    constexpr int kLines = 22;
    const QSize proposed(width + list.grid->verticalScrollBar()->sizeHint().width() + fontMetrics().height() * 4,
                         kLines * fontMetrics().lineSpacing() * 3 / 2);
    resize(proposed.boundedTo(screen()->availableSize() * 9 / 10));
}

void CLookupBrowser::RestoreLayout()
{
    const QSize wanted = QSettings().value(list_->SettingsName() + "/finestra").toSize();
    if (wanted.isValid()) resize(wanted.boundedTo(screen()->availableSize() * 9 / 10));
}

void CLookupBrowser::SaveLayout()
{
    QSettings().setValue(list_->SettingsName() + "/finestra", size());
}

void CLookupBrowser::SetFixedKeys(FixedKeys fixed)
{
    list_->fixed = std::move(fixed);
}

bool CLookupBrowser::OnInitDialog()
{
    AddCommands();
    return Guarded(LUMERA_TAG, [this] {
        LoadRows();
        {
            const QSignalBlocker quiet(list_->search);
            list_->search->setText(ToQt(m_search));
        }
        Filter();
        list_->search->selectAll();
        list_->search->setFocus();
    });
}

void CLookupBrowser::AddCommands()
{
    if (std::exchange(list_->has_commands, true)) return;
    const auto needs_selection = [this](CCmdUI *command) { command->Enable(Selected() != nullptr); };
    AddCommand({.caption = "F2 - &OK",
                .tooltip = "Sceglie la riga evidenziata (anche Invio)",
                .icon = {},
                .run = [this] { OnOK(); },
                .update = needs_selection});
    if (!m_sola_scelta && HasEditor(list_->description.name)) {
        AddCommand({.caption = "F3 - &Nuovo", .tooltip = {}, .icon = {}, .run = [this] { OnNew(); }});
        AddCommand({.caption = "F4 - &Modifica",
                    .tooltip = {},
                    .icon = {},
                    .run = [this] { OnEdit(); },
                    .update = needs_selection});
    }
    if (KnowsCeased(list_->description))
        AddCommand({.caption = "F5 - &Tutti",
                    .tooltip = "Mostra anche chi è cessato",
                    .icon = {},
                    .run =
                        [this] {
                            m_tutti = !m_tutti;
                            Filter();
                        },
                    .update =
                        [this](CCmdUI *command) {
                            command->SetText(m_tutti ? QStringLiteral("F5 - &Attivi") : QStringLiteral("F5 - &Tutti"));
                        }});
}

void CLookupBrowser::LoadRows()
{
    List &list = *list_;
    std::vector<List::Row> rows; // when reading fails, the old list stays
    const long today = CurrentUserInterface().Today();
    CommandScope scope(nullptr);
    ForEachBrowseRow(scope.get(), list.description, list.fixed, [&](const BrowseRow &row) {
        rows.push_back({row, SearchText(row), KeyText(row.keys), IsCeased(list.description, row, today)});
        return true;
    });
    list.filling->stop(); // what it would go on with are the old rows
    list.rows.swap(rows);
    list.shown.clear();
    list.filled = 0;
}

void CLookupBrowser::Filter()
{
    List &list = *list_;
    if (const BrowseRow *selected = Selected()) m_keys = selected->keys;
    const std::vector<std::string> words = Words(list.search->text());
    const std::size_t standing_on = m_keys.empty() ? list.rows.size() : list.Find(m_keys);
    const bool is_same_text = std::exchange(list.filtered_by, list.search->text()) == list.search->text();
    list.shown.clear();
    list.hidden = 0;
    std::size_t select = 0; // of another text the first match, of a code that one
    for (std::size_t i = 0; i < list.rows.size(); ++i) {
        const List::Row &row = list.rows[i];
        if (!std::all_of(words.begin(), words.end(), [&](const std::string &word) { return row.Matches(word); }))
            continue;
        if (row.is_ceased && !m_tutti && i != standing_on) {
            ++list.hidden;
            continue;
        }
        const bool is_exact = words.size() == 1 && row.row.keys.back() == words.front();
        if (is_exact || ((is_same_text || words.empty()) && i == standing_on)) select = list.shown.size();
        list.shown.push_back(i);
    }
    list.filled = 0;
    {
        const SpreadUpdate update(list.grid);
        list.grid->Clear();
        list.grid->SetRowCount(static_cast<long>(list.shown.size()));
        FillThrough(std::min<std::size_t>(kFirstRows, list.shown.size()));
    }
    Select(select);
    list.filling->start(0);
    ShowCount();
}

void CLookupBrowser::FillThrough(std::size_t shown)
{
    List &list = *list_;
    const QColor muted = palette().color(QPalette::Disabled, QPalette::Text);
    for (; list.filled < shown; ++list.filled) {
        const List::Row &row = list.rows[list.shown[list.filled]];
        const long at = static_cast<long>(list.filled) + 1;
        for (std::size_t i = 0; i < row.row.cells.size(); ++i)
            ShowCell(list.grid, at, static_cast<long>(i) + 1, list.description.columns[i], row.row.cells[i]);
        if (row.is_ceased) list.grid->SetRowColor(at, muted);
    }
}

void CLookupBrowser::FillSome()
{
    List &list = *list_;
    QElapsedTimer clock;
    clock.start();
    const SpreadUpdate update(list.grid);
    while (list.filled < list.shown.size() && clock.elapsed() < kFillMilliseconds)
        FillThrough(std::min(list.filled + kFirstRows, list.shown.size()));
    if (list.filled >= list.shown.size()) list.filling->stop();
}

void CLookupBrowser::Select(std::size_t shown)
{
    if (shown >= list_->shown.size()) return;
    if (shown >= list_->filled) FillThrough(std::min<std::size_t>(shown + kFirstRows, list_->shown.size()));
    list_->grid->SetActiveCell(static_cast<long>(shown) + 1, 1);
}

const BrowseRow *CLookupBrowser::Selected() const
{
    const long row = list_->grid->ActiveRow();
    if (row < 1 || static_cast<std::size_t>(row) > list_->shown.size()) return nullptr;
    return &list_->rows[list_->shown[static_cast<std::size_t>(row) - 1]].row;
}

void CLookupBrowser::ShowCount()
{
    const List &list = *list_;
    const QLocale italian(QLocale::Italian, QLocale::Italy);
    const auto number = [&](std::size_t count) { return italian.toString(static_cast<qlonglong>(count)); };
    const QString all = number(list.rows.size());
    QString text = "L'elenco è vuoto";
    if (!list.rows.empty() && list.shown.empty())
        text = "Nessuna riga trovata su " + all;
    else if (!list.rows.empty())
        text = list.shown.size() == list.rows.size() ? all + " righe" : number(list.shown.size()) + " di " + all;
    if (list.hidden == 1) text += ", un'altra con F5";
    if (list.hidden > 1) text += ", altre " + number(list.hidden) + " con F5";
    SetStatus(text);
}

bool CLookupBrowser::PreTranslateMessage(QKeyEvent *message)
{
    if (focusWidget() != list_->search) return CTarvoDialog::PreTranslateMessage(message);
    if (MoveSelection(message)) return true;
    if (message->key() == Qt::Key_Return || message->key() == Qt::Key_Enter) {
        OnOK();
        return true;
    }
    return CTarvoDialog::PreTranslateMessage(message);
}

bool CLookupBrowser::MoveSelection(QKeyEvent *message)
{
    const List &list = *list_;
    if (list.shown.empty()) return false;
    const bool to_edge = (message->modifiers() & Qt::ControlModifier) != 0;
    const long last = static_cast<long>(list.shown.size()) - 1;
    const long page = std::max(1, list.grid->viewport()->height() / std::max(1, list.grid->rowHeight(0)) - 1);
    const std::map<int, long> steps = {
        {Qt::Key_Up, -1}, {Qt::Key_Down, 1}, {Qt::Key_PageUp, -page}, {Qt::Key_PageDown, page}};
    long target = list.grid->ActiveRow() - 1;
    if (const auto step = steps.find(message->key()); step != steps.end())
        target += step->second;
    else if (to_edge && message->key() == Qt::Key_Home)
        target = 0;
    else if (to_edge && message->key() == Qt::Key_End)
        target = last;
    else
        return false;
    Select(static_cast<std::size_t>(std::clamp(target, 0L, last)));
    return true;
}

void CLookupBrowser::OnOK()
{
    const BrowseRow *selected = Selected();
    if (!selected) return BeepRefused();
    m_keys = selected->keys;
    OnChosen();
    EndDialog(IDOK);
}

void CLookupBrowser::OnCancel()
{
    EndDialog(IDCANCEL);
}

void CLookupBrowser::OnNew()
{
    RecordKeys keys(list_->description.keys.size(), "0");
    for (std::size_t i = 0; i < list_->fixed.size() && i + 1 < keys.size(); ++i)
        keys[i] = std::to_string(list_->fixed[i].second);
    const std::string typed = FromQt(list_->search->text().trimmed());
    const auto stored = OpenEditor(list_->description.name, this, keys, true, typed);
    if (!stored) return;
    LoadRows();
    const bool is_listed = list_->Find(*stored) < list_->rows.size();
    if (is_listed) m_keys = *stored;
    {
        const QSignalBlocker quiet(list_->search);
        list_->search->clear();
    }
    Filter();
    if (is_listed) return OnOK(); // a new record is made to be used
    // Its master or account was changed in the editor, and this list is that of another one.
    SetStatus("Registrato " + ToQt(KeyText(*stored)) + ", che non è di questo elenco");
    list_->search->setFocus();
}

void CLookupBrowser::OnEdit()
{
    const BrowseRow *selected = Selected();
    if (!selected) return BeepRefused();
    const RecordKeys keys = selected->keys;
    const auto stored = OpenEditor(list_->description.name, this, keys, true);
    m_keys = stored.value_or(keys);
    LoadRows(); // it may have been deleted, too
    Filter();
    list_->search->setFocus();
}

namespace {

std::map<std::string, EditorFunction, std::less<>> &Editors()
{
    static std::map<std::string, EditorFunction, std::less<>> editors;
    return editors;
}

} // namespace

void RegisterEditor(std::string_view table, EditorFunction editor)
{
    Editors()[std::string(table)] = std::move(editor);
}

bool HasEditor(std::string_view table)
{
    return Editors().contains(table);
}

std::optional<RecordKeys> OpenEditor(std::string_view table, CWnd *parent, const RecordKeys &keys, bool is_single,
                                     const std::string &typed)
{
    const auto found = Editors().find(table);
    if (found == Editors().end()) return std::nullopt;
    return found->second(parent, keys, is_single, typed);
}

#include "tables/ui/PianoContiEd.h"

#include "tables/ChartPrint.h"
#include "tables/TableStorage.h"
#include "tables/ui/LookupBrowser.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/SpreadSheet.h"

#include <QKeyEvent>
#include <QLabel>
#include <QScopedValueRollback>
#include <QSplitter>
#include <QVBoxLayout>

namespace {

enum ListColumn : long { kCode = 1, kDescription };

constexpr int kDescriptionCharacters = 24, kListCharacters = kDescriptionCharacters + 16, kListLines = 24;

} // namespace

CPianoContiEd::CPianoContiEd(CWnd *parent)
    : CTarvoDialog(parent), tables_{FindBrowse("mastri"), FindBrowse("conti"), FindBrowse("sottocon")}
{
    setObjectName("pianoconti");
    setWindowTitle("Piano dei conti");
    auto *levels = new QSplitter(Qt::Horizontal, Content());
    for (std::size_t level = 0; level < kLevels; ++level) {
        auto *host = new QWidget(levels);
        BuildLevel(level, host);
        levels->addWidget(host);
    }
    levels->setChildrenCollapsible(false);
    FormBuilder form(this);
    form.Fill(levels);
    AddCommand({.caption = "F3 - &Nuovo", .icon = "nuovo", .run = [this] { OnRecordNuovo(); }, .shortcut = "Ins"});
    const auto enable_on_row = [this](CCmdUI *command) { command->Enable(KeysAt(FocusedLevel()).back() != "0"); };
    AddCommand(
        {.caption = "F2 - &Modifica", .icon = "apri", .run = [this] { OnRecordApri(); }, .update = enable_on_row});
    AddCommand(
        {.caption = "F6 - &Elimina", .icon = "elimina", .run = [this] { OnRecordElimina(); }, .update = enable_on_row});
    AddCommand({.caption = "F9 - &Stampa", .icon = "stampa", .run = [this] { OnRecordStampa(); }});
}

void CPianoContiEd::BuildLevel(std::size_t level, QWidget *host)
{
    using Type = CSpreadSheet::Type;
    auto *layout = new QVBoxLayout(host);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *title = new QLabel(ToQt(tables_[level]->title), host);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    layout->addWidget(title);
    auto *list = new CSpreadSheet(host);
    list->SetColumns({{.title = "Codice", .type = Type::Code, .width = 7, .locked = true},
                      {.title = "Descrizione",
                       .type = Type::Text,
                       .width = kDescriptionCharacters,
                       .locked = true,
                       .stretch = true}});
    list->setAccessibleName(title->text());
    list->setMinimumSize(CharactersWide(list, kListCharacters), list->fontMetrics().height() * kListLines);
    list->on_row_changed = [this, level](long) { LoadBelow(level); };
    list->on_dbl_click = [this](long, long) { OnRecordApri(); };
    layout->addWidget(list);
    lists_[level] = list;
}

bool CPianoContiEd::OnInitDialog()
{
    const bool is_loaded = Guarded(LUMERA_TAG, [this] { LoadLevel(0); });
    lists_[0]->setFocus();
    return is_loaded;
}

RecordKeys CPianoContiEd::KeysAt(std::size_t level) const
{
    RecordKeys keys;
    for (std::size_t i = 0; i <= level; ++i)
        keys.push_back(std::to_string(lists_[i]->Long(lists_[i]->ActiveRow(), kCode)));
    return keys;
}

std::size_t CPianoContiEd::FocusedLevel()
{
    for (std::size_t level = 0; level < kLevels; ++level)
        if (lists_[level]->hasFocus()) last_level_ = level;
    return last_level_;
}

void CPianoContiEd::LoadLevel(std::size_t level, const std::string &code_to_stand_on)
{
    FixedKeys fixed;
    const RecordKeys above = level == 0 ? RecordKeys{} : KeysAt(level - 1);
    for (std::size_t i = 0; i < above.size(); ++i) fixed.emplace_back(tables_[level]->keys[i], std::stol(above[i]));
    CSpreadSheet *list = lists_[level];
    const QScopedValueRollback loading(is_loading_, true);
    long stand_on = 1;
    {
        const SpreadUpdate update(list);
        list->Clear();
        CommandScope scope(nullptr);
        ForEachBrowseRow(scope.get(), *tables_[level], fixed, [&](const BrowseRow &row) {
            const long at = list->RowCount() + 1;
            list->InsertRow(at);
            list->SetLong(at, kCode, std::stol(row.keys.back()));
            for (std::size_t i = 0; i < tables_[level]->columns.size(); ++i)
                if (std::string_view(tables_[level]->columns[i].column) == tables_[level]->description)
                    list->SetText(at, kDescription, CellText(tables_[level]->columns[i], row.cells[i]));
            if (row.keys.back() == code_to_stand_on) stand_on = at;
            return true;
        });
    }
    if (list->RowCount() > 0) list->SetActiveCell(stand_on, kCode);
    if (level + 1 < kLevels) LoadLevel(level + 1);
}

void CPianoContiEd::LoadBelow(std::size_t level)
{
    if (is_loading_ || level + 1 >= kLevels) return;
    Guarded(LUMERA_TAG, [&] { LoadLevel(level + 1); });
}

bool CPianoContiEd::PreTranslateMessage(QKeyEvent *message)
{
    const std::size_t level = FocusedLevel();
    if (message->key() == Qt::Key_Right && level + 1 < kLevels && lists_[level + 1]->RowCount() > 0) {
        lists_[last_level_ = level + 1]->setFocus();
        return true;
    }
    if (message->key() == Qt::Key_Left && level > 0) {
        lists_[last_level_ = level - 1]->setFocus();
        return true;
    }
    if (message->key() == Qt::Key_Delete) {
        OnRecordElimina();
        return true;
    }
    return CTarvoDialog::PreTranslateMessage(message);
}

void CPianoContiEd::Edited(std::size_t level, const std::optional<RecordKeys> &stored)
{
    LoadLevel(level, stored ? stored->back() : KeysAt(level).back());
    lists_[level]->setFocus();
}

void CPianoContiEd::OnRecordNuovo()
{
    const std::size_t level = FocusedLevel();
    RecordKeys keys = KeysAt(level);
    keys.back() = "0";
    if (level > 0 && keys[level - 1] == "0") return BeepRefused(); // nothing to stand below
    Edited(level, OpenEditor(tables_[level]->name, this, keys, true));
}

void CPianoContiEd::OnRecordApri()
{
    const std::size_t level = FocusedLevel();
    const RecordKeys keys = KeysAt(level);
    if (keys.back() == "0") return BeepRefused();
    Edited(level, OpenEditor(tables_[level]->name, this, keys, true));
}

void CPianoContiEd::OnRecordElimina()
{
    const std::size_t level = FocusedLevel();
    const RecordKeys keys = KeysAt(level);
    if (keys.back() == "0") return BeepRefused();
    CommandScope scope(nullptr);
    if (DeleteRecord(scope.get(), *tables_[level], keys).done) Edited(level, std::nullopt);
}

void CPianoContiEd::OnRecordStampa()
{
    PrintChartOfAccounts();
}

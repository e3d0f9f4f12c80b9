#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvodlg/widgets/SpreadSearch.h"
#include "tarvodlg/widgets/SpreadState.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <algorithm>
#include <array>
#include <charconv>

namespace {

constexpr QStringView kAmountCharacters = u"0123456789.,+-*/() €";
constexpr QStringView kDateCharacters = u"0123456789/.- ";

/// The character that a key types; nothing for commands. Right Alt, which types "@" and "€", counts as Ctrl+Alt on some
/// systems.
QString Typed(const QKeyEvent &key)
{
    const auto commands = key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    const bool is_command = commands && commands != (Qt::ControlModifier | Qt::AltModifier);
    const bool is_character = !key.text().isEmpty() && key.text().at(0).isPrint();
    return is_character && !is_command ? key.text() : QString();
}

bool HasModifier(const QKeyEvent &key)
{
    return key.modifiers() & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
}

/// Where in a cell's text the wanted one stands.
enum class Match : std::uint8_t { Unknown, None, Inside, AtBegin };

/// Compares the cells of a column with what the user looks for. Amounts are compared without thousands points.
class CellMatcher {
  public:
    CellMatcher(const SpreadModel &model, int column, QString wanted)
        : model_(model), column_(column), type_(model.Column(column).type),
          search_(type_ == CSpreadSheet::Type::Amount ? wanted.remove(QLatin1Char('.')) : wanted),
          known_(model.Store().TextCount(), Match::Unknown)
    {
    }

    bool WantsNothing() const { return search_.IsEmpty(); }

    Match Of(long row)
    {
        if (model_.Store().IsEmpty(row, column_)) return Match::None;
        if (model_.Store().Kind(column_) == SpreadKind::Text) {
            Match &known = known_[model_.Store().TextId(row, column_)];
            if (known == Match::Unknown) known = Compare(model_.Store().Text(row, column_));
            return known;
        }
        if (type_ == CSpreadSheet::Type::Amount) return Compare(Plain(model_.Store().Amount(row, column_)));
        return Compare(model_.Shown(row, column_));
    }

  private:
    Match Compare(std::string_view text)
    {
        const std::size_t at = search_.PlaceIn(text);
        return at == 0 ? Match::AtBegin : at == std::string::npos ? Match::None : Match::Inside;
    }

    std::string_view Plain(double amount)
    {
        const int decimals = model_.Column(column_).decimals;
        const auto end = std::to_chars(plain_.data(), plain_.data() + plain_.size(), Round(amount, decimals),
                                       std::chars_format::fixed, decimals);
        std::replace(plain_.data(), end.ptr, '.', ',');
        return {plain_.data(), static_cast<std::size_t>(end.ptr - plain_.data())};
    }

    const SpreadModel &model_;
    int column_;
    CSpreadSheet::Type type_;
    SpreadSearch search_;
    std::vector<Match> known_;    ///< by number of the text; lists repeat most of theirs
    std::array<char, 340> plain_; ///< the largest double has 309 digits before the comma
};

} // namespace

bool CSpreadSheet::State::OfferKey(QKeyEvent *key)
{
    bool used = false;
    const SpreadCell cell = Active();
    if (sheet->on_key_press)
        used = !Guarded([&] { used = sheet->on_key_press(cell.row + 1, cell.column + 1, key); }) || used;
    return used;
}

bool CSpreadSheet::State::EditorKey(QKeyEvent *key)
{
    const bool is_plain = !HasModifier(*key);
    const bool at_end = editor->cursorPosition() == editor->text().size();
    switch (key->key()) {
    case Qt::Key_Escape:
        Restore();
        return true;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_F4:
        return GridKey(key);
    case Qt::Key_Up:
    case Qt::Key_Down:
        return is_plain && GridKey(key);
    case Qt::Key_Left:
    case Qt::Key_Right:
        return is_plain && replaces && at_end && GridKey(key);
    case Qt::Key_Period:
        if (!(key->modifiers() & Qt::KeypadModifier) || model.Column(editing.column()).type != Type::Amount) break;
        editor->insert(QStringLiteral(","));
        return true;
    default:
        break;
    }
    if (Typed(*key).isEmpty() || MayType(*key)) return false;
    BeepRefused();
    return true;
}

bool CSpreadSheet::State::MayType(const QKeyEvent &key) const
{
    const QString typed = Typed(key);
    switch (model.Column(Active().column).type) {
    case Type::Code:
        return typed.at(0) >= u'0' && typed.at(0) <= u'9';
    case Type::Amount:
        return kAmountCharacters.contains(typed.at(0));
    case Type::Date:
        return kDateCharacters.contains(typed.at(0));
    case Type::Text:
    case Type::Choice:
        break;
    }
    return true;
}

bool CSpreadSheet::State::GridKey(QKeyEvent *key)
{
    if (OfferKey(key)) return true;
    switch (key->key()) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return TabKey(key->key() == Qt::Key_Tab && !(key->modifiers() & Qt::ShiftModifier));
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return EnterKey(*key);
    case Qt::Key_F4:
        return !HasModifier(*key) && LookUp();
    default:
        break;
    }
    if (MoveKey(*key) || SortKey(*key)) return true;
    if (key->matches(QKeySequence::Copy)) {
        Copy();
        return true;
    }
    return IsEntry() ? TypeKey(key) : SearchKey(*key);
}

bool CSpreadSheet::State::TabKey(bool forward)
{
    if (!IsEntry()) return sheet->QAbstractScrollArea::focusNextPrevChild(forward);
    Advance(forward);
    return true;
}

bool CSpreadSheet::State::EnterKey(const QKeyEvent &key)
{
    if (!IsEntry()) return !HasModifier(key) && LookUp();
    if (key.modifiers() & Qt::ControlModifier) return sheet->edit(sheet->currentIndex(), AllEditTriggers, nullptr);
    Advance(!(key.modifiers() & Qt::ShiftModifier));
    return true;
}

bool CSpreadSheet::State::LookUp()
{
    const SpreadCell cell = Active();
    if (!sheet->on_dbl_click || !cell.IsValid()) return false;
    if (IsEditing()) { // what can be read is where the lookup starts
        TakeTyped();
        EndEdit();
    }
    Guarded([&] { sheet->on_dbl_click(cell.row + 1, cell.column + 1); });
    return true;
}

bool CSpreadSheet::State::MoveKey(const QKeyEvent &key)
{
    const bool control = key.modifiers() & Qt::ControlModifier;
    if (key.modifiers() & (Qt::ShiftModifier | Qt::AltModifier | Qt::MetaModifier)) return false;
    const bool by_corner = key.key() == Qt::Key_Home || key.key() == Qt::Key_End;
    if (control && !by_corner) return false;

    const long last_row = model.Store().Rows() - 1;
    const int last_column = model.Store().Columns() - 1;
    SpreadCell to = Active();
    if (!to.IsValid()) to = {0, 0};
    switch (key.key()) {
    case Qt::Key_Up:
        --to.row;
        break;
    case Qt::Key_Down:
        ++to.row;
        break;
    case Qt::Key_Left:
        --to.column;
        break;
    case Qt::Key_Right:
        ++to.column;
        break;
    case Qt::Key_PageUp:
        to.row -= RowsInView();
        break;
    case Qt::Key_PageDown:
        to.row += RowsInView();
        break;
    case Qt::Key_Home:
        if (control || !IsEntry()) to.row = 0;
        if (IsEntry()) to.column = 0;
        break;
    case Qt::Key_End:
        if (control || !IsEntry()) to.row = last_row;
        if (IsEntry()) to.column = last_column;
        break;
    default:
        return false;
    }
    if (last_row < 0 || last_column < 0) return true;
    MoveTo({std::clamp(to.row, 0L, last_row), std::clamp(to.column, 0, last_column)});
    return true;
}

bool CSpreadSheet::State::TypeKey(QKeyEvent *key)
{
    const SpreadCell cell = Active();
    if (IsEditing() || !IsOpen(cell)) return false;
    const bool is_choice = model.Column(cell.column).type == Type::Choice;
    const bool is_backspace = key->key() == Qt::Key_Backspace && !HasModifier(*key);
    const QString typed = Typed(*key);
    if (is_choice && is_backspace) {
        Change(cell, {});
        return true;
    }
    if (is_choice) return !typed.isEmpty() && TypeChoice(cell, typed);
    if (typed.isEmpty() && !is_backspace && !key->matches(QKeySequence::Paste)) return false;
    if (!typed.isEmpty() && !MayType(*key)) {
        BeepRefused();
        return true;
    }
    return sheet->edit(sheet->currentIndex(), AnyKeyPressed, key);
}

void CSpreadSheet::State::Copy() const
{
    const SpreadCell cell = Active();
    if (!cell.IsValid()) return;
    QStringList texts;
    for (int column = 0; column < model.Store().Columns(); ++column)
        if (!IsEntry() || column == cell.column) texts << ToQt(model.Shown(cell.row, column));
    QApplication::clipboard()->setText(texts.join(QLatin1Char('\t')));
}

long CSpreadSheet::FindText(long from_row, long column, const QString &text) const
{
    if (column < 1 || column > ColumnCount()) return 0;
    CellMatcher matcher(state_->model, static_cast<int>(column - 1), text);
    if (matcher.WantsNothing()) return 0;
    for (long row = std::max(1L, from_row); row <= RowCount(); ++row)
        if (matcher.Of(row - 1) != Match::None) return row;
    return 0;
}

/// A cell that begins with the text comes before one that only contains it: typing "12" among codes means code 12.
long CSpreadSheet::State::FindTyped(const QString &text, long from_row) const
{
    CellMatcher matcher(model, std::max(0, Active().column), text);
    const long rows = model.Store().Rows();
    long containing = -1;
    for (long step = 0; step < rows && !matcher.WantsNothing(); ++step) {
        const long row = (from_row + step) % rows;
        const Match match = matcher.Of(row);
        if (match == Match::AtBegin) return row;
        if (match == Match::Inside && containing < 0) containing = row;
    }
    return containing;
}

bool CSpreadSheet::State::SearchKey(const QKeyEvent &key)
{
    const bool to_next = key.key() == Qt::Key_Down && key.modifiers().testFlag(Qt::AltModifier);
    const bool back = key.key() == Qt::Key_Backspace && !searched.isEmpty();
    const QString typed = Typed(key);
    if (typed.isEmpty() && !back && !to_next) return false;
    if (typed.trimmed().isEmpty() && searched.isEmpty() && !to_next) return false;
    const QString wanted = to_next ? last_searched : back ? searched.chopped(1) : searched + typed;
    const long found = FindTyped(wanted, std::max(0L, Active().row) + (to_next ? 1 : 0));
    if (found < 0 && !back) {
        BeepRefused();
    } else {
        searched = last_searched = wanted;
        if (found >= 0) PutActive({found, std::max(0, Active().column)});
    }
    search_pause.start();
    ShowSearch();
    return true;
}

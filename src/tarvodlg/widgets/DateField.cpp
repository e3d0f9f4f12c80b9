#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Text.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvodlg/widgets/Fields.h"
#include "tarvodlg/widgets/LineFilter.h"
#include "tarvodlg/widgets/Pickers.h"

#include <QKeyEvent>
#include <QRegularExpression>
#include <array>

namespace {

constexpr int kFirstYear = 1800, kLastYear = 2199; ///< outside, a year of four digits was mistyped
long g_working_day = 0;                            ///< 0 = no date was typed in this year yet
long g_fiscal_year = 0;

int Number(std::string_view digits)
{
    int value = 0;
    for (const char digit : digits) value = value * 10 + (digit - '0');
    return value;
}

/// Two digits mean the years 1980 to 2079; an empty text the year of the working date.
std::optional<int> CompleteYear(std::string_view digits, long working_day)
{
    if (digits.empty()) return Year(working_day);
    if (digits.size() == 2) return Number(digits) + (Number(digits) < 80 ? 2000 : 1900);
    const int year = Number(digits);
    if (digits.size() != 4 || year < kFirstYear || year > kLastYear) return std::nullopt;
    return year;
}

/// Day, month and year as typed; what is missing is empty.
using Parts = std::array<std::string_view, 3>;

std::optional<Parts> SplitDigits(std::string_view digits)
{
    switch (digits.size()) {
    case 1:
    case 2:
        return Parts{digits, {}, {}};
    case 4:
    case 6:
    case 8:
        return Parts{digits.substr(0, 2), digits.substr(2, 2), digits.substr(4)};
    default:
        return std::nullopt; // 153 could be the 1st as well as the 15th
    }
}

std::optional<Parts> SplitAtSeparators(std::string_view text)
{
    Parts parts;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const std::size_t end = std::min(text.find_first_of("/.-"), text.size());
        if (end == 0) return std::nullopt;
        parts[i] = text.substr(0, end);
        if (end == text.size()) return parts;
        text.remove_prefix(end + 1);
    }
    return std::nullopt; // a fourth part
}

/// True while "-" can be the separator behind a day, a month or the year of a date typed year first.
bool AwaitsSeparator(const QString &text)
{
    static const QRegularExpression kUnfinished(
        QStringLiteral("^\\s*(\\d{1,2}|\\d{1,2}[/.-]\\d{1,2}|(19|20)\\d\\d|(19|20)\\d\\d-\\d{1,2})$"));
    return kUnfinished.match(text).hasMatch();
}

} // namespace

std::optional<long> CompleteDate(std::string_view typed, long working_day)
{
    typed = Trimmed(typed);
    if (typed.empty()) return 0;
    if (typed.find_first_not_of("0123456789/.-") != std::string_view::npos) return std::nullopt;
    const bool has_separators = typed.find_first_of("/.-") != std::string_view::npos;
    std::optional<Parts> parts = has_separators ? SplitAtSeparators(typed) : SplitDigits(typed);
    if (!parts) return std::nullopt;
    if ((*parts)[0].size() == 4) std::swap((*parts)[0], (*parts)[2]); // 2026-03-15

    const auto [day, month, year_digits] = *parts;
    if (day.empty() || day.size() > 2 || month.size() > 2) return std::nullopt;
    const std::optional<int> year = CompleteYear(year_digits, working_day);
    if (!year) return std::nullopt;
    const long julian = DateToJulian(Number(day), month.empty() ? Month(working_day) : Number(month), *year);
    return julian != 0 ? std::optional(julian) : std::nullopt;
}

CDateField::CDateField(CWnd *parent) : QLineEdit(parent)
{
    RegisterField(this);
    new LineFilter(this, [](QString &text, int &) {
        return text.size() <= 40 && std::all_of(text.begin(), text.end(),
                                                [](QChar c) { return QStringView(u"0123456789/.- ").contains(c); });
    });
    connect(this, &QLineEdit::textEdited, this, [this] { typed_ = true; });
    on_dbl_click = [this] {
        CData picker(window());
        picker.m_data = Value() ? Value() : WorkingDate();
        if (picker.DoModal() == IDOK) TakeTyped(picker.m_data);
    };
}

long CDateField::Value() const
{
    return CompleteDate(FromQt(text()), WorkingDate()).value_or(value_);
}

void CDateField::SetValue(long day)
{
    value_ = day;
    typed_ = false;
    setText(ToQt(FormatDate(day)));
}

bool CDateField::Complete()
{
    const std::optional<long> day = CompleteDate(FromQt(text()), WorkingDate());
    if (!day) return false;
    value_ = *day;
    if (typed_) NoteTypedDate(value_);
    typed_ = false;
    ShowKeepingMark(this, ToQt(FormatDate(value_)));
    return true;
}

void CDateField::SetWorkingDate(long day)
{
    g_working_day = day;
}

void CDateField::SetFiscalYear(long year)
{
    const bool is_year = year >= kFirstYear && year <= kLastYear;
    g_fiscal_year = is_year ? year : 0;
    g_working_day = 0;
}

long CDateField::WorkingDate()
{
    if (g_working_day != 0) return g_working_day;
    const long today = CurrentUserInterface().Today();
    if (g_fiscal_year == 0) return today;
    const int year = static_cast<int>(g_fiscal_year);
    return std::clamp(today, DateToJulian(1, 1, year), DateToJulian(31, 12, year));
}

void CDateField::NoteTypedDate(long day)
{
    const long year = g_fiscal_year != 0 ? g_fiscal_year : Year(WorkingDate());
    if (day != 0 && Year(day) == year) g_working_day = day;
}

void CDateField::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_F4 && event->modifiers() == Qt::NoModifier) return OpenLookup(this);
    const bool is_month_key = (event->modifiers() & ~Qt::KeypadModifier) == Qt::ControlModifier &&
                              (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down);
    if (is_month_key && !isReadOnly()) return StepMonth(event->key() == Qt::Key_Up ? 1 : -1);
    const bool is_plain = !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    if (is_plain && !isReadOnly() && event->text().size() == 1 && OnDateKey(event->text().front().toLower())) return;
    QLineEdit::keyPressEvent(event);
}

void CDateField::mouseDoubleClickEvent(QMouseEvent *)
{
    OpenLookup(this);
}

bool CDateField::OnDateKey(QChar key)
{
    const long day = DayShown();
    switch (key.unicode()) {
    case '-':
        if (isModified() && !hasSelectedText() && AwaitsSeparator(text())) return false;
        TakeTyped(day - 1);
        return true;
    case '+':
        TakeTyped(day + 1);
        return true;
    case 't':
    case 'o':
        TakeTyped(CurrentUserInterface().Today());
        return true;
    case 'f':
        TakeTyped(LastDayOfMonth(day));
        return true;
    default:
        return false;
    }
}

/// The same day of another month; the 31st is the 30th, or the last of February, where the month is shorter.
void CDateField::StepMonth(int months)
{
    const long day = DayShown();
    const int month = Year(day) * 12 + Month(day) - 1 + months;
    const long first = DateToJulian(1, month % 12 + 1, month / 12);
    if (first == 0) return; // before the first year of all, or behind the last
    TakeTyped(std::min(first + Day(day) - 1, LastDayOfMonth(first)));
}

long CDateField::DayShown() const
{
    const long day = Value();
    return day != 0 ? day : WorkingDate();
}

void CDateField::TakeTyped(long day)
{
    value_ = day;
    typed_ = true;
    setText(ToQt(FormatDate(day)));
    setModified(true);
    selectAll();
}

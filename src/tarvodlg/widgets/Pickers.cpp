#include "tarvodlg/widgets/Pickers.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/Theme.h"

#include <QCalendarWidget>
#include <QKeyEvent>
#include <QSignalBlocker>
#include <QTextCharFormat>
#include <QToolButton>
#include <algorithm>
#include <cmath>

namespace {

constexpr long kFirstYear = 1900, kLastYear = 2199;

void AddPickerCommands(CTarvoDialog *dialog, std::function<void()> ok, std::function<void()> cancel)
{
    dialog->AddCommand({.caption = "F2 - &OK", .run = std::move(ok)});
    dialog->AddCommand({.caption = "Annulla", .run = std::move(cancel), .checks_field = false});
}

/// In a picker Enter on the last field is the answer itself; there is nothing to go on to.
bool IsEnterOn(const QKeyEvent *message, const QWidget *field)
{
    return (message->key() == Qt::Key_Return || message->key() == Qt::Key_Enter) && field->hasFocus();
}

QCalendarWidget *MakeCalendar(QWidget *parent)
{
    auto *calendar = new QCalendarWidget(parent);
    calendar->setLocale(QLocale(QLocale::Italian, QLocale::Italy));
    calendar->setFirstDayOfWeek(Qt::Monday);
    calendar->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
    calendar->setDateEditEnabled(false); // digits are typed in the field
    calendar->setDateRange(QDate(kFirstYear, 1, 1), QDate(kLastYear, 12, 31));
    QTextCharFormat working_day, sunday; // of its own the calendar paints both days of the week's end in a fixed red
    working_day.setForeground(calendar->palette().brush(QPalette::Text));
    sunday.setForeground(calendar->palette().brush(QPalette::BrightText));
    calendar->setWeekdayTextFormat(Qt::Saturday, working_day);
    calendar->setWeekdayTextFormat(Qt::Sunday, sunday);
    // The style's own arrows are a picture in bright colours; ours go with the bar they stand on.
    for (const auto &[button_name, icon] :
         {std::pair("qt_calendar_prevmonth", "precedente"), std::pair("qt_calendar_nextmonth", "successivo")})
        if (auto *button = calendar->findChild<QToolButton *>(QLatin1String(button_name)))
            button->setIcon(TarvoIcon(QLatin1String(icon))
                                .pixmap(button->iconSize(), calendar->devicePixelRatioF(), QIcon::Selected));
    return calendar;
}

/// @param month  counted on from January of that year, may lie outside 1 to 12. @return day number, 0 outside the years
long FirstOfMonth(int year, int month)
{
    const int months = year * 12 + month - 1;
    return DateToJulian(1, months % 12 + 1, months / 12);
}

/// The number of months of a period that begins on a first and ends on a last day; 0 for any other.
int WholeMonths(const Period &period)
{
    if (Day(period.start) != 1 || period.stop != LastDayOfMonth(period.stop)) return 0;
    return (Year(period.stop) - Year(period.start)) * 12 + Month(period.stop) - Month(period.start) + 1;
}

} // namespace

CAnno::CAnno(CWnd *parent) : CTarvoDialog(parent), year_(new CAmountField(0))
{
    FormBuilder(this).Add("&Anno", year_, 6);
    year_->SetRange(kFirstYear, kLastYear);
    AddPickerCommands(
        this, [this] { OnOK(); }, [this] { OnCancel(); });
}

bool CAnno::PreTranslateMessage(QKeyEvent *message)
{
    if (!IsEnterOn(message, year_)) return CTarvoDialog::PreTranslateMessage(message);
    OnOK();
    return true;
}

bool CAnno::OnInitDialog()
{
    setWindowTitle(m_title);
    year_->SetValue(static_cast<double>(m_anno));
    return true;
}

void CAnno::OnOK()
{
    if (!LeaveFocusedField()) return;
    const long year = std::lround(year_->Value());
    if (year < kFirstYear || year > kLastYear) return RefuseField(year_);
    m_anno = year;
    EndDialog(IDOK);
}

void CAnno::OnCancel()
{
    EndDialog(IDCANCEL); // nothing is lost that would be worth a question
}

CData::CData(CWnd *parent) : CTarvoDialog(parent), date_(new CDateField)
{
    FormBuilder form(this);
    form.Add("&Data", date_, 12);
    calendar_ = MakeCalendar(this); // after the field, which gets the focus first
    form.Fill(calendar_);
    date_->on_dbl_click = nullptr; // the month is there already
    OnLostFocusEvent(date_, [this] {
        const QSignalBlocker quiet(calendar_);
        if (date_->Value() != 0) calendar_->setSelectedDate(QDate::fromJulianDay(date_->Value()));
        return true;
    });
    connect(calendar_, &QCalendarWidget::selectionChanged, this,
            [this] { date_->SetValue(static_cast<long>(calendar_->selectedDate().toJulianDay())); });
    connect(calendar_, &QCalendarWidget::activated, this, [this] { OnOK(); });
    AddPickerCommands(
        this, [this] { OnOK(); }, [this] { OnCancel(); });
}

bool CData::PreTranslateMessage(QKeyEvent *message)
{
    if (!IsEnterOn(message, date_)) return CTarvoDialog::PreTranslateMessage(message);
    OnOK();
    return true;
}

bool CData::OnInitDialog()
{
    setWindowTitle(m_title);
    const long shown = m_data != 0 ? m_data : CDateField::WorkingDate();
    const QSignalBlocker quiet(calendar_);
    calendar_->setSelectedDate(QDate::fromJulianDay(shown));
    date_->SetValue(m_data);
    return true;
}

void CData::OnOK()
{
    if (!LeaveFocusedField()) return;
    const long day = date_->Value();
    if (day == 0 && m_obbligatoria) return RefuseField(date_);
    m_data = day;
    EndDialog(IDOK);
}

void CData::OnCancel()
{
    EndDialog(IDCANCEL);
}

Period PeriodAround(long day, int months)
{
    const int first = (Month(day) - 1) / months * months + 1;
    const long last_month = FirstOfMonth(Year(day), first + months - 1);
    return {FirstOfMonth(Year(day), first), LastDayOfMonth(last_month)};
}

Period StepPeriod(const Period &period, int steps)
{
    Period next{};
    if (const int months = WholeMonths(period)) {
        const int first = Month(period.start) + steps * months;
        next.start = FirstOfMonth(Year(period.start), first);
        next.stop = LastDayOfMonth(FirstOfMonth(Year(period.start), first + months - 1));
    } else {
        const long days = (period.stop - period.start + 1) * steps;
        next = {period.start + days, period.stop + days};
    }
    const bool is_in_calendar = next.start != 0 && Year(next.start) >= kFirstYear && Year(next.stop) <= kLastYear;
    return is_in_calendar ? next : period;
}

CDataSel::CDataSel(CWnd *parent) : CTarvoDialog(parent), start_(new CDateField), stop_(new CDateField)
{
    FormBuilder form(this);
    form.Add("&Dal", start_, 12);
    form.Beside();
    form.Add("a&l", stop_, 12);

    auto *steps = new QWidget;
    auto *row = new QHBoxLayout(steps);
    row->setContentsMargins(0, 0, 0, 0);
    const auto add = [&](const QString &caption, const QString &icon, const QString &tooltip,
                         std::function<void()> run) {
        auto *button = new QToolButton(steps);
        button->setText(caption);
        if (!icon.isEmpty()) button->setIcon(TarvoIcon(icon));
        button->setToolTip(tooltip);
        button->setFocusPolicy(Qt::NoFocus); // Alt with a letter and the two page keys reach them
        connect(button, &QToolButton::clicked, this, std::move(run));
        row->addWidget(button);
    };
    add({}, "precedente", "Periodo precedente (PgSu)", [this] { Step(-1); });
    add("&Mese", {}, "Il mese intero", [this] { SetMonths(1); });
    add("&Trimestre", {}, "Il trimestre intero", [this] { SetMonths(3); });
    add("&Anno", {}, "L'anno intero", [this] { SetMonths(12); });
    add({}, "successivo", "Periodo successivo (PgGiù)", [this] { Step(1); });
    form.Add({}, steps);
    AddPickerCommands(
        this, [this] { OnOK(); }, [this] { OnCancel(); });
}

bool CDataSel::PreTranslateMessage(QKeyEvent *message)
{
    if (message->key() == Qt::Key_PageUp || message->key() == Qt::Key_PageDown) {
        Step(message->key() == Qt::Key_PageUp ? -1 : 1);
        return true;
    }
    if (!IsEnterOn(message, stop_)) return CTarvoDialog::PreTranslateMessage(message);
    OnOK();
    return true;
}

bool CDataSel::OnInitDialog()
{
    setWindowTitle(m_title);
    constexpr int kFrameCharacters = 20; // icon, buttons and the bolder letters of a title bar
    setMinimumWidth(
        std::max(minimumWidth(), fontMetrics().horizontalAdvance(m_title) + CharactersWide(this, kFrameCharacters)));
    const Period working_month = PeriodAround(CDateField::WorkingDate(), 1);
    Show({m_start != 0 ? m_start : working_month.start, m_stop != 0 ? m_stop : working_month.stop});
    return true;
}

void CDataSel::OnOK()
{
    if (!LeaveFocusedField()) return;
    if (start_->Value() == 0) return RefuseField(start_);
    if (stop_->Value() < start_->Value()) return RefuseField(stop_);
    m_start = start_->Value();
    m_stop = stop_->Value();
    EndDialog(IDOK);
}

void CDataSel::OnCancel()
{
    EndDialog(IDCANCEL);
}

void CDataSel::SetMonths(int months)
{
    const Period now{start_->Value(), stop_->Value()};
    const Period whole = PeriodAround(now.start != 0 ? now.start : CDateField::WorkingDate(), months);
    Show(now == whole ? StepPeriod(whole, 1) : whole); // pressed again it goes on to the next one
}

void CDataSel::Step(int steps)
{
    const Period now{start_->Value(), stop_->Value()};
    if (now.start == 0 || now.stop < now.start) return BeepRefused();
    Show(StepPeriod(now, steps));
}

void CDataSel::Show(const Period &period)
{
    start_->SetValue(period.start);
    stop_->SetValue(period.stop);
    if (CTarvoField *field = FieldOf(focusWidget())) field->SelectAll();
}

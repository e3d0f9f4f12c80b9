#include "schedule/DueList.h"

#include "schedule/OpenItems.h"
#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Counterparts.h"
#include "tarvolumera/TableDescription.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

constexpr long kWeekDays = 7, kYearMonths = 12;

/// The week belongs to the year in which its Thursday falls.
std::string WeekName(long monday)
{
    const long thursday = monday + 3;
    const long day_of_year = thursday - DateToJulian(1, 1, Year(thursday));
    return fmt::format("Settimana {} del {}", day_of_year / kWeekDays + 1, Year(thursday));
}

/// " WHERE ..." with its parameters by name. @param last_day  0 = no upper bound
std::string Condition(const DueListFilter &filter, long first_day, long last_day)
{
    std::string text = std::string(" WHERE ") + kOpenCondition;
    if (!filter.suppliers) text += " AND sca_relaz = 0";
    if (!filter.customers) text += filter.suppliers ? " AND sca_relaz = 1" : " AND 1 = 0";
    if (first_day != 0) text += " AND sca_data >= :d_start";
    if (last_day != 0) text += " AND sca_data <= :d_stop";
    return text;
}

void Bind(SACommand *query, long first_day, long last_day)
{
    if (first_day != 0) query->Param("d_start").setAsDateTime(ToSqlDate(first_day));
    if (last_day != 0) query->Param("d_stop").setAsDateTime(ToSqlDate(last_day));
}

DueLine ReadLine(SACommand *query)
{
    DueLine line;
    line.relaz = query->Field("sca_relaz").asLong();
    line.num = query->Field("sca_num").asLong();
    line.data = FromSqlDate(query->Field("sca_data").asDateTime());
    line.importo = query->Field("sca_importo").asDouble();
    line.cli_for = query->Field("sca_cli_for").asLong();
    line.nome = query->Field("nome").asStringView();
    line.fattura = query->Field("sca_fattura").asStringView();
    line.data_fattura = FromSqlDate(query->Field("sca_data_fattura").asDateTime());
    line.desc = query->Field("sca_desc").asStringView();
    line.rata = query->Field("sca_rata").asLong();
    line.rate = query->Field("sca_rate").asLong();
    line.is_parked = query->Field("sca_parked").asLong() != 0;
    return line;
}

} // namespace

long DuePeriods::IndexOf(DueLength length, long day)
{
    return length == DueLength::Week ? day / kWeekDays : Year(day) * kYearMonths + Month(day) - 1;
}

long DuePeriods::FirstDayOf(DueLength length, long index)
{
    if (length == DueLength::Week) return index * kWeekDays; // day number 0 is a Monday
    return DateToJulian(1, static_cast<int>(index % kYearMonths) + 1, static_cast<int>(index / kYearMonths));
}

DuePeriods::DuePeriods(DueLength length, long first_day, long last_day)
    : length_(length), first_day_(first_day), last_day_(std::max(first_day, last_day)),
      first_index_(IndexOf(length, first_day)), count_(IndexOf(length, last_day_) - first_index_ + 1)
{
    if (count_ <= kPeriodsMax) return;
    count_ = kPeriodsMax + 1;
    has_later_ = true;
}

long DuePeriods::NumberOf(long day) const
{
    return day < first_day_ ? 0 : std::min(IndexOf(length_, day) - first_index_ + 1, count_);
}

DuePeriods::Range DuePeriods::RangeOf(long number) const
{
    if (number == 0) return {0, first_day_ - 1};
    const auto begin = [this](long of) { return FirstDayOf(length_, first_index_ + of - 1); };
    return {std::max(begin(number), first_day_), number == count_ ? last_day_ : begin(number + 1) - 1};
}

std::string DuePeriods::NameOf(long number) const
{
    if (number == 0) return "Scadute prima del " + FormatDate(first_day_);
    if (has_later_ && number == count_) return "Dal " + FormatDate(RangeOf(number).first_day) + " in poi";
    const long begin = FirstDayOf(length_, first_index_ + number - 1);
    return length_ == DueLength::Week ? WeekName(begin) : MonthName(begin);
}

DuePeriods PeriodsOf(SACommand *cmd, const DueListFilter &filter)
{
    long first = filter.d_start, last = filter.d_stop;
    if (first == 0 || last == 0) {
        SACommand query(cmd->Connection(), "SELECT MIN(sca_data) AS dal, MAX(sca_data) AS al FROM admin.scadenze" +
                                               Condition(filter, filter.d_start, filter.d_stop));
        Bind(&query, filter.d_start, filter.d_stop);
        query.Execute();
        query.FetchNext();
        if (first == 0) first = FromSqlDate(query.Field("dal").asDateTime());
        if (last == 0) last = FromSqlDate(query.Field("al").asDateTime());
        if (first == 0) first = last; // nothing is due: any day serves
        if (first == 0) first = CurrentUserInterface().Today();
    }
    return {filter.length, first, std::max(first, last)};
}

std::vector<DueGroup> ReadDueGroups(SACommand *cmd, const DueListFilter &filter)
{
    const DuePeriods periods = PeriodsOf(cmd, filter);
    // Weeks are spelt differently by the engines, days are not; a year has few of them.
    SACommand query(cmd->Connection(), "SELECT sca_data, sca_relaz, COUNT(*) AS numero, " + CentsText("1 = 1") +
                                           " AS importo FROM admin.scadenze" + Condition(filter, 0, filter.d_stop) +
                                           " GROUP BY sca_data, sca_relaz ORDER BY sca_data, sca_relaz");
    Bind(&query, 0, filter.d_stop);
    query.Execute();
    std::vector<DueGroup> groups;
    long long running = 0;
    while (query.FetchNext()) {
        const long number = periods.NumberOf(FromSqlDate(query.Field("sca_data").asDateTime()));
        if (groups.empty() || groups.back().number != number) {
            DueGroup &group = groups.emplace_back();
            group.number = number;
            group.range = periods.RangeOf(number);
            group.name = periods.NameOf(number);
        }
        DueGroup &group = groups.back();
        group.count += query.Field("numero").asLong();
        const bool is_customer = query.Field("sca_relaz").asLong() == kCustomer;
        const long long cents = query.Field("importo").asInt64();
        (is_customer ? group.collect : group.pay) += cents;
        group.running = running += is_customer ? cents : -cents;
    }
    return groups;
}

DueGroup TotalOf(const std::vector<DueGroup> &groups)
{
    DueGroup total;
    for (const DueGroup &group : groups) {
        total.count += group.count;
        total.collect += group.collect;
        total.pay += group.pay;
        total.running = group.running;
    }
    return total;
}

void ForEachDue(SACommand *cmd, const DueListFilter &filter, const DuePeriods::Range &range,
                const std::function<void(DueLine &&)> &each)
{
    SACommand query(cmd->Connection(),
                    std::string("SELECT sca_relaz, sca_num, sca_data, sca_importo, sca_cli_for, ") + kNameText +
                        " AS nome, sca_fattura, sca_data_fattura, sca_desc, sca_rata, sca_rate, sca_parked"
                        " FROM admin.scadenze" +
                        kNameJoins + Condition(filter, range.first_day, range.last_day) +
                        " ORDER BY sca_data, sca_relaz, sca_num");
    Bind(&query, range.first_day, range.last_day);
    query.Execute();
    while (query.FetchNext()) each(ReadLine(&query));
}

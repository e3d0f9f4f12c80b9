#include "schedule/CashOutlook.h"

#include "schedule/OpenItems.h"
#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/Counterparts.h"
#include "tarvolumera/TableDescription.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

constexpr int kYearMonths = 12;

/// "marzo 2026", inside a sentence.
std::string MonthInWords(long day)
{
    std::string words = MonthName(day);
    words.front() = static_cast<char>(words.front() - 'A' + 'a');
    return words;
}

long FirstOfMonth(long day, long months_later)
{
    const long index = Year(day) * kYearMonths + Month(day) - 1 + months_later;
    return DateToJulian(1, static_cast<int>(index % kYearMonths) + 1, static_cast<int>(index / kYearMonths));
}

/// All of them, empty: what was due earlier, the months, what is due later.
std::vector<CashPeriod> PeriodsFrom(long today, long months)
{
    std::vector<CashPeriod> periods(static_cast<std::size_t>(months) + 2);
    const long first = FirstOfMonth(today, 0), end = FirstOfMonth(today, months);
    periods.front() = {CashPeriod::Kind::Earlier, 0, first - 1, "Prima di " + MonthInWords(first), {}, {}, 0};
    for (long month = 0; month < months; ++month) {
        const long begin = FirstOfMonth(today, month);
        periods[static_cast<std::size_t>(month) + 1] = {
            CashPeriod::Kind::Month, begin, LastDayOfMonth(begin), MonthName(begin), {}, {}, 0};
    }
    periods.back() = {CashPeriod::Kind::Later, end, 0, "Dopo " + MonthInWords(end - 1), {}, {}, 0};
    return periods;
}

CashPeriod &PeriodOf(std::vector<CashPeriod> &periods, long day)
{
    const auto contains = [day](const CashPeriod &period) { return period.last_day == 0 || day <= period.last_day; };
    return *std::find_if(periods.begin(), periods.end(), contains);
}

// Both engines group by day alike; months are put together here, from a few hundred sums.
void ReadOpen(SACommand *cmd, long today, std::vector<CashPeriod> *periods)
{
    SACommand query(cmd->Connection(), "SELECT sca_data, sca_relaz, COUNT(*) AS numero, " + CentsText("1 = 1") +
                                           " AS importo FROM admin.scadenze WHERE sca_relaz IN (0, 1) AND " +
                                           kOpenCondition + " GROUP BY sca_data, sca_relaz");
    query.Execute();
    while (query.FetchNext()) {
        const long day = FromSqlDate(query.Field("sca_data").asDateTime());
        CashPeriod &period = PeriodOf(*periods, day);
        CashSums &sums = query.Field("sca_relaz").asLong() == kCustomer ? period.collect : period.pay;
        sums.count += query.Field("numero").asLong();
        (day < today ? sums.overdue : sums.expected) += query.Field("importo").asInt64();
    }
}

void ReadPaid(SACommand *cmd, std::vector<CashPeriod> *periods)
{
    SACommand query(cmd->Connection(),
                    "SELECT sca_data, sca_relaz, " + CentsText("1 = 1") +
                        " AS importo FROM admin.scadenze WHERE sca_relaz IN (0, 1) AND sca_data >= :d_start"
                        " AND sca_data <= :d_stop AND sca_pagato <> 0 AND sca_parked = 0 GROUP BY sca_data, sca_relaz");
    query.Param("d_start").setAsDateTime(ToSqlDate(periods->front().last_day + 1));
    query.Param("d_stop").setAsDateTime(ToSqlDate(periods->back().first_day - 1));
    query.Execute();
    while (query.FetchNext()) {
        CashPeriod &period = PeriodOf(*periods, FromSqlDate(query.Field("sca_data").asDateTime()));
        (query.Field("sca_relaz").asLong() == kCustomer ? period.collect : period.pay).paid +=
            query.Field("importo").asInt64();
    }
}

// A customer whose credit notes outweigh what is late is not late.
std::vector<LateCustomer> ReadLate(SACommand *cmd, long today)
{
    SACommand query(cmd->Connection(), "SELECT codice, cli_desc, numero, prima, importo FROM"
                                       " (SELECT sca_cli_for AS codice, COUNT(*) AS numero, MIN(sca_data) AS prima, " +
                                           CentsText("1 = 1") +
                                           " AS importo FROM admin.scadenze WHERE sca_relaz = 0 AND " + kOpenCondition +
                                           " AND sca_data < :oggi GROUP BY sca_cli_for) AS ritardi"
                                           " LEFT JOIN admin.clienti1 ON cli_codice = codice WHERE importo > 0"
                                           " ORDER BY importo DESC, codice LIMIT :quanti");
    query.Param("oggi").setAsDateTime(ToSqlDate(today));
    query.Param("quanti").setAsLong(static_cast<long>(kLateCustomers));
    query.Execute();
    std::vector<LateCustomer> late;
    while (query.FetchNext())
        late.push_back({query.Field("codice").asLong(), query.Field("cli_desc").asString(),
                        query.Field("numero").asLong(), FromSqlDate(query.Field("prima").asDateTime()),
                        query.Field("importo").asInt64()});
    return late;
}

void DropEmptyEnds(std::vector<CashPeriod> *periods)
{
    if (periods->back().IsEmpty()) periods->pop_back();
    if (periods->front().IsEmpty()) periods->erase(periods->begin());
}

std::string Euro(long long cents)
{
    return FormatAmount(FromCents(cents));
}

} // namespace

void CashSums::Add(const CashSums &more)
{
    count += more.count;
    paid += more.paid;
    overdue += more.overdue;
    expected += more.expected;
}

bool CashPeriod::IsEmpty() const
{
    const auto is_empty = [](const CashSums &sums) { return sums.count == 0 && sums.paid == 0; };
    return is_empty(collect) && is_empty(pay);
}

bool CashOutlook::IsEmpty() const
{
    return std::all_of(periods.begin(), periods.end(), [](const CashPeriod &period) { return period.IsEmpty(); });
}

CashOutlook ReadCashOutlook(SACommand *cmd, const OutlookFilter &filter, long today)
{
    CashOutlook outlook;
    outlook.today = today;
    outlook.cash = ToCents(filter.cash);
    outlook.periods = PeriodsFrom(today, std::clamp(filter.months, 1L, kOutlookMonthsMax));
    {
        SATransaction one_picture(cmd, SATransactionKind::Read);
        ReadOpen(cmd, today, &outlook.periods);
        ReadPaid(cmd, &outlook.periods);
        outlook.late = ReadLate(cmd, today);
        one_picture.Commit();
    }
    DropEmptyEnds(&outlook.periods);
    long long balance = outlook.cash;
    for (CashPeriod &period : outlook.periods) {
        period.balance = balance += period.collect.Open() - period.pay.Open();
        outlook.collect.Add(period.collect);
        outlook.pay.Add(period.pay);
    }
    return outlook;
}

std::string DescribePeriod(const CashPeriod &period)
{
    const auto side = [](const char *words, const CashSums &sums, const char *done) {
        std::string text = fmt::format("{} {} ({})", words, Euro(sums.Open()), sums.count);
        if (sums.overdue != 0) text += fmt::format(" di cui scadute {}", Euro(sums.overdue));
        if (sums.paid != 0) text += fmt::format(", {} {}", done, Euro(sums.paid));
        return text;
    };
    return fmt::format("{}: {}; {}; saldo {}, progressivo {}", period.name,
                       side("da incassare", period.collect, "incassati"), side("da pagare", period.pay, "pagati"),
                       Euro(period.collect.Open() - period.pay.Open()), Euro(period.balance));
}

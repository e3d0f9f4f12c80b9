#include "schedule/Aging.h"

#include "tarvodlg/base/Numbers.h"
#include "tests/schedule/PrintedPages.h"
#include "tests/schedule/RandomInstalments.h"

#include <gmock/gmock.h>

#include <map>

namespace {

using testing::ElementsAre;

class AgingTest : public ArchiveTest {
  protected:
    AgingFilter Filter(short side, AgingOrder order = AgingOrder::Name) const { return {side, today_, order, 0}; }
    std::vector<AgingLine> Lines(const AgingFilter &filter)
    {
        std::vector<AgingLine> lines;
        ForEachAging(Cmd(), filter, [&](AgingLine &&line) { lines.push_back(std::move(line)); });
        return lines;
    }
    /// The eight sums in the order in which they are shown.
    static std::vector<long long> Sums(const AgingLine &line)
    {
        return {line.not_due, line.sca_30,    line.sca_60,    line.sca_90,
                line.sca_120, line.sca_oltre, line.Overdue(), line.Total()};
    }

    const long today_ = DateToJulian(1, 3, 2028); // the day after a leap day
    KnownInstalments known_{[this](const std::string &sql) { Run(sql); }};
};

TEST_P(AgingTest, EachDayBelongsToOneSumAndTheDayItselfIsNotOverdue)
{
    long long cents = 1;
    for (const long days : {-1, 0, 1, 30, 31, 60, 61, 90, 91, 120, 121, 5000}) {
        known_.Add({.due_day = today_ - days, .cents = cents});
        cents *= 2;
    }
    const AgingLine total = ReadAgingTotal(Cmd(), Filter(0));
    EXPECT_THAT(Sums(total), ElementsAre(1 + 2, 4 + 8, 16 + 32, 64 + 128, 256 + 512, 1024 + 2048, 4092, 4095));
    EXPECT_EQ(total.count, 12);
    EXPECT_THAT(Sums(ReadAgingTotal(Cmd(), Filter(1))), testing::Each(0)) << "nothing of suppliers";
}

TEST_P(AgingTest, EveryCounterpartHasItsBruteForceSums)
{
    known_.AddRandom(2000, 42, 6);
    AgingFilter filter;
    for (const short side : {0, 1}) {
        for (const long day : {DateToJulian(1, 7, 2026), DateToJulian(31, 12, 2026), DateToJulian(1, 1, 2026)}) {
            filter.side = side;
            filter.reference_day = day;
            std::map<long, std::vector<long long>> expected, found;
            for (const KnownInstalment &one : known_.All()) {
                if (one.side != side || !one.IsOpen()) continue;
                const long late = day - one.due_day;
                const std::size_t sum = late <= 0 ? 0 : late > 120 ? 5 : static_cast<std::size_t>((late + 29) / 30);
                for (const long code : {one.code, 0L}) {
                    auto &sums = expected.try_emplace(code, 8).first->second;
                    sums[sum] += one.cents;
                    if (sum > 0) sums[6] += one.cents;
                    sums[7] += one.cents;
                }
            }
            for (const AgingLine &line : Lines(filter)) found[line.code] = Sums(line);
            found[0] = Sums(ReadAgingTotal(Cmd(), filter));
            EXPECT_EQ(found, expected) << "side " << side << ", " << FormatDate(day);
        }
    }
}

TEST_P(AgingTest, OrderIsByNameOrByWhatIsOverdue)
{
    Run("UPDATE admin.clienti1 SET cli_desc = CASE cli_codice WHEN 1 THEN 'zeta' WHEN 2 THEN 'Beta' ELSE 'alfa' END");
    known_.Add({.code = 1, .due_day = today_ - 1, .cents = 500});
    known_.Add({.code = 2, .due_day = today_, .cents = 90000});
    known_.Add({.code = 3, .due_day = today_ - 200, .cents = 600});
    known_.Add({.code = 3, .due_day = today_ - 200, .cents = -200}); // a credit note
    const auto codes = [&](AgingOrder order) {
        std::vector<long> found;
        for (const AgingLine &line : Lines(Filter(0, order))) found.push_back(line.code);
        return found;
    };
    EXPECT_THAT(codes(AgingOrder::Name), ElementsAre(3, 2, 1)) << "whatever the case";
    EXPECT_THAT(codes(AgingOrder::Overdue), ElementsAre(1, 3, 2));

    for (const AgingOrder order : {AgingOrder::Name, AgingOrder::Overdue}) {
        PrintedPages printed;
        ASSERT_TRUE(PrintAging(Filter(0, order), PrintedPages::Destination()));
        std::vector<std::string> expected = {"3|alfa|4,00|4,00|4,00", "2|Beta|900,00|900,00", "1|zeta|5,00|5,00|5,00"};
        if (order == AgingOrder::Overdue) expected = {expected[2], expected[0], expected[1]};
        std::vector<std::string> rows;
        for (const std::string &line : printed.pages.at(0))
            if (std::isdigit(static_cast<unsigned char>(line[0])) != 0 && line.find("gg") == std::string::npos)
                rows.push_back(line);
        EXPECT_EQ(rows, expected);
    }
}

TEST_P(AgingTest, PrintHasTheTotalsOfTheArchive)
{
    known_.AddRandom(900, 3, 6);
    AgingFilter filter;
    filter.side = 1;
    filter.reference_day = DateToJulian(15, 8, 2026);
    PrintedPages printed;
    for (const long code : {0L, 2L}) {
        filter.code = code;
        std::string expected = "Totale";
        for (const long long sum : Sums(ReadAgingTotal(Cmd(), filter))) expected += "|" + FormatAmount(FromCents(sum));
        ASSERT_TRUE(PrintAging(filter, PrintedPages::Destination()));
        EXPECT_EQ(printed.LinesWith("Totale|").back(), expected);
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, AgingTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

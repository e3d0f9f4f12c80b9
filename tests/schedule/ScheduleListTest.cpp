#include "schedule/ScheduleList.h"

#include "schedule/SchedulePrint.h"
#include "schedule/ScheduleSearch.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tests/support/TestArchive.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

/// Numbers within a side follow the order in which they are stored. Today is 1 June 2026.
struct Sample {
    long relaz, cli_for;
    const char *due;
    double amount;
    const char *invoice;
    long paid = 0, held = 0, destination = 0, agent = 0, section = 1;
};

constexpr Sample kSamples[] = {
    {kCustomer, 1, "2026-05-31", 100.10, "1/A", 0, 0, 1, 7},  // C1
    {kCustomer, 1, "2026-06-01", 200.20, "2/A", 0, 0, 2, 0},  // C2, due today
    {kCustomer, 2, "2026-05-31", -50.05, "9_9", 0, 0, 1, 7},  // C3, a credit note
    {kCustomer, 3, "2026-01-10", 0.10, "Ä/1", 1, 0, 0, 0, 2}, // C4, collected
    {kSupplier, 1, "2026-05-31", 10, "1/a", 0, 0},            // F1
    {kSupplier, 1, "2026-04-01", 20, "100%", 1, 1},           // F2, paid and held in a slip
};

class ScheduleListTest : public ArchiveTest {
  protected:
    void SetUp() override
    {
        ArchiveTest::SetUp();
        if (!database_) return;
        Run("INSERT INTO admin.agenti1 (age_codice, age_desc) SELECT 7, 'Sette' WHERE NOT EXISTS"
            " (SELECT 1 FROM admin.agenti1 WHERE age_codice = 7)");
        Run("UPDATE admin.agenti1 SET age_desc = 'Sette' WHERE age_codice = 7");
        Run("INSERT INTO admin.sezioni (sez_codice, sez_desc) SELECT 2, 'Due' WHERE NOT EXISTS"
            " (SELECT 1 FROM admin.sezioni WHERE sez_codice = 2)");
        Run("DELETE FROM admin.destina1");
        for (const char *row :
             {"0, 1, 1, 'Magazzino'", "0, 1, 2, 'Cantiere'", "0, 2, 1, 'Negozio'", "1, 1, 1, 'Altrove'"})
            Run(std::string("INSERT INTO admin.destina1 (dst_rel, dst_cli_for, dst_codice, dst_desc) VALUES (") + row +
                ")");
        for (const Sample &sample : kSamples) Store(sample);
    }

    void Store(const Sample &sample)
    {
        SCADENZE instalment;
        sqlsca.Blank(Cmd(), &instalment, static_cast<short>(sample.relaz));
        instalment.sca_cli_for = sample.cli_for;
        instalment.sca_data = *ParseDate(sample.due);
        instalment.sca_importo = sample.amount;
        instalment.sca_fattura = sample.invoice;
        instalment.sca_pagato = sample.paid;
        instalment.sca_parked = sample.held;
        instalment.sca_dst = sample.destination;
        instalment.sca_age = sample.agent;
        instalment.sca_sez = sample.section;
        instalment.sca_pag = 45;
        sqlsca.SqlTransaction(Cmd(), kInsert, &instalment);
    }

    std::vector<ScheduleLine> Lines(const ScheduleFilter &filter)
    {
        std::vector<ScheduleLine> lines;
        ForEachScheduleLine(Cmd(), filter, [&](const ScheduleLine &line) { lines.push_back(line); });
        EXPECT_EQ(CountSchedule(Cmd(), filter), static_cast<long>(lines.size()));
        return lines;
    }
    static std::vector<long> Numbers(const std::vector<ScheduleLine> &lines)
    {
        std::vector<long> numbers;
        for (const ScheduleLine &line : lines) numbers.push_back(line.scadenza.sca_num);
        return numbers;
    }
};

INSTANTIATE_TEST_SUITE_P(Engines, ScheduleListTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(ScheduleListTest, FilterSelectsByDueDateThenNumber)
{
    const long may = *ParseDate("2026-05-31"), june = *ParseDate("2026-06-01");
    struct Case {
        ScheduleFilter filter;
        std::vector<long> numbers;
    };
    const Case cases[] = {{{}, {4, 1, 3, 2}},
                          {{.relaz = kSupplier}, {2, 1}},
                          {{.relaz = kBothSides}, {4, 2, 1, 3, 1, 2}}, // C4 F2 C1 C3 F1 C2
                          {{.state = kOpenInstalments}, {1, 3, 2}},
                          {{.state = kPaidInstalments}, {4}},
                          {{.relaz = kSupplier, .state = kPaidInstalments}, {2}}, // held in a slip, but paid
                          {{.relaz = kSupplier, .state = kOpenInstalments}, {1}},
                          {{.d_start = may}, {1, 3, 2}},
                          {{.d_stop = may}, {4, 1, 3}},
                          {{.d_start = june, .d_stop = june}, {2}},
                          {{.d_start = june, .d_stop = may}, {}},
                          {{.codsez = 2}, {4}},
                          {{.codclf = 1}, {1, 2}},
                          {{.coddst = 1}, {1, 3}},
                          {{.codclf = 1, .coddst = 1}, {1}},
                          {{.codage = 7}, {1, 3}},
                          {{.relaz = kSupplier, .codage = 7}, {}}};
    for (const Case &test : cases) {
        SCOPED_TRACE(ScheduleCondition(test.filter));
        EXPECT_EQ(Numbers(Lines(test.filter)), test.numbers);
        if (test.filter.relaz == kBothSides) continue;
        std::vector<long> passing;
        for (long number = 0; number <= 5; ++number)
            if (PassesFilter(Cmd(), test.filter, number)) passing.push_back(number);
        EXPECT_THAT(passing, testing::UnorderedElementsAreArray(test.numbers));
    }
}

TEST_P(ScheduleListTest, DestinationsAreThoseOfTheirOwnCounterpart)
{
    const auto customers = Lines({});
    ASSERT_EQ(customers.size(), 4u);
    std::vector<std::string> destinations;
    for (const ScheduleLine &line : customers) destinations.push_back(line.dst_desc);
    EXPECT_THAT(destinations, ElementsAre("", "Magazzino", "Negozio", "Cantiere"));
    EXPECT_EQ(customers[1].name, Value("SELECT cli_desc FROM admin.clienti1 WHERE cli_codice = 1"));
    EXPECT_EQ(customers[1].age_desc, "Sette");
    EXPECT_EQ(customers[3].age_desc, "") << "what a line lacks is not the one before's";
    EXPECT_EQ(customers[1].terms, Value("SELECT pag_tipo FROM admin.pagament WHERE pag_codice = 45"));
    EXPECT_EQ(Lines({.relaz = kSupplier})[0].name, Value("SELECT for_desc FROM admin.fornito1 WHERE for_codice = 1"));
}

TEST_P(ScheduleListTest, SumsAreExactAndOverdueEndsYesterday)
{
    const long today = *ParseDate("2026-06-01");
    ScheduleSums sums;
    for (const ScheduleLine &line : Lines({})) sums.Add(line.scadenza, today);
    EXPECT_EQ(sums.count, 4);
    EXPECT_EQ(sums.total, 25035);
    EXPECT_EQ(sums.open, 25025);
    EXPECT_EQ(sums.overdue, 5005) << "due today is not overdue; a credit note counts against";
    EXPECT_EQ(sums.paid, 10);

    SCADENZE cent;
    cent.sca_importo = 0.1;
    ScheduleSums many;
    for (int i = 0; i < 1'000'000; ++i) many.Add(cent, today);
    EXPECT_EQ(many.total, 10'000'000) << "a million dimes";
}

TEST_P(ScheduleListTest, EachSearchBeginsAtItsValue)
{
    const auto found = [&](ScheduleSearchValue value, std::size_t most = 100) {
        return Numbers(SearchSchedule(Cmd(), value, most));
    };
    EXPECT_THAT(found({kByInstalment, kCustomer, 2, 0, ""}), ElementsAre(2, 3, 4));
    EXPECT_THAT(found({kByInstalment, kCustomer, 2, 0, ""}, 1), ElementsAre(2));
    EXPECT_THAT(found({kByDueDate, kCustomer, 0, *ParseDate("2026-02-01"), ""}), ElementsAre(1, 3, 2));
    EXPECT_THAT(found({kByDueDate, kSupplier, 0, 0, ""}), ElementsAre(2, 1));
    EXPECT_THAT(found({kByCounterpartOfInstalment, kCustomer, 1, *ParseDate("2026-06-01"), ""}), ElementsAre(2));
    EXPECT_THAT(found({kByCounterpartOfInstalment, kCustomer, 9, 0, ""}), ElementsAre());

    EXPECT_THAT(found({kByInvoice, kCustomer, 0, 0, "1/a"}), ElementsAre(1)) << "whatever the case";
    EXPECT_THAT(found({kByInvoice, kSupplier, 0, 0, "1/A"}), ElementsAre(1));
    EXPECT_THAT(found({kByInvoice, kCustomer, 0, 0, "Ä"}), ElementsAre(4));
    EXPECT_THAT(found({kByInvoice, kCustomer, 0, 0, "9_"}), ElementsAre(3));
    EXPECT_THAT(found({kByInvoice, kCustomer, 0, 0, "_"}), ElementsAre()) << "no pattern";
    EXPECT_THAT(found({kByInvoice, kSupplier, 0, 0, "100%"}), ElementsAre(2));
    EXPECT_THAT(found({kByInvoice, kSupplier, 0, 0, "%"}), ElementsAre());
    EXPECT_THAT(found({kByInvoice, kSupplier, 0, 0, "\\"}), ElementsAre());
}

TEST_P(ScheduleListTest, PrintedRowsAreThoseOfTheList)
{
    const long may = *ParseDate("2026-05-31"), june = *ParseDate("2026-06-01");
    for (const ScheduleFilter &filter :
         {ScheduleFilter{}, ScheduleFilter{.relaz = kSupplier}, ScheduleFilter{.state = kOpenInstalments},
          ScheduleFilter{.relaz = kSupplier, .state = kPaidInstalments}, ScheduleFilter{.d_start = june},
          ScheduleFilter{.d_stop = may}, ScheduleFilter{.codclf = 1, .coddst = 2}, ScheduleFilter{.codsez = 2},
          ScheduleFilter{.codage = 7}, ScheduleFilter{.codsez = 9}}) {
        SCOPED_TRACE(ScheduleCondition(filter));
        const std::filesystem::path file = Folder() / "scadenze.csv";
        std::filesystem::remove(file);
        ASSERT_TRUE(PrintSchedule(filter, ReportDestination{ReportTarget::Csv, file}));
        std::istringstream rows(ReadWholeFile(file, 100'000));
        std::vector<long> numbers;
        std::string row;
        std::getline(rows, row);
        while (std::getline(rows, row)) numbers.push_back(std::stol(row.substr(row.find(';') + 1)));
        EXPECT_EQ(numbers, Numbers(Lines(filter)));
    }
}

} // namespace

#include "schedule/ScheduleDates.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tests/support/TestArchive.h"

#include <gmock/gmock.h>

#include <fmt/format.h>

namespace {

class ScheduleDatesTest : public ArchiveTest {
  protected:
    void Store(long side, long number, const std::string &dates)
    {
        Run(fmt::format("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_importo, sca_data,"
                        " sca_data_fattura, sca_emessa, sca_data_pag) VALUES ({}, {}, 2026, 1, 10, {})",
                        side, number, dates));
    }
    static std::string Log() { return ReadWholeFile(ScheduleDatesLog(), 100'000); }
};

INSTANTIATE_TEST_SUITE_P(Engines, ScheduleDatesTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(ScheduleDatesTest, EveryDateOutsideThePeriodHasItsLine)
{
    Store(0, 1, "'2026-03-15', '2026-04-10', NULL, NULL"); // both bounds belong to the period
    Store(0, 2, "'2026-04-11', '2026-03-14', '1999-01-01', '2027-01-01'");
    Store(1, 2, "'2026-04-01', NULL, '2026-04-11', NULL");
    user_.Expect(fmt::format(" Trovati 5 errori!\n\nConsultare il file {}", ScheduleDatesLog().string()));
    EXPECT_EQ(CheckScheduleDates({*ParseDate("2026-03-15"), *ParseDate("2026-04-10")}), 5);
    EXPECT_EQ(Log(), "Scadenza Cliente 2 - Data Scadenza fuori range\r\n"
                     "Scadenza Cliente 2 - Data Fattura fuori range\r\n"
                     "Scadenza Cliente 2 - Data Emissione fuori range\r\n"
                     "Scadenza Cliente 2 - Data Pagamento fuori range\r\n"
                     "Scadenza Fornitore 2 - Data Emissione fuori range\r\n");
    EXPECT_THAT(user_.progress, testing::IsSupersetOf({"Controllo Date Scadenze", "Controllo dati corso..."}));

    EXPECT_EQ(CheckScheduleDates({*ParseDate("1990-01-01"), *ParseDate("2030-01-01")}), 0);
    EXPECT_EQ(Log(), "") << "a clean check replaces the old log and says nothing";
}

TEST_P(ScheduleDatesTest, LogThatCannotBeWrittenIsToldByTheCaller)
{
    std::filesystem::create_directories(ScheduleDatesLog());
    EXPECT_THROW(CheckScheduleDates({1, 2}), FileError);
}

TEST_P(ScheduleDatesTest, QuestionHasNoAsDefault)
{
    user_.Expect("Vuoi Controllare le date sulle scadenze ?", IDNO);
    EXPECT_FALSE(AskScheduleDates());
    EXPECT_EQ(user_.flags.back() & MB_DEFBUTTON2, MB_DEFBUTTON2);
    user_.ExpectDate("Dalla data", *ParseDate("2026-02-01"));
    user_.ExpectDate("Alla data", std::nullopt);
    EXPECT_FALSE(PickDatePeriod());
}

} // namespace

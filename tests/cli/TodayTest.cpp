#include "tests/cli/CommandFixture.h"

namespace {

class TodayTest : public CommandTest {};

INSTANTIATE_TEST_SUITE_P(Engines, TodayTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(TodayTest, TellsWhatWaitsInWordsAndInOneDocument)
{
    EXPECT_NE(Lumera({"oggi"}).out.find("Nulla in attesa."), std::string::npos);
    Run("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_data, sca_importo, sca_fattura)"
        " VALUES (0, 1, 2026, 1, '2026-05-31', 1234.5, '12/A'), (1, 1, 2026, 1, '2026-06-07', 10, '7'),"
        " (1, 2, 2026, 1, '2026-06-08', 10, '8')");
    const CommandRun told = Lumera({"oggi"});
    EXPECT_EQ(told.code, 0);
    EXPECT_NE(told.out.find("Da incassare, già scadute: 1, 1.234,50 euro"), std::string::npos) << told.out;
    EXPECT_NE(told.out.find("Da pagare entro sette giorni: 1, 10,00 euro"), std::string::npos) << told.out;

    const nlohmann::json document = Lumera({"--json", "oggi"}).Json();
    EXPECT_EQ(document["oggi"], "2026-06-01");
    EXPECT_EQ(document["clienti"]["scadute"]["importo"], 1234.5);
    EXPECT_EQ(document["clienti"]["scadute"]["prime"][0]["fattura"], "12/A");
    EXPECT_EQ(document["fornitori"]["in_scadenza"]["numero"], 1);
    EXPECT_EQ(document["fornitori"]["scadute"]["prime"], nlohmann::json::array());
    EXPECT_EQ(document["fatture"]["numero"], 0);
    EXPECT_EQ(document["squadrati"]["numero"], 0);
}

} // namespace

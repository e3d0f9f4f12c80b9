#include "tests/cli/CommandFixture.h"

namespace {

class ScheduleOutlookCommandTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        if (!database_) return;
        Run("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_data, sca_importo, sca_pagato)"
            " VALUES (0, 1, 2026, 1, '2026-04-30', 1000.10, 0), (0, 2, 2026, 2, '2026-06-30', 500, 0),"
            " (1, 1, 2026, 1, '2026-07-31', 300, 0), (0, 3, 2026, 1, '2026-06-02', 40, 1)");
    }

    CommandRun Outlook(std::vector<std::string> options) const
    {
        options.insert(options.begin(), {"scadenze", "cruscotto"});
        return Lumera(std::move(options));
    }
};

TEST_P(ScheduleOutlookCommandTest, TellsTheFiguresAsJson)
{
    const nlohmann::json outlook = Outlook({"--mesi", "2", "--saldo", "1.000,50", "--json"}).Json();
    ASSERT_EQ(outlook["mesi"].size(), 3u);
    EXPECT_EQ(outlook["mesi"][0]["dal"], nullptr);
    EXPECT_EQ(outlook["mesi"][0]["al"], "2026-05-31");
    EXPECT_EQ(outlook["mesi"][0]["incassare"]["scadute"], 1000.10);
    EXPECT_EQ(outlook["mesi"][1]["incassare"]["attese"], 500.0);
    EXPECT_EQ(outlook["mesi"][1]["incassare"]["saldate"], 40.0);
    EXPECT_EQ(outlook["mesi"][2]["pagare"]["aperte"], 1);
    EXPECT_EQ(outlook["mesi"][2]["progressivo"], 2200.60);
    ASSERT_EQ(outlook["clienti_in_ritardo"].size(), 1u);
    EXPECT_EQ(outlook["clienti_in_ritardo"][0]["giorni"], 32);
}

TEST_P(ScheduleOutlookCommandTest, ShowsATableAndWritesOneFile)
{
    const CommandRun shown = Outlook({});
    EXPECT_EQ(shown.code, 0) << shown.err;
    EXPECT_NE(shown.out.find("Prima di giugno 2026"), std::string::npos) << shown.out;
    EXPECT_NE(shown.out.find("1.500,10"), std::string::npos) << "what was collected is not due any more" << shown.out;
    EXPECT_NE(shown.out.find("Clienti in ritardo"), std::string::npos);

    const std::string pdf = (Folder() / "cruscotto.pdf").string();
    EXPECT_EQ(Outlook({"--pdf", pdf}).code, 0);
    EXPECT_GT(std::filesystem::file_size(pdf), 1000u);
}

TEST_P(ScheduleOutlookCommandTest, RefusesWhatMakesNoSense)
{
    EXPECT_EQ(Outlook({"--mesi", "0"}).code, 2);
    EXPECT_EQ(Outlook({"--mesi", "37"}).code, 2);
    EXPECT_EQ(Outlook({"--saldo", "molto"}).code, 2);
    EXPECT_EQ(Outlook({"--pdf", "a.pdf", "--csv", "a.csv"}).code, 2);
}

INSTANTIATE_TEST_SUITE_P(Engines, ScheduleOutlookCommandTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

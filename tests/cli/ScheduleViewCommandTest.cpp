#include "tests/cli/CommandFixture.h"

#include "cli/CommandLine.h"
#include "tarvodlg/base/Files.h"

#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;

/// Seen on 1 June 2026, a Monday.
class ScheduleViewCommandTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        if (!database_) return;
        Run("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_data, sca_importo, sca_pagato,"
            " sca_parked, sca_data_pag, sca_fattura) VALUES"
            " (0, 1, 2026, 1, '2026-05-31', 100.10, 0, 0, NULL, 'A1'),"
            " (0, 2, 2026, 1, '2026-06-07', 200.20, 0, 0, NULL, 'A2'),"
            " (0, 3, 2026, 1, '2026-06-08', -50.05, 1, 1, NULL, 'A3'),"
            " (0, 4, 2026, 2, '2026-01-31', 7.00, 0, 0, NULL, 'B1'),"
            " (0, 5, 2026, 1, '2026-04-30', 90.00, 1, 0, '2026-05-10', 'A0'),"
            " (1, 1, 2026, 3, '2026-06-30', 1000.00, 0, 0, NULL, 'F1')");
    }
};

TEST_P(ScheduleViewCommandTest, DueListByWeekAndByMonth)
{
    const auto weeks =
        Lumera({"--json", "scadenze", "scadenzario", "--dal", "2026-06-01", "--al", "2026-06-30"}).Json();
    ASSERT_EQ(weeks.at("periodi").size(), 4u);
    EXPECT_EQ(weeks["periodi"][0],
              nlohmann::json::parse(R"({"periodo":"Scadute prima del 01/06/2026","dal":null,"al":"2026-05-31",)"
                                    R"("scadenze":2,"da_incassare":107.1,"da_pagare":0.0,"saldo":107.1,)"
                                    R"("progressivo":107.1})"));
    EXPECT_EQ(weeks["periodi"][1]["al"], "2026-06-07");
    EXPECT_EQ(weeks["periodi"][2]["saldo"], -50.05);
    EXPECT_EQ(weeks["periodi"][3]["progressivo"], -742.75);
    EXPECT_EQ(weeks["saldo"], -742.75);

    const CommandRun months = Lumera({"scadenze", "scadenzario", "--per", "mese", "--clienti"});
    EXPECT_THAT(months.out, testing::AllOf(HasSubstr("Gennaio 2026"), HasSubstr("150,15"), HasSubstr("257,25"),
                                           testing::Not(HasSubstr("1.000,00"))));
}

TEST_P(ScheduleViewCommandTest, AgingOfASideAtADay)
{
    const auto today = Lumera({"--json", "scadenze", "anzianita", "--clienti", "--per-scaduto"}).Json();
    EXPECT_EQ(today["saldi"][0]["codice"], 1);
    EXPECT_EQ(today["saldi"][0]["sca_30"], 100.10);
    EXPECT_EQ(today["saldi"][1]["sca_oltre"], 7.00);
    EXPECT_EQ(today["a_scadere"], 150.15);
    EXPECT_EQ(today["totale"], 257.25);
    const auto earlier = Lumera({"--json", "scadenze", "anzianita", "--clienti", "--al", "31/05/2026"}).Json();
    EXPECT_EQ(earlier["sca_120"], 7.00);
    EXPECT_EQ(earlier["sca_30"], 0.0) << "due that very day";
    EXPECT_THAT(Lumera({"scadenze", "anzianita", "--fornitori"}).out, HasSubstr("1.000,00"));
}

TEST_P(ScheduleViewCommandTest, StatementOfOneCounterpart)
{
    const auto open = Lumera({"--json", "scadenze", "estratto-conto", "--cliente", "1"}).Json();
    ASSERT_EQ(open["scadenze"].size(), 3u);
    EXPECT_EQ(open["scadenze"][0]["ritardo"], 1);
    EXPECT_EQ(open["scadenze"][2]["stato"], "in distinta");
    EXPECT_EQ(open["scadenze"][2]["saldo"], 250.25);
    EXPECT_EQ(open["aperto"], 250.25);
    EXPECT_EQ(open["scaduto"], 100.10);
    const auto all =
        Lumera({"--json", "scadenze", "estratto-conto", "--cliente", "1", "--tutte", "--scadenti-al", "2026-05-31"})
            .Json();
    EXPECT_EQ(all["totale"], 2);
    EXPECT_EQ(all["scadenze"][0]["ritardo"], 10) << "paid late";
    EXPECT_EQ(all["scadenze"][0]["saldo"], 0.0);
    EXPECT_THAT(Lumera({"scadenze", "estratto-conto", "--fornitore", "3"}).out, HasSubstr("30/06/2026"));
}

TEST_P(ScheduleViewCommandTest, FilesAreWrittenInsteadOfTheList)
{
    const auto csv = [this](std::vector<std::string> words) {
        const std::filesystem::path file = Folder() / "righe.csv";
        words.insert(words.begin(), "scadenze");
        words.insert(words.end(), {"--csv", file.string()});
        EXPECT_EQ(Lumera(words).code, kExitDone);
        return ReadWholeFile(file, 10'000);
    };
    EXPECT_THAT(csv({"scadenzario", "--al", "2026-06-30"}), HasSubstr("07/06/2026;C;1;Edilnova Cordevasco S.r.l.;A2"));
    EXPECT_THAT(csv({"anzianita", "--clienti"}), HasSubstr(";91-120 gg;oltre 120 gg;Scaduto;Totale\r\n"));
    EXPECT_THAT(csv({"estratto-conto", "--cliente", "1", "--tutte"}),
                testing::AllOf(HasSubstr("Codice;Nome;Fattura;"),
                               HasSubstr("\r\n1;Edilnova Cordevasco S.r.l.;A0;"), // whose it is, in each row
                               HasSubstr("30/04/2026;10;90,00;10/05/2026;")));
    const std::filesystem::path pdf = Folder() / "estratto.pdf";
    EXPECT_EQ(Lumera({"scadenze", "estratto-conto", "--cliente", "1", "--pdf", pdf.string()}).code, kExitDone);
    EXPECT_THAT(ReadWholeFile(pdf, 10'000'000), testing::StartsWith("%PDF"));
}

TEST_P(ScheduleViewCommandTest, RefusesWhatMakesNoSense)
{
    const std::vector<std::vector<std::string>> wrong = {
        {"scadenzario", "--clienti", "--fornitori"},
        {"scadenzario", "--per", "anno"},
        {"scadenzario", "--dal", "2026-02-01", "--al", "2026-01-01"},
        {"scadenzario", "--pdf", "a.pdf", "--csv", "a.csv"},
        {"anzianita"},
        {"anzianita", "--clienti", "--fornitori"},
        {"estratto-conto"},
        {"estratto-conto", "--cliente", "1", "--fornitore", "1"},
    };
    for (std::vector<std::string> words : wrong) {
        words.insert(words.begin(), "scadenze");
        EXPECT_EQ(Lumera(words).code, kExitUsage) << testing::PrintToString(words);
    }
    const CommandRun unknown = Lumera({"scadenze", "estratto-conto", "--fornitore", "999"});
    EXPECT_EQ(unknown.code, kExitRefused);
    EXPECT_THAT(unknown.err, HasSubstr("Il fornitore n. 999 non esiste."));
}

INSTANTIATE_TEST_SUITE_P(Engines, ScheduleViewCommandTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

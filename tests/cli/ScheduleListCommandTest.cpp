#include "tests/cli/CommandFixture.h"

#include "cli/CommandLine.h"
#include "schedule/ScheduleDates.h"
#include "tarvodlg/base/Files.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ScheduleListCommandTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        if (!database_) return;
        Run("DELETE FROM admin.destina1");
        Run("INSERT INTO admin.destina1 (dst_rel, dst_cli_for, dst_codice, dst_desc) VALUES (0, 1, 2, 'Cantiere')");
        Run("INSERT INTO admin.agenti1 (age_codice, age_desc) VALUES (77, 'Sette')");
        Instalment("0, 1, 1, 2, NULL, 1, '2026-05-31', 100.1, 0, '7/A'");
        Instalment("0, 2, 2, NULL, 77, NULL, '2026-06-30', 200.2, 1, '8/A'");
        Instalment("1, 1, 1, NULL, NULL, 1, '2026-05-01', 1000, 0, '77'");
    }
    void Instalment(const std::string &values)
    {
        Run("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_cli_for, sca_dst, sca_age, sca_sez, sca_data,"
            " sca_importo, sca_pagato, sca_fattura, sca_anno) VALUES (" +
            values + ", 2026)");
    }
    /// The invoices that the list has with these options, in its order.
    std::vector<std::string> Invoices(std::vector<std::string> options)
    {
        options.insert(options.begin(), {"--json", "scadenze", "elenco"});
        std::vector<std::string> invoices;
        const nlohmann::json list = Lumera(options).Json();
        for (const nlohmann::json &instalment : list.at("scadenze")) invoices.push_back(instalment.at("fattura"));
        EXPECT_EQ(list.at("totale"), invoices.size());
        return invoices;
    }
};

INSTANTIATE_TEST_SUITE_P(Engines, ScheduleListCommandTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(ScheduleListCommandTest, EachOptionRestrictsTheList)
{
    EXPECT_THAT(Invoices({}), ElementsAre("77", "7/A", "8/A"));
    EXPECT_THAT(Invoices({"--clienti"}), ElementsAre("7/A", "8/A"));
    EXPECT_THAT(Invoices({"--fornitori"}), ElementsAre("77"));
    EXPECT_THAT(Invoices({"--aperte"}), ElementsAre("77", "7/A"));
    EXPECT_THAT(Invoices({"--chiuse"}), ElementsAre("8/A"));
    EXPECT_THAT(Invoices({"--dal", "2026-05-31", "--al", "31/05/2026"}), ElementsAre("7/A"));
    EXPECT_THAT(Invoices({"--sezione", "1"}), ElementsAre("77", "7/A"));
    EXPECT_THAT(Invoices({"--agente", "77"}), ElementsAre("8/A"));
    EXPECT_THAT(Invoices({"--clienti", "--intestatario", "1"}), ElementsAre("7/A"));
    EXPECT_THAT(Invoices({"--clienti", "--intestatario", "1", "--destinazione", "3"}), ElementsAre());
    EXPECT_THAT(Lumera({"scadenze", "elenco"}).out, HasSubstr("3 scadenze; da incassare 100,10, da pagare 1.000,00."));

    const nlohmann::json line = Lumera({"--json", "scadenze", "elenco", "--chiuse"}).Json().at("scadenze").at(0);
    EXPECT_EQ(line.at("data"), "2026-06-30");
    EXPECT_EQ(line.at("importo"), 200.2);
    EXPECT_EQ(line.at("nome"), Value("SELECT cli_desc FROM admin.clienti1 WHERE cli_codice = 2"));
    EXPECT_EQ(line.at("data_fattura"), nullptr);
    EXPECT_EQ(line.size(), 26u) << "the keys that readers know: " << line.dump();
}

TEST_P(ScheduleListCommandTest, WhatMakesNoSenseIsRefused)
{
    const std::string pdf = (Folder() / "x.pdf").string();
    for (const std::vector<std::string> &words :
         {std::vector<std::string>{"elenco", "--clienti", "--fornitori"},
          {"elenco", "--aperte", "--chiuse"},
          {"elenco", "--intestatario", "1"},
          {"elenco", "--clienti", "--destinazione", "1"},
          {"stampa", "--pdf", pdf},
          {"stampa", "--clienti"},
          {"stampa", "--clienti", "--pdf", pdf, "--csv", pdf},
          {"stampa", "--clienti", "--dal", "2026-02-01", "--al", "2026-01-01", "--pdf", pdf},
          {"controlla-date", "--dal", "2026-02-01", "--al", "2026-01-01"}}) {
        std::vector<std::string> all = {"scadenze"};
        all.insert(all.end(), words.begin(), words.end());
        EXPECT_EQ(Lumera(all).code, kExitUsage) << words.back();
    }
    EXPECT_FALSE(std::filesystem::exists(pdf));
}

TEST_P(ScheduleListCommandTest, PrintsPagesAndRows)
{
    const std::string pdf = (Folder() / "scadenze.pdf").string(), csv = (Folder() / "scadenze.csv").string();
    EXPECT_EQ(Lumera({"--json", "scadenze", "stampa", "--fornitori", "--pdf", pdf}).Json().at("file"), pdf);
    EXPECT_EQ(ReadWholeFile(pdf, 10'000'000).substr(0, 5), "%PDF-");
    EXPECT_EQ(Lumera({"scadenze", "stampa", "--clienti", "--aperte", "--csv", csv}).code, kExitDone);
    const std::string rows = ReadWholeFile(csv, 100'000);
    EXPECT_THAT(rows, testing::AllOf(HasSubstr("7/A"), HasSubstr("100,10"), testing::Not(HasSubstr("8/A"))));
    EXPECT_EQ(Lumera({"scadenze", "stampa", "--clienti", "--csv", (Folder() / "manca" / "x.csv").string()}).code,
              kExitFailed);
}

TEST_P(ScheduleListCommandTest, DateCheckCountsInAPeriodOrTheFiscalYear)
{
    EXPECT_EQ(Lumera({"scadenze", "controlla-date"}).code, kExitDone);
    const CommandRun run =
        Lumera({"--json", "scadenze", "controlla-date", "--dal", "2026-05-31", "--al", "2026-06-29"});
    EXPECT_EQ(run.code, kExitRefused);
    EXPECT_EQ(run.Json().at("errori"), 2);
    EXPECT_EQ(run.Json().at("file"), ScheduleDatesLog().string());
    EXPECT_THAT(run.err, HasSubstr("Trovati 2 errori!"));
    EXPECT_EQ(ReadWholeFile(ScheduleDatesLog(), 1000), "Scadenza Cliente 2 - Data Scadenza fuori range\r\n"
                                                       "Scadenza Fornitore 1 - Data Scadenza fuori range\r\n");
}

} // namespace

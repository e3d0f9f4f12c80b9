#include "tests/cli/CommandFixture.h"

#include "cli/CommandLine.h"
#include "tarvodlg/base/Files.h"

#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;

class ScheduleImportTest : public CommandTest {
  protected:
    static std::string Sample() { return LUMERA_SOURCE_DIR "/samples/saldi/saldi-iniziali.xlsx"; }
};

TEST_P(ScheduleImportTest, TakesWhatItCanAndEndsWithOneWhenRowsAreLeftOver)
{
    const CommandRun trial = Lumera({"scadenze", "importa-saldi", Sample(), "--prova"});
    EXPECT_EQ(trial.code, kExitRefused);
    EXPECT_THAT(trial.out, HasSubstr("scartata     riga 13: Caseificio Prato Lungo: DATA «31/02/2026» impossibile\n"));
    EXPECT_THAT(trial.out, HasSubstr("Da importare 10 scadenze: da incassare 16.080,86, da pagare 4.544,56; 7 righe"));
    EXPECT_THAT(trial.out, testing::Not(HasSubstr("Dettaglio")));
    EXPECT_EQ(Count("scadenze"), "0");

    const CommandRun run = Lumera({"--json", "scadenze", "importa-saldi", Sample()});
    EXPECT_EQ(run.code, kExitRefused);
    const nlohmann::json document = run.Json();
    EXPECT_EQ(document["prova"], false);
    EXPECT_EQ(document["importate"], 10);
    EXPECT_EQ(document["clienti"], 16080.86);
    EXPECT_EQ(document["scartate"].size(), 7U);
    EXPECT_EQ(document["scartate"][0]["riga"], 7);
    EXPECT_EQ(document["scartate"][0]["saldo"], "480");
    EXPECT_EQ(document["scartate"][4]["motivo"], "REL sconosciuta «BANCA»: deve essere CLIENTE o FORNITORE");
    EXPECT_THAT(ReadWholeFile(document["log"].get<std::string>(), 100'000), HasSubstr(" Riga 00007 - CLIENTE"));
    EXPECT_EQ(Count("scadenze"), "10");
}

TEST_P(ScheduleImportTest, WhatIsNoSheetEndsWithThree)
{
    const CommandRun none = Lumera({"--json", "scadenze", "importa-saldi", (Folder() / "manca.xls").string()});
    EXPECT_EQ(none.code, kExitFailed);
    EXPECT_EQ(none.Json().at("esito"), "errore");
    EXPECT_EQ(Lumera({"scadenze", "importa-saldi", Written("a.xlsx", "PK\x03\x04").string()}).code, kExitFailed);
    EXPECT_EQ(Lumera({"scadenze", "importa-saldi"}).code, kExitUsage);
}

TEST_P(ScheduleImportTest, ASheetOfAnotherKindIsRefused)
{
    const CommandRun run =
        Lumera({"scadenze", "importa-saldi", LUMERA_SOURCE_DIR "/tests/tarvodlg/sheets/data/celle.xls"});
    EXPECT_EQ(run.code, kExitRefused);
    EXPECT_THAT(run.err, HasSubstr("Impossibile trovare la colonna REL!"));
}

INSTANTIATE_TEST_SUITE_P(Engines, ScheduleImportTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

#include "tests/cli/CommandFixture.h"

#include "cli/CommandLine.h"
#include "tarvodlg/base/Files.h"

#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;

class MaintenanceCommandTest : public CommandTest {};

TEST_P(MaintenanceCommandTest, DateCheckEndsWithOneWhenItFindsSomething)
{
    ASSERT_EQ(Store(PurchaseJson("1")).code, kExitDone);
    EXPECT_EQ(Lumera({"pnota", "controlla-date"}).code, kExitDone) << "the fiscal year";
    const CommandRun run = Lumera({"--json", "pnota", "controlla-date", "--dal", "2026-03-11", "--al", "2026-12-31"});
    EXPECT_EQ(run.code, kExitRefused);
    EXPECT_EQ(run.Json().at("errori"), 5) << "document and payment start of the header, document of three rows";
    EXPECT_THAT(run.err, HasSubstr("Trovati 5 errori!"));
    EXPECT_THAT(ReadWholeFile(run.Json().at("file").get<std::string>(), 10'000),
                HasSubstr("Movimento 1 - Data Documento fuori range\r\n"));
    EXPECT_EQ(Lumera({"pnota", "controlla-date", "--dal", "2026-12-31", "--al", "2026-01-01"}).code, kExitUsage);
}

TEST_P(MaintenanceCommandTest, RenumberingAndRewritingAskFirst)
{
    // Without a protocol, which would be missing in its series afterwards.
    ASSERT_EQ(Store(R"({"data":"2026-03-01","cau":61,"righe":[{"mas":170,"con":1,"sot":1,"tipo":"D","importo":5},)"
                    R"({"mas":170,"con":1,"sot":1,"tipo":"A","importo":5}]})")
                  .code,
              kExitDone);
    ASSERT_EQ(Store(PurchaseJson("2")).code, kExitDone);
    ASSERT_EQ(Lumera({"--si", "pnota", "elimina", "1"}).code, kExitDone);
    for (const char *command : {"rinumera", "riscrivi"}) {
        const CommandRun refused = Lumera({"pnota", command});
        EXPECT_EQ(refused.code, kExitRefused);
        EXPECT_THAT(refused.err, HasSubstr("--si"));
    }
    EXPECT_EQ(Value("SELECT pno_codice FROM admin.pnota1"), "2");
    EXPECT_EQ(Lumera({"--si", "--json", "pnota", "rinumera"}).Json().at("rinumerati"), 1);
    EXPECT_EQ(Value("SELECT pno_codice FROM admin.pnota1"), "1");
    EXPECT_EQ(Lumera({"--si", "--json", "pnota", "riscrivi"}).Json().at("riscritti"), 1);
    EXPECT_EQ(Lumera({"archivio", "verifica"}).code, kExitDone);
}

TEST_P(MaintenanceCommandTest, ReceiptsOfAFiscalPrinterAreImportedOnce)
{
    const std::string good = "STAMPANTE;EPSON FP-81II;3EPMC012345\nCHIUSURA;7;15/03/2026;122,00\nIVA;22;122,00\n";
    const std::string file = Written("chiusure.txt", good).string();
    EXPECT_EQ(Lumera({"--json", "pnota", "importa-scontrini", file, "--causale", "15"}).Json().at("registrate"), 1);
    EXPECT_EQ(Lumera({"--json", "pnota", "importa-scontrini", file}).Json().at("gia_registrate"), 1);
    const std::string bad = Written("errate.txt", good + "CHIUSURA;8;16/03/2026;5,00\n").string();
    const CommandRun refused = Lumera({"--json", "pnota", "importa-scontrini", bad});
    EXPECT_EQ(refused.code, kExitFailed);
    EXPECT_THAT(refused.Json().at("messaggio").get<std::string>(), HasSubstr("riga 4: "));
    EXPECT_EQ(Lumera({"pnota", "importa-scontrini", file, "--causale", "21"}).code, kExitRefused);
    EXPECT_EQ(Lumera({"pnota", "importa-scontrini", (Folder() / "manca.txt").string()}).code, kExitFailed);
    EXPECT_EQ(Count("pnota1"), "1");
    EXPECT_EQ(Lumera({"archivio", "verifica"}).code, kExitDone);
}

INSTANTIATE_TEST_SUITE_P(Engines, MaintenanceCommandTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

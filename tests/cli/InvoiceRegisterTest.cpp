#include "cli/CommandLine.h"
#include "tests/cli/CommandFixture.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class InvoiceRegisterTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        if (database_) {
            EXPECT_EQ(Lumera({"fatture", "importa", LUMERA_SOURCE_DIR "/samples/fatture"}).code, kExitDone);
        }
    }
    /// The document of that number in a plan or a report.
    static json Find(const json &list, const std::string &number)
    {
        for (const json &one : list.at("fatture"))
            if (one.at("numero") == number) return one;
        ADD_FAILURE() << "no document " << number;
        return {};
    }
};

INSTANTIATE_TEST_SUITE_P(Engines, InvoiceRegisterTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(InvoiceRegisterTest, TrialShowsWhatTheRunThenDoesAndStoresNothing)
{
    Run("UPDATE admin.fornito1 SET for_pag = NULL WHERE for_codice = 8");
    const CommandRun trial = Lumera({"--json", "fatture", "registra", "--tutte", "--prova"});
    EXPECT_EQ(trial.code, kExitDone) << trial.err;
    EXPECT_EQ(trial.err, "") << "nobody is asked";
    for (const char *table : {"pnota1", "scadenze", "pnotaall"}) EXPECT_EQ(Count(table), "0") << table;
    const json plan = trial.Json();
    ASSERT_EQ(plan.at("fatture").size(), 14u);
    const json ready = Find(plan, "24/2026");
    EXPECT_EQ(ready.at("stato"), "pronta");
    EXPECT_EQ(ready.at("fornitore"), 1);
    EXPECT_EQ(ready.at("causale"), 21);
    EXPECT_EQ(ready.at("codici_iva"), "22");
    EXPECT_EQ(ready.at("totale"), 1478.64);
    EXPECT_EQ(ready.at("scadenze"), 2);
    EXPECT_EQ(ready.at("data"), "2026-01-19");
    long without_terms = 0;
    for (const json &one : plan.at("fatture"))
        if (one.at("motivo") == "Nessuna modalità di pagamento impostata sul fornitore.") ++without_terms;
    EXPECT_EQ(without_terms, 1);

    const CommandRun run = Lumera({"--json", "fatture", "registra", "--tutte"});
    EXPECT_EQ(run.code, kExitRefused);
    EXPECT_EQ(run.Json().at("registrate"), plan.at("pronte"));
    EXPECT_EQ(run.Json().at("rifiutate"), plan.at("da_completare"));
    EXPECT_EQ(Count("pnota1"), plan.at("pronte").dump());
    const json told = run.Json();
    for (const json &one : told.at("fatture")) {
        if (!one.at("registrata")) {
            EXPECT_FALSE(one.at("motivo").get<std::string>().empty());
        }
    }
    const json after = Lumera({"--json", "fatture", "registra", "--tutte", "--prova"}).Json();
    EXPECT_EQ(after.at("pronte"), 0);
    EXPECT_EQ(after.at("da_completare"), plan.at("da_completare"));

    const CommandRun rest = Lumera({"--json", "--si", "fatture", "registra", "--tutte", "--nuovo-fornitore"});
    EXPECT_EQ(rest.code, kExitDone) << rest.out;
    EXPECT_EQ(rest.Json().at("gia_registrate"), plan.at("pronte"));
    EXPECT_EQ(Count("pnota1"), "14");
    EXPECT_EQ(Lumera({"archivio", "verifica"}).code, kExitDone);
}

TEST_P(InvoiceRegisterTest, TablesAndLinesAreForReading)
{
    const CommandRun trial = Lumera({"fatture", "registra", "--tutte", "--prova"});
    EXPECT_EQ(trial.code, kExitDone);
    for (const char *part : {"Codici IVA", "Utensileria Marzavola S.r.l.", "1.478,64", "pronta",
                             "da completare: Fornitore non individuato.",
                             "13 pronte, 1 da completare. Nulla è stato "
                             "registrato.\n"})
        EXPECT_THAT(trial.out, HasSubstr(part));
    const CommandRun one = Lumera({"fatture", "registra", "1", "--prova"});
    EXPECT_THAT(one.out, HasSubstr("1 pronte, 0 da completare"));

    const CommandRun run = Lumera({"fatture", "registra", "--tutte"});
    EXPECT_EQ(run.code, kExitRefused) << "one has to be completed";
    EXPECT_THAT(run.out, HasSubstr("registrata   n. 24/2026 del 19/01/2026, Utensileria Marzavola S.r.l.: movimento 1, "
                                   "protocollo 1 ACQUISTI, righe IVA 1, scadenze 2\n"));
    EXPECT_THAT(run.out, HasSubstr(": Fornitore non individuato.\n"));
    EXPECT_THAT(run.out, testing::EndsWith("13 registrate, 0 già registrate, 1 rifiutate.\n"));
    const CommandRun again = Lumera({"fatture", "registra", "--tutte", "--nuovo-fornitore"});
    EXPECT_EQ(again.code, kExitDone);
    EXPECT_THAT(again.out, HasSubstr("già fatta    n. 24/2026"));
    EXPECT_THAT(again.out, testing::EndsWith("1 registrate, 13 già registrate, 0 rifiutate.\n"));
    EXPECT_THAT(Lumera({"fatture", "registra", "--tutte", "--prova"}).out,
                testing::EndsWith("0 pronte, 0 da completare. Nulla è stato "
                                  "registrato.\n"));
}

} // namespace

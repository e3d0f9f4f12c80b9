#include "tests/cli/CommandFixture.h"

namespace {

class ScheduleEditCommandTest : public CommandTest {
  protected:
    CommandRun Save(const std::string &json, bool yes = false)
    {
        std::vector<std::string> words = {"--json", "scadenze", "salva", Written("scadenza.json", json).string()};
        if (yes) words.insert(words.begin(), "--si");
        return Lumera(words);
    }
    std::string Amounts() { return Value("SELECT SUM(sca_importo) FROM admin.scadenze"); }
};

constexpr const char *kReceivable =
    R"({"relaz":0,"cli_for":1,"data":"2026-06-30","importo":"1220.05","desc":"ACCONTO","fattura":"12/B",)"
    R"("data_fattura":"2026-02-05"})";

TEST_P(ScheduleEditCommandTest, WhatIsShownCanBeStoredAgain)
{
    CommandRun run = Save(kReceivable);
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.Json(), nlohmann::json::parse(R"({"relaz":0,"num":1,"inserita":true})"));

    run = Lumera({"--json", "scadenze", "mostra", "cliente", "1"});
    nlohmann::json shown = run.Json();
    EXPECT_EQ(shown["importo"], 1220.05);
    EXPECT_EQ(shown["nome"], "Edilnova Cordevasco S.r.l.");
    EXPECT_EQ(shown["pag"], 45) << "the customer's terms";
    EXPECT_EQ(shown["tipo_pag"], 2);
    EXPECT_EQ(shown["emessa"], "2026-06-01");
    shown["importo"] = 1000;
    run = Save(shown.dump());
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.Json()["inserita"], false);

    run = Save(R"({"relaz":0,"num":1,"desc":"SALDO"})"); // the rest stays
    ASSERT_EQ(run.code, 0) << run.err;
    run = Lumera({"scadenze", "mostra", "clienti", "1"});
    EXPECT_EQ(run.out, "Scadenza cliente n. 1 del 30/06/2026   importo 1.000,00   aperta\n"
                       "Cliente 1 Edilnova Cordevasco S.r.l.\nFattura 12/B del 05/02/2026\nSALDO\n");
}

struct Refusal {
    const char *json, *message;
};
const Refusal kRefusals[] = {
    {R"({"cli_for":1})", "«relaz» manca"},
    {R"({"relaz":0,"cli_for":1,"importo":5})", "Data di scadenza mancante."},
    {R"({"relaz":1,"cli_for":1,"importo":"5,00","data":"2026-06-30"})", "«importo» deve essere un numero"},
    {R"({"relaz":0,"cli_for":1,"importo":5,"data":"2026-06-31"})", "«data» non è una data"},
    {R"({"relaz":0,"cli_for":1,"importo":5,"data":"2026-06-30","pagato":1})", "non si scrivono a mano"},
    {R"({"relaz":0,"num":9,"importo":5})", "La scadenza cliente n. 9 non esiste."},
    {R"({"relaz":0,"num":99999999999,"importo":5})", "«num» è fuori dai limiti"},
    {R"({"relaz":0,"num":"1"})", "«num» deve essere un numero intero"},
    {R"({"relaz":0,"cli_for":1,"importo":5,"data":"2026-06-30","colore":"blu"})", "chiave «colore» sconosciuta"},
    {R"([1])", "deve essere un oggetto"},
    {R"({"relaz":)", "deve essere un oggetto"},
};

TEST_P(ScheduleEditCommandTest, RefusesWithTheReason)
{
    for (const Refusal &refusal : kRefusals) {
        SCOPED_TRACE(refusal.json);
        const CommandRun run = Save(refusal.json);
        EXPECT_EQ(run.code, 1);
        EXPECT_NE((run.out + run.err).find(refusal.message), std::string::npos) << run.out << run.err;
    }
    EXPECT_EQ(Count("scadenze"), "0");
}

TEST_P(ScheduleEditCommandTest, CeasedCustomerNeedsAYes)
{
    Run("UPDATE admin.clienti1 SET cli_data_cessazione = '2026-01-31' WHERE cli_codice = 1");
    EXPECT_EQ(Save(kReceivable).code, 1);
    EXPECT_EQ(Count("scadenze"), "0");
    EXPECT_EQ(Save(kReceivable, true).code, 0);
    EXPECT_EQ(Save(R"({"relaz":0,"num":1,"desc":"SALDO"})").code, 0) << "asked about once";
}

TEST_P(ScheduleEditCommandTest, DeletesAndSplits)
{
    ASSERT_EQ(Save(kReceivable).code, 0);
    CommandRun run =
        Lumera({"--json", "scadenze", "dividi", "cliente", "1", "--importo", "220,05", "--data", "31/07/2026"});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.Json(),
              nlohmann::json::parse(R"({"relaz":0,"num":1,"importo":1000.0,"nuova":{"num":2,"importo":220.05}})"));
    EXPECT_EQ(Lumera({"scadenze", "dividi", "cliente", "1", "--importo", "1000"}).code, 1);
    EXPECT_EQ(Lumera({"scadenze", "dividi", "cliente", "1", "--importo", "tutto"}).code, 2);
    EXPECT_EQ(Amounts().substr(0, 7), "1220.05");

    EXPECT_EQ(Lumera({"scadenze", "elimina", "cliente", "2"}).code, 1) << "not confirmed";
    EXPECT_EQ(Count("scadenze"), "2");
    EXPECT_EQ(Lumera({"--si", "scadenze", "elimina", "cliente", "2"}).code, 0);
    EXPECT_EQ(Lumera({"--si", "scadenze", "elimina", "cliente", "2"}).code, 1) << "gone";
    EXPECT_EQ(Lumera({"--si", "scadenze", "elimina", "banca", "1"}).code, 2);
    Run("UPDATE admin.scadenze SET sca_pagato = 1");
    EXPECT_EQ(Lumera({"--si", "scadenze", "elimina", "cliente", "1"}).code, 1) << "collected";
    EXPECT_EQ(Count("scadenze"), "1");
}

TEST_P(ScheduleEditCommandTest, WritesTheSlip)
{
    ASSERT_EQ(Save(kReceivable).code, 0);
    const std::filesystem::path file = Folder() / "bollettino.pdf";
    const CommandRun run = Lumera({"scadenze", "bollettino", "cliente", "1", "--pdf", file.string()});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_GT(std::filesystem::file_size(file), 1000U);
    EXPECT_EQ(Lumera({"scadenze", "bollettino", "cliente", "1"}).code, 2) << "no file named";

    ASSERT_EQ(Save(R"({"relaz":0,"num":1,"importo":-5})").code, 0);
    const CommandRun refused =
        Lumera({"scadenze", "bollettino", "cliente", "1", "--pdf", (Folder() / "nota.pdf").string()});
    EXPECT_EQ(refused.code, 1);
    EXPECT_FALSE(std::filesystem::exists(Folder() / "nota.pdf"));
}

INSTANTIATE_TEST_SUITE_P(Engines, ScheduleEditCommandTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

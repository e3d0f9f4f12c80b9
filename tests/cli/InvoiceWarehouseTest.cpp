#include "tests/cli/CommandFixture.h"

namespace {

class InvoiceWarehouseTest : public CommandTest {};

TEST_P(InvoiceWarehouseTest, LoadsWithThePairGivenAndKeepsIt)
{
    const std::string file = std::string(LUMERA_SOURCE_DIR) + "/samples/fatture/IT02565617350_00A24.xml";
    ASSERT_EQ(Lumera({"fatture", "importa", file}).code, 0);
    CommandRun run = Lumera({"--json", "fatture", "carica-merci", "1"});
    EXPECT_EQ(run.code, 1) << "PHC-19 has no article";
    EXPECT_EQ(run.Json()["caricata"], false);
    EXPECT_EQ(Count("testate1"), "0");
    EXPECT_EQ(Lumera({"fatture", "carica-merci", "1", "--abbina", "PHC-19=NESSUNO"}).code, 1);
    for (const char *wrong : {"PHC-19", "=PUNTEHSS19", "PHC-19="})
        EXPECT_EQ(Lumera({"fatture", "carica-merci", "1", "--abbina", wrong}).code, 2) << wrong;
    EXPECT_EQ(Lumera({"fatture", "carica-merci", "1.2"}).code, 2);
    EXPECT_EQ(Lumera({"fatture", "carica-merci", "uno"}).code, 2);

    run = Lumera({"--json", "fatture", "carica-merci", "1", "--abbina", "PHC-19=puntehss19"});
    ASSERT_EQ(run.code, 0) << run.err;
    const nlohmann::json json = run.Json();
    EXPECT_EQ(json["totale"], 1182.0);
    EXPECT_EQ(json["imponibile"], 1212.0);
    EXPECT_EQ(json["righe"][1]["articolo"], "PUNTEHSS19");
    EXPECT_EQ(json["righe"][1]["abbinamento"], "a mano");
    EXPECT_EQ(Lumera({"fatture", "carica-merci", "1"}).code, 1) << "loaded already";
    EXPECT_EQ(Lumera({"--si", "fatture", "carica-merci", "1"}).code, 0) << "the pair is known now";
    EXPECT_EQ(Count("testate1"), "2");
}

TEST_P(InvoiceWarehouseTest, ArticlesHaveCodesOfLetters)
{
    const auto save = [&](const std::string &table, const std::string &text) {
        return Lumera({"--json", "tabelle", "salva", table, Written("dati.json", text).string()});
    };
    CommandRun run = save("articoli", R"([{"codice":"olio.20","desc":"Olio da taglio","um":"FU"}])");
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.Json()["codici"][0], "OLIO.20");
    run = save("articoli", R"({"codice":"OLIO.20","ean":"2009000100053"})");
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.Json()["modificati"], 1);
    run = Lumera({"--json", "tabelle", "mostra", "articoli", "olio.20"});
    EXPECT_EQ(run.Json()["desc"], "Olio da taglio");
    EXPECT_EQ(run.Json()["ean"], "2009000100053");
    EXPECT_EQ(save("articoli", R"({"desc":"Senza codice"})").code, 1);
    EXPECT_EQ(save("articoli", R"({"codice":"ALTRO","desc":"Altro","ean":"2009000100053"})").code, 1)
        << "the same bar code needs a yes";
    EXPECT_EQ(Lumera({"--si", "tabelle", "elimina", "articoli", "olio.20"}).code, 0);

    EXPECT_EQ(save("caumag", R"({"codice":2,"desc":"RESO A FORNITORE","tipo":"s"})").code, 0);
    EXPECT_EQ(save("caumag", R"({"codice":1,"tipo":"S"})").code, 1) << "the one of received invoices";
    EXPECT_EQ(save("impostazioni", R"({"cau_magazzino":2})").code, 1);
    EXPECT_EQ(Lumera({"--si", "tabelle", "elimina", "caumag", "1"}).code, 1) << "in the settings";
    EXPECT_EQ(save("impostazioni", R"({"cau_magazzino":0})").code, 0);
    EXPECT_EQ(Lumera({"--si", "tabelle", "elimina", "caumag", "1"}).code, 0);
}

INSTANTIATE_TEST_SUITE_P(Engines, InvoiceWarehouseTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

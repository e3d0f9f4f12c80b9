#include "tests/cli/CommandFixture.h"

#include "cli/CommandLine.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class EntryJsonTest : public CommandTest {};

struct BadJson {
    const char *name;
    std::string text;
    const char *message; ///< part of it
};

std::vector<BadJson> BadDocuments()
{
    const std::string lines = R"({"data":"2026-03-15","cau":21,"cli_for":1,"doc":"9","data_doc":"2026-03-10","iva":)";
    const std::string rows = R"({"data":"2026-03-15","cau":61,"righe":)";
    std::string many = "[";
    for (int i = 0; i < 101; ++i)
        many += std::string(i == 0 ? "" : ",") + R"({"mas":170,"con":1,"sot":1,"tipo":"D","importo":1})";
    return {
        {"nothing", "", "JSON"},
        {"no JSON", "data=2026", "JSON"},
        {"cut off", R"({"data":"2026-03-15")", "JSON"},
        {"no UTF-8", "{\"desc\":\"\xff\"}", "JSON"},
        {"list", "[]", "oggetto"},
        {"nested deep", std::string(200'000, '[') + std::string(200'000, ']'), "oggetto"},
        {"unknown key", R"({"causale":21})", "«causale»"},
        {"unknown key in a line", lines + R"([{"codice":22,"imponibile":1,"rata":1}]})", "riga IVA 1: chiave «rata»"},
        {"unknown key in a row", rows + R"([{"mas":170,"conto":1}]})", "riga 1: chiave «conto»"},
        {"text for a code", R"({"cau":"21"})", "«cau» deve essere un numero intero"},
        {"fraction for a code", R"({"cau":21.5})", "«cau»"},
        {"negative code", R"({"cau":-21})", "«cau»"},
        {"code beyond 32 bits", R"({"cau":21474836480})", "«cau»"},
        {"code beyond 64 bits", R"({"cau":18446744073709551615})", "«cau»"},
        {"number for a text", R"({"cau":21,"doc":12})", "«doc» deve essere un testo"},
        {"no date", R"({"data":"2026-02-29","cau":21})", "2026-02-29"},
        {"object for a list", lines + "{}}", "«iva» deve essere un elenco"},
        {"text for a line", lines + R"(["22"]})", "riga IVA 1"},
        {"eight VAT lines", lines + R"([{},{},{},{},{},{},{},{}]})", "«iva» ha più di 7"},
        {"101 rows", rows + many + "]}", "«righe» ha più di 100"},
        {"three decimals", lines + R"([{"codice":22,"imponibile":100.005}]})", "«imponibile» ha più di due decimali"},
        {"three decimals in a text", lines + R"([{"codice":22,"imponibile":"100.005"}]})",
         "«imponibile» ha più di due decimali"},
        {"amount in words", lines + R"([{"codice":22,"imponibile":"cento"}]})", "«imponibile» deve essere un importo"},
        {"amount without end", lines + R"([{"codice":22,"imponibile":1e15}]})", "«imponibile»"},
        {"VAT code that is not there", lines + R"([{"codice":23,"imponibile":1}]})", "codice IVA 23"},
        {"rate of another code", lines + R"([{"codice":22,"imponibile":1,"aliquota":10}]})",
         "l'aliquota del codice 22 è 22.00"},
        {"VAT line without VAT", R"({"cau":61,"iva":[{"codice":22,"imponibile":1}]})", "righe IVA"},
        {"negative row", rows + R"([{"mas":170,"con":1,"sot":1,"tipo":"D","importo":-1}]})", "negativo"},
        {"side", rows + R"([{"mas":170,"con":1,"sot":1,"tipo":"X","importo":1}]})", "«tipo»"},
        {"account that is not there",
         rows +
             R"([{"mas":170,"con":1,"sot":99,"tipo":"D","importo":1},{"mas":170,"con":1,"sot":1,"tipo":"A","importo":1}]})",
         "170.1.99"},
        {"causale that is not there", R"({"cau":999})", "causale 999"},
        {"supplier that is not there", R"({"cau":21,"cli_for":999})", "fornitore 999"},
        {"section that is not there", R"({"cau":61,"sez":77})", "sezione"},
        {"terms that are not there", R"({"cau":21,"cli_for":1,"pag":999})", "pagamento 999"},
        {"document after registration",
         R"({"data":"2026-03-15","cau":21,"cli_for":1,"doc":"9","data_doc":"2026-03-16","iva":[{"codice":22,"imponibile":1}]})",
         "anteriore"},
    };
}

TEST_P(EntryJsonTest, WhatIsWrongIsNamedAndNothingIsStored)
{
    for (const BadJson &test : BadDocuments()) {
        SCOPED_TRACE(test.name);
        const CommandRun run = Store(test.text, {"--si", "--json"});
        EXPECT_EQ(run.code, kExitRefused) << run.out;
        EXPECT_THAT(run.Json().at("messaggio").get<std::string>(), HasSubstr(test.message));
        EXPECT_THAT(run.err, HasSubstr(test.message));
    }
    EXPECT_EQ(Count("pnota1"), "0");
    EXPECT_EQ(Count("scadenze"), "0");
}

TEST_P(EntryJsonTest, GivenSectionWinsOverThatOfTheCausale)
{
    Run("INSERT INTO admin.sezioni (sez_codice, sez_desc) SELECT 2, 'Filiale' WHERE NOT EXISTS"
        " (SELECT 1 FROM admin.sezioni WHERE sez_codice = 2)");
    Run("UPDATE admin.caucont1 SET cac_sez = 1 WHERE cac_codice = 21");
    std::string document = PurchaseJson("9");
    document.insert(1, R"("sez":2,)");
    ASSERT_EQ(Store(document).code, kExitDone);
    EXPECT_EQ(Value("SELECT pno_sez FROM admin.pnota1"), "2");
}

TEST_P(EntryJsonTest, SplitOfARowThatIsNotThereStopsTheEntry)
{
    std::string document = PurchaseJson("9");
    document.insert(1, R"("centri":[{"riga":50,"cdc":10,"importo":100}],)");
    const CommandRun run = Store(document);
    EXPECT_EQ(run.code, kExitRefused);
    EXPECT_THAT(run.err, HasSubstr("Problema su contabilità analitica."));
    EXPECT_EQ(Count("pnota1"), "0");
}

TEST_P(EntryJsonTest, ElevenMegabytesAreRefusedUnread)
{
    const CommandRun run = Store("{\"desc\":\"" + std::string(11'000'000, 'x') + "\"}");
    EXPECT_EQ(run.code, kExitFailed);
    EXPECT_THAT(run.err, HasSubstr("supera il limite"));
}

// What `mostra` gives can be taken to another archive: the keys that only the journal sets are left out.
TEST_P(EntryJsonTest, ShownEntryCanBeStoredAgain)
{
    ASSERT_EQ(
        Store(R"({"data":"2026-03-15","cau":21,"cli_for":1,"doc":"45/à","data_doc":"10/03/2026","desc":"Viti «M8»",
                        "iva":[{"codice":22,"imponibile":"100.00","imposta":22.01},{"codice":100,"imponibile":2}]})")
            .code,
        kExitDone);
    json entry = Lumera({"--json", "pnota", "mostra", "1"}).Json();
    EXPECT_EQ(entry.at("tot_doc"), 124.01);
    EXPECT_EQ(entry.at("iva")[0].at("imposta"), 22.01) << "a tax that is given stands";
    EXPECT_EQ(entry.at("desc"), "Viti «M8»");
    for (const char *key : {"codice", "rel", "reg", "prot", "dare", "avere", "operazione", "allegati"})
        entry.erase(key);
    const json first = entry;
    entry["doc"] = "46";
    ASSERT_EQ(Store(entry.dump()).code, kExitDone);
    json again = Lumera({"--json", "pnota", "mostra", "2"}).Json();
    EXPECT_EQ(again.at("prot"), 2);
    for (const char *key : {"iva", "tot_doc", "pag", "data_pag", "sez", "cau", "des_cau"})
        EXPECT_EQ(again.at(key), first.at(key)) << key;
    EXPECT_EQ(again.at("righe").size(), first.at("righe").size());
    EXPECT_EQ(Lumera({"archivio", "verifica"}).code, kExitDone);
}

INSTANTIATE_TEST_SUITE_P(Engines, EntryJsonTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

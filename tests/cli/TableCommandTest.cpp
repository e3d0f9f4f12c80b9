#include "cli/CommandLine.h"
#include "tarvodlg/base/Files.h"
#include "tests/cli/CommandFixture.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class TableCommandTest : public CommandTest {
  protected:
    CommandRun Save(const char *table, const json &document, const std::vector<std::string> &more = {})
    {
        std::vector<std::string> words = more;
        words.insert(words.end(), {"tabelle", "salva", table, Written("dati.json", document.dump()).string()});
        return Lumera(words);
    }
    json Shown(std::vector<std::string> words)
    {
        words.insert(words.begin(), {"--json", "tabelle", "mostra"});
        return Lumera(words).Json();
    }
    static json Customer(const char *name, const char *vat_number)
    {
        return {{"desc", name}, {"piva", vat_number}, {"codfis", vat_number}, {"cap", "43126"}, {"prov", "PR"}};
    }
};

/// What is shown can be stored as it is, for every table; nothing has changed afterwards.
TEST_P(TableCommandTest, EveryRecordGoesRound)
{
    for (const std::vector<std::string> &record : std::vector<std::vector<std::string>>{{"clienti", "37"},
                                                                                        {"fornitori", "11"},
                                                                                        {"causali", "7"},
                                                                                        {"codiva", "62"},
                                                                                        {"pagamenti", "53"},
                                                                                        {"mastri", "150"},
                                                                                        {"conti", "260", "1"},
                                                                                        {"sottocon", "260", "1", "1"},
                                                                                        {"sezioni", "9"},
                                                                                        {"banche", "1"},
                                                                                        {"centri", "10"},
                                                                                        {"agenti", "1"},
                                                                                        {"ditta"},
                                                                                        {"impostazioni"}}) {
        const json before = Shown(record);
        const CommandRun run = Save(record.front().c_str(), before, {"--json"});
        EXPECT_EQ(run.code, kExitDone) << record.front() << run.err;
        EXPECT_EQ(run.Json().at("modificati"), 1) << record.front();
        EXPECT_EQ(Shown(record), before) << record.front();
    }
    EXPECT_EQ(Shown({"causali", "7"}).at("righe").size(), 5u);
    EXPECT_EQ(Shown({"conti", "260", "1"}).at("mas"), 260);
}

TEST_P(TableCommandTest, NewRecordsTakeTheNextCodes)
{
    const json document = {Customer("Uno S.r.l.", "01234567897"),
                           Customer("Due S.r.l.", "12345678903"),
                           {{"codice", 900}, {"desc", "Tre"}, {"piva", "IT 111.111.111-15"}, {"naz", "it"}}};
    const json done = Save("clienti", document, {"--json"}).Json();
    EXPECT_EQ(done.at("inseriti"), 3);
    EXPECT_EQ(done.at("codici"), json({"41", "42", "900"}));
    EXPECT_EQ(Shown({"clienti", "900"}).at("piva"), "11111111115");
    EXPECT_EQ(Save("conti", {{"mas", 150}, {"desc", "Clienti dubbi"}, {"cli", true}}, {"--json"}).Json().at("codici"),
              json({"150.3"}));
}

TEST_P(TableCommandTest, UpdateChangesOnlyWhatIsGiven)
{
    ASSERT_EQ(Save("clienti", {{"codice", 1}, {"telefono", "0521 1"}, {"data_cessazione", "31/12/2026"}}).code,
              kExitDone);
    const json customer = Shown({"clienti", "1"});
    EXPECT_EQ(customer.at("telefono"), "0521 1");
    EXPECT_EQ(customer.at("data_cessazione"), "2026-12-31");
    EXPECT_EQ(customer.at("desc"), "Edilnova Cordevasco S.r.l.");
    ASSERT_EQ(Save("causali", {{"codice", 21}, {"desc", "Acquisti"}}).code, kExitDone);
    EXPECT_EQ(Shown({"causali", "21"}).at("righe").size(), 3u);
    ASSERT_EQ(Save("causali", {{"codice", 21}, {"righe", {{{"mas", 250}, {"con", 1}, {"tipo", 1}}}}}).code, kExitDone);
    EXPECT_EQ(Shown({"causali", "21"}).at("righe").size(), 1u);
    ASSERT_EQ(Save("ditta", {{"anno", 2027}}).code, kExitDone);
    EXPECT_EQ(Shown({"ditta"}).at("anno"), 2027);
}

struct BadFile {
    const char *name, *table, *text;
    const char *message;
};

TEST_P(TableCommandTest, BadDocumentStoresNothing)
{
    for (const BadFile &bad : {
             BadFile{"NoJson", "clienti", "{", "Il documento JSON non è valido."},
             BadFile{"NotAnObject", "clienti", "7", "deve essere un oggetto o un elenco"},
             BadFile{"Nothing", "clienti", "[]", "deve essere un oggetto o un elenco"},
             BadFile{"ListOfNumbers", "clienti", "[7]", "clienti: deve essere un oggetto JSON."},
             BadFile{"UnknownKey", "clienti", R"({"desc":"A","cli_piva":"1"})",
                     "clienti: chiave «cli_piva» sconosciuta."},
             BadFile{"Prefix", "causali", R"({"righe":[{"mas":250,"car_con":1}]})",
                     "causali, riga 1: chiave «car_con» sconosciuta."},
             BadFile{"Kind", "clienti", R"({"desc":5})", "clienti: «desc» deve essere un testo."},
             BadFile{"Fraction", "clienti", R"({"desc":"A","pag":1.5})",
                     "clienti: «pag» deve essere un numero intero."},
             BadFile{"Negative", "clienti", R"({"codice":-1})", "clienti: «codice» è fuori dai limiti."},
             BadFile{"Huge", "clienti", R"({"codice":99999999999})", "clienti: «codice» è fuori dai limiti."},
             BadFile{"Date", "clienti", R"({"data_cessazione":"31/02/2026"})", "«data_cessazione» non è una data"},
             BadFile{"Rate", "codiva", R"({"aliq":"ventidue"})", "codiva: «aliq» deve essere un numero."},
             BadFile{"LongText", "agenti",
                     R"({"desc":"1234567890123456789012345678901234567890123456789012345678901"})",
                     "agenti: «desc» ha più di 60 caratteri."},
             BadFile{"SameRow", "causali", R"({"righe":[{"idx":2,"mas":250},{"idx":2,"mas":250}]})",
                     "riga 2: «idx» è ripetuto."},
             BadFile{"RowTwentyOne", "causali", R"({"righe":[{"idx":21,"mas":250}]})", "«idx» va da 1 a 20."},
             BadFile{"SecondIsWrong", "clienti", R"([{"desc":"A","piva":"01234567897"},{"desc":"B","piva":"1"}])",
                     "clienti, record 2: Partita IVA 1: lunghezza errata: 1 caratteri invece di 11."},
             BadFile{"SameCodeTwice", "agenti", R"([{"codice":9,"desc":"A"},{"codice":9,"desc":"B"}])",
                     "agenti, record 2: il codice è ripetuto nel documento."},
             BadFile{"OtherCompany", "ditta", R"({"codice":2,"desc":"Altra"})",
                     "ditta: l'archivio è di un'altra ditta."},
         }) {
        const CommandRun run =
            Lumera({"--json", "tabelle", "salva", bad.table, Written("dati.json", bad.text).string()});
        EXPECT_EQ(run.code, kExitRefused) << bad.name << run.err;
        EXPECT_THAT(run.Json().at("messaggio").get<std::string>(), HasSubstr(bad.message)) << bad.name;
    }
    EXPECT_EQ(Count("clienti1"), "40");
    EXPECT_EQ(Count("agenti1"), "3");
    EXPECT_EQ(Count("ditte"), "1");
}

TEST_P(TableCommandTest, QuestionTakesItsDefaultUnlessYes)
{
    const json document = {Customer("Nuovo", "01234567897"), Customer("Doppio", "09406137340")};
    const CommandRun refused = Save("clienti", document);
    EXPECT_EQ(refused.code, kExitRefused);
    EXPECT_THAT(refused.err, HasSubstr("Partita IVA già presente: 1 Edilnova Cordevasco S.r.l."));
    EXPECT_EQ(Count("clienti1"), "40") << "all or nothing";
    EXPECT_EQ(Save("clienti", document, {"--si"}).code, kExitDone);
    EXPECT_EQ(Count("clienti1"), "42");
}

/// A failure of the archive in the middle of the writing takes back what was written before it.
TEST_P(TableCommandTest, FailureWhileWritingTakesEverythingBack)
{
    Run("CREATE UNIQUE INDEX prova_nomi ON admin.agenti1 (age_desc)");
    const CommandRun run = Save("agenti", {{{"desc", "Nuovo"}}, {{"desc", "Nuovo"}}});
    EXPECT_EQ(run.code, kExitFailed);
    EXPECT_EQ(Count("agenti1"), "3");
}

TEST_P(TableCommandTest, Deletes)
{
    ASSERT_EQ(Store(PurchaseJson("1")).code, kExitDone);
    const CommandRun used = Lumera({"--si", "--json", "tabelle", "elimina", "fornitori", "1"});
    EXPECT_EQ(used.code, kExitRefused);
    EXPECT_THAT(used.Json().at("messaggio").get<std::string>(), HasSubstr("codice usato in 1 movimento di prima nota"));
    EXPECT_EQ(Lumera({"tabelle", "elimina", "centri", "60"}).code, kExitRefused) << "not confirmed";
    EXPECT_EQ(Count("centri1"), "6");
    EXPECT_EQ(Lumera({"--si", "--json", "tabelle", "elimina", "centri", "60"}).Json().at("eliminato"), "60");
    EXPECT_EQ(Count("centri1"), "5");
    EXPECT_EQ(Lumera({"--si", "tabelle", "elimina", "centri", "60"}).code, kExitRefused);
    EXPECT_EQ(Lumera({"--si", "tabelle", "elimina", "ditta", "1"}).code, kExitUsage);
    EXPECT_EQ(Lumera({"--si", "tabelle", "elimina", "conti", "150"}).code, kExitUsage) << "one code of two";
    EXPECT_EQ(Lumera({"tabelle", "mostra", "clienti", "uno"}).code, kExitRefused);
    EXPECT_EQ(Lumera({"tabelle", "elenco", "pnota1"}).code, kExitUsage);
}

TEST_P(TableCommandTest, ListsInEveryForm)
{
    const json list = Lumera({"--json", "tabelle", "elenco", "causali", "--cerca", "fattura acquisto"}).Json();
    EXPECT_EQ(list.at("totale"), 2);
    EXPECT_EQ(list.at("causali")[0].at("codice"), 21);
    EXPECT_EQ(list.at("causali")[0].at("reg"), 2) << "the code, not its words";
    EXPECT_EQ(list.at("causali")[0].at("sez"), 0);
    const CommandRun screen = Lumera({"tabelle", "elenco", "clienti", "--cerca", "NICOLO'"});
    EXPECT_THAT(screen.out, HasSubstr("Quarantotti Nicolò - Idraulico"));
    EXPECT_THAT(screen.out, HasSubstr("1 righe"));

    const std::string csv = (Folder() / "causali.csv").string(), xlsx = (Folder() / "causali.xlsx").string();
    EXPECT_EQ(Lumera({"--json", "tabelle", "elenco", "causali", "--csv", csv}).Json().at("totale"),
              std::stol(Count("caucont1")));
    const std::string text = ReadWholeFile(csv, 100'000);
    EXPECT_THAT(text, HasSubstr("Codice;Descrizione;Registro;Soggetto;IVA;Sezione"));
    EXPECT_THAT(text, HasSubstr("21;Fattura acquisto merci;Acquisti;Fornitore;Sì;"));
    EXPECT_EQ(Lumera({"tabelle", "elenco", "causali", "--xlsx", xlsx}).code, kExitDone);
    EXPECT_EQ(ReadWholeFile(xlsx, 1'000'000).substr(0, 2), "PK");
    EXPECT_EQ(Lumera({"tabelle", "elenco", "causali", "--xlsx", xlsx, "--csv", csv}).code, kExitUsage);
    EXPECT_EQ(Lumera({"tabelle", "elenco", "causali", "--csv", (Folder() / "no" / "c.csv").string()}).code,
              kExitFailed);
}

// --- prints
// -------------------------------------------------------------------------------------------------------------

TEST_P(TableCommandTest, PrintsGoToOneFile)
{
    ASSERT_EQ(Store(PurchaseJson("1")).code, kExitDone);
    ASSERT_EQ(Store(PurchaseJson("2")).code, kExitDone);
    const std::string pdf = (Folder() / "stampa.pdf").string(), csv = (Folder() / "stampa.csv").string();
    for (const std::vector<std::string> &words : {std::vector<std::string>{"pnota", "stampa", "--al", "2026-12-31"},
                                                  std::vector<std::string>{"tabelle", "piano-conti"}}) {
        const auto with = [&](const std::vector<std::string> &more) {
            std::vector<std::string> all = words;
            all.insert(all.end(), more.begin(), more.end());
            return Lumera(all).code;
        };
        EXPECT_EQ(with({}), kExitUsage) << "no file";
        EXPECT_EQ(with({"--pdf", pdf, "--csv", csv}), kExitUsage) << "two files";
        EXPECT_EQ(with({"--pdf", (Folder() / "no" / "s.pdf").string()}), kExitFailed);
        EXPECT_EQ(with({"--pdf", pdf}), kExitDone);
        EXPECT_EQ(ReadWholeFile(pdf, 10'000'000).substr(0, 5), "%PDF-");
        EXPECT_EQ(with({"--csv", csv}), kExitDone);
    }
    ASSERT_EQ(Lumera({"pnota", "stampa", "--da", "2", "--a", "2", "--csv", csv}).code, kExitDone);
    const std::string rows = ReadWholeFile(csv, 100'000);
    EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 2) << "titles and one entry: " << rows;
    ASSERT_EQ(Lumera({"tabelle", "piano-conti", "--csv", csv}).code, kExitDone);
    EXPECT_THAT(ReadWholeFile(csv, 1'000'000), HasSubstr("Erario c/IVA"));
}

INSTANTIATE_TEST_SUITE_P(Engines, TableCommandTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

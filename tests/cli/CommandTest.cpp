#include "tests/cli/CommandFixture.h"

#include "cli/CommandLine.h"
#include "tarvodlg/base/Files.h"

#include <sys/wait.h>

namespace {

using nlohmann::json;
using testing::HasSubstr;

std::string Samples()
{
    return LUMERA_SOURCE_DIR "/samples/fatture";
}

// --- how commands end
// -------------------------------------------------------------------------------------------------

struct UsageCase {
    const char *name;
    std::vector<std::string> words;
    const char *message; ///< part of it
};

void PrintTo(const UsageCase &test, std::ostream *out)
{
    *out << test.name;
}

class UsageTest : public testing::TestWithParam<UsageCase> {};

TEST_P(UsageTest, WrongUseEndsWithTwoAndSaysWhatIsWrong)
{
    for (const bool as_json : {false, true}) {
        std::vector<std::string> words = GetParam().words;
        if (as_json) words.insert(words.begin(), "--json");
        const CommandRun run = RunWords(words);
        EXPECT_EQ(run.code, kExitUsage);
        EXPECT_THAT(run.err, HasSubstr(GetParam().message));
        if (!run.out.empty()) {
            EXPECT_TRUE(as_json);
            EXPECT_EQ(run.Json().at("esito"), "uso errato");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, UsageTest,
    testing::Values(UsageCase{"NoCommand", {}, "Manca il comando"}, UsageCase{"UnknownCommand", {"paghe"}, "paghe"},
                    UsageCase{"UnknownAction", {"pnota", "annulla"}, "annulla"},
                    UsageCase{"UnknownOption", {"pnota", "elenco", "--tutto"}, "--tutto"},
                    UsageCase{"NoNumber", {"pnota", "mostra"}, "numero"},
                    UsageCase{"NumberInWords", {"pnota", "mostra", "dodici"}, "dodici"},
                    UsageCase{"HugeNumber", {"pnota", "mostra", "99999999999999999999"}, "99999999999999999999"},
                    UsageCase{
                        "NoSuchDay", {"pnota", "elenco", "--dal", "2026-02-30"}, "--dal: «2026-02-30» non è una data"},
                    UsageCase{"AmericanDate", {"scadenze", "elenco", "--al", "12/31/2026"}, "--al"},
                    UsageCase{"BadToday", {"--oggi", "domani", "pnota", "elenco"}, "--oggi"},
                    UsageCase{"BothSides", {"scadenze", "elenco", "--clienti", "--fornitori"}, "si escludono"},
                    UsageCase{"NothingToRegister", {"fatture", "registra"}, "--tutte"},
                    UsageCase{"AllAndOne", {"fatture", "registra", "1", "--tutte"}, "--tutte"},
                    UsageCase{"BytesThatAreNoText", {"pnota", "\xff\xfe"}, "lumera"}),
    [](const auto &test) { return std::string(test.param.name); });

class ExitCodeTest : public CommandTest {};

TEST_P(ExitCodeTest, ArchivesThatCannotBeOpenedEndWithThree)
{
    const std::string text_file = Written("archivio.txt", std::string(5000, 'x')).string(),
                      empty = (Folder() / "vuota").string();
    std::filesystem::create_directories(empty);
    for (const std::string &archive :
         {(Folder() / "manca").string(), empty, text_file, std::string("postgresql:///x?host=/nonexistent")}) {
        const CommandRun run = RunWords({"--archivio", archive, "--json", "pnota", "elenco"});
        EXPECT_EQ(run.code, kExitFailed) << archive;
        EXPECT_EQ(run.Json().at("esito"), "errore");
    }
    EXPECT_TRUE(std::filesystem::is_empty(empty)) << "looking for an archive makes none";
    EXPECT_EQ(ReadWholeFile(text_file, 10'000), std::string(5000, 'x'));
    const CommandRun secret =
        RunWords({"--archivio", "postgresql://u:segreto@/x?host=/nonexistent", "pnota", "elenco"});
    EXPECT_EQ(secret.code, kExitFailed);
    EXPECT_THAT(secret.out + secret.err, testing::Not(HasSubstr("segreto")));
}

TEST_P(ExitCodeTest, NewerArchiveIsLeftAlone)
{
    Run("INSERT INTO admin.versione (ver_numero, ver_data, ver_programma) VALUES (999, '2030-01-01', '9.9')");
    for (const std::vector<std::string> &words :
         {std::vector<std::string>{"pnota", "elenco"}, {"archivio", "verifica"}, {"fatture", "importa", Samples()}}) {
        const CommandRun run = Lumera(words);
        EXPECT_EQ(run.code, kExitFailed);
        EXPECT_THAT(run.err, HasSubstr("versione più recente del programma"));
    }
    EXPECT_EQ(Count("allegati"), "0");
}

TEST_P(ExitCodeTest, WhatTheBooksRefuseEndsWithOneAndChangesNothing)
{
    ASSERT_EQ(Store(PurchaseJson("1")).code, kExitDone);
    const std::string unbalanced =
        Written("s.json",
                R"({"data":"2026-03-15","cau":61,"righe":[{"mas":170,"con":1,"sot":1,"tipo":"D","importo":5}]})")
            .string();
    const std::string again = Written("d.json", PurchaseJson("1")).string();
    const std::string in_2025 = Written("a.json", R"({"data":"2025-03-15","cau":61})").string();
    struct Case {
        std::vector<std::string> words;
        const char *message;
    };
    for (const Case &test :
         {Case{{"pnota", "mostra", "99"}, "Il movimento n. 99 non esiste."},
          Case{{"pnota", "elimina", "99"}, "Il movimento n. 99 non esiste."},
          Case{{"pnota", "elimina", "1"}, "Eliminazione non confermata"},
          Case{{"pnota", "registra", unbalanced}, "non quadra"}, Case{{"pnota", "registra", again}, "già registrato"},
          Case{{"pnota", "registra", in_2025}, "fuori esercizio"},
          Case{{"scadenze", "genera", "1"}, "ha già 2 scadenze"}, Case{{"scadenze", "genera", "99"}, "non esiste"},
          Case{{"fatture", "registra", "99"}, "99 non esiste"},
          Case{{"fatture", "esporta", "99", "--xml", (Folder() / "x").string()}, "99 non esiste"}}) {
        SCOPED_TRACE(test.message);
        std::vector<std::string> words = {"--json"};
        words.insert(words.end(), test.words.begin(), test.words.end());
        const CommandRun run = Lumera(words);
        EXPECT_EQ(run.code, kExitRefused);
        EXPECT_THAT(run.err, HasSubstr(test.message));
        EXPECT_THAT(run.Json().at("messaggio").get<std::string>(), HasSubstr(test.message));
    }
    EXPECT_EQ(Count("pnota1"), "1");
    EXPECT_EQ(Count("scadenze"), "2");
    EXPECT_EQ(Lumera({"--si", "pnota", "registra", unbalanced}).code, kExitDone) << "the bookkeeper insists";
    EXPECT_EQ(Lumera({"--si", "pnota", "registra", again}).code, kExitDone);
    EXPECT_EQ(Lumera({"archivio", "verifica"}).code, kExitRefused) << "an unbalanced entry is not forgotten";
}

TEST_P(ExitCodeTest, TermsThatLeaveDatesToTypeAreTold)
{
    Run("UPDATE admin.pagament SET pag_ini = 'A VISTA' WHERE pag_codice = 45");
    const char *why = "Il pagamento 45 non ha una decorrenza: le date vanno scritte a mano. Nessuna scadenza generata.";
    EXPECT_THAT(Store(PurchaseJson("1")).out, HasSubstr(why));
    const json stored = Store(PurchaseJson("2"), {"--json"}).Json();
    EXPECT_EQ(stored.at("avviso"), why);
    EXPECT_EQ(stored.at("scadenze"), 0);
    Run("UPDATE admin.pagament SET pag_ini = 'DATA FATTURA', pag_num_rate = 60, pag_iva_separata = 1 WHERE pag_codice "
        "= 45");
    EXPECT_EQ(Store(PurchaseJson("3")).code, kExitDone) << "too many for the schedule is no reason to refuse the entry";
    EXPECT_EQ(Count("scadenze"), "0");
}

TEST_P(ExitCodeTest, EntryOfAClosedYearIsNotDeletedUnasked)
{
    ASSERT_EQ(Store(PurchaseJson("1")).code, kExitDone);
    Run("UPDATE admin.pnota1 SET pno_operazione = 1");
    Run("UPDATE admin.pnotaro2 SET row_operazione = 1");
    EXPECT_EQ(Lumera({"pnota", "elimina", "1"}).code, kExitRefused);
    EXPECT_EQ(Count("pnota1"), "1");
    const CommandRun run = Lumera({"--si", "pnota", "elimina", "1"});
    EXPECT_EQ(run.code, kExitDone);
    EXPECT_THAT(run.err, HasSubstr("esercizio con chiusura effettuata"));
}

TEST_P(ExitCodeTest, FilesThatCannotBeReadOrWrittenEndWithThree)
{
    ASSERT_EQ(Lumera({"fatture", "importa", Samples() + "/IT02565617350_00A24.xml"}).code, kExitDone);
    const std::string nowhere = (Folder() / "manca" / "file").string(), there = Written("copia.db", "mia").string();
    for (const std::vector<std::string> &words : {std::vector<std::string>{"pnota", "registra", nowhere},
                                                  {"pnota", "registra", Folder().string()},
                                                  {"archivio", "copia", nowhere},
                                                  {"archivio", "copia", there},
                                                  {"fatture", "esporta", "1", "--xml", nowhere},
                                                  {"fatture", "esporta", "1", "--p7m", nowhere}}) {
        const CommandRun run = Lumera(words);
        EXPECT_EQ(run.code, kExitFailed) << words[1] << ' ' << words.back();
        EXPECT_NE(run.err, "");
    }
    EXPECT_EQ(ReadWholeFile(there, 100), "mia") << "a copy never overwrites";
}

TEST_P(ExitCodeTest, ImportReportsEveryFileAndEndsWithOneWhenOneIsRefused)
{
    const CommandRun run = Lumera(
        {"--json", "fatture", "importa", LUMERA_SOURCE_DIR "/samples/guasti", (Folder() / "manca.xml").string()});
    EXPECT_EQ(run.code, kExitRefused);
    const json report = run.Json();
    EXPECT_EQ(report.at("file").size(), 7u);
    EXPECT_EQ(report.at("caricate"), 1) << "the one with eight rates";
    EXPECT_EQ(report.at("rifiutate"), 5);
    EXPECT_EQ(report.at("ignorate"), 1) << "the delivery receipt";
    EXPECT_THAT(run.err, HasSubstr("Vuoi Continuare ? -> No"));
    EXPECT_EQ(Lumera({"--si", "fatture", "importa", LUMERA_SOURCE_DIR "/samples/guasti/IT05098487365_2190V.xml"}).code,
              kExitDone);
}

INSTANTIATE_TEST_SUITE_P(Engines, ExitCodeTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST(OutputTest, FullDiskBehindStandardOutputIsNotPassedOver)
{
    const int status = std::system("'" LUMERA_PROGRAM "' --help > /dev/full 2> /dev/null");
    EXPECT_EQ(WEXITSTATUS(status), kExitFailed);
}

// --- the main road
// ----------------------------------------------------------------------------------------------------

class MainRoadTest : public CommandTest {};

TEST_P(MainRoadTest, ReceivedInvoicesBecomeEntriesAndASecondRunStoresNothing)
{
    const CommandRun import = Lumera({"--json", "fatture", "importa", Samples()});
    EXPECT_EQ(import.code, kExitDone) << import.err;
    EXPECT_EQ(import.Json().at("caricate"), 13);
    const CommandRun registration = Lumera({"--json", "fatture", "registra", "--tutte", "--nuovo-fornitore"});
    EXPECT_EQ(registration.code, kExitDone) << registration.err;
    EXPECT_EQ(registration.Json().at("registrate"), 14);

    const json invoices = Lumera({"--json", "fatture", "elenco"}).Json();
    EXPECT_EQ(invoices.at("totale"), 14);
    for (const json &row : invoices.at("fatture")) EXPECT_EQ(row.at("stato"), "registrata") << row.dump();
    EXPECT_EQ(Lumera({"--json", "fatture", "elenco", "--da-registrare"}).Json().at("fatture").size(), 0u);

    const json entries = Lumera({"--json", "pnota", "elenco"}).Json().at("movimenti");
    ASSERT_EQ(entries.size(), 14u);
    EXPECT_TRUE(std::is_sorted(entries.rbegin(), entries.rend(), [](const json &a, const json &b) {
        return a.at("prot") < b.at("prot");
    })) << "protocols follow the dates";
    for (const json &entry : entries) {
        EXPECT_EQ(entry.at("dare"), entry.at("avere"));
        const json whole = Lumera({"--json", "pnota", "mostra", entry.at("codice").dump()}).Json();
        EXPECT_EQ(whole.at("tot_doc"), entry.at("tot_doc"));
        EXPECT_EQ(whole.at("allegati").size(), 1u);
    }
    const json instalments = Lumera({"--json", "scadenze", "elenco", "--fornitori", "--aperte"}).Json();
    EXPECT_EQ(instalments.at("totale").dump(), Count("scadenze"));
    const json check = Lumera({"--json", "archivio", "verifica"}).Json();
    EXPECT_EQ(check.at("segnalazioni").size(), 0u) << check.dump();
    EXPECT_EQ(check.at("movimenti"), 14);

    EXPECT_EQ(Lumera({"--json", "fatture", "importa", Samples()}).Json().at("gia_presenti"), 13);
    const json second = Lumera({"--json", "fatture", "registra", "--tutte", "--nuovo-fornitore"}).Json();
    EXPECT_EQ(second.at("registrate"), 0);
    EXPECT_EQ(second.at("gia_registrate"), 14);
    EXPECT_EQ(Count("pnota1"), "14");

    const std::string copy = (Folder() / "copia.db").string();
    ASSERT_EQ(Lumera({"--json", "archivio", "copia", copy}).code, kExitDone);
    EXPECT_EQ(RunWords({"--archivio", copy, "--json", "archivio", "verifica"}).Json().at("movimenti"), 14);
    EXPECT_EQ(RunWords({"--archivio", copy, "--json", "pnota", "elenco"}).Json().at("movimenti"), entries);
}

TEST_P(MainRoadTest, TextListingsHaveTheSameFigures)
{
    ASSERT_EQ(Lumera({"fatture", "importa", Samples() + "/IT02565617350_00A24.xml"}).code, kExitDone);
    EXPECT_THAT(Lumera({"fatture", "registra", "1"}).out,
                HasSubstr("movimento 1, protocollo 1 ACQUISTI, righe IVA 1, scadenze 2"));
    EXPECT_THAT(Lumera({"fatture", "elenco"}).out, HasSubstr("1.478,64"));
    EXPECT_THAT(Lumera({"pnota", "elenco"}).out, HasSubstr("1.478,64"));
    EXPECT_THAT(Lumera({"pnota", "mostra", "1"}).out, HasSubstr("Utensileria Marzavola"));
    EXPECT_THAT(Lumera({"scadenze", "elenco"}).out, HasSubstr("da pagare 1.478,64"));
    EXPECT_THAT(Lumera({"archivio", "verifica"}).out, HasSubstr("Nessuna anomalia."));
    EXPECT_EQ(Lumera({"fatture", "registra", "1"}).code, kExitRefused)
        << "named by its number it is asked for, and No is the default";
    EXPECT_EQ(Count("pnota1"), "1");
}

class FolderTest : public CommandTest {};

TEST_P(FolderTest, CreatedArchivesAreWholeOrNotThere)
{
    const std::string folder = (Folder() / "nuova").string();
    EXPECT_EQ(RunWords({"archivio", "crea", folder, "--ditta", "Rossi S.r.l.", "--piva", "01234567890"}).code,
              kExitRefused)
        << "wrong check digit";
    EXPECT_EQ(RunWords({"archivio", "crea", folder}).code, kExitUsage);
    EXPECT_FALSE(std::filesystem::exists(folder));
    const CommandRun made =
        RunWords({"--json", "archivio", "crea", folder, "--demo", "--anno", "2026", "--movimenti", "40"});
    ASSERT_EQ(made.code, kExitDone) << made.err;
    EXPECT_EQ(made.Json().at("anno"), 2026);
    const json check = RunWords({"--archivio", folder, "--json", "archivio", "verifica"}).Json();
    EXPECT_EQ(check.at("segnalazioni").size(), 0u) << check.dump();
    EXPECT_GE(check.at("movimenti").get<int>(), 40);
    EXPECT_NE(RunWords({"archivio", "crea", folder, "--demo"}).code, kExitDone) << "there already is one";
}

INSTANTIATE_TEST_SUITE_P(Engines, FolderTest, testing::Values(SAEngine::SQLite), TestEngineName);

TEST_P(MainRoadTest, EveryActionPrintsOneDocument)
{
    ASSERT_EQ(Lumera({"fatture", "importa", Samples() + "/IT06186527153_E4187.xml.p7m"}).code, kExitDone);
    const std::string xml = (Folder() / "f.xml").string(), p7m = (Folder() / "f.p7m").string();
    EXPECT_EQ(Lumera({"--json", "fatture", "esporta", "1", "--xml", xml}).Json().at("file"), xml);
    EXPECT_EQ(Lumera({"fatture", "esporta", "1", "--p7m", p7m, "--json"}).Json().at("file"), p7m)
        << "the option may come last";
    EXPECT_EQ(ReadWholeFile(p7m, 1'000'000), ReadWholeFile(Samples() + "/IT06186527153_E4187.xml.p7m", 1'000'000));
    const json stored = Store(PurchaseJson("1"), {"--json"}).Json();
    EXPECT_EQ(stored.at("codice"), 1);
    EXPECT_EQ(stored.at("scadenze"), 2);
    Run("DELETE FROM admin.scadenze");
    EXPECT_EQ(Lumera({"--json", "scadenze", "genera", "1"}).Json().at("scadenze"), 2);
    EXPECT_EQ(Lumera({"--json", "scadenze", "elenco", "--clienti"}).Json().at("scadenze"), json::array());
    EXPECT_EQ(Lumera({"--json", "pnota", "elenco", "--dal", "16/03/2026"}).Json().at("totale"), 0);
    EXPECT_EQ(Lumera({"--json", "pnota", "elenco", "--dal", "2026-03-15", "--al", "2026-03-15", "--causale", "21"})
                  .Json()
                  .at("totale"),
              1);
}

TEST_P(MainRoadTest, FailureInTheMiddleOfAListLeavesOneDocumentAndWhatWasDoneBefore)
{
    ASSERT_EQ(
        Lumera({"fatture", "importa", Samples() + "/IT08102747378_00031.xml", Samples() + "/IT05098487365_3307V.xml",
                Samples() + "/IT02565617350_00A31.xml", Samples() + "/IT02565617350_00A24.xml"})
            .code,
        kExitDone);
    Run("CREATE UNIQUE INDEX prova_una_rata ON admin.scadenze (sca_pno, sca_fornitore)"); // refuses two instalments
    Run("UPDATE admin.fornito1 SET for_pag = 41 WHERE for_codice = 1");
    Run("UPDATE admin.fornito1 SET for_pag = 45 WHERE for_codice = 8");
    const CommandRun run = Lumera({"--json", "fatture", "registra", "--tutte"});
    EXPECT_EQ(run.code, kExitFailed);
    const json document = run.Json();
    EXPECT_EQ(document.at("fatture").size(), 2u) << "the two before it, by date";
    EXPECT_EQ(document.at("esito"), "errore");
    EXPECT_EQ(Count("pnota1"), "2");
    EXPECT_EQ(Lumera({"archivio", "verifica"}).code, kExitDone);
}

// The program itself: a document on standard input, data on standard output, everything else on standard error.
TEST_P(MainRoadTest, ProgramWorksInAPipe)
{
    const std::string file = Written("movimento.json", PurchaseJson("1")).string(), out = (Folder() / "out").string();
    const std::string command = fmt::format("'{}' --archivio '{}' --json pnota registra - < '{}' > '{}' 2> /dev/null",
                                            LUMERA_PROGRAM, Archive(), file, out);
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), kExitDone);
    EXPECT_EQ(json::parse(ReadWholeFile(out, 10'000)).at("prot"), 1);
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), kExitRefused) << "the same document again";
    EXPECT_EQ(json::parse(ReadWholeFile(out, 10'000)).at("esito"), "rifiutato");
    EXPECT_EQ(Count("pnota1"), "1");
}

// --- deletion and protocols
// -------------------------------------------------------------------------------------------

TEST_P(MainRoadTest, LastProtocolIsGivenBackAndAnotherLeavesANamedGap)
{
    for (const char *number : {"1", "2", "3"}) ASSERT_EQ(Store(PurchaseJson(number)).code, kExitDone);
    EXPECT_EQ(Lumera({"--json", "--si", "pnota", "elimina", "3"}).Json().at("eliminato"), 3);
    EXPECT_EQ(Count("scadenze"), "4") << "with its open instalments";
    EXPECT_EQ(Store(PurchaseJson("4"), {"--json"}).Json().at("prot"), 3);
    EXPECT_EQ(Lumera({"archivio", "verifica"}).code, kExitDone);

    ASSERT_EQ(Lumera({"--si", "pnota", "elimina", "2"}).code, kExitDone);
    const CommandRun check = Lumera({"--json", "archivio", "verifica"});
    EXPECT_EQ(check.code, kExitRefused);
    const json faults = check.Json().at("segnalazioni");
    ASSERT_EQ(faults.size(), 1u) << faults.dump();
    EXPECT_THAT(faults[0].at("dove").get<std::string>(), HasSubstr("2"));
}

TEST_P(MainRoadTest, EntryWithAPaidInstalmentIsNotDeleted)
{
    ASSERT_EQ(Store(PurchaseJson("1")).code, kExitDone);
    Run("UPDATE admin.scadenze SET sca_pagato = 1 WHERE sca_num = 1");
    EXPECT_EQ(Lumera({"--si", "pnota", "elimina", "1"}).code, kExitRefused);
    EXPECT_EQ(Count("pnota1"), "1");
    EXPECT_EQ(Count("scadenze"), "2");
}

INSTANTIATE_TEST_SUITE_P(Engines, MainRoadTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

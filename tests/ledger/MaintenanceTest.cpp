#include "ledger/Maintenance.h"
#include "ledger/EntryEditing.h"
#include "ledger/EntryStorage.h"
#include "ledger/FiscalPrinterLog.h"
#include "ledger/Renumbering.h"
#include "ledger/VatLines.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvolumera/Attachments.h"
#include "tarvolumera/Schedule.h"
#include "tests/support/TestArchive.h"

#include <gmock/gmock.h>

#include <fmt/format.h>
#include <map>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class MaintenanceTest : public ArchiveTest {
  protected:
    /// Stores a purchase of 122.00 and gives its number.
    long Store(int day, int month, const std::string &document)
    {
        PNOTA entry;
        sqlpno.Blank(Cmd(), &entry);
        entry.pno_data = entry.pno_data_doc = DateToJulian(day, month, 2026);
        entry.pno_cli_for = 1;
        EnterCausale(Cmd(), &entry, 21);
        EnterDocumentNumber(&entry, document);
        entry.iva[0].impo = 100;
        EnterVatCode(Cmd(), &entry, 0, 22);
        EXPECT_TRUE(StoreEntry(Cmd(), &entry, true).stored);
        return entry.pno_codice;
    }

    std::filesystem::path Written(const std::string &text)
    {
        const std::filesystem::path file = Folder() / "chiusure.txt";
        WriteFileWhole(file, text);
        return file;
    }

    std::string Entries() { return Value("SELECT COUNT(*) FROM admin.pnota1"); }
    std::string Log() { return ReadWholeFile(DateCheckLog(), 100'000); }
};

// --- date check
// --------------------------------------------------------------------------------------------------------

TEST_P(MaintenanceTest, EveryDateOutsideThePeriodHasItsLine)
{
    const long first = Store(15, 3, "1"), second = Store(10, 4, "2");
    Run(fmt::format("UPDATE admin.pnota1 SET pno_data_doc = '2025-12-31', pno_data_pag = '2027-01-01',"
                    " pno_data_ret = '2025-01-01' WHERE pno_codice = {}",
                    first));
    Run(fmt::format("UPDATE admin.pnotaro2 SET row_d_doc = NULL, row_data = '2026-03-01' WHERE row_codice = {}"
                    " AND row_idx = 2",
                    first));
    Run(fmt::format("UPDATE admin.pnota1 SET pno_data_doc = NULL WHERE pno_codice = {}", second));
    Run(fmt::format("UPDATE admin.pnotaro2 SET row_d_doc = '2026-03-15' WHERE row_codice = {}", second));
    Run(fmt::format("UPDATE admin.pnotaro2 SET row_d_doc = '2026-04-11' WHERE row_codice = {} AND row_idx = 1",
                    second));

    user_.Expect(fmt::format(" Trovati 5 errori!\n\nConsultare il file {}", DateCheckLog().string()));
    // Both bounds belong to the period.
    EXPECT_EQ(CheckDate(DateToJulian(15, 3, 2026), DateToJulian(10, 4, 2026)), 5);
    EXPECT_EQ(Log(), fmt::format("Movimento {0} - Data Documento fuori range\r\n"
                                 "Movimento {0} - Data Pagamento fuori range\r\n"
                                 "Movimento {0} - Data Documento Rettifica range\r\n"
                                 "Riga Movimento {0} : 2- Data Registrazione fuori range\r\n"
                                 "Riga Movimento {1} : 1 - Data Documento fuori range\r\n",
                                 first, second));
    EXPECT_THAT(user_.progress, testing::IsSupersetOf({"Controllo Date Movimenti", "Controllo dati corso..."}));
}

TEST_P(MaintenanceTest, CleanCheckReplacesTheOldLogAndSaysNothing)
{
    const long number = Store(15, 3, "1");
    user_.Expect(fmt::format(" Trovati {} errori!\n\nConsultare il file {}", 8, DateCheckLog().string()));
    EXPECT_EQ(CheckDate(DateToJulian(1, 4, 2026), DateToJulian(30, 4, 2026)), 8) << "header and three rows, two dates";
    EXPECT_THAT(Log(), HasSubstr(fmt::format("Movimento {} - Data Registrazione fuori range\r\n", number)));
    EXPECT_EQ(CheckDate(DateToJulian(1, 1, 2026), DateToJulian(31, 12, 2026)), 0);
    EXPECT_EQ(Log(), "");
}

// --- renumbering
// -------------------------------------------------------------------------------------------------------

struct PlanCase {
    const char *name;
    std::vector<long> numbers;
    std::size_t moves; ///< no more than these
};

void PrintTo(const PlanCase &test, std::ostream *out)
{
    *out << test.name;
}

class PlanTest : public testing::TestWithParam<PlanCase> {};

TEST_P(PlanTest, EveryMoveGoesToAFreeNumberAndAllEndInOrder)
{
    const PlanCase &test = GetParam();
    std::map<long, long> at; // number -> which entry
    for (std::size_t i = 0; i < test.numbers.size(); ++i) at[test.numbers[i]] = static_cast<long>(i) + 1;
    const std::vector<NumberMove> moves = PlanRenumbering(test.numbers);
    EXPECT_EQ(moves.size(), test.moves);
    for (const NumberMove &move : moves) {
        ASSERT_TRUE(at.contains(move.from)) << move.from;
        ASSERT_FALSE(at.contains(move.to)) << move.from << " onto " << move.to;
        at[move.to] = at.extract(move.from).mapped();
    }
    for (std::size_t i = 0; i < test.numbers.size(); ++i)
        EXPECT_EQ(at[static_cast<long>(i) + 1], static_cast<long>(i) + 1);
    EXPECT_EQ(at.size(), test.numbers.size());
}

INSTANTIATE_TEST_SUITE_P(Cases, PlanTest,
                         testing::Values(PlanCase{"Nothing", {}, 0}, PlanCase{"InOrder", {1, 2, 3}, 0},
                                         PlanCase{"Gaps", {2, 5, 9}, 3}, PlanCase{"Swap", {2, 1}, 3},
                                         PlanCase{"Circle", {2, 3, 1}, 4}, PlanCase{"TwoCircles", {2, 1, 4, 3}, 6},
                                         PlanCase{"CircleAndGap", {2, 1, 7}, 4}, PlanCase{"Far", {2147483640}, 1},
                                         PlanCase{"Reversed", {5, 4, 3, 2, 1}, 6}),
                         [](const auto &test) { return std::string(test.param.name); });

TEST_P(MaintenanceTest, WhateverRefersToAnEntryFollowsIt)
{
    const long late = Store(20, 5, "late"), early = Store(10, 2, "early"), middle = Store(10, 2, "middle");
    ASSERT_LT(early, middle);
    Run(fmt::format("INSERT INTO admin.centri1 (cdc_codice, cdc_desc) SELECT 77, 'Prova' WHERE NOT EXISTS"
                    " (SELECT 1 FROM admin.centri1 WHERE cdc_codice = 77)"));
    Run(fmt::format("INSERT INTO admin.pnotacdc VALUES ({}, 1, 2, 77, 100)", late));
    Run(fmt::format("INSERT INTO admin.pnotacoi (coi_codice, coi_pno) VALUES (1, {})", late));
    Run(fmt::format("INSERT INTO admin.pnotacor (cor_data, cor_sez, cor_pno) VALUES ('2026-05-20', 1, {})", late));
    Run(fmt::format("UPDATE admin.pnota1 SET pno_all = 44, pno_all_doc = 2 WHERE pno_codice = {}", late));
    PNOTA_ALLEGATO file;
    file.pat_pno = late;
    file.pat_fname = "late.pdf";
    file.pat_data = ToBytes("x");
    sqlpat.Store(Cmd(), &file);
    PNOTA_IMMAGINE image;
    image.pni_codice = late;
    image.pni_data = ToBytes("y");
    sqlpni.SqlTransaction(Cmd(), kInsert, &image);
    SCADENZE instalment;
    instalment.sca_relaz = kSupplier;
    instalment.sca_num = 1;
    instalment.sca_anno = 2026;
    instalment.sca_cli_for = 1;
    instalment.sca_data = DateToJulian(30, 6, 2026);
    instalment.sca_importo = 122;
    instalment.sca_pno = late;
    sqlsca.SqlTransaction(Cmd(), kInsert, &instalment);
    const std::string protocol = Value(fmt::format("SELECT pno_prot FROM admin.pnota1 WHERE pno_codice = {}", late));

    EXPECT_EQ(RenumberEntries(Cmd()), 3);
    EXPECT_EQ(Value("SELECT pno_doc FROM admin.pnota1 WHERE pno_codice = 1"), "early");
    EXPECT_EQ(Value("SELECT pno_doc FROM admin.pnota1 WHERE pno_codice = 2"), "middle") << "one day: by number";
    for (const char *text : {"SELECT pno_codice FROM admin.pnota1 WHERE pno_doc = 'late'",
                             "SELECT MAX(row_codice) FROM admin.pnotaro2 WHERE row_n_doc = 'late'",
                             "SELECT MIN(row_codice) FROM admin.pnotaro2 WHERE row_n_doc = 'late'",
                             "SELECT pcc_pno FROM admin.pnotacdc", "SELECT coi_pno FROM admin.pnotacoi",
                             "SELECT cor_pno FROM admin.pnotacor", "SELECT pat_pno FROM admin.pnotaall",
                             "SELECT pni_codice FROM admin.pnotaim1", "SELECT sca_pno FROM admin.scadenze",
                             "SELECT pno_codice FROM admin.pnota1 WHERE pno_all = 44 AND pno_all_doc = 2"})
        EXPECT_EQ(Value(text), "3") << text;
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotaro2"), "9");
    EXPECT_EQ(Value("SELECT pno_prot FROM admin.pnota1 WHERE pno_codice = 3"), protocol);
    EXPECT_EQ(RenumberEntries(Cmd()), 0);
}

TEST_P(MaintenanceTest, StationWithAnEntryOpenCannotStoreItOverTheOneThatHasItsNumberNow)
{
    const long late = Store(20, 5, "late");
    Store(10, 2, "early");
    PNOTA open;
    ASSERT_TRUE(sqlpno.Search(Cmd(), late, &open));
    long followed = late;
    RenumberEntries(Cmd(), &followed);
    EXPECT_EQ(followed, 2);
    EXPECT_THROW(sqlpno.SqlTransaction(Cmd(), kUpdate, &open), SAException);
    EXPECT_EQ(Value("SELECT pno_doc FROM admin.pnota1 WHERE pno_codice = 1"), "early");
}

// --- rewriting
// ---------------------------------------------------------------------------------------------------------

TEST_P(MaintenanceTest, RewritingDerivesAnewAndTellsWhatCannotBeWritten)
{
    const long good = Store(15, 3, "12"), bad = Store(16, 3, "13"), last = Store(17, 3, "14");
    Run("UPDATE admin.pnota1 SET pno_dare = 0, pno_paddoc = '', pno_tot_squ = 9");
    Run("UPDATE admin.pnotaro2 SET row_sez = 0, row_data = '2020-01-01'");
    const bool sqlite = Cmd()->Connection()->Engine() == SAEngine::SQLite;
    Cmd()->Connection()->ExecuteScript(
        sqlite
            ? fmt::format("CREATE TRIGGER guasto BEFORE UPDATE ON pnota1 WHEN OLD.pno_codice = {} BEGIN"
                          " SELECT RAISE(ABORT, 'guasto'); END;",
                          bad)
            : fmt::format("ALTER TABLE admin.pnota1 ADD CONSTRAINT guasto CHECK (pno_codice <> {} OR pno_tot_squ = 9)",
                          bad));
    constexpr int kTriggerRaised = 1811, kCheckViolated = 3505720; // 23514 in base 36
    user_.Expect(fmt::format("Errore di scrittura n. {} - Mov. N. {}", sqlite ? kTriggerRaised : kCheckViolated, bad));
    const RewriteResult result = RewriteEntries(Cmd());
    EXPECT_EQ(result.rewritten, 2);
    EXPECT_EQ(result.failed, 1);
    for (const long number : {good, last}) {
        const std::string where = fmt::format(" WHERE pno_codice = {}", number);
        EXPECT_EQ(Value("SELECT pno_dare FROM admin.pnota1" + where), "122");
        EXPECT_EQ(Value("SELECT pno_tot_squ FROM admin.pnota1" + where), "0");
        EXPECT_NE(Value("SELECT pno_paddoc FROM admin.pnota1" + where), "");
        EXPECT_EQ(Value(fmt::format("SELECT COUNT(*) FROM admin.pnotaro2 WHERE row_codice = {} AND row_sez > 0"
                                    " AND row_data = (SELECT pno_data FROM admin.pnota1 WHERE pno_codice = {})",
                                    number, number)),
                  "3");
    }
    EXPECT_EQ(Value(fmt::format("SELECT pno_tot_squ FROM admin.pnota1 WHERE pno_codice = {}", bad)), "9");
    EXPECT_THAT(user_.progress, testing::IsSupersetOf({"Attendere...", "Riscrittura Movimenti in Corso...."}));
}

// --- the offer
// ---------------------------------------------------------------------------------------------------------

const char *const kQuestions[] = {"Vuoi Controllare le date dei Movimenti di Prima Nota ?",
                                  "Vuoi Rinumerare i Movimenti di Prima Nota ?", "Vuoi riscrivere tutti i movimenti ?",
                                  "Vuoi Importare le fattura dai log Della Stampante Fiscale EPSON FP?"};

TEST_P(MaintenanceTest, OfferedOnlyWhenWantedAndOnce)
{
    OfferMaintenance(); // asks nothing
    Run("UPDATE admin.ditte SET dit_manutenzione = 1");
    ReloadCompany(Cmd());
    for (const char *question : kQuestions) user_.Expect(question, IDNO);
    OfferMaintenance();
    EXPECT_EQ(Value("SELECT dit_manutenzione FROM admin.ditte"), "0");
    OfferMaintenance();
    EXPECT_TRUE(std::all_of(user_.flags.begin(), user_.flags.end(),
                            [](unsigned flags) { return (flags & MB_DEFBUTTON2) != 0; }));
}

TEST_P(MaintenanceTest, OfferedBatchesRunAndAFailedOneIsOfferedAgain)
{
    Store(20, 5, "late");
    Store(10, 2, "early");
    Run("UPDATE admin.ditte SET dit_manutenzione = 1");
    ReloadCompany(Cmd());
    user_.Expect(kQuestions[0], IDYES);
    user_.ExpectDate("Dalla data", DateToJulian(1, 1, 2026));
    user_.ExpectDate("Alla data", DateToJulian(31, 12, 2026));
    user_.Expect(kQuestions[1], IDYES);
    user_.Expect(kQuestions[2], IDYES);
    user_.Expect(kQuestions[3], IDYES);
    user_.ExpectFiles({Written("nulla\n")});
    user_.Expect("Log della stampante fiscale, riga 1: il log deve cominciare con la riga STAMPANTE.");
    OfferMaintenance();
    EXPECT_EQ(Value("SELECT pno_doc FROM admin.pnota1 WHERE pno_codice = 1"), "early");
    EXPECT_TRUE(std::filesystem::exists(DateCheckLog()));
    EXPECT_EQ(Value("SELECT dit_manutenzione FROM admin.ditte"), "1");
}

// --- the fiscal printer
// ------------------------------------------------------------------------------------------------

constexpr const char *kPrinter = "STAMPANTE;EPSON FP-81II;3EPMC012345\n";

TEST_P(MaintenanceTest, ClosuresBecomeReceiptsAndAreKnownAgain)
{
    const std::filesystem::path file =
        Written(std::string("\xEF\xBB\xBF# till 1\r\n") + kPrinter +
                "CHIUSURA;0123;15/03/2026;1342,00\r\nIVA;22;1220,00\r\nIVA;10;110,00\r\nIVA;0;12,00;400\r\n"
                "CHIUSURA;124;2026-03-16;0,00\nCHIUSURA;125;17/03/2026;0,11\nIVA;22;0,11");
    ReceiptsImport import = ImportFiscalLog(Cmd(), file, 15);
    EXPECT_EQ(import.refusal, "");
    EXPECT_EQ(import.stored, 2);
    EXPECT_EQ(import.empty, 1);
    PNOTA entry;
    ASSERT_TRUE(sqlpno.Search(Cmd(), 1, &entry));
    EXPECT_EQ(entry.pno_reg, kReceipts);
    EXPECT_EQ(entry.pno_data, DateToJulian(15, 3, 2026));
    EXPECT_EQ(entry.pno_doc, "0123/3EPMC012345");
    EXPECT_DOUBLE_EQ(entry.pno_tot_doc, 1342);
    EXPECT_DOUBLE_EQ(entry.iva[0].impo, 1000);
    EXPECT_DOUBLE_EQ(entry.iva[0].imposta, 220);
    EXPECT_EQ(entry.iva[2].iva, 400);
    EXPECT_DOUBLE_EQ(entry.iva[2].imposta, 0);
    ASSERT_TRUE(sqlpno.Search(Cmd(), 2, &entry));
    EXPECT_DOUBLE_EQ(entry.pno_tot_doc, 0.11) << "not a cent is lost in taking the tax out";
    EXPECT_DOUBLE_EQ(entry.pno_dare, entry.pno_avere);

    import = ImportFiscalLog(Cmd(), file, 0);
    EXPECT_EQ(import.stored, 0);
    EXPECT_EQ(import.known, 2);
    EXPECT_EQ(Entries(), "2");
}

TEST_P(MaintenanceTest, RefusedEntryEndsTheImportWhichGoesOnLater)
{
    const std::filesystem::path file = Written(std::string(kPrinter) + "CHIUSURA;1;02/01/2026;1,22\nIVA;22;1,22\n"
                                                                       "CHIUSURA;2;31/12/2025;1,22\nIVA;22;1,22\n");
    Run("UPDATE admin.ditte SET dit_fuori_anno = 1");
    ReloadCompany(Cmd());
    const char *outside = "Data esterna all' esercizio corrente !\n\nVuoi Continuare ?";
    user_.Expect(outside, IDNO);
    EXPECT_THAT(ImportFiscalLog(Cmd(), file, 15).refusal, HasSubstr("Riga 4, chiusura 2 del 31/12/2025: "));
    EXPECT_EQ(Entries(), "1");
    user_.Expect(outside, IDYES);
    const ReceiptsImport again = ImportFiscalLog(Cmd(), file, 15);
    EXPECT_EQ(again.stored, 1);
    EXPECT_EQ(again.known, 1);
}

TEST_P(MaintenanceTest, CausaleAndCodesAreCheckedBeforeAnythingIsStored)
{
    const std::string day = std::string(kPrinter) + "CHIUSURA;1;02/01/2026;1,22\nIVA;22;1,22\n";
    EXPECT_THROW((void)ImportFiscalLog(Cmd(), Written(day), 21), SAException) << "a purchase";
    EXPECT_THROW((void)ImportFiscalLog(Cmd(), Written(day), 4711), SAException);
    for (const char *line : {"IVA;17;1,22", "IVA;22;1,22;4711", "IVA;22;1,22;400"}) {
        try {
            (void)ImportFiscalLog(Cmd(), Written(day + "CHIUSURA;2;03/01/2026;1,22\n" + line), 15);
            ADD_FAILURE() << line;
        } catch (const FileError &error) {
            EXPECT_THAT(error.what(), HasSubstr("riga 5: ")) << line;
        }
    }
    EXPECT_EQ(Entries(), "0");
}

INSTANTIATE_TEST_SUITE_P(Engines, MaintenanceTest, testing::ValuesIn(TestEngines()), TestEngineName);

struct LogCase {
    const char *name;
    std::string text; ///< after the line of the printer
    const char *message;
};

void PrintTo(const LogCase &test, std::ostream *out)
{
    *out << test.name;
}

class FiscalLogTest : public testing::TestWithParam<LogCase> {};

TEST_P(FiscalLogTest, RefusedWithLineAndReason)
{
    try {
        (void)ParseFiscalLog(kPrinter + GetParam().text, DateToJulian(1, 6, 2026));
        ADD_FAILURE() << "accepted";
    } catch (const FileError &error) {
        EXPECT_EQ(std::string(error.what()), std::string("Log della stampante fiscale, riga ") + GetParam().message);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FiscalLogTest,
    testing::Values(
        LogCase{"UnknownLine", "TOTALE;1,00\n", "2: riga «TOTALE» non riconosciuta."},
        LogCase{"OtherPrinter", "STAMPANTE;ALTRA;1\n", "2: non è una stampante EPSON FP."},
        LogCase{"SerialWithPath", "STAMPANTE;EPSON FP;../X\n", "2: matricola «../X» non valida."},
        LogCase{"VatFirst", "IVA;22;1,00\n", "2: riga IVA senza chiusura."},
        LogCase{"NumberZero", "CHIUSURA;0;02/01/2026;1,00\n", "2: numero di chiusura «0» non valido."},
        LogCase{"NumberHuge", "CHIUSURA;99999999999999999999;02/01/2026;1,00\n",
                "2: numero di chiusura «99999999999999999999» non valido."},
        LogCase{"NoSuchDay", "CHIUSURA;1;30/02/2026;1,00\n", "2: «30/02/2026» non è una data."},
        LogCase{"Future", "CHIUSURA;1;02/06/2026;1,00\n", "2: chiusura futura (02/06/2026)."},
        LogCase{"ThousandsPoint", "CHIUSURA;1;02/01/2026;1.000,00\n", "2: importo «1.000,00» non valido."},
        LogCase{"Negative", "CHIUSURA;1;02/01/2026;-1,00\n", "2: importo «-1,00» non valido."},
        LogCase{"OneDecimal", "CHIUSURA;1;02/01/2026;1,0\n", "2: importo «1,0» non valido."},
        LogCase{"FieldMissing", "CHIUSURA;1;02/01/2026\n", "2: 3 campi invece di 4."},
        LogCase{"SumDiffers", "CHIUSURA;1;02/01/2026;2,00\nIVA;22;1,99\n",
                "2: il totale è 2,00, le righe IVA fanno 1,99."},
        LogCase{"CutOff", "CHIUSURA;1;02/01/2026;2,00\n", "2: il totale è 2,00, le righe IVA fanno 0,00."},
        LogCase{"SumDiffersBeforeTheNext", "CHIUSURA;1;02/01/2026;2,00\nCHIUSURA;2;03/01/2026;0,00\n",
                "2: il totale è 2,00, le righe IVA fanno 0,00."},
        LogCase{"Twice", "CHIUSURA;1;02/01/2026;0,00\nCHIUSURA;01;03/01/2026;0,00\n", "3: chiusura 1 ripetuta."},
        LogCase{"RateInWords", "CHIUSURA;1;02/01/2026;2,00\nIVA;alta;2,00\n", "3: aliquota «alta» non valida."},
        LogCase{"NoRateNoCode", "CHIUSURA;1;02/01/2026;2,00\nIVA;0;2,00\n", "3: senza aliquota occorre il codice IVA."},
        LogCase{"ZeroLine", "CHIUSURA;1;02/01/2026;0,00\nIVA;22;0,00\n", "3: importo «0,00» non valido."},
        LogCase{"EightRates",
                "CHIUSURA;1;02/01/2026;8,00\nIVA;1;1,00\nIVA;2;1,00\nIVA;3;1,00\nIVA;4;1,00\nIVA;5;1,00\nIVA;6;1,00\n"
                "IVA;7;1,00\nIVA;8;1,00\n",
                "10: più di 7 righe IVA."},
        LogCase{"Binary", std::string("\0\x1B[31m\n", 6), "2: caratteri non ammessi."},
        LogCase{"LongLine", "#" + std::string(200, 'x') + "\n", "2: più di 200 caratteri."}),
    [](const auto &test) { return std::string(test.param.name); });

TEST(EmptyLogTest, EmptyFileIsRefused)
{
    EXPECT_THROW((void)ParseFiscalLog("", 1), FileError);
    EXPECT_THROW((void)ParseFiscalLog("# only words\n\n", 1), FileError);
}

} // namespace

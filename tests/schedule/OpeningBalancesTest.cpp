#include "schedule/OpeningBalances.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/print/RowWriter.h"
#include "tarvolumera/Schedule.h"
#include "tests/support/TestArchive.h"

#include <gmock/gmock.h>

#include <fmt/format.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::filesystem::path Sample(const std::string &name)
{
    return std::filesystem::path(LUMERA_SOURCE_DIR "/samples/saldi") / name;
}

class OpeningBalancesTest : public ArchiveTest {
  protected:
    /// "7: cliente non trovato ..." for each row that was not taken.
    static std::vector<std::string> Reasons(const OpeningBalancesOutcome &outcome)
    {
        std::vector<std::string> reasons;
        for (const DiscardedBalance &balance : outcome.discarded)
            reasons.push_back(fmt::format("{}: {}", balance.row.row, balance.reason));
        return reasons;
    }

    /// "0/1 2026-01-31 12450.30", a line for each instalment in the order of their numbers.
    std::vector<std::string> Stored(short side)
    {
        std::vector<std::string> lines;
        sqlsca.ForEach(
            Cmd(), " WHERE sca_relaz = :rel ORDER BY sca_num",
            [&](SACommand &query) { query.Param("rel").setAsLong(side); },
            [&](const SCADENZE &record) {
                EXPECT_EQ(record.sca_desc, "SALDO INIZIALE");
                EXPECT_EQ(record.sca_emessa, user_.Today());
                EXPECT_EQ(record.sca_anno, Year(record.sca_data));
                EXPECT_EQ(record.sca_pagato, 0);
                lines.push_back(fmt::format("{} {} {:.2f}", record.sca_cli_for, FormatIsoDate(record.sca_data),
                                            record.sca_importo));
                return true;
            });
        return lines;
    }

    /// A sheet with the titles REL, CODICE, RAG_SOCIALE, PIVA, CODFIS, SALDO and DATA and cells of text.
    std::filesystem::path Sheet(const std::vector<std::vector<std::string>> &rows,
                                const std::vector<std::string> &titles = {"REL", "CODICE", "RAG_SOCIALE", "PIVA",
                                                                          "CODFIS", "SALDO", "DATA"})
    {
        std::vector<RowColumn> columns;
        for (const std::string &title : titles) columns.push_back({title, ColumnFormat::Text});
        const std::filesystem::path file = Folder() / "saldi.xlsx";
        const auto writer = OpenXlsx(file, "Saldi", columns);
        for (const auto &row : rows) {
            std::vector<ReportValue> values;
            for (const std::string &text : row) values.push_back(ReportValue(text));
            writer->Add(values);
        }
        writer->Finish();
        return file;
    }

    std::filesystem::path LogFolder() const { return lumera_db_folder / "log"; }
    bool HasLog() const { return std::filesystem::exists(LogFolder()) && !std::filesystem::is_empty(LogFolder()); }
};

TEST_P(OpeningBalancesTest, TakesAListAsPeopleKeepThemFromEveryFormat)
{
    for (const char *name : {"saldi-iniziali.xlsx", "saldi-iniziali.xls", "saldi-iniziali-95.xls"}) {
        SCOPED_TRACE(name);
        Run("DELETE FROM admin.scadenze");
        const OpeningBalancesOutcome outcome = ImportOpeningBalances(Cmd(), Sample(name));
        EXPECT_EQ(outcome.stored, 10);
        EXPECT_DOUBLE_EQ(outcome.customers, 16080.86);
        EXPECT_DOUBLE_EQ(outcome.suppliers, 4544.56);
        EXPECT_THAT(Stored(kCustomer),
                    ElementsAre("1 2026-01-31 12450.30", "2 2026-02-28 1234.56", "32 2026-03-31 1250.50",
                                "8 2026-01-10 -150.00", "36 2026-02-28 75.50", "12 2026-01-31 610.00",
                                "12 2026-01-31 610.00"));
        // Suppliers 11 and 24 have the same VAT number: the one made last is meant.
        EXPECT_THAT(Stored(kSupplier),
                    ElementsAre("24 2025-12-31 10.00", "12 2026-01-15 1234.56", "19 2026-02-28 3300.00"));
        const std::string nobody = "cliente non trovato per partita IVA, codice fiscale o ragione sociale";
        EXPECT_THAT(Reasons(outcome),
                    ElementsAre("7: " + nobody, "12: SALDO a zero", "13: DATA «31/02/2026» impossibile",
                                "14: SALDO «da verificare» non è un importo",
                                "15: REL sconosciuta «BANCA»: deve essere CLIENTE o FORNITORE",
                                "18: SALDO «#DIV/0!» non è un importo", "19: REL mancante"));
    }
    EXPECT_THAT(user_.progress, testing::IsSupersetOf({"Importazione Scadenze", "Importazione Scadenze in corso..."}));
}

TEST_P(OpeningBalancesTest, TheLogSaysWhichRowAndWhy)
{
    const OpeningBalancesOutcome outcome = ImportOpeningBalances(Cmd(), Sample("saldi-iniziali.xls"));
    EXPECT_EQ(outcome.log, LogFolder() / "scadlog_20260601_000000.txt");
    const std::string log = ReadWholeFile(outcome.log, 100'000);
    EXPECT_THAT(log, testing::StartsWith(
                         " Riga 00007 - CLIENTE    -     480.00 - Ignotelli Arredi S.r.l.: cliente non trovato"));
    EXPECT_THAT(log, HasSubstr("\r\n Riga 00015 - BANCA      -    5000.00 - Banca Valdenza: REL sconosciuta"));
    EXPECT_THAT(log, HasSubstr("\r\n Riga 00018 - FORNITORE  -       0.00 - Utensileria Marzavola S.r.l.: SALDO"));
    EXPECT_THAT(log, testing::EndsWith("\r\n"));
}

TEST_P(OpeningBalancesTest, TheSameSheetTwiceBringsNothingNew)
{
    EXPECT_EQ(ImportOpeningBalances(Cmd(), Sample("saldi-iniziali.xls")).stored, 10);
    // One of the two alike was collected and one was dropped: the row of the dropped one comes again, and it alone.
    Run("UPDATE admin.scadenze SET sca_pagato = 1 WHERE sca_relaz = 0 AND sca_num = 6");
    Run("DELETE FROM admin.scadenze WHERE sca_relaz = 0 AND sca_num = 7");
    const OpeningBalancesOutcome again = ImportOpeningBalances(Cmd(), Sample("saldi-iniziali.xlsx"));
    EXPECT_EQ(again.stored, 1);
    EXPECT_EQ(again.discarded.size(), 7U + 9U);
    EXPECT_EQ(again.discarded.front().reason, "già importata: è la scadenza n. 1");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "10");
}

TEST_P(OpeningBalancesTest, ATrialLeavesNoTrace)
{
    const OpeningBalancesOutcome outcome = ImportOpeningBalances(Cmd(), Sample("saldi-iniziali.xls"), true);
    EXPECT_EQ(outcome.stored, 10);
    EXPECT_EQ(outcome.discarded.size(), 7U);
    EXPECT_EQ(outcome.log, "");
    EXPECT_FALSE(HasLog());
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "0");
}

TEST_P(OpeningBalancesTest, AListWithoutFaultsLeavesNoLog)
{
    const OpeningBalancesOutcome outcome =
        ImportOpeningBalances(Cmd(), Sheet({{"CLIENTE", "", "", "09406137340", "", "10,00", "31/01/2026"}}));
    EXPECT_EQ(outcome.stored, 1);
    EXPECT_EQ(outcome.log, "");
    EXPECT_FALSE(HasLog());
}

TEST_P(OpeningBalancesTest, LooksByVatNumberThenFiscalCodeThenName)
{
    const auto found = [&](const std::string &code, const std::string &name, const std::string &vat_number,
                           const std::string &fiscal_code) {
        Run("DELETE FROM admin.scadenze");
        const auto sheet = Sheet({{"FORNITORE", code, name, vat_number, fiscal_code, "1", "2026-01-31"}});
        ImportOpeningBalances(Cmd(), sheet);
        return Value("SELECT sca_cli_for FROM admin.scadenze");
    };
    const std::string nobody = "(nessuna riga)";
    EXPECT_EQ(found("", "Acciai Montelvo S.p.A.", "02565617350", "GRBNVS71H57G337H"), "1") << "VAT number";
    EXPECT_EQ(found("", "Acciai Montelvo S.p.A.", "", "GRBNVS71H57G337H"), "12") << "fiscal code";
    EXPECT_EQ(found("", "Acciai Montelvo S.p.A.", "01234567897", "01234567897"), "2") << "name";
    EXPECT_EQ(found("", "ACCIAI", "", ""), nobody);
    EXPECT_EQ(found("3", "", "", ""), "3") << "nothing but the code";
    EXPECT_EQ(found("3", "Ignotelli", "", ""), nobody) << "the code of another program's table is somebody else here";
    EXPECT_EQ(found("2,5", "", "", ""), nobody);
    EXPECT_EQ(found("99999999999", "", "", ""), nobody);
    EXPECT_EQ(found("", "", "", ""), nobody) << "an empty fiscal code must not find those who have none";
    EXPECT_EQ(found("", "", "it 02565617350", ""), "1");
    EXPECT_EQ(found("", "", "2565617350", ""), "1") << "the zero in front is lost";
    EXPECT_EQ(found("", "", "CHE-317.409.267", ""), "22");
    EXPECT_EQ(found("", "", "B67319046", ""), "21");
    EXPECT_EQ(found("", "", "ESB67319046", ""), nobody) << "a number that begins with a letter keeps its beginning";
    EXPECT_EQ(found("", "x' OR '1'='1", "' OR 1=1 --", ""), nobody);
}

TEST_P(OpeningBalancesTest, ASheetOfAnotherKindIsRefused)
{
    const auto refusal = [&](const std::vector<std::string> &titles) {
        try {
            ImportOpeningBalances(Cmd(), Sheet({std::vector<std::string>(titles.size(), "1")}, titles));
        } catch (const OpeningBalancesError &error) {
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_EQ(refusal({"CODICE", "SALDO", "DATA"}), "Impossibile trovare la colonna REL!");
    EXPECT_EQ(refusal({"REL", "CODICE", "DATA"}), "Impossibile trovare la colonna SALDO!");
    EXPECT_EQ(refusal({"REL", "PIVA", "SALDO"}), "Impossibile trovare la colonna DATA!");
    EXPECT_EQ(refusal({"REL", "SALDO", "DATA"}), "Impossibile trovare la colonna PIVA, CODFIS, RAG_SOCIALE o CODICE!");
    EXPECT_EQ(refusal({"REL", "PIVA", "saldo", "DATA", " Saldo"}), "La colonna SALDO compare due volte!");
    EXPECT_FALSE(HasLog());
}

TEST_P(OpeningBalancesTest, AFileThatIsNoSheetIsRefused)
{
    const auto refusal = [&](const std::string &bytes) {
        WriteFileWhole(Folder() / "falso.xls", bytes);
        try {
            ImportOpeningBalances(Cmd(), Folder() / "falso.xls");
        } catch (const FileError &error) {
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_THAT(refusal("REL;SALDO\n"), testing::StartsWith("Impossibile aprire il foglio di lavoro!\n\n"));
    const std::string whole = ReadWholeFile(Sample("saldi-iniziali.xls"), 100'000);
    std::string broken = whole;
    // The texts of the cells are gone; the workbook opens, and its first sheet cannot be read.
    const std::size_t texts = broken.find(std::string("\xFC\x00", 2), 512);
    ASSERT_NE(texts, std::string::npos);
    broken[texts] = '\x77';
    EXPECT_THAT(refusal(broken), testing::StartsWith("Impossibile Leggere il foglio di lavoro!\n\n"));
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "0");
}

TEST_P(OpeningBalancesTest, WithoutALogNothingIsTaken)
{
    std::filesystem::remove_all(LogFolder());
    WriteFileWhole(LogFolder(), "a file where the folder should be");
    try {
        ImportOpeningBalances(Cmd(), Sample("saldi-iniziali.xls"));
        ADD_FAILURE() << "taken without a log";
    } catch (const FileError &error) {
        EXPECT_THAT(error.what(), testing::StartsWith("Impossibile aprire il file di log"));
    }
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "0");
}

TEST_P(OpeningBalancesTest, AFailureInTheMiddleLeavesNothing)
{
    Run("CREATE UNIQUE INDEX scadenze_prova ON admin.scadenze (sca_importo)"); // refuses the second of the two alike
    EXPECT_THROW(ImportOpeningBalances(Cmd(), Sample("saldi-iniziali.xls")), SAException);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "0");
    EXPECT_FALSE(HasLog());
}

INSTANTIATE_TEST_SUITE_P(Engines, OpeningBalancesTest, testing::ValuesIn(TestEngines()), TestEngineName);

// --- cells -----------------------------------------------------------------------------------------------------------

SheetCell TextCellOf(const std::string &text)
{
    SheetCell cell;
    cell.kind = SheetCell::Kind::Text;
    cell.text = text;
    return cell;
}

SheetCell NumberCellOf(double number, long day = 0)
{
    return {SheetCell::Kind::Number, day != 0, number, day, {}};
}

TEST(BalanceCellTest, AmountsOfAllHands)
{
    const std::map<std::string, std::optional<double>> cases = {{"1.234,56", 1234.56},
                                                                {"1234.56", 1234.56},
                                                                {"1234,5", 1234.5},
                                                                {"€ 10,00", 10},
                                                                {"10,00 €", 10},
                                                                {"\u00A0 10,00\u00A0", 10},
                                                                {"EUR 10", 10},
                                                                {"euro 10,5", 10.5},
                                                                {"10 EUR", 10},
                                                                {"10,00-", -10},
                                                                {"(1.234,50)", -1234.5},
                                                                {"-10,00", -10},
                                                                {"+3", 3},
                                                                {"1.234", 1234},
                                                                {"0,005", 0.01},
                                                                {"-10-", {}},
                                                                {"(-10)", {}},
                                                                {"", {}},
                                                                {"dieci", {}},
                                                                {"1.23.4,5", {}},
                                                                {"10,00,00", {}},
                                                                {"#DIV/0!", {}},
                                                                {"VERO", {}},
                                                                {"=1+1", {}},
                                                                {"-", {}},
                                                                {"EUR", {}},
                                                                {"10 + 20", {}},
                                                                {"()", {}}};
    for (const auto &[text, expected] : cases) EXPECT_EQ(AmountOfCell(TextCellOf(text)), expected) << text;
    EXPECT_EQ(AmountOfCell(NumberCellOf(1234.567)), 1234.57);
    EXPECT_EQ(AmountOfCell(NumberCellOf(46022, 2461041)), std::nullopt) << "a date is no amount";
    EXPECT_EQ(AmountOfCell({}), std::nullopt);
}

TEST(BalanceCellTest, DaysOfAllHands)
{
    const std::map<std::string, std::string> cases = {{"31/12/2025", "2025-12-31"},
                                                      {"2025-12-31", "2025-12-31"},
                                                      {"31-12-25", "2025-12-31"},
                                                      {"31.12.2025", "2025-12-31"},
                                                      {"1/2/26", "2026-02-01"},
                                                      {"1/1/79", "2079-01-01"},
                                                      {"1/1/80", "1980-01-01"},
                                                      {"20251231", "2025-12-31"},
                                                      {"2025-12-31T00:00:00", "2025-12-31"},
                                                      {"31/12/2025 10:30", "2025-12-31"},
                                                      {" 31/12/2025\u00A0", "2025-12-31"},
                                                      {"31/02/2026", ""},
                                                      {"12/31/2025", ""},
                                                      {"31/12", ""},
                                                      {"fine mese", ""},
                                                      {"31/12/0025", ""},
                                                      {"31/12/2200", ""},
                                                      {"20251301", ""},
                                                      {"31/12/2025 circa", ""},
                                                      {"", ""}};
    for (const auto &[text, expected] : cases)
        EXPECT_EQ(FormatIsoDate(DayOfCell(TextCellOf(text)).value_or(0)), expected) << text;
    const long day = DateToJulian(31, 12, 2025);
    EXPECT_EQ(DayOfCell(NumberCellOf(46022, day)), day);
    EXPECT_EQ(DayOfCell(NumberCellOf(20251231)), day);
    EXPECT_EQ(DayOfCell(NumberCellOf(46022)), std::nullopt) << "a number that nobody formatted as a date";
    EXPECT_EQ(DayOfCell(NumberCellOf(1, DateToJulian(1, 1, 1900))), std::nullopt);
}

TEST(BalanceCellTest, NumbersAreReadAsPeopleReadThem)
{
    EXPECT_EQ(TextOfCell(NumberCellOf(9406137340)), "9406137340");
    EXPECT_EQ(TextOfCell(NumberCellOf(12.5)), "12.5");
    EXPECT_EQ(TextOfCell(NumberCellOf(46022, DateToJulian(31, 12, 2025))), "31/12/2025");
    EXPECT_EQ(TextOfCell({}), "");
}

} // namespace

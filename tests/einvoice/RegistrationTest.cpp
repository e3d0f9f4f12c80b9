#include "tests/einvoice/InvoiceFixture.h"

#include "einvoice/InvoiceRounding.h"
#include "tarvodlg/base/Dates.h"

namespace {

using testing::ElementsAre;

constexpr const char *kDuplicate =
    "Attenzione!\n\nE' già stato registrato un documento con lo stesso numero il 10/03/2026.\n\nVuoi Continuare?";
constexpr const char *kNoTerms = "Nessuna modalità di pagamento impostata sul fornitore!\n\nNessuna scadenza generata.";
constexpr const char *kSupplierNotFound =
    "Non è stato possibile individuare il fornitore con la partita IVA o con il codice Fiscale!\n\nVuoi cercarlo "
    "manualmente ?\n\nRispondi :\nSI - per cercalo\nNO - per creare un nuovo Fornitore\nAnnulla - per annullare la "
    "contabilizzazione";
constexpr const char *kSevenRates = "Non è possibile gestire più di 7 aliquote iva!";
constexpr const char *kOtherYear = "Non è possibile contabilizzare il documento nell'anno corrente!";

class RegistrationTest : public InvoiceTest {
  protected:
    void ExpectRefused(const RegistrationOutcome &outcome, const std::string &reason)
    {
        EXPECT_FALSE(outcome.registered);
        EXPECT_EQ(outcome.reason, reason);
        EXPECT_EQ(Count("pnota1"), "0");
        EXPECT_EQ(Count("scadenze"), "0");
    }
};

TEST_P(RegistrationTest, InvoiceBecomesABalancedEntryWithItsInstalments)
{
    const RegistrationOutcome outcome =
        Register(Filed(ReadSample("IT02565617350_00A24.xml"), "IT02565617350_00A24.xml"));
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    const PNOTA &entry = outcome.entry;
    EXPECT_EQ(entry.pno_reg, 2);
    EXPECT_EQ(entry.pno_cau, 21) << "the supplier's preset causale";
    EXPECT_EQ(entry.pno_doc, "24/2026");
    EXPECT_EQ(FormatDate(entry.pno_data_doc), "19/01/2026");
    EXPECT_EQ(entry.pno_data, entry.pno_data_doc);
    EXPECT_EQ(entry.pno_prot, 1);
    EXPECT_THAT(RowsOf(entry), ElementsAre("250.1.1 A 1478.64", "260.1.1 D 266.64", "300.1.1 D 1212.00"));
    EXPECT_EQ(outcome.instalments, 2);
    EXPECT_THAT(Instalments(entry.pno_codice), ElementsAre("28/02/2026 739.32", "31/03/2026 739.32"));
    EXPECT_EQ(ArchiveFaults(), "");
}

/// What the sample's own description says must come out in the books.
struct SampleCase {
    const char *file;
    std::size_t document;
    long supplier;
    double total;
    std::vector<long> vat_codes;
    long instalments;
};

TEST_P(RegistrationTest, EverySampleComesOutAtItsTotal)
{
    choices_.confirm_supplier = [](FORNITORI *) { return true; };
    choices_.choose_causale = [](long proposed) { return proposed; };
    const std::vector<SampleCase> samples = {
        {"IT02565617350_00A24.xml", 0, 1, 1478.64, {22}, 2},
        {"IT19949417158_1C7Q2.xml", 0, 4, 765.70, {22, 10, 4}, 1},
        {"IT02565617350_00A31.xml", 0, 1, -313.30, {22}, 2},
        {"IT08102747378_00031.xml", 0, 8, 1252.00, {400, 100}, 1},
        {"IT05027697332_0147C.xml", 0, 9, 3480.00, {600}, 1}, // N6.7: the family's preferred code
        {"IT19949417158_1D0F8.xml", 0, 24, 691.98, {22}, 2},
        {"IT19949417158_1D0F8.xml", 1, 24, 225.70, {22}, 2},
        {"IT06186527153_E4187.xml.p7m", 0, 5, 1132.79, {22}, 1},
        {"IT03175957582_27731.xml", 0, 6, 202.24, {22}, 1},
        {"IT19949417158_1E55K.xml.p7m", 0, 10, 884.35, {22}, 1},
        {"IT19949417158_1F9T3.xml", 0, 12, 193.00, {10, 22}, 1},
        {"IT05098487365_3307V.xml", 0, 3, 227.44, {22}, 1},
        {"IT06593047100_00961.xml", 0, 13, 2640.80, {300, 200, 22}, 1},
    };
    std::map<std::string, long> filed;
    for (const SampleCase &sample : samples) {
        SCOPED_TRACE(fmt::format("{} {}", sample.file, sample.document));
        if (!filed.contains(sample.file)) filed[sample.file] = Filed(ReadSample(sample.file), sample.file);
        const RegistrationOutcome outcome = Register(filed[sample.file], 0, sample.document);
        ASSERT_TRUE(outcome.registered) << outcome.reason;
        EXPECT_EQ(outcome.entry.pno_cli_for, sample.supplier);
        EXPECT_NEAR(outcome.entry.pno_tot_doc, sample.total, 0.001);
        std::vector<long> codes;
        for (const PNOTA_IVA &line : outcome.entry.iva) {
            if (line.iva != 0) codes.push_back(line.iva);
        }
        EXPECT_THAT(codes, testing::UnorderedElementsAreArray(sample.vat_codes));
        EXPECT_EQ(outcome.instalments, sample.instalments);
        EXPECT_EQ(
            Value(fmt::format("SELECT COUNT(*) FROM admin.scadenze WHERE sca_pno = {}", outcome.entry.pno_codice)),
            std::to_string(sample.instalments));
    }
    EXPECT_EQ(Value("SELECT MAX(pno_prot) FROM admin.pnota1"), std::to_string(samples.size()));
    EXPECT_EQ(ArchiveFaults(), "");
}

// --- VAT lines
// --------------------------------------------------------------------------------------------------------

TEST_P(RegistrationTest, MissingVatCodeIsAskedForWithNatureAndLaw)
{
    Run("DELETE FROM admin.codiva WHERE iva_tip = 3");
    InvoiceSpec spec;
    spec.summary = {{"0.00", "122.00", "0.00", "N3.5", "", "art. 8 c. 1 lett. c)", ""}};
    const std::string question =
        "Selezionare Aliquota IVA 0.00\n\nNatura : NON IMPONIBILE\n\nRif.to Normativo : art. 8 c. 1 lett. c)";
    const long code = Filed(spec);
    user_.Expect(question);
    ExpectRefused(Register(code), "Codice IVA non individuato.");

    long chosen = 22;
    choices_.choose_vat_code = [&](const fatturapa::DatiRiepilogoType &) { return chosen; };
    PreparedInvoice prepared;
    std::string reason;
    CFattureElettronicheDB content;
    const ALLEGATI filed = LoadInvoice(Cmd(), code, &content);
    user_.Expect(question);
    user_.Expect("L'aliquota iva selezionata non è conforme a quanto indicato in fattura!");
    EXPECT_TRUE(PrepareInvoiceEntry(Cmd(), filed, content, 0, 0, choices_, &prepared, &reason))
        << "a message, no refusal";
    EXPECT_EQ(prepared.entry.iva[0].iva, 22);

    chosen = 355;
    user_.Expect(question);
    const RegistrationOutcome outcome = Register(code);
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_EQ(outcome.entry.iva[0].iva, 355);
    EXPECT_EQ(outcome.entry.iva[0].tip, 6);
}

TEST_P(RegistrationTest, QuestionForARateWithoutLawIsShort)
{
    InvoiceSpec spec;
    spec.total = "121.00";
    spec.summary = {{"21.00", "100.00", "21.00", "", "", "", ""}};
    user_.Expect("Selezionare Aliquota IVA 21.00\n\nNatura : IMPONIBILE");
    ExpectRefused(Register(Filed(spec)), "Codice IVA non individuato.");
}

TEST_P(RegistrationTest, PreferredCodeOfTheRateBringsItsNonDeductiblePart)
{
    Run("UPDATE admin.codiva SET iva_aliq_default = CASE iva_codice WHEN 62 THEN 1 ELSE 0 END WHERE iva_aliq = 22 AND "
        "iva_tip = 1");
    const RegistrationOutcome outcome = Register(Filed(InvoiceSpec{}));
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_EQ(outcome.entry.iva[0].iva, 62);
    EXPECT_THAT(RowsOf(outcome.entry), ElementsAre("250.1.1 A 122.00", "260.1.1 D 11.00", "300.1.1 D 111.00"));
}

struct SignCase {
    const char *name, *type;
    std::vector<SummarySpec> summary;
    const char *total;
    std::vector<std::string> lines; ///< "taxable tax" as they are stored
    std::vector<std::string> rows;
};

const std::vector<std::string> kInvoiceRows = {"250.1.1 A 122.00", "260.1.1 D 22.00", "300.1.1 D 100.00"};
const std::vector<std::string> kSwappedRows = {"250.1.1 D 122.00", "260.1.1 A 22.00", "300.1.1 A 100.00"};

TEST_P(RegistrationTest, CreditNotesStandOnTheOtherSideWhateverTheirSign)
{
    const std::vector<SignCase> cases = {
        {"invoice", "TD01", {{"22.00", "100.00", "22.00", "", "", "", ""}}, "122.00", {"100.00 22.00"}, kInvoiceRows},
        {"credit note",
         "TD04",
         {{"22.00", "100.00", "22.00", "", "", "", ""}},
         "122.00",
         {"-100.00 -22.00"},
         kSwappedRows},
        {"credit note already negative",
         "TD04",
         {{"22.00", "-100.00", "-22.00", "", "", "", ""}},
         "-122.00",
         {"-100.00 -22.00"},
         kSwappedRows},
        {"credit note with a row against it",
         "TD04",
         {{"22.00", "100.00", "22.00", "", "", "", ""}, {"10.00", "-10.00", "-1.00", "", "", "", ""}},
         "111.00",
         {"-100.00 -22.00", "10.00 1.00"},
         {"250.1.1 D 111.00", "260.1.1 A 21.00", "300.1.1 A 90.00"}},
        {"negative invoice",
         "TD01",
         {{"22.00", "-100.00", "-22.00", "", "", "", ""}},
         "-122.00",
         {"-100.00 -22.00"},
         kSwappedRows},
        {"debit note",
         "TD05",
         {{"22.00", "100.00", "22.00", "", "", "", ""}},
         "122.00",
         {"100.00 22.00"},
         kInvoiceRows},
    };
    int number = 0;
    for (const SignCase &test : cases) {
        SCOPED_TRACE(test.name);
        InvoiceSpec spec;
        spec.type = test.type;
        spec.summary = test.summary;
        spec.total = test.total;
        spec.number = std::to_string(++number);
        const RegistrationOutcome outcome = Register(Filed(spec));
        ASSERT_TRUE(outcome.registered) << outcome.reason;
        std::vector<std::string> lines;
        for (const PNOTA_IVA &line : outcome.entry.iva) {
            if (line.iva != 0) lines.push_back(fmt::format("{:.2f} {:.2f}", line.impo, line.imposta));
        }
        EXPECT_EQ(lines, test.lines);
        EXPECT_EQ(RowsOf(outcome.entry), test.rows);
    }
    EXPECT_EQ(ArchiveFaults(), "");
}

TEST_P(RegistrationTest, SevenRatesFitAndTheEighthIsRefusedBeforeTheDuplicateIsAsked)
{
    InvoiceSpec spec;
    spec.total = "74.10";
    spec.summary = Rates(7);
    const RegistrationOutcome seven = Register(Filed(spec));
    ASSERT_TRUE(seven.registered) << seven.reason;
    EXPECT_EQ(seven.entry.iva[6].iva, 300);

    spec.total = "84.10";
    spec.summary = Rates(8); // of the same number
    user_.Expect(kSevenRates);
    EXPECT_EQ(Register(Filed(spec)).reason, kSevenRates);
    EXPECT_EQ(Count("pnota1"), "1");
}

TEST_P(RegistrationTest, EightRatesOfTheSampleAreRefused)
{
    const long code = Filed(ReadSample("IT19949417158_1B0V8.xml"));
    InvoiceRow row;
    ForEachInvoice(Cmd(), 0, 0, [&](const InvoiceRow &found) {
        row = found;
        return true;
    });
    ASSERT_NE(row.supplier, 0) << "else the supplier would be asked for first";
    user_.Expect(kSevenRates);
    ExpectRefused(Register(code), kSevenRates);
}

TEST_P(RegistrationTest, EighthRateIsRefusedBeforeAnythingIsAsked)
{
    InvoiceSpec spec;
    spec.seller_vat = spec.seller_fiscal_code = "01251347207"; // nobody's
    spec.total = "84.10";
    spec.summary = Rates(8);
    const std::string text = InvoiceText(spec);
    for (const std::string &bytes : {text, Replaced(text, "<Divisa>EUR", "<Divisa>USD")}) {
        const long code = Filed(bytes);
        user_.Expect(kSevenRates);
        ExpectRefused(Register(code), kSevenRates);
    }
}

// --- causale and year
// -------------------------------------------------------------------------------------------------

TEST_P(RegistrationTest, OnlyPurchaseCausaliWithVatAreTaken)
{
    Run("UPDATE admin.caucont1 SET cac_iva = 0 WHERE cac_codice = 22");
    const long code = Filed(InvoiceSpec{});
    for (const long causale : {1L, 15L, 51L, 61L}) {
        user_.Expect("Il registro della causale contabile preimpostata non è valido!");
        ExpectRefused(Register(code, causale), "Il registro della causale contabile preimpostata non è valido!");
    }
    user_.Expect("La causale deve essere una causale iva!");
    ExpectRefused(Register(code, 22), "La causale deve essere una causale iva!");
    user_.Expect("La causale 999 non esiste.");
    ExpectRefused(Register(code, 999), "La causale 999 non esiste.");

    Run("UPDATE admin.fornito1 SET for_cau = NULL WHERE for_codice = 1");
    ExpectRefused(Register(code), "Nessuna causale contabile scelta.");
    choices_.choose_causale = [](long) { return 35L; }; // register 6
    const RegistrationOutcome outcome = Register(code);
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_EQ(outcome.entry.pno_reg, 6);
}

TEST_P(RegistrationTest, OtherYearIsRefusedUnlessTheCompanyAllowsIt)
{
    InvoiceSpec spec;
    spec.date = "2025-12-31";
    const long code = Filed(spec);
    user_.Expect(kOtherYear);
    ExpectRefused(Register(code), kOtherYear);

    lumera_db_flag.flg_fatture_altro_anno = 1;
    lumera_db_impo.dit_fuori_anno = 1;
    const std::string outside = "Data esterna all' esercizio corrente !\n\nVuoi Continuare ?";
    user_.Expect(outside, IDNO);
    EXPECT_FALSE(Register(code).registered) << "the journal's own check stays";
    user_.Expect(outside, IDYES);
    const RegistrationOutcome outcome = Register(code);
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_EQ(FormatDate(outcome.entry.pno_data), "31/12/2025");
}

// Supplier, causale, year, VAT codes, duplicate: whoever is refused early is not asked what comes later.
TEST_P(RegistrationTest, QuestionsComeInTheOrderOfTheWork)
{
    Run("UPDATE admin.fornito1 SET for_cau = NULL WHERE for_codice = 1");
    std::vector<std::string> asked;
    const auto note = [&](const char *what) {
        asked.push_back(fmt::format("{} dopo {}", what, user_.shown.size()));
        return 1L;
    };
    choices_.choose_supplier = [&](const fatturapa::PartyType &) { return note("fornitore"); };
    choices_.choose_causale = [&](long proposed) { return note("causale") * proposed; };
    choices_.choose_vat_code = [&](const fatturapa::DatiRiepilogoType &) { return note("codice IVA") * 22; };
    ASSERT_TRUE(Register(Filed(InvoiceSpec{})).registered);
    asked.clear();

    InvoiceSpec spec;
    spec.seller_vat = spec.seller_fiscal_code = "01251347207";
    spec.total = "121.00";
    spec.summary = {{"21.00", "100.00", "21.00", "", "", "", ""}};
    const long code = Filed(spec);
    user_.Expect(kSupplierNotFound, IDYES);
    user_.Expect("Selezionare Aliquota IVA 21.00\n\nNatura : IMPONIBILE");
    user_.Expect("L'aliquota iva selezionata non è conforme a quanto indicato in fattura!");
    user_.Expect(kDuplicate, IDNO);
    EXPECT_FALSE(Register(code).registered);
    EXPECT_THAT(asked, ElementsAre("fornitore dopo 1", "causale dopo 1", "codice IVA dopo 2"));

    spec.date = "2025-03-10";
    const long other_year = Filed(spec);
    user_.Expect(kSupplierNotFound, IDYES);
    user_.Expect(kOtherYear);
    EXPECT_FALSE(Register(other_year).registered);
}

// --- duplicates
// -------------------------------------------------------------------------------------------------------

TEST_P(RegistrationTest, SecondRegistrationIsAskedForAndNoStopsIt)
{
    const long code = Filed(InvoiceSpec{});
    ASSERT_TRUE(Register(code).registered);
    user_.Expect(kDuplicate, IDNO);
    EXPECT_EQ(Register(code).reason, "Già registrata il 10/03/2026.");
    EXPECT_EQ(user_.flags.back() & 0xF00u, MB_DEFBUTTON2) << "No is the default";
    EXPECT_EQ(Count("pnota1"), "1");
    EXPECT_EQ(Count("scadenze"), "2");

    user_.Expect(kDuplicate, IDYES);
    user_.Expect(kDuplicate, IDYES); // the journal asks for itself
    const RegistrationOutcome again = Register(code);
    ASSERT_TRUE(again.registered) << again.reason;
    EXPECT_EQ(again.entry.pno_prot, 2);
}

TEST_P(RegistrationTest, FileIsTheSameDocumentWhateverItsEntryWasMade)
{
    const long code = Filed(InvoiceSpec{});
    ASSERT_TRUE(Register(code).registered);
    user_.Expect(kDuplicate, IDNO);
    EXPECT_FALSE(Register(code, 35).registered) << "in another register";
    Run("UPDATE admin.pnota1 SET pno_doc = '7'"); // shortened by hand
    user_.Expect(kDuplicate, IDNO);
    EXPECT_FALSE(Register(code).registered);
    Run("UPDATE admin.pnota1 SET pno_cli_for = 2");
    user_.Expect(kDuplicate, IDNO);
    EXPECT_FALSE(Register(code).registered) << "on another supplier";
    EXPECT_EQ(Count("pnota1"), "1");
}

// Sellers number credit notes in a series of their own, with the numbers of the invoices.
TEST_P(RegistrationTest, CreditNoteWithTheNumberOfAnInvoiceDoesNotHideIt)
{
    InvoiceSpec spec;
    const long invoice = Filed(spec);
    spec.type = "TD04";
    const long note = Filed(spec);
    ASSERT_TRUE(Register(note).registered);
    std::vector<std::string> states;
    ForEachInvoice(Cmd(), 0, 0, [&](const InvoiceRow &row) {
        states.push_back(fmt::format("{} {}", row.type, row.is_registered));
        return true;
    });
    EXPECT_THAT(states, ElementsAre("TD01 false", "TD04 true"));
    CFattureElettronicheDB content;
    const ALLEGATI filed = LoadInvoice(Cmd(), invoice, &content);
    EXPECT_FALSE(DescribeInvoice(Cmd(), filed, content, 0).is_registered);
    // The same invoice sent again in another file is registered all the same.
    spec.type = "TD04";
    Filed(InvoiceText(spec) + "<!-- di nuovo -->");
    InvoiceFilter open;
    open.state = InvoiceState::ToRegister;
    long count = 0;
    ForEachInvoice(Cmd(), open, [&](const InvoiceRow &) { return ++count > 0; });
    EXPECT_EQ(count, 1);
}

TEST_P(RegistrationTest, SameNumberOfAnotherSupplierOrYearIsNoDuplicate)
{
    InvoiceSpec spec;
    ASSERT_TRUE(Register(Filed(spec)).registered);
    spec.seller_vat = spec.seller_fiscal_code = "06045677173"; // supplier 2
    EXPECT_TRUE(Register(Filed(spec)).registered);
    lumera_db_impo.dit_anno = 2027;
    spec.date = "2027-03-10";
    EXPECT_TRUE(Register(Filed(spec)).registered);
}

// --- instalments, files, bodies
// ---------------------------------------------------------------------------------------

TEST_P(RegistrationTest, SupplierWithoutTermsGetsNoInstalments)
{
    Run("UPDATE admin.fornito1 SET for_pag = NULL WHERE for_codice = 1");
    user_.Expect(kNoTerms);
    const RegistrationOutcome outcome = Register(Filed(InvoiceSpec{}));
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_EQ(outcome.instalments, 0);
    EXPECT_EQ(Count("scadenze"), "0");
}

TEST_P(RegistrationTest, TermsThatLeaveDatesToTypeAreTold)
{
    Run("UPDATE admin.pagament SET pag_ini = 'A VISTA' WHERE pag_codice = 45");
    const RegistrationOutcome outcome = Register(Filed(InvoiceSpec{}));
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_THAT(outcome.notes, testing::Contains("Il pagamento 45 non ha una decorrenza: le date vanno scritte a mano. "
                                                 "Nessuna scadenza generata."));
    EXPECT_EQ(outcome.instalments, 0);
    EXPECT_EQ(Count("scadenze"), "0");
}

TEST_P(RegistrationTest, FilesAreAttachedByteForByteAndOutliveTheFiledOnes)
{
    const std::string signed_bytes = ReadSample("IT06186527153_E4187.xml.p7m"), pdf("%PDF\0\xff\n", 7);
    const long code = Filed(signed_bytes, "IT06186527153_E4187.xml.p7m");
    for (const char *name : {"IT06186527153_E4187.PDF", "altro.PDF"}) {
        ALLEGATI document;
        document.all_anno = 2026;
        document.all_fname = name;
        document.all_data = ToBytes(pdf);
        document.all_impronta = ContentDigest(name);
        sqlall.Store(Cmd(), &document);
    }
    const RegistrationOutcome outcome = Register(code);
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    DeleteInvoice(Cmd(), code);
    SACommand files(Cmd()->Connection(),
                    "SELECT pat_fname, pat_data FROM admin.pnotaall WHERE pat_pno = :pno ORDER BY pat_codice");
    files.Param("pno").setAsLong(outcome.entry.pno_codice);
    files.Execute();
    ASSERT_TRUE(files.FetchNext());
    EXPECT_EQ(files.Field("pat_fname").asString(), "IT06186527153_E4187.xml.p7m");
    EXPECT_TRUE(AsText(files.Field("pat_data").asBytes()) == signed_bytes);
    ASSERT_TRUE(files.FetchNext());
    EXPECT_EQ(files.Field("pat_fname").asString(), "IT06186527153_E4187.PDF");
    EXPECT_EQ(AsText(files.Field("pat_data").asBytes()), pdf);
    EXPECT_FALSE(files.FetchNext());
}

// The entry keeps the number of its invoice; whoever got the same number would look registered and never be offered.
TEST_P(RegistrationTest, NumberOfADeletedInvoiceIsNobodyElses)
{
    const long code = Filed(ReadSample("IT02565617350_00A24.xml"));
    ASSERT_TRUE(Register(code).registered);
    DeleteInvoice(Cmd(), code);
    Run("DELETE FROM admin.allegati"); // the readable documents too
    EXPECT_GT(Filed(ReadSample("IT03175957582_27731.xml")), code);
    ForEachInvoice(Cmd(), 0, 0, [](const InvoiceRow &row) {
        EXPECT_FALSE(row.is_registered) << row.number;
        return true;
    });
}

TEST_P(RegistrationTest, BodiesOfOneFileHaveTheirOwnStatus)
{
    const long code = Filed(ReadSample("IT19949417158_1D0F8.xml"));
    const RegistrationOutcome second = Register(code, 0, 1);
    ASSERT_TRUE(second.registered) << second.reason;
    std::vector<std::string> rows;
    ForEachInvoice(Cmd(), 0, 0, [&](const InvoiceRow &row) {
        rows.push_back(fmt::format("{}/{} {} {} n. {} {:.2f} {} {}", row.document, row.documents, row.supplier,
                                   row.type_text, row.number, row.total, row.entry, row.is_registered));
        return true;
    });
    EXPECT_THAT(rows,
                ElementsAre("0/2 24 FATTURA DIFFERITA DI CUI ALL'ART. 21, COMMA 4, LETT. A) n. 210 691.98 0 false",
                            fmt::format("1/2 24 FATTURA n. 211 225.70 {} true", second.entry.pno_codice)));
    EXPECT_EQ(Register(code, 0, 2).reason, "Il file contiene 2 documenti.");
    EXPECT_TRUE(Register(code, 0, 0).registered);
}

INSTANTIATE_TEST_SUITE_P(Engines, RegistrationTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

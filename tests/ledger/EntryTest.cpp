#include "ledger/EntryEditing.h"
#include "ledger/EntryStorage.h"
#include "ledger/VatLines.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvolumera/Causali.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/Schedule.h"
#include "tests/support/TestArchive.h"

#include <gmock/gmock.h>

#include <tuple>

namespace {

constexpr long kPurchaseCausale = 21, kCreditNoteCausale = 28, kReceiptCausale = 15, kReverseChargeCausale = 31,
               kPaymentCausale = 51, kTransferCausale = 61;
const char *const kDuplicate =
    "Attenzione!\n\nE' già stato registrato un documento con lo stesso numero il 15/03/2026.\n\n"
    "Vuoi Continuare?";

class EntryTest : public ArchiveTest {
  protected:
    PNOTA NewEntry(long causale, long counterpart)
    {
        PNOTA entry;
        sqlpno.Blank(Cmd(), &entry);
        entry.pno_data = DateToJulian(15, 3, 2026);
        entry.pno_cli_for = counterpart;
        EnterCausale(Cmd(), &entry, causale);
        return entry;
    }

    PNOTA Purchase(const char *number, double amount = 100.00, long causale = kPurchaseCausale, long code = 22)
    {
        PNOTA entry = NewEntry(causale, 1);
        entry.pno_data_doc = DateToJulian(10, 3, 2026);
        EnterDocumentNumber(&entry, number);
        entry.iva[0].impo = amount;
        EnterVatCode(Cmd(), &entry, 0, code);
        return entry;
    }

    StoreOutcome Store(PNOTA *entry) { return StoreEntry(Cmd(), entry, true); }
    std::string Entries() { return Value("SELECT COUNT(*) FROM admin.pnota1"); }
};

/// "250.1.1 A 122.00" for every row in use.
std::vector<std::string> RowsOf(const PNOTA &entry)
{
    std::vector<std::string> rows;
    for (const PNOTA_RIGA &row : entry.righe) {
        if (row.InUse())
            rows.push_back(fmt::format("{}.{}.{} {} {:.2f}", row.row_mas, row.row_con, row.row_sot, row.row_tipo.str(),
                                       row.row_importo));
    }
    return rows;
}

// --- causale and fields
// -----------------------------------------------------------------------------------------------

TEST_P(EntryTest, CausaleDrivesTheEntry)
{
    PNOTA entry = NewEntry(kPurchaseCausale, 1);
    EXPECT_EQ(entry.pno_reg, kPurchases);
    EXPECT_EQ(entry.pno_rel, kSupplier);
    EXPECT_EQ(entry.pno_prot, 1);
    EXPECT_NE(entry.pno_pag, 0) << "the supplier's terms";
    EXPECT_FALSE(entry.des_clifor.empty());
    EXPECT_EQ(entry.righe[0].row_sot, 1) << "the counterpart's row stands on the supplier";
    EXPECT_EQ(entry.righe[0].row_tipo, "A");
    EXPECT_EQ(entry.righe[0].row_descac, entry.pno_des_cau.str());
    EXPECT_EQ(entry.righe[1].row_auto, 1);
    EXPECT_FALSE(entry.righe[1].des_sot.empty());
    EXPECT_FALSE(entry.righe[3].InUse());
    EXPECT_EQ(entry.righe[3].row_auto, 0) << "a row added by hand does not fill itself";

    entry.iva[0] = {22, 1, 22, 100, 22, 0};
    EnterCausale(Cmd(), &entry, 4711);
    EXPECT_EQ(entry.pno_cau, 0);
    EXPECT_EQ(entry.pno_rel, kNoCounterpart);
    EXPECT_EQ(entry.iva[0].iva, 0) << "the VAT lines are cleared with the causale";
    EXPECT_TRUE(RowsOf(entry).empty());
}

TEST_P(EntryTest, CausaleTakesItsSectionAndForeignCounterpartsTheirAccount)
{
    Run("UPDATE admin.caucont1 SET cac_sez = 9 WHERE cac_codice = 21");
    Run("UPDATE admin.fornito1 SET for_mas = 250, for_con = 2 WHERE for_codice = 3");
    const PNOTA entry = NewEntry(kPurchaseCausale, 3);
    EXPECT_EQ(entry.pno_sez, 9);
    EXPECT_EQ(entry.righe[0].row_con, 2);
    const PNOTA unknown = NewEntry(kPurchaseCausale, 4711);
    EXPECT_EQ(unknown.pno_cli_for, 0);
    EXPECT_EQ(unknown.pno_pag, 0);
}

TEST_P(EntryTest, DocumentNumberRenumbersOnlyTheRowsThatCarriedTheOldOne)
{
    PNOTA entry = NewEntry(kPurchaseCausale, 1);
    EnterDocumentNumber(&entry, "10");
    entry.righe[1].row_n_doc = "altro";
    entry.righe[2].row_cau = 99;
    EnterDocumentNumber(&entry, "11");
    EXPECT_EQ(entry.righe[0].row_n_doc, "11");
    EXPECT_EQ(entry.righe[1].row_n_doc, "altro");
    EXPECT_EQ(entry.righe[2].row_n_doc, "10") << "a row of another causale keeps its number";
    EXPECT_TRUE(entry.righe[3].row_n_doc.empty()) << "not in use";

    EnterCausaleDescription(&entry, "Testo cambiato");
    EXPECT_EQ(entry.righe[0].row_descac, "Testo cambiato");
    EXPECT_NE(entry.righe[2].row_descac, "Testo cambiato");
}

TEST_P(EntryTest, RowsFollowTheirDocumentToItsNewDate)
{
    PNOTA entry = Purchase("45");
    ASSERT_TRUE(Store(&entry).stored);
    entry.righe[1].row_n_doc = "altro";
    entry.righe[1].row_d_doc = DateToJulian(1, 2, 2026);
    const long newer = DateToJulian(12, 3, 2026);
    EnterDocumentDate(&entry, newer);
    ASSERT_TRUE(StoreEntry(Cmd(), &entry, false).stored);
    EXPECT_EQ(entry.righe[0].row_d_doc, newer);
    EXPECT_EQ(entry.righe[1].row_d_doc, DateToJulian(1, 2, 2026)) << "another document";
    EnterDocumentNumber(&entry, "46");
    EnterDocumentDate(&entry, newer + 1);
    ASSERT_TRUE(StoreEntry(Cmd(), &entry, false).stored);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotaro2 WHERE row_n_doc = '46' AND row_d_doc = '2026-03-13'"), "2");
}

TEST_P(EntryTest, AnotherCausaleTakesTheSplitOfTheOldRowsAway)
{
    PNOTA entry = Purchase("1");
    entry.centri = {{0, 0, 3, 10, 100.00}};
    EnterCausale(Cmd(), &entry, kReverseChargeCausale);
    EXPECT_TRUE(entry.centri.empty());
}

struct OrderCase {
    const char *name, *day;
    long protocol; ///< of a protocol between those of 10 (1), 20 (2) and 25 March (5); 0 = the next free one
    const char *words;
};

TEST_P(EntryTest, DateThatGoesBackwardsInItsRegisterIsSaid)
{
    for (const long day : {10L, 20L, 25L}) {
        PNOTA entry = Purchase(std::to_string(day).c_str());
        entry.pno_data = DateToJulian(static_cast<int>(day), 3, 2026);
        if (day == 25) {
            entry.pno_prot = 5;
            entry.pno_prot_fisso = 1;
        }
        ASSERT_TRUE(Store(&entry).stored);
    }
    const std::string register_is = "Date non in ordine: il protocollo ";
    for (const OrderCase &c :
         {OrderCase{"Behind", "2026-03-24", 0, "5 del registro ACQUISTI è del 25/03/2026"},
          OrderCase{"SameDay", "2026-03-25", 0, ""}, OrderCase{"Between", "2026-03-22", 3, ""},
          OrderCase{"BeforeTheEarlier", "2026-03-19", 3, "2 del registro ACQUISTI è del 20/03/2026"},
          OrderCase{"BehindTheLater", "2026-03-26", 3, "5 del registro ACQUISTI è del 25/03/2026"},
          OrderCase{"OtherYear", "2025-03-01", 0, ""}}) {
        SCOPED_TRACE(c.name);
        PNOTA entry = Purchase("9");
        entry.pno_data = *ParseDate(c.day);
        EnterSection(Cmd(), &entry, entry.pno_sez);
        if (c.protocol != 0) entry.pno_prot = c.protocol;
        EXPECT_EQ(DescribeProtocolOrder(Cmd(), entry), *c.words ? register_is + c.words : "");
    }
    EXPECT_EQ(DescribeProtocolOrder(Cmd(), NewEntry(kTransferCausale, 0)), "") << "the journal has no protocols";
}

TEST_P(EntryTest, CopyKeepsWhatIsWrittenAndNotWhatHappened)
{
    PNOTA entry = Purchase("45");
    entry.centri = {{0, 0, 3, 10, 100.00}};
    entry.pno_desc = "affitto";
    entry.pno_prot = 12;
    entry.pno_prot_fisso = 1;
    entry.pno_data_pag = entry.pno_data_doc;
    entry.pno_verifica = entry.pno_trasf = 1;
    entry.pno_operazione = kOpening;
    entry.pno_agr = 7;
    Run("INSERT INTO admin.aggregaz (agr_codice, agr_desc) VALUES (7, 'Gruppo')");
    user_.Expect(
        "Attenzione!\n\nIl movimento risulta esportato al consulente.\nPrendere nota delle modifiche apportate "
        "e segnalarle.");
    ASSERT_TRUE(Store(&entry).stored);
    const long day = DateToJulian(2, 4, 2026);
    PNOTA copy = CopyAsNew(Cmd(), entry, day);
    EXPECT_EQ(RowsOf(copy), RowsOf(entry));
    EXPECT_EQ(copy.pno_desc.str(), "affitto");
    user_.Expect(kDuplicate, IDYES);
    ASSERT_TRUE(Store(&copy).stored);
    EXPECT_EQ(copy.pno_codice, entry.pno_codice + 1);
    EXPECT_EQ(copy.pno_prot, 13);
    EXPECT_EQ(copy.pno_data, day);
    EXPECT_EQ(copy.centri.size(), 1u);
    EXPECT_EQ(copy.pno_prot_fisso + copy.pno_verifica + copy.pno_trasf + copy.pno_operazione + copy.pno_agr +
                  copy.pno_data_pag,
              0);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotaro2 WHERE row_codice = 2 AND row_operazione <> 0"), "0");
}

TEST_P(EntryTest, TermsSetTheStartDateWhereTheyStartFromTheDocument)
{
    PNOTA entry = NewEntry(kPurchaseCausale, 1);
    entry.pno_data_doc = DateToJulian(10, 3, 2026);
    Run("UPDATE admin.pagament SET pag_ini = ' FINE MESE ' WHERE pag_codice = 45");
    EXPECT_TRUE(EnterTerms(Cmd(), &entry, 45));
    EXPECT_EQ(entry.pno_data_pag, entry.pno_data_doc);
    entry.pno_data_pag = 0;
    Run("UPDATE admin.pagament SET pag_ini = 'DATA DIVERSA' WHERE pag_codice = 45");
    EXPECT_TRUE(EnterTerms(Cmd(), &entry, 45));
    EXPECT_EQ(entry.pno_data_pag, 0);
    EXPECT_FALSE(EnterTerms(Cmd(), &entry, 4711));
    EXPECT_EQ(entry.pno_pag, 0);
}

TEST_P(EntryTest, SectionRenumbersTheProtocolUnlessFixed)
{
    PNOTA stored = Purchase("1");
    ASSERT_TRUE(Store(&stored).stored);
    PNOTA entry = NewEntry(kPurchaseCausale, 1);
    EXPECT_EQ(entry.pno_prot, 2);
    EXPECT_TRUE(EnterSection(Cmd(), &entry, 9));
    EXPECT_EQ(entry.pno_prot, 1);
    entry.pno_prot = 77;
    entry.pno_prot_fisso = 1;
    EXPECT_TRUE(EnterSection(Cmd(), &entry, 1));
    EXPECT_EQ(entry.pno_prot, 77);
    EXPECT_FALSE(EnterSection(Cmd(), &entry, 4711));
}

TEST_P(EntryTest, LeavingARowCompletesIt)
{
    PNOTA entry = NewEntry(kTransferCausale, 0);
    EnterDocumentNumber(&entry, "5");
    entry.righe[0].row_mas = 170;
    entry.righe[0].row_tipo = "D";
    entry.righe[0].row_importo = 30;
    entry.righe[1].row_mas = 175;
    for (const std::size_t row : {std::size_t{1}, std::size_t{2}, kEntryRows}) {
        LeaveRowCausale(&entry, row);
        LeaveRowDocument(&entry, row);
        LeaveRowAmount(Cmd(), &entry, row);
    }
    EXPECT_EQ(entry.righe[1].row_cau, kTransferCausale);
    EXPECT_EQ(entry.righe[1].row_n_doc, "5");
    EXPECT_DOUBLE_EQ(entry.righe[1].row_importo, 30);
    EXPECT_TRUE(entry.righe[1].row_tipo.empty()) << "the side is the user's";
    EXPECT_EQ(entry.righe[2].row_cau, 0) << "not in use";

    lumera_db_impo.dit_anno = 2001; // lire: forty cents are nothing
    entry.righe[1].row_importo = 0;
    entry.righe[0].row_importo = 0.40;
    LeaveRowAmount(Cmd(), &entry, 1);
    EXPECT_DOUBLE_EQ(entry.righe[1].row_importo, 0);
    ReloadCompany(Cmd());
}

// --- automatic rows
// ---------------------------------------------------------------------------------------------------

TEST_P(EntryTest, RowsFollowTheVatLines)
{
    using testing::ElementsAre;
    EXPECT_THAT(RowsOf(Purchase("1")), ElementsAre("250.1.1 A 122.00", "260.1.1 D 22.00", "300.1.1 D 100.00"));
    EXPECT_THAT(RowsOf(Purchase("1", -100.00, kCreditNoteCausale)),
                ElementsAre("250.1.1 D 122.00", "260.1.1 A 22.00", "300.1.1 A 100.00"));
    EXPECT_THAT(RowsOf(Purchase("1", 100.00, kPurchaseCausale, 61)),
                ElementsAre("250.1.1 A 122.00", "260.1.1 D 8.80", "300.1.1 D 113.20"))
        << "60 per cent of the tax is a cost";
    EXPECT_THAT(RowsOf(Purchase("1", 100.00, kReverseChargeCausale, 81)),
                ElementsAre("250.1.1 A 100.00", "260.1.1 D 22.00", "260.1.2 A 22.00", "310.4.1 D 100.00"))
        << "reverse charge: both sides, not owed to the supplier";

    PNOTA receipts = NewEntry(kReceiptCausale, 0);
    receipts.iva[0].impo = 122;
    EnterVatCode(Cmd(), &receipts, 0, 22);
    EXPECT_THAT(RowsOf(receipts), ElementsAre("175.1.1 D 122.00", "260.1.3 A 22.00", "400.1.2 A 100.00"));

    PNOTA payment = NewEntry(kPaymentCausale, 1);
    EnterDocumentTotal(Cmd(), &payment, 122.00);
    EXPECT_THAT(RowsOf(payment), ElementsAre("250.1.1 D 122.00", "170.1.1 A 122.00"));
}

TEST_P(EntryTest, ACreditNoteThatBecomesAnInvoiceSwapsTheSidesBack)
{
    PNOTA entry = Purchase("1", -100.00);
    entry.righe[2].row_auto = 0; // the cost was typed by hand
    entry.iva[0].impo = 200;
    ComputeVatLine(Cmd(), &entry, 0);
    EXPECT_THAT(RowsOf(entry), testing::ElementsAre("250.1.1 A 244.00", "260.1.1 D 44.00", "300.1.1 A 100.00"));
    EXPECT_DOUBLE_EQ(entry.pno_tot_squ, -300.00);
}

// --- validation
// -------------------------------------------------------------------------------------------------------

struct FaultCase {
    const char *name;
    void (*change)(PNOTA &);
    EntryField field;
    std::size_t index;
};
const FaultCase kFaults[] = {
    {"no causale", [](PNOTA &e) { e.pno_cau = 0; }, EntryField::Causale, 0},
    {"no section", [](PNOTA &e) { e.pno_sez = 0; }, EntryField::Section, 0},
    {"no date", [](PNOTA &e) { e.pno_data = 0; }, EntryField::Date, 0},
    {"dated before its document", [](PNOTA &e) { e.pno_data = e.pno_data_doc - 1; }, EntryField::Date, 0},
    {"no counterpart", [](PNOTA &e) { e.pno_cli_for = 0; }, EntryField::Counterpart, 0},
    {"amount without code", [](PNOTA &e) { e.iva[6].imposta = 0.01; }, EntryField::VatCode, 6},
    {"no code at all", [](PNOTA &e) { e.iva = {}; }, EntryField::VatCode, 0},
    {"row without account", [](PNOTA &e) { e.righe[1].row_con = 0; }, EntryField::RowAccount, 1},
    {"row without sub-account", [](PNOTA &e) { e.righe[99].row_mas = e.righe[99].row_con = 1; },
     EntryField::RowSubAccount, 99},
    {"row without side", [](PNOTA &e) { e.righe[2].row_tipo = ""; }, EntryField::RowSide, 2},
    {"causale before everything else", [](PNOTA &e) { e = PNOTA{}; }, EntryField::Causale, 0},
};

TEST_P(EntryTest, RefusesInOrderWithABeepAndNoMessage)
{
    PNOTA good = Purchase("1");
    EXPECT_FALSE(ValidateEntry(Cmd(), &good));
    EXPECT_EQ(user_.beeps, 0);
    for (const FaultCase &c : kFaults) {
        PNOTA entry = good;
        c.change(entry);
        user_.beeps = 0;
        const EntryFault fault = ValidateEntry(Cmd(), &entry);
        EXPECT_EQ(fault.field, c.field) << c.name;
        EXPECT_EQ(fault.index, c.index) << c.name;
        EXPECT_EQ(user_.beeps, 1) << c.name;
    }
    EXPECT_TRUE(user_.shown.empty());
}

TEST_P(EntryTest, YearOutsideTheFiscalOne)
{
    const std::string question = "Data esterna all' esercizio corrente !\n\nVuoi Continuare ?";
    const std::string refused = ApplicationMessage(20024);
    PNOTA entry = Purchase("1");
    entry.pno_data = DateToJulian(1, 1, 2027);
    user_.Expect(refused);
    EXPECT_EQ(ValidateEntry(Cmd(), &entry).field, EntryField::Date);

    lumera_db_impo.dit_fuori_anno = 1;
    user_.Expect(question, IDNO);
    EXPECT_EQ(ValidateEntry(Cmd(), &entry).field, EntryField::Date);
    user_.Expect(question, IDYES);
    EXPECT_FALSE(ValidateEntry(Cmd(), &entry));
    EXPECT_EQ(user_.flags.back() & 0xF00u, MB_DEFBUTTON2);
    entry.pno_data = DateToJulian(31, 12, 1979);
    entry.pno_data_doc = 0;
    user_.Expect(refused);
    EXPECT_EQ(ValidateEntry(Cmd(), &entry).field, EntryField::Date);
    ReloadCompany(Cmd());
}

TEST_P(EntryTest, CeasedCustomerIsAsked)
{
    PNOTA entry = NewEntry(1, 1);
    entry.iva[0].impo = 100;
    EnterVatCode(Cmd(), &entry, 0, 22);
    EXPECT_FALSE(ValidateEntry(Cmd(), &entry));
    Run("UPDATE admin.clienti1 SET cli_data_cessazione = '2026-01-31' WHERE cli_codice = 1");
    const std::string question = "Il cliente selezionato risulta cessato !\n\nVuoi Continuare ?";
    user_.Expect(question, IDNO);
    EXPECT_EQ(ValidateEntry(Cmd(), &entry).field, EntryField::Counterpart);
    user_.Expect(question, IDYES);
    EXPECT_FALSE(ValidateEntry(Cmd(), &entry));
}

TEST_P(EntryTest, UnbalancedEntryIsStoredOnlyAfterYes)
{
    PNOTA entry = Purchase("1");
    entry.righe[2].row_importo += 0.01;
    const std::string question = ApplicationMessage(20025);
    user_.Expect(question, IDNO);
    EXPECT_FALSE(Store(&entry).stored);
    EXPECT_EQ(Entries(), "0");
    user_.Expect(question, IDYES);
    EXPECT_TRUE(Store(&entry).stored);
    EXPECT_DOUBLE_EQ(entry.pno_tot_squ, 0.01);
}

// --- storing
// ----------------------------------------------------------------------------------------------------------

TEST_P(EntryTest, StoresNumbersAndReadsBack)
{
    PNOTA none = Purchase("1");
    none.pno_codice = 0;
    EXPECT_FALSE(Store(&none).stored);
    PNOTA first = Purchase("1"), second = Purchase("2");
    ASSERT_TRUE(Store(&first).stored);
    ASSERT_TRUE(Store(&second).stored) << "both were proposed number 1 and protocol 1";
    EXPECT_EQ(second.pno_codice, 2);
    EXPECT_EQ(second.pno_prot, 2);
    EXPECT_EQ(second.righe[0].row_clfo, 1);
    EXPECT_EQ(second.pno_utente, "prova");
    second.righe[2].row_descac = "Riga cambiata";
    ASSERT_TRUE(StoreEntry(Cmd(), &second, false).stored);
    EXPECT_EQ(Value("SELECT row_descac FROM admin.pnotaro2 WHERE row_codice = 2 AND row_idx = 3"), "Riga cambiata");
    EXPECT_EQ(second.pno_prot, 2) << "a changed entry keeps its protocol";
}

TEST_P(EntryTest, DuplicateDocumentOfTheSameYearIsAsked)
{
    PNOTA first = Purchase("A/1");
    ASSERT_TRUE(Store(&first).stored);
    PNOTA again = Purchase(" A/1 ");
    user_.Expect(kDuplicate, IDNO);
    EXPECT_FALSE(Store(&again).stored);
    EXPECT_EQ(Entries(), "1");
    user_.Expect(kDuplicate, IDYES);
    EXPECT_TRUE(Store(&again).stored);

    PNOTA other_year = Purchase("A/1");
    other_year.pno_data_doc = DateToJulian(10, 3, 2025);
    EXPECT_TRUE(Store(&other_year).stored) << "the year of the document counts";
    PNOTA nobodys = NewEntry(kTransferCausale, 0);
    nobodys.pno_doc = "9";
    nobodys.pno_data_doc = nobodys.pno_data;
    ASSERT_TRUE(Store(&nobodys).stored);
    PNOTA nobodys_again = nobodys;
    nobodys_again.pno_cli_for = 1; // typed for another causale before
    user_.Expect(kDuplicate, IDNO);
    EXPECT_FALSE(Store(&nobodys_again).stored) << "stored without counterpart, it is the same document";
    PNOTA undated = Purchase("A/1");
    undated.pno_data_doc = 0;
    EXPECT_TRUE(Store(&undated).stored) << "an entry without document date is not checked";
    EXPECT_TRUE(StoreEntry(Cmd(), &first, false).stored) << "nor is a changed one";
}

TEST_P(EntryTest, ClosedYearAndExportedEntry)
{
    PNOTA entry = Purchase("1");
    ASSERT_TRUE(Store(&entry).stored);
    PNOTA closing = NewEntry(91, 0);
    closing.pno_data = DateToJulian(31, 12, 2026);
    closing.pno_operazione = kClosing;
    sqlpno.SqlTransaction(Cmd(), kInsert, &closing);
    const std::string closed =
        "Attenzione la data indicata ricade in un esercizio con chiusura effettuata!\n\nVuoi Continuare?";
    PNOTA late = Purchase("2");
    user_.Expect(closed, IDNO);
    EXPECT_FALSE(Store(&late).stored);
    user_.Expect(closed, IDYES);
    EXPECT_TRUE(Store(&late).stored);

    user_.Expect(closed, IDNO);
    EXPECT_FALSE(DeleteEntry(Cmd(), &late)) << "as much a change of the closed year";
    EXPECT_EQ(Entries(), "3");
    user_.Expect(closed, IDYES);
    EXPECT_TRUE(DeleteEntry(Cmd(), &late));

    lumera_db_impo.dit_fuori_anno = 1;
    PNOTA moved = entry;
    moved.pno_data = DateToJulian(2, 1, 2027);
    user_.Expect("Data esterna all' esercizio corrente !\n\nVuoi Continuare ?", IDYES);
    user_.Expect(closed, IDNO);
    EXPECT_FALSE(StoreEntry(Cmd(), &moved, false).stored) << "so is moving an entry out of it";
    lumera_db_impo.dit_fuori_anno = 0;

    sqlpno.SqlTransaction(Cmd(), kDelete, &closing);
    PNOTA theirs = entry;
    MarkEntry(Cmd(), &entry, &PNOTA::pno_trasf, 1);
    EXPECT_EQ(Value("SELECT pno_trasf FROM admin.pnota1 WHERE pno_codice = 1"), "1");
    EXPECT_THROW(MarkEntry(Cmd(), &theirs, &PNOTA::pno_verifica, 1), SAException) << "of another revision";
    user_.Expect(
        "Attenzione!\n\nIl movimento risulta esportato al consulente.\nPrendere nota delle modifiche apportate e "
        "segnalarle.");
    EXPECT_TRUE(StoreEntry(Cmd(), &entry, false).stored);
}

TEST_P(EntryTest, CostCentresMustMatchTheirRow)
{
    PNOTA entry = Purchase("1");
    entry.centri = {{0, 0, 3, 10, 60.00}, {0, 0, 3, 20, 39.99}};
    user_.Expect("Problema su contabilità analitica alla riga n. 3");
    EXPECT_FALSE(Store(&entry).stored);
    entry.centri = {{0, 0, 50, 10, 100.00}};
    user_.Expect("Problema su contabilità analitica.");
    EXPECT_FALSE(Store(&entry).stored);
    entry.centri = {{0, 0, 3, 10, 60.00}, {0, 0, 3, 20, 40.00}};
    ASSERT_TRUE(Store(&entry).stored);
    EXPECT_EQ(entry.centri.size(), 2u);
    EXPECT_EQ(entry.centri[1].pcc_cdc, 20);
}

TEST_P(EntryTest, RowOnAMissingAccountIsNamed)
{
    PNOTA entry = Purchase("1");
    entry.righe[2].row_sot = 4711;
    user_.Expect("Riga n. 3: il conto 300.1.4711 non esiste.");
    EXPECT_EQ(Store(&entry).fault.field, EntryField::RowSubAccount);
    PNOTA nobody = NewEntry(kTransferCausale, 0);
    nobody.pno_rel = kSupplier;
    nobody.pno_cli_for = 4711;
    user_.Expect("Il fornitore 4711 non esiste.");
    EXPECT_FALSE(Store(&nobody).stored);
}

TEST_P(EntryTest, AnotherStationWasQuicker)
{
    PNOTA entry = Purchase("1");
    ASSERT_TRUE(Store(&entry).stored);
    PNOTA mine = entry, theirs = entry;
    theirs.pno_desc = "loro";
    ASSERT_TRUE(StoreEntry(Cmd(), &theirs, false).stored);
    mine.pno_desc = "mia";
    try {
        StoreEntry(Cmd(), &mine, false);
        FAIL() << "the other station's change was overwritten";
    } catch (const SAException &error) {
        EXPECT_EQ(error.Fault(), SAFault::Changed);
    }
    EXPECT_THROW(std::ignore = DeleteEntry(Cmd(), &mine), SAException);
    EXPECT_EQ(Value("SELECT pno_desc FROM admin.pnota1"), "loro");
}

TEST_P(EntryTest, DeletingTakesOpenInstalmentsAndRefusesPaidOnes)
{
    PNOTA entry = Purchase("1");
    ASSERT_TRUE(Store(&entry).stored);
    SCADENZE instalment;
    sqlsca.Blank(Cmd(), &instalment, kSupplier);
    instalment.sca_cli_for = 1;
    instalment.sca_importo = 122;
    instalment.sca_pno = entry.pno_codice;
    sqlsca.SqlTransaction(Cmd(), kInsert, &instalment);
    Run("UPDATE admin.scadenze SET sca_pagato = 1");
    EXPECT_THROW(std::ignore = DeleteEntry(Cmd(), &entry), SAException);
    EXPECT_EQ(Entries(), "1");
    Run("UPDATE admin.scadenze SET sca_pagato = 0");
    EXPECT_TRUE(DeleteEntry(Cmd(), &entry));
    EXPECT_EQ(Entries(), "0");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "0");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotaro2"), "0");
}

TEST_P(EntryTest, ImmediatePaymentIsOfferedByTermsAndCausale)
{
    PNOTA invoice = Purchase("1");
    EnterTerms(Cmd(), &invoice, 2); // paid in cash at once
    ASSERT_TRUE(Store(&invoice).stored);
    EXPECT_TRUE(OffersImmediatePayment(Cmd(), invoice));
    PNOTA other = invoice;
    other.pno_pag = 45;
    EXPECT_FALSE(OffersImmediatePayment(Cmd(), other));
    other = invoice;
    other.pno_reg = kJournalOnly;
    EXPECT_FALSE(OffersImmediatePayment(Cmd(), other));

    const PNOTA payment = PrepareImmediatePayment(Cmd(), invoice);
    EXPECT_EQ(payment.pno_cau, lumera_db_flag.flg_cau_pagamento);
    EXPECT_EQ(payment.pno_reg, kJournalOnly);
    EXPECT_EQ(payment.pno_cli_for, 1);
    EXPECT_EQ(payment.pno_pag, 0);
    EXPECT_EQ(payment.pno_data_doc, invoice.pno_data_doc);
    lumera_db_flag.flg_cau_pagamento = kTransferCausale; // not a supplier causale
    EXPECT_FALSE(OffersImmediatePayment(Cmd(), invoice));
    ReloadCompany(Cmd());
}

INSTANTIATE_TEST_SUITE_P(Engines, EntryTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

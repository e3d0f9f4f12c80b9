#include "tarvolumera/ChartOfAccounts.h"
#include "tarvolumera/JournalTotals.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/PSQLrow.h"
#include "tarvolumera/Protocols.h"

#include "tarvodlg/base/Dates.h"
#include "tests/support/TestArchive.h"

#include <gmock/gmock.h>

namespace {

class JournalTest : public ArchiveTest {
  protected:
    PNOTA Entry(const char *date, long causale = 21, long vat_register = kPurchases, const char *document = "1")
    {
        PNOTA entry;
        sqlpno.Blank(Cmd(), &entry);
        entry.pno_data = *ParseDate(date);
        entry.pno_data_doc = entry.pno_data;
        entry.pno_cau = causale;
        entry.pno_reg = vat_register;
        entry.pno_doc = document;
        entry.pno_rel = kSupplier;
        entry.pno_cli_for = 1;
        SetRow(&entry.righe[0], {300, 1, 1}, "d", 10.00);
        SetRow(&entry.righe[99], {250, 1, 1}, "A", 10.00);
        return entry;
    }
    static void SetRow(PNOTA_RIGA *row, const AccountKey &account, const char *side, double amount)
    {
        row->row_mas = account.mas;
        row->row_con = account.con;
        row->row_sot = account.sot;
        row->row_tipo = side;
        row->row_importo = amount;
    }
    PNOTA Stored(const char *date, long causale = 21, long vat_register = kPurchases, const char *document = "1")
    {
        PNOTA entry = Entry(date, causale, vat_register, document);
        sqlpno.SqlTransaction(Cmd(), kInsert, &entry);
        return entry;
    }
};

TEST_P(JournalTest, AWholeEntryComesBack)
{
    PNOTA entry = Entry("2026-03-15");
    entry.pno_cau_iva = 1;
    entry.iva[6] = {22, 1, 22, -0.01, 0.00, 40};
    entry.righe[99].row_descac = "Perché è così";
    entry.centri.push_back({0, 0, 1, 10, 10.00});
    PNOTA_ALLEGATO file;
    file.pat_fname = "foto.png";
    file.pat_data = {std::byte{0}, std::byte{255}};
    entry.allegati.push_back(file);
    sqlpno.SqlTransaction(Cmd(), kInsert, &entry);

    PNOTA read;
    ASSERT_TRUE(sqlpno.Search(Cmd(), 1, &read));
    EXPECT_DOUBLE_EQ(read.iva[6].impo, -0.01);
    EXPECT_DOUBLE_EQ(read.iva[6].ind, 40);
    EXPECT_EQ(read.righe[99].row_descac, "Perché è così");
    EXPECT_EQ(read.righe[99].row_clfo, 1);
    EXPECT_EQ(read.righe[0].row_clfo, 0);
    EXPECT_TRUE(read.righe[0].IsDare()) << "lower case reads alike";
    EXPECT_EQ(read.righe[0].row_data, entry.pno_data);
    EXPECT_EQ(read.centri.size(), 1u);
    EXPECT_DOUBLE_EQ(read.pno_dare, 10);
    EXPECT_EQ(Value("SELECT pat_bytes_size FROM admin.pnotaall WHERE pat_pno = 1"), "2");
    EXPECT_FALSE(read.des_clifor.empty());
    PNOTA untouched = read;
    EXPECT_FALSE(sqlpno.Search(Cmd(), 4711, &untouched));
    EXPECT_EQ(untouched.pno_codice, 1);
}

TEST_P(JournalTest, RowsAreNamedAfterWhatTheyStandOn)
{
    PNOTA entry = Entry("2026-03-15");
    SetRow(&entry.righe[1], {250, 1, 2}, "A", 1.00);
    SetRow(&entry.righe[2], {lumera_db_impo.dit_mas_cli, 1, 1}, "D", 1.00); // the supplier's number, on the other side
    sqlpno.SqlTransaction(Cmd(), kInsert, &entry);
    PNOTA read;
    ASSERT_TRUE(sqlpno.Search(Cmd(), entry.pno_codice, &read));
    for (const std::size_t i : {0U, 1U, 2U, 99U}) {
        SCOPED_TRACE(i);
        EXPECT_FALSE(read.righe[i].des_sot.empty());
        EXPECT_EQ(read.righe[i].des_sot, AccountDescription(Cmd(), read.righe[i].Account()));
    }
    EXPECT_EQ(read.righe[99].des_sot, read.des_clifor);
    EXPECT_TRUE(read.righe[3].des_sot.empty());
}

TEST_P(JournalTest, ProtocolsRunPerSectionRegisterAndYear)
{
    Stored("2026-01-01");
    Stored("2026-12-31");
    EXPECT_EQ(GetProt(Cmd(), 1, 2026, kPurchases), 3);
    EXPECT_EQ(GetProt(Cmd(), 1, 2027, kPurchases), 1);
    EXPECT_EQ(GetProt(Cmd(), 1, 2025, kPurchases), 1);
    EXPECT_EQ(GetProt(Cmd(), 9, 2026, kPurchases), 1);
    EXPECT_EQ(GetProt(Cmd(), 1, 2026, kEuPurchases), 1);
    for (const long none : {0L, 1L, 8L}) EXPECT_EQ(GetProt(Cmd(), 1, 2026, none), 0);

    PNOTA fixed = Entry("2026-05-05");
    fixed.pno_prot = 2;
    fixed.pno_prot_fisso = 1;
    EXPECT_THROW(sqlpno.SqlTransaction(Cmd(), kInsert, &fixed), SAException) << "protocol 2 is taken";
    fixed.pno_prot = 7;
    sqlpno.SqlTransaction(Cmd(), kInsert, &fixed);
    EXPECT_EQ(fixed.pno_prot, 7);

    PNOTA moved = Stored("2026-06-06");
    EXPECT_EQ(moved.pno_prot, 8);
    moved.pno_data = *ParseDate("2027-01-02");
    sqlpno.SqlTransaction(Cmd(), kUpdate, &moved);
    EXPECT_EQ(moved.pno_prot, 1) << "another year, another series";
    moved.pno_reg = kJournalOnly;
    sqlpno.SqlTransaction(Cmd(), kUpdate, &moved);
    EXPECT_EQ(moved.pno_prot, 0);
}

TEST_P(JournalTest, DeletingTheLastGivesItsNumbersBack)
{
    PNOTA first = Stored("2026-01-01"), last = Stored("2026-01-02");
    sqlpno.SqlTransaction(Cmd(), kDelete, &last);
    const PNOTA again = Stored("2026-01-03");
    EXPECT_EQ(again.pno_codice, 2);
    EXPECT_EQ(again.pno_prot, 2);
    EXPECT_THROW(sqlpno.SqlTransaction(Cmd(), kDelete, &last), SAException)
        << "the entry that took its number is another one";
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnota1"), "2");
}

TEST_P(JournalTest, AFailedStoreLeavesNothingAndKeepsTheRecord)
{
    PNOTA entry = Entry("2026-03-15");
    entry.centri.push_back({0, 0, 1, 4711, 10.00}); // no such cost centre: the last write fails
    PNOTA before = entry;
    EXPECT_THROW(sqlpno.SqlTransaction(Cmd(), kInsert, &entry), SAException);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnota1"), "0");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotaro2"), "0");
    EXPECT_EQ(entry.pno_utente, before.pno_utente) << "the record is as it was";
    entry.centri.clear();
    sqlpno.SqlTransaction(Cmd(), kInsert, &entry);
    EXPECT_EQ(entry.pno_prot, 1) << "the refused save used no protocol up";
}

/// What must be impossible from SQL too.
TEST_P(JournalTest, TheArchiveRefusesAWrongBook)
{
    Stored("2026-01-01");
    Stored("2026-01-02");
    for (const char *damage : {
             "UPDATE admin.pnota1 SET pno_prot = 1 WHERE pno_codice = 2",
             "UPDATE admin.pnota1 SET pno_reg = 9 WHERE pno_codice = 2",
             "UPDATE admin.pnota1 SET pno_reg = 1 WHERE pno_codice = 2",
             "UPDATE admin.pnota1 SET pno_cau = 4711 WHERE pno_codice = 2",
             "UPDATE admin.pnota1 SET pno_cli_for = 4711 WHERE pno_codice = 2",
             "UPDATE admin.pnota1 SET pno_iva_3 = 4711 WHERE pno_codice = 2",
             "UPDATE admin.pnota1 SET pno_codice = 1 WHERE pno_codice = 2",
             "UPDATE admin.pnotaro2 SET row_importo = -1 WHERE row_codice = 2",
             "UPDATE admin.pnotaro2 SET row_tipo = 'X' WHERE row_codice = 2",
             "UPDATE admin.pnotaro2 SET row_sot = 4711 WHERE row_codice = 2 AND row_idx = 1",
             "UPDATE admin.pnotaro2 SET row_sot = 4711, row_clfo = 4711 WHERE row_codice = 2 AND row_idx = 100",
             "UPDATE admin.pnotaro2 SET row_codice = 4711 WHERE row_codice = 2",
             "UPDATE admin.pnotaro2 SET row_idx = 101 WHERE row_idx = 100",
             "DELETE FROM admin.fornito1 WHERE for_codice = 1",
             "DELETE FROM admin.sotcon WHERE sot_mas = 300 AND sot_con = 1 AND sot_codice = 1",
             "INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_data, sca_importo)"
             " VALUES (1, 1, 2026, 4711, '2026-01-01', 1)",
         })
        EXPECT_THROW(Run(damage), SAException) << damage;
    Run("UPDATE admin.pnotaro2 SET row_tipo = 'a' WHERE row_codice = 2 AND row_idx = 100");
    Run("DELETE FROM admin.pnota1 WHERE pno_codice = 2");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotaro2 WHERE row_codice = 2"), "0") << "no rows without their entry";
}

TEST_P(JournalTest, BrowsesInSixOrdersBothWays)
{
    const struct {
        const char *date, *document_date, *document;
        long causale, supplier;
    } kEntries[] = {{"2026-03-01", "2026-02-10", "B", 22, 2},
                    {"2026-01-01", "2026-01-01", "10", 21, 3},
                    {"2026-03-01", "2026-02-10", "A", 21, 1},
                    {"2026-02-01", "", "2", 22, 2},
                    {"2026-01-15", "2026-01-14", "A", 24, 1}};
    for (const auto &e : kEntries) {
        PNOTA entry = Entry(e.date, e.causale, kPurchases, e.document);
        entry.pno_data_doc = *e.document_date == 0 ? 0 : *ParseDate(e.document_date);
        entry.pno_cli_for = e.supplier;
        sqlpno.SqlTransaction(Cmd(), kInsert, &entry);
    }
    const std::map<JournalOrder, std::vector<long>> expected = {
        {kByNumber, {1, 2, 3, 4, 5}},         {kByDate, {2, 5, 4, 1, 3}},    {kByDocumentDate, {2, 5, 1, 3}},
        {kByDocumentNumber, {2, 4, 3, 5, 1}}, {kByCausale, {2, 3, 4, 1, 5}}, {kByCounterpart, {5, 3, 4, 1, 2}}};
    for (const auto &[order, numbers] : expected) {
        sqlpno.SetIndex(order);
        PNOTA entry;
        ASSERT_TRUE(sqlpno.Search(Cmd(), numbers.front(), &entry));
        std::vector<long> forward = {entry.pno_codice};
        while (sqlpno.Next(Cmd(), &entry)) forward.push_back(entry.pno_codice);
        EXPECT_EQ(forward, numbers) << "order " << order;
        std::vector<long> backward = {entry.pno_codice};
        while (sqlpno.Previous(Cmd(), &entry)) backward.insert(backward.begin(), entry.pno_codice);
        EXPECT_EQ(backward, numbers) << "order " << order;
        ASSERT_TRUE(sqlpno.Last(Cmd(), &entry));
        EXPECT_EQ(sqlpno.Next(Cmd(), &entry), false) << "order " << order;
    }
    sqlpno.SetIndex(kByDocumentDate);
    PNOTA undated;
    ASSERT_TRUE(sqlpno.Search(Cmd(), 4, &undated));
    PNOTA forward = undated, backward = undated;
    ASSERT_TRUE(sqlpno.Next(Cmd(), &forward));
    ASSERT_TRUE(sqlpno.Previous(Cmd(), &backward));
    EXPECT_EQ(forward.pno_codice, 2) << "an undated entry lies before all others and after them";
    EXPECT_EQ(backward.pno_codice, 3);
    EXPECT_THROW(sqlpno.SetIndex(kJournalOrders), SAException);
    sqlpno.SetIndex(kByNumber);
}

TEST(JournalOrderTest, ConditionsAreKeysetConditions)
{
    EXPECT_EQ(CPSQLpno::NextCondition(kByNumber), " WHERE pno_codice > :codice ORDER BY pno_codice");
    EXPECT_EQ(CPSQLpno::NextCondition(kByDocumentNumber),
              " WHERE (pno_doc = :num AND pno_codice > :codice) OR (pno_doc > :num) ORDER BY pno_doc, pno_codice");
    EXPECT_EQ(CPSQLpno::PreviousCondition(kByCounterpart),
              " WHERE (pno_rel = :rel AND pno_cli_for = :num AND pno_data = :data AND pno_codice < :codice) OR "
              "(pno_rel = :rel "
              "AND pno_cli_for = :num AND pno_data < :data) OR (pno_rel = :rel AND pno_cli_for < :num) OR (pno_rel < "
              ":rel) ORDER "
              "BY pno_rel DESC, pno_cli_for DESC, pno_data DESC, pno_codice DESC");
}

TEST_P(JournalTest, ClosedAndOpenedYearsAreKnownByTheirEntries)
{
    PNOTA closing = Entry("2026-12-31", 91, kJournalOnly), opening = Entry("2027-01-01", 92, kJournalOnly);
    closing.pno_operazione = kProfitAndLoss;
    opening.pno_operazione = kOpening;
    const long day = *ParseDate("2026-06-01");
    EXPECT_FALSE(sqlrow.CheckChiusura(Cmd(), day));
    sqlpno.SqlTransaction(Cmd(), kInsert, &closing);
    sqlpno.SqlTransaction(Cmd(), kInsert, &opening);
    EXPECT_TRUE(sqlrow.CheckChiusura(Cmd(), day));
    EXPECT_FALSE(sqlrow.CheckChiusura(Cmd(), day + 365));
    EXPECT_TRUE(sqlrow.CheckApertura(Cmd(), day + 365));
    EXPECT_FALSE(sqlrow.CheckApertura(Cmd(), day));
    EXPECT_FALSE(sqlrow.CheckChiusura(Cmd(), 0));
    EXPECT_EQ(
        Value("SELECT CAST(tco_saldo_ann AS INTEGER) FROM admin.totconti WHERE tco_anno = 2026 AND tco_mas = 300"), "0")
        << "closing entries do not count for the year's figure";
}

TEST_P(JournalTest, VatTotalsAreAView)
{
    PNOTA entry = Entry("2026-03-15");
    entry.pno_cau_iva = 1;
    entry.iva[0] = {61, 1, 22, 100, 22, 60};
    entry.iva[6] = {61, 1, 22, 0.05, 0.01, 60};
    sqlpno.SqlTransaction(Cmd(), kInsert, &entry);
    EXPECT_EQ(
        Value(
            "SELECT CAST(ROUND(CAST(100 * tiv_imposta AS NUMERIC)) AS INTEGER) FROM admin.totiva2 WHERE tiv_anno = 2026"
            " AND tiv_mese = 3 AND tiv_codice = 61"),
        "2201");
    EXPECT_EQ(Value("SELECT CAST(ROUND(CAST(100 * tiv_indetraibile AS NUMERIC)) AS INTEGER) FROM admin.totiva2"),
              "1321")
        << "8.80 of 22.00 and nothing of one cent can be deducted: rounded line by line";
}

INSTANTIATE_TEST_SUITE_P(Engines, JournalTest, testing::ValuesIn(TestEngines()), TestEngineName);

// --- totals
// -----------------------------------------------------------------------------------------------------------

TEST(JournalTotalsTest, ByKindOfVatCode)
{
    PNOTA entry;
    entry.pno_cau_iva = 1;
    entry.pno_reg = kPurchases;
    const double kTax[] = {0, 1, 0, 0, 0, 1, 0, 0, 1, 1, 1, 0, 1, 1, 1}; // by kind
    double owed = 0;
    for (const long kind : {1L, 2L, 3L, 4L, 6L, 8L, 11L}) {
        static std::size_t line = 0;
        entry.iva[line++] = {1, kind, 0, 100.0 * static_cast<double>(kind), kTax[kind], 0};
        owed += 100.0 * static_cast<double>(kind) + (kind == 8 ? 0 : kTax[kind]);
    }
    RecalcTotals(&entry, {}, {}, kVatLinesChanged);
    EXPECT_DOUBLE_EQ(entry.pno_tot_imp, 900);
    EXPECT_DOUBLE_EQ(entry.pno_tot_esente, 200);
    EXPECT_DOUBLE_EQ(entry.pno_tot_non_imp, 900);
    EXPECT_DOUBLE_EQ(entry.pno_tot_non_82, 1500);
    EXPECT_DOUBLE_EQ(entry.pno_tot_iva, 2);
    EXPECT_DOUBLE_EQ(entry.pno_tot_doc, owed);
    entry.iva[0].impo = 0;
    RecalcTotals(&entry, {}, {}, kTotalsOnly);
    EXPECT_DOUBLE_EQ(entry.pno_tot_imp, 800);
    EXPECT_DOUBLE_EQ(entry.pno_tot_doc, owed) << "the typed total stays when only the totals are refreshed";
    RecalcTotals(&entry, {}, {}, kVatLinesChanged, {0.05, 1, 2, 3});
    EXPECT_DOUBLE_EQ(entry.pno_tot_doc, owed - 100 + 0.05);
    EXPECT_DOUBLE_EQ(entry.pno_tot_non_imp, 903);
}

TEST(JournalTotalsTest, ManyCentsAddUpExactly)
{
    PNOTA entry;
    for (std::size_t i = 0; i < kEntryRows; ++i) {
        entry.righe[i].row_mas = 1;
        entry.righe[i].row_tipo = i % 2 == 0 ? "D" : "a";
        entry.righe[i].row_importo = 0.1;
    }
    EXPECT_FALSE(Squadratura(&entry));
    EXPECT_DOUBLE_EQ(entry.pno_dare, 5.00);
    entry.righe[7].row_importo = 0.11;
    EXPECT_TRUE(Squadratura(&entry));
    EXPECT_DOUBLE_EQ(entry.pno_tot_squ, -0.01);
}

TEST(DocumentNumberTest, SortsNumerically)
{
    EXPECT_LT(PadDocumentNumber("9/A"), std::string_view(PadDocumentNumber("10/A")));
    EXPECT_LT(PadDocumentNumber("FE/2"), std::string_view(PadDocumentNumber("FE/10")));
    EXPECT_EQ(PadDocumentNumber("A/1"), "A/00000000000000000001");
    EXPECT_GT(PadDocumentNumber("12345678901"), std::string_view(PadDocumentNumber("2000000000")));
    EXPECT_EQ(PadDocumentNumber(""), "");
    EXPECT_EQ(PadDocumentNumber("12345678901234567890"), "12345678901234567890");
}

} // namespace

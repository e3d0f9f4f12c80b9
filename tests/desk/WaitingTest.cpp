#include "desk/Waiting.h"
#include "demo/DemoJournal.h"
#include "tarvodlg/base/Dates.h"
#include "tarvolumera/Schedule.h"
#include "tests/support/TestArchive.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

const long kToday = DateToJulian(1, 6, 2026);

class WaitingTest : public ArchiveTest {
  protected:
    void SetUp() override
    {
        ArchiveTest::SetUp();
        if (!database_) return;
    }
    Waiting Read() { return reader_.Read(Cmd(), kToday); }

    void AddInstalment(long side, long day, double amount, long paid = 0)
    {
        SCADENZE instalment;
        sqlsca.Blank(Cmd(), &instalment, static_cast<short>(side));
        instalment.sca_relaz = side;
        instalment.sca_cli_for = 1;
        instalment.sca_data = day;
        instalment.sca_anno = Year(day);
        instalment.sca_importo = amount;
        instalment.sca_pagato = paid;
        if (paid != 0) instalment.sca_data_pag = day;
        instalment.sca_fattura = fmt::format("F{}", day - kToday);
        sqlsca.SqlTransaction(Cmd(), kInsert, &instalment);
    }
    static std::vector<std::string> Invoices(const WaitingInstalments &group)
    {
        std::vector<std::string> invoices;
        for (const WaitingInstalment &instalment : group.first) invoices.push_back(instalment.invoice);
        return invoices;
    }
    static std::vector<std::string> Numbers(const Waiting &waiting)
    {
        std::vector<std::string> numbers;
        for (const InvoiceRow &row : waiting.oldest_invoices) numbers.push_back(row.number);
        return numbers;
    }
    void Import(const char *name)
    {
        const std::vector<ImportResult> results =
            ImportInvoices(Cmd(), {std::filesystem::path(LUMERA_SOURCE_DIR) / "samples" / "fatture" / name});
        ASSERT_EQ(results.size(), 1U);
        ASSERT_EQ(results[0].outcome, ImportOutcome::Loaded) << results[0].text;
        last_code_ = results[0].code;
    }
    /// Makes an entry of the journal the one that registers a document.
    void Link(long code, long document)
    {
        Run(fmt::format("UPDATE admin.pnota1 SET pno_all = {}, pno_all_doc = {} WHERE pno_codice ="
                        " (SELECT MIN(pno_codice) FROM admin.pnota1 WHERE pno_all IS NULL)",
                        code, document));
    }

    WaitingReader reader_;
    long last_code_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Engines, WaitingTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(WaitingTest, ANewCompanyHasNothingWaiting)
{
    EXPECT_TRUE(Read().IsNothing());
}

TEST_P(WaitingTest, InstalmentsFallIntoTheirStretchOfTime)
{
    AddInstalment(kCustomer, kToday - 400, 10.10);
    AddInstalment(kCustomer, kToday - 1, 20.20);
    AddInstalment(kCustomer, kToday - 1, 99, 1); // collected
    AddInstalment(kCustomer, kToday, 0.07);
    AddInstalment(kCustomer, kToday + 6, -5.00); // a credit note takes away
    AddInstalment(kCustomer, kToday + 7, 70);
    AddInstalment(kSupplier, kToday + 1, 1234.56);
    const Waiting waiting = Read();
    const WaitingInstalments &overdue = waiting.overdue[kCustomer], &soon = waiting.due_soon[kCustomer];
    EXPECT_EQ(overdue.count, 2);
    EXPECT_EQ(overdue.cents, 3030);
    EXPECT_THAT(Invoices(overdue), ElementsAre("F-400", "F-1"));
    EXPECT_EQ(soon.count, 2);
    EXPECT_EQ(soon.cents, -493);
    EXPECT_THAT(Invoices(soon), ElementsAre("F0", "F6"));
    EXPECT_EQ(waiting.overdue[kSupplier].count, 0);
    ASSERT_EQ(waiting.due_soon[kSupplier].first.size(), 1U);
    const WaitingInstalment &due = waiting.due_soon[kSupplier].first[0];
    EXPECT_EQ(due.name, Value("SELECT for_desc FROM admin.fornito1 WHERE for_codice = 1"));
    EXPECT_EQ(due.cents, 123456);
    EXPECT_EQ(due.due_day, kToday + 1);
    EXPECT_FALSE(waiting.IsNothing());
}

TEST_P(WaitingTest, ListsStopAtTenAndCountsDoNot)
{
    for (int i = 0; i < 12; ++i) AddInstalment(kSupplier, kToday - 20 + i, 0.1);
    const WaitingInstalments overdue = Read().overdue[kSupplier];
    EXPECT_EQ(overdue.count, 12);
    EXPECT_EQ(overdue.cents, 120);
    EXPECT_EQ(overdue.first.size(), kWaitingListed);
    EXPECT_EQ(overdue.first[0].due_day, kToday - 20);
}

TEST_P(WaitingTest, UnbalancedEntriesOfTheFiscalYearOnlyAndToTheCent)
{
    FillDemoJournal(Cmd(), 40, 7);
    EXPECT_EQ(Read().unbalanced, 0);
    const auto entry = [this](int place) {
        return Value(fmt::format("SELECT pno_codice FROM admin.pnota1 ORDER BY pno_codice LIMIT 1 OFFSET {}", place));
    };
    const std::string cent = entry(3), less = entry(5), old = entry(7);
    Run("UPDATE admin.pnota1 SET pno_dare = pno_avere + 0.01 WHERE pno_codice = " + cent);
    Run("UPDATE admin.pnota1 SET pno_dare = pno_avere + 0.000001 WHERE pno_codice = " + less);
    Run("UPDATE admin.pnota1 SET pno_dare = pno_avere + 5, pno_data = '2025-12-31', pno_prot = NULL WHERE pno_codice "
        "= " +
        old);
    const Waiting waiting = Read();
    EXPECT_EQ(waiting.unbalanced, 1);
    ASSERT_EQ(waiting.unbalanced_entries.size(), 1U);
    EXPECT_EQ(std::to_string(waiting.unbalanced_entries[0].number), cent);
    EXPECT_EQ(waiting.unbalanced_entries[0].debit_cents - waiting.unbalanced_entries[0].credit_cents, 1);
}

TEST_P(WaitingTest, AnInvoiceWaitsUntilEachOfItsDocumentsIsRegistered)
{
    FillDemoJournal(Cmd(), 10, 7);
    Import("IT19949417158_1D0F8.xml"); // two invoices in one file
    const long both = last_code_;
    Import("IT19949417158_1C7Q2.xml");
    const Waiting at_first = Read();
    EXPECT_EQ(at_first.invoices, 3);
    EXPECT_THAT(Numbers(at_first), ElementsAre("210", "211", "88"));
    EXPECT_EQ(at_first.oldest_invoices[2].seller_name, "Ristoro Padano di Zambrasi Fratelli S.n.c.");
    EXPECT_DOUBLE_EQ(at_first.oldest_invoices[2].total, 765.70);
    EXPECT_FALSE(at_first.are_invoices_at_least);
    Link(both, 1);
    EXPECT_THAT(Numbers(Read()), ElementsAre("211", "88"));
    Link(both, 2);
    Link(last_code_, 1);
    EXPECT_EQ(Read().invoices, 0);
}

TEST_P(WaitingTest, AnInvoiceKeyedByHandDoesNotWait)
{
    FillDemoJournal(Cmd(), 40, 7);
    Import("IT19949417158_1C7Q2.xml");
    ASSERT_EQ(Read().invoices, 1);
    const std::string supplier = Value("SELECT for_codice FROM admin.fornito1 WHERE for_desc LIKE 'Ristoro Padano%'");
    Run("UPDATE admin.pnota1 SET pno_rel = 1, pno_cli_for = " + supplier +
        ", pno_doc = '88', pno_data_doc = '2026-02-05' WHERE pno_codice ="
        " (SELECT MIN(pno_codice) FROM admin.pnota1 WHERE pno_reg = 2)");
    EXPECT_EQ(Read().invoices, 0);
}

TEST_P(WaitingTest, AFiledDocumentThatCannotBeReadWaitsWithItsFault)
{
    Import("IT19949417158_1C7Q2.xml");
    SACommand damage(Cmd()->Connection(), "UPDATE admin.allegati SET all_data = :data");
    damage.Param("data").setAsBytes(ToBytes("<Fattura"));
    damage.Execute();
    EXPECT_EQ(Read().oldest_invoices.at(0).fault, "") << "what was kept when it was filed is shown";
    Run("DELETE FROM admin.fatture"); // as a version left it that kept nothing
    const Waiting waiting = Read();
    EXPECT_EQ(waiting.invoices, 1);
    ASSERT_EQ(waiting.oldest_invoices.size(), 1U);
    EXPECT_EQ(waiting.oldest_invoices[0].code, last_code_);
    EXPECT_NE(waiting.oldest_invoices[0].fault, "");
}

} // namespace

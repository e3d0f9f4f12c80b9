#include "ledger/VatLines.h"

#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/VatCodes.h"
#include "tests/support/TestArchive.h"

namespace {

// What each register makes of each kind of VAT code, one row a register, one letter for kinds 1 to 15:
// S rate and non-deductible share, R rate only, 0 no rate, - line cleared.
struct RegisterRow {
    long vat_register;
    const char *kinds;
};
constexpr RegisterRow kTreatments[] = {
    {1, "---------------"}, {2, "S000R00SS-0SSS-"}, {3, "R000R-0RR-R-RR-"}, {4, "R000--0RR0--RR-"},
    {5, "R000R-0RR-0-RR-"}, {6, "S000R00SS-0SSS-"}, {7, "S000R-0SS-0-SS-"},
};

TEST(VatTreatmentTest, FollowsTheTableOfRegistersAndKinds)
{
    for (const RegisterRow &row : kTreatments) {
        for (long kind = 1; kind <= 15; ++kind) {
            const char expected = row.kinds[kind - 1];
            const VatTreatment treatment = TreatmentOf(row.vat_register, kind);
            const char got = treatment == VatTreatment::RateAndShare ? 'S'
                             : treatment == VatTreatment::RateOnly   ? 'R'
                             : treatment == VatTreatment::NoRate     ? '0'
                             : treatment == VatTreatment::Cleared    ? '-'
                                                                     : '?';
            EXPECT_EQ(got, expected) << "register " << row.vat_register << ", kind " << kind;
        }
    }
    for (const long vat_register : {0L, 8L, -1L}) EXPECT_EQ(TreatmentOf(vat_register, 1), VatTreatment::Untouched);
}

class VatLinesTest : public ArchiveTest {
  protected:
    PNOTA Entry(long vat_register, double amount)
    {
        PNOTA entry;
        entry.pno_reg = vat_register;
        entry.pno_cau_iva = 1;
        entry.iva[0].impo = amount;
        return entry;
    }
    long CodeOf(long kind, double rate)
    {
        CODIVA code;
        EXPECT_TRUE(sqliva.SearchByRate(Cmd(), rate, kind, &code));
        return code.iva_codice;
    }
};

TEST_P(VatLinesTest, ReceiptsAreTypedVatIncluded)
{
    PNOTA entry = Entry(kReceipts, 122.00);
    EnterVatCode(Cmd(), &entry, 0, 22);
    EXPECT_DOUBLE_EQ(entry.iva[0].impo, 100.00);
    EXPECT_DOUBLE_EQ(entry.iva[0].imposta, 22.00);
    EXPECT_DOUBLE_EQ(entry.pno_tot_doc, 122.00);
    ComputeVatLine(Cmd(), &entry, 0);
    EXPECT_DOUBLE_EQ(entry.iva[0].impo, 81.97) << "each run takes what stands in the cell as VAT included";

    PNOTA exempt = Entry(kReceipts, 122.00);
    EnterVatCode(Cmd(), &exempt, 0, CodeOf(kVatExempt, 0));
    EXPECT_DOUBLE_EQ(exempt.iva[0].impo, 122.00);
    EXPECT_DOUBLE_EQ(exempt.pno_tot_esente, 122.00);
}

TEST_P(VatLinesTest, EuSalesKeepTheTaxAsItStands)
{
    PNOTA entry = Entry(kEuSales, 1000.00);
    entry.iva[0].imposta = 7.00;
    EnterVatCode(Cmd(), &entry, 0, 22);
    EXPECT_DOUBLE_EQ(entry.iva[0].imposta, 7.00);
    EXPECT_DOUBLE_EQ(entry.iva[0].aliq, 22.00);
}

TEST_P(VatLinesTest, PurchasesKeepTheNonDeductibleShare)
{
    Run("UPDATE admin.codiva SET iva_inded = 60 WHERE iva_codice = 61");
    PNOTA purchase = Entry(kPurchases, 100.00), sale = Entry(kSales, 100.00);
    EnterVatCode(Cmd(), &purchase, 0, 61);
    EnterVatCode(Cmd(), &sale, 0, 61);
    EXPECT_DOUBLE_EQ(purchase.iva[0].ind, 60.00);
    EXPECT_DOUBLE_EQ(sale.iva[0].ind, 0.00);
    EXPECT_DOUBLE_EQ(sale.iva[0].imposta, 22.00);
}

TEST_P(VatLinesTest, ACodeThatIsNotAdmittedOrUnknownClearsTheLine)
{
    for (const long code : {CodeOf(kVatMargin, 0), 4711L}) {
        PNOTA entry = Entry(kSales, 100.00);
        entry.iva[0].imposta = 22;
        EnterVatCode(Cmd(), &entry, 0, code);
        EXPECT_EQ(entry.iva[0].iva, 0);
        EXPECT_DOUBLE_EQ(entry.iva[0].impo, 0);
        EXPECT_DOUBLE_EQ(entry.iva[0].imposta, 0);
    }
    PNOTA untouched = Entry(0, 100.00);
    EnterVatCode(Cmd(), &untouched, 0, 22);
    EXPECT_DOUBLE_EQ(untouched.iva[0].impo, 100.00) << "a register that does not exist takes nothing from the code";
    EXPECT_EQ(untouched.iva[0].iva, 0);
}

TEST_P(VatLinesTest, TheLastOfTheSevenLinesWorksLikeTheFirst)
{
    PNOTA entry = Entry(kPurchases, 100.00);
    EnterVatCode(Cmd(), &entry, 0, 22);
    entry.iva[6].impo = -50.00;
    EnterVatCode(Cmd(), &entry, 6, 10);
    EXPECT_DOUBLE_EQ(entry.iva[6].imposta, -5.00);
    EXPECT_DOUBLE_EQ(entry.pno_tot_doc, 67.00);
    EXPECT_THROW(EnterVatCode(Cmd(), &entry, 7, 22), std::out_of_range);
}

INSTANTIATE_TEST_SUITE_P(Engines, VatLinesTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

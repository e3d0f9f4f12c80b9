#include "schedule/Instalments.h"

#include "tarvodlg/base/Dates.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/Schedule.h"
#include "tests/support/TestArchive.h"

#include <gmock/gmock.h>

namespace {

class InstalmentsTest : public ArchiveTest {
  protected:
    /// A stored purchase of supplier 1 with terms "Ri.Ba. 30/60 gg f.m.": 100.00 + 22.00 and, when wanted, 50.00 of a
    /// kind 8 code whose tax of 11.00 is not owed to the supplier.
    PNOTA StoredPurchase(bool reverse_charge = false, int sign = 1)
    {
        PNOTA entry;
        sqlpno.Blank(Cmd(), &entry);
        entry.pno_data = entry.pno_data_doc = DateToJulian(10, 1, 2026);
        entry.pno_cau = 21;
        entry.pno_reg = kPurchases;
        entry.pno_rel = kSupplier;
        entry.pno_cli_for = 1;
        entry.pno_cau_iva = 1;
        entry.pno_pag = 45;
        entry.pno_doc = "7/A";
        entry.iva[0] = {22, 1, 22, sign * 100.0, sign * 22.0, 0};
        if (reverse_charge) entry.iva[1] = {81, 8, 22, 50, 11, 0};
        sqlpno.SqlTransaction(Cmd(), kInsert, &entry);
        return entry;
    }
};

TEST_P(InstalmentsTest, ProposesAndStoresThemAll)
{
    const PNOTA entry = StoredPurchase(true);
    const auto proposal = ProposeInstalments(Cmd(), entry);
    ASSERT_TRUE(proposal);
    EXPECT_DOUBLE_EQ(proposal->total, 172.00) << "the tax of a kind 8 code is not owed to the supplier";
    EXPECT_EQ(proposal->description, "PAGAMENTO FATTURA ACQUISTO MERCI");
    EXPECT_EQ(StoreInstalments(Cmd(), entry, *proposal), 2);

    SCADENZE first, second;
    ASSERT_TRUE(sqlsca.Search(Cmd(), kSupplier, 1, &first));
    ASSERT_TRUE(sqlsca.Search(Cmd(), kSupplier, 2, &second));
    EXPECT_EQ(FormatIsoDate(first.sca_data), "2026-02-28");
    EXPECT_EQ(FormatIsoDate(second.sca_data), "2026-03-31");
    EXPECT_EQ(first.sca_rata * 10 + first.sca_rate, 12);
    EXPECT_EQ(second.sca_rata * 10 + second.sca_rate, 22);
    EXPECT_EQ(first.sca_ultima, 0);
    EXPECT_EQ(second.sca_ultima, 1);
    EXPECT_EQ(second.sca_non_ultima, 0);
    EXPECT_EQ(first.sca_tipo_pag, 2) << "RiBa terms";
    EXPECT_EQ(first.sca_fattura, "7/A");
    EXPECT_EQ(first.sca_pno, entry.pno_codice);
    EXPECT_EQ(first.sca_emessa, user_.Today());
    EXPECT_EQ(sqlsca.CountOf(Cmd(), entry.pno_codice), 2);
    EXPECT_EQ(GenerateInstalments(Cmd(), entry), 0) << "generated once";
}

TEST_P(InstalmentsTest, IncompleteRowsAreNeitherCountedNorStored)
{
    const PNOTA entry = StoredPurchase();
    auto proposal = *ProposeInstalments(Cmd(), entry);
    const long day = DateToJulian(1, 6, 2026);
    proposal.rows = {{0, 61}, {day, 0}, {day + 1, 61}, {day, 61}};
    user_.Expect("Il totale delle Scadenze non coincide\ncon il totale del documento!\n\nVuoi Continuare?", IDYES);
    EXPECT_TRUE(ConfirmTotal(proposal.rows, proposal.total)) << "183.00 against 122.00, confirmed";
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(StoreInstalments(Cmd(), entry, proposal), 2);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze WHERE sca_rate = 2"), "2");
    EXPECT_EQ(Value("SELECT sca_ultima FROM admin.scadenze WHERE sca_num = 1"), "1")
        << "the latest date, not the last row";
}

TEST_P(InstalmentsTest, NoMeansBackToTheGrid)
{
    const std::vector<Instalment> rows = {{DateToJulian(1, 6, 2026), 100}};
    user_.Expect("Il totale delle Scadenze non coincide\ncon il totale del documento!\n\nVuoi Continuare?", IDNO);
    EXPECT_FALSE(ConfirmTotal(rows, 122));
    EXPECT_TRUE(ConfirmTotal(rows, -100)) << "compared by absolute value";
}

TEST_P(InstalmentsTest, EndsSilentlyWhenThereIsNothingToGenerate)
{
    PNOTA entry = StoredPurchase();
    const auto proposes = [&](const std::function<void(PNOTA &)> &change) {
        PNOTA changed = entry;
        change(changed);
        return ProposeInstalments(Cmd(), changed).has_value();
    };
    EXPECT_TRUE(proposes([](PNOTA &) {}));
    EXPECT_FALSE(proposes([](PNOTA &e) { e.pno_pag = 0; }));
    EXPECT_FALSE(proposes([](PNOTA &e) { e.pno_pag = 9999; }));
    EXPECT_FALSE(proposes([](PNOTA &e) { e.pno_rel = kNoCounterpart; }));
    EXPECT_FALSE(proposes([](PNOTA &e) { e.iva[0].impo = e.iva[0].imposta = 0; }));
    Run("UPDATE admin.pagament SET pag_genera = 0 WHERE pag_codice = 45");
    EXPECT_FALSE(proposes([](PNOTA &) {}));
    Run("UPDATE admin.pagament SET pag_tipo_pag = 7 WHERE pag_codice = 45");
    EXPECT_TRUE(proposes([](PNOTA &) {})) << "what is paid at once makes its instalment whatever the flag says";
    Run("UPDATE admin.pagament SET pag_num_rate = 0 WHERE pag_codice = 45");
    EXPECT_FALSE(proposes([](PNOTA &) {}));
}

TEST_P(InstalmentsTest, AFailureInTheMiddleStoresNone)
{
    const PNOTA entry = StoredPurchase();
    auto proposal = *ProposeInstalments(Cmd(), entry);
    proposal.bank = 0;
    InstalmentProposal broken = proposal;
    broken.bank = 4711; // no such bank: refused by the foreign key, at the commit or at the insert
    EXPECT_THROW(StoreInstalments(Cmd(), entry, broken), SAException);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "0");
    EXPECT_EQ(StoreInstalments(Cmd(), entry, proposal), 2);
}

TEST_P(InstalmentsTest, EntryChangedByAnotherStationMeanwhileGetsNone)
{
    const PNOTA entry = StoredPurchase();
    const auto proposal = *ProposeInstalments(Cmd(), entry);
    for (const char *change : {"pno_tot_doc = 100", "pno_cli_for = 2", "pno_doc = 'altro'"}) {
        Run(fmt::format("CREATE TABLE admin.prova AS SELECT * FROM admin.pnota1"));
        Run(fmt::format("UPDATE admin.pnota1 SET {}", change));
        EXPECT_THROW(StoreInstalments(Cmd(), entry, proposal), SAException) << change;
        Run("UPDATE admin.pnota1 SET pno_tot_doc = (SELECT pno_tot_doc FROM admin.prova), pno_cli_for ="
            " (SELECT pno_cli_for FROM admin.prova), pno_doc = (SELECT pno_doc FROM admin.prova)");
        Run("DROP TABLE admin.prova");
    }
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "0");
    EXPECT_EQ(StoreInstalments(Cmd(), entry, proposal), 2);
}

TEST_P(InstalmentsTest, CreditNoteMirrors)
{
    const PNOTA entry = StoredPurchase(false, -1);
    const auto proposal = ProposeInstalments(Cmd(), entry);
    ASSERT_TRUE(proposal);
    EXPECT_DOUBLE_EQ(proposal->rows[0].amount, -61.00);
    EXPECT_DOUBLE_EQ(proposal->rows[1].amount, -61.00);
}

INSTANTIATE_TEST_SUITE_P(Engines, InstalmentsTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

#include "tarvolumera/MasterRecords.h"

#include "tarvolumera/Causali.h"
#include "tarvolumera/ChartOfAccounts.h"
#include "tarvolumera/Counterparts.h"
#include "tarvolumera/PaymentTerms.h"
#include "tarvolumera/VatCodes.h"
#include "tests/support/TestArchive.h"

namespace {

class MasterRecordsTest : public ArchiveTest {
  protected:
    /// As another station does it.
    void Rename(const std::string &name)
    {
        CommandScope station(nullptr);
        SACommand other(station->Connection(), "UPDATE admin.fornito1 SET for_desc = :nome WHERE for_codice = 1");
        other.Param("nome").setAsString(name);
        other.Execute();
    }
    std::string NameNow(SACommand *cmd)
    {
        FORNITORI supplier;
        EXPECT_TRUE(sqlfor.Search(cmd, 1, &supplier));
        return supplier.for_desc.str();
    }
};

TEST_P(MasterRecordsTest, ARecordIsReadOnceAsLongAsTheScopeLives)
{
    Rename("Prima");
    {
        const MasterRecords known(Cmd());
        EXPECT_EQ(NameNow(Cmd()), "Prima");
        Rename("Dopo");
        EXPECT_EQ(NameNow(Cmd()), "Prima");
        EXPECT_EQ(NameNow(nullptr), "Dopo") << "another connection is none of its business";
        {
            const MasterRecords inner(Cmd());
            EXPECT_EQ(NameNow(Cmd()), "Prima") << "a scope inside shares the records";
        }
        EXPECT_EQ(NameNow(Cmd()), "Prima") << "and leaves them to the outer one";
    }
    EXPECT_EQ(NameNow(Cmd()), "Dopo");
}

TEST_P(MasterRecordsTest, WhatIsCheckedInATransactionIsReadFromTheArchive)
{
    const MasterRecords known(Cmd());
    NameNow(Cmd());
    Rename("Dopo");
    SATransaction transaction(Cmd());
    EXPECT_EQ(NameNow(Cmd()), "Dopo");
    transaction.Commit();
}

TEST_P(MasterRecordsTest, OwnWritesAreSeenAtOnce)
{
    const MasterRecords known(Cmd());
    FORNITORI supplier;
    ASSERT_TRUE(sqlfor.Search(Cmd(), 1, &supplier));
    supplier.for_desc = "Nuovo nome";
    sqlfor.SqlTransaction(Cmd(), kUpdate, &supplier);
    EXPECT_EQ(NameNow(Cmd()), "Nuovo nome");
    EXPECT_FALSE(sqlfor.Search(Cmd(), 4711, &supplier));
    Run("INSERT INTO admin.fornito1 (for_codice, for_desc) VALUES (4711, 'Arrivato adesso')");
    EXPECT_TRUE(sqlfor.Search(Cmd(), 4711, &supplier)) << "what was missing is asked for again";
}

TEST_P(MasterRecordsTest, EveryColumnAndEveryKeyComesBack)
{
    Run("UPDATE admin.fornito1 SET for_desc = 'Caffè & C.', for_data_cessazione = '2026-05-04', for_pag = 45"
        " WHERE for_codice = 1");
    FORNITORI plain, first, second;
    CODIVA rate, same_rate, other_kind;
    SOTTOCON account, same_account, other_account;
    CAUCONT causale, same_causale;
    ASSERT_TRUE(sqlfor.Search(Cmd(), 1, &plain));
    const MasterRecords known(Cmd());
    for (FORNITORI *read : {&first, &second}) ASSERT_TRUE(sqlfor.Search(Cmd(), 1, read));
    for (const ColumnDescription &column : sqlfor.Description().Columns()) {
        SCOPED_TRACE(column.name);
        if (column.kind == ColumnKind::Text)
            EXPECT_EQ(static_cast<BoundedText *>(column.member(&second))->str(),
                      static_cast<BoundedText *>(column.member(&plain))->str());
        else
            EXPECT_EQ(*static_cast<long *>(column.member(&second)), *static_cast<long *>(column.member(&plain)));
    }
    for (CODIVA *read : {&rate, &same_rate}) ASSERT_TRUE(sqliva.SearchByRate(Cmd(), 22, kVatTaxable, read));
    EXPECT_EQ(same_rate.iva_aliq, 22.0);
    EXPECT_EQ(same_rate.iva_codice, rate.iva_codice);
    ASSERT_TRUE(sqliva.SearchByRate(Cmd(), 0, kVatExcluded, &other_kind));
    EXPECT_EQ(other_kind.iva_tip, kVatExcluded);
    for (SOTTOCON *read : {&account, &same_account}) ASSERT_TRUE(sqlsot.Search(Cmd(), 260, 1, 1, read));
    ASSERT_TRUE(sqlsot.Search(Cmd(), 300, 1, 1, &other_account));
    EXPECT_EQ(same_account.sot_desc, account.sot_desc);
    EXPECT_EQ(other_account.sot_mas, 300);
    for (CAUCONT *read : {&causale, &same_causale}) ASSERT_TRUE(sqlcac.Search(Cmd(), 21, read));
    EXPECT_EQ(same_causale.righe[0].car_mas, causale.righe[0].car_mas) << "with its template rows";
}

INSTANTIATE_TEST_SUITE_P(Engines, MasterRecordsTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

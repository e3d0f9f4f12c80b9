#include "tarvolumera/Attachments.h"
#include "tarvolumera/Causali.h"
#include "tarvolumera/ChartOfAccounts.h"
#include "tarvolumera/DialectTexts.h"
#include "tarvolumera/Lookups.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/PSQLrow.h"
#include "tarvolumera/PaymentTerms.h"
#include "tarvolumera/ReceivedInvoices.h"
#include "tarvolumera/Schedule.h"
#include "tarvolumera/VatCodes.h"
#include "tarvolumera/Warehouse.h"
#include "tarvolumera/archive/SchemaText.h"
#include "tests/support/TestArchive.h"

#include <gmock/gmock.h>

#include <set>

namespace {

const std::vector<const CTarvoPostgreSQL *> &AllTables()
{
    static const std::vector<const CTarvoPostgreSQL *> kAll = {
        &sqldit, &sqlflg, &sqlmas, &sqlcon, &sqlsot, &sqlsez, &sqliva, &sqlpag, &sqlban, &sqlage, &sqlcdc, &sqlcac,
        &sqlcar, &sqlcli, &sqlfor, &sqldst, &sqlnaz, &sqlprv, &sqlagr, &sqlpno, &sqlrow, &sqlpcc, &sqlcoi, &sqlcor,
        &sqlpat, &sqlpni, &sqlall, &sqlsca, &sqlfat, &sqlart, &sqlarf, &sqlcam, &sqltes, &sqlrig};
    return kAll;
}

class TablesTest : public ArchiveTest {
  protected:
    /// Columns that can be written, as the engine knows them.
    std::set<std::string> ColumnsOf(const std::string &table)
    {
        const std::string name = table.substr(table.find('.') + 1);
        SACommand query(Cmd()->Connection(),
                        GetParam() == SAEngine::SQLite
                            ? "SELECT name FROM pragma_table_xinfo(:tabella) WHERE hidden = 0"
                            : "SELECT column_name FROM information_schema.columns WHERE table_schema = 'admin'"
                              " AND table_name = :tabella AND is_generated = 'NEVER'");
        query.Param("tabella").setAsString(name);
        query.Execute();
        std::set<std::string> columns;
        while (query.FetchNext()) columns.insert(query.Field(1).asString());
        return columns;
    }
};

TEST_P(TablesTest, DescriptionsAreTheTables)
{
    std::set<std::string> described = {"admin.versione", "admin.sincro"}; // have no table object
    for (const CTarvoPostgreSQL *table : AllTables()) {
        std::set<std::string> columns;
        for (const ColumnDescription &column : table->Description().Columns()) columns.insert(column.name);
        EXPECT_EQ(columns, ColumnsOf(table->TableName())) << table->TableName();
        described.insert(table->TableName());
    }
    const std::vector<std::string> tables = TablesInOrder();
    EXPECT_EQ(described, std::set<std::string>(tables.begin(), tables.end()));
}

TEST_P(TablesTest, ARecordComesBackAsItWasStored)
{
    FORNITORI stored;
    stored.for_codice = 900;
    stored.for_desc = "Caffè \"Perché\" d'Élite; DROP TABLE admin.fornito1 --";
    stored.for_piva = "01234567897";
    stored.for_pag = 45;
    stored.for_data_cessazione = 2461000;
    sqlfor.SqlTransaction(Cmd(), kInsert, &stored);
    FORNITORI read;
    ASSERT_TRUE(sqlfor.Search(Cmd(), 900, &read));
    EXPECT_EQ(read.for_desc, stored.for_desc.str());
    EXPECT_EQ(read.for_pag, 45);
    EXPECT_EQ(read.for_ban, 0) << "no bank is NULL in the archive and 0 in the record";
    EXPECT_EQ(read.for_data_cessazione, 2461000);
    read.for_data_cessazione = 0;
    sqlfor.SqlTransaction(Cmd(), kUpdate, &read);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.fornito1 WHERE for_codice = 900 AND for_data_cessazione IS NULL"), "1");
    sqlfor.SqlTransaction(Cmd(), kDelete, &read);
    EXPECT_FALSE(sqlfor.Search(Cmd(), 900, &read));
    EXPECT_EQ(read.for_codice, 0) << "not found leaves a blank record";
    try {
        sqlfor.SqlTransaction(Cmd(), kUpdate, &stored);
        FAIL() << "updated a record that does not exist";
    } catch (const SAException &error) {
        EXPECT_EQ(error.Fault(), SAFault::Changed);
    }
    EXPECT_GT(sqlfor.NextCode(nullptr), 25) << "a null command opens its own connection";
}

TEST_P(TablesTest, BytesAndMomentsComeBack)
{
    ALLEGATI stored;
    stored.all_anno = 2026;
    stored.all_tab_tipo = kReceivedInvoices;
    stored.all_fname = "a.xml";
    for (int i = 0; i < 256; ++i) stored.all_data.push_back(static_cast<std::byte>(i));
    stored.all_date_time = SADateTime(2026, 3, 1, 23, 59, 58);
    sqlall.Store(Cmd(), &stored);
    ALLEGATI read;
    ASSERT_TRUE(sqlall.Search(Cmd(), 2026, stored.all_codice, &read));
    EXPECT_EQ(read.all_data, stored.all_data);
    EXPECT_EQ(read.all_date_time, stored.all_date_time);
    EXPECT_EQ(read.all_bytes_size, 256);
    long seen = 0;
    sqlall.ForEachOfKind(Cmd(), kReceivedInvoices, SADateTime(2026, 3, 1), SADateTime(2026, 3, 2),
                         [&](const ALLEGATI &r) {
                             EXPECT_TRUE(r.all_data.empty()) << "a list carries no bytes";
                             ++seen;
                             return true;
                         });
    sqlall.ForEachOfKind(Cmd(), kReceivedInvoices, SADateTime(2026, 2, 1), SADateTime(2026, 3, 1),
                         [&](const ALLEGATI &) {
                             ADD_FAILURE() << "the end of the period is excluded";
                             return true;
                         });
    EXPECT_EQ(seen, 1);
}

TEST_P(TablesTest, LookupsOfTheBaseTables)
{
    CAUCONT causale;
    ASSERT_TRUE(sqlcac.Search(Cmd(), 21, &causale));
    EXPECT_EQ(causale.righe[0].car_mas, 250);
    causale.righe[3] = {0, 0, 310, 1, 1, 0, 0};
    sqlcac.SqlTransaction(Cmd(), kUpdate, &causale);
    ASSERT_TRUE(sqlcac.Search(Cmd(), 21, &causale));
    EXPECT_EQ(causale.righe[3].car_mas, 310);
    CODIVA code;
    EXPECT_TRUE(sqliva.SearchByRate(Cmd(), 22, kVatTaxable, &code));
    EXPECT_EQ(code.iva_codice, 22) << "the preferred code of its rate";
    EXPECT_FALSE(sqliva.SearchByRate(Cmd(), 21.5, kVatTaxable, &code));
    EXPECT_EQ(AccountDescription(Cmd(), {150, 1, 1}), AccountDescription(nullptr, {150, 1, 1}));
    EXPECT_TRUE(AccountExists(Cmd(), {250, 1, 1}));
    EXPECT_FALSE(AccountExists(Cmd(), {250, 1, 4711})) << "no such supplier";
    EXPECT_FALSE(AccountExists(Cmd(), {260, 1, 4711}));
    NAZIONI nation;
    EXPECT_TRUE(sqlnaz.Search(Cmd(), "IT", &nation));
    EXPECT_EQ(nation.naz_ue, 1);
    PROVINCE province;
    EXPECT_TRUE(sqlprv.Search(Cmd(), "MI", &province));
    DESTINAZIONI destination;
    EXPECT_FALSE(sqldst.Search(Cmd(), 0, 4711, 1, &destination));
}

TEST_P(TablesTest, WorkTablesAndDialect)
{
    Run("CREATE TABLE admin.lavoro (a INTEGER, b DATE, c CHAR(5), d VARCHAR(30), e DOUBLE PRECISION)");
    Run("GRANT ALL ON admin.lavoro TO PUBLIC");
    Run("INSERT INTO admin.lavoro (a, d, e) VALUES (12, 'x', 1.5)");
    const std::string key =
        sqlpno.QueryAdapt("SELECT LPAD(CONVERT(VARCHAR(10), a), 10, '0') + LPAD(CONVERT(VARCHAR(6), a), "
                          "10, '0') AS chiave FROM admin.lavoro WHERE a = %ld OR a = %ld",
                          12, 13);
    EXPECT_EQ(Value(key), "00000000120000000012");
    Run("DROP TABLE admin.lavoro");
    try {
        Run("DROP TABLE admin.lavoro");
        FAIL();
    } catch (const SAException &error) {
        EXPECT_TRUE(CTarvoPostgreSQL::IsTableNotExistErr(error));
        EXPECT_FALSE(CTarvoPostgreSQL::IsViewNotExistErr(error));
    }
    try {
        Value("SELECT * FROM admin.totlavoro");
        FAIL();
    } catch (const SAException &error) {
        EXPECT_TRUE(CTarvoPostgreSQL::IsTableNotExistErr(error));
        EXPECT_TRUE(CTarvoPostgreSQL::IsViewNotExistErr(error)) << "a query cannot tell which of the two is missing";
    }
    Run("UPDATE admin.clienti1 SET cli_age = NULL");
    Run("DROP TABLE admin.agenti1" + std::string(GetParam() == SAEngine::SQLite ? "" : " CASCADE"));
    sqlage.Create(Cmd());
    sqlage.Create(Cmd());
    AGENTI agent;
    agent.age_codice = 1;
    agent.age_desc = "Nuovo";
    sqlage.SqlTransaction(Cmd(), kInsert, &agent);
}

TEST_P(TablesTest, TextsOfBothDialectsRun)
{
    EXPECT_EQ(Value(std::string("SELECT COUNT(*) FROM admin.versione WHERE ver_data > ") + TodayText()), "0");
    EXPECT_EQ(
        Value("SELECT " + RoundedSumText("iva_aliq / 3", "saldo_con") + " FROM admin.codiva WHERE iva_codice = 10"),
        "3.33");
    EXPECT_EQ(Value("SELECT " + AccountKeyText("sot_mas", "sot_con", "sot_codice") +
                    " AS chiave FROM admin.sotcon ORDER BY chiave LIMIT 1")
                  .size(),
              30u);
    SACommand range(Cmd()->Connection(), "SELECT COUNT(*) AS numrec FROM admin.sotcon WHERE " +
                                             AccountRangeText("sot_mas", "sot_con", "sot_codice"));
    const std::pair<const char *, long> bounds[] = {{"m_start", 260}, {"c_start", 1}, {"s_start", 2},
                                                    {"m_stop", 260},  {"c_stop", 1},  {"s_stop", 4}};
    for (const auto &[name, value] : bounds) range.Param(name).setAsLong(value);
    range.Execute();
    ASSERT_TRUE(range.FetchNext());
    EXPECT_EQ(range.Field("numrec").asLong(), 3) << "IVA vendite, corrispettivi, sospensione";
}

TEST_P(TablesTest, AListedDocumentCanBeRenamedWithoutLosingItsBytes)
{
    ALLEGATI stored;
    stored.all_anno = 2026;
    stored.all_fname = "a.pdf";
    stored.all_data = ToBytes("contenuto");
    sqlall.SqlTransaction(Cmd(), kInsert, &stored);
    ALLEGATI listed;
    sqlall.ForEachOfKind(Cmd(), 0, {}, {}, [&](const ALLEGATI &record) {
        listed = record;
        return false;
    });
    listed.all_desc = "Rinominato";
    sqlall.SqlTransaction(Cmd(), kUpdate, &listed);
    ALLEGATI read;
    ASSERT_TRUE(sqlall.SearchByCode(Cmd(), stored.all_codice, &read));
    EXPECT_EQ(read.all_desc, "Rinominato");
    EXPECT_EQ(AsText(read.all_data), "contenuto");
}

TEST_P(TablesTest, ConnectionsAndCompanies)
{
    SAConnection connection;
    SACommand command;
    EXPECT_TRUE(sqlpno.OpenConnection(&connection, &command, true, 1));
    EXPECT_TRUE(connection.InTransaction());
    connection.Disconnect();
    EXPECT_THROW(sqlpno.OpenConnection(&connection, &command, false, 2), SAException) << "an archive holds one company";
    EXPECT_EQ(sqlpno.GetDbType(), GetParam() == SAEngine::SQLite ? 0 : 1);
}

INSTANTIATE_TEST_SUITE_P(Engines, TablesTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

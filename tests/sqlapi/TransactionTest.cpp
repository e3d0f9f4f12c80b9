// Units of work: stored whole or not at all, also when an inner one fails and when two stations write at once.

#include "sqlapi/SACommand.h"
#include "tests/support/TestDatabase.h"

#include <thread>

namespace {

class TransactionTest : public DatabaseTest {
  protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (database_) connection_.ExecuteScript("CREATE TABLE admin.t (a INTEGER PRIMARY KEY)");
    }

    void Insert(long a)
    {
        SACommand insert(&connection_, "INSERT INTO admin.t VALUES (:a)");
        insert.Param("a").setAsLong(a);
        insert.Execute();
    }

    long Count() { return CountWith(connection_); }
    static long CountWith(SAConnection &connection)
    {
        SACommand count(&connection, "SELECT COUNT(*) AS n FROM admin.t");
        count.Execute();
        return count.FetchNext() ? count.Field("n").asLong() : -1;
    }
};
INSTANTIATE_TEST_SUITE_P(Engines, TransactionTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(TransactionTest, OnlyTheOutermostUnitStores)
{
    SAConnection other;
    other.Connect(Target());
    SATransaction outer(&connection_);
    {
        SATransaction inner(&connection_);
        Insert(1);
        inner.Commit();
    }
    EXPECT_TRUE(connection_.InTransaction());
    EXPECT_EQ(CountWith(other), 0);
    EXPECT_THROW(connection_.Commit(), SAException);
    outer.Commit();
    EXPECT_FALSE(connection_.InTransaction());
    EXPECT_EQ(CountWith(other), 1);
    EXPECT_THROW(outer.Commit(), SAException);
}

TEST_P(TransactionTest, UnitLeftWithoutCommitStoresNothing)
{
    {
        SATransaction unit(&connection_);
        Insert(1);
    }
    EXPECT_FALSE(connection_.InTransaction());
    EXPECT_EQ(Count(), 0);
}

TEST_P(TransactionTest, InnerUnitLeftDoomsTheOuter)
{
    {
        SATransaction outer(&connection_);
        Insert(1);
        {
            SATransaction inner(&connection_);
            Insert(2);
        }
        EXPECT_THROW(outer.Commit(), SAException);
    }
    EXPECT_FALSE(connection_.InTransaction());
    EXPECT_EQ(Count(), 0);
    SATransaction next(&connection_);
    Insert(3);
    next.Commit();
    EXPECT_EQ(Count(), 1);
}

TEST_P(TransactionTest, SwallowedErrorStillDooms)
{
    SATransaction unit(&connection_);
    Insert(1);
    EXPECT_THROW(Insert(1), SAException);
    EXPECT_THROW(unit.Commit(), SAException);
    EXPECT_FALSE(connection_.InTransaction());
    EXPECT_EQ(Count(), 0);
}

TEST_P(TransactionTest, SavepointTakesBackTheError)
{
    SATransaction unit(&connection_);
    Insert(1);
    connection_.ExecuteScript("SAVEPOINT prova");
    EXPECT_THROW(Insert(1), SAException);
    connection_.ExecuteScript("ROLLBACK TO SAVEPOINT prova");
    Insert(2);
    unit.Commit();
    EXPECT_EQ(Count(), 2);
}

TEST_P(TransactionTest, RefusedCommitStoresNothing)
{
    connection_.ExecuteScript("CREATE TABLE admin.f (a INTEGER REFERENCES admin.t (a) DEFERRABLE INITIALLY DEFERRED)");
    SATransaction unit(&connection_);
    Insert(1);
    connection_.ExecuteScript("INSERT INTO admin.f VALUES (99)");
    try {
        unit.Commit();
        ADD_FAILURE() << "stored without its parent";
    } catch (const SAException &error) {
        EXPECT_EQ(error.Fault(), SAFault::ForeignKeyViolation);
    }
    EXPECT_FALSE(connection_.InTransaction());
    EXPECT_EQ(Count(), 0);
}

TEST_P(TransactionTest, DisconnectRollsBackAndEndsTheUnit)
{
    SATransaction unit(&connection_);
    Insert(1);
    connection_.Disconnect();
    connection_.Connect(Target());
    EXPECT_EQ(Count(), 0);
    EXPECT_THROW(unit.Commit(), SAException);
    SATransaction next(&connection_);
    EXPECT_TRUE(connection_.InTransaction());
}

TEST_P(TransactionTest, ReadUnitSeesOnePicture)
{
    SAConnection other;
    other.Connect(Target());
    SATransaction reading(&connection_, SATransactionKind::Read);
    EXPECT_EQ(Count(), 0);
    other.ExecuteScript("INSERT INTO admin.t VALUES (1)");
    EXPECT_EQ(Count(), 0);
    reading.Commit();
    EXPECT_EQ(Count(), 1);
}

// A record dialog keeps its query on a row while another station stores, and then stores itself.
TEST_P(TransactionTest, OpenQueryDoesNotBlockTheWriteThatFollows)
{
    for (int a = 1; a <= 3; ++a) Insert(a);
    SACommand query(&connection_, "SELECT a FROM admin.t ORDER BY a");
    SAConnection other;
    other.Connect(Target());
    for (const bool in_unit : {false, true}) {
        query.Execute();
        ASSERT_TRUE(query.FetchNext());
        other.ExecuteScript("INSERT INTO admin.t VALUES (" + std::string(in_unit ? "20" : "10") + ")");
        if (in_unit) {
            SATransaction unit(&connection_);
            Insert(21);
            unit.Commit();
        } else {
            Insert(11);
        }
        EXPECT_EQ(query.Field("a").asLong(), 1);
        long last = 1;
        while (query.FetchNext()) last = query.Field("a").asLong();
        EXPECT_EQ(last, in_unit ? 11 : 3) << "the rows are those of the moment the query was executed";
    }
    query.Execute();
    ASSERT_TRUE(query.FetchNext());
    connection_.ExecuteScript("DROP TABLE admin.t");
    EXPECT_TRUE(query.FetchNext());
}

TEST_P(TransactionTest, RollbackLeavesOpenRowsReadable)
{
    SATransaction unit(&connection_);
    for (int a = 1; a <= 3; ++a) Insert(a);
    SACommand query(&connection_, "SELECT a FROM admin.t ORDER BY a");
    query.Execute();
    ASSERT_TRUE(query.FetchNext());
    connection_.Rollback();
    EXPECT_EQ(query.Field("a").asLong(), 1);
    EXPECT_TRUE(query.FetchNext());
    EXPECT_TRUE(query.FetchNext());
    EXPECT_EQ(query.Field("a").asLong(), 3);
    EXPECT_FALSE(query.FetchNext());
}

TEST_P(TransactionTest, WritersWaitForEachOther)
{
    connection_.ExecuteScript("CREATE TABLE admin.contatori (n INTEGER); INSERT INTO admin.contatori VALUES (0)");
    constexpr int kStations = 4;
    constexpr int kEntries = 25;
    std::atomic<int> errors{0};
    std::vector<std::thread> stations;
    for (int station = 0; station < kStations; ++station)
        stations.emplace_back([this, &errors] {
            try {
                for (int entry = 0; entry < kEntries; ++entry) {
                    SAConnection connection;
                    connection.Connect(Target());
                    SATransaction unit(&connection);
                    SACommand next(&connection, "SELECT n FROM admin.contatori FOR UPDATE");
                    next.Execute();
                    next.FetchNext();
                    const long number = next.Field("n").asLong() + 1;
                    SACommand write(&connection, "UPDATE admin.contatori SET n = :n");
                    write.Param("n").setAsLong(number);
                    write.Execute();
                    write.setCommandText("INSERT INTO admin.t VALUES (:n)");
                    write.Param("n").setAsLong(number);
                    write.Execute();
                    unit.Commit();
                }
            } catch (const SAException &error) {
                ++errors;
                ADD_FAILURE() << error.ErrText();
            }
        });
    for (std::thread &station : stations) station.join();
    EXPECT_EQ(errors, 0);
    SACommand query(&connection_, "SELECT COUNT(*) AS n, MAX(a) AS m FROM admin.t");
    query.Execute();
    ASSERT_TRUE(query.FetchNext());
    EXPECT_EQ(query.Field("n").asLong(), kStations * kEntries);
    EXPECT_EQ(query.Field("m").asLong(), kStations * kEntries) << "numbers have no gaps";
}

} // namespace

// Parameters, values, rows and statements, the same on both engines.

#include "sqlapi/SACommand.h"
#include "tests/support/TestDatabase.h"

#include <limits>

namespace {

class CommandTest : public DatabaseTest {
  protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (!database_) return;
        connection_.ExecuteScript("CREATE TABLE admin.t (a INTEGER PRIMARY KEY, n BIGINT, e DOUBLE PRECISION,"
                                  " s VARCHAR(40), c CHAR(5), d DATE, m TIMESTAMP, b BYTEA)");
    }

    void Fill(int rows)
    {
        SATransaction unit(&connection_);
        SACommand insert(&connection_, "INSERT INTO admin.t (a, s) VALUES (:a, :s)");
        for (int i = 1; i <= rows; ++i) {
            insert.Param("a").setAsLong(i);
            insert.Param("s").setAsString("row " + std::to_string(i));
            insert.Execute();
        }
        unit.Commit();
    }

    long Count(const std::string &table)
    {
        SACommand count(&connection_, "SELECT COUNT(*) AS numrec FROM " + table);
        count.Execute();
        return count.FetchNext() ? count.Field("numrec").asLong() : -1;
    }
};
INSTANTIATE_TEST_SUITE_P(Engines, CommandTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(CommandTest, ReadsBackWhatWasStored)
{
    const std::vector<std::byte> bytes = {std::byte{0}, std::byte{255}, std::byte{0}, std::byte{'\\'}, std::byte{'\''}};
    SACommand insert(&connection_, "INSERT INTO admin.t VALUES (:a, :n, :e, :s, :c, :d, :m, :b)");
    insert.Param("a").setAsLong(std::numeric_limits<std::int32_t>::min());
    insert.Param("n").setAsInt64(std::numeric_limits<std::int64_t>::max());
    insert.Param("e").setAsDouble(0.1 + 0.2);
    insert.Param("s").setAsString("L'è :s \"x\" \\ €");
    insert.Param("c").setAsString("ab");
    insert.Param("d").setAsDateTime({2024, 2, 29});
    insert.Param("m").setAsDateTime({1999, 12, 31, 23, 59, 58});
    insert.Param("b").setAsBytes(bytes);
    insert.Execute();
    EXPECT_EQ(insert.RowsAffected(), 1);

    SACommand query(&connection_, "SELECT a, n, e, s, c, d, m, b, e AS text, 1 = 1 AS flag FROM admin.t");
    query.Execute();
    ASSERT_TRUE(query.FetchNext());
    EXPECT_EQ(query.Field("A").asLong(), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(query.Field("n").asInt64(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(query.Field("e").asDouble(), 0.1 + 0.2);
    EXPECT_EQ(query.Field("s").asString(), "L'è :s \"x\" \\ €");
    EXPECT_EQ(query.Field("c").asString(), "ab");
    EXPECT_EQ(query.Field("d").asDateTime(), SADateTime(2024, 2, 29));
    EXPECT_EQ(query.Field("m").asDateTime(), SADateTime(1999, 12, 31, 23, 59, 58));
    EXPECT_EQ(query.Field("b").asBytes(), bytes);
    EXPECT_EQ(query.Field("text").asString(), "0.30000000000000004");
    EXPECT_TRUE(query.Field("flag").asBool());
    EXPECT_FALSE(query.FetchNext());
    EXPECT_TRUE(query.Field("a").isNull()) << "behind the last row there is nothing to read";
}

TEST_P(CommandTest, NullReadsAsNothing)
{
    SACommand insert(&connection_, "INSERT INTO admin.t VALUES (:a, :n, :e, :s, :c, :d, :m, :b)");
    insert.Param("a").setAsLong(1);
    insert.Param("s").setAsString("");
    insert.Param("d").setAsDateTime(SADateTime());
    insert.Param("b").setAsBytes({});
    insert.Execute();

    SACommand query(&connection_, "SELECT * FROM admin.t");
    query.Execute();
    ASSERT_TRUE(query.FetchNext());
    for (const char *name : {"n", "e", "c", "d", "m"}) EXPECT_TRUE(query.Field(name).isNull()) << name;
    EXPECT_FALSE(query.Field("s").isNull());
    EXPECT_FALSE(query.Field("b").isNull());
    EXPECT_EQ(query.Field("n").asLong(), 0);
    EXPECT_EQ(query.Field("e").asDouble(), 0.0);
    EXPECT_EQ(query.Field("c").asString(), "");
    EXPECT_TRUE(query.Field("d").asDateTime().IsNull());
    EXPECT_TRUE(query.Field("m").asBytes().empty());
}

TEST_P(CommandTest, NumbersReadInEveryForm)
{
    SACommand query(&connection_,
                    "SELECT 12.75 AS x, '42' AS t, -7 AS i, CAST(100 AS DOUBLE PRECISION) AS w, 'abc' AS s");
    query.Execute();
    ASSERT_TRUE(query.FetchNext());
    EXPECT_EQ(query.Field("x").asLong(), 12);
    EXPECT_EQ(query.Field("x").asString(), "12.75");
    EXPECT_EQ(query.Field("t").asLong(), 42);
    EXPECT_EQ(query.Field("i").asDouble(), -7.0);
    EXPECT_EQ(query.Field("w").asString(), "100");
    EXPECT_EQ(query.Field("s").asLong(), 0);
}

TEST_P(CommandTest, ParameterKeepsItsValueUntilTheNextText)
{
    SACommand query(&connection_,
                    "SELECT CAST(:x AS INTEGER) AS x, CAST(:y AS INTEGER) AS y, CAST(:X AS INTEGER) AS z");
    EXPECT_EQ(query.ParamCount(), 2);
    query.Param("x").setAsLong(1);
    query.Param(2).setAsLong(2);
    query.Execute();
    query.Param("Y").setAsLong(3);
    query.Execute();
    ASSERT_TRUE(query.FetchNext());
    EXPECT_EQ(query.Field("x").asLong() * 100 + query.Field("y").asLong() * 10 + query.Field("z").asLong(), 131);
    query.setCommandText(std::string(query.CommandText()));
    query.Execute();
    ASSERT_TRUE(query.FetchNext());
    EXPECT_TRUE(query.Field("x").isNull());
}

TEST_P(CommandTest, MisuseIsAnErrorOfTheLibrary)
{
    SACommand query(&connection_, "SELECT 1 AS a");
    query.Execute();
    SACommand unconnected;
    unconnected.setCommandText("SELECT 1");
    const std::function<void()> misuses[] = {
        [&] { query.Param("nome"); }, [&] { query.Param(1); },        [&] { query.Field("b"); },
        [&] { query.Field(2); },      [&] { unconnected.Execute(); }, [&] { SATransaction unit(&unconnected); },
    };
    for (std::size_t i = 0; i < std::size(misuses); ++i) {
        SAErrorClass_t error_class = SA_NoError;
        try {
            misuses[i]();
        } catch (const SAException &error) {
            error_class = error.ErrClass();
        }
        EXPECT_EQ(error_class, SA_Library_Error) << "misuse " << i;
    }
    EXPECT_THROW(connection_.Commit(), SAException) << "nothing to commit";
}

TEST_P(CommandTest, OneCommandIsOneStatement)
{
    SACommand command(&connection_, "INSERT INTO admin.t (a) VALUES (1); DELETE FROM admin.t");
    EXPECT_THROW(command.Execute(), SAException);
    EXPECT_EQ(Count("admin.t"), 0);
    command.setCommandText("INSERT INTO admin.t (a) VALUES (1); -- done");
    command.Execute();
    EXPECT_EQ(Count("admin.t"), 1);
}

TEST_P(CommandTest, StreamGoesOnWhileOthersRun)
{
    Fill(500);
    SACommand outer(&connection_, "SELECT a, s FROM admin.t WHERE a <= 500 ORDER BY a");
    SACommand inner(&connection_, "SELECT s FROM admin.t WHERE a = :a");
    SACommand update(&connection_, "UPDATE admin.t SET s = 'new' WHERE a = :a");
    outer.Execute();
    long rows = 0;
    while (outer.FetchNext()) {
        ++rows;
        const long a = outer.Field("a").asLong();
        ASSERT_EQ(a, rows);
        EXPECT_EQ(outer.Field("s").asString(), "row " + std::to_string(a));
        if (a % 100 != 0) continue;
        inner.Param("a").setAsLong(a);
        inner.Execute();
        ASSERT_TRUE(inner.FetchNext());
        EXPECT_EQ(inner.Field("s").asString(), outer.Field("s").asString());
        update.Param("a").setAsLong(a);
        update.Execute();
        EXPECT_EQ(update.RowsAffected(), 1);
    }
    EXPECT_EQ(rows, 500);
}

TEST_P(CommandTest, SameTextStreamsOnTwoLevels)
{
    Fill(3);
    const char *text = "SELECT a FROM admin.t ORDER BY a";
    std::vector<long> seen;
    SACommand outer(&connection_, text);
    outer.Execute();
    while (outer.FetchNext()) {
        SACommand inner(&connection_, text);
        inner.Execute();
        while (inner.FetchNext()) seen.push_back(outer.Field("a").asLong() * 10 + inner.Field("a").asLong());
    }
    EXPECT_THAT(seen, testing::ElementsAre(11, 12, 13, 21, 22, 23, 31, 32, 33));
}

TEST_P(CommandTest, ErrorInTheMiddleOfRowsIsThrownThere)
{
    Fill(50);
    const std::string divide =
        IsSqlite() ? "abs(CASE WHEN a < 40 THEN a ELSE -9223372036854775807 - 1 END)" : "1 / (a - 40)";
    SACommand query(&connection_, "SELECT " + divide + " AS x FROM admin.t WHERE a > 0");
    SACommand other(&connection_, "SELECT 1");
    for (const bool interrupted : {false, true}) {
        query.Execute();
        long rows = 0;
        EXPECT_THROW(
            while (query.FetchNext()) {
                if (interrupted && rows == 5) other.Execute();
                ++rows;
            },
            SAException);
        EXPECT_EQ(rows, 39);
        EXPECT_FALSE(query.FetchNext());
    }
}

TEST_P(CommandTest, ReturnedRowsAndAffectedRowsComeTogether)
{
    Fill(3);
    SACommand command(&connection_, "UPDATE admin.t SET n = a * 2 WHERE a > :a RETURNING n");
    command.Param("a").setAsLong(1);
    command.Execute();
    EXPECT_EQ(command.RowsAffected(), 2);
    ASSERT_TRUE(command.FetchNext());
    // The statement is over although not all its rows were read: another session can write.
    SAConnection other;
    other.Connect(Target());
    SACommand write(&other, "DELETE FROM admin.t WHERE a = 1");
    write.Execute();
    EXPECT_EQ(write.RowsAffected(), 1);
    EXPECT_TRUE(command.FetchNext());
    EXPECT_FALSE(command.FetchNext());
}

TEST_P(CommandTest, PreparedStatementFollowsTheSchema)
{
    Fill(1);
    SACommand query(&connection_, "SELECT * FROM admin.t WHERE a = 1");
    query.Execute();
    EXPECT_EQ(query.FieldCount(), 8);
    connection_.ExecuteScript("ALTER TABLE admin.t ADD COLUMN z VARCHAR(3) DEFAULT 'own'");
    query.Execute();
    ASSERT_TRUE(query.FetchNext());
    EXPECT_EQ(query.Field("z").asString(), "own");
    query.Close();

    SAConnection other;
    other.Connect(Target());
    other.ExecuteScript("ALTER TABLE admin.t ADD COLUMN y VARCHAR(3) DEFAULT 'oth'");
    query.Execute();
    ASSERT_TRUE(query.FetchNext());
    EXPECT_EQ(query.Field("y").asString(), "oth");
    EXPECT_EQ(query.FieldCount(), 10);
}

TEST_P(CommandTest, MoreTextsThanTheCacheHolds)
{
    SACommand first(&connection_, "SELECT CAST(0 AS INTEGER) AS x");
    for (int round = 0; round < 2; ++round)
        for (int i = 1; i <= 150; ++i) {
            SACommand query(&connection_, "SELECT CAST(:p AS INTEGER) + " + std::to_string(i) + " AS x");
            query.Param("p").setAsLong(round);
            query.Execute();
            ASSERT_TRUE(query.FetchNext());
            ASSERT_EQ(query.Field("x").asLong(), round + i);
        }
    if (IsSqlite()) return;
    SACommand held(&connection_, "SELECT COUNT(*) AS n FROM pg_prepared_statements");
    held.Execute();
    ASSERT_TRUE(held.FetchNext());
    EXPECT_LE(held.Field("n").asLong(), 64 + 16) << "statements dropped here must go away on the server";
}

TEST_P(CommandTest, CommandOutlivesItsConnection)
{
    SACommand command;
    {
        SAConnection connection;
        connection.Connect(Target());
        command.setConnection(&connection);
        command.setCommandText("SELECT 1 AS a");
        command.Execute();
        ASSERT_TRUE(command.FetchNext());
        connection.Disconnect();
        EXPECT_FALSE(command.FetchNext());
    }
    EXPECT_THROW(command.Execute(), SAException);
}

} // namespace

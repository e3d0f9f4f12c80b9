// Sessions: taken from the pool, given back, lost, and the copy of an archive.

#include "sqlapi/SACommand.h"
#include "tests/support/TestDatabase.h"

#include <sys/resource.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <thread>

namespace {

long ReadLong(SAConnection &connection, const std::string &sql)
{
    SACommand query(&connection, sql);
    query.Execute();
    return query.FetchNext() ? query.Field(1).asLong() : -1;
}

class SessionTest : public DatabaseTest {
  protected:
    /// A number that a new session would not have: the server's process, or how much was written in the session.
    long SessionNumber(SAConnection &connection) const
    {
        return ReadLong(connection, IsSqlite() ? "SELECT total_changes()" : "SELECT pg_backend_pid()");
    }
    /// Whether a commit waits for the disk.
    bool IsDurable(SAConnection &connection) const
    {
        if (IsSqlite()) return ReadLong(connection, "PRAGMA synchronous") == 2;
        return ReadLong(connection, "SELECT COUNT(*) FROM pg_settings WHERE name = 'synchronous_commit'"
                                    " AND setting = 'on'") == 1;
    }
};
INSTANTIATE_TEST_SUITE_P(Engines, SessionTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(SessionTest, SessionIsUsedAgainAsGoodAsNew)
{
    connection_.ExecuteScript("CREATE TABLE admin.t (a INTEGER); INSERT INTO admin.t VALUES (1)");
    const long session = SessionNumber(connection_);
    connection_.Begin();
    SACommand left_open(&connection_, "INSERT INTO admin.t VALUES (2)");
    left_open.Execute();
    left_open.setCommandText("SELECT a FROM admin.t");
    left_open.Execute();
    ASSERT_TRUE(left_open.FetchNext());
    connection_.Disconnect();
    EXPECT_FALSE(left_open.FetchNext());

    SAConnection again;
    again.Connect(Target());
    EXPECT_FALSE(again.InTransaction());
    EXPECT_EQ(ReadLong(again, "SELECT COUNT(*) FROM admin.t"), 1);
    EXPECT_EQ(SessionNumber(again), session + (IsSqlite() ? 1 : 0));
}

TEST_P(SessionTest, RelaxedDurabilityIsNotHandedOn)
{
    connection_.SetDurability(SADurability::Relaxed);
    connection_.Disconnect();
    connection_.Connect(Target());
    EXPECT_TRUE(IsDurable(connection_));
    connection_.SetDurability(SADurability::Relaxed);
    EXPECT_FALSE(IsDurable(connection_));
}

TEST_P(SessionTest, SessionWithTemporaryTablesIsNotHandedOn)
{
    connection_.ExecuteScript("CREATE TEMP TABLE lavoro (a INTEGER)");
    connection_.Disconnect();
    connection_.Connect(Target());
    EXPECT_THROW(ReadLong(connection_, "SELECT COUNT(*) FROM lavoro"), SAException);
}

TEST_P(SessionTest, ThreadsShareThePool)
{
    std::atomic<long> sum{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([this, &sum] {
            for (int j = 0; j < 50; ++j) {
                SAConnection connection;
                connection.Connect(Target());
                sum += ReadLong(connection, "SELECT 1");
            }
        });
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(sum, 200);
}

class ServerSessionTest : public testing::Test {
  protected:
    void SetUp() override
    {
        if (!IsTestEngineReady(SAEngine::PostgreSQL)) return;
        database_ = std::make_unique<TestDatabase>(SAEngine::PostgreSQL);
        connection_.Connect(database_->Target());
    }
    void TearDown() override
    {
        connection_.Disconnect();
        database_.reset();
    }
    /// Ends a session from another one and waits until the server has forgotten it.
    void Terminate(long pid)
    {
        SAConnection other;
        other.Connect(database_->Target());
        EXPECT_EQ(ReadLong(other, "SELECT CAST(pg_terminate_backend(" + std::to_string(pid) + ", 5000) AS INTEGER)"),
                  1);
    }

    std::unique_ptr<TestDatabase> database_;
    SAConnection connection_;
};

TEST_F(ServerSessionTest, LostInTheMiddleOfAUnit)
{
    const long pid = ReadLong(connection_, "SELECT pg_backend_pid()");
    connection_.ExecuteScript("CREATE TABLE admin.t (a INTEGER)");
    {
        SATransaction unit(&connection_);
        connection_.ExecuteScript("INSERT INTO admin.t VALUES (1)");
        Terminate(pid);
        for (int i = 0; i < 2; ++i) {
            try {
                ReadLong(connection_, "SELECT a FROM admin.t");
                ADD_FAILURE() << "the session still answers";
            } catch (const SAException &error) {
                EXPECT_EQ(error.Fault(), SAFault::ConnectionLost) << error.ErrText();
            }
        }
        EXPECT_THROW(unit.Commit(), SAException);
    }
    connection_.Disconnect();
    connection_.Connect(database_->Target());
    EXPECT_NE(ReadLong(connection_, "SELECT pg_backend_pid()"), pid);
    EXPECT_EQ(ReadLong(connection_, "SELECT COUNT(*) FROM admin.t"), 0);
}

TEST_F(ServerSessionTest, LostWhileStreaming)
{
    const long pid = ReadLong(connection_, "SELECT pg_backend_pid()");
    SACommand query(&connection_, "SELECT generate_series(1, 5000000) AS n");
    query.Execute();
    ASSERT_TRUE(query.FetchNext());
    Terminate(pid);
    try {
        while (query.FetchNext()) {
        }
        ADD_FAILURE() << "all rows of a lost session";
    } catch (const SAException &error) {
        EXPECT_EQ(error.Fault(), SAFault::ConnectionLost) << error.ErrText();
    }
}

TEST_F(ServerSessionTest, LostWhileInThePool)
{
    const long pid = ReadLong(connection_, "SELECT pg_backend_pid()");
    connection_.Disconnect();
    SAConnection keeper; // takes the idle session, so that Terminate opens another one
    keeper.Connect(database_->Target());
    ASSERT_EQ(ReadLong(keeper, "SELECT pg_backend_pid()"), pid);
    SAConnection other;
    other.Connect(database_->Target());
    keeper.Disconnect();
    EXPECT_EQ(ReadLong(other, "SELECT CAST(pg_terminate_backend(" + std::to_string(pid) + ", 5000) AS INTEGER)"), 1);
    connection_.Connect(database_->Target());
    EXPECT_NE(ReadLong(connection_, "SELECT pg_backend_pid()"), pid);
}

TEST_F(ServerSessionTest, CopyIsRefusedAndLeavesTheSessionGood)
{
    connection_.ExecuteScript("CREATE TABLE admin.t (a INTEGER)");
    for (const char *text : {"COPY admin.t FROM STDIN", "COPY admin.t TO STDOUT"}) {
        SACommand copy(&connection_, text);
        EXPECT_THROW(copy.Execute(), SAException);
        EXPECT_THROW(connection_.ExecuteScript(text), SAException);
        EXPECT_EQ(ReadLong(connection_, "SELECT 1"), 1);
    }
    EXPECT_THROW(connection_.CopyTo("copia.db"), SAException);
}

class ArchiveFileTest : public testing::Test {
  protected:
    void SetUp() override { connection_.Connect(database_.Target()); }

    std::filesystem::path File(const char *name) const { return database_.Folder() / name; }
    std::size_t FileCount() const
    {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(database_.Folder()), {}));
    }

    TestDatabase database_{SAEngine::SQLite};
    SAConnection connection_;
};

TEST_F(ArchiveFileTest, ReplacedFileIsNotReadThroughAnOldSession)
{
    connection_.ExecuteScript("CREATE TABLE admin.t (a INTEGER)");
    connection_.CopyTo(File("copia.db").string());
    connection_.ExecuteScript("INSERT INTO admin.t VALUES (1)");
    connection_.Disconnect();
    for (const char *suffix : {"", "-wal", "-shm"}) std::filesystem::remove(database_.Target() + suffix);
    EXPECT_THROW(connection_.Connect(database_.Target()), SAException) << "the file is gone";
    std::filesystem::rename(File("copia.db"), database_.Target());
    connection_.Connect(database_.Target());
    EXPECT_EQ(ReadLong(connection_, "SELECT COUNT(*) FROM admin.t"), 0);
}

TEST_F(ArchiveFileTest, SessionSettingsProtectTheBooks)
{
    const std::pair<const char *, long> settings[] = {{"PRAGMA foreign_keys", 1}, {"PRAGMA synchronous", 2}};
    for (const auto &[sql, value] : settings) EXPECT_EQ(ReadLong(connection_, sql), value) << sql;
    SACommand mode(&connection_, "PRAGMA journal_mode");
    mode.Execute();
    ASSERT_TRUE(mode.FetchNext());
    EXPECT_EQ(mode.Field(1).asString(), "wal");
}

TEST_F(ArchiveFileTest, CopyIsWholeWhileAWriterWorks)
{
    connection_.ExecuteScript("CREATE TABLE admin.t (a INTEGER, b INTEGER)");
    std::atomic<bool> stop{false};
    std::atomic<int> written{0};
    std::thread writer([&] {
        SAConnection connection;
        connection.Connect(database_.Target());
        connection.SetDurability(SADurability::Relaxed);
        while (!stop) {
            // Two rows that belong together: a copy must have both or none.
            SATransaction unit(&connection);
            connection.ExecuteScript("INSERT INTO admin.t VALUES (1, 0); INSERT INTO admin.t VALUES (0, 1)");
            unit.Commit();
            ++written;
        }
    });
    while (written < 20) std::this_thread::yield();
    for (const char *name : {"copia1.db", "copia2.db", "copia3.db"}) {
        connection_.CopyTo(File(name).string());
        SAConnection copy;
        copy.Connect(File(name).string());
        EXPECT_GE(ReadLong(copy, "SELECT SUM(a) FROM admin.t"), 20);
        EXPECT_EQ(ReadLong(copy, "SELECT SUM(a) - SUM(b) FROM admin.t"), 0);
        SACommand check(&copy, "PRAGMA integrity_check");
        check.Execute();
        ASSERT_TRUE(check.FetchNext());
        EXPECT_EQ(check.Field(1).asString(), "ok");
    }
    stop = true;
    writer.join();
}

TEST_F(ArchiveFileTest, RefusedCopyLeavesNothingBehind)
{
    connection_.ExecuteScript("CREATE TABLE admin.t (a INTEGER)");
    std::ofstream(File("lettera.txt")) << "testo";
    std::ofstream(File("vecchio.db-wal")) << "resti";
    const std::size_t files = FileCount();
    EXPECT_THROW(connection_.CopyTo(File("lettera.txt").string()), SAException) << "exists";
    EXPECT_THROW(connection_.CopyTo(File("vecchio.db").string()), SAException) << "a log of an older file";
    EXPECT_THROW(connection_.CopyTo(database_.Target()), SAException) << "itself";
    EXPECT_THROW(connection_.CopyTo(File("manca/copia.db").string()), SAException) << "no such folder";
    {
        SATransaction unit(&connection_);
        EXPECT_THROW(connection_.CopyTo(File("copia.db").string()), SAException) << "inside a transaction";
    }
    EXPECT_EQ(FileCount(), files);
}

TEST_F(ArchiveFileTest, FullDiskLeavesNoHalfCopy)
{
    connection_.ExecuteScript("CREATE TABLE admin.t (a TEXT);"
                              "WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 2000)"
                              " INSERT INTO admin.t SELECT hex(randomblob(200)) FROM n");
    const std::size_t files = FileCount();
    // No file may grow beyond 64 KB for a while; the write that tries to fails like one on a full disk.
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small = {65536, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_THROW(connection_.CopyTo(File("copia.db").string()), SAException);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(FileCount(), files);
    EXPECT_EQ(ReadLong(connection_, "SELECT COUNT(*) FROM admin.t"), 2000);
}

} // namespace

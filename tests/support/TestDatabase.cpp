#include "tests/support/TestDatabase.h"

#include <fmt/format.h>

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>

namespace {

constexpr char kServerVariable[] = "LUMERA_TEST_POSTGRES";

std::string ServerAddress()
{
    const char *address = std::getenv(kServerVariable);
    return address == nullptr ? "" : address;
}

/// Different for every test of every program running at the same time.
std::string UniqueName()
{
    static std::atomic<int> last{0};
    const auto now = std::chrono::system_clock::now().time_since_epoch() / std::chrono::milliseconds(1);
    return fmt::format("lumera_test_{}_{}_{}", getpid(), now, ++last);
}

/// The address of the server with another database in it: "postgresql://[host]/database[?options]".
std::string WithDatabase(const std::string &address, const std::string &database)
{
    const std::size_t host = address.find("://") + 3;
    const std::size_t options = std::min(address.find('?', host), address.size());
    const std::size_t slash = std::min(address.find('/', host), options);
    return address.substr(0, slash) + "/" + database + address.substr(options);
}

void RunOnServer(const std::string &target, const std::string &sql)
{
    SAConnection connection;
    connection.Connect(target);
    connection.ExecuteScript(sql);
}

} // namespace

std::vector<SAEngine> TestEngines()
{
    return {SAEngine::SQLite, SAEngine::PostgreSQL};
}

std::string TestEngineName(const testing::TestParamInfo<SAEngine> &info)
{
    return info.param == SAEngine::SQLite ? "SQLite" : "PostgreSQL";
}

namespace {

// The macros return from the function they stand in.
void SkipTest(const std::string &why)
{
    GTEST_SKIP() << why;
}
void FailTest(const std::string &why)
{
    FAIL() << why;
}

} // namespace

bool IsTestEngineReady(SAEngine engine)
{
    if (engine == SAEngine::SQLite || !ServerAddress().empty()) return true;
    const std::string why = fmt::format("{} is not set: no PostgreSQL server to test with", kServerVariable);
    if (std::getenv("CI") != nullptr)
        FailTest(why);
    else
        SkipTest(why);
    return false;
}

TestFolder::TestFolder() : path_(std::filesystem::temp_directory_path() / UniqueName())
{
    std::filesystem::create_directories(path_);
}

TestFolder::~TestFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

TestDatabase::TestDatabase(SAEngine engine, Schema schema) : engine_(engine), name_(UniqueName())
{
    if (engine == SAEngine::SQLite) {
        target_ = (folder_.Path() / "archivio.db").string();
        SAConnection().Connect(target_, SAOpenMode::Create);
        return;
    }
    RunOnServer(ServerAddress(), "CREATE DATABASE " + name_ + " TEMPLATE template0");
    target_ = WithDatabase(ServerAddress(), name_);
    if (schema == Schema::Admin) RunOnServer(target_, "CREATE SCHEMA admin");
}

TestDatabase::~TestDatabase()
{
    SAConnection::ClosePool();
    if (engine_ == SAEngine::SQLite) return;
    try {
        RunOnServer(ServerAddress(), "DROP DATABASE " + name_ + " WITH (FORCE)");
    } catch (const SAException &error) {
        ADD_FAILURE() << "the test database stays behind: " << error.ErrText();
    }
}

void DatabaseTest::SetUp()
{
    if (!IsTestEngineReady(GetParam())) return;
    database_ = std::make_unique<TestDatabase>(GetParam());
    connection_.Connect(Target());
}

void DatabaseTest::TearDown()
{
    connection_.Disconnect();
    database_.reset();
}

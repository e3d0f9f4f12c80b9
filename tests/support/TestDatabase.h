#pragma once

#include "sqlapi/SAConnection.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// Both engines, for INSTANTIATE_TEST_SUITE_P. PostgreSQL is always among them: without a server its tests are skipped,
/// or fail where the environment has CI set, so that nobody takes half a run for a whole one.
std::vector<SAEngine> TestEngines();
std::string TestEngineName(const testing::TestParamInfo<SAEngine> &info);

/// Whether a database of the engine can be had here. When not, the running test is already marked as skipped or failed,
/// and SetUp has only to return. tests/support/postgres.sh starts a server; its address goes into LUMERA_TEST_POSTGRES.
bool IsTestEngineReady(SAEngine engine);

/// A folder of one test, removed with everything in it.
class TestFolder {
  public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder &) = delete;
    TestFolder &operator=(const TestFolder &) = delete;

    const std::filesystem::path &Path() const { return path_; }

  private:
    std::filesystem::path path_;
};

/// A fresh database of one test: a file in a folder of its own, or a database on the test server. Removed afterwards,
/// with the pooled sessions closed first.
class TestDatabase {
  public:
    /// On a server the schema "admin" is there or not; in a file it always is.
    enum class Schema { Admin, None };

    explicit TestDatabase(SAEngine engine, Schema schema = Schema::Admin);
    ~TestDatabase();
    TestDatabase(const TestDatabase &) = delete;
    TestDatabase &operator=(const TestDatabase &) = delete;

    SAEngine Engine() const { return engine_; }
    const std::string &Target() const { return target_; } ///< for SAConnection::Connect
    const std::filesystem::path &Folder() const { return folder_.Path(); }

  private:
    SAEngine engine_;
    TestFolder folder_;
    std::string name_; ///< on the server
    std::string target_;
};

/// Base of the suites that run on both engines: a fresh database and an open connection per test.
class DatabaseTest : public testing::TestWithParam<SAEngine> {
  protected:
    void SetUp() override;
    void TearDown() override;

    bool IsSqlite() const { return GetParam() == SAEngine::SQLite; }
    const std::string &Target() const { return database_->Target(); }

    std::unique_ptr<TestDatabase> database_;
    SAConnection connection_;
};

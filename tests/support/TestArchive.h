#pragma once

#include "sqlapi/SACommand.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tests/support/TestDatabase.h"

#include <functional>

/// A fresh archive of the demo company (fiscal year 2026, no entries) per test, open as the current company, with a
/// scripted user. A test that does not empty the script fails.
class ArchiveTest : public testing::TestWithParam<SAEngine> {
  protected:
    void SetUp() override;
    void TearDown() override;

    SACommand *Cmd() { return &command_; }
    const std::string &Archive() const { return archive_; } ///< as OpenCompany takes it
    const std::filesystem::path &Folder() const { return database_->Folder(); }
    /// The first column of the first row of a query, as text.
    std::string Value(const std::string &sql);
    void Run(const std::string &sql);

    std::unique_ptr<TestDatabase> database_;
    ScriptedUserInterface user_;

  private:
    std::string archive_;
    UserInterface *previous_ = nullptr;
    SAConnection connection_;
    SACommand command_;
};

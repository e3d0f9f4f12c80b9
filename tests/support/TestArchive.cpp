#include "tests/support/TestArchive.h"

#include "tarvolumera/archive/ArchiveCreation.h"

void ArchiveTest::SetUp()
{
    if (!IsTestEngineReady(GetParam())) return;
    previous_ = SetUserInterface(&user_);
    database_ = std::make_unique<TestDatabase>(GetParam(), TestDatabase::Schema::None);
    NewArchive wanted;
    archive_ = GetParam() == SAEngine::SQLite ? (Folder() / "ditta").string() : database_->Target();
    wanted.archive = archive_;
    wanted.data_folder = Folder();
    wanted.year = 2026;
    wanted.demo = true;
    CreateArchive(wanted);
    connection_.Connect(lumera_db_target);
    command_.setConnection(&connection_);
}

void ArchiveTest::TearDown()
{
    if (!database_) return;
    command_.Close();
    connection_.Disconnect();
    database_.reset();
    SetUserInterface(previous_);
    EXPECT_EQ(user_.Faults(), "");
}

std::string ArchiveTest::Value(const std::string &sql)
{
    SACommand query(&connection_, sql);
    query.Execute();
    return query.FetchNext() ? query.Field(1).asString() : std::string("(nessuna riga)");
}

void ArchiveTest::Run(const std::string &sql)
{
    SACommand statement(&connection_, sql);
    statement.Execute();
}

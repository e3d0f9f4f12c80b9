#include "tests/cli/CommandFixture.h"

#include "cli/CommandLine.h"
#include "tarvodlg/base/Files.h"
#include "tarvolumera/Company.h"

#include <cstdlib>

nlohmann::json CommandRun::Json() const
{
    nlohmann::json document = nlohmann::json::parse(out, nullptr, false);
    EXPECT_FALSE(document.is_discarded()) << "no JSON document: " << out;
    return document;
}

CommandRun RunWords(const std::vector<std::string> &words)
{
    std::vector<const char *> arguments = {"lumera"};
    for (const std::string &word : words) arguments.push_back(word.c_str());
    CommandRun run;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    run.code = RunCommandLine(static_cast<int>(arguments.size()), arguments.data());
    run.out = testing::internal::GetCapturedStdout();
    run.err = testing::internal::GetCapturedStderr();
    return run;
}

void CommandTest::SetUp()
{
    ArchiveTest::SetUp();
    if (!database_) return;
    // The files of a PostgreSQL company go below the user's data folder, which must not be the tester's own.
    setenv("XDG_DATA_HOME", (Folder() / "dati").c_str(), 1);
    unsetenv("LUMERA_ARCHIVIO");
}

CommandRun CommandTest::Lumera(std::vector<std::string> words) const
{
    words.insert(words.begin(), {"--archivio", Archive(), "--oggi", "2026-06-01"});
    return RunWords(words);
}

CommandRun CommandTest::Store(const std::string &json, const std::vector<std::string> &more) const
{
    std::vector<std::string> words = more;
    words.insert(words.end(), {"pnota", "registra", Written("movimento.json", json).string()});
    return Lumera(words);
}

std::filesystem::path CommandTest::Written(const std::string &name, const std::string &bytes) const
{
    const std::filesystem::path file = Folder() / name;
    WriteFileWhole(file, bytes);
    return file;
}

void CommandTest::Disconnect()
{
    Cmd()->Close();
    Cmd()->Connection()->Disconnect();
    SAConnection::ClosePool();
}

void CommandTest::Reconnect()
{
    Cmd()->Connection()->Connect(lumera_db_target);
}

std::string PurchaseJson(const std::string &number)
{
    return R"({"data":"2026-03-15","cau":21,"cli_for":1,"doc":")" + number +
           R"(","data_doc":"2026-03-10","iva":[{"codice":22,"imponibile":100.00}]})";
}

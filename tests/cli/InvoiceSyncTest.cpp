#include "cli/CommandLine.h"
#include "tables/TableChecks.h"
#include "tests/cli/CommandFixture.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;

class InvoiceSyncTest : public CommandTest {
  protected:
    /// A folder of finished files.
    fs::path Drop()
    {
        const fs::path folder = Folder() / "arrivi";
        fs::create_directories(folder);
        for (const char *name : {"fatture/IT02565617350_00A24.xml", "guasti/IT08235227348_00017_RC_001.xml"}) {
            const fs::path file = folder / fs::path(name).filename();
            fs::copy_file(fs::path(LUMERA_SOURCE_DIR "/samples") / name, file);
            fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::hours(1));
        }
        return folder;
    }
};

TEST_P(InvoiceSyncTest, FolderOfTheCompanyIsTakenUpOnce)
{
    const CommandRun unset = Lumera({"fatture", "sincronizza"});
    EXPECT_EQ(unset.code, kExitRefused);
    EXPECT_THAT(unset.err, HasSubstr("Cartella delle fatture ricevute non impostata sulla ditta!"));
    EXPECT_EQ(Lumera({"fatture", "sincronizza", "--cartella", (Folder() / "manca").string()}).code, kExitFailed);

    Run("UPDATE admin.flag SET flg_sdi_cartella = '" + Drop().string() + "'");
    const CommandRun first = Lumera({"--json", "fatture", "sincronizza"});
    EXPECT_EQ(first.code, kExitDone) << first.err;
    const nlohmann::json report = first.Json();
    ASSERT_EQ(report.at("file").size(), 2u);
    EXPECT_EQ(report.at("file").at(1).at("esito"), "notifica");
    EXPECT_EQ(report.at("caricate"), 1);
    EXPECT_EQ(report.at("notifiche"), 1);
    const CommandRun second = Lumera({"fatture", "sincronizza"});
    EXPECT_EQ(second.code, kExitDone);
    EXPECT_EQ(second.out, "0 caricate, 0 già presenti, 0 notifiche, 0 PDF, 0 rimandati, 0 rifiutati.\n");
    EXPECT_EQ(Lumera({"fatture", "elenco", "--json"}).Json().at("totale"), 1) << "a notification is no invoice";
    EXPECT_EQ(Lumera({"archivio", "verifica"}).code, kExitDone);
}

TEST_P(InvoiceSyncTest, RefusedFileEndsWithOne)
{
    Written("a.p7m", "x");
    fs::last_write_time(Folder() / "a.p7m", fs::file_time_type::clock::now() - std::chrono::hours(1));
    fs::create_directories(Folder() / "arrivi");
    fs::rename(Folder() / "a.p7m", Folder() / "arrivi" / "a.p7m");
    const CommandRun run = Lumera({"fatture", "sincronizza", "--cartella", (Folder() / "arrivi").string()});
    EXPECT_EQ(run.code, kExitRefused);
    EXPECT_THAT(run.out, HasSubstr("a.p7m"));
}

TEST_P(InvoiceSyncTest, CompanyFolderMustBeThereWhenItIsSet)
{
    FLAG settings;
    ASSERT_TRUE(sqlflg.Search(Cmd(), 1, &settings));
    const auto faults = [&](const std::string &folder) {
        settings.flg_sdi_cartella = folder;
        return CheckFlag(Cmd(), settings, false);
    };
    EXPECT_THAT(faults(""), IsEmpty());
    EXPECT_THAT(faults(Folder().string()), IsEmpty());
    const auto missing = faults((Folder() / "manca").string());
    ASSERT_EQ(missing.size(), 1u);
    EXPECT_EQ(missing[0].column, "flg_sdi_cartella");
    EXPECT_EQ(missing[0].severity, FieldFault::Severity::Refused);
    Run("UPDATE admin.flag SET flg_sdi_cartella = '" + settings.flg_sdi_cartella.str() + "'");
    const auto unmounted = faults(settings.flg_sdi_cartella.str());
    ASSERT_EQ(unmounted.size(), 1u);
    EXPECT_EQ(unmounted[0].severity, FieldFault::Severity::Question)
        << "an unmounted share must not lock the other settings";
}

INSTANTIATE_TEST_SUITE_P(Engines, InvoiceSyncTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

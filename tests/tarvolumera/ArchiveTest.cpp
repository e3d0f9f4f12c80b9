#include "tarvolumera/archive/ArchiveCreation.h"

#include "tarvodlg/base/Files.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/archive/ArchiveCheck.h"
#include "tarvolumera/archive/ArchiveCopy.h"
#include "tarvolumera/archive/Migrations.h"
#include "tests/support/TestArchive.h"

#include <fstream>

namespace {

class WholeArchiveTest : public ArchiveTest {};

TEST_P(WholeArchiveTest, IsOfThisProgramAndClean)
{
    EXPECT_EQ(ArchiveVersion(Cmd()), ProgramArchiveVersion());
    EXPECT_EQ(MigrateArchive(Cmd()), 0);
    EXPECT_TRUE(CheckArchive(Cmd()).faults.empty());
    EXPECT_EQ(lumera_db_impo.dit_anno, 2026);
    EXPECT_TRUE(lumera_db_flag.PurchaseVat().IsSet());
    EXPECT_EQ(CompanyLine().substr(0, 13), "Ditta : 00001");
}

TEST_P(WholeArchiveTest, ANewerOneIsRefused)
{
    Run("INSERT INTO admin.versione (ver_numero, ver_data, ver_programma) VALUES (99, '2030-01-01', '9.0')");
    try {
        OpenCompany(Archive(), Folder());
        FAIL() << "opened an archive of a later program";
    } catch (const SAException &error) {
        EXPECT_NE(error.ErrText().find("più recente"), std::string::npos);
    }
}

TEST_P(WholeArchiveTest, IsNotCreatedTwice)
{
    NewArchive again;
    again.archive = Archive();
    again.data_folder = Folder();
    again.year = 2027;
    again.demo = true;
    EXPECT_THROW(CreateArchive(again), SAException);
    OpenCompany(Archive(), Folder());
    EXPECT_EQ(lumera_db_impo.dit_anno, 2026) << "the first one stays as it was";
}

TEST_P(WholeArchiveTest, ACreationThatFailsLeavesNothing)
{
    TestDatabase empty(GetParam(), TestDatabase::Schema::None);
    NewArchive wanted;
    wanted.archive = GetParam() == SAEngine::SQLite ? (empty.Folder() / "nuova").string() : empty.Target();
    wanted.data_folder = empty.Folder();
    wanted.year = 2026;
    wanted.demo = true;
    wanted.fill = [](SACommand *cmd) {
        SACommand(cmd->Connection(), "DELETE FROM admin.nazioni").Execute();
        throw FileError("disco pieno");
    };
    EXPECT_THROW(CreateArchive(wanted), FileError);
    if (GetParam() == SAEngine::SQLite) {
        for (const auto &item : std::filesystem::directory_iterator(empty.Folder()))
            EXPECT_FALSE(item.path().filename().string().starts_with("nuova")) << item.path();
    } else {
        SAConnection connection;
        connection.Connect(empty.Target());
        SACommand query(&connection, "SELECT COUNT(*) FROM information_schema.tables WHERE table_schema = 'admin'");
        query.Execute();
        query.FetchNext();
        EXPECT_EQ(query.Field(1).asLong(), 0);
    }
    wanted.fill = {};
    CreateArchive(wanted);
    OpenCompany(Archive(), Folder());
}

TEST_P(WholeArchiveTest, ACopyIsAnArchive)
{
    PNOTA entry;
    sqlpno.Blank(Cmd(), &entry);
    entry.pno_data = 2461000;
    entry.pno_cau = 61;
    entry.pno_reg = kJournalOnly;
    entry.pno_desc = "Più àéì";
    PNOTA_ALLEGATO file;
    file.pat_fname = "f";
    file.pat_data = {std::byte{0}, std::byte{1}, std::byte{254}};
    entry.allegati.push_back(file);
    entry.righe[0].row_mas = 170, entry.righe[0].row_con = 1, entry.righe[0].row_sot = 1;
    entry.righe[1].row_mas = 175, entry.righe[1].row_con = 1, entry.righe[1].row_sot = 1;
    entry.righe[0].row_tipo = "D", entry.righe[1].row_tipo = "A";
    entry.righe[0].row_importo = entry.righe[1].row_importo = 0.1;
    sqlpno.SqlTransaction(Cmd(), kInsert, &entry);

    // The first version's table points to one of a later version, which therefore is filled before it.
    Run("INSERT INTO admin.caumag (cam_codice) VALUES (77)");
    Run("INSERT INTO admin.testate1 (tes_codice, tes_anno, tes_cod_for, tes_cau) VALUES (1, 2026, 1, 77)");

    const std::filesystem::path copy = Folder() / "copia.db";
    CopyArchive(Cmd(), copy);
    EXPECT_THROW(CopyArchive(Cmd(), copy), FileError) << "nothing is overwritten";
    OpenCompany(copy.string());
    PNOTA read;
    ASSERT_TRUE(sqlpno.Search(nullptr, 1, &read));
    EXPECT_EQ(read.pno_desc, "Più àéì");
    EXPECT_DOUBLE_EQ(read.righe[1].row_importo, 0.1);
    SAConnection connection;
    connection.Connect(copy.string());
    SACommand command(&connection);
    EXPECT_TRUE(CheckArchive(&command).faults.empty());
    OpenCompany(Archive(), Folder());
}

INSTANTIATE_TEST_SUITE_P(Engines, WholeArchiveTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST(OpenCompanyTest, SaysWhatIsWrong)
{
    TestFolder folder;
    const auto fault_of = [](const std::string &archive) {
        try {
            OpenCompany(archive);
        } catch (const SAException &error) {
            return error.Fault();
        }
        return SAFault::Other;
    };
    EXPECT_EQ(fault_of((folder.Path() / "manca").string()), SAFault::CannotOpen);
    std::filesystem::create_directory(folder.Path() / "altro");
    std::ofstream(folder.Path() / "altro" / "lumera.db") << std::string(5000, 'x');
    EXPECT_EQ(fault_of((folder.Path() / "altro").string()), SAFault::Corrupt);
    SAConnection connection;
    connection.Connect((folder.Path() / "vuoto.db").string(), SAOpenMode::Create);
    connection.ExecuteScript("CREATE TABLE admin.altro (a INTEGER);");
    connection.Disconnect();
    EXPECT_EQ(fault_of((folder.Path() / "vuoto.db").string()), SAFault::Corrupt) << "a database, but none of ours";
    NewArchive wanted;
    wanted.archive = folder.Path().string();
    wanted.year = 2026;
    EXPECT_THROW(CreateArchive(wanted), FileError) << "the folder holds other files";
}

} // namespace

#include "schedule/ui/ImpScadenzeExcel.h"

#include "tarvodlg/base/Files.h"
#include "tarvolumera/Company.h"
#include "tests/tables_ui/TablesWindowTest.h"

#include <gmock/gmock.h>

namespace {

constexpr const char *kQuestion = "Vuoi importare il saldo iniziale delle Scadenze da un foglio Excel ?";

/// The import as the desk offers it, by what it asks and tells.
class ImpScadenzeExcelTest : public TablesWindowTest {
  protected:
    void ExpectFile(const std::filesystem::path &file)
    {
        user_.Expect(kQuestion, IDYES);
        user_.ExpectFiles({file});
    }
};

TEST_P(ImpScadenzeExcelTest, NoAndNoFileEndIt)
{
    user_.Expect(kQuestion, IDNO);
    ImpScadenzeExcel();
    EXPECT_EQ(user_.flags.back() & (MB_DEFBUTTON2 | MB_ICONQUESTION), MB_DEFBUTTON2 | MB_ICONQUESTION);
    user_.Expect(kQuestion, IDYES);
    user_.ExpectFiles({});
    ImpScadenzeExcel();
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "0");
}

TEST_P(ImpScadenzeExcelTest, DiscardedRowsAreToldWithTheirLog)
{
    ExpectFile(LUMERA_SOURCE_DIR "/samples/saldi/saldi-iniziali.xls");
    user_.Expect("Sono state scartate righe dall'importazione. Potete trovare il dettaglio nel seguente file : \n\n" +
                 (lumera_db_folder / "log" / "scadlog_20260601_000000.txt").string());
    ImpScadenzeExcel();
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "10");
}

TEST_P(ImpScadenzeExcelTest, AFileThatIsNoSheetBeepsAndSaysWhy)
{
    const std::filesystem::path file = Folder() / "saldi.xls";
    WriteFileWhole(file, "REL;SALDO\n");
    ExpectFile(file);
    user_.Expect(
        "Impossibile aprire il foglio di lavoro!\n\n" + file.string() +
        "\nIl file è un testo, per esempio un CSV: aprirlo con il programma di calcolo e salvarlo come .xlsx.");
    ImpScadenzeExcel();
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(user_.flags.back() & MB_ICONSTOP, MB_ICONSTOP);
}

INSTANTIATE_TEST_SUITE_P(Engines, ImpScadenzeExcelTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

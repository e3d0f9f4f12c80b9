#include "tests/fuzz/SheetInput.h"

#include <gtest/gtest.h>

#include <cstdlib>

// What the fuzz target found worth keeping, workbooks of both formats.
TEST(FuzzCorpus, EveryKeptWorkbookIsReadOrRefusedInOrder)
{
    std::string folder = (std::filesystem::temp_directory_path() / "lumera-foglio-XXXXXX").string();
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    const std::filesystem::path book = std::filesystem::path(folder) / "foglio";
    long files = 0, read = 0;
    for (const auto &item : std::filesystem::directory_iterator(LUMERA_SOURCE_DIR "/tests/fuzz/corpus/sheet")) {
        SCOPED_TRACE(item.path().filename().string());
        ++files;
        try {
            WriteFileWhole(book, SheetBytes(ReadWholeFile(item.path(), 1'000'000)));
            read += ReadSheetFile(book) ? 1 : 0;
        } catch (const std::exception &fault) {
            ADD_FAILURE() << fault.what();
        }
    }
    std::filesystem::remove_all(folder);
    EXPECT_GT(files, 20);
    EXPECT_GT(read, 2) << "a corpus of refusals alone proves little";
}

#include "tarvodlg/base/Files.h"
#include "tests/fuzz/FatturaInput.h"

#include <gtest/gtest.h>

#include <filesystem>

// What the fuzz target found worth keeping: every file reaches a branch of the reader that no other one does.
TEST(FuzzCorpus, EveryKeptFileIsReadOrRefusedInOrder)
{
    long files = 0, taken = 0;
    for (const auto &item : std::filesystem::directory_iterator(LUMERA_SOURCE_DIR "/tests/fuzz/corpus/fattura")) {
        SCOPED_TRACE(item.path().filename().string());
        ++files;
        try {
            taken += ReadFatturaInput(ReadWholeFile(item.path(), 1'000'000)) ? 1 : 0;
        } catch (const std::exception &fault) {
            ADD_FAILURE() << fault.what();
        }
    }
    EXPECT_GT(files, 100);
    EXPECT_GT(taken, 10) << "a corpus of refusals alone proves little";
}

#include "tarvodlg/base/Files.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tarvodlg/base/Text.h"

using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

class FilesTest : public testing::Test {
  protected:
    FilesTest()
    {
        std::string name = (fs::temp_directory_path() / "files-XXXXXX").string();
        folder_ = mkdtemp(name.data());
    }
    ~FilesTest() override
    {
        std::error_code ignored;
        fs::permissions(folder_, fs::perms::owner_all, ignored);
        fs::remove_all(folder_, ignored);
    }
    std::vector<std::string> Listing() const
    {
        std::vector<std::string> names;
        for (const auto &entry : fs::directory_iterator(folder_)) names.push_back(entry.path().filename().string());
        return names;
    }

    fs::path folder_;
};

std::string MessageOf(const std::function<void()> &action)
{
    try {
        action();
    } catch (const FileError &error) {
        return error.what();
    }
    return "no error";
}

TEST_F(FilesTest, WrittenFileIsReadBackWithEveryByte)
{
    const std::string bytes = "riga\r\n\0è\xff"s + std::string(100000, 'x');
    WriteFileWhole(folder_ / "nuovo.txt", bytes);
    EXPECT_EQ(ReadWholeFile(folder_ / "nuovo.txt", bytes.size()), bytes);
    WriteFileWhole(folder_ / "nuovo.txt", "");
    EXPECT_EQ(ReadWholeFile(folder_ / "nuovo.txt", 0), "");
    EXPECT_EQ(Listing(), std::vector<std::string>{"nuovo.txt"});
}

TEST_F(FilesTest, NameWithoutFolderGoesToTheCurrentOne)
{
    const fs::path before = fs::current_path();
    fs::current_path(folder_);
    WriteFileWhole("nudo.txt", "x");
    fs::current_path(before);
    EXPECT_EQ(Listing(), std::vector<std::string>{"nudo.txt"});
}

TEST_F(FilesTest, SizeLimitIsTheLastSizeAllowed)
{
    WriteFileWhole(folder_ / "dieci", "0123456789");
    EXPECT_EQ(ReadWholeFile(folder_ / "dieci", 10).size(), 10U);
    EXPECT_EQ(MessageOf([&] { ReadWholeFile(folder_ / "dieci", 9); }),
              "Impossibile leggere il file \"" + (folder_ / "dieci").string() + "\": supera il limite di 9 byte");
}

TEST_F(FilesTest, FileThatClaimsNoSizeIsLimitedAsWell)
{
    EXPECT_GT(ReadWholeFile("/proc/self/maps", 10000000).size(), 100U);
    EXPECT_THAT(MessageOf([] { ReadWholeFile("/proc/self/maps", 100); }), testing::HasSubstr("supera il limite"));
}

TEST_F(FilesTest, ReadsOnlyRegularFiles)
{
    ASSERT_EQ(mkfifo((folder_ / "tubo").c_str(), 0600), 0);
    EXPECT_THAT(MessageOf([&] { ReadWholeFile(folder_ / "tubo", 10); }), testing::HasSubstr("non è un file di dati"));
    EXPECT_THAT(MessageOf([] { ReadWholeFile("/dev/zero", 10); }), testing::HasSubstr("non è un file di dati"));
    EXPECT_THAT(MessageOf([&] { ReadWholeFile(folder_, 10); }), testing::HasSubstr("è una cartella"));
    EXPECT_THAT(MessageOf([&] { ReadWholeFile(folder_ / "manca", 10); }),
                testing::HasSubstr("file o cartella inesistente"));
}

TEST_F(FilesTest, KeepsTheRightsOfTheFileItReplaces)
{
    WriteFileWhole(folder_ / "conti.txt", "uno");
    fs::permissions(folder_ / "conti.txt", fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    WriteFileWhole(folder_ / "conti.txt", "due");
    EXPECT_EQ(fs::status(folder_ / "conti.txt").permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
}

TEST_F(FilesTest, RefusedWriteLeavesNothingBehind)
{
    WriteFileWhole(folder_ / "file", "vecchio");
    fs::create_directory(folder_ / "cartella");
    WriteFileWhole(folder_ / "cartella" / "dentro", "x");
    EXPECT_THAT(MessageOf([&] { WriteFileWhole(folder_ / "manca" / "a.txt", "x"); }),
                testing::HasSubstr("file o cartella inesistente"));
    EXPECT_THAT(MessageOf([&] { WriteFileWhole(folder_ / "file" / "a.txt", "x"); }),
                testing::HasSubstr("non è una cartella"));
    EXPECT_THAT(MessageOf([&] { WriteFileWhole(folder_ / "cartella", "x"); }), testing::HasSubstr("è una cartella"));
    EXPECT_THAT(MessageOf([&] { WriteFileWhole(folder_ / std::string(256, 'x'), "x"); }),
                testing::HasSubstr("nome troppo lungo"));
    EXPECT_THAT(Listing(), testing::UnorderedElementsAre("file", "cartella"));
}

/// Root passes every permission: then the test works as another user while this lives.
class AsOrdinaryUser {
  public:
    AsOrdinaryUser() { changed_ = geteuid() == 0 && seteuid(65534) == 0; }
    ~AsOrdinaryUser()
    {
        if (changed_ && seteuid(0) != 0) std::abort();
    }
    AsOrdinaryUser(const AsOrdinaryUser &) = delete;
    AsOrdinaryUser &operator=(const AsOrdinaryUser &) = delete;

  private:
    bool changed_;
};

TEST_F(FilesTest, FolderWithoutPermissionRefuses)
{
    WriteFileWhole(folder_ / "conti.txt", "vecchio");
    fs::permissions(folder_, fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_exec);
    std::string message;
    {
        const AsOrdinaryUser ordinary;
        message = MessageOf([&] { WriteFileWhole(folder_ / "conti.txt", "nuovo"); });
    }
    EXPECT_EQ(message, "Impossibile scrivere il file \"" + (folder_ / "conti.txt").string() + "\": permesso negato");
    EXPECT_EQ(ReadWholeFile(folder_ / "conti.txt", 100), "vecchio");
}

TEST_F(FilesTest, WriteThatStopsHalfWayKeepsTheOldFile)
{
    WriteFileWhole(folder_ / "conti.txt", "vecchio");
    // A limit of the file's size stops the write where a full disk would: after the first bytes.
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto signal_before = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = before;
    small.rlim_cur = 4096;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::string message = MessageOf([&] { WriteFileWhole(folder_ / "conti.txt", std::string(10000, 'x')); });
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, signal_before);

    EXPECT_THAT(message, testing::HasSubstr("file troppo grande"));
    EXPECT_EQ(ReadWholeFile(folder_ / "conti.txt", 100), "vecchio");
    EXPECT_EQ(Listing(), std::vector<std::string>{"conti.txt"});
}

TEST(SystemErrorText, SpeaksPlainly)
{
    EXPECT_EQ(SystemErrorText(ENOSPC), "disco pieno");
    EXPECT_EQ(SystemErrorText(EPERM), "permesso negato");
    EXPECT_EQ(SystemErrorText(9999), "errore di sistema n. 9999");
}

struct NameCase {
    const char *name;
    std::string claimed;
    std::string expected;
};
void PrintTo(const NameCase &c, std::ostream *out)
{
    *out << testing::PrintToString(c.claimed);
}

TEST(FileNameFromTest, NumberWithASlashIsNoFolder)
{
    EXPECT_EQ(FileNameFrom("FATTURA n. 24/2026 del 19/01/2026.pdf"), "FATTURA n. 24-2026 del 19-01-2026.pdf");
}

class SafeFileNameTest : public testing::TestWithParam<NameCase> {};

TEST_P(SafeFileNameTest, StaysInItsFolder)
{
    const std::string safe = SafeFileName(GetParam().claimed);
    EXPECT_EQ(safe, GetParam().expected);
    EXPECT_EQ(SafeFileName(safe), safe) << "a safe name changed";
    EXPECT_EQ(fs::path(safe).filename().string(), safe);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SafeFileNameTest,
    testing::Values(
        NameCase{"Plain", "IT01234567897_0001.xml.p7m", "IT01234567897_0001.xml.p7m"},
        NameCase{"Climbing", "../../etc/passwd", "passwd"},
        NameCase{"ClimbingBackwards", "..\\..\\etc\\passwd", "passwd"}, NameCase{"Drive", "C:\\x\\y.xml", "y.xml"},
        NameCase{"DriveOnly", "C:y.xml", "y.xml"}, NameCase{"Stream", "fattura.xml:nascosto", "fattura.xml_nascosto"},
        NameCase{"Dots", "..", "senza_nome"}, NameCase{"Empty", "", "senza_nome"}, NameCase{"Mixed", "a/b\\c", "c"},
        NameCase{"FolderOnly", "a/b/", "senza_nome"}, NameCase{"Hidden", ".bashrc", "bashrc"},
        NameCase{"DotsAndBlanks", " . . x.xml. . ", "x.xml"}, NameCase{"NulBytes", "fattura\0.xml\0"s, "fattura_.xml_"},
        NameCase{"LineEnd", "a\nb\x7f.xml", "a_b_.xml"}, NameCase{"Refused", "a<b>|\"?*.xml", "a_b_____.xml"},
        NameCase{"TurnedRound", "fattura\u202Elmx.exe", "fattura_lmx.exe"}, NameCase{"Device", "nul", "_nul"},
        NameCase{"DeviceWithExtension", "Com1.xml", "_Com1.xml"},
        NameCase{"NearlyADevice", "console.xml", "console.xml"}, NameCase{"OldCodePage", "citt\xE0.xml", "città.xml"},
        NameCase{"Accents", "Società è.xml", "Società è.xml"}),
    [](const auto &param) { return std::string(param.param.name); });

std::string Repeated(const std::string &text, int times)
{
    std::string all;
    while (times-- > 0) all += text;
    return all;
}

TEST(SafeFileName, ShortensAndKeepsTheExtension)
{
    EXPECT_EQ(SafeFileName(Repeated("à", 300) + ".xml"), Repeated("à", 116) + ".xml");
    EXPECT_EQ(SafeFileName(Repeated("x", 120)), Repeated("x", 120));
    EXPECT_EQ(SafeFileName("x." + Repeated("y", 300)), "x." + Repeated("y", 118)); // no extension, a long tail
    const std::string wide = SafeFileName(Repeated("€", 300) + ".p7m");            // three bytes each
    EXPECT_EQ(wide, Repeated("€", 78) + ".p7m");
    EXPECT_LE(SafeFileName("nul." + Repeated("𝄞", 300)).size(), 240U);
}

} // namespace

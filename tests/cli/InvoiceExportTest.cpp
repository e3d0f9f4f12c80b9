#include "tests/cli/CommandFixture.h"

#include "tarvodlg/base/Files.h"

namespace {

class InvoiceExportTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        const std::filesystem::path samples = std::filesystem::path(LUMERA_SOURCE_DIR) / "samples" / "fatture";
        Lumera({"fatture", "importa", samples / "IT19949417158_1D0F8.xml", samples / "IT06186527153_E4187.xml.p7m"});
    }
    std::string File(const char *name) const { return (Folder() / name).string(); }
};

TEST_P(InvoiceExportTest, PdfOfFileAndOfOneDocument)
{
    const CommandRun whole = Lumera({"--json", "fatture", "esporta", "1", "--pdf", File("tutto.pdf")});
    EXPECT_EQ(whole.code, 0) << whole.err;
    EXPECT_EQ(whole.Json()["file"], File("tutto.pdf"));
    EXPECT_EQ(Lumera({"fatture", "esporta", "1.2", "--pdf", File("uno.pdf")}).code, 0);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.allegati WHERE all_tab_tipo = 23"), "1");
    EXPECT_NE(ReadWholeFile(File("tutto.pdf"), 1'000'000), ReadWholeFile(File("uno.pdf"), 1'000'000));
}

TEST_P(InvoiceExportTest, PdfIsDeletedAfterAYesOnly)
{
    Lumera({"fatture", "esporta", "2", "--pdf", File("due.pdf")});
    EXPECT_EQ(Lumera({"fatture", "elimina-pdf", "2"}).code, 1);
    EXPECT_EQ(Count("allegati"), "3");
    EXPECT_EQ(Lumera({"--si", "fatture", "elimina-pdf", "2"}).code, 0);
    EXPECT_EQ(Count("allegati"), "2");
}

TEST_P(InvoiceExportTest, AllFilesOfAPeriod)
{
    EXPECT_EQ(Lumera({"--json", "fatture", "esporta-tutte", File("xml")}).Json()["scritti"], 2);
    EXPECT_TRUE(std::filesystem::exists(File("xml/IT06186527153_E4187.xml")));
    EXPECT_EQ(Lumera({"--json", "fatture", "esporta-tutte", File("p7m"), "--p7m"}).Json()["scritti"], 2);
    EXPECT_TRUE(std::filesystem::exists(File("p7m/IT06186527153_E4187.xml.p7m")));
    EXPECT_EQ(Lumera({"--json", "fatture", "esporta-tutte", File("niente"), "--al", "2001-01-01"}).Json()["scritti"],
              0);
}

TEST_P(InvoiceExportTest, WrongUsage)
{
    const std::vector<std::string> cases[] = {
        {"fatture", "esporta", "1"},
        {"fatture", "esporta", "1", "--pdf", "a.pdf", "--xml", "a.xml"},
        {"fatture", "esporta", "1.0", "--pdf", "a.pdf"},
        {"fatture", "esporta", "1.2", "--xml", "a.xml"},
        {"fatture", "esporta", "uno", "--pdf", "a.pdf"},
        {"fatture", "esporta-tutte", "cartella", "--dal", "2026-02-01", "--al", "2026-01-01"},
    };
    for (const std::vector<std::string> &words : cases) EXPECT_EQ(Lumera(words).code, 2) << words.back();
}

INSTANTIATE_TEST_SUITE_P(Engines, InvoiceExportTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

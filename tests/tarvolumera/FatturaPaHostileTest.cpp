#include "tests/tarvolumera/FatturaPaSupport.h"

#include "tarvodlg/base/Files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <filesystem>
#include <map>
#include <random>

namespace {

using namespace fatturapa;
using ::testing::HasSubstr;

// --- Attachments and hostile files ----------------------------------------------------------------------------------

TEST(FatturaPa, AttachmentsOutliveTheReaderThatGaveThem)
{
    const std::string attachments =
        "</DatiBeniServizi>"
        "<Allegati><NomeAttachment>../a.txt</NomeAttachment><Attachment>Y2lh\r\nbw==</Attachment></Allegati>"
        "<Allegati><Attachment>Y2&#13;\nlhbw==</Attachment></Allegati>"
        "<Allegati><Attachment><![CDATA[Y2lhbw==]]></Attachment></Allegati>"
        "<Allegati><Attachment>Y2!!</Attachment></Allegati>"
        "<Allegati><NomeAttachment>vuoto</NomeAttachment></Allegati>";
    std::vector<AllegatiType> kept;
    {
        const CFattureElettronicheDB db = Read(Replaced(SampleInvoice(), "</DatiBeniServizi>", attachments));
        kept = db.Documents().at(0).Allegati;
    }
    ASSERT_EQ(kept.size(), 5U);
    EXPECT_EQ(kept[0].NomeAttachment, "../a.txt");
    for (int i = 0; i < 3; ++i) EXPECT_EQ(kept[static_cast<std::size_t>(i)].Content(), "ciao") << i;
    EXPECT_EQ(kept[3].Content(), std::nullopt);
    EXPECT_EQ(kept[4].Content(), "");
}

TEST(FatturaPa, ControlCharactersNeverReachATerminal)
{
    const CFattureElettronicheDB db =
        Read(Replaced(SampleInvoice(), "FORNITORE DI PROVA SRL", "A\x1B[2J&#27;<![CDATA[\x07]]>B\r\nC\rD\tE"));
    EXPECT_EQ(db.Header().CedentePrestatore.DatiAnagrafici.Anagrafica.Denominazione, "A [2J&#27; B\nC\nD\tE");
}

TEST(FatturaPa, DeepNestingIsRefused)
{
    std::string deep;
    for (int i = 0; i < 100'000; ++i) deep += "<a>";
    EXPECT_THAT(RefusalOf(Replaced(SampleInvoice(), "<Divisa>", deep + "<Divisa>")), HasSubstr("troppi livelli"));
    EXPECT_THAT(RefusalOf(Replaced(SampleInvoice(), "12/A", deep + "12/A")), HasSubstr("troppi livelli"));
}

TEST(FatturaPa, EndlessListsAreRefused)
{
    std::string lines;
    for (int i = 0; i < 500'001; ++i) lines += "<DettaglioLinee/>";
    EXPECT_THAT(RefusalOf(Replaced(SampleInvoice(), "<DatiRiepilogo>", lines + "<DatiRiepilogo>")), HasSubstr("voci"));
}

TEST(FatturaPa, WarningsEndSomewhere)
{
    std::string odd;
    for (int i = 0; i < 10'000; ++i) odd += "<Strano>" + std::string(200, 'x') + "</Strano>";
    const CFattureElettronicheDB db = Read(Replaced(SampleInvoice(), "<Divisa>", odd + "<Divisa>"));
    ASSERT_EQ(db.Warnings().size(), 201U);
    EXPECT_EQ(db.Warnings().back().text, "Altre anomalie non elencate");
}

/// Reads whatever it is; true when it was taken. What is taken must be well-formed in the eyes of another parser too.
bool IsTaken(const std::string &xml)
{
    CFattureElettronicheDB db;
    try {
        db.Load(xml, "x");
    } catch (const InvoiceFileError &error) {
        EXPECT_FALSE(error.Detail().empty());
        return false;
    }
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(xml.data(), xml.size());
    EXPECT_TRUE(parsed) << parsed.description() << " at " << parsed.offset << "\n" << xml;
    return true;
}

TEST(FatturaPa, NoDamageCrashesOrHangs)
{
    const std::string xml = SampleInvoice(RichBody());
    ASSERT_TRUE(IsTaken(xml));
    for (std::size_t length = 0; length < xml.size() - 30; length += 97) {
        EXPECT_FALSE(IsTaken(xml.substr(0, length))) << "truncated at " << length;
    }
    std::mt19937 random(7);
    int taken = 0;
    for (int i = 0; i < 4'000; ++i) {
        std::string damaged = xml;
        const char *signs = "<>&/!?-[]\"'=\0 \r\n;#:.";
        damaged[random() % damaged.size()] = i % 2 == 0 ? signs[random() % 21] : static_cast<char>(random());
        if (i % 5 == 0) damaged.erase(random() % damaged.size(), random() % 20);
        taken += IsTaken(damaged) ? 1 : 0;
    }
    EXPECT_GT(taken, 400) << "most damage to texts does no harm";
    EXPECT_LT(taken, 3'600) << "damage to the structure is seen";
}

// --- The corpus of real and crafted invoices, where it is at hand
// ---------------------------------------------------------

/// Files of the corpus that cannot be used, with a piece of the reason; all the others must load.
const std::map<std::string, std::string> kUnusable = {
    {"crafted/IT01234567897_00041.xml", "file troncato"},
    {"crafted/IT01234567897_00043.xml", "non è XML"},
    {"crafted/IT01234567897_00045.xml", "2022-02-30"},
    {"crafted/IT01234567897_00063.xml.p7m", "danneggiata o incompleta"},
    {"simevo/invalid/malformed.xml", "file troncato"},
    {"simevo/invalid/missing_CessionarioCommittente.xml", "CessionarioCommittente"},
    {"simevo/invalid/missing_DatiBeniServizi.xml", "DatiBeniServizi"},
    {"simevo/invalid/missing_DatiGeneraliDocumento.xml", "DatiGeneraliDocumento"},
    {"simevo/invalid/missing_DatiGeneraliDocumento_TipoDocumento.xml", "TipoDocumento"},
    {"simevo/invalid/missing_FatturaElettronicaBody.xml", "FatturaElettronicaBody"},
    {"simevo/malicious/embedded_schema.xml", "DOCTYPE"},
    {"simevo/malicious/quadratic_blowup.xml", "DOCTYPE"},
    {"simevo/malicious/small_jumbo.xml", "DOCTYPE"},
    // Random texts: valid patterns, impossible dates.
    {"simevo/random/01.xml", "non è una data"},
    {"simevo/random/03.xml", "non è una data"},
    {"simevo/random/05.xml", "non è una data"},
    {"simevo/random/07.xml", "non è una data"},
    {"simevo/random/09.xml", "non è una data"},
};

std::vector<std::string> Columns(std::string_view line)
{
    std::vector<std::string> columns(1);
    for (const char character : line) {
        if (character == '\t') {
            columns.emplace_back();
        } else {
            columns.back() += character;
        }
    }
    return columns;
}

TEST(FatturaPaCorpus, EveryFileIsReadOrRefusedForItsReason)
{
    const std::filesystem::path folder = std::filesystem::path(LUMERA_SOURCE_DIR) / "../shared/reference/invoices";
    if (!std::filesystem::exists(folder / "INDEX.tsv")) GTEST_SKIP() << "no corpus beside the sources";
    const std::string index = ReadWholeFile(folder / "INDEX.tsv", 1'000'000);
    std::size_t files = 0;
    for (std::size_t start = index.find('\n') + 1; start < index.size(); start = index.find('\n', start) + 1) {
        const std::vector<std::string> columns =
            Columns(std::string_view(index).substr(start, index.find('\n', start) - start));
        ASSERT_GE(columns.size(), 9U);
        ++files;
        const std::string &name = columns[0];
        const auto unusable = kUnusable.find(name);
        CFattureElettronicheDB db;
        try {
            db.Load((folder / name).c_str());
            EXPECT_TRUE(unusable == kUnusable.end()) << name;
        } catch (const InvoiceFileError &error) {
            ASSERT_TRUE(unusable != kUnusable.end()) << name << ": " << error.Detail();
            EXPECT_NE(columns[8].substr(0, 5), "valid") << name;
            EXPECT_THAT(error.Detail(), HasSubstr(unusable->second)) << name;
            continue;
        }
        std::string types;
        for (const FatturaElettronicaBody &body : db.Documents()) {
            types += (types.empty() ? "" : ",") + body.DatiGenerali.DatiGeneraliDocumento.TipoDocumento;
        }
        if (!columns[3].empty()) {
            EXPECT_EQ(types, columns[3]) << name;
        }
        if (columns[6].starts_with("p7m")) {
            EXPECT_TRUE(db.Envelope().is_signed) << name;
        }
        if (!columns[7].empty()) {
            std::size_t attachments = 0;
            for (const FatturaElettronicaBody &body : db.Documents()) attachments += body.Allegati.size();
            EXPECT_EQ(std::to_string(attachments), columns[7]) << name;
        }
    }
    EXPECT_GT(files, 100U);
}

} // namespace

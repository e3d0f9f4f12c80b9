#include "tests/einvoice/InvoiceFixture.h"

#include "tarvodlg/base/Files.h"
#include "tarvolumera/fatturapa/SignedEnvelope.h"

#include <zip.h>

namespace {

using testing::HasSubstr;

constexpr std::size_t kGoodSamples = 13;

class ImportTest : public InvoiceTest {
  protected:
    ImportResult Import(const std::string &bytes, const std::string &name = "prova.xml")
    {
        return ImportInvoice(Cmd(), name, name, bytes);
    }
    std::filesystem::path Written(const std::string &name, const std::string &bytes)
    {
        const std::filesystem::path file = Folder() / name;
        std::filesystem::create_directories(file.parent_path());
        WriteFileWhole(file, bytes);
        return file;
    }
};

std::string WithNumber(const std::string &number)
{
    InvoiceSpec spec;
    spec.number = number;
    return InvoiceText(spec);
}

/// How often each outcome came: loaded, already there, refused.
std::array<std::size_t, 3> Outcomes(const std::vector<ImportResult> &results)
{
    std::array<std::size_t, 3> counts{};
    for (const ImportResult &result : results) ++counts.at(static_cast<std::size_t>(result.outcome));
    return counts;
}

TEST_P(ImportTest, SamplesAreFiledOnceAndKeepTheirBytes)
{
    std::vector<std::string> followed;
    const std::vector<ImportResult> first = ImportInvoices(
        Cmd(), {SampleFolder("fatture")}, [&](const ImportResult &result) { followed.push_back(result.origin); });
    EXPECT_EQ(Outcomes(first), (std::array<std::size_t, 3>{kGoodSamples, 0, 0}));
    EXPECT_EQ(followed.size(), kGoodSamples);
    for (const ImportResult &result : first) {
        EXPECT_THAT(result.warnings, testing::IsEmpty()) << result.origin;
        ALLEGATI filed;
        ASSERT_TRUE(sqlall.SearchByCode(Cmd(), result.code, &filed));
        EXPECT_EQ(AsText(filed.all_data), ReadSample(filed.all_fname.str())) << result.origin;
        EXPECT_EQ(filed.all_anno, 2026);
    }
    const std::vector<ImportResult> second = ImportInvoices(Cmd(), {SampleFolder("fatture")});
    EXPECT_EQ(Outcomes(second), (std::array<std::size_t, 3>{0, kGoodSamples, 0}));
    for (std::size_t i = 0; i < kGoodSamples; ++i) EXPECT_EQ(second[i].code, first[i].code) << "the duplicate is named";
    EXPECT_EQ(Count("allegati"), "13");
    EXPECT_EQ(ArchiveFaults(), "");
}

TEST_P(ImportTest, SameContentIsKnownUnderAnotherNameAndWithoutItsSignature)
{
    for (const char *name : {"IT06186527153_E4187.xml.p7m", "IT19949417158_1E55K.xml.p7m"}) {
        const std::string bytes = ReadSample(name);
        const long code = Filed(bytes, name);
        const ImportResult renamed = Import(bytes, "altro nome.P7M");
        EXPECT_EQ(renamed.outcome, ImportOutcome::AlreadyThere) << name;
        const ImportResult unsigned_copy = Import(ExtractInvoiceXml(bytes, name).xml, "copia.xml");
        EXPECT_EQ(unsigned_copy.outcome, ImportOutcome::AlreadyThere) << name;
        EXPECT_EQ(unsigned_copy.code, code);
    }
    EXPECT_EQ(Count("allegati"), "2");
}

// --- files that are refused
// -------------------------------------------------------------------------------------------

struct Refusal {
    const char *name;
    std::string bytes;
    const char *reason; ///< part of it
};

std::vector<Refusal> Refusals()
{
    const std::string valid = InvoiceText({});
    const std::string header = valid.substr(0, valid.find("<FatturaElettronicaBody>"));
    return {
        {"cut off", ReadSample("IT02565617350_00B01.xml"), "troncato"},
        {"changed after signing", ReadSample("IT00586557340_0B002.xml.p7m"), "firma"},
        {"30 February", ReadSample("IT07916437341_00B77.xml"), "\"2026-02-30\""},
        {"no bytes", "", "vuoto"},
        {"text", "Gentile cliente, in allegato la fattura.", "XML"},
        {"web page", "<?xml version=\"1.0\"?><html/>", "html"},
        {"no body", header + "</p:FatturaElettronica>", "FatturaElettronicaBody"},
        {"no number", Replaced(valid, "<Numero>7/P</Numero>", ""), "Numero"},
        {"amount in words", Replaced(valid, "<ImponibileImporto>100.00", "<ImponibileImporto>cento"),
         "ImponibileImporto"},
        {"entity bomb", Replaced(valid, "<p:Fattura", "<!DOCTYPE a [<!ENTITY b \"bbbb\">]><p:Fattura"), "DTD"},
        {"half an envelope", ReadSample("IT06186527153_E4187.xml.p7m").substr(0, 3000), "busta di firma"},
        {"51 MB", std::string(51'000'000, ' '), "50 MB"},
    };
}

TEST_P(ImportTest, FilesWithAFaultAreRefusedNamingIt)
{
    const std::string before = Stored();
    for (const Refusal &refusal : Refusals()) {
        SCOPED_TRACE(refusal.name);
        const ImportResult result = Import(refusal.bytes);
        EXPECT_EQ(result.outcome, ImportOutcome::Refused);
        EXPECT_EQ(result.code, 0);
        EXPECT_THAT(result.text, HasSubstr(refusal.reason));
    }
    EXPECT_EQ(Stored(), before);
}

TEST_P(ImportTest, HugeFileIsRefusedUnread)
{
    const std::filesystem::path file = Written("grande.xml", "<");
    std::filesystem::resize_file(file, 51'000'000);
    const std::vector<ImportResult> results =
        ImportInvoices(Cmd(), {file, Written("vuoto.xml", ""), Folder() / "manca.xml"});
    ASSERT_EQ(results.size(), 3u);
    EXPECT_THAT(results[0].text, HasSubstr("supera il limite"));
    EXPECT_THAT(results[1].text, HasSubstr("vuoto"));
    EXPECT_THAT(results[2].text, HasSubstr("non esiste"));
    EXPECT_EQ(Outcomes(results), (std::array<std::size_t, 3>{0, 0, 3}));
}

// The form of the file is read; that an entry cannot hold it is found out when it is registered.
TEST_P(ImportTest, EightRatesAreFiled)
{
    EXPECT_EQ(Import(ReadSample("IT19949417158_1B0V8.xml")).outcome, ImportOutcome::Loaded);
}

// --- buyer and company
// ------------------------------------------------------------------------------------------------

TEST_P(ImportTest, InvoiceToAnotherCompanyIsAskedFor)
{
    const std::string bytes = ReadSample("IT05098487365_2190V.xml"), before = Stored();
    const std::string question =
        "Partita Iva/Codice fiscale non corrispondenti per il file :\n\ncartella/prova.xml\n\nVuoi Continuare ?";
    user_.Expect(question, IDNO);
    const ImportResult refused = ImportInvoice(Cmd(), "cartella/prova.xml", "prova.xml", bytes);
    EXPECT_EQ(refused.outcome, ImportOutcome::Refused);
    EXPECT_THAT(refused.text, HasSubstr("Ghirlandozzi Macchine"));
    EXPECT_EQ(Stored(), before);
    EXPECT_EQ(user_.flags.back() & 0xF00u, MB_DEFBUTTON2) << "No is the default";

    user_.Expect(question, IDYES);
    EXPECT_EQ(ImportInvoice(Cmd(), "cartella/prova.xml", "prova.xml", bytes).outcome, ImportOutcome::Loaded);
    EXPECT_EQ(ImportInvoice(Cmd(), "cartella/prova.xml", "prova.xml", bytes).outcome, ImportOutcome::AlreadyThere)
        << "not asked again";
}

TEST_P(ImportTest, BuyerIsKnownByEitherNumberAndContradictedByEach)
{
    struct Case {
        const char *name, *vat, *fiscal_code;
        bool ours;
    };
    const std::string ours =
        "<IdFiscaleIVA><IdPaese>IT</IdPaese><IdCodice>08235227348</IdCodice></IdFiscaleIVA>\n<Anagrafica>";
    const std::string valid = InvoiceText({});
    ASSERT_NE(valid.find(ours), std::string::npos);
    int number = 0;
    lumera_db_impo.dit_codfis = "BRNZLL70A01G337X"; // a sole trader: the two numbers differ
    for (const Case &test :
         {Case{"both", "08235227348", "BRNZLL70A01G337X", true}, Case{"VAT number alone", "08235227348", "", true},
          Case{"fiscal code alone, lower case", "", "brnzll70a01g337x", true},
          Case{"VAT number as fiscal code", "", "08235227348", true},
          Case{"other fiscal code", "08235227348", "92018467347", false},
          Case{"other VAT number", "01251347207", "BRNZLL70A01G337X", false}, Case{"no number", "", "", false}}) {
        SCOPED_TRACE(test.name);
        std::string party;
        if (*test.vat != 0)
            party += fmt::format("<IdFiscaleIVA><IdPaese>IT</IdPaese><IdCodice>{}</IdCodice></IdFiscaleIVA>", test.vat);
        if (*test.fiscal_code != 0) party += fmt::format("<CodiceFiscale>{}</CodiceFiscale>", test.fiscal_code);
        if (!test.ours)
            user_.Expect(
                "Partita Iva/Codice fiscale non corrispondenti per il file :\n\nprova.xml\n\nVuoi Continuare ?", IDNO);
        const std::string bytes =
            Replaced(Replaced(valid, ours, party + "<Anagrafica>"), "7/P", std::to_string(++number));
        EXPECT_EQ(Import(bytes).outcome, test.ours ? ImportOutcome::Loaded : ImportOutcome::Refused);
    }
}

TEST(CompanyForInvoicesTest, WhatIsMissingIsNamedInOrder)
{
    DITTE company;
    EXPECT_EQ(CompanyFaultForInvoices(company), "Impostare codice fiscale sulla ditta!");
    company.dit_codfis = "08235227348";
    EXPECT_EQ(CompanyFaultForInvoices(company), "Partita iva non impostata sulla ditta!");
    company.dit_piva = "08235227348";
    EXPECT_EQ(CompanyFaultForInvoices(company), "Identificativo Nazione (ISO alpha-2) non impostato su ditta!");
    company.dit_naz = "I";
    EXPECT_EQ(CompanyFaultForInvoices(company),
              "Il codice nazione impostato sulla ditta deve essere di due caratteri!");
    company.dit_naz = "IT";
    EXPECT_EQ(CompanyFaultForInvoices(company), "");
}

// --- folders and archives
// ---------------------------------------------------------------------------------------------

struct Member {
    std::string name, bytes;
};

std::string ZipOf(const std::filesystem::path &file, const std::vector<Member> &members)
{
    int code = 0;
    zip_t *archive = zip_open(file.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    for (const Member &member : members)
        zip_file_add(archive, member.name.c_str(),
                     zip_source_buffer(archive, member.bytes.data(), member.bytes.size(), 0), ZIP_FL_ENC_UTF_8);
    EXPECT_EQ(zip_close(archive), 0);
    return ReadWholeFile(file, 10'000'000);
}

TEST_P(ImportTest, FolderIsWalkedToTheBottom)
{
    Written("in/a/b/uno.xml", WithNumber("1"));
    Written("in/due.XML", WithNumber("2"));
    Written("in/a/logo.png", "PNG");
    Written("in/a/guasto.xml", "<a");
    ZipOf(Folder() / "in" / "c.zip", {{"tre.xml", WithNumber("3")}});
    std::filesystem::create_directory_symlink(Folder() / "in", Folder() / "in" / "ciclo");
    EXPECT_EQ(Outcomes(ImportInvoices(Cmd(), {Folder() / "in"})), (std::array<std::size_t, 3>{3, 0, 1}));
    EXPECT_EQ(Count("allegati"), "3");
}

TEST_P(ImportTest, ZipIsWalkedAndItsNamesStayInside)
{
    const std::filesystem::path file = Folder() / "scaricate.zip";
    ZipOf(file, {{"2026/03/uno.xml", WithNumber("1")},
                 {"../../fuori.xml", WithNumber("2")},
                 {"C:\\temp\\due.xml", WithNumber("3")},
                 {"2026/leggimi.pdf", "%PDF"},
                 {"__MACOSX/2026/._uno.xml", "x"},
                 {"copia.xml", WithNumber("1")},
                 {"nota.xml", "<a/>"}});
    const std::vector<ImportResult> results = ImportInvoices(Cmd(), {file});
    EXPECT_EQ(Outcomes(results), (std::array<std::size_t, 3>{3, 1, 1}));
    EXPECT_EQ(results.at(0).origin, "scaricate.zip: 2026/03/uno.xml");
    for (const char *name : {"uno.xml", "fuori.xml", "due.xml"})
        EXPECT_EQ(Value(fmt::format("SELECT COUNT(*) FROM admin.allegati WHERE all_fname = '{}'", name)), "1") << name;
}

TEST_P(ImportTest, DamagedZipIsReportedAndTheRestGoesOn)
{
    const std::string whole =
        ZipOf(Folder() / "intero.zip", {{"uno.xml", WithNumber("1")}, {"due.xml", WithNumber("2")}});
    std::string broken_member = whole;
    for (std::size_t i = 60; i < 90; ++i) broken_member[i] = '\x55'; // inside the first member's packed bytes
    const std::vector<ImportResult> results =
        ImportInvoices(Cmd(), {Written("tagliato.zip", whole.substr(0, whole.size() / 2)), Written("finto.zip", "PK"),
                               Written("membro.zip", broken_member)});
    ASSERT_EQ(results.size(), 4u);
    EXPECT_THAT(results[0].text, HasSubstr("danneggiato"));
    EXPECT_THAT(results[1].text, HasSubstr("danneggiato"));
    EXPECT_EQ(results[2].outcome, ImportOutcome::Refused);
    EXPECT_THAT(results[2].text, HasSubstr("danneggiato"));
    EXPECT_EQ(results[3].outcome, ImportOutcome::Loaded) << results[3].text;
    EXPECT_EQ(Count("allegati"), "1");
}

// Ten thousand times its size when unpacked: the size is counted while it is read, not taken from the archive.
TEST_P(ImportTest, ZipBombIsCutShort)
{
    const std::filesystem::path file = Folder() / "bomba.zip";
    ZipOf(file, {{"bomba.xml", std::string(60'000'000, ' ')}});
    const std::vector<ImportResult> results = ImportInvoices(Cmd(), {file});
    ASSERT_EQ(results.size(), 1u);
    EXPECT_THAT(results[0].text, HasSubstr("50 MB"));
}

INSTANTIATE_TEST_SUITE_P(Engines, ImportTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

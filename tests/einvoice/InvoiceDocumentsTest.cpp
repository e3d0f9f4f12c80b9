#include "einvoice/InvoiceDocuments.h"

#include "tarvodlg/base/Files.h"
#include "tests/einvoice/InvoiceFixture.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

using testing::ElementsAre;
using testing::StartsWith;
using testing::UnorderedElementsAre;

class InvoiceDocumentsTest : public InvoiceTest {
  protected:
    /// Files what a provider made of an invoice: tied to it by its name alone.
    void FilePdf(const std::string &name, const std::string &bytes, long year = 2026)
    {
        ALLEGATI pdf;
        pdf.all_anno = year;
        pdf.all_fname = name;
        pdf.all_data = ToBytes(bytes);
        sqlall.Store(Cmd(), &pdf);
    }
    std::string ExportedPdf(long code)
    {
        const std::filesystem::path file = Folder() / "esportata.pdf";
        ExportInvoicePdf(Cmd(), code, file);
        return ReadWholeFile(file, 10'000'000);
    }
    void Damage(long code)
    {
        SACommand damage(Cmd()->Connection(), "UPDATE admin.allegati SET all_data = :data WHERE all_codice = :codice");
        damage.Param("data").setAsBytes(ToBytes("<rotto"));
        damage.Param("codice").setAsLong(code);
        damage.Execute();
    }
    std::vector<std::string> FilesIn(const std::filesystem::path &folder)
    {
        std::vector<std::string> names;
        for (const auto &entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        return names;
    }
    std::string AttachmentsOf(const PNOTA &entry)
    {
        std::string names;
        for (const PNOTA_ALLEGATO &file : sqlpat.ListOf(Cmd(), entry.pno_codice)) names += file.pat_fname.str() + " ";
        return names;
    }
};

TEST_P(InvoiceDocumentsTest, RendersOnceAndKeepsIt)
{
    const long code = Filed(InvoiceSpec{});
    const std::string first = ExportedPdf(code);
    EXPECT_THAT(first, StartsWith("%PDF"));
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.allegati WHERE all_tab_tipo = 23 AND all_fname = 'prova.XML.PDF'"
                    " AND all_anno = 2026"),
              "1");
    EXPECT_EQ(ExportedPdf(code), first);
    EXPECT_EQ(Count("allegati"), "2");
    EXPECT_EQ(ArchiveFaults(), "");
}

// Same file name from two suppliers: neither may get the other's document, and both must find room.
TEST_P(InvoiceDocumentsTest, InvoicesOfOneNameHaveTheirOwn)
{
    InvoiceSpec other;
    other.number = "8/P";
    const long first = Filed(InvoiceSpec{}), second = Filed(other);
    EXPECT_NE(ExportedPdf(first), ExportedPdf(second));
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.allegati WHERE all_tab_tipo = 23"), "2");
}

struct ProviderCase {
    const char *name, *invoice, *pdf;
    long year;
    bool is_found;
    const char *invoice_date = "2026-03-10";
};

TEST_P(InvoiceDocumentsTest, ProvidersDocumentComesFirst)
{
    const ProviderCase cases[] = {
        {"XmlPdf", "a.xml", "a.XML.PDF", 2026, true},
        {"Pdf", "b.xml", "b.PDF", 2026, true},
        {"Signed", "c.xml.p7m", "c.PDF", 2026, true},
        {"AsNamed", "d.xml", "d.xml.PDF", 2026, true},
        {"SmallLetters", "e.XML", "e.pdf", 2026, true},
        {"OtherYear", "f.xml", "f.PDF", 2024, false},
        {"OtherName", "g.xml", "gg.PDF", 2026, false},
        {"SignedName", "h.xml.p7m", "h.xml.p7m.PDF", 2026, true},
        {"Small", "i.xml.p7m", "i.xml.pdf", 2026, true},
        {"InvoiceYear", "j.xml", "j.pdf", 2025, true, "2025-12-20"},
        {"CompanyYear", "k.xml", "k.XML.PDF", 2026, true, "2025-12-20"},
    };
    int number = 100;
    for (const ProviderCase &one : cases) {
        SCOPED_TRACE(one.name);
        InvoiceSpec spec;
        spec.number = std::to_string(number++);
        spec.date = one.invoice_date;
        const long code = Filed(InvoiceText(spec), one.invoice);
        FilePdf(one.pdf, one.name, one.year);
        ALLEGATI filed;
        ASSERT_TRUE(sqlall.SearchByCode(Cmd(), code, &filed));
        PNOTA entry;
        AttachFiles(Cmd(), filed, &entry);
        ASSERT_EQ(entry.allegati.size(), one.is_found ? 2U : 1U);
        EXPECT_EQ(entry.allegati.back().pat_fname, one.is_found ? one.pdf : one.invoice);
        EXPECT_EQ(ExportedPdf(code) == one.name, one.is_found);
    }
}

TEST_P(InvoiceDocumentsTest, UnreadableInvoiceHasNoDocumentUnlessOneIsStored)
{
    const long code = Filed(InvoiceSpec{});
    Damage(code);
    try {
        ExportedPdf(code);
        ADD_FAILURE() << "exported";
    } catch (const FileError &error) {
        EXPECT_STREQ(error.what(), "File in PDF del documento non trovato in archivio!");
    }
    FilePdf("prova.PDF", "del provider");
    EXPECT_EQ(ExportedPdf(code), "del provider");
}

TEST_P(InvoiceDocumentsTest, DeletesAfterAYesOnly)
{
    const long code = Filed(InvoiceSpec{});
    FilePdf("prova.PDF", "del provider");
    FilePdf("altra.PDF", "di un'altra");
    user_.Expect("Vuoi veramente eliminare il PDF acquisito?", IDNO);
    EXPECT_EQ(DeleteInvoicePdf(Cmd(), code), std::nullopt);
    EXPECT_EQ(Count("allegati"), "3");
    user_.Expect("Vuoi veramente eliminare il PDF acquisito?", IDYES);
    EXPECT_EQ(DeleteInvoicePdf(Cmd(), code), 1);
    EXPECT_EQ(Count("allegati"), "2");
    EXPECT_THAT(ExportedPdf(code), StartsWith("%PDF"));
}

TEST_P(InvoiceDocumentsTest, DeletesNotThatOfAnotherInvoiceOfTheSameName)
{
    InvoiceSpec other;
    other.number = "8/P";
    const long code = Filed(InvoiceSpec{}), namesake = Filed(InvoiceText(other), "prova.xml");
    FilePdf("prova.PDF", "del provider");
    Run(fmt::format("UPDATE admin.allegati SET all_tab_codice = {} WHERE all_fname = 'prova.PDF'", namesake));
    ExportedPdf(code);
    user_.Expect("Vuoi veramente eliminare il PDF acquisito?", IDYES);
    EXPECT_EQ(DeleteInvoicePdf(Cmd(), code), 1);
    EXPECT_EQ(ExportedPdf(namesake), "del provider");
}

// Invoices are known by their content and keep whatever name they came with.
TEST_P(InvoiceDocumentsTest, DeletingNeverTakesAnInvoice)
{
    InvoiceSpec other;
    other.number = "8/P";
    const long code = Filed(InvoiceSpec{});
    Filed(InvoiceText(other), "prova.PDF");
    user_.Expect("Vuoi veramente eliminare il PDF acquisito?", IDYES);
    EXPECT_EQ(DeleteInvoicePdf(Cmd(), code), 0);
    EXPECT_EQ(Count("allegati"), "2");
}

TEST_P(InvoiceDocumentsTest, EntryTakesTheDocumentAlong)
{
    const long without = Filed(InvoiceSpec{});
    EXPECT_EQ(AttachmentsOf(Register(without).entry), "prova.xml ");
    InvoiceSpec other;
    other.number = "8/P";
    const long with = Filed(InvoiceText(other), "altra.xml");
    ExportedPdf(with);
    EXPECT_EQ(AttachmentsOf(Register(with).entry), "altra.xml altra.XML.PDF ");
}

TEST_P(InvoiceDocumentsTest, DeletedInvoiceTakesItsDocumentAlong)
{
    const long code = Filed(InvoiceSpec{});
    ExportedPdf(code);
    DeleteInvoice(Cmd(), code);
    EXPECT_EQ(Count("allegati"), "0");
}

TEST_P(InvoiceDocumentsTest, ExportsAllFilesUnderTheirOwnNames)
{
    InvoiceSpec other;
    other.number = "8/P";
    const long plain = Filed(InvoiceSpec{}), same_name = Filed(other);
    const long signed_one = Filed(ReadSample("IT06186527153_E4187.xml.p7m"), "IT06186527153_E4187.xml.p7m");
    const std::vector<long> all = FiledInvoices(Cmd(), 0, 0);
    EXPECT_THAT(all, ElementsAre(plain, same_name, signed_one));

    const std::filesystem::path xml = Folder() / "xml", received = Folder() / "ricevuti";
    user_.ExpectFolder(xml);
    EXPECT_EQ(ExportAllFiles(Cmd(), {all, false})->written, 3);
    EXPECT_THAT(FilesIn(xml), UnorderedElementsAre("prova.xml", "prova (2).xml", "IT06186527153_E4187.xml"));
    EXPECT_NE(std::find(user_.progress.begin(), user_.progress.end(), "Esportazione file in corso..."),
              user_.progress.end());
    EXPECT_THAT(ReadWholeFile(xml / "IT06186527153_E4187.xml", 1'000'000), StartsWith("<?xml"));

    user_.ExpectFolder(received);
    EXPECT_EQ(ExportAllFiles(Cmd(), {{signed_one, signed_one}, true})->written, 1);
    EXPECT_EQ(ReadWholeFile(received / "IT06186527153_E4187.xml.p7m", 1'000'000),
              ReadSample("IT06186527153_E4187.xml.p7m"));

    ExportFiles(Cmd(), {all, false}, xml); // the same again changes nothing
    EXPECT_EQ(FilesIn(xml).size(), 3u);
}

TEST_P(InvoiceDocumentsTest, DamagedFileIsToldAndTheOthersAreWritten)
{
    InvoiceSpec other;
    other.number = "8/P";
    const long damaged = Filed(InvoiceText({}), "a.xml.p7m"), good = Filed(InvoiceText(other), "b.xml");
    Run("UPDATE admin.allegati SET all_fname = '../../fuori.xml' WHERE all_codice = " + std::to_string(good));
    SACommand damage(Cmd()->Connection(), "UPDATE admin.allegati SET all_data = :data WHERE all_codice = :codice");
    damage.Param("data").setAsBytes(ToBytes("nessuna busta"));
    damage.Param("codice").setAsLong(damaged);
    damage.Execute();
    const long deleted = 4711; // by another station, while the list stood open
    const FilesExported exported = ExportFiles(Cmd(), {{damaged, deleted, good}, false}, Folder() / "fuori");
    EXPECT_EQ(exported.written, 1);
    EXPECT_THAT(exported.faults,
                ElementsAre(testing::HasSubstr("a.xml.p7m"), "La fattura elettronica n. 4711 non esiste."));
    EXPECT_THAT(FilesIn(Folder() / "fuori"), ElementsAre("fuori.xml"));
}

TEST_P(InvoiceDocumentsTest, NothingIsWrittenWithoutAFolder)
{
    user_.ExpectFolder(std::nullopt);
    EXPECT_EQ(ExportAllFiles(Cmd(), {{Filed(InvoiceSpec{})}, false}).has_value(), false);
}

TEST(InvoicePdfNamesTest, LongNamesKeepTheirEnding)
{
    std::string long_name(300, 'x');
    long_name.append(".xml");
    for (const auto &names : InvoicePdfNames(long_name))
        for (const std::string &name : names) {
            EXPECT_LE(name.size(), 200u);
            EXPECT_TRUE(name.ends_with(".PDF") || name.ends_with(".pdf")) << name;
        }
}

INSTANTIATE_TEST_SUITE_P(Engines, InvoiceDocumentsTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

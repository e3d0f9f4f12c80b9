#include "tests/einvoice/InvoiceFixture.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"

namespace {

using testing::ElementsAre;

class InboxTest : public InvoiceTest {
  protected:
    std::vector<std::string> Listed(long first = 0, long last = 0)
    {
        std::vector<std::string> rows;
        ForEachInvoice(Cmd(), first, last, [&](const InvoiceRow &row) {
            rows.push_back(fmt::format("{} {} {}{}", row.number, row.supplier_name, row.is_registered ? "R" : "",
                                       row.is_in_warehouse ? "M" : ""));
            return true;
        });
        return rows;
    }
    std::string Exported(long code, bool as_received)
    {
        const std::filesystem::path file = Folder() / "esportata";
        as_received ? ExportInvoiceP7m(Cmd(), code, file) : ExportInvoiceXml(Cmd(), code, file);
        return ReadWholeFile(file, 10'000'000);
    }
};

TEST_P(InboxTest, ListShowsSupplierAndStatus)
{
    Filed(ReadSample("IT03918277199_AV042.xml"));
    const long code = Filed(InvoiceSpec{});
    EXPECT_THAT(Listed(), ElementsAre("42 *** SCONOSCIUTO *** ", "7/P Utensileria Marzavola S.r.l. "));
    ASSERT_TRUE(Register(code).registered);
    Run("INSERT INTO admin.testate1 (tes_codice, tes_anno, tes_cod_for, tes_n_fat, tes_d_fat) VALUES (1, 2026, 1, "
        "'7/P', '2026-03-10')");
    EXPECT_THAT(Listed(), ElementsAre("42 *** SCONOSCIUTO *** ", "7/P Utensileria Marzavola S.r.l. RM"));
}

TEST_P(InboxTest, PeriodIncludesItsLastDay)
{
    user_.today = DateToJulian(31, 5, 2026);
    Filed(InvoiceSpec{});
    const long day = user_.today;
    EXPECT_EQ(Listed(day, day).size(), 1u);
    EXPECT_EQ(Listed(0, day).size(), 1u);
    EXPECT_EQ(Listed(day + 1, 0).size(), 0u);
    EXPECT_EQ(Listed(0, day - 1).size(), 0u);
}

TEST_P(InboxTest, DamagedBytesInTheArchiveDoNotStopTheList)
{
    const long code = Filed(InvoiceSpec{});
    Filed(ReadSample("IT03918277199_AV042.xml"));
    SACommand damage(Cmd()->Connection(), "UPDATE admin.allegati SET all_data = :data WHERE all_codice = :codice");
    damage.Param("data").setAsBytes(ToBytes("<rotto"));
    damage.Param("codice").setAsLong(code);
    damage.Execute();
    std::vector<std::string> faults;
    ForEachInvoice(Cmd(), 0, 0, [&](const InvoiceRow &row) {
        faults.push_back(row.fault);
        return true;
    });
    EXPECT_THAT(faults, ElementsAre("Impossibile caricare l'xml dal file :\n\nprova.xml", ""));
    EXPECT_THROW(Register(code), InvoiceFileError);
    EXPECT_EQ(Count("pnota1"), "0");
}

TEST_P(InboxTest, XmlOfASignedFileIsItsContentAndTheP7mIsUntouched)
{
    const std::string der = ReadSample("IT06186527153_E4187.xml.p7m"),
                      base64 = ReadSample("IT19949417158_1E55K.xml.p7m");
    const long in_der = Filed(der, "IT06186527153_E4187.xml.p7m"),
               in_base64 = Filed(base64, "IT19949417158_1E55K.XML.P7M");
    const std::string xml = Exported(in_der, false);
    EXPECT_TRUE(xml.starts_with("<?xml") && xml.find("</p:FatturaElettronica>") > xml.size() - 40)
        << "from the first byte to the last";
    EXPECT_NE(der.find(xml), std::string::npos) << "in DER the content lies in one piece";
    EXPECT_TRUE(Exported(in_der, true) == der);
    EXPECT_TRUE(Exported(in_base64, true) == base64);
    EXPECT_EQ(ImportInvoice(Cmd(), "x", "x.xml", Exported(in_base64, false)).outcome, ImportOutcome::AlreadyThere);
}

TEST_P(InboxTest, PlainFileIsNotExportedAsSigned)
{
    const std::string bytes = InvoiceText({});
    const long code = Filed(bytes);
    EXPECT_EQ(Exported(code, false), bytes);
    const std::filesystem::path file = Folder() / "firmata.p7m";
    try {
        ExportInvoiceP7m(Cmd(), code, file);
        ADD_FAILURE() << "written";
    } catch (const FileError &error) {
        EXPECT_STREQ(error.what(), "Impossibile esportare il file!\n\nFormato file non corretto.");
    }
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_THROW(ExportInvoiceXml(Cmd(), code, Folder() / "manca" / "x.xml"), FileError);
    EXPECT_THROW(ExportInvoiceXml(Cmd(), 4711, file), SAException);
}

// The number of a document that is no received invoice: another kind of record of the same table.
TEST_P(InboxTest, OnlyInvoicesAreLoadedAndDeleted)
{
    ALLEGATI document;
    document.all_anno = 2026;
    document.all_tab_tipo = 1;
    document.all_fname = "contratto.pdf";
    document.all_data = ToBytes("%PDF");
    document.all_impronta = ContentDigest("%PDF");
    sqlall.Store(Cmd(), &document);
    CFattureElettronicheDB content;
    EXPECT_THROW(LoadInvoice(Cmd(), document.all_codice, &content), SAException);
    EXPECT_THROW(DeleteInvoice(Cmd(), document.all_codice), SAException);
    const long code = Filed(InvoiceSpec{});
    DeleteInvoice(Cmd(), code);
    EXPECT_EQ(Count("allegati"), "1");
    EXPECT_NE(Filed(InvoiceSpec{}), 0) << "a deleted one can be taken in again";
}

INSTANTIATE_TEST_SUITE_P(Engines, InboxTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

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

/// Everything of a row that can be seen, on one line.
std::string Shown(const InvoiceRow &row)
{
    return fmt::format("{}.{}/{} {} {} [{}] sup {} {} | {} {} {} | {} {} n. {} {} {:.2f} {} R{} M{} {} {} {}", row.code,
                       row.document, row.documents, row.year, row.file_name.str(), FormatDate(row.day), row.supplier,
                       row.supplier_name, row.seller_name, row.vat_number, row.fiscal_code, row.type, row.type_text,
                       row.number, row.day, row.total, row.is_signed, row.is_registered, row.is_in_warehouse, row.entry,
                       row.protocol, row.fault);
}

TEST_P(InboxTest, TheListShowsWhatTheFilesSay)
{
    ImportInvoices(Cmd(), {SampleFolder("fatture")});
    const long registered = Filed(InvoiceSpec{});
    ASSERT_TRUE(Register(registered).registered);
    InvoiceSpec without_vat_number; // meets no supplier by the empty number
    without_vat_number.seller_vat.clear();
    without_vat_number.seller_fiscal_code = "RSSMRA80A01H501U";
    without_vat_number.number = "8/Z";
    Filed(without_vat_number);
    Run("UPDATE admin.fornito1 SET for_piva = '' WHERE for_codice = 2");
    std::vector<std::string> listed, described;
    ForEachInvoice(Cmd(), 0, 0, [&](const InvoiceRow &row) {
        listed.push_back(Shown(row));
        CFattureElettronicheDB content;
        const ALLEGATI filed = LoadInvoice(Cmd(), row.code, &content);
        described.push_back(Shown(DescribeInvoice(Cmd(), filed, content, row.document)));
        return true;
    });
    EXPECT_GT(listed.size(), 5u);
    EXPECT_EQ(listed, described);
    EXPECT_EQ(ArchiveFaults(), "");
}

TEST_P(InboxTest, TheListIsFilteredBySellerNumberAndState)
{
    Filed(ReadSample("IT03918277199_AV042.xml"));
    ASSERT_TRUE(Register(Filed(InvoiceSpec{})).registered);
    const auto numbers = [&](const InvoiceFilter &filter) {
        std::string found;
        ForEachInvoice(Cmd(), filter, [&](const InvoiceRow &row) {
            found += row.number + " ";
            return true;
        });
        return found;
    };
    EXPECT_EQ(numbers({0, 0, "utensileria", "", InvoiceState::Any}), "7/P ");
    EXPECT_EQ(numbers({0, 0, "03918277199", "", InvoiceState::Any}), "42 ");
    EXPECT_EQ(numbers({0, 0, "", "7/p", InvoiceState::Any}), "7/P ");
    EXPECT_EQ(numbers({0, 0, "", "", InvoiceState::ToRegister}), "42 ");
    EXPECT_EQ(numbers({0, 0, "", "", InvoiceState::Registered}), "7/P ");
    EXPECT_EQ(numbers({0, 0, "", "", InvoiceState::InWarehouse}), "");
    EXPECT_EQ(numbers({0, 0, "", "", InvoiceState::ToLoad}), "42 7/P ");
    EXPECT_EQ(numbers({0, 0, "", "", InvoiceState::Unreadable}), "");
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

// As a version left the archive that kept no summaries.
TEST_P(InboxTest, FilesWithoutSummaryAreReadOnceAndADamagedOneDoesNotStopTheList)
{
    const long code = Filed(InvoiceSpec{});
    Filed(ReadSample("IT03918277199_AV042.xml"));
    SACommand damage(Cmd()->Connection(), "UPDATE admin.allegati SET all_data = :data WHERE all_codice = :codice");
    damage.Param("data").setAsBytes(ToBytes("<rotto"));
    damage.Param("codice").setAsLong(code);
    damage.Execute();
    Run("DELETE FROM admin.fatture");
    std::vector<std::string> faults;
    ForEachInvoice(Cmd(), 0, 0, [&](const InvoiceRow &row) {
        faults.push_back(row.fault);
        return true;
    });
    EXPECT_THAT(faults, ElementsAre("Impossibile caricare l'xml dal file :\n\nprova.xml", ""));
    EXPECT_EQ(Count("fatture"), "2");
    Run("UPDATE admin.fatture SET fat_numero = '43' WHERE fat_numero = '42'");
    EXPECT_THAT(Listed(), ElementsAre(" *** SCONOSCIUTO *** ", "43 *** SCONOSCIUTO *** "))
        << "the second time no file is read";
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
    EXPECT_EQ(Count("fatture"), "0");
    EXPECT_NE(Filed(InvoiceSpec{}), 0) << "a deleted one can be taken in again";
}

INSTANTIATE_TEST_SUITE_P(Engines, InboxTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

#include "schedule/PostalSlip.h"

#include "tarvodlg/base/Dates.h"
#include "tests/support/TestArchive.h"
#include "tests/tarvodlg/print/PdfText.h"

#include <gmock/gmock.h>

namespace {

using testing::HasSubstr;
using testing::Not;

class PostalSlipTest : public ArchiveTest {
  protected:
    SCADENZE Stored(short side, double amount)
    {
        SCADENZE record;
        sqlsca.Blank(Cmd(), &record, side);
        record.sca_cli_for = 1;
        record.sca_data = DateToJulian(30, 6, 2026);
        record.sca_importo = amount;
        record.sca_desc = "INCASSO FATTURA VENDITA";
        record.sca_fattura = "12/B";
        record.sca_data_fattura = DateToJulian(5, 2, 2026);
        sqlsca.SqlTransaction(Cmd(), kInsert, &record);
        return record;
    }

    /// The one page as text, whatever stood between two words as one blank.
    std::string Page(const SCADENZE &record)
    {
        const std::filesystem::path file = Folder() / "bollettino.pdf";
        EXPECT_TRUE(PrintPostalSlip(record, ReportDestination{ReportTarget::Pdf, file}));
        EXPECT_THAT(PdfInfo(file), HasSubstr("Stampa Bollettino C/C"));
        const std::vector<std::string> pages = PdfPages(file);
        EXPECT_EQ(pages.size(), 1U);
        std::string text = " ";
        for (const char c : pages.empty() ? std::string() : pages.front())
            if (c != ' ' && c != '\n')
                text += c;
            else if (text.back() != ' ')
                text += ' ';
        return text;
    }
};

TEST_P(PostalSlipTest, CustomerPaysTheCompany)
{
    Stored(kCustomer, 7);
    const SCADENZE record = Stored(kCustomer, 1220.05);
    Run("UPDATE admin.banche1 SET ban_iban = 'IT29X0760112700000012345678', ban_mas = 175, ban_con = 1, ban_sot = 1"
        " WHERE ban_codice = 3");
    const std::string page = Page(record);
    for (const char *text :
         {"Ricevuta di Versamento", "Ricevuta di Accredito", " 1220, 05 ", "milleduecentoventi/05",
          "Brenzola Forniture S.r.l.", "INCASSO FATTURA VENDITA N. 12/B DEL", "05/02/2026", "30/06/2026",
          "Edilnova Cordevasco S.r.l.", "Via Emilia Ovest 212", "43126 Parma (PR)", " 12345678 "})
        EXPECT_THAT(page, HasSubstr(text));
}

TEST_P(PostalSlipTest, CompanyPaysItsSupplier)
{
    const SCADENZE record = Stored(kSupplier, 61);
    const std::string name = Value("SELECT for_desc FROM admin.fornito1 WHERE for_codice = 1");
    std::string page = Page(record);
    EXPECT_THAT(page, HasSubstr("intestato a intestato a " + name));
    EXPECT_THAT(page, HasSubstr("eseguito da eseguito da Brenzola Forniture S.r.l."));
    EXPECT_THAT(page, HasSubstr("sul C/C n. di Euro 61, 00")) << "no account with the post office: to be written in";
    Run("UPDATE admin.fornito1 SET for_iban = 'IT29X0760112700000012345678' WHERE for_codice = 1");
    page = Page(record);
    EXPECT_THAT(page, HasSubstr("sul C/C n. 12345678 di Euro"));
}

TEST_P(PostalSlipTest, NothingLongIsCut)
{
    const std::string name =
        "Consorzio Interregionale per la Valorizzazione delle Produzioni Agricole Tipiche S.c.a r.l.";
    Run("UPDATE admin.clienti1 SET cli_desc = '" + name + "' WHERE cli_codice = 1");
    SCADENZE record = Stored(kCustomer, 454'454'454.88);
    record.sca_desc = "INCASSO FATTURA VENDITA PER CONTO DEL CONSORZIO DELLE QUATTRO PROVINCE ORIENTALI";
    const std::string page = Page(record);
    EXPECT_THAT(page, Not(HasSubstr("…")));
    EXPECT_THAT(page, HasSubstr(" 454454454, 88 "));
}

INSTANTIATE_TEST_SUITE_P(Engines, PostalSlipTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

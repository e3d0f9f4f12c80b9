#include "einvoice/InvoicePdf.h"

#include "tests/einvoice/InvoiceFixture.h"
#include "tests/tarvodlg/print/PdfText.h"

#include <fmt/format.h>

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class InvoicePdfTest : public testing::Test {
  protected:
    void SetUp() override
    {
        folder_ = std::filesystem::temp_directory_path() / fmt::format("lumera-pdf-{}", ::getpid());
        std::filesystem::create_directories(folder_);
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::vector<std::string> Pages(const std::string &xml, std::optional<std::size_t> document = {})
    {
        content_.Load(xml, "prova.xml");
        const long pages = WriteInvoicePdf(content_, document, folder_ / "prova.pdf");
        std::vector<std::string> texts = PdfPages(folder_ / "prova.pdf");
        EXPECT_EQ(static_cast<long>(texts.size()), pages);
        return texts;
    }
    std::string Text(const std::string &xml)
    {
        std::string text;
        for (const std::string &page : Pages(xml)) text += page;
        return text;
    }

    std::filesystem::path folder_;
    CFattureElettronicheDB content_;
};

std::string Line(int number, const std::string &description)
{
    return fmt::format("<DettaglioLinee><NumeroLinea>{}</NumeroLinea><Descrizione>{}</Descrizione>"
                       "<PrezzoUnitario>1.00</PrezzoUnitario><PrezzoTotale>1.00</PrezzoTotale>"
                       "<AliquotaIVA>22.00</AliquotaIVA></DettaglioLinee>",
                       number, description);
}

/// An invoice whose lines are these instead of the only one.
std::string WithLines(const std::string &lines)
{
    std::string text = InvoiceText({});
    const std::size_t begin = text.find("<DettaglioLinee>"), end = text.rfind("</DettaglioLinee>") + 17;
    return text.replace(begin, end - begin, lines);
}

std::string WithText(const std::string &description)
{
    return Replaced(InvoiceText({}), "Merce", description);
}

struct Sample {
    const char *name, *file;
    std::vector<std::string> parts; ///< what must stand in the document
};
void PrintTo(const Sample &sample, std::ostream *out)
{
    *out << sample.file;
}

class SamplePdfTest : public InvoicePdfTest, public testing::WithParamInterface<Sample> {};

TEST_P(SamplePdfTest, ShowsWhatABookkeeperNeeds)
{
    content_.Load(ReadSample(GetParam().file), GetParam().file);
    WriteInvoicePdf(content_, {}, folder_ / "prova.pdf");
    std::string text;
    for (const std::string &page : PdfPages(folder_ / "prova.pdf")) text += page;
    for (const std::string &part : GetParam().parts) EXPECT_THAT(text, HasSubstr(part));
    for (const auto &body : content_.Documents())
        for (const auto &line : body.DatiBeniServizi.DettaglioLinee) // words may go on to the next line
            EXPECT_THAT(text, HasSubstr(line.Descrizione.substr(0, line.Descrizione.find(' ', 12))));
}

INSTANTIATE_TEST_SUITE_P(
    Samples, SamplePdfTest,
    testing::Values(
        Sample{"Withholding",
               "IT03918277199_AV042.xml",
               {"PARCELLA (TD06)", "n. 42 del 15/09/2026", "Tornabarbi Leonida", "TC01", "2.080,00", "457,60",
                "2.537,60", "-400,00", "2.137,60", "IT79O0984511400000000330871", "15/10/2026"}},
        Sample{"CreditNote", "IT02565617350_00A31.xml", {"NOTA DI CREDITO (TD04)", "313,30", "24/2026"}},
        Sample{"Signed", "IT06186527153_E4187.xml.p7m", {"1.132,79", "firmato da ", "Periodo: dal "}},
        Sample{"TwoDocuments",
               "IT19949417158_1D0F8.xml",
               {"n. 210 del", "n. 211 del", "691,98", "225,70", "sc. 10%", "sc. 5%", "documento 2 di 2"}},
        Sample{"Natures",
               "IT06593047100_00961.xml",
               {"N3.5 NON IMPONIBILE", "N2.1 NON SOGGETTO", "dichiarazione d'intento", "INTENTO",
                "Imposta di bollo assolta in modo virtuale", "11/01/2027"}},
        Sample{"Simplified", "IT19949417158_1F9T3.xml", {"FATTURA SEMPLIFICATA (TD07)", "193,00", "120,00", "11,00"}},
        Sample{
            "Attachment", "IT03175957582_27731.xml", {"Allegati contenuti nel file", "Dettaglio_consumi_2026_3.pdf"}},
        Sample{"Intermediary",
               "IT19949417158_1E55K.xml.p7m",
               {"Passafatture Lindoro S.r.l.", "TZ un terzo per conto del cedente", "T0701", "T0755", "884,35"}}),
    [](const auto &sample) { return std::string(sample.param.name); });

TEST_F(InvoicePdfTest, EveryLineIsThereAndTitlesAreRepeated)
{
    constexpr int kLines = 400;
    std::string lines;
    for (int i = 1; i <= kLines; ++i) lines += Line(i, fmt::format("articolo-{}-fine", i));
    const std::vector<std::string> pages = Pages(WithLines(lines));
    ASSERT_GT(pages.size(), 4u);
    std::string all;
    for (std::size_t i = 0; i < pages.size(); ++i) {
        all += pages[i];
        const bool is_last = i + 1 == pages.size();
        EXPECT_EQ(pages[i].find("segue\n") == std::string::npos, is_last) << i;
        EXPECT_THAT(pages[i], HasSubstr("n. 7/P del 10/03/2026"));
        EXPECT_THAT(pages[i], HasSubstr(fmt::format("Pagina {}", i + 1)));
        if (i == 0 || is_last) continue;
        EXPECT_THAT(pages[i], AllOf(HasSubstr("Beni e servizi (segue)"), HasSubstr("Descrizione")));
    }
    for (int i = 1; i <= kLines; ++i) EXPECT_THAT(all, HasSubstr(fmt::format("articolo-{}-fine", i)));
}

TEST_F(InvoicePdfTest, TextLongerThanAPageGoesOn)
{
    std::string words;
    for (int i = 1; i <= 3000; ++i) words += fmt::format("parola{} ", i);
    const std::string text = Text(WithText(words));
    for (const int i : {1, 1500, 2999, 3000}) EXPECT_THAT(text, HasSubstr(fmt::format("parola{}", i)));
}

TEST_F(InvoicePdfTest, WordWithoutEndLosesNothing)
{
    std::string word;
    for (int i = 100; i < 800; ++i) word += fmt::format("{}", i);
    std::string text = Text(WithText(word));
    std::erase_if(text, [](char letter) { return letter == ' ' || letter == '\n'; });
    std::size_t found = 0;
    for (int i = 100; i < 800; i += 50) found += text.find(std::to_string(i)) != std::string::npos;
    EXPECT_EQ(found, 14u);
}

TEST_F(InvoicePdfTest, LettersOfOtherWritingsStay)
{
    const std::string text = Text(WithText("A &amp; B &lt;C&gt; \"più\" Ελληνικά Москва שלום Łódź €"));
    for (const char *part : {"A & B <C> \"più\"", "Ελληνικά", "Москва", "Łódź", "€"})
        EXPECT_THAT(text, HasSubstr(part));
    EXPECT_TRUE(text.find("שלום") != std::string::npos || text.find("םולש") != std::string::npos);
}

TEST_F(InvoicePdfTest, MarksThatTurnTheReadingDirectionAreTakenOut)
{
    EXPECT_THAT(Text(WithText("Sconto \u202E00,001\u202C finale")), HasSubstr("00,001"));
}

TEST_F(InvoicePdfTest, WhatHasNoPlaceOfItsOwnStandsUnderOtherData)
{
    std::string xml = Replaced(InvoiceText({}), "</DatiGeneraliDocumento>",
                               "<Art73>SI</Art73></DatiGeneraliDocumento><DatiSAL><RiferimentoFase>3</RiferimentoFase>"
                               "</DatiSAL>");
    xml = Replaced(xml, "</DatiBeniServizi>",
                   "</DatiBeniServizi><DatiVeicoli><Data>2026-01-15</Data><TotalePercorso>12500 KM</TotalePercorso>"
                   "</DatiVeicoli>");
    const std::string text = Text(xml);
    const std::string other = text.substr(text.find("Altri dati"));
    for (const char *part : {"Art. 73", "Stati di avanzamento", "15/01/2026", "12500 KM", "codice ABCDEFG", "prova.xml",
                             "file non firmato"})
        EXPECT_THAT(other, HasSubstr(part));
}

TEST_F(InvoicePdfTest, OneDocumentOfSeveral)
{
    const std::vector<std::string> pages = Pages(ReadSample("IT19949417158_1D0F8.xml"), 1);
    ASSERT_EQ(pages.size(), 1u);
    EXPECT_THAT(pages[0], AllOf(HasSubstr("n. 211 del"), Not(HasSubstr("n. 210 del"))));
}

TEST_F(InvoicePdfTest, NumbersAreItalianAndKeepTheirDecimals)
{
    const std::string xml =
        Replaced(InvoiceText({}), "<PrezzoUnitario>100.00</PrezzoUnitario>",
                 "<Quantita>1234.5</Quantita><UnitaMisura>KG</UnitaMisura><PrezzoUnitario>0.08100455</PrezzoUnitario>");
    const std::string text = Text(xml);
    EXPECT_THAT(text, AllOf(HasSubstr("1.234,5 "), HasSubstr("0,08100455"), HasSubstr("22%"), HasSubstr("122,00")));
}

} // namespace

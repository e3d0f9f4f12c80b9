#include "tests/tarvolumera/FatturaPaSupport.h"

#include "tarvodlg/base/Dates.h"
#include "tarvolumera/fatturapa/XmlFields.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>

namespace {

using namespace fatturapa;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// --- Encodings ------------------------------------------------------------------------------------------------------

std::string Utf16(std::string_view latin1, bool big_endian)
{
    std::string text;
    for (const char character : latin1) {
        if (big_endian) text += '\0';
        text += character;
        if (!big_endian) text += '\0';
    }
    return text;
}

TEST(FatturaPa, ReadsTheSellersNameInEveryEncoding)
{
    const auto with = [](std::string_view encoding, std::string_view seller) {
        std::string xml = Replaced(SampleInvoice(), "FORNITORE DI PROVA SRL", seller);
        return Replaced(xml, "UTF-8", encoding);
    };
    const std::string narrow = with("UTF-16", "PERCH\xC9");
    struct Case {
        const char *name;
        std::string bytes;
        std::string expected;
        std::size_t warnings;
    };
    for (const Case &c : {
             Case{"UTF-8", with("UTF-8", "PERCHÉ €"), "PERCHÉ €", 0},
             Case{"UTF-8 whatever the declaration after a mark", "\xEF\xBB\xBF" + with("windows-1252", "PERCHÉ"),
                  "PERCHÉ", 0},
             Case{"ISO-8859-1", with("ISO-8859-1", "PERCH\xC9"), "PERCHÉ", 0},
             Case{"windows-1252", with("Windows-1252", "\x93PERCH\xC9\x94 \x80"), "“PERCHÉ” €", 0},
             Case{"ISO-8859-15", with("iso-8859-15", "\xA4"), "€", 0},
             Case{"bytes that are not UTF-8", with("UTF-8", "PERCH\xC9"), "PERCHÉ", 1},
             Case{"no declaration",
                  Replaced(with("UTF-8", "PERCH\xC9"), R"(<?xml version="1.0" encoding="UTF-8"?>)", ""), "PERCHÉ", 1},
             Case{"UTF-16LE", "\xFF\xFE" + Utf16(narrow, false), "PERCHÉ", 0},
             Case{"UTF-16BE", "\xFE\xFF" + Utf16(narrow, true), "PERCHÉ", 0},
             Case{"UTF-16LE without mark", Utf16(narrow, false), "PERCHÉ", 0},
             Case{"UTF-16 declared, UTF-8 written", with("UTF-16", "PERCHÉ"), "PERCHÉ", 0},
             Case{"character outside the first plane", with("UTF-8", "&#x1F600;"), "😀", 0},
         }) {
        const CFattureElettronicheDB db = Read(c.bytes);
        EXPECT_EQ(db.Header().CedentePrestatore.DatiAnagrafici.Anagrafica.Denominazione, c.expected) << c.name;
        EXPECT_EQ(db.Warnings().size(), c.warnings) << c.name;
    }
}

// --- Simplified invoices --------------------------------------------------------------------------------------------

struct Simple {
    const char *name;
    const char *lines;                        ///< "gross/tax/rate/nature", a line each, empty parts left out
    std::vector<std::vector<double>> summary; ///< rate, taxable, tax
    double total;
};

void PrintTo(const Simple &simple, std::ostream *out)
{
    *out << simple.name;
}

std::string GrossLines(std::string_view lines)
{
    std::string xml;
    while (!lines.empty()) {
        std::string_view line = lines.substr(0, lines.find(' '));
        lines.remove_prefix(std::min(lines.size(), line.size() + 1));
        const auto next = [&] {
            const std::string_view part = line.substr(0, line.find('/'));
            line.remove_prefix(std::min(line.size(), part.size() + 1));
            return part;
        };
        const auto element = [](std::string_view name, std::string_view value) {
            return value.empty() ? std::string() : fmt::format("<{0}>{1}</{0}>", name, value);
        };
        xml += "<DatiBeniServizi><Descrizione>Pranzo</Descrizione>" + element("Importo", next());
        const std::string tax = element("Imposta", next());
        xml += "<DatiIVA>" + tax + element("Aliquota", next()) + "</DatiIVA>";
        xml += element("Natura", next()) + "</DatiBeniServizi>";
    }
    return xml;
}

class SimplifiedTest : public testing::TestWithParam<Simple> {};

TEST_P(SimplifiedTest, BecomesASummary)
{
    const CFattureElettronicheDB db = Read(SampleSimplified(GrossLines(GetParam().lines)));
    EXPECT_TRUE(db.Fattura().is_simplified);
    const FatturaElettronicaBody &body = db.Documents().at(0);
    std::vector<std::vector<double>> rows;
    for (const DatiRiepilogoType &row : body.DatiBeniServizi.DatiRiepilogo) {
        rows.push_back({row.AliquotaIVA, row.ImponibileImporto, row.Imposta});
    }
    EXPECT_EQ(rows, GetParam().summary);
    EXPECT_EQ(TotaleDocumento(body), GetParam().total);
    EXPECT_EQ(SumOfSummary(body).totale, GetParam().total) << "nothing is lost by rounding";
}

INSTANTIATE_TEST_SUITE_P(
    Lines, SimplifiedTest,
    testing::Values(Simple{"TaxAlone", "110.00/10.00", {{10, 100.00, 10.00}}, 110.00},
                    Simple{"RateAlone", "12.20//22.00", {{22, 10.00, 2.20}}, 12.20},
                    Simple{"Both", "12.20/2.20/22.00", {{22, 10.00, 2.20}}, 12.20},
                    Simple{"RoundedOnceForTheGroup", "0.01//22 0.01//22 0.01//22 10.00//22", {{22, 8.22, 1.81}}, 10.03},
                    Simple{"TaxAndRateLinesMeet", "12.20/2.20 12.20//22.00", {{22, 20.00, 4.40}}, 24.40},
                    Simple{"TwoRates", "12.20//22.00 110.00/10.00", {{22, 10.00, 2.20}, {10, 100.00, 10.00}}, 122.20},
                    Simple{"Exempt", "50.00//0.00/N4", {{0, 50.00, 0}}, 50.00},
                    Simple{"SameRateOtherNature", "50.00//0.00/N4 1.00//0.00/N1", {{0, 50.00, 0}, {0, 1.00, 0}}, 51.00},
                    Simple{"NatureAlone", "50.00///N2.2", {{0, 50.00, 0}}, 50.00},
                    Simple{"RateFromARoundedTax", "0.99/0.18", {{22, 0.81, 0.18}}, 0.99},
                    Simple{"RateNobodyHas", "113.00/13.00", {{13, 100.00, 13.00}}, 113.00},
                    Simple{"TaxOfNothing", "63.90/63.90", {{0, 0.00, 63.90}}, 63.90},
                    Simple{"Negative", "-12.20//22.00", {{22, -10.00, -2.20}}, -12.20}),
    [](const auto &item) { return std::string(item.param.name); });

TEST(FatturaPa, SimplifiedPartiesStandWhereTheOrdinaryOnesDo)
{
    const CFattureElettronicheDB db = Read(SampleSimplified(GrossLines("12.20//22.00"), "TD08"));
    EXPECT_THAT(WarningsOf(db), IsEmpty());
    const FatturaElettronicaHeader &header = db.Header();
    EXPECT_EQ(NameOf(header.CedentePrestatore.DatiAnagrafici.Anagrafica), "Rossi Mario");
    EXPECT_EQ(header.CedentePrestatore.DatiAnagrafici.RegimeFiscale, "RF01");
    EXPECT_EQ(header.RappresentanteFiscale.value().Anagrafica.Denominazione, "RAPPRESENTANTE");
    EXPECT_EQ(header.CessionarioCommittente.DatiAnagrafici.CodiceFiscale, "12345678903");
    EXPECT_EQ(header.CessionarioCommittente.DatiAnagrafici.Anagrafica.Denominazione, "CLIENTE");
    const FatturaElettronicaBody &body = db.Documents().at(0);
    EXPECT_EQ(body.DatiGenerali.DatiFatturaRettificata.value().DataFR, DateToJulian(1, 4, 2024));
    EXPECT_EQ(body.DatiGenerali.DatiGeneraliDocumento.DatiBollo.value().BolloVirtuale, "SI");
    EXPECT_EQ(body.DatiBeniServizi.DettaglioLinee.at(0).PrezzoTotale, 10.0);
    EXPECT_THAT(RefusalOf(SampleSimplified("")), HasSubstr("DatiBeniServizi"));
    EXPECT_THAT(RefusalOf(SampleSimplified(GrossLines("/1.00"))), HasSubstr("Importo manca"));
    EXPECT_THAT(RefusalOf(SampleSimplified(GrossLines("1.00//-100.00"))), HasSubstr("negativa"));
}

// --- Codes and small questions --------------------------------------------------------------------------------------

TEST(FatturaCodes, NaturaGivesKindAndTextForItsSubCodes)
{
    struct Case {
        const char *natura;
        short kind;
        const char *text;
        bool known;
    };
    for (const Case &c : {Case{"", 1, "IMPONIBILE", false},
                          {"N1", 11, "ESCLUSA ART.15", true},
                          {"N2.1", 4, "NON SOGGETTO", true},
                          {"N3.5", 3, "NON IMPONIBILE", true},
                          {"N4", 2, "ESENTE", true},
                          {"N5", 12, "REGIME DEL MARGINE / IVA NON ESPOSTA IN FATTURA", true},
                          {"N6.9", 13, "INVERSIONE CONTABILE (OPERAZIONI IN REVERSE CHARGE - AUTOFATTURAZIONE)", true},
                          {"N7", 14, "IVA ASSOLTA IN ALTRO STATO UE", true},
                          {"N2.3", 4, "NON SOGGETTO", false},
                          {"N4.1", 2, "ESENTE", false},
                          {"N8", 0, "*** SCONOSCIUTO ***", false},
                          {".1", 0, "*** SCONOSCIUTO ***", false},
                          {"n1", 0, "*** SCONOSCIUTO ***", false}}) {
        EXPECT_EQ(NaturaToIvaTip(c.natura), c.kind) << c.natura;
        EXPECT_EQ(NaturaText(c.natura), c.text) << c.natura;
        EXPECT_EQ(IsKnownNatura(c.natura), c.known) << c.natura;
    }
    EXPECT_EQ(IvaTipToNatura(3), "N3");
    EXPECT_EQ(IvaTipToNatura(6), "N3");
    EXPECT_EQ(IvaTipToNatura(14), "N7");
    EXPECT_EQ(IvaTipToNatura(1), "");
    EXPECT_EQ(IvaTipToNatura(8), "");
}

TEST(FatturaCodes, DocumentTypes)
{
    EXPECT_EQ(TipoDocumentoText("TD04"), "NOTA DI CREDITO");
    EXPECT_EQ(TipoDocumentoText("TD25"), "FATTURA DIFFERITA DI CUI ALL'ART. 21, COMMA 4, TERZO PERIODO LETT. B)");
    EXPECT_EQ(TipoDocumentoText("TD28"), "*** SCONOSCIUTO ***");
    EXPECT_TRUE(IsKnownTipoDocumento("TD28"));
    EXPECT_FALSE(IsKnownTipoDocumento("TD13"));
    EXPECT_TRUE(IsCreditNote("TD04"));
    EXPECT_TRUE(IsCreditNote("TD08"));
    EXPECT_FALSE(IsCreditNote("TD05"));
    EXPECT_EQ(ModalitaPagamentoText("MP12"), "RIBA");
    EXPECT_EQ(ModalitaPagamentoText(""), "");
    EXPECT_EQ(RegimeFiscaleText("RF03"), "*** SCONOSCIUTO ***");
}

TEST(FatturaPa, TotalsAndSigns)
{
    FatturaElettronicaBody body;
    body.DatiBeniServizi.DatiRiepilogo.resize(2);
    body.DatiBeniServizi.DatiRiepilogo[0].ImponibileImporto = -0.1;
    body.DatiBeniServizi.DatiRiepilogo[1].ImponibileImporto = -0.2;
    EXPECT_EQ(SumOfSummary(body).totale, -0.3);
    EXPECT_TRUE(IsNegative(body));
    body.DatiGenerali.DatiGeneraliDocumento.Arrotondamento = 0.05;
    EXPECT_EQ(TotaleDocumento(body), -0.25);
    body.DatiBeniServizi.DatiRiepilogo[1].ImponibileImporto = 0.1;
    EXPECT_FALSE(IsNegative(body));
    body.DatiGenerali.DatiGeneraliDocumento.ImportoTotaleDocumento = -5;
    EXPECT_TRUE(IsNegative(body)) << "the declared total decides where the summary is zero";
    EXPECT_EQ(TotaleDocumento(body), -5);
}

TEST(FatturaPa, DueDay)
{
    DettaglioPagamentoType payment;
    EXPECT_EQ(DueDay(payment, 1'000), 1'000);
    payment.GiorniTerminiPagamento = 30;
    EXPECT_EQ(DueDay(payment, 1'000), 1'030);
    payment.DataRiferimentoTerminiPagamento = 2'000;
    EXPECT_EQ(DueDay(payment, 1'000), 2'030);
    payment.GiorniTerminiPagamento = 2'000'000'000;
    EXPECT_EQ(DueDay(payment, 1'000), 2'000);
    payment.DataScadenzaPagamento = 3'000;
    EXPECT_EQ(DueDay(payment, 1'000), 3'000);
}

TEST(FatturaPa, VatNumberLosesARepeatedCountry)
{
    EXPECT_EQ(VatNumber({"IT", "01234567897"}), "01234567897");
    EXPECT_EQ(VatNumber({"SM", "SM12345"}), "12345");
    EXPECT_EQ(VatNumber({"BE", "be 0477 472 701"}), "0477472701");
    EXPECT_EQ(VatNumber({"AT", "U12345678"}), "U12345678");
    EXPECT_EQ(VatNumber({"DE", "DE"}), "DE");
}

TEST(FatturaPa, AmountsAreTheNearestDoubles)
{
    std::mt19937_64 random(42);
    for (int i = 0; i < 20'000; ++i) {
        const auto whole = static_cast<long long>(random() % 100'000'000'000) >> (random() % 37);
        std::string text = fmt::format("{}{}.", i % 3 == 0 ? "-" : "", whole);
        for (auto digits = random() % 9; digits > 0; --digits) text += static_cast<char>('0' + random() % 10);
        const std::optional<double> read = ParseXmlAmount(text);
        ASSERT_TRUE(read.has_value()) << text;
        ASSERT_EQ(*read, std::strtod(text.c_str(), nullptr)) << text;
        ASSERT_FALSE(*read == 0 && std::signbit(*read)) << text;
    }
    for (const char *bad :
         {"", "-", ".", "+-1", "1.2.3", "1,5", "1e3", "0x10", " 1", "1 ", "nan", "--1", "1000000000000"}) {
        EXPECT_FALSE(ParseXmlAmount(bad).has_value()) << bad;
    }
}

} // namespace

#include "einvoice/InvoiceComparison.h"

#include "tarvodlg/base/Dates.h"
#include "tarvolumera/VatCodes.h"
#include "tests/einvoice/InvoiceFixture.h"

#include <ostream>

namespace {

struct ComparisonCase {
    const char *name;
    InvoiceSpec spec;
    std::vector<PNOTA_IVA> lines;
    double total;
    std::vector<std::string> expected;
    std::function<void(PNOTA &)> change = {};
};

void PrintTo(const ComparisonCase &test, std::ostream *out)
{
    *out << test.name;
}

InvoiceSpec Spec(const char *total, std::vector<SummarySpec> summary, const char *type = "TD01")
{
    InvoiceSpec spec;
    spec.total = total;
    spec.summary = std::move(summary);
    spec.type = type;
    return spec;
}

InvoiceSpec WithStamp()
{
    InvoiceSpec spec = Spec("124.00", {{"22.00", "100.00", "22.00", "", "", "", ""}});
    spec.stamp = "2.00";
    return spec;
}

InvoiceSpec Numbered(const char *number)
{
    InvoiceSpec spec;
    spec.number = number;
    return spec;
}

const std::vector<SummarySpec> kAt22 = {{"22.00", "100.00", "22.00", "", "", "", ""}};
const std::vector<SummarySpec> kTwice22 = {{"22.00", "60.00", "13.20", "", "", "", ""},
                                           {"22.00", "40.00", "8.80", "", "", "", ""}};
const std::vector<SummarySpec> kTwoRates = {{"22.00", "100.00", "22.00", "", "", "", ""},
                                            {"10.00", "50.00", "5.00", "", "", "", ""}};
const std::vector<SummarySpec> kReverse = {{"0.00", "100.00", "0.00", "N6.7", "", "", ""}};
const std::vector<SummarySpec> kNotSubject = {{"0.00", "100.00", "0.00", "N2.1", "", "", ""}};

constexpr PNOTA_IVA k22 = {22, kVatTaxable, 22, 100, 22, 0};
constexpr PNOTA_IVA kMinus22 = {22, kVatTaxable, 22, -100, -22, 0};

/// The entry as the journal has it: the lines, and rows that balance at the total.
PNOTA EntryOf(const ComparisonCase &test)
{
    PNOTA entry;
    entry.pno_doc = "7/P";
    entry.pno_data_doc = DateToJulian(10, 3, 2026);
    entry.pno_reg = kPurchases;
    std::copy(test.lines.begin(), test.lines.end(), entry.iva.begin());
    entry.pno_tot_doc = test.total;
    for (const char *side : {"A", "D"}) {
        PNOTA_RIGA &row = entry.righe[side[0] == 'D' ? 1 : 0];
        row.row_mas = 250;
        row.row_tipo = side;
        row.row_importo = std::abs(test.total);
    }
    if (test.change) test.change(entry);
    return entry;
}

class ComparisonTest : public testing::TestWithParam<ComparisonCase> {};

TEST_P(ComparisonTest, NamesWhatDiffers)
{
    CFattureElettronicheDB content;
    content.Load(InvoiceText(GetParam().spec), "prova.xml");
    EXPECT_EQ(CompareWithInvoice(content.Documents()[0], EntryOf(GetParam())), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ComparisonTest,
    testing::Values(
        ComparisonCase{"Same", {}, {k22}, 122, {}},
        ComparisonCase{"LinesSplitByDeductibility",
                       {},
                       {{22, kVatTaxable, 22, 60, 13.2, 0}, {62, kVatNonDeductible, 22, 40, 8.8, 50}},
                       122,
                       {}},
        ComparisonCase{"LinesMerged", Spec("122.00", kTwice22), {k22}, 122, {}},
        ComparisonCase{"AmountsMovedBetweenRates",
                       Spec("177.00", kTwoRates),
                       {{22, kVatTaxable, 22, 110, 24.2, 0}, {10, kVatTaxable, 10, 40, 4, 0}},
                       178.2,
                       {"IVA 22%: imponibile registrato 110,00, in fattura 100,00.",
                        "IVA 22%: imposta registrata 24,20, in fattura 22,00.",
                        "IVA 10%: imponibile registrato 40,00, in fattura 50,00.",
                        "IVA 10%: imposta registrata 4,00, in fattura 5,00.",
                        "Totale registrato 178,20, in fattura 177,00."}},
        ComparisonCase{
            "ACentOfTax",
            {},
            {{22, kVatTaxable, 22, 100, 22.01, 0}},
            122.01,
            {"IVA 22%: imposta registrata 22,01, in fattura 22,00.", "Totale registrato 122,01, in fattura 122,00."}},
        ComparisonCase{"LineForgotten",
                       Spec("177.00", kTwoRates),
                       {k22},
                       122,
                       {"IVA 10%: imponibile registrato 0,00, in fattura 50,00.",
                        "IVA 10%: imposta registrata 0,00, in fattura 5,00.",
                        "Totale registrato 122,00, in fattura 177,00."}},
        ComparisonCase{"OtherNature",
                       Spec("100.00", kNotSubject),
                       {{300, kVatNonTaxable, 0, 100, 0, 0}},
                       100,
                       {"NON SOGGETTO: imponibile registrato 0,00, in fattura 100,00.",
                        "NON IMPONIBILE: imponibile registrato 100,00, in fattura 0,00."}},
        ComparisonCase{"OutsideTheFieldIsNotSubject",
                       Spec("100.00", kNotSubject),
                       {{700, kVatOutsideField, 0, 100, 0, 0}},
                       100,
                       {}},
        ComparisonCase{"TaxAddedInReverseCharge",
                       Spec("100.00", kReverse),
                       {{608, kVatReverseChargeOwn, 22, 100, 22, 0}},
                       100,
                       {}},
        ComparisonCase{"TaxAddedToAnEuPurchase",
                       Spec("100.00", kNotSubject),
                       {{608, kVatReverseChargeOwn, 22, 100, 22, 0}},
                       100,
                       {},
                       [](PNOTA &entry) { entry.pno_reg = kEuPurchases; }},
        ComparisonCase{"CreditNoteWithPositiveAmounts", Spec("122.00", kAt22, "TD04"), {kMinus22}, -122, {}},
        ComparisonCase{"CreditNoteWithNegativeAmounts",
                       Spec("-122.00", {{"22.00", "-100.00", "-22.00", "", "", "", ""}}, "TD04"),
                       {kMinus22},
                       -122,
                       {}},
        ComparisonCase{"CreditNoteRegisteredAsAnInvoice",
                       Spec("122.00", kAt22, "TD04"),
                       {k22},
                       122,
                       {"IVA 22%: imponibile registrato 100,00, in fattura -100,00.",
                        "IVA 22%: imposta registrata 22,00, in fattura -22,00.",
                        "Totale registrato 122,00, in fattura -122,00."}},
        ComparisonCase{"StampDutyOnALineOfItsOwn", WithStamp(), {k22, {100, kVatExcluded, 0, 2, 0, 0}}, 124, {}},
        ComparisonCase{"StampDutyForgotten", WithStamp(), {k22}, 122, {"Totale registrato 122,00, in fattura 124,00."}},
        ComparisonCase{"RoundingPosted", Spec("122.01", kAt22), {k22}, 122.01, {}},
        ComparisonCase{
            "RoundingLost", Spec("122.01", kAt22), {k22}, 122, {"Totale registrato 122,00, in fattura 122,01."}},
        ComparisonCase{"NumberCutAsTheJournalCutsIt",
                       Numbered("  FATTURA-2026-0000000000077  "),
                       {k22},
                       122,
                       {},
                       [](PNOTA &entry) { entry.pno_doc = "FATTURA-2026-0000000"; }},
        ComparisonCase{"NumberAndDate",
                       Numbered("8/P"),
                       {k22},
                       122,
                       {"Numero registrato \"7/P\", in fattura \"8/P\".",
                        "Data del documento registrata 11/03/2026, in fattura 10/03/2026."},
                       [](PNOTA &entry) { ++entry.pno_data_doc; }},
        ComparisonCase{"Unbalanced",
                       {},
                       {k22},
                       122,
                       {"Il movimento non quadra: Dare 120,00, Avere 122,00."},
                       [](PNOTA &entry) { entry.righe[1].row_importo = 120; }}),
    [](const auto &one) { return std::string(one.param.name); });

} // namespace

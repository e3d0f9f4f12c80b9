#include "schedule/Instalments.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/Schedule.h"
#include "tests/schedule/RandomTerms.h"
#include "tests/support/TestArchive.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAreArray;

constexpr long kTerms = 900;

/// What the generator proposes and stores, from the archive's terms and VAT codes.
class GenerationTest : public ArchiveTest {
  protected:
    PNOTA Entry(const char *document, const std::vector<PNOTA_IVA> &lines)
    {
        PNOTA entry;
        sqlpno.Blank(Cmd(), &entry);
        entry.pno_data = DateToJulian(31, 12, 2026);
        entry.pno_data_doc = ParseDate(document).value();
        entry.pno_cau = 21;
        entry.pno_reg = kPurchases;
        entry.pno_rel = kSupplier;
        entry.pno_cli_for = 1;
        entry.pno_cau_iva = 1;
        entry.pno_pag = kTerms;
        entry.pno_doc = "7/A";
        std::copy(lines.begin(), lines.end(), entry.iva.begin());
        return entry;
    }

    void PutTerms(PAGAMENTI terms)
    {
        terms.pag_codice = kTerms;
        terms.pag_desc = "Di prova";
        PAGAMENTI present;
        const bool is_there = sqlpag.Search(Cmd(), kTerms, &present);
        sqlpag.SqlTransaction(Cmd(), is_there ? kUpdate : kInsert, &terms);
    }

    static std::vector<std::string> Texts(const std::vector<Instalment> &rows)
    {
        std::vector<std::string> texts;
        for (const Instalment &row : rows)
            texts.push_back(fmt::format("{} {:.2f}", row.due_day == 0 ? "-" : FormatIsoDate(row.due_day), row.amount));
        return texts;
    }
};

// --- figures worked out by hand --------------------------------------------------------------------------------------

struct Case {
    const char *name;
    TermsSpec terms;
    const char *document;
    std::vector<PNOTA_IVA> lines; ///< code, kind, rate, taxable amount, tax
    std::vector<const char *> expected;
};

PNOTA_IVA Line(long code, double taxable, double tax)
{
    PNOTA_IVA line;
    line.iva = code;
    line.impo = taxable;
    line.imposta = tax;
    return line;
}

std::vector<Case> Cases()
{
    const std::vector<PNOTA_IVA> plain = {Line(22, 100, 22)};
    return {
        {"HundredInThree",
         {.initial = 30, .count = 3},
         "2026-01-10",
         {Line(200, 100, 0)},
         {"2026-02-09 33.34", "2026-03-11 33.34", "2026-04-10 33.32"}},
        {"SeparateVat",
         {.count = 2, .is_vat_separate = true},
         "2026-01-10",
         plain,
         {"2026-01-10 22.00", "2026-02-09 50.00", "2026-03-11 50.00"}},
        {"SeparateVatOfAnExemptInvoiceIsZero",
         {.count = 2, .is_vat_separate = true},
         "2026-01-10",
         {Line(200, 100, 0)},
         {"2026-01-10 0.00", "2026-02-09 50.00", "2026-03-11 50.00"}},
        {"One", {.count = 1}, "2026-01-10", plain, {"2026-01-10 122.00"}},
        {"TwoWithTheVatOnTheFirst", {.count = 2}, "2026-01-10", plain, {"2026-01-10 72.00", "2026-02-09 50.00"}},
        {"TwoWithAnOddCent",
         {.count = 2},
         "2026-01-10",
         {Line(22, 100.01, 22)},
         {"2026-01-10 72.01", "2026-02-09 50.00"}},
        {"EndOfMonthOverDecember",
         {.start = "FINE MESE", .initial = 30, .count = 2, .fixed_1 = 31, .is_equal = true},
         "2026-12-05",
         plain,
         {"2027-01-31 61.00", "2027-02-28 61.00"}},
        {"August",
         {.start = "FINE MESE", .initial = 30, .count = 3, .fixed_1 = 31, .excluded = {"AGOSTO"}, .is_equal = true},
         "2026-06-10",
         plain,
         {"2026-07-31 40.67", "2026-09-30 40.67", "2026-10-31 40.66"}},
        {"TaxOfKind8IsNotOwed",
         {.count = 2},
         "2026-01-10",
         {Line(22, 100, 22), Line(81, 50, 11)},
         {"2026-01-10 97.00", "2026-02-09 75.00"}},
        {"BothFlagsSplitEvenlyInOneMore",
         {.count = 2, .is_equal = true, .is_vat_separate = true},
         "2026-01-10",
         {Line(22, 98.36, 21.64)},
         {"2026-01-10 40.00", "2026-02-09 40.00", "2026-03-11 40.00"}},
        {"CreditNote",
         {.count = 3},
         "2026-01-10",
         {Line(22, -100, -22)},
         {"2026-01-10 -55.34", "2026-02-09 -33.34", "2026-03-11 -33.32"}},
        {"LastOfSevenLines",
         {.count = 1},
         "2026-01-10",
         std::vector<PNOTA_IVA>(kVatLines, Line(22, 10, 2.20)),
         {"2026-01-10 85.40"}},
        {"NoStart", {.start = "A VISTA", .count = 2}, "2026-01-10", plain, {"- 72.00", "- 50.00"}},
        {"YearlyInAugust",
         {.interval = 365, .count = 2, .fixed_1 = 15, .excluded = {"AGOSTO"}},
         "2026-08-01",
         plain,
         {"- 72.00", "- 50.00"}},
        {"PastTheLastYear", // two of three instalments have a date
         {.interval = 2'000'000, .count = 3},
         "2026-01-10",
         {Line(200, 90, 0)},
         {"2026-01-10 30.00", "7501-11-04 30.00", "- 30.00"}},
        {"SixtyAndTheVat", {.count = 60, .is_vat_separate = true}, "2026-01-10", plain, {}},
    };
}

TEST_P(GenerationTest, ProposesTheFigures)
{
    for (const Case &one : Cases()) {
        SCOPED_TRACE(one.name);
        PutTerms(Terms(one.terms));
        const auto proposal = ProposeInstalments(Cmd(), Entry(one.document, one.lines));
        ASSERT_TRUE(proposal);
        EXPECT_THAT(Texts(proposal->rows), ElementsAreArray(one.expected));
        const bool is_whole = !proposal->rows.empty() && proposal->rows.back().due_day != 0;
        EXPECT_EQ(proposal->notice.empty(), is_whole) << proposal->notice;
    }
}

TEST_P(GenerationTest, WhatHasToBeTypedIsToldAndNotHalfStored)
{
    const struct {
        TermsSpec terms;
        const char *notice;
    } cases[] = {
        {{.start = "A VISTA", .count = 2}, "Il pagamento 900 non ha una decorrenza: le date vanno scritte a mano."},
        {{.interval = 2'000'000, .count = 3},
         "Con il pagamento 900 non si trovano tutte le date: quelle mancanti vanno scritte a mano."},
        {{.count = 60, .is_vat_separate = true},
         "Il pagamento 900 prevede 61 rate, più di 60: le scadenze vanno scritte a mano."}};
    PutTerms(Terms({}));
    PNOTA entry = Entry("2026-01-10", {Line(22, 100, 22)});
    sqlpno.SqlTransaction(Cmd(), kInsert, &entry);
    for (const auto &one : cases) {
        PutTerms(Terms(one.terms));
        user_.Expect(std::string(one.notice) + " Nessuna scadenza generata.");
        EXPECT_EQ(GenerateInstalments(Cmd(), entry), 0);
    }
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "0");
}

// --- whatever the terms ----------------------------------------------------------------------------------------------

TEST_P(GenerationTest, StoredInstalmentsAddUpToTheDocument)
{
    RandomTerms random;
    const long codes[] = {22, 10, 81, 200};
    for (int round = 0; round < 60; ++round) {
        const PAGAMENTI terms = random.Next();
        std::vector<PNOTA_IVA> lines;
        long long owed = 0;
        for (long left = random.Between(1, 7); left > 0; --left) {
            const long code = codes[random.Between(0, 3)];
            const long long taxable = random.Between(1, 5'000'000);
            const long long tax = code == 200 ? 0 : taxable * (code == 10 ? 10 : 22) / 100;
            lines.push_back(Line(code, FromCents(taxable), FromCents(tax)));
            owed += taxable + (code == 81 ? 0 : tax);
        }
        const std::string day = FormatIsoDate(random.Day());
        SCOPED_TRACE(fmt::format("{}, {}, {} cents", random.Describe(terms), day, owed));
        PutTerms(terms);
        PNOTA entry = Entry(day.c_str(), lines);
        entry.pno_data = std::max(entry.pno_data, entry.pno_data_doc);
        sqlpno.SqlTransaction(Cmd(), kInsert, &entry);
        const auto proposal = ProposeInstalments(Cmd(), entry);
        ASSERT_TRUE(proposal);
        if (!proposal->notice.empty()) continue; // told, see above
        EXPECT_TRUE(ConfirmTotal(proposal->rows, FromCents(owed)));

        const long stored = StoreInstalments(Cmd(), entry, *proposal);
        SACommand query(Cmd()->Connection(), "SELECT sca_data, sca_importo, sca_rata, sca_rate, sca_ultima"
                                             " FROM admin.scadenze WHERE sca_pno = :n ORDER BY sca_num");
        query.Param("n").setAsLong(entry.pno_codice);
        query.Execute();
        long ordinal = 0, day_before = 0, last_day = 0;
        for (const Instalment &row : proposal->rows) last_day = std::max(last_day, row.IsComplete() ? row.due_day : 0);
        long long sum = 0;
        while (query.FetchNext()) {
            const long due = ParseDate(query.Field("sca_data").asDateTime().DateText()).value();
            sum += ToCents(query.Field("sca_importo").asDouble());
            EXPECT_EQ(query.Field("sca_rata").asLong(), ++ordinal);
            EXPECT_EQ(query.Field("sca_rate").asLong(), stored);
            EXPECT_EQ(query.Field("sca_ultima").asLong(), due == last_day ? 1 : 0);
            EXPECT_GE(due, day_before);
            day_before = due;
        }
        EXPECT_EQ(sum, owed);
        EXPECT_EQ(ordinal, stored);
    }
}

TEST_P(GenerationTest, CreditNoteIsTheInvoiceWithAMinus)
{
    RandomTerms random;
    for (int round = 0; round < 40; ++round) {
        const PAGAMENTI terms = random.Next();
        SCOPED_TRACE(random.Describe(terms));
        PutTerms(terms);
        const double taxable = FromCents(random.Between(1, 5'000'000)), tax = FromCents(random.Between(0, 1'000'000));
        const auto invoice = ProposeInstalments(Cmd(), Entry("2026-03-31", {Line(22, taxable, tax)}));
        const auto note = ProposeInstalments(Cmd(), Entry("2026-03-31", {Line(22, -taxable, -tax)}));
        ASSERT_TRUE(invoice && note);
        std::vector<Instalment> mirrored = note->rows;
        for (Instalment &row : mirrored) row.amount = TestIfZero(row.amount) ? 0 : -row.amount;
        EXPECT_EQ(Texts(mirrored), Texts(invoice->rows));
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, GenerationTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

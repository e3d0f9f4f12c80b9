#include "einvoice/BatchUser.h"
#include "einvoice/InvoiceBatch.h"
#include "tarvodlg/base/Dates.h"
#include "tarvolumera/Schedule.h"
#include "tests/einvoice/InvoiceFixture.h"

#include <fmt/format.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char *kNoTermsReason = "Nessuna modalità di pagamento impostata sul fornitore.";

/// The scripted user expects nothing: whatever reaches him fails the test.
class BatchTest : public InvoiceTest {
  protected:
    BatchPlan Plan(const std::vector<BatchTarget> &targets = {}) { return PlanRegistration(Cmd(), targets, options_); }
    /// "n. 7/P: pronta" or "n. 7/P: REASON".
    static std::string State(const BatchLine &line)
    {
        const std::string state = line.is_ready ? "pronta" : line.is_registered ? "registrata" : line.reason;
        return fmt::format("n. {}: {}", line.invoice.number, state);
    }
    static std::vector<std::string> States(const BatchPlan &plan)
    {
        std::vector<std::string> states;
        for (const BatchLine &line : plan.lines) states.push_back(State(line));
        return states;
    }
    std::vector<std::string> Store(const BatchPlan &plan)
    {
        std::vector<std::string> ends;
        for (const BatchOutcome &one : RegisterPlanned(Cmd(), plan, options_))
            ends.push_back(fmt::format("{}: {}", one.target.code,
                                       one.outcome.registered ? fmt::format("protocollo {}", one.outcome.protocol)
                                                              : one.outcome.reason));
        return ends;
    }
    long FiledAs(const std::string &number, const std::string &date, const std::string &type = "TD01")
    {
        InvoiceSpec spec;
        spec.number = number;
        spec.date = date;
        spec.type = type;
        return Filed(spec);
    }

    void Damage(long code)
    {
        SACommand query(Cmd()->Connection(), "UPDATE admin.allegati SET all_data = :data WHERE all_codice = :codice");
        query.Param("data").setAsBytes(ToBytes("<rotto"));
        query.Param("codice").setAsLong(code);
        query.Execute();
    }

    BatchOptions options_;
};

INSTANTIATE_TEST_SUITE_P(Engines, BatchTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(BatchTest, PlanShowsTheEntriesAndStoresNothing)
{
    FiledAs("9", "2026-03-20", "TD04");
    FiledAs("8", "2026-03-10");
    const std::string before = Stored();
    long calls = 0;
    const BatchPlan plan = PlanRegistration(Cmd(), {}, options_, [&](long done, long of) {
        EXPECT_EQ(of, 2);
        return ++calls == done;
    });
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(Stored(), before);
    EXPECT_THAT(States(plan), ElementsAre("n. 8: pronta", "n. 9: pronta")) << "by date, whatever came first";
    EXPECT_EQ(plan.Ready(), 2);
    const BatchLine &line = plan.lines[0], &credit = plan.lines[1];
    EXPECT_EQ(line.supplier, 1);
    EXPECT_EQ(line.supplier_name, "Utensileria Marzavola S.r.l.");
    EXPECT_FALSE(line.is_new_supplier);
    EXPECT_EQ(line.causale, 21);
    EXPECT_EQ(line.causale_text, Value("SELECT cac_desc FROM admin.caucont1 WHERE cac_codice = 21"));
    EXPECT_EQ(FormatDate(line.day), "10/03/2026");
    EXPECT_EQ(line.vat_codes, "22");
    EXPECT_NEAR(line.total, 122, 0.001);
    EXPECT_EQ(line.instalments, 2);
    EXPECT_NEAR(credit.total, -122, 0.001) << "with its sign in the books";
    EXPECT_EQ(credit.notes.size(), 1u) << "that it is treated as one";

    EXPECT_THAT(Store(plan), ElementsAre("2: protocollo 1", "1: protocollo 2"));
    EXPECT_THAT(Plan().lines, IsEmpty());
    EXPECT_THAT(States(Plan({{1, 0}, {2, 0}})), ElementsAre("n. 8: registrata", "n. 9: registrata"));
    EXPECT_EQ(ArchiveFaults(), "");
}

/// Whatever needs an answer, and what the list then says.
struct ReasonCase {
    const char *name;
    std::function<void(InvoiceSpec *)> change;
    const char *part, *replacement; ///< of the XML; null = as it is
    const char *sql;                ///< run before; null = nothing
    const char *reason;
    bool yes_helps; ///< answered with Yes it is stored
};

TEST_P(BatchTest, WhatNeedsAnAnswerStaysWithAReasonOnOneLine)
{
    const auto same = [](InvoiceSpec *) {};
    const auto rate = [](const char *percent, const char *nature) {
        return [=](InvoiceSpec *spec) { spec->summary = {{percent, "122.00", "0.00", nature, "", "art. 8", ""}}; };
    };
    const auto eight_rates = [](InvoiceSpec *spec) {
        spec->summary = std::vector<SummarySpec>(8, {"22.00", "10.00", "2.20", "", "", "", ""});
        spec->total = "97.60";
    };
    const std::vector<ReasonCase> cases = {
        {"unknown seller", [](InvoiceSpec *spec) { spec->seller_vat = spec->seller_fiscal_code = "01251347207"; },
         nullptr, nullptr, nullptr, "Fornitore non individuato.", false},
        {"supplier without causale", same, nullptr, nullptr,
         "UPDATE admin.fornito1 SET for_cau = NULL WHERE for_codice = 1",
         "Il fornitore non ha una causale contabile preimpostata.", false},
        {"causale of sales", same, nullptr, nullptr, "UPDATE admin.fornito1 SET for_cau = 15 WHERE for_codice = 1",
         "Il registro della causale contabile preimpostata non è valido!", false},
        {"rate without code", rate("21.00", ""), nullptr, nullptr, nullptr,
         "Nessun codice IVA per aliquota 21,00% IMPONIBILE.", false},
        {"nature without code", rate("0.00", "N3.5"), nullptr, nullptr, "DELETE FROM admin.codiva WHERE iva_tip = 3",
         "Nessun codice IVA per aliquota 0,00% NON IMPONIBILE (N3.5).", false},
        {"eight rates", eight_rates, nullptr, nullptr, nullptr, "Non è possibile gestire più di 7 aliquote iva!",
         false},
        {"year before", [](InvoiceSpec *spec) { spec->date = "2025-12-31"; }, nullptr, nullptr, nullptr,
         "Non è possibile contabilizzare il documento nell'anno corrente!", false},
        {"dollars", same, "<Divisa>EUR", "<Divisa>USD", nullptr, "Gli importi del documento sono in USD, non in euro.",
         true},
        {"self-invoice", [](InvoiceSpec *spec) { spec->seller_vat = "08235227348"; }, nullptr, nullptr, nullptr,
         "Il cedente è la ditta stessa: è un'autofattura, da registrare in prima nota.", false},
        {"total that is not the sum", [](InvoiceSpec *spec) { spec->total = "130.00"; }, nullptr, nullptr, nullptr,
         "Totale documento 130,00, riepilogo IVA 122,00, differenza 8,00 (differenza non dichiarata tra totale del "
         "documento e riepilogo IVA).",
         true},
        {"sent by the buyer himself", [](InvoiceSpec *spec) { spec->type = "TD18"; }, nullptr, nullptr, nullptr,
         "Il documento è di tipo TD18: lo emette chi acquista, e non è un debito verso il fornitore.", true},
        {"split payment", [](InvoiceSpec *spec) { spec->summary[0].due = "S"; }, nullptr, nullptr, nullptr,
         "Scissione dei pagamenti: l'imposta non è dovuta al fornitore, va tolta dalle scadenze.", true},
        {"another one of the VAT group", [](InvoiceSpec *spec) { spec->seller_fiscal_code = "22222222220"; }, nullptr,
         nullptr, nullptr,
         "Il fornitore 1 ha la stessa partita IVA ma il codice fiscale 02565617350, in fattura 22222222220: può "
         "essere un altro.",
         true},
        {"supplier without terms", same, nullptr, nullptr,
         "UPDATE admin.fornito1 SET for_pag = NULL WHERE for_codice = 1", kNoTermsReason, true},
        {"terms without dates", same, nullptr, nullptr,
         "UPDATE admin.pagament SET pag_ini = 'A VISTA' WHERE pag_codice = 45",
         "Il pagamento 45 non ha una decorrenza: le date vanno scritte a mano. Nessuna scadenza generata.", true},
    };
    long number = 0;
    for (const ReasonCase &test : cases) {
        SCOPED_TRACE(test.name);
        InvoiceSpec spec;
        spec.number = std::to_string(++number);
        test.change(&spec);
        std::string text = InvoiceText(spec);
        if (test.part) text = Replaced(text, test.part, test.replacement);
        const long code = Filed(text);
        for (const char *table : {"fornito1", "codiva", "pagament"})
            Run(fmt::format("CREATE TABLE admin.prova_{0} AS SELECT * FROM admin.{0}", table));
        if (test.sql) Run(test.sql);

        const std::string before = Stored();
        options_.answer_yes = false;
        const BatchPlan plan = Plan({{code, 0}});
        EXPECT_THAT(States(plan), ElementsAre(fmt::format("n. {}: {}", number, test.reason)));
        EXPECT_NEAR(plan.lines[0].total, plan.lines[0].invoice.total, 0.001) << "no figure of half an entry";
        EXPECT_THAT(Store(plan), IsEmpty());
        EXPECT_EQ(Stored(), before);

        options_.answer_yes = true;
        const BatchPlan insisted = Plan({{code, 0}});
        EXPECT_EQ(insisted.Ready(), test.yes_helps ? 1 : 0);
        EXPECT_EQ(Store(insisted).size(), test.yes_helps ? 1u : 0u);
        EXPECT_EQ(Stored() == before, !test.yes_helps);
        if (test.yes_helps) {
            EXPECT_FALSE(insisted.lines[0].notes.empty()) << "said nevertheless";
        }

        Run("UPDATE admin.fornito1 SET for_cau = 21, for_pag = 45 WHERE for_codice = 1");
        Run("UPDATE admin.pagament SET pag_ini = (SELECT p.pag_ini FROM admin.prova_pagament p WHERE p.pag_codice ="
            " admin.pagament.pag_codice)");
        Run("INSERT INTO admin.codiva SELECT * FROM admin.prova_codiva WHERE iva_codice NOT IN (SELECT iva_codice FROM"
            " admin.codiva)");
        for (const char *table : {"fornito1", "codiva", "pagament"})
            Run(fmt::format("DROP TABLE admin.prova_{}", table));
    }
    EXPECT_EQ(ArchiveFaults(), "");
}

TEST_P(BatchTest, ChoicesMadeBeforehandAnswer)
{
    InvoiceSpec spec;
    spec.seller_vat = spec.seller_fiscal_code = "01251347207";
    spec.seller_name = "<Denominazione>Ghirlandozzi Macchine S.r.l.</Denominazione>";
    spec.summary = {{"21.00", "100.00", "21.00", "", "", "", ""}};
    spec.total = "121.00";
    const long first = Filed(spec);
    spec.number = "8/P";
    const long second = Filed(spec);
    options_.new_suppliers = true;
    options_.choices.choose_causale = [](long) { return 21L; };
    EXPECT_THAT(States(Plan()), ElementsAre("n. 7/P: Nessun codice IVA per aliquota 21,00% IMPONIBILE.",
                                            "n. 8/P: Nessun codice IVA per aliquota 21,00% IMPONIBILE."));
    options_.choices.choose_vat_code = [](const fatturapa::DatiRiepilogoType &) { return 22L; };
    const BatchPlan plan = Plan();
    EXPECT_EQ(plan.Ready(), 2);
    EXPECT_TRUE(plan.lines[0].is_new_supplier);
    EXPECT_EQ(plan.lines[0].supplier_name, "Ghirlandozzi Macchine S.r.l.");
    EXPECT_THAT(plan.lines[0].notes, testing::IsSupersetOf({std::string("Codice IVA 22 usato per aliquota 21,00% "
                                                                        "IMPONIBILE."),
                                                            std::string(kNoTermsReason)}));
    EXPECT_THAT(Store(plan),
                ElementsAre(fmt::format("{}: protocollo 1", first), fmt::format("{}: protocollo 2", second)));
    EXPECT_EQ(Count("fornito1"), "26") << "one supplier for both";
    EXPECT_EQ(ArchiveFaults(), "");

    options_ = {};
    spec.seller_vat = spec.seller_fiscal_code = "99999999990";
    spec.summary = {{"22.00", "100.00", "22.00", "", "", "", ""}};
    spec.total = "122.00";
    Filed(spec);
    options_.choices.choose_supplier = [](const fatturapa::PartyType &) { return 1L; };
    const BatchPlan by_hand = Plan();
    ASSERT_EQ(by_hand.Ready(), 1);
    EXPECT_EQ(by_hand.lines[0].supplier, 1);
    EXPECT_EQ(Store(by_hand).size(), 1u);
}

TEST_P(BatchTest, SecondOfTwoEqualDocumentsIsCaughtInThePlan)
{
    FiledAs("7", "2026-04-20");
    FiledAs("7", "2026-03-10"); // earlier, so it is the one
    FiledAs("8", "2026-03-10");
    InvoiceSpec other;
    other.number = "7";
    other.seller_vat = other.seller_fiscal_code = "06045677173"; // supplier 2 may use the number too
    Filed(other);
    const BatchPlan plan = Plan();
    EXPECT_THAT(
        States(plan),
        ElementsAre("n. 7: pronta", "n. 8: pronta", "n. 7: pronta",
                    "n. 7: Stesso fornitore e numero di un'altra fattura dell'elenco, del 10/03/2026 (file 2)."));
    EXPECT_EQ(Store(plan).size(), 3u);
    EXPECT_THAT(States(Plan()), ElementsAre("n. 7: Già registrata il 10/03/2026."));
}

// Two unknown sellers are proposed the same number; only the seller tells them apart.
TEST_P(BatchTest, NewSuppliersAreToldApartByTheSeller)
{
    options_.new_suppliers = true;
    options_.choices.choose_causale = [](long) { return 21L; };
    InvoiceSpec spec;
    spec.seller_vat = spec.seller_fiscal_code = "01251347207";
    Filed(spec);
    spec.seller_vat = spec.seller_fiscal_code = "99999999990";
    Filed(spec);
    spec.date = "2026-03-11";
    Filed(spec);
    const BatchPlan plan = Plan();
    EXPECT_EQ(plan.Ready(), 2);
    EXPECT_FALSE(plan.lines[2].is_ready) << "of the same new supplier";
    EXPECT_EQ(Store(plan).size(), 2u);
    EXPECT_EQ(Count("fornito1"), "27");
}

TEST_P(BatchTest, WhatChangedSinceThePlanIsRefusedAndTheOthersAreStored)
{
    for (const char *number : {"1", "2", "3", "4", "5"}) FiledAs(number, "2026-03-1" + std::string(number));
    InvoiceSpec other;
    other.number = "6";
    other.seller_vat = other.seller_fiscal_code = "06045677173"; // supplier 2
    Filed(other);
    other.number = "7";
    other.seller_vat = other.seller_fiscal_code = "06593047100"; // supplier 13
    Filed(other);
    const BatchPlan plan = Plan();
    ASSERT_EQ(plan.Ready(), 7);

    ASSERT_TRUE(Register(2).registered); // at another station
    DeleteInvoice(Cmd(), 3);
    Damage(4);
    Run("UPDATE admin.fornito1 SET for_pag = NULL WHERE for_codice = 2");
    Run("UPDATE admin.fornito1 SET for_cau = 22 WHERE for_codice = 13");
    std::vector<std::string> ends = Store(plan);
    ASSERT_EQ(ends.size(), 7u);
    EXPECT_EQ(ends[1], "7: Fornitore, causale, codici IVA o totale non sono più quelli mostrati: occorre provare di "
                       "nuovo.");
    ends.erase(ends.begin() + 1);
    EXPECT_EQ(ends[0], fmt::format("6: {}", kNoTermsReason)) << "of 10 March";
    EXPECT_EQ(ends[1], "1: protocollo 2");
    EXPECT_EQ(ends[2], "2: Già registrata il 12/03/2026.");
    EXPECT_EQ(ends[3], "3: La fattura elettronica n. 3 non esiste.");
    EXPECT_THAT(ends[4], testing::StartsWith("4: "));
    EXPECT_EQ(ends[4].find('\n'), std::string::npos);
    EXPECT_EQ(ends[5], "5: protocollo 3");
    EXPECT_EQ(Count("pnota1"), "3");
}

TEST_P(BatchTest, ArchiveThatFailsStopsTheRunAndKeepsWhatWasStored)
{
    for (const char *number : {"1", "2", "3"}) FiledAs(number, "2026-03-1" + std::string(number));
    const BatchPlan plan = Plan();
    ASSERT_EQ(plan.Ready(), 3);
    Run("CREATE UNIQUE INDEX prova_una ON admin.scadenze (sca_data, sca_rata)");
    std::vector<long> stored;
    EXPECT_THROW(RegisterPlanned(Cmd(), plan, options_,
                                 [&](const BatchOutcome &one) {
                                     stored.push_back(one.target.code);
                                     return one.outcome.registered;
                                 }),
                 SAException);
    EXPECT_THAT(stored, ElementsAre(1));
    EXPECT_EQ(Count("pnota1"), "1");
    EXPECT_EQ(Count("scadenze"), "2");
    EXPECT_EQ(ArchiveFaults(), "");
    Run("DROP INDEX admin.prova_una");
    EXPECT_EQ(Store(Plan()).size(), 2u) << "the next run goes on";
}

TEST_P(BatchTest, RunIsBrokenOffBetweenTwoDocuments)
{
    for (const char *number : {"1", "2", "3"}) FiledAs(number, "2026-03-1" + std::string(number));
    EXPECT_THAT(States(PlanRegistration(Cmd(), {}, options_, [](long done, long) { return done < 2; })),
                ElementsAre("n. 1: pronta", "n. 2: pronta"));
    EXPECT_EQ(RegisterPlanned(Cmd(), Plan(), options_, [](const BatchOutcome &) { return false; }).size(), 1u);
    EXPECT_EQ(Count("pnota1"), "1");
}

TEST_P(BatchTest, UnreadableFilesAndMissingDocumentsAreNamed)
{
    const long code = Filed(ReadSample("IT19949417158_1D0F8.xml"));
    EXPECT_THAT(States(Plan({{code, 1}, {code, 0}, {code, 2}})),
                ElementsAre("n. : Il file contiene 2 documenti.", "n. 210: pronta", "n. 211: pronta"));
    Damage(code);
    const BatchPlan plan = Plan();
    ASSERT_EQ(plan.lines.size(), 2u);
    for (const BatchLine &line : plan.lines) {
        EXPECT_FALSE(line.is_ready);
        EXPECT_FALSE(line.reason.empty());
    }
}

// --- texts of message boxes in a list --------------------------------------------------------------------------------

TEST(AsReasonTest, QuestionsLoseTheirQuestion)
{
    for (const auto &[text, reason] : std::vector<std::pair<const char *, const char *>>{
             {"Data esterna all' esercizio corrente !\n\nVuoi Continuare ?", "Data esterna all' esercizio corrente !"},
             {"Attenzione!\n\nE' già stato registrato.\n\nVuoi Continuare?", "E' già stato registrato."},
             {"Il totale delle Scadenze non coincide\ncon il totale del documento!\n\nVuoi Continuare?",
              "Il totale delle Scadenze non coincide con il totale del documento!"},
             {"Fornitore non trovato!\n\nVuoi cercarlo manualmente ?\n\nRispondi :\nSI - per cercalo",
              "Fornitore non trovato!"},
             {"Nessuna modalità!\n\nNessuna scadenza generata.", "Nessuna modalità! Nessuna scadenza generata."},
             {"", ""}})
        EXPECT_EQ(AsReason(text), reason);
}

} // namespace

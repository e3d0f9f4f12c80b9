#include "tests/einvoice/InvoiceFixture.h"

#include "einvoice/InvoiceRounding.h"

namespace {

using testing::ElementsAre;

class RegistrationTotalsTest : public InvoiceTest {};

struct RoundingCase {
    const char *name, *total, *of_document, *of_summary, *stamp;
    std::vector<std::string> rows; ///< without the two of VAT and goods
    std::string question;          ///< asked instead of posting
};

TEST_P(RegistrationTotalsTest, SupplierIsOwedTheDeclaredTotal)
{
    const std::string expense = "360.1.7 D ", income = "430.1.4 A ";
    const auto question = [](const char *total, const char *difference, const char *how) {
        return fmt::format("Totale documento {}, riepilogo IVA 122,00, differenza {} ({}).\n\nVuoi Continuare ?", total,
                           difference, how);
    };
    const char *const undeclared = "differenza non dichiarata tra totale del documento e riepilogo IVA";
    const std::vector<RoundingCase> cases = {
        {"none", "122.00", "", "", "", {"250.1.1 A 122.00"}, {}},
        {"no declared total", "", "", "", "", {"250.1.1 A 122.00"}, {}},
        {"no declared total, rounded", "", "0.03", "", "", {"250.1.1 A 122.03", expense + "0.03"}, {}},
        {"rounding inside the taxable amount", "122.00", "", "0.0012", "", {"250.1.1 A 122.00"}, {}},
        {"document up", "122.01", "0.01", "", "", {"250.1.1 A 122.01", expense + "0.01"}, {}},
        {"document down", "121.99", "-0.01", "", "", {"250.1.1 A 121.99", income + "0.01"}, {}},
        {"summary", "122.40", "", "0.40", "", {"250.1.1 A 122.40", expense + "0.40"}, {}},
        {"both", "122.50", "0.10", "0.40", "", {"250.1.1 A 122.50", expense + "0.50"}, {}},
        {"declared nowhere", "122.02", "", "", "", {"250.1.1 A 122.02", expense + "0.02"}, {}},
        {"the limit itself", "123.00", "1.00", "", "", {"250.1.1 A 123.00", expense + "1.00"}, {}},
        {"a cent above the limit", "123.01", "", "", "", {"250.1.1 A 122.00"}, question("123,01", "1,01", undeclared)},
        {"stamp duty beside the total", "122.00", "", "", "2.00", {"250.1.1 A 122.00"}, {}},
        {"a slip of the pen",
         "1220.00",
         "",
         "",
         "",
         {"250.1.1 A 122.00"},
         question("1.220,00", "1.098,00", undeclared)},
    };
    int number = 0;
    for (const RoundingCase &test : cases) {
        SCOPED_TRACE(test.name);
        InvoiceSpec spec;
        spec.number = std::to_string(++number);
        spec.total = test.total;
        spec.rounding = test.of_document;
        spec.stamp = test.stamp;
        spec.summary[0].rounding = test.of_summary;
        const long code = Filed(spec);
        if (!test.question.empty()) {
            const std::string before = Stored();
            user_.Expect(test.question, IDNO);
            EXPECT_FALSE(Register(code).registered);
            EXPECT_EQ(Stored(), before);
            user_.Expect(test.question, IDYES);
        }
        const RegistrationOutcome outcome = Register(code);
        ASSERT_TRUE(outcome.registered) << outcome.reason;
        std::vector<std::string> rows = RowsOf(outcome.entry);
        std::erase(rows, "260.1.1 D 22.00");
        std::erase(rows, "300.1.1 D 100.00");
        EXPECT_EQ(rows, test.rows);
        EXPECT_EQ(outcome.notes.empty(), test.rows.size() == 1 && test.question.empty())
            << "said, and only when there is something to say";
    }
    EXPECT_EQ(ArchiveFaults(), "");
}

// Above the limit of roundings, yet no rounding: the seller charges it on, so it is owed, paid and a cost.
TEST_P(RegistrationTotalsTest, StampDutyInTheTotalGetsALineOfItsOwn)
{
    InvoiceSpec spec;
    spec.total = "124.00";
    spec.stamp = "2.00";
    for (const bool is_credit_note : {false, true}) {
        spec.type = is_credit_note ? "TD04" : "TD01";
        spec.number = spec.type;
        const RegistrationOutcome outcome = Register(Filed(spec));
        ASSERT_TRUE(outcome.registered) << outcome.reason;
        const PNOTA_IVA &line = outcome.entry.iva[1];
        EXPECT_EQ(fmt::format("{} {:.2f} {:.2f}", line.iva, line.impo, line.imposta),
                  is_credit_note ? "100 -2.00 0.00" : "100 2.00 0.00");
        EXPECT_THAT(RowsOf(outcome.entry),
                    is_credit_note ? ElementsAre("250.1.1 D 124.00", "260.1.1 A 22.00", "300.1.1 A 102.00")
                                   : ElementsAre("250.1.1 A 124.00", "260.1.1 D 22.00", "300.1.1 D 102.00"));
        EXPECT_THAT(Instalments(outcome.entry.pno_codice), testing::Each(testing::EndsWith("62.00")));
    }
    EXPECT_EQ(ArchiveFaults(), "");
}

TEST_P(RegistrationTotalsTest, StampDutyWithoutAFreeLineIsAskedFor)
{
    InvoiceSpec spec;
    spec.total = "76.10";
    spec.stamp = "2.00";
    spec.summary = Rates(7);
    user_.Expect(
        "Totale documento 76,10, riepilogo IVA 74,10, differenza 2,00 (imposta di bollo compresa nel totale).\n\nVuoi "
        "Continuare ?",
        IDNO);
    EXPECT_FALSE(Register(Filed(spec)).registered);
}

TEST_P(RegistrationTotalsTest, RoundingOfACreditNoteIsOnTheOtherSide)
{
    InvoiceSpec spec;
    spec.type = "TD04";
    spec.total = "122.05";
    spec.rounding = "0.05";
    const RegistrationOutcome outcome = Register(Filed(spec));
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_THAT(RowsOf(outcome.entry),
                ElementsAre("250.1.1 D 122.05", "260.1.1 A 22.00", "300.1.1 A 100.00", "430.1.4 A 0.05"));
    EXPECT_EQ(ArchiveFaults(), "");
}

TEST_P(RegistrationTotalsTest, WithoutARoundingAccountTheDifferenceIsAskedFor)
{
    lumera_db_flag.flg_mas_arr_pas = 0;
    InvoiceSpec spec;
    spec.total = "122.01";
    spec.rounding = "0.01";
    user_.Expect("Totale documento 122,01, riepilogo IVA 122,00, differenza 0,01 (arrotondamento del documento, oltre "
                 "il riepilogo "
                 "IVA).\n\nVuoi Continuare ?",
                 IDNO);
    EXPECT_FALSE(Register(Filed(spec)).registered);
}

TEST_P(RegistrationTotalsTest, SplitPaymentIsMarkedAndSaid)
{
    InvoiceSpec spec;
    spec.summary[0].due = "S";
    const RegistrationOutcome outcome = Register(Filed(spec));
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_EQ(outcome.entry.pno_split_payment, 1);
    const char *const note = "Scissione dei pagamenti: l'imposta non è dovuta al fornitore, va tolta dalle scadenze.";
    EXPECT_THAT(outcome.notes, ElementsAre(note));
    spec.number = "8/P";
    spec.total = "100.00"; // as some write it, without what is not owed to them
    const RegistrationOutcome net = Register(Filed(spec));
    ASSERT_TRUE(net.registered) << net.reason;
    EXPECT_THAT(net.notes, ElementsAre("Il totale indicato, 100,00, è al netto dell'imposta che non è dovuta al "
                                       "fornitore: registrato 122,00.",
                                       note));
}

TEST_P(RegistrationTotalsTest, TotalNetOfTheWithholdingIsNoDifference)
{
    InvoiceSpec spec;
    spec.total = "102.00";
    const long code = Filed(Replaced(InvoiceText(spec), "</Numero>",
                                     "</Numero><DatiRitenuta><TipoRitenuta>RT02</TipoRitenuta><ImportoRitenuta>20.00"
                                     "</ImportoRitenuta><AliquotaRitenuta>20.00</AliquotaRitenuta><CausalePagamento>A"
                                     "</CausalePagamento></DatiRitenuta>"));
    const RegistrationOutcome outcome = Register(code);
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_DOUBLE_EQ(outcome.entry.pno_tot_doc, 122.00);
    EXPECT_THAT(outcome.notes, ElementsAre("Il totale indicato, 102,00, è al netto della ritenuta: registrato 122,00.",
                                           "Ritenuta d'acconto di 20,00 da trattenere al pagamento."));
}

TEST_P(RegistrationTotalsTest, SellerOfAVatGroupIsDoubtedByHisFiscalCode)
{
    InvoiceSpec spec;
    spec.seller_fiscal_code = "22222222220";
    const RegistrationOutcome outcome = Register(Filed(spec));
    ASSERT_TRUE(outcome.registered) << outcome.reason;
    EXPECT_THAT(outcome.notes,
                ElementsAre("Il fornitore 1 ha la stessa partita IVA ma il codice fiscale 02565617350, in fattura "
                            "22222222220: può essere un altro."));
}

TEST_P(RegistrationTotalsTest, WhatTheBuyerSendsHimselfIsNoDebt)
{
    InvoiceSpec spec;
    spec.type = "TD17";
    const long code = Filed(spec);
    const char *const question = "Il documento è di tipo TD17: lo emette chi acquista, e non è un debito verso il "
                                 "fornitore.\n\nVuoi Continuare ?";
    user_.Expect(question, IDNO);
    EXPECT_FALSE(Register(code).registered);
    EXPECT_EQ(user_.flags.back() & 0xF00u, MB_DEFBUTTON2);
    user_.Expect(question, IDYES);
    EXPECT_TRUE(Register(code).registered);
}
INSTANTIATE_TEST_SUITE_P(Engines, RegistrationTotalsTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

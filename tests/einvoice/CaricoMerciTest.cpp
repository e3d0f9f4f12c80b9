#include "einvoice/CaricoMerci.h"

#include "tests/einvoice/InvoiceFixture.h"

namespace {

constexpr const char *kLoaded = "Carico in magazzino correttamente eseguito!";
constexpr const char *kStillOpen = "Ci sono ancora articoli non accoppiati!\n\nVuoi annullare l'operazione?";
constexpr const char *kCheck =
    "\n\nUno o più sconti non sono stati applicati. Si prega di controllare i totali del carico.";

std::string NoCode(long line)
{
    return fmt::format("Nessun codice articolo presente per la riga n. {}\n\nLa riga sarà scartata dal carico e dovrà "
                       "essere inserita manualmente!",
                       line);
}

std::string NoArticle(long line)
{
    return fmt::format("Non è possibile accoppiare l'articolo della riga n. {}\n\nLa riga sarà scartata dal carico e "
                       "dovrà essere inserita manualmente!",
                       line);
}

/// One line as it stands in a file.
struct LineSpec {
    std::string code = "TRAP18V", type = "INTERNO", quantity = "2.00", price = "50.00", total = "100.00";
    std::string more; ///< ScontoMaggiorazione elements
};

std::string DiscountText(const char *kind, const char *element, const std::string &value)
{
    return fmt::format("<ScontoMaggiorazione><Tipo>{}</Tipo><{}>{}</{}></ScontoMaggiorazione>", kind, element, value,
                       element);
}

std::string LineText(int number, const LineSpec &line)
{
    std::string text = fmt::format("<DettaglioLinee><NumeroLinea>{}</NumeroLinea>", number);
    if (!line.code.empty())
        text += fmt::format("<CodiceArticolo><CodiceTipo>{}</CodiceTipo><CodiceValore>{}</CodiceValore>"
                            "</CodiceArticolo>",
                            line.type, line.code);
    text += "<Descrizione>Merce</Descrizione>";
    if (!line.quantity.empty()) text += fmt::format("<Quantita>{}</Quantita>", line.quantity);
    return text + fmt::format("<PrezzoUnitario>{}</PrezzoUnitario>{}<PrezzoTotale>{}</PrezzoTotale><AliquotaIVA>22.00"
                              "</AliquotaIVA></DettaglioLinee>",
                              line.price, line.more, line.total);
}

class CaricoMerciTest : public InvoiceTest {
  protected:
    /// An invoice of supplier 1 with these lines.
    static std::string TextOf(const std::vector<LineSpec> &lines, InvoiceSpec spec = {})
    {
        std::string text = InvoiceText(spec), all;
        int number = 0;
        for (const LineSpec &line : lines) all += LineText(++number, line);
        const std::size_t from = text.find("<DettaglioLinee>"), end = text.find("</DettaglioLinee>") + 17;
        return text.replace(from, end - from, all);
    }
    LoadOutcome Load(long code) { return LoadIntoWarehouse(Cmd(), code, 0, load_choices_); }
    std::string Warehouse() { return fmt::format("{} {} {}", Count("testate1"), Count("righe1"), Count("artforn")); }

    LoadChoices load_choices_;
};

TEST_P(CaricoMerciTest, LoadsASampleAndRemembersWhatWasMatchedByHand)
{
    const long code = Filed(ReadSample("IT02565617350_00A24.xml"));
    load_choices_.match_by_hand = [](long supplier, std::vector<LoadLine> *lines) {
        EXPECT_EQ(supplier, 1);
        EXPECT_EQ(lines->size(), 2U) << "the charge for transport is no goods";
        EXPECT_EQ(lines->at(0).match, ArticleMatch::Remembered);
        EXPECT_EQ(lines->at(1).Code(), "PHC-19");
        lines->at(1).article = "PUNTEHSS19";
        lines->at(1).match = ArticleMatch::ByHand;
        return true;
    };
    user_.Expect("Totale del carico 1.182,00, imponibile della fattura 1.212,00, differenza -30,00.");
    user_.Expect(kLoaded);
    const LoadOutcome outcome = Load(code);
    ASSERT_TRUE(outcome.loaded) << outcome.reason;
    EXPECT_EQ(outcome.document.tes_rif, fmt::format("RIF. CARICO N. 1/{}", outcome.document.tes_anno));
    EXPECT_DOUBLE_EQ(outcome.document.tes_totale, 1182);
    EXPECT_THAT(outcome.notes, testing::Contains("Riga 3 non caricata, spesa accessoria: 30,00."));
    EXPECT_EQ(Value("SELECT rig_articolo FROM admin.righe1 WHERE rig_idx = 2"), "PUNTEHSS19");
    EXPECT_EQ(Value("SELECT arf_articolo FROM admin.artforn WHERE arf_fornitore = 1 AND arf_codice = 'PHC-19'"),
              "PUNTEHSS19");
    InvoiceRow row;
    ForEachInvoice(Cmd(), 0, 0, [&](const InvoiceRow &each) {
        row = each;
        return false;
    });
    EXPECT_TRUE(row.is_in_warehouse);

    load_choices_.match_by_hand = [](long, std::vector<LoadLine> *) {
        ADD_FAILURE() << "all is known now";
        return false;
    };
    const char *again = "Attenzione!\n\nIl documento è già stato caricato in magazzino.\n\nVuoi Continuare?";
    user_.Expect(again, IDNO);
    EXPECT_FALSE(Load(code).loaded);
    EXPECT_EQ(Count("testate1"), "1");
    user_.Expect(again, IDYES);
    user_.Expect("Totale del carico 1.182,00, imponibile della fattura 1.212,00, differenza -30,00.");
    user_.Expect(kLoaded);
    EXPECT_EQ(Load(code).document.tes_codice, 2);
}

TEST_P(CaricoMerciTest, CreditNotesTakeGoodsOutWhateverTheirSigns)
{
    for (const bool negative : {false, true}) {
        InvoiceSpec spec;
        spec.type = "TD04";
        spec.number = negative ? "8/N" : "8/P";
        if (negative) {
            spec.total = "-122.00";
            spec.summary = {{"22.00", "-100.00", "-22.00", "", "", "", ""}};
        }
        LineSpec line;
        if (negative) line.price = "-50.00", line.total = "-100.00";
        user_.Expect(kLoaded);
        const LoadOutcome outcome = Load(Filed(TextOf({line}, spec)));
        ASSERT_TRUE(outcome.loaded) << outcome.reason;
        EXPECT_DOUBLE_EQ(outcome.rows[0].rig_qta, -2);
        EXPECT_DOUBLE_EQ(outcome.rows[0].rig_prezzo, 50);
        EXPECT_DOUBLE_EQ(outcome.rows[0].rig_importo, -100);
        EXPECT_DOUBLE_EQ(outcome.document.tes_totale, -100);
    }
}

TEST_P(CaricoMerciTest, RefusalsComeBeforeAnyQuestion)
{
    const std::string before = Warehouse();
    user_.Expect("Il documento non contiene righe di dettaglio dei beni/servizi!");
    EXPECT_FALSE(Load(Filed(TextOf({{"", "", "", "0.00", "0.00", ""}}))).loaded);
    const long code = Filed(TextOf({{}}));
    lumera_db_flag.flg_cau_magazzino = 0;
    user_.Expect("Causale Magazzino non impostata o non valida!");
    EXPECT_FALSE(Load(code).loaded);
    Run("UPDATE admin.caumag SET cam_tipo = 'S'");
    lumera_db_flag.flg_cau_magazzino = 1;
    user_.Expect("Causale Magazzino non impostata o non valida!");
    EXPECT_FALSE(Load(code).loaded) << "goods that come in need a reason of coming in";
    EXPECT_EQ(Warehouse(), before);
}

TEST_P(CaricoMerciTest, LinesWithoutCodeOrArticleAreLeftOutOneByOne)
{
    const long code =
        Filed(TextOf({{}, {"", "", "1.00", "5.00", "5.00", ""}, {"IGNOTO", "CODFOR", "1.00", "7.00", "7.00", ""}}));
    const std::string before = Warehouse();
    user_.Expect(NoCode(2));
    user_.Expect(kStillOpen, IDYES);
    EXPECT_EQ(Load(code).reason, "Carico annullato: ci sono articoli non accoppiati.");
    EXPECT_EQ(Warehouse(), before);

    user_.Expect(NoCode(2));
    user_.Expect(kStillOpen, IDNO);
    user_.Expect(NoArticle(3));
    user_.Expect(kLoaded); // the invoice of the test declares 100.00, which is what the first line comes to
    const LoadOutcome outcome = Load(code);
    ASSERT_TRUE(outcome.loaded);
    EXPECT_EQ(outcome.rows.size(), 1U);
    EXPECT_EQ(Count("artforn"), "6") << "a code of ours that nobody confirmed is not remembered";
}

// A price cut on a line of its own takes no goods back; a return at the whole price does.
TEST_P(CaricoMerciTest, NegativeLineOfAnArticleIsACutOrAReturn)
{
    LineSpec sold, cut, back;
    cut.quantity = "1.00";
    cut.price = cut.total = "-10.00";
    back.quantity = "1.00";
    back.price = back.total = "-50.00";
    CFattureElettronicheDB content;
    content.Load(TextOf({sold, cut, back}), "prova.xml");
    const GoodsOfInvoice goods = ReadGoods(content.Documents().front());
    ASSERT_EQ(goods.lines.size(), 2U);
    EXPECT_DOUBLE_EQ(goods.lines[1].quantity, -1);
    EXPECT_DOUBLE_EQ(goods.lines[1].price, 50);
    EXPECT_THAT(goods.notes, testing::ElementsAre("Riga 2 non caricata, sconto: -10,00."));
}

struct DiscountCase {
    const char *name;
    std::string line, head; ///< ScontoMaggiorazione
    const char *total;      ///< PrezzoTotale of 2 at 50
    double first, second, third, amount;
    bool by_value, too_many;
    const char *taxable = nullptr; ///< of the summary; null = whatever
};

TEST_P(CaricoMerciTest, DiscountsInPercentOthersWarned)
{
    const std::string ten = DiscountText("SC", "Percentuale", "10.00"),
                      five = DiscountText("SC", "Percentuale", "5.00");
    const DiscountCase cases[] = {
        {"two", ten + five, "", "85.50", 10, 5, 0, 85.5, false, false},
        {"surcharge", DiscountText("MG", "Percentuale", "10.00"), "", "110.00", -10, 0, 0, 110, false, false},
        {"off the price", DiscountText("SC", "Importo", "10.00"), "", "80.00", 20, 0, 0, 80, false, false},
        {"four", ten + five + ten + ten, "", "69.26", 10, 5, 10, 76.95, false, true},
        {"head percent", ten, five, "90.00", 10, 5, 0, 85.5, false, false, "85.50"},
        {"head percent that the lines have had", ten, five, "90.00", 10, 0, 0, 90, false, false, "90.00"},
        {"head value", "", DiscountText("SC", "Importo", "20.00"), "100.00", 0, 0, 0, 100, true, false},
    };
    for (const DiscountCase &each : cases) {
        SCOPED_TRACE(each.name);
        InvoiceSpec spec;
        spec.number = std::string("S/") + each.name;
        spec.number.resize(std::min<std::size_t>(spec.number.size(), 20));
        if (each.taxable != nullptr) spec.summary = {{"22.00", each.taxable, "1.00", "", "", "", ""}};
        LineSpec line;
        line.more = each.line;
        line.total = each.total;
        const std::string text =
            Replaced(TextOf({line}, spec), "<ImportoTotaleDocumento>", each.head + "<ImportoTotaleDocumento>");
        CFattureElettronicheDB content;
        content.Load(text, "prova.xml");
        const GoodsOfInvoice goods = ReadGoods(content.Documents().front());
        ASSERT_EQ(goods.lines.size(), 1U);
        EXPECT_THAT(goods.lines[0].discounts, testing::ElementsAre(each.first, each.second, each.third));
        EXPECT_DOUBLE_EQ(goods.lines[0].amount, each.amount);
        EXPECT_EQ(goods.has_value_discount, each.by_value);
        EXPECT_EQ(goods.has_more_discounts, each.too_many);
    }
    InvoiceSpec both;
    LineSpec line;
    line.more = ten + ten + ten + ten;
    const std::string text = Replaced(TextOf({line}, both), "<ImportoTotaleDocumento>",
                                      DiscountText("SC", "Importo", "20.00") + "<ImportoTotaleDocumento>");
    user_.Expect(std::string("Nella testata del Documento sono presenti sconti/magg. a valore non gestiti da Lumera!") +
                 kCheck);
    user_.Expect(std::string("Nel Documento sono presenti più sconti di quelli gestiti da Lumera!") + kCheck);
    user_.Expect("Totale del carico 72,90, imponibile della fattura 100,00, differenza -27,10.");
    user_.Expect(kLoaded);
    EXPECT_TRUE(Load(Filed(text)).loaded);
}

TEST_P(CaricoMerciTest, ArticlesAreFoundByPairOwnCodeAndBarCodeButNeverByAContradiction)
{
    Run("UPDATE admin.articoli SET art_ean = '2009000100015' WHERE art_codice = 'DADOM8'"); // TRAP18V has it too
    const auto line = [](std::vector<std::string> codes, std::vector<std::string> eans) {
        LoadLine made;
        made.codes = std::move(codes);
        made.eans = std::move(eans);
        return made;
    };
    std::vector<LoadLine> lines = {line({"TA18-2B"}, {}),
                                   line({"ignoto", "dadom8"}, {}),
                                   line({"altro"}, {"2009000100022"}),
                                   line({"DADOM8"}, {"2009000100022"}),
                                   line({}, {"2009000100015"}),
                                   line({std::string(40, 'X')}, {})};
    MatchArticles(Cmd(), 1, &lines);
    std::vector<std::string> found;
    for (const LoadLine &each : lines) found.push_back(each.article.str() + "/" + ArticleMatchText(each.match));
    EXPECT_THAT(found, testing::ElementsAre("TRAP18V/abbinamento noto", "DADOM8/codice nostro",
                                            "PUNTEHSS19/codice a barre", "/", "/", "/"));
    lines = {line({"TA18-2B"}, {})};
    MatchArticles(Cmd(), 3, &lines);
    EXPECT_EQ(lines[0].article, "") << "another supplier's code";
}

// A file of 8 decimals comes through; what fails in the middle leaves nothing.
TEST_P(CaricoMerciTest, KeepsDecimalsAndStoresAllOrNothing)
{
    const long code = Filed(TextOf({{"TRAP18V", "INTERNO", "3.12345678", "32.01580256", "99.99997600", ""}}));
    Run("ALTER TABLE admin.righe1 RENAME TO righe1_via");
    const std::string before = Count("testate1");
    EXPECT_THROW(Load(code), SAException);
    EXPECT_EQ(Count("testate1"), before);
    Run("ALTER TABLE admin.righe1_via RENAME TO righe1");
    user_.Expect(kLoaded);
    const LoadOutcome outcome = Load(code);
    ASSERT_TRUE(outcome.loaded);
    SACommand query(Cmd()->Connection(), "SELECT rig_qta, rig_prezzo, rig_importo FROM admin.righe1");
    query.Execute();
    ASSERT_TRUE(query.FetchNext());
    EXPECT_DOUBLE_EQ(query.Field(1).asDouble(), 3.12345678);
    EXPECT_DOUBLE_EQ(query.Field(2).asDouble(), 32.01580256);
    EXPECT_DOUBLE_EQ(query.Field(3).asDouble(), 100);
}

INSTANTIATE_TEST_SUITE_P(Engines, CaricoMerciTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

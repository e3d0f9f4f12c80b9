#include "einvoice/ui/AccoppiaArticoli.h"

#include "tables/ui/LookupBrowser.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tests/tables_ui/TablesWindowTest.h"

namespace {

constexpr long kHow = 8, kArticle = 6, kArticleText = 7;

class AccoppiaArticoliTest : public TablesWindowTest {
  protected:
    void SetUp() override
    {
        TablesWindowTest::SetUp();
        lines_ = {Line(1, "TA18-2B", "Trapano avvitatore", 5, 128.4), Line(2, "PHC-19", "Serie punte HSS-Co", 12, 45),
                  Line(3, "X-1", "Olio da taglio, fusto 20 l", 2, 88.1234)};
        if (database_) MatchArticles(Cmd(), 1, &lines_);
    }

    static LoadLine Line(long number, const char *code, const char *text, double quantity, double price)
    {
        LoadLine line;
        line.number = number;
        line.codes = {code};
        line.description = text;
        line.unit = "PZ";
        line.quantity = quantity;
        line.price = price;
        return line;
    }
    static CSpreadSheet *Grid(const QWidget &window) { return window.findChild<CSpreadSheet *>(); }

    std::vector<LoadLine> lines_;
};

TEST_P(AccoppiaArticoliTest, TypesAWordThenMakesAnArticleAndConfirms)
{
    CAccoppiaArticoli window(1, &lines_, nullptr);
    keys::Open(&window);
    EXPECT_EQ(Grid(window)->Text(1, kArticle), "TRAP18V");
    EXPECT_EQ(Grid(window)->Text(1, kHow), "abbinamento noto");
    EXPECT_EQ(Grid(window)->ActiveRow(), 2) << "the first one that has none";
    EXPECT_TRUE(Shows(window, "2 righe senza articolo: F4 apre l'elenco, F3 ne crea uno"));
    keys::Type("punte"); // part of one description
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(Grid(window)->Text(2, kArticle), "PUNTEHSS19");
    EXPECT_EQ(Grid(window)->Text(2, kArticleText), "Serie punte HSS-Co rettificate, 19 pezzi");
    EXPECT_EQ(Grid(window)->ActiveRow(), 3);

    keys::WhenNextWindowOpens([](QWidget *editor) {
        EXPECT_EQ(TextOf(*editor, "Codice"), "X-1") << "the supplier's code is free";
        EXPECT_EQ(TextOf(*editor, "Descrizione"), "Olio da taglio, fusto 20 l");
        EXPECT_EQ(TextOf(*editor, "Unità di misura"), "PZ");
        keys::Type("olio20");
        keys::Press(Qt::Key_F2);
    });
    keys::Press(Qt::Key_F3);
    ComeBack(&window);
    EXPECT_EQ(Grid(window)->Text(3, kArticle), "OLIO20");
    EXPECT_EQ(Value("SELECT art_um FROM admin.articoli WHERE art_codice = 'OLIO20'"), "PZ");
    EXPECT_TRUE(Shows(window, "Tutte le righe hanno un articolo: F2 conferma"));
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(window.result(), IDOK);
    EXPECT_EQ(lines_[0].match, ArticleMatch::Remembered);
    EXPECT_EQ(lines_[1].match, ArticleMatch::ByHand);
    EXPECT_EQ(lines_[1].article, "PUNTEHSS19");
    EXPECT_EQ(lines_[2].article, "OLIO20");
}

TEST_P(AccoppiaArticoliTest, UnknownWordsAreRefusedAndTheListChooses)
{
    CAccoppiaArticoli window(1, &lines_, nullptr);
    keys::Open(&window);
    keys::Type("zzz");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(Grid(window)->ActiveRow(), 2);
    keys::Type("vite");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(Grid(window)->Text(2, kArticle), "VITETE0840");
    const auto choose = [](QWidget *browser) {
        EXPECT_NE(dynamic_cast<CLookupBrowser *>(browser), nullptr);
        keys::Press(Qt::Key_Return);
    };
    keys::WhenNextWindowOpens(choose);
    keys::Type("rosso"); // one only
    keys::Press(Qt::Key_F4);
    ComeBack(&window);
    EXPECT_EQ(Grid(window)->Text(3, kArticle), "FONDOROSSO");
}

TEST_P(AccoppiaArticoliTest, EscapeLeavesTheLinesAsTheyWere)
{
    CAccoppiaArticoli window(1, &lines_, nullptr);
    keys::Open(&window);
    keys::Type("DADOM8");
    keys::Press(Qt::Key_Return);
    user_.Expect("Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?", IDYES);
    keys::Press(Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(lines_[1].article, "");
    EXPECT_EQ(lines_[1].match, ArticleMatch::None);
}

INSTANTIATE_TEST_SUITE_P(Engines, AccoppiaArticoliTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

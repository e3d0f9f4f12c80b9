#include "tables/ui/Azienda.h"
#include "tables/ui/Causali.h"
#include "tables/ui/CodiciIva.h"
#include "tables/ui/ContiEditors.h"
#include "tables/ui/Pagamenti.h"
#include "tables/ui/PianoContiEd.h"
#include "tests/tables_ui/TablesWindowTest.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/widgets/SpreadSheet.h"

namespace {

class CompanyTablesTest : public TablesWindowTest {
  protected:
    static CSpreadSheet *Grid(const QWidget &window, const char *name)
    {
        for (auto *grid : window.findChildren<CSpreadSheet *>())
            if (grid->accessibleName() == name) return grid;
        ADD_FAILURE() << "no grid " << name;
        return nullptr;
    }
};

TEST_P(CompanyTablesTest, TemplateRowIsTypedIntoACausaleAndAnUnknownAccountIsRefused)
{
    CCausali editor;
    editor.m_codice = 51;
    
    keys::Open(&editor);
    EXPECT_EQ(editor.windowTitle().toStdString(), "Modifica Causali contabili - 51 Pagamento a fornitore");
    CSpreadSheet *rows = Grid(editor, "Righe del modello");
    EXPECT_EQ(rows->Text(2, 4), Value("SELECT sot_desc FROM admin.sotcon WHERE sot_mas = 170 AND sot_con = 1 AND sot_codice = 1"));
    rows->setFocus();
    rows->SetActiveCell(3, 1);

    for (const char *part : {"999", "1"}) {
        keys::Type(part);
        keys::Press(Qt::Key_Return);
    }
    EXPECT_GE(user_.beeps, 1);
    EXPECT_EQ(rows->ActiveRow(), 3);
    keys::Press(Qt::Key_Escape);
    rows->SetLong(3, 1, 0);
    rows->SetLong(3, 2, 0);
    rows->SetActiveCell(3, 1);

    user_.beeps = 0;
    for (const char *cell : {"300", "1", "1", "d", "s"}) {
        keys::Type(cell);
        keys::Press(Qt::Key_Return);
    }
    EXPECT_EQ(user_.beeps, 0);
    EXPECT_EQ(rows->Text(3, 4), "Merci c/acquisti");
    keys::Press(Qt::Key_F2);
    EXPECT_TRUE(editor.m_saved);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.caucontr WHERE car_cau = 51 AND car_idx = 3 AND car_mas = 300 AND car_con = 1"
                    " AND car_sot = 1 AND car_tipo = 0 AND car_auto = 1"),
              "1");
}

TEST_P(CompanyTablesTest, KindOfAVatCodeProposesItsNatureAndAWrongOneIsRefused)
{
    CCodiciIva editor;
    keys::Open(&editor);
    keys::Type("901");
    EnterTo("Descrizione");
    keys::Type("Non imponibile art. 8");
    EnterTo("Tipo");
    keys::Type("Non imp");
    EnterTo("Natura");
    EXPECT_EQ(TextOf(editor, "Natura"), "N3");
    keys::Type("N4");
    user_.Expect("La natura di questo tipo di codice è N3.", IDOK);
    keys::Press(Qt::Key_F2);
    EXPECT_FALSE(editor.m_saved);
    EXPECT_EQ(Focused(), "Natura");
    keys::Type("N3.1");
    keys::Press(Qt::Key_F2);
    EXPECT_TRUE(editor.m_saved);
    EXPECT_EQ(Value("SELECT iva_natura FROM admin.codiva WHERE iva_codice = 901 AND iva_tip = 3"), "N3.1");
}

TEST_P(CompanyTablesTest, PaymentTermsShowTheDueDatesTheyLeadTo)
{
    user_.today = DateToJulian(15, 1, 2026);
    CPagamenti editor;
    editor.m_codice = 24; // 30/60 days, end of month
    keys::Open(&editor);
    EXPECT_TRUE(Shows(editor, "fattura del 15/01/2026: 02/03/2026, 01/04/2026") ||
                Shows(editor, "fattura del 15/01/2026: 28/02/2026, 31/03/2026"));
    EnterTo("Numero rate");
    keys::Type("1");
    keys::Press(Qt::Key_Return);
    editor.OnKickIdle();
    EXPECT_FALSE(Shows(editor, "fattura del 15/01/2026: 28/02/2026, 31/03/2026"));
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT pag_num_rate FROM admin.pagament WHERE pag_codice = 24"), "1");
}

TEST_P(CompanyTablesTest, ChartWalksDownItsLevelsAndTakesANewSubAccount)
{
    CPianoContiEd chart;
    keys::Open(&chart);
    CSpreadSheet *masters = Grid(chart, "Mastri"), *accounts = Grid(chart, "Conti"), *subs = Grid(chart, "Sottoconti");
    EXPECT_EQ(masters->RowCount(), std::stol(Value("SELECT COUNT(*) FROM admin.mastri")));
    EXPECT_EQ(accounts->RowCount(), std::stol(Value("SELECT COUNT(*) FROM admin.conti WHERE con_mas = 100")));
    keys::Press(Qt::Key_Down);
    EXPECT_EQ(accounts->RowCount(), std::stol(Value("SELECT COUNT(*) FROM admin.conti WHERE con_mas = 110")));
    keys::Press(Qt::Key_Up);
    keys::Press(Qt::Key_Right);
    keys::Press(Qt::Key_Right);
    EXPECT_TRUE(subs->hasFocus());
    const long before = subs->RowCount();

    keys::WhenNextWindowOpens([this](QWidget *editor) {
        EXPECT_EQ(TextOf(*editor, "Mastro"), "100");
        EXPECT_EQ(TextOf(*editor, "Conto"), "1");
        EXPECT_EQ(TextOf(*editor, "Sottoconto"), "2");
        EnterTo("Descrizione");
        EXPECT_EQ(TextOf(*editor, "Sottoconto"), "2");
        keys::Type("Spese societarie capitalizzate");
        keys::Press(Qt::Key_F2);
    });
    keys::Press(Qt::Key_F3);
    EXPECT_EQ(subs->RowCount(), before + 1);
    EXPECT_EQ(Value("SELECT sot_desc1 FROM admin.sotcon WHERE sot_desc = 'Spese societarie capitalizzate'"),
              "Spese societarie capitalizzate");
}

TEST_P(CompanyTablesTest, CompanyAndSettingsAreStoredTogetherAndAreTheCurrentOnesAtOnce)
{
    CAzienda editor;
    keys::Open(&editor);
    EnterTo("Ragione sociale");
    keys::Type("Brenzola Forniture e Servizi S.r.l.");
    EnterTo("Esercizio");
    keys::Type("2027");
    keys::Press(Qt::Key_F2);
    EXPECT_TRUE(editor.m_saved);
    EXPECT_EQ(lumera_db_impo.dit_anno, 2027);
    EXPECT_EQ(CompanyLine(), "Ditta : 00001 Brenzola Forniture e Servizi S.r.l.  P.IVA 08235227348");

    EnterTo("Partita IVA");
    keys::Type("08235227349");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(Focused(), "Partita IVA");
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(Value("SELECT dit_piva FROM admin.ditte"), "08235227348");
}

INSTANTIATE_TEST_SUITE_P(Engines, CompanyTablesTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

#include "tables/ui/Azienda.h"
#include "tables/ui/Causali.h"
#include "tables/ui/CodiciIva.h"
#include "tables/ui/ContiEditors.h"
#include "tables/ui/Pagamenti.h"
#include "tables/ui/PianoContiEd.h"
#include "tests/tables_ui/TablesWindowTest.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/widgets/SpreadSheet.h"

#include <QImage>

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
    EXPECT_EQ(rows->Text(2, 4),
              Value("SELECT sot_desc FROM admin.sotcon WHERE sot_mas = 170 AND sot_con = 1 AND sot_codice = 1"));
    rows->setFocus();
    rows->SetActiveCell(3, 1);

    keys::Type("999");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(rows->ActiveRow(), 3);
    EXPECT_EQ(rows->ActiveColumn(), 1);

    user_.beeps = 0;
    for (const char *cell : {"300", "1", "1", "d", "s"}) {
        keys::Type(cell);
        keys::Press(Qt::Key_Return);
    }
    EXPECT_EQ(user_.beeps, 0);
    EXPECT_EQ(rows->Text(3, 4), "Merci c/acquisti");
    keys::Press(Qt::Key_F2);
    EXPECT_TRUE(editor.m_saved);
    EXPECT_EQ(
        Value("SELECT COUNT(*) FROM admin.caucontr WHERE car_cau = 51 AND car_idx = 3 AND car_mas = 300 AND car_con = 1"
              " AND car_sot = 1 AND car_tipo = 0 AND car_auto = 1"),
        "1");
}

TEST_P(CompanyTablesTest, PartsOfATemplateRowDependOnEachOther)
{
    CCausali editor;
    editor.m_codice = 51;
    keys::Open(&editor);
    CSpreadSheet *rows = Grid(editor, "Righe del modello");
    const auto account = [&] { return rows->Text(2, 1) + "." + rows->Text(2, 2) + "." + rows->Text(2, 3); };
    ASSERT_EQ(account(), "170.1.1");
    rows->setFocus();
    rows->SetActiveCell(2, 1);
    keys::Type("310"); // has a sub-account 1.1, too
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(account(), "310.1.1");
    EXPECT_EQ(rows->Text(2, 4), "Energia elettrica");
    keys::Type("4"); // has no sub-account 9
    keys::Press(Qt::Key_Return);
    rows->SetActiveCell(2, 3);
    keys::Type("99");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(rows->ActiveColumn(), 3);
    keys::Type("1");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(account(), "310.4.1");
    rows->SetActiveCell(2, 1);
    keys::Type("150");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(account(), "150..") << "the customers have no account 4";
    EXPECT_EQ(user_.beeps, 1);

    rows->SetActiveCell(2, 1);
    keys::Type("0");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(account() + rows->Text(2, 4) + rows->Text(2, 5) + rows->Text(2, 6), "..");
    rows->SetActiveCell(1, 5);
    keys::Press(Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_EQ(rows->Text(1, 1) + rows->Text(1, 4) + rows->Text(1, 5), "");
    EXPECT_TRUE(editor.IsChanged());
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.caucontr WHERE car_cau = 51"), "0");
}

TEST_P(CompanyTablesTest, WhatMayNotChangeIsProtected)
{
    const auto is_free = [](const QWidget &window, const char *name) {
        for (QWidget *widget : window.findChildren<QWidget *>())
            if (widget->accessibleName() == name && FieldOf(widget)) return !FieldOf(widget)->IsProtected();
        ADD_FAILURE() << "no field " << name;
        return false;
    };
    CMastri master;
    master.m_codice = 150;
    keys::Open(&master);
    EXPECT_FALSE(is_free(master, "Mastro dei clienti"));
    keys::Press(Qt::Key_PageDown);
    EXPECT_TRUE(is_free(master, "Mastro dei clienti"));
    keys::Press(Qt::Key_F3);
    EXPECT_TRUE(is_free(master, "Mastro dei fornitori"));

    CConti account;
    account.m_keys = {"150", "1"};
    keys::Open(&account);
    EXPECT_TRUE(is_free(account, "Conto di clienti"));
    CAzienda company;
    keys::Open(&company);
    EXPECT_FALSE(is_free(company, "Cognome"));
    EXPECT_TRUE(is_free(company, "Mastro"));

    Run("INSERT INTO admin.pnota1 (pno_codice, pno_data, pno_cau, pno_rel, pno_cli_for, pno_sez, pno_reg, pno_dare,"
        " pno_avere) VALUES (1, '2026-03-15', 51, 0, 1, 1, 1, 100, 100)");
    Run("INSERT INTO admin.pnotaro2 (row_codice, row_idx, row_mas, row_con, row_sot, row_tipo, row_importo, row_data,"
        " row_sez, row_rel, row_clfo) VALUES (1, 1, 150, 1, 1, 'D', 100, '2026-03-15', 1, 0, 1)");
    account.OnRecordAnnulla();
    EXPECT_FALSE(is_free(account, "Conto di clienti"));
    company.OnRecordAnnulla();
    EXPECT_FALSE(is_free(company, "Mastro")) << "that of the customers";
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

TEST_P(CompanyTablesTest, PaymentTermsShowWhatTheyLeadTo)
{
    user_.today = DateToJulian(15, 1, 2026);
    CPagamenti editor;
    editor.m_codice = 24; // 30/60 days, end of month
    keys::Open(&editor);
    const char *const two = "fattura di 1.220,00 del 15/01/2026: 610,00 il 28/02/2026, 610,00 il 31/03/2026";
    EXPECT_TRUE(Shows(editor, two));
    EnterTo("Numero rate");
    keys::Type("1");
    keys::Press(Qt::Key_Return);
    editor.OnKickIdle();
    EXPECT_FALSE(Shows(editor, two));
    EXPECT_TRUE(Shows(editor, "fattura di 1.220,00 del 15/01/2026: 1.220,00 il 28/02/2026"));
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT pag_num_rate FROM admin.pagament WHERE pag_codice = 24"), "1");
}

TEST_P(CompanyTablesTest, TermsThatNeverLeaveTheirExcludedMonthAreRefused)
{
    CPagamenti editor;
    editor.m_codice = 53; // the 10th, not in August and December
    keys::Open(&editor);
    EnterTo("ogni giorni");
    keys::Type("365");
    user_.Expect("Con rate ogni 365 giorni una scadenza può non uscire mai dai mesi esclusi: cambiare l'intervallo o i "
                 "mesi.");
    keys::Press(Qt::Key_F2);
    EXPECT_FALSE(editor.m_saved);
    EXPECT_EQ(Focused(), "ogni giorni");
    EXPECT_EQ(Value("SELECT pag_gg_int FROM admin.pagament WHERE pag_codice = 53"), "28");
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

    BackTo("Partita IVA");
    keys::Type("08235227349");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(Focused(), "Partita IVA");
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(Value("SELECT dit_piva FROM admin.ditte"), "08235227348");
    keys::Type("082 352 27");
    EXPECT_TRUE(Shows(editor, "Partita IVA: mancano 3 cifre")) << "the state while typing";
}

TEST_P(CompanyTablesTest, PastedVatNumberOfTheCompanyIsTakenWithoutBlanksAndCountry)
{
    CAzienda editor;
    keys::Open(&editor);
    EnterTo("Partita IVA");
    keys::Type("it 08235227348");
    EXPECT_TRUE(Shows(editor, "Partita IVA corretta"));
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(user_.beeps, 0);
    EXPECT_EQ(TextOf(editor, "Partita IVA"), "08235227348");
}

TEST_P(CompanyTablesTest, CompanyChangedByAnotherStationIsNotOverwritten)
{
    CAzienda editor;
    keys::Open(&editor);
    EnterTo("Ragione sociale");
    keys::Type("Mia S.r.l.");
    Run("UPDATE admin.ditte SET dit_desc = 'Loro S.r.l.'");
    user_.Expect("Il record è stato cambiato da un'altra stazione: occorre riaprirlo.");
    keys::Press(Qt::Key_F2);
    EXPECT_FALSE(editor.m_saved);
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(Value("SELECT dit_desc FROM admin.ditte"), "Loro S.r.l.");
}

TEST_P(CompanyTablesTest, TransparentLogoIsPutOnPaper)
{
    QImage picture(4, 4, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    picture.setPixelColor(1, 1, Qt::red);
    const std::filesystem::path file = Folder() / "logo.png";
    ASSERT_TRUE(picture.save(ToQt(file.string())));
    CAzienda editor;
    keys::Open(&editor);
    user_.ExpectFiles({file});
    keys::Press(Qt::Key_F7);
    EXPECT_TRUE(Shows(editor, "presente nelle stampe"));
    const QImage logo(ToQt(CompanyLogo().string()));
    ASSERT_EQ(logo.size(), picture.size());
    EXPECT_EQ(logo.pixelColor(0, 0), QColor(Qt::white));
    EXPECT_EQ(logo.pixelColor(1, 1), QColor(Qt::red));
}

TEST_P(CompanyTablesTest, FolderOfReceivedInvoicesIsChosenFromAnyPage)
{
    CAzienda editor;
    keys::Open(&editor);
    user_.ExpectFolder(Folder());
    keys::Press(Qt::Key_F8);
    EXPECT_EQ(Focused(), "Cartella delle fatture ricevute");
    keys::Press(Qt::Key_F2);
    EXPECT_TRUE(editor.m_saved);
    EXPECT_EQ(lumera_db_flag.flg_sdi_cartella, Folder().string());
}

INSTANTIATE_TEST_SUITE_P(Engines, CompanyTablesTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

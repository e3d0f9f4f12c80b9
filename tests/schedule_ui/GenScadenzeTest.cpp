#include "schedule/ui/GenScadenze.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/Fields.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvodlg/widgets/Theme.h"
#include "tarvolumera/PSQLpno.h"
#include "tests/tables_ui/TablesWindowTest.h"

#include <QAbstractButton>
#include <cstdlib>
#include <fmt/format.h>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const char *const kTotalQuestion =
    "Il totale delle Scadenze non coincide\ncon il totale del documento!\n\nVuoi Continuare?";

/// The generator over a stored purchase of supplier 1 of 100.00 + 22.00 of 10 January 2026, with terms 45: "Ri.Ba.
/// 30/60 gg f.m.", two equal instalments.
class GenScadenzeTest : public TablesWindowTest {
  protected:
    void SetUp() override
    {
        TablesWindowTest::SetUp();
        if (!database_) return;
        CDateField::SetFiscalYear(2026);
        CDateField::SetWorkingDate(DateToJulian(10, 1, 2026));
        sqlpno.Blank(Cmd(), &entry_);
        entry_.pno_data = entry_.pno_data_doc = DateToJulian(10, 1, 2026);
        entry_.pno_cau = 21;
        entry_.pno_reg = kPurchases;
        entry_.pno_rel = kSupplier;
        entry_.pno_cli_for = 1;
        entry_.pno_cau_iva = 1;
        entry_.pno_pag = 45;
        entry_.pno_doc = "7/A";
        entry_.pno_tot_doc = 122;
        entry_.iva[0] = {22, 1, 22, 100, 22, 0};
        entry_.des_clifor = "Utensileria Marzavola S.r.l.";
        entry_.des_pag = "Ri.Ba. 30/60 gg f.m.";
        sqlpno.SqlTransaction(Cmd(), kInsert, &entry_);
    }
    void TearDown() override
    {
        CDateField::SetFiscalYear(0);
        TablesWindowTest::TearDown();
    }

    static CSpreadSheet *Grid(const QWidget &window) { return window.findChild<CSpreadSheet *>(); }

    /// "28/02/2026 61,00", as the first rows of the grid show it.
    static std::vector<std::string> Rows(const QWidget &window, long count)
    {
        std::vector<std::string> rows;
        for (long row = 1; row <= count; ++row)
            rows.push_back(Grid(window)->Text(row, 1) + " " + Grid(window)->Text(row, 2));
        return rows;
    }

    static std::string Cell(const QWidget &window)
    {
        const CSpreadSheet *grid = Grid(window);
        const QWidget *focus = QApplication::focusWidget();
        if (focus != grid && !grid->isAncestorOf(focus)) return IsOnOk() ? "OK" : Focused();
        return fmt::format("{},{}", grid->ActiveRow(), grid->ActiveColumn());
    }

    static bool IsOnOk()
    {
        const auto *button = qobject_cast<QAbstractButton *>(QApplication::focusWidget());
        return button && button->text() == "F2 - &OK";
    }

    /// What is stored: due date, amount, number of how many, last one, bank, description.
    std::vector<std::string> Stored()
    {
        std::vector<std::string> rows;
        SACommand query(Cmd()->Connection(),
                        "SELECT sca_data, sca_importo, sca_rata, sca_rate, sca_ultima, sca_ban, sca_desc"
                        " FROM admin.scadenze WHERE sca_relaz = 1 ORDER BY sca_num");
        query.Execute();
        while (query.FetchNext())
            rows.push_back(fmt::format("{} {:.2f} {}/{}{} {} {}", query.Field("sca_data").asDateTime().DateText(),
                                       query.Field("sca_importo").asDouble(), query.Field("sca_rata").asLong(),
                                       query.Field("sca_rate").asLong(), query.Field("sca_ultima").asLong() ? "*" : "",
                                       query.Field("sca_ban").asLong(), query.Field("sca_desc").asString()));
        return rows;
    }

    PNOTA entry_;
};

TEST_P(GenScadenzeTest, WholeProposalIsAcceptedWithOneKey)
{
    for (const int key : {Qt::Key_F2, Qt::Key_Return, Qt::Key_Enter}) {
        CGenScadenze dialog(&entry_, nullptr);
        keys::Open(&dialog);
        EXPECT_EQ(dialog.windowTitle().toStdString(), "Generazione Scadenze");
        EXPECT_EQ(TextOf(dialog, "Descrizione"), "PAGAMENTO FATTURA ACQUISTO MERCI");
        EXPECT_EQ(TextOf(dialog, "Totale documento"), "122,00");
        EXPECT_EQ(TextOf(dialog, "Banca"), "1") << "the supplier's own";
        EXPECT_TRUE(Shows(dialog, Value("SELECT ban_desc FROM admin.banche1 WHERE ban_codice = 1")));
        EXPECT_TRUE(Shows(dialog, "n. 7/A del 10/01/2026 – fornitore 1 Utensileria Marzavola S.r.l."));
        EXPECT_TRUE(Shows(dialog, "45 Ri.Ba. 30/60 gg f.m."));
        EXPECT_THAT(Rows(dialog, 3), ElementsAre("28/02/2026 61,00", "31/03/2026 61,00", " "));
        EXPECT_EQ(Cell(dialog), "OK");
        keys::Press(key);
        EXPECT_FALSE(dialog.isVisible());
        EXPECT_EQ(dialog.result(), IDOK);
        EXPECT_EQ(dialog.m_stored, 2);
        EXPECT_THAT(Stored(), ElementsAre("2026-02-28 61.00 1/2 1 PAGAMENTO FATTURA ACQUISTO MERCI",
                                          "2026-03-31 61.00 2/2* 1 PAGAMENTO FATTURA ACQUISTO MERCI"));
        EXPECT_THAT(user_.progress, testing::Contains(HasSubstr("Generazione Scadenze in Corso...")));
        Run("DELETE FROM admin.scadenze");
    }
}

TEST_P(GenScadenzeTest, EndsUnseenWhenThereIsNothingToGenerate)
{
    const auto is_seen = [this](const std::function<void(PNOTA &)> &change) {
        PNOTA changed = entry_;
        change(changed);
        CGenScadenze dialog(&changed, nullptr);
        keys::Open(&dialog);
        EXPECT_EQ(dialog.isVisible(), dialog.m_proposed);
        return dialog.isVisible();
    };
    EXPECT_TRUE(is_seen([](PNOTA &) {}));
    EXPECT_FALSE(is_seen([](PNOTA &e) { e.pno_pag = 0; }));
    EXPECT_FALSE(is_seen([](PNOTA &e) { e.pno_rel = kNoCounterpart; }));
    EXPECT_FALSE(is_seen([](PNOTA &e) { e.iva[0].impo = e.iva[0].imposta = 0; }));
    EXPECT_FALSE(is_seen([](PNOTA &e) { e.pno_pag = 9; })) << "terms without instalments";
    StoreInstalments(Cmd(), entry_, *ProposeInstalments(Cmd(), entry_));
    EXPECT_FALSE(is_seen([](PNOTA &) {})) << "a changed entry has them already";
    EXPECT_TRUE(user_.shown.empty());
}

TEST_P(GenScadenzeTest, DifferenceIsInSightAndAskedAbout)
{
    CGenScadenze dialog(&entry_, nullptr);
    keys::Open(&dialog);
    EXPECT_TRUE(Shows(dialog, "0,00"));
    Grid(dialog)->setFocus();
    Grid(dialog)->SetActiveCell(2, 2);
    keys::Type("60,50");
    keys::Press(Qt::Key_Return);
    EXPECT_TRUE(Shows(dialog, "0,50 in meno del documento"));
    user_.beeps = 0;
    user_.Expect(kTotalQuestion, IDNO);
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(user_.flags.back(), MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2);
    EXPECT_THAT(Cell(dialog), HasSubstr(",")) << "back in the grid";
    EXPECT_TRUE(Stored().empty());
    user_.Expect(kTotalQuestion, IDYES);
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(dialog.m_stored, 2);
}

TEST_P(GenScadenzeTest, RowsAreTypedAndAnEmptyAmountTakesTheRest)
{
    CGenScadenze dialog(&entry_, nullptr);
    keys::Open(&dialog);
    Grid(dialog)->setFocus();
    Grid(dialog)->SetActiveCell(1, 1);
    for (const char *cell : {"1502", "40+1", "1503", "41", "1504", ""}) {
        keys::Type(cell);
        keys::Press(Qt::Key_Return);
    }
    EXPECT_THAT(Rows(dialog, 3), ElementsAre("15/02/2026 41,00", "15/03/2026 41,00", "15/04/2026 40,00"));
    EXPECT_EQ(Cell(dialog), "4,1");
    keys::Type("3105");
    keys::Press(Qt::Key_Return);
    EXPECT_TRUE(Shows(dialog, "1 riga senza data o importo non verrà registrata"));
    EXPECT_EQ(Cell(dialog), "4,2");
    keys::Press(Qt::Key_Return); // nothing is left for it
    EXPECT_EQ(Rows(dialog, 4).back(), "31/05/2026 ");
    EXPECT_EQ(Cell(dialog), "5,1");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(Cell(dialog), "OK") << "an empty row ends the list";
    keys::Press(Qt::Key_Return);
    EXPECT_THAT(Stored(), ElementsAre("2026-02-15 41.00 1/3 1 PAGAMENTO FATTURA ACQUISTO MERCI",
                                      "2026-03-15 41.00 2/3 1 PAGAMENTO FATTURA ACQUISTO MERCI",
                                      "2026-04-15 40.00 3/3* 1 PAGAMENTO FATTURA ACQUISTO MERCI"));
}

TEST_P(GenScadenzeTest, RowsAreClearedAndTheTotalFollows)
{
    CGenScadenze dialog(&entry_, nullptr);
    keys::Open(&dialog);
    Grid(dialog)->setFocus();
    Grid(dialog)->SetActiveCell(2, 2);
    keys::Press(Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_THAT(Rows(dialog, 2), ElementsAre("28/02/2026 61,00", " "));
    EXPECT_TRUE(Shows(dialog, "61,00 in meno del documento"));
    Grid(dialog)->SetActiveCell(1, 2);
    keys::Press(Qt::Key_Delete);
    EXPECT_THAT(Rows(dialog, 1), ElementsAre("28/02/2026 "));
    keys::Press(Qt::Key_Return);
    EXPECT_THAT(Rows(dialog, 1), ElementsAre("28/02/2026 122,00"));
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(dialog.m_stored, 1);
}

TEST_P(GenScadenzeTest, ArrowsLeaveTheGridAtItsEnds)
{
    CGenScadenze dialog(&entry_, nullptr);
    keys::Open(&dialog);
    CSpreadSheet *grid = Grid(dialog);
    EXPECT_EQ(grid->RowCount(), 60);
    EXPECT_EQ(grid->ColumnCount(), 2);
    grid->setFocus();
    grid->SetActiveCell(2, 2);
    keys::Press(Qt::Key_Up);
    EXPECT_EQ(Cell(dialog), "1,2");
    keys::Press(Qt::Key_Up);
    EXPECT_EQ(Cell(dialog), "Banca");
    keys::Press(Qt::Key_Down);
    EXPECT_EQ(Cell(dialog), "1,1");
    grid->SetActiveCell(60, 2);
    keys::Type("5"); // a cell being typed is completed first
    keys::Press(Qt::Key_Down);
    EXPECT_EQ(Cell(dialog), "OK");
    EXPECT_EQ(grid->Text(60, 2), "5,00");
    grid->setFocus();
    grid->SetActiveCell(60, 1);
    keys::Type("3002"); // no such day
    user_.beeps = 0;
    keys::Press(Qt::Key_Down);
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(Cell(dialog), "60,1");
    keys::Press(Qt::Key_Escape);
}

TEST_P(GenScadenzeTest, BankIsLookedUpAndCanBeLeftOut)
{
    const std::string second = Value("SELECT ban_desc FROM admin.banche1 WHERE ban_codice = 2");
    CGenScadenze dialog(&entry_, nullptr);
    keys::Open(&dialog);
    BackTo("Banca");
    keys::Type("99");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(Focused(), "Banca");
    keys::Type("02");
    keys::Press(Qt::Key_Return);
    EXPECT_EQ(TextOf(dialog, "Banca"), "2") << "the code is written back";
    EXPECT_TRUE(Shows(dialog, second));
    BackTo("Banca");
    keys::Press(Qt::Key_Delete);
    keys::Press(Qt::Key_Return);
    EXPECT_FALSE(Shows(dialog, second)) << "no code, no description";
    BackTo("Banca");
    keys::WhenNextWindowOpens([](QWidget *) { keys::Press(Qt::Key_Return); });
    keys::Press(Qt::Key_F4);
    ComeBack(&dialog);
    EXPECT_EQ(TextOf(dialog, "Banca"), "1") << "the first one of the browser";
    BackTo("Descrizione");
    keys::Type("ACCONTO SU ORDINE 14");
    keys::Press(Qt::Key_F2);
    EXPECT_THAT(Stored(), testing::Each(HasSubstr(" 1 ACCONTO SU ORDINE 14")));
}

TEST_P(GenScadenzeTest, MissingDatesAreWhereTheUserBegins)
{
    Run("UPDATE admin.pagament SET pag_ini = '' WHERE pag_codice = 45");
    CGenScadenze dialog(&entry_, nullptr);
    keys::Open(&dialog);
    EXPECT_EQ(Cell(dialog), "1,1");
    EXPECT_TRUE(Shows(dialog, "Il pagamento 45 non ha una decorrenza: le date vanno scritte a mano."));
    for (const char *cell : {"2802", "", "3103", ""}) {
        keys::Type(cell);
        keys::Press(Qt::Key_Return);
    }
    EXPECT_FALSE(Shows(dialog, "Il pagamento 45 non ha una decorrenza: le date vanno scritte a mano."));
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(dialog.m_stored, 2);

    Run("DELETE FROM admin.scadenze");
    Run("UPDATE admin.pagament SET pag_num_rate = 60, pag_iva_separata = 1 WHERE pag_codice = 45");
    CGenScadenze many(&entry_, nullptr);
    keys::Open(&many);
    EXPECT_EQ(Cell(many), "1,1");
    EXPECT_TRUE(Shows(many, "122,00 in meno del documento"));
}

TEST_P(GenScadenzeTest, CancelWritesNothingAndAsksOnlyAboutWhatWasTyped)
{
    CGenScadenze dialog(&entry_, nullptr);
    keys::Open(&dialog);
    keys::Press(Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_TRUE(user_.shown.empty());

    CGenScadenze changed(&entry_, nullptr);
    keys::Open(&changed);
    BackTo("Descrizione");
    keys::Type("Altro");
    user_.Expect("Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?", IDYES);
    keys::Press(Qt::Key_A, Qt::AltModifier);
    EXPECT_FALSE(changed.isVisible());
    EXPECT_TRUE(Stored().empty());
}

TEST_P(GenScadenzeTest, AnotherStationsInstalmentsAreNotDoubled)
{
    CGenScadenze dialog(&entry_, nullptr);
    keys::Open(&dialog);
    StoreInstalments(Cmd(), entry_, *ProposeInstalments(Cmd(), entry_));
    user_.Expect(fmt::format("Le scadenze del movimento n. {} sono già state generate.", entry_.pno_codice));
    keys::Press(Qt::Key_F2);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(Stored().size(), 2u);
}

TEST_P(GenScadenzeTest, TotalStandsOutInBothThemes)
{
    for (const Theme theme : {Theme::Light, Theme::Dark}) {
        ApplyTheme(theme);
        CGenScadenze dialog(&entry_, nullptr);
        keys::Open(&dialog);
        const QLineEdit *total = Field(dialog, "Totale documento");
        const QColor text = total->palette().color(QPalette::Text), ground = total->palette().color(QPalette::Base);
        EXPECT_TRUE(total->isReadOnly());
        EXPECT_TRUE(total->font().bold());
        EXPECT_GT(text.red(), text.green() + 20);
        EXPECT_EQ(text.green(), text.blue()) << "red";
        EXPECT_EQ(ground.lightness() > text.lightness(), theme == Theme::Light);
        EXPECT_TRUE(theme == Theme::Dark || ground.blue() < ground.red()) << "light yellow";
        if (const char *folder = std::getenv("LUMERA_SHOTS"))
            dialog.grab().save(QString("%1/genscadenze%2.png").arg(folder).arg(theme == Theme::Dark));
    }
    ApplyTheme(Theme::System);
}

TEST_P(GenScadenzeTest, BlankRecordIsOfItsSide)
{
    user_.today = DateToJulian(5, 3, 2026);
    SCADENZE record;
    record.sca_importo = 9;
    record.sca_non_ultima = 0;
    CGenScadenze::Blank(Cmd(), &record, kSupplier);
    EXPECT_EQ(record.sca_relaz, kSupplier);
    EXPECT_EQ(record.sca_num, 1);
    EXPECT_EQ(record.sca_importo, 0);
    EXPECT_EQ(record.sca_non_ultima, 1);
    EXPECT_EQ(record.sca_data, user_.today);
    EXPECT_EQ(record.sca_emessa, user_.today);
    EXPECT_EQ(record.label, "Fornitore");
    CGenScadenze::Blank(Cmd(), &record, kCustomer);
    EXPECT_EQ(record.label, "Cliente..");
}

INSTANTIATE_TEST_SUITE_P(Engines, GenScadenzeTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

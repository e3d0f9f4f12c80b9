#include "einvoice/ui/RegistraFatture.h"

#include "ledger/ui/PNota.h"
#include "tarvodlg/widgets/Fields.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tests/einvoice/InvoiceFixture.h"
#include "tests/tables_ui/TablesWindowTest.h"

#include <QAbstractButton>
#include <QSettings>
#include <QTest>
#include <QTimer>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

enum Column : long { kTaken = 1, kDate, kNumber, kName, kCausale, kVat, kTotal, kInstalments, kState };

class RegistraFattureTest : public TablesWindowTest {
  protected:
    void SetUp() override
    {
        TablesWindowTest::SetUp();
        QSettings().clear();
        CDateField::SetFiscalYear(2026);
    }
    void TearDown() override
    {
        CDateField::SetFiscalYear(0);
        TablesWindowTest::TearDown();
    }

    void File(const std::string &number, const std::string &date, const std::string &vat = "02565617350")
    {
        InvoiceSpec spec;
        spec.number = number;
        spec.date = date;
        spec.seller_vat = spec.seller_fiscal_code = vat;
        const ImportResult result = ImportInvoice(Cmd(), number, "prova.xml", InvoiceText(spec));
        EXPECT_EQ(result.outcome, ImportOutcome::Loaded) << result.text;
    }
    /// Three that are ready and one of an unknown seller, which comes second by date.
    void FileFour()
    {
        File("1", "2026-03-01");
        File("2", "2026-03-02", "01251347207");
        File("3", "2026-03-03");
        File("4", "2026-03-04");
    }

    static CSpreadSheet *Grid(const QWidget &window) { return window.findChild<CSpreadSheet *>(); }
    /// Opens the window and waits until it has looked at the invoices.
    static void OpenList(CRegistraFatture *window)
    {
        keys::Open(window);
        EXPECT_TRUE(QTest::qWaitFor(
            [window] { return Shows(*window, "Nessuna fattura da registrare") || Grid(*window)->RowCount() > 0; }));
        keys::Settle();
    }
    static std::string Sum(const QWidget &window, const char *name)
    {
        for (const auto *label : window.findChildren<QLabel *>())
            if (label->accessibleName() == name) return label->text().toStdString();
        return "no sum of that name";
    }
    /// "SI 1" for each row.
    static std::vector<std::string> Taken(const QWidget &window)
    {
        std::vector<std::string> rows;
        for (long row = 1; row <= Grid(window)->RowCount(); ++row)
            rows.push_back(Grid(window)->Text(row, kTaken) + " " + Grid(window)->Text(row, kNumber));
        return rows;
    }
    static bool IsEnabled(const QWidget &window, const char *caption)
    {
        for (const auto *button : window.findChildren<QAbstractButton *>())
            if (button->text().contains(caption)) return button->isEnabled();
        ADD_FAILURE() << "no button " << caption;
        return false;
    }
    std::string Entries() { return Value("SELECT COUNT(*) FROM admin.pnota1"); }
};

INSTANTIATE_TEST_SUITE_P(Engines, RegistraFattureTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(RegistraFattureTest, MarkedLinesAreStoredAndTheOthersSayWhyNot)
{
    FileFour();
    CRegistraFatture window(nullptr);
    OpenList(&window);
    EXPECT_THAT(Taken(window), ElementsAre("SI 1", " 2", "SI 3", "SI 4"));
    EXPECT_TRUE(Shows(window, "3 pronte, 1 da completare"));
    EXPECT_EQ(Grid(window)->Text(2, kState), "Fornitore non individuato.");
    EXPECT_EQ(Grid(window)->Text(1, kVat), "22");
    EXPECT_EQ(Grid(window)->Text(1, kTotal), "122,00");
    EXPECT_EQ(Grid(window)->Long(1, kInstalments), 2);
    EXPECT_EQ(Sum(window, "Da registrare"), "3");
    EXPECT_EQ(Sum(window, "Totale"), "366,00");
    EXPECT_EQ(Sum(window, "Scadenze"), "6");

    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Space);
    EXPECT_EQ(user_.beeps, 1) << "it is not ready";
    EXPECT_EQ(Sum(window, "Stato della fattura"), "Fornitore non individuato.") << "in full below the list";
    keys::Press(Qt::Key_Down);
    keys::Press(Qt::Key_Space);
    EXPECT_THAT(Taken(window), ElementsAre("SI 1", " 2", " 3", "SI 4"));
    EXPECT_EQ(Sum(window, "Totale"), "244,00");
    EXPECT_EQ(Entries(), "0");

    keys::Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "2");
    EXPECT_EQ(window.m_registered, 2);
    EXPECT_TRUE(Shows(window, "2 registrate, 1 pronta, 1 da completare"));
    EXPECT_EQ(Grid(window)->Text(1, kState), "Registrata: movimento 1, protocollo 1");
    EXPECT_EQ(Grid(window)->Text(3, kState), "Pronta");
    EXPECT_EQ(Grid(window)->Text(4, kState), "Registrata: movimento 2, protocollo 2");
    EXPECT_EQ(Sum(window, "Da registrare"), "0");
    EXPECT_FALSE(IsEnabled(window, "F2"));

    keys::Press(Qt::Key_F5);
    EXPECT_THAT(Taken(window), ElementsAre(" 2", "SI 3")) << "only what is left";
    keys::Press(Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

TEST_P(RegistraFattureTest, AllOrNoneAreTakenWithOneKey)
{
    FileFour();
    CRegistraFatture window(nullptr);
    OpenList(&window);
    keys::Press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_THAT(Taken(window), ElementsAre(" 1", " 2", " 3", " 4"));
    EXPECT_EQ(Sum(window, "Totale"), "0,00");
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(Entries(), "0");
    keys::Press(Qt::Key_A, Qt::ControlModifier);
    EXPECT_THAT(Taken(window), ElementsAre("SI 1", " 2", "SI 3", "SI 4"));
}

/// Presses the key as soon as the window shows the text, from within what it is doing.
void PressWhen(const QWidget &window, const char *text, int key)
{
    auto *timer = new QTimer(const_cast<QWidget *>(&window));
    QObject::connect(timer, &QTimer::timeout, timer, [&window, timer, text, key] {
        for (const auto *label : window.findChildren<QLabel *>()) {
            if (!label->text().startsWith(text)) continue;
            timer->stop();
            keys::Press(key);
            return;
        }
    });
    timer->start(0);
}

TEST_P(RegistraFattureTest, EscBreaksTheRunOffBetweenTwoInvoices)
{
    FileFour();
    CRegistraFatture window(nullptr);
    OpenList(&window);
    PressWhen(window, "Registrazione 1 di 3", Qt::Key_Escape);
    keys::Press(Qt::Key_F2);
    EXPECT_TRUE(window.isVisible()) << "it broke the run off and did not close";
    EXPECT_EQ(Entries(), "1");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze"), "2") << "the one that was stored is whole";
    EXPECT_TRUE(Shows(window, "Interrotto: 1 registrata, 2 pronte, 1 da completare"));
    EXPECT_THAT(Taken(window), ElementsAre(" 1", " 2", "SI 3", "SI 4"));
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "3") << "and goes on";
    EXPECT_TRUE(Shows(window, "3 registrate, 1 da completare"));
}

TEST_P(RegistraFattureTest, KeysPressedDuringTheRunDoNothing)
{
    FileFour();
    CRegistraFatture window(nullptr);
    OpenList(&window);
    PressWhen(window, "Registrazione 1 di 3", Qt::Key_F2);
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "3") << "each once";
}

TEST_P(RegistraFattureTest, RefusedLineKeepsItsReasonAndOthersAreStored)
{
    FileFour();
    CRegistraFatture window(nullptr);
    OpenList(&window);
    ASSERT_TRUE(RegisterInvoice(Cmd(), 3, 0, 0, {}).registered); // at another station
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(window.m_registered, 2);
    EXPECT_EQ(Grid(window)->Text(3, kState), "Già registrata il 03/03/2026.");
    EXPECT_TRUE(Shows(window, "2 registrate, 2 da completare"));
}

TEST_P(RegistraFattureTest, ArchiveThatFailsIsShownAndTheWindowStaysUsable)
{
    FileFour();
    CRegistraFatture window(nullptr);
    OpenList(&window);
    Run("CREATE UNIQUE INDEX prova_una ON admin.scadenze (sca_rata)");
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(user_.shown.size(), 1u);
    EXPECT_NE(user_.Faults(), "") << "the error of the database, whose words differ between the engines";
    user_ = ScriptedUserInterface();
    EXPECT_EQ(window.m_registered, 1);
    EXPECT_TRUE(Shows(window, "1 registrata, 2 pronte, 1 da completare"));
    Run("DROP INDEX admin.prova_una");
    keys::Press(Qt::Key_F2);
    EXPECT_EQ(window.m_registered, 3);
}

TEST_P(RegistraFattureTest, LineThatNeedsAnAnswerGoesThroughTheEditor)
{
    File("1", "2026-03-01");
    File("2", "2026-03-02", "06045677173"); // supplier 2
    Run("UPDATE admin.fornito1 SET for_pag = NULL WHERE for_codice = 2");
    CRegistraFatture window(nullptr);
    OpenList(&window);
    EXPECT_EQ(Grid(window)->Text(2, kState), "Nessuna modalità di pagamento impostata sul fornitore.");
    keys::Press(Qt::Key_Down);
    keys::WhenNextWindowOpens([](QWidget *editor) {
        EXPECT_NE(dynamic_cast<CPNota *>(editor), nullptr) << editor->windowTitle().toStdString();
        keys::Press(Qt::Key_F2);
    });
    user_.Expect("Nessuna modalità di pagamento impostata sul fornitore!\n\nNessuna scadenza generata.");
    keys::Press(Qt::Key_F4);
    ComeBack(&window);
    EXPECT_EQ(window.m_registered, 1);
    EXPECT_THAT(Grid(window)->Text(2, kState), HasSubstr("Registrata"));
    EXPECT_EQ(Grid(window)->ActiveRow(), 2);
    EXPECT_TRUE(Shows(window, "1 registrata, 1 pronta"));
    EXPECT_THAT(Taken(window), ElementsAre("SI 1", " 2"));
}

TEST_P(RegistraFattureTest, OnlyChosenDocumentsWhenTheyAreNamed)
{
    FileFour();
    CRegistraFatture window(nullptr);
    window.m_targets = {{3, 0}, {2, 0}};
    OpenList(&window);
    EXPECT_THAT(Taken(window), ElementsAre(" 2", "SI 3"));
}

TEST_P(RegistraFattureTest, EmptyListSaysSo)
{
    CRegistraFatture window(nullptr);
    OpenList(&window);
    EXPECT_TRUE(Shows(window, "Nessuna fattura da registrare"));
    EXPECT_FALSE(IsEnabled(window, "F2"));
    EXPECT_FALSE(IsEnabled(window, "F4"));
    keys::Press(Qt::Key_Space);
    keys::Press(Qt::Key_F4);
    keys::Press(Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

} // namespace

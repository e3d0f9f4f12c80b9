// The commands of the entry editor beside storing: copy, search, integrations, archive, maintenance at its opening.
#include "tests/ledger_ui/PNotaWindowTest.h"

#include "ledger/Maintenance.h"
#include "ledger/ui/GestionePrimaNota.h"
#include "tarvolumera/Attachments.h"
#include "tarvolumera/PSQLrow.h"

#include <QMenu>
#include <QPushButton>
#include <QTimer>

namespace {

constexpr const char *kLosing = "Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?";
constexpr const char *kClosed =
    "Attenzione la data indicata ricade in un esercizio con chiusura effettuata!\n\nVuoi Continuare?";

class PNotaCommandsTest : public PNotaWindowTest {
  protected:
    /// Presses F9 and a letter of the menu that opens.
    void ChooseIntegration(const QString &letter)
    {
        QTimer timer;
        timer.setInterval(5);
        QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
            if (!QApplication::activePopupWidget()) return;
            timer.stop();
            keys::Type(letter);
            if (QWidget *menu = QApplication::activePopupWidget()) menu->close(); // the letter was nobody's
        });
        timer.start();
        Press(Qt::Key_F9);
    }
    static const QPushButton *Archive(const CPNota &editor)
    {
        for (const auto *button : editor.findChildren<QPushButton *>())
            if (button->text().startsWith("Archivio")) return button;
        return nullptr;
    }
    void CloseYear()
    {
        PNOTA closing;
        sqlpno.Blank(Cmd(), &closing);
        closing.pno_data = DateToJulian(31, 12, 2026);
        closing.pno_cau = 91;
        closing.pno_reg = kJournalOnly;
        closing.pno_operazione = kClosing;
        sqlpno.SqlTransaction(Cmd(), kInsert, &closing);
    }
};

TEST_P(PNotaCommandsTest, CopyIsANewEntryWithTheSameLines)
{
    StorePurchase("45");
    const std::string instalments = Value("SELECT COUNT(*) FROM admin.scadenze");
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    user_.beeps = 0;
    Press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(user_.beeps, 1) << "nothing to copy yet";
    Press(Qt::Key_PageUp);
    CDateField::SetWorkingDate(DateToJulian(10, 4, 2026));
    Press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_FALSE(editor.IsRecordLoaded());
    EXPECT_EQ(editor.windowTitle().toStdString(), "Prima Nota");
    EXPECT_TRUE(Shows(editor, "Copia del movimento 1"));
    EXPECT_EQ(TextOf(editor, "Movimento"), "2");
    EXPECT_EQ(TextOf(editor, "Data registrazione"), "10/04/2026");
    EXPECT_EQ(Focused(), "Documento n.");
    Enter("46");
    Enter("9/4");
    Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "2");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.pnotaro2 WHERE row_codice = 2 AND row_n_doc = '46'"
                    " AND row_d_doc = '2026-04-09'"),
              "3");
    EXPECT_EQ(Value("SELECT pno_prot FROM admin.pnota1 WHERE pno_codice = 2 AND pno_tot_doc = 122"), "2");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.scadenze WHERE sca_pno = 2"), instalments) << "its own";
}

TEST_P(PNotaCommandsTest, CopyLeavesChangesOfTheOriginalOnlyAfterYes)
{
    StorePurchase("45");
    CPNota editor(nullptr, nullptr);
    OpenOn(&editor, 1);
    Enter("99");
    user_.Expect(kLosing, IDNO);
    Press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_TRUE(editor.IsRecordLoaded());
    user_.Expect(kLosing, IDYES);
    Press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_FALSE(editor.IsRecordLoaded());
    EXPECT_EQ(TextOf(editor, "Documento n."), "45") << "of what is stored";
    user_.Expect(kLosing, IDYES);
    Press(Qt::Key_F3);
    EXPECT_EQ(TextOf(editor, "Documento n."), "");
}

TEST_P(PNotaCommandsTest, SearchBeginsAtWhatIsTypedAndAsksOnlyWhenSomethingIsChosen)
{
    for (const char *number : {"A1", "B2", "C3"}) StorePurchase(number);
    sqlpno.SetIndex(kByDocumentNumber);
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    Enter("21");
    Enter("1");
    Type("B"); // not left
    keys::WhenNextWindowOpens([&](QWidget *search) {
        EXPECT_EQ(search->findChild<CSpreadSheet *>()->Text(1, 4), "B2");
        keys::Press(Qt::Key_Escape);
    });
    Press(Qt::Key_F5);
    ComeBack(&editor);
    EXPECT_EQ(TextOf(editor, "Documento n."), "B") << "cancelled, nothing is asked and nothing lost";
    for (const int answer : {IDNO, IDYES}) {
        keys::WhenNextWindowOpens([&](QWidget *) {
            for (int presses = 0; presses < 3; ++presses) keys::Press(Qt::Key_Return);
        });
        user_.Expect(kLosing, answer);
        Press(Qt::Key_F5);
        ComeBack(&editor);
        EXPECT_EQ(editor.IsRecordLoaded(), answer == IDYES);
    }
    EXPECT_EQ(TextOf(editor, "Movimento"), "2");
    EXPECT_EQ(editor.windowTitle().toStdString(), "Modifica Prima Nota");
}

TEST_P(PNotaCommandsTest, ExportedEntryIsMarkedByTheMenuAndWarnsWhenChanged)
{
    StorePurchase("45");
    CPNota editor(nullptr, nullptr);
    OpenOn(&editor, 1);
    ChooseIntegration("e");
    ComeBack(&editor);
    EXPECT_EQ(Value("SELECT pno_trasf FROM admin.pnota1"), "1") << "at once";
    ChooseIntegration("v");
    ComeBack(&editor);
    EXPECT_EQ(Value("SELECT pno_verifica FROM admin.pnota1"), "1");
    EXPECT_FALSE(editor.IsChanged());
    const std::string warning = "Attenzione!\n\nIl movimento risulta esportato al consulente.\nPrendere nota delle "
                                "modifiche apportate e segnalarle.";
    Enter("46");
    user_.Expect(warning);
    user_.beeps = 0;
    Press(Qt::Key_F2);
    EXPECT_EQ(user_.beeps, 1);
    EXPECT_EQ(Value("SELECT pno_doc FROM admin.pnota1"), "46") << "information only";
    ChooseIntegration("e");
    ComeBack(&editor);
    EXPECT_EQ(Value("SELECT pno_trasf FROM admin.pnota1"), "0");
}

TEST_P(PNotaCommandsTest, IntegrationsOpenTheirWindows)
{
    StorePurchase("45");
    CPNota editor(nullptr, nullptr);
    OpenOn(&editor, 1);
    keys::WhenNextWindowOpens([](QWidget *window) {
        EXPECT_EQ(window->windowTitle().toStdString(), "Cointestatari del movimento n. 1");
        keys::Press(Qt::Key_Escape);
    });
    ChooseIntegration("c");
    ComeBack(&editor);
    keys::WhenNextWindowOpens([](QWidget *window) {
        EXPECT_EQ(window->windowTitle(), "Spesometro");
        keys::Type(" "); // left out of the communication
        keys::Press(Qt::Key_F2);
    });
    ChooseIntegration("s");
    ComeBack(&editor);
    Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT pno_esc_spesometro FROM admin.pnota1"), "1");
}

TEST_P(PNotaCommandsTest, DateCheckIsInTheMenuAndProposesTheYear)
{
    StorePurchase("45");
    CPNota editor(nullptr, nullptr);
    OpenOn(&editor, 1);
    for (const bool finds : {false, true}) {
        keys::WhenNextWindowOpens([&](QWidget *period) {
            EXPECT_EQ(period->windowTitle(), "Controllo Date Movimenti");
            if (finds) keys::Type("1/4");
            keys::Press(Qt::Key_Return);
            keys::Press(Qt::Key_Return);
        });
        if (finds) user_.Expect(" Trovati 8 errori!\n\nConsultare il file " + DateCheckLog().string(), IDOK);
        ChooseIntegration("d");
        ComeBack(&editor);
        EXPECT_TRUE(Shows(editor, finds ? "8 date fuori dal periodo" : "Nessuna data fuori dal periodo"));
    }
}

TEST_P(PNotaCommandsTest, ArchiveButtonCountsTheFilesOfTheEntry)
{
    StorePurchase("45");
    PNOTA_ALLEGATO file;
    file.pat_pno = 1;
    file.pat_fname = "a.txt";
    file.pat_data = ToBytes("x");
    sqlpat.Store(Cmd(), &file);
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    ASSERT_NE(Archive(editor), nullptr);
    EXPECT_FALSE(Archive(editor)->isEnabled());
    Press(Qt::Key_PageUp);
    editor.OnKickIdle();
    EXPECT_EQ(Archive(editor)->text(), "Archivio (1)");
    keys::WhenNextWindowOpens([](QWidget *window) {
        EXPECT_EQ(window->windowTitle().toStdString(), "Allegati del movimento n. 1");
        keys::Press(Qt::Key_Escape);
    });
    editor.OnClickStore();
}

TEST_P(PNotaCommandsTest, EntryOfAClosedYearIsDeletedOnlyAfterYes)
{
    StorePurchase("45");
    CloseYear();
    CPNota editor(nullptr, nullptr);
    OpenOn(&editor, 1);
    for (const int answer : {IDNO, IDYES}) {
        user_.Expect("Vuoi veramente eliminare il movimento n. 1 del 15/03/2026?", IDYES);
        user_.Expect(kClosed, answer);
        Press(Qt::Key_F6);
        EXPECT_EQ(Entries(), answer == IDYES ? "1" : "2");
    }
    EXPECT_EQ(TextOf(editor, "Movimento"), "2");
}

TEST_P(PNotaCommandsTest, DateThatGoesBackwardsIsHintedAtWithoutAQuestion)
{
    StorePurchase("45");
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    while (Focused() != "Data registrazione") Press(Qt::Key_Backtab, Qt::ShiftModifier);
    Enter("12/3");
    while (Focused() != "Causale") Press(Qt::Key_Tab);
    TypePurchase("46", "122");
    EXPECT_EQ(VatLine(editor, 1), "22 100,00 22,00");
    EXPECT_TRUE(Shows(editor, "Date non in ordine: il protocollo 1 del registro ACQUISTI è del 15/03/2026"));
    while (Focused() != "Data registrazione") Press(Qt::Key_Backtab, Qt::ShiftModifier);
    Enter("15/3");
    EXPECT_TRUE(Shows(editor, "Il movimento quadra"));
    Press(Qt::Key_F2);
    EXPECT_EQ(Entries(), "2");
}

TEST_P(PNotaCommandsTest, StoredEntryKeepsItsProtocolOnScreenWhenItsDateMovesWithinTheYear)
{
    for (const char *number : {"1", "2"}) StorePurchase(number);
    CPNota editor(nullptr, nullptr);
    OpenOn(&editor, 1);
    while (Focused() != "Data registrazione") Press(Qt::Key_Backtab, Qt::ShiftModifier);
    Enter("14/3");
    EXPECT_EQ(TextOf(editor, "Protocollo"), "1");
    Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT pno_prot FROM admin.pnota1 WHERE pno_data = '2026-03-14'"), "1");
}

TEST_P(PNotaCommandsTest, CausaleWithoutCounterpartShowsNobody)
{
    CPNota editor(nullptr, nullptr);
    keys::Open(&editor);
    Enter("21");
    Enter("1");
    while (Focused() != "Causale") Press(Qt::Key_Backtab, Qt::ShiftModifier);
    Enter("61");
    EXPECT_EQ(TextOf(editor, "Fornitore"), "");
    while (Focused() != "Causale") Press(Qt::Key_Backtab, Qt::ShiftModifier);
    Enter("21");
    EXPECT_EQ(TextOf(editor, "Fornitore"), "1") << "the slip cost nothing";
    editor.SetChanged(false);
}

TEST_P(PNotaCommandsTest, RenumberedAtItsOpeningTheEditorStaysOnItsEntry)
{
    StorePurchase("late");
    CDateField::SetWorkingDate(DateToJulian(12, 3, 2026));
    StorePurchase("early");
    CGestionePrimaNota list(nullptr);
    list.LoadTable(nullptr, false);
    Run("UPDATE admin.ditte SET dit_manutenzione = 1");
    lumera_db_impo.dit_manutenzione = 1;
    user_.Expect("Vuoi Controllare le date dei Movimenti di Prima Nota ?", IDNO);
    user_.Expect("Vuoi Rinumerare i Movimenti di Prima Nota ?", IDYES);
    user_.Expect("Vuoi riscrivere tutti i movimenti ?", IDYES);
    user_.Expect("Vuoi Importare le fattura dai log Della Stampante Fiscale EPSON FP?", IDNO);
    CPNota editor(&list, nullptr);
    OpenOn(&editor, 1);
    EXPECT_EQ(TextOf(editor, "Movimento"), "2");
    EXPECT_EQ(TextOf(editor, "Documento n."), "late");
    Enter("46");
    Press(Qt::Key_F2);
    EXPECT_EQ(Value("SELECT pno_doc FROM admin.pnota1 WHERE pno_codice = 2"), "46");
    EXPECT_EQ(list.RowOf(2), 1) << "the newest date first";
}

INSTANTIATE_TEST_SUITE_P(Engines, PNotaCommandsTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

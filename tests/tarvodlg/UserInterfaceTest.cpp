#include "tarvodlg/base/UserInterface.h"

#include <algorithm>
#include <cstdlib>
#include <pty.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tarvodlg/base/ConsoleUserInterface.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tarvodlg/base/TarvoProgressDlg.h"

namespace {

constexpr unsigned kAskNo = MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2;

TEST(DefaultAnswer, FollowsTheFlags)
{
    EXPECT_EQ(DefaultAnswer(MB_OK | MB_ICONSTOP), IDOK);
    EXPECT_EQ(DefaultAnswer(MB_YESNO), IDYES);
    EXPECT_EQ(DefaultAnswer(kAskNo), IDNO);
    EXPECT_EQ(DefaultAnswer(MB_YESNO | MB_DEFBUTTON3), IDNO); // no third button: never the Yes
    EXPECT_EQ(DefaultAnswer(MB_YESNOCANCEL), IDYES);
    EXPECT_EQ(DefaultAnswer(MB_YESNOCANCEL | MB_DEFBUTTON2), IDNO);
    EXPECT_EQ(DefaultAnswer(MB_YESNOCANCEL | MB_DEFBUTTON3 | MB_ICONSTOP), IDCANCEL);
}

/// A console whose lines the test reads.
class ConsoleTest : public testing::Test {
  protected:
    ~ConsoleTest() override
    {
        std::fclose(out_);
        std::free(buffer_);
    }
    std::string Printed()
    {
        std::fflush(out_);
        return {buffer_, size_};
    }

    char *buffer_ = nullptr;
    std::size_t size_ = 0;
    std::FILE *out_ = open_memstream(&buffer_, &size_);
    ConsoleUserInterface console{out_};
};

TEST_F(ConsoleTest, PrintsOneLineAndTheAnswerTaken)
{
    EXPECT_EQ(console.MessageBox("Data esterna all' esercizio !\n\nVuoi Continuare ?", kAskNo), IDNO);
    EXPECT_EQ(console.MessageBox("Fatto\r\n", MB_OK | MB_ICONINFORMATION), IDOK);
    EXPECT_EQ(Printed(), "Data esterna all' esercizio ! Vuoi Continuare ? -> No\nFatto\n");
}

TEST_F(ConsoleTest, AnswersYesWhenTold)
{
    console.answer_yes = true;
    EXPECT_EQ(console.MessageBox("Elimino ?", kAskNo), IDYES);
    EXPECT_EQ(console.MessageBox("Quale ?", MB_YESNOCANCEL | MB_DEFBUTTON3), IDCANCEL); // has an answer of its own
    EXPECT_EQ(Printed(), "Elimino ? -> Sì\nQuale ? -> Annulla\n");
}

TEST_F(ConsoleTest, TakesTheChoiceForThreeButtonsOnly)
{
    console.answer_choice = IDNO;
    EXPECT_EQ(console.MessageBox("Quale ?", MB_YESNOCANCEL), IDNO);
    EXPECT_EQ(console.MessageBox("Certo ?", MB_YESNO), IDYES);
    console.answer_choice = IDOK; // not one of the three
    EXPECT_EQ(console.MessageBox("Quale ?", MB_YESNOCANCEL | MB_DEFBUTTON3), IDCANCEL);
}

TEST_F(ConsoleTest, RemembersTheLastRefusal)
{
    console.MessageBox("Avviso", MB_OK | MB_ICONEXCLAMATION);
    EXPECT_EQ(console.LastRefusal(), "");
    console.MessageBox("Causale errata !", MB_OK | MB_ICONSTOP);
    console.MessageBox("Fatto", MB_OK);
    EXPECT_EQ(console.LastRefusal(), "Causale errata !");
    console.MessageBox("Non quadra !\n\nVuoi Continuare ?", kAskNo | MB_ICONSTOP);
    console.answer_yes = true;
    console.MessageBox("Altro ?", kAskNo | MB_ICONSTOP);
    EXPECT_EQ(console.LastRefusal(), "Non quadra !\n\nVuoi Continuare ?");
}

TEST_F(ConsoleTest, QuietKeepsQuestionsAndErrors)
{
    console.quiet = true;
    console.MessageBox("Fatto", MB_OK | MB_ICONINFORMATION);
    console.MessageBox("Fatto", MB_OK);
    console.MessageBox("Avviso", MB_OK | MB_ICONEXCLAMATION);
    console.MessageBox("Errore", MB_OK | MB_ICONERROR);
    console.MessageBox("Certo ?", kAskNo);
    EXPECT_EQ(Printed(), "Avviso\nErrore\nCerto ? -> No\n");
}

TEST_F(ConsoleTest, WritesNothingOfProgressAndBellIntoAFile)
{
    const auto view = console.OpenProgress("Attendere...");
    view->SetRange(0, 10);
    view->SetPosition(5);
    console.Beep(1000, 10);
    EXPECT_EQ(console.beeps, 1);
    EXPECT_EQ(Printed(), "");
}

TEST(ConsoleOnATerminal, WritesTheAdvanceOverItselfAndMessagesOnCleanLines)
{
    int master = -1;
    int slave = -1;
    ASSERT_EQ(openpty(&master, &slave, nullptr, nullptr, nullptr), 0);
    std::FILE *terminal = fdopen(slave, "w");
    {
        ConsoleUserInterface console(terminal);
        const auto view = console.OpenProgress("Attendere...");
        view->SetStatus("Controllo\ndati");
        view->SetRange(0, 1000);
        for (const long position : {1L, 2L, 9L, 10L, 2000L})
            view->SetPosition(position); // shown when the percentage moves
        console.MessageBox("Fatto", MB_OK);
        console.Beep(1000, 10);
    }
    std::fclose(terminal);
    std::string shown; // comes in pieces; the end of the other side reads as an error
    char bytes[256];
    for (ssize_t got = 0; (got = read(master, bytes, sizeof bytes)) > 0;)
        shown.append(bytes, static_cast<std::size_t>(got));
    close(master);
    const std::string e = "\r\033[K";
    EXPECT_EQ(shown, e + "Attendere..." + e + "Attendere... Controllo dati" + e + "Attendere... Controllo dati 0%" + e +
                         "Attendere... Controllo dati 1%" + e + "Attendere... Controllo dati 100%" + e + "Fatto\r\n\a" +
                         e);
}

TEST_F(ConsoleTest, KnowsWhoAndWhen)
{
    console.today = 2461041;
    EXPECT_EQ(console.Today(), 2461041);
    console.today.reset();
    EXPECT_GT(console.Today(), DateToJulian(1, 1, 2025));
    EXPECT_GE(console.SecondOfDay(), 0);
    EXPECT_LE(console.SecondOfDay(), 86399);
    EXPECT_NE(console.UserName(), "");
    EXPECT_TRUE(console.PickFiles({}).empty());
    EXPECT_EQ(console.PickDate("Data", 2461041), std::nullopt);
}

TEST(Scripted, IsContentWhenAllComesInOrder)
{
    ScriptedUserInterface ui;
    UserInterface *before = SetUserInterface(&ui);
    ui.Expect("Certo ?", IDYES);
    ui.ExpectDate("Data di stampa", 2461041);
    ui.ExpectFiles({"a.xml", "b.xml"});
    ui.ExpectFolder("cartella");
    ui.ExpectYear("Anno", std::nullopt);
    EXPECT_EQ(AfxMessageBox("Certo ?", kAskNo), IDYES);
    EXPECT_EQ(ui.PickDate("Data di stampa", 0), 2461041);
    EXPECT_EQ(ui.PickFiles({}).size(), 2U);
    EXPECT_EQ(ui.PickFolder("Dove"), "cartella");
    EXPECT_EQ(ui.PickYear("Anno", 2026), std::nullopt);
    BeepRefused();
    EXPECT_EQ(ui.beeps, 1);
    EXPECT_EQ(ui.Faults(), "");
    EXPECT_EQ(FormatIsoDate(ui.Today()), "2026-06-01");
    EXPECT_EQ(SetUserInterface(before), &ui);
}

TEST(Scripted, TellsEveryFaultOnce)
{
    ScriptedUserInterface ui;
    ui.Expect("Prima");
    ui.Expect("Seconda ?", IDOK);
    ui.Expect("Terza");
    EXPECT_EQ(ui.MessageBox("Imprevista ?", kAskNo), IDNO);
    EXPECT_EQ(ui.MessageBox("Seconda ?", kAskNo), IDNO);
    EXPECT_EQ(ui.Faults(), "unexpected: MessageBox: Imprevista ?\n"
                           "left out: MessageBox: Prima\n"
                           "answer 1 is no button of: Seconda ?\n"
                           "never came: MessageBox: Terza\n");
    EXPECT_EQ(ui.shown, (std::vector<std::string>{"Imprevista ?", "Seconda ?"}));
    EXPECT_EQ(ui.flags.front(), kAskNo);
}

/// Keeps what a window would show.
struct Advance : ScriptedUserInterface {
    struct View : ProgressView {
        explicit View(Advance *to) : advance(to) {}
        ~View() override { advance->log += "closed"; }
        void SetStatus(const std::string &text) override { advance->log += text + ' '; }
        void SetRange(long first, long last) override
        {
            advance->log += std::to_string(first) + ".." + std::to_string(last) + ' ';
        }
        void SetPosition(long position) override { advance->log += std::to_string(position) + ' '; }
        Advance *advance;
    };
    std::unique_ptr<ProgressView> OpenProgress(const std::string &title) override
    {
        log += title + ' ';
        return std::make_unique<View>(this);
    }
    std::string log;
};

TEST(Progress, CountsFromTheStartOfItsRangeAndClosesOnce)
{
    Advance ui;
    UserInterface *before = SetUserInterface(&ui);
    {
        CTarvoProgressDlg progress;
        progress.SetStatus("Controllo");
        progress.SetRange(5, 9);
        progress.StepIt();
        progress.SetPos(8);
        progress.StepIt();
        progress.Close();
        progress.StepIt(); // work that goes on after the window
    }
    SetUserInterface(before);
    EXPECT_EQ(ui.log, "Attendere... Controllo 5..9 6 8 9 closed");
}

TEST(Dbisam, ShowsTheNumberedTextWithItsTag)
{
    ScriptedUserInterface ui;
    UserInterface *before = SetUserInterface(&ui);
    DBISAM(20024, "PNota:2227");
    DBISAM(20024, "");
    DBISAM(99999, nullptr);
    EXPECT_EQ(DBISAM(20025, "PNota:2300", MB_YESNO | MB_ICONSTOP | MB_DEFBUTTON2), IDNO);
    SetUserInterface(before);
    ASSERT_EQ(ui.shown.size(), 4U);
    EXPECT_EQ(ui.shown[0], "Data esterna all' esercizio consentito !\n\n[PNota:2227]");
    EXPECT_EQ(ui.shown[1], "Data esterna all' esercizio consentito !");
    EXPECT_EQ(ui.shown[2], "Errore n. 99999");
    EXPECT_TRUE(ApplicationMessage(20025).ends_with("\n\nVuoi Continuare ?"));
    EXPECT_EQ(ui.flags[0], MB_OK | MB_ICONSTOP);
}

TEST(Dbisam, HasATextOfItsOwnForEveryNumberInUse)
{
    std::vector<std::string> texts;
    for (const int number :
         {20006, 20024, 20025, 20031, 20060, 20073, 20104, 20105, 20106, 20107, 20108, 20140, 20152}) {
        const std::string text = ApplicationMessage(number);
        EXPECT_FALSE(text.starts_with("Errore n.")) << number;
        EXPECT_EQ(std::count(texts.begin(), texts.end(), text), 0) << number;
        texts.push_back(text);
    }
}

} // namespace

#include "tarvodlg/widgets/QtUserInterface.h"

#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/widgets/Field.h"
#include "tests/support/WindowKeys.h"

#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

namespace {

struct BoxCase {
    const char *name;
    unsigned flags;
    QStringList buttons;
    const char *default_button;
    int key, answer;
};
void PrintTo(const BoxCase &c, std::ostream *out)
{
    *out << c.name;
}

class MessageBoxTest : public testing::TestWithParam<BoxCase> {};

TEST_P(MessageBoxTest, ShowsTheTextAndAnswersByKey)
{
    const std::string text = "Cliente <b>Rossi</b> & C.\n\nVuoi Continuare ?";
    QStringList buttons;
    QString shown, default_button;
    keys::WhenNextWindowOpens([&](QWidget *window) {
        auto *box = qobject_cast<QMessageBox *>(window);
        ASSERT_TRUE(box);
        shown = box->text();
        EXPECT_EQ(box->textFormat(), Qt::PlainText);
        EXPECT_EQ(box->windowTitle(), "Lumera Contabilità");
        EXPECT_EQ(box->iconPixmap().isNull(), (GetParam().flags & 0xF0) == 0);
        for (const QAbstractButton *button : box->buttons()) buttons << button->text();
        default_button = box->defaultButton()->text();
        EXPECT_EQ(box->focusWidget(), box->defaultButton());
        keys::Press(GetParam().key);
        const QPointer<QWidget> open(box); // a letter presses its button visibly, which takes a moment
        EXPECT_TRUE(QTest::qWaitFor([open] { return !open || !open->isVisible(); }, 2000));
    });
    QtUserInterface windows;
    EXPECT_EQ(windows.MessageBox(text, GetParam().flags), GetParam().answer);
    EXPECT_EQ(FromQt(shown), text);
    buttons.sort();
    EXPECT_EQ(buttons, GetParam().buttons);
    EXPECT_EQ(default_button, GetParam().default_button);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MessageBoxTest,
    testing::Values( // name, flags, buttons, default, key, answer
        BoxCase{"EnterTakesTheDefault", MB_YESNO | MB_DEFBUTTON2, {"&No", "&Sì"}, "&No", Qt::Key_Return, IDNO},
        BoxCase{"FirstIsDefaultUnlessSaid", MB_YESNO, {"&No", "&Sì"}, "&Sì", Qt::Key_Return, IDYES},
        BoxCase{"LetterS", MB_YESNO | MB_ICONINFORMATION | MB_DEFBUTTON2, {"&No", "&Sì"}, "&No", Qt::Key_S, IDYES},
        BoxCase{"LetterN", MB_YESNO | MB_ICONEXCLAMATION, {"&No", "&Sì"}, "&Sì", Qt::Key_N, IDNO},
        BoxCase{"EscIsNo", MB_YESNO | MB_ICONQUESTION, {"&No", "&Sì"}, "&Sì", Qt::Key_Escape, IDNO},
        BoxCase{"EscIsCancel", MB_YESNOCANCEL, {"&Annulla", "&No", "&Sì"}, "&Sì", Qt::Key_Escape, IDCANCEL},
        BoxCase{
            "ThirdDefault", MB_YESNOCANCEL | MB_DEFBUTTON3, {"&Annulla", "&No", "&Sì"}, "&Annulla", Qt::Key_N, IDNO},
        BoxCase{"EscIsOk", MB_OK | MB_ICONERROR, {"OK"}, "OK", Qt::Key_Escape, IDOK}),
    [](const auto &p) { return std::string(p.param.name); });

TEST(ProgressWindowTest, ShowsWhereTheRunIsAndCannotBeClosed)
{
    QtUserInterface windows;
    UserInterface *before = SetUserInterface(&windows);
    {
        CTarvoProgressDlg progress;
        QWidget *window = QApplication::activeModalWidget();
        ASSERT_TRUE(window);
        EXPECT_EQ(window->windowTitle(), "Attendere...");
        EXPECT_TRUE(window->findChildren<QAbstractButton *>().isEmpty());
        progress.SetStatus("Controllo dati corso...");
        EXPECT_EQ(window->findChild<QLabel *>()->text(), "Controllo dati corso...");
        auto *bar = window->findChild<QProgressBar *>();
        EXPECT_EQ(bar->maximum(), 0); // not known yet
        progress.SetRange(0, 3000000000);
        progress.SetPos(3000000000);
        EXPECT_EQ(bar->value(), bar->maximum());
        window->close();
        QTest::keyClick(window, Qt::Key_Escape);
        EXPECT_TRUE(window->isVisible());
    }
    EXPECT_FALSE(QApplication::activeModalWidget());
    SetUserInterface(before);
}

TEST(PickFilesTest, OffersTheFiltersAndAddsTheExtension)
{
    QStringList filters;
    QString suffix_first, suffix_second;
    keys::WhenNextWindowOpens([&](QWidget *window) {
        auto *dialog = qobject_cast<QFileDialog *>(window);
        ASSERT_TRUE(dialog);
        filters = dialog->nameFilters();
        suffix_first = dialog->defaultSuffix();
        dialog->selectNameFilter(filters.last());
        Q_EMIT dialog->filterSelected(filters.last());
        suffix_second = dialog->defaultSuffix();
        dialog->reject();
    });
    FilePicking picking;
    picking.title = "Esporta";
    picking.filter = "Foglio Excel (*.xlsx)|*.xlsx|Testi|*.csv;*.txt||";
    picking.default_extension = "xlsx";
    picking.proposed = "elenco.xlsx";
    picking.save = true;
    EXPECT_TRUE(QtUserInterface().PickFiles(picking).empty());
    EXPECT_EQ(filters, (QStringList{"Foglio Excel (*.xlsx)", "Testi (*.csv *.txt)"}));
    EXPECT_EQ(suffix_first, "xlsx");
    EXPECT_EQ(suffix_second, "csv");
}

} // namespace

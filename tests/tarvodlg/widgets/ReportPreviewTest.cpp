#include "tarvodlg/widgets/ReportPreview.h"

#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tarvodlg/print/Printer.h"
#include "tarvolumera/Company.h"
#include "tests/support/WindowKeys.h"

#include <QLabel>
#include <QPushButton>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

/// Five pages of text, without rows to go on with.
class ReportPreviewTest : public testing::Test {
  protected:
    void SetUp() override
    {
        previous_ = SetUserInterface(&user_);
        std::filesystem::create_directories(folder_);
        lumera_db_folder = folder_;
        CPrinter print;
        print.Open("Prova", 80, 66, {ReportTarget::Pdf, Pdf()});
        for (int page = 1; page <= 5; ++page) {
            if (page > 1) print.NewPage();
            print.Print(40, 10, page == 4 ? "Ditta Però & C." : "altro");
        }
        print.Close();
        request_.title = "Prova: a/b";
        window_ = std::make_unique<CReportPreview>(request_, Pdf());
    }
    void TearDown() override
    {
        window_.reset();
        lumera_db_folder.clear();
        std::filesystem::remove_all(folder_);
        SetUserInterface(previous_);
        EXPECT_EQ(user_.Faults(), "");
    }
    std::filesystem::path Pdf() const { return folder_ / "pagine.pdf"; }
    QString Status() const
    {
        for (const QLabel *label : window_->findChildren<QLabel *>())
            if (label->text().startsWith("Pagina")) return label->text();
        return {};
    }
    /// Runs the window as its caller does, with these keys typed in it.
    void InWindow(std::function<void()> steps)
    {
        keys::WhenNextWindowOpens([steps = std::move(steps)](QWidget *window) {
            steps();
            window->close();
        });
        window_->DoModal();
    }

    const std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / ("lumera-anteprima-" + std::to_string(getpid()));
    ScriptedUserInterface user_;
    UserInterface *previous_ = nullptr;
    ReportRequest request_;
    std::unique_ptr<CReportPreview> window_;
};

TEST_F(ReportPreviewTest, TurnsPagesAndZoomsByKey)
{
    InWindow([this] {
        EXPECT_EQ(window_->Pages(), 5);
        EXPECT_EQ(window_->Page(), 0);
        const double fitted = window_->Zoom();
        keys::Press(Qt::Key_End);
        EXPECT_EQ(window_->Page(), 4);
        keys::Type("+");
        EXPECT_NEAR(window_->Zoom(), fitted * 1.2, 0.01);
        EXPECT_EQ(window_->Page(), 4) << "zooming stays on the page";
        keys::Type("-");
        keys::Type("-");
        EXPECT_NEAR(window_->Zoom(), fitted / 1.2, 0.01);
        keys::Type("0");
        EXPECT_NEAR(window_->Zoom(), fitted, 0.01);
        keys::Press(Qt::Key_Home);
        EXPECT_EQ(window_->Page(), 0);
        window_->OnKickIdle();
        EXPECT_TRUE(Status().startsWith("Pagina 1 di 5 - ")) << Status().toStdString();
    });
}

TEST_F(ReportPreviewTest, FindsWordsWhateverTheirCase)
{
    InWindow([this] {
        keys::Press(Qt::Key_F, Qt::ControlModifier);
        keys::Type("per\u00f2 &");
        keys::Press(Qt::Key_Return);
        EXPECT_EQ(window_->Page(), 3);
        keys::Press(Qt::Key_Escape); // leaves the field, not the window
        EXPECT_TRUE(window_->isVisible());
        keys::Press(Qt::Key_Home);
        keys::Press(Qt::Key_F, Qt::ControlModifier);
        keys::Type("introvabile");
        keys::Press(Qt::Key_Return);
        EXPECT_EQ(window_->Page(), 0);
        EXPECT_EQ(user_.beeps, 1);
    });
}

TEST_F(ReportPreviewTest, SavesThePagesAndHasNoRows)
{
    const std::filesystem::path copy = folder_ / "copia.pdf";
    user_.ExpectFiles({copy});
    InWindow([this] {
        window_->OnKickIdle();
        for (const QPushButton *button : window_->findChildren<QPushButton *>()) {
            const bool is_rows = button->text().contains("xcel") || button->text().contains("CSV");
            EXPECT_EQ(button->isEnabled(), !is_rows) << button->text().toStdString();
        }
        keys::Press(Qt::Key_F5);
        keys::Press(Qt::Key_Escape);
        EXPECT_FALSE(window_->isVisible());
    });
    EXPECT_EQ(ReadWholeFile(copy, 1 << 20), ReadWholeFile(Pdf(), 1 << 20));
}

TEST_F(ReportPreviewTest, PagesThatAreGoneReplaceNoFile)
{
    const std::filesystem::path copy = folder_ / "copia.pdf";
    WriteFileWhole(copy, "di ieri");
    for (const bool is_folder : {false, true}) {
        user_.ExpectFiles({copy});
        user_.Expect("Impossibile leggere le pagine di \"Prova: a/b\"");
        InWindow([&] {
            std::filesystem::rename(Pdf(), folder_ / "altrove.pdf");
            if (is_folder) std::filesystem::create_directory(Pdf()); // opens, and cannot be read
            keys::Press(Qt::Key_F5);
            keys::Press(Qt::Key_Escape);
            if (is_folder) std::filesystem::remove(Pdf());
            std::filesystem::rename(folder_ / "altrove.pdf", Pdf());
        });
        EXPECT_EQ(ReadWholeFile(copy, 1 << 20), "di ieri");
    }
}

TEST_F(ReportPreviewTest, DoesNotOpenWithoutPages)
{
    std::filesystem::remove(Pdf());
    user_.Expect("Impossibile leggere le pagine di \"Prova: a/b\"");
    EXPECT_EQ(window_->DoModal(), IDCANCEL);
}

} // namespace

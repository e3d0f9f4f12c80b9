#include "tables/ui/Azienda.h"
#include "tables/ui/PianoContiEd.h"
#include "tests/tables_ui/TablesWindowTest.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QToolBar>
#include <map>

namespace {

/// Everything that Alt with a letter could mean in the window as it stands.
std::vector<QString> Captions(const QWidget &window)
{
    std::vector<QString> captions;
    for (const auto *bar : window.findChildren<QToolBar *>())
        for (const QAction *action : bar->actions()) captions.push_back(action->text());
    for (const auto *bar : window.findChildren<QTabBar *>())
        for (int i = 0; i < bar->count(); ++i) captions.push_back(bar->tabText(i));
    const auto add_shown = [&](const QWidget *widget, const QString &text) {
        if (widget->isVisibleTo(&window)) captions.push_back(text);
    };
    for (const auto *label : window.findChildren<QLabel *>())
        if (label->buddy()) add_shown(label, label->text());
    for (const auto *flag : window.findChildren<QCheckBox *>()) add_shown(flag, flag->text());
    for (const auto *button : window.findChildren<QPushButton *>()) add_shown(button, button->text());
    return captions;
}

class MnemonicsTest : public TablesWindowTest {
  protected:
    static void CheckShown(const QWidget &window)
    {
        std::map<QString, QString> owners;
        for (const QString &caption : Captions(window)) {
            const QString key = QKeySequence::mnemonic(caption).toString();
            if (key.isEmpty()) continue;
            const auto [owner, is_new] = owners.emplace(key, caption);
            EXPECT_TRUE(is_new) << window.windowTitle().toStdString() << ", " << key.toStdString() << ": "
                                << owner->second.toStdString() << " / " << caption.toStdString();
        }
        EXPECT_FALSE(owners.empty());
    }

    /// Page by page; labels that follow a choice in all their forms.
    static void Check(QWidget *window)
    {
        auto *tabs = window->findChild<QTabWidget *>();
        for (int page = 0; page < (tabs ? tabs->count() : 1); ++page) {
            if (tabs) tabs->setCurrentIndex(page);
            keys::Settle();
            CheckShown(*window);
        }
        if (tabs) tabs->setCurrentIndex(0);
        for (auto *choice : window->findChildren<QComboBox *>()) {
            if (choice->accessibleName() != "Tipo" || !tabs) continue;
            choice->setCurrentIndex(1);
            Q_EMIT choice->activated(1);
            EXPECT_TRUE(Shows(*window, "Co&gnome"));
            CheckShown(*window);
        }
    }
};

TEST_P(MnemonicsTest, NoLetterMeansTwoThings)
{
    int editors = 0;
    for (const BrowseDescription &table : BrowseDescriptions()) {
        if (!HasEditor(table.name)) continue;
        ++editors;
        keys::WhenNextWindowOpens([](QWidget *editor) {
            Check(editor);
            static_cast<CTarvoDialog *>(editor)->EndDialog(IDCANCEL);
        });
        OpenEditor(table.name, nullptr, RecordKeys(table.keys.size(), "0"), false);
    }
    EXPECT_GE(editors, 12);
    CAzienda company;
    keys::Open(&company);
    Check(&company);
    CPianoContiEd chart;
    keys::Open(&chart);
    Check(&chart);
}

INSTANTIATE_TEST_SUITE_P(Engines, MnemonicsTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

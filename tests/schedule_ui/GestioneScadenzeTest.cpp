#include "schedule/ui/GestioneScadenze.h"

#include "schedule/ScheduleDates.h"
#include "schedule/ui/ScheduleGrid.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/print/Crystal.h"
#include "tarvodlg/widgets/Fields.h"
#include "tests/support/TestArchive.h"
#include "tests/support/WindowKeys.h"

#include <QApplication>
#include <QTest>
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Today is 1 June 2026.
class GestioneScadenzeTest : public ArchiveTest {
  protected:
    void SetUp() override
    {
        ArchiveTest::SetUp();
        if (!database_) return;
        QApplication::setKeyboardInputInterval(0); // a letter chooses at once, without the one before
        Run("DELETE FROM admin.destina1");
        Run("INSERT INTO admin.destina1 (dst_rel, dst_cli_for, dst_codice, dst_desc) VALUES (0, 1, 2, 'Cantiere')");
        Store("0, 1, 1, 2, '2026-05-31', 100.10, 0, '7/A'"); // overdue
        Store("0, 2, 1, NULL, '2026-06-30', 200.20, 0, '8/A'");
        Store("0, 3, 2, NULL, '2026-01-15', 50, 1, '1/A'"); // collected
        Store("1, 1, 1, NULL, '2026-05-01', 1000, 0, '77'");
    }

    /// Side, number, counterpart, destination, due date, amount, paid, invoice.
    void Store(const std::string &values)
    {
        Run("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_cli_for, sca_dst, sca_data, sca_importo, sca_pagato,"
            " sca_fattura, sca_anno, sca_sez) VALUES (" +
            values + ", 2026, 1)");
    }

    /// Opens the list and waits for its timer.
    static void OpenList(CGestioneScadenze *list)
    {
        keys::Open(list);
        EXPECT_TRUE(QTest::qWaitFor([list] { return !StatusOf(*list).empty(); }));
    }
    /// Runs the steps in the window that the key opens, and comes back.
    static void InWindowOf(CGestioneScadenze *list, int key, const std::function<void(QWidget *)> &steps)
    {
        bool was_open = false;
        keys::WhenNextWindowOpens([&](QWidget *window) {
            was_open = true;
            steps(window);
        });
        keys::Press(key);
        EXPECT_TRUE(was_open);
        keys::Open(list); // without a window manager nobody gives it the focus back
    }
    static std::string StatusOf(const QWidget &window)
    {
        for (const auto *label : window.findChildren<QLabel *>())
            if (label->text().contains("scadenz") && label->text() != "di cui scadute") return FromQt(label->text());
        return {};
    }
    static CSpreadSheet *Grid(const QWidget &window) { return window.findChild<CSpreadSheet *>(); }
    static std::vector<long> Numbers(const QWidget &window)
    {
        std::vector<long> numbers;
        for (long row = 1; row <= Grid(window)->RowCount(); ++row) numbers.push_back(Grid(window)->RowData(row));
        return numbers;
    }
    static std::string Sum(const QWidget &window, const char *name)
    {
        for (const auto *label : window.findChildren<QLabel *>())
            if (label->accessibleName() == name) return FromQt(label->text());
        return "no sum of that name";
    }
    static long Restrictions(const QWidget &window, const char *words)
    {
        const auto labels = window.findChildren<QLabel *>();
        return std::count_if(labels.begin(), labels.end(), [&](const QLabel *label) { return label->text() == words; });
    }
    template <class Field>
    static Field *Find(const QWidget &window, const char *name)
    {
        for (auto *field : window.findChildren<Field *>())
            if (field->accessibleName() == name) return field;
        ADD_FAILURE() << "no field " << name;
        return nullptr;
    }
    /// Goes to the field by Tab, types, and leaves it with Enter.
    static void TypeInto(const QWidget &window, const char *name, const QString &text)
    {
        const auto *field = Find<QWidget>(window, name);
        for (int presses = 0; presses < 40 && QApplication::focusWidget() != field; ++presses) keys::Press(Qt::Key_Tab);
        ASSERT_EQ(QApplication::focusWidget(), field) << name;
        if (qobject_cast<const QLineEdit *>(field)) keys::Press(Qt::Key_A, Qt::ControlModifier);
        text.isEmpty() ? keys::Press(Qt::Key_Delete) : keys::Type(text);
        keys::Press(Qt::Key_Return);
    }
    /// What a row that is not the selected one is written in: 'r'ed, 'g'rey or the 't'ext's colour.
    static char ColourOf(const QWidget &window, long row)
    {
        CSpreadSheet *grid = Grid(window);
        const QRect cell = grid->visualRect(grid->model()->index(static_cast<int>(row) - 1, kDueColumn - 1));
        const QImage image = grid->viewport()->grab(cell).toImage();
        int darkest = 255;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                if (pixel.red() > pixel.green() + 80 && pixel.red() > pixel.blue() + 80) return 'r';
                darkest = std::min(darkest, pixel.lightness());
            }
        return darkest > 60 ? 'g' : 't';
    }
};

INSTANTIATE_TEST_SUITE_P(Engines, GestioneScadenzeTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(GestioneScadenzeTest, EachSideHasItsTitleItsWordsAndItsSums)
{
    CGestioneScadenze list(nullptr);
    OpenList(&list);
    EXPECT_EQ(FromQt(list.windowTitle()), "Gestione Scadenze Clienti");
    EXPECT_THAT(Numbers(list), ElementsAre(3, 1, 2));
    EXPECT_EQ(StatusOf(list), "3 scadenze");
    EXPECT_EQ(Sum(list, "Totale"), "350,30");
    EXPECT_EQ(Sum(list, "Da incassare"), "300,30");
    EXPECT_EQ(Sum(list, "di cui scadute"), "100,10");
    EXPECT_EQ(Sum(list, "Incassate"), "50,00");
    EXPECT_EQ(Restrictions(list, "TUTTE"), 2);
    EXPECT_EQ(Restrictions(list, "TUTTI"), 2);
    const auto *state = Find<CChoiceField>(list, "Stato");
    EXPECT_EQ(FromQt(state->itemText(0) + state->itemText(1) + state->itemText(2)), "TUTTEDA INCASSAREINCASSATE");

    Grid(list)->SetActiveCell(3, kNumColumn);
    EXPECT_EQ(ColourOf(list, 1), 'g');
    EXPECT_EQ(ColourOf(list, 2), 'r');
    Grid(list)->SetActiveCell(1, kNumColumn);
    EXPECT_EQ(ColourOf(list, 3), 't');
    EXPECT_EQ(Grid(list)->Text(1, kPaidColumn), "Sì");
    EXPECT_EQ(Grid(list)->Text(2, kDestinationNameColumn), "Cantiere");
    EXPECT_EQ(Grid(list)->Text(2, kNameColumn), Value("SELECT cli_desc FROM admin.clienti1 WHERE cli_codice = 1"));

    TypeInto(list, "Intestatario", "1");
    keys::Press(Qt::Key_F8);
    EXPECT_EQ(FromQt(list.windowTitle()), "Gestione Scadenze Fornitori");
    EXPECT_THAT(Numbers(list), ElementsAre(1)) << "customer 1 is no restriction among suppliers";
    EXPECT_EQ(FromQt(state->itemText(0) + state->itemText(1) + state->itemText(2)), "TUTTENON PAGATEPAGATE");
    EXPECT_EQ(Sum(list, "Da pagare"), "1.000,00");
    EXPECT_EQ(Sum(list, "Pagate"), "0,00");
    EXPECT_EQ(Grid(list)->Text(1, kNameColumn), Value("SELECT for_desc FROM admin.fornito1 WHERE for_codice = 1"));
    keys::Press(Qt::Key_F8);
    EXPECT_THAT(Numbers(list), ElementsAre(3, 1, 2));
    keys::Press(Qt::Key_Escape);
    EXPECT_FALSE(list.isVisible()) << "filters are nothing to be lost";
}

TEST_P(GestioneScadenzeTest, FiltersByKeyReloadTheList)
{
    CGestioneScadenze list(nullptr);
    OpenList(&list);
    TypeInto(list, "Scadenza dal", "3105");
    EXPECT_THAT(Numbers(list), ElementsAre(1, 2));
    TypeInto(list, "al", "3105");
    EXPECT_THAT(Numbers(list), ElementsAre(1));
    TypeInto(list, "Scadenza dal", "");
    EXPECT_THAT(Numbers(list), ElementsAre(3, 1));
    TypeInto(list, "Stato", "i"); // INCASSATE
    EXPECT_THAT(Numbers(list), ElementsAre(3));
    EXPECT_EQ(Sum(list, "Totale"), "50,00");
    TypeInto(list, "Stato", "d");
    EXPECT_THAT(Numbers(list), ElementsAre(1));
    TypeInto(list, "al", "");
    EXPECT_THAT(Numbers(list), ElementsAre(1, 2));
    TypeInto(list, "Intestatario", "2");
    EXPECT_THAT(Numbers(list), ElementsAre());
    EXPECT_EQ(StatusOf(list), "Nessuna scadenza");
    TypeInto(list, "Intestatario", "99999");
    EXPECT_EQ(user_.beeps, 1) << "no such customer";
    TypeInto(list, "Intestatario", "");
    EXPECT_THAT(Numbers(list), ElementsAre(1, 2));
}

TEST_P(GestioneScadenzeTest, DestinationIsThatOfTheCustomer)
{
    CGestioneScadenze list(nullptr);
    OpenList(&list);
    auto *destination = Find<CCodeField>(list, "Destinazione");
    TypeInto(list, "Destinazione", "2");
    EXPECT_EQ(user_.beeps, 1) << "nobody's destination";
    TypeInto(list, "Destinazione", "");
    TypeInto(list, "Intestatario", "1");
    EXPECT_EQ(QApplication::focusWidget(), destination);
    TypeInto(list, "Destinazione", "2");
    EXPECT_THAT(Numbers(list), ElementsAre(1));
    EXPECT_EQ(Restrictions(list, "Cantiere"), 1);
    TypeInto(list, "Intestatario", "2");
    EXPECT_EQ(destination->Value(), 0);
    EXPECT_THAT(Numbers(list), ElementsAre(3));
}

TEST_P(GestioneScadenzeTest, RowsFollowWhatTheEditorStores)
{
    CGestioneScadenze list(nullptr);
    OpenList(&list);
    Grid(list)->Sort(kAmountColumn, false);
    EXPECT_THAT(Numbers(list), ElementsAre(2, 1, 3));
    Grid(list)->SetActiveCell(2, kNumColumn);
    InWindowOf(&list, Qt::Key_Return, [](QWidget *editor) {
        EXPECT_EQ(FromQt(editor->windowTitle()), "Modifica Scadenze Clienti");
        TypeInto(*editor, "Importo", "300");
        keys::Press(Qt::Key_F2);
        keys::Press(Qt::Key_Escape);
    });
    EXPECT_THAT(Numbers(list), ElementsAre(1, 2, 3)) << "sorted as the user had it";
    EXPECT_EQ(Grid(list)->RowData(Grid(list)->ActiveRow()), 1);
    EXPECT_EQ(Grid(list)->Text(1, kAmountColumn), "300,00");
    EXPECT_EQ(Sum(list, "Da incassare"), "500,20");

    InWindowOf(&list, Qt::Key_F3, [](QWidget *editor) {
        EXPECT_EQ(FromQt(editor->windowTitle()), "Inserimento Scadenze Clienti");
        TypeInto(*editor, "Cliente", "1");
        TypeInto(*editor, "Scadenza", "300926");
        TypeInto(*editor, "Importo", "1000");
        keys::Press(Qt::Key_F2);
        keys::Press(Qt::Key_Escape);
    });
    EXPECT_THAT(Numbers(list), ElementsAre(4, 1, 2, 3));
    EXPECT_EQ(Grid(list)->RowData(Grid(list)->ActiveRow()), 4);

    TypeInto(list, "al", "300626");
    Grid(list)->setFocus();
    Grid(list)->SetActiveCell(2, kNumColumn);
    InWindowOf(&list, Qt::Key_F2, [](QWidget *editor) {
        TypeInto(*editor, "Scadenza", "010726");
        keys::Press(Qt::Key_F2);
        keys::Press(Qt::Key_Escape);
    });
    EXPECT_THAT(Numbers(list), ElementsAre(1, 3));
    EXPECT_EQ(StatusOf(list), "La scadenza 2 è registrata e non rientra nel filtro");
}

TEST_P(GestioneScadenzeTest, InstalmentDeletedElsewhereLeavesTheList)
{
    CGestioneScadenze list(nullptr);
    OpenList(&list);
    Run("DELETE FROM admin.scadenze WHERE sca_relaz = 0 AND sca_num = 3");
    user_.Expect("La scadenza 3 non esiste più in archivio.");
    keys::Press(Qt::Key_Return);
    EXPECT_THAT(Numbers(list), ElementsAre(1, 2));
}

TEST_P(GestioneScadenzeTest, SearchFindsByEachOfItsFields)
{
    CGestioneScadenze list(nullptr);
    OpenList(&list);
    struct Case {
        const char *field;
        QString value;
        std::vector<long> listed;
    };
    for (const Case &test : {Case{"Numero", "2", {2, 3}}, Case{"Scadenza dal", "010626", {2}},
                             Case{"Fattura", "7/a", {1}}, Case{"Cliente", "1", {1, 2}}}) {
        SCOPED_TRACE(test.field);
        Grid(list)->SetActiveCell(1, kNumColumn);
        InWindowOf(&list, Qt::Key_F5, [&](QWidget *search) {
            EXPECT_EQ(FromQt(search->windowTitle()), "Cerca Scadenze Clienti");
            EXPECT_EQ(Numbers(*search), std::vector<long>{2}) << "what falls due next";
            TypeInto(*search, test.field, test.value);
            EXPECT_EQ(Numbers(*search), test.listed);
            EXPECT_EQ(QApplication::focusWidget(), Grid(*search));
            keys::Press(Qt::Key_Return);
        });
        EXPECT_EQ(Grid(list)->RowData(Grid(list)->ActiveRow()), test.listed.front());
    }
    TypeInto(list, "Stato", "i");
    InWindowOf(&list, Qt::Key_F5, [](QWidget *) { keys::Press(Qt::Key_F2); });
    EXPECT_EQ(StatusOf(list), "La scadenza 2 non rientra nel filtro");
    EXPECT_EQ(user_.beeps, 1);
}

TEST_P(GestioneScadenzeTest, PrintAndExportGiveWhatIsListed)
{
    CGestioneScadenze list(nullptr);
    OpenList(&list);
    TypeInto(list, "Stato", "d");
    const std::filesystem::path printed = Folder() / "stampa.csv", exported = Folder() / "elenco.csv";
    SetDefaultDestination({ReportTarget::Csv, printed});
    keys::Press(Qt::Key_F9);
    SetDefaultDestination({});
    user_.ExpectFiles({exported});
    user_.Expect("Esportazione conclusa con 2 righe!");
    keys::Press(Qt::Key_E, Qt::ControlModifier);
    for (const auto &file : {printed, exported}) {
        const std::string text = ReadWholeFile(file, 10'000);
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3) << text;
        EXPECT_THAT(text, testing::AllOf(HasSubstr("7/A"), HasSubstr("8/A"), HasSubstr("100,10")));
    }
}

TEST_P(GestioneScadenzeTest, DatesAreCheckedWhenTheUserWantsIt)
{
    CGestioneScadenze list(nullptr);
    OpenList(&list);
    user_.Expect("Vuoi Controllare le date sulle scadenze ?", IDNO);
    keys::Press(Qt::Key_D, Qt::ControlModifier);
    user_.Expect("Vuoi Controllare le date sulle scadenze ?", IDYES);
    user_.ExpectDate("Dalla data", *ParseDate("2026-05-01"));
    user_.ExpectDate("Alla data", *ParseDate("2026-05-31"));
    user_.Expect(fmt::format(" Trovati 2 errori!\n\nConsultare il file {}", ScheduleDatesLog().string()));
    keys::Press(Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(ReadWholeFile(ScheduleDatesLog(), 1000), "Scadenza Cliente 2 - Data Scadenza fuori range\r\n"
                                                       "Scadenza Cliente 3 - Data Scadenza fuori range\r\n");
}

TEST_P(GestioneScadenzeTest, FailedReloadKeepsTheList)
{
    CGestioneScadenze list(nullptr);
    OpenList(&list);
    Run("ALTER TABLE admin.scadenze RENAME COLUMN sca_desc TO sca_via");
    list.LoadTable(nullptr, false);
    EXPECT_THAT(Numbers(list), ElementsAre(3, 1, 2));
    EXPECT_EQ(Sum(list, "Totale"), "350,30");
    ASSERT_EQ(user_.shown.size(), 1u);
    user_ = ScriptedUserInterface(); // the engines word it each their own way
    Run("ALTER TABLE admin.scadenze RENAME COLUMN sca_via TO sca_desc");
}

TEST_P(GestioneScadenzeTest, EmptySchedule)
{
    Run("DELETE FROM admin.scadenze");
    CGestioneScadenze list(nullptr);
    OpenList(&list);
    EXPECT_EQ(StatusOf(list), "Nessuna scadenza");
    EXPECT_EQ(Sum(list, "Totale"), "0,00");
    keys::Press(Qt::Key_F2);
    keys::Press(Qt::Key_F9);
    keys::Press(Qt::Key_E, Qt::ControlModifier);
    EXPECT_EQ(user_.beeps, 3);
    InWindowOf(&list, Qt::Key_F5, [&](QWidget *) {
        keys::Press(Qt::Key_F2);
        EXPECT_EQ(user_.beeps, 4);
        keys::Press(Qt::Key_Escape);
    });
}

} // namespace

#include "ledger/ui/GestionePrimaNota.h"

#include "ledger/ui/PNotaCerca.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/print/Crystal.h"
#include "tarvodlg/widgets/Field.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tests/support/TestArchive.h"
#include "tests/support/WindowKeys.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QScrollBar>
#include <QTest>
#include <gmock/gmock.h>

#include <algorithm>
#include <numeric>

namespace {

using testing::ElementsAre;

constexpr long kPurchaseCausale = 21, kTransferCausale = 61;

class GestionePrimaNotaTest : public ArchiveTest {
  protected:
    void SetUp() override
    {
        ArchiveTest::SetUp();
        sqlpno.SetIndex(kByNumber);
    }

    /// An entry of 10 euro: a purchase of a supplier, or one without counterpart. Numbers follow the calls.
    PNOTA Store(const char *date, long supplier = 1, const char *document = "")
    {
        PNOTA entry = Entry(date, supplier, document);
        sqlpno.SqlTransaction(Cmd(), kInsert, &entry);
        PNOTA stored;
        sqlpno.Search(Cmd(), entry.pno_codice, &stored);
        return stored;
    }
    PNOTA Entry(const char *date, long supplier, const char *document)
    {
        PNOTA entry;
        sqlpno.Blank(Cmd(), &entry);
        entry.pno_data = *ParseDate(date);
        entry.pno_data_doc = *document ? entry.pno_data : 0;
        entry.pno_cau = supplier != 0 ? kPurchaseCausale : kTransferCausale;
        entry.pno_reg = supplier != 0 ? kPurchases : kJournalOnly;
        entry.pno_doc = document;
        entry.pno_rel = supplier != 0 ? kSupplier : kNoCounterpart;
        entry.pno_cli_for = supplier;
        entry.righe[0].row_mas = 300;
        entry.righe[0].row_con = entry.righe[0].row_sot = 1;
        entry.righe[0].row_tipo = "D";
        entry.righe[0].row_importo = 10;
        entry.righe[1] = entry.righe[0];
        entry.righe[1].row_tipo = "A";
        return entry;
    }

    /// Opens the list and waits for its timer.
    static void OpenList(CGestionePrimaNota *list)
    {
        keys::Open(list);
        EXPECT_TRUE(QTest::qWaitFor([list] { return !StatusOf(*list).empty(); }));
    }
    static std::string StatusOf(const CGestionePrimaNota &list)
    {
        for (const auto *label : list.findChildren<QLabel *>())
            if (label->text().contains("moviment")) return label->text().toStdString();
        return {};
    }
    static CSpreadSheet *Grid(const QWidget &window) { return window.findChild<CSpreadSheet *>(); }
    static std::vector<long> Numbers(const QWidget &window)
    {
        std::vector<long> numbers;
        for (long row = 1; row <= Grid(window)->RowCount(); ++row) numbers.push_back(Grid(window)->Long(row, 1));
        return numbers;
    }
    static QLineEdit *Field(const QWidget &window, const char *name)
    {
        for (auto *field : window.findChildren<QLineEdit *>())
            if (field->accessibleName() == name && field->isVisible()) return field;
        ADD_FAILURE() << "no field " << name;
        return nullptr;
    }
    /// Goes to the field by Tab, types, and leaves it with Enter.
    static void TypeInto(const QWidget &window, const char *name, const QString &text)
    {
        const QLineEdit *field = Field(window, name);
        for (int presses = 0; presses < 40 && QApplication::focusWidget() != field; ++presses) keys::Press(Qt::Key_Tab);
        ASSERT_EQ(QApplication::focusWidget(), field) << name;
        text.isEmpty() ? keys::Press(Qt::Key_Delete) : keys::Type(text);
        keys::Press(Qt::Key_Return);
    }
    /// What a row that is not the selected one is written in: 'g'reen, 'r'ed or 'n'either.
    static char ColourOf(const QWidget &window, long row)
    {
        CSpreadSheet *grid = Grid(window);
        const QRect cell = grid->visualRect(grid->model()->index(static_cast<int>(row) - 1, 1)); // the date
        const QImage image = grid->viewport()->grab(cell).toImage();
        constexpr int kClear = 60;
        char colour = 'n';
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                if (pixel.green() > pixel.red() + kClear && pixel.green() > pixel.blue() + kClear) colour = 'g';
                if (pixel.red() > pixel.green() + kClear && pixel.red() > pixel.blue() + kClear) colour = 'r';
            }
        return colour;
    }
    static bool Shows(const QWidget &window, const char *text)
    {
        const auto labels = window.findChildren<QLabel *>();
        return std::any_of(labels.begin(), labels.end(), [&](const QLabel *label) { return label->text() == text; });
    }
};

TEST_P(GestionePrimaNotaTest, AllColumnsFitASmallScreen)
{
    Store("15/03/2026", 1, "45");
    CGestionePrimaNota list(nullptr);
    OpenList(&list);
    list.resize(1254, 660);
    keys::Settle();
    EXPECT_EQ(Grid(list)->horizontalScrollBar()->maximum(), 0);
    EXPECT_EQ(Grid(list)->Text(1, 13), "10,00");
}

TEST_P(GestionePrimaNotaTest, ListsNewestFirstWithTheColourOfTheCounterpart)
{
    Store("2026-01-10", 1, "A/1");
    Store("2026-03-01", 0);
    PNOTA sale = Entry("2026-02-01", 0, "");
    sale.pno_rel = kCustomer;
    sale.pno_cli_for = 2;
    sqlpno.SqlTransaction(Cmd(), kInsert, &sale);

    CGestionePrimaNota list(nullptr);
    OpenList(&list);
    EXPECT_THAT(Numbers(list), ElementsAre(2, 3, 1));
    EXPECT_EQ(StatusOf(list), "3 movimenti");
    EXPECT_TRUE(Shows(list, "TUTTE"));
    Grid(list)->SetActiveCell(3, 1);
    EXPECT_EQ(ColourOf(list, 1), 'g');
    EXPECT_EQ(ColourOf(list, 2), 'n');
    Grid(list)->SetActiveCell(1, 1);
    EXPECT_EQ(ColourOf(list, 3), 'r');

    std::vector<std::string> cells;
    for (long column = 1; column <= 14; ++column) cells.push_back(Grid(list)->Text(3, column));
    const std::string name = Value("SELECT for_desc FROM admin.fornito1 WHERE for_codice = 1");
    EXPECT_THAT(cells, ElementsAre("1", "10/01/2026", "", "10/01/2026", testing::_, "1", "21", "ACQUISTI", name, "F",
                                   "1", "A/1", "10,00", "10,00"));
    EXPECT_EQ(Grid(list)->Text(1, 8), "SOLO LIBRO GIORNALE");
    EXPECT_EQ(Grid(list)->Text(1, 10), "N");
    EXPECT_EQ(Grid(list)->Text(2, 10), "C");
}

TEST_P(GestionePrimaNotaTest, FiltersByKeyReloadTheList)
{
    Store("2026-01-10");
    Store("2026-02-01", 0);
    Store("2026-03-01");
    CGestionePrimaNota list(nullptr);
    OpenList(&list);
    TypeInto(list, "Dal numero", "2");
    EXPECT_THAT(Numbers(list), ElementsAre(3, 2));
    TypeInto(list, "alla data", "1502");
    EXPECT_THAT(Numbers(list), ElementsAre(2));
    TypeInto(list, "Dal numero", "1");
    EXPECT_THAT(Numbers(list), ElementsAre(2, 1));
    TypeInto(list, "Causale", "21");
    EXPECT_THAT(Numbers(list), ElementsAre(1));
    TypeInto(list, "alla data", "");
    EXPECT_THAT(Numbers(list), ElementsAre(3, 1));
    TypeInto(list, "Causale", "");
    EXPECT_THAT(Numbers(list), ElementsAre(3, 2, 1));
    TypeInto(list, "al numero", "0");
    EXPECT_THAT(Numbers(list), ElementsAre(3, 2, 1)) << "no bound is no restriction";
    TypeInto(list, "Sezione IVA", "1");
    EXPECT_THAT(Numbers(list), ElementsAre(3, 2, 1));
    keys::Press(Qt::Key_Escape); // filters are no changes that are lost
    EXPECT_FALSE(list.isVisible());
}

TEST_P(GestionePrimaNotaTest, StoredEntryOutsideTheFilterIsNotListed)
{
    PNOTA first = Store("2026-01-10");
    Store("2026-02-01");
    CGestionePrimaNota list(nullptr);
    OpenList(&list);
    TypeInto(list, "dalla data", "0101");
    first.pno_desc = "Cambiata";
    list.SetRow(1, &first); // the row of another entry, as after browsing in the editor
    EXPECT_EQ(Grid(list)->Text(2, 3), "Cambiata");
    EXPECT_EQ(Grid(list)->Text(1, 3), "");
    EXPECT_TRUE(list.TestFilter(&first));

    first.pno_data = *ParseDate("2025-12-31");
    EXPECT_FALSE(list.TestFilter(&first));
    list.SetRow(2, &first);
    EXPECT_THAT(Numbers(list), ElementsAre(2));
    list.DeleteRow(1);
    EXPECT_EQ(Grid(list)->RowCount(), 0);
}

TEST_P(GestionePrimaNotaTest, EditorWritesTheChangedEntryIntoItsRow)
{
    Store("2026-02-01", 0);
    Store("2026-01-10", 0);
    CGestionePrimaNota list(nullptr);
    OpenList(&list);
    Grid(list)->Sort(2, true); // not the order of the query
    EXPECT_EQ(Grid(list)->Long(2, 1), 1);
    keys::WhenNextWindowOpens([&](QWidget *editor) {
        EXPECT_EQ(editor->windowTitle(), "Modifica Prima Nota");
        keys::Type("77"); // the document number
        keys::Press(Qt::Key_F2);
        EXPECT_EQ(Grid(list)->Text(2, 12), "77");
        EXPECT_EQ(Grid(list)->Text(1, 12), "");
        keys::Press(Qt::Key_Escape);
    });
    keys::Press(Qt::Key_F2);
    EXPECT_THAT(Numbers(list), ElementsAre(2, 1));
    EXPECT_EQ(Value("SELECT pno_doc FROM admin.pnota1 WHERE pno_codice = 1"), "77");
}

TEST_P(GestionePrimaNotaTest, EntryIsOpenedWithoutTheList)
{
    const PNOTA stored = Store("2026-02-01", 0);
    bool was_open = false;
    keys::WhenNextWindowOpens([&](QWidget *) {
        was_open = true;
        keys::Press(Qt::Key_Escape);
    });
    EditPNota(stored.pno_codice);
    EXPECT_TRUE(was_open);
}

TEST_P(GestionePrimaNotaTest, NewEntryStandsAtTheTopAtOnceAlsoInASortedList)
{
    Store("2026-03-10");
    Store("2026-02-01");
    CGestionePrimaNota list(nullptr);
    OpenList(&list);
    Grid(list)->Sort(1, true);
    EXPECT_THAT(Numbers(list), ElementsAre(1, 2));
    keys::WhenNextWindowOpens([&](QWidget *editor) {
        PNOTA made = Store("2026-01-15", 1, "77");
        list.SetRow(0, &made);
        EXPECT_THAT(Numbers(list), ElementsAre(3, 1, 2)) << "while the editor is still open";
        made.pno_desc = "Ritoccata";
        list.SetRow(0, &made);
        EXPECT_THAT(Numbers(list), ElementsAre(3, 1, 2)) << "stored again, the same row";
        keys::Press(Qt::Key_Escape);
        EXPECT_FALSE(editor->isVisible());
    });
    keys::Press(Qt::Key_F3);
    EXPECT_THAT(Numbers(list), ElementsAre(1, 2, 3)) << "loaded again, newest date first";
    EXPECT_EQ(Field(list, "al numero")->text(), "3");
    EXPECT_EQ(Grid(list)->Long(Grid(list)->ActiveRow(), 1), 3) << "the new entry stays selected";
}

TEST_P(GestionePrimaNotaTest, RangeThatEndsBelowDoesNotGrow)
{
    Store("2026-01-10");
    Store("2026-02-01");
    CGestionePrimaNota list(nullptr);
    OpenList(&list);
    TypeInto(list, "al numero", "1");
    keys::WhenNextWindowOpens([&](QWidget *) {
        const PNOTA made = Store("2026-03-15");
        list.SetRow(0, &made);
        keys::Press(Qt::Key_Escape);
    });
    keys::Press(Qt::Key_F3);
    EXPECT_THAT(Numbers(list), ElementsAre(1));
    EXPECT_EQ(Field(list, "al numero")->text(), "1");
}

TEST_P(GestionePrimaNotaTest, EntryDeletedElsewhereLeavesTheList)
{
    Store("2026-01-10");
    PNOTA gone = Store("2026-02-01");
    CGestionePrimaNota list(nullptr);
    OpenList(&list);
    sqlpno.SqlTransaction(Cmd(), kDelete, &gone);
    user_.Expect("Il movimento 2 non esiste più in archivio.");
    keys::Press(Qt::Key_Return);
    EXPECT_THAT(Numbers(list), ElementsAre(1));
}

TEST_P(GestionePrimaNotaTest, FailedReloadKeepsTheList)
{
    Store("2026-01-10");
    CGestionePrimaNota list(nullptr);
    OpenList(&list);
    Run("ALTER TABLE admin.pnota1 RENAME COLUMN pno_dare TO pno_via");
    list.LoadTable(nullptr, false);
    EXPECT_THAT(Numbers(list), ElementsAre(1));
    ASSERT_EQ(user_.shown.size(), 1u);
    user_ = ScriptedUserInterface(); // the engines word it each their own way
    Run("ALTER TABLE admin.pnota1 RENAME COLUMN pno_via TO pno_dare");
}

/// A preview that nobody looks at: what it was asked to show.
class PrintedTo : public ReportPresenter {
  public:
    PrintedTo() : before_(SetReportPresenter(this)) {}
    ~PrintedTo() override { SetReportPresenter(before_); }

    void Preview(const ReportRequest &request, const std::filesystem::path &file) override
    {
        requests.push_back(request);
        pdf_bytes = static_cast<long>(std::filesystem::file_size(file));
    }
    bool Print(const std::string &, const std::filesystem::path &, bool) override { return false; }

    std::vector<ReportRequest> requests;
    long pdf_bytes = 0;

  private:
    ReportPresenter *before_;
};

TEST_P(GestionePrimaNotaTest, PrintsWhatTheFilterSelects)
{
    Store("2026-01-10", 1, "A/1");
    Store("2026-02-01", 0);
    Store("2026-03-01", 1, "A/2");
    CGestionePrimaNota list(nullptr);
    OpenList(&list);
    PrintedTo printed;
    keys::Press(Qt::Key_F9);
    ASSERT_EQ(printed.requests.size(), 1u);
    EXPECT_EQ(printed.requests[0].title, "Movimenti Prima Nota");
    EXPECT_EQ(printed.requests[0].selection,
              "{pnota.pno_codice} in 1 to 3 AND {pnota.pno_data} in Date(2026,1,10) to Date(2026,3,1)");
    EXPECT_GT(printed.pdf_bytes, 1000);

    TypeInto(list, "Dal numero", "2");
    TypeInto(list, "alla data", "3112");
    TypeInto(list, "Sezione IVA", "1");
    TypeInto(list, "Causale", "21");
    keys::Press(Qt::Key_F9);
    ASSERT_EQ(printed.requests.size(), 2u);
    EXPECT_EQ(printed.requests[1].selection,
              "{pnota.pno_codice} in 2 to 3 AND {pnota.pno_data} in Date(2026,1,10) to Date(2026,12,31)"
              " AND {pnota.pno_sez} = 1 AND {pnota.pno_cau} = 21");
    const auto parameter = [&](std::size_t print, const char *name) {
        return std::get<std::string>(printed.requests[print].parameters.at(name));
    };
    EXPECT_EQ(parameter(0, "Sezione"), "Sezione : TUTTE");
    EXPECT_EQ(parameter(0, "Causale"), "Causale : TUTTE");
    EXPECT_EQ(parameter(1, "Sezione"),
              "Sezione : 1 " + Value("SELECT sez_desc FROM admin.sezioni WHERE sez_codice = 1"));
    EXPECT_EQ(parameter(1, "Causale"),
              "Causale : 21 " + Value("SELECT cac_desc FROM admin.caucont1 WHERE cac_codice = 21"));
    EXPECT_EQ(parameter(1, "Ditta"), "Ditta : " + Value("SELECT dit_codice FROM admin.ditte") + " " +
                                         Value("SELECT dit_desc FROM admin.ditte"));
}

TEST_P(GestionePrimaNotaTest, LowerWindowKeepsTheSelectedEntryInSight)
{
    for (int i = 0; i < 30; ++i) Store("2026-01-10");
    CGestionePrimaNota list(nullptr);
    OpenList(&list);
    list.resize(list.width(), 2000);
    keys::Settle();
    Grid(list)->SetActiveCell(30, 1);
    list.resize(list.width(), list.minimumHeight());
    keys::Settle();
    const QRect cell = Grid(list)->visualRect(Grid(list)->currentIndex());
    EXPECT_TRUE(Grid(list)->viewport()->rect().contains(cell.center()));
}

TEST_P(GestionePrimaNotaTest, EmptyJournal)
{
    CGestionePrimaNota list(nullptr);
    OpenList(&list);
    EXPECT_EQ(StatusOf(list), "Nessun movimento");
    keys::Press(Qt::Key_F2);
    keys::Press(Qt::Key_F5);
    keys::Press(Qt::Key_F7);
    keys::Press(Qt::Key_F9);
    EXPECT_EQ(user_.beeps, 4);
    EditPNota(0);
    EditPNota(4711);
}

class PNotaCercaTest : public GestionePrimaNotaTest {
  protected:
    void SetUp() override
    {
        GestionePrimaNotaTest::SetUp();
        if (!database_) return;
        Store("2026-01-10", 2, "A7");  // 1
        Store("2026-03-01", 0);        // 2
        Store("2026-02-01", 1, "O'1"); // 3
        Store("2026-04-01", 1, "Z9");  // 4
    }

    static void OpenSearch(CPNotaCerca *search)
    {
        keys::Open(search);
        EXPECT_NE(qobject_cast<QListWidget *>(QApplication::focusWidget()), nullptr);
    }
};

TEST_P(PNotaCercaTest, EachKeyFindsItsEntryByKeysAlone)
{
    struct Case {
        int key;
        std::vector<QString> values; ///< one for each field of the key, Enter behind each
        std::vector<long> numbers;   ///< listed
    };
    const Case cases[] = {
        {1, {"3"}, {3, 4}},
        {2, {"150226"}, {2, 4}},
        {3, {"020226"}, {4}},
        {4, {"O'1"}, {3, 4}},
        {5, {"21", "02012026"}, {1, 3, 4, 2}},
        {6, {"f", "1", "010326"}, {4, 1}},
    };
    for (const Case &test : cases) {
        SCOPED_TRACE(test.key);
        PNOTA entry;
        CPNotaCerca search(&entry, nullptr);
        OpenSearch(&search);
        keys::Type(QString::number(test.key));
        for (const QString &value : test.values) {
            keys::Type(value);
            keys::Press(Qt::Key_Return);
        }
        EXPECT_EQ(QApplication::focusWidget(), Grid(search));
        EXPECT_EQ(Numbers(search), test.numbers);
        keys::Press(Qt::Key_Return);
        EXPECT_FALSE(search.isVisible());
        EXPECT_EQ(search.result(), IDOK);
        EXPECT_EQ(entry.pno_codice, test.numbers.front());
        EXPECT_TRUE(entry.righe[0].InUse()) << "the whole entry";
        EXPECT_EQ(sqlpno.GetIndex(), test.key - 1) << "the order in which the editor browses on";
    }
}

TEST_P(PNotaCercaTest, CallersFieldsAreProposedElseTheLastEntry)
{
    PNOTA entry;
    entry.pno_data = *ParseDate("2026-02-15");
    CPNotaCerca search(&entry, nullptr);
    OpenSearch(&search);
    EXPECT_THAT(Numbers(search), ElementsAre(4)) << "no number given";
    keys::Press(Qt::Key_Down);
    EXPECT_THAT(Numbers(search), ElementsAre(2, 4));
    keys::Press(Qt::Key_Escape);
    EXPECT_EQ(entry.pno_codice, 0);
    EXPECT_EQ(sqlpno.GetIndex(), kByNumber);
}

TEST_P(PNotaCercaTest, ValueBehindTheLastEntryShowsTheLast)
{
    PNOTA entry;
    CPNotaCerca search(&entry, nullptr);
    OpenSearch(&search);
    keys::Type("1");
    keys::Type("99");
    keys::Press(Qt::Key_Return);
    EXPECT_THAT(Numbers(search), ElementsAre(4));
    EXPECT_TRUE(Shows(search, "Nessun movimento da lì in poi: questo è l'ultimo"));
}

TEST_P(PNotaCercaTest, LongListIsReadWhileTheUserLooks)
{
    for (int i = 0; i < 200; ++i) {
        PNOTA entry = Entry("2026-05-01", 1, "uguale");
        sqlpno.SqlTransaction(Cmd(), kInsert, &entry);
    }
    PNOTA entry;
    CPNotaCerca search(&entry, nullptr);
    OpenSearch(&search);
    keys::Type("4");
    keys::Type("uguale");
    keys::Press(Qt::Key_Return);
    EXPECT_LT(Grid(search)->RowCount(), 200);
    for (int presses = 0; presses < 30; ++presses) keys::Press(Qt::Key_PageDown);
    const std::vector<long> numbers = Numbers(search);
    std::vector<long> expected(200);
    std::iota(expected.begin(), expected.end(), 5);
    ASSERT_GE(numbers.size(), 200u);
    EXPECT_EQ(std::vector<long>(numbers.begin(), numbers.begin() + 200), expected);
    EXPECT_EQ(Grid(search)->ActiveRow(), Grid(search)->RowCount());
}

TEST_P(PNotaCercaTest, FoundEntryIsSelectedInTheListUnlessFilteredOut)
{
    CGestionePrimaNota list(nullptr);
    OpenList(&list);
    const auto find = [&](const char *number) {
        keys::WhenNextWindowOpens([&](QWidget *) {
            keys::Type("1");
            keys::Type(number);
            keys::Press(Qt::Key_Return);
            keys::Press(Qt::Key_Return);
        });
        keys::Press(Qt::Key_F5);
        QApplication::setActiveWindow(&list);
        keys::Settle();
    };
    find("3");
    EXPECT_EQ(Grid(list)->Long(Grid(list)->ActiveRow(), 1), 3);
    TypeInto(list, "al numero", "2");
    find("4");
    EXPECT_EQ(StatusOf(list), "Il movimento 4 non rientra nel filtro");
}

INSTANTIATE_TEST_SUITE_P(Engines, GestionePrimaNotaTest, testing::ValuesIn(TestEngines()), TestEngineName);
INSTANTIATE_TEST_SUITE_P(Engines, PNotaCercaTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

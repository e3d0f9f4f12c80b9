#include "ledger/JournalSearch.h"

#include "tarvodlg/base/Dates.h"
#include "tests/support/TestArchive.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace {

/// An entry of the test journal; the numbers follow the order in which they are stored.
struct Sample {
    long cau, rel, cli_for;
    const char *date, *document_date, *document;
};

constexpr Sample kSamples[] = {
    {21, kSupplier, 2, "2026-01-10", "2026-01-08", "B7"},   // 1
    {21, kSupplier, 1, "2026-02-01", "2026-01-20", "O'1"},  // 2
    {61, kNoCounterpart, 0, "2026-02-01", "", ""},          // 3
    {1, kCustomer, 3, "2026-03-31", "2026-03-31", "1"},     // 4
    {1, kCustomer, 1, "2026-01-05", "2026-01-05", "10"},    // 5
    {21, kSupplier, 1, "2026-12-31", "2026-12-01", "a%_\\"} // 6
};

class JournalListTest : public ArchiveTest {
  protected:
    void SetUp() override
    {
        ArchiveTest::SetUp();
        if (!database_) return;
        for (const Sample &sample : kSamples) Store(sample);
    }

    void Store(const Sample &sample)
    {
        PNOTA entry;
        sqlpno.Blank(Cmd(), &entry);
        entry.pno_data = *ParseDate(sample.date);
        entry.pno_data_doc = *sample.document_date ? *ParseDate(sample.document_date) : 0;
        entry.pno_cau = sample.cau;
        entry.pno_reg = kJournalOnly;
        entry.pno_doc = sample.document;
        entry.pno_rel = sample.rel;
        entry.pno_cli_for = sample.cli_for;
        entry.righe[0].row_mas = 300;
        entry.righe[0].row_con = entry.righe[0].row_sot = 1;
        entry.righe[0].row_tipo = "D";
        entry.righe[0].row_importo = 10;
        entry.righe[1] = entry.righe[0];
        entry.righe[1].row_tipo = "A";
        sqlpno.SqlTransaction(Cmd(), kInsert, &entry);
    }

    std::vector<long> Listed(const JournalPrintFilter &filter)
    {
        std::vector<long> numbers;
        ForEachJournalLine(Cmd(), filter, [&](JournalLine &&line) { numbers.push_back(line.codice); });
        EXPECT_EQ(CountJournal(Cmd(), filter), static_cast<long>(numbers.size()));
        return numbers;
    }
    static std::vector<long> Numbers(const std::vector<JournalLine> &lines)
    {
        std::vector<long> numbers;
        for (const JournalLine &line : lines) numbers.push_back(line.codice);
        return numbers;
    }
};

TEST_P(JournalListTest, FilterSelectsTheSameInTheQueryAndInMemory)
{
    const long february = *ParseDate("2026-02-01");
    struct Case {
        JournalPrintFilter filter;
        std::vector<long> numbers; ///< newest first
    };
    const Case cases[] = {{{}, {6, 4, 3, 2, 1, 5}},
                          {{2, 4, 0, 0, 0, 0}, {4, 3, 2}},
                          {{5, 2, 0, 0, 0, 0}, {}},
                          {{0, 0, february, 0, 0, 0}, {6, 4, 3, 2}},
                          {{0, 0, 0, february, 0, 0}, {3, 2, 1, 5}},
                          {{0, 0, february, february, 0, 0}, {3, 2}},
                          {{0, 0, 0, 0, 1, 0}, {6, 4, 3, 2, 1, 5}},
                          {{0, 0, 0, 0, 2, 0}, {}},
                          {{0, 0, 0, 0, 0, 21}, {6, 2, 1}},
                          {{1, 5, february, 0, 1, 21}, {2}}};
    for (const Case &test : cases) {
        SCOPED_TRACE(JournalListCondition(test.filter));
        EXPECT_EQ(Listed(test.filter), test.numbers);
        std::vector<long> passing;
        for (long number = 1; number <= 6; ++number) {
            PNOTA entry;
            ASSERT_TRUE(sqlpno.Search(Cmd(), number, &entry));
            if (PassesFilter(test.filter, entry)) passing.push_back(number);
        }
        EXPECT_THAT(passing, testing::UnorderedElementsAreArray(test.numbers));
    }
}

TEST_P(JournalListTest, LineOfTheArchiveAndOfTheEntryAreTheSame)
{
    std::vector<JournalLine> lines;
    ForEachJournalLine(Cmd(), {}, [&](JournalLine &&line) { lines.push_back(std::move(line)); });
    for (const JournalLine &line : lines) {
        SCOPED_TRACE(line.codice);
        PNOTA entry;
        ASSERT_TRUE(sqlpno.Search(Cmd(), line.codice, &entry));
        const JournalLine same = LineOf(entry);
        EXPECT_EQ(same.clifor, line.clifor);
        EXPECT_EQ(line.clifor.empty(), line.rel == kNoCounterpart);
        EXPECT_EQ(std::tie(same.data, same.data_doc, same.sez, same.cau, same.reg, same.rel, same.cli_for),
                  std::tie(line.data, line.data_doc, line.sez, line.cau, line.reg, line.rel, line.cli_for));
        EXPECT_EQ(std::tie(same.dare, same.avere, same.tot_doc, same.desc, same.doc),
                  std::tie(line.dare, line.avere, line.tot_doc, line.desc, line.doc));
    }
    EXPECT_EQ(LowestEntry(Cmd()), 1);
    EXPECT_EQ(HighestEntry(Cmd()), 6);
}

TEST_P(JournalListTest, EachSearchBeginsAtOrAfterItsValueAndGoesOnPageByPage)
{
    const auto day = [](const char *date) { return *ParseDate(date); };
    struct Case {
        JournalSearchValue value;
        std::vector<long> numbers;
    };
    const Case cases[] = {
        {{kByNumber, 4, 0, "", 0}, {4, 5, 6}},
        {{kByNumber, 7, 0, "", 0}, {}},
        {{kByDate, 0, day("2026-01-06"), "", 0}, {1, 2, 3, 4, 6}},
        {{kByDate, 0, 0, "", 0}, {5, 1, 2, 3, 4, 6}},
        {{kByDocumentDate, 0, day("2026-01-08"), "", 0}, {1, 2, 4, 6}},
        {{kByDocumentDate, 0, 0, "", 0}, {5, 1, 2, 4, 6}}, // without document date there is no place in the order
        {{kByCausale, 21, day("2026-02-01"), "", 0}, {2, 6, 3}},
        {{kByCausale, 2, 0, "", 0}, {1, 2, 6, 3}},
        {{kByCausale, 62, 0, "", 0}, {}},
        {{kByCounterpart, 1, day("2026-02-02"), "", kSupplier}, {6, 1}},
        {{kByCounterpart, 0, 0, "", kCustomer}, {5, 4}}, // the suppliers do not follow
    };
    for (const Case &test : cases) {
        SCOPED_TRACE(fmt::format("key {}, {}", static_cast<int>(test.value.key), test.value.codice));
        EXPECT_EQ(Numbers(SearchJournal(Cmd(), test.value, 100)), test.numbers);

        std::vector<long> by_pages;
        for (auto page = SearchJournal(Cmd(), test.value, 2); !page.empty();
             page = SearchJournalAfter(Cmd(), test.value.key, page.back(), 2))
            for (const JournalLine &line : page) by_pages.push_back(line.codice);
        EXPECT_EQ(by_pages, test.numbers);
    }
}

TEST_P(JournalListTest, DocumentNumberIsAValueAndNoSql)
{
    for (const long number : {2L, 6L}) {
        JournalSearchValue value;
        value.key = kByDocumentNumber;
        value.doc = kSamples[number - 1].document;
        const auto found = SearchJournal(Cmd(), value, 1);
        ASSERT_EQ(found.size(), 1u) << value.doc.str();
        EXPECT_EQ(found.front().codice, number);
    }
    JournalSearchValue hostile;
    hostile.key = kByDocumentNumber;
    hostile.doc = "'; DELETE FROM x;--";
    EXPECT_NO_THROW(SearchJournal(Cmd(), hostile, 1));
}

TEST_P(JournalListTest, LastEntryOfEachOrder)
{
    const long last[] = {6, 6, 6, 0, 3, 3};
    for (int key = 0; key < kJournalOrders; ++key) {
        const auto found = LastOfOrder(Cmd(), static_cast<JournalOrder>(key));
        ASSERT_TRUE(found) << key;
        if (key == kByDocumentNumber) continue; // letters sort by the engine's own rule
        EXPECT_EQ(found->codice, last[key]) << key;
    }
    Run("DELETE FROM admin.pnotaro2");
    Run("DELETE FROM admin.pnota1");
    EXPECT_FALSE(LastOfOrder(Cmd(), kByDate));
    EXPECT_EQ(LowestEntry(Cmd()), 0);
    EXPECT_EQ(HighestEntry(Cmd()), 0);
}

/// The texts are those that the archive's other readers know.
TEST(JournalQueries, StandAsTheyAre)
{
    EXPECT_STREQ(SearchCondition(kByCausale), " WHERE (pno_cau = :codice AND pno_data >= :data) OR (pno_cau > :codice)"
                                              " ORDER BY pno_cau, pno_data, pno_codice");
    EXPECT_STREQ(LastEntryOrder(kByDocumentDate), " ORDER BY pno_data_doc DESC, pno_data_doc DESC");
    EXPECT_STREQ(LastEntryOrder(kByDocumentNumber), " ORDER BY pno_doc DESC, pno_doc DESC");
    EXPECT_STREQ(LastEntryOrder(kByCausale), " ORDER BY  pno_cau DESC, pno_data DESC, pno_codice DESC");
}

INSTANTIATE_TEST_SUITE_P(Engines, JournalListTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

#include "tables/BrowseDescription.h"

#include "tarvodlg/base/Dates.h"
#include "tarvolumera/ChartOfAccounts.h"
#include "tests/support/TestArchive.h"

#include <algorithm>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Folded, SearchesWithoutCaseAccentsAndApostrophes)
{
    EXPECT_EQ(Folded("Calabrò  S.r.l."), "CALABRO S.R.L.");
    EXPECT_EQ(Folded("calabro' s.r.l."), Folded("CALABRÒ S.R.L."));
    EXPECT_EQ(Folded("D’Asburgotti"), Folded("d'asburgotti"));
    EXPECT_EQ(Folded("Lindwurmstraße Müller Žižek Œuvre"), "LINDWURMSTRASSE MULLER ZIZEK OUVRE");
    EXPECT_EQ(Folded("e\xCC\x80"), "E") << "accent of its own, as macOS writes file names";
    EXPECT_EQ(Folded(" \t "), "");
}

class BrowseTest : public ArchiveTest {
  protected:
    std::vector<std::string> Matches(const char *table, std::string_view typed, const FixedKeys &fixed = {},
                                     std::size_t most = 5)
    {
        std::vector<std::string> found;
        for (const CodeMatch &match : MatchCodes(Cmd(), *FindBrowse(table), fixed, typed, most))
            found.push_back(match.keys.back() + " " + match.description);
        return found;
    }

    long Rows(const BrowseDescription &table, const FixedKeys &fixed = {})
    {
        long count = 0;
        ForEachBrowseRow(Cmd(), table, fixed, [&](const BrowseRow &) { return ++count > 0; });
        return count;
    }
};

/// Every column and order named in a description exists on both engines, and its kind can show what it holds.
TEST_P(BrowseTest, EveryTableIsListed)
{
    for (const BrowseDescription &table : BrowseDescriptions()) {
        SCOPED_TRACE(table.name);
        EXPECT_EQ(FindBrowse(table.name), &table);
        EXPECT_EQ(std::to_string(Rows(table)), Value("SELECT COUNT(*) FROM " + table.table->TableName()));
        ForEachBrowseRow(Cmd(), table, {}, [&](const BrowseRow &row) {
            EXPECT_EQ(row.cells.size(), table.columns.size());
            EXPECT_EQ(DescribeCode(Cmd(), table, row.keys).has_value(), true);
            return false;
        });
    }
    EXPECT_EQ(FindBrowse("pnota1"), nullptr);
}

TEST_P(BrowseTest, CellsAreShownAsPeopleReadThem)
{
    Run("UPDATE admin.clienti1 SET cli_data_cessazione = '2024-09-30' WHERE cli_codice = 26");
    std::vector<std::string> shown;
    const auto show = [&](const char *name, const std::string &code) {
        const BrowseDescription &table = *FindBrowse(name);
        shown.clear();
        ForEachBrowseRow(Cmd(), table, {}, [&](const BrowseRow &row) {
            if (row.keys.back() != code) return true;
            for (std::size_t i = 0; i < row.cells.size(); ++i)
                shown.push_back(CellText(table.columns[i], row.cells[i]));
            return false;
        });
    };
    show("codiva", "62");
    EXPECT_THAT(shown, ElementsAre("62", "IVA 22% detraibile al 50% (telefonia)", "22,00", "Imponibile", "50,00", ""));
    show("causali", "21");
    EXPECT_THAT(shown, ElementsAre("21", "Fattura acquisto merci", "Acquisti", "Fornitore", "Sì", ""));
    show("clienti", "26");
    EXPECT_EQ(shown.back(), "30/09/2024");
}

TEST_P(BrowseTest, AccountsOfOneMaster)
{
    EXPECT_THAT(Matches("conti", "e", {{"con_mas", 150}}), ElementsAre("1 Clienti Italia", "2 Clienti UE ed estero"));
    EXPECT_EQ(Rows(*FindBrowse("conti"), {{"con_mas", 150}}), 2);
    EXPECT_EQ(Rows(*FindBrowse("conti"), {{"con_mas", 999}}), 0);
    EXPECT_THROW(Rows(*FindBrowse("conti"), {{"1 = 1 --", 1}}), SAException) << "no text of a query from outside";
}

TEST_P(BrowseTest, TypedTextFindsCodesAndNames)
{
    Run("INSERT INTO admin.fornito1 (for_codice, for_desc) VALUES (120, 'Calabrò & Figli')");
    EXPECT_THAT(Matches("fornitori", "calabro"), ElementsAre("120 Calabrò & Figli"));
    EXPECT_THAT(Matches("fornitori", "CALABRO' &"), ElementsAre("120 Calabrò & Figli"));
    EXPECT_THAT(Matches("fornitori", "12"),
                ElementsAre("12 Trattoria Al Mestolo di Garbelli Nives", "120 Calabrò & Figli"))
        << "the code itself before those that begin with it";
    Run("INSERT INTO admin.fornito1 (for_codice, for_desc) VALUES (1299, 'Abaco'), (1300, 'Aia'), (2147483647, "
        "'Zeta')");
    EXPECT_THAT(Matches("fornitori", "12"),
                ElementsAre("12 Trattoria Al Mestolo di Garbelli Nives", "1299 Abaco", "120 Calabrò & Figli"));
    EXPECT_THAT(Matches("fornitori", "12", {}, 2),
                ElementsAre("12 Trattoria Al Mestolo di Garbelli Nives", "1299 Abaco"));
    EXPECT_THAT(Matches("fornitori", "214748364"), ElementsAre("2147483647 Zeta"));
    EXPECT_THAT(Matches("fornitori", "2147483648"), IsEmpty()) << "beyond 32 bits";
    EXPECT_THAT(Matches("fornitori", "01"), IsEmpty());
    EXPECT_THAT(Matches("fornitori", "0"), IsEmpty());
    EXPECT_THAT(Matches("conti", "2", {{"con_mas", 310}}), ElementsAre("2 Servizi commerciali"));
    EXPECT_THAT(Matches("fornitori", "1", {}, 1), ElementsAre("1 Utensileria Marzavola S.r.l."));
    EXPECT_THAT(Matches("fornitori", "pennavera").size(), 2u);
    EXPECT_THAT(Matches("province", "pr"), testing::Contains("PR Parma"));
    EXPECT_EQ(Matches("nazioni", "it").front(), "IT Italia") << "the code before the names with those letters";
    EXPECT_THAT(Matches("fornitori", "  "), IsEmpty());
    EXPECT_THAT(Matches("fornitori", "1%"), IsEmpty());
}

TEST_P(BrowseTest, ListIsSearchedInAllItsTexts)
{
    const BrowseDescription &table = *FindBrowse("clienti");
    const auto found = [&](std::string_view typed) {
        std::vector<std::string> codes;
        ForEachBrowseRow(Cmd(), table, {}, [&](const BrowseRow &row) {
            if (RowMatches(table, row, typed)) codes.push_back(row.keys.front());
            return true;
        });
        std::sort(codes.begin(), codes.end());
        return codes;
    };
    EXPECT_THAT(found("langhirano"), ElementsAre("5"));
    EXPECT_THAT(found("09406137340"), ElementsAre("1"));
    EXPECT_THAT(found("quarantotti nicolo"), ElementsAre("29"));
    EXPECT_EQ(found("").size(), 40u);
}

TEST_P(BrowseTest, NeighboursGoByTheKeys)
{
    const BrowseDescription &accounts = *FindBrowse("sottocon"), &nations = *FindBrowse("nazioni");
    RecordKeys keys, result;
    long count = 0;
    for (; NeighbourRecord(Cmd(), accounts, keys, true, &keys); ++count) ASSERT_EQ(keys.size(), 3u);
    EXPECT_EQ(std::to_string(count), Value("SELECT COUNT(*) FROM admin.sotcon"));
    ASSERT_TRUE(NeighbourRecord(Cmd(), accounts, {}, false, &result));
    EXPECT_EQ(result, keys) << "the last one";
    ASSERT_TRUE(NeighbourRecord(Cmd(), accounts, {"260", "1", "1"}, true, &result));
    EXPECT_THAT(result, ElementsAre("260", "1", "2"));
    ASSERT_TRUE(NeighbourRecord(Cmd(), accounts, {"260", "1", "1"}, false, &result));
    EXPECT_EQ(result.front(), "255") << "the account before it is another master's";
    ASSERT_TRUE(NeighbourRecord(Cmd(), nations, {"IS"}, true, &result));
    EXPECT_THAT(result, ElementsAre("IT"));
    EXPECT_FALSE(NeighbourRecord(Cmd(), accounts, {"dieci", "1", "1"}, true, &result));
    EXPECT_FALSE(DescribeCode(Cmd(), accounts, {"260", "1", "77"}));
    EXPECT_FALSE(DescribeCode(Cmd(), accounts, {"260"}));
}

INSTANTIATE_TEST_SUITE_P(Engines, BrowseTest, testing::ValuesIn(TestEngines()), TestEngineName);

} // namespace

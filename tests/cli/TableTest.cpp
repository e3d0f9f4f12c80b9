#include "cli/Table.h"

#include <gtest/gtest.h>

namespace {

using Align = TableColumn::Align;

Table Suppliers(bool colours = false)
{
    return Table({{"N.", Align::Right}, {"Fornitore", Align::Left, 12}, {"Importo", Align::Right}}, colours);
}

TEST(Table, AlignsByCharactersAndCutsLongTexts)
{
    Table table = Suppliers();
    table.AddRow({"1", "Caffè Perù", "1.234,56"});
    table.AddRow({"12", "Società Anonima Forlì", "-5,00"});
    table.AddRow({"3", "Dodici char.", "0,10"});
    EXPECT_EQ(table.Finish({"", "Totale", "1.229,66"}), "N.  Fornitore      Importo\n"
                                                        "──  ────────────  ────────\n"
                                                        " 1  Caffè Perù    1.234,56\n"
                                                        "12  Società Ano…     -5,00\n"
                                                        " 3  Dodici char.      0,10\n"
                                                        "──  ────────────  ────────\n"
                                                        "    Totale        1.229,66\n");
}

TEST(Table, NeverLetsATextSteerTheTerminal)
{
    Table table({{"Nome"}});
    table.AddRow({"Rossi\n\x1b[31msrl\xE8"});
    EXPECT_EQ(table.Finish(), "Nome\n──────────────\nRossi [31msrlè\n");
}

TEST(Table, WidensForTotalsAndFillsMissingCells)
{
    Table table({{"A"}, {"B", Align::Right}});
    table.AddRow({"x"});
    EXPECT_EQ(table.Finish({"", "100,00"}), "A       B\n─  ──────\nx\n─  ──────\n   100,00\n");
}

TEST(Table, WithoutRowsKeepsItsTitles)
{
    EXPECT_EQ(Table({{"A"}, {"Bè"}}).Finish(), "A  Bè\n─  ──\n");
}

TEST(Table, ColoursOnlyWhenTold)
{
    Table table = Suppliers(true);
    table.AddRow({"1", "Uno", "1"});
    const std::string text = table.Finish({"", "Totale", "1"});
    EXPECT_TRUE(text.starts_with("\033[1mN.  Fornitore  Importo\033[0m\n"));
    EXPECT_TRUE(text.ends_with("\033[1m    Totale           1\033[0m\n"));
    EXPECT_EQ(Suppliers().Finish().find('\033'), std::string::npos);
}

TEST(Table, LongListsAreHandedOverAsTheyCome)
{
    Table table({{"N.", Align::Right}, {"Testo"}});
    for (std::size_t i = 1; i < Table::kMeasuredRows; ++i) table.AddRow({"1", "riga"});
    EXPECT_EQ(table.Take(), "");
    table.AddRow({"1", "riga"});
    EXPECT_FALSE(table.Take().empty());
    table.AddRow({"123456", "fuori riga"}); // wider than all before: whole, if out of line
    EXPECT_EQ(table.Take(), "123456  fuori riga\n");
    EXPECT_EQ(table.Finish({"", "fine"}), "──  ─────\n    fine\n");
}

} // namespace

#include "ledger/Imbalance.h"

#include <gtest/gtest.h>
#include <initializer_list>

namespace {

struct Row {
    const char *side;
    double amount;
};

struct ImbalanceCase {
    const char *name;
    std::initializer_list<Row> rows;
    bool has_vat;
    const char *words;
};

const ImbalanceCase kCases[] = {
    {"balanced", {{"D", 100}, {"A", 100}}, false, ""},
    {"empty", {}, true, ""},
    {"wrong side",
     {{"D", 122}, {"D", 22}, {"D", 100}},
     true,
     "Mancano 244,00 in Avere – la metà è l'importo della riga 1: segno sbagliato?"},
    {"wrong side of a later row",
     {{"D", 122}, {"A", 100}, {"D", 22}},
     true,
     "Mancano 44,00 in Avere – la metà è l'importo della riga 3: segno sbagliato?"},
    {"half of a row on the right side is no sign", {{"A", 20}, {"D", 30}, {"D", 30}}, false, "Mancano 40,00 in Avere"},
    {"missing row", {{"A", 122}, {"D", 22}}, true, "Mancano 100,00 in Dare"},
    {"double row",
     {{"A", 122}, {"D", 22}, {"D", 22}, {"D", 100}},
     true,
     "Mancano 22,00 in Avere – è l'importo della riga 2: riga mancante o doppia?"},
    {"a cent of VAT", {{"A", 122}, {"D", 122.02}}, true, "Mancano 0,02 in Avere – arrotondamento dell'IVA?"},
    {"a cent without VAT", {{"A", 122}, {"D", 122.01}}, false, "Mancano 0,01 in Avere"},
    {"swapped digits",
     {{"A", 540}, {"D", 450}},
     false,
     "Mancano 90,00 in Dare – divisibile per 9: cifre scambiate alla riga 1?"},
    {"swapped far apart",
     {{"A", 700.01}, {"D", 100.07}},
     false,
     "Mancano 599,94 in Dare – divisibile per 9: cifre scambiate?"},
    {"nothing to recognise", {{"A", 100}, {"D", 63}}, false, "Mancano 37,00 in Dare"},
    {"lower case sides", {{"d", 10}, {"a", 10}}, false, ""},
};

class ImbalanceTest : public testing::TestWithParam<ImbalanceCase> {};

TEST_P(ImbalanceTest, SaysWhatItLooksLike)
{
    PNOTA entry;
    std::size_t at = 0;
    for (const Row &row : GetParam().rows) {
        entry.righe[at].row_mas = 1;
        entry.righe[at].row_tipo = row.side;
        entry.righe[at++].row_importo = row.amount;
    }
    if (GetParam().has_vat) entry.iva[0].iva = 22;
    EXPECT_EQ(DescribeImbalance(entry), GetParam().words) << GetParam().name;
}

INSTANTIATE_TEST_SUITE_P(Signs, ImbalanceTest, testing::ValuesIn(kCases));

} // namespace

#include "schedule/OpeningBalanceSheet.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>
#include <new>

namespace {

constexpr std::string_view kHardBlank = "\u00A0";
constexpr std::size_t kTextMax = 100; ///< characters; the longest name has 91

/// Hard blanks, which sheets copied from web pages are full of, count as blanks.
std::string OneLine(std::string text)
{
    for (std::size_t at = 0; (at = text.find(kHardBlank, at)) != std::string::npos;)
        text.replace(at, kHardBlank.size(), " ");
    text = OnOneLine(text);
    return std::string(Trimmed(Utf8Prefix(text, kTextMax)));
}

bool IsNumber(std::string_view text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// --- columns ---------------------------------------------------------------------------------------------------------

enum Column : std::size_t { kRel, kCode, kName, kVatNumber, kFiscalCode, kAmount, kDay, kColumns };
constexpr std::array<const char *, kColumns> kTitles = {"REL",    "CODICE", "RAG_SOCIALE", "PIVA",
                                                        "CODFIS", "SALDO",  "DATA"};

/// Where the columns stand; nothing for one that is not there.
using Columns = std::array<std::optional<std::size_t>, kColumns>;

Columns FindColumns(const std::vector<SheetCell> &titles)
{
    Columns columns;
    for (std::size_t at = 0; at < titles.size(); ++at) {
        const std::string title = ToUpper(OneLine(titles[at].text));
        const auto known = std::find(kTitles.begin(), kTitles.end(), title);
        if (known == kTitles.end()) continue;
        std::optional<std::size_t> &column = columns[static_cast<std::size_t>(known - kTitles.begin())];
        if (column) throw OpeningBalancesError(fmt::format("La colonna {} compare due volte!", title));
        column = at;
    }
    for (const Column needed : {kRel, kAmount, kDay})
        if (!columns[needed])
            throw OpeningBalancesError(fmt::format("Impossibile trovare la colonna {}!", kTitles[needed]));
    if (!columns[kCode] && !columns[kName] && !columns[kVatNumber] && !columns[kFiscalCode])
        throw OpeningBalancesError("Impossibile trovare la colonna PIVA, CODFIS, RAG_SOCIALE o CODICE!");
    return columns;
}

OpeningBalanceRow ToRow(long number, const std::vector<SheetCell> &cells, const Columns &columns)
{
    static const SheetCell kNothing;
    const auto cell = [&](Column column) -> const SheetCell & {
        return columns[column] && *columns[column] < cells.size() ? cells[*columns[column]] : kNothing;
    };
    const auto text = [&](Column column) { return OneLine(TextOfCell(cell(column))); };
    return {number,
            ToUpper(text(kRel)),
            text(kCode),
            text(kName),
            text(kVatNumber),
            text(kFiscalCode),
            text(kAmount),
            text(kDay),
            AmountOfCell(cell(kAmount)),
            DayOfCell(cell(kDay))};
}

bool IsEmpty(const OpeningBalanceRow &row)
{
    return row.side.empty() && row.code.empty() && row.name.empty() && row.vat_number.empty() &&
           row.fiscal_code.empty() && row.amount_text.empty() && row.day_text.empty();
}

// --- dates -----------------------------------------------------------------------------------------------------------

/// "31-12-25": the year of two digits is written out.
std::string WithLongYear(const std::string &text)
{
    const std::size_t last = text.find_last_of("/-.");
    const bool begins_with_year = text.find_first_of("/-.") == 4;
    if (last == std::string::npos || begins_with_year || text.size() - last != 3 || !IsNumber(text.substr(last + 1)))
        return text;
    return text.substr(0, last + 1) + (text[last + 1] >= '8' ? "19" : "20") + text.substr(last + 1);
}

std::optional<long> ParseDay(std::string text)
{
    // "2025-12-31T00:00:00", "31/12/2025 10:30"
    if (const std::size_t hour = text.find_first_of(" T"); hour != std::string::npos) {
        if (text.find(':', hour) == std::string::npos) return std::nullopt;
        text.resize(hour);
    }
    if (text.size() == 8 && IsNumber(text))
        return ParseDate(fmt::format("{}-{}-{}", text.substr(0, 4), text.substr(4, 2), text.substr(6)));
    return ParseDate(WithLongYear(text));
}

} // namespace

std::string TextOfCell(const SheetCell &cell)
{
    if (cell.kind != SheetCell::Kind::Number) return cell.text;
    if (cell.is_date) return FormatDate(cell.day);
    const bool is_whole = std::fabs(cell.number) < 1e15 && cell.number == std::trunc(cell.number);
    return is_whole ? fmt::format("{:.0f}", cell.number) : fmt::format("{}", cell.number);
}

std::optional<double> AmountOfCell(const SheetCell &cell)
{
    std::optional<double> amount;
    if (cell.kind == SheetCell::Kind::Number) {
        if (!cell.is_date) amount = cell.number;
    } else {
        std::string text = OneLine(cell.text);
        for (const std::string_view currency : {"EURO", "EUR"}) {
            if (EqualsIgnoreCase(std::string_view(text).substr(0, currency.size()), currency))
                text.erase(0, currency.size());
            if (const std::size_t rest = text.size() - std::min(text.size(), currency.size());
                EqualsIgnoreCase(std::string_view(text).substr(rest), currency))
                text.resize(rest);
        }
        strtrim(text);
        // Bookkeeping programs write what is owed the other way round with the sign behind or in brackets.
        const bool is_bracketed = text.size() > 2 && text.front() == '(' && text.back() == ')',
                   has_sign_behind = text.size() > 1 && text.back() == '-';
        if (is_bracketed) text = text.substr(1, text.size() - 2);
        if (has_sign_behind) text.pop_back();
        amount = ParseAmount(text);
        if (amount && (is_bracketed || has_sign_behind)) {
            if (text.find_first_of("+-") != std::string::npos) return std::nullopt;
            amount = -*amount;
        }
    }
    if (amount) amount = Round(*amount, 2);
    return amount;
}

std::optional<long> DayOfCell(const SheetCell &cell)
{
    const std::optional<long> day = cell.is_date ? cell.day : ParseDay(OneLine(TextOfCell(cell)));
    if (!day || Year(*day) < 1970 || Year(*day) > 2199) return std::nullopt;
    return day;
}

std::vector<OpeningBalanceRow> ReadOpeningBalances(const std::filesystem::path &workbook)
{
    const auto fail = [&](const char *what, const char *why) {
        return FileError(fmt::format("{}\n\n{}\n{}", what, OnOneLine(workbook.string()), why));
    };
    std::optional<SheetReader> reader;
    try {
        reader.emplace(workbook);
    } catch (const SheetError &error) {
        throw fail("Impossibile aprire il foglio di lavoro!", error.what());
    } catch (const std::bad_alloc &) {
        throw fail("Impossibile creare il foglio di lavoro!", "La memoria non basta.");
    }
    std::optional<Columns> columns;
    std::vector<OpeningBalanceRow> rows;
    try {
        reader->ForEachRow([&](long number, const std::vector<SheetCell> &cells) {
            if (!columns) {
                columns = FindColumns(cells);
                return;
            }
            OpeningBalanceRow row = ToRow(number, cells, *columns);
            if (!IsEmpty(row)) rows.push_back(std::move(row));
        });
    } catch (const SheetError &error) {
        throw fail("Impossibile Leggere il foglio di lavoro!", error.what());
    }
    if (!columns) throw fail("Impossibile Leggere il foglio di lavoro!", "Il foglio è vuoto.");
    return rows;
}

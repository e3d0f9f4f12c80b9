#include "ledger/Imbalance.h"

#include "tarvodlg/base/Numbers.h"

#include <algorithm>
#include <cstdlib>
#include <fmt/format.h>

namespace {

constexpr long long kRoundingCents = 2;

/// True when two neighbouring digits of the amount, put the other way round, change it by exactly that much.
bool SwapExplains(long long amount, long long difference)
{
    for (long long unit = 1; unit * 10 <= amount; unit *= 10) {
        const long long low = amount / unit % 10, high = amount / unit / 10 % 10;
        if (std::llabs((high - low) * 9 * unit) == difference) return true;
    }
    return false;
}

/// The first row in use for which the test holds, from 1; 0 = none.
template <class Test>
std::size_t RowWhere(const PNOTA &entry, Test test)
{
    const auto found = std::find_if(entry.righe.begin(), entry.righe.end(), [&](const PNOTA_RIGA &row) {
        return row.InUse() && ToCents(row.row_importo) != 0 && test(row);
    });
    return found == entry.righe.end() ? 0 : static_cast<std::size_t>(found - entry.righe.begin()) + 1;
}

bool HasVatLines(const PNOTA &entry)
{
    return std::any_of(entry.iva.begin(), entry.iva.end(), [](const PNOTA_IVA &line) { return line.iva != 0; });
}

std::string Sign(const PNOTA &entry, long long difference, bool dare_exceeds)
{
    const std::size_t wrong_side = RowWhere(entry, [&](const PNOTA_RIGA &row) {
        return ToCents(row.row_importo) * 2 == difference && row.IsDare() == dare_exceeds;
    });
    if (wrong_side != 0) return fmt::format("la metà è l'importo della riga {}: segno sbagliato?", wrong_side);
    const std::size_t same =
        RowWhere(entry, [&](const PNOTA_RIGA &row) { return ToCents(row.row_importo) == difference; });
    if (same != 0) return fmt::format("è l'importo della riga {}: riga mancante o doppia?", same);
    if (difference <= kRoundingCents && HasVatLines(entry)) return "arrotondamento dell'IVA?";
    if (difference % 9 != 0) return {};
    const std::size_t swapped =
        RowWhere(entry, [&](const PNOTA_RIGA &row) { return SwapExplains(ToCents(row.row_importo), difference); });
    if (swapped != 0) return fmt::format("divisibile per 9: cifre scambiate alla riga {}?", swapped);
    return "divisibile per 9: cifre scambiate?";
}

} // namespace

std::string DescribeImbalance(const PNOTA &entry)
{
    long long cents = 0;
    for (const PNOTA_RIGA &row : entry.righe)
        if (row.InUse())
            cents += row.IsDare() ? ToCents(row.row_importo) : row.IsAvere() ? -ToCents(row.row_importo) : 0;
    if (cents == 0) return {};
    const long long difference = std::llabs(cents);
    const std::string sign = Sign(entry, difference, cents > 0);
    return fmt::format("Mancano {} in {}{}", FormatAmount(FromCents(difference)), cents > 0 ? "Avere" : "Dare",
                       sign.empty() ? std::string() : " – " + sign);
}

#include "tarvodlg/print/ReportTotals.h"

#include "tarvodlg/base/Numbers.h"

#include <stdexcept>

#include <fmt/format.h>

void ReportTotals::Prepare(const ReportLayout &layout, const ReportColumns &columns)
{
    columns_.clear();
    const auto take = [&](const ReportBand &band) {
        for (const ReportItem &item : band.items) {
            if (item.kind != ItemKind::Sum && item.kind != ItemKind::Running) continue;
            const std::size_t column = columns.Require(layout, item.place, item.text);
            if (std::find(columns_.begin(), columns_.end(), column) == columns_.end()) columns_.push_back(column);
        }
    };
    for (const ReportBand &band : layout.bands) take(band);
    for (const ReportGroup &group : layout.groups) {
        if (group.header) take(*group.header);
        if (group.footer) take(*group.footer);
    }
    scopes_.resize(layout.groups.size() + 1);
    Clear();
}

void ReportTotals::Clear()
{
    std::fill(scopes_.begin(), scopes_.end(), Empty());
}

void ReportTotals::Add(const ReportRow &row, const ReportLayout &layout)
{
    try {
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            const long long cents = ToCents(row.Number(columns_[i]));
            for (Scope &scope : scopes_)
                if (__builtin_add_overflow(scope.cents[i], cents, &scope.cents[i])) throw std::out_of_range("");
        }
    } catch (const std::out_of_range &) {
        throw ReportError(fmt::format("{}: la riga {} porta un importo fuori misura", layout.file, Report().rows + 1));
    }
    for (Scope &scope : scopes_) ++scope.rows;
}

double ReportTotals::Sum(const Scope &scope, std::size_t column) const
{
    const auto found = std::find(columns_.begin(), columns_.end(), column);
    return found == columns_.end() ? 0 : FromCents(scope.cents[static_cast<std::size_t>(found - columns_.begin())]);
}

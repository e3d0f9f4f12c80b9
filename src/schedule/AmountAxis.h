#pragma once

#include <string>
#include <vector>

/// The scale of a chart of amounts: round steps (1, 2 or 5 of a power of ten) that hold all values and the zero.
struct AmountAxis {
    long long lowest = 0, highest = 0; ///< in cents, multiples of the step; lowest <= 0 <= highest, never equal
    long long step = 0;

    /// @param lowest, highest  of the values, in cents   @param steps  how many there may be between them, from 1
    static AmountAxis Of(long long lowest, long long highest, int steps);

    std::vector<long long> Marks() const; ///< from the lowest to the highest

    /// "1.500", "0,50"; from a million on "1,5 mln", "2 mld", as people say it.
    std::string Label(long long cents) const;

    /// Where a value stands between the ends: 0 at the lowest, 1 at the highest.
    double ShareOf(long long cents) const;
};

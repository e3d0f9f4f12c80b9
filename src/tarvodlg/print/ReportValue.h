#pragma once

#include <string>
#include <variant>

/// A date in a report; 0 = none.
struct ReportDate {
    long day = 0; ///< day number
    friend auto operator<=>(const ReportDate &, const ReportDate &) = default;
};

/// What a column, a parameter or an expression holds. monostate is SQL's NULL.
using ReportValue = std::variant<std::monostate, long long, double, std::string, ReportDate>;

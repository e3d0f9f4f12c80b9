#pragma once

#include "tarvodlg/print/Crystal.h"

#include <array>
#include <functional>
#include <string>

class SACommand;

// How old the open amounts of customers or suppliers are at a day.

enum class AgingOrder { Name, Overdue }; ///< Overdue: the largest overdue amount first

struct AgingFilter {
    short side = 0;         ///< 0 customers, 1 suppliers
    long reference_day = 0; ///< what is due on it or later is not overdue
    AgingOrder order = AgingOrder::Name;
    long code = 0; ///< one counterpart, 0 = all
};

/// The open amounts of one counterpart, or of all of them, in cents. Credit notes count negative.
struct AgingLine {
    long code = 0;
    std::string name;
    long count = 0;
    long long not_due = 0;   ///< due on the reference day or later
    long long sca_30 = 0;    ///< 1 to 30 days overdue
    long long sca_60 = 0;    ///< 31 to 60
    long long sca_90 = 0;    ///< 61 to 90
    long long sca_120 = 0;   ///< 91 to 120
    long long sca_oltre = 0; ///< 121 and more
    long long Overdue() const { return sca_30 + sca_60 + sca_90 + sca_120 + sca_oltre; }
    long long Total() const { return not_due + Overdue(); }
};

/// Streams the counterparts that have something open, in the order of the filter, then by name and code.
void ForEachAging(SACommand *cmd, const AgingFilter &filter, const std::function<void(AgingLine &&)> &each);

/// All of them together, without code and name.
AgingLine ReadAgingTotal(SACommand *cmd, const AgingFilter &filter);

/// Prints the aging ("anzianita.rpt"). Errors are shown. @param destination  none = the program's
/// @return false when it failed or was cancelled
bool PrintAging(const AgingFilter &filter, const std::optional<ReportDestination> &destination = {});

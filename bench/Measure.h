#pragma once

#include <functional>
#include <string>
#include <vector>

/// What one case of the benchmark found.
struct Finding {
    std::string name;
    std::string unit = "us"; ///< of `ours` and `bare`, for one entry, file or step
    double ours = 0;
    double bare = 0;   ///< 0 when nothing bare stands against it
    double ratio = 0;  ///< median of the rounds, not ours / bare; 0 when there is none
    double target = 0; ///< highest good ratio; 0 = for information
    std::string fault; ///< what is wrong apart from the ratio, e.g. a query without an index

    bool IsGood() const { return fault.empty() && (target == 0 || ratio <= target); }
};

using Findings = std::vector<Finding>;
using Work = std::function<void()>;

double Seconds(const Work &work);
double Median(std::vector<double> values);

/// Runs both sides once unmeasured and then `rounds` times, alternately and each first in every other round, so that a
/// machine that slows down or a file that grows meets both alike.
/// @param count  how many entries or files one run handles; the times are microseconds per piece
Finding Compare(std::string name, int rounds, double count, double target, const Work &ours, const Work &bare);

/// The table for people, one line per case.
std::string FormatFindings(const Findings &findings);
std::string FormatFindingsAsJson(const Findings &findings);

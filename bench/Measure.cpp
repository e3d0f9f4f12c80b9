#include "bench/Measure.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>

namespace {

/// Blank where there is nothing to show.
std::string Figure(double value, int decimals)
{
    return value == 0 ? std::string() : fmt::format("{:.{}f}", value, decimals);
}

std::string Verdict(const Finding &finding)
{
    if (!finding.fault.empty()) return finding.fault;
    if (finding.target == 0) return "-";
    return finding.IsGood() ? "ok" : "oltre";
}

} // namespace

double Seconds(const Work &work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values)
{
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

Finding Compare(std::string name, int rounds, double count, double target, const Work &ours, const Work &bare)
{
    ours();
    bare();
    std::vector<double> our_times, bare_times, ratios;
    for (int round = 0; round < rounds; ++round) {
        const bool ours_first = round % 2 == 0;
        const double first = Seconds(ours_first ? ours : bare);
        const double second = Seconds(ours_first ? bare : ours);
        our_times.push_back(ours_first ? first : second);
        bare_times.push_back(ours_first ? second : first);
        ratios.push_back(our_times.back() / bare_times.back());
    }
    Finding finding;
    finding.name = std::move(name);
    finding.ours = Median(our_times) / count * 1e6;
    finding.bare = Median(bare_times) / count * 1e6;
    finding.ratio = Median(ratios);
    finding.target = target;
    return finding;
}

std::string FormatFindings(const Findings &findings)
{
    static constexpr char kLine[] = "{:<54}{:>10}{:>11} {:<3}{:>7}{:>8}  {}\n";
    std::string text = fmt::format(kLine, "case", "ours", "bare", "", "ratio", "target", "");
    for (const Finding &finding : findings)
        text += fmt::format(kLine, finding.name, Figure(finding.ours, 2), Figure(finding.bare, 2), finding.unit,
                            Figure(finding.ratio, 2), Figure(finding.target, 2), Verdict(finding));
    return text;
}

std::string FormatFindingsAsJson(const Findings &findings)
{
    nlohmann::json list = nlohmann::json::array();
    for (const Finding &finding : findings) {
        nlohmann::json item = {{"case", finding.name}, {"unit", finding.unit}, {"ours", finding.ours}};
        if (finding.bare != 0) item["bare"] = finding.bare;
        if (finding.ratio != 0) item["ratio"] = finding.ratio;
        if (finding.target != 0) item["target"] = finding.target;
        if (!finding.fault.empty()) item["fault"] = finding.fault;
        item["good"] = finding.IsGood();
        list.push_back(std::move(item));
    }
    return list.dump(2) + "\n";
}

#include "bench/Cases.h"
#include "bench/JournalListing.h"
#include "bench/Probe.h"

#include <fmt/format.h>

int RunMemoryProbe(long entries)
{
    SAConnection connection;
    connection.Connect(ProbeTarget());
    FillPageCache(&connection);
    SACommand listing(&connection, std::string(kListing) + " LIMIT :entries");
    listing.Param("entries").setAsLong(entries);
    if (ListThroughLibrary(&listing).entries != entries) return 3;
    fmt::print("{}\n", PeakMemory());
    return 0;
}

void MeasureMemory(const BenchArchive &archive, long entries, Findings &findings)
{
    if (PeakMemory() == 0 || entries < 10) return;
    const auto peak = [&](long listed) {
        return AskProbe(archive, fmt::format("--memory-probe {}", listed)).at(0) / 1024;
    };
    Finding finding;
    finding.name = fmt::format("peak memory, list {} / {}, {}", entries, entries / 10, EngineName(archive.Engine()));
    finding.unit = "MB";
    finding.ours = peak(entries);
    finding.bare = peak(entries / 10);
    finding.ratio = finding.ours / finding.bare;
    finding.target = kMemoryTarget;
    findings.push_back(std::move(finding));
}

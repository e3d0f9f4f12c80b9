#include "bench/Cases.h"
#include "bench/JournalListing.h"

#include <fmt/format.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace {

constexpr double kMemoryTarget = 1.1;
constexpr char kTargetVariable[] =
    "LUMERA_BENCH_TARGET"; // not an argument: others can read those, and it may hold a password

/// A figure of /proc/self/status, in kB.
long StatusFigure(std::string_view name)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(name)) return std::atol(line.c_str() + name.size() + 1);
    return 0;
}

/// Peak of a process of its own that lists the first entries; what this process did before must not count.
double PeakOf(const BenchArchive &archive, long entries)
{
    setenv(kTargetVariable, archive.Target().c_str(), 1);
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string command = fmt::format("'{}' --memory-probe {}", self, entries);
    FILE *probe = popen(command.c_str(), "r");
    unsetenv(kTargetVariable);
    if (probe == nullptr) throw std::runtime_error("the memory probe does not start");
    std::array<char, 64> line{};
    const bool has_line = std::fgets(line.data(), line.size(), probe) != nullptr;
    const int status = pclose(probe);
    if (!has_line || status != 0) throw std::runtime_error("the memory probe failed");
    return std::atof(line.data());
}

} // namespace

int RunMemoryProbe(long entries)
{
    const char *target = std::getenv(kTargetVariable);
    if (target == nullptr) return 2;
    SAConnection connection;
    connection.Connect(target);
    // SQLite's page cache fills up to its limit however long a listing is; it is filled before either of them.
    SACommand whole(&connection,
                    "SELECT SUM(pno_dare + pno_avere) AS totale, MAX(pno_desc) AS testo FROM admin.pnota1");
    whole.Execute();
    while (whole.FetchNext()) {
    }
    SACommand listing(&connection, std::string(kListing) + " LIMIT :entries");
    listing.Param("entries").setAsLong(entries);
    if (ListThroughLibrary(&listing).entries != entries) return 3;
    fmt::print("{}\n", StatusFigure("VmHWM:"));
    return 0;
}

void MeasureMemory(const BenchArchive &archive, long entries, Findings &findings)
{
    if (StatusFigure("VmHWM:") == 0 || entries < 10) return;
    Finding finding;
    finding.name = fmt::format("peak memory, list {} / {}, {}", entries, entries / 10, EngineName(archive.Engine()));
    finding.unit = "MB";
    finding.ours = PeakOf(archive, entries) / 1024;
    finding.bare = PeakOf(archive, entries / 10) / 1024;
    finding.ratio = finding.ours / finding.bare;
    finding.target = kMemoryTarget;
    findings.push_back(std::move(finding));
}

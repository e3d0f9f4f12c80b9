#include "bench/Probe.h"

#include "sqlapi/SACommand.h"

#include <fmt/format.h>

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace {

/// Not an argument: others can read those, and it may hold a password.
constexpr char kTargetVariable[] = "LUMERA_BENCH_TARGET";

} // namespace

std::vector<double> AskProbe(const BenchArchive &archive, const std::string &arguments)
{
    setenv(kTargetVariable, archive.Target().c_str(), 1);
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    FILE *probe = popen(fmt::format("'{}' {}", self, arguments).c_str(), "r");
    unsetenv(kTargetVariable);
    if (probe == nullptr) throw std::runtime_error("the probe does not start");
    std::array<char, 200> line{};
    const bool has_line = std::fgets(line.data(), line.size(), probe) != nullptr;
    const int status = pclose(probe);
    if (!has_line || status != 0) throw std::runtime_error("the probe failed");
    std::istringstream words(line.data());
    std::vector<double> figures;
    for (double figure = 0; words >> figure;) figures.push_back(figure);
    return figures;
}

std::string ProbeTarget()
{
    const char *target = std::getenv(kTargetVariable);
    if (target == nullptr) throw std::runtime_error("a probe is started by the program itself");
    return target;
}

long PeakMemory()
{
    constexpr std::string_view kName = "VmHWM:";
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(kName)) return std::atol(line.c_str() + kName.size());
    return 0;
}

void FillPageCache(SAConnection *connection)
{
    SACommand whole(connection, "SELECT SUM(pno_dare + pno_avere) AS totale, MAX(pno_desc) AS testo FROM admin.pnota1");
    whole.Execute();
    while (whole.FetchNext()) {
    }
}

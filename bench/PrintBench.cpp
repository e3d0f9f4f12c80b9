#include "bench/Cases.h"
#include "bench/JournalListing.h"
#include "bench/Probe.h"

#include "tarvodlg/print/PagePainter.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

/// A print of ten times as many entries may take a little more for each: the pages' numbers and offsets get longer.
constexpr double kGrowthTarget = 1.25;

/// What the probe found.
struct Printed {
    double seconds = 0;       ///< for the PDF
    double query_seconds = 0; ///< for reading the same entries alone
    double peak = 0;          ///< MB
    double pages = 0;
};

Printed AskPrint(const BenchPlaces &places, const BenchArchive &archive, long entries)
{
    const std::vector<double> figures =
        AskProbe(archive, fmt::format("--print-probe {} --folder '{}'", entries, places.folder.string()));
    return {figures.at(0), figures.at(1), figures.at(2) / 1024, figures.at(3)};
}

ReportRequest JournalRequest(long entries)
{
    ReportRequest request;
    request.layout = LoadLayout("pnotagest.rpt");
    request.selection = fmt::format("{{pnota.pno_codice}} <= {}", entries);
    for (const char *name : {"Ditta", "Sezione", "Causale"}) request.parameters[name] = std::string(name);
    for (const char *name : {"Start", "Stop"}) request.parameters[name] = ReportDate{};
    return request;
}

double Microseconds(double seconds, long entries)
{
    return seconds / static_cast<double>(entries) * 1e6;
}

} // namespace

int RunPrintProbe(const std::filesystem::path &folder, long entries)
{
    SAConnection connection;
    connection.Connect(ProbeTarget());
    FillPageCache(&connection);
    SACommand listing(&connection, std::string(kListing) + " LIMIT :entries");
    listing.Param("entries").setAsLong(entries);
    const double query_seconds = Seconds([&] { ListThroughLibrary(&listing); });

    SACommand command(&connection);
    const std::filesystem::path file = folder / "stampa.pdf";
    WritePdf(&command, JournalRequest(1), file); // fonts and plugins are there now
    ReportResult result;
    const double seconds = Seconds([&] { result = WritePdf(&command, JournalRequest(entries), file); });
    if (result.rows != entries) return 3;
    fmt::print("{} {} {} {}\n", seconds, query_seconds, PeakMemory(), result.pages);
    return 0;
}

void MeasurePrinting(const BenchPlaces &places, const BenchArchive &archive, long entries, Findings &findings)
{
    const long fewer = entries / 10;
    if (fewer < 100) return;
    const Printed many = AskPrint(places, archive, entries), few = AskPrint(places, archive, fewer);
    const char *engine = EngineName(archive.Engine());
    const auto add = [&](std::string name, const char *unit, double ours, double bare, double target) {
        findings.push_back({std::move(name), unit, ours, bare, ours / bare, target, {}});
    };
    add(fmt::format("print {} entries, {} pages / query, {}", entries, many.pages, engine), "us",
        Microseconds(many.seconds, entries), Microseconds(many.query_seconds, entries), 0);
    add(fmt::format("print {} / {}, {}", entries, fewer, engine), "us", Microseconds(many.seconds, entries),
        Microseconds(few.seconds, fewer), kGrowthTarget);
    if (many.peak > 0)
        add(fmt::format("peak memory, print {} / {}, {}", entries, fewer, engine), "MB", many.peak, few.peak,
            kMemoryTarget);
}

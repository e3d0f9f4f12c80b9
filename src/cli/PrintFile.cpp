#include "cli/PrintFile.h"

#include "cli/Session.h"
#include "tarvodlg/base/Files.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

std::optional<ReportDestination> PrintFile::Destination() const
{
    std::optional<ReportDestination> destination;
    const std::pair<const std::string *, ReportTarget> files[] = {
        {&pdf, ReportTarget::Pdf}, {&xlsx, ReportTarget::Xlsx}, {&csv, ReportTarget::Csv}};
    for (const auto &[name, target] : files) {
        if (name->empty()) continue;
        if (destination) throw UsageError("Indicare un solo file, con --pdf, --xlsx o --csv.");
        destination = ReportDestination{target, *name};
    }
    return destination;
}

ReportDestination PrintFile::RequiredDestination() const
{
    const std::optional<ReportDestination> destination = Destination();
    if (!destination) throw UsageError("Indicare un solo file, con --pdf, --xlsx o --csv.");
    return *destination;
}

void AddPrintFileOptions(CLI::App *command, PrintFile *file)
{
    command->add_option("--pdf", file->pdf, "Scrive le pagine in un PDF");
    command->add_option("--xlsx", file->xlsx, "Scrive le righe in un foglio XLSX");
    command->add_option("--csv", file->csv, "Scrive le righe in un file CSV");
}

void RequireOrder(long first, long last, const char *fault)
{
    if (last != 0 && last < first) throw UsageError(fault);
}

int FinishPrint(const Session &session, bool printed, const ReportDestination &destination)
{
    if (!printed) throw FileError(fmt::format("La stampa non è stata scritta: {}", destination.file.string()));
    if (session.json)
        PrintJson(nlohmann::json{{"file", destination.file.string()}});
    else
        Print(fmt::format("Scritto {}\n", destination.file.string()));
    return kExitDone;
}

#pragma once

#include "tarvodlg/print/Crystal.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}
struct Session;

/// The one file that a print may go to, as the options of a command name it.
struct PrintFile {
    std::string pdf, xlsx, csv;

    /// Nothing when no file was named. @throws UsageError for several
    std::optional<ReportDestination> Destination() const;
    /// The same for a command that only prints. @throws UsageError unless exactly one file was named
    ReportDestination RequiredDestination() const;
};

/// --pdf, --xlsx and --csv. @param file  outlives the parsing
void AddPrintFileOptions(CLI::App *command, PrintFile *file);

/// Bounds the wrong way round select nothing; somebody meant something else. @param last  0 = no upper bound
/// @throws UsageError with the fault
void RequireOrder(long first, long last, const char *fault);

/// Tells of the file written. @param printed  false: the print has shown why not
/// @throws FileError when it was not
int FinishPrint(const Session &session, bool printed, const ReportDestination &destination);

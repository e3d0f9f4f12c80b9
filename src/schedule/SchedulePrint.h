#pragma once

#include "schedule/ScheduleList.h"
#include "tarvodlg/print/Crystal.h"

/// Prints the due list ("scadenze.rpt"): one line for each instalment of the filter by due date, with totals for each
/// month and in the whole. Errors are shown.
/// @param filter  of one side   @param destination  none = the program's
/// @return false when it failed or was cancelled
bool PrintSchedule(const ScheduleFilter &filter, const std::optional<ReportDestination> &destination = {});

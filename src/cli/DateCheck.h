#pragma once

#include "cli/Commands.h"
#include "tarvolumera/DateFaults.h"

/// A check of all dates of the journal, or of the schedule, as the command `controlla-date` of its group runs it.
struct DateCheck {
    const char *description, *example;
    std::function<long(const DatePeriod &)> check; ///< gives the number of faults
    std::function<std::filesystem::path()> log;    ///< where they stand
};

/// Adds `controlla-date` with --dal and --al, which are the fiscal year where they are not given.
void AddDateCheckCommand(CLI::App *group, Session *session, Action *action, const DateCheck &check);

#pragma once

#include "bench/BenchArchive.h"

#include <string>
#include <vector>

// A probe is this program started anew for one piece of work: what the run did before counts neither in its memory nor
// in its caches.

/// Starts the program with these arguments on the archive. @return the figures it printed on its one line
/// @throws std::runtime_error when it fails
std::vector<double> AskProbe(const BenchArchive &archive, const std::string &arguments);

/// For the probe: the archive it was started on. @throws std::runtime_error
std::string ProbeTarget();
/// Peak memory of this process in kB; 0 where the system does not tell.
long PeakMemory();
/// SQLite's page cache fills up to its limit however long a listing is; a probe fills it before it works.
void FillPageCache(SAConnection *connection);

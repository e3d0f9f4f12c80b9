#pragma once

#include "tarvolumera/archive/ArchiveFaults.h"

// The checks that read record by record, because a rule of the books that is not SQL decides.

/// VAT lines of every VAT entry, and its totals by kind against the same computation that made them.
void CheckVatLines(SACommand *cmd, ArchiveFaults *faults);

/// Protocols that are missing between two others, and doubles.
void CheckProtocols(SACommand *cmd, ArchiveFaults *faults);

/// Filed documents against the digest taken when they were filed. Reads every document once, one at a time.
void CheckDigests(SACommand *cmd, ArchiveFaults *faults);

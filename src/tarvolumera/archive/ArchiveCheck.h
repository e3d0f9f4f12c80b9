#pragma once

#include "sqlapi/SACommand.h"

#include <functional>
#include <string>
#include <vector>

/// One thing wrong in the archive.
struct ArchiveFault {
    std::string kind;  ///< short Italian name of the check, the same for all its faults ("Quadratura")
    std::string where; ///< "Movimento 12", "Scadenza fornitore 7", "Protocollo 5 ACQUISTI sez. 1 anno 2026"
    std::string text;  ///< what is wrong, with the figures
};

struct ArchiveCheckResult {
    long entries = 0, rows = 0, instalments = 0; ///< how much was looked at
    std::vector<ArchiveFault> faults;            ///< at most fault_max per check; see truncated
    bool truncated = false;
};

/// Looks at the whole archive in one read transaction and changes nothing: every entry balanced, every stored total
/// what its rows and VAT lines say, every link valid, protocols without gap or double, copies in the rows equal to the
/// header, instalments that add up, documents whose bytes are what was filed, and the engine's own integrity check.
/// @param fault_max  faults listed per check
ArchiveCheckResult CheckArchive(SACommand *cmd, std::size_t fault_max = 100);

#pragma once

#include <string>
#include <vector>

/// A check that one query answers: every row of its result is a fault of the archive.
///
/// The texts name columns of the query: "{codice}" as stored, "{dare:e}" an amount, "{data:d}" a date, "{lato:s}" the
/// side of an instalment ("cliente", "fornitore"), "{reg:r}" the name of a VAT register.
struct ArchiveQuery {
    std::string kind;  ///< as in ArchiveFault
    std::string where; ///< with "{column}"s, as is text
    std::string text;
    std::string sql; ///< ordered, so that a cut list always shows the same faults; without LIMIT
};

/// All checks that are answered by queries alone, in the order of the report.
const std::vector<ArchiveQuery> &ArchiveQueries();

/// Those that look for what is pointed at and not there. Foreign keys keep it away, unless someone worked on the
/// archive without them.
std::vector<ArchiveQuery> ArchiveLinkQueries();

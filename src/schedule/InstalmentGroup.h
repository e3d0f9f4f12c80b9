#pragma once

#include "tarvolumera/Schedule.h"

#include <string>

/// The instalments that belong together with one: those of its journal entry or, for one entered by hand, those of the
/// same invoice of the same counterpart with the same count. What is done to all of them when one is added or goes.
/// Each call works inside the caller's transaction.
class InstalmentGroup {
  public:
    explicit InstalmentGroup(const SCADENZE &member);

    /// Makes room behind the member in the count (+1: "1/2", "2/2" become "1/3", "3/3" for the member 1), or closes the
    /// gap that it leaves (-1). Of instalments without an entry the last of the count is marked.
    void CountAnew(SACommand *cmd, int step) const;

    /// Marks the last instalments of an entry: those with the latest date, as its generation does. Without an entry
    /// nothing is done.
    void MarkLast(SACommand *cmd) const;

    /// "Le scadenze del movimento n. 12 sommano 100,00, il documento è di 122,00."; empty when they agree, whatever the
    /// sign, or there is no entry.
    std::string Imbalance(SACommand *cmd) const;

  private:
    void Update(SACommand *cmd, const std::string &assignments) const;

    SCADENZE member_;
    std::string condition_; ///< empty = nothing else belongs to it
};

/// Marks an instalment without an entry as the last one when its number is the count, and only then.
void MarkByCount(SCADENZE *record);

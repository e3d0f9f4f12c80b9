#pragma once

#include "tarvolumera/archive/ArchiveCheck.h"

#include <map>

/// Collects what the checks find, at most so many faults of a kind.
class ArchiveFaults {
  public:
    explicit ArchiveFaults(std::size_t of_kind_max) : of_kind_max_(of_kind_max) {}

    /// Keeps the fault, or only notes that there are more when its kind is full.
    void Add(ArchiveFault fault);

    /// True when a further fault of the kind would change nothing, so its checks can end.
    bool IsOver(const std::string &kind) const;

    /// How many rows of a query are worth asking for: the places left and one more.
    std::size_t RowsWanted(const std::string &kind) const;

    /// Moves the faults out, those of a kind together, kinds in the order in which they were first met.
    void MoveTo(ArchiveCheckResult *result);

  private:
    struct Kind {
        std::size_t order = 0;
        std::vector<ArchiveFault> faults;
        bool is_over = false;
    };
    std::size_t of_kind_max_;
    std::map<std::string, Kind> kinds_;
};

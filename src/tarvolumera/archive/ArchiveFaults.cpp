#include "tarvolumera/archive/ArchiveFaults.h"

#include <algorithm>
#include <iterator>

void ArchiveFaults::Add(ArchiveFault fault)
{
    Kind &kind = kinds_.try_emplace(fault.kind, Kind{kinds_.size(), {}, false}).first->second;
    if (kind.faults.size() < of_kind_max_)
        kind.faults.push_back(std::move(fault));
    else
        kind.is_over = true;
}

bool ArchiveFaults::IsOver(const std::string &kind) const
{
    const auto found = kinds_.find(kind);
    return found != kinds_.end() && found->second.is_over;
}

std::size_t ArchiveFaults::RowsWanted(const std::string &kind) const
{
    const auto found = kinds_.find(kind);
    return of_kind_max_ - (found == kinds_.end() ? 0 : found->second.faults.size()) + 1;
}

void ArchiveFaults::MoveTo(ArchiveCheckResult *result)
{
    std::vector<Kind *> in_order;
    for (auto &[name, kind] : kinds_) in_order.push_back(&kind);
    std::sort(in_order.begin(), in_order.end(), [](const Kind *a, const Kind *b) { return a->order < b->order; });
    for (Kind *kind : in_order) {
        result->truncated |= kind->is_over;
        std::move(kind->faults.begin(), kind->faults.end(), std::back_inserter(result->faults));
    }
    kinds_.clear();
}

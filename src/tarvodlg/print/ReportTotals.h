#pragma once

#include "tarvodlg/print/ReportCells.h"

/// The sums of a report as they grow: one scope for the whole report and one for each group, amounts in cents.
class ReportTotals {
  public:
    struct Scope {
        long long rows = 0;
        std::vector<long long> cents; ///< in the order of the summed columns
    };

    /// Finds out which columns the layout's items add.
    void Prepare(const ReportLayout &layout, const ReportColumns &columns);
    void Clear();
    /// @throws ReportError for an amount that is out of all measure
    void Add(const ReportRow &row, const ReportLayout &layout);
    void ClearGroup(std::size_t group) { scopes_[group + 1] = Empty(); }

    const Scope &Report() const { return scopes_[0]; }
    const Scope &Group(std::size_t group) const { return scopes_[group + 1]; } ///< 0 is the outermost
    double Sum(const Scope &scope, std::size_t column) const;                  ///< euro; of a column that is added

  private:
    Scope Empty() const { return {0, std::vector<long long>(columns_.size())}; }

    std::vector<std::size_t> columns_;
    std::vector<Scope> scopes_;
};

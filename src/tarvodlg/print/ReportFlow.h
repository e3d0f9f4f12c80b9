#pragma once

#include "tarvodlg/print/BandComposer.h"
#include "tarvodlg/print/ReportQuery.h"

/// Turns the rows of one layout into its bands, in order: group breaks, sums, sub-reports. The pages are the target's.
class ReportFlow {
  public:
    /// @param width  of the bands, mm   @param is_main  false for a sub-report
    ReportFlow(SAConnection *connection, const ReportRequest &request, const ReportLayout &layout, double width,
               PageSink &pages, bool is_main);
    ~ReportFlow();

    /// @return rows
    long Run(const ReportValues &parameters, BandTarget &target, const std::function<void(long)> &progress = {});

    /// A page band as it is just now: the header shows the row that comes, the footer the last one printed, and sums
    /// hold what was printed so far.
    void ComposePageBand(const ReportBand &band, const PagePlace &place, BandPicture *picture);

  private:
    void BeginRun(const ReportValues &parameters);
    std::size_t FirstChangedGroup() const;
    void CloseGroups(std::size_t first, BandTarget &target);
    void OpenGroups(std::size_t first, bool is_first_row, BandTarget &target);
    void ComposeDetail();
    void PutBand(BandKind kind, BandTarget &target);
    void RunSubReport(const ReportItem &item, const ReportRow &row, BandTarget &target);
    ReportValues LinkedParameters(const ReportItem &item, const ReportLayout &sub, const ReportRow &row) const;

    SAConnection *connection_;
    const ReportRequest &request_;
    const ReportLayout &layout_;
    double width_;
    PageSink &pages_;
    ReportQuery query_;
    ReportTotals totals_;
    BandComposer composer_;
    ReportValues parameters_;
    std::vector<std::vector<std::size_t>> group_columns_;
    std::map<const ReportItem *, std::unique_ptr<ReportFlow>> sub_reports_;

    ReportRow row_, last_row_;
    const ReportRow *coming_ = nullptr;  ///< the row that is being printed, or comes next
    const ReportRow *printed_ = nullptr; ///< the last one that is on paper
    ReportTotals::Scope carried_;        ///< of the rows on paper
    BandPicture picture_, detail_;
    std::vector<BandPicture> headers_;
};

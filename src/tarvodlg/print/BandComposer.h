#pragma once

#include "tarvodlg/print/BandPicture.h"
#include "tarvodlg/print/ReportTotals.h"

/// What the items of a band are filled from.
struct BandSource {
    const ReportRow *row = nullptr;               ///< null prints no fields
    const ReportTotals::Scope *group = nullptr;   ///< of sums and counts
    const ReportTotals::Scope *running = nullptr; ///< from the beginning up to here
    PagePlace place;
};

/// Makes pictures of bands: values into texts, texts into lines, sub-reports into the room below their place.
class BandComposer {
  public:
    using SubReport = std::function<void(const ReportItem &item, const ReportRow &row, BandTarget &target)>;

    /// @param width  of the bands, mm   @param pages  measures the texts
    BandComposer(const ReportLayout &layout, const ReportColumns &columns, const ReportTotals &totals, double width,
                 PageSink &pages, SubReport sub_report);

    /// Looks every column up that the items name. @throws ReportError
    void CheckColumns() const;
    void SetParameters(const ReportValues &parameters) { parameters_ = &parameters; }

    /// Adds nothing when the band's when= does not hold.
    void Compose(const ReportBand &band, const BandSource &source, BandPicture *picture);

  private:
    void PutItem(const ReportItem &item, const BandSource &source, BandPicture *picture);
    void PutText(const ReportItem &item, std::string text, BandPicture *picture);
    void PutWrapped(const ReportItem &item, const BandPicture::Mark &mark, BandPicture *picture);
    void PutSubReport(const ReportItem &item, const ReportRow &row, BandPicture *picture);
    std::string ItemText(const ReportItem &item, const BandSource &source) const;
    TextStyle StyleOf(const ReportItem &item) const;

    const ReportLayout &layout_;
    const ReportColumns &columns_;
    const ReportTotals &totals_;
    double width_;
    PageSink &pages_;
    SubReport sub_report_;
    const ReportValues *parameters_ = nullptr;
};

/// Height of a line of text, mm.
double LineHeight(double points);

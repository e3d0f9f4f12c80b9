#pragma once

#include "tarvodlg/print/ReportFlow.h"

/// A layout that was drawn for landscape stays so; an upright one can be turned by the caller.
bool IsLandscape(const ReportRequest &request);
PaperSize PaperOf(const ReportRequest &request);

/// Puts the bands of a report on pages: page header and footer, breaks where the room ends.
class PageBuilder : public BandTarget {
  public:
    PageBuilder(const ReportRequest &request, ReportFlow &flow, PageSink &pages);

    void Put(const BandPicture &picture, double keep) override;
    void StartPage() override;
    void Finish(); ///< the last page; there is always one
    long Pages() const { return place_.page_index; }

  private:
    void BeginPage();
    void EndPage();
    void Split(const BandPicture &picture);
    /// Draws the marks between two heights of the picture, the first of them at the current place.
    void Draw(const BandPicture &picture, double from, double to);
    long PageNumber() const { return request_.first_page + place_.page_index - 1; }
    void DrawMark(const BandPicture::Mark &mark, double x, double y);

    const ReportRequest &request_;
    const ReportLayout &layout_;
    ReportFlow &flow_;
    PageSink &pages_;
    PagePlace place_{0, false};
    double top_ = 0, bottom_ = 0; ///< of the room for bands on this page
    double y_ = 0;
    bool is_open_ = false;
    BandPicture page_band_;
};

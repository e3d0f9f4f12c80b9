#include "tarvodlg/print/PageBuilder.h"

namespace {

/// Heights are sums of tenths of millimetres; a band that just fits must not be moved on for the last bit of a double.
constexpr double kTolerance = 1e-6;

} // namespace

bool IsLandscape(const ReportRequest &request)
{
    return request.landscape || request.layout.landscape;
}

PaperSize PaperOf(const ReportRequest &request)
{
    return PaperSizeOf(request.layout.paper, IsLandscape(request));
}

PageBuilder::PageBuilder(const ReportRequest &request, ReportFlow &flow, PageSink &pages)
    : request_(request), layout_(request.layout), flow_(flow), pages_(pages)
{
}

void PageBuilder::BeginPage()
{
    ++place_.page_index;
    pages_.BeginPage(PageNumber());
    is_open_ = true;
    y_ = layout_.margin;
    const ReportBand *footer = layout_.Band(BandKind::PageFooter);
    bottom_ = PaperOf(request_).height - layout_.margin - (footer == nullptr ? 0 : footer->height);
    if (const ReportBand *header = layout_.Band(BandKind::PageHeader)) {
        flow_.ComposePageBand(*header, place_, &page_band_);
        Draw(page_band_, 0, page_band_.height);
    }
    top_ = y_;
}

void PageBuilder::EndPage()
{
    if (const ReportBand *footer = layout_.Band(BandKind::PageFooter)) {
        flow_.ComposePageBand(*footer, place_, &page_band_);
        y_ = bottom_;
        Draw(page_band_, 0, page_band_.height);
    }
    pages_.EndPage();
    is_open_ = false;
}

void PageBuilder::StartPage()
{
    if (is_open_ && y_ > top_) EndPage();
}

void PageBuilder::Put(const BandPicture &picture, double keep)
{
    if (!is_open_) BeginPage();
    const double wanted = keep > bottom_ - top_ + kTolerance ? picture.height : keep;
    if (y_ + wanted > bottom_ + kTolerance && y_ > top_ && wanted <= bottom_ - top_ + kTolerance) {
        EndPage();
        BeginPage();
    }
    if (y_ + picture.height > bottom_ + kTolerance)
        Split(picture);
    else
        Draw(picture, 0, picture.height);
}

// Only what grows with the data can be higher than a page: the parts of a sub-report, the lines of a long text.
void PageBuilder::Split(const BandPicture &picture)
{
    double from = 0;
    while (y_ + picture.height - from > bottom_ + kTolerance) {
        double cut = from;
        for (const double candidate : picture.cuts)
            if (candidate > cut && y_ + candidate - from <= bottom_ + kTolerance) cut = candidate;
        if (cut == from && y_ <= top_)
            throw ReportError(layout_.Words(picture.place) + ": la banda è più alta della pagina");
        Draw(picture, from, cut);
        from = cut;
        EndPage();
        BeginPage();
    }
    Draw(picture, from, picture.height);
}

void PageBuilder::Draw(const BandPicture &picture, double from, double to)
{
    const bool is_all_that_is_left = to >= picture.height;
    for (const BandPicture::Mark &mark : picture.marks) {
        if (mark.y < from - kTolerance && from > 0) continue;
        if (mark.y >= to - kTolerance && !is_all_that_is_left) continue;
        DrawMark(mark, layout_.margin + mark.x, y_ + mark.y - from);
    }
    y_ += to - from;
}

void PageBuilder::DrawMark(const BandPicture::Mark &mark, double x, double y)
{
    switch (mark.kind) {
    case BandPicture::MarkKind::Text:
        return pages_.Text(x, y, mark.w, mark.align, mark.style, mark.text);
    case BandPicture::MarkKind::PageNumber:
        return pages_.Text(x, y, mark.w, mark.align, mark.style, std::to_string(PageNumber()));
    case BandPicture::MarkKind::Line:
        return pages_.Line(x, y, x + mark.w, y + mark.h);
    case BandPicture::MarkKind::Box:
        return pages_.Box(x, y, mark.w, mark.h);
    case BandPicture::MarkKind::Image:
        return pages_.Image(x, y, mark.w, mark.h, mark.text);
    }
}

void PageBuilder::Finish()
{
    if (!is_open_) BeginPage();
    place_.at_end = true;
    EndPage();
}

#include "tarvodlg/print/BandComposer.h"

namespace {

constexpr double kMillimetresPerPoint = 25.4 / 72;
constexpr double kLineSpacing = 1.2;

void ForEachBand(const ReportLayout &layout, const std::function<void(const ReportBand &)> &each)
{
    for (const ReportBand &band : layout.bands) each(band);
    for (const ReportGroup &group : layout.groups) {
        if (group.header) each(*group.header);
        if (group.footer) each(*group.footer);
    }
}

} // namespace

double LineHeight(double points)
{
    return points * kMillimetresPerPoint * kLineSpacing;
}

BandComposer::BandComposer(const ReportLayout &layout, const ReportColumns &columns, const ReportTotals &totals,
                           double width, PageSink &pages, SubReport sub_report)
    : layout_(layout), columns_(columns), totals_(totals), width_(width), pages_(pages),
      sub_report_(std::move(sub_report))
{
}

void BandComposer::CheckColumns() const
{
    ForEachBand(layout_, [&](const ReportBand &band) {
        RequireColumns(band.when, columns_, layout_, band.place);
        for (const ReportItem &item : band.items) {
            RequireColumns(item.when, columns_, layout_, item.place);
            if (item.kind == ItemKind::Field) columns_.Require(layout_, item.place, item.text);
        }
    });
}

void BandComposer::Compose(const ReportBand &band, const BandSource &source, BandPicture *picture)
{
    picture->Clear();
    picture->place = band.place;
    if (!Holds(band.when, columns_, source.row, *parameters_, source.place)) return;
    picture->height = band.height;
    for (const ReportItem &item : band.items)
        if (item.title.empty() && Holds(item.when, columns_, source.row, *parameters_, source.place))
            PutItem(item, source, picture);
    std::sort(picture->cuts.begin(), picture->cuts.end());
}

void BandComposer::PutItem(const ReportItem &item, const BandSource &source, BandPicture *picture)
{
    const double width = item.w > 0 ? item.w : width_ - item.x;
    BandPicture::Mark mark{BandPicture::MarkKind::Text, item.x, item.y, width, item.h, item.align, {}, {}};
    switch (item.kind) {
    case ItemKind::Line:
        mark.kind = BandPicture::MarkKind::Line;
        picture->marks.push_back(std::move(mark));
        return;
    case ItemKind::Box:
        mark.kind = BandPicture::MarkKind::Box;
        picture->marks.push_back(std::move(mark));
        return;
    case ItemKind::Image:
        mark.kind = BandPicture::MarkKind::Image;
        mark.text = FormatValue(parameters_->at(item.text), {});
        if (!mark.text.empty()) picture->marks.push_back(std::move(mark));
        return;
    case ItemKind::Page:
        mark.kind = BandPicture::MarkKind::PageNumber;
        mark.style = StyleOf(item);
        picture->marks.push_back(std::move(mark));
        return;
    case ItemKind::Subreport:
        if (source.row != nullptr) PutSubReport(item, *source.row, picture);
        return;
    default:
        PutText(item, ItemText(item, source), picture);
    }
}

std::string BandComposer::ItemText(const ReportItem &item, const BandSource &source) const
{
    const auto sum = [&](const ReportTotals::Scope *scope) {
        const double euro = scope == nullptr ? 0 : totals_.Sum(*scope, columns_.Find(item.text));
        return FormatNumber(euro, item.format.empty() ? "0,00" : item.format);
    };
    switch (item.kind) {
    case ItemKind::Text:
        return item.text;
    case ItemKind::Field:
        return source.row == nullptr ? "" : FormatCell(*source.row, columns_.Find(item.text), item.format);
    case ItemKind::Param:
        return FormatValue(parameters_->at(item.text), item.format);
    case ItemKind::Sum:
        return sum(source.group);
    case ItemKind::Running:
        return sum(source.running);
    case ItemKind::Count:
        return FormatNumber(source.group == nullptr ? 0 : static_cast<double>(source.group->rows),
                            item.format.empty() ? "0" : item.format);
    default:
        return {};
    }
}

TextStyle BandComposer::StyleOf(const ReportItem &item) const
{
    const bool is_number = item.kind == ItemKind::Sum || item.kind == ItemKind::Running ||
                           item.kind == ItemKind::Count || item.kind == ItemKind::Page || IsNumberFormat(item.format);
    return {layout_.font, item.size > 0 ? item.size : layout_.size, item.bold, item.italic, item.color, is_number};
}

void BandComposer::PutText(const ReportItem &item, std::string text, BandPicture *picture)
{
    if (text.empty()) return;
    const double width = item.w > 0 ? item.w : width_ - item.x;
    BandPicture::Mark mark{
        BandPicture::MarkKind::Text, item.x, item.y, width, item.h, item.align, StyleOf(item), std::move(text)};
    if (item.wrap)
        PutWrapped(item, mark, picture);
    else
        picture->marks.push_back(std::move(mark));
}

// The height of the band is meant for one line; every further line makes it grow by its own height.
void BandComposer::PutWrapped(const ReportItem &item, const BandPicture::Mark &mark, BandPicture *picture)
{
    const double line_height = LineHeight(mark.style.size);
    const double below = std::max(0.0, picture->height - (item.y + line_height));
    const std::vector<std::string> lines = pages_.Wrapped(mark.w, mark.style, mark.text);
    double y = item.y;
    for (const std::string &line : lines) {
        if (y > item.y) picture->cuts.push_back(y);
        BandPicture::Mark one = mark;
        one.y = y;
        one.text = line;
        picture->marks.push_back(std::move(one));
        y += line_height;
    }
    if (lines.size() > 1) picture->height = std::max(picture->height, y + std::min(below, line_height / 2));
}

void BandComposer::PutSubReport(const ReportItem &item, const ReportRow &row, BandPicture *picture)
{
    PictureStack sub;
    sub_report_(item, row, sub);
    const double own_height = picture->height;
    picture->height = item.y;
    picture->Append(sub.stack, item.x);
    picture->height = std::max(own_height, picture->height);
}

#include "tarvodlg/print/ReportFlow.h"

#include "tarvodlg/base/Text.h"
#include "tarvodlg/print/Interruption.h"

#include <fmt/format.h>

namespace {

constexpr long kProgressStep = 200;

const std::string &SelectionOf(const ReportRequest &request, const ReportLayout &layout, bool is_main)
{
    static const std::string kNone;
    if (is_main) return request.selection;
    const auto found = request.sub_selections.find(layout.name);
    return found == request.sub_selections.end() ? kNone : found->second;
}

} // namespace

ReportFlow::ReportFlow(SAConnection *connection, const ReportRequest &request, const ReportLayout &layout, double width,
                       PageSink &pages, bool is_main)
    : connection_(connection), request_(request), layout_(layout), width_(width), pages_(pages),
      query_(connection, layout, SelectionOf(request, layout, is_main), request.tables,
             is_main && !layout.subreports.empty() ? ReportQuery::Rows::Portions : ReportQuery::Rows::Streamed),
      composer_(layout, query_.Columns(), totals_, width, pages,
                [this](const ReportItem &item, const ReportRow &row, BandTarget &target) {
                    RunSubReport(item, row, target);
                }),
      headers_(layout.groups.size())
{
}

ReportFlow::~ReportFlow() = default;

void ReportFlow::BeginRun(const ReportValues &parameters)
{
    parameters_ = parameters;
    composer_.SetParameters(parameters_);
    query_.Open(parameters_);
    composer_.CheckColumns();
    totals_.Prepare(layout_, query_.Columns());
    group_columns_.clear();
    for (const ReportGroup &group : layout_.groups) {
        std::vector<std::size_t> &columns = group_columns_.emplace_back();
        for (const std::string &name : group.by)
            columns.push_back(query_.Columns().Require(layout_, group.place, name));
    }
    carried_ = totals_.Report();
    coming_ = printed_ = nullptr;
}

long ReportFlow::Run(const ReportValues &parameters, BandTarget &target, const std::function<void(long)> &progress)
{
    BeginRun(parameters);
    bool there = query_.Fetch(&row_);
    if (there) coming_ = &row_;
    PutBand(BandKind::ReportHeader, target);
    long rows = 0;
    for (; there; there = query_.Fetch(&row_)) {
        RequireNotInterrupted();
        const std::size_t first = rows == 0 ? 0 : FirstChangedGroup();
        if (rows > 0) CloseGroups(first, target);
        coming_ = &row_;
        OpenGroups(first, rows == 0, target);
        std::swap(row_, last_row_);
        coming_ = printed_ = &last_row_;
        carried_ = totals_.Report();
        ++rows;
        if (progress && rows % kProgressStep == 0) progress(rows);
    }
    if (rows > 0) CloseGroups(0, target);
    PutBand(BandKind::ReportFooter, target);
    query_.Close();
    if (progress) progress(rows);
    return rows;
}

std::size_t ReportFlow::FirstChangedGroup() const
{
    for (std::size_t group = 0; group < group_columns_.size(); ++group)
        for (const std::size_t column : group_columns_[group])
            if (!row_.SameIn(column, last_row_)) return group;
    return group_columns_.size();
}

void ReportFlow::CloseGroups(std::size_t first, BandTarget &target)
{
    for (std::size_t group = layout_.groups.size(); group-- > first;) {
        if (const auto &footer = layout_.groups[group].footer) {
            composer_.Compose(*footer, {&last_row_, &totals_.Group(group), &totals_.Report(), {}}, &picture_);
            target.Put(picture_, picture_.height);
        }
        totals_.ClearGroup(group);
    }
}

// The headers of the groups that begin, then the details of the row. What has to stay together is known only when all
// of them are composed; the sums that headers and page bands show are still without the row.
void ReportFlow::OpenGroups(std::size_t first, bool is_first_row, BandTarget &target)
{
    const std::size_t groups = layout_.groups.size();
    bool new_page = false;
    for (std::size_t group = first; group < groups; ++group) {
        headers_[group].Clear();
        new_page = new_page || layout_.groups[group].new_page;
        if (const auto &header = layout_.groups[group].header)
            composer_.Compose(*header, {&row_, &totals_.Group(group), &totals_.Report(), {}}, &headers_[group]);
    }
    totals_.Add(row_, layout_);
    ComposeDetail();

    std::vector<double> keep(groups + 1, detail_.height);
    for (std::size_t group = groups; group-- > first;)
        keep[group] = headers_[group].height + (layout_.groups[group].keep ? keep[group + 1] : 0);
    if (new_page && !is_first_row) target.StartPage();
    for (std::size_t group = first; group < groups; ++group)
        if (headers_[group].height > 0) target.Put(headers_[group], keep[group]);
    if (detail_.height > 0) target.Put(detail_, detail_.height);
}

void ReportFlow::ComposeDetail()
{
    detail_.Clear();
    const ReportTotals::Scope &group =
        layout_.groups.empty() ? totals_.Report() : totals_.Group(layout_.groups.size() - 1);
    bool is_first = true;
    for (const ReportBand &band : layout_.bands) {
        if (band.kind != BandKind::Detail) continue;
        const BandSource source{&row_, &group, &totals_.Report(), {}};
        composer_.Compose(band, source, is_first ? &detail_ : &picture_);
        if (!is_first && picture_.height > 0) detail_.Append(picture_, 0);
        is_first = false;
    }
}

void ReportFlow::PutBand(BandKind kind, BandTarget &target)
{
    const ReportBand *band = layout_.Band(kind);
    if (band == nullptr) return;
    composer_.Compose(*band, {coming_, &totals_.Report(), &totals_.Report(), {}}, &picture_);
    if (picture_.height > 0) target.Put(picture_, picture_.height);
}

void ReportFlow::ComposePageBand(const ReportBand &band, const PagePlace &place, BandPicture *picture)
{
    const ReportRow *row = band.kind == BandKind::PageFooter ? printed_ : coming_;
    composer_.Compose(band, {row, &carried_, &carried_, place}, picture);
}

void ReportFlow::RunSubReport(const ReportItem &item, const ReportRow &row, BandTarget &target)
{
    const auto sub = std::find_if(layout_.subreports.begin(), layout_.subreports.end(),
                                  [&](const auto &one) { return one->name == item.text; });
    if (sub == layout_.subreports.end())
        throw ReportError(fmt::format("{}: non c'è il sotto-report \"{}\"", layout_.Words(item.place), item.text));
    std::unique_ptr<ReportFlow> &flow = sub_reports_[&item];
    if (!flow) {
        const double width = item.w > 0 ? item.w : width_ - item.x;
        flow = std::make_unique<ReportFlow>(connection_, request_, **sub, width, pages_, false);
    }
    flow->Run(LinkedParameters(item, **sub, row), target);
}

namespace {

/// The parts of "Numero=pno_codice,Ditta=?Ditta".
std::vector<std::pair<std::string, std::string>> LinkParts(std::string_view link)
{
    std::vector<std::pair<std::string, std::string>> parts;
    while (!link.empty()) {
        const std::size_t comma = std::min(link.find(','), link.size());
        const std::string_view part = link.substr(0, comma);
        const std::size_t equals = std::min(part.find('='), part.size());
        parts.emplace_back(Trimmed(part.substr(0, equals)), Trimmed(part.substr(std::min(equals + 1, part.size()))));
        link.remove_prefix(std::min(comma + 1, link.size()));
    }
    return parts;
}

ReportValue CellAs(const ReportRow &row, std::size_t column, ParameterType type)
{
    if (row.IsNull(column)) return std::monostate{};
    switch (type) {
    case ParameterType::Long:
        return static_cast<long long>(row.Number(column));
    case ParameterType::Double:
        return row.Number(column);
    case ParameterType::Date:
        return ReportDate{row.Day(column)};
    case ParameterType::String:
        break;
    }
    return row.Text(column);
}

} // namespace

ReportValues ReportFlow::LinkedParameters(const ReportItem &item, const ReportLayout &sub, const ReportRow &row) const
{
    ReportValues values;
    if (const auto given = request_.sub_parameters.find(sub.name); given != request_.sub_parameters.end())
        values = given->second;
    for (const auto &[name, source] : LinkParts(item.link)) {
        const auto type = std::find_if(sub.parameters.begin(), sub.parameters.end(),
                                       [&parameter = name](const auto &one) { return one.name == parameter; });
        if (source.starts_with('?'))
            values[name] = parameters_.at(source.substr(1));
        else if (type != sub.parameters.end())
            values[name] = CellAs(row, query_.Columns().Require(layout_, item.place, source), type->type);
        else
            values[name] = row.Text(query_.Columns().Require(layout_, item.place, source));
    }
    return CheckedParameters(sub, values);
}

#include "tarvodlg/print/ReportRunner.h"

#include "tarvodlg/print/Interruption.h"
#include "tarvodlg/print/PageBuilder.h"
#include "tarvolumera/TarvoPostgreSQL.h"

#include <fmt/format.h>

namespace {

bool HasTable(const ReportLayout &layout, const std::string &name)
{
    const auto is_it = [&](const ReportTable &table) { return table.name == name; };
    if (std::any_of(layout.tables.begin(), layout.tables.end(), is_it)) return true;
    return std::any_of(layout.subreports.begin(), layout.subreports.end(),
                       [&](const auto &sub) { return HasTable(*sub, name); });
}

bool HasSubReport(const ReportLayout &layout, const std::string &name)
{
    return std::any_of(layout.subreports.begin(), layout.subreports.end(),
                       [&](const auto &sub) { return sub->name == name || HasSubReport(*sub, name); });
}

/// What the caller set for something that the layout does not have would silently be left out.
void CheckNames(const ReportRequest &request)
{
    const ReportLayout &layout = request.layout;
    for (const auto &[name, real] : request.tables)
        if (!HasTable(layout, name))
            throw ReportError(fmt::format("{}: la stampa non ha la tabella \"{}\"", layout.file, name));
    const auto check = [&](const std::string &name) {
        if (!HasSubReport(layout, name))
            throw ReportError(fmt::format("{}: la stampa non ha il sotto-report \"{}\"", layout.file, name));
    };
    for (const auto &[name, selection] : request.sub_selections) check(name);
    for (const auto &[name, parameters] : request.sub_parameters) check(name);
}

} // namespace

ReportResult RunReport(SACommand *cmd, const ReportRequest &request, PageSink &pages,
                       const std::function<void(long)> &progress)
{
    CheckNames(request);
    const ReportValues parameters = CheckedParameters(request.layout, request.parameters);
    const double width = PaperOf(request).width - 2 * request.layout.margin;
    CommandScope scope(cmd);
    SATransaction picture(scope.get(), SATransactionKind::Read);
    ReportResult result;
    {
        ReportFlow flow(scope->Connection(), request, request.layout, width, pages, true);
        PageBuilder builder(request, flow, pages);
        result.rows = flow.Run(parameters, builder, progress);
        builder.Finish();
        result.pages = builder.Pages();
    }
    picture.Commit();
    return result;
}

namespace {

/// A column of the rows: a field of a detail band.
struct RowField {
    const ReportBand *band;
    const ReportItem *item;
};

std::vector<RowField> DetailFields(const ReportLayout &layout)
{
    std::vector<RowField> fields;
    for (const ReportBand &band : layout.bands) {
        if (band.kind != BandKind::Detail) continue;
        for (const ReportItem &item : band.items)
            if (item.kind == ItemKind::Field) fields.push_back({&band, &item});
    }
    return fields;
}

double RightEnd(const ReportItem &item)
{
    constexpr double kRightMargin = 1000; // wider than any paper
    return item.w > 0 ? item.x + item.w : kRightMargin;
}

/// The field's own title, or the words of the page header that stand above it: those that share most of its width, the
/// lowest of them.
std::string TitleOf(const ReportLayout &layout, const ReportItem &field)
{
    if (!field.title.empty()) return field.title;
    const ReportBand *header = layout.Band(BandKind::PageHeader);
    if (header == nullptr) return field.text;
    const ReportItem *best = nullptr;
    double best_share = 0;
    for (const ReportItem &item : header->items) {
        if (item.kind != ItemKind::Text) continue;
        const double shared = std::min(RightEnd(item), RightEnd(field)) - std::max(item.x, field.x);
        const double share = shared / std::max(RightEnd(item) - item.x, RightEnd(field) - field.x);
        if (share <= 0.3) continue; // the words of a neighbour
        const bool is_lower = best != nullptr && share == best_share && item.y > best->y;
        if (best != nullptr && share <= best_share && !is_lower) continue;
        best = &item;
        best_share = share;
    }
    return best == nullptr ? field.text : best->text;
}

ColumnFormat FormatOf(const ReportItem &item)
{
    if (item.format == "date") return ColumnFormat::Date;
    if (item.format == "code" || item.format == "0" || item.format == "0z") return ColumnFormat::Code;
    return IsNumberFormat(item.format) ? ColumnFormat::Amount : ColumnFormat::Text;
}

ReportValue CellFor(const ReportRow &row, std::size_t column, ColumnFormat format)
{
    if (row.IsNull(column)) return std::monostate{};
    const ReportValue value = row.Value(column);
    const bool is_number = std::holds_alternative<long long>(value) || std::holds_alternative<double>(value);
    switch (format) {
    case ColumnFormat::Date:
        return row.Day(column) == 0 ? ReportValue(row.Text(column)) : ReportDate{row.Day(column)};
    case ColumnFormat::Code:
        if (const auto *whole = std::get_if<long long>(&value)) return *whole;
        break;
    case ColumnFormat::Amount:
        if (is_number) return row.Number(column);
        break;
    case ColumnFormat::Text:
        break;
    }
    return row.Text(column);
}

} // namespace

ReportResult RunReportRows(SACommand *cmd, const ReportRequest &request,
                           const std::function<std::unique_ptr<RowWriter>(std::vector<RowColumn>)> &open,
                           const std::function<void(long)> &progress)
{
    constexpr long kRowsBetweenSigns = 500;
    CheckNames(request);
    const ReportLayout &layout = request.layout;
    const ReportValues parameters = CheckedParameters(layout, request.parameters);
    CommandScope scope(cmd);
    SATransaction picture(scope.get(), SATransactionKind::Read);
    ReportQuery query(scope->Connection(), layout, request.selection, request.tables, ReportQuery::Rows::Streamed);
    query.Open(parameters);

    const std::vector<RowField> fields = DetailFields(layout);
    std::vector<RowColumn> titles;
    std::vector<std::size_t> columns;
    for (const RowField &field : fields) {
        RequireColumns(field.band->when, query.Columns(), layout, field.band->place);
        RequireColumns(field.item->when, query.Columns(), layout, field.item->place);
        titles.push_back({TitleOf(layout, *field.item), FormatOf(*field.item)});
        columns.push_back(query.Columns().Require(layout, field.item->place, field.item->text));
    }
    const std::vector<RowColumn> formats = titles;
    const std::unique_ptr<RowWriter> writer = open(std::move(titles));
    const auto holds = [&](const SelectionFormula &when, const ReportRow &row) {
        return Holds(when, query.Columns(), &row, parameters, {});
    };
    ReportResult result;
    std::vector<ReportValue> values(fields.size());
    for (ReportRow row; query.Fetch(&row);) {
        RequireNotInterrupted();
        bool is_printed = fields.empty();
        for (std::size_t i = 0; i < fields.size(); ++i) {
            const bool has_band = holds(fields[i].band->when, row);
            is_printed = is_printed || has_band;
            values[i] = has_band && holds(fields[i].item->when, row) ? CellFor(row, columns[i], formats[i].format)
                                                                     : ReportValue{};
        }
        if (!is_printed) continue;
        writer->Add(values);
        ++result.rows;
        if (progress && result.rows % kRowsBetweenSigns == 0) progress(result.rows);
    }
    writer->Finish();
    query.Close();
    picture.Commit();
    return result;
}

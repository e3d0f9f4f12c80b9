#pragma once

#include "tarvodlg/print/ReportLayout.h"
#include "tarvodlg/print/RowWriter.h"

#include <functional>
#include <map>

class SACommand;

/// A report to be run: layout, selection, parameters, tables put in the place of the layout's.
struct ReportRequest {
    ReportLayout layout;
    std::string title;                                 ///< of window and document
    std::string selection;                             ///< formula
    std::map<std::string, ReportValue> parameters;     ///< by name
    std::map<std::string, std::string> tables;         ///< layout's table name -> "admin.interessi_3"
    std::map<std::string, std::string> sub_selections; ///< by name of the sub-report
    std::map<std::string, std::map<std::string, ReportValue>> sub_parameters;
    long first_page = 1; ///< number of the first page
    bool landscape = false;
};

/// Where text stands on a page. All lengths in millimetres from the upper left corner of the paper, y is the top.
struct TextStyle {
    std::string font;
    double size = 8; ///< points
    bool bold = false, italic = false;
    std::string color;
    bool shrinks = false; ///< smaller letters instead of a cut: an amount without its last digits is another amount
};

/// Takes the pages of a report, one after the other; nothing is kept of a page that is done.
class PageSink {
  public:
    virtual ~PageSink() = default;
    virtual void BeginPage(long number) = 0;
    virtual void Text(double x, double y, double w, ItemAlign align, const TextStyle &style,
                      const std::string &text) = 0;
    virtual void Line(double x1, double y1, double x2, double y2) = 0;
    virtual void Box(double x, double y, double w, double h) = 0;
    /// A file that is missing or no picture leaves the place empty.
    virtual void Image(double x, double y, double w, double h, const std::filesystem::path &file) = 0;
    virtual void EndPage() = 0;

    /// Lines into which the text falls within w; one line when the sink cannot tell.
    virtual std::vector<std::string> Wrapped(double w, const TextStyle &style, const std::string &text) = 0;
};

struct ReportResult {
    long rows = 0;
    long pages = 0; ///< a report without rows has one page, with headers and totals
};

/// Runs the report: detail rows are streamed, groups and sums kept as they go. A when= may also ask for
/// {row.report_page}, the pages of this print counted from 1, and in page bands for {row.report_end}, which is 1 on the
/// last page.
/// @param cmd  a command on the archive; sub-reports open further ones on its connection
/// @param progress  called now and then with the rows so far; empty = none
/// @throws ReportError, SAException, FileError
ReportResult RunReport(SACommand *cmd, const ReportRequest &request, PageSink &pages,
                       const std::function<void(long)> &progress = {});

/// The detail rows of the same report, for those who want to go on computing: one column for each field of the detail
/// bands, titled by the page header's words above it.
/// @param open  makes the writer for the columns   @param progress  called now and then with the rows so far
ReportResult RunReportRows(SACommand *cmd, const ReportRequest &request,
                           const std::function<std::unique_ptr<RowWriter>(std::vector<RowColumn>)> &open,
                           const std::function<void(long)> &progress = {});

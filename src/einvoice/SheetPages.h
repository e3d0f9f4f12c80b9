#pragma once

#include "einvoice/InvoiceSheet.h"
#include "tarvodlg/print/ReportRunner.h"

/// Paper of the sheets.
PaperSize SheetPaper();

/// Puts sheets on pages: line by line, so that a cell of any height goes on to the next page; the titles of a table and
/// the name of the document are repeated there, and a page that goes on says so at its foot. Nothing is kept of what
/// was printed.
class SheetPages {
  public:
    explicit SheetPages(PageSink &pages) : pages_(pages) {}

    /// The sheet on pages of its own.
    void Add(const InvoiceSheet &sheet);
    long Pages() const { return page_; }

  private:
    struct Line {
        std::string text;
        TextStyle style;
    };
    /// A row measured: the lines of every cell and the height of each of them.
    struct Row {
        std::vector<std::vector<Line>> cells;
        std::size_t lines = 0;
        double line_height = 0; ///< mm
    };

    void BeginPage();
    void EndPage(bool goes_on);
    void NextPage();
    void PutHeading();
    void PutSection(const SheetSection &section);
    void PutTitles(const SheetSection &section, bool is_again);
    double HeightToKeep(const SheetSection &section);
    double TitlesHeight(const SheetSection &section);
    void PutRow(const SheetSection &section, const Row &row);
    void DrawLines(const SheetSection &section, const Row &row, std::size_t first, std::size_t count);
    Row Measured(const SheetSection &section, const SheetRow &row);
    std::vector<Line> Lines(const SheetCell &cell, const SheetColumn &column, double width);
    void Rule();

    PageSink &pages_;
    const InvoiceSheet *sheet_ = nullptr;
    std::vector<double> widths_; ///< of the columns of the section in hand, mm
    std::vector<std::vector<Line>> titles_;
    std::size_t title_lines_ = 0;
    double y_ = 0;
    long page_ = 0;
};

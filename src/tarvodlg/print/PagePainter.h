#pragma once

#include "tarvodlg/print/ReportRunner.h"

class QPagedPaintDevice;

/// Draws the pages of a report on a PDF or a printer, page by page.
class PagePainter : public PageSink {
  public:
    /// @param device  page size and orientation already set; not owned
    explicit PagePainter(QPagedPaintDevice *device);
    ~PagePainter() override;

    void BeginPage(long number) override;
    void Text(double x, double y, double w, ItemAlign align, const TextStyle &style, const std::string &text) override;
    void Line(double x1, double y1, double x2, double y2) override;
    void Box(double x, double y, double w, double h) override;
    void Image(double x, double y, double w, double h, const std::filesystem::path &file) override;
    void EndPage() override;
    std::vector<std::string> Wrapped(double w, const TextStyle &style, const std::string &text) override;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Writes the report as a PDF under that name, or throws and leaves what was there.
/// @throws ReportError, SAException, FileError
ReportResult WritePdf(SACommand *cmd, const ReportRequest &request, const std::filesystem::path &file,
                      const std::function<void(long)> &progress = {});

/// Fonts and PDF need Qt's gui: makes an offscreen QGuiApplication when the program has none, as on the command line.
void EnsureGui();

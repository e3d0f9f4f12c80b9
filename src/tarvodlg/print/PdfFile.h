#pragma once

#include "tarvodlg/print/PagePainter.h"
#include "tarvodlg/print/ProvisionalFile.h"

#include <QPdfWriter>

/// A PDF in the making; nothing stands under its name until PutInPlace. @throws FileError
class PdfFile {
  public:
    /// @param paper  size of the pages; what is drawn counts from its corner
    PdfFile(const std::filesystem::path &file, const PaperSize &paper, const std::string &title);
    ~PdfFile();

    QPagedPaintDevice *Device() { return writer_.get(); }
    /// Throws what writing met so far.
    void RequireWritten() const;
    /// After the painter has ended.
    void PutInPlace();

  private:
    class Output;

    ProvisionalFile file_;
    std::unique_ptr<Output> output_;
    std::unique_ptr<QPdfWriter> writer_;
};

/// Draws on the file, and stops a print whose disk is full instead of drawing the rest of it for nothing.
class PdfPainter : public PagePainter {
  public:
    explicit PdfPainter(PdfFile *file) : PagePainter(file->Device()), file_(*file) {}
    void EndPage() override
    {
        PagePainter::EndPage();
        file_.RequireWritten();
    }

  private:
    const PdfFile &file_;
};

#pragma once

#include "tarvodlg/print/Crystal.h"

/// A name in the company's tmp folder for pages that are only looked at or printed; the file goes with the object.
class TemporaryPdf {
  public:
    TemporaryPdf();
    ~TemporaryPdf();
    TemporaryPdf(const TemporaryPdf &) = delete;
    TemporaryPdf &operator=(const TemporaryPdf &) = delete;

    const std::filesystem::path &Path() const { return path_; }

  private:
    std::filesystem::path path_;
};

/// The presenter of the program. @throws ReportError when it has none
ReportPresenter &RequirePresenter();

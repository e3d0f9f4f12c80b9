#pragma once

#include "tarvodlg/print/Crystal.h"
#include "tests/tarvodlg/print/RecordingPages.h"

/// Stands for the preview while it lives, and gives the pages of a print as text.
class PrintedPages : public ReportPresenter {
  public:
    PrintedPages() : before_(SetReportPresenter(this)) {}
    ~PrintedPages() override { SetReportPresenter(before_); }
    PrintedPages(const PrintedPages &) = delete;
    PrintedPages &operator=(const PrintedPages &) = delete;

    static ReportDestination Destination() { return {ReportTarget::Preview, {}}; }

    void Preview(const ReportRequest &request, const std::filesystem::path &) override
    {
        RecordingPages recorded;
        RunReport(nullptr, request, recorded);
        pages = std::move(recorded.pages);
    }
    bool Print(const std::string &, const std::filesystem::path &, bool) override { return false; }

    /// The lines of all pages that contain the words.
    std::vector<std::string> LinesWith(const std::string &words) const
    {
        std::vector<std::string> found;
        for (const auto &page : pages)
            for (const std::string &line : page)
                if (line.find(words) != std::string::npos) found.push_back(line);
        return found;
    }

    std::vector<std::vector<std::string>> pages;

  private:
    ReportPresenter *before_;
};

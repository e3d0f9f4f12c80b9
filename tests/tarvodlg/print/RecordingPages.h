#pragma once

#include "tarvodlg/print/ReportRunner.h"

#include <fmt/format.h>

/// The pages of a report as text: each page a list of lines from the top, the texts of a line from left to right with
/// "|" between.
class RecordingPages : public PageSink {
  public:
    std::vector<std::vector<std::string>> pages;
    std::vector<long> numbers;
    std::vector<std::string> images;
    double lowest = 0;                ///< the lowest text of all pages, mm
    std::size_t letters_per_line = 0; ///< for wrapped texts; 0 = all on one line

    void BeginPage(long number) override
    {
        numbers.push_back(number);
        texts_.clear();
    }
    void Text(double x, double y, double, ItemAlign, const TextStyle &, const std::string &text) override
    {
        texts_[{std::lround(y * 100), std::lround(x * 100)}] = text;
        lowest = std::max(lowest, y);
    }
    void Line(double, double, double, double) override {}
    void Box(double, double, double, double) override {}
    void Image(double, double, double, double, const std::filesystem::path &file) override
    {
        images.push_back(file.string());
    }
    void EndPage() override
    {
        std::vector<std::string> &lines = pages.emplace_back();
        long last_y = -1;
        for (const auto &[place, text] : texts_) {
            if (place.first == last_y)
                lines.back() += "|" + text;
            else
                lines.push_back(text);
            last_y = place.first;
        }
    }
    std::vector<std::string> Wrapped(double, const TextStyle &, const std::string &text) override
    {
        if (letters_per_line == 0) return {text};
        std::vector<std::string> lines;
        for (std::size_t at = 0; at < text.size(); at += letters_per_line)
            lines.push_back(text.substr(at, letters_per_line));
        return lines;
    }

  private:
    std::map<std::pair<long, long>, std::string> texts_;
};

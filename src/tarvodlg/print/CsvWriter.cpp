#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/Text.h"
#include "tarvodlg/print/ProvisionalFile.h"
#include "tarvodlg/print/RowWriter.h"

#include <array>
#include <cassert>
#include <charconv>
#include <cmath>
#include <fmt/format.h>

namespace {

/// How a CSV file is written: for people in front of a spreadsheet, or for programs.
struct CsvStyle {
    bool for_people;
    char separator, decimal;
    const char *line_end;
    std::string (*date)(long);
};
constexpr CsvStyle kPeople{true, ';', ',', "\r\n", FormatDate};
constexpr CsvStyle kPrograms{false, ',', '.', "\n", FormatIsoDate};

/// A spreadsheet takes these for the beginning of a formula, and a formula in a customer's name can reach out of the
/// sheet. Tab and line ends are skipped by some programs before they look.
bool LooksLikeFormula(std::string_view text)
{
    return !text.empty() && std::string_view("=+-@\t\r\n").find(text.front()) != std::string_view::npos;
}

class CsvWriter : public RowWriter {
  public:
    CsvWriter(const std::filesystem::path &file, std::vector<RowColumn> columns, const CsvStyle &style)
        : file_(file), columns_(std::move(columns)), style_(style)
    {
        if (style_.for_people) file_.Write("\xEF\xBB\xBF");
        for (const RowColumn &column : columns_) {
            AppendText(column.title);
            line_ += style_.separator;
        }
        EndLine();
    }

    void Add(std::span<const ReportValue> values) override
    {
        assert(values.size() == columns_.size());
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            if (i < values.size()) AppendValue(values[i], columns_[i].format);
            line_ += style_.separator;
        }
        EndLine();
    }

    void Finish() override { file_.PutInPlace(); }

  private:
    void EndLine()
    {
        if (!line_.empty()) line_.pop_back(); // the separator behind the last column
        line_ += style_.line_end;
        file_.Write(line_);
        line_.clear();
    }

    void AppendValue(const ReportValue &value, ColumnFormat format)
    {
        if (const auto *text = std::get_if<std::string>(&value)) return AppendText(*text);
        if (const auto *date = std::get_if<ReportDate>(&value))
            line_ += style_.date(date->day);
        else if (const auto *whole = std::get_if<long long>(&value))
            AppendNumber(std::to_string(*whole) + (format == ColumnFormat::Amount ? ".00" : ""));
        else if (const auto *number = std::get_if<double>(&value); number != nullptr && std::isfinite(*number))
            AppendNumber(format == ColumnFormat::Amount ? fmt::format("{:.2f}", Round(*number, 2)) : Shortest(*number));
    }

    /// All digits that count, never with an exponent.
    static std::string Shortest(double number)
    {
        std::array<char, 512> digits; // the smallest double has 326 places
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number == 0 ? 0.0 : number,
                                       std::chars_format::fixed);
        return {digits.data(), end.ptr};
    }

    void AppendNumber(std::string number)
    {
        if (const std::size_t point = number.find('.'); point != std::string::npos) number[point] = style_.decimal;
        line_ += number;
    }

    void AppendText(std::string_view text)
    {
        std::string kept;
        if (style_.for_people) {
            kept = ToValidUtf8(text);
            if (LooksLikeFormula(kept)) kept.insert(kept.begin(), '\'');
            text = kept;
        }
        const std::array<char, 5> special = {style_.separator, '"', '\r', '\n', '\0'};
        if (text.find_first_of(special.data()) == std::string_view::npos) {
            line_ += text;
            return;
        }
        line_ += '"';
        for (const char c : text) {
            if (c == '"') line_ += '"';
            line_ += c;
        }
        line_ += '"';
    }

    ProvisionalFile file_;
    std::vector<RowColumn> columns_;
    const CsvStyle &style_;
    std::string line_;
};

} // namespace

std::unique_ptr<RowWriter> OpenCsv(const std::filesystem::path &file, std::vector<RowColumn> columns)
{
    return std::make_unique<CsvWriter>(file, std::move(columns), kPeople);
}

std::unique_ptr<RowWriter> OpenMachineCsv(const std::filesystem::path &file, std::vector<RowColumn> columns)
{
    return std::make_unique<CsvWriter>(file, std::move(columns), kPrograms);
}

#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Text.h"
#include "tarvodlg/print/Interruption.h"
#include "tarvodlg/print/ProvisionalFile.h"
#include "tarvodlg/print/RowWriter.h"
#include "tarvodlg/print/XlsxParts.h"

#include <zip.h>

#include <algorithm>
#include <cassert>
#include <fmt/format.h>

namespace {

constexpr std::size_t kRowsMax = 1'048'576; ///< of a sheet, title row included
constexpr std::size_t kShownMax = 60;       ///< characters of the widest column
/// The library's own choice is the highest, which takes more than ten times as long for a file a sixth smaller.
constexpr zip_uint32_t kDeflateLevel = 4;

/// Every column's width takes the same number of bytes, so that the widths can be filled in behind the last row.
std::string WidthsXml(const std::vector<std::size_t> &characters)
{
    if (characters.empty()) return {};
    std::string xml = "<cols>";
    for (std::size_t i = 0; i < characters.size(); ++i)
        xml += fmt::format(R"(<col min="{0}" max="{0}" width="{1:06.2f}" customWidth="1"/>)", i + 1,
                           static_cast<double>(std::min(characters[i], kShownMax)) + 2.71);
    return xml + "</cols>";
}

/// A sheet on its way: its XML in a file beside the target.
struct Sheet {
    explicit Sheet(const std::filesystem::path &target) : file(target) {}

    ProvisionalFile file;
    std::uint64_t widths_at = 0; ///< where the columns' widths stand in it
    std::size_t rows = 0;        ///< title row included
};

/// Puts the parts together; without Close nothing of it is left.
class ZipFile {
  public:
    explicit ZipFile(const std::filesystem::path &target) : target_(target), file_(target)
    {
        file_.Close();
        int error = 0;
        zip_ = zip_open(file_.Path().c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
        if (zip_ != nullptr) {
            const auto is_interrupted = [](zip_t *, void *) { return WasInterrupted() ? 1 : 0; };
            zip_register_cancel_callback_with_state(zip_, is_interrupted, nullptr, nullptr);
            return;
        }
        zip_error_t reason;
        zip_error_init_with_code(&reason, error);
        const std::string text = Reason(&reason);
        zip_error_fini(&reason);
        FailWriting(target_, text);
    }
    ~ZipFile()
    {
        if (zip_ != nullptr) zip_discard(zip_);
    }
    ZipFile(const ZipFile &) = delete;
    ZipFile &operator=(const ZipFile &) = delete;

    /// @param text  must stay where it is until Close
    void AddText(const std::string &path, const std::string &text)
    {
        Add(path, zip_source_buffer(zip_, text.data(), text.size(), 0));
    }
    /// Read when it is packed, bit by bit.
    void AddFile(const std::string &path, const std::filesystem::path &file)
    {
        Add(path, zip_source_file(zip_, file.c_str(), 0, -1));
    }

    void Close()
    {
        if (zip_close(zip_) != 0) {
            RequireNotInterrupted();
            Fail();
        }
        zip_ = nullptr;
        file_.PutInPlace();
    }

  private:
    void Add(const std::string &path, zip_source_t *source)
    {
        if (source == nullptr) Fail();
        const zip_int64_t index = zip_file_add(zip_, path.c_str(), source, ZIP_FL_ENC_UTF_8);
        if (index < 0) {
            zip_source_free(source);
            Fail();
        }
        if (zip_set_file_compression(zip_, static_cast<zip_uint64_t>(index), ZIP_CM_DEFLATE, kDeflateLevel) != 0)
            Fail();
    }

    static std::string Reason(zip_error_t *error)
    {
        if (zip_error_system_type(error) == ZIP_ET_SYS) return SystemErrorText(zip_error_code_system(error));
        return zip_error_strerror(error);
    }
    [[noreturn]] void Fail() { FailWriting(target_, Reason(zip_get_error(zip_))); }

    std::filesystem::path target_;
    ProvisionalFile file_;
    zip_t *zip_ = nullptr;
};

class XlsxWriter : public RowWriter {
  public:
    XlsxWriter(const std::filesystem::path &file, const std::string &title, std::vector<RowColumn> columns)
        : target_(file), title_(title), columns_(std::move(columns))
    {
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            letters_.push_back(ColumnLetters(i));
            // Bold letters are wider, and a narrow column is hard to take hold of.
            shown_.push_back(std::max<std::size_t>(6, Utf8Length(columns_[i].title) * 6 / 5));
        }
        BeginSheet();
    }

    void Add(std::span<const ReportValue> values) override
    {
        assert(values.size() == columns_.size());
        if (sheets_.back()->rows == kRowsMax) {
            EndSheet();
            BeginSheet();
        }
        const std::size_t count = std::min(values.size(), columns_.size());
        AddRow([&](std::size_t column, std::string_view place) {
            if (column >= count) return;
            const std::size_t shown = AppendCell(row_, place, values[column], columns_[column].format);
            shown_[column] = std::max(shown_[column], shown);
        });
    }

    void Finish() override
    {
        EndSheet();
        const std::string widths = WidthsXml(shown_);
        for (const std::unique_ptr<Sheet> &sheet : sheets_) {
            sheet->file.Overwrite(sheet->widths_at, widths);
            sheet->file.Close();
        }
        const auto parts = WorkbookParts(title_, sheets_.size());
        ZipFile zip(target_);
        for (const auto &[path, text] : parts) zip.AddText(path, text);
        for (std::size_t i = 0; i < sheets_.size(); ++i) zip.AddFile(SheetPath(i + 1), sheets_[i]->file.Path());
        zip.Close();
        sheets_.clear(); // the provisional files go away
    }

  private:
    template <class AppendAt>
    void AddRow(AppendAt append_at)
    {
        Sheet &sheet = *sheets_.back();
        const std::string number = fmt::format("{}", ++sheet.rows);
        row_ = "<row r=\"" + number + "\">";
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            place_ = letters_[i];
            place_ += number;
            append_at(i, place_);
        }
        row_ += "</row>\n";
        sheet.file.Write(row_);
    }

    void BeginSheet()
    {
        sheets_.push_back(std::make_unique<Sheet>(target_));
        Sheet &sheet = *sheets_.back();
        sheet.file.Write(fmt::format(
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
            R"(<worksheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">)"
            R"(<sheetViews><sheetView {}workbookViewId="0"><pane ySplit="1" topLeftCell="A2" activePane="bottomLeft" )"
            R"(state="frozen"/><selection pane="bottomLeft" activeCell="A2" sqref="A2"/></sheetView></sheetViews>)",
            sheets_.size() == 1 ? "tabSelected=\"1\" " : ""));
        sheet.widths_at = sheet.file.Size();
        sheet.file.Write(WidthsXml(shown_)); // as wide as known so far; right at the end
        sheet.file.Write("<sheetData>\n");
        AddRow([this](std::size_t column, std::string_view place) {
            AppendTitleCell(row_, place, columns_[column].title);
        });
    }

    void EndSheet() { sheets_.back()->file.Write("</sheetData></worksheet>\n"); }

    std::filesystem::path target_;
    std::string title_;
    std::vector<RowColumn> columns_;
    std::vector<std::string> letters_;
    std::vector<std::size_t> shown_; ///< characters of the widest cell of each column
    std::vector<std::unique_ptr<Sheet>> sheets_;
    std::string row_, place_; ///< kept for their memory
};

} // namespace

std::unique_ptr<RowWriter> OpenXlsx(const std::filesystem::path &file, const std::string &sheet,
                                    std::vector<RowColumn> columns)
{
    return std::make_unique<XlsxWriter>(file, sheet, std::move(columns));
}

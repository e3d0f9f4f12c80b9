#include "tarvodlg/sheets/BiffRecords.h"
#include "tarvodlg/sheets/CompoundFile.h"
#include "tarvodlg/sheets/LittleEndian.h"
#include "tarvodlg/sheets/NumberFormats.h"

#include <algorithm>
#include <cmath>

namespace {

enum Record : unsigned {
    kFormula = 0x06,
    kEnd = 0x0A,
    kDateMode = 0x22,
    kProtectedFile = 0x2F,
    kCodePage = 0x42,
    kBoundSheet = 0x85,
    kMultipleRk = 0xBD,
    kRichString = 0xD6,
    kCellFormat = 0xE0,
    kSharedStrings = 0xFC,
    kSharedLabel = 0xFD,
    kNumber = 0x203,
    kLabel = 0x204,
    kTruthOrError = 0x205,
    kFormulaText = 0x207,
    kRk = 0x27E,
    kFormat = 0x41E,
    kBegin = 0x809,
};

constexpr unsigned kVersion5 = 0x500, kVersion8 = 0x600;
constexpr std::size_t kStringsMax = 1'000'000;

/// A number packed into four bytes: the upper part of a double or an integer, perhaps in hundredths.
double UnpackRk(std::uint32_t packed)
{
    const double value = (packed & 2) != 0
                             ? static_cast<double>(static_cast<std::int32_t>(packed) >> 2)
                             : std::bit_cast<double>(static_cast<std::uint64_t>(packed & ~std::uint32_t{3}) << 32);
    return (packed & 1) != 0 ? value / 100 : value;
}

SheetCell ErrorCell(unsigned code)
{
    switch (code) {
    case 0x00:
        return TextCell("#NULL!");
    case 0x07:
        return TextCell("#DIV/0!");
    case 0x0F:
        return TextCell("#VALUE!");
    case 0x17:
        return TextCell("#REF!");
    case 0x1D:
        return TextCell("#NAME?");
    case 0x24:
        return TextCell("#NUM!");
    default:
        return TextCell("#N/A");
    }
}

/// A workbook of Excel 5 to 2003.
class BiffBook : public SheetBook {
  public:
    explicit BiffBook(std::string stream) : stream_(std::move(stream)) { ReadGlobals(); }

    void ForEachRow(const SheetRowFunction &each) override;

  private:
    struct PlacedCell {
        unsigned row, column; ///< from 0
        SheetCell cell;
        std::optional<std::size_t> shared = {}; ///< the text is this one of strings_: one long text in many cells
    };

    void ReadGlobals();
    void ReadGlobal(const BiffRecord &record);
    void ReadSheetEntry(const BiffRecord &record);
    void ReadStrings(const BiffRecord &record);
    void ReadCells(const BiffRecord &record);
    void ReadFormula(const BiffRecord &record);
    void Place(unsigned row, unsigned column, SheetCell cell);
    void Place(const BiffRecord &record, SheetCell cell);      ///< where the record says
    SheetCell NumberCell(unsigned format, double value) const; ///< @param format  index into cell_formats_
    std::string TextOf(const BiffRecord &record, std::size_t at) const;

    std::string stream_;
    unsigned version_ = kVersion8, code_page_ = 1252;
    NumberFormats formats_;
    std::vector<unsigned> cell_formats_;
    std::vector<std::string> strings_;
    std::size_t sheet_at_ = 0; ///< 0 = none found yet
    bool sheet_is_visible_ = false;
    std::vector<PlacedCell> cells_;
    bool text_follows_ = false; ///< the last formula's result comes in a record of its own
};

/// A text with its length before it. @param at  where the length stands
std::string BiffBook::TextOf(const BiffRecord &record, std::size_t at) const
{
    const std::size_t length = WordAt(record.data, at);
    if (version_ == kVersion8) return BiffTextReader(record, at + 2).Text(length);
    std::string bytes(record.data.substr(at + 2, length));
    for (const std::string_view more : record.continued) bytes += more;
    if (bytes.size() < length) throw SheetError(kSheetDamaged);
    return FromCodePage(std::string_view(bytes).substr(0, length), code_page_);
}

void BiffBook::ReadGlobals()
{
    BiffRecords records(stream_, 0);
    BiffRecord record;
    if (!records.Next(&record) || record.type != kBegin) throw SheetError(kSheetDamaged);
    version_ = WordAt(record.data, 0);
    if (version_ != kVersion5 && version_ != kVersion8) throw SheetError(kSheetDamaged);
    while (records.Next(&record) && record.type != kEnd) ReadGlobal(record);
    if (record.type != kEnd) throw SheetError(kSheetDamaged);
    if (sheet_at_ == 0) throw SheetError(kNoWorksheet);
}

void BiffBook::ReadGlobal(const BiffRecord &record)
{
    switch (record.type) {
    case kProtectedFile:
        throw SheetError(kSheetProtected);
    case kCodePage:
        code_page_ = WordAt(record.data, 0);
        break;
    case kDateMode:
        if (WordAt(record.data, 0) == 1) formats_.base = DateBase::From1904;
        break;
    case kFormat:
        if (version_ == kVersion8)
            formats_.Define(WordAt(record.data, 0), TextOf(record, 2));
        else
            formats_.Define(WordAt(record.data, 0), record.data.substr(3, ByteAt(record.data, 2)));
        break;
    case kCellFormat:
        cell_formats_.push_back(WordAt(record.data, 2));
        break;
    case kBoundSheet:
        ReadSheetEntry(record);
        break;
    case kSharedStrings:
        ReadStrings(record);
        break;
    default:
        break;
    }
}

void BiffBook::ReadSheetEntry(const BiffRecord &record)
{
    const bool is_visible = (ByteAt(record.data, 4) & 3) == 0, is_of_cells = ByteAt(record.data, 5) == 0;
    // The first one that is seen; where all are hidden, the first one.
    if (!is_of_cells || sheet_is_visible_ || (sheet_at_ != 0 && !is_visible)) return;
    sheet_at_ = LongAt(record.data, 0);
    sheet_is_visible_ = is_visible;
}

void BiffBook::ReadStrings(const BiffRecord &record)
{
    const std::size_t count = LongAt(record.data, 4);
    BiffTextReader reader(record, 8);
    while (strings_.size() < count && !reader.AtEnd()) {
        if (strings_.size() >= kStringsMax) throw SheetError(kSheetTooLarge);
        const std::size_t length = reader.Word();
        strings_.push_back(CutToCell(reader.Text(length)));
    }
}

SheetCell BiffBook::NumberCell(unsigned format, double value) const
{
    if (!std::isfinite(value)) throw SheetError(kSheetDamaged);
    return formats_.Cell(value, format < cell_formats_.size() ? cell_formats_[format] : 0);
}

void BiffBook::Place(unsigned row, unsigned column, SheetCell cell)
{
    if (cells_.size() >= kSheetCellsMax) throw SheetError(kSheetTooLarge);
    cells_.push_back({row, column, std::move(cell), {}});
}

void BiffBook::Place(const BiffRecord &record, SheetCell cell)
{
    Place(WordAt(record.data, 0), WordAt(record.data, 2), std::move(cell));
}

void BiffBook::ReadFormula(const BiffRecord &record)
{
    if (WordAt(record.data, 12) != 0xFFFF)
        return Place(record, NumberCell(WordAt(record.data, 4), DoubleAt(record.data, 6)));
    constexpr unsigned kText = 0, kTruth = 1, kError = 2;
    const unsigned kind = ByteAt(record.data, 6), value = ByteAt(record.data, 8);
    text_follows_ = kind == kText;
    Place(record, kind == kTruth ? TruthCell(value != 0) : kind == kError ? ErrorCell(value) : SheetCell{});
}

void BiffBook::ReadCells(const BiffRecord &record)
{
    switch (record.type) {
    case kFormula:
        return ReadFormula(record);
    case kFormulaText:
        if (text_follows_) cells_.back().cell = TextCell(TextOf(record, 0));
        text_follows_ = false;
        return;
    case kNumber:
        return Place(record, NumberCell(WordAt(record.data, 4), DoubleAt(record.data, 6)));
    case kRk:
        return Place(record, NumberCell(WordAt(record.data, 4), UnpackRk(LongAt(record.data, 6))));
    case kMultipleRk: // format and number of one cell after the other, the last column behind them
        for (std::size_t at = 4; at + 6 + 2 <= record.data.size(); at += 6)
            Place(WordAt(record.data, 0), WordAt(record.data, 2) + static_cast<unsigned>((at - 4) / 6),
                  NumberCell(WordAt(record.data, at), UnpackRk(LongAt(record.data, at + 2))));
        return;
    case kLabel:
    case kRichString:
        return Place(record, TextCell(TextOf(record, 6)));
    case kSharedLabel: {
        const std::size_t index = LongAt(record.data, 6);
        if (index >= strings_.size()) throw SheetError(kSheetDamaged);
        Place(record, {});
        cells_.back().shared = index;
        return;
    }
    case kTruthOrError: {
        const unsigned value = ByteAt(record.data, 6);
        return Place(record, ByteAt(record.data, 7) != 0 ? ErrorCell(value) : TruthCell(value != 0));
    }
    default:
        return;
    }
}

void BiffBook::ForEachRow(const SheetRowFunction &each)
{
    cells_.clear();
    text_follows_ = false;
    BiffRecords records(stream_, sheet_at_);
    BiffRecord record;
    if (!records.Next(&record) || record.type != kBegin) throw SheetError(kSheetDamaged);
    // A chart that lies on the sheet has a beginning and an end of its own in between.
    for (int depth = 1; depth > 0;) {
        if (!records.Next(&record)) throw SheetError(kSheetDamaged);
        if (record.type == kBegin)
            ++depth;
        else if (record.type == kEnd)
            --depth;
        else if (depth == 1)
            ReadCells(record);
    }
    std::stable_sort(cells_.begin(), cells_.end(), [](const PlacedCell &a, const PlacedCell &b) {
        return a.row != b.row ? a.row < b.row : a.column < b.column;
    });
    RowAssembler rows(each);
    for (PlacedCell &placed : cells_)
        rows.Put(static_cast<long>(placed.row) + 1, static_cast<long>(placed.column) + 1,
                 placed.shared ? TextCell(strings_[*placed.shared]) : std::move(placed.cell));
    rows.Finish();
    cells_.clear();
}

} // namespace

std::unique_ptr<SheetBook> OpenBiffBook(const std::string &bytes)
{
    const CompoundFile file(bytes);
    if (std::optional<std::string> stream = file.Read("Workbook"))
        return std::make_unique<BiffBook>(std::move(*stream));
    if (std::optional<std::string> stream = file.Read("Book")) return std::make_unique<BiffBook>(std::move(*stream));
    // A workbook of today with a password travels inside the old container.
    if (file.Has("EncryptedPackage")) throw SheetError(kSheetProtected);
    throw SheetError("Il file è di un programma d'ufficio, ma non è un foglio di calcolo.");
}

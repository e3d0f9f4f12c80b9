#include "tarvodlg/sheets/BiffRecords.h"

#include "tarvodlg/base/Text.h"
#include "tarvodlg/sheets/LittleEndian.h"

#include <fmt/format.h>
#include <iconv.h>

namespace {

constexpr unsigned kContinue = 0x3C;
constexpr char32_t kUnknownCharacter = 0xFFFD;

/// Code units of two bytes; a half of a pair that stands alone is no character.
std::string FromUnits(const std::vector<unsigned> &units)
{
    std::string text;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const unsigned unit = units[i];
        const bool is_pair =
            unit >= 0xD800 && unit < 0xDC00 && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000;
        if (is_pair)
            AppendUtf8(text, 0x10000 + ((unit - 0xD800) << 10) + (units[++i] - 0xDC00));
        else
            AppendUtf8(text, unit >= 0xD800 && unit < 0xE000 ? kUnknownCharacter : unit);
    }
    return text;
}

} // namespace

BiffRecords::BiffRecords(std::string_view stream, std::size_t at) : stream_(stream), at_(at)
{
    if (at > stream.size()) throw SheetError(kSheetDamaged);
}

std::string_view BiffRecords::Take(unsigned *type)
{
    *type = WordAt(stream_, at_);
    const std::size_t length = WordAt(stream_, at_ + 2);
    if (length > stream_.size() - at_ - 4) throw SheetError(kSheetDamaged);
    const std::string_view data = stream_.substr(at_ + 4, length);
    at_ += 4 + length;
    return data;
}

bool BiffRecords::Next(BiffRecord *record)
{
    if (stream_.size() - at_ < 4) return false;
    record->data = Take(&record->type);
    record->continued.clear();
    unsigned type = 0;
    while (stream_.size() - at_ >= 4 && WordAt(stream_, at_) == kContinue) record->continued.push_back(Take(&type));
    return true;
}

BiffTextReader::BiffTextReader(const BiffRecord &record, std::size_t at) : parts_{record.data}, at_(at)
{
    if (at > record.data.size()) throw SheetError(kSheetDamaged);
    parts_.insert(parts_.end(), record.continued.begin(), record.continued.end());
}

void BiffTextReader::ToNextPart()
{
    while (at_ == parts_[part_].size() && part_ + 1 < parts_.size()) {
        ++part_;
        at_ = 0;
    }
}

bool BiffTextReader::AtEnd()
{
    ToNextPart();
    return at_ == parts_[part_].size();
}

unsigned BiffTextReader::Byte()
{
    ToNextPart();
    return ByteAt(parts_[part_], at_++);
}

unsigned BiffTextReader::Word()
{
    const unsigned low = Byte();
    return low | Byte() << 8;
}

std::size_t BiffTextReader::Long()
{
    const std::size_t low = Word();
    return low | static_cast<std::size_t>(Word()) << 16;
}

void BiffTextReader::Skip(std::size_t bytes)
{
    while (bytes > 0) {
        if (AtEnd()) throw SheetError(kSheetDamaged);
        const std::size_t step = std::min(bytes, Rest().size());
        at_ += step;
        bytes -= step;
    }
}

std::string BiffTextReader::Text(std::size_t characters)
{
    constexpr unsigned kWide = 1, kPhonetic = 4, kRich = 8;
    const unsigned flags = Byte();
    const std::size_t runs = (flags & kRich) != 0 ? Word() : 0;
    const std::size_t phonetic = (flags & kPhonetic) != 0 ? Long() : 0;
    bool wide = (flags & kWide) != 0;
    std::vector<unsigned> units;
    while (units.size() < characters) {
        if (Rest().empty()) {
            if (AtEnd()) throw SheetError(kSheetDamaged);
            wide = (Byte() & kWide) != 0;
            continue;
        }
        units.push_back(wide ? WordAt(Rest(), 0) : ByteAt(Rest(), 0));
        at_ += wide ? 2 : 1;
    }
    Skip(runs * 4 + phonetic);
    return FromUnits(units);
}

std::string FromCodePage(std::string_view bytes, unsigned code_page)
{
    const std::string name = code_page == 10000 || code_page == 32768 ? "MACINTOSH" : fmt::format("CP{}", code_page);
    iconv_t converter = iconv_open("UTF-8", name.c_str());
    if (converter == reinterpret_cast<iconv_t>(-1)) converter = iconv_open("UTF-8", "CP1252");
    if (converter == reinterpret_cast<iconv_t>(-1)) return ToValidUtf8(bytes);
    std::string text;
    for (const char byte : bytes) { // one by one, so that a byte without meaning costs itself alone
        char source[] = {byte}, target[8];
        char *from = source, *to = target;
        std::size_t from_left = 1, to_left = sizeof target;
        if (iconv(converter, &from, &from_left, &to, &to_left) == static_cast<std::size_t>(-1) || to == target)
            AppendUtf8(text, kUnknownCharacter);
        else
            text.append(target, to);
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
    }
    iconv_close(converter);
    return text;
}

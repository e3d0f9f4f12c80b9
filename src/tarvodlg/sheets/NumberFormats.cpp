#include "tarvodlg/sheets/NumberFormats.h"

#include "tarvodlg/base/Text.h"

#include <cctype>
#include <cmath>

namespace {

constexpr double kSerialMax = 2958465; ///< 31 December 9999, counted from 1900
constexpr long kDayBefore1900 = 2415019, kFirstDay1904 = 2416481;

/// The letters of a format code's first section that are not literal text, in lower case: "dd/mm/yyyy" for
/// "[$-410]dd/mm/yyyy \"del giorno\";@".
std::string BareCode(std::string_view code)
{
    std::string bare;
    for (std::size_t i = 0; i < code.size() && code[i] != ';'; ++i) {
        const char c = code[i];
        if (c == '\\' || c == '_' || c == '*') {
            ++i; // the next character stands for itself, for its width, or fills the cell
        } else if (c == '"' || c == '[') {
            const std::size_t end = code.find(c == '"' ? '"' : ']', i + 1);
            if (end == std::string_view::npos) break;
            // "[h]", "[mm]": hours beyond a day, minutes beyond an hour
            if (c == '[' && code.substr(i + 1, end - i - 1).find_first_not_of("hHmMsS") == std::string_view::npos)
                bare += 'h';
            i = end;
        } else {
            bare += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return bare;
}

} // namespace

bool IsDateFormatCode(std::string_view code)
{
    const std::string bare = BareCode(code);
    if (bare == "general" || bare == "standard") return false;
    if (bare.find_first_of("#0?") != std::string::npos && bare.find('y') == std::string::npos) return false;
    if (bare.find_first_of("yd") != std::string::npos) return true;
    return bare.find('m') != std::string::npos && bare.find_first_of("hs") == std::string::npos;
}

void NumberFormats::Define(unsigned id, std::string_view code)
{
    own_[id] = IsDateFormatCode(code);
}

bool NumberFormats::IsDate(unsigned id) const
{
    if (const auto own = own_.find(id); own != own_.end()) return own->second;
    // 27 to 31, 36, 50 to 54 and 57, 58 are the dates of East Asian editions.
    return (id >= 14 && id <= 17) || id == 22 || (id >= 27 && id <= 31) || id == 36 || (id >= 50 && id <= 54) ||
           id == 57 || id == 58;
}

long DayOfSerial(double serial, DateBase base)
{
    if (!(serial >= 0) || serial > kSerialMax) return 0;
    const long days = static_cast<long>(serial);
    if (base == DateBase::From1904) return kFirstDay1904 + days;
    // The count from 1900 has a 29 February that never was: the days before it are one off.
    return days == 0 ? 0 : kDayBefore1900 + days + (days < 60 ? 1 : 0);
}

SheetCell NumberFormats::Cell(double number, unsigned format) const
{
    SheetCell cell;
    cell.kind = SheetCell::Kind::Number;
    cell.number = number;
    if (IsDate(format)) cell.day = DayOfSerial(number, base);
    cell.is_date = cell.day != 0;
    return cell;
}

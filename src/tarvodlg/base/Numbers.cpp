#include "tarvodlg/base/Numbers.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cmath>
#include <stdexcept>

#include "tarvodlg/base/Text.h"

namespace {

constexpr std::array<double, 10> kPowersOfTen = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};

/// From here on a double has no digits after the point, so there is nothing left to round.
constexpr double kAllWhole = 9007199254740992.0; // 2^53

double PowerOfTen(int decimals)
{
    assert(decimals >= 0 && decimals <= 9);
    return kPowersOfTen[static_cast<std::size_t>(decimals)];
}

/// How far a scaled amount may lie from the decimal that a person reads in it.
///
/// Each operation on doubles is wrong by at most 2^-53 of its result. Six of them cover what the books compute in one
/// go: reading two amounts, a product, a division by 100 and the scaling. The distance still is below one unit of the
/// fifteenth digit (1e-15, nine times 2^-53), so no decimal of up to fifteen digits is ever taken for a half that it is
/// not. The cap keeps that true where fifteen digits leave only one behind the unit.
double Noise(double scaled)
{
    return std::min(scaled * (6 / kAllWhole), 0.05);
}

/// The value in units of the last decimal, rounded; the value is not negative and below kAllWhole.
long long NearestUnit(double scaled)
{
    // The conversion cuts, and the difference of the two is exact; adding 0.5 first would itself round.
    const auto whole = static_cast<long long>(scaled);
    return scaled - static_cast<double>(whole) >= 0.5 - Noise(scaled) ? whole + 1 : whole;
}

double WithSignOf(double value, long long units, double scale)
{
    if (units == 0) return 0.0; // never -0
    // The quotient of two whole numbers is the double nearest to the decimal, the very one that its text reads as.
    const double magnitude = static_cast<double>(units) / scale;
    return value < 0 ? -magnitude : magnitude;
}

} // namespace

double Round(double value, int decimals)
{
    const double scale = PowerOfTen(decimals);
    const double scaled = std::fabs(value) * scale;
    if (!(scaled < kAllWhole)) return value; // too large, infinite or no number
    return WithSignOf(value, NearestUnit(scaled), scale);
}

double MyCeil(double value, int decimals)
{
    const double scale = PowerOfTen(decimals);
    const double scaled = std::fabs(value) * scale;
    if (!(scaled < kAllWhole)) return value;
    const auto whole = static_cast<long long>(scaled);
    // Above some ten million euro the noise of the scaling itself is larger than a millionth of a cent.
    const double already_a_unit = std::max(1e-6, Noise(scaled));
    const bool goes_up = scaled - static_cast<double>(whole) > already_a_unit;
    return WithSignOf(value, goes_up ? whole + 1 : whole, scale);
}

bool TestIfZero(double value, int decimals)
{
    return Round(value, decimals) == 0.0;
}

long long ToCents(double euro)
{
    const double scaled = std::fabs(euro) * 100;
    if (scaled < kAllWhole) return euro < 0 ? -NearestUnit(scaled) : NearestUnit(scaled);
    if (!(scaled < 9e18)) throw std::out_of_range("Importo fuori dai limiti");
    const auto whole = static_cast<long long>(euro); // a product in doubles would lose the last digits
    return whole * 100 + std::llround((euro - static_cast<double>(whole)) * 100);
}

double FromCents(long long cents)
{
    return static_cast<double>(cents) / 100;
}

std::string FormatAmount(double euro, int decimals)
{
    std::array<char, 340> plain; // the largest double has 309 digits before the point
    const double rounded = Round(euro, decimals);
    const auto end = std::to_chars(plain.data(), plain.data() + plain.size(), std::fabs(rounded),
                                   std::chars_format::fixed, decimals);
    const std::string_view digits(plain.data(), static_cast<std::size_t>(end.ptr - plain.data()));
    if (!std::isfinite(rounded)) return std::string(digits);

    const std::size_t whole = std::min(digits.find('.'), digits.size());
    std::string text;
    text.reserve(digits.size() + whole / 3 + 1);
    if (rounded < 0) text += '-';
    for (std::size_t i = 0; i < whole; ++i) {
        if (i > 0 && (whole - i) % 3 == 0) text += '.';
        text += digits[i];
    }
    if (whole < digits.size()) text.append(",").append(digits.substr(whole + 1));
    return text;
}

namespace {

constexpr std::string_view kEuroSign = "€";
constexpr std::string_view kHardBlank = "\u00A0"; // what web pages and spreadsheets put beside the euro sign

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool DropPrefix(std::string_view &text, std::string_view prefix)
{
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

bool DropSuffix(std::string_view &text, std::string_view suffix)
{
    if (!text.ends_with(suffix)) return false;
    text.remove_suffix(suffix.size());
    return true;
}

void TrimBlanks(std::string_view &text)
{
    do {
        text = Trimmed(text);
    } while (DropPrefix(text, kHardBlank) || DropSuffix(text, kHardBlank));
}

/// Takes sign and euro sign off, in whatever order people put them, each at most once. False when the sign came twice.
bool TakeSign(std::string_view &text, bool &negative)
{
    bool has_sign = false;
    bool has_euro = false;
    for (TrimBlanks(text); !text.empty(); TrimBlanks(text)) {
        if (text.front() == '-' || text.front() == '+') {
            if (has_sign) return false;
            has_sign = true;
            negative = text.front() == '-';
            text.remove_prefix(1);
        } else if (!has_euro && (DropPrefix(text, kEuroSign) || DropSuffix(text, kEuroSign))) {
            has_euro = true;
        } else {
            break;
        }
    }
    return true;
}

/// "1.234.567" with its separator: one to three digits, then groups of exactly three.
bool IsGrouped(std::string_view whole, char separator)
{
    const std::size_t first = whole.find(separator);
    if (first == 0 || first > 3 || whole.front() == '0') return false;
    for (std::size_t i = first; i < whole.size(); i += 4)
        if (whole[i] != separator || whole.size() - i < 4 || whole.find(separator, i + 1) < i + 4) return false;
    return true;
}

/// The two separators of a typed amount; '\0' where there is none.
struct Separators {
    char thousands = '\0';
    char decimal = '\0';
};

Separators FindSeparators(std::string_view text)
{
    const std::size_t point = text.rfind('.');
    const std::size_t comma = text.rfind(',');
    if (point == std::string_view::npos && comma == std::string_view::npos) return {};
    if (point == std::string_view::npos) return {'\0', ','};
    if (comma != std::string_view::npos) return comma > point ? Separators{'.', ','} : Separators{',', '.'};
    const bool single = text.find('.') == point;
    // One point alone could be either; Italian hands type it before thousands, where it can stand at all.
    const bool before_thousands = text.size() - point == 4 && IsGrouped(text, '.');
    return single && !before_thousands ? Separators{'\0', '.'} : Separators{'.', '\0'};
}

std::optional<double> FromDigits(const std::string &digits, bool negative)
{
    double value = 0;
    const char *end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, value, std::chars_format::fixed);
    if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return negative && value != 0 ? -value : value;
}

} // namespace

std::optional<double> ParseAmount(std::string_view text)
{
    bool negative = false;
    if (!TakeSign(text, negative)) return std::nullopt;

    const Separators separators = FindSeparators(text);
    const std::size_t decimal_at = separators.decimal ? text.find(separators.decimal) : text.size();
    const std::string_view whole = text.substr(0, decimal_at);
    const std::string_view fraction = decimal_at < text.size() ? text.substr(decimal_at + 1) : std::string_view();
    if (separators.thousands && !IsGrouped(whole, separators.thousands)) return std::nullopt;

    std::string digits;
    for (const char c : whole)
        if (IsDigit(c))
            digits += c;
        else if (c != separators.thousands)
            return std::nullopt;
    const std::size_t whole_digits = digits.size();
    for (const char c : fraction)
        if (IsDigit(c))
            digits += c;
        else
            return std::nullopt;
    if (digits.empty() || digits.size() > 15) return std::nullopt;
    if (whole_digits < digits.size()) digits.insert(whole_digits, whole_digits == 0 ? "0." : ".");
    return FromDigits(digits, negative);
}

std::optional<double> ParseDecimal(std::string_view text)
{
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    const std::size_t point = std::min(text.find('.'), text.size());
    if (point == 0 || point + 1 == text.size()) return std::nullopt; // no digits before the point, or none after it
    for (std::size_t i = 0; i < text.size(); ++i)
        if (!IsDigit(text[i]) && i != point) return std::nullopt;
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    if (result.ec != std::errc()) return std::nullopt;
    return negative && value != 0 ? -value : value;
}

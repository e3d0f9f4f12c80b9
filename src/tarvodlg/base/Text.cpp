#include "tarvodlg/base/Text.h"

#include <array>
#include <cstring>

namespace {

std::uint8_t ByteAt(std::string_view text, std::size_t position)
{
    return static_cast<std::uint8_t>(text[position]);
}

/// The lead byte's share of a character: how many bytes follow, its own bits, and the least character of that length (a
/// smaller one is an overlong form, which could hide a '/' or a quote from a check).
struct Lead {
    std::size_t following;
    char32_t bits;
    char32_t least;
};

Lead ReadLead(std::uint8_t byte)
{
    if (byte >= 0xC2 && byte <= 0xDF) return {1, byte & 0x1Fu, 0x80};
    if (byte >= 0xE0 && byte <= 0xEF) return {2, byte & 0x0Fu, 0x800};
    if (byte >= 0xF0 && byte <= 0xF4) return {3, byte & 0x07u, 0x10000};
    return {0, 0, 0};
}

/// What bytes 0x80 to 0x9F mean in Windows-1252; the five that mean nothing become the replacement character.
constexpr std::array<char16_t, 32> kWindows1252 = {0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD,
                                                   0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};

char32_t FromWindows1252(std::uint8_t byte)
{
    return byte >= 0x80 && byte <= 0x9F ? kWindows1252[byte - 0x80u] : byte;
}

} // namespace

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string &strtrim(std::string &text)
{
    const std::string_view kept = Trimmed(text);
    const std::size_t first = kept.empty() ? 0 : static_cast<std::size_t>(kept.data() - text.data());
    text.resize(first + kept.size());
    text.erase(0, first);
    return text;
}

char *strzcpy(char *destination, std::string_view source, std::size_t size)
{
    if (size == 0) return destination;
    std::size_t length = source.size();
    if (length >= size) {
        // Steps back over the trailing bytes of a character that would be cut, three at most; what has no lead byte
        // before it is no character and is cut where it stands.
        length = size - 1;
        std::size_t start = length;
        while (start > 0 && length - start < 3 && (ByteAt(source, start) & 0xC0) == 0x80) --start;
        std::size_t end = start;
        if (DecodeUtf8(source, &end) != kMalformedUtf8 && end > length) length = start;
    }
    if (length > 0) std::memmove(destination, source.data(), length); // an empty view may point nowhere
    destination[length] = '\0';
    return destination;
}

char32_t DecodeUtf8(std::string_view text, std::size_t *position)
{
    const std::size_t at = (*position)++;
    const std::uint8_t first = ByteAt(text, at);
    if (first < 0x80) return first;
    const Lead lead = ReadLead(first);
    if (lead.following == 0 || text.size() - at <= lead.following) return kMalformedUtf8;
    char32_t character = lead.bits;
    for (std::size_t i = 1; i <= lead.following; ++i) {
        const std::uint8_t byte = ByteAt(text, at + i);
        if ((byte & 0xC0) != 0x80) return kMalformedUtf8;
        character = character << 6 | (byte & 0x3Fu);
    }
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < lead.least || surrogate || character > 0x10FFFF) return kMalformedUtf8;
    *position = at + 1 + lead.following;
    return character;
}

void AppendUtf8(std::string &text, char32_t character)
{
    const auto put = [&text](char32_t bits) { text += static_cast<char>(bits); };
    if (character < 0x80) return put(character);
    if (character < 0x800) {
        put(0xC0 | character >> 6);
    } else {
        if (character < 0x10000) {
            put(0xE0 | character >> 12);
        } else {
            put(0xF0 | character >> 18);
            put(0x80 | (character >> 12 & 0x3F));
        }
        put(0x80 | (character >> 6 & 0x3F));
    }
    put(0x80 | (character & 0x3F));
}

std::size_t Utf8Length(std::string_view text)
{
    std::size_t length = 0;
    for (std::size_t position = 0; position < text.size(); ++length) DecodeUtf8(text, &position);
    return length;
}

std::string_view Utf8Prefix(std::string_view text, std::size_t characters)
{
    if (text.size() <= characters) return text; // no character takes less than a byte
    std::size_t position = 0;
    for (; characters > 0 && position < text.size(); --characters) DecodeUtf8(text, &position);
    return text.substr(0, position);
}

bool IsValidUtf8(std::string_view text)
{
    for (std::size_t position = 0; position < text.size();)
        if (DecodeUtf8(text, &position) == kMalformedUtf8) return false;
    return true;
}

std::string ToValidUtf8(std::string_view text)
{
    if (IsValidUtf8(text)) return std::string(text);
    std::string valid;
    valid.reserve(text.size() + 16);
    for (std::size_t position = 0; position < text.size();) {
        const std::uint8_t byte = ByteAt(text, position);
        const char32_t character = DecodeUtf8(text, &position);
        AppendUtf8(valid, character == kMalformedUtf8 ? FromWindows1252(byte) : character);
    }
    return valid;
}

std::string PadRight(std::string_view text, std::size_t width)
{
    std::string padded(Utf8Prefix(text, width));
    padded.append(width - Utf8Length(padded), ' ');
    return padded;
}

std::string PadLeft(std::string_view text, std::size_t width)
{
    const std::string_view cut = Utf8Prefix(text, width);
    std::string padded(width - Utf8Length(cut), ' ');
    return padded.append(cut);
}

namespace {

char32_t UpperOf(char32_t c)
{
    if (c < 0x80) return c >= 'a' && c <= 'z' ? c - 0x20 : c;
    if (c <= 0xFF) {
        if (c == 0xFF) return 0x178;                  // y with diaeresis has its capital in another block
        return c >= 0xE0 && c != 0xF7 ? c - 0x20 : c; // 0xF7 is the division sign; sharp s has no capital
    }
    if (c > 0x17E || c == 0x131 || c == 0x138 || c == 0x149) return c; // dotless i, kra, n with apostrophe
    // The rest of Latin Extended-A comes in pairs, the capital first: on even numbers, but on odd ones in two
    // stretches.
    const bool capital_is_odd = (c >= 0x139 && c <= 0x148) || c >= 0x179;
    const bool is_small = capital_is_odd ? c % 2 == 0 : c % 2 == 1;
    return is_small ? c - 1 : c;
}

char AsciiLower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 0x20) : c;
}

} // namespace

bool IsControlCharacter(char32_t c)
{
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x200E || c == 0x200F || (c >= 0x2028 && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
}

std::string OnOneLine(std::string_view text)
{
    const std::string valid = ToValidUtf8(text);
    std::string line;
    line.reserve(valid.size());
    bool pending_blank = false;
    for (std::size_t position = 0; position < valid.size();) {
        const char32_t character = DecodeUtf8(valid, &position);
        if (character == ' ' || IsControlCharacter(character)) {
            pending_blank = true;
            continue;
        }
        if (pending_blank && !line.empty()) line += ' ';
        pending_blank = false;
        AppendUtf8(line, character);
    }
    return line;
}

std::string ToUpper(std::string_view text)
{
    std::string upper;
    upper.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t start = position;
        const char32_t character = DecodeUtf8(text, &position);
        if (character == kMalformedUtf8)
            upper += text[start];
        else
            AppendUtf8(upper, UpperOf(character));
    }
    return upper;
}

bool EqualsIgnoreCase(std::string_view a, std::string_view b)
{
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (AsciiLower(a[i]) != AsciiLower(b[i])) return false;
    return true;
}

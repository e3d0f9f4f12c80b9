#include "tarvolumera/fatturapa/XmlEncoding.h"

#include "tarvodlg/base/Text.h"

#include <cstdint>
#include <cstring>
#include <string_view>

namespace {

enum class OneByte { None, Western, WesternEuro };

/// Position of the first byte that is not ASCII; most invoices have none, so this goes 64 bytes at a time.
std::size_t FirstNonAscii(std::string_view bytes)
{
    std::size_t position = 0;
    for (; position + 64 <= bytes.size(); position += 64) {
        std::uint64_t words[8];
        std::memcpy(words, bytes.data() + position, 64);
        const std::uint64_t any = words[0] | words[1] | words[2] | words[3] | words[4] | words[5] | words[6] | words[7];
        if ((any & 0x8080808080808080U) != 0) break;
    }
    while (position < bytes.size() && static_cast<unsigned char>(bytes[position]) < 0x80) ++position;
    return position;
}

/// A character never mixes bytes below and above 0x80, so only the stretches above need a look.
bool IsUtf8(std::string_view bytes)
{
    for (;;) {
        bytes.remove_prefix(FirstNonAscii(bytes));
        if (bytes.empty()) return true;
        std::size_t length = 1;
        while (length < bytes.size() && static_cast<unsigned char>(bytes[length]) >= 0x80) ++length;
        if (!IsValidUtf8(bytes.substr(0, length))) return false;
        bytes.remove_prefix(length);
    }
}

std::string FromUtf16(std::string_view bytes, bool big_endian, std::string &oddity)
{
    const auto unit = [&](std::size_t i) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        return static_cast<char32_t>(big_endian ? first << 8 | second : second << 8 | first);
    };
    std::string text;
    text.reserve(bytes.size() / 2 + 16);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        char32_t code = unit(i);
        if (code >= 0xD800 && code < 0xDC00 && i + 3 < bytes.size() && (unit(i + 2) & 0xFC00U) == 0xDC00) {
            code = 0x10000 + ((code - 0xD800) << 10) + (unit(i + 2) - 0xDC00);
            i += 2;
        } else if (code >= 0xD800 && code < 0xE000) {
            code = 0xFFFD;
            oddity = "Il file UTF-16 contiene caratteri spezzati";
        }
        if (code != 0xFEFF) AppendUtf8(text, code);
    }
    return text;
}

/// Bytes 80 to 9F of windows-1252; ISO-8859-1 has control characters there, which nobody means.
constexpr char16_t kWindows1252[32] = {0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                       0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD,
                                       0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                       0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};

std::string FromOneByte(std::string_view bytes, OneByte encoding)
{
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 16 + 16);
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x80) {
            text += character;
        } else if (byte < 0xA0) {
            AppendUtf8(text, kWindows1252[byte - 0x80]);
        } else if (byte == 0xA4 && encoding == OneByte::WesternEuro) {
            AppendUtf8(text, 0x20AC);
        } else {
            AppendUtf8(text, byte);
        }
    }
    return text;
}

/// The value of encoding="..." in the XML declaration, "" without one.
std::string_view DeclaredEncoding(std::string_view text)
{
    if (!text.starts_with("<?xml")) return {};
    text = text.substr(0, text.substr(0, 512).find("?>"));
    const std::size_t name = text.find("encoding");
    if (name == std::string_view::npos) return {};
    const std::size_t quote = text.find_first_of("\"'", name);
    if (quote == std::string_view::npos) return {};
    const std::size_t end = text.find(text[quote], quote + 1);
    if (end == std::string_view::npos) return {};
    return Trimmed(text.substr(quote + 1, end - quote - 1));
}

OneByte OneByteEncoding(std::string_view name)
{
    for (const std::string_view western :
         {"iso-8859-1", "windows-1252", "latin1", "latin-1", "iso8859-1", "iso_8859-1", "cp1252", "ansi"}) {
        if (EqualsIgnoreCase(name, western)) return OneByte::Western;
    }
    return EqualsIgnoreCase(name, "iso-8859-15") ? OneByte::WesternEuro : OneByte::None;
}

} // namespace

std::string XmlToUtf8(std::string bytes, std::string &oddity)
{
    using namespace std::string_view_literals;
    const std::string_view view(bytes);
    if (view.starts_with("\xFF\xFE"sv) || view.starts_with("<\0"sv)) return FromUtf16(view, false, oddity);
    if (view.starts_with("\xFE\xFF"sv) || view.starts_with("\0<"sv)) return FromUtf16(view, true, oddity);

    const std::size_t first = FirstNonAscii(view);
    if (first == view.size()) return bytes;
    if (!view.starts_with("\xEF\xBB\xBF")) {
        const OneByte encoding = OneByteEncoding(DeclaredEncoding(view));
        if (encoding != OneByte::None) return FromOneByte(view, encoding);
    }
    if (IsUtf8(view.substr(first))) return bytes;
    oddity = "Il file contiene byte che non sono UTF-8: sono stati letti come windows-1252";
    return ToValidUtf8(view);
}

#include "tarvolumera/fatturapa/Base64.h"

#include <array>
#include <cstdint>

namespace {

constexpr std::uint8_t kForeign = 0xFF;
constexpr std::uint8_t kBlank = 0xFE;
constexpr std::uint8_t kPadding = 0xFD;

constexpr std::array<std::uint8_t, 256> MakeTable()
{
    std::array<std::uint8_t, 256> table{};
    table.fill(kForeign);
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t i = 0; i < digits.size(); ++i) {
        table[static_cast<unsigned char>(digits[i])] = static_cast<std::uint8_t>(i);
    }
    for (const char blank : {' ', '\t', '\r', '\n'}) table[static_cast<unsigned char>(blank)] = kBlank;
    table['='] = kPadding;
    return table;
}

constexpr std::array<std::uint8_t, 256> kTable = MakeTable();

} // namespace

bool DecodeBase64(std::string_view base64, std::string &bytes)
{
    std::string decoded;
    decoded.reserve(base64.size() / 4 * 3 + 3);
    std::uint32_t group = 0;
    int digits = 0;
    int padding = 0;
    for (const char character : base64) {
        const std::uint8_t value = kTable[static_cast<unsigned char>(character)];
        if (value == kBlank) continue;
        if (value == kPadding) {
            if (++padding > 2) return false;
            continue;
        }
        if (value == kForeign || padding > 0) return false;
        group = group << 6 | value;
        if (++digits == 4) {
            decoded += static_cast<char>(group >> 16);
            decoded += static_cast<char>(group >> 8);
            decoded += static_cast<char>(group);
            group = 0;
            digits = 0;
        }
    }
    if (digits == 1 || (padding > 0 && digits + padding != 4)) return false;
    if (digits == 2) decoded += static_cast<char>(group >> 4);
    if (digits == 3) {
        decoded += static_cast<char>(group >> 10);
        decoded += static_cast<char>(group >> 2);
    }
    bytes = std::move(decoded);
    return true;
}

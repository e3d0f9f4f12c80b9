#include "sqlapi/engines/SqliteFunctions.h"

#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

constexpr long long kLongestPadding = 1'000'000; ///< characters; a wrong length must not eat the memory

/// The value as text; numbers as the server writes them.
std::string TextOf(sqlite3_value *value)
{
    if (sqlite3_value_type(value) == SQLITE_FLOAT) {
        char digits[32];
        return {digits, std::to_chars(digits, digits + sizeof digits, sqlite3_value_double(value)).ptr};
    }
    const unsigned char *text = sqlite3_value_text(value);
    if (text == nullptr) return {};
    return {reinterpret_cast<const char *>(text), static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

bool HasNull(int count, sqlite3_value **values)
{
    return std::any_of(values, values + count, [](sqlite3_value *v) { return sqlite3_value_type(v) == SQLITE_NULL; });
}

void Return(sqlite3_context *context, std::string_view text)
{
    sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

bool ContinuesCharacter(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

long long CharacterCount(std::string_view text)
{
    return std::count_if(text.begin(), text.end(), [](char c) { return !ContinuesCharacter(c); });
}

/// The first `count` characters.
std::string_view FirstCharacters(std::string_view text, long long count)
{
    std::size_t end = 0;
    for (; count > 0 && end < text.size(); --count) {
        ++end;
        while (end < text.size() && ContinuesCharacter(text[end])) ++end;
    }
    return text.substr(0, end);
}

/// `missing` characters made of the fill text over and over.
std::string Padding(std::string_view fill, long long missing)
{
    std::string result;
    const long long fill_count = CharacterCount(fill);
    for (; missing >= fill_count; missing -= fill_count) result += fill;
    result += FirstCharacters(fill, missing);
    return result;
}

enum class Side { Left, Right };

template <Side side>
void Pad(sqlite3_context *context, int count, sqlite3_value **values)
{
    if (HasNull(count, values)) return;
    const std::string text = TextOf(values[0]);
    const std::string fill = count > 2 ? TextOf(values[2]) : " ";
    const long long length = std::max<long long>(sqlite3_value_int64(values[1]), 0);
    if (length > kLongestPadding) return sqlite3_result_error_toobig(context);

    const long long missing = length - CharacterCount(text);
    if (missing <= 0) return Return(context, FirstCharacters(text, length));
    if (fill.empty()) return Return(context, text);
    const std::string padding = Padding(fill, missing);
    Return(context, side == Side::Left ? padding + text : text + padding);
}

// A negative length means all but so many characters of the other side.
template <Side side>
void Part(sqlite3_context *context, int count, sqlite3_value **values)
{
    if (HasNull(count, values)) return;
    const std::string text = TextOf(values[0]);
    const long long characters = CharacterCount(text);
    const long long asked = std::clamp<long long>(sqlite3_value_int64(values[1]), -characters, characters);
    const long long taken = asked < 0 ? characters + asked : asked;
    if (side == Side::Left) return Return(context, FirstCharacters(text, taken));
    Return(context, std::string_view(text).substr(FirstCharacters(text, characters - taken).size()));
}

void Concat(sqlite3_context *context, int count, sqlite3_value **values)
{
    std::string result;
    for (int i = 0; i < count; ++i)
        if (sqlite3_value_type(values[i]) != SQLITE_NULL) result += TextOf(values[i]);
    Return(context, result);
}

void Length(sqlite3_context *context, int count, sqlite3_value **values)
{
    if (!HasNull(count, values)) sqlite3_result_int64(context, CharacterCount(TextOf(values[0])));
}

// The letters of the Latin languages: Latin-1 and Latin Extended-A, all of them two bytes in UTF-8.
unsigned UpperOf(unsigned c)
{
    if ((c >= 0xE0 && c <= 0xFE && c != 0xF7)) return c - 0x20;
    if (c == 0xFF) return 0x178;
    const bool even_is_upper = (c >= 0x100 && c <= 0x12F) || (c >= 0x132 && c <= 0x137) || (c >= 0x14A && c <= 0x177);
    const bool odd_is_upper = (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E);
    if ((even_is_upper && c % 2 == 1) || (odd_is_upper && c % 2 == 0)) return c - 1;
    return c;
}

unsigned LowerOf(unsigned c)
{
    if ((c >= 0xC0 && c <= 0xDE && c != 0xD7)) return c + 0x20;
    if (c == 0x178) return 0xFF;
    // The upper letter is the one before its lower letter.
    return c >= 0x100 && c < 0x17F && UpperOf(c + 1) == c ? c + 1 : c;
}

template <bool upper>
void ChangeCase(sqlite3_context *context, int count, sqlite3_value **values)
{
    if (HasNull(count, values)) return;
    std::string text = TextOf(values[0]);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (upper && byte >= 'a' && byte <= 'z') text[i] = static_cast<char>(byte - 'a' + 'A');
        if (!upper && byte >= 'A' && byte <= 'Z') text[i] = static_cast<char>(byte - 'A' + 'a');
        if (byte < 0xC3 || byte > 0xC5 || i + 1 == text.size() || !ContinuesCharacter(text[i + 1])) continue;
        const unsigned letter = (byte & 0x1FU) << 6U | (static_cast<unsigned char>(text[i + 1]) & 0x3FU);
        const unsigned changed = upper ? UpperOf(letter) : LowerOf(letter);
        text[i] = static_cast<char>(0xC0U | changed >> 6U);
        text[++i] = static_cast<char>(0x80U | (changed & 0x3FU));
    }
    Return(context, text);
}

} // namespace

void RegisterSqliteFunctions(sqlite3 *database)
{
    using Function = void (*)(sqlite3_context *, int, sqlite3_value **);
    struct Entry {
        const char *name;
        int arguments;
        Function function;
    };
    constexpr Entry kEntries[] = {
        {"lpad", 2, Pad<Side::Left>},   {"lpad", 3, Pad<Side::Left>},    {"rpad", 2, Pad<Side::Right>},
        {"rpad", 3, Pad<Side::Right>},  {"left", 2, Part<Side::Left>},   {"right", 2, Part<Side::Right>},
        {"concat", -1, Concat},         {"char_length", 1, Length},      {"len", 1, Length},
        {"upper", 1, ChangeCase<true>}, {"lower", 1, ChangeCase<false>},
    };
    // Deterministic ones may stand in an index, innocuous ones in a view.
    constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    for (const Entry &entry : kEntries)
        sqlite3_create_function_v2(database, entry.name, entry.arguments, kFlags, nullptr, entry.function, nullptr,
                                   nullptr, nullptr);
}

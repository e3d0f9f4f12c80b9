#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Texts are UTF-8 in memory and in the archive. A width counts characters (code points), not bytes.

/// Without blanks, tabs and line ends on both sides.
std::string_view Trimmed(std::string_view text);
/// Trims in place and returns the text.
std::string &strtrim(std::string &text);
/// Copies with truncation to the destination's size in bytes, terminator included; never cuts inside a character.
char *strzcpy(char *destination, std::string_view source, std::size_t size);

/// What DecodeUtf8 gives for a byte that belongs to no character.
inline constexpr char32_t kMalformedUtf8 = 0xFFFFFFFF;
/// The character at *position (below text.size()), and steps on to the next one; a malformed byte is stepped over
/// alone.
char32_t DecodeUtf8(std::string_view text, std::size_t *position);
/// @param character  a code point up to 0x10FFFF
void AppendUtf8(std::string &text, char32_t character);

std::size_t Utf8Length(std::string_view text);
/// The first `characters` characters. Malformed bytes count as one character each and are kept.
std::string_view Utf8Prefix(std::string_view text, std::size_t characters);
bool IsValidUtf8(std::string_view text);
/// Each malformed byte read as Windows-1252, the way old files that claim UTF-8 are usually meant.
std::string ToValidUtf8(std::string_view text);
/// Padded or cut to exactly `width` characters; for aligned columns on a terminal.
std::string PadRight(std::string_view text, std::size_t width);
std::string PadLeft(std::string_view text, std::size_t width);

/// True for what steers a terminal, a log or the direction of reading (controls of both sets, line and direction marks)
/// and has no place in a name or a line that came from outside.
bool IsControlCharacter(char32_t character);
/// Valid UTF-8 on one line: blanks, line ends and control characters folded to single blanks, none at the ends. For
/// terminals and logs, whatever the text carries.
std::string OnOneLine(std::string_view text);

/// Upper case of ASCII and of the Latin letters of Western Europe (à -> À); other characters stay.
std::string ToUpper(std::string_view text);
bool EqualsIgnoreCase(std::string_view a, std::string_view b); ///< ASCII letters only

/// A text of at most `max` characters: assignment truncates. The base that lets a table description handle every width.
class BoundedText {
  public:
    explicit BoundedText(std::size_t max) : max_(max) {}
    void Assign(std::string_view text) { value_.assign(Utf8Prefix(text, max_)); }
    const std::string &str() const { return value_; }
    const char *c_str() const { return value_.c_str(); }
    bool empty() const { return value_.empty(); }
    void clear() { value_.clear(); }
    std::size_t MaxLength() const { return max_; }
    operator std::string_view() const { return value_; }
    friend bool operator==(const BoundedText &a, std::string_view b) { return a.value_ == b; }
    friend bool operator==(const BoundedText &a, const BoundedText &b) { return a.value_ == b.value_; }

  private:
    std::string value_;
    std::size_t max_;
};

/// A field of at most N characters.
template <std::size_t N>
class Text : public BoundedText {
  public:
    Text() : BoundedText(N) {}
    Text(std::string_view text) : BoundedText(N) { Assign(text); }
    Text(const char *text) : Text(std::string_view(text)) {}
    Text(const std::string &text) : Text(std::string_view(text)) {}
    Text &operator=(std::string_view text)
    {
        Assign(text);
        return *this;
    }
    Text &operator=(const char *text) { return *this = std::string_view(text); }
    Text &operator=(const std::string &text) { return *this = std::string_view(text); }
    template <std::size_t M>
    Text &operator=(const Text<M> &text)
    {
        return *this = std::string_view(text.str());
    }
};

#pragma once

#include <cstddef>
#include <string_view>

/// What a stretch of SQL text is. Every character of the text belongs to exactly one token.
enum class SqlTokenKind {
    Space,
    Comment,    ///< "-- ..." up to the line end, or "/* ... */" (not nested, as in SQLite)
    Word,       ///< keyword or plain name
    QuotedName, ///< "name" or `name`
    String,     ///< 'text', E'text' with backslashes, $tag$text$tag$
    Number,
    Parameter, ///< ":name", "?1", "$1"
    Symbol     ///< one character, or "::" and ":="
};

struct SqlToken {
    SqlTokenKind kind = SqlTokenKind::Space;
    std::string_view text;

    bool IsBlank() const { return kind == SqlTokenKind::Space || kind == SqlTokenKind::Comment; }
    bool IsSymbol(char symbol) const { return kind == SqlTokenKind::Symbol && text.size() == 1 && text[0] == symbol; }
    bool IsWord(std::string_view word) const; ///< upper and lower case are the same
};

/// Cuts SQL text into tokens. The one place that knows where literals, names and comments end; parameters, translation
/// and script splitting all read through it, so none of them can mistake the inside of a literal for SQL.
class SqlLexer {
  public:
    explicit SqlLexer(std::string_view text) : text_(text) {}

    bool Next(SqlToken &token); ///< false at the end of the text

  private:
    std::size_t EndOfToken(SqlTokenKind &kind) const;
    std::size_t EndOfQuoted(std::size_t from, char quote, bool backslash) const;
    std::size_t EndOfDollarQuoted() const; ///< 0 when no dollar quote starts here
    std::size_t EndOfNumber() const;
    std::size_t EndOfWord(std::size_t from) const;
    char At(std::size_t position) const { return position < text_.size() ? text_[position] : '\0'; }

    std::string_view text_;
    std::size_t position_ = 0;
};

/// Compares ASCII letters without regard to case; other bytes must be equal.
inline bool EqualNoCase(std::string_view a, std::string_view b)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    if (a.size() != b.size()) return false;
    // From the end: column names begin alike (pno_data, pno_dreg) and are compared for every value of every row.
    for (std::size_t i = a.size(); i-- > 0;)
        if (a[i] != b[i] && lower(a[i]) != lower(b[i])) return false;
    return true;
}

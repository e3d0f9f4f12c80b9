#include "sqlapi/engines/SqlLexer.h"

#include <algorithm>

namespace {

bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}
bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}
// Bytes above 127 belong to UTF-8 letters, which both engines accept in names.
bool StartsWord(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}
bool ContinuesWord(char c)
{
    return StartsWord(c) || IsDigit(c) || c == '$';
}

} // namespace

bool SqlToken::IsWord(std::string_view word) const
{
    return kind == SqlTokenKind::Word && EqualNoCase(text, word);
}

bool SqlLexer::Next(SqlToken &token)
{
    if (position_ >= text_.size()) return false;
    const std::size_t end = EndOfToken(token.kind);
    token.text = text_.substr(position_, end - position_);
    position_ = end;
    return true;
}

std::size_t SqlLexer::EndOfToken(SqlTokenKind &kind) const
{
    const std::size_t p = position_;
    const char c = text_[p];
    const char next = At(p + 1);
    const auto is = [&kind](SqlTokenKind value, std::size_t end) {
        kind = value;
        return end;
    };

    if (IsSpace(c)) {
        std::size_t end = p + 1;
        while (IsSpace(At(end))) ++end;
        return is(SqlTokenKind::Space, end);
    }
    if (c == '-' && next == '-') return is(SqlTokenKind::Comment, std::min(text_.find('\n', p), text_.size()));
    if (c == '/' && next == '*') {
        const std::size_t end = text_.find("*/", p + 2);
        return is(SqlTokenKind::Comment, end == std::string_view::npos ? text_.size() : end + 2);
    }
    if (c == '\'') return is(SqlTokenKind::String, EndOfQuoted(p + 1, '\'', false));
    if ((c == 'e' || c == 'E') && next == '\'') return is(SqlTokenKind::String, EndOfQuoted(p + 2, '\'', true));
    if (c == '"' || c == '`') return is(SqlTokenKind::QuotedName, EndOfQuoted(p + 1, c, false));
    if (c == '$') {
        if (const std::size_t end = EndOfDollarQuoted(); end != 0) return is(SqlTokenKind::String, end);
    }
    if (StartsWord(c)) return is(SqlTokenKind::Word, EndOfWord(p));
    if (IsDigit(c) || (c == '.' && IsDigit(next))) return is(SqlTokenKind::Number, EndOfNumber());
    if ((c == '?' || c == '$') && IsDigit(next)) {
        std::size_t end = p + 1;
        while (IsDigit(At(end))) ++end;
        return is(SqlTokenKind::Parameter, end);
    }
    if (c == ':' && (next == ':' || next == '=')) return is(SqlTokenKind::Symbol, p + 2);
    if (c == ':' && StartsWord(next)) return is(SqlTokenKind::Parameter, EndOfWord(p + 1));
    return is(SqlTokenKind::Symbol, p + 1);
}

// A doubled quote stands for itself. A literal that never ends takes the rest of the text: the engine will complain.
std::size_t SqlLexer::EndOfQuoted(std::size_t from, char quote, bool backslash) const
{
    for (std::size_t p = from; p < text_.size(); ++p) {
        if (backslash && text_[p] == '\\')
            ++p;
        else if (text_[p] == quote) {
            if (At(p + 1) != quote) return p + 1;
            ++p;
        }
    }
    return text_.size();
}

std::size_t SqlLexer::EndOfDollarQuoted() const
{
    std::size_t p = position_ + 1;
    if (IsDigit(At(p))) return 0;
    while (p < text_.size() && text_[p] != '$') {
        if (!StartsWord(text_[p]) && !IsDigit(text_[p])) return 0;
        ++p;
    }
    if (p >= text_.size()) return 0;
    const std::string_view tag = text_.substr(position_, p + 1 - position_);
    const std::size_t end = text_.find(tag, p + 1);
    return end == std::string_view::npos ? text_.size() : end + tag.size();
}

std::size_t SqlLexer::EndOfNumber() const
{
    std::size_t p = position_;
    while (IsDigit(At(p)) || At(p) == '.') ++p;
    const bool exponent = (At(p) == 'e' || At(p) == 'E') &&
                          (IsDigit(At(p + 1)) || ((At(p + 1) == '+' || At(p + 1) == '-') && IsDigit(At(p + 2))));
    if (!exponent) return p;
    p += 2;
    while (IsDigit(At(p))) ++p;
    return p;
}

std::size_t SqlLexer::EndOfWord(std::size_t from) const
{
    std::size_t end = from + 1;
    while (ContinuesWord(At(end))) ++end;
    return end;
}

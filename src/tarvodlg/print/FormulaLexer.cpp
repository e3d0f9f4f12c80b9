#include "tarvodlg/print/FormulaLexer.h"

#include "tarvodlg/base/Text.h"
#include "tarvodlg/print/ReportError.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

constexpr std::size_t kNameMax = 60;
constexpr std::size_t kShownMax = 40; ///< characters of a token in a message

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

std::string Lower(std::string_view text)
{
    std::string lower(text);
    for (char &c : lower)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

std::string Shown(std::string_view text)
{
    const std::string line = OnOneLine(text);
    const std::string_view cut = Utf8Prefix(line, kShownMax);
    return std::string(cut) + (cut.size() < line.size() ? "…" : "");
}

} // namespace

void FailFormula(std::string_view name, std::size_t position, const std::string &what)
{
    throw ReportError(fmt::format("{}, carattere {}: {}", name, position, what));
}

bool IsFormulaName(std::string_view text)
{
    return !text.empty() && text.size() <= kNameMax && !IsDigit(text.front()) &&
           std::all_of(text.begin(), text.end(), [](char c) { return IsLetter(c) || IsDigit(c); });
}

bool FormulaToken::IsWord(std::string_view word) const
{
    return kind == FormulaTokenKind::Word && EqualsIgnoreCase(text, word);
}

std::string FormulaToken::Described() const
{
    switch (kind) {
    case FormulaTokenKind::End:
        return "la fine";
    case FormulaTokenKind::Column:
    case FormulaTokenKind::Parameter:
        return std::string(text);
    case FormulaTokenKind::Number:
        return "il numero " + Shown(text);
    case FormulaTokenKind::Text:
        return "il testo " + Shown(text);
    case FormulaTokenKind::Word:
    case FormulaTokenKind::Symbol:
        break;
    }
    return "\"" + Shown(text) + "\"";
}

void FormulaLexer::Skip(std::size_t end)
{
    while (offset_ < end) {
        DecodeUtf8(text_, &offset_);
        ++position_;
    }
}

FormulaToken FormulaLexer::Take(FormulaTokenKind kind, std::size_t end)
{
    FormulaToken token{kind, text_.substr(offset_, end - offset_), {}, position_};
    Skip(end);
    return token;
}

FormulaToken FormulaLexer::Next()
{
    while (offset_ < text_.size() && IsBlank(text_[offset_])) Skip(offset_ + 1);
    if (offset_ == text_.size()) return Take(FormulaTokenKind::End, offset_);

    const char c = text_[offset_];
    if (c == '{') return BracedName();
    if (c == '"' || c == '\'') return QuotedText(c);
    if (IsDigit(c)) return Take(FormulaTokenKind::Number, EndOfNumber());
    if (IsLetter(c)) {
        std::size_t end = offset_ + 1;
        while (end < text_.size() && (IsLetter(text_[end]) || IsDigit(text_[end]))) ++end;
        return Take(FormulaTokenKind::Word, end);
    }
    const std::string_view two = text_.substr(offset_, 2);
    if (two == "<>" || two == "<=" || two == ">=") return Take(FormulaTokenKind::Symbol, offset_ + 2);
    if (std::string_view("=<>(),-").find(c) != std::string_view::npos)
        return Take(FormulaTokenKind::Symbol, offset_ + 1);
    FailOnCharacter();
}

std::size_t FormulaLexer::EndOfNumber() const
{
    const auto digits_end = [this](std::size_t from) {
        while (from < text_.size() && IsDigit(text_[from])) ++from;
        return from;
    };
    const std::size_t whole = digits_end(offset_);
    if (whole + 1 < text_.size() && text_[whole] == '.' && IsDigit(text_[whole + 1])) return digits_end(whole + 1);
    return whole;
}

FormulaToken FormulaLexer::BracedName()
{
    const std::size_t close = text_.find('}', offset_);
    if (close == std::string_view::npos) FailFormula(name_, position_, "manca la graffa che chiude \"{\"");
    const std::string_view inside = text_.substr(offset_ + 1, close - offset_ - 1);
    if (inside.starts_with('?') && IsFormulaName(inside.substr(1))) {
        FormulaToken token = Take(FormulaTokenKind::Parameter, close + 1);
        token.value = inside.substr(1);
        return token;
    }
    const std::size_t dot = inside.find('.');
    if (dot == std::string_view::npos || !IsFormulaName(inside.substr(0, dot)) ||
        !IsFormulaName(inside.substr(dot + 1)))
        FailFormula(name_, position_,
                    fmt::format("nome non valido \"{}\", atteso {{tabella.colonna}} o {{?parametro}}",
                                Shown(text_.substr(offset_, close + 1 - offset_))));
    FormulaToken token = Take(FormulaTokenKind::Column, close + 1);
    token.value = Lower(inside);
    return token;
}

FormulaToken FormulaLexer::QuotedText(char quote)
{
    std::string value;
    for (std::size_t end = offset_ + 1; end < text_.size(); ++end) {
        if (text_[end] != quote) {
            value += text_[end];
        } else if (end + 1 < text_.size() && text_[end + 1] == quote) {
            value += quote;
            ++end;
        } else {
            FormulaToken token = Take(FormulaTokenKind::Text, end + 1);
            // Neither engine takes such a text; better to say so here than in the words of a server.
            if (!IsValidUtf8(value) || value.find('\0') != std::string::npos)
                FailFormula(name_, token.position, "il testo contiene caratteri non ammessi");
            token.value = std::move(value);
            return token;
        }
    }
    FailFormula(name_, position_, fmt::format("mancano le virgolette ({}) che chiudono il testo", quote));
}

void FormulaLexer::FailOnCharacter() const
{
    std::size_t end = offset_;
    const char32_t character = DecodeUtf8(text_, &end);
    if (character == kMalformedUtf8 || IsControlCharacter(character))
        FailFormula(name_, position_, "carattere non ammesso");
    FailFormula(name_, position_, fmt::format("carattere non ammesso \"{}\"", text_.substr(offset_, end - offset_)));
}

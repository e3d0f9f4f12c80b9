#pragma once

#include <cstddef>
#include <string>
#include <string_view>

enum class FormulaTokenKind { End, Column, Parameter, Number, Text, Word, Symbol };

struct FormulaToken {
    FormulaTokenKind kind = FormulaTokenKind::End;
    std::string_view text; ///< as written
    std::string value; ///< of Text without its quotes; of Column "table.column" in lower case; of Parameter the name
    std::size_t position = 1; ///< of its first character in the formula, from 1

    bool IsSymbol(std::string_view symbol) const { return kind == FormulaTokenKind::Symbol && text == symbol; }
    bool IsWord(std::string_view word) const; ///< in any case
    /// As messages name it: {pnota.pno_data}, il numero 5, "and".
    std::string Described() const;
};

/// @throws ReportError "NAME, carattere POSITION: WHAT"
[[noreturn]] void FailFormula(std::string_view name, std::size_t position, const std::string &what);

/// Letters, digits and '_', not beginning with a digit; at most 60. What may become a name in SQL.
bool IsFormulaName(std::string_view text);

/// Cuts a formula into tokens.
class FormulaLexer {
  public:
    /// Both must outlive the lexer.
    FormulaLexer(std::string_view text, std::string_view name) : text_(text), name_(name) {}

    /// The next token; End again and again behind the last one. @throws ReportError
    FormulaToken Next();

  private:
    void Skip(std::size_t end);
    FormulaToken Take(FormulaTokenKind kind, std::size_t end);
    FormulaToken BracedName();
    FormulaToken QuotedText(char quote);
    std::size_t EndOfNumber() const;
    [[noreturn]] void FailOnCharacter() const;

    std::string_view text_, name_;
    std::size_t offset_ = 0;   ///< bytes read
    std::size_t position_ = 1; ///< of the character at offset_
};

#pragma once

#include "sqlapi/engines/SqlLexer.h"

#include <string>
#include <string_view>
#include <vector>

/// The tokens of one statement, for changing some of them in place. Numbers (positions) count only the tokens that mean
/// something; blanks and comments between them stay as they are unless they are dropped.
class SqlTokens {
  public:
    explicit SqlTokens(std::string_view text);

    std::size_t Count() const { return meaning_.size(); }
    /// A token as it was written; an empty symbol beyond the end.
    const SqlToken &At(std::size_t position) const;
    bool IsWord(std::size_t position, std::string_view word) const { return At(position).IsWord(word); }
    bool IsSymbol(std::size_t position, char symbol) const { return At(position).IsSymbol(symbol); }
    /// The parenthesis belonging to the one at the position; Count() when there is none.
    std::size_t Partner(std::size_t position) const { return partners_[position]; }
    /// A name directly followed by its arguments.
    bool IsCall(std::size_t position, std::string_view name) const
    {
        return IsWord(position, name) && IsSymbol(position + 1, '(') && Partner(position + 1) < Count();
    }

    void Replace(std::size_t position, std::string text);
    /// Drops the tokens [first, last) and the blanks behind each; comments stay.
    void Drop(std::size_t first, std::size_t last);

    bool IsChanged() const { return is_changed_; }
    std::string Text() const;

  private:
    void FindPartners();

    std::vector<SqlToken> tokens_;
    std::vector<std::string> replacements_; ///< beside tokens_; used where is_replaced_
    std::vector<bool> is_replaced_;
    std::vector<std::size_t> meaning_; ///< places in tokens_ by position
    std::vector<std::size_t> partners_;
    bool is_changed_ = false;
};

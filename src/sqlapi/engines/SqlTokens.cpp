#include "sqlapi/engines/SqlTokens.h"

SqlTokens::SqlTokens(std::string_view text)
{
    SqlLexer lexer(text);
    for (SqlToken token; lexer.Next(token);) {
        if (!token.IsBlank()) meaning_.push_back(tokens_.size());
        tokens_.push_back(token);
    }
    replacements_.resize(tokens_.size());
    is_replaced_.resize(tokens_.size());
    FindPartners();
}

void SqlTokens::FindPartners()
{
    partners_.assign(Count(), Count());
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < Count(); ++i) {
        if (IsSymbol(i, '(')) open.push_back(i);
        if (!IsSymbol(i, ')') || open.empty()) continue;
        partners_[i] = open.back();
        partners_[open.back()] = i;
        open.pop_back();
    }
}

const SqlToken &SqlTokens::At(std::size_t position) const
{
    static const SqlToken kNothing{SqlTokenKind::Symbol, {}};
    return position < Count() ? tokens_[meaning_[position]] : kNothing;
}

void SqlTokens::Replace(std::size_t position, std::string text)
{
    replacements_[meaning_[position]] = std::move(text);
    is_replaced_[meaning_[position]] = true;
    is_changed_ = true;
}

void SqlTokens::Drop(std::size_t first, std::size_t last)
{
    for (std::size_t position = first; position < last; ++position) {
        Replace(position, {});
        for (std::size_t i = meaning_[position] + 1; i < tokens_.size() && tokens_[i].kind == SqlTokenKind::Space; ++i)
            is_replaced_[i] = true;
    }
}

std::string SqlTokens::Text() const
{
    std::string text;
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
        if (is_replaced_[i])
            text += replacements_[i];
        else
            text += tokens_[i].text;
    }
    return text;
}

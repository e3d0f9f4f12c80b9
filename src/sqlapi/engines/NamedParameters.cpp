#include "sqlapi/engines/NamedParameters.h"

#include "sqlapi/engines/SqlLexer.h"

namespace {

/// The 1-based number of a name; a new name is added at the end.
std::size_t NumberOf(std::vector<std::string> &names, std::string_view name)
{
    for (std::size_t i = 0; i < names.size(); ++i)
        if (EqualNoCase(names[i], name)) return i + 1;
    names.emplace_back(name);
    return names.size();
}

bool IsNamed(const SqlToken &token)
{
    return token.kind == SqlTokenKind::Parameter && token.text[0] == ':';
}

} // namespace

std::vector<std::string> ParameterNames(std::string_view text)
{
    std::vector<std::string> names;
    SqlLexer lexer(text);
    for (SqlToken token; lexer.Next(token);)
        if (IsNamed(token)) NumberOf(names, token.text.substr(1));
    return names;
}

std::string NumberParameters(std::string_view text, char mark)
{
    std::vector<std::string> names;
    std::string result;
    result.reserve(text.size());
    SqlLexer lexer(text);
    bool after_word = false;
    for (SqlToken token; lexer.Next(token);) {
        if (IsNamed(token)) {
            // '$' may be part of a PostgreSQL name, so "LIMIT:n" must not become the name LIMIT$1.
            if (after_word) result += ' ';
            result += mark;
            result += std::to_string(NumberOf(names, token.text.substr(1)));
        } else {
            result += token.text;
        }
        after_word = token.kind == SqlTokenKind::Word;
    }
    return result;
}

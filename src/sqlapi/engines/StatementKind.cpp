#include "sqlapi/engines/StatementKind.h"

#include "sqlapi/engines/SqlLexer.h"

#include <algorithm>
#include <array>
#include <initializer_list>

namespace {

using Words = std::array<SqlToken, 3>;

/// The first words of the statement; a parenthesis before SELECT is passed over.
Words FirstWords(std::string_view text)
{
    Words words;
    SqlLexer lexer(text);
    std::size_t count = 0;
    for (SqlToken token; count < words.size() && lexer.Next(token);) {
        if (token.IsBlank() || (count == 0 && token.IsSymbol('('))) continue;
        if (token.kind != SqlTokenKind::Word) break;
        words[count++] = token;
    }
    return words;
}

bool IsOneOf(const SqlToken &token, std::initializer_list<std::string_view> words)
{
    return std::any_of(words.begin(), words.end(), [&](std::string_view word) { return token.IsWord(word); });
}

bool ContainsWritingWord(std::string_view text)
{
    SqlLexer lexer(text);
    for (SqlToken token; lexer.Next(token);)
        if (IsOneOf(token, {"INSERT", "UPDATE", "DELETE", "MERGE", "INTO"})) return true;
    return false;
}

bool Contains(const Words &words, std::string_view word)
{
    return std::any_of(words.begin(), words.end(), [&](const SqlToken &token) { return token.IsWord(word); });
}

} // namespace

StatementKind StatementKind::Of(std::string_view text)
{
    const Words words = FirstWords(text);
    const SqlToken &first = words[0];
    StatementKind kind;

    kind.changes_rows = IsOneOf(first, {"INSERT", "UPDATE", "DELETE", "REPLACE", "MERGE"});
    // A SELECT locking its rows (FOR UPDATE) or storing them (INTO) and a WITH that writes are not streamed.
    if (IsOneOf(first, {"SELECT", "VALUES", "WITH"})) {
        kind.reads_only = !ContainsWritingWord(text);
        kind.changes_rows = !kind.reads_only;
    }
    kind.changes_schema = IsOneOf(first, {"CREATE", "ALTER", "DROP", "TRUNCATE"});
    kind.changes_session = IsOneOf(first, {"SET", "RESET", "PRAGMA", "ATTACH", "DETACH", "LISTEN", "PREPARE"}) ||
                           (first.IsWord("CREATE") && (Contains(words, "TEMP") || Contains(words, "TEMPORARY")));
    kind.rolls_back_part = first.IsWord("ROLLBACK") && Contains(words, "TO");
    if (IsOneOf(first, {"DROP", "ALTER"})) {
        if (words[1].IsWord("TABLE")) kind.subject = Subject::Table;
        if (words[1].IsWord("VIEW")) kind.subject = Subject::View;
    }
    return kind;
}

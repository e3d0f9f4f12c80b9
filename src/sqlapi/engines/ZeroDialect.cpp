#include "sqlapi/engines/ZeroDialect.h"

#include "sqlapi/engines/SqlTokens.h"
#include "sqlapi/engines/ZeroExpressions.h"

namespace {

constexpr char kSchema[] = "admin";

bool HasNoMeaningHere(const SqlTokens &tokens)
{
    return tokens.IsWord(0, "GRANT") || tokens.IsWord(0, "REVOKE") ||
           (tokens.IsWord(0, "COMMENT") && tokens.IsWord(1, "ON")) ||
           (tokens.IsWord(0, "CREATE") && tokens.IsWord(1, "SCHEMA"));
}

/// The position behind "CREATE [words] TABLE|INDEX|VIEW|TRIGGER [IF NOT EXISTS]", where the new name stands.
std::size_t NamePosition(const SqlTokens &tokens)
{
    std::size_t at = 1;
    while (at < tokens.Count() && !tokens.IsWord(at, "TABLE") && !tokens.IsWord(at, "INDEX") &&
           !tokens.IsWord(at, "VIEW") && !tokens.IsWord(at, "TRIGGER"))
        ++at;
    ++at;
    return tokens.IsWord(at, "IF") ? at + 3 : at;
}

bool IsSchemaPrefix(const SqlTokens &tokens, std::size_t at)
{
    return tokens.IsWord(at, kSchema) && tokens.IsSymbol(at + 1, '.');
}

// The name of the new object keeps its schema; everything the definition speaks of is in the same one.
void TranslateCreate(SqlTokens &tokens)
{
    const std::size_t name = NamePosition(tokens);
    const bool is_index = name > 0 && (tokens.IsWord(name - 1, "INDEX") || tokens.IsWord(name - 4, "INDEX"));
    if (is_index && IsSchemaPrefix(tokens, name + 2) && tokens.IsWord(name + 1, "ON"))
        tokens.Replace(name, kSchema + std::string(".") + std::string(tokens.At(name).text));
    for (std::size_t i = name + 1; i < tokens.Count(); ++i)
        if (IsSchemaPrefix(tokens, i) && !tokens.IsSymbol(i - 1, '.')) tokens.Drop(i, i + 2);
}

void TranslateColumnTypes(SqlTokens &tokens)
{
    for (std::size_t i = 0; i < tokens.Count(); ++i) {
        if (tokens.IsWord(i, "BYTEA")) tokens.Replace(i, "BLOB");
        if (tokens.IsWord(0, "ALTER") && tokens.IsWord(i, "REFERENCES") && IsSchemaPrefix(tokens, i + 1))
            tokens.Drop(i + 1, i + 3);
    }
}

void TranslateDrop(SqlTokens &tokens)
{
    const std::size_t last = tokens.Count() - 1;
    if (tokens.IsWord(last, "CASCADE") || tokens.IsWord(last, "RESTRICT")) tokens.Drop(last, last + 1);
}

void TranslateTruncate(SqlTokens &tokens)
{
    tokens.Replace(0, "DELETE FROM");
    if (tokens.IsWord(1, "TABLE")) tokens.Drop(1, 2);
}

// FOR UPDATE [OF t] [NOWAIT | SKIP LOCKED] ends a query; no other use of these two words is possible in one.
void DropRowLocks(SqlTokens &tokens)
{
    for (std::size_t i = 0; i + 1 < tokens.Count(); ++i) {
        if (!tokens.IsWord(i, "FOR") || !(tokens.IsWord(i + 1, "UPDATE") || tokens.IsWord(i + 1, "SHARE"))) continue;
        std::size_t end = i + 2;
        while (end < tokens.Count() && !tokens.IsSymbol(end, ')') && !tokens.IsSymbol(end, ';')) ++end;
        tokens.Drop(i, end);
    }
}

} // namespace

std::string TranslateZeroDialect(const std::string &text)
{
    SqlTokens tokens(text);
    if (tokens.Count() == 0) return text;
    if (HasNoMeaningHere(tokens)) return {};

    const bool creates = tokens.IsWord(0, "CREATE");
    if (creates) TranslateCreate(tokens);
    if (creates || tokens.IsWord(0, "ALTER")) TranslateColumnTypes(tokens);
    if (tokens.IsWord(0, "DROP")) TranslateDrop(tokens);
    if (tokens.IsWord(0, "TRUNCATE")) TranslateTruncate(tokens);
    DropRowLocks(tokens);
    TranslateExpressions(tokens);
    return tokens.IsChanged() ? tokens.Text() : text;
}

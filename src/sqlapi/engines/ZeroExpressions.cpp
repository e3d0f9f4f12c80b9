#include "sqlapi/engines/ZeroExpressions.h"

#include <algorithm>
#include <initializer_list>
#include <string>

namespace {

bool IsOneOf(const SqlToken &token, std::initializer_list<std::string_view> words)
{
    return std::any_of(words.begin(), words.end(), [&](std::string_view word) { return token.IsWord(word); });
}

bool IsTextType(const SqlToken &token)
{
    return IsOneOf(token, {"VARCHAR", "CHAR", "CHARACTER", "TEXT", "NVARCHAR", "NCHAR", "BPCHAR"});
}

/// Calls whose result is a text whatever their arguments are.
bool IsTextFunction(const SqlToken &token)
{
    return IsOneOf(token, {"LPAD", "RPAD", "CONCAT", "SUBSTR", "SUBSTRING", "UPPER", "LOWER", "TRIM", "LTRIM", "RTRIM",
                           "LEFT", "RIGHT", "REPLACE", "PRINTF", "FORMAT", "CHAR", "CHR", "STRFTIME", "HEX"});
}

/// Calls that give back one of their arguments.
bool PassesOn(const SqlToken &token)
{
    return IsOneOf(token, {"COALESCE", "IFNULL", "ISNULL", "NVL", "NULLIF", "MIN", "MAX"});
}

/// Words that stand between expressions, so that an operand ends before them.
bool IsBetweenExpressions(const SqlToken &token)
{
    return IsOneOf(token,
                   {"SELECT", "FROM",      "WHERE",  "AND",    "OR",        "NOT",    "IN",    "IS",       "LIKE",
                    "GLOB",   "BETWEEN",   "AS",     "ON",     "WHEN",      "THEN",   "ELSE",  "CASE",     "ORDER",
                    "GROUP",  "BY",        "HAVING", "LIMIT",  "OFFSET",    "UNION",  "ALL",   "DISTINCT", "VALUES",
                    "SET",    "RETURNING", "DESC",   "ASC",    "JOIN",      "INNER",  "OUTER", "CROSS",    "ESCAPE",
                    "INTO",   "EXISTS",    "USING",  "EXCEPT", "INTERSECT", "COLLATE"});
}

bool IsSeparator(const SqlToken &token)
{
    return token.kind == SqlTokenKind::Symbol && token.text.size() == 1 &&
           std::string_view(",;=<>!-").find(token.text[0]) != std::string_view::npos;
}

/// Turns '+' into "||" in every sum of which one operand can only be a text. All signs of such a sum are turned, since
/// text and number cannot be added anyway.
class TextSums {
  public:
    explicit TextSums(SqlTokens &tokens) : tokens_(tokens) {}

    void Translate() { TranslateGroup(0, tokens_.Count()); }

  private:
    struct Group {
        bool has_text_sum = false; ///< one of the expressions, separated by commas, words or comparisons, is a text
        bool is_single = true;     ///< there is only one expression
    };
    struct Sum {
        std::vector<std::size_t> signs;
        bool is_text = false;
        bool has_operand = false; ///< something stands before the next sign, so it is not the sign of a number
    };

    Group TranslateGroup(std::size_t first, std::size_t last)
    {
        Group group;
        Sum sum;
        for (std::size_t i = first; i < last; ++i) {
            const SqlToken &token = tokens_.At(i);
            if (tokens_.IsSymbol(i, '(') && tokens_.Partner(i) < last) {
                const Group inner = TranslateGroup(i + 1, tokens_.Partner(i));
                sum.is_text |= IsTextParenthesis(i, inner, i > first);
                sum.has_operand = true;
                i = tokens_.Partner(i);
            } else if (tokens_.IsSymbol(i, '+') && sum.has_operand) {
                sum.signs.push_back(i);
                sum.has_operand = false;
            } else if (IsSeparator(token) || IsBetweenExpressions(token)) {
                Close(sum, group);
                group.is_single = false;
            } else {
                const bool joins_texts = tokens_.IsSymbol(i, '|') && tokens_.IsSymbol(i + 1, '|');
                sum.is_text |= token.kind == SqlTokenKind::String || joins_texts;
                sum.has_operand = true;
            }
        }
        Close(sum, group);
        return group;
    }

    /// Whether the parenthesis at the position, with what stands before it, gives a text.
    bool IsTextParenthesis(std::size_t position, const Group &inner, bool may_be_call) const
    {
        if (!may_be_call || tokens_.At(position - 1).kind != SqlTokenKind::Word)
            return inner.is_single && inner.has_text_sum;
        const SqlToken &name = tokens_.At(position - 1);
        if (IsTextFunction(name)) return true;
        if (PassesOn(name)) return inner.has_text_sum;
        if (name.IsWord("CONVERT")) return IsTextType(tokens_.At(position + 1));
        if (!name.IsWord("CAST")) return IsBetweenExpressions(name) && inner.is_single && inner.has_text_sum;
        for (std::size_t i = position + 1; i < tokens_.Partner(position); ++i)
            if (tokens_.IsWord(i, "AS") && IsTextType(tokens_.At(i + 1))) return true;
        return false;
    }

    void Close(Sum &sum, Group &group)
    {
        if (sum.is_text) {
            group.has_text_sum = true;
            for (const std::size_t sign : sum.signs) tokens_.Replace(sign, "||");
        }
        sum = {};
    }

    SqlTokens &tokens_;
};

struct DatePart {
    const char *name;
    const char *place; ///< first character and length in "YYYY-MM-DD HH:MM:SS"
};

constexpr DatePart kDateParts[] = {{"YEAR", "1,4"},  {"MONTH", "6,2"},   {"DAY", "9,2"},
                                   {"HOUR", "12,2"}, {"MINUTE", "15,2"}, {"SECOND", "18,2"}};

// EXTRACT ( YEAR FROM x )
void TranslateExtract(SqlTokens &tokens, std::size_t at)
{
    const auto *part = std::find_if(std::begin(kDateParts), std::end(kDateParts),
                                    [&](const DatePart &p) { return tokens.IsWord(at + 2, p.name); });
    if (part == std::end(kDateParts) || !tokens.IsWord(at + 3, "FROM")) return;
    tokens.Drop(at + 1, at + 4);
    tokens.Replace(at, "CAST(substr(");
    tokens.Replace(tokens.Partner(at + 1), std::string(",") + part->place + ") AS INTEGER)");
}

std::string PlainTypeName(const SqlToken &type)
{
    if (IsTextType(type)) return "TEXT";
    if (IsOneOf(type, {"DOUBLE", "FLOAT", "REAL"})) return "REAL";
    if (IsOneOf(type, {"INT", "INTEGER", "SMALLINT", "BIGINT"})) return "INTEGER";
    return {};
}

// CONVERT ( VARCHAR ( 10 ) , x ) or CONVERT ( INTEGER , x ). The length is kept even where it seems to have no effect:
// account keys are compared as texts cut to different lengths.
void TranslateConvert(SqlTokens &tokens, std::size_t at)
{
    const SqlToken &type = tokens.At(at + 2);
    std::size_t comma = at + 3;
    if (tokens.IsWord(at + 2, "DOUBLE") && tokens.IsWord(comma, "PRECISION")) ++comma;
    const bool has_length = tokens.IsSymbol(comma, '(') && tokens.At(comma + 1).kind == SqlTokenKind::Number &&
                            tokens.IsSymbol(comma + 2, ')');
    const std::string length(has_length ? tokens.At(comma + 1).text : std::string_view());
    if (has_length) comma += 3;
    const bool is_date = type.IsWord("DATE");
    const std::string plain = PlainTypeName(type);
    if (!tokens.IsSymbol(comma, ',') || (plain.empty() && !is_date)) return;

    tokens.Drop(at + 1, comma + 1);
    const std::size_t end = tokens.Partner(at + 1);
    if (is_date) {
        tokens.Replace(at, "substr(");
        tokens.Replace(end, ",1,10)");
    } else if (plain == "TEXT" && has_length) {
        tokens.Replace(at, "substr(CAST(");
        tokens.Replace(end, " AS TEXT),1," + length + ")");
    } else {
        tokens.Replace(at, "CAST(");
        tokens.Replace(end, " AS " + plain + ")");
    }
}

/// SQLite's words for the present give it in Greenwich.
void TranslateNow(SqlTokens &tokens, std::size_t at)
{
    constexpr std::pair<const char *, const char *> kWords[] = {{"CURRENT_DATE", "date('now','localtime')"},
                                                                {"CURRENT_TIME", "time('now','localtime')"},
                                                                {"CURRENT_TIMESTAMP", "datetime('now','localtime')"}};
    for (const auto &[word, local] : kWords) {
        if (!tokens.IsWord(at, word)) continue;
        const bool is_default = at > 0 && tokens.IsWord(at - 1, "DEFAULT");
        tokens.Replace(at, is_default ? std::string("(") + local + ")" : local);
    }
}

} // namespace

void TranslateExpressions(SqlTokens &tokens)
{
    TextSums(tokens).Translate();
    for (std::size_t i = 0; i < tokens.Count(); ++i) {
        if (tokens.IsCall(i, "EXTRACT")) TranslateExtract(tokens, i);
        if (tokens.IsCall(i, "CONVERT")) TranslateConvert(tokens, i);
        if (tokens.IsCall(i, "LEFT")) tokens.Replace(i, "\"LEFT\"");
        if (tokens.IsCall(i, "RIGHT")) tokens.Replace(i, "\"RIGHT\"");
        TranslateNow(tokens, i);
    }
}

#include "sqlapi/engines/ScriptSplitter.h"

#include "sqlapi/engines/SqlLexer.h"

namespace {

/// Follows one statement and tells whether a ';' ends it.
class StatementEnd {
  public:
    void See(const SqlToken &token)
    {
        if (token.IsBlank()) return;
        ++words_;
        if (words_ == 1) creates_ = token.IsWord("CREATE");
        // CREATE [OR REPLACE] [TEMP] TRIGGER: the word is among the first few.
        if (creates_ && words_ <= 4 &&
            (token.IsWord("TRIGGER") || token.IsWord("FUNCTION") || token.IsWord("PROCEDURE")))
            may_have_body_ = true;
        if (!may_have_body_) return;
        if (token.IsWord("BEGIN") || (depth_ > 0 && token.IsWord("CASE"))) ++depth_;
        if (depth_ > 0 && token.IsWord("END")) --depth_;
    }

    bool IsEmpty() const { return words_ == 0; }
    bool InsideBody() const { return depth_ > 0; }

  private:
    int words_ = 0;
    int depth_ = 0;
    bool creates_ = false;
    bool may_have_body_ = false;
};

} // namespace

std::vector<std::string_view> SplitScript(std::string_view script)
{
    std::vector<std::string_view> statements;
    SqlLexer lexer(script);
    StatementEnd statement;
    const char *begin = script.data();
    const char *end = begin;
    const auto store = [&] {
        if (!statement.IsEmpty()) statements.emplace_back(begin, static_cast<std::size_t>(end - begin));
        statement = {};
    };

    for (SqlToken token; lexer.Next(token);) {
        if (token.IsSymbol(';') && !statement.InsideBody()) {
            store();
            continue;
        }
        if (!token.IsBlank() && statement.IsEmpty()) begin = token.text.data();
        statement.See(token);
        if (!token.IsBlank()) end = token.text.data() + token.text.size();
    }
    store();
    return statements;
}

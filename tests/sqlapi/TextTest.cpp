// What is read from SQL and date texts before an engine sees them.

#include "sqlapi/SADateTime.h"
#include "sqlapi/engines/NamedParameters.h"
#include "sqlapi/engines/ScriptSplitter.h"
#include "sqlapi/engines/StatementKind.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

struct ParameterCase {
    const char *name;
    const char *text;
    const char *numbered;
    std::vector<std::string> names;
};
void PrintTo(const ParameterCase &c, std::ostream *out)
{
    *out << c.text;
}

class NamedParametersTest : public testing::TestWithParam<ParameterCase> {};

TEST_P(NamedParametersTest, FindsNamesAndOnlyNames)
{
    EXPECT_EQ(ParameterNames(GetParam().text), GetParam().names);
    EXPECT_EQ(NumberParameters(GetParam().text, '$'), GetParam().numbered);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, NamedParametersTest,
    testing::Values(ParameterCase{"Plain", "a = :a AND b=:b", "a = $1 AND b=$2", {"a", "b"}},
                    ParameterCase{"SameNameSameNumber", ":a + :b + :A", "$1 + $2 + $1", {"a", "b"}},
                    ParameterCase{"PrefixOfAnother", ":cod,:codice", "$1,$2", {"cod", "codice"}},
                    ParameterCase{"Literal", "':a' || 'it''s :b' || :c", "':a' || 'it''s :b' || $1", {"c"}},
                    ParameterCase{"EscapeLiteral", R"(E'\':a' = :b)", R"(E'\':a' = $1)", {"b"}},
                    ParameterCase{"BackslashEndsPlainLiteral", R"('\' = :b)", R"('\' = $1)", {"b"}},
                    ParameterCase{"QuotedName", R"("x:a""b:c" = :d)", R"("x:a""b:c" = $1)", {"d"}},
                    ParameterCase{"Comments", "1 -- :a\n/* :b */ :c", "1 -- :a\n/* :b */ $1", {"c"}},
                    ParameterCase{"Cast", "x::date = :d::date", "x::date = $1::date", {"d"}},
                    ParameterCase{"DollarQuotes", "$$:a$$ $t$:b $$ $t$ :c", "$$:a$$ $t$:b $$ $t$ $1", {"c"}},
                    ParameterCase{"TouchingWord", "LIMIT:n", "LIMIT $1", {"n"}},
                    ParameterCase{"Unterminated", ":a 'abc :b", "$1 'abc :b", {"a"}}),
    [](const auto &param) { return std::string(param.param.name); });

TEST(ScriptSplitterTest, KeepsLiteralsCommentsAndBodiesWhole)
{
    EXPECT_THAT(SplitScript("A ';' ; -- not; here\n B /* ; */ x;\n;\n C \";\" $$;$$"),
                ElementsAre("A ';'", "B /* ; */ x", "C \";\" $$;$$"));
    EXPECT_THAT(SplitScript("-- only\n/* comments */ ;"), ElementsAre());
}

TEST(ScriptSplitterTest, EndsTriggerAtItsLastEnd)
{
    const std::string trigger = "CREATE TRIGGER t AFTER INSERT ON x BEGIN"
                                " UPDATE x SET a = CASE WHEN b THEN 1 END; SELECT 1; END";
    const std::string script = trigger + "; BEGIN; COMMIT";
    EXPECT_THAT(SplitScript(script), ElementsAre(trigger, "BEGIN", "COMMIT"));
}

struct DateCase {
    const char *text;
    SADateTime date;
};

TEST(SADateTimeTest, ReadsIsoTextsAndNothingElse)
{
    const DateCase cases[] = {
        {"2024-02-29", {2024, 2, 29}},
        {"2024-12-31T23:59:58", {2024, 12, 31, 23, 59, 58}},
        {"2024-01-02 03:04", {2024, 1, 2, 3, 4}},
        {"2024-01-02 03:04:05.678+01", {2024, 1, 2, 3, 4, 5}},
        {"2023-02-29", {}},
        {"2024-13-01", {}},
        {"2024-1-1", {}},
        {"0000-01-01", {}},
        {"01/02/2024", {}},
        {"2024-01-01 24:00", {}},
        {"2024-01-01 10:00 x", {}},
        {"2024-01-01x", {}},
        {"", {}},
    };
    for (const DateCase &c : cases) EXPECT_EQ(SADateTime::Parse(c.text), c.date) << c.text;
    EXPECT_EQ(SADateTime(987, 1, 2).DateText(), "0987-01-02");
    EXPECT_EQ(SADateTime(2024, 1, 2, 3, 4, 5).DateTimeText(), "2024-01-02 03:04:05");
    EXPECT_EQ(SADateTime().DateText() + SADateTime().DateTimeText(), "");
}

TEST(StatementKindTest, StreamsOnlyWhatWritesNothing)
{
    EXPECT_TRUE(StatementKind::Of("-- x\n (SELECT 'UPDATE')").reads_only);
    EXPECT_FALSE(StatementKind::Of("SELECT a FROM t FOR UPDATE").reads_only);
    EXPECT_FALSE(StatementKind::Of("WITH d AS (DELETE FROM t RETURNING *) SELECT * FROM d").reads_only);
    EXPECT_TRUE(StatementKind::Of("WITH d AS (SELECT 1) SELECT * FROM d").reads_only);
    EXPECT_TRUE(StatementKind::Of("create temp table t (a int)").changes_session);
}

} // namespace

// The texts of the zero dialect, run as they stand on a SQLite archive.

#include "sqlapi/engines/ZeroDialect.h"
#include "sqlapi/SACommand.h"
#include "tests/support/TestDatabase.h"

#include <chrono>
#include <ctime>

namespace {

struct TextCase {
    const char *name;
    const char *text;
    const char *translated; ///< null: unchanged
};
void PrintTo(const TextCase &c, std::ostream *out)
{
    *out << c.text;
}

class ZeroDialectTest : public testing::TestWithParam<TextCase> {};

TEST_P(ZeroDialectTest, Translates)
{
    const TextCase &c = GetParam();
    EXPECT_EQ(TranslateZeroDialect(c.text), c.translated == nullptr ? c.text : c.translated);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ZeroDialectTest,
    testing::Values(
        TextCase{"Untouched", "SELECT  a + 1,-b /* + */ FROM admin.t -- EXTRACT(YEAR FROM x)", nullptr},
        TextCase{"LiteralsUntouched", "SELECT 'CURRENT_DATE', 'EXTRACT(YEAR FROM x)', \"FOR UPDATE\"", nullptr},
        TextCase{"Year", "extract(year FROM pno_data) = ?1", "CAST(substr(pno_data,1,4) AS INTEGER) = ?1"},
        TextCase{"Month", "EXTRACT( MONTH  FROM p.d)", "CAST(substr(p.d,6,2) AS INTEGER)"},
        TextCase{"DayOfCall", "EXTRACT(DAY FROM COALESCE(a, b))", "CAST(substr(COALESCE(a, b),9,2) AS INTEGER)"},
        TextCase{"UnknownPart", "EXTRACT(EPOCH FROM a)", nullptr},
        TextCase{"ConvertLength", "CONVERT(VARCHAR(6), ?1)", "substr(CAST(?1 AS TEXT),1,6)"},
        TextCase{"ConvertNested", "CONVERT(VARCHAR(10), CONVERT(INTEGER, a))",
                 "substr(CAST(CAST(a AS INTEGER) AS TEXT),1,10)"},
        TextCase{"ConvertDouble", "CONVERT(DOUBLE PRECISION, a)", "CAST(a AS REAL)"},
        TextCase{"NumbersAdd", "SELECT a + b + 1 FROM t WHERE c = 'x' AND d + 1 > 2", nullptr},
        TextCase{"LiteralJoins", "a + ' ' + b", "a || ' ' || b"},
        TextCase{"CallJoins", "WHERE TRIM(a) + b LIKE 'x'", "WHERE TRIM(a) || b LIKE 'x'"},
        TextCase{"ParenthesisJoins", "(a + 'x') + b", "(a || 'x') || b"},
        TextCase{"CoalesceOfText", "COALESCE(a, '') + b", "COALESCE(a, '') || b"},
        TextCase{"CoalesceOfNumber", "COALESCE(a, 0) + b", nullptr},
        TextCase{"CountOfTextFilter", "COUNT(CASE WHEN a = 'x' THEN 1 END) + 1", nullptr},
        TextCase{"TextArgumentOfNumber", "INSTR(a, 'x') + 1", nullptr},
        TextCase{"CastJoins", "CAST(a AS VARCHAR(3)) + b", "CAST(a AS VARCHAR(3)) || b"},
        TextCase{"LeftCall", "SELECT LEFT(a, 2) FROM t LEFT JOIN u ON 1=1",
                 "SELECT \"LEFT\"(a, 2) FROM t LEFT JOIN u ON 1=1"},
        TextCase{"Today", "WHERE a < CURRENT_DATE", "WHERE a < date('now','localtime')"},
        TextCase{"DefaultToday", "CREATE TABLE t (a DATE DEFAULT CURRENT_DATE)",
                 "CREATE TABLE t (a DATE DEFAULT (date('now','localtime')))"},
        TextCase{"Grant", "GRANT ALL ON admin.w TO PUBLIC", ""},
        TextCase{"Schema", "CREATE SCHEMA IF NOT EXISTS admin", ""},
        TextCase{"RowLock", "SELECT a FROM t FOR UPDATE", "SELECT a FROM t "},
        TextCase{"Index", "CREATE UNIQUE INDEX IF NOT EXISTS i ON admin.t (EXTRACT(YEAR FROM d))",
                 "CREATE UNIQUE INDEX IF NOT EXISTS admin.i ON t (CAST(substr(d,1,4) AS INTEGER))"},
        TextCase{"TableWithReference", "CREATE TABLE admin.t (a BYTEA, b INT REFERENCES admin.u (c))",
                 "CREATE TABLE admin.t (a BLOB, b INT REFERENCES u (c))"},
        TextCase{"View", "CREATE VIEW admin.v AS SELECT t.a FROM admin.t, admin.u",
                 "CREATE VIEW admin.v AS SELECT t.a FROM t, u"},
        TextCase{"DropCascade", "DROP TABLE admin.t CASCADE", "DROP TABLE admin.t "},
        TextCase{"Truncate", "TRUNCATE TABLE admin.t", "DELETE FROM admin.t"}),
    [](const auto &param) { return std::string(param.param.name); });

class ZeroArchiveTest : public testing::Test {
  protected:
    void SetUp() override
    {
        connection_.Connect(database_.Target());
        connection_.ExecuteScript(
            "CREATE TABLE admin.pnotaro2 (row_mas INTEGER, row_con INTEGER, row_sot INTEGER, row_imp DOUBLE PRECISION,"
            " row_data DATE, row_des VARCHAR(40));"
            "INSERT INTO admin.pnotaro2 VALUES (1, 2, 3, 10.005, '2024-02-29', 'Città'), (1, 2, 1234567, 5.5,"
            " '2023-12-31', NULL), (2, 1, 1, 1, '2024-12-31', 'x');"
            "CREATE INDEX pnotaro2_anno ON admin.pnotaro2 (EXTRACT(YEAR FROM row_data))");
    }

    std::string First(std::string_view sql)
    {
        SACommand command(&connection_, sql);
        command.Execute();
        return command.FetchNext() ? command.Field(1).asString() : "no row";
    }

    TestDatabase database_{SAEngine::SQLite};
    SAConnection connection_;
};

TEST_F(ZeroArchiveTest, GivesTheRowsOfTheServer)
{
    const std::pair<const char *, const char *> cases[] = {
        {"SELECT LPAD('abc', 5, 'xy')", "xyabc"},
        {"SELECT LPAD('abcdef', 3, 'x')", "abc"},
        {"SELECT LPAD('è', 3, 'à')", "ààè"},
        {"SELECT LPAD(7, 3, '') || LPAD('a', -1, '0')", "7"},
        {"SELECT COALESCE(LPAD(NULL, 3, '0'), 'null')", "null"},
        {"SELECT RPAD('a', 4, 'bc')", "abcb"},
        {"SELECT LEFT('càb', 2) + RIGHT('abc', -1)", "càbc"},
        {"SELECT CONCAT('a', NULL, 1, 2.5)", "a12.5"},
        {"SELECT UPPER('perché žluťo') + LOWER('PERCHÉ Ž')", "PERCHÉ ŽLUŤOperché ž"},
        {"SELECT CHAR_LENGTH('perché')", "6"},
        {"SELECT COUNT(*) FROM admin.pnotaro2 WHERE EXTRACT(YEAR FROM row_data) = 2024", "2"},
        {"SELECT EXTRACT(MONTH FROM row_data) * 100 + EXTRACT(DAY FROM row_data) FROM admin.pnotaro2", "229"},
        {"SELECT ROUND(COALESCE(SUM(row_imp),0),2) saldo_con FROM admin.pnotaro2 WHERE row_mas = 9", "0"},
        {"SELECT COUNT(*) FROM admin.pnotaro2 WHERE row_des LIKE 'X%'", "0"},
        {"SELECT row_des + '-' + row_mas FROM admin.pnotaro2", "Città-1"},
        {"SELECT 'a + b' + ' CURRENT_DATE'", "a + b CURRENT_DATE"},
    };
    for (const auto &[sql, expected] : cases) EXPECT_EQ(First(sql), expected) << sql;
}

TEST_F(ZeroArchiveTest, ComparesAccountRangesAsTheirKeys)
{
    const std::string key =
        "LPAD(CONVERT(VARCHAR(10), row_mas), 10, '0') + LPAD(CONVERT(VARCHAR(10), row_con), 10, '0')"
        " + LPAD(CONVERT(VARCHAR(10), row_sot), 10, '0')";
    SACommand command(
        &connection_,
        "SELECT " + key + " AS k FROM admin.pnotaro2 WHERE " + key +
            " BETWEEN LPAD(CONVERT(VARCHAR(10), :m_start),10,'0') + LPAD(CONVERT(VARCHAR(10), :c_start),10,'0')"
            " + LPAD(CONVERT(VARCHAR(6), :s_start),10,'0') AND LPAD(CONVERT(VARCHAR(10), :m_stop),10,'0')"
            " + LPAD(CONVERT(VARCHAR(10), :c_stop),10,'0') + LPAD(CONVERT(VARCHAR(10), :s_stop),10,'0')"
            " ORDER BY k");
    for (const char *name : {"m_start", "m_stop"}) command.Param(name).setAsLong(1);
    for (const char *name : {"c_start", "c_stop"}) command.Param(name).setAsLong(2);
    // Cut to six digits the start is 123456, so the account 1234567 is inside although the full number is above it.
    command.Param("s_start").setAsLong(1234569);
    command.Param("s_stop").setAsLong(9999999);
    command.Execute();
    ASSERT_TRUE(command.FetchNext());
    EXPECT_EQ(command.Field("k").asString(), "000000000100000000020001234567");
    EXPECT_FALSE(command.FetchNext());
}

TEST_F(ZeroArchiveTest, YearFilterUsesTheIndexOnTheYear)
{
    SACommand command(
        &connection_,
        "EXPLAIN QUERY PLAN SELECT row_mas FROM admin.pnotaro2 WHERE EXTRACT(YEAR FROM row_data) = :anno");
    command.Execute();
    ASSERT_TRUE(command.FetchNext());
    EXPECT_THAT(command.Field("detail").asString(), testing::HasSubstr("pnotaro2_anno"));
}

TEST_F(ZeroArchiveTest, TodayIsTheLocalDate)
{
    const std::time_t now = std::time(nullptr);
    char today[16];
    std::strftime(today, sizeof today, "%Y-%m-%d", std::localtime(&now));
    EXPECT_EQ(First("SELECT CURRENT_DATE"), today);
}

TEST_F(ZeroArchiveTest, DefinitionsWorkAndDoNotNameTheirSchema)
{
    connection_.ExecuteScript(
        "CREATE TABLE admin.w (a INTEGER PRIMARY KEY, b DATE, c CHAR(5), d VARCHAR(30), e DOUBLE PRECISION);"
        "GRANT ALL ON admin.w TO PUBLIC; COMMENT ON TABLE admin.w IS 'work';"
        "CREATE TABLE admin.w2 (a INTEGER REFERENCES admin.w (a));"
        "CREATE VIEW admin.v AS SELECT UPPER(d) d FROM admin.w WHERE EXTRACT(YEAR FROM b) = 2024;"
        "CREATE TRIGGER w_ins AFTER INSERT ON admin.w BEGIN INSERT INTO admin.w2 (a) VALUES (NEW.a); END;"
        "INSERT INTO admin.w (a, b, d) VALUES (1, '2024-05-06', 'più')");
    EXPECT_EQ(First("SELECT d FROM admin.v"), "PIÙ");
    EXPECT_EQ(First("SELECT a FROM admin.w2 FOR UPDATE"), "1");
    EXPECT_EQ(First("SELECT COUNT(*) FROM sqlite_schema WHERE sql LIKE '%admin%'"), "0");
    connection_.ExecuteScript("DROP TABLE admin.w2; TRUNCATE TABLE admin.pnotaro2");
    EXPECT_EQ(First("SELECT COUNT(*) FROM admin.pnotaro2"), "0");
}

} // namespace

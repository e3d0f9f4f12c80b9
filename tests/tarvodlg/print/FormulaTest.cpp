#include "tarvodlg/base/Dates.h"
#include "tarvodlg/print/SelectionFormula.h"
#include "tarvolumera/TableDescription.h"
#include "tests/support/TestArchive.h"

#include <map>

namespace {

std::string Shown(const ReportValue &value)
{
    if (const auto *whole = std::get_if<long long>(&value)) return fmt::format("{}", *whole);
    if (const auto *number = std::get_if<double>(&value)) return fmt::format("{}d", *number);
    if (const auto *text = std::get_if<std::string>(&value)) return "'" + *text + "'";
    if (const auto *date = std::get_if<ReportDate>(&value)) return FormatIsoDate(date->day);
    return "NULL";
}

const ReportDate kMarch31{DateToJulian(31, 3, 2026)};

ReportValue ParameterValue(std::string_view name)
{
    static const std::map<std::string, ReportValue, std::less<>> kValues = {
        {"Anno", 2026LL}, {"Soglia", 2.5}, {"Dal", kMarch31}, {"Vuota", ReportDate{}}, {"Nome", std::string("Perù")}};
    const auto found = kValues.find(name);
    if (found == kValues.end()) throw ReportError("nessun valore per " + std::string(name));
    return found->second;
}

// --- to SQL

struct SqlCase {
    const char *name;
    std::string formula;
    std::string condition;
    std::string values; ///< of :f1, :f2 ... in order
};
void PrintTo(const SqlCase &c, std::ostream *out)
{
    *out << c.formula;
}
class ToSqlTest : public testing::TestWithParam<SqlCase> {};

TEST_P(ToSqlTest, BindsEveryValue)
{
    const SelectionFormula::Sql sql = SelectionFormula::Parse(GetParam().formula).ToSql("f", ParameterValue);
    EXPECT_EQ(sql.condition, GetParam().condition);
    std::string values;
    for (std::size_t i = 0; i < sql.parameters.size(); ++i) {
        EXPECT_EQ(sql.parameters[i].first, fmt::format("f{}", i + 1));
        values += (i > 0 ? " " : "") + Shown(sql.parameters[i].second);
    }
    EXPECT_EQ(values, GetParam().values);
}

INSTANTIATE_TEST_SUITE_P(
    Reports, ToSqlTest,
    testing::Values(
        SqlCase{"Checked", "{pnota.pno_verifica} = 1", "pnota.pno_verifica = :f1", "1"},
        SqlCase{"NotTransferred", "{pnota.pno_trasf} <> 1", "pnota.pno_trasf <> :f1", "1"},
        SqlCase{"Journal",
                "{pnota.pno_codice} in 1 to 99999 AND {pnota.pno_data} in Date(2026,1,1) to Date(2026,12,31)"
                " AND {pnota.pno_sez} = 1 AND {pnota.pno_cau} = 21",
                "(pnota.pno_codice BETWEEN :f1 AND :f2 AND pnota.pno_data BETWEEN :f3 AND :f4"
                " AND pnota.pno_sez = :f5 AND pnota.pno_cau = :f6)",
                "1 99999 2026-01-01 2026-12-31 1 21"},
        SqlCase{"Settlement", "{totiva2.tiv_anno} = 2026 and  {sezioni.sez_esc_liq_iva} = 0 and {totiva2.tiv_sez} = 1",
                "(totiva2.tiv_anno = :f1 AND sezioni.sez_esc_liq_iva = :f2 AND totiva2.tiv_sez = :f3)", "2026 0 1"},
        SqlCase{"Month", "{liquidaz.liq_anno} = 2026 and  {liquidaz.liq_tipo} = 1 and {liquidaz.liq_mese} = 3",
                "(liquidaz.liq_anno = :f1 AND liquidaz.liq_tipo = :f2 AND liquidaz.liq_mese = :f3)", "2026 1 3"},
        SqlCase{"Quarter", "{liquidaz.liq_anno} = 2026 and  {liquidaz.liq_tipo} = 1 and {liquidaz.liq_mese} in 1 to 3",
                "(liquidaz.liq_anno = :f1 AND liquidaz.liq_tipo = :f2 AND liquidaz.liq_mese BETWEEN :f3 AND :f4)",
                "2026 1 1 3"},
        SqlCase{"OpenItems",
                "{scadenze.sca_relaz} = 0 and ({scadenze.sca_pagato} = 0 or ({scadenze.sca_pagato} <> 0 and "
                "{scadenze.sca_parked} <> 0))",
                "(scadenze.sca_relaz = :f1 AND (scadenze.sca_pagato = :f2 OR (scadenze.sca_pagato <> :f3 AND "
                "scadenze.sca_parked <> :f4)))",
                "0 0 0 0"},
        SqlCase{"Slip", "{distinte.dsp_relaz} = 1 AND {distinte.dsp_codice} = 7",
                "(distinte.dsp_relaz = :f1 AND distinte.dsp_codice = :f2)", "1 7"},
        SqlCase{"Slips",
                "{distinte.dsp_codice} in 1 to 9 AND {distinte.dsp_data} in Date(2026,1,1) to Date (2026,1,31) AND "
                "{distinte.dsp_relaz} = 0",
                "(distinte.dsp_codice BETWEEN :f1 AND :f2 AND distinte.dsp_data BETWEEN :f3 AND :f4 AND "
                "distinte.dsp_relaz = :f5)",
                "1 9 2026-01-01 2026-01-31 0"},
        SqlCase{
            "BankReceipts",
            "{scadenze.sca_tipo_pag} = 2 and {scadenze.sca_relaz} = 0 and {scadenze.sca_data} in Date(2026,1,1) to "
            "Date(2026,2,28) and {scadenze.sca_num} in 1 to 500 and {scadenze.sca_emessa} in Date(2026,1,1) to "
            "Date(2026,2,28) and {scadenze.sca_printed} = 0",
            "(scadenze.sca_tipo_pag = :f1 AND scadenze.sca_relaz = :f2 AND scadenze.sca_data BETWEEN :f3 AND :f4 AND "
            "scadenze.sca_num BETWEEN :f5 AND :f6 AND scadenze.sca_emessa BETWEEN :f7 AND :f8 AND "
            "scadenze.sca_printed = :f9)",
            "2 0 2026-01-01 2026-02-28 1 500 2026-01-01 2026-02-28 0"}),
    [](const auto &p) { return std::string(p.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Grammar, ToSqlTest,
    testing::Values(SqlCase{"Empty", " \t\r\n", "1 = 1", ""},
                    SqlCase{"AndBeforeOr", "{a.b}=1 OR {a.c}=2 AND {a.d}=3 or {a.e}=4",
                            "(a.b = :f1 OR (a.c = :f2 AND a.d = :f3) OR a.e = :f4)", "1 2 3 4"},
                    SqlCase{"NotBindsTighter", "not {a.b} = 1 and NOT ({a.c} = 2 or {a.d} = 3)",
                            "((NOT (a.b = :f1)) AND (NOT (a.c = :f2 OR a.d = :f3)))", "1 2 3"},
                    SqlCase{"AllComparisons", "{a.b}<1 and {a.b}<=1 and {a.b}>1 and {a.b}>=1 and {a.b}<>1",
                            "(a.b < :f1 AND a.b <= :f2 AND a.b > :f3 AND a.b >= :f4 AND a.b <> :f5)", "1 1 1 1 1"},
                    SqlCase{"NamesFolded", "{PNota.PNO_Data} = {SEZIONI.Sez_1}", "pnota.pno_data = sezioni.sez_1", ""},
                    SqlCase{"ValueFirst", "5 < {a.b}", ":f1 < a.b", "5"},
                    SqlCase{"Negative", "{a.b} in -5 to - 1", "a.b BETWEEN :f1 AND :f2", "-5 -1"},
                    SqlCase{"Decimal", "{a.b} >= -0.05", "a.b >= CAST(:f1 AS DOUBLE PRECISION)", "-0.05d"},
                    SqlCase{"PastThirtyTwoBits", "{a.b} <= 2147483648 or {a.b} = -9223372036854775808",
                            "(a.b <= CAST(:f1 AS BIGINT) OR a.b = CAST(:f2 AS BIGINT))",
                            "2147483648 -9223372036854775808"},
                    SqlCase{"QuotesOfBothKinds", R"({a.b} = "O'Neil ""Bar""" or {a.b} = 'L''Aquila' or {a.b} = "")",
                            "(a.b = :f1 OR a.b = :f2 OR a.b = :f3)", R"('O'Neil "Bar"' 'L'Aquila' '')"},
                    SqlCase{"SqlInText", R"({a.b} = "{x}'); DROP TABLE y; -- or 1=1")", "a.b = :f1",
                            "'{x}'); DROP TABLE y; -- or 1=1'"},
                    SqlCase{"Parameters",
                            "{a.b} = {?Anno} and {a.c} > {?Soglia} and {a.d} >= {?Dal} and {a.e} < {?Vuota}",
                            "(a.b = :f1 AND a.c > CAST(:f2 AS DOUBLE PRECISION) AND a.d >= :f3 AND a.e < :f4)",
                            "2026 2.5d 2026-03-31 NULL"},
                    SqlCase{"ValuesAloneAreWorkedOut", "{?Anno} = 2026 and 1 > 2 and {?Vuota} = {?Dal} or 2 in 1 to 3",
                            "((1 = 1 AND 1 = 0 AND 1 = NULL) OR (1 = 1 AND 1 = 1))", ""},
                    SqlCase{"ValueBetweenColumns", "{?Dal} in {a.dal} to {a.al}", "(:f1 >= a.dal AND :f2 <= a.al)",
                            "2026-03-31 2026-03-31"},
                    SqlCase{"LeapDay", "{a.b}=DATE( 2024 , 2 , 29 )", "a.b = :f1", "2024-02-29"}),
    [](const auto &p) { return std::string(p.param.name); });

// --- what cannot be understood

struct FaultCase {
    const char *name;
    std::string formula;
    std::string message; ///< behind "Formula di selezione, carattere "
};
void PrintTo(const FaultCase &c, std::ostream *out)
{
    *out << c.formula.substr(0, 80);
}
class FormulaFaultTest : public testing::TestWithParam<FaultCase> {};

TEST_P(FormulaFaultTest, NamesPlaceAndExpectation)
{
    try {
        SelectionFormula::Parse(GetParam().formula);
        FAIL() << "accepted";
    } catch (const ReportError &error) {
        EXPECT_EQ(error.what(), "Formula di selezione, carattere " + GetParam().message);
    }
}

std::string Repeated(std::string_view piece, int times)
{
    std::string text;
    for (int i = 0; i < times; ++i) text += piece;
    return text;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FormulaFaultTest,
    testing::Values(
        FaultCase{"EndsAfterIn", "{pnota.x} in ", "14: atteso un valore dopo \"in\""},
        FaultCase{"EndsAfterSign", "{a.b} =", "8: atteso un valore dopo \"=\""},
        FaultCase{"EndsAfterAnd", "{a.b} = 1 AND", "14: attesa una condizione dopo \"AND\""},
        FaultCase{"BeginsWithAnd", "and {a.b} = 1", "1: attesa una condizione, trovato \"and\""},
        FaultCase{"NoTo", "{a.b} in 1 and 2", "12: atteso \"to\" dopo il numero 1, trovato \"and\""},
        FaultCase{"ColumnAlone", "{a.b} and {a.c} = 1",
                  "7: atteso un confronto (=, <>, <, >, <=, >=, in) dopo {a.b}, trovato \"and\""},
        FaultCase{"TwoSigns", "{a.b} = 1 = 2", "11: atteso \"and\" o \"or\" dopo il numero 1, trovato \"=\""},
        FaultCase{"SqlBehind", "{a.b} = 1 UNION SELECT 2",
                  "11: atteso \"and\" o \"or\" dopo il numero 1, trovato \"UNION\""},
        FaultCase{"Semicolon", "{a.b} = 1; DROP TABLE x", "10: carattere non ammesso \";\""},
        FaultCase{"Comment", "{a.b} = 1 -- x", "11: atteso \"and\" o \"or\" dopo il numero 1, trovato \"-\""},
        FaultCase{"OpenParenthesis", "({a.b} = 1", "11: atteso \"and\", \"or\" o \")\" dopo il numero 1"},
        FaultCase{"ClosedTwice", "({a.b} = 1))", "12: atteso \"and\" o \"or\" dopo \")\", trovato \")\""},
        FaultCase{"EmptyParentheses", "()", "2: attesa una condizione dopo \"(\", trovato \")\""},
        FaultCase{"BareWord", "{a.b} = pippo", "9: atteso un valore dopo \"=\", trovato \"pippo\""},
        FaultCase{"MinusOfText", "{a.b} = -'x'", "10: atteso un numero dopo \"-\", trovato il testo 'x'"},
        FaultCase{"OpenBrace", "{a.b = 1", "1: manca la graffa che chiude \"{\""},
        FaultCase{"NoColumn", "{pnota} = 1", "1: nome non valido \"{pnota}\", atteso {tabella.colonna} o {?parametro}"},
        FaultCase{"QuoteInName", "{a.b\" or \"1} = 1",
                  "1: nome non valido \"{a.b\" or \"1}\", atteso {tabella.colonna} o {?parametro}"},
        FaultCase{"ThreeParts", "{x.a.b} = 1",
                  "1: nome non valido \"{x.a.b}\", atteso {tabella.colonna} o {?parametro}"},
        FaultCase{"AccentInName", "{a.città} = 1",
                  "1: nome non valido \"{a.città}\", atteso {tabella.colonna} o {?parametro}"},
        FaultCase{"OpenQuotes", "{a.b} = 'Aquila", "9: mancano le virgolette (') che chiudono il testo"},
        FaultCase{"QuoteNotDoubled", "{a.b} = 'L'Aquila'",
                  "12: atteso \"and\" o \"or\" dopo il testo 'L', trovato \"Aquila\""},
        FaultCase{"CharactersNotBytes", "{a.b} = 'àèì' @", "15: carattere non ammesso \"@\""},
        FaultCase{"MalformedText", "{a.b} = 'a\xFF'", "9: il testo contiene caratteri non ammessi"},
        FaultCase{"NulInText", std::string("{a.b} = 'a\0'", 12), "9: il testo contiene caratteri non ammessi"},
        FaultCase{"ControlCharacter", "{a.b} = \x01", "9: carattere non ammesso"},
        FaultCase{"NoSuchDay", "{a.b} = Date(2026,2,29)", "9: la data Date(2026,2,29) non esiste"},
        FaultCase{"NoDate", "{a.b} >= Date(0,0,0)",
                  "10: Date(0,0,0) vuol dire nessuna data, che non si può confrontare"},
        FaultCase{"HugeYear", "{a.b} = Date(4294969322,1,1)", "9: la data Date(4294969322,1,1) non esiste"},
        FaultCase{"DateWithTwo", "{a.b} = Date(2026,2)", "20: attesa \",\" dopo il numero 2, trovato \")\""},
        FaultCase{"DateOfText", "{a.b} = Date('2026',1,1)",
                  "14: atteso un numero intero dopo \"(\", trovato il testo '2026'"},
        FaultCase{"DateOfDecimals", "{a.b} = Date(2026.5,1,1)",
                  "14: atteso un numero intero, trovato il numero 2026.5"},
        FaultCase{"DateAlone", "{a.b} = Date", "13: attesa \"(\" dopo \"Date\""},
        FaultCase{"HugeNumber", "{a.b} = 9223372036854775808", "9: numero troppo grande"},
        FaultCase{"DecimalComma", "{a.b} = 1,5", "10: atteso \"and\" o \"or\" dopo il numero 1, trovato \",\""},
        FaultCase{"HostileNesting", Repeated("(", 50'000), "21: più di 20 parentesi o \"not\" una dentro l'altra"},
        FaultCase{"HostileNots", Repeated("not ", 10'000), "81: più di 20 parentesi o \"not\" una dentro l'altra"},
        FaultCase{"HostileLength", Repeated("{a.b}=1 or ", 2'000), "4401: più di 400 confronti"},
        FaultCase{"HostileSize", Repeated(" ", 65'536) + "{a.b}=1", "1: formula più lunga di 65536 byte"}),
    [](const auto &p) { return std::string(p.param.name); });

TEST(SelectionFormula, TellsItsColumnsAndParameters)
{
    const SelectionFormula formula =
        SelectionFormula::Parse("{A.b} = 'è' and ({?Anno} in {a.C} to 3 or not {d.e} = {?X})");
    std::string names;
    for (const SelectionFormula::Column &column : formula.Columns())
        names += fmt::format("{}.{}@{} ", column.table, column.column, column.position);
    for (const SelectionFormula::Parameter &parameter : formula.Parameters())
        names += fmt::format("?{}@{} ", parameter.name, parameter.position);
    EXPECT_EQ(names, "a.b@1 a.c@29 d.e@47 ?Anno@18 ?X@55 ");
    EXPECT_THROW(static_cast<void>(formula.ToSql("f", {})), ReportError);
}

// --- over a row

struct HoldsCase {
    const char *formula;
    bool holds;
};
void PrintTo(const HoldsCase &c, std::ostream *out)
{
    *out << c.formula;
}
class HoldsTest : public testing::TestWithParam<HoldsCase> {};

ReportValue RowValue(std::string_view, std::string_view column)
{
    static const std::map<std::string, ReportValue, std::less<>> kRow = {{"n", 5LL},
                                                                         {"d", 2.5},
                                                                         {"t", std::string("Perù")},
                                                                         {"iso", std::string("2026-03-31")},
                                                                         {"cap", std::string("20100")},
                                                                         {"g", kMarch31},
                                                                         {"none", ReportDate{}},
                                                                         {"z", ReportValue()},
                                                                         {"big", 9007199254740993LL},
                                                                         {"big_d", 9007199254740992.0}};
    return kRow.at(std::string(column));
}

/// Without columns everything is worked out, so the same rules must hold for what goes to SQL.
TEST_P(HoldsTest, ThreeValues)
{
    EXPECT_EQ(SelectionFormula::Parse(GetParam().formula).Holds(RowValue, ParameterValue), GetParam().holds);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, HoldsTest,
    testing::Values(
        HoldsCase{"", true}, HoldsCase{"{row.n} = 5", true}, HoldsCase{"{row.n} = 5.0", true},
        HoldsCase{"{row.n} in 5 to 5", true}, HoldsCase{"{row.n} in 6 to 4", false},
        HoldsCase{"{row.d} > 2 and {row.d} < 3", true}, HoldsCase{"{row.d} = {?Soglia}", true},
        HoldsCase{"{row.big} = {row.big_d}", false}, // one more than a double can tell apart
        // code points: upper case before lower, accents behind z
        HoldsCase{"{row.t} = {?Nome}", true}, HoldsCase{"{row.t} = 'PERÙ'", false}, HoldsCase{"{row.t} > 'Perz'", true},
        HoldsCase{"{row.t} <> ''", true}, HoldsCase{"{row.t} = 'Peru'", false}, HoldsCase{"{row.cap} = 20100", true},
        HoldsCase{"{row.t} = 5", false}, HoldsCase{"{row.g} in Date(2026,3,1) to Date(2026,3,31)", true},
        HoldsCase{"{row.g} > Date(2026,3,31)", false}, HoldsCase{"{row.iso} = Date(2026,3,31)", true},
        HoldsCase{"{row.g} = {?Dal}", true},
        // NULL, an empty date and what cannot be compared are neither true nor false
        HoldsCase{"{row.z} = 5", false}, HoldsCase{"{row.z} <> 5", false}, HoldsCase{"not {row.z} = 5", false},
        HoldsCase{"{row.z} = {row.z}", false}, HoldsCase{"not ({row.z} = 5 and {row.n} = 5)", false},
        HoldsCase{"not ({row.z} = 5 and {row.n} = 6)", true}, HoldsCase{"{row.z} = 5 or {row.n} = 5", true},
        HoldsCase{"not ({row.z} = 5 or {row.n} = 6)", false}, HoldsCase{"{row.none} < Date(2026,1,1)", false},
        HoldsCase{"not {row.none} < Date(2026,1,1)", false}, HoldsCase{"{row.g} > {?Vuota}", false},
        HoldsCase{"{row.n} in {row.z} to 4", false}, HoldsCase{"not {row.n} in {row.z} to 4", true},
        HoldsCase{"not {row.n} in {row.z} to 6", false}, HoldsCase{"{row.g} <> 5", false}));

// --- on an archive

class FormulaArchiveTest : public ArchiveTest {
  protected:
    static constexpr long kCustomer = 90'001;

    void Rename(std::string_view name)
    {
        SACommand update(Cmd()->Connection(), "UPDATE admin.clienti1 SET cli_desc = :name WHERE cli_codice = 1");
        update.Param("name").setAsString(name);
        update.Execute();
    }

    /// Codes of the customers that the formula selects, as a report would.
    std::string Selected(const std::string &formula)
    {
        const SelectionFormula::Sql sql = SelectionFormula::Parse(formula).ToSql("f", ParameterValue);
        SACommand query(Cmd()->Connection(), "SELECT cli_codice FROM admin.clienti1 AS clienti WHERE " + sql.condition +
                                                 " AND cli_codice <= 5 ORDER BY cli_codice");
        for (const auto &[name, value] : sql.parameters) {
            SAParam &parameter = query.Param(name);
            if (const auto *whole = std::get_if<long long>(&value)) parameter.setAsInt64(*whole);
            if (const auto *number = std::get_if<double>(&value)) parameter.setAsDouble(*number);
            if (const auto *text = std::get_if<std::string>(&value)) parameter.setAsString(*text);
            if (const auto *date = std::get_if<ReportDate>(&value)) parameter.setAsDateTime(ToSqlDate(date->day));
        }
        query.Execute();
        std::string codes;
        while (query.FetchNext()) codes += query.Field(1).asString() + " ";
        return codes;
    }
};

INSTANTIATE_TEST_SUITE_P(Engines, FormulaArchiveTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(FormulaArchiveTest, HostileTextsSelectByValueOnly)
{
    const std::string before = Value("SELECT COUNT(*) FROM admin.clienti1");
    for (const char *hostile :
         {"O'Neil", "Bar \"Sport\"", "x' OR '1'='1", "\" OR \"1\"=\"1", "'; DROP TABLE admin.clienti1; --",
          "{clienti.cli_desc}", "{selection}", "{?Anno}", ":f1", "$1 ?1", "/* */ --", "a\\' OR 1=1", "%_",
          "AND or NOT in 1 to 2", "$$x$$", "E'\\x27'", "1 = 1", "città di Forlì"}) {
        Rename(hostile);
        const std::string formula = "{clienti.cli_desc} = " + FormulaText(hostile);
        EXPECT_EQ(Selected(formula), "1 ") << hostile;
        EXPECT_EQ(Selected("not " + formula), "2 3 4 5 ") << hostile;
        EXPECT_EQ(Selected("{clienti.cli_codice} = 2 or " + formula), "1 2 ") << hostile;
    }
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.clienti1"), before);
}

TEST_P(FormulaArchiveTest, EveryKindOfConditionRuns)
{
    Run("UPDATE admin.clienti1 SET cli_data_cessazione = '2026-03-31' WHERE cli_codice = 3");
    EXPECT_EQ(Selected("{clienti.cli_codice} in 2 to 3"), "2 3 ");
    EXPECT_EQ(Selected("{clienti.cli_codice} > 2.5 and {clienti.cli_codice} < 99999999999"), "3 4 5 ");
    EXPECT_EQ(Selected("{clienti.cli_data_cessazione} in Date(2026,3,1) to Date (2026,3,31)"), "3 ");
    EXPECT_EQ(Selected("not {clienti.cli_data_cessazione} > {?Dal}"), "3 "); // NULL is not selected by its opposite
    EXPECT_EQ(Selected("{clienti.cli_data_cessazione} <> {?Vuota}"), "");
    EXPECT_EQ(Selected("{?Dal} in {clienti.cli_data_cessazione} to {clienti.cli_data_cessazione}"), "3 ");
    EXPECT_EQ(Selected("{clienti.cli_piva} <> ''"), "1 2 3 4 5 ");
    EXPECT_EQ(Selected("{?Anno} = 2026 and not ({?Vuota} = 1)"), "");
    EXPECT_EQ(Selected("1 = 1 or {clienti.cli_codice} = 9"), "1 2 3 4 5 ");
    EXPECT_EQ(Selected(""), "1 2 3 4 5 ");
    // The deepest and longest formulas that are let through are not too much for an engine.
    const std::string code = "{clienti.cli_codice}";
    const std::string many = Repeated(code + "=3 or ", 359) + code + "=5";
    EXPECT_EQ(Selected(Repeated("not ", 20) + code + "=3 or " + many), "3 5 ");
    EXPECT_EQ(Selected(Repeated("not (", 10) + many + Repeated(")", 10)), "3 5 ");
    EXPECT_EQ(Selected(Repeated(code + "=1 or (" + code + ">1 and (", 10) + many + Repeated("))", 10)), "1 3 5 ");
}

} // namespace

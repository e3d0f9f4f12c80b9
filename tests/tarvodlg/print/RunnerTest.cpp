#include "tarvodlg/print/ReportRunner.h"

#include "tarvodlg/base/Dates.h"
#include "tests/support/TestArchive.h"
#include "tests/tarvodlg/print/RecordingPages.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Lines = std::vector<std::string>;

/// A layout over admin.prova (num, gruppo, sotto, importo, nota, giorno) on A5 across: bands of 190 mm, 128 mm for all
/// of them on a page.
std::string Layout(const std::string &bands, const std::string &parameters = "",
                   const std::string &selection = "{selection}")
{
    return "<report title=\"Prova\" paper=\"A5\" orientation=\"landscape\" margin=\"10\"><tables>"
           "<table name=\"righe\" from=\"admin.prova\"/></tables><query>SELECT num, gruppo, sotto, importo, nota, "
           "giorno"
           " FROM {righe} WHERE " +
           selection + " ORDER BY gruppo, sotto, num</query><parameters>" + parameters + "</parameters>" + bands +
           "</report>";
}

constexpr const char *kDetail = R"(<detail height="10"><field of="num" x="0" w="20" format="code"/>
    <field of="importo" x="30" w="30" format="0,00"/></detail>)";

class RunnerTest : public ArchiveTest {
  protected:
    void SetUp() override
    {
        ArchiveTest::SetUp();
        if (!database_) return;
        Run("CREATE TABLE admin.prova (num INTEGER NOT NULL, gruppo VARCHAR(10), sotto VARCHAR(10),"
            " importo DOUBLE PRECISION, nota VARCHAR(200), giorno DATE)");
    }
    void Add(int num, const char *group, const char *sub, double amount, const char *note = nullptr)
    {
        SACommand insert(Cmd()->Connection(), "INSERT INTO admin.prova (num, gruppo, sotto, importo, nota, giorno)"
                                              " VALUES (:num, :gruppo, :sotto, :importo, :nota, :giorno)");
        insert.Param("num").setAsLong(num);
        insert.Param("gruppo").setAsString(group);
        insert.Param("sotto").setAsString(sub);
        insert.Param("importo").setAsDouble(amount);
        if (note != nullptr) insert.Param("nota").setAsString(note);
        insert.Param("giorno").setAsDateTime(SADateTime(2026, 1, num % 28 + 1));
        insert.Execute();
    }
    void AddMany(int rows)
    {
        SATransaction all(Cmd());
        for (int i = 1; i <= rows; ++i) Add(i, "A", "a", 10.05);
        all.Commit();
    }
    static ReportRequest Request(const std::string &layout)
    {
        ReportRequest request;
        request.layout = ParseLayout(layout, "prova.rpt");
        return request;
    }
    ReportResult Print(const ReportRequest &request) { return RunReport(Cmd(), request, pages_); }
    ReportResult Print(const std::string &layout) { return Print(Request(layout)); }
    /// The message of the report that is refused.
    std::string Refusal(const ReportRequest &request)
    {
        try {
            Print(request);
        } catch (const ReportError &error) {
            return error.what();
        }
        return "(stampato)";
    }

    RecordingPages pages_;
};

INSTANTIATE_TEST_SUITE_P(Engines, RunnerTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(RunnerTest, NestsGroupsAndAddsInCents)
{
    for (int i = 0; i < 3; ++i) Add(i, "A", "a", 0.1); // 0.1 three times is not 0.3 in binary
    Add(3, "A", "b", 1234.5);
    Add(4, "B", "b", -0.01); // the inner value stays, the outer one changes: both groups end
    Print(Layout(R"(
        <group by="gruppo"><header height="5"><field of="gruppo" w="20"/></header>
          <footer height="5"><text w="20">Tot</text><sum of="importo" x="30" w="30"/><count x="70" w="9"/></footer></group>
        <group by="sotto"><header height="5"><field of="sotto" x="5" w="20"/></header>
          <footer height="5"><text x="5" w="20">tot</text><sum of="importo" x="30" w="30"/>
            <running of="importo" x="70" w="30"/></footer></group>
        <detail height="5"><field of="num" x="10" w="10"/></detail>
        <report-footer height="5"><text w="20">Fine</text><sum of="importo" x="30" w="30"/><count x="70" w="9"/></report-footer>)"));
    ASSERT_EQ(pages_.pages.size(), 1u);
    EXPECT_THAT(pages_.pages[0],
                ElementsAre("A", "a", "0", "1", "2", "tot|0,30|0,30", "b", "3", "tot|1.234,50|1.234,80",
                            "Tot|1.234,80|4", "B", "b", "4", "tot|-0,01|1.234,79", "Tot|-0,01|1", "Fine|1.234,79|5"));
}

constexpr const char *kCarrying = R"(
    <page-header height="8"><text w="20">Pag.</text><page x="30" w="20"/>
      <text y="4" w="20" when="{row.report_page} > 1">Riporto</text>
      <running of="importo" x="30" y="4" w="30" when="{row.report_page} > 1"/></page-header>
    <page-footer height="10"><text w="20" when="{row.report_end} = 0">A riportare</text>
      <running of="importo" x="30" w="30" when="{row.report_end} = 0"/></page-footer>
    <report-footer height="10"><text w="20">Totale</text><sum of="importo" x="30" w="30"/></report-footer>)";

TEST_P(RunnerTest, CarriesSumsFromPageToPage)
{
    AddMany(25); // eleven rows of 10 mm fit in 128 - 18
    ReportRequest request = Request(Layout(std::string(kCarrying) + kDetail));
    request.first_page = 41;
    const ReportResult result = Print(request);
    EXPECT_EQ(result.rows, 25);
    EXPECT_EQ(result.pages, 3);
    EXPECT_THAT(pages_.numbers, ElementsAre(41, 42, 43));
    ASSERT_EQ(pages_.pages.size(), 3u);
    EXPECT_EQ(pages_.pages[0].front(), "Pag.|41");
    EXPECT_EQ(pages_.pages[0][1], "1|10,05");
    EXPECT_EQ(pages_.pages[0].size(), 13u);
    EXPECT_EQ(pages_.pages[0].back(), "A riportare|110,55");
    EXPECT_EQ(pages_.pages[1][1], "Riporto|110,55");
    EXPECT_EQ(pages_.pages[1][2], "12|10,05");
    EXPECT_EQ(pages_.pages[1].back(), "A riportare|221,10");
    EXPECT_THAT(pages_.pages[2],
                ElementsAre("Pag.|43", "Riporto|221,10", "23|10,05", "24|10,05", "25|10,05", "Totale|251,25"));
}

TEST_P(RunnerTest, MovesTheTotalsToTheNextPageWhole)
{
    AddMany(11);
    Print(Layout(std::string(kCarrying) + kDetail));
    ASSERT_EQ(pages_.pages.size(), 2u);
    EXPECT_EQ(pages_.pages[0].back(), "A riportare|110,55");
    EXPECT_THAT(pages_.pages[1], ElementsAre("Pag.|2", "Riporto|110,55", "Totale|110,55"));
}

TEST_P(RunnerTest, PrintsAPageWhenThereAreNoRows)
{
    const ReportResult result = Print(Layout(std::string(kCarrying) + kDetail + R"(
        <group by="gruppo"><header height="5"><field of="gruppo" w="20"/></header></group>)"));
    EXPECT_EQ(result.rows, 0);
    EXPECT_EQ(result.pages, 1);
    ASSERT_EQ(pages_.pages.size(), 1u);
    EXPECT_THAT(pages_.pages[0], ElementsAre("Pag.|1", "Totale|0,00"));
}

TEST_P(RunnerTest, KeepsAHeaderWithItsFirstDetail)
{
    for (int i = 0; i < 11; ++i) Add(i, "A", "a", 1);
    Add(11, "B", "b", 1);
    const auto groups = [](const char *keep) {
        return Layout(std::string("<group by=\"gruppo\" keep=\"") + keep +
                      "\"><header height=\"8\"><field of=\"gruppo\" w=\"20\"/></header></group>"
                      "<detail height=\"10\"><field of=\"num\" w=\"20\"/></detail>");
    };
    Print(groups("yes")); // 8 + 110 leave 10: room for the header of B, not for its row
    ASSERT_EQ(pages_.pages.size(), 2u);
    EXPECT_EQ(pages_.pages[0].back(), "10");
    EXPECT_THAT(pages_.pages[1], ElementsAre("B", "11"));
    pages_.pages.clear();
    Print(groups("no"));
    EXPECT_EQ(pages_.pages[0].back(), "B");
    EXPECT_THAT(pages_.pages[1], ElementsAre("11"));
}

TEST_P(RunnerTest, BeginsGroupsOnPagesOfTheirOwn)
{
    Add(1, "A", "a", 1);
    Add(2, "A", "b", 1);
    Add(3, "B", "b", 1);
    Print(Layout(R"(<page-header height="5"><text w="9">di</text><field of="gruppo" x="10" w="20"/></page-header>
        <group by="gruppo" new-page="yes"><footer height="5"><text w="20">tot</text><sum of="importo" x="30" w="20"/></footer></group>
        <detail height="5"><field of="num" w="20"/></detail>)"));
    ASSERT_EQ(pages_.pages.size(), 2u);
    EXPECT_THAT(pages_.pages[0], ElementsAre("di|A", "1", "2", "tot|2,00"));
    EXPECT_THAT(pages_.pages[1], ElementsAre("di|B", "3", "tot|1,00"));
}

TEST_P(RunnerTest, AsksWhenOfBandsAndItems)
{
    Add(1, "A", "a", 5, "vedi");
    Add(2, "A", "a", 0, "zero");
    Add(7, "A", "007", -5);
    ReportRequest request = Request(Layout(R"xml(
        <detail height="5"><field of="num" w="9"/><field of="importo" x="10" w="20" format="0,00z"/>
          <text x="40" w="20" when="{row.importo} &lt; 0 and {row.sotto} = '007'">credito</text>
          <field of="nota" x="70" w="20" when="{?Note} = 'si'"/><field of="giorno" x="100" w="20" format="date"/></detail>
        <detail height="5" when="{row.nota} = &quot;zero&quot; or {row.giorno} = Date(2026,1,8)"><text x="5" w="20">seguito</text></detail>)xml",
                                           "<parameter name=\"Note\" type=\"string\"/>"));
    request.parameters["Note"] = std::string("si");
    Print(request);
    EXPECT_THAT(pages_.pages[0], ElementsAre("7|-5,00|credito|08/01/2026", "seguito", "1|5,00|vedi|02/01/2026",
                                             "2|zero|03/01/2026", "seguito"));
}

TEST_P(RunnerTest, GrowsWithWrappedTexts)
{
    Add(1, "A", "a", 1, "uno due tre quattro");
    Add(2, "A", "a", 1, "breve");
    pages_.letters_per_line = 8;
    Print(Layout(R"(<detail height="4"><field of="num" w="9"/><field of="nota" x="10" w="20" wrap="yes"/></detail>)"));
    EXPECT_THAT(pages_.pages[0], ElementsAre("1|uno due ", "tre quat", "tro", "2|breve"));
}

TEST_P(RunnerTest, SplitsWhatIsHigherThanAPage)
{
    const std::string long_text(400, 'x'); // 50 lines of 3.4 mm
    Run("INSERT INTO admin.prova (num, nota) VALUES (1, '" + long_text.substr(0, 200) + "')");
    pages_.letters_per_line = 4;
    Print(Layout(R"(<detail height="4"><field of="num" w="9"/><field of="nota" x="10" w="20" wrap="yes"/></detail>)"));
    ASSERT_EQ(pages_.pages.size(), 2u);
    EXPECT_EQ(pages_.pages[0].size() + pages_.pages[1].size(), 50u);
    EXPECT_LT(pages_.lowest, 138);
}

// --------------------------------------------------------------------------------------------------------- sub-reports

const std::string kWithSub = R"(
    <detail height="5"><field of="num" w="9"/><text x="100" w="20" y="0">dopo</text>
      <subreport name="Parti" x="20" y="5" link="Numero=num,Segno=?Segno"/></detail>
    <report-footer height="5"><sum of="importo" w="30"/><count x="40" w="20" format="code"/></report-footer>
    <subreport name="Parti"><tables><table name="parti" from="admin.parti"/></tables>
      <query>SELECT par_desc, par_euro FROM {parti} WHERE par_num = :Numero AND {selection} ORDER BY par_desc</query>
      <parameters><parameter name="Numero" type="long"/><parameter name="Segno" type="string"/></parameters>
      <detail height="5"><param name="Segno" w="5"/><field of="par_desc" x="6" w="20"/></detail>
      <report-footer height="5" ><text x="6" w="20">parti</text><sum of="par_euro" x="30" w="20"/></report-footer>
    </subreport>)";

class SubReportTest : public RunnerTest {
  protected:
    void SetUp() override
    {
        RunnerTest::SetUp();
        if (!database_) return;
        Run("CREATE TABLE admin.parti (par_num INTEGER, par_desc VARCHAR(20), par_euro DOUBLE PRECISION)");
    }
    static ReportRequest WithSub()
    {
        ReportRequest request = Request(Layout(kWithSub, "<parameter name=\"Segno\" type=\"string\"/>"));
        request.parameters["Segno"] = std::string("-");
        return request;
    }
};

INSTANTIATE_TEST_SUITE_P(Engines, SubReportTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(SubReportTest, PrintsSubReportsAtTheirPlace)
{
    for (int i = 1; i <= 3; ++i) Add(i, "A", "a", i);
    Run("INSERT INTO admin.parti VALUES (1, 'x', 0.1), (1, 'y', 0.2), (3, 'z', 5), (3, 'nascosta', 9)");
    ReportRequest request = WithSub();
    request.sub_selections["Parti"] = "{parti.par_desc} <> 'nascosta'";
    Print(request);
    EXPECT_THAT(pages_.pages[0], ElementsAre("1|dopo", "-|x", "-|y", "parti|0,30", "2|dopo", "parti|0,00", "3|dopo",
                                             "-|z", "parti|5,00", "6,00|3"));
}

TEST_P(SubReportTest, FlowsALongSubReportOverPages)
{
    Add(1, "A", "a", 1);
    Add(2, "A", "a", 1);
    for (int i = 10; i < 60; ++i) Run(fmt::format("INSERT INTO admin.parti VALUES (2, 'p{}', 1)", i));
    Print(WithSub());
    ASSERT_EQ(pages_.pages.size(), 3u); // 10 + 5 + 51 * 5 + 5 in rooms of 128
    EXPECT_EQ(pages_.pages[0][2], "2|dopo");
    EXPECT_EQ(pages_.pages[1].size(), 25u);
    EXPECT_EQ(pages_.pages[2].back(), "2,00|2");
    EXPECT_LT(pages_.lowest, 138);
}

// More rows than the portions in which they are fetched while another query runs in between.
TEST_P(SubReportTest, BringsEveryRowBesideTheQueriesOfSubReports)
{
    AddMany(1202);
    ReportRequest request = WithSub();
    request.selection = "{righe.num} > 1 and {righe.giorno} >= Date(2026,1,1)";
    EXPECT_EQ(Print(request).rows, 1201);
    EXPECT_EQ(pages_.pages.back().back(), "12.070,05|1201");
    EXPECT_EQ(Print(request).rows, 1201) << "a second time on the same connection";
}

// ---------------------------------------------------------------------------------------------- tables, names,
// formulas

TEST_P(RunnerTest, PrintsTheTableInThePlaceOfAnother)
{
    Add(1, "A", "a", 1);
    Run("CREATE TABLE admin.prova_3 AS SELECT * FROM admin.prova");
    Run("UPDATE admin.prova_3 SET num = 77");
    ReportRequest request = Request(Layout(kDetail));
    request.tables["righe"] = "admin.prova_3";
    request.selection = "{righe.num} = 77";
    Print(request);
    EXPECT_THAT(pages_.pages[0], ElementsAre("77|1,00"));
}

struct Refused {
    const char *name;
    std::function<void(ReportRequest *)> change;
    const char *message;
};
const Refused kRefused[] = {
    {"Well", [](ReportRequest *) {}, "(stampato)"},
    {"InjectedTable", [](ReportRequest *r) { r->tables["righe"] = "admin.prova AS x; DROP TABLE admin.prova"; },
     "prova.rpt: \"admin.prova AS x; DROP TABLE admin.prova\" non è il nome di una tabella (per \"righe\")"},
    {"TableWithoutSchema", [](ReportRequest *r) { r->tables["righe"] = "prova"; },
     "prova.rpt: \"prova\" non è il nome di una tabella (per \"righe\")"},
    {"UnknownTable", [](ReportRequest *r) { r->tables["altre"] = "admin.prova"; },
     "prova.rpt: la stampa non ha la tabella \"altre\""},
    {"MissingParameter", [](ReportRequest *r) { r->parameters.erase("Dal"); }, "prova.rpt: manca il parametro \"Dal\""},
    {"UnknownParameter", [](ReportRequest *r) { r->parameters["dal"] = ReportDate{1}; },
     "prova.rpt: la stampa non ha il parametro \"dal\""},
    {"ParameterOfAnotherKind", [](ReportRequest *r) { r->parameters["Dal"] = 5LL; },
     "prova.rpt: il parametro \"Dal\" deve essere una data"},
    {"UnknownSubReport", [](ReportRequest *r) { r->sub_selections["Parti"] = ""; },
     "prova.rpt: la stampa non ha il sotto-report \"Parti\""},
    {"FormulaOfAnotherTable", [](ReportRequest *r) { r->selection = "{pnota.num} = 1"; },
     "Formula di selezione, carattere 1: la stampa non ha la tabella \"pnota\""},
    {"FormulaOfAnotherColumn", [](ReportRequest *r) { r->selection = "{righe.num}=1 AND {righe.numero}=2"; },
     "Formula di selezione, carattere 19: la tabella \"righe\" non ha la colonna \"numero\""},
    {"FormulaOfAnUnknownParameter", [](ReportRequest *r) { r->selection = "{righe.num} = {?Quanti}"; },
     "prova.rpt: la stampa non ha il parametro \"Quanti\""},
};

class RefusalTest : public RunnerTest {};
INSTANTIATE_TEST_SUITE_P(Engines, RefusalTest, testing::ValuesIn(TestEngines()), TestEngineName);

TEST_P(RefusalTest, NamesWhatCannotBeUsed)
{
    Add(1, "A", "a", 1);
    for (const Refused &refused : kRefused) {
        ReportRequest request = Request(
            Layout(std::string(kDetail) + "<report-footer height=\"5\"><param name=\"Dal\" w=\"30\"/></report-footer>",
                   "<parameter name=\"Dal\" type=\"date\"/>"));
        request.parameters["Dal"] = ReportDate{DateToJulian(31, 1, 2026)};
        refused.change(&request);
        EXPECT_EQ(Refusal(request), refused.message) << refused.name;
    }
    EXPECT_EQ(Value("SELECT COUNT(*) FROM admin.prova"), "1") << "the connection works on, the table is there";
    EXPECT_EQ(pages_.pages.size(), 1u) << "only the good one was printed";
}

TEST_P(RunnerTest, NamesAColumnThatTheQueryDoesNotGive)
{
    Add(1, "A", "a", 1);
    const char *const bands[] = {
        "<detail height=\"5\"><!-- --><field of=\"sconto\" w=\"20\"/></detail>",
        "<detail height=\"5\"><!-- --><text when=\"{row.sconto} = 1\">x</text></detail>",
        "<detail height=\"0\"/><!-- --><detail height=\"5\" when=\"{row.sconto} = 1\"/>",
        "<detail height=\"5\"/><!-- --><group by=\"sconto\"/>",
        "<report-footer height=\"5\"><!-- --><sum of=\"sconto\"/></report-footer>",
    };
    for (const char *band : bands) {
        const std::string layout = Layout(band);
        const std::size_t column = layout.find("<!-- -->") + std::string_view("<!-- -->").size() + 1;
        EXPECT_EQ(Refusal(Request(layout)),
                  fmt::format("prova.rpt, riga 1, colonna {}: la query non dà la colonna \"sconto\"", column));
    }
}

TEST_P(RunnerTest, NamesTheQueryThatTheEngineDoesNotTake)
{
    for (const char *wrong : {"{selection} AND sconto = 1", "{selection} AND AND", "{selection} AND nulla.num = 1"}) {
        const std::string layout = Layout(kDetail, "", wrong);
        const std::string where =
            fmt::format("prova.rpt, riga 1, colonna {}: la query non si può eseguire: ", layout.find("<query>") + 1);
        EXPECT_THAT(Refusal(Request(layout)), testing::StartsWith(where)) << wrong;
    }
    EXPECT_EQ(Refusal(Request(Layout(kDetail))), "(stampato)") << "the connection works on";
}

TEST_P(RunnerTest, SelectsByValueWhateverTheValueHolds)
{
    const char *const notes[] = {"O'Neil", "{righe.num}", "1 OR 1 = 1 --", "%", "a\"b", ":num"};
    int num = 0;
    for (const char *note : notes) Add(++num, "A", "a", 1, note);
    for (const char *note : notes) {
        ReportRequest request = Request(Layout("<detail height=\"5\"><field of=\"nota\" w=\"50\"/></detail>"));
        std::string quoted;
        for (const char *c = note; *c != 0; ++c) quoted += *c == '"' ? std::string("\"\"") : std::string(1, *c);
        request.selection = "{righe.nota} = \"" + quoted + "\"";
        pages_.pages.clear();
        Print(request);
        EXPECT_THAT(pages_.pages, ElementsAre(ElementsAre(note))) << request.selection;
    }
}

// ---------------------------------------------------------------------------------------------------------------- rows

struct RecordingWriter : RowWriter {
    std::vector<std::vector<ReportValue>> *rows;
    bool *finished;
    RecordingWriter(std::vector<std::vector<ReportValue>> *r, bool *f) : rows(r), finished(f) {}
    void Add(std::span<const ReportValue> values) override { rows->emplace_back(values.begin(), values.end()); }
    void Finish() override { *finished = true; }
};

TEST_P(RunnerTest, GivesTheDetailRowsWithTheirTitles)
{
    Add(1, "A", "a", 1234.5, "007");
    Add(2, "A", "hidden", 1);
    Run("INSERT INTO admin.prova (num, gruppo, sotto) VALUES (3, 'A', 'z')");
    const ReportRequest request = Request(Layout(R"(
        <page-header height="10"><text w="100">Titolo della stampa</text><text x="0" y="5" w="10" align="right">N.</text>
          <text x="15" y="5" w="40">Nota</text><text x="60" y="5" w="30" align="right">Importo</text></page-header>
        <detail height="5" when="{row.sotto} &lt;> 'hidden'"><field of="gruppo" title="Gruppo"/><field of="num" w="10" format="code"/><field of="nota" x="15" w="40"/>
          <field of="importo" x="60" w="30" format="0,00z"/><field of="giorno" x="100" w="20" format="date"/></detail>)"));
    std::vector<RowColumn> columns;
    std::vector<std::vector<ReportValue>> rows;
    bool finished = false;
    const ReportResult result = RunReportRows(Cmd(), request, [&](std::vector<RowColumn> given) {
        columns = std::move(given);
        return std::make_unique<RecordingWriter>(&rows, &finished);
    });
    EXPECT_EQ(result.rows, 2);
    EXPECT_TRUE(finished);
    Lines titles;
    for (const RowColumn &column : columns) titles.push_back(column.title);
    EXPECT_THAT(titles, ElementsAre("Gruppo", "N.", "Nota", "Importo", "giorno"));
    EXPECT_EQ(columns[1].format, ColumnFormat::Code);
    EXPECT_EQ(columns[3].format, ColumnFormat::Amount);
    EXPECT_EQ(columns[4].format, ColumnFormat::Date);
    const ReportValue none;
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0], (std::vector<ReportValue>{"A", 1LL, "007", 1234.5, ReportDate{DateToJulian(2, 1, 2026)}}));
    EXPECT_EQ(rows[1], (std::vector<ReportValue>{"A", 3LL, none, none, none}));
}

} // namespace

#include "tarvodlg/base/Files.h"
#include "tarvodlg/print/ReportLayout.h"
#include "tarvolumera/Company.h"
#include "tests/support/TestDatabase.h"

namespace {

/// Line numbers in the cases below are those of this text.
const std::string kLayout =
    R"(<report title="Prova" paper="A4" orientation="landscape" margin="10" font="Sans" size="8">
  <tables>
    <table name="pnota" from="admin.pnota1"/>
    <table name="sezioni" from="admin.sezioni"/>
  </tables>
  <query>SELECT pnota.pno_codice FROM {pnota} JOIN {sezioni} ON pno_sez = sez_codice
    WHERE {selection} AND pno_anno = :Anno</query>
  <parameters><parameter name="Anno" type="long"/><parameter name="Logo" type="string"/></parameters>
  <page-header height="18">
    <text x="0" y="0" w="60" bold="yes" size="10" color="#006000">Sociètà &amp; C.</text>
    <image param="Logo" x="200" y="1" w="60" h="15"/>
  </page-header>
  <group by="pno_data, pno_sez" new-page="yes" keep="no">
    <header height="6" when="{row.pno_sez} > 0"><field of="pno_data" format="date"/></header>
    <footer height="6"><sum of="pno_dare" x="100" w="30" align="right" format="0,00z"/></footer>
  </group>
  <detail height="4.5"><field of="pno_desc" wrap="yes" italic="yes" when="{row.pno_dare} &lt;> {?Anno}"/></detail>
  <detail height="20"><subreport name="Iva" x="5" y="0" link="Codice=pno_codice,Anno=?Anno"/></detail>
  <report-footer height="12"><count x="0" w="20"/><line x="0" y="2" w="277"/><box x="1" y="1" w="9" h="9"/></report-footer>
  <page-footer height="6"><page x="250" w="27"/><running of="pno_dare" x="0" w="30"/><param name="Anno"/></page-footer>
  <subreport name="Iva">
    <tables><table name="righe" from="admin.righeiva"/></tables>
    <query>SELECT * FROM {righe} WHERE righe.codice = :Codice AND righe.anno = :Anno</query>
    <parameters><parameter name="Codice" type="long"/><parameter name="Anno" type="long"/></parameters>
    <detail height="4"><field of="aliquota"/></detail>
  </subreport>
</report>
)";

TEST(ReportLayout, ReadsAllThatALayoutMaySay)
{
    const ReportLayout layout = ParseLayout("\xEF\xBB\xBF" + kLayout, "prova.rpt");
    EXPECT_EQ(layout.title, "Prova");
    EXPECT_TRUE(layout.landscape);
    EXPECT_EQ(layout.font, "Sans");
    ASSERT_EQ(layout.tables.size(), 2u);
    EXPECT_EQ(layout.tables[1].from, "admin.sezioni");
    EXPECT_TRUE(layout.query.starts_with("SELECT pnota")) << layout.query;
    ASSERT_EQ(layout.parameters.size(), 2u);
    EXPECT_EQ(layout.parameters[0].type, ParameterType::Long);

    const ReportBand *page_header = layout.Band(BandKind::PageHeader);
    ASSERT_NE(page_header, nullptr);
    EXPECT_EQ(page_header->height, 18);
    ASSERT_EQ(page_header->items.size(), 2u);
    const ReportItem &title = page_header->items[0];
    EXPECT_EQ(title.text, "Sociètà & C.");
    EXPECT_TRUE(title.bold && !title.italic && !title.wrap);
    EXPECT_EQ(title.color, "#006000");
    EXPECT_EQ(title.place.line, 10u);
    EXPECT_EQ(page_header->items[1].kind, ItemKind::Image);
    EXPECT_EQ(page_header->items[1].text, "Logo");

    ASSERT_EQ(layout.groups.size(), 1u);
    const ReportGroup &group = layout.groups[0];
    EXPECT_EQ(group.by, (std::vector<std::string>{"pno_data", "pno_sez"}));
    EXPECT_TRUE(group.new_page && !group.keep);
    ASSERT_TRUE(group.header && group.footer);
    EXPECT_FALSE(group.header->when.IsEmpty());
    const ReportItem &sum = group.footer->items.at(0);
    EXPECT_EQ(sum.kind, ItemKind::Sum);
    EXPECT_EQ(sum.align, ItemAlign::Right);
    EXPECT_EQ(sum.format, "0,00z");

    ASSERT_EQ(layout.bands.size(), 5u);
    EXPECT_EQ(layout.bands[1].items.at(0).when.Columns().at(0).column, "pno_dare");
    EXPECT_EQ(layout.bands[2].items.at(0).link, "Codice=pno_codice,Anno=?Anno");
    EXPECT_EQ(layout.Band(BandKind::ReportHeader), nullptr);
    ASSERT_EQ(layout.subreports.size(), 1u);
    EXPECT_EQ(layout.subreports[0]->name, "Iva");
    EXPECT_EQ(layout.subreports[0]->bands.at(0).items.at(0).text, "aliquota");
}

struct LayoutCase {
    const char *name;
    const char *found; ///< in the layout above
    std::string replaced_by;
    const char *message; ///< behind "prova.rpt, riga "
};
void PrintTo(const LayoutCase &c, std::ostream *out)
{
    *out << c.name;
}
class LayoutFaultTest : public testing::TestWithParam<LayoutCase> {};

TEST_P(LayoutFaultTest, NamesLineAndColumn)
{
    std::string text = kLayout;
    const std::size_t place = text.find(GetParam().found);
    ASSERT_NE(place, std::string::npos);
    text.replace(place, std::string_view(GetParam().found).size(), GetParam().replaced_by);
    try {
        ParseLayout(text, "prova.rpt");
        FAIL() << "accepted";
    } catch (const ReportError &error) {
        EXPECT_EQ(error.what(), std::string("prova.rpt, riga ") + GetParam().message);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Xml, LayoutFaultTest,
    testing::Values(
        LayoutCase{"NotClosed", "</query>", "", "27, colonna 3: la chiusura non è quella dell'elemento aperto"},
        LayoutCase{"BadAttribute", "x=\"0\" y=\"0\" w=\"60\"", "x=0", "10, colonna 13: attributo malformato"},
        LayoutCase{"TwoRoots", "</report>", "</report><report/>",
                   "27, colonna 10: un layout ha un solo elemento esterno"},
        LayoutCase{"DocumentType", "<report title",
                   "<!DOCTYPE x [<!ENTITY a SYSTEM 'file:///etc/passwd'>]><report title",
                   "1, colonna 1: un layout non ha DOCTYPE"},
        LayoutCase{"OldCodePage", "Sociètà", "Societ\xE0", "10, colonna 73: il file non è un testo UTF-8"},
        LayoutCase{"UnknownElement", "<page-footer", "<footer/><page-footer",
                   "20, colonna 3: elemento sconosciuto <footer>"},
        LayoutCase{"UnknownItem", "<count x", "<totale x", "19, colonna 30: elemento sconosciuto <totale>"},
        LayoutCase{"UnknownAttribute", " keep=\"no\"", " tieni=\"no\"",
                   "13, colonna 48: attributo sconosciuto \"tieni\" di <group>"},
        LayoutCase{"AttributeOfAnother", "<line x=\"0\"", "<line bold=\"yes\"",
                   "19, colonna 57: attributo sconosciuto \"bold\" di <line>"},
        LayoutCase{"AttributeTwice", "w=\"20\"/>", "w=\"20\" x=\"1\"/>", "19, colonna 37: attributo \"x\" ripetuto"},
        LayoutCase{"BandTwice", "<detail height=\"20\">", "<page-header height=\"1\"/><detail height=\"20\">",
                   "18, colonna 3: <page-header> ripetuto"},
        LayoutCase{"StrayText", "<parameters>", "<parameters>così", "8, colonna 15: testo fuori posto in <parameters>"},
        LayoutCase{"TextInBand", "<count x", "Totale <count x", "19, colonna 30: testo fuori posto in <report-footer>"},
        LayoutCase{"ElementInText", "&amp;", "<b/>", "10, colonna 5: <text> non contiene altro"}),
    [](const auto &p) { return std::string(p.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Values, LayoutFaultTest,
    testing::Values(
        LayoutCase{"Paper", "\"A4\"", "\"A2\"", "1, colonna 23: paper=\"A2\": ammessi A4 A3 A5 Letter"},
        LayoutCase{"Orientation", "\"landscape\"", "\"di lato\"",
                   "1, colonna 34: orientation=\"di lato\": ammessi portrait landscape"},
        LayoutCase{"DecimalComma", "height=\"4.5\"", "height=\"4,5\"",
                   "17, colonna 11: height=\"4,5\" non è un numero (esempio: 12.5)"},
        LayoutCase{"NegativePlace", "y=\"1\" w=\"60\"", "y=\"-1\" w=\"60\"",
                   "11, colonna 33: y=\"-1\" non è fra 0 e 1000"},
        LayoutCase{"NotANumber", "y=\"1\" w=\"60\"", "y=\"nan\" w=\"60\"",
                   "11, colonna 33: y=\"nan\" non è un numero (esempio: 12.5)"},
        LayoutCase{"YesOrNo", "new-page=\"yes\"", "new-page=\"sì\"", "13, colonna 33: new-page=\"sì\": ammessi no yes"},
        LayoutCase{"Color", "#006000", "green", "10, colonna 51: \"green\" non è un colore (esempio: #006000)"},
        LayoutCase{"Format", "0,00z", "#.##", "15, colonna 72: format=\"#.##\": ammessi 0 0,00 0,00z date code"},
        LayoutCase{"Align", "\"right\"", "\"destra\"", "15, colonna 58: align=\"destra\": ammessi left right center"},
        LayoutCase{"NoHeight", "<detail height=\"20\">", "<detail>",
                   "18, colonna 3: manca l'attributo \"height\" di <detail>"},
        LayoutCase{"NoColumn", "<field of=\"pno_data\"", "<field",
                   "14, colonna 49: manca l'attributo \"of\" di <field>"},
        LayoutCase{"ColumnIsNoName", "of=\"pno_desc\"", "of=\"pno desc\"",
                   "17, colonna 31: \"pno desc\" non è un nome di lettere, cifre e _"},
        LayoutCase{"GroupByNothing", "\"pno_data, pno_sez\"", "\"pno_data,\"",
                   "13, colonna 10: \"\" non è una colonna"},
        // 297 mm of paper less two margins
        LayoutCase{"TooFarRight", "x=\"250\" w=\"27\"", "x=\"277\"",
                   "20, colonna 33: fuori dalla pagina, larga 277 mm tra i margini"},
        LayoutCase{"TooWide", "y=\"2\" w=\"277\"", "y=\"2\" w=\"277.5\"",
                   "19, colonna 69: finisce a 277.5 mm, la pagina è larga 277 mm tra i margini"},
        LayoutCase{"OtherPaperTooNarrow", "orientation=\"landscape\" ", "",
                   "11, colonna 25: fuori dalla pagina, larga 190 mm tra i margini"},
        LayoutCase{"TooLow", "h=\"15\"", "h=\"17.5\"", "11, colonna 46: fuori dalla banda, alta 18 mm"},
        LayoutCase{"BandTooHigh", "<detail height=\"20\">", "<detail height=\"166.5\">",
                   "18, colonna 11: la banda è alta 166.5 mm e nella pagina ne restano 166"},
        LayoutCase{"NoRoomForRows", "<page-header height=\"18\">", "<page-header height=\"180\">",
                   "1, colonna 1: la testata e il piede riempiono la pagina"},
        LayoutCase{"SumInHeader", "<field of=\"pno_data\" format=\"date\"/>", "<sum of=\"pno_dare\"/>",
                   "14, colonna 49: <sum> sta solo nel piede di un gruppo o del report"},
        LayoutCase{"ColumnTitleOutsideTheDetail", "<field of=\"pno_data\" format=\"date\"/>",
                   "<field of=\"pno_data\" title=\"Data\"/>", "14, colonna 70: sta solo nei campi del dettaglio"},
        LayoutCase{"WhenBroken", "\"{row.pno_sez} > 0\"", "\"{row.pno_sez} > \"",
                   "14, colonna 24: when, carattere 17: atteso un valore dopo \">\""},
        LayoutCase{"WhenOfTable", "{row.pno_sez}", "{pnota.pno_sez}",
                   "14, colonna 24: when, carattere 1: atteso {row.pno_sez} al posto di {pnota.pno_sez}"}),
    [](const auto &p) { return std::string(p.param.name); });

INSTANTIATE_TEST_SUITE_P(
    References, LayoutFaultTest,
    testing::Values(
        LayoutCase{"TableTwice", "name=\"sezioni\"", "name=\"pnota\"", "4, colonna 12: tabella \"pnota\" ripetuta"},
        LayoutCase{"TableInUpperCase", "name=\"sezioni\"", "name=\"Sezioni\"",
                   "4, colonna 12: \"Sezioni\" non può essere il nome di una tabella"},
        LayoutCase{"TableSelection", "name=\"sezioni\"", "name=\"selection\"",
                   "4, colonna 12: \"selection\" non può essere il nome di una tabella"},
        LayoutCase{"RealTableIsSql", "admin.sezioni", "admin.sezioni; DROP TABLE x",
                   "4, colonna 27: \"admin.sezioni; DROP TABLE x\" non è schema.tabella"},
        LayoutCase{"RealTableAlone", "admin.sezioni", "sezioni", "4, colonna 27: \"sezioni\" non è schema.tabella"},
        LayoutCase{"UndeclaredTable", "{sezioni}", "{causali}",
                   "6, colonna 52: tabella sconosciuta \"{causali}\" nella query"},
        LayoutCase{"OpenBrace", "{selection} AND", "{selection AND",
                   "7, colonna 11: graffa senza la sua compagna nella query"},
        LayoutCase{"LoneBrace", "= sez_codice", "} sez_codice",
                   "6, colonna 73: graffa senza la sua compagna nella query"},
        LayoutCase{"SelectionInAComment", "{selection} AND", "1 = 1 -- {selection}\n  AND",
                   "7, colonna 17: {selection} sta in un commento o fra virgolette"},
        LayoutCase{"SelectionInAText", "{selection}", "'{selection}' = ''",
                   "7, colonna 11: {selection} sta in un commento o fra virgolette"},
        LayoutCase{"NoSelection", "{selection}", "1 = 1", "6, colonna 3: la query non ha {selection}"},
        LayoutCase{"SelectionTwice", "AND pno_anno", "AND {selection} AND pno_anno",
                   "6, colonna 3: la query ha {selection} più di una volta"},
        LayoutCase{"UndeclaredQueryParameter", ":Anno", ":Mese",
                   "7, colonna 38: parametro sconosciuto \":Mese\" nella query"},
        LayoutCase{"QueryWrites", "SELECT pnota.pno_codice FROM", "DELETE FROM",
                   "6, colonna 3: la query deve essere una sola SELECT"},
        LayoutCase{"QueryWritesInWith", "SELECT pnota", "WITH x AS (DELETE FROM admin.pnota1 RETURNING 1) SELECT pnota",
                   "6, colonna 3: la query deve essere una sola SELECT"},
        LayoutCase{"TwoStatements", "= :Anno<", "= :Anno; DROP TABLE admin.pnota1<",
                   "6, colonna 3: la query deve essere una sola SELECT"},
        LayoutCase{"ParameterTwice", "name=\"Logo\"", "name=\"anno\"", "8, colonna 62: parametro \"anno\" ripetuto"},
        LayoutCase{"ParameterType", "type=\"string\"", "type=\"testo\"",
                   "8, colonna 74: type=\"testo\": ammessi string long double date"},
        LayoutCase{"UnknownParameter", "<param name=\"Anno\"", "<param name=\"Mese\"",
                   "20, colonna 93: parametro sconosciuto \"Mese\""},
        LayoutCase{"UnknownImage", "image param=\"Logo\"", "image param=\"Marchio\"",
                   "11, colonna 12: parametro sconosciuto \"Marchio\""},
        LayoutCase{"ImageOfNumber", "image param=\"Logo\"", "image param=\"Anno\"",
                   "11, colonna 12: il parametro \"Anno\" non è il nome di un'immagine (string)"},
        LayoutCase{"UnknownParameterInWhen", "{?Anno}", "{?Mese}",
                   "17, colonna 69: when, carattere 19: parametro sconosciuto {?Mese}"},
        LayoutCase{"UnknownSubreport", "<subreport name=\"Iva\" x", "<subreport name=\"IVA\" x",
                   "18, colonna 34: sotto-report sconosciuto \"IVA\""},
        LayoutCase{"LinkToNothing", "link=\"Codice=", "link=\"Numero=",
                   "18, colonna 57: il sotto-report \"Iva\" non ha il parametro \"Numero\""},
        LayoutCase{"LinkFromNothing", "Anno=?Anno", "Anno=?Mese",
                   "18, colonna 57: \"?Mese\" non è una colonna o un parametro"},
        LayoutCase{"LinkWithoutSource", "Codice=pno_codice", "Codice",
                   "18, colonna 57: \"Codice\" non è Parametro=colonna o Parametro=?Parametro"},
        LayoutCase{"SubreportInSubreport", "<detail height=\"4\">", "<subreport name=\"x\"/><detail height=\"4\">",
                   "25, colonna 5: un sotto-report non ne contiene altri"},
        LayoutCase{"SubreportInPageBand", "<page x=\"250\"", "<subreport name=\"Iva\"/><page x=\"250\"",
                   "20, colonna 27: un sotto-report non sta nella testata o nel piede della pagina"}),
    [](const auto &p) { return std::string(p.param.name); });

TEST(ReportLayout, MissingPartsAreNamed)
{
    const auto message = [](const std::string &text) -> std::string {
        try {
            ParseLayout(text, "x.rpt");
        } catch (const ReportError &error) {
            return error.what();
        }
        return "accepted";
    };
    const std::string tables = "<tables><table name='a' from='admin.a'/></tables>";
    const std::string query = "<query>SELECT 1 FROM {a} WHERE <!-- always --> {selection}</query>";
    EXPECT_EQ(message(""), "x.rpt, riga 1, colonna 1: non contiene alcun elemento");
    EXPECT_EQ(message("<html/>"), "x.rpt, riga 1, colonna 1: atteso l'elemento <report>");
    EXPECT_EQ(message("\n\n <report/>"), "x.rpt, riga 3, colonna 2: manca l'elemento <tables>");
    EXPECT_EQ(message("<report><tables/></report>"), "x.rpt, riga 1, colonna 9: <tables> è vuoto");
    EXPECT_EQ(message("<report>" + tables + "</report>"), "x.rpt, riga 1, colonna 1: manca l'elemento <query>");
    EXPECT_EQ(message("<report>" + tables + "<query/></report>"), "x.rpt, riga 1, colonna 58: la query è vuota");
    EXPECT_EQ(message("<report>" + tables + query + "</report>"),
              "x.rpt, riga 1, colonna 1: il layout non stampa nulla");
    EXPECT_EQ(message("<report>" + tables + query + "<detail height='4'/></report>"), "accepted");
}

TEST(ReportLayout, HostileSizesAreRefused)
{
    EXPECT_THROW(ParseLayout(std::string(2 << 20, ' '), "x.rpt"), ReportError);
    std::string deep = "<report>";
    for (int i = 0; i < 100'000; ++i) deep += "<a>";
    EXPECT_THROW(ParseLayout(deep, "x.rpt"), ReportError);
    std::string many = kLayout, lines;
    for (int i = 0; i < 1001; ++i) lines += "<line w=\"1\"/>";
    many.insert(many.find("<count"), lines);
    EXPECT_THROW(ParseLayout(many, "x.rpt"), ReportError);
}

// --- where layouts come from

class LoadLayoutTest : public testing::Test {
  protected:
    void SetUp() override
    {
        before_ = std::exchange(lumera_db_folder, folder_.Path() / "ditta");
        std::filesystem::create_directories(lumera_db_folder / "report");
        WriteFileWhole(folder_.Path() / "fuori.rpt", kLayout);
    }
    void TearDown() override { lumera_db_folder = before_; }

    static std::string MessageOf(const std::string &file)
    {
        try {
            LoadLayout(file);
        } catch (const ReportError &error) {
            return error.what();
        }
        return "accepted";
    }

    TestFolder folder_;
    std::filesystem::path before_;
};

TEST_F(LoadLayoutTest, TheCompanysOwnWins)
{
    EXPECT_NE(LoadLayout("pnotagest.rpt").title, "Prova");
    WriteFileWhole(lumera_db_folder / "report" / "pnotagest.rpt", kLayout);
    EXPECT_EQ(LoadLayout("pnotagest.rpt").title, "Prova");
    WriteFileWhole(lumera_db_folder / "report" / "pnotagest.rpt", "<report");
    EXPECT_EQ(MessageOf("pnotagest.rpt"), "pnotagest.rpt, riga 1, colonna 7: elemento malformato");
    EXPECT_EQ(MessageOf("nessuno.rpt"), "Report \"nessuno.rpt\" inesistente");
}

TEST_F(LoadLayoutTest, OnlyPlainNamesAreLookedFor)
{
    for (const char *file : {"../fuori.rpt", "../../fuori.rpt", "sotto/x.rpt", "..\\fuori.rpt", "C:fuori.rpt",
                             "/etc/passwd", "pnotagest.RPT", "pnotagest", ".rpt", "", "..", "a\n.rpt"})
        EXPECT_THAT(MessageOf(file), testing::EndsWith(": non è il nome di un file .rpt")) << file;
}

TEST_F(LoadLayoutTest, EveryLayoutInsideIsSound)
{
    ASSERT_FALSE(LayoutNames().empty());
    for (const std::string &name : LayoutNames()) EXPECT_NO_THROW(LoadLayout(name)) << name;
}

} // namespace

#include "tarvodlg/base/Text.h"
#include "tarvodlg/print/FormulaLexer.h"
#include "tarvodlg/print/LayoutItems.h"
#include "tarvodlg/print/LayoutXml.h"

#include "sqlapi/engines/NamedParameters.h"
#include "sqlapi/engines/SqlLexer.h"
#include "sqlapi/engines/StatementKind.h"

#include <algorithm>
#include <fmt/format.h>
#include <set>

namespace {

constexpr std::size_t kLayoutBytesMax = 1 << 20;
constexpr std::size_t kQueryBytesMax = 1 << 16;
constexpr std::size_t kItemsMax = 1000, kGroupsMax = 20, kTablesMax = 50, kParametersMax = 200;
/// Millimetres that page header and page footer together must leave to the rest.
constexpr double kRoomMin = 5;
constexpr const char *kBandAttributes = "height when";

struct BandRule {
    std::string_view element;
    BandKind kind;
};
constexpr BandRule kBands[] = {
    {"report-header", BandKind::ReportHeader}, {"page-header", BandKind::PageHeader}, {"detail", BandKind::Detail},
    {"report-footer", BandKind::ReportFooter}, {"page-footer", BandKind::PageFooter},
};

/// Reads a report or a sub-report: first what can be referred to, then the bands that do.
class Reader {
  public:
    Reader(const LayoutXml &xml, pugi::xml_node node, ReportLayout *layout, const ReportLayout *parent)
        : xml_(xml), node_(node), layout_(*layout), parent_(parent)
    {
    }

    void Read()
    {
        if (parent_ == nullptr)
            ReadPaper();
        else
            TakePaper();
        RefuseStrangers();
        ReadTables();
        ReadParameters();
        if (parent_ == nullptr) ReadSubreports();
        ReadQuery();
        MeasureRoom();
        ReadBands();
    }

  private:
    void ReadPaper();
    void TakePaper();
    void RefuseStrangers() const;
    void ReadTables();
    void ReadParameters();
    void ReadSubreports();
    void ReadQuery();
    void CheckPlaceholders(pugi::xml_node query) const;
    void CheckStatement(pugi::xml_node query) const;
    void ReadBands();
    void ReadGroup(pugi::xml_node node);
    ReportBand ReadBand(pugi::xml_node node, BandKind kind) const;
    void MeasureRoom();
    void OnlyOnce(pugi::xml_node node) const;
    void NoText(pugi::xml_node node) const;
    LayoutScope Scope() const;
    bool HasTable(std::string_view name) const;

    const LayoutXml &xml_;
    pugi::xml_node node_;
    ReportLayout &layout_;
    const ReportLayout *parent_; ///< of a sub-report
    double room_ = 0;            ///< mm of a page between its header and its footer
};

void Reader::ReadPaper()
{
    const LayoutElement report(xml_, node_, "title paper orientation margin font size");
    layout_.title = report.Text("title");
    report.OneOf("paper", "A4|A3|A5|Letter");
    layout_.paper = report.Text("paper", "A4");
    layout_.landscape = report.OneOf("orientation", "portrait|landscape") == 1;
    layout_.margin = report.Number("margin", layout_.margin, 0, 50);
    if (report.Has("font")) layout_.font = report.Required("font");
    layout_.size = report.Number("size", layout_.size, 1, 100);
}

void Reader::TakePaper()
{
    layout_.name = LayoutElement(xml_, node_, "name").Name("name");
    layout_.title = parent_->title;
    layout_.paper = parent_->paper;
    layout_.landscape = parent_->landscape;
    layout_.margin = parent_->margin;
    layout_.font = parent_->font;
    layout_.size = parent_->size;
}

LayoutScope Reader::Scope() const
{
    const PaperSize paper = PaperSizeOf(layout_.paper, layout_.landscape);
    return {xml_, layout_, paper.width - 2 * layout_.margin, paper.height - 2 * layout_.margin};
}

/// The element may stand once among its brothers.
void Reader::OnlyOnce(pugi::xml_node node) const
{
    if (node.parent().child(node.name()) != node) xml_.Fail(node, fmt::format("<{}> ripetuto", node.name()));
}

void Reader::NoText(pugi::xml_node node) const
{
    for (const pugi::xml_node child : node.children())
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
            xml_.FailAtWords(node, Trimmed(child.value()), fmt::format("testo fuori posto in <{}>", node.name()));
}

void Reader::RefuseStrangers() const
{
    NoText(node_);
    for (const pugi::xml_node child : node_.children()) {
        const std::string_view name = child.name();
        const bool is_band = std::any_of(std::begin(kBands), std::end(kBands),
                                         [name](const BandRule &band) { return band.element == name; });
        if (name == "subreport" && parent_ != nullptr) xml_.Fail(child, "un sotto-report non ne contiene altri");
        if (!is_band && name != "tables" && name != "query" && name != "parameters" && name != "group" &&
            name != "subreport")
            xml_.Fail(child, fmt::format("elemento sconosciuto <{}>", name));
        if (name != "group" && name != "subreport" && name != "detail") OnlyOnce(child);
    }
}

bool Reader::HasTable(std::string_view name) const
{
    return std::any_of(layout_.tables.begin(), layout_.tables.end(),
                       [name](const ReportTable &table) { return table.name == name; });
}

void Reader::ReadTables()
{
    const pugi::xml_node tables = node_.child("tables");
    if (!tables) xml_.Fail(node_, "manca l'elemento <tables>");
    const LayoutElement list(xml_, tables, "");
    NoText(tables);
    for (const pugi::xml_node node : tables.children()) {
        if (std::string_view(node.name()) != "table")
            xml_.Fail(node, fmt::format("elemento sconosciuto <{}>", node.name()));
        const LayoutElement element(xml_, node, "name from");
        ReportTable table{element.Name("name"), element.Required("from")};
        // Formulas fold what they name to lower case; "selection" and "row" mean something else.
        const bool is_lower =
            std::none_of(table.name.begin(), table.name.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
        if (!is_lower || table.name == "selection" || table.name == "row")
            element.Fail("name", fmt::format("\"{}\" non può essere il nome di una tabella", table.name));
        if (HasTable(table.name)) element.Fail("name", fmt::format("tabella \"{}\" ripetuta", table.name));
        if (!IsRealTableName(table.from))
            element.Fail("from", fmt::format("\"{}\" non è schema.tabella", OnOneLine(table.from)));
        layout_.tables.push_back(std::move(table));
    }
    if (layout_.tables.empty()) list.Fail("<tables> è vuoto");
    if (layout_.tables.size() > kTablesMax) list.Fail(fmt::format("più di {} tabelle", kTablesMax));
}

void Reader::ReadParameters()
{
    const pugi::xml_node parameters = node_.child("parameters");
    if (!parameters) return;
    const LayoutElement list(xml_, parameters, "");
    NoText(parameters);
    for (const pugi::xml_node node : parameters.children()) {
        if (std::string_view(node.name()) != "parameter")
            xml_.Fail(node, fmt::format("elemento sconosciuto <{}>", node.name()));
        const LayoutElement element(xml_, node, "name type");
        ReportParameter parameter{element.Name("name"), ParameterType::String};
        element.Required("type");
        parameter.type = static_cast<ParameterType>(element.OneOf("type", "string|long|double|date"));
        for (const ReportParameter &other : layout_.parameters) // the query does not tell upper from lower case
            if (EqualsIgnoreCase(other.name, parameter.name))
                element.Fail("name", fmt::format("parametro \"{}\" ripetuto", parameter.name));
        layout_.parameters.push_back(std::move(parameter));
    }
    if (layout_.parameters.size() > kParametersMax) list.Fail(fmt::format("più di {} parametri", kParametersMax));
}

void Reader::ReadSubreports()
{
    for (const pugi::xml_node node : node_.children("subreport")) {
        auto sub = std::make_shared<ReportLayout>();
        sub->file = layout_.file;
        Reader(xml_, node, sub.get(), &layout_).Read();
        for (const std::shared_ptr<ReportLayout> &other : layout_.subreports)
            if (other->name == sub->name)
                xml_.Fail(node, "name", fmt::format("sotto-report \"{}\" ripetuto", sub->name));
        layout_.subreports.push_back(std::move(sub));
    }
}

void Reader::ReadQuery()
{
    const pugi::xml_node query = node_.child("query");
    if (!query) xml_.Fail(node_, "manca l'elemento <query>");
    const LayoutElement element(xml_, query, "");
    for (const pugi::xml_node part : query.children())
        if (part.type() == pugi::node_element) xml_.Fail(part, fmt::format("elemento sconosciuto <{}>", part.name()));
    layout_.query_place = xml_.PlaceOf(query);
    layout_.query = Trimmed(LayoutXml::TextOf(query));
    if (layout_.query.empty()) element.Fail("la query è vuota");
    if (layout_.query.size() > kQueryBytesMax) element.Fail(fmt::format("query più lunga di {} byte", kQueryBytesMax));
    CheckPlaceholders(query);
    CheckStatement(query);
}

void Reader::CheckPlaceholders(pugi::xml_node query) const
{
    const std::string &text = layout_.query;
    int selections = 0;
    for (std::size_t at = text.find_first_of("{}"); at != std::string::npos; at = text.find_first_of("{}", at)) {
        const std::size_t close = text.find('}', at);
        if (text[at] == '}' || close == std::string::npos)
            xml_.FailAtWords(query, std::string_view(text).substr(at, 20), "graffa senza la sua compagna nella query");
        const std::string_view whole = std::string_view(text).substr(at, close + 1 - at);
        const std::string_view name = whole.substr(1, whole.size() - 2);
        if (name == "selection") {
            if (++selections > 1) xml_.Fail(query, "la query ha {selection} più di una volta");
        } else if (!HasTable(name)) {
            xml_.FailAtWords(query, whole, fmt::format("tabella sconosciuta \"{}\" nella query", OnOneLine(whole)));
        }
        at = close + 1;
    }
    if (selections == 0 && parent_ == nullptr) xml_.Fail(query, "la query non ha {selection}");
}

/// A print reads. A layout of the company's own must not be a way to change its books.
void Reader::CheckStatement(pugi::xml_node query) const
{
    bool is_one = true;
    SqlLexer lexer(layout_.query);
    for (SqlToken token; lexer.Next(token);) {
        if (token.IsSymbol(';')) is_one = false;
        // It would select nothing there, and the whole archive be printed under the heads of a selection.
        const bool is_code = token.kind == SqlTokenKind::Symbol || token.kind == SqlTokenKind::Word;
        if (!is_code && token.text.find("{selection}") != std::string_view::npos)
            xml_.FailAtWords(query, token.text, "{selection} sta in un commento o fra virgolette");
    }
    if (!is_one || !StatementKind::Of(layout_.query).reads_only)
        xml_.Fail(query, "la query deve essere una sola SELECT");
    for (const std::string &name : ParameterNames(layout_.query))
        if (FindParameter(layout_, name) == nullptr)
            xml_.FailAtWords(query, ":" + name, fmt::format("parametro sconosciuto \":{}\" nella query", name));
}

ReportBand Reader::ReadBand(pugi::xml_node node, BandKind kind) const
{
    const LayoutElement element(xml_, node, kBandAttributes);
    ReportBand band;
    band.kind = kind;
    band.place = xml_.PlaceOf(node);
    element.Required("height");
    band.height = element.Number("height", 0, 0, 1000);
    const bool is_page_band = kind == BandKind::PageHeader || kind == BandKind::PageFooter;
    // It would be carried over from page to page for ever.
    if (!is_page_band && band.height > room_)
        element.Fail("height",
                     fmt::format("la banda è alta {:g} mm e nella pagina ne restano {:g}", band.height, room_));
    band.when = ReadWhen(Scope(), element);
    NoText(node);
    for (const pugi::xml_node item : node.children()) band.items.push_back(ReadItem(Scope(), band, item));
    if (band.items.size() > kItemsMax) element.Fail(fmt::format("più di {} elementi in una banda", kItemsMax));
    return band;
}

void Reader::ReadGroup(pugi::xml_node node)
{
    const LayoutElement element(xml_, node, "by new-page keep");
    ReportGroup group;
    group.place = xml_.PlaceOf(node);
    const std::string by = element.Required("by");
    for (std::size_t begin = 0; begin <= by.size();) {
        const std::size_t end = std::min(by.find(',', begin), by.size());
        const std::string_view column = Trimmed(std::string_view(by).substr(begin, end - begin));
        if (!IsFormulaName(column)) element.Fail("by", fmt::format("\"{}\" non è una colonna", OnOneLine(column)));
        group.by.emplace_back(column);
        begin = end + 1;
    }
    group.new_page = element.YesOrNo("new-page", false);
    group.keep = element.YesOrNo("keep", true);
    NoText(node);
    for (const pugi::xml_node child : node.children()) {
        const std::string_view name = child.name();
        if (name != "header" && name != "footer") xml_.Fail(child, fmt::format("elemento sconosciuto <{}>", name));
        OnlyOnce(child);
        if (name == "header")
            group.header = ReadBand(child, BandKind::GroupHeader);
        else
            group.footer = ReadBand(child, BandKind::GroupFooter);
    }
    layout_.groups.push_back(std::move(group));
    if (layout_.groups.size() > kGroupsMax) element.Fail(fmt::format("più di {} gruppi", kGroupsMax));
}

void Reader::ReadBands()
{
    for (const pugi::xml_node child : node_.children()) {
        const std::string_view name = child.name();
        if (name == "group") ReadGroup(child);
        for (const BandRule &rule : kBands)
            if (rule.element == name) layout_.bands.push_back(ReadBand(child, rule.kind));
    }
    if (layout_.bands.empty() && layout_.groups.empty()) xml_.Fail(node_, "il layout non stampa nulla");
}

void Reader::MeasureRoom()
{
    room_ = Scope().height;
    for (const char *name : {"page-header", "page-footer"})
        if (const pugi::xml_node node = node_.child(name))
            room_ -= LayoutElement(xml_, node, kBandAttributes).Number("height", 0, 0, 1000);
    if (room_ < kRoomMin) xml_.Fail(node_, "la testata e il piede riempiono la pagina");
}

} // namespace

ReportLayout ParseLayout(std::string_view xml, const std::string &file)
{
    if (xml.size() > kLayoutBytesMax)
        throw ReportError(fmt::format("{}, riga 1, colonna 1: layout più lungo di {} byte", file, kLayoutBytesMax));
    const LayoutXml source(xml, file);
    ReportLayout layout;
    layout.file = file;
    Reader(source, source.Root("report"), &layout, nullptr).Read();
    return layout;
}

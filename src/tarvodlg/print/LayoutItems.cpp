#include "tarvodlg/print/LayoutItems.h"

#include "tarvodlg/base/Text.h"
#include "tarvodlg/print/FormulaLexer.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

/// Rounding in measures such as 63.3 + 63.3 + 63.4 is no item outside the page.
constexpr double kSlack = 0.01;

struct ItemRule {
    std::string_view element;
    ItemKind kind;
    bool has_words;         ///< shows something to read, so style and width belong to it
    const char *attributes; ///< besides x, y, when and those of words
    const char *of;         ///< the attribute with the name of what is shown; null when there is none
};

constexpr ItemRule kRules[] = {
    {"text", ItemKind::Text, true, "", nullptr},
    {"field", ItemKind::Field, true, "of format title", "of"},
    {"param", ItemKind::Param, true, "name format", "name"},
    {"page", ItemKind::Page, true, "", nullptr},
    {"sum", ItemKind::Sum, true, "of format", "of"},
    {"count", ItemKind::Count, true, "format", nullptr},
    {"running", ItemKind::Running, true, "of format", "of"},
    {"line", ItemKind::Line, false, "w", nullptr},
    {"box", ItemKind::Box, false, "w h", nullptr},
    {"image", ItemKind::Image, false, "w h param", "param"},
    {"subreport", ItemKind::Subreport, false, "name link", "name"},
};

std::string AttributesOf(const ItemRule &rule)
{
    return std::string("x y when ") + (rule.has_words ? "w align bold italic wrap size color " : "") + rule.attributes;
}

bool IsColor(std::string_view color)
{
    return color.size() == 7 && color[0] == '#' &&
           color.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string_view::npos;
}

const ReportLayout *FindSubreport(const ReportLayout &layout, std::string_view name)
{
    for (const std::shared_ptr<ReportLayout> &sub : layout.subreports)
        if (sub->name == name) return sub.get();
    return nullptr;
}

void CheckPlace(const LayoutScope &scope, const LayoutElement &element, const ReportBand &band, const ReportItem &item)
{
    // A page number or a sum at the very edge has no width left to be shown in.
    if (item.x >= scope.width)
        element.Fail("x", fmt::format("fuori dalla pagina, larga {:g} mm tra i margini", scope.width));
    if (item.x + item.w > scope.width + kSlack)
        element.Fail("w", fmt::format("finisce a {:g} mm, la pagina è larga {:g} mm tra i margini", item.x + item.w,
                                      scope.width));
    if (item.y + item.h > band.height + kSlack)
        element.Fail(element.Has("h") ? "h" : "y", fmt::format("fuori dalla banda, alta {:g} mm", band.height));
}

void CheckBand(const LayoutElement &element, const ReportBand &band, const ReportItem &item)
{
    const bool is_footer = band.kind == BandKind::GroupFooter || band.kind == BandKind::ReportFooter;
    if ((item.kind == ItemKind::Sum || item.kind == ItemKind::Count) && !is_footer)
        element.Fail(fmt::format("<{}> sta solo nel piede di un gruppo o del report", element.Node().name()));
    const bool is_page_band = band.kind == BandKind::PageHeader || band.kind == BandKind::PageFooter;
    if (item.kind == ItemKind::Subreport && is_page_band)
        element.Fail("un sotto-report non sta nella testata o nel piede della pagina");
    if (!item.title.empty() && band.kind != BandKind::Detail) element.Fail("title", "sta solo nei campi del dettaglio");
}

/// "Parameter=column,Parameter=?Parameter"
void CheckLink(const LayoutScope &scope, const LayoutElement &element, const ReportItem &item)
{
    const ReportLayout &sub = *FindSubreport(scope.layout, item.text);
    std::string_view rest = item.link;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(','), rest.size());
        const std::string_view link = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        const std::size_t equals = link.find('=');
        if (equals == std::string_view::npos || equals + 1 == link.size())
            element.Fail("link", fmt::format("\"{}\" non è Parametro=colonna o Parametro=?Parametro", OnOneLine(link)));
        const std::string_view target = link.substr(0, equals), source = link.substr(equals + 1);
        if (FindParameter(sub, target) == nullptr)
            element.Fail("link",
                         fmt::format("il sotto-report \"{}\" non ha il parametro \"{}\"", sub.name, OnOneLine(target)));
        const bool is_known =
            source.starts_with('?') ? FindParameter(scope.layout, source.substr(1)) != nullptr : IsFormulaName(source);
        if (!is_known) element.Fail("link", fmt::format("\"{}\" non è una colonna o un parametro", OnOneLine(source)));
    }
}

void CheckReference(const LayoutScope &scope, const LayoutElement &element, const ItemRule &rule,
                    const ReportItem &item)
{
    const ReportParameter *parameter = FindParameter(scope.layout, item.text);
    if ((item.kind == ItemKind::Param || item.kind == ItemKind::Image) && parameter == nullptr)
        element.Fail(rule.of, fmt::format("parametro sconosciuto \"{}\"", item.text));
    if (item.kind == ItemKind::Image && parameter->type != ParameterType::String)
        element.Fail(rule.of, fmt::format("il parametro \"{}\" non è il nome di un'immagine (string)", item.text));
    if (item.kind != ItemKind::Subreport) return;
    if (FindSubreport(scope.layout, item.text) == nullptr)
        element.Fail(rule.of, fmt::format("sotto-report sconosciuto \"{}\"", item.text));
    CheckLink(scope, element, item);
}

void ReadStyle(const LayoutElement &element, ReportItem *item)
{
    item->align = static_cast<ItemAlign>(element.OneOf("align", "left|right|center"));
    item->bold = element.YesOrNo("bold", false);
    item->italic = element.YesOrNo("italic", false);
    item->wrap = element.YesOrNo("wrap", false);
    item->size = element.Number("size", 0, 1, 100);
    item->color = element.Text("color");
    if (element.Has("color") && !IsColor(item->color))
        element.Fail("color", fmt::format("\"{}\" non è un colore (esempio: #006000)", OnOneLine(item->color)));
    element.OneOf("format", "0|0,00|0,00z|date|code");
    item->format = element.Text("format");
}

} // namespace

const ReportParameter *FindParameter(const ReportLayout &layout, std::string_view name)
{
    for (const ReportParameter &parameter : layout.parameters)
        if (parameter.name == name) return &parameter;
    return nullptr;
}

SelectionFormula ReadWhen(const LayoutScope &scope, const LayoutElement &element)
{
    if (!element.Has("when")) return {};
    SelectionFormula formula;
    try {
        formula = SelectionFormula::Parse(element.Required("when"), "when");
    } catch (const ReportError &error) {
        const std::string_view text = error.what();
        if (!text.starts_with("when, carattere")) throw; // it says already where it stands
        element.Fail("when", std::string(text));
    }
    for (const SelectionFormula::Column &column : formula.Columns())
        if (column.table != "row")
            element.Fail("when", fmt::format("when, carattere {}: atteso {{row.{}}} al posto di {{{}.{}}}",
                                             column.position, column.column, column.table, column.column));
    for (const SelectionFormula::Parameter &parameter : formula.Parameters())
        if (FindParameter(scope.layout, parameter.name) == nullptr)
            element.Fail("when", fmt::format("when, carattere {}: parametro sconosciuto {{?{}}}", parameter.position,
                                             parameter.name));
    return formula;
}

ReportItem ReadItem(const LayoutScope &scope, const ReportBand &band, pugi::xml_node node)
{
    const std::string_view name = node.name();
    const auto rule = std::find_if(std::begin(kRules), std::end(kRules),
                                   [name](const ItemRule &known) { return known.element == name; });
    if (rule == std::end(kRules)) scope.xml.Fail(node, fmt::format("elemento sconosciuto <{}>", name));

    const LayoutElement element(scope.xml, node, AttributesOf(*rule));
    ReportItem item;
    item.kind = rule->kind;
    item.place = scope.xml.PlaceOf(node);
    item.x = element.Number("x", 0, 0, 1000);
    item.y = element.Number("y", 0, 0, 1000);
    item.w = element.Number("w", 0, 0, 1000);
    item.h = element.Number("h", 0, 0, 1000);
    ReadStyle(element, &item);
    item.when = ReadWhen(scope, element);
    if (rule->of != nullptr) item.text = element.Name(rule->of);
    item.link = element.Text("link");
    item.title = element.Text("title");
    if (item.kind == ItemKind::Text) item.text = LayoutXml::TextOf(node);
    if (item.kind == ItemKind::Box || item.kind == ItemKind::Image) element.Required("h");

    for (const pugi::xml_node child : node.children())
        if (item.kind != ItemKind::Text || child.type() == pugi::node_element)
            element.Fail(fmt::format("<{}> non contiene altro", name));
    CheckPlace(scope, element, band, item);
    CheckBand(element, band, item);
    CheckReference(scope, element, *rule, item);
    return item;
}

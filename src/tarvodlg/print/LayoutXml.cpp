#include "tarvodlg/print/LayoutXml.h"

#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/Text.h"
#include "tarvodlg/print/FormulaLexer.h"

#include <algorithm>
#include <fmt/format.h>
#include <optional>

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

const char *ParseFault(pugi::xml_parse_status status)
{
    switch (status) {
    case pugi::status_no_document_element:
        return "non contiene alcun elemento";
    case pugi::status_end_element_mismatch:
        return "la chiusura non è quella dell'elemento aperto";
    case pugi::status_bad_attribute:
        return "attributo malformato";
    case pugi::status_bad_start_element:
        return "elemento malformato";
    case pugi::status_bad_end_element:
        return "chiusura di elemento malformata";
    case pugi::status_bad_comment:
        return "commento non chiuso";
    case pugi::status_bad_cdata:
        return "sezione CDATA non chiusa";
    default:
        return "segno \"<\" fuori posto";
    }
}

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/// Calls each(word) for the words between the separators, until it gives true.
template <class Each>
bool AnyWord(std::string_view words, char separator, Each each)
{
    while (!words.empty()) {
        const std::size_t end = std::min(words.find(separator), words.size());
        if (each(words.substr(0, end))) return true;
        words.remove_prefix(std::min(end + 1, words.size()));
    }
    return false;
}

} // namespace

LayoutXml::LayoutXml(std::string_view text, std::string file) : text_(text), file_(std::move(file))
{
    if (text_.starts_with(kByteOrderMark)) text_.remove_prefix(kByteOrderMark.size());
    for (std::size_t at = 0; at < text_.size();) {
        const std::size_t begin = at;
        const char32_t character = DecodeUtf8(text_, &at);
        if (character == kMalformedUtf8 || character == 0) FailAt(begin, "il file non è un testo UTF-8");
    }
    const pugi::xml_parse_result result = document_.load_buffer(
        text_.data(), text_.size(), pugi::parse_default | pugi::parse_doctype, pugi::encoding_utf8);
    if (!result) FailAt(static_cast<std::size_t>(result.offset), ParseFault(result.status));
}

pugi::xml_node LayoutXml::Root(const char *name) const
{
    pugi::xml_node root;
    for (const pugi::xml_node node : document_.children()) {
        if (node.type() == pugi::node_doctype)
            FailAt(std::min(text_.find("<!DOCTYPE"), text_.size()), "un layout non ha DOCTYPE");
        if (node.type() != pugi::node_element) continue;
        if (root) Fail(node, "un layout ha un solo elemento esterno");
        root = node;
    }
    if (std::string_view(root.name()) != name) Fail(root, fmt::format("atteso l'elemento <{}>", name));
    return root;
}

std::size_t LayoutXml::OffsetOf(pugi::xml_node element) const
{
    const auto name_offset = static_cast<std::size_t>(element.offset_debug());
    return name_offset == 0 ? 0 : name_offset - 1; // the "<" before the name
}

std::size_t LayoutXml::OffsetOf(pugi::xml_node element, std::string_view attribute) const
{
    std::size_t at = OffsetOf(element) + 1 + std::string_view(element.name()).size();
    const auto skip = [&](auto belongs) {
        while (at < text_.size() && belongs(text_[at])) ++at;
    };
    for (;;) {
        skip(IsBlank);
        const std::size_t begin = at;
        skip([](char c) { return !IsBlank(c) && c != '=' && c != '>' && c != '/'; });
        if (at == begin) return OffsetOf(element); // the tag ends here
        if (text_.substr(begin, at - begin) == attribute) return begin;
        skip([](char c) { return IsBlank(c) || c == '='; });
        at = std::min(text_.find(text_[at], at + 1), text_.size() - 1) + 1; // behind the value's closing quote
    }
}

LayoutPlace LayoutXml::PlaceOf(pugi::xml_node element) const
{
    return PlaceAt(OffsetOf(element));
}

LayoutPlace LayoutXml::PlaceAt(std::size_t offset) const
{
    const std::string_view before = text_.substr(0, std::min(offset, text_.size()));
    const auto lines = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
    const std::size_t line_begin = before.rfind('\n') + 1; // npos + 1 is 0
    return {1 + lines, 1 + Utf8Length(before.substr(line_begin))};
}

std::string LayoutXml::TextOf(pugi::xml_node element)
{
    std::string text;
    for (const pugi::xml_node child : element.children()) text += child.value(); // empty for an element
    return text;
}

void LayoutXml::FailAt(std::size_t offset, const std::string &what) const
{
    const LayoutPlace place = PlaceAt(offset);
    throw ReportError(fmt::format("{}, riga {}, colonna {}: {}", file_, place.line, place.column, what));
}

void LayoutXml::Fail(pugi::xml_node element, const std::string &what) const
{
    FailAt(OffsetOf(element), what);
}

void LayoutXml::Fail(pugi::xml_node element, const char *attribute, const std::string &what) const
{
    FailAt(OffsetOf(element, attribute), what);
}

void LayoutXml::FailAtWords(pugi::xml_node element, std::string_view words, const std::string &what) const
{
    const std::size_t begin = OffsetOf(element), found = text_.find(words, begin);
    FailAt(found == std::string_view::npos ? begin : found, what);
}

LayoutElement::LayoutElement(const LayoutXml &xml, pugi::xml_node node, std::string_view attributes)
    : xml_(xml), node_(node)
{
    for (const pugi::xml_attribute attribute : node.attributes()) {
        const std::string_view name = attribute.name();
        if (!AnyWord(attributes, ' ', [name](std::string_view known) { return known == name; }))
            Fail(attribute.name(), fmt::format("attributo sconosciuto \"{}\" di <{}>", name, node.name()));
        // The first of the two would silently win.
        if (node.attribute(attribute.name()) != attribute)
            Fail(attribute.name(), fmt::format("attributo \"{}\" ripetuto", name));
    }
}

std::string LayoutElement::Text(const char *attribute, const char *otherwise) const
{
    return Has(attribute) ? node_.attribute(attribute).value() : otherwise;
}

std::string LayoutElement::Required(const char *attribute) const
{
    if (!Has(attribute)) Fail(fmt::format("manca l'attributo \"{}\" di <{}>", attribute, node_.name()));
    const std::string text = Text(attribute);
    if (Trimmed(text).empty()) Fail(attribute, fmt::format("l'attributo \"{}\" è vuoto", attribute));
    return text;
}

std::string LayoutElement::Name(const char *attribute) const
{
    const std::string name = Required(attribute);
    if (!IsFormulaName(name))
        Fail(attribute, fmt::format("\"{}\" non è un nome di lettere, cifre e _", OnOneLine(name)));
    return name;
}

double LayoutElement::Number(const char *attribute, double otherwise, double min, double max) const
{
    if (!Has(attribute)) return otherwise;
    const std::string text = Text(attribute);
    const std::optional<double> number = ParseDecimal(text);
    if (!number) Fail(attribute, fmt::format("{}=\"{}\" non è un numero (esempio: 12.5)", attribute, OnOneLine(text)));
    if (*number < min || *number > max)
        Fail(attribute, fmt::format("{}=\"{}\" non è fra {:g} e {:g}", attribute, text, min, max));
    return *number;
}

bool LayoutElement::YesOrNo(const char *attribute, bool otherwise) const
{
    return Has(attribute) ? OneOf(attribute, "no|yes") == 1 : otherwise;
}

int LayoutElement::OneOf(const char *attribute, std::string_view words) const
{
    if (!Has(attribute)) return 0;
    const std::string text = Text(attribute);
    int number = -1;
    const bool found = AnyWord(words, '|', [&](std::string_view word) {
        ++number;
        return word == text;
    });
    if (found) return number;
    std::string choice(words);
    std::replace(choice.begin(), choice.end(), '|', ' ');
    Fail(attribute, fmt::format("{}=\"{}\": ammessi {}", attribute, OnOneLine(text), choice));
}

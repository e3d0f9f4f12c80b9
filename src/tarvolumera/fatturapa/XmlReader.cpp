#include "tarvolumera/fatturapa/XmlReader.h"

#include "tarvodlg/base/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

namespace fatturapa {

void XmlReader::OpenRoot()
{
    while (end_ > begin_ && end_[-1] == '\0') --end_; // zeros pad some signed files
    if (const void *zero = std::memchr(begin_, '\0', static_cast<std::size_t>(end_ - begin_))) {
        position_ = static_cast<const char *>(zero);
        Fail("carattere nullo");
    }
    if (std::string_view(position_, static_cast<std::size_t>(end_ - position_)).starts_with("\xEF\xBB\xBF"))
        position_ += 3;
    for (;;) {
        while (IsBlank(*position_)) ++position_;
        if (position_ == end_) Fail("il file non contiene alcun elemento XML");
        if (*position_ != '<') Fail("testo prima del primo elemento");
        if (position_[1] != '!' && position_[1] != '?') break;
        SkipMarkup();
    }
    OpenTag();
}

bool XmlReader::CloseDocument()
{
    bool has_text = false;
    while (position_ < end_) {
        if (*position_ == '<' && (position_[1] == '!' || position_[1] == '?')) {
            SkipMarkup();
            continue;
        }
        if (*position_ == '<') Fail("altri elementi dopo la fine del documento");
        if (!IsBlank(*position_)) has_text = true;
        ++position_;
    }
    return !has_text;
}

void XmlReader::FinishOpenTag(const char *after_name)
{
    const char *next = after_name;
    for (;;) {
        const char *gap = next;
        while (IsBlank(*next)) ++next;
        if (*next == '>' || (*next == '/' && next[1] == '>')) break;
        position_ = next;
        if (next == gap || !IsOfClass(*next, xml_bytes::kNameStart)) {
            Fail(next == end_ ? "file troncato dentro un elemento" : "attributo danneggiato");
        }
        next = NameEnd(next);
        while (IsBlank(*next)) ++next;
        if (*next != '=') Fail("attributo senza valore");
        ++next;
        while (IsBlank(*next)) ++next;
        if (*next != '"' && *next != '\'') Fail("valore di attributo senza virgolette");
        const void *quote = std::memchr(next + 1, *next, static_cast<std::size_t>(end_ - next - 1));
        if (quote == nullptr) Fail("valore di attributo non chiuso");
        const char *value_end = static_cast<const char *>(quote);
        if (std::find(next, value_end, '<') != value_end) Fail("carattere < nel valore di un attributo");
        next = value_end + 1;
    }
    attributes_ = {after_name, static_cast<std::size_t>(next - after_name)};
    is_empty_ = *next == '/';
    position_ = next + (is_empty_ ? 2 : 1);
}

std::string_view XmlReader::Attribute(std::string_view name) const
{
    std::string_view rest = attributes_;
    for (;;) {
        const std::size_t equals = rest.find('=');
        if (equals == std::string_view::npos) return {};
        const std::string_view found = WithoutBlanks(rest.substr(0, equals));
        const std::size_t quote = rest.find_first_of("\"'", equals);
        const std::size_t end = rest.find(rest[quote], quote + 1); // both are there: the tag has been checked
        if (found == name) return rest.substr(quote + 1, end - quote - 1);
        rest.remove_prefix(end + 1);
    }
}

void XmlReader::SkipPast(std::string_view mark, const char *fault)
{
    const std::string_view rest(position_, static_cast<std::size_t>(end_ - position_));
    const std::size_t found = rest.find(mark);
    if (found == std::string_view::npos) Fail(fault);
    position_ += found + mark.size();
}

/// At "<!" or "<?": comments, processing instructions and CDATA sections.
void XmlReader::SkipMarkup()
{
    const std::string_view rest(position_, static_cast<std::size_t>(end_ - position_));
    if (rest.starts_with("<?")) {
        SkipPast("?>", "istruzione <? non chiusa");
    } else if (rest.starts_with("<!--")) {
        position_ += 4;
        SkipPast("-->", "commento non chiuso");
    } else if (rest.starts_with("<![CDATA[") && depth_ > 0) {
        SkipPast("]]>", "sezione CDATA non chiusa");
    } else if (rest.starts_with("<!DOCTYPE")) {
        Fail("il file contiene una DTD (DOCTYPE), non ammessa");
    } else {
        Fail("carattere < fuori posto");
    }
}

std::string_view XmlReader::LongText()
{
    if (is_empty_) return LeaveEmptyText();
    const char *start = position_;
    const void *found = std::memchr(start, '<', static_cast<std::size_t>(end_ - start));
    if (found == nullptr) FailTruncated();
    const char *next = static_cast<const char *>(found);
    const std::string_view text(start, static_cast<std::size_t>(next - start));
    if (next[1] != '/' || text.find('&') != std::string_view::npos) return ComposedText();
    position_ = next;
    CloseTag();
    return Trimmed(text);
}

void XmlReader::Skip()
{
    const int outside = depth_ - 1;
    while (depth_ > outside) NextChild();
}

/// A text that is not one plain piece: with entities, CDATA, comments, elements or line ends of Windows.
std::string_view XmlReader::ComposedText()
{
    composed_.clear();
    for (;;) {
        const char *next = FindMark<false>(position_);
        AppendDecoded({position_, static_cast<std::size_t>(next - position_)});
        position_ = next;
        if (next == end_) FailTruncated();
        if (next[1] == '/') break;
        if (next[1] != '!' && next[1] != '?') {
            OpenTag();
            Skip();
            continue;
        }
        SkipMarkup();
        constexpr std::string_view open = "<![CDATA[";
        const std::string_view markup(next, static_cast<std::size_t>(position_ - next));
        if (markup.starts_with(open)) AppendPlain(markup.substr(open.size(), markup.size() - open.size() - 3));
    }
    CloseTag();
    return Trimmed(composed_);
}

/// Line ends become \n alone, as XML has it.
void XmlReader::AppendPlain(std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char character = text[i];
        if (character == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
        if (character == '\r') {
            composed_ += '\n';
        } else if (static_cast<unsigned char>(character) < 0x20 && character != '\n' && character != '\t') {
            composed_ += ' '; // XML has no other control characters, and a terminal would obey them
        } else {
            composed_ += character;
        }
    }
}

void XmlReader::AppendDecoded(std::string_view text)
{
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t ampersand = std::min(text.find('&', start), text.size());
        AppendPlain(text.substr(start, ampersand - start));
        if (ampersand == text.size()) return;
        const std::string_view entity = text.substr(ampersand, 12);
        const std::size_t end = entity.find(';');
        if (end != std::string_view::npos && AppendEntity(entity.substr(1, end - 1))) {
            start = ampersand + end + 1;
        } else {
            has_bare_ampersand_ = true;
            composed_ += '&';
            start = ampersand + 1;
        }
    }
}

bool XmlReader::AppendEntity(std::string_view entity)
{
    constexpr std::pair<std::string_view, char> named[] = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    for (const auto &[name, character] : named) {
        if (entity == name) {
            composed_ += character;
            return true;
        }
    }
    if (!entity.starts_with('#')) return false;
    const bool is_hex = entity.starts_with("#x");
    const std::string_view digits = entity.substr(is_hex ? 2 : 1);
    std::uint32_t code = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, is_hex ? 16 : 10);
    const bool is_whole = error == std::errc() && end == digits.data() + digits.size();
    const bool is_control = code < 0x20 && code != '\n' && code != '\t' && code != '\r';
    const bool is_character = !is_control && code < 0x110000 && (code < 0xD800 || code > 0xDFFF);
    if (!is_whole || !is_character) return false;
    AppendUtf8(composed_, code);
    return true;
}

std::string XmlReader::PlaceAt(int index) const
{
    const auto at = [&](int i) -> const Open & { return open_[static_cast<std::size_t>(i)]; };
    const std::string_view name = LocalName(at(index).name).substr(0, 80);
    const std::string own = at(index).ordinal > 0 ? fmt::format("{}[{}]", name, at(index).ordinal) : std::string(name);
    if (index == 0) return own;
    const std::string_view parent = LocalName(at(index - 1).name).substr(0, 80);
    const std::size_t ordinal = at(index - 1).ordinal;
    return ordinal > 0 ? fmt::format("{}[{}]/{}", parent, ordinal, own) : fmt::format("{}/{}", parent, own);
}

void XmlReader::Fail(std::string_view fault) const
{
    const std::string_view before(begin_, static_cast<std::size_t>(position_ - begin_));
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const std::size_t column = before.size() - (before.rfind('\n') + 1) + 1;
    throw XmlFault(fmt::format("{} (riga {}, colonna {})", fault, line, column));
}

void XmlReader::FailTruncated() const
{
    Fail(fmt::format("file troncato: manca la fine dell'elemento {}", Name().substr(0, 80)));
}

void XmlReader::FailEndTag() const
{
    if (end_ - position_ < static_cast<std::ptrdiff_t>(Name().size()) + 3) FailTruncated();
    const char *found = position_ + 2;
    const std::string_view name(found, static_cast<std::size_t>(NameEnd(found) - found));
    Fail(fmt::format("l'elemento {} è chiuso come {}", Name().substr(0, 80), name.substr(0, 80)));
}

} // namespace fatturapa

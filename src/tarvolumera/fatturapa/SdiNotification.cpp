#include "tarvolumera/fatturapa/SdiNotification.h"

#include "tarvodlg/base/Text.h"
#include "tarvolumera/fatturapa/XmlEncoding.h"

#include <pugixml.hpp>

#include <algorithm>
#include <array>

namespace {

struct NotificationKind {
    std::string_view root, kind, text;
};

constexpr NotificationKind kKinds[] = {
    {"RicevutaConsegna", "RC", "ricevuta di consegna (RC)"},
    {"NotificaScarto", "NS", "notifica di scarto (NS)"},
    {"RicevutaScarto", "NS", "ricevuta di scarto (NS)"},
    {"NotificaMancataConsegna", "MC", "notifica di mancata consegna (MC)"},
    {"RicevutaImpossibilitaRecapito", "MC", "ricevuta di impossibilità di recapito (MC)"},
    {"NotificaEsito", "NE", "notifica di esito (NE)"},
    {"NotificaEsitoCommittente", "EC", "notifica di esito del committente (EC)"},
    {"ScartoEsitoCommittente", "SE", "scarto dell'esito del committente (SE)"},
    {"NotificaDecorrenzaTermini", "DT", "notifica di decorrenza dei termini (DT)"},
    {"AttestazioneTrasmissioneFattura", "AT", "attestazione di trasmissione (AT)"},
    {"MetadatiInvioFile", "MT", "file dei metadati (MT)"},
    {"FileMetadati", "MT", "file dei metadati (MT)"},
};

/// Notifications take some kilobytes; a larger one is not worth a tree in memory.
constexpr std::size_t kNotificationBytesMax = 2'000'000;

std::string_view LocalName(std::string_view name)
{
    const std::size_t colon = name.rfind(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

/// Steps over one piece of the prolog that starts with `begin`. @return false when it does not, or has no end
bool Skip(std::string_view *text, std::string_view begin, std::string_view end)
{
    if (!text->starts_with(begin)) return false;
    const std::size_t stop = text->find(end, begin.size());
    if (stop == std::string_view::npos) return false;
    text->remove_prefix(stop + end.size());
    return true;
}

/// The name of the root element with its prefix; empty when there is none.
std::string_view RootName(std::string_view text)
{
    do {
        text = Trimmed(text);
    } while (Skip(&text, "<?", "?>") || Skip(&text, "<!--", "-->"));
    if (text.size() < 2 || text[0] != '<' || text[1] == '!' || text[1] == '?') return {};
    return text.substr(1, text.find_first_of(" \t\r\n/>", 1) - 1);
}

std::string Utf8WithoutMark(const std::string &xml)
{
    std::string oddity;
    std::string text = XmlToUtf8(xml, oddity);
    if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
    return text;
}

/// "RC" out of "IT01234567897_00001_RC_001.xml"; empty for other names.
std::string KindInName(std::string_view file_name)
{
    const std::string upper = ToUpper(file_name);
    if (!upper.ends_with(".XML")) return {};
    const std::string_view stem = std::string_view(upper).substr(0, upper.size() - 4);
    const std::size_t last = stem.rfind('_');
    if (last == std::string_view::npos || last < 3 || stem[last - 3] != '_') return {};
    const std::size_t counter = stem.size() - last - 1;
    return counter >= 1 && counter <= 3 ? std::string(stem.substr(last - 2, 2)) : std::string{};
}

std::string ChildText(const pugi::xml_node &root, std::string_view name)
{
    for (const pugi::xml_node &child : root.children())
        if (LocalName(child.name()) == name) return OnOneLine(child.text().get());
    return {};
}

} // namespace

std::string_view SdiNotificationText(std::string_view root)
{
    const auto *found = std::ranges::find(kKinds, root, &NotificationKind::root);
    return found == std::end(kKinds) ? std::string_view() : found->text;
}

std::optional<SdiNotification> ReadSdiNotification(const std::string &xml, std::string_view file_name)
{
    const std::string text = Utf8WithoutMark(xml);
    const std::string_view root = LocalName(RootName(text));
    if (root.empty() || root.starts_with("FatturaElettronica")) return std::nullopt;
    const auto *known = std::ranges::find(kKinds, root, &NotificationKind::root);
    if (known == std::end(kKinds)) known = std::ranges::find(kKinds, KindInName(file_name), &NotificationKind::kind);
    if (known == std::end(kKinds)) return std::nullopt;
    SdiNotification notification{std::string(known->kind), std::string(known->text), {}, {}};
    pugi::xml_document document;
    if (text.size() <= kNotificationBytesMax &&
        document.load_buffer(text.data(), text.size(), pugi::parse_default, pugi::encoding_utf8)) {
        notification.sdi = ChildText(document.document_element(), "IdentificativoSdI");
        notification.file_name = ChildText(document.document_element(), "NomeFile");
    }
    return notification;
}

bool IsXmlComplete(const std::string &xml)
{
    const std::string text = Utf8WithoutMark(xml);
    if (!Trimmed(text).starts_with('<')) return true;
    const std::string_view root = RootName(text);
    if (root.empty()) return false;
    const std::size_t end = text.rfind("</" + std::string(root));
    if (end != std::string::npos) return text.find('>', end) != std::string::npos;
    return Trimmed(text).ends_with("/>") &&
           text.find('<', text.find(root)) == std::string::npos; // a root without content
}

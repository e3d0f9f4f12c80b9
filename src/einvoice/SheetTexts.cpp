#include "einvoice/SheetSections.h"

#include "tarvodlg/base/Numbers.h"

#include <fmt/format.h>

namespace {

constexpr int kDecimalsMax = 8; // of prices and quantities in the published schema

struct CodeText {
    std::string_view code, text;
};

constexpr CodeText kTipoCassa[] = {
    {"TC01", "Cassa avvocati e procuratori legali"},
    {"TC02", "Cassa dottori commercialisti"},
    {"TC03", "Cassa geometri liberi professionisti"},
    {"TC04", "Cassa ingegneri e architetti liberi professionisti"},
    {"TC05", "Cassa del notariato"},
    {"TC06", "Cassa ragionieri e periti commerciali"},
    {"TC07", "ENASARCO, agenti e rappresentanti di commercio"},
    {"TC08", "ENPACL, consulenti del lavoro"},
    {"TC09", "ENPAM, medici"},
    {"TC10", "ENPAF, farmacisti"},
    {"TC11", "ENPAV, veterinari"},
    {"TC12", "ENPAIA, impiegati dell'agricoltura"},
    {"TC13", "Fondo impiegati imprese di spedizione e agenzie marittime"},
    {"TC14", "INPGI, giornalisti"},
    {"TC15", "ONAOSI, orfani dei sanitari"},
    {"TC16", "CASAGIT, giornalisti"},
    {"TC17", "EPPI, periti industriali"},
    {"TC18", "EPAP, ente pluricategoriale"},
    {"TC19", "ENPAB, biologi"},
    {"TC20", "ENPAPI, professione infermieristica"},
    {"TC21", "ENPAP, psicologi"},
    {"TC22", "INPS"},
};

constexpr CodeText kTipoRitenuta[] = {
    {"RT01", "Ritenuta persone fisiche"}, {"RT02", "Ritenuta persone giuridiche"},
    {"RT03", "Contributo INPS"},          {"RT04", "Contributo ENASARCO"},
    {"RT05", "Contributo ENPAM"},         {"RT06", "Altro contributo previdenziale"},
};

constexpr CodeText kTipoCessionePrestazione[] = {
    {"SC", "Sconto"}, {"PR", "Premio"}, {"AB", "Abbuono"}, {"AC", "Spesa accessoria"}};

template <std::size_t N>
std::string_view TextOf(const CodeText (&table)[N], std::string_view code)
{
    for (const CodeText &entry : table)
        if (entry.code == code) return entry.text;
    return {};
}

} // namespace

std::string_view TipoCassaText(std::string_view code)
{
    return TextOf(kTipoCassa, code);
}

std::string_view TipoRitenutaText(std::string_view code)
{
    return TextOf(kTipoRitenuta, code);
}

std::string_view TipoCessionePrestazioneText(std::string_view code)
{
    return TextOf(kTipoCessionePrestazione, code);
}

SheetCell Plain(std::string text)
{
    return text.empty() ? SheetCell{} : SheetCell{{std::move(text), SheetTone::Plain}};
}

SheetSection SectionOf(std::string title, SheetFrame frame, std::vector<SheetColumn> columns,
                       std::vector<SheetRow> rows)
{
    SheetSection section{std::move(title), frame, std::move(columns), rows.size(), {}};
    section.row = [kept = std::move(rows)](std::size_t index) { return kept[index]; };
    return section;
}

void SheetFields::Add(std::string_view label, std::string value)
{
    if (value.empty()) return;
    rows_.push_back({{{std::string(label), SheetTone::Note}}, Plain(std::move(value))});
}

SheetSection SheetFields::Section(std::string title) &&
{
    constexpr double kLabelWidth = 42;
    return SectionOf(std::move(title), SheetFrame::Open, {{"", kLabelWidth, false}, {"", 0, false}}, std::move(rows_));
}

std::string SheetNumber(double value, int decimals_min)
{
    std::string text = FormatAmount(value, kDecimalsMax);
    const std::size_t shortest = text.size() - static_cast<std::size_t>(kDecimalsMax - decimals_min);
    while (text.size() > shortest && text.back() == '0') text.pop_back();
    if (text.back() == ',') text.pop_back();
    return text == "-0" ? "0" : text;
}

std::string SheetNumber(const std::optional<double> &value, int decimals_min)
{
    return value ? SheetNumber(*value, decimals_min) : std::string{};
}

std::string SheetPercent(double value)
{
    return SheetNumber(value, 0) + "%";
}

std::string Joined(std::string_view separator, std::initializer_list<std::string> texts)
{
    std::string joined;
    for (const std::string &text : texts) {
        if (text.empty()) continue;
        if (!joined.empty()) joined += separator;
        joined += text;
    }
    return joined;
}

std::string Labelled(std::string_view word, const std::string &text)
{
    return text.empty() ? std::string{} : fmt::format("{} {}", word, text);
}

std::string CodeWithText(const std::string &code, std::string_view text)
{
    return text.empty() || code.empty() || text.starts_with('*') ? code : fmt::format("{} {}", code, text);
}

std::string LineNumbers(const std::vector<long> &numbers)
{
    std::string text;
    for (std::size_t first = 0, next = 0; first < numbers.size(); first = next) {
        next = first + 1;
        while (next < numbers.size() && numbers[next] == numbers[next - 1] + 1) ++next;
        if (!text.empty()) text += ", ";
        text += std::to_string(numbers[first]);
        if (next - first > 1) text += fmt::format("{}{}", next - first > 2 ? "-" : ", ", numbers[next - 1]);
    }
    return text;
}

std::string AddressText(const fatturapa::IndirizzoType &address)
{
    const std::string province = address.Provincia.empty() ? "" : "(" + address.Provincia + ")";
    return Joined(" - ", {Joined(", ", {address.Indirizzo, address.NumeroCivico}),
                          Joined(" ", {address.CAP, address.Comune, province}), address.Nazione});
}

std::string FiscalIdText(const fatturapa::IdFiscaleType &id)
{
    return Joined(" ", {id.IdPaese, id.IdCodice});
}

std::string ContactsText(const fatturapa::ContattiType &contacts)
{
    return Joined(", ", {Labelled("tel.", contacts.Telefono), Labelled("fax", contacts.Fax), contacts.Email});
}

std::string DiscountText(const fatturapa::ScontoMaggiorazioneType &discount)
{
    const std::string kind = discount.Tipo == "SC" ? "sc." : discount.Tipo == "MG" ? "magg." : discount.Tipo;
    std::string value = discount.Percentuale ? SheetPercent(*discount.Percentuale) : SheetNumber(discount.Importo);
    if (discount.Percentuale && discount.Importo) value += " (" + SheetNumber(discount.Importo) + ")";
    return Joined(" ", {kind, value});
}

std::string VatText(double rate, const std::string &nature)
{
    return nature.empty() || !TestIfZero(rate, kDecimalsMax) ? Joined(" ", {SheetPercent(rate), nature}) : nature;
}

#include "tarvolumera/fatturapa/XmlFields.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Text.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstdint>

namespace fatturapa {

namespace {

constexpr double kAmountLimit = 1e12; // the schema has eleven digits before the point, twelve for quantities
constexpr int kYearMin = 1990;
constexpr int kYearMax = 2100;

/// A value cut for a message: a hostile one may be megabytes long.
std::string Quoted(std::string_view value)
{
    constexpr std::size_t shown_max = 60;
    const std::string_view shown = Utf8Prefix(value.substr(0, shown_max * 4), shown_max);
    return fmt::format("\"{}{}\"", shown, shown.size() < value.size() ? "..." : "");
}

std::optional<long> ParseWhole(std::string_view text)
{
    if (text.starts_with('+')) text.remove_prefix(1);
    int value = 0; // codes are 32-bit everywhere
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

/// Two decimal digits, -1 when they are none.
int TwoDigits(std::string_view text)
{
    const auto is_digit = [](char character) { return character >= '0' && character <= '9'; };
    return is_digit(text[0]) && is_digit(text[1]) ? (text[0] - '0') * 10 + (text[1] - '0') : -1;
}

/// A number of at most 15 digits, 11 of them before the point: both the digits and the power of ten are exact doubles
/// then, so that one division gives the nearest double. Invoices hold little else, and this is several times faster
/// than from_chars.
std::optional<double> ParseShortDecimal(std::string_view text)
{
    static constexpr double powers[] = {1,   1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                        1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const bool is_negative = text.starts_with('-');
    if (is_negative) text.remove_prefix(1);
    if (text.empty() || text.size() > 16) return std::nullopt;
    std::uint64_t digits = 0;
    std::size_t point = text.size();
    for (std::size_t i = 0; i < text.size(); ++i) {
        const unsigned digit = static_cast<unsigned char>(text[i]) - unsigned{'0'};
        if (digit <= 9) {
            digits = digits * 10 + digit;
        } else if (text[i] == '.' && point == text.size()) {
            point = i;
        } else {
            return std::nullopt;
        }
    }
    const std::size_t decimals = point == text.size() ? 0 : text.size() - point - 1;
    const std::size_t count = point + decimals;
    if (count == 0 || count > 15 || point > 11) return std::nullopt;
    const double value = static_cast<double>(static_cast<std::int64_t>(digits)) / powers[decimals];
    return is_negative && digits != 0 ? -value : value;
}

} // namespace

void ReadContext::Refuse(std::string detail) const
{
    throw InvoiceFileError(InvoiceFileError::Reason::NotAnInvoice, file_name_, std::move(detail));
}

void ReadContext::RefuseDocument(std::string detail) const
{
    Refuse(document > 0 ? fmt::format("documento {}: {}", document + 1, detail) : std::move(detail));
}

void ReadContext::Warn(std::string text)
{
    if (warnings_.size() < kWarningsMax) {
        warnings_.push_back({document, std::move(text)});
    } else if (warnings_.size() == kWarningsMax) {
        warnings_.push_back({-1, "Altre anomalie non elencate"});
    }
}

void ReadContext::WarnOfText(std::string_view value, std::string_view what)
{
    if (WantsWarnings()) Warn(fmt::format("{} {}: {}", xml.PlaceOfText(), Quoted(value), what));
}

void ReadContext::SkipUnknown()
{
    // XAdES signatures stand inside the document and change nothing in it.
    if (LocalName(xml.Name()) != "Signature" && WantsWarnings()) {
        Warn(fmt::format("Elemento sconosciuto {}: ignorato", xml.Place()));
    }
    xml.Skip();
}

void ReadContext::RefuseEntries() const
{
    Refuse(fmt::format("il file contiene più di {} voci", kEntriesMax));
}

std::optional<long> ParseXmlDate(std::string_view text)
{
    if (text.size() < 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
    const std::string_view rest = text.substr(10);
    if (!rest.empty() && rest[0] != 'Z' && rest[0] != '+' && rest[0] != '-' && rest[0] != 'T') return std::nullopt;
    const int century = TwoDigits(text);
    const int year = TwoDigits(text.substr(2));
    const int month = TwoDigits(text.substr(5));
    const int day = TwoDigits(text.substr(8));
    if (century < 0 || year < 0 || month < 0 || day < 0) return std::nullopt;
    const long julian = DateToJulian(day, month, century * 100 + year);
    if (julian == 0) return std::nullopt;
    return julian;
}

bool IsPlausibleDay(long day)
{
    static const long first = DateToJulian(1, 1, kYearMin);
    static const long last = DateToJulian(31, 12, kYearMax);
    return day >= first && day <= last;
}

std::optional<double> ParseXmlAmount(std::string_view text)
{
    if (const std::optional<double> value = ParseShortDecimal(text)) return value;
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    // Not a finite number: "inf" and "nan" are numbers to from_chars.
    if (error != std::errc() || end != text.data() + text.size() || !(std::fabs(value) < kAmountLimit)) {
        return std::nullopt;
    }
    return value == 0 ? 0.0 : value; // "-0.00" is plain zero
}

void ReadText(ReadContext &context, std::string &value)
{
    value = context.xml.Text();
}

void ReadAmount(ReadContext &context, std::optional<double> &value)
{
    const std::string_view text = context.xml.Text();
    context.WarnOfBlanks(text);
    value = ParseXmlAmount(text);
    if (!value && !text.empty()) context.WarnOfText(text, "non è un importo valido, ignorato");
}

void ReadAmount(ReadContext &context, double &value)
{
    std::optional<double> amount;
    ReadAmount(context, amount);
    if (amount) value = *amount;
}

void ReadWhole(ReadContext &context, std::optional<long> &value)
{
    const std::string_view text = context.xml.Text();
    value = ParseWhole(text);
    if (!value && !text.empty()) context.WarnOfText(text, "non è un numero intero, ignorato");
}

void ReadWhole(ReadContext &context, long &value)
{
    std::optional<long> number;
    ReadWhole(context, number);
    if (number) value = *number;
}

void ReadDay(ReadContext &context, long &value)
{
    const std::string_view text = context.xml.Text();
    if (text.empty()) return;
    context.WarnOfBlanks(text);
    const std::optional<long> day = ParseXmlDate(text);
    if (!day) {
        context.WarnOfText(text, "non è una data valida, ignorata");
    } else if (!IsPlausibleDay(*day)) {
        context.WarnOfText(text, "data non plausibile, ignorata");
    } else {
        value = *day;
    }
}

} // namespace fatturapa

#include "tables/TableChecks.h"

#include <algorithm>
#include <fmt/format.h>

// Forms of single fields: what can be told without asking the archive.

namespace {

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsCapital(char c)
{
    return c >= 'A' && c <= 'Z';
}

bool IsCapitalOrDigit(char c)
{
    return IsDigit(c) || IsCapital(c);
}

bool All(std::string_view text, bool (*is)(char))
{
    return std::all_of(text.begin(), text.end(), is);
}

FiscalCodeCheck Wrong(FiscalCodeFault fault, std::string text)
{
    return {fault, std::move(text), '\0'};
}

/// Country and number run together are the commonest slip with foreign numbers, and no check digit finds it. The Swiss
/// number itself begins with letters, CHE; the Greek prefix is not the nation's code.
bool HasCountryInFront(std::string_view nation, std::string_view vat_number)
{
    if (nation == "CH") return vat_number.starts_with("CHCHE");
    return vat_number.size() > 4 && vat_number.starts_with(nation == "GR" ? "EL" : nation);
}

/// The remainder by 97 of the IBAN with its first four characters at the end and letters as 10 to 35.
int IbanRemainder(std::string_view iban)
{
    int remainder = 0;
    const std::string turned = std::string(iban.substr(4)) + std::string(iban.substr(0, 4));
    for (const char c : turned)
        remainder = IsDigit(c) ? (remainder * 10 + (c - '0')) % 97 : (remainder * 100 + (c - 'A' + 10)) % 97;
    return remainder;
}

/// Length of an IBAN for the countries that Italian firms pay to; 0 for the others.
std::size_t IbanLength(std::string_view country)
{
    constexpr std::pair<std::string_view, std::size_t> kLengths[] = {
        {"IT", 27}, {"SM", 27}, {"VA", 22}, {"AT", 20}, {"BE", 16}, {"BG", 22}, {"CH", 21}, {"CY", 28}, {"CZ", 24},
        {"DE", 22}, {"DK", 18}, {"EE", 20}, {"ES", 24}, {"FI", 18}, {"FR", 27}, {"GB", 22}, {"GR", 27}, {"HR", 21},
        {"HU", 28}, {"IE", 22}, {"LI", 21}, {"LT", 20}, {"LU", 20}, {"LV", 21}, {"MC", 27}, {"MT", 31}, {"NL", 18},
        {"NO", 15}, {"PL", 28}, {"PT", 25}, {"RO", 24}, {"SE", 24}, {"SI", 19}, {"SK", 24}};
    for (const auto &[code, length] : kLengths)
        if (code == country) return length;
    return 0;
}

} // namespace

FiscalCodeCheck CheckCounterpartVat(std::string_view nation, std::string_view vat_number)
{
    if (vat_number.empty()) return {};
    if (nation == "IT") return CheckVatNumber(vat_number);
    if (!All(vat_number, IsCapitalOrDigit))
        return Wrong(FiscalCodeFault::Characters, "sono ammesse solo lettere maiuscole e cifre");
    if (nation.size() == 2 && HasCountryInFront(nation, vat_number))
        return Wrong(FiscalCodeFault::Characters, "scriverla senza la sigla della nazione");
    return {};
}

FiscalCodeCheck CheckCounterpartFiscalCode(std::string_view nation, bool is_person, std::string_view fiscal_code)
{
    if (fiscal_code.empty()) return {};
    if (nation != "IT")
        return All(fiscal_code, IsCapitalOrDigit)
                   ? FiscalCodeCheck{}
                   : Wrong(FiscalCodeFault::Characters, "sono ammesse solo lettere maiuscole e cifre");
    FiscalCodeCheck check = CheckFiscalCode(fiscal_code);
    const std::size_t length = Utf8Length(fiscal_code);
    if (is_person && length == 11)
        return Wrong(FiscalCodeFault::Length, "quello di una persona fisica ha 16 caratteri");
    if (!is_person && length == 16 && check.ok())
        return Wrong(FiscalCodeFault::Length, "è di una persona fisica, una società ne ha uno di 11 cifre");
    return check;
}

std::string IbanFault(std::string_view iban)
{
    if (iban.empty()) return {};
    if (!All(iban, IsCapitalOrDigit)) return "sono ammesse solo lettere maiuscole e cifre, senza spazi";
    if (iban.size() < 15 || !All(iban.substr(0, 2), IsCapital) || !All(iban.substr(2, 2), IsDigit))
        return "deve iniziare con la sigla della nazione e due cifre di controllo";
    const std::size_t length = IbanLength(iban.substr(0, 2));
    if (length != 0 && iban.size() != length)
        return fmt::format("lunghezza errata: {} caratteri invece di {}", iban.size(), length);
    // CIN, then ABI and CAB: letters there would pass the arithmetic.
    if (iban.starts_with("IT") && (!IsCapital(iban[4]) || !All(iban.substr(5, 10), IsDigit)))
        return "dopo le cifre di controllo vogliono una lettera (CIN) e dieci cifre (ABI e CAB)";
    return IbanRemainder(iban) == 1 ? "" : "cifre di controllo errate";
}

std::string BicFault(std::string_view bic)
{
    if (bic.empty()) return {};
    const bool right = (bic.size() == 8 || bic.size() == 11) && All(bic.substr(0, 6), IsCapital) &&
                       All(bic.substr(6), IsCapitalOrDigit);
    return right ? "" : "deve avere 8 o 11 caratteri: quattro lettere della banca, due della nazione e il resto";
}

std::string EanFault(std::string_view ean)
{
    if (ean.empty()) return {};
    if (!All(ean, IsDigit)) return "sono ammesse solo cifre";
    if (ean.size() != 8 && ean.size() != 12 && ean.size() != 13 && ean.size() != 14)
        return fmt::format("lunghezza errata: {} cifre invece di 8, 12, 13 o 14", ean.size());
    int sum = 0; // weights 3 and 1 by turns, the check digit on the right weighs 1
    for (std::size_t i = 0; i < ean.size(); ++i) sum += (ean[i] - '0') * ((ean.size() - i) % 2 == 0 ? 3 : 1);
    return sum % 10 == 0 ? "" : "cifra di controllo errata";
}

std::string EmailFault(std::string_view address)
{
    if (address.empty()) return {};
    const std::size_t at = address.find('@');
    if (at == std::string_view::npos || at == 0 || address.find('@', at + 1) != std::string_view::npos)
        return "deve avere un nome, una @ e un dominio";
    if (address.find_first_of(" \t,;<>()") != std::string_view::npos) return "contiene un carattere non ammesso";
    const std::string_view domain = address.substr(at + 1);
    const std::size_t dot = domain.rfind('.');
    const bool dots_right = dot != std::string_view::npos && dot + 2 < domain.size() && domain.front() != '.' &&
                            address.find("..") == std::string_view::npos;
    return dots_right ? "" : "il dominio non è completo";
}

std::string DestinationCodeFault(std::string_view nation, std::string_view code)
{
    if (code.empty()) return {};
    if (!All(code, IsCapitalOrDigit)) return "sono ammesse solo lettere maiuscole e cifre";
    if (code.size() != 7 && code.size() != 6)
        return fmt::format("lunghezza errata: {} caratteri invece di 7 (6 per gli uffici pubblici)", code.size());
    if (nation == "IT" && code == "XXXXXXX") return "XXXXXXX è per i soggetti esteri; senza codice scrivere 0000000";
    return {};
}

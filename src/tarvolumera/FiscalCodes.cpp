#include "tarvolumera/FiscalCodes.h"

#include <array>
#include <cstdint>

#include <fmt/format.h>

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Text.h"

namespace {

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}
bool IsCapital(char c)
{
    return c >= 'A' && c <= 'Z';
}

FiscalCodeCheck Empty()
{
    return {FiscalCodeFault::Empty, "codice mancante", '\0'};
}

FiscalCodeCheck WrongLength(std::size_t length, const char *expected)
{
    return {FiscalCodeFault::Length, fmt::format("lunghezza errata: {} caratteri invece di {}", length, expected),
            '\0'};
}

/// @param position  of the character, in bytes from 0; everything before it is ASCII, so it counts characters as well
FiscalCodeCheck WrongCharacter(std::string_view code, std::size_t position)
{
    const std::string character = OnOneLine(Utf8Prefix(code.substr(position), 1));
    return {FiscalCodeFault::Characters,
            fmt::format("caratteri non validi: '{}' in posizione {}", character, position + 1), '\0'};
}

FiscalCodeCheck CompareCheckCharacter(char found, char expected)
{
    if (found == expected) return {};
    return {FiscalCodeFault::CheckCharacter, fmt::format("carattere di controllo errato: atteso {}", expected),
            expected};
}

/// Control digit of eleven digits, over the first ten: the even places count double, with their digits added up.
char ControlDigit(std::string_view digits)
{
    int sum = 0;
    for (std::size_t i = 0; i < 10; ++i) {
        const int digit = digits[i] - '0';
        const int doubled = 2 * digit;
        if (i % 2 == 0)
            sum += digit;
        else
            sum += doubled > 9 ? doubled - 9 : doubled;
    }
    return static_cast<char>('0' + (10 - sum % 10) % 10);
}

FiscalCodeCheck CheckElevenDigits(std::string_view code)
{
    for (std::size_t i = 0; i < code.size(); ++i)
        if (!IsDigit(code[i])) return WrongCharacter(code, i);
    if (code.find_first_not_of('0') == std::string_view::npos)
        return {FiscalCodeFault::OnlyZeros, "codice composto di soli zeri", '\0'};
    return CompareCheckCharacter(code[10], ControlDigit(code));
}

} // namespace

std::string NormalisedFiscalCode(std::string_view text)
{
    constexpr std::string_view kHardBlank = "\u00A0";
    std::string code;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.substr(i).starts_with(kHardBlank))
            ++i;
        else if (std::string_view(" \t\r\n.-").find(text[i]) == std::string_view::npos)
            code += text[i];
    }
    code = ToUpper(code);
    const bool has_country = code.size() == 13 || code.size() == 18; // eleven or sixteen and the two letters
    if (has_country && code.starts_with("IT")) code.erase(0, 2);
    return code;
}

FiscalCodeCheck CheckVatNumber(std::string_view vat_number)
{
    if (vat_number.empty()) return Empty();
    if (const std::size_t length = Utf8Length(vat_number); length != 11) return WrongLength(length, "11");
    return CheckElevenDigits(vat_number);
}

bool IsTelematicVatNumber(std::string_view vat_number)
{
    return CheckVatNumber(vat_number).ok() && vat_number.front() <= '7';
}

namespace {

constexpr std::string_view kMonths = "ABCDEHLMPRST";     // January to December
constexpr std::string_view kDigitLetters = "LMNPQRSTUV"; // what stands for 0 to 9 in an omocodia

/// The digit that a character stands for, as itself or as its letter; -1 for none.
int DigitOf(char c)
{
    if (IsDigit(c)) return c - '0';
    const std::size_t letter = kDigitLetters.find(c);
    return letter == std::string_view::npos ? -1 : static_cast<int>(letter);
}

/// Where a person's code fails its form; 16 when it does not.
std::size_t FirstWrongPlace(std::string_view code)
{
    constexpr std::string_view kForm = "LLLLLLDDMDDLDDDL"; // letter, digit or its letter, month
    for (std::size_t i = 0; i < kForm.size(); ++i) {
        const bool right = kForm[i] == 'L'   ? IsCapital(code[i])
                           : kForm[i] == 'D' ? DigitOf(code[i]) >= 0
                                             : kMonths.find(code[i]) != std::string_view::npos;
        if (!right) return i;
    }
    return kForm.size();
}

/// The day of birth, 40 more for women, within its month. The century is not in the code: 29 February is right when
/// either had one.
bool HasBirthDate(std::string_view code)
{
    const int year = 10 * DigitOf(code[6]) + DigitOf(code[7]);
    const int month = static_cast<int>(kMonths.find(code[8])) + 1;
    const int coded_day = 10 * DigitOf(code[9]) + DigitOf(code[10]);
    const int day = coded_day > 40 ? coded_day - 40 : coded_day;
    return day >= 1 && (day <= DaysInMonth(month, 1900 + year) || day <= DaysInMonth(month, 2000 + year));
}

/// Control letter over the first fifteen characters: those at odd places count by a table, the others by their rank.
char ControlLetter(std::string_view code)
{
    constexpr std::array<std::uint8_t, 26> kOddPlace = {1,  0,  5, 7, 9, 13, 15, 17, 19, 21, 2,  4,  18,
                                                        20, 11, 3, 6, 8, 12, 14, 16, 10, 22, 25, 24, 23};
    int sum = 0;
    for (std::size_t i = 0; i < 15; ++i) {
        const int rank = IsDigit(code[i]) ? code[i] - '0' : code[i] - 'A';
        sum += i % 2 == 0 ? kOddPlace[static_cast<std::size_t>(rank)] : rank;
    }
    return static_cast<char>('A' + sum % 26);
}

FiscalCodeCheck CheckPersonCode(std::string_view code)
{
    if (const std::size_t wrong = FirstWrongPlace(code); wrong < code.size()) return WrongCharacter(code, wrong);
    if (const FiscalCodeCheck check = CompareCheckCharacter(code[15], ControlLetter(code)); !check.ok()) return check;
    if (!HasBirthDate(code)) return {FiscalCodeFault::BirthDate, "data di nascita impossibile", '\0'};
    return {};
}

} // namespace

FiscalCodeCheck CheckFiscalCode(std::string_view fiscal_code)
{
    if (fiscal_code.empty()) return Empty();
    switch (const std::size_t length = Utf8Length(fiscal_code)) {
    case 11:
        return CheckElevenDigits(fiscal_code);
    case 16:
        return CheckPersonCode(fiscal_code);
    default:
        return WrongLength(length, "11 o 16");
    }
}

FiscalCodeHolder HolderOf(std::string_view fiscal_code)
{
    if (fiscal_code.size() == 11 && fiscal_code.find_first_not_of("0123456789") == std::string_view::npos)
        return FiscalCodeHolder::Body;
    if (fiscal_code.size() == 16 && FirstWrongPlace(fiscal_code) == 16) return FiscalCodeHolder::Person;
    return FiscalCodeHolder::Unknown;
}

FiscalCodeCheck CheckPostcode(std::string_view postcode)
{
    if (postcode.empty()) return Empty();
    if (const std::size_t length = Utf8Length(postcode); length != 5) return WrongLength(length, "5");
    for (std::size_t i = 0; i < postcode.size(); ++i)
        if (!IsDigit(postcode[i])) return WrongCharacter(postcode, i);
    // All of one length, the texts compare as their numbers do.
    if (postcode < "00010" || postcode > "98168")
        return {FiscalCodeFault::Range, "CAP inesistente: i codici vanno da 00010 a 98168", '\0'};
    return {};
}

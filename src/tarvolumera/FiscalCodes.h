#pragma once

#include <string>
#include <string_view>

// Checks of the Italian identifiers by their form alone; nothing is asked of any register. The checks take a code as it
// is stored, so what comes from a file or a keyboard goes through NormalisedFiscalCode first.

enum class FiscalCodeFault {
    None,
    Empty,
    Length,
    Characters,     ///< a character that the form does not admit at its place
    BirthDate,      ///< a person's code with a day that its month does not have
    CheckCharacter, ///< the last digit or letter does not follow from the others
    OnlyZeros,      ///< passes the arithmetic and belongs to nobody
    Range,          ///< a postcode of the right form that no place has
};

struct FiscalCodeCheck {
    FiscalCodeFault fault = FiscalCodeFault::None;
    std::string text;     ///< what is wrong, in Italian, as "carattere di controllo errato: atteso 7"; empty when right
    char expected = '\0'; ///< the right check character when that is the fault

    bool ok() const { return fault == FiscalCodeFault::None; }
};

/// Upper case, without blanks, points and dashes, and without the country in front of it ("IT 01234567897" is
/// 01234567897; a person's code that begins with IT keeps it). For VAT numbers and fiscal codes.
std::string NormalisedFiscalCode(std::string_view text);

/// Partita IVA: eleven digits and the control digit.
FiscalCodeCheck CheckVatNumber(std::string_view vat_number);

/// The telematic files admit a VAT number only with a first digit from 0 to 7.
/// @return true when the number is right and of that kind
bool IsTelematicVatNumber(std::string_view vat_number);

/// Codice fiscale of either kind: sixteen characters of a person, with digits replaced by letters where two persons
/// would have the same code (omocodia), or eleven digits of a company, a body or a provisional code.
FiscalCodeCheck CheckFiscalCode(std::string_view fiscal_code);

enum class FiscalCodeHolder { Unknown, Person, Body };

/// Whose code it is by its shape; the check character plays no part, so that a mistyped code still finds its page.
FiscalCodeHolder HolderOf(std::string_view fiscal_code);

/// CAP of an Italian address: five digits from 00010 to 98168. Range is a fault to warn of, the others are refusals: in
/// electronic invoices 00000 stands for a foreign postcode that does not fit.
FiscalCodeCheck CheckPostcode(std::string_view postcode);

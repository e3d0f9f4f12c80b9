#pragma once

#include <QString>
#include <string_view>

// What the status line says of a VAT number or fiscal code while it is typed: "Partita IVA: mancano 3 cifre", "Codice
// fiscale corretto". Empty for an empty one and for other nations, whose numbers have forms of their own. Blanks,
// points and a leading IT are as good as none.

QString VatNumberState(std::string_view nation, std::string_view typed);
QString FiscalCodeState(std::string_view nation, bool is_person, std::string_view typed);

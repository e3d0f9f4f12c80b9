#pragma once

#include <string>

// What the views of the schedule have in common: what is open, and how amounts are added.

/// The condition of an open instalment. One that is paid but held in a slip has not been settled yet, and still counts.
inline constexpr const char *kOpenCondition = "(sca_pagato = 0 OR (sca_pagato <> 0 AND sca_parked <> 0))";

/// The same as part of a report's selection formula.
inline constexpr const char *kOpenFormula =
    "({scadenze.sca_pagato} = 0 or ({scadenze.sca_pagato} <> 0 and {scadenze.sca_parked} <> 0))";

/// SQL for the cents of the amounts for which the condition holds, 0 when there are none. Each amount is rounded before
/// it is added: a sum of floating-point euros drifts.
std::string CentsText(const std::string &condition);

/// SQL for the name of an instalment's counterpart, and the joins behind admin.scadenze that give it.
inline constexpr const char *kNameText = "CASE sca_relaz WHEN 0 THEN cli_desc ELSE for_desc END";
inline constexpr const char *kNameJoins = " LEFT JOIN admin.clienti1 ON cli_codice = sca_cliente"
                                          " LEFT JOIN admin.fornito1 ON for_codice = sca_fornitore";

/// "Marzo 2026", the month in which a day falls.
std::string MonthName(long day);

/// "Date(2026,3,15)" of a selection formula.
std::string FormulaDate(long day);

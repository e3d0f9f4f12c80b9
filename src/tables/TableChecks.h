#pragma once

#include "tarvolumera/Causali.h"
#include "tarvolumera/ChartOfAccounts.h"
#include "tarvolumera/Company.h"
#include "tarvolumera/Counterparts.h"
#include "tarvolumera/FiscalCodes.h"
#include "tarvolumera/Lookups.h"
#include "tarvolumera/PaymentTerms.h"
#include "tarvolumera/VatCodes.h"
#include "tarvolumera/Warehouse.h"

#include <string>
#include <string_view>
#include <vector>

/// What is wrong with a field of a record that is about to be stored.
struct FieldFault {
    enum class Severity {
        Refused, ///< the record is not stored
        Question ///< stored when the user says Yes; the text ends in "Vuoi Continuare ?"
    };

    std::string column; ///< the field that gets the focus: "cli_piva"; for a template row "car_mas" ...
    std::string text;   ///< Italian, whole sentence
    Severity severity = Severity::Refused;
    int row = 0; ///< template row of a causale, from 1; 0 = the record itself
};

// All faults of a record in the order of its fields; none when it may be stored. Codes are looked up in the archive.
// is_new: the code must be free.
std::vector<FieldFault> CheckCliente(SACommand *cmd, const CLIENTI &record, bool is_new);
std::vector<FieldFault> CheckFornitore(SACommand *cmd, const FORNITORI &record, bool is_new);
std::vector<FieldFault> CheckCausale(SACommand *cmd, const CAUCONT &record, bool is_new);
std::vector<FieldFault> CheckCodiva(SACommand *cmd, const CODIVA &record, bool is_new);
std::vector<FieldFault> CheckPagamento(SACommand *cmd, const PAGAMENTI &record, bool is_new);
std::vector<FieldFault> CheckMastro(SACommand *cmd, const MASTRI &record, bool is_new);
std::vector<FieldFault> CheckConto(SACommand *cmd, const CONTI &record, bool is_new);
std::vector<FieldFault> CheckSottoconto(SACommand *cmd, const SOTTOCON &record, bool is_new);
std::vector<FieldFault> CheckSezione(SACommand *cmd, const SEZIONI &record, bool is_new);
std::vector<FieldFault> CheckBanca(SACommand *cmd, const BANCHE &record, bool is_new);
std::vector<FieldFault> CheckCentro(SACommand *cmd, const CENTRI &record, bool is_new);
std::vector<FieldFault> CheckAgente(SACommand *cmd, const AGENTI &record, bool is_new);
std::vector<FieldFault> CheckArticolo(SACommand *cmd, const ARTICOLI &record, bool is_new);
std::vector<FieldFault> CheckCausaleMagazzino(SACommand *cmd, const CAUMAG &record, bool is_new);
std::vector<FieldFault> CheckDitta(SACommand *cmd, const DITTE &record, bool is_new);
std::vector<FieldFault> CheckFlag(SACommand *cmd, const FLAG &record, bool is_new);

// Single fields, for a mark beside the field while it is typed. An empty text is no fault.

/// VAT number of a customer or supplier: by the Italian rule for nation "IT", by its characters alone for others, which
/// must come without their country in front.
FiscalCodeCheck CheckCounterpartVat(std::string_view nation, std::string_view vat_number);
/// Fiscal code: sixteen characters for an Italian person, eleven digits for an Italian body; free for other nations.
FiscalCodeCheck CheckCounterpartFiscalCode(std::string_view nation, bool is_person, std::string_view fiscal_code);

// The same for the other fields with a form of their own: what is wrong, in Italian; empty when right or empty.
std::string IbanFault(std::string_view iban);
std::string BicFault(std::string_view bic);
std::string EanFault(std::string_view ean);
std::string EmailFault(std::string_view address);
/// Address code of the exchange system: 7 characters for firms, 6 for public offices.
std::string DestinationCodeFault(std::string_view nation, std::string_view code);

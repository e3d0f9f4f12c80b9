#include "tables/FaultList.h"

#include <fmt/format.h>

// Sections, banks, cost centres, agents.

std::vector<FieldFault> CheckSezione(SACommand *cmd, const SEZIONI &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "sez_");
    faults.Code("codice", record.sez_codice, sqlsez, &record, is_new);
    faults.Description("desc", record.sez_desc);
    faults.Flag("esc_liq_iva", record.sez_esc_liq_iva);
    faults.Flag("esc_spesometro", record.sez_esc_spesometro);
    faults.Flag("esc_ventilazione", record.sez_esc_ventilazione);
    return faults.Take();
}

namespace {

/// ABI and CAB: five digits that say the same as the Italian IBAN, where they stand behind the first five characters.
void CheckBankCode(FaultList &faults, const char *field, const char *title, std::string_view code,
                   std::string_view in_iban)
{
    const bool five_digits = code.size() == 5 && code.find_first_not_of("0123456789") == std::string_view::npos;
    if (!code.empty() && !five_digits)
        faults.Refuse(field, fmt::format("{}: deve avere cinque cifre.", title));
    else if (!code.empty() && !in_iban.empty() && code != in_iban)
        faults.Refuse(field, fmt::format("{} diverso da quello dell'IBAN ({}).", title, in_iban));
}

} // namespace

std::vector<FieldFault> CheckBanca(SACommand *cmd, const BANCHE &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "ban_");
    faults.Code("codice", record.ban_codice, sqlban, &record, is_new);
    faults.Description("desc", record.ban_desc);
    const std::string_view iban = record.ban_iban;
    const std::string fault = IbanFault(iban);
    const bool italian = fault.empty() && (iban.starts_with("IT") || iban.starts_with("SM"));
    CheckBankCode(faults, "abi", "ABI", record.ban_abi, italian ? iban.substr(5, 5) : std::string_view{});
    CheckBankCode(faults, "cab", "CAB", record.ban_cab, italian ? iban.substr(10, 5) : std::string_view{});
    faults.RefuseIf(!fault.empty(), "iban", fmt::format("IBAN: {}.", fault));
    const std::string bic = BicFault(record.ban_bic);
    faults.RefuseIf(!bic.empty(), "bic", fmt::format("BIC: {}.", bic));
    faults.Account("mas", {record.ban_mas, record.ban_con, record.ban_sot});
    return faults.Take();
}

std::vector<FieldFault> CheckCentro(SACommand *cmd, const CENTRI &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "cdc_");
    faults.Code("codice", record.cdc_codice, sqlcdc, &record, is_new);
    faults.Description("desc", record.cdc_desc);
    return faults.Take();
}

std::vector<FieldFault> CheckAgente(SACommand *cmd, const AGENTI &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "age_");
    faults.Code("codice", record.age_codice, sqlage, &record, is_new);
    faults.Description("desc", record.age_desc);
    return faults.Take();
}

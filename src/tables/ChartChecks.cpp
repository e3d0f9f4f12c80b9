#include "tables/FaultList.h"

#include <fmt/format.h>

// The chart of accounts.

namespace {

/// The books know one master of the customers and one of the suppliers; the flags must say the same.
void CheckMasterFlag(FaultList &faults, const MASTRI &record, const char *field, long value, long company_master,
                     const char *whose)
{
    faults.Flag(field, value);
    if (record.mas_codice == company_master && value == 0)
        faults.Refuse(field, fmt::format("È il mastro {} della ditta.", whose));
    else if (record.mas_codice != company_master && value == 1 && company_master != 0)
        faults.Ask(field, fmt::format("Il mastro {} della ditta è il {}.", whose, company_master));
}

} // namespace

std::vector<FieldFault> CheckMastro(SACommand *cmd, const MASTRI &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "mas_");
    faults.Code("codice", record.mas_codice, sqlmas, &record, is_new);
    faults.Description("desc", record.mas_desc);
    faults.RefuseIf(record.mas_cli == 1 && record.mas_for == 1, "for",
                    "Un mastro è dei clienti o dei fornitori, non di entrambi.");
    CheckMasterFlag(faults, record, "cli", record.mas_cli, lumera_db_impo.dit_mas_cli, "clienti");
    CheckMasterFlag(faults, record, "for", record.mas_for, lumera_db_impo.dit_mas_for, "fornitori");
    return faults.Take();
}

std::vector<FieldFault> CheckConto(SACommand *cmd, const CONTI &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "con_");
    MASTRI master;
    const bool has_master = sqlmas.Search(scope.get(), record.con_mas, &master);
    faults.RefuseIf(!has_master, "mas", fmt::format("Il mastro {} non esiste.", record.con_mas));
    faults.Code("codice", record.con_codice, sqlcon, &record, is_new);
    faults.Description("desc", record.con_desc);
    faults.Flag("cli", record.con_cli);
    faults.Flag("for", record.con_for);
    faults.RefuseIf(has_master && record.con_cli == 1 && master.mas_cli == 0, "cli",
                    fmt::format("Il mastro {} non è dei clienti.", record.con_mas));
    faults.RefuseIf(has_master && record.con_for == 1 && master.mas_for == 0, "for",
                    fmt::format("Il mastro {} non è dei fornitori.", record.con_mas));
    return faults.Take();
}

std::vector<FieldFault> CheckSottoconto(SACommand *cmd, const SOTTOCON &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "sot_");
    MASTRI master;
    CONTI account;
    if (!sqlmas.Search(scope.get(), record.sot_mas, &master))
        faults.Refuse("mas", fmt::format("Il mastro {} non esiste.", record.sot_mas));
    else if (!sqlcon.Search(scope.get(), record.sot_mas, record.sot_con, &account))
        faults.Refuse("con", fmt::format("Il conto {}.{} non esiste.", record.sot_mas, record.sot_con));
    if (const long relation = MasterRelation(lumera_db_impo, record.sot_mas); relation != kNoCounterpart)
        faults.Refuse("mas", fmt::format("Nel mastro {} i sottoconti sono i {} stessi.", record.sot_mas,
                                         relation == kCustomer ? "clienti" : "fornitori"));
    faults.Code("codice", record.sot_codice, sqlsot, &record, is_new);
    faults.Description("desc", record.sot_desc);
    const bool known_kind = record.sot_tipo.str().size() == 1 &&
                            std::string_view("APCRT").find(record.sot_tipo.str()) != std::string_view::npos;
    faults.RefuseIf(!known_kind, "tipo", "Tipo: A attività, P passività, C costo, R ricavo, T escluso dalla chiusura.");
    return faults.Take();
}

#include "tables/FaultList.h"

#include <cmath>
#include <fmt/format.h>

void FaultList::Refuse(std::string_view field, std::string text)
{
    faults_.push_back({prefix_ + std::string(field), std::move(text), FieldFault::Severity::Refused, row_});
}

void FaultList::Ask(std::string_view field, const std::string &text)
{
    faults_.push_back(
        {prefix_ + std::string(field), text + "\n\nVuoi Continuare ?", FieldFault::Severity::Question, row_});
}

void FaultList::RefuseIf(bool wrong, std::string_view field, std::string text)
{
    if (wrong) Refuse(field, std::move(text));
}

bool FaultList::Code(std::string_view field, long code, const CTarvoPostgreSQL &table, const void *record, bool is_new)
{
    if (!IsCode(code))
        Refuse(field, "Codice mancante o fuori dai limiti.");
    else if (is_new && RecordExists(cmd_, table, record))
        Refuse(field, fmt::format("Il codice {} è già presente.", code));
    return IsCode(code);
}

void FaultList::Description(std::string_view field, std::string_view text)
{
    RefuseIf(Trimmed(text).empty(), field, "Descrizione mancante.");
}

void FaultList::Flag(std::string_view field, long value)
{
    RefuseIf(value != 0 && value != 1, field, fmt::format("«{}» può essere solo 0 o 1.", field));
}

void FaultList::Range(std::string_view field, double value, double least, double most)
{
    RefuseIf(!std::isfinite(value) || value < least || value > most, field,
             fmt::format("«{}» deve essere tra {} e {}.", field, least, most));
}

void FaultList::Account(std::string_view field, const AccountKey &account)
{
    if (account == AccountKey{}) return;
    SOTTOCON sub_account;
    if (!account.IsSet())
        Refuse(field, "Indicare mastro, conto e sottoconto, o nessuno dei tre.");
    else if (!sqlsot.Search(cmd_, account.mas, account.con, account.sot, &sub_account))
        Refuse(field, fmt::format("Il conto {}.{}.{} non esiste.", account.mas, account.con, account.sot));
}

void FaultList::Missing(std::string_view field, long code, std::string_view what)
{
    Refuse(field, fmt::format("{} {} non esiste.", what, code));
}

bool RecordExists(SACommand *cmd, const CTarvoPostgreSQL &table, const void *record)
{
    SACommand query(cmd->Connection(), table.Description().SearchText());
    table.Description().Bind(&query, record);
    query.Execute();
    return query.FetchNext();
}

long CountRows(SACommand *cmd, std::string_view text, const std::function<void(SACommand &)> &bind)
{
    SACommand query(cmd->Connection(), text);
    if (bind) bind(query);
    query.Execute();
    return query.FetchNext() ? query.Field(1).asLong() : 0;
}

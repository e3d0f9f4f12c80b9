#include "tarvolumera/archive/ArchiveCheck.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/JournalEntry.h"
#include "tarvolumera/archive/ArchiveChecks.h"
#include "tarvolumera/archive/ArchiveContentChecks.h"
#include "tarvolumera/archive/Migrations.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

constexpr char kEngine[] = "Motore";

/// A column as the reader of the report wants to see it; see ArchiveQuery for the forms.
std::string Shown(const SAField &field, std::string_view form)
{
    if (form == "e") return FormatAmount(field.asDouble());
    if (form == "s") return field.asLong() == kCustomer ? "cliente" : "fornitore";
    if (form == "r") return RegisterName(field.asLong());
    if (form == "d" && !field.asDateTime().IsNull()) return FormatDate(FromSqlDate(field.asDateTime()));
    return field.asString();
}

std::string Filled(std::string_view text, SACommand *row)
{
    std::string filled;
    while (!text.empty()) {
        const std::size_t open = text.find('{');
        filled += text.substr(0, open);
        if (open == std::string_view::npos) break;
        const std::size_t close = text.find('}', open);
        const std::string_view column = text.substr(open + 1, close - open - 1);
        const std::size_t colon = std::min(column.find(':'), column.size());
        const std::string_view form = column.substr(std::min(colon + 1, column.size()));
        filled += Shown(row->Field(column.substr(0, colon)), form);
        text.remove_prefix(close + 1);
    }
    return filled;
}

void RunQuery(SACommand *cmd, const ArchiveQuery &check, ArchiveFaults *faults)
{
    if (faults->IsOver(check.kind)) return;
    SACommand query(cmd->Connection(), check.sql + " LIMIT :massimo");
    query.Param("massimo").setAsLong(static_cast<long>(faults->RowsWanted(check.kind)));
    query.Execute();
    while (query.FetchNext()) faults->Add({check.kind, Filled(check.where, &query), Filled(check.text, &query)});
}

long CountOf(SACommand *cmd, const char *table)
{
    SACommand query(cmd->Connection(), fmt::format("SELECT COUNT(*) AS numrec FROM admin.{}", table));
    query.Execute();
    return query.FetchNext() ? query.Field("numrec").asLong() : 0;
}

/// The embedded engine can look at its own file: pages, indexes, declared conditions, foreign keys of every table. A
/// server does that by its own means.
void CheckEmbeddedEngine(SACommand *cmd, ArchiveFaults *faults)
{
    SACommand integrity(cmd->Connection(),
                        "SELECT integrity_check AS esito FROM pragma_integrity_check(:massimo, 'admin')");
    integrity.Param("massimo").setAsLong(static_cast<long>(faults->RowsWanted(kEngine)));
    integrity.Execute();
    while (integrity.FetchNext()) {
        const std::string outcome = integrity.Field("esito").asString();
        if (outcome != "ok") faults->Add({kEngine, "Archivio", "controllo di integrità: " + outcome});
    }
    SACommand keys(cmd->Connection(), "SELECT \"table\" AS tabella, parent AS riferita, COUNT(*) AS quanti"
                                      " FROM pragma_foreign_key_check GROUP BY 1, 2 ORDER BY 1, 2");
    keys.Execute();
    while (keys.FetchNext())
        faults->Add({kEngine, Filled("Tabella {tabella}", &keys),
                     Filled("{quanti} record senza il loro in {riferita}", &keys)});
}

void CheckVersion(SACommand *cmd, ArchiveFaults *faults)
{
    const long stored = ArchiveVersion(cmd), known = ProgramArchiveVersion();
    if (stored != known)
        faults->Add(
            {kEngine, "Tabella versione", fmt::format("versione {}, il programma scrive la {}", stored, known)});
}

void LookAtEverything(SACommand *cmd, ArchiveCheckResult *result, ArchiveFaults *faults)
{
    SATransaction picture(cmd, SATransactionKind::Read);
    if (cmd->Connection()->Engine() == SAEngine::SQLite) CheckEmbeddedEngine(cmd, faults);
    CheckVersion(cmd, faults);
    result->entries = CountOf(cmd, "pnota1");
    result->rows = CountOf(cmd, "pnotaro2");
    result->instalments = CountOf(cmd, "scadenze");
    for (const ArchiveQuery &check : ArchiveQueries()) RunQuery(cmd, check, faults);
    CheckVatLines(cmd, faults);
    CheckProtocols(cmd, faults);
    CheckDigests(cmd, faults);
    picture.Commit();
}

} // namespace

ArchiveCheckResult CheckArchive(SACommand *cmd, std::size_t fault_max)
{
    CommandScope scope(cmd);
    ArchiveCheckResult result;
    ArchiveFaults faults(fault_max);
    try {
        LookAtEverything(scope.get(), &result, &faults);
    } catch (const SAException &error) {
        // What a damaged file still lets through has been looked at; the rest cannot be read.
        if (error.Fault() != SAFault::Corrupt) throw;
        faults.Add({kEngine, "Archivio", "lettura interrotta: " + error.ErrText()});
    }
    faults.MoveTo(&result);
    return result;
}

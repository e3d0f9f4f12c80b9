#include "tarvolumera/Protocols.h"

#include "tarvolumera/JournalEntry.h"

void LockNumbers(SACommand *cmd, NumberSeries series)
{
    if (cmd->Connection()->Engine() != SAEngine::PostgreSQL) return;
    constexpr long kLumera = 0x4C756D65; // our part of the server's space of advisory locks
    SACommand lock(cmd->Connection(),
                   "SELECT pg_advisory_xact_lock(CAST(:programma AS INTEGER), CAST(:serie AS INTEGER))");
    lock.Param("programma").setAsLong(kLumera);
    lock.Param("serie").setAsLong(static_cast<long>(series));
    lock.Execute();
    lock.FetchNext();
}

long GetProt(SACommand *cmd, long section, long year, long vat_register)
{
    if (vat_register <= kJournalOnly || vat_register > kEuSales) return 0;
    CommandScope scope(cmd);
    SACommand query(scope->Connection(),
                    // Not MAX: without statistics PostgreSQL would read the whole year for it, while others wait.
                    "SELECT pno_prot FROM admin.pnota1 WHERE EXTRACT(YEAR FROM pno_data) = :anno AND pno_sez = :sez"
                    " AND pno_reg = :reg AND pno_prot IS NOT NULL ORDER BY pno_prot DESC LIMIT 1");
    query.Param("anno").setAsLong(year);
    query.Param("sez").setAsLong(section);
    query.Param("reg").setAsLong(vat_register);
    query.Execute();
    return query.FetchNext() ? query.Field(1).asLong() + 1 : 1;
}

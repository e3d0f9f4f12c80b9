#include "bench/BareValues.h"
#include "bench/Cases.h"

#include "tarvolumera/PSQLpno.h"

#include <fmt/format.h>

#include <stdexcept>

namespace {

constexpr int kRounds = 10;
constexpr long kEntriesBefore = 2000; ///< nobody stores into an empty journal for long

/// What both archives must hold alike in the end, or the comparison is worth nothing.
std::string Contents(const std::string &target)
{
    SAConnection connection;
    connection.Connect(target);
    SACommand query(&connection,
                    "SELECT COUNT(*), MAX(pno_codice), MAX(pno_prot), SUM(pno_dare), SUM(pno_imposta_0),"
                    " (SELECT COUNT(*) FROM admin.pnotaro2), (SELECT SUM(row_importo) FROM admin.pnotaro2 WHERE"
                    " row_tipo = 'A'), MIN(pno_data), MAX(pno_paddoc), MAX(pno_utente) FROM admin.pnota1");
    query.Execute();
    query.FetchNext();
    std::string text;
    for (int column = 1; column <= query.FieldCount(); ++column) text += query.Field(column).asString() + "|";
    return text;
}

} // namespace

void MeasureStoring(const BenchPlaces &places, SAEngine engine, long entries, Findings &findings)
{
    const BenchArchive our_archive(places, engine, "storing_ours");
    const BenchArchive bare_archive(places, engine, "storing_bare");
    our_archive.FillJournal(kEntriesBefore);
    bare_archive.FillJournal(kEntriesBefore);
    const long block = std::max(1L, entries / kRounds);

    SAConnection connection;
    connection.Connect(our_archive.Target());
    SACommand command(&connection);
    PNOTA entry = PurchaseEntry();
    const auto store_ours = [&](long count) {
        for (long i = 0; i < count; ++i) sqlpno.SqlTransaction(&command, kInsert, &entry);
    };
    // One entry of each first: the bare side stores what a stored entry holds.
    store_ours(1);
    const auto bare = engine == SAEngine::SQLite ? OpenBareSqlite(bare_archive.Target(), entry)
                                                 : OpenBarePostgres(bare_archive.Target(), entry);
    bare->Store();

    findings.push_back(Compare(
        fmt::format("store {} entries, {}", block * kRounds, EngineName(engine)), kRounds, static_cast<double>(block),
        kTimeTarget, [&] { store_ours(block); },
        [&] {
            for (long i = 0; i < block; ++i) bare->Store();
        }));
    const std::string ours_holds = Contents(our_archive.Target()), bare_holds = Contents(bare_archive.Target());
    if (ours_holds != bare_holds) throw std::runtime_error("the archives differ: " + ours_holds + " and " + bare_holds);
}

#include "bench/Bare.h"
#include "bench/Cases.h"

#include "ledger/JournalList.h"
#include "ledger/ui/GestionePrimaNota.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tarvodlg/widgets/SpreadSheet.h"

#include <QApplication>
#include <fmt/format.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

namespace {

constexpr int kRounds = 5;
/// The window gets every value besides reading it: counted, kept in a grid, summed, coloured.
constexpr double kOpeningTarget = 2.5;

/// What a row has: Integer, Real or Text (dates too), in the order of JournalLineColumns.
constexpr std::string_view kKinds = "ittttriiiiitrrt";
constexpr int kDareColumn = 12;

/// What the bare side read, so that it can be seen to have read the same, and reads all of it.
struct OpenedSum {
    long entries = 0;
    long long cents = 0, others = 0;

    void AddReal(int column, double value)
    {
        if (column == kDareColumn) cents += std::llround(value * 100);
    }
};

std::string OpeningText(long entries)
{
    return fmt::format("SELECT {} FROM admin.pnota1{} WHERE pno_codice BETWEEN 0 AND {}\n"
                       "ORDER BY pno_data DESC, pno_codice DESC",
                       JournalLineColumns(), JournalLineJoins(), entries);
}

OpenedSum OpenBareSqlite(sqlite3_stmt *query)
{
    OpenedSum sum;
    for (; sqlite3_step(query) == SQLITE_ROW; ++sum.entries)
        for (int column = 0; column < static_cast<int>(kKinds.size()); ++column) {
            const char kind = kKinds[static_cast<std::size_t>(column)];
            if (kind == 'i')
                sum.others += sqlite3_column_int64(query, column);
            else if (kind == 'r')
                sum.AddReal(column, sqlite3_column_double(query, column));
            else if (sqlite3_column_text(query, column))
                sum.others += sqlite3_column_bytes(query, column);
        }
    sqlite3_reset(query);
    return sum;
}

OpenedSum OpenBarePostgres(PGconn *connection)
{
    OpenedSum sum;
    if (PQsendQueryPrepared(connection, "opening", 0, nullptr, nullptr, nullptr, 0) == 0) throw BareError(connection);
    PQsetSingleRowMode(connection);
    while (const BareResult result{PQgetResult(connection)}) {
        if (PQresultStatus(result.get()) == PGRES_TUPLES_OK) continue;
        if (PQresultStatus(result.get()) != PGRES_SINGLE_TUPLE) throw BareError(connection);
        ++sum.entries;
        for (int column = 0; column < static_cast<int>(kKinds.size()); ++column) {
            const char kind = kKinds[static_cast<std::size_t>(column)];
            if (kind == 'i')
                sum.others += std::strtol(PQgetvalue(result.get(), 0, column), nullptr, 10);
            else if (kind == 'r')
                sum.AddReal(column, std::strtod(PQgetvalue(result.get(), 0, column), nullptr));
            else
                sum.others += PQgetlength(result.get(), 0, column);
        }
    }
    return sum;
}

template <class Bare>
Finding CompareOpenings(const BenchArchive &archive, long entries, const Bare &bare)
{
    constexpr long kDare = 13;
    CGestionePrimaNota list(nullptr);
    OpenedSum sum;
    const std::string name = fmt::format("fill the list with {} entries, {}", entries, EngineName(archive.Engine()));
    Finding finding = Compare(
        name, kRounds, static_cast<double>(entries), kOpeningTarget, [&] { list.LoadTable(nullptr, true); },
        [&] { sum = bare(); });
    const auto *grid = list.findChild<CSpreadSheet *>();
    if (sum.entries != entries || grid->RowCount() != entries || grid->SumCents(kDare) != sum.cents)
        throw std::runtime_error(name + ": the two sides differ");
    return finding;
}

} // namespace

void MeasureOpening(const BenchArchive &archive, long entries, Findings &findings)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    int count = 1;
    std::array<char, 6> name{"bench"};
    char *arguments[] = {name.data(), nullptr};
    const QApplication application(count, arguments);
    ScriptedUserInterface user; // its progress window shows nothing
    UserInterface *before = SetUserInterface(&user);
    if (archive.Engine() == SAEngine::SQLite) {
        const BareSqlite database = OpenSqlite(archive.Target());
        const BareStatement query = PrepareSqlite(database.get(), OpeningText(entries));
        findings.push_back(CompareOpenings(archive, entries, [&] { return OpenBareSqlite(query.get()); }));
    } else {
        const BarePostgres bare = OpenPostgres(archive.Target());
        PreparePostgres(bare.get(), "opening", OpeningText(entries));
        findings.push_back(CompareOpenings(archive, entries, [&] { return OpenBarePostgres(bare.get()); }));
    }
    SetUserInterface(before);
    if (!user.Faults().empty()) findings.back().fault = user.Faults();
}

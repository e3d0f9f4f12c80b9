#include "bench/Bare.h"
#include "bench/Cases.h"
#include "bench/JournalListing.h"

#include "tarvodlg/base/Dates.h"

#include <fmt/format.h>

#include <charconv>
#include <stdexcept>
#include <string_view>

namespace {

constexpr int kRounds = 9;

/// The day number of "YYYY-MM-DD", which the engines guarantee; 0 for NULL.
long DayNumber(const char *text)
{
    if (text == nullptr || text[0] == '\0') return 0;
    const auto digits = [text](int from, int count) {
        int value = 0;
        for (int i = from; i < from + count; ++i) value = value * 10 + (text[i] - '0');
        return value;
    };
    return DateToJulian(digits(8, 2), digits(5, 2), digits(0, 4));
}

ListedSum ListBareSqlite(sqlite3_stmt *query)
{
    ListedSum sum;
    ListedEntry entry;
    const auto text = [query](int column) {
        return std::string_view(reinterpret_cast<const char *>(sqlite3_column_text(query, column)),
                                static_cast<std::size_t>(sqlite3_column_bytes(query, column)));
    };
    const auto day = [query](int column) {
        return DayNumber(reinterpret_cast<const char *>(sqlite3_column_text(query, column)));
    };
    while (sqlite3_step(query) == SQLITE_ROW) {
        entry.codice = sqlite3_column_int64(query, 0);
        entry.data = day(1);
        entry.desc = text(2);
        entry.data_doc = day(3);
        entry.tot_doc = sqlite3_column_double(query, 4);
        entry.sez = sqlite3_column_int64(query, 5);
        entry.cau = sqlite3_column_int64(query, 6);
        entry.reg = sqlite3_column_int64(query, 7);
        entry.rel = sqlite3_column_int64(query, 8);
        entry.cli_for = sqlite3_column_int64(query, 9);
        entry.doc = text(10);
        entry.dare = sqlite3_column_double(query, 11);
        entry.avere = sqlite3_column_double(query, 12);
        sum.Add(entry);
    }
    sqlite3_reset(query);
    return sum;
}

template <class Number>
Number NumberAt(const PGresult *result, int row, int column)
{
    Number value = 0;
    const char *text = PQgetvalue(result, row, column);
    std::from_chars(text, text + PQgetlength(result, row, column), value);
    return value;
}

void AddBareRow(const PGresult *result, int row, ListedEntry &entry, ListedSum &sum)
{
    const auto text = [&](int column) {
        return std::string_view(PQgetvalue(result, row, column),
                                static_cast<std::size_t>(PQgetlength(result, row, column)));
    };
    const auto integer = [&](int column) { return NumberAt<long>(result, row, column); };
    const auto real = [&](int column) { return NumberAt<double>(result, row, column); };
    entry.codice = integer(0);
    entry.data = DayNumber(PQgetvalue(result, row, 1));
    entry.desc = text(2);
    entry.data_doc = DayNumber(PQgetvalue(result, row, 3));
    entry.tot_doc = real(4);
    entry.sez = integer(5);
    entry.cau = integer(6);
    entry.reg = integer(7);
    entry.rel = integer(8);
    entry.cli_for = integer(9);
    entry.doc = text(10);
    entry.dare = real(11);
    entry.avere = real(12);
    sum.Add(entry);
}

ListedSum ListBarePostgres(PGconn *connection)
{
    ListedSum sum;
    ListedEntry entry;
    if (PQsendQueryPrepared(connection, "listing", 0, nullptr, nullptr, nullptr, 0) == 0) throw BareError(connection);
    PQsetSingleRowMode(connection);
    while (const BareResult result{PQgetResult(connection)}) {
        if (PQresultStatus(result.get()) == PGRES_SINGLE_TUPLE)
            AddBareRow(result.get(), 0, entry, sum);
        else if (PQresultStatus(result.get()) != PGRES_TUPLES_OK)
            throw BareError(connection);
    }
    return sum;
}

/// The quickest way there is, at the price of the whole journal in memory.
ListedSum ListBarePostgresAtOnce(PGconn *connection)
{
    ListedSum sum;
    ListedEntry entry;
    const BareResult result(PQexecPrepared(connection, "listing", 0, nullptr, nullptr, nullptr, 0));
    if (PQresultStatus(result.get()) != PGRES_TUPLES_OK) throw BareError(connection);
    for (int row = 0; row < PQntuples(result.get()); ++row) AddBareRow(result.get(), row, entry, sum);
    return sum;
}

template <class Bare>
Finding CompareListings(const std::string &name, long entries, double target, SACommand &command, const Bare &bare)
{
    ListedSum our_sum, bare_sum;
    Finding finding = Compare(
        name, kRounds, static_cast<double>(entries), target, [&] { our_sum = ListThroughLibrary(&command); },
        [&] { bare_sum = bare(); });
    if (our_sum != bare_sum || our_sum.entries != entries) throw std::runtime_error(name + ": the two sides differ");
    return finding;
}

} // namespace

void MeasureListing(const BenchArchive &archive, long entries, Findings &findings)
{
    SAConnection connection;
    connection.Connect(archive.Target());
    SACommand command(&connection, kListing);
    const std::string name = fmt::format("list {} entries, {}", entries, EngineName(archive.Engine()));
    if (archive.Engine() == SAEngine::SQLite) {
        const BareSqlite database = OpenSqlite(archive.Target());
        const BareStatement query = PrepareSqlite(database.get(), kListing);
        findings.push_back(
            CompareListings(name, entries, kTimeTarget, command, [&] { return ListBareSqlite(query.get()); }));
        return;
    }
    const BarePostgres bare = OpenPostgres(archive.Target());
    PreparePostgres(bare.get(), "listing", kListing);
    findings.push_back(
        CompareListings(name, entries, kTimeTarget, command, [&] { return ListBarePostgres(bare.get()); }));
    findings.push_back(CompareListings(name + ", against all in memory", entries, 0, command,
                                       [&] { return ListBarePostgresAtOnce(bare.get()); }));
}

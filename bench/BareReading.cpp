#include "bench/BareReading.h"

#include <cmath>
#include <cstdlib>

BareSum ReadAllSqlite(sqlite3_stmt *query, std::string_view kinds, int amount)
{
    BareSum sum;
    for (; sqlite3_step(query) == SQLITE_ROW; ++sum.rows)
        for (int column = 0; column < static_cast<int>(kinds.size()); ++column) {
            const char kind = kinds[static_cast<std::size_t>(column)];
            if (column == amount)
                sum.cents += std::llround(sqlite3_column_double(query, column) * 100);
            else if (kind == 'i')
                sum.others += sqlite3_column_int64(query, column);
            else if (kind == 'r')
                sum.others += sqlite3_column_double(query, column) < 0;
            else if (sqlite3_column_text(query, column))
                sum.others += sqlite3_column_bytes(query, column);
        }
    sqlite3_reset(query);
    return sum;
}

BareSum ReadAllPostgres(PGconn *connection, const char *name, std::string_view kinds, int amount)
{
    BareSum sum;
    if (PQsendQueryPrepared(connection, name, 0, nullptr, nullptr, nullptr, 0) == 0) throw BareError(connection);
    PQsetSingleRowMode(connection);
    while (const BareResult result{PQgetResult(connection)}) {
        if (PQresultStatus(result.get()) == PGRES_TUPLES_OK) continue;
        if (PQresultStatus(result.get()) != PGRES_SINGLE_TUPLE) throw BareError(connection);
        ++sum.rows;
        for (int column = 0; column < static_cast<int>(kinds.size()); ++column) {
            const char kind = kinds[static_cast<std::size_t>(column)];
            if (column == amount)
                sum.cents += std::llround(std::strtod(PQgetvalue(result.get(), 0, column), nullptr) * 100);
            else if (kind == 'i')
                sum.others += std::strtol(PQgetvalue(result.get(), 0, column), nullptr, 10);
            else if (kind == 'r')
                sum.others += std::strtod(PQgetvalue(result.get(), 0, column), nullptr) < 0;
            else
                sum.others += PQgetlength(result.get(), 0, column);
        }
    }
    return sum;
}

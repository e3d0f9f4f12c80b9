#pragma once

#include "bench/Bare.h"

#include <string_view>

/// What the bare side read, so that it can be seen to have read the same, and reads all of it.
struct BareSum {
    long rows = 0;
    long long cents = 0; ///< of one column of amounts
    long long others = 0;
};

/// Reads all rows of a statement, every value as what it is.
/// @param kinds  of the columns: 'i' integer, 'r' real, 't' text (dates too)   @param amount  number of the column of
/// amounts, from 0
BareSum ReadAllSqlite(sqlite3_stmt *query, std::string_view kinds, int amount);
/// @param name  of a prepared statement without parameters; its rows come one by one
BareSum ReadAllPostgres(PGconn *connection, const char *name, std::string_view kinds, int amount);

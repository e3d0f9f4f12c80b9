#pragma once

#include <libpq-fe.h>
#include <sqlite3.h>

#include <memory>
#include <stdexcept>
#include <string>

// The bare side: the client libraries as a careful C program would use them, with nothing of ours between.

struct CloseBare {
    void operator()(sqlite3 *database) const { sqlite3_close_v2(database); }
    void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
    void operator()(PGconn *connection) const { PQfinish(connection); }
    void operator()(PGresult *result) const { PQclear(result); }
};
using BareSqlite = std::unique_ptr<sqlite3, CloseBare>;
using BareStatement = std::unique_ptr<sqlite3_stmt, CloseBare>;
using BarePostgres = std::unique_ptr<PGconn, CloseBare>;
using BareResult = std::unique_ptr<PGresult, CloseBare>;

/// With the settings a session of the program has. @throws std::runtime_error
BareSqlite OpenSqlite(const std::string &file);
BareStatement PrepareSqlite(sqlite3 *database, const std::string &text);
std::runtime_error BareError(sqlite3 *database);

BarePostgres OpenPostgres(const std::string &address);
void PreparePostgres(PGconn *connection, const char *name, const std::string &text);
std::runtime_error BareError(PGconn *connection);

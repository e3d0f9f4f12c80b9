#pragma once

#include "sqlapi/SAException.h"
#include "sqlapi/engines/StatementKind.h"

#include <string>
#include <string_view>

struct pg_conn;
struct pg_result;

/// The error a server or the client library reported with a result.
SAException PostgresError(pg_conn *connection, pg_result *result,
                          StatementKind::Subject subject = StatementKind::Subject::None);

/// The error of a session that could not be opened.
/// @param password  taken out of the message wherever it stands; may be empty
SAException PostgresOpenError(pg_conn *connection, const std::string &password);

/// The five characters of an SQLSTATE read as a number in base 36.
long PostgresNativeCode(std::string_view sqlstate);

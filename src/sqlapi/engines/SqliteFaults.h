#pragma once

#include "sqlapi/SAException.h"
#include "sqlapi/engines/StatementKind.h"

struct sqlite3;

/// The error of the last call on the database, with the engine's own message.
/// @param code  what the call returned, basic or extended
SAException SqliteError(sqlite3 *database, int code, StatementKind::Subject subject = StatementKind::Subject::None);

#pragma once

#include <string>

/// Turns a statement of the zero dialect into one that SQLite's grammar accepts:
///
///     EXTRACT(YEAR FROM x)          CAST(substr(x,1,4) AS INTEGER)      also MONTH, DAY, HOUR, MINUTE, SECOND
///     CONVERT(VARCHAR(n), x)        substr(CAST(x AS TEXT),1,n)         also other types, as CAST
///     LEFT(x, n)                    "LEFT"(x, n)                        LEFT is a word of joins there
///     text + text                   text || text                        where one operand can only be a text
///     CURRENT_DATE                  date('now','localtime')             SQLite's own is the date in Greenwich
///     ... FOR UPDATE                ...                                 the whole archive is locked by BEGIN
///     GRANT, REVOKE, COMMENT ON, CREATE SCHEMA                          nothing: the file has neither
///     TRUNCATE TABLE t              DELETE FROM t
///     DROP TABLE t CASCADE          DROP TABLE t
///     CREATE INDEX i ON admin.t     CREATE INDEX admin.i ON t           a definition may not name its own schema, and
///     REFERENCES admin.t            REFERENCES t                        without it other SQLite tools can read the
///     file BYTEA                         BLOB                                in CREATE and ALTER TABLE
///
/// Literals, quoted names and comments are never changed; a text that needs nothing comes back as it was.
/// @param text  one statement, parameters already numbered
std::string TranslateZeroDialect(const std::string &text);

#pragma once

struct sqlite3;

/// Gives a SQLite session the functions of the zero dialect that SQLite lacks, with PostgreSQL's results: LPAD, RPAD,
/// LEFT, RIGHT, CONCAT, CHAR_LENGTH, LEN, and UPPER and LOWER that know accented letters. Lengths count characters.
void RegisterSqliteFunctions(sqlite3 *database);

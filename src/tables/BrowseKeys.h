#pragma once

#include "tables/BrowseDescription.h"

#include <optional>

// What lists, storage and commands do with the columns and keys of a table whose record type they do not know.

/// The column of a table by its name; null when it has none. Only names found here go into the text of a query.
const ColumnDescription *FindColumn(const CTarvoPostgreSQL &table, std::string_view name);

/// A code as it is typed: digits alone, within 32 bits. Nothing for anything else.
std::optional<long> ParseCode(std::string_view text);

/// Binds the keys to the parameters k1, k2 ... of a query. @return false when their number is wrong, or one that must
/// be a number is none; such a record cannot exist
bool BindKeys(SACommand *query, const BrowseDescription &description, const RecordKeys &keys);

/// "con_mas = :k1 AND con_codice = :k2"
std::string KeyCondition(const BrowseDescription &description);

/// Codes as people read them: "10.1" for the account 1 of master 10.
std::string KeyText(const RecordKeys &keys);

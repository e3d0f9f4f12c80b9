#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The statements of an archive text, comments dropped, without the closing ';', in their order.
std::vector<std::string> SchemaStatements(std::string_view text);

/// Those that make one table or view and its indexes, from all versions of the archive. Empty for an unknown name.
/// @param table  "admin.pnota1"
std::vector<std::string> StatementsOfTable(std::string_view table);

/// The tables of the archive ("admin.x") in the order in which they can be filled: parents first.
std::vector<std::string> TablesInOrder();

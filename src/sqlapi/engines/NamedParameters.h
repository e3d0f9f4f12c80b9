#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The ":name" parameters of a statement, each once, in the order of first appearance. Upper and lower case are the
/// same name. Literals, quoted names, comments, casts ("::date") and dollar quotes are left alone.
std::vector<std::string> ParameterNames(std::string_view text);

/// The same statement with every ":name" replaced by mark and number: the n-th name of ParameterNames becomes "$n" for
/// PostgreSQL (mark '$') and "?n" for SQLite (mark '?').
std::string NumberParameters(std::string_view text, char mark);

#pragma once

#include <QString>
#include <string>
#include <utility>
#include <vector>

/// The values of a column with their words, from the description of its table, for the choice fields of editors.
/// @param table, column  as a BrowseDescription names them, the column with choices
std::vector<std::pair<std::string, QString>> ChoicesOf(const char *table, const char *column);
/// The same for a column of numbers.
std::vector<std::pair<long, QString>> CodeChoicesOf(const char *table, const char *column);

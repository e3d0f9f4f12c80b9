#include "tables/ui/Choices.h"

#include "tables/BrowseDescription.h"
#include "tarvodlg/widgets/Field.h"

#include <cassert>

std::vector<std::pair<std::string, QString>> ChoicesOf(const char *table, const char *column)
{
    const BrowseDescription *description = FindBrowse(table);
    assert(description && "no such table");
    std::vector<std::pair<std::string, QString>> choices;
    for (const BrowseColumn &candidate : description->columns)
        if (std::string_view(candidate.column) == column)
            for (const BrowseChoice &choice : candidate.choices) choices.emplace_back(choice.value, ToQt(choice.text));
    assert(!choices.empty() && "the column has no choices");
    return choices;
}

std::vector<std::pair<long, QString>> CodeChoicesOf(const char *table, const char *column)
{
    std::vector<std::pair<long, QString>> codes;
    for (const auto &[value, words] : ChoicesOf(table, column)) codes.emplace_back(std::stol(value), words);
    return codes;
}

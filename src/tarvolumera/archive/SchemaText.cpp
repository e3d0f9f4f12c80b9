#include "tarvolumera/archive/SchemaText.h"

#include "tarvodlg/base/Text.h"
#include "tarvolumera/archive/Resources.h"

#include <algorithm>

namespace {

constexpr std::string_view kCreateTable = "CREATE TABLE ";

std::string WithoutComments(std::string_view text)
{
    std::string clean;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        clean.append(line.substr(0, line.find("--"))).append("\n"); // our own texts hold no "--" in a literal
        if (end == std::string_view::npos) break;
        text.remove_prefix(end + 1);
    }
    return clean;
}

std::vector<std::string> AllStatements()
{
    std::vector<std::string> all;
    for (const std::string_view name : ResourceNames("0")) {
        for (std::string &statement : SchemaStatements(ResourceText(name))) all.push_back(std::move(statement));
    }
    return all;
}

/// A column that a later version added may point to a table of that version: its own table is then filled after it.
void MoveBehindParents(const std::vector<std::string> &statements, std::vector<std::string> *tables)
{
    constexpr std::string_view kAlter = "ALTER TABLE ", kReferences = " REFERENCES ";
    for (const std::string &statement : statements) {
        const std::size_t at = statement.find(kReferences);
        if (!statement.starts_with(kAlter) || at == std::string::npos) continue;
        const auto word = [&](std::size_t start) {
            return statement.substr(start, statement.find(' ', start) - start);
        };
        const auto child = std::find(tables->begin(), tables->end(), word(kAlter.size()));
        const auto parent = std::find(tables->begin(), tables->end(), word(at + kReferences.size()));
        if (child < parent && parent != tables->end()) std::rotate(child, child + 1, parent + 1);
    }
}

} // namespace

std::vector<std::string> SchemaStatements(std::string_view text)
{
    const std::string clean = WithoutComments(text);
    std::vector<std::string> statements;
    std::size_t start = 0;
    for (std::size_t end = clean.find(';'); end != std::string::npos; end = clean.find(';', start)) {
        statements.emplace_back(Trimmed(std::string_view(clean).substr(start, end - start)));
        start = end + 1;
    }
    return statements;
}

std::vector<std::string> StatementsOfTable(std::string_view table)
{
    const std::string as_table = std::string(kCreateTable) + std::string(table) + " (";
    const std::string as_view = "CREATE VIEW " + std::string(table) + " AS";
    const std::string in_index = " ON " + std::string(table) + " (";
    const std::string in_alter = "ALTER TABLE " + std::string(table) + " ";
    std::vector<std::string> found;
    for (std::string &statement : AllStatements()) {
        const bool index = statement.starts_with("CREATE ") && statement.find("INDEX") < 20 &&
                           statement.find(in_index) != std::string::npos;
        if (statement.starts_with(as_table) || statement.starts_with(as_view + "\n") || index ||
            statement.starts_with(in_alter))
            found.push_back(std::move(statement));
    }
    return found;
}

std::vector<std::string> TablesInOrder()
{
    std::vector<std::string> tables;
    const std::vector<std::string> statements = AllStatements();
    for (const std::string &statement : statements) {
        if (!statement.starts_with(kCreateTable)) continue;
        tables.push_back(
            statement.substr(kCreateTable.size(), statement.find(' ', kCreateTable.size()) - kCreateTable.size()));
    }
    MoveBehindParents(statements, &tables);
    return tables;
}

#include "tables/BrowseKeys.h"

#include "tarvodlg/base/Text.h"

#include <algorithm>
#include <charconv>

const ColumnDescription *FindColumn(const CTarvoPostgreSQL &table, std::string_view name)
{
    const auto &columns = table.Description().Columns();
    const auto found = std::find_if(columns.begin(), columns.end(), [&](const auto &c) { return name == c.name; });
    return found == columns.end() ? nullptr : &*found;
}

std::optional<long> ParseCode(std::string_view text)
{
    int value = 0; // the archive's codes have 32 bits
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || value < 0) return std::nullopt;
    return value;
}

bool BindKeys(SACommand *query, const BrowseDescription &description, const RecordKeys &keys)
{
    if (keys.size() != description.keys.size()) return false;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        SAParam &param = query->Param("k" + std::to_string(i + 1));
        if (FindColumn(*description.table, description.keys[i])->kind == ColumnKind::Text) {
            param.setAsString(ToUpper(Trimmed(keys[i]))); // codes of letters are stored in capitals
            continue;
        }
        const std::optional<long> code = ParseCode(Trimmed(keys[i]));
        if (!code) return false;
        param.setAsLong(*code);
    }
    return true;
}

std::string KeyCondition(const BrowseDescription &description)
{
    std::string text;
    for (std::size_t i = 0; i < description.keys.size(); ++i)
        text += std::string(i == 0 ? "" : " AND ") + description.keys[i] + " = :k" + std::to_string(i + 1);
    return text;
}

std::string KeyText(const RecordKeys &keys)
{
    std::string text;
    for (const std::string &key : keys) text += (text.empty() ? "" : ".") + key;
    return text;
}

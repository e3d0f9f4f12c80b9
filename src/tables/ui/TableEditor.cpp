#include "tables/ui/TableEditor.h"

#include "tables/BrowseKeys.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <fmt/format.h>

namespace {

const BrowseDescription &Required(const char *table)
{
    const BrowseDescription *description = FindBrowse(table);
    assert(description && "an editor names a table of the descriptions");
    if (!description) std::abort();
    return *description;
}

void *Member(const ColumnDescription &column, const void *record)
{
    return column.member(const_cast<void *>(record));
}

std::string ValueText(const ColumnDescription &column, const void *record)
{
    void *member = Member(column, record);
    switch (column.kind) {
    case ColumnKind::Long:
    case ColumnKind::Date:
        return std::to_string(*static_cast<long *>(member));
    case ColumnKind::Double:
        return fmt::format("{:.6f}", *static_cast<double *>(member));
    case ColumnKind::Text:
        return static_cast<BoundedText *>(member)->str();
    case ColumnKind::Moment: // set by the program
    case ColumnKind::Bytes:
        break;
    }
    return {};
}

const ColumnDescription &ColumnOf(const BrowseDescription &description, const char *name)
{
    const ColumnDescription *column = FindColumn(*description.table, name);
    assert(column && "descriptions name columns of their table");
    if (!column) std::abort();
    return *column;
}

} // namespace

TableEditorSupport::TableEditorSupport(const char *table) : description_(Required(table)) {}

RecordKeys TableEditorSupport::KeysOf(const void *record) const
{
    RecordKeys keys;
    for (const char *key : description_.keys) keys.push_back(ValueText(ColumnOf(description_, key), record));
    return keys;
}

void TableEditorSupport::SetKeys(void *record, const RecordKeys &keys) const
{
    for (std::size_t i = 0; i < keys.size() && i < description_.keys.size(); ++i) {
        const ColumnDescription &column = ColumnOf(description_, description_.keys[i]);
        if (column.kind == ColumnKind::Long)
            *static_cast<long *>(Member(column, record)) = ParseCode(keys[i]).value_or(0);
        else if (column.kind == ColumnKind::Text)
            static_cast<BoundedText *>(Member(column, record))->Assign(keys[i] == "0" ? "" : keys[i]); // a new one
    }
}

long TableEditorSupport::CodeOf(const void *record) const
{
    const ColumnDescription &column = ColumnOf(description_, description_.keys.back());
    return column.kind == ColumnKind::Long ? *static_cast<long *>(Member(column, record)) : 0;
}

std::string TableEditorSupport::DescriptionOf(const void *record) const
{
    return ValueText(ColumnOf(description_, description_.description), record);
}

bool TableEditorSupport::HaveSameValues(const void *one, const void *other) const
{
    const auto &columns = description_.table->Description().Columns();
    return std::all_of(columns.begin(), columns.end(), [&](const ColumnDescription &column) {
        return (column.flags & kKey) != 0 || ValueText(column, one) == ValueText(column, other);
    });
}

void TableEditorSupport::SetDescription(void *record, std::string_view description) const
{
    const ColumnDescription &column = ColumnOf(description_, description_.description);
    if (column.kind == ColumnKind::Text) static_cast<BoundedText *>(Member(column, record))->Assign(description);
}

CTarvoField *TableEditorSupport::FieldOfColumn(const std::string &column) const
{
    const auto found = fields_.find(column);
    return found == fields_.end() ? nullptr : found->second;
}

QString TableEditorSupport::Title(const void *record, bool is_loaded) const
{
    const QString title = ToQt(description_.title);
    return is_loaded ? "Modifica " + title + " - " + Name(record) : title;
}

QString TableEditorSupport::Name(const void *record) const
{
    return ToQt(KeyText(KeysOf(record)) + " " + DescriptionOf(record));
}

bool IsTypedCode(std::string_view typed)
{
    constexpr std::size_t kDigitsMax = 4;
    return typed.size() <= kDigitsMax && !typed.starts_with('0') && ParseCode(typed).value_or(0) != 0;
}

bool IsTypedDescription(std::string_view typed)
{
    return std::any_of(typed.begin(), typed.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c & 0x80) != 0; // a letter beyond ASCII
    });
}

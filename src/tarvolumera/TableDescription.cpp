#include "tarvolumera/TableDescription.h"

#include "tarvodlg/base/Dates.h"

namespace {

/// -0, which a sum of opposite amounts can give, would be stored and shown as such.
double WithoutNegativeZero(double value)
{
    return value == 0.0 ? 0.0 : value;
}

void BindValue(SAParam &param, const ColumnDescription &column, void *member)
{
    switch (column.kind) {
    case ColumnKind::Long: {
        const long value = *static_cast<long *>(member);
        if (value == 0 && (column.flags & kNullIfZero) != 0)
            param.setAsNull();
        else
            param.setAsLong(value);
        break;
    }
    case ColumnKind::Double:
        param.setAsDouble(WithoutNegativeZero(*static_cast<double *>(member)));
        break;
    case ColumnKind::Date:
        param.setAsDateTime(ToSqlDate(*static_cast<long *>(member)));
        break;
    case ColumnKind::Text: {
        const std::string &value = static_cast<BoundedText *>(member)->str();
        if (value.empty() && (column.flags & kNullIfZero) != 0)
            param.setAsNull();
        else
            param.setAsString(value);
        break;
    }
    case ColumnKind::Moment:
        param.setAsDateTime(*static_cast<SADateTime *>(member));
        break;
    case ColumnKind::Bytes:
        param.setAsBytes(*static_cast<std::vector<std::byte> *>(member));
        break;
    }
}

void ReadValue(const SAField &field, const ColumnDescription &column, void *member)
{
    switch (column.kind) {
    case ColumnKind::Long:
        *static_cast<long *>(member) = field.asLong();
        break;
    case ColumnKind::Double:
        *static_cast<double *>(member) = field.asDouble();
        break;
    case ColumnKind::Date:
        *static_cast<long *>(member) = FromSqlDate(field.asDateTime());
        break;
    case ColumnKind::Text:
        static_cast<BoundedText *>(member)->Assign(field.asStringView());
        break;
    case ColumnKind::Moment:
        *static_cast<SADateTime *>(member) = field.asDateTime();
        break;
    case ColumnKind::Bytes:
        *static_cast<std::vector<std::byte> *>(member) = field.asBytes();
        break;
    }
}

void Append(std::string &list, const char *separator, const std::string &item)
{
    if (!list.empty()) list += separator;
    list += item;
}

} // namespace

SADateTime ToSqlDate(long day_number)
{
    if (day_number == 0) return {};
    int day = 0, month = 0, year = 0;
    JulianToDate(day_number, &day, &month, &year);
    return {year, month, day};
}

long FromSqlDate(const SADateTime &date)
{
    return date.IsNull() ? 0 : DateToJulian(date.GetDay(), date.GetMonth(), date.GetYear());
}

TableDescription::TableDescription(const char *table, std::vector<ColumnDescription> columns)
    : table_(std::string("admin.") + table), columns_(std::move(columns))
{
    std::string values, assignments, keys;
    for (const ColumnDescription &column : columns_) {
        const std::string name = column.name;
        Append(column_list_, ", ", name);
        Append(values, ", ", ":" + name);
        Append((column.flags & kKey) != 0 ? keys : assignments, (column.flags & kKey) != 0 ? " AND " : ", ",
               name + " = :" + name);
    }
    select_ = "SELECT " + column_list_ + " FROM " + table_;
    search_ = select_ + " WHERE " + keys;
    insert_ = "INSERT INTO " + table_ + " (" + column_list_ + ") VALUES (" + values + ")";
    update_ = "UPDATE " + table_ + " SET " + assignments + " WHERE " + keys;
    delete_ = "DELETE FROM " + table_ + " WHERE " + keys;
}

void TableDescription::Read(SACommand *cmd, void *record) const
{
    // A query made from SelectText gives the columns in this very order; the name is compared all the same, because the
    // queries that join other tables or select * do not.
    const int count = cmd->FieldCount();
    int position = 0;
    for (const ColumnDescription &column : columns_) {
        for (int tried = 0; tried < count; ++tried) {
            position = position % count + 1;
            SAField &field = cmd->Field(position);
            if (field.Name() != column.name) continue;
            ReadValue(field, column, column.member(record));
            break;
        }
    }
}

void TableDescription::Bind(SACommand *cmd, const void *record) const
{
    const int count = cmd->ParamCount();
    int position = 0;
    for (const ColumnDescription &column : columns_) {
        for (int tried = 0; tried < count; ++tried) {
            position = position % count + 1;
            SAParam &param = cmd->Param(position);
            if (param.Name() != column.name) continue;
            BindValue(param, column, column.member(const_cast<void *>(record)));
            break;
        }
    }
}

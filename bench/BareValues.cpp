#include "bench/BareValues.h"

#include "tarvolumera/PSQLrow.h"
#include "tarvolumera/PaymentTerms.h"

#include <fmt/format.h>

#include <stdexcept>

namespace {

BareValue Integer(long long value)
{
    return {BareValue::Kind::Integer, value, 0, std::to_string(value)};
}

BareValue Text(std::string text)
{
    return {BareValue::Kind::Text, 0, 0, std::move(text)};
}

BareValue ValueOf(const ColumnDescription &column, void *member)
{
    const bool null_if_zero = (column.flags & kNullIfZero) != 0;
    switch (column.kind) {
    case ColumnKind::Long: {
        const long value = *static_cast<long *>(member);
        return value == 0 && null_if_zero ? BareValue{} : Integer(value);
    }
    case ColumnKind::Double: {
        const double value = *static_cast<double *>(member);
        return {BareValue::Kind::Real, 0, value, fmt::format("{}", value)};
    }
    case ColumnKind::Date: {
        const long day = *static_cast<long *>(member);
        return day == 0 ? BareValue{} : Text(ToSqlDate(day).DateText());
    }
    case ColumnKind::Text:
        return Text(static_cast<BoundedText *>(member)->str());
    case ColumnKind::Moment: {
        const auto &moment = *static_cast<SADateTime *>(member);
        return moment.IsNull() ? BareValue{} : Text(moment.DateTimeText());
    }
    case ColumnKind::Bytes: {
        const auto &bytes = *static_cast<std::vector<std::byte> *>(member);
        return {BareValue::Kind::Bytes, 0, 0, {reinterpret_cast<const char *>(bytes.data()), bytes.size()}};
    }
    }
    throw std::logic_error("a column of an unknown kind");
}

} // namespace

std::string BareInsert::Text(const std::string &table, char mark) const
{
    std::string marks;
    for (std::size_t i = 1; i <= values.size(); ++i) marks += fmt::format("{}{}{}", i == 1 ? "" : ", ", mark, i);
    return fmt::format("INSERT INTO {} ({}) VALUES ({})", table, columns, marks);
}

std::size_t BareInsert::PlaceOf(const std::string &column) const
{
    std::size_t place = 0;
    for (std::size_t at = 0; at < columns.size(); ++place) {
        const std::size_t end = std::min(columns.find(", ", at), columns.size());
        if (columns.compare(at, end - at, column) == 0) return place;
        at = end + 2;
    }
    throw std::out_of_range("no column " + column);
}

void BareInsert::SetInteger(std::size_t place, long long value)
{
    values[place] = Integer(value);
}

BareInsert InsertOf(const TableDescription &table, const void *record)
{
    BareInsert insert;
    insert.columns = table.ColumnList();
    for (const ColumnDescription &column : table.Columns())
        insert.values.push_back(ValueOf(column, column.member(const_cast<void *>(record))));
    return insert;
}

std::vector<BareInsert> InsertsOfRows(const PNOTA &entry)
{
    std::vector<BareInsert> inserts;
    for (const PNOTA_RIGA &row : entry.righe)
        if (row.InUse()) inserts.push_back(InsertOf(sqlrow.Description(), &row));
    return inserts;
}

std::string BareInstalments::SourceText(std::size_t source, char mark)
{
    const std::array<std::string, kSources> texts = {
        "SELECT " + sqlpag.ColumnList() + " FROM admin.pagament WHERE pag_codice = ",
        "SELECT for_ban, for_codice FROM admin.fornito1 WHERE for_codice = ",
        "SELECT ban_codice, ban_desc FROM admin.banche1 WHERE ban_codice = ",
        "SELECT iva_tip, iva_aliq FROM admin.codiva WHERE iva_codice = "};
    return texts.at(source) + mark + "1";
}

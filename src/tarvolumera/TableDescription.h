#pragma once

#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Text.h"

#include <string>
#include <vector>

enum class ColumnKind { Long, Double, Date, Text, Moment, Bytes };

/// Bits of a column.
inline constexpr unsigned kPlain = 0;
inline constexpr unsigned kKey = 1; ///< part of the primary key
inline constexpr unsigned kNullIfZero =
    2; ///< a code that points to another table: 0 (or an empty text) is stored as NULL

/// One column of a table: its name, its kind and where the record keeps it.
struct ColumnDescription {
    const char *name;
    ColumnKind kind;
    unsigned flags;
    void *(*member)(void *record); ///< long, double, BoundedText, SADateTime or vector<byte>, by kind (dates are long)
};

namespace table_description {

template <class T>
struct MemberTraits;
template <class Record, class Member>
struct MemberTraits<Member Record::*> {
    using RecordType = Record;
    using MemberType = Member;
};

template <class Member>
constexpr ColumnKind KindOf()
{
    if constexpr (std::is_same_v<Member, long>)
        return ColumnKind::Long;
    else if constexpr (std::is_same_v<Member, double>)
        return ColumnKind::Double;
    else if constexpr (std::is_same_v<Member, SADateTime>)
        return ColumnKind::Moment;
    else if constexpr (std::is_same_v<Member, std::vector<std::byte>>)
        return ColumnKind::Bytes;
    else {
        static_assert(std::is_base_of_v<BoundedText, Member>, "no column kind for this member");
        return ColumnKind::Text;
    }
}

template <class Member>
void *Address(Member &member)
{
    if constexpr (std::is_base_of_v<BoundedText, Member>)
        return static_cast<BoundedText *>(&member);
    else
        return &member;
}

} // namespace table_description

/// A column kept in a member of the record: Column<&SEZIONI::sez_codice>("sez_codice", kKey).
template <auto Pointer>
ColumnDescription Column(const char *name, unsigned flags = kPlain)
{
    using Traits = table_description::MemberTraits<decltype(Pointer)>;
    return {name, table_description::KindOf<typename Traits::MemberType>(), flags, [](void *record) -> void * {
                return table_description::Address(static_cast<typename Traits::RecordType *>(record)->*Pointer);
            }};
}

/// A date column: a day number in the record, 0 = NULL.
template <auto Pointer>
ColumnDescription DateColumn(const char *name, unsigned flags = kPlain)
{
    ColumnDescription column = Column<Pointer>(name, flags);
    column.kind = ColumnKind::Date;
    return column;
}

// The column is named like the member, so the name is written once.
#define LUMERA_COLUMN(Record, member, flags) Column<&Record::member>(#member, flags)
#define LUMERA_PLAIN(Record, member) Column<&Record::member>(#member, kPlain)
#define LUMERA_CODE(Record, member) Column<&Record::member>(#member, kNullIfZero)
#define LUMERA_DATE(Record, member) DateColumn<&Record::member>(#member, kPlain)

/// The one description of a table from which all of its operations come: list, read, insert, update, delete, search.
class TableDescription {
  public:
    TableDescription(const char *table, std::vector<ColumnDescription> columns);

    const std::string &Table() const { return table_; } ///< "admin.pnota1"
    const std::vector<ColumnDescription> &Columns() const { return columns_; }
    const std::string &ColumnList() const { return column_list_; } ///< "a, b, c"
    const std::string &SelectText() const { return select_; }      ///< "SELECT a, b, c FROM admin.t"
    const std::string &SearchText() const { return search_; }      ///< SelectText with the keys as condition
    const std::string &InsertText() const { return insert_; }
    const std::string &UpdateText() const { return update_; } ///< every column but the keys, by the keys
    const std::string &DeleteText() const { return delete_; }

    /// Copies the current row of the command into the record. Columns the query does not give keep their value.
    void Read(SACommand *cmd, void *record) const;
    /// Binds every column of the record whose name is a parameter of the command.
    void Bind(SACommand *cmd, const void *record) const;

  private:
    std::string table_;
    std::vector<ColumnDescription> columns_;
    std::string column_list_, select_, search_, insert_, update_, delete_;
};

/// Day numbers to the dates of SQL and back; 0 and NULL correspond.
SADateTime ToSqlDate(long day_number);
long FromSqlDate(const SADateTime &date);

#pragma once

#include "tarvolumera/TableDescription.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

struct PNOTA;

/// A value as the bare client libraries take it, made ready before the clock starts: the bare side has nothing to do
/// but to hand it over.
struct BareValue {
    enum class Kind { Null, Integer, Real, Text, Bytes };
    Kind kind = Kind::Null;
    long long integer = 0;
    double real = 0;
    std::string text; ///< of every kind but Null: PostgreSQL takes all values but bytes as text
};

struct sqlite3_stmt;
void BindSqlite(sqlite3_stmt *statement, int number, const BareValue &value);

/// An INSERT with its values.
struct BareInsert {
    std::string columns;           ///< "a, b, c"
    std::vector<BareValue> values; ///< in that order

    /// @param mark  '?' or '$', put before the number of each value
    std::string Text(const std::string &table, char mark) const;
    /// Place of a column, from 0. @throws std::out_of_range
    std::size_t PlaceOf(const std::string &column) const;
    void SetInteger(std::size_t place, long long value);
};

/// All columns of a record with the values the library stores for them.
BareInsert InsertOf(const TableDescription &table, const void *record);

/// The rows in use of an entry.
std::vector<BareInsert> InsertsOfRows(const PNOTA &entry);

/// The instalments of an entry and what they are made from.
struct BareInstalments {
    static constexpr std::size_t kSources = 4;

    std::vector<BareInsert> inserts;
    std::array<long long, kSources> codes{}; ///< of payment terms, supplier, bank and VAT code

    /// Query of one source by its code, which is marked "?1" or "$1".
    static std::string SourceText(std::size_t source, char mark);
};

/// The client library alone, storing copies of one entry with a new number and protocol each.
class BareJournal {
  public:
    virtual ~BareJournal() = default;
    virtual void Store() = 0; ///< one entry, one transaction
    /// Those of the entry stored last, in a transaction of their own: reads what they are made from, sees that there
    /// are none yet, numbers and stores them.
    virtual void StoreInstalments(BareInstalments &instalments) = 0;
};
std::unique_ptr<BareJournal> OpenBareSqlite(const std::string &file, const PNOTA &stored);
std::unique_ptr<BareJournal> OpenBarePostgres(const std::string &address, const PNOTA &stored);

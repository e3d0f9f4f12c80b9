#include "bench/Bare.h"
#include "bench/BareValues.h"

#include "tarvolumera/PSQLpno.h"

void BindSqlite(sqlite3_stmt *statement, int number, const BareValue &value)
{
    switch (value.kind) {
    case BareValue::Kind::Null:
        sqlite3_bind_null(statement, number);
        break;
    case BareValue::Kind::Integer:
        sqlite3_bind_int64(statement, number, value.integer);
        break;
    case BareValue::Kind::Real:
        sqlite3_bind_double(statement, number, value.real);
        break;
    case BareValue::Kind::Text:
        sqlite3_bind_text(statement, number, value.text.data(), static_cast<int>(value.text.size()), SQLITE_STATIC);
        break;
    case BareValue::Kind::Bytes:
        sqlite3_bind_blob(statement, number, value.text.data(), static_cast<int>(value.text.size()), SQLITE_STATIC);
        break;
    }
}

namespace {

class BareSqliteJournal final : public BareJournal {
  public:
    BareSqliteJournal(const std::string &file, const PNOTA &stored)
        : database_(OpenSqlite(file)), header_(InsertOf(sqlpno.Description(), &stored)), rows_(InsertsOfRows(stored)),
          number_(header_.PlaceOf("pno_codice")), protocol_(header_.PlaceOf("pno_prot")),
          row_number_(rows_.front().PlaceOf("row_codice"))
    {
        begin_ = PrepareSqlite(database_.get(), "BEGIN IMMEDIATE");
        commit_ = PrepareSqlite(database_.get(), "COMMIT");
        max_number_ =
            PrepareSqlite(database_.get(), "SELECT pno_codice FROM admin.pnota1 ORDER BY pno_codice DESC LIMIT 1");
        max_protocol_ = PrepareSqlite(database_.get(),
                                      "SELECT pno_prot FROM admin.pnota1 WHERE CAST(substr(pno_data,1,4) AS INTEGER)"
                                      " = ?1 AND pno_sez = ?2 AND pno_reg = ?3"
                                      " AND pno_prot IS NOT NULL ORDER BY pno_prot DESC LIMIT 1");
        insert_header_ = PrepareSqlite(database_.get(), header_.Text("admin.pnota1", '?'));
        insert_row_ = PrepareSqlite(database_.get(), rows_.front().Text("admin.pnotaro2", '?'));
        for (std::size_t i = 0; i < BareInstalments::kSources; ++i)
            sources_[i] = PrepareSqlite(database_.get(), BareInstalments::SourceText(i, '?'));
        instalments_ = PrepareSqlite(database_.get(), "SELECT COUNT(*) FROM admin.scadenze WHERE sca_pno = ?1");
        max_instalment_ = PrepareSqlite(
            database_.get(), "SELECT sca_num FROM admin.scadenze WHERE sca_relaz = ?1 ORDER BY sca_num DESC LIMIT 1");
    }

    void Store() override
    {
        Run(begin_.get());
        const long long number = stored_ = Highest(max_number_.get()) + 1;
        sqlite3_bind_int64(max_protocol_.get(), 1, 2026);
        sqlite3_bind_int64(max_protocol_.get(), 2, 1);
        sqlite3_bind_int64(max_protocol_.get(), 3, kPurchases);
        header_.SetInteger(number_, number);
        header_.SetInteger(protocol_, Highest(max_protocol_.get()) + 1);
        Insert(insert_header_.get(), header_);
        for (BareInsert &row : rows_) {
            row.SetInteger(row_number_, number);
            Insert(insert_row_.get(), row);
        }
        Run(commit_.get());
    }

    void StoreInstalments(BareInstalments &instalments) override
    {
        for (std::size_t i = 0; i < BareInstalments::kSources; ++i) Ask(sources_[i].get(), instalments.codes[i]);
        if (!insert_instalment_)
            insert_instalment_ =
                PrepareSqlite(database_.get(), instalments.inserts.front().Text("admin.scadenze", '?'));
        Run(begin_.get());
        if (Ask(instalments_.get(), stored_) != 0) throw std::runtime_error("bare SQLite: there are instalments");
        long long number = Ask(max_instalment_.get(), kSupplier);
        for (BareInsert &instalment : instalments.inserts) {
            instalment.SetInteger(instalment.PlaceOf("sca_num"), ++number);
            instalment.SetInteger(instalment.PlaceOf("sca_pno"), stored_);
            Insert(insert_instalment_.get(), instalment);
        }
        Run(commit_.get());
    }

  private:
    /// First value of the first row, 0 when there is none.
    long long Ask(sqlite3_stmt *query, long long code)
    {
        sqlite3_bind_int64(query, 1, code);
        const int result = sqlite3_step(query);
        if (result != SQLITE_ROW && result != SQLITE_DONE) throw BareError(database_.get());
        const long long value = result == SQLITE_ROW ? sqlite3_column_int64(query, 0) : 0;
        sqlite3_reset(query);
        return value;
    }

    void Run(sqlite3_stmt *statement)
    {
        if (sqlite3_step(statement) != SQLITE_DONE) throw BareError(database_.get());
        sqlite3_reset(statement);
    }

    long long Highest(sqlite3_stmt *query)
    {
        if (sqlite3_step(query) != SQLITE_ROW) throw BareError(database_.get());
        const long long value = sqlite3_column_int64(query, 0);
        sqlite3_reset(query);
        return value;
    }

    void Insert(sqlite3_stmt *statement, const BareInsert &insert)
    {
        int number = 0;
        for (const BareValue &value : insert.values) BindSqlite(statement, ++number, value);
        Run(statement);
    }

    BareSqlite database_;
    BareInsert header_;
    std::vector<BareInsert> rows_;
    std::size_t number_, protocol_, row_number_;
    BareStatement begin_, commit_, max_number_, max_protocol_, insert_header_, insert_row_;
    std::array<BareStatement, BareInstalments::kSources> sources_;
    BareStatement instalments_, max_instalment_, insert_instalment_;
    long long stored_ = 0; ///< number of the last entry
};

} // namespace

BareSqlite OpenSqlite(const std::string &file)
{
    sqlite3 *handle = nullptr;
    const int code = sqlite3_open_v2(file.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    BareSqlite database(handle);
    if (code != SQLITE_OK) throw BareError(handle);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_MAINDBNAME, "admin");
    // The same safety and the same memory as a session of the program has.
    for (const char *setting :
         {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=FULL", "PRAGMA foreign_keys=ON", "PRAGMA temp_store=MEMORY",
          "PRAGMA cache_size=-16384", "PRAGMA journal_size_limit=67108864"}) {
        if (sqlite3_exec(handle, setting, nullptr, nullptr, nullptr) != SQLITE_OK) throw BareError(handle);
    }
    return database;
}

BareStatement PrepareSqlite(sqlite3 *database, const std::string &text)
{
    sqlite3_stmt *statement = nullptr;
    const int code = sqlite3_prepare_v3(database, text.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    if (code != SQLITE_OK) throw BareError(database);
    return BareStatement(statement);
}

std::runtime_error BareError(sqlite3 *database)
{
    return std::runtime_error(std::string("bare SQLite: ") + sqlite3_errmsg(database));
}

std::unique_ptr<BareJournal> OpenBareSqlite(const std::string &file, const PNOTA &stored)
{
    return std::make_unique<BareSqliteJournal>(file, stored);
}

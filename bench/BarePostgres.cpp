#include "bench/Bare.h"
#include "bench/BareValues.h"

#include "tarvolumera/PSQLpno.h"

#include <array>

namespace {

class BarePostgresJournal final : public BareJournal {
  public:
    BarePostgresJournal(const std::string &address, const PNOTA &stored)
        : connection_(OpenPostgres(address)), header_(InsertOf(sqlpno.Description(), &stored)),
          rows_(InsertsOfRows(stored)), number_(header_.PlaceOf("pno_codice")), protocol_(header_.PlaceOf("pno_prot")),
          row_number_(rows_.front().PlaceOf("row_codice"))
    {
        PGconn *connection = connection_.get();
        PreparePostgres(connection, "lock", "SELECT pg_advisory_xact_lock(CAST($1 AS INTEGER), CAST($2 AS INTEGER))");
        PreparePostgres(connection, "number", "SELECT pno_codice FROM admin.pnota1 ORDER BY pno_codice DESC LIMIT 1");
        PreparePostgres(connection, "protocol",
                        "SELECT pno_prot FROM admin.pnota1 WHERE EXTRACT(YEAR FROM pno_data) = $1"
                        " AND pno_sez = $2 AND pno_reg = $3"
                        " AND pno_prot IS NOT NULL ORDER BY pno_prot DESC LIMIT 1");
        PreparePostgres(connection, "header", header_.Text("admin.pnota1", '$'));
        PreparePostgres(connection, "row", rows_.front().Text("admin.pnotaro2", '$'));
        for (std::size_t i = 0; i < BareInstalments::kSources; ++i)
            PreparePostgres(connection, kSourceNames[i], BareInstalments::SourceText(i, '$'));
        PreparePostgres(connection, "instalments", "SELECT COUNT(*) FROM admin.scadenze WHERE sca_pno = $1");
        PreparePostgres(connection, "max instalment",
                        "SELECT sca_num FROM admin.scadenze WHERE sca_relaz = $1 ORDER BY sca_num DESC LIMIT 1");
    }

    void Store() override
    {
        Control("BEGIN");
        Ask("lock", std::array{"1282764133", "1"});
        const long long number = stored_ = Ask("number", std::array<const char *, 0>{}) + 1;
        header_.SetInteger(number_, number);
        header_.SetInteger(protocol_, Ask("protocol", std::array{"2026", "1", "2"}) + 1);
        Insert("header", header_);
        for (BareInsert &row : rows_) {
            row.SetInteger(row_number_, number);
            Insert("row", row);
        }
        Control("COMMIT");
    }

    void StoreInstalments(BareInstalments &instalments) override
    {
        for (std::size_t i = 0; i < BareInstalments::kSources; ++i)
            Ask(kSourceNames[i], std::array{std::to_string(instalments.codes[i]).c_str()});
        if (!has_instalment_)
            PreparePostgres(connection_.get(), "instalment", instalments.inserts.front().Text("admin.scadenze", '$'));
        has_instalment_ = true;
        const std::string entry = std::to_string(stored_), side = std::to_string(kSupplier);
        Control("BEGIN");
        Ask("lock", std::array{"1282764133", "3"});
        if (Ask("instalments", std::array{entry.c_str()}) != 0)
            throw std::runtime_error("bare PostgreSQL: there are instalments");
        long long number = Ask("max instalment", std::array{side.c_str()});
        for (BareInsert &instalment : instalments.inserts) {
            instalment.SetInteger(instalment.PlaceOf("sca_num"), ++number);
            instalment.SetInteger(instalment.PlaceOf("sca_pno"), stored_);
            Insert("instalment", instalment);
        }
        Control("COMMIT");
    }

  private:
    static constexpr std::array<const char *, BareInstalments::kSources> kSourceNames = {"terms", "supplier", "bank",
                                                                                         "vat"};

    void Control(const char *text)
    {
        const BareResult result(PQexec(connection_.get(), text));
        if (PQresultStatus(result.get()) != PGRES_COMMAND_OK) throw BareError(connection_.get());
    }

    BareResult Execute(const char *name, std::size_t count, const char *const *values, ExecStatusType expected)
    {
        BareResult result(
            PQexecPrepared(connection_.get(), name, static_cast<int>(count), values, nullptr, nullptr, 0));
        if (PQresultStatus(result.get()) != expected) throw BareError(connection_.get());
        return result;
    }

    template <std::size_t Count>
    long long Ask(const char *name, const std::array<const char *, Count> &values)
    {
        const BareResult result = Execute(name, Count, values.data(), PGRES_TUPLES_OK);
        return PQntuples(result.get()) == 0 ? 0 : std::atoll(PQgetvalue(result.get(), 0, 0));
    }

    void Insert(const char *name, const BareInsert &insert)
    {
        texts_.clear();
        for (const BareValue &value : insert.values)
            texts_.push_back(value.kind == BareValue::Kind::Null ? nullptr : value.text.c_str());
        Execute(name, texts_.size(), texts_.data(), PGRES_COMMAND_OK);
    }

    BarePostgres connection_;
    BareInsert header_;
    std::vector<BareInsert> rows_;
    std::size_t number_, protocol_, row_number_;
    std::vector<const char *> texts_;
    long long stored_ = 0; ///< number of the last entry
    bool has_instalment_ = false;
};

} // namespace

BarePostgres OpenPostgres(const std::string &address)
{
    BarePostgres connection(PQconnectdb(address.c_str()));
    if (PQstatus(connection.get()) != CONNECTION_OK) throw std::runtime_error("bare PostgreSQL: no connection");
    PQsetClientEncoding(connection.get(), "UTF8");
    return connection;
}

void PreparePostgres(PGconn *connection, const char *name, const std::string &text)
{
    const BareResult result(PQprepare(connection, name, text.c_str(), 0, nullptr));
    if (PQresultStatus(result.get()) != PGRES_COMMAND_OK) throw BareError(connection);
}

std::runtime_error BareError(PGconn *connection)
{
    return std::runtime_error(std::string("bare PostgreSQL: ") + PQerrorMessage(connection));
}

std::unique_ptr<BareJournal> OpenBarePostgres(const std::string &address, const PNOTA &stored)
{
    return std::make_unique<BarePostgresJournal>(address, stored);
}

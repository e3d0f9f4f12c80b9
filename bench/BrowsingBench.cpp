#include "bench/Bare.h"
#include "bench/Cases.h"

#include "tarvolumera/PSQLpno.h"

#include <fmt/format.h>

#include <set>
#include <stdexcept>

namespace {

constexpr int kSteps = 500;

constexpr const char *kOrderNames[kJournalOrders] = {"number",          "date",    "document date",
                                                     "document number", "causale", "counterpart"};

bool Contains(const std::string &text, std::string_view part)
{
    return text.find(part) != std::string::npos;
}

/// The statements SQLite runs for one piece of work, as it runs them: after translation, with numbered parameters.
/// Sessions opened while an object of this class lives are watched.
class SqliteStatements {
  public:
    SqliteStatements()
    {
        SAConnection::ClosePool();
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(Watch));
    }
    ~SqliteStatements()
    {
        sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(Watch));
        SAConnection::ClosePool();
    }
    SqliteStatements(const SqliteStatements &) = delete;
    SqliteStatements &operator=(const SqliteStatements &) = delete;

    static std::set<std::string> &Seen()
    {
        static std::set<std::string> seen;
        return seen;
    }

  private:
    static int Watch(sqlite3 *database, char **, const void *)
    {
        return sqlite3_trace_v2(database, SQLITE_TRACE_STMT, Note, nullptr);
    }
    static int Note(unsigned, void *, void *statement, void *)
    {
        Seen().insert(sqlite3_sql(static_cast<sqlite3_stmt *>(statement)));
        return 0;
    }
};

/// The one statement that looks for the neighbour.
std::string NeighbourQuery(const std::set<std::string> &statements)
{
    std::string found;
    for (const std::string &statement : statements) {
        if (!Contains(statement, "pnota1") || !Contains(statement, "LIMIT 1")) continue;
        if (!found.empty()) throw std::runtime_error("more than one query looks for the next entry");
        found = statement;
    }
    if (found.empty()) throw std::runtime_error("no query looks for the next entry");
    return found;
}

void StepOnce(SAConnection *connection, long code)
{
    SACommand command(connection);
    PNOTA entry;
    if (!sqlpno.Search(&command, code, &entry) || !sqlpno.Next(&command, &entry))
        throw std::runtime_error("there is no next entry");
}

std::string SqlitePlan(const BenchArchive &archive, long code)
{
    std::string statement;
    {
        const SqliteStatements watched;
        SAConnection connection;
        connection.Connect(archive.Target());
        SqliteStatements::Seen().clear();
        StepOnce(&connection, code);
        statement = NeighbourQuery(SqliteStatements::Seen());
    }
    const BareSqlite database = OpenSqlite(archive.Target());
    const BareStatement plan = PrepareSqlite(database.get(), "EXPLAIN QUERY PLAN " + statement);
    std::string text;
    while (sqlite3_step(plan.get()) == SQLITE_ROW)
        text += fmt::format("    {}\n", reinterpret_cast<const char *>(sqlite3_column_text(plan.get(), 3)));
    return text;
}

/// The plan for unknown values: the one a prepared statement settles on.
std::string PostgresPlan(const BenchArchive &archive, long code)
{
    std::set<std::string> statements;
    {
        SAConnection::ClosePool();
        SAConnection connection;
        connection.Connect(archive.Target());
        StepOnce(&connection, code);
        SACommand query(&connection, "SELECT statement FROM pg_prepared_statements");
        query.Execute();
        while (query.FetchNext()) statements.insert(query.Field("statement").asString());
        SAConnection::ClosePool();
    }
    const BarePostgres bare = OpenPostgres(archive.Target());
    PreparePostgres(bare.get(), "neighbour", NeighbourQuery(statements));
    const BareResult parameters(PQdescribePrepared(bare.get(), "neighbour"));
    std::string explain = "EXPLAIN (COSTS OFF) EXECUTE neighbour";
    for (int i = 0; i < PQnparams(parameters.get()); ++i) explain += i == 0 ? "(NULL" : ", NULL";
    if (PQnparams(parameters.get()) > 0) explain += ")";
    BareResult(PQexec(bare.get(), "SET plan_cache_mode = force_generic_plan"));
    const BareResult plan(PQexec(bare.get(), explain.c_str()));
    if (PQresultStatus(plan.get()) != PGRES_TUPLES_OK) throw BareError(bare.get());
    std::string text;
    for (int row = 0; row < PQntuples(plan.get()); ++row)
        text += fmt::format("    {}\n", PQgetvalue(plan.get(), row, 0));
    return text;
}

/// Empty when the query enters an index at the current entry and finds its rows there in order.
std::string PlanFault(SAEngine engine, const std::string &plan)
{
    if (engine == SAEngine::SQLite) {
        if (Contains(plan, "TEMP B-TREE")) return "sorts";
        return Contains(plan, "SEARCH ") && !Contains(plan, "SCAN ") ? "" : "no index";
    }
    if (Contains(plan, "Sort")) return "sorts";
    return Contains(plan, "Index Cond") && !Contains(plan, "Seq Scan") ? "" : "no index";
}

/// Microseconds of one step, the whole entry loaded each time.
double TimeOfStep(const BenchArchive &archive, long start)
{
    SAConnection connection;
    connection.Connect(archive.Target());
    SACommand command(&connection);
    PNOTA entry;
    sqlpno.Search(&command, start, &entry);
    const auto walk = [&] {
        for (int step = 0; step < kSteps; ++step)
            if (!sqlpno.Next(&command, &entry)) sqlpno.Search(&command, start, &entry);
    };
    walk();
    std::vector<double> times;
    for (int round = 0; round < 5; ++round) times.push_back(Seconds(walk));
    return Median(times) / kSteps * 1e6;
}

} // namespace

void MeasureBrowsing(const BenchArchive &archive, long entries, bool verbose, Findings &findings)
{
    const long middle = std::max(1L, entries / 2);
    for (int order = 0; order < kJournalOrders; ++order) {
        sqlpno.SetIndex(order);
        Finding finding;
        finding.name = fmt::format("next entry by {}, {}", kOrderNames[order], EngineName(archive.Engine()));
        finding.ours = TimeOfStep(archive, middle);
        const std::string plan =
            archive.Engine() == SAEngine::SQLite ? SqlitePlan(archive, middle) : PostgresPlan(archive, middle);
        finding.fault = PlanFault(archive.Engine(), plan);
        if (verbose) fmt::print(stderr, "{}\n{}", finding.name, plan);
        findings.push_back(std::move(finding));
    }
    sqlpno.SetIndex(kByNumber);
}

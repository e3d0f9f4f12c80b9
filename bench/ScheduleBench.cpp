#include "bench/BareReading.h"
#include "bench/BareValues.h"
#include "bench/Cases.h"

#include "schedule/Aging.h"
#include "schedule/Instalments.h"
#include "schedule/OpenItems.h"
#include "schedule/ScheduleList.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tarvolumera/PSQLpno.h"

#include <fmt/format.h>

#include <stdexcept>

namespace {

constexpr int kReadingRounds = 5, kStoringRounds = 10;
constexpr long kEntriesBefore = 2000, kReferenceYear = 2026;
constexpr long kThreeInstalments = 25; ///< payment terms of the demo company

/// What a query reads on the bare side.
struct BareQuery {
    std::string text, kinds;
    int amount; ///< column whose cents are added, so that both sides can be seen to have read the same
};

BareQuery ListQuery()
{
    BareQuery query{ScheduleLineQuery() + " WHERE sca_relaz = 0\nORDER BY sca_data, sca_num", {}, -1};
    for (const ColumnDescription &column : sqlsca.Description().Columns()) {
        if (std::string_view(column.name) == "sca_importo") query.amount = static_cast<int>(query.kinds.size());
        query.kinds += column.kind == ColumnKind::Long ? 'i' : column.kind == ColumnKind::Double ? 'r' : 't';
    }
    query.kinds += "tttt"; // names of customer, destination, agent and terms
    return query;
}

/// The aging of customers as of 1 July, by name.
BareQuery AgingQuery()
{
    constexpr const char *kBounds[] = {"2026-07-01", "2026-06-01", "2026-05-02", "2026-04-02", "2026-03-03"};
    std::string sums = CentsText("1 = 1");
    sums += ", " + CentsText(fmt::format("sca_data >= '{}'", kBounds[0]));
    for (std::size_t i = 1; i < std::size(kBounds); ++i)
        sums += ", " + CentsText(fmt::format("sca_data < '{}' AND sca_data >= '{}'", kBounds[i - 1], kBounds[i]));
    sums += ", " + CentsText(fmt::format("sca_data < '{}'", kBounds[4])) + ", " +
            CentsText(fmt::format("sca_data < '{}'", kBounds[0]));
    return {fmt::format("SELECT cli_desc, saldi.* FROM (SELECT sca_cli_for, COUNT(*) AS numero, {} FROM admin.scadenze"
                        " WHERE sca_relaz = 0 AND {} GROUP BY sca_cli_for) AS saldi"
                        " LEFT JOIN admin.clienti1 ON cli_codice = sca_cli_for ORDER BY UPPER(cli_desc), sca_cli_for",
                        sums, kOpenCondition),
            "tiiiiiiiiii", 3};
}

template <class Ours>
Finding CompareReading(const BenchArchive &archive, const std::string &name, double count, const BareQuery &query,
                       const Ours &ours)
{
    BareSum our_sum, bare_sum;
    const auto compare = [&](const auto &bare) {
        return Compare(
            name, kReadingRounds, count, kTimeTarget, [&] { our_sum = ours(); }, [&] { bare_sum = bare(); });
    };
    Finding finding;
    if (archive.Engine() == SAEngine::SQLite) {
        const BareSqlite database = OpenSqlite(archive.Target());
        const BareStatement statement = PrepareSqlite(database.get(), query.text);
        finding = compare([&] { return ReadAllSqlite(statement.get(), query.kinds, query.amount); });
    } else {
        const BarePostgres connection = OpenPostgres(archive.Target());
        PreparePostgres(connection.get(), "reading", query.text);
        finding = compare([&] { return ReadAllPostgres(connection.get(), "reading", query.kinds, query.amount); });
    }
    if (our_sum.rows == 0 || our_sum.rows != bare_sum.rows || our_sum.cents != bare_sum.cents)
        throw std::runtime_error(name + ": the two sides differ");
    return finding;
}

/// What both archives must hold alike in the end.
std::string Contents(const std::string &target)
{
    SAConnection connection;
    connection.Connect(target);
    SACommand query(&connection,
                    "SELECT COUNT(*), MAX(sca_num), MAX(sca_pno), SUM(sca_importo), MIN(sca_data), MAX(sca_data),"
                    " SUM(sca_rata), SUM(sca_ultima), MAX(sca_desc), MAX(sca_tipo_pag),"
                    " (SELECT COUNT(*) FROM admin.pnota1) FROM admin.scadenze");
    query.Execute();
    query.FetchNext();
    std::string text;
    for (int column = 1; column <= query.FieldCount(); ++column) text += query.Field(column).asString() + "|";
    return text;
}

/// What the program stored for an entry, to be stored again by the bare side.
BareInstalments InstalmentsOf(SACommand *command, const PNOTA &entry)
{
    SACommand query(command->Connection(),
                    "SELECT sca_num FROM admin.scadenze WHERE sca_pno = :codice ORDER BY sca_num");
    query.Param("codice").setAsLong(entry.pno_codice);
    query.Execute();
    std::vector<long> numbers;
    while (query.FetchNext()) numbers.push_back(query.Field(1).asLong());
    BareInstalments made;
    made.codes = {entry.pno_pag, entry.pno_cli_for, 0, entry.iva[0].iva};
    for (const long number : numbers) {
        SCADENZE instalment;
        sqlsca.Search(command, static_cast<short>(entry.pno_rel), number, &instalment);
        made.codes[2] = instalment.sca_ban;
        made.inserts.push_back(InsertOf(sqlsca.Description(), &instalment));
    }
    return made;
}

} // namespace

void MeasureSchedule(const BenchArchive &archive, long instalments, Findings &findings)
{
    SAConnection connection;
    connection.Connect(archive.Target());
    SACommand command(&connection);
    const char *engine = EngineName(archive.Engine());
    const long customers = instalments / 2;
    findings.push_back(CompareReading(archive,
                                      fmt::format("list {} of {} instalments, {}", customers, instalments, engine),
                                      static_cast<double>(customers), ListQuery(), [&] {
                                          BareSum sum;
                                          ForEachScheduleLine(&command, {}, [&](const ScheduleLine &line) {
                                              ++sum.rows;
                                              sum.cents += ToCents(line.scadenza.sca_importo);
                                          });
                                          return sum;
                                      }));
    Finding aging = CompareReading(archive, fmt::format("aging of {} instalments, {}", instalments, engine), 1000,
                                   AgingQuery(), [&] {
                                       BareSum sum;
                                       const AgingFilter filter{kCustomer, DateToJulian(1, 7, kReferenceYear)};
                                       ForEachAging(&command, filter, [&](AgingLine &&line) {
                                           ++sum.rows;
                                           sum.cents += line.Total() * 100; // the bare side reads cents as an amount
                                       });
                                       return sum;
                                   });
    aging.unit = "ms"; // for the whole of it
    findings.push_back(std::move(aging));
}

void MeasureGenerating(const BenchPlaces &places, SAEngine engine, long entries, Findings &findings)
{
    const BenchArchive our_archive(places, engine, "generating_ours");
    const BenchArchive bare_archive(places, engine, "generating_bare");
    our_archive.FillJournal(kEntriesBefore);
    bare_archive.FillJournal(kEntriesBefore);
    const long block = std::max(1L, entries / kStoringRounds);
    ScriptedUserInterface user; // its progress window shows nothing
    UserInterface *before = SetUserInterface(&user);

    SAConnection connection;
    connection.Connect(our_archive.Target());
    SACommand command(&connection);
    PNOTA entry = PurchaseEntry();
    entry.pno_pag = kThreeInstalments;
    const auto store_ours = [&](long count) {
        for (long i = 0; i < count; ++i) {
            sqlpno.SqlTransaction(&command, kInsert, &entry);
            GenerateInstalments(&command, entry);
        }
    };
    store_ours(1);
    BareInstalments instalments = InstalmentsOf(&command, entry);
    if (instalments.inserts.empty()) throw std::runtime_error("the entry makes no instalments");
    const auto bare = engine == SAEngine::SQLite ? OpenBareSqlite(bare_archive.Target(), entry)
                                                 : OpenBarePostgres(bare_archive.Target(), entry);
    const auto store_bare = [&](long count) {
        for (long i = 0; i < count; ++i) {
            bare->Store();
            bare->StoreInstalments(instalments);
        }
    };
    store_bare(1);
    findings.push_back(Compare(
        fmt::format("store {} entries with {} instalments, {}", block * kStoringRounds, instalments.inserts.size(),
                    EngineName(engine)),
        kStoringRounds, static_cast<double>(block), kTimeTarget, [&] { store_ours(block); },
        [&] { store_bare(block); }));
    SetUserInterface(before);
    if (!user.Faults().empty()) findings.back().fault = user.Faults();
    const std::string ours_holds = Contents(our_archive.Target()), bare_holds = Contents(bare_archive.Target());
    if (ours_holds != bare_holds) throw std::runtime_error("the archives differ: " + ours_holds + " and " + bare_holds);
}

#include "bench/BenchArchive.h"

#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dates.h"
#include "tarvolumera/archive/ArchiveCreation.h"

#include <fmt/format.h>

#include <unistd.h>

namespace {

constexpr long kYear = 2026;
constexpr long kCounterparts = 5000, kFirstCounterpart = 1001;

/// The address of the server with another database in it: "postgresql://[host]/database[?options]".
std::string WithDatabase(const std::string &address, const std::string &database)
{
    const std::size_t host = address.find("://") + 3;
    const std::size_t options = std::min(address.find('?', host), address.size());
    const std::size_t slash = std::min(address.find('/', host), options);
    return address.substr(0, slash) + "/" + database + address.substr(options);
}

void RunScript(const std::string &target, const std::string &script)
{
    SAConnection connection;
    connection.Connect(target);
    connection.ExecuteScript(script);
}

void Run(SAConnection *connection, const std::string &statement, long entries)
{
    SACommand command(connection, statement);
    command.Param("entries").setAsLong(entries);
    command.Execute();
}

PNOTA_RIGA Row(const AccountKey &account, const char *side, double amount)
{
    PNOTA_RIGA row;
    row.row_mas = account.mas;
    row.row_con = account.con;
    row.row_sot = account.sot;
    row.row_tipo = side;
    row.row_importo = amount;
    row.row_descac = "Fattura acquisto merci";
    row.row_n_doc = "1204/A";
    row.row_d_doc = DateToJulian(11, 3, kYear);
    return row;
}

} // namespace

const char *EngineName(SAEngine engine)
{
    return engine == SAEngine::SQLite ? "SQLite" : "PostgreSQL";
}

BenchArchive::BenchArchive(const BenchPlaces &places, SAEngine engine, const std::string &name)
    : engine_(engine), folder_(places.folder / name)
{
    NewArchive wanted;
    wanted.year = kYear;
    wanted.demo = true;
    if (engine == SAEngine::SQLite) {
        target_ = ArchiveFile(folder_).string();
        wanted.archive = folder_.string();
    } else {
        server_ = places.postgres;
        const std::string database = fmt::format("lumera_bench_{}_{}", getpid(), name);
        RunScript(server_, "CREATE DATABASE " + database + " TEMPLATE template0");
        database_ = database;
        target_ = WithDatabase(server_, database_);
        wanted.archive = target_;
        wanted.data_folder = folder_;
    }
    CreateArchive(wanted);
}

BenchArchive::~BenchArchive()
{
    SAConnection::ClosePool();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
    if (database_.empty()) return;
    try {
        RunScript(server_, "DROP DATABASE " + database_ + " WITH (FORCE)");
    } catch (const SAException &error) {
        fmt::print(stderr, "the database {} stays behind: {}\n", database_, error.ErrText());
    }
}

void BenchArchive::FillJournal(long entries) const
{
    // Three years of 1,095 days, the numbers in the order of the dates as they are when entries are keyed day by day.
    const char *date = engine_ == SAEngine::SQLite ? "date('2024-01-01', '+' || (n * 1095 / :entries) || ' days')"
                                                   : "DATE '2024-01-01' + CAST(n * 1095 / :entries AS INTEGER)";
    // 64 bits, because the numbers are multiplied before they are divided.
    const std::string header = fmt::format(
        "INSERT INTO admin.pnota1 (pno_codice, pno_data, pno_cau, pno_des_cau, pno_desc, pno_doc, pno_paddoc,"
        " pno_data_doc, pno_rel, pno_cli_for, pno_sez, pno_reg, pno_prot, pno_cau_iva, pno_iva_0, pno_tip_0,"
        " pno_aliq_0, pno_impo_0, pno_imposta_0, pno_tot_doc, pno_tot_imp, pno_tot_iva, pno_dare, pno_avere)"
        " WITH RECURSIVE numbers(n) AS (SELECT CAST(1 AS BIGINT) UNION ALL"
        " SELECT n + 1 FROM numbers WHERE n < :entries)"
        " SELECT n, {0}, 21 + n % 7, 'Fattura acquisto merci',"
        " 'Fattura n. ' || CAST(n % 7777 AS VARCHAR(10)) || ' materiale di consumo',"
        " CAST(n % 7777 AS VARCHAR(10)) || '/A', LPAD(CAST(n % 7777 AS VARCHAR(10)), 10, '0') || '/A', {0}, 1,"
        " 1 + n % 25, 1, 2, n, 1, 22, 1, 22, n % 5000 + 100.25, 22.06, n % 5000 + 122.31, n % 5000 + 100.25, 22.06,"
        " n % 5000 + 122.31, n % 5000 + 122.31 FROM numbers",
        date);
    constexpr char kRows[] =
        "INSERT INTO admin.pnotaro2 (row_codice, row_idx, row_mas, row_con, row_sot, row_tipo, row_importo, row_data,"
        " row_sez, row_rel, row_clfo)"
        " SELECT pno_codice, 1, 250, 1, pno_cli_for, 'A', pno_tot_doc, pno_data, 1, 1, pno_cli_for FROM admin.pnota1"
        " WHERE pno_codice <= :entries"
        " UNION ALL"
        " SELECT pno_codice, 2, 300, 1, 1, 'D', pno_tot_doc, pno_data, 1, 2, 0 FROM admin.pnota1"
        " WHERE pno_codice <= :entries";
    SAConnection connection;
    connection.Connect(target_);
    connection.SetDurability(SADurability::Relaxed);
    SATransaction transaction(&connection);
    Run(&connection, header, entries);
    Run(&connection, kRows, entries);
    transaction.Commit();
    connection.SetDurability(SADurability::Full);
    for (const char *table : {"pnota1", "pnotaro2"}) Settle(&connection, table);
}

void BenchArchive::FillSchedule(long instalments) const
{
    const char *due = engine_ == SAEngine::SQLite ? "date('2021-01-01', '+' || (n * 2190 / :entries) || ' days')"
                                                  : "DATE '2021-01-01' + CAST(n * 2190 / :entries AS INTEGER)";
    constexpr char kNumbers[] = " WITH RECURSIVE numbers(n) AS (SELECT CAST(1 AS BIGINT) UNION ALL"
                                " SELECT n + 1 FROM numbers WHERE n < :entries)";
    const std::string counterparts =
        fmt::format("INSERT INTO admin.{{0}} ({{1}}_codice, {{1}}_desc){} SELECT {} + n,"
                    " 'Officine meccaniche n. ' || CAST(n * 7919 % 5003 AS VARCHAR(10)) || ' S.r.l.' FROM numbers",
                    kNumbers, kFirstCounterpart - 1);
    const std::string schedule = fmt::format(
        "INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_sez, sca_cli_for, sca_data, sca_importo, "
        "sca_pag,"
        " sca_tipo_pag, sca_pagato, sca_data_pag, sca_emessa, sca_fattura, sca_data_fattura, sca_desc, sca_rata,"
        " sca_rate, sca_tot_fat){0}"
        " SELECT n % 2, (n + 1) / 2, 2021 + n * 6 / :entries, 1, {2} + n * 31 % {3}, {1}, n % 5000 + 100.25, 21, 2,"
        " CASE WHEN is_open THEN 0 ELSE 1 END, CASE WHEN is_open THEN NULL ELSE {1} END, {1},"
        " CAST(n % 7777 AS VARCHAR(10)) || '/A', {1}, 'PAGAMENTO FATTURA ACQUISTO MERCI', 1 + n % 3, 3, 15300.75"
        " FROM (SELECT n, n > :entries * 95 / 100 OR n % 50 = 7 AS is_open FROM numbers) AS numbered",
        kNumbers, due, kFirstCounterpart, kCounterparts);
    SAConnection connection;
    connection.Connect(target_);
    connection.SetDurability(SADurability::Relaxed);
    SATransaction transaction(&connection);
    Run(&connection, fmt::format(fmt::runtime(counterparts), "clienti1", "cli"), kCounterparts);
    Run(&connection, fmt::format(fmt::runtime(counterparts), "fornito1", "for"), kCounterparts);
    Run(&connection, schedule, instalments);
    transaction.Commit();
    connection.SetDurability(SADurability::Full);
    for (const char *table : {"clienti1", "fornito1", "scadenze"}) Settle(&connection, table);
}

void BenchArchive::FillInvoices(long invoices, long bytes) const
{
    FillJournal(invoices / 2);
    const bool is_file = engine_ == SAEngine::SQLite;
    const char *moment = is_file
                             ? "strftime('%Y-%m-%d %H:%M:%S', '2026-01-01', '+' || (n * 8700 / :entries) || ' hours')"
                             : "TIMESTAMP '2026-01-01' + n * 8700 / :entries * INTERVAL '1 hour'";
    // What a server could not compress away.
    const std::string content = is_file
                                    ? fmt::format("randomblob({})", bytes)
                                    : fmt::format("decode((SELECT string_agg(md5(CAST(n + i AS VARCHAR(20))), '') FROM"
                                                  " generate_series(1, {}) AS i), 'hex')",
                                                  (bytes + 15) / 16);
    constexpr char kNumbers[] = " WITH RECURSIVE numbers(n) AS (SELECT CAST(1 AS BIGINT) UNION ALL"
                                " SELECT n + 1 FROM numbers WHERE n < :entries)";
    const std::string suppliers =
        fmt::format("INSERT INTO admin.fornito1 (for_codice, for_desc, for_piva){} SELECT {} + n,"
                    " 'Officine meccaniche n. ' || CAST(n * 7919 % 5003 AS VARCHAR(10)) || ' S.r.l.',"
                    " LPAD(CAST(n AS VARCHAR(11)), 11, '8') FROM numbers",
                    kNumbers, kFirstCounterpart - 1);
    const std::string files = fmt::format(
        "INSERT INTO admin.allegati (all_codice, all_anno, all_tab_tipo, all_desc, all_fname, all_bytes_size,"
        " all_date_time, all_impronta, all_data){} SELECT n, 2026, 20, 'Fattura di prova',"
        " 'IT' || CAST(n AS VARCHAR(10)) || '.xml', {}, {}, CAST(n AS VARCHAR(64)), {} FROM numbers",
        kNumbers, bytes, moment, content);
    constexpr char kSummaries[] =
        "INSERT INTO admin.fatture (fat_codice, fat_documento, fat_anno, fat_fname, fat_acquisita, fat_cedente,"
        " fat_piva, fat_tipo, fat_numero, fat_data, fat_totale)"
        " SELECT all_codice, 1, 2026, all_fname, all_date_time, 'Officine meccaniche S.r.l.',"
        " LPAD(CAST(1 + all_codice % 5000 AS VARCHAR(11)), 11, '8'), 'TD01', CAST(all_codice AS VARCHAR(10)) || '/E',"
        " '2026-05-04', all_codice % 5000 + 122.31 FROM admin.allegati WHERE all_codice <= :entries";
    constexpr char kRegistered[] = "UPDATE admin.pnota1 SET pno_all = pno_codice * 2, pno_all_doc = 1"
                                   " WHERE pno_codice <= :entries";
    SAConnection connection;
    connection.Connect(target_);
    connection.SetDurability(SADurability::Relaxed);
    SATransaction transaction(&connection);
    Run(&connection, suppliers, kCounterparts);
    Run(&connection, files, invoices);
    Run(&connection, kSummaries, invoices);
    Run(&connection, kRegistered, invoices / 2);
    transaction.Commit();
    connection.SetDurability(SADurability::Full);
    for (const char *table : {"fornito1", "allegati", "fatture", "pnota1"}) Settle(&connection, table);
}

// What a server in use does by itself after a while. Here it is done once and then kept from happening: the plans of a
// journal without statistics read all entries of the year for the next protocol, so the archive whose turn came first
// would win by far.
void BenchArchive::Settle(SAConnection *connection, const char *table) const
{
    if (engine_ != SAEngine::PostgreSQL) return;
    connection->ExecuteScript(fmt::format("VACUUM ANALYZE admin.{0};"
                                          "ALTER TABLE admin.{0} SET (autovacuum_enabled = false)",
                                          table));
}

PNOTA PurchaseEntry()
{
    PNOTA entry;
    entry.pno_codice = 1;
    entry.pno_data = DateToJulian(15, 3, kYear);
    entry.pno_cau = 21;
    entry.pno_des_cau = "Fattura acquisto merci";
    entry.pno_desc = "Fattura n. 1204/A utensili e minuteria";
    entry.pno_doc = "1204/A";
    entry.pno_data_doc = DateToJulian(11, 3, kYear);
    entry.pno_rel = kSupplier;
    entry.pno_cli_for = 1;
    entry.pno_sez = 1;
    entry.pno_reg = kPurchases;
    entry.pno_cau_iva = 1;
    entry.pno_pag = 21;
    entry.iva[0] = {22, 1, 22.0, 1000.0, 220.0, 0.0};
    entry.pno_tot_doc = 1220.0;
    entry.pno_tot_imp = 1000.0;
    entry.pno_tot_iva = 220.0;
    entry.righe[0] = Row({250, 1, 1}, "A", 1220.0);
    entry.righe[1] = Row({260, 1, 1}, "D", 220.0);
    entry.righe[2] = Row({300, 1, 1}, "D", 800.0);
    entry.righe[3] = Row({310, 1, 1}, "D", 200.0);
    return entry;
}

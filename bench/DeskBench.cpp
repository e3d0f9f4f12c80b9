#include "bench/BareClient.h"
#include "bench/BareReading.h"
#include "bench/Cases.h"
#include "bench/InvoiceFiles.h"

#include "einvoice/InvoiceBatch.h"
#include "einvoice/InvoiceInbox.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tarvolumera/Attachments.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/ReceivedInvoices.h"
#include "tarvolumera/Schedule.h"

#include <fmt/format.h>
#include <pugixml.hpp>

#include <array>
#include <stdexcept>

namespace {

constexpr int kRounds = 10, kListRounds = 5;
constexpr long kLines = 10, kEntriesBefore = 2000;
constexpr long kFirstNumber = 50'000; ///< of the invoices: no entry of the journal has it

/// Nobody is asked anything; whoever is asked all the same makes the run a fault.
class SilentUser {
  public:
    SilentUser() : before_(SetUserInterface(&user_)) {}
    ~SilentUser() { SetUserInterface(before_); }
    SilentUser(const SilentUser &) = delete;
    SilentUser &operator=(const SilentUser &) = delete;
    std::string Faults() const { return user_.Faults(); }

  private:
    ScriptedUserInterface user_;
    UserInterface *before_;
};

std::string TextOf(SACommand *command, const std::string &text)
{
    SACommand query(command->Connection(), text);
    query.Execute();
    query.FetchNext();
    std::string all;
    for (int column = 1; column <= query.FieldCount(); ++column) all += query.Field(column).asString() + "|";
    return all;
}

std::string Contents(const BenchArchive &archive, const std::string &text)
{
    SAConnection connection;
    connection.Connect(archive.Target());
    SACommand command(&connection);
    return TextOf(&command, text);
}

void ExpectAlike(const BenchArchive &ours, const BenchArchive &bare, const std::string &text)
{
    const std::string our_text = Contents(ours, text), bare_text = Contents(bare, text);
    if (our_text != bare_text) throw std::runtime_error("the archives differ: " + our_text + " and " + bare_text);
}

BareValue Whole(long long value)
{
    return {BareValue::Kind::Integer, value, 0, std::to_string(value)};
}

BareValue Words(std::string text)
{
    return {BareValue::Kind::Text, 0, 0, std::move(text)};
}

void ParseBare(const std::string &bytes)
{
    std::string copy = bytes;
    pugi::xml_document document;
    if (!document.load_buffer_inplace(copy.data(), copy.size())) throw std::runtime_error("bare: no XML");
}

std::vector<InvoiceFile> InvoiceFiles(long count)
{
    std::vector<InvoiceFile> files;
    for (long i = 1; i <= count; ++i) files.push_back(LongInvoice(kLines, kFirstNumber + i));
    return files;
}

void Import(SACommand *command, const InvoiceFile &file)
{
    const ImportResult result = ImportInvoice(command, file.name, file.name, file.bytes);
    if (result.outcome != ImportOutcome::Loaded) throw std::runtime_error(file.name + ": " + result.text);
}

/// Files invoices without waiting for the disk, outside what is measured.
void Prepare(SACommand *command, const std::vector<InvoiceFile> &files)
{
    command->Connection()->SetDurability(SADurability::Relaxed);
    for (const InvoiceFile &file : files) Import(command, file);
    command->Connection()->SetDurability(SADurability::Full);
}

/// Filing as the client library alone does it: parses, looks whether the content is there, numbers, inserts.
class BareImport {
  public:
    BareImport(SAEngine engine, const std::string &target, const ALLEGATI &filed, const FATTURE &summary)
        : client_(OpenBareClient(engine, target)), file_(InsertOf(sqlall.Description(), &filed)),
          summary_(InsertOf(sqlfat.Description(), &summary))
    {
        search_ = client_->Prepare("SELECT all_codice, all_desc, all_fname FROM admin.allegati WHERE all_impronta = $1"
                                   " AND all_tab_tipo = $2 ORDER BY all_codice");
        highest_ = client_->Prepare("SELECT all_codice FROM admin.allegati ORDER BY all_codice DESC LIMIT 1");
        insert_file_ = client_->Prepare(file_.Text("admin.allegati", '$'));
        insert_summary_ = client_->Prepare(summary_.Text("admin.fatture", '$'));
    }

    void File(const InvoiceFile &file, const std::string &digest)
    {
        ParseBare(file.bytes);
        const std::array known = {Words(digest), Whole(kReceivedInvoices)};
        if (client_->Ask(search_, known) != 0) throw std::runtime_error("bare: filed already");
        client_->Begin(2);
        const long long number = client_->Ask(highest_, {}) + 1;
        file_.SetInteger(file_.PlaceOf("all_codice"), number);
        file_.SetInteger(file_.PlaceOf("all_bytes_size"), static_cast<long long>(file.bytes.size()));
        file_.values[file_.PlaceOf("all_impronta")] = known[0];
        file_.values[file_.PlaceOf("all_fname")].text = file.name;
        file_.values[file_.PlaceOf("all_data")].text = file.bytes;
        client_->Do(insert_file_, file_.values);
        summary_.SetInteger(summary_.PlaceOf("fat_codice"), number);
        summary_.values[summary_.PlaceOf("fat_fname")].text = file.name;
        client_->Do(insert_summary_, summary_.values);
        client_->Commit();
    }

  private:
    std::unique_ptr<BareClient> client_;
    BareInsert file_, summary_;
    std::size_t search_, highest_, insert_file_, insert_summary_;
};

/// What one registration stored, to be stored again for other invoices.
struct StoredRegistration {
    PNOTA entry;
    PNOTA_ALLEGATO file;
    std::vector<SCADENZE> instalments;
};

StoredRegistration ReadRegistration(SACommand *command, long code)
{
    StoredRegistration stored;
    InvoiceRow row;
    row.code = code;
    CheckPNota(command, &row);
    if (row.entry == 0 || !sqlpno.Search(command, row.entry, &stored.entry))
        throw std::runtime_error("the model is not registered");
    const std::vector<PNOTA_ALLEGATO> files = sqlpat.ListOf(command, row.entry);
    if (files.size() != 1) throw std::runtime_error("the model has not one file");
    stored.file = files.front();
    SACommand query(command->Connection(), "SELECT sca_num FROM admin.scadenze WHERE sca_pno = :codice");
    query.Param("codice").setAsLong(row.entry);
    query.Execute();
    std::vector<long> numbers;
    while (query.FetchNext()) numbers.push_back(query.Field(1).asLong());
    for (const long number : numbers) sqlsca.Search(command, kSupplier, number, &stored.instalments.emplace_back());
    if (numbers.empty()) throw std::runtime_error("the model has no instalments");
    return stored;
}

/// Registering as the client library alone does it: reads the file back, parses it, reads what the entry is made from,
/// looks for duplicates, numbers and inserts everything in one transaction.
class BareRegistration {
  public:
    BareRegistration(SAEngine engine, const std::string &target, const StoredRegistration &stored)
        : client_(OpenBareClient(engine, target)), header_(InsertOf(sqlpno.Description(), &stored.entry)),
          rows_(InsertsOfRows(stored.entry)), file_(InsertOf(sqlpat.Description(), &stored.file)), entry_(stored.entry)
    {
        for (const SCADENZE &instalment : stored.instalments)
            instalments_.push_back(InsertOf(sqlsca.Description(), &instalment));
        file_.values[file_.PlaceOf("pat_data")].kind = BareValue::Kind::Bytes;
        const std::string year =
            engine == SAEngine::SQLite ? "CAST(substr(pno_data,1,4) AS INTEGER)" : "EXTRACT(YEAR FROM pno_data)";
        bytes_ = client_->Prepare("SELECT all_data FROM admin.allegati WHERE all_codice = $1");
        supplier_ = client_->Prepare("SELECT * FROM admin.fornito1 WHERE for_piva = $1 ORDER BY for_codice DESC");
        causale_ = client_->Prepare("SELECT * FROM admin.caucont1 WHERE cac_codice = $1");
        vat_code_ = client_->Prepare("SELECT * FROM admin.codiva WHERE iva_aliq = $1 AND iva_tip = $2");
        terms_ = client_->Prepare("SELECT * FROM admin.pagament WHERE pag_codice = $1");
        duplicates_ = client_->Prepare("SELECT COUNT(*) FROM admin.pnota1 WHERE pno_reg = $1 AND pno_cli_for = $2"
                                       " AND pno_doc = $3");
        number_ = client_->Prepare("SELECT pno_codice FROM admin.pnota1 ORDER BY pno_codice DESC LIMIT 1");
        protocol_ = client_->Prepare("SELECT pno_prot FROM admin.pnota1 WHERE " + year +
                                     " = $1 AND pno_sez = $2 AND pno_reg = $3 AND pno_prot IS NOT NULL"
                                     " ORDER BY pno_prot DESC LIMIT 1");
        file_number_ = client_->Prepare("SELECT pat_codice FROM admin.pnotaall ORDER BY pat_codice DESC LIMIT 1");
        instalment_number_ =
            client_->Prepare("SELECT sca_num FROM admin.scadenze WHERE sca_relaz = $1 ORDER BY sca_num DESC LIMIT 1");
        insert_header_ = client_->Prepare(header_.Text("admin.pnota1", '$'));
        insert_row_ = client_->Prepare(rows_.front().Text("admin.pnotaro2", '$'));
        insert_file_ = client_->Prepare(file_.Text("admin.pnotaall", '$'));
        insert_instalment_ = client_->Prepare(instalments_.front().Text("admin.scadenze", '$'));
    }

    void Register(long code)
    {
        const std::array invoice = {Whole(code)};
        std::string bytes = client_->AskBytes(bytes_, invoice);
        ParseBare(bytes);
        const std::string number = std::to_string(kFirstNumber + code) + "/A";
        const std::array supplier = {Words("02565617350")}, causale = {Whole(entry_.pno_cau)},
                         terms = {Whole(entry_.pno_pag)};
        const std::array vat = {Whole(22), Whole(1)};
        const std::array document = {Whole(entry_.pno_reg), Whole(entry_.pno_cli_for), Words(number)};
        client_->Ask(supplier_, supplier);
        client_->Ask(causale_, causale);
        client_->Ask(vat_code_, vat);
        client_->Ask(terms_, terms);
        if (client_->Ask(duplicates_, document) != 0) throw std::runtime_error("bare: registered already");

        client_->Begin(1);
        const long long entry = client_->Ask(number_, {}) + 1;
        const std::array series = {Whole(2026), Whole(entry_.pno_sez), Whole(entry_.pno_reg)};
        header_.SetInteger(header_.PlaceOf("pno_codice"), entry);
        header_.SetInteger(header_.PlaceOf("pno_prot"), client_->Ask(protocol_, series) + 1);
        header_.SetInteger(header_.PlaceOf("pno_all"), code);
        header_.values[header_.PlaceOf("pno_doc")].text = number;
        client_->Do(insert_header_, header_.values);
        for (BareInsert &row : rows_) Store(insert_row_, row, "row_codice", entry);
        file_.SetInteger(file_.PlaceOf("pat_codice"), client_->Ask(file_number_, {}) + 1);
        file_.values[file_.PlaceOf("pat_data")].text = std::move(bytes);
        Store(insert_file_, file_, "pat_pno", entry);
        const std::array side = {Whole(kSupplier)};
        long long next = client_->Ask(instalment_number_, side);
        for (BareInsert &instalment : instalments_) {
            instalment.SetInteger(instalment.PlaceOf("sca_num"), ++next);
            Store(insert_instalment_, instalment, "sca_pno", entry);
        }
        client_->Commit();
    }

  private:
    void Store(std::size_t statement, BareInsert &insert, const char *column, long long entry)
    {
        insert.SetInteger(insert.PlaceOf(column), entry);
        client_->Do(statement, insert.values);
    }

    std::unique_ptr<BareClient> client_;
    BareInsert header_;
    std::vector<BareInsert> rows_;
    BareInsert file_;
    std::vector<BareInsert> instalments_;
    PNOTA entry_;
    std::size_t bytes_, supplier_, causale_, vat_code_, terms_, duplicates_, number_, protocol_, file_number_,
        instalment_number_, insert_header_, insert_row_, insert_file_, insert_instalment_;
};

/// Plans and stores the invoices filed under these numbers, as many as there are.
void RegisterOurs(SACommand *command, long first, long count)
{
    std::vector<BatchTarget> targets;
    for (long code = first; code < first + count; ++code) targets.push_back({code, 0});
    const BatchOptions options;
    const BatchPlan plan = PlanRegistration(command, targets, options);
    if (plan.Ready() != count) throw std::runtime_error("not ready: " + plan.lines.front().reason);
    for (const BatchOutcome &done : RegisterPlanned(command, plan, options))
        if (!done.outcome.registered) throw std::runtime_error(done.outcome.reason);
}

struct ListQuery {
    std::string text, kinds;
    int amount = -1;
};

/// The list's own query, without a period, as the bare side reads it.
ListQuery QueryOfList()
{
    ListQuery query{InvoiceListQuery({}), {}, -1};
    for (const ColumnDescription &column : sqlfat.Description().Columns()) {
        if (std::string_view(column.name) == "fat_totale") query.amount = static_cast<int>(query.kinds.size());
        query.kinds += column.kind == ColumnKind::Long ? 'i' : column.kind == ColumnKind::Double ? 'r' : 't';
    }
    query.kinds += "itiii"; // supplier, his name, entry, protocol, warehouse
    return query;
}

BareSum ListOurs(SACommand *command)
{
    BareSum sum;
    StreamInvoices(command, {}, [&](const InvoiceRow &row) {
        ++sum.rows;
        sum.cents += ToCents(row.total);
        sum.others += static_cast<long long>(row.number.size() + row.supplier_name.size()) + row.is_registered;
        return true;
    });
    return sum;
}

void ExpectAll(const BareSum &sum, long invoices)
{
    if (sum.rows != invoices) throw std::runtime_error("not all invoices are listed");
}

} // namespace

void MeasureImporting(const BenchPlaces &places, SAEngine engine, long files, Findings &findings)
{
    const BenchArchive bare_archive(places, engine, "importing_bare"), our_archive(places, engine, "importing_ours");
    const SilentUser user;
    const long block = std::max(1L, files / kRounds);
    const std::vector<InvoiceFile> invoices = InvoiceFiles(block * (kRounds + 1) + 1);
    std::vector<std::string> digests;
    for (const InvoiceFile &file : invoices) digests.push_back(ContentDigest(file.bytes));

    SAConnection connection;
    connection.Connect(our_archive.Target());
    SACommand command(&connection);
    Import(&command, invoices[0]); // the bare side stores what a filed invoice holds
    ALLEGATI filed;
    FATTURE summary;
    if (!sqlall.SearchByCode(&command, 1, &filed) || !sqlfat.Search(&command, 1, 1, &summary))
        throw std::runtime_error("the model is not filed");
    BareImport bare(engine, bare_archive.Target(), filed, summary);
    bare.File(invoices[0], digests[0]);

    std::size_t our_next = 1, bare_next = 1;
    findings.push_back(Compare(
        fmt::format("load {} invoice files, {}", block * kRounds, EngineName(engine)), kRounds,
        static_cast<double>(block), kTimeTarget,
        [&] {
            for (long i = 0; i < block; ++i) Import(&command, invoices[our_next++]);
        },
        [&] {
            for (long i = 0; i < block; ++i, ++bare_next) bare.File(invoices[bare_next], digests[bare_next]);
        }));
    findings.back().fault = user.Faults();
    ExpectAlike(our_archive, bare_archive,
                "SELECT COUNT(*), MAX(all_codice), SUM(all_bytes_size), SUM(LENGTH(all_data)), MAX(all_impronta),"
                " (SELECT COUNT(*) FROM admin.fatture), (SELECT SUM(fat_totale) FROM admin.fatture),"
                " (SELECT MAX(fat_fname) FROM admin.fatture) FROM admin.allegati");
}

void MeasureRegistering(const BenchPlaces &places, SAEngine engine, long invoices, Findings &findings)
{
    const BenchArchive bare_archive(places, engine, "registering_bare"),
        our_archive(places, engine, "registering_ours");
    const SilentUser user;
    const long block = std::max(1L, invoices / kRounds);
    const std::vector<InvoiceFile> files = InvoiceFiles(block * (kRounds + 1) + 1);
    SAConnection connection;
    SACommand command(&connection);
    for (const BenchArchive *archive : {&bare_archive, &our_archive}) {
        archive->FillJournal(kEntriesBefore);
        if (connection.isConnected()) connection.Disconnect();
        connection.Connect(archive->Target());
        Prepare(&command, files);
    }
    RegisterOurs(&command, 1, 1);
    BareRegistration bare(engine, bare_archive.Target(), ReadRegistration(&command, 1));
    bare.Register(1);

    long our_next = 2, bare_next = 2;
    findings.push_back(Compare(
        fmt::format("register {} invoices, {}", block * kRounds, EngineName(engine)), kRounds,
        static_cast<double>(block), kTimeTarget,
        [&] {
            RegisterOurs(&command, our_next, block);
            our_next += block;
        },
        [&] {
            for (long i = 0; i < block; ++i) bare.Register(bare_next++);
        }));
    findings.back().fault = user.Faults();
    ExpectAlike(our_archive, bare_archive,
                "SELECT COUNT(*), MAX(pno_codice), MAX(pno_prot), SUM(pno_tot_doc), SUM(pno_all),"
                " (SELECT COUNT(*) FROM admin.pnotaro2), (SELECT SUM(row_importo) FROM admin.pnotaro2),"
                " (SELECT COUNT(*) FROM admin.pnotaall), (SELECT SUM(LENGTH(pat_data)) FROM admin.pnotaall),"
                " (SELECT COUNT(*) FROM admin.scadenze), (SELECT SUM(sca_importo) FROM admin.scadenze)"
                " FROM admin.pnota1");
}

void MeasureInvoiceList(const BenchPlaces &places, SAEngine engine, long invoices, Findings &findings)
{
    constexpr long kSmall = 100, kLarge = 4000; // bytes of a file; none of them is an invoice that could be read
    const BenchArchive large(places, engine, "list_large"), small(places, engine, "list_small");
    small.FillInvoices(invoices, kSmall);
    large.FillInvoices(invoices, kLarge);
    SAConnection small_connection, large_connection;
    small_connection.Connect(small.Target());
    large_connection.Connect(large.Target());
    SACommand small_command(&small_connection), large_command(&large_connection);

    const std::string name = fmt::format("list {} invoices, {}", invoices, EngineName(engine));
    const ListQuery query = QueryOfList();
    BareSum our_sum, bare_sum;
    const auto compare = [&](const Work &bare) {
        return Compare(
            name, kListRounds, static_cast<double>(invoices), kTimeTarget, [&] { our_sum = ListOurs(&small_command); },
            bare);
    };
    if (engine == SAEngine::SQLite) {
        const BareSqlite database = OpenSqlite(small.Target());
        const BareStatement statement = PrepareSqlite(database.get(), query.text);
        findings.push_back(compare([&] { bare_sum = ReadAllSqlite(statement.get(), query.kinds, query.amount); }));
    } else {
        const BarePostgres connection = OpenPostgres(small.Target());
        PreparePostgres(connection.get(), "listing", query.text);
        findings.push_back(
            compare([&] { bare_sum = ReadAllPostgres(connection.get(), "listing", query.kinds, query.amount); }));
    }
    ExpectAll(our_sum, invoices);
    if (our_sum.rows != bare_sum.rows || our_sum.cents != bare_sum.cents)
        throw std::runtime_error(name + ": the two sides differ");

    // Forty times as many bytes on file: a list that read any of them would take longer.
    BareSum large_sum;
    findings.push_back(Compare(
        fmt::format("the same with files of {} / {} bytes, {}", kLarge, kSmall, EngineName(engine)), kListRounds,
        static_cast<double>(invoices), kTimeTarget, [&] { large_sum = ListOurs(&large_command); },
        [&] { our_sum = ListOurs(&small_command); }));
    ExpectAll(large_sum, invoices);
}

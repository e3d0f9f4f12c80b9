#include "tables/TableStorage.h"

#include "tables/FaultList.h"
#include "tarvodlg/base/UserInterface.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

template <class Record>
struct Stored;

/// What a record type needs here: its table object, the member with its code, its checks.
#define LUMERA_STORED(Record, object, key, check)                                                                      \
    template <>                                                                                                        \
    struct Stored<Record> {                                                                                            \
        static constexpr auto &kTable = object;                                                                        \
        static constexpr auto kKey = &Record::key;                                                                     \
        static constexpr auto kCheck = check;                                                                          \
        static constexpr const char *kKeyColumn = #key;                                                                \
    }

LUMERA_STORED(CLIENTI, sqlcli, cli_codice, CheckCliente);
LUMERA_STORED(FORNITORI, sqlfor, for_codice, CheckFornitore);
LUMERA_STORED(CAUCONT, sqlcac, cac_codice, CheckCausale);
LUMERA_STORED(CODIVA, sqliva, iva_codice, CheckCodiva);
LUMERA_STORED(PAGAMENTI, sqlpag, pag_codice, CheckPagamento);
LUMERA_STORED(MASTRI, sqlmas, mas_codice, CheckMastro);
LUMERA_STORED(CONTI, sqlcon, con_codice, CheckConto);
LUMERA_STORED(SOTTOCON, sqlsot, sot_codice, CheckSottoconto);
LUMERA_STORED(SEZIONI, sqlsez, sez_codice, CheckSezione);
LUMERA_STORED(BANCHE, sqlban, ban_codice, CheckBanca);
LUMERA_STORED(CENTRI, sqlcdc, cdc_codice, CheckCentro);
LUMERA_STORED(AGENTI, sqlage, age_codice, CheckAgente);
LUMERA_STORED(ARTICOLI, sqlart, art_codice, CheckArticolo);
LUMERA_STORED(CAUMAG, sqlcam, cam_codice, CheckCausaleMagazzino);
LUMERA_STORED(DITTE, sqldit, dit_codice, CheckDitta);
LUMERA_STORED(FLAG, sqlflg, flg_codice, CheckFlag);

constexpr long kCodeMax = 2'147'483'647;

/// Holds back other stations that write the table until the transaction ends, so that a code found free stays free.
/// Reading goes on, and so does the storing of entries that refer to it. On SQLite the transaction is that lock
/// already.
void LockTable(SACommand *cmd, const std::string &table)
{
    if (cmd->Connection()->Engine() != SAEngine::PostgreSQL) return;
    SACommand lock(cmd->Connection(), "LOCK TABLE " + table + " IN SHARE ROW EXCLUSIVE MODE");
    lock.Execute();
}

bool SameColumns(const TableDescription &description, const void *a, const void *b)
{
    for (const ColumnDescription &column : description.Columns()) {
        const void *left = column.member(const_cast<void *>(a)), *right = column.member(const_cast<void *>(b));
        bool same = true;
        if (column.kind == ColumnKind::Text)
            same = *static_cast<const BoundedText *>(left) == *static_cast<const BoundedText *>(right);
        else if (column.kind == ColumnKind::Double)
            same = *static_cast<const double *>(left) == *static_cast<const double *>(right);
        else if (column.kind == ColumnKind::Long || column.kind == ColumnKind::Date)
            same = *static_cast<const long *>(left) == *static_cast<const long *>(right);
        if (!same) return false;
    }
    return true;
}

template <class Record>
bool SameRecord(const Record &a, const Record &b)
{
    return SameColumns(Stored<Record>::kTable.Description(), &a, &b);
}

/// Rows are compared in the place where they stand; what is not in use is not stored.
template <>
bool SameRecord(const CAUCONT &a, const CAUCONT &b)
{
    if (!SameColumns(sqlcac.Description(), &a, &b)) return false;
    for (std::size_t i = 0; i < a.righe.size(); ++i) {
        CAUCONT_RIGA left = a.righe[i], right = b.righe[i];
        left.car_cau = right.car_cau = left.car_idx = right.car_idx = 0;
        if ((left.car_mas != 0 || right.car_mas != 0) && !SameColumns(sqlcar.Description(), &left, &right))
            return false;
    }
    return true;
}

bool Confirmed(const FieldFault &question)
{
    return AfxMessageBox(question.text, MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES;
}

TableOutcome OutcomeOf(const FieldFault &fault)
{
    return {false, fault.column, fault.row, fault.text.substr(0, fault.text.find("\n\nVuoi Continuare ?"))};
}

std::string WithoutBlanks(std::string_view text)
{
    std::string kept;
    for (const char c : text)
        if (std::string_view(" \t\r\n.-").find(c) == std::string_view::npos) kept += c;
    return kept;
}

void NormaliseColumns(const TableDescription &description, void *record)
{
    constexpr std::string_view kCapitals[] = {
        "prov", "naz", "cod_dest",   "bic",        "pers",       "rea",    "socio_unico", "stato_liq",
        "tipo", "ini", "mese_esc_1", "mese_esc_2", "mese_esc_3", "natura", "periodicita", "codice"};
    for (const ColumnDescription &column : description.Columns()) {
        if (column.kind != ColumnKind::Text) continue;
        auto &text = *static_cast<BoundedText *>(column.member(record));
        const std::string_view name = std::string_view(column.name).substr(4); // behind the table's prefix
        if (name == "piva" || name == "codfis")
            text.Assign(NormalisedFiscalCode(text));
        else if (name == "iban")
            text.Assign(ToUpper(WithoutBlanks(text)));
        else if (std::find(std::begin(kCapitals), std::end(kCapitals), name) != std::end(kCapitals))
            text.Assign(ToUpper(Trimmed(text)));
        else
            text.Assign(std::string(Trimmed(text)));
    }
}

/// Records whose code is a text are named by people, never numbered.
template <class Record>
constexpr bool kIsNumbered = std::is_same_v<long, std::remove_cvref_t<decltype(Record{}.*Stored<Record>::kKey)>>;

template <class Record>
void TakeNextCode(SACommand *cmd, Record *record)
{
    if constexpr (kIsNumbered<Record>)
        if (RecordExists(cmd, Stored<Record>::kTable, record))
            record->*Stored<Record>::kKey = ProposeCode(cmd, *record);
}

} // namespace

template <class Record>
long ProposeCode(SACommand *cmd, const Record &record)
{
    if constexpr (!kIsNumbered<Record>) return 0;
    const TableDescription &description = Stored<Record>::kTable.Description();
    std::string condition;
    for (const ColumnDescription &column : description.Columns()) {
        if ((column.flags & kKey) == 0 || column.name == std::string_view(Stored<Record>::kKeyColumn)) continue;
        condition += fmt::format("{}{} = :{}", condition.empty() ? " WHERE " : " AND ", column.name, column.name);
    }
    CommandScope scope(cmd);
    SACommand query(scope->Connection(), fmt::format("SELECT MAX({}) FROM {}{}", Stored<Record>::kKeyColumn,
                                                     description.Table(), condition));
    description.Bind(&query, &record);
    query.Execute();
    const long highest = query.FetchNext() ? query.Field(1).asLong() : 0;
    return highest < kCodeMax ? highest + 1 : 0;
}

template <class Record>
bool LoadRecord(SACommand *cmd, Record *record)
{
    CommandScope scope(cmd);
    if constexpr (std::is_same_v<Record, CAUCONT>) {
        CAUCONT found;
        if (!sqlcac.Search(scope.get(), record->cac_codice, &found)) return false;
        *record = found;
        return true;
    } else {
        const TableDescription &description = Stored<Record>::kTable.Description();
        SACommand query(scope->Connection(), description.SearchText());
        description.Bind(&query, record);
        query.Execute();
        if (!query.FetchNext()) return false;
        description.Read(&query, record);
        return true;
    }
}

template <class Record>
void NormaliseRecord(Record *record)
{
    NormaliseColumns(Stored<Record>::kTable.Description(), record);
}

template <class Record>
TableOutcome ConfirmRecord(SACommand *cmd, const Record &record, bool is_new)
{
    const std::vector<FieldFault> faults = Stored<Record>::kCheck(cmd, record, is_new);
    for (const FieldFault &fault : faults) {
        if (fault.severity != FieldFault::Severity::Refused) continue;
        BeepRefused();
        AfxMessageBox(fault.text, MB_OK | MB_ICONERROR);
        return OutcomeOf(fault);
    }
    for (const FieldFault &fault : faults)
        if (!Confirmed(fault)) return OutcomeOf(fault);
    return {true, {}, 0, {}};
}

template <class Record>
TableOutcome WriteRecord(SACommand *cmd, Record *record, bool is_new, const StoreOptions<Record> &options)
{
    const auto &table = Stored<Record>::kTable;
    CommandScope scope(cmd);
    SATransaction transaction(scope.get());
    LockTable(scope.get(), table.TableName());
    Record stored = *record;
    if (is_new && options.proposed_code) TakeNextCode(scope.get(), &stored);
    if (is_new && RecordExists(scope.get(), table, &stored))
        return {false, Stored<Record>::kKeyColumn, 0,
                "Il codice è stato preso in questo momento da un'altra stazione."};
    if (options.loaded != nullptr) {
        Record now = *options.loaded;
        if (!LoadRecord(scope.get(), &now) || !SameRecord(now, *options.loaded))
            return {false, {}, 0, "Il record è stato cambiato da un'altra stazione: occorre riaprirlo."};
    }
    table.SqlTransaction(scope.get(), is_new ? kInsert : kUpdate, &stored);
    transaction.Commit();
    *record = stored;
    return {true, {}, 0, {}};
}

template <class Record>
TableOutcome StoreRecord(SACommand *cmd, Record *record, bool is_new, const StoreOptions<Record> &options)
{
    CommandScope scope(cmd);
    NormaliseRecord(record);
    if (is_new && options.proposed_code) TakeNextCode(scope.get(), record);
    if (const TableOutcome refused = ConfirmRecord(scope.get(), *record, is_new); !refused.done) return refused;
    const TableOutcome outcome = WriteRecord(scope.get(), record, is_new, options);
    if (!outcome.done) {
        BeepRefused();
        AfxMessageBox(outcome.reason, MB_OK | MB_ICONERROR);
    } else if (std::is_same_v<Record, DITTE> || std::is_same_v<Record, FLAG>) {
        ReloadCompany(scope.get());
    }
    return outcome;
}

#define LUMERA_INSTANTIATE(Record)                                                                                     \
    template long ProposeCode(SACommand *, const Record &);                                                            \
    template bool LoadRecord(SACommand *, Record *);                                                                   \
    template void NormaliseRecord(Record *);                                                                           \
    template TableOutcome ConfirmRecord(SACommand *, const Record &, bool);                                            \
    template TableOutcome WriteRecord(SACommand *, Record *, bool, const StoreOptions<Record> &);                      \
    template TableOutcome StoreRecord(SACommand *, Record *, bool, const StoreOptions<Record> &)

LUMERA_INSTANTIATE(CLIENTI);
LUMERA_INSTANTIATE(FORNITORI);
LUMERA_INSTANTIATE(CAUCONT);
LUMERA_INSTANTIATE(CODIVA);
LUMERA_INSTANTIATE(PAGAMENTI);
LUMERA_INSTANTIATE(MASTRI);
LUMERA_INSTANTIATE(CONTI);
LUMERA_INSTANTIATE(SOTTOCON);
LUMERA_INSTANTIATE(SEZIONI);
LUMERA_INSTANTIATE(BANCHE);
LUMERA_INSTANTIATE(CENTRI);
LUMERA_INSTANTIATE(AGENTI);
LUMERA_INSTANTIATE(ARTICOLI);
LUMERA_INSTANTIATE(CAUMAG);
LUMERA_INSTANTIATE(DITTE);
LUMERA_INSTANTIATE(FLAG);

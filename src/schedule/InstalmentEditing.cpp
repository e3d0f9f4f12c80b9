#include "schedule/InstalmentEditing.h"

#include "schedule/InstalmentGroup.h"
#include "tables/FaultList.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Protocols.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include <fmt/format.h>

namespace {

constexpr double kAmountMax = 999'999'999'999.99; ///< what can be written in words on a slip
constexpr long kCountMax = 999;

InstalmentOutcome Refused(std::string reason, std::string column = {})
{
    return {false, std::move(column), std::move(reason), {}};
}

/// Refusals are shown once nothing is locked any more.
InstalmentOutcome Shown(InstalmentOutcome outcome)
{
    if (outcome.done) return outcome;
    BeepRefused();
    AfxMessageBox(outcome.reason, MB_OK | MB_ICONERROR);
    return outcome;
}

bool IsOneOf(std::string_view column, std::initializer_list<std::string_view> columns)
{
    return std::find(columns.begin(), columns.end(), column) != columns.end();
}

/// The program's own columns, which nobody types: they come out of others when the record is stored.
bool IsDerived(std::string_view column)
{
    return IsOneOf(column, {"sca_anno", "sca_ultima", "sca_non_ultima"});
}

bool IsOfPayment(std::string_view column)
{
    return IsOneOf(column, {"sca_pagato", "sca_data_pag", "sca_parked", "sca_printed"});
}

bool IsOfEntry(std::string_view column)
{
    return IsOneOf(
        column, {"sca_cli_for", "sca_sez", "sca_fattura", "sca_data_fattura", "sca_tot_fat", "sca_rata", "sca_rate"});
}

bool IsFreeWhenSettled(std::string_view column)
{
    return IsOneOf(column, {"sca_desc", "sca_dst", "sca_age"});
}

bool IsSettled(const SCADENZE &record)
{
    return record.sca_pagato != 0 || record.sca_parked != 0;
}

bool SameValue(const ColumnDescription &column, const SCADENZE &a, const SCADENZE &b)
{
    const void *left = column.member(const_cast<SCADENZE *>(&a)), *right = column.member(const_cast<SCADENZE *>(&b));
    if (column.kind == ColumnKind::Text)
        return *static_cast<const BoundedText *>(left) == *static_cast<const BoundedText *>(right);
    if (column.kind == ColumnKind::Double)
        return ToCents(*static_cast<const double *>(left)) == ToCents(*static_cast<const double *>(right));
    return *static_cast<const long *>(left) == *static_cast<const long *>(right);
}

std::string ChangeFault(const SCADENZE &stored, std::string_view column)
{
    if (IsOneOf(column, {"sca_relaz", "sca_num"})) return "Lato e numero di una scadenza non si cambiano.";
    if (IsOfPayment(column)) return "Pagamento, distinta e stampa della Ri.Ba. non si scrivono a mano.";
    if (column == "sca_pno") return "Il movimento di una scadenza non si scrive a mano.";
    if (IsSettled(stored) && !IsFreeWhenSettled(column))
        return fmt::format("La scadenza è {}: si possono cambiare solo descrizione, destinazione e agente.",
                           InstalmentState(stored));
    return fmt::format("Il dato viene dal movimento n. {} e si cambia là.", stored.sca_pno);
}

/// The record as it is now, held against other stations until the transaction ends.
bool LoadLocked(SACommand *cmd, const SCADENZE &keys, SCADENZE *now)
{
    SACommand query(cmd->Connection(), sqlsca.Description().SearchText() + " FOR UPDATE");
    sqlsca.Description().Bind(&query, &keys);
    query.Execute();
    if (!query.FetchNext()) return false;
    sqlsca.ReadFields(&query, now);
    return true;
}

/// Why the loaded record is not the archive's any more; empty when it is.
std::string ChangedMeanwhile(SACommand *cmd, const SCADENZE &loaded)
{
    SCADENZE now;
    if (!LoadLocked(cmd, loaded, &now))
        return fmt::format("La scadenza n. {} è stata eliminata nel frattempo da un'altra stazione.", loaded.sca_num);
    const auto &columns = sqlsca.Description().Columns();
    const auto same = [&](const ColumnDescription &column) { return SameValue(column, now, loaded); };
    if (std::all_of(columns.begin(), columns.end(), same)) return {};
    return fmt::format("La scadenza n. {} è stata cambiata nel frattempo da un'altra stazione.\n\n"
                       "Ricaricarla e ripetere l'operazione.",
                       loaded.sca_num);
}

std::string SettledFault(const SCADENZE &record, std::string_view verb)
{
    if (record.sca_parked != 0)
        return fmt::format("La scadenza n. {} è in una distinta e non si può {}.\n\nToglierla prima dalla distinta.",
                           record.sca_num, verb);
    if (record.sca_pagato != 0)
        return fmt::format("La scadenza n. {} è già {} e non si può {}.\n\nAnnullare prima {}.", record.sca_num,
                           InstalmentState(record), verb, record.sca_relaz == kCustomer ? "l'incasso" : "il pagamento");
    return {};
}

void Normalise(SCADENZE *record)
{
    record->sca_fattura = std::string(Trimmed(record->sca_fattura));
    record->sca_desc = std::string(Trimmed(record->sca_desc));
    if (std::fabs(record->sca_importo) <= kAmountMax) record->sca_importo = Round(record->sca_importo, 2);
    if (std::fabs(record->sca_tot_fat) <= kAmountMax) record->sca_tot_fat = Round(record->sca_tot_fat, 2);
}

/// Amounts within the limit can be counted in cents, which throws beyond.
void CheckAmount(FaultList &faults, const SCADENZE &record)
{
    if (!(std::fabs(record.sca_importo) <= kAmountMax) || !(std::fabs(record.sca_tot_fat) <= kAmountMax))
        faults.Refuse("importo", "Importo troppo grande.");
    else
        faults.RefuseIf(TestIfZero(record.sca_importo), "importo", "Importo mancante.");
}

void CheckCounterpart(FaultList &faults, const SCADENZE &record)
{
    const bool customer = record.sca_relaz == kCustomer;
    if (record.sca_cli_for == 0)
        return faults.Refuse("cli_for", customer ? "Cliente mancante." : "Fornitore mancante.");
    if (customer)
        faults.Reference("cli_for", sqlcli, record.sca_cli_for, "Il cliente");
    else
        faults.Reference("cli_for", sqlfor, record.sca_cli_for, "Il fornitore");
}

void CheckDestination(FaultList &faults, const SCADENZE &record)
{
    DESTINAZIONI place;
    if (record.sca_dst != 0 && (!IsCode(record.sca_dst) || !sqldst.Search(faults.Cmd(), record.sca_relaz,
                                                                          record.sca_cli_for, record.sca_dst, &place)))
        faults.Refuse("dst",
                      fmt::format("La destinazione {} non esiste per {} {}.", record.sca_dst,
                                  record.sca_relaz == kCustomer ? "il cliente" : "il fornitore", record.sca_cli_for));
}

const FieldFault *FirstOf(const std::vector<FieldFault> &faults)
{
    return faults.empty() ? nullptr : &faults.front();
}

InstalmentOutcome Write(SACommand *cmd, SCADENZE *record, const SCADENZE *loaded)
{
    SATransaction transaction(cmd);
    LockNumbers(cmd, NumberSeries::Schedule);
    if (loaded)
        if (std::string reason = ChangedMeanwhile(cmd, *loaded); !reason.empty()) return Refused(std::move(reason));
    SCADENZE stored = *record;
    if (stored.sca_pno == 0) MarkByCount(&stored);
    sqlsca.SqlTransaction(cmd, loaded ? kUpdate : kInsert, &stored);
    const InstalmentGroup group(stored);
    group.MarkLast(cmd);
    InstalmentOutcome outcome{true, {}, {}, {}};
    if (loaded && ToCents(loaded->sca_importo) != ToCents(stored.sca_importo)) outcome.warning = group.Imbalance(cmd);
    sqlsca.Search(cmd, static_cast<short>(stored.sca_relaz), stored.sca_num, &stored);
    transaction.Commit();
    *record = stored;
    return outcome;
}

InstalmentOutcome Remove(SACommand *cmd, const SCADENZE &loaded)
{
    SATransaction transaction(cmd);
    LockNumbers(cmd, NumberSeries::Schedule);
    if (std::string reason = ChangedMeanwhile(cmd, loaded); !reason.empty()) return Refused(std::move(reason));
    SCADENZE removed = loaded;
    sqlsca.SqlTransaction(cmd, kDelete, &removed);
    const InstalmentGroup group(loaded);
    group.CountAnew(cmd, -1);
    group.MarkLast(cmd);
    InstalmentOutcome outcome{true, {}, {}, group.Imbalance(cmd)};
    transaction.Commit();
    return outcome;
}

} // namespace

bool ConfirmCounterpart(SACommand *cmd, long side, long code)
{
    CLIENTI customer;
    if (side != kCustomer || !sqlcli.Search(cmd, code, &customer) || customer.cli_data_cessazione == 0) return true;
    return AfxMessageBox("Il cliente selezionato risulta cessato !\n\nVuoi Continuare ?",
                         MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES;
}

void EnterCounterpart(SACommand *cmd, SCADENZE *record, long code)
{
    CommandScope scope(cmd);
    record->sca_cli_for = code;
    record->sca_dst = 0;
    long terms = 0;
    if (record->sca_relaz == kCustomer) {
        CLIENTI customer;
        sqlcli.Search(scope.get(), code, &customer);
        terms = customer.cli_pag;
        record->sca_ban = customer.cli_ban;
        record->sca_age = customer.cli_age;
    } else {
        FORNITORI supplier;
        sqlfor.Search(scope.get(), code, &supplier);
        terms = supplier.for_pag;
        record->sca_ban = supplier.for_ban;
    }
    EnterTerms(scope.get(), record, terms);
}

void EnterTerms(SACommand *cmd, SCADENZE *record, long code)
{
    PAGAMENTI terms;
    sqlpag.Search(cmd, code, &terms);
    record->sca_pag = code;
    record->sca_tipo_pag = terms.pag_tipo_pag;
}

std::vector<FieldFault> CheckInstalment(SACommand *cmd, const SCADENZE &record)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "sca_");
    if (record.sca_relaz != kCustomer && record.sca_relaz != kSupplier) {
        faults.Refuse("relaz", "Indicare 0 (cliente) o 1 (fornitore).");
        return faults.Take();
    }
    CheckCounterpart(faults, record);
    faults.RefuseIf(record.sca_data == 0, "data", "Data di scadenza mancante.");
    CheckAmount(faults, record);
    faults.RefuseIf(record.sca_rate < 0 || record.sca_rate > kCountMax, "rate",
                    fmt::format("Le rate di una fattura sono al più {}.", kCountMax));
    faults.RefuseIf(record.sca_rata < 0 || record.sca_rata > record.sca_rate, "rata",
                    fmt::format("La rata {} di {} non esiste.", record.sca_rata, record.sca_rate));
    faults.Reference("sez", sqlsez, record.sca_sez, "La sezione");
    faults.Reference("pag", sqlpag, record.sca_pag, "Il pagamento");
    faults.Reference("ban", sqlban, record.sca_ban, "La banca");
    CheckDestination(faults, record);
    faults.Reference("age", sqlage, record.sca_age, "L'agente");
    return faults.Take();
}

bool MayChange(const SCADENZE &stored, std::string_view column)
{
    if (IsOneOf(column, {"sca_relaz", "sca_num", "sca_pno"}) || IsOfPayment(column) || IsDerived(column)) return false;
    if (IsSettled(stored)) return IsFreeWhenSettled(column);
    return stored.sca_pno == 0 || !IsOfEntry(column);
}

std::vector<FieldFault> CheckChanges(const SCADENZE &stored, const SCADENZE &record)
{
    std::vector<FieldFault> faults;
    for (const ColumnDescription &column : sqlsca.Description().Columns())
        if (!IsDerived(column.name) && !MayChange(stored, column.name) && !SameValue(column, stored, record))
            faults.push_back({column.name, ChangeFault(stored, column.name)});
    return faults;
}

InstalmentOutcome StoreInstalment(SACommand *cmd, SCADENZE *record, const SCADENZE *loaded)
{
    CommandScope scope(cmd);
    SCADENZE typed = *record, before;
    Normalise(&typed);
    if (loaded) {
        before = *loaded;
        typed.sca_ultima = loaded->sca_ultima;
        typed.sca_non_ultima = loaded->sca_non_ultima;
    } else { // the number is settled when it is stored, the side is the user's
        before.sca_relaz = typed.sca_relaz;
        before.sca_num = typed.sca_num;
        MarkByCount(&typed);
    }
    const std::vector<FieldFault> faults = CheckInstalment(scope.get(), typed);
    if (const FieldFault *fault = FirstOf(faults)) return Shown(Refused(fault->text, fault->column));
    const std::vector<FieldFault> changes = CheckChanges(before, typed);
    if (const FieldFault *fault = FirstOf(changes)) return Shown(Refused(fault->text, fault->column));
    InstalmentOutcome outcome = Shown(Write(scope.get(), &typed, loaded));
    if (outcome.done) *record = typed;
    return outcome;
}

InstalmentOutcome DeleteInstalment(SACommand *cmd, const SCADENZE &loaded)
{
    if (std::string fault = SettledFault(loaded, "eliminare"); !fault.empty()) return Shown(Refused(std::move(fault)));
    if (AfxMessageBox(fmt::format("Vuoi veramente eliminare la scadenza n. {} del {} di {}?", loaded.sca_num,
                                  FormatDate(loaded.sca_data), FormatAmount(loaded.sca_importo)),
                      MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES)
        return Refused("Eliminazione non confermata.");
    CommandScope scope(cmd);
    return Shown(Remove(scope.get(), loaded));
}

namespace {

/// Whether the part may be split off.
InstalmentOutcome CheckPart(const SCADENZE &whole, double amount, long due_day)
{
    if (std::string fault = SettledFault(whole, "dividere"); !fault.empty()) return Refused(std::move(fault));
    if (due_day == 0) return Refused("Data di scadenza mancante.", "sca_data");
    const double part = std::fabs(amount) <= kAmountMax ? Round(amount, 2) : 0; // one that is too large is no part
    const bool is_part =
        part * whole.sca_importo > 0 && std::llabs(ToCents(part)) < std::llabs(ToCents(whole.sca_importo));
    if (!is_part)
        return Refused(fmt::format("La parte deve stare fra zero e {}, esclusi.", FormatAmount(whole.sca_importo)),
                       "sca_importo");
    return {true, {}, {}, {}};
}

InstalmentOutcome Part(SACommand *cmd, SCADENZE *first, double amount, long due_day, SCADENZE *second)
{
    SATransaction transaction(cmd);
    LockNumbers(cmd, NumberSeries::Schedule);
    if (std::string reason = ChangedMeanwhile(cmd, *first); !reason.empty()) return Refused(std::move(reason));
    SCADENZE one = *first, two = *first;
    const InstalmentGroup group(*first);
    if (first->sca_rate > 0)
        group.CountAnew(cmd, 1);
    else
        one.sca_rata = 1;
    one.sca_rate = two.sca_rate = std::max(first->sca_rate, 1L) + 1;
    two.sca_rata = one.sca_rata + 1;
    two.sca_importo = Round(amount, 2);
    two.sca_data = due_day;
    one.sca_importo = FromCents(ToCents(first->sca_importo) - ToCents(two.sca_importo));
    if (first->sca_pno == 0) MarkByCount(&one);
    if (first->sca_pno == 0) MarkByCount(&two);
    sqlsca.SqlTransaction(cmd, kUpdate, &one);
    sqlsca.SqlTransaction(cmd, kInsert, &two);
    group.MarkLast(cmd);
    const auto side = static_cast<short>(one.sca_relaz);
    sqlsca.Search(cmd, side, one.sca_num, &one);
    sqlsca.Search(cmd, side, two.sca_num, &two);
    transaction.Commit();
    *first = one;
    *second = two;
    return {true, {}, {}, {}};
}

} // namespace

InstalmentOutcome SplitInstalment(SACommand *cmd, SCADENZE *first, double amount, long due_day, SCADENZE *second)
{
    if (const InstalmentOutcome refused = CheckPart(*first, amount, due_day); !refused.done) return Shown(refused);
    CommandScope scope(cmd);
    return Shown(Part(scope.get(), first, amount, due_day, second));
}

bool NeighbourInstalment(SACommand *cmd, short side, long number, bool forward, long section, SCADENZE *record)
{
    std::string condition = " WHERE sca_relaz = :rel";
    if (section != 0) condition += " AND sca_sez = :codsez";
    if (number != 0) condition += forward ? " AND sca_num > :num" : " AND sca_num < :num";
    condition += forward ? " ORDER BY sca_relaz, sca_num LIMIT 1" : " ORDER BY sca_relaz DESC, sca_num DESC LIMIT 1";
    const auto bind = [&](SACommand &query) {
        query.Param("rel").setAsLong(side);
        if (section != 0) query.Param("codsez").setAsLong(section);
        if (number != 0) query.Param("num").setAsLong(number);
    };
    return sqlsca.First(cmd, condition, bind, record);
}

std::string InstalmentState(const SCADENZE &record)
{
    if (record.sca_parked != 0) return "in distinta";
    if (record.sca_pagato == 0) return {};
    return record.sca_relaz == kCustomer ? "incassata" : "pagata";
}

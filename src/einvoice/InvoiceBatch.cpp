#include "einvoice/InvoiceBatch.h"

#include "einvoice/BatchUser.h"
#include "einvoice/InvoiceComparison.h"
#include "ledger/EntryStorage.h"
#include "schedule/Instalments.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/MasterRecords.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <tuple>

namespace {

constexpr const char *kNoTerms = "Nessuna modalità di pagamento impostata sul fornitore.";

/// What makes a document a duplicate of another one of the same run: register, supplier, number and a year.
using DocumentKey = std::tuple<long, std::string, std::string, int>;

/// A line on its way into the plan.
struct Planned {
    BatchLine line;
    std::vector<DocumentKey> keys; ///< by year of registration and of the document; none unless it is ready
};

/// Runs what concerns one document. @return what is wrong with that document, empty when nothing is
/// @throws SAException when the archive itself fails, which the next document would only meet again
std::string FaultOf(const std::function<void()> &work)
{
    try {
        work();
    } catch (const InvoiceFileError &error) {
        return AsReason(error.Detail().empty() ? error.what() : error.Detail());
    } catch (const SAException &error) {
        if (error.ErrClass() != SA_UserGenerated_Error && error.Fault() != SAFault::Changed) throw;
        return AsReason(DescribeError(error));
    }
    return {};
}

std::string VatCodesOf(const PNOTA &entry)
{
    std::string codes;
    for (const PNOTA_IVA &line : entry.iva)
        if (line.iva != 0) codes += (codes.empty() ? "" : ", ") + std::to_string(line.iva);
    return codes;
}

/// The same seller twice in one run is one new supplier, and two new ones may be proposed the same number.
std::string SupplierKey(const BatchLine &line)
{
    return line.is_new_supplier ? fmt::format("{}/{}", line.invoice.vat_number, line.invoice.fiscal_code)
                                : std::to_string(line.supplier);
}

/// What is known of the entry, also when the preparation stopped half way.
void ShowEntry(const PreparedInvoice &prepared, BatchLine *line)
{
    if (prepared.supplier.for_codice != 0) {
        line->supplier = prepared.supplier.for_codice;
        line->supplier_name = prepared.supplier.for_desc.str();
        line->is_new_supplier = prepared.new_supplier.for_codice != 0;
    }
    const PNOTA &entry = prepared.entry;
    line->causale = entry.pno_cau;
    line->causale_text = entry.pno_des_cau.str();
    if (entry.pno_data != 0) line->day = entry.pno_data;
    line->vat_codes = VatCodesOf(entry);
}

/// Terms are looked at before the entry is stored: without them, or with dates to be typed, it would stand in the books
/// without instalments.
/// @return why the document stays; empty when it does not
std::string WhyNoInstalments(SACommand *cmd, const PreparedInvoice &prepared, const BatchOptions &options,
                             BatchLine *line)
{
    const bool goes_on = options.answer_yes || line->is_new_supplier;
    const PNOTA &entry = prepared.entry;
    std::string why_not;
    if (entry.pno_pag == 0)
        why_not = prepared.supplier.for_pag == 0
                      ? kNoTerms
                      : fmt::format("Il pagamento {} del fornitore non esiste.", prepared.supplier.for_pag);
    const auto proposal = why_not.empty() ? ProposeWholeInstalments(cmd, entry, &why_not) : std::nullopt;
    if (!why_not.empty()) {
        if (!goes_on) return why_not;
        line->notes.push_back(why_not);
        return {};
    }
    if (!proposal) {
        line->notes.push_back(fmt::format("Il pagamento {} non genera scadenze.", entry.pno_pag));
        return {};
    }
    line->instalments = std::count_if(proposal->rows.begin(), proposal->rows.end(),
                                      [](const Instalment &row) { return row.IsComplete(); });
    return ConfirmTotal(proposal->rows, proposal->total) ? std::string() : "Scadenze diverse dal totale del documento.";
}

std::vector<DocumentKey> KeysOf(const PNOTA &entry, const BatchLine &line)
{
    const std::string supplier = SupplierKey(line), number(Trimmed(entry.pno_doc));
    if (number.empty()) return {};
    return {{entry.pno_reg, "registrazione/" + supplier, number, Year(entry.pno_data)},
            {entry.pno_reg, "documento/" + supplier, number, Year(entry.pno_data_doc)}};
}

/// Everything that the registration would look at, up to the point where it would write.
void LookAt(SACommand *cmd, const ALLEGATI &filed, const CFattureElettronicheDB &content, const BatchOptions &options,
            Planned *planned)
{
    BatchLine &line = planned->line;
    BatchUser user(options);
    const auto prepared = std::make_unique<PreparedInvoice>();
    std::string reason;
    bool is_ready = PrepareInvoiceEntry(cmd, filed, content, line.invoice.document, options.causale, user.Choices(),
                                        prepared.get(), &reason);
    ShowEntry(*prepared, &line);
    if (is_ready) {
        line.total = prepared->entry.pno_tot_doc;
        line.notes = prepared->notes;
        reason = WhyNotStorable(cmd, &prepared->entry, prepared->new_supplier.for_codice);
        if (reason.empty()) reason = WhyNoInstalments(cmd, *prepared, options, &line);
        is_ready = reason.empty();
    }
    line.is_ready = is_ready && !user.WasAsked();
    if (!line.is_ready) {
        line.reason = user.Reason(reason);
        return;
    }
    planned->keys = KeysOf(prepared->entry, line);
    line.notes.insert(line.notes.end(), user.Told().begin(), user.Told().end());
    for (std::string &difference : CompareWithInvoice(content.Documents()[line.invoice.document], prepared->entry))
        line.notes.push_back(std::move(difference));
}

/// Reads each file once, whatever it holds.
class FileReader {
  public:
    explicit FileReader(SACommand *cmd) : cmd_(cmd) {}

    /// Holds until the next call. @throws InvoiceFileError, SAException
    void Open(long code)
    {
        if (code == code_) return;
        code_ = 0;
        content_ = CFattureElettronicheDB();
        filed_ = LoadInvoice(cmd_, code, &content_);
        code_ = code;
    }
    const ALLEGATI &Filed() const { return filed_; }
    const CFattureElettronicheDB &Content() const { return content_; }

  private:
    SACommand *cmd_;
    long code_ = 0;
    ALLEGATI filed_;
    CFattureElettronicheDB content_;
};

void TakeInvoice(BatchLine *line)
{
    const InvoiceRow &invoice = line->invoice;
    line->supplier = invoice.supplier;
    line->supplier_name = invoice.supplier != 0 ? invoice.supplier_name : invoice.seller_name;
    line->is_registered = invoice.is_registered;
    line->day = invoice.day;
    line->total = invoice.total;
}

std::vector<InvoiceRow> OpenInvoices()
{
    std::vector<InvoiceRow> rows;
    InvoiceFilter filter;
    filter.state = InvoiceState::ToRegister;
    ForEachInvoice(nullptr, filter, [&](const InvoiceRow &row) {
        rows.push_back(row);
        return true;
    });
    return rows;
}

InvoiceRow RowOf(const BatchTarget &target)
{
    InvoiceRow row;
    row.code = target.code;
    row.document = target.document;
    return row;
}

/// @param is_described  the row shows the document already, as the list does
Planned PlanOne(SACommand *cmd, FileReader *reader, InvoiceRow row, bool is_described, const BatchOptions &options)
{
    Planned planned;
    BatchLine &line = planned.line;
    line.invoice = std::move(row);
    TakeInvoice(&line);
    if (!line.invoice.fault.empty()) {
        line.reason = AsReason(line.invoice.fault);
        return planned;
    }
    const std::string fault = FaultOf([&] {
        reader->Open(line.invoice.code);
        const std::size_t documents = reader->Content().Count();
        if (line.invoice.document >= documents) {
            line.reason = fmt::format("Il file contiene {} documenti.", documents);
            return;
        }
        if (!is_described) {
            line.invoice = DescribeInvoice(cmd, reader->Filed(), reader->Content(), line.invoice.document);
            TakeInvoice(&line);
        }
        if (!line.is_registered) LookAt(cmd, reader->Filed(), reader->Content(), options, &planned);
    });
    if (!fault.empty()) {
        line.is_ready = false;
        line.reason = fault;
    }
    return planned;
}

/// The journal would refuse, or ask about, the second of two equal documents.
void FindCollisions(std::vector<Planned> *planned)
{
    std::map<DocumentKey, const BatchLine *> first;
    for (Planned &one : *planned) {
        if (!one.line.is_ready) continue;
        for (const DocumentKey &key : one.keys) {
            const auto [there, is_first] = first.try_emplace(key, &one.line);
            if (is_first || there->second == &one.line) continue;
            one.line.is_ready = false;
            one.line.reason =
                fmt::format("Stesso fornitore e numero di un'altra fattura dell'elenco, del {} (file {}).",
                            FormatDate(there->second->invoice.day), there->second->invoice.code);
            break;
        }
    }
}

/// A supplier may have lost his terms since the plan was made.
bool HasTerms(SACommand *cmd, const BatchLine &line, const BatchOptions &options)
{
    if (options.answer_yes || line.is_new_supplier) return true;
    FORNITORI supplier;
    return !sqlfor.Search(cmd, line.supplier, &supplier) || supplier.for_pag != 0;
}

/// What was shown is what is stored: another station may have changed the supplier since.
std::string WhyChanged(const BatchLine &line, const PreparedInvoice &prepared)
{
    const PNOTA &entry = prepared.entry;
    const bool is_same = (line.is_new_supplier || prepared.supplier.for_codice == line.supplier) &&
                         entry.pno_cau == line.causale && VatCodesOf(entry) == line.vat_codes &&
                         TestIfZero(entry.pno_tot_doc - line.total);
    return is_same ? std::string()
                   : "Fornitore, causale, codici IVA o totale non sono più quelli mostrati: occorre provare di nuovo.";
}

BatchResult RegisterOne(SACommand *cmd, const BatchLine &line, const BatchOptions &options)
{
    BatchUser user(options);
    BatchResult result;
    const std::string fault = FaultOf([&] {
        if (!HasTerms(cmd, line, options)) {
            result.reason = kNoTerms;
            return;
        }
        RegistrationChoices choices = user.Choices();
        choices.why_not = [&](const PreparedInvoice &prepared) { return WhyChanged(line, prepared); };
        const RegistrationOutcome outcome =
            RegisterInvoice(cmd, line.invoice.code, line.invoice.document, options.causale, choices);
        result = ResultOf(outcome);
        if (!result.registered) result.reason = user.Reason(result.reason);
    });
    if (!fault.empty()) result.reason = fault;
    if (result.registered) result.notes.insert(result.notes.end(), user.Told().begin(), user.Told().end());
    return result;
}

} // namespace

long BatchPlan::Ready() const
{
    return std::count_if(lines.begin(), lines.end(), [](const BatchLine &line) { return line.is_ready; });
}

BatchResult ResultOf(const RegistrationOutcome &outcome)
{
    BatchResult result;
    result.registered = outcome.registered;
    result.reason = outcome.reason;
    result.notes = outcome.notes;
    if (!outcome.registered) return result;
    result.entry = outcome.entry.pno_codice;
    result.protocol = outcome.entry.pno_prot;
    result.vat_register = outcome.entry.pno_reg;
    result.vat_lines = std::count_if(outcome.entry.iva.begin(), outcome.entry.iva.end(),
                                     [](const PNOTA_IVA &line) { return line.iva != 0; });
    result.instalments = outcome.instalments;
    result.total = outcome.entry.pno_tot_doc;
    return result;
}

BatchPlan PlanRegistration(SACommand *cmd, const std::vector<BatchTarget> &targets, const BatchOptions &options,
                           const std::function<bool(long done, long of)> &progress)
{
    const bool is_described = targets.empty();
    std::vector<InvoiceRow> rows = is_described ? OpenInvoices() : std::vector<InvoiceRow>();
    for (const BatchTarget &target : targets) rows.push_back(RowOf(target));
    // By file, so that one with many documents is read once.
    std::ranges::stable_sort(rows, {}, [](const InvoiceRow &row) { return std::pair(row.code, row.document); });

    CommandScope scope(cmd);
    const MasterRecords known(scope.get()); // what changes meanwhile is seen when the document is stored
    FileReader reader(scope.get());
    std::vector<Planned> planned;
    planned.reserve(rows.size());
    for (InvoiceRow &row : rows) {
        planned.push_back(PlanOne(scope.get(), &reader, std::move(row), is_described, options));
        if (progress && !progress(static_cast<long>(planned.size()), static_cast<long>(rows.size()))) break;
    }
    std::ranges::stable_sort(planned, {}, [](const Planned &one) { return one.line.invoice.day; });
    FindCollisions(&planned);
    BatchPlan plan;
    plan.lines.reserve(planned.size());
    for (Planned &one : planned) plan.lines.push_back(std::move(one.line));
    return plan;
}

std::vector<BatchOutcome> RegisterPlanned(SACommand *cmd, const BatchPlan &plan, const BatchOptions &options,
                                          const std::function<bool(const BatchOutcome &)> &each)
{
    CommandScope scope(cmd);
    std::vector<BatchOutcome> outcomes;
    for (const BatchLine &line : plan.lines) {
        if (!line.is_ready) continue;
        outcomes.push_back({{line.invoice.code, line.invoice.document}, RegisterOne(scope.get(), line, options)});
        if (each && !each(outcomes.back())) break;
    }
    return outcomes;
}

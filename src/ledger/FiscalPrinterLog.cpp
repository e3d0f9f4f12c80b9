#include "ledger/FiscalPrinterLog.h"

#include "ledger/EntryEditing.h"
#include "ledger/EntryStorage.h"
#include "ledger/VatLines.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Causali.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/VatCodes.h"

#include <algorithm>
#include <fmt/format.h>
#include <optional>
#include <set>

namespace {

constexpr std::size_t kFileMax = 8 * 1024 * 1024, kLineMax = 200, kSerialMax = 15;
constexpr long kClosureNumberMax = 9999, kCodeMax = 99999;

[[noreturn]] void RefuseLine(long line, const std::string &reason)
{
    throw FileError(fmt::format("Log della stampante fiscale, riga {}: {}", line, reason));
}

bool AllDigits(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::optional<long> ReadNumber(std::string_view text, long max)
{
    if (!AllDigits(text) || text.size() > 9) return {};
    const long value = std::stol(std::string(text));
    return value <= max ? std::optional(value) : std::nullopt;
}

/// "1342,00": digits, a comma and exactly two decimals. A point would leave open which separator it is.
std::optional<double> ReadEuro(std::string_view text)
{
    const std::size_t comma = text.find(',');
    if (comma == std::string_view::npos || comma > 8 || text.size() != comma + 3) return {};
    if (!AllDigits(text.substr(0, comma)) || !AllDigits(text.substr(comma + 1))) return {};
    return ParseDecimal(fmt::format("{}.{}", text.substr(0, comma), text.substr(comma + 1)));
}

/// "22", "5" or "7,3".
std::optional<double> ReadRate(std::string_view text)
{
    const std::size_t comma = std::min(text.find(','), text.size());
    const std::string_view whole = text.substr(0, comma);
    const std::string_view part = comma < text.size() ? text.substr(comma + 1) : std::string_view("0");
    if (!AllDigits(whole) || whole.size() > 2 || !AllDigits(part) || part.size() > 2) return {};
    return ParseDecimal(fmt::format("{}.{}", whole, part));
}

std::vector<std::string_view> Split(std::string_view line)
{
    std::vector<std::string_view> fields;
    while (true) {
        const std::size_t end = line.find(';');
        fields.push_back(Trimmed(line.substr(0, end)));
        if (end == std::string_view::npos) return fields;
        line.remove_prefix(end + 1);
    }
}

/// The closures of a file in the making: line after line, each told with its number when it does not fit.
class LogReader {
  public:
    explicit LogReader(long today) : today_(today) {}

    void Take(std::string_view text)
    {
        ++line_;
        if (text.size() > kLineMax) RefuseLine(line_, fmt::format("più di {} caratteri.", kLineMax));
        if (std::any_of(text.begin(), text.end(), [](char c) { return c < ' ' || c > '~'; }))
            RefuseLine(line_, "caratteri non ammessi.");
        text = Trimmed(text);
        if (text.empty() || text.front() == '#') return;
        const std::vector<std::string_view> fields = Split(text);
        if (fields[0] == "STAMPANTE")
            TakePrinter(fields);
        else if (serial_.empty())
            RefuseLine(line_, "il log deve cominciare con la riga STAMPANTE.");
        else if (fields[0] == "CHIUSURA")
            TakeClosure(fields);
        else if (fields[0] == "IVA")
            TakeVat(fields);
        else
            RefuseLine(line_, fmt::format("riga «{}» non riconosciuta.", fields[0]));
    }

    std::vector<DailyClosure> Finish()
    {
        CheckTotal();
        if (serial_.empty()) RefuseLine(std::max(line_, 1L), "il log è vuoto.");
        return std::move(closures_);
    }

  private:
    void RequireFields(const std::vector<std::string_view> &fields, std::size_t least, std::size_t most) const
    {
        if (fields.size() < least || fields.size() > most)
            RefuseLine(line_, fmt::format("{} campi invece di {}.", fields.size(), least));
    }

    void TakePrinter(const std::vector<std::string_view> &fields)
    {
        RequireFields(fields, 3, 3);
        CheckTotal();
        if (!fields[1].starts_with("EPSON FP")) RefuseLine(line_, "non è una stampante EPSON FP.");
        if (fields[2].empty() || fields[2].size() > kSerialMax ||
            !std::all_of(fields[2].begin(), fields[2].end(),
                         [](char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z'); }))
            RefuseLine(line_, fmt::format("matricola «{}» non valida.", fields[2]));
        serial_ = fields[2];
    }

    void TakeClosure(const std::vector<std::string_view> &fields)
    {
        RequireFields(fields, 4, 4);
        CheckTotal();
        DailyClosure closure;
        closure.line = line_;
        closure.serial = serial_;
        closure.number = ReadNumber(fields[1], kClosureNumberMax).value_or(0);
        if (closure.number == 0) RefuseLine(line_, fmt::format("numero di chiusura «{}» non valido.", fields[1]));
        closure.day = ParseDate(fields[2]).value_or(0);
        if (closure.day == 0) RefuseLine(line_, fmt::format("«{}» non è una data.", fields[2]));
        if (closure.day > today_) RefuseLine(line_, fmt::format("chiusura futura ({}).", FormatDate(closure.day)));
        const std::optional<double> total = ReadEuro(fields[3]);
        if (!total) RefuseLine(line_, fmt::format("importo «{}» non valido.", fields[3]));
        closure.total = *total;
        if (!seen_.emplace(Year(closure.day), closure.Document()).second)
            RefuseLine(line_, fmt::format("chiusura {} ripetuta.", closure.number));
        closures_.push_back(std::move(closure));
        open_ = true;
    }

    void TakeVat(const std::vector<std::string_view> &fields)
    {
        RequireFields(fields, 3, 4);
        if (!open_) RefuseLine(line_, "riga IVA senza chiusura.");
        DailyClosure &closure = closures_.back();
        if (closure.vat.size() == kVatLines) RefuseLine(line_, fmt::format("più di {} righe IVA.", kVatLines));
        const std::optional<double> rate = ReadRate(fields[1]);
        if (!rate) RefuseLine(line_, fmt::format("aliquota «{}» non valida.", fields[1]));
        const std::optional<double> gross = ReadEuro(fields[2]);
        if (!gross || TestIfZero(*gross)) RefuseLine(line_, fmt::format("importo «{}» non valido.", fields[2]));
        const bool has_code = fields.size() == 4;
        const long code = has_code ? ReadNumber(fields[3], kCodeMax).value_or(0) : 0;
        if (has_code && code == 0) RefuseLine(line_, fmt::format("codice IVA «{}» non valido.", fields[3]));
        if (!has_code && TestIfZero(*rate)) RefuseLine(line_, "senza aliquota occorre il codice IVA.");
        closure.vat.push_back({line_, *rate, *gross, code});
    }

    /// The receipts of the rates are the total, or lines are missing.
    void CheckTotal()
    {
        if (!open_) return;
        open_ = false;
        const DailyClosure &closure = closures_.back();
        long long cents = 0;
        for (const ClosureVat &vat : closure.vat) cents += ToCents(vat.gross);
        if (cents != ToCents(closure.total))
            RefuseLine(closure.line, fmt::format("il totale è {}, le righe IVA fanno {}.", FormatAmount(closure.total),
                                                 FormatAmount(FromCents(cents))));
    }

    long today_, line_ = 0;
    bool open_ = false; ///< the last closure may still get VAT lines
    std::string serial_;
    std::set<std::pair<int, std::string>> seen_;
    std::vector<DailyClosure> closures_;
};

[[noreturn]] void RefuseCausale(const std::string &text)
{
    throw SAException(SA_UserGenerated_Error, 20064, text, SAFault::Other);
}

long ReceiptsCausale(SACommand *cmd, long wanted)
{
    CAUCONT causale;
    if (wanted == 0) {
        if (!sqlcac.First(
                cmd, " WHERE cac_reg = :reg AND cac_iva = 1 ORDER BY cac_codice",
                [](SACommand &query) { query.Param("reg").setAsLong(kReceipts); }, &causale))
            RefuseCausale("Nessuna causale registra corrispettivi.");
        return causale.cac_codice;
    }
    if (!sqlcac.Search(cmd, wanted, &causale)) RefuseCausale(fmt::format("La causale {} non esiste.", wanted));
    if (causale.cac_reg != kReceipts || causale.cac_iva != 1)
        RefuseCausale(fmt::format("La causale {} non registra corrispettivi.", wanted));
    return wanted;
}

/// Gives every line its VAT code, or refuses the file.
void ResolveCodes(SACommand *cmd, std::vector<DailyClosure> *closures)
{
    for (DailyClosure &closure : *closures) {
        for (ClosureVat &vat : closure.vat) {
            CODIVA record;
            const bool found = vat.code != 0 ? sqliva.Search(cmd, vat.code, &record)
                                             : sqliva.SearchByRate(cmd, vat.rate, kVatTaxable, &record);
            if (!found && vat.code != 0) RefuseLine(vat.line, fmt::format("il codice IVA {} non esiste.", vat.code));
            if (!found) RefuseLine(vat.line, fmt::format("nessun codice IVA ha l'aliquota {}.", vat.rate));
            const VatTreatment treatment = TreatmentOf(kReceipts, record.iva_tip);
            const double rate = treatment == VatTreatment::RateOnly ? record.iva_aliq : 0;
            if (treatment == VatTreatment::Cleared)
                RefuseLine(vat.line, fmt::format("il codice IVA {} non vale per i corrispettivi.", record.iva_codice));
            if (!TestIfZero(rate - vat.rate))
                RefuseLine(vat.line, fmt::format("il codice IVA {} ha un'altra aliquota.", record.iva_codice));
            vat.code = record.iva_codice;
        }
    }
}

PNOTA EntryOf(SACommand *cmd, const DailyClosure &closure, long causale)
{
    PNOTA entry;
    sqlpno.Blank(cmd, &entry);
    entry.pno_data = closure.day;
    entry.pno_data_doc = closure.day;
    EnterCausale(cmd, &entry, causale);
    EnterDocumentNumber(&entry, closure.Document());
    for (std::size_t i = 0; i < closure.vat.size(); ++i) {
        const ClosureVat &vat = closure.vat[i];
        entry.iva[i].impo = vat.gross;
        EnterVatCode(cmd, &entry, i, vat.code);
        // What is in the till is certain: a cent lost in taking the tax out of it belongs to the tax.
        if (!TestIfZero(vat.rate)) entry.iva[i].imposta = Round(vat.gross - entry.iva[i].impo, 2);
    }
    sqlpno.RecalcPNota(cmd, &entry, 1, 0, 0, 0, 0);
    return entry;
}

} // namespace

std::string DailyClosure::Document() const
{
    return fmt::format("{:04}/{}", number, serial);
}

std::vector<DailyClosure> ParseFiscalLog(std::string_view text, long today)
{
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    LogReader reader(today);
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        reader.Take(line);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return reader.Finish();
}

std::string DescribeImport(const ReceiptsImport &import)
{
    std::string text = fmt::format("Chiusure registrate: {}, già registrate: {}, senza incassi: {}.", import.stored,
                                   import.known, import.empty);
    if (!import.refusal.empty()) text += "\n\nImportazione interrotta. " + import.refusal;
    return text;
}

ReceiptsImport ImportFiscalLog(SACommand *cmd, const std::filesystem::path &file, long causale)
{
    std::vector<DailyClosure> closures = ParseFiscalLog(ReadWholeFile(file, kFileMax), CurrentUserInterface().Today());
    CommandScope scope(cmd);
    const long used = ReceiptsCausale(scope.get(), causale);
    ResolveCodes(scope.get(), &closures);

    CTarvoProgressDlg progress;
    progress.SetRange(0, static_cast<long>(closures.size()));
    ReceiptsImport import;
    for (const DailyClosure &closure : closures) {
        progress.StepIt();
        if (closure.vat.empty()) {
            ++import.empty;
            continue;
        }
        PNOTA entry = EntryOf(scope.get(), closure, used);
        if (FindDuplicateDocument(scope.get(), entry, DuplicateYear::OfDocument) != 0) {
            ++import.known;
            continue;
        }
        const StoreOutcome outcome = StoreEntry(scope.get(), &entry, true);
        if (!outcome.stored) {
            import.refusal = fmt::format("Riga {}, chiusura {} del {}: {}", closure.line, closure.number,
                                         FormatDate(closure.day), outcome.reason);
            return import;
        }
        ++import.stored;
    }
    return import;
}

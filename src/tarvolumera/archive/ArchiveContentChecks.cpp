#include "tarvolumera/archive/ArchiveContentChecks.h"

#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/Attachments.h"
#include "tarvolumera/JournalTotals.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/VatCodes.h"
#include "tarvolumera/fatturapa/SignedEnvelope.h"

#include <fmt/format.h>

#include <cstdlib>
#include <stdexcept>

namespace {

constexpr char kTotals[] = "Totali", kVat[] = "IVA", kProtocols[] = "Protocolli", kDocuments[] = "Allegati";

/// Suppliers round the tax of each line of their invoice, so its sum is some cents off the rate.
constexpr long long kTaxToleranceCents = 5;

struct NamedTotal {
    const char *name;
    double PNOTA::*value;
};

constexpr NamedTotal kVatTotals[] = {{"imponibile", &PNOTA::pno_tot_imp},
                                     {"IVA", &PNOTA::pno_tot_iva},
                                     {"esente", &PNOTA::pno_tot_esente},
                                     {"non imponibile", &PNOTA::pno_tot_non_imp},
                                     {"fuori campo", &PNOTA::pno_tot_non_82}};

/// In these the tax of a received invoice is the buyer's affair or not shown, so the file carries none beside the rate
/// that the user chose.
bool MayCarryNoTax(long kind)
{
    return kind == kVatReverseChargeOwn || kind == kVatReverseCharge || kind == kVatMargin;
}

/// What is wrong with one line; empty when nothing is.
std::string LineFault(const PNOTA_IVA &line, long vat_register)
{
    const long long taxable = ToCents(line.impo), tax = ToCents(line.imposta);
    if (line.iva == 0) {
        if (taxable == 0 && tax == 0) return {};
        return fmt::format("imponibile {} e imposta {} senza codice IVA", FormatAmount(line.impo),
                           FormatAmount(line.imposta));
    }
    if (line.tip < kVatTaxable || line.tip > kVatOtherState)
        return fmt::format("il tipo {} del codice IVA {} non esiste", line.tip, line.iva);
    // There the tax is typed, not computed.
    if (vat_register == kEuSales || (tax == 0 && MayCarryNoTax(line.tip))) return {};
    const double expected = Round(line.aliq / 100 * line.impo, 2);
    if (std::llabs(tax - ToCents(expected)) <= kTaxToleranceCents) return {};
    return fmt::format("l'imposta {} non è il {}% di {}", FormatAmount(line.imposta), FormatAmount(line.aliq),
                       FormatAmount(line.impo));
}

void CheckLines(const PNOTA &entry, ArchiveFaults *faults)
{
    const std::string where = fmt::format("Movimento {}", entry.pno_codice);
    bool has_line = false;
    for (std::size_t i = 0; i < kVatLines; ++i) {
        has_line |= entry.iva[i].iva != 0;
        const std::string fault = LineFault(entry.iva[i], entry.pno_reg);
        if (!fault.empty()) faults->Add({kVat, fmt::format("{} riga IVA {}", where, i + 1), fault});
    }
    if (!has_line) faults->Add({kVat, where, "il movimento è IVA ma non ha righe IVA"});
}

/// The document total may have been typed, and differ by a rounding that was posted with the entry.
std::string DocumentTotalFault(const PNOTA &entry, double rounding_limit)
{
    long long owed = 0;
    for (const PNOTA_IVA &line : entry.iva) owed += ToCents(OwedForLine(line));
    if (std::llabs(ToCents(entry.pno_tot_doc) - owed) <= ToCents(rounding_limit)) return {};
    return fmt::format("totale documento {}, dalle righe IVA {}, oltre l'arrotondamento ammesso di {}",
                       FormatAmount(entry.pno_tot_doc), FormatAmount(FromCents(owed)), FormatAmount(rounding_limit));
}

void CheckTotals(PNOTA *entry, const DITTE &company, const FLAG &settings, ArchiveFaults *faults)
{
    const std::string where = fmt::format("Movimento {}", entry->pno_codice);
    std::array<double, std::size(kVatTotals)> stored{};
    for (std::size_t i = 0; i < stored.size(); ++i) stored[i] = entry->*kVatTotals[i].value;
    RecalcTotals(entry, company, settings, kTotalsOnly);
    std::string differences;
    for (std::size_t i = 0; i < stored.size(); ++i) {
        const double computed = entry->*kVatTotals[i].value;
        if (ToCents(stored[i]) == ToCents(computed)) continue;
        differences += fmt::format("{}{} {} invece di {}", differences.empty() ? "" : ", ", kVatTotals[i].name,
                                   FormatAmount(stored[i]), FormatAmount(computed));
    }
    if (!differences.empty()) faults->Add({kTotals, where, differences});
    const std::string document = DocumentTotalFault(*entry, settings.flg_arr_limite);
    if (!document.empty()) faults->Add({kTotals, where, document});
}

struct ProtocolStep {
    long year = 0, section = 0, vat_register = 0;
    long before = 0, protocol = 0; ///< before is 0 at the start of the series
    long entry_before = 0, entry = 0;
};

void AddProtocolFault(const ProtocolStep &step, ArchiveFaults *faults)
{
    const std::string series =
        fmt::format("{} sez. {} anno {}", RegisterName(step.vat_register), step.section, step.year);
    const long first = step.before + 1, last = step.protocol - 1;
    if (step.protocol == step.before) {
        faults->Add({kProtocols, fmt::format("Protocollo {} {}", step.protocol, series),
                     fmt::format("assegnato ai movimenti {} e {}", step.entry_before, step.entry)});
    } else if (first == last) {
        faults->Add({kProtocols, fmt::format("Protocollo {} {}", first, series), "manca"});
    } else {
        faults->Add({kProtocols, fmt::format("Protocolli dal {} al {} {}", first, last, series),
                     fmt::format("mancano {} protocolli", last - first + 1)});
    }
}

/// The digest is of the file as it came or, for a signed one, of the XML inside. Empty when one of the two is right.
std::string DigestFault(std::string_view content, const std::string &name, const std::string &digest)
{
    if (ContentDigest(content) == digest) return {};
    try {
        if (ContentDigest(ExtractInvoiceXml(std::string(content), name).xml) == digest) return {};
    } catch (const InvoiceFileError &error) {
        return fmt::format("{}: il contenuto non è più quello archiviato ({})", name, error.Detail());
    }
    return fmt::format("{}: il contenuto non è più quello archiviato", name);
}

} // namespace

void CheckVatLines(SACommand *cmd, ArchiveFaults *faults)
{
    DITTE company;
    FLAG settings;
    sqldit.First(cmd, " ORDER BY dit_codice", {}, &company);
    sqlflg.First(cmd, " ORDER BY flg_codice", {}, &settings);
    const auto entry = std::make_unique<PNOTA>(); // one for all: a record with its hundred rows is large
    SACommand query(cmd->Connection(),
                    sqlpno.Description().SelectText() + " WHERE pno_cau_iva = 1 ORDER BY pno_codice");
    query.Execute();
    while (query.FetchNext() && !(faults->IsOver(kVat) && faults->IsOver(kTotals))) {
        sqlpno.ReadFields(&query, entry.get());
        try {
            CheckLines(*entry, faults);
            CheckTotals(entry.get(), company, settings, faults);
        } catch (const std::out_of_range &) { // no amount of money at all
            faults->Add({kVat, fmt::format("Movimento {}", entry->pno_codice), "un importo è fuori dai limiti"});
        }
    }
}

void CheckProtocols(SACommand *cmd, ArchiveFaults *faults)
{
    // Whoever begins with this program in the middle of a year fixes his first protocol: the series starts there.
    SACommand query(
        cmd->Connection(),
        "SELECT anno, sez, reg, prima, prot, mov_prima, mov FROM (SELECT EXTRACT(YEAR FROM pno_data) AS anno,"
        " pno_sez AS sez, pno_reg AS reg, pno_prot AS prot, pno_codice AS mov, pno_prot_fisso AS fisso,"
        " LAG(pno_prot) OVER serie AS prima, LAG(pno_codice) OVER serie AS mov_prima"
        " FROM admin.pnota1 WHERE pno_prot > 0 AND pno_reg > 1 WINDOW serie AS"
        " (PARTITION BY EXTRACT(YEAR FROM pno_data), pno_sez, pno_reg ORDER BY pno_prot, pno_codice)) AS passi"
        " WHERE prot <> COALESCE(prima, 0) + 1 AND (prima IS NOT NULL OR fisso = 0)"
        " ORDER BY anno, sez, reg, prot, mov");
    query.Execute();
    while (query.FetchNext() && !faults->IsOver(kProtocols)) {
        AddProtocolFault({query.Field("anno").asLong(), query.Field("sez").asLong(), query.Field("reg").asLong(),
                          query.Field("prima").asLong(), query.Field("prot").asLong(),
                          query.Field("mov_prima").asLong(), query.Field("mov").asLong()},
                         faults);
    }
}

void CheckDigests(SACommand *cmd, ArchiveFaults *faults)
{
    SACommand query(cmd->Connection(), "SELECT all_anno, all_codice, all_fname, all_impronta, all_data"
                                       " FROM admin.allegati WHERE all_impronta <> '' ORDER BY all_anno, all_codice");
    query.Execute();
    while (query.FetchNext() && !faults->IsOver(kDocuments)) {
        const std::vector<std::byte> bytes = query.Field("all_data").asBytes();
        const std::string fault =
            DigestFault(AsText(bytes), query.Field("all_fname").asString(), query.Field("all_impronta").asString());
        if (fault.empty()) continue;
        faults->Add(
            {kDocuments,
             fmt::format("Documento {} anno {}", query.Field("all_codice").asLong(), query.Field("all_anno").asLong()),
             fault});
    }
}

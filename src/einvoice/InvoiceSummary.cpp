#include "einvoice/InvoiceSummary.h"

#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvolumera/FiscalCodes.h"
#include "tarvolumera/Protocols.h"

#include <algorithm>
#include <optional>

namespace {

constexpr long kFilesTogether = 100;
/// From here on the user sees what he waits for.
constexpr long kWorthAProgress = 50;

FATTURE BlankSummary(const ALLEGATI &filed)
{
    FATTURE summary;
    summary.fat_codice = filed.all_codice;
    summary.fat_documento = 1;
    summary.fat_anno = filed.all_anno;
    summary.fat_fname = filed.all_fname;
    summary.fat_acquisita = filed.all_date_time;
    return summary;
}

/// Reads and summarises the next files without summary. Other stations wait meanwhile, so none is summarised twice.
/// @return how many files; 0 = there are no more
long SummariseNext(SACommand *cmd, long most)
{
    SATransaction transaction(cmd);
    LockNumbers(cmd, NumberSeries::Files);
    const std::vector<long> codes = sqlfat.Missing(cmd, most);
    for (const long code : codes) {
        ALLEGATI filed;
        if (!sqlall.SearchByCode(cmd, code, &filed)) continue;
        for (FATTURE &summary : SummariesOf(filed)) sqlfat.SqlTransaction(cmd, kInsert, &summary);
    }
    transaction.Commit();
    return static_cast<long>(codes.size());
}

} // namespace

std::vector<FATTURE> SummariesOf(const ALLEGATI &filed, const CFattureElettronicheDB &content)
{
    const auto &seller = content.Header().CedentePrestatore.DatiAnagrafici;
    FATTURE summary = BlankSummary(filed);
    summary.fat_documenti = static_cast<long>(content.Count());
    summary.fat_cedente = fatturapa::NameOf(seller.Anagrafica);
    summary.fat_piva = fatturapa::VatNumber(seller.IdFiscaleIVA);
    summary.fat_codfis = NormalisedFiscalCode(seller.CodiceFiscale);
    summary.fat_firmata = content.Envelope().is_signed ? 1 : 0;
    std::vector<FATTURE> summaries;
    for (const fatturapa::FatturaElettronicaBody &body : content.Documents()) {
        const auto &document = body.DatiGenerali.DatiGeneraliDocumento;
        summary.fat_documento = static_cast<long>(summaries.size()) + 1;
        summary.fat_tipo = document.TipoDocumento;
        summary.fat_numero = document.Numero;
        summary.fat_data = document.Data;
        summary.fat_totale = fatturapa::TotaleDocumento(body);
        summaries.push_back(summary);
    }
    return summaries;
}

std::vector<FATTURE> SummariesOf(const ALLEGATI &filed)
{
    try {
        CFattureElettronicheDB content;
        content.Load(std::string(AsText(filed.all_data)), filed.all_fname.str());
        return SummariesOf(filed, content);
    } catch (const InvoiceFileError &error) {
        FATTURE summary = BlankSummary(filed);
        summary.fat_guasto = error.what();
        return {summary};
    }
}

void StoreInvoice(SACommand *cmd, ALLEGATI *filed, const CFattureElettronicheDB *content)
{
    CommandScope scope(cmd);
    SATransaction transaction(scope.get());
    sqlall.Store(scope.get(), filed);
    for (FATTURE &summary : content != nullptr ? SummariesOf(*filed, *content) : SummariesOf(*filed))
        sqlfat.SqlTransaction(scope.get(), kInsert, &summary);
    transaction.Commit();
}

bool StoreOnce(SACommand *cmd, ALLEGATI *document, const CFattureElettronicheDB *content)
{
    CommandScope scope(cmd);
    try {
        if (document->all_tab_tipo == kReceivedInvoices)
            StoreInvoice(scope.get(), document, content);
        else
            sqlall.Store(scope.get(), document);
        return true;
    } catch (const SAException &error) {
        ALLEGATI there;
        if (error.Fault() != SAFault::UniqueViolation ||
            !sqlall.SearchByContent(scope.get(), document->all_tab_tipo, document->all_impronta, &there))
            throw;
        *document = there;
        return false;
    }
}

long SummariseOlderInvoices(SACommand *cmd, long most)
{
    CommandScope scope(cmd);
    const long missing = sqlfat.CountOfMissing(scope.get());
    if (missing <= 0) return 0;
    std::optional<CTarvoProgressDlg> progress;
    if (most == 0 && missing >= kWorthAProgress) {
        progress.emplace();
        progress->SetStatus("Lettura delle fatture archiviate in corso...");
        progress->SetRange(0, missing);
    }
    const long wanted = most == 0 ? missing : std::min(most, missing);
    long done = 0;
    while (done < wanted) {
        const long read = SummariseNext(scope.get(), std::min(kFilesTogether, wanted - done));
        if (read == 0) break; // another station was faster
        done += read;
        if (progress) progress->SetPos(done);
    }
    return sqlfat.CountOfMissing(scope.get());
}

#include "einvoice/InvoiceInbox.h"

#include "einvoice/InvoiceSources.h"
#include "einvoice/InvoiceSummary.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Counterparts.h"
#include "tarvolumera/FiscalCodes.h"
#include "tarvolumera/SaExceptionDisplay.h"
#include "tarvolumera/fatturapa/SdiNotification.h"

#include <fmt/format.h>
#include <fmt/printf.h>

namespace {

std::string Upper(std::string_view text)
{
    return ToUpper(Trimmed(text));
}

/// The buyer is the company when either of his two numbers is: files carry one, the other or both.
bool IsForCompany(const fatturapa::PartyType &buyer, const DITTE &company)
{
    const std::string vat = Upper(fatturapa::VatNumber(buyer.DatiAnagrafici.IdFiscaleIVA));
    const std::string fiscal = NormalisedFiscalCode(buyer.DatiAnagrafici.CodiceFiscale);
    const bool vat_differs = !vat.empty() && vat != Upper(company.dit_piva);
    const bool fiscal_differs =
        !fiscal.empty() && fiscal != Upper(company.dit_codfis) && fiscal != Upper(company.dit_piva);
    return !vat_differs && !fiscal_differs && !(vat.empty() && fiscal.empty());
}

std::string Summary(const CFattureElettronicheDB &content)
{
    std::string text = fatturapa::NameOf(content.Header().CedentePrestatore.DatiAnagrafici.Anagrafica);
    for (const fatturapa::FatturaElettronicaBody &body : content.Documents()) {
        const auto &document = body.DatiGenerali.DatiGeneraliDocumento;
        text += fmt::format(", {} n. {} del {}", document.TipoDocumento, document.Numero, FormatDate(document.Data));
    }
    return text;
}

ALLEGATI FiledInvoice(const CFattureElettronicheDB &content, const std::string &name, const std::string &bytes)
{
    const auto &document = content.Documents().front().DatiGenerali.DatiGeneraliDocumento;
    ALLEGATI filed;
    filed.all_tab_tipo = kReceivedInvoices;
    filed.all_anno = Year(document.Data);
    filed.all_desc = Summary(content);
    filed.all_fname = name;
    filed.all_num_fat = document.Numero;
    filed.all_data_fat = document.Data;
    filed.all_data = ToBytes(bytes);
    return filed;
}

long CountRows(SACommand *cmd, const char *text, long supplier, const char *number_param, std::string_view number,
               const char *day_param, long day, long vat_register)
{
    SACommand query(cmd->Connection(), text);
    query.Param("codfor").setAsLong(supplier);
    query.Param(number_param).setAsString(number);
    query.Param(day_param).setAsDateTime(ToSqlDate(day));
    if (vat_register != 0) query.Param("reg").setAsLong(vat_register);
    query.Execute();
    query.FetchNext();
    return query.Field("numrec").asLong();
}

/// An error of the archive itself, which the next file would only meet again.
bool EndsTheRun(const SAException &error)
{
    switch (error.Fault()) {
    case SAFault::ConnectionLost:
    case SAFault::CannotOpen:
    case SAFault::DiskFull:
    case SAFault::ReadOnly:
    case SAFault::Corrupt:
    case SAFault::Busy:
        return true;
    default:
        return false;
    }
}

ImportResult NotReadable(std::string origin, std::string why)
{
    ImportResult result;
    result.origin = std::move(origin);
    result.text = std::move(why);
    return result;
}

} // namespace

const char *ImportOutcomeText(ImportOutcome outcome)
{
    switch (outcome) {
    case ImportOutcome::Loaded:
        return "caricata";
    case ImportOutcome::AlreadyThere:
        return "già presente";
    case ImportOutcome::Ignored:
        return "ignorata";
    case ImportOutcome::Refused:
        break;
    }
    return "rifiutata";
}

std::string CompanyFaultForInvoices(const DITTE &company)
{
    if (Trimmed(company.dit_codfis).empty()) return "Impostare codice fiscale sulla ditta!";
    if (Trimmed(company.dit_piva).empty()) return "Partita iva non impostata sulla ditta!";
    const std::size_t letters = Trimmed(company.dit_naz).size();
    if (letters == 0) return "Identificativo Nazione (ISO alpha-2) non impostato su ditta!";
    if (letters != 2) return "Il codice nazione impostato sulla ditta deve essere di due caratteri!";
    return {};
}

ImportResult ImportInvoice(SACommand *cmd, const std::string &origin, const std::string &name, std::string bytes)
{
    ImportResult result;
    result.origin = origin;
    try {
        ExtractedXml extracted = ExtractInvoiceXml(bytes, name);
        if (const auto notification = ReadSdiNotification(extracted.xml, name)) {
            result.outcome = ImportOutcome::Ignored;
            result.text = "notifica, non è una fattura: " + notification->text;
            return result;
        }
        const std::string digest = ContentDigest(extracted.xml);
        CFattureElettronicheDB content;
        content.Load(std::move(extracted), name);
        for (const InvoiceWarning &warning : content.Warnings()) result.warnings.push_back(warning.text);

        ALLEGATI there;
        if (sqlall.SearchByContent(cmd, kReceivedInvoices, digest, &there)) {
            result.outcome = ImportOutcome::AlreadyThere;
            result.code = there.all_codice;
            result.text = Summary(content);
            return result;
        }
        if (!IsForCompany(content.Header().CessionarioCommittente, lumera_db_impo) &&
            AfxMessageBox(
                fmt::sprintf("Partita Iva/Codice fiscale non corrispondenti per il file :\n\n%s\n\nVuoi Continuare ?",
                             origin),
                MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES) {
            const auto &buyer = content.Header().CessionarioCommittente.DatiAnagrafici;
            result.text = fmt::format("intestata ad altra ditta: {} (P.IVA {})", fatturapa::NameOf(buyer.Anagrafica),
                                      fatturapa::VatNumber(buyer.IdFiscaleIVA));
            return result;
        }
        ALLEGATI filed = FiledInvoice(content, name, bytes);
        filed.all_impronta = digest;
        if (!StoreOnce(cmd, &filed, &content)) {
            result.outcome = ImportOutcome::AlreadyThere;
            result.code = filed.all_codice;
            result.text = Summary(content);
            return result;
        }
        result.outcome = ImportOutcome::Loaded;
        result.code = filed.all_codice;
        result.text = Summary(content); // what is filed may be cut
    } catch (const InvoiceFileError &error) {
        result.text = error.Detail().empty() ? error.what() : error.Detail();
        result.message = error.what();
    } catch (const SAException &error) {
        if (EndsTheRun(error)) throw;
        result.text = DescribeError(error); // the next file may be better
        result.may_pass = true;
    }
    return result;
}

std::vector<ImportResult> ImportInvoices(SACommand *cmd, const std::vector<std::filesystem::path> &paths,
                                         const std::function<void(const ImportResult &)> &each)
{
    CommandScope scope(cmd);
    CTarvoProgressDlg progress;
    progress.SetStatus("Importazione files in corso...");
    if (paths.size() > 1) progress.SetRange(0, static_cast<long>(paths.size()));
    std::vector<ImportResult> results;
    const auto add = [&](ImportResult result) {
        if (each) each(result);
        results.push_back(std::move(result));
    };
    long current = 0;
    for (const std::filesystem::path &path : paths) {
        ++current;
        const std::string status =
            fmt::sprintf("Importazione file %ld di %ld in corso...", current, static_cast<long>(paths.size()));
        progress.SetStatus(status);
        try {
            ForEachOfferedFile(path, [&](const OfferedFile &file) {
                if (file.origin != path.string()) progress.SetStatus(status + "\n" + file.name); // of an archive
                if (!file.fault.empty())
                    add(NotReadable(file.origin, file.fault));
                else
                    add(ImportInvoice(scope.get(), file.origin, file.name, file.bytes));
                return true;
            });
        } catch (const FileError &error) {
            add(NotReadable(path.string(), error.what()));
        }
        progress.SetPos(current);
    }
    return results;
}

bool CheckPNota(SACommand *cmd, InvoiceRow *row)
{
    CommandScope scope(cmd);
    SACommand query(
        scope->Connection(),
        "SELECT pno_codice, pno_prot FROM admin.pnota1 WHERE (pno_all = :codice AND pno_all_doc = :documento)"
        " OR (pno_reg IN (2, 6) AND pno_cli_for = :codfor AND pno_cli_for <> 0 AND pno_doc = :numdoc"
        " AND pno_data_doc = :data AND NOT EXISTS (SELECT 1 FROM admin.fatture WHERE fat_codice = pno_all"
        " AND fat_documento = pno_all_doc AND fat_tipo <> :doctype)) ORDER BY pno_codice DESC");
    query.Param("codice").setAsLong(row->code);
    query.Param("documento").setAsLong(static_cast<long>(row->document + 1));
    query.Param("codfor").setAsLong(row->supplier);
    query.Param("numdoc").setAsString(Text<20>(Trimmed(row->number)));
    query.Param("data").setAsDateTime(ToSqlDate(row->day));
    query.Param("doctype").setAsString(row->type);
    query.Execute();
    row->is_registered = query.FetchNext();
    row->entry = row->is_registered ? query.Field("pno_codice").asLong() : 0;
    row->protocol = row->is_registered ? query.Field("pno_prot").asLong() : 0;
    return row->is_registered;
}

bool CheckTestate(SACommand *cmd, long supplier, std::string_view number, long day)
{
    if (supplier == 0) return false;
    CommandScope scope(cmd);
    return CountRows(
               scope.get(),
               "SELECT COUNT(*) AS numrec FROM admin.testate1 WHERE tes_cod_for = :codfor AND tes_n_fat = :n_doc AND "
               "tes_d_fat = :d_doc",
               supplier, "n_doc", Text<20>(Trimmed(number)), "d_doc", day, 0) > 0; // as the warehouse keeps it
}

bool FindSupplierOfRow(SACommand *cmd, std::string_view vat_number, std::string_view fiscal_code, FORNITORI *supplier)
{
    *supplier = FORNITORI{};
    if (vat_number.empty() && fiscal_code.empty()) return false;
    CommandScope scope(cmd);
    SACommand query(
        scope->Connection(),
        "SELECT * FROM admin.fornito1 WHERE for_piva = :piva OR for_codfis = :codfis ORDER BY for_codice DESC");
    // An empty number must not meet the suppliers that have none: NULL equals nothing.
    if (!vat_number.empty()) query.Param("piva").setAsString(vat_number);
    if (!fiscal_code.empty()) query.Param("codfis").setAsString(fiscal_code);
    query.Execute();
    if (!query.FetchNext()) return false;
    sqlfor.ReadFields(&query, supplier);
    return true;
}

InvoiceRow DescribeInvoice(SACommand *cmd, const ALLEGATI &filed, const CFattureElettronicheDB &content,
                           std::size_t document)
{
    const auto &seller = content.Header().CedentePrestatore.DatiAnagrafici;
    const fatturapa::FatturaElettronicaBody &body = content.Documents().at(document);
    const auto &general = body.DatiGenerali.DatiGeneraliDocumento;
    InvoiceRow row;
    row.code = filed.all_codice;
    row.year = filed.all_anno;
    row.document = document;
    row.documents = content.Count();
    row.file_name = filed.all_fname;
    row.acquired = filed.all_date_time;
    row.is_signed = content.Envelope().is_signed;
    row.seller_name = fatturapa::NameOf(seller.Anagrafica);
    row.vat_number = fatturapa::VatNumber(seller.IdFiscaleIVA);
    row.fiscal_code = NormalisedFiscalCode(seller.CodiceFiscale);
    FORNITORI supplier;
    const bool known = FindSupplierOfRow(cmd, row.vat_number, row.fiscal_code, &supplier);
    row.supplier = supplier.for_codice;
    row.supplier_name = known ? supplier.for_desc.str() : kUnknownSupplier;
    row.type = general.TipoDocumento;
    row.type_text = fatturapa::TipoDocumentoText(general.TipoDocumento);
    row.number = general.Numero;
    row.day = general.Data;
    row.total = fatturapa::TotaleDocumento(body);
    CheckPNota(cmd, &row);
    row.is_in_warehouse = CheckTestate(cmd, row.supplier, row.number, row.day);
    return row;
}

namespace {

ALLEGATI FiledDocument(SACommand *cmd, long code)
{
    ALLEGATI filed;
    if (!sqlall.SearchByCode(cmd, code, &filed) || filed.all_tab_tipo != kReceivedInvoices)
        throw SAException(SA_UserGenerated_Error, kNoSuchInvoice,
                          fmt::format("La fattura elettronica n. {} non esiste.", code));
    return filed;
}

} // namespace

bool IsFiled(SACommand *cmd, long code)
{
    CommandScope scope(cmd);
    SACommand query(scope->Connection(), "SELECT COUNT(*) AS numrec FROM admin.allegati WHERE all_codice = :codice"
                                         " AND all_tab_tipo = :tipo");
    query.Param("codice").setAsLong(code);
    query.Param("tipo").setAsLong(kReceivedInvoices);
    query.Execute();
    query.FetchNext();
    return query.Field("numrec").asLong() > 0;
}

ALLEGATI LoadInvoice(SACommand *cmd, long code, CFattureElettronicheDB *content)
{
    ALLEGATI filed = FiledDocument(cmd, code);
    content->Load(std::string(AsText(filed.all_data)), filed.all_fname.str());
    return filed;
}

void ExportInvoiceXml(SACommand *cmd, long code, const std::filesystem::path &file)
{
    const ALLEGATI filed = FiledDocument(cmd, code);
    WriteFileWhole(file, ExtractInvoiceXml(std::string(AsText(filed.all_data)), filed.all_fname.str()).xml);
}

void ExportInvoiceP7m(SACommand *cmd, long code, const std::filesystem::path &file)
{
    const ALLEGATI filed = FiledDocument(cmd, code);
    if (!ToUpper(filed.all_fname.str()).ends_with(".P7M"))
        throw FileError("Impossibile esportare il file!\n\nFormato file non corretto.");
    WriteFileWhole(file, AsText(filed.all_data));
}

void DeleteInvoice(SACommand *cmd, long code)
{
    CommandScope scope(cmd);
    ALLEGATI filed = FiledDocument(scope.get(), code);
    SATransaction transaction(scope.get());
    sqlall.SqlTransaction(scope.get(), kDelete, &filed);
    SACommand rendered(
        scope->Connection(),
        "DELETE FROM admin.allegati WHERE all_tab_tipo IN (:tipo1, :tipo2) AND all_tab_codice = :codice");
    rendered.Param("tipo1").setAsLong(kInvoicePdf);
    rendered.Param("tipo2").setAsLong(kRenderedPdf);
    rendered.Param("codice").setAsLong(code);
    rendered.Execute();
    transaction.Commit();
}

std::filesystem::path GetLocalPathFattureElettroniche()
{
    return lumera_db_folder / ("Fatture_Elettroniche_" + lumera_db_impo.dit_piva.str());
}

#include "einvoice/InvoiceDocuments.h"

#include "einvoice/InvoiceInbox.h"
#include "einvoice/InvoicePdf.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Protocols.h"

#include <fmt/format.h>
#include <set>

namespace {

constexpr std::size_t kNameMax = 200; // of a filed document

ALLEGATI FiledInvoice(SACommand *cmd, long code)
{
    ALLEGATI filed;
    if (!sqlall.SearchByCode(cmd, code, &filed) || filed.all_tab_tipo != kReceivedInvoices)
        throw SAException(SA_UserGenerated_Error, kNoSuchInvoice,
                          fmt::format("La fattura elettronica n. {} non esiste.", code));
    return filed;
}

std::string WithoutEnding(std::string_view name, std::string_view ending)
{
    return std::string(ToUpper(name).ends_with(ending) ? name.substr(0, name.size() - ending.size()) : name);
}

ALLEGATI RenderedPdf(const ALLEGATI &filed)
{
    ALLEGATI pdf;
    try {
        CFattureElettronicheDB content;
        content.Load(std::string(AsText(filed.all_data)), filed.all_fname.str());
        pdf.all_data = ToBytes(RenderInvoicePdf(content));
    } catch (const InvoiceFileError &) {
        throw FileError("File in PDF del documento non trovato in archivio!");
    }
    pdf.all_anno = filed.all_anno;
    pdf.all_tab_tipo = kRenderedPdf;
    pdf.all_tab_codice = filed.all_codice;
    pdf.all_desc = filed.all_desc;
    pdf.all_fname = InvoicePdfNames(filed.all_fname).front().front();
    pdf.all_num_fat = filed.all_num_fat;
    pdf.all_data_fat = filed.all_data_fat;
    return pdf;
}

std::set<long> YearsOf(const ALLEGATI &filed)
{
    return {filed.all_anno, lumera_db_impo.dit_anno};
}

void BindNames(SACommand &command, long year, const std::array<std::string, 2> &names)
{
    command.Param("anno").setAsLong(year);
    command.Param("name1").setAsString(names[0]);
    command.Param("name2").setAsString(names[1]);
}

/// A received invoice may be filed under any name, also under one that ends like a readable document's.
bool IsNameOfInvoice(SACommand *cmd, long year, const std::array<std::string, 2> &names)
{
    SACommand query(cmd->Connection(), "SELECT COUNT(*) AS numrec FROM admin.allegati WHERE all_tab_tipo = :tipo"
                                       " AND all_anno = :anno AND (all_fname = :name1 OR all_fname = :name2)");
    query.Param("tipo").setAsLong(kReceivedInvoices);
    BindNames(query, year, names);
    query.Execute();
    query.FetchNext();
    return query.Field("numrec").asLong() > 0;
}

/// The name of the file that the XML of an invoice gets.
std::string XmlName(const std::string &stored_name)
{
    const std::string name = WithoutEnding(stored_name, ".P7M");
    return ToUpper(name).ends_with(".XML") ? name : name + ".xml";
}

bool HoldsTheSame(const std::filesystem::path &file, std::string_view bytes)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error) || std::filesystem::file_size(file, error) != bytes.size())
        return false;
    return ReadWholeFile(file, bytes.size()) == bytes;
}

void WriteBeside(const std::filesystem::path &folder, const std::string &name, std::string_view bytes)
{
    const std::filesystem::path safe = SafeFileName(name);
    // "x.xml.p7m" has one ending for people, two for the library.
    const std::size_t point = std::min(safe.string().find('.'), safe.string().size());
    const std::string stem = safe.string().substr(0, point), ending = safe.string().substr(point);
    std::filesystem::path file = folder / safe;
    std::error_code error;
    for (long number = 2; std::filesystem::exists(file, error); ++number) {
        if (HoldsTheSame(file, bytes)) return;
        file = folder / fmt::format("{} ({}){}", stem, number, ending);
    }
    WriteFileWhole(file, bytes);
}

void ExportFile(const ALLEGATI &filed, bool keep_signed, const std::filesystem::path &folder)
{
    const std::string name = filed.all_fname.str();
    if (keep_signed)
        WriteBeside(folder, name, AsText(filed.all_data));
    else
        WriteBeside(folder, XmlName(name), ExtractInvoiceXml(std::string(AsText(filed.all_data)), name).xml);
}

} // namespace

std::vector<std::array<std::string, 2>> InvoicePdfNames(std::string_view file_name)
{
    constexpr std::size_t kEndingMax = 16; // the longest ending below; what is cut off must not be the ending
    const std::string name(Utf8Prefix(file_name, kNameMax - kEndingMax));
    const std::string unsigned_name = WithoutEnding(name, ".P7M");
    const std::string stem = WithoutEnding(unsigned_name, ".XML");
    return {{stem + ".XML.PDF", stem + ".PDF"},
            {unsigned_name + ".PDF", name + ".PDF"},
            {unsigned_name + ".pdf", stem + ".pdf"}};
}

bool IsInvoicePdf(const ALLEGATI &candidate, const ALLEGATI &filed)
{
    return candidate.all_tab_tipo != kReceivedInvoices && !candidate.all_data.empty() &&
           (candidate.all_tab_codice == 0 || candidate.all_tab_codice == filed.all_codice);
}

bool FindInvoicePdf(SACommand *cmd, const ALLEGATI &filed, ALLEGATI *pdf)
{
    CommandScope scope(cmd);
    for (const std::array<std::string, 2> &names : InvoicePdfNames(filed.all_fname)) {
        SACommand query(scope->Connection(),
                        "SELECT * FROM admin.allegati WHERE all_anno IN (:anno, :anno_cur) AND (all_fname = :name1 OR "
                        "all_fname = :name2) ORDER BY all_anno DESC");
        BindNames(query, filed.all_anno, names);
        query.Param("anno_cur").setAsLong(lumera_db_impo.dit_anno);
        query.Execute();
        while (query.FetchNext()) {
            *pdf = ALLEGATI{};
            sqlall.ReadFields(&query, pdf);
            if (IsInvoicePdf(*pdf, filed)) return true;
        }
    }
    *pdf = ALLEGATI{};
    return false;
}

ALLEGATI StoredInvoicePdf(SACommand *cmd, long code)
{
    CommandScope scope(cmd);
    const ALLEGATI filed = FiledInvoice(scope.get(), code);
    ALLEGATI pdf;
    if (FindInvoicePdf(scope.get(), filed, &pdf)) return pdf;
    ALLEGATI rendered = RenderedPdf(filed);
    SATransaction transaction(scope.get());
    LockNumbers(scope.get(), NumberSeries::Files);
    // Another station may have done the same meanwhile.
    if (!FindInvoicePdf(scope.get(), filed, &pdf)) {
        sqlall.Store(scope.get(), &rendered);
        pdf = std::move(rendered);
    }
    transaction.Commit();
    return pdf;
}

void ExportInvoicePdf(SACommand *cmd, long code, const std::filesystem::path &file, std::optional<std::size_t> document)
{
    CommandScope scope(cmd);
    if (document) {
        const ALLEGATI filed = FiledInvoice(scope.get(), code);
        CFattureElettronicheDB content;
        content.Load(std::string(AsText(filed.all_data)), filed.all_fname.str());
        if (*document >= content.Count())
            throw FileError(fmt::format("Il file n. {} contiene {} documenti.", code, content.Count()));
        if (content.Count() > 1) {
            WriteInvoicePdf(content, document, file);
            return;
        }
    }
    WriteFileWhole(file, AsText(StoredInvoicePdf(scope.get(), code).all_data));
}

std::optional<long> DeleteInvoicePdf(SACommand *cmd, long code)
{
    CommandScope scope(cmd);
    const ALLEGATI filed = FiledInvoice(scope.get(), code);
    if (AfxMessageBox("Vuoi veramente eliminare il PDF acquisito?", MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) !=
        IDYES)
        return {};
    long deleted = 0;
    SATransaction transaction(scope.get());
    for (const long year : YearsOf(filed)) {
        for (const std::array<std::string, 2> &names : InvoicePdfNames(filed.all_fname)) {
            if (IsNameOfInvoice(scope.get(), year, names)) continue;
            SACommand query(
                scope->Connection(),
                "DELETE FROM admin.allegati WHERE all_anno = :anno AND (all_fname = :name1 OR all_fname = :name2)"
                " AND all_tab_codice IN (0, :codice)"); // the others are other invoices'
            BindNames(query, year, names);
            query.Param("codice").setAsLong(code);
            query.Execute();
            deleted += query.RowsAffected();
        }
    }
    transaction.Commit();
    return deleted;
}

std::vector<long> FiledInvoices(SACommand *cmd, long first, long last)
{
    std::vector<long> codes;
    sqlall.ForEachOfKind(cmd, kReceivedInvoices, ToSqlDate(first), last == 0 ? SADateTime{} : ToSqlDate(last + 1),
                         [&](const ALLEGATI &filed) {
                             codes.push_back(filed.all_codice);
                             return true;
                         });
    return codes;
}

FilesExported ExportFiles(SACommand *cmd, const FilesExport &what, const std::filesystem::path &folder)
{
    CommandScope scope(cmd);
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!std::filesystem::is_directory(folder, error))
        throw FileError(fmt::format("Impossibile creare la cartella {}.", folder.string()));
    CTarvoProgressDlg progress;
    progress.SetStatus("Esportazione file in corso...");
    progress.SetRange(0, static_cast<long>(what.codes.size()));
    FilesExported exported;
    std::set<long> done;
    for (const long code : what.codes) {
        progress.StepIt();
        if (!done.insert(code).second) continue;
        try {
            ExportFile(FiledInvoice(scope.get(), code), what.keep_signed, folder);
            ++exported.written;
        } catch (const InvoiceFileError &damaged) {
            exported.faults.emplace_back(damaged.what());
        } catch (const SAException &failed) {
            if (failed.ErrNativeCode() != kNoSuchInvoice) throw;
            exported.faults.push_back(failed.ErrText()); // another station deleted it; the others are still there
        }
    }
    return exported;
}

std::optional<FilesExported> ExportAllFiles(SACommand *cmd, const FilesExport &what)
{
    constexpr std::size_t kShownMax = 10;
    const std::optional<std::filesystem::path> folder =
        CurrentUserInterface().PickFolder("Cartella di Esportazione Fatture Passive");
    if (!folder) return {};
    FilesExported exported = ExportFiles(cmd, what, *folder);
    std::string text;
    for (std::size_t i = 0; i < std::min(exported.faults.size(), kShownMax); ++i)
        text += (i == 0 ? "" : "\n\n") + exported.faults[i];
    if (exported.faults.size() > kShownMax)
        text += fmt::format("\n\nAltri {} file non esportati.", exported.faults.size() - kShownMax);
    if (!text.empty()) AfxMessageBox(text, MB_OK | MB_ICONEXCLAMATION);
    return exported;
}

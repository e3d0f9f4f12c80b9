#include "einvoice/InvoiceSync.h"

#include "einvoice/InvoiceDocuments.h"
#include "einvoice/InvoiceInbox.h"
#include "einvoice/InvoiceSources.h"
#include "einvoice/InvoiceSummary.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Sincro.h"
#include "tarvolumera/fatturapa/SdiNotification.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/printf.h>

namespace {

bool HasEnding(std::string_view name, std::string_view ending)
{
    return ToUpper(name).ends_with(ending);
}

std::string WithoutEnding(std::string_view name, std::string_view ending)
{
    return std::string(HasEnding(name, ending) ? name.substr(0, name.size() - ending.size()) : name);
}

/// The names that an invoice called so may be filed under: signed or not, each of the usual spellings.
std::vector<std::string> InvoiceNames(std::string_view name)
{
    const std::string stem = WithoutEnding(WithoutEnding(name, ".P7M"), ".XML");
    std::vector<std::string> names;
    for (const char *xml : {".xml", ".XML", ""})
        for (const char *p7m : {"", ".p7m", ".P7M"}) names.push_back(stem + xml + p7m);
    return names;
}

/// The newest filed invoice of that name, without its bytes.
bool FindInvoice(SACommand *cmd, std::string_view name, ALLEGATI *filed)
{
    for (const std::string &candidate : InvoiceNames(name)) {
        SACommand query(cmd->Connection(), "SELECT all_codice FROM admin.allegati WHERE all_fname = :nome"
                                           " AND all_tab_tipo = :tipo ORDER BY all_codice DESC");
        query.Param("nome").setAsString(candidate);
        query.Param("tipo").setAsLong(kReceivedInvoices);
        query.Execute();
        if (!query.FetchNext()) continue;
        const long code = query.Field("all_codice").asLong();
        query.Close();
        return sqlall.SearchByCode(cmd, code, filed);
    }
    return false;
}

/// Files a notification or a readable document. @return false when it was there already; its number is set
bool FileNew(SACommand *cmd, ALLEGATI *document)
{
    document->all_impronta = ContentDigest(AsText(document->all_data));
    ALLEGATI there;
    if (!sqlall.SearchByContent(cmd, document->all_tab_tipo, document->all_impronta, &there))
        return StoreOnce(cmd, document);
    document->all_codice = there.all_codice;
    return false;
}

/// Notes the identifier of the exchange system on the invoice that the metadata are about.
/// @return false when it is not filed yet
bool NoteIdentifier(SACommand *cmd, const SdiNotification &metadata)
{
    ALLEGATI filed;
    if (metadata.sdi.empty() || !FindInvoice(cmd, SafeFileName(metadata.file_name), &filed)) return false;
    SACommand update(cmd->Connection(), "UPDATE admin.fatture SET fat_sdi = :sdi WHERE fat_codice = :codice");
    update.Param("sdi").setAsString(Text<36>(metadata.sdi));
    update.Param("codice").setAsLong(filed.all_codice);
    update.Execute();
    return true;
}

/// The metadata of an invoice may have come first, under the names that the exchange system gives them.
void NoteStoredIdentifier(SACommand *cmd, const std::string &invoice_name)
{
    const std::string stem = WithoutEnding(WithoutEnding(invoice_name, ".P7M"), ".XML");
    for (int counter = 1; counter <= 3; ++counter) {
        for (const char *ending : {".xml", ".XML"}) {
            ALLEGATI document;
            const auto bind = [&](SACommand &query) {
                query.Param("nome").setAsString(fmt::format("{}_MT_{:03}{}", stem, counter, ending));
                query.Param("tipo").setAsLong(kSdiNotification);
            };
            if (!sqlall.First(cmd, " WHERE all_fname = :nome AND all_tab_tipo = :tipo ORDER BY all_codice DESC", bind,
                              &document))
                continue;
            const auto metadata = ReadSdiNotification(std::string(AsText(document.all_data)), document.all_fname.str());
            if (metadata && NoteIdentifier(cmd, *metadata)) return;
        }
    }
}

/// One run over a provider's new files.
class Synchronisation {
  public:
    Synchronisation(SACommand *cmd, InvoiceProvider &provider, const std::function<void(const SyncLine &)> &progress)
        : cmd_(cmd), provider_(provider), progress_(progress)
    {
    }

    SyncResult Run()
    {
        std::vector<ProvidedFile> files = provider_.ListNew([this](std::string_view name, std::string_view version) {
            SINCRO there;
            return sqlsyn.SearchVersion(cmd_, name, version, &there);
        });
        // Readable documents last: they are filed beside their invoices.
        std::ranges::stable_partition(files, [](const ProvidedFile &file) { return !HasEnding(file.name, ".PDF"); });
        CTarvoProgressDlg window;
        window.SetRange(0, static_cast<long>(files.size()));
        long current = 0;
        for (const ProvidedFile &file : files) {
            window.SetStatus(fmt::sprintf("Sincronizzazione file %ld di %ld in corso...", ++current,
                                          static_cast<long>(files.size())));
            window.SetPos(current);
            Look(file);
        }
        for (const SdiNotification &metadata : metadata_) NoteIdentifier(cmd_, metadata);
        return std::move(result_);
    }

  private:
    void Add(SyncLine line)
    {
        ++result_.counts.at(static_cast<std::size_t>(line.outcome));
        if (progress_) progress_(line);
        result_.lines.push_back(std::move(line));
    }

    void Remember(const ProvidedFile &file, const std::string &digest, SyncOutcome outcome, const std::string &text)
    {
        SINCRO record;
        record.syn_nome = file.name;
        record.syn_impronta = digest;
        record.syn_versione = file.version;
        record.syn_esito = static_cast<long>(outcome);
        record.syn_testo = OnOneLine(text);
        sqlsyn.Store(cmd_, &record);
    }

    void Look(const ProvidedFile &file)
    {
        if (!file.is_ready) return Add({file.name, SyncOutcome::Waiting, 0, "in corso di scrittura", {}});
        if (!file.fault.empty()) {
            if (!file.version.empty())
                Remember(file, ContentDigest(file.version + file.fault), SyncOutcome::Refused, file.fault);
            return Add({file.name, SyncOutcome::Refused, 0, file.fault, {}});
        }
        std::string bytes;
        try {
            bytes = provider_.Read(file);
        } catch (const FileError &error) { // busy, or gone: the next time tells
            return Add({file.name, SyncOutcome::Refused, 0, error.what(), {}});
        }
        if (!provider_.IsUnchanged(file))
            return Add({file.name, SyncOutcome::Waiting, 0, "modificato durante la lettura", {}});
        const std::string digest = ContentDigest(bytes);
        SINCRO there;
        const bool is_known = sqlsyn.SearchContent(cmd_, file.name, digest, &there);
        const bool was_refused = there.syn_esito == static_cast<long>(SyncOutcome::Refused);
        const bool is_copied_again = file.version != there.syn_versione.str();
        if (is_known && !(was_refused && is_copied_again)) { // nothing new in it
            there.syn_versione = file.version;
            return sqlsyn.Store(cmd_, &there);
        }
        TakeUp(file, digest, std::move(bytes));
    }

    void TakeUp(const ProvidedFile &file, const std::string &digest, std::string bytes)
    {
        if (HasEnding(file.name, ".ZIP")) return TakeUpArchive(file, digest, bytes);
        const bool is_pdf = HasEnding(file.name, ".PDF");
        if (HasEnding(file.name, ".XML") && !file.is_settled && !IsXmlComplete(bytes))
            return Add({file.name, SyncOutcome::Waiting, 0, "il file non è ancora completo", {}});
        SyncLine line = is_pdf ? FilePdf(file.name, bytes) : FileInvoice(file.name, SafeFileName(file.name), bytes);
        if (line.outcome != SyncOutcome::Waiting) {
            Remember(file, digest, line.outcome, line.text);
            if (line.outcome != SyncOutcome::Refused) provider_.Acknowledge(file);
        }
        Add(std::move(line));
    }

    void TakeUpArchive(const ProvidedFile &file, const std::string &digest, const std::string &bytes)
    {
        long count = 0;
        bool waits = false;
        std::string fault;
        ForEachArchivedFile(bytes, file.name, [&](const OfferedFile &member) {
            SyncLine line{member.origin, SyncOutcome::Refused, 0, member.fault, {}};
            if (member.fault.empty()) line = FileInvoice(member.origin, member.name, member.bytes);
            if (line.outcome == SyncOutcome::Refused && fault.empty()) fault = line.text;
            waits = waits || line.outcome == SyncOutcome::Waiting;
            ++count;
            Add(std::move(line));
            return true;
        });
        if (waits) return;
        if (count == 0) Add({file.name, SyncOutcome::Refused, 0, fault = "L'archivio non contiene fatture.", {}});
        Remember(file, digest, fault.empty() ? SyncOutcome::Loaded : SyncOutcome::Refused, fault);
        if (fault.empty()) provider_.Acknowledge(file);
    }

    SyncLine FileInvoice(const std::string &origin, const std::string &name, const std::string &bytes)
    {
        const ImportResult imported = ImportInvoice(cmd_, origin, name, bytes);
        SyncLine line{origin, SyncOutcome::Refused, imported.code, imported.text, imported.warnings};
        switch (imported.outcome) {
        case ImportOutcome::Loaded:
            line.outcome = SyncOutcome::Loaded;
            NoteStoredIdentifier(cmd_, name);
            break;
        case ImportOutcome::AlreadyThere:
            line.outcome = SyncOutcome::AlreadyThere;
            break;
        case ImportOutcome::Ignored:
            return FileNotification(origin, name, bytes);
        case ImportOutcome::Refused:
            if (imported.may_pass) line.outcome = SyncOutcome::Waiting;
            break;
        }
        return line;
    }

    SyncLine FileNotification(const std::string &origin, const std::string &name, const std::string &bytes)
    {
        const auto notification = ReadSdiNotification(ExtractInvoiceXml(bytes, name).xml, name);
        if (!notification) return {origin, SyncOutcome::Refused, 0, "Il file non è una fattura.", {}};
        ALLEGATI document;
        document.all_tab_tipo = kSdiNotification;
        document.all_anno = Year(CurrentUserInterface().Today());
        document.all_fname = name;
        std::string text = notification->text;
        if (!notification->file_name.empty()) text += " di " + notification->file_name;
        if (!notification->sdi.empty()) text += ", SdI " + notification->sdi;
        document.all_desc = text;
        document.all_data = ToBytes(bytes);
        const bool is_new = FileNew(cmd_, &document);
        if (notification->kind == "MT") metadata_.push_back(*notification); // its invoice may come later in this run
        return {origin, is_new ? SyncOutcome::Notification : SyncOutcome::AlreadyThere, document.all_codice, text, {}};
    }

    SyncLine FilePdf(const std::string &origin, const std::string &bytes)
    {
        SyncLine line{origin, SyncOutcome::Refused, 0, "Il file non è un documento PDF.", {}};
        if (!bytes.starts_with("%PDF")) return line;
        const std::string name = SafeFileName(origin), stem = WithoutEnding(name, ".PDF");
        ALLEGATI invoice, pdf;
        if (!FindInvoice(cmd_, stem, &invoice)) {
            line.outcome = SyncOutcome::Waiting;
            line.text = "in attesa della fattura con lo stesso nome";
            return line;
        }
        line.text = "documento leggibile della fattura n. " + std::to_string(invoice.all_codice);
        line.outcome = SyncOutcome::AlreadyThere;
        const bool is_there = FindInvoicePdf(cmd_, invoice, &pdf);
        if (is_there && pdf.all_tab_tipo != kRenderedPdf) {
            line.code = pdf.all_codice;
            return line;
        }
        SATransaction transaction(cmd_);
        if (is_there) sqlall.SqlTransaction(cmd_, kDelete, &pdf);
        pdf = ALLEGATI{};
        pdf.all_tab_tipo = kInvoicePdf;
        pdf.all_tab_codice = invoice.all_codice;
        pdf.all_anno = invoice.all_anno;
        pdf.all_desc = invoice.all_desc;
        // Filed under the spelling that is looked for, whatever case the provider writes.
        pdf.all_fname = InvoicePdfNames(invoice.all_fname).front().at(HasEnding(stem, ".XML") ? 0 : 1);
        pdf.all_num_fat = invoice.all_num_fat;
        pdf.all_data_fat = invoice.all_data_fat;
        pdf.all_data = ToBytes(bytes);
        if (FileNew(cmd_, &pdf)) line.outcome = SyncOutcome::Pdf;
        transaction.Commit();
        line.code = pdf.all_codice;
        return line;
    }

    SACommand *cmd_;
    InvoiceProvider &provider_;
    const std::function<void(const SyncLine &)> &progress_;
    SyncResult result_;
    std::vector<SdiNotification> metadata_;
};

} // namespace

const char *SyncOutcomeText(SyncOutcome outcome)
{
    switch (outcome) {
    case SyncOutcome::Loaded:
        return "caricata";
    case SyncOutcome::AlreadyThere:
        return "già presente";
    case SyncOutcome::Notification:
        return "notifica";
    case SyncOutcome::Pdf:
        return "PDF";
    case SyncOutcome::Waiting:
        return "rimandato";
    case SyncOutcome::Refused:
        break;
    }
    return "rifiutato";
}

SyncResult SynchroniseInvoices(SACommand *cmd, InvoiceProvider &provider,
                               const std::function<void(const SyncLine &)> &progress)
{
    CommandScope scope(cmd);
    return Synchronisation(scope.get(), provider, progress).Run();
}

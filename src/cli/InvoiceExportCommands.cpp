#include "cli/Commands.h"

#include "cli/PrintFile.h"
#include "einvoice/InvoiceDocuments.h"
#include "einvoice/InvoiceInbox.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/print/Interruption.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <fmt/format.h>

namespace {

struct ExportOptions {
    std::string id;
    std::string xml, p7m, pdf;
};

struct ExportAllOptions {
    std::string folder, from, to;
    bool keep_signed = false;
};

/// One file, or one document of it.
struct InvoiceId {
    long code = 0;
    std::optional<std::size_t> document; ///< from 0
};

/// "12" or "12.2". @throws UsageError
InvoiceId ParseInvoiceId(const std::string &text)
{
    InvoiceId id;
    std::size_t document = 0;
    const char *end = text.data() + text.size();
    auto [next, error] = std::from_chars(text.data(), end, id.code);
    const bool has_code = error == std::errc{} && id.code > 0;
    if (has_code && next == end) return id;
    if (has_code && *next == '.') {
        const auto [last, document_error] = std::from_chars(next + 1, end, document);
        if (document_error == std::errc{} && last == end && document > 0) {
            id.document = document - 1;
            return id;
        }
    }
    throw UsageError(fmt::format("«{}» non è l'identificativo di una fattura (vedere fatture elenco).", text));
}

int Export(Session *session, const ExportOptions &options)
{
    const int files = !options.xml.empty() + !options.p7m.empty() + !options.pdf.empty();
    if (files != 1) throw UsageError("Indicare un solo file, con --xml, --p7m o --pdf.");
    const InvoiceId id = ParseInvoiceId(options.id);
    if (id.document && options.pdf.empty())
        throw UsageError("Un solo documento di un file si esporta con --pdf; --xml e --p7m scrivono tutto il file.");
    session->OpenArchive();
    const InterruptionGuard guard;
    const std::string file = options.xml + options.p7m + options.pdf;
    if (!options.pdf.empty())
        ExportInvoicePdf(nullptr, id.code, file, id.document);
    else if (!options.p7m.empty())
        ExportInvoiceP7m(nullptr, id.code, file);
    else
        ExportInvoiceXml(nullptr, id.code, file);
    if (session->json)
        PrintJson(nlohmann::json{{"file", file}});
    else
        Print(fmt::format("Scritto: {}\n", file));
    return kExitDone;
}

int ExportAll(Session *session, const ExportAllOptions &options)
{
    const long first = ParseDateOption("--dal", options.from), last = ParseDateOption("--al", options.to);
    RequireOrder(first, last, "--dal viene dopo --al.");
    session->OpenArchive();
    const FilesExported exported =
        ExportFiles(nullptr, {FiledInvoices(nullptr, first, last), options.keep_signed}, options.folder);
    if (session->json) {
        PrintJson(nlohmann::json{
            {"cartella", options.folder}, {"scritti", exported.written}, {"rifiutati", exported.faults}});
    } else {
        for (const std::string &fault : exported.faults) Print(fmt::format("rifiutato    {}\n", OnOneLine(fault)));
        Print(fmt::format("{} file scritti in {}, {} rifiutati.\n", exported.written, options.folder,
                          exported.faults.size()));
    }
    return exported.faults.empty() ? kExitDone : kExitRefused;
}

int DeletePdf(Session *session, const std::string &text)
{
    const InvoiceId id = ParseInvoiceId(text);
    session->OpenArchive();
    const std::optional<long> deleted = DeleteInvoicePdf(nullptr, id.code);
    if (session->json)
        PrintJson(nlohmann::json{{"codice", id.code}, {"eliminati", deleted.value_or(0)}});
    else
        Print(deleted ? fmt::format("{} PDF eliminati.\n", *deleted) : "Niente eliminato.\n");
    return deleted ? kExitDone : kExitRefused;
}

} // namespace

void AddInvoiceExportCommands(CLI::App *app, Session *session, Action *action)
{
    CLI::App *group = app->get_subcommand("fatture");
    auto target = std::make_shared<ExportOptions>();
    CLI::App *exporting = group->add_subcommand("esporta", "Scrive una fattura su file");
    exporting->footer("Esempi:\n  lumera fatture esporta 12 --xml fattura.xml\n"
                      "  lumera fatture esporta 12.2 --pdf fattura.pdf");
    exporting->add_option("id", target->id, "Codice della fattura, o codice.documento per il PDF")->required();
    exporting->add_option("--xml", target->xml, "File XML, senza la firma");
    exporting->add_option("--p7m", target->p7m, "File firmato come ricevuto");
    exporting->add_option("--pdf", target->pdf, "Documento leggibile");
    exporting->callback([=] { *action = [=] { return Export(session, *target); }; });

    auto all = std::make_shared<ExportAllOptions>();
    CLI::App *everything = group->add_subcommand("esporta-tutte", "Scrive i file delle fatture in una cartella");
    everything->footer("Esempio:\n  lumera fatture esporta-tutte copie/ --dal 2026-01-01 --al 2026-03-31");
    everything->add_option("cartella", all->folder, "Cartella, creata se manca")->required();
    everything->add_flag("--p7m", all->keep_signed, "I file firmati come ricevuti, invece del solo XML");
    everything->add_option("--dal", all->from, "Acquisite dal giorno");
    everything->add_option("--al", all->to, "Acquisite fino al giorno");
    everything->callback([=] { *action = [=] { return ExportAll(session, *all); }; });

    auto id = std::make_shared<std::string>();
    CLI::App *deleting =
        group->add_subcommand("elimina-pdf", "Elimina il PDF memorizzato; l'esportazione ne crea uno nuovo");
    deleting->footer("Esempio:\n  lumera fatture elimina-pdf 12 --si");
    deleting->add_option("id", *id, "Codice della fattura")->required();
    deleting->callback([=] { *action = [=] { return DeletePdf(session, *id); }; });
}

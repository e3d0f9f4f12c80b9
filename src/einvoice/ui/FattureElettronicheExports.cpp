#include "einvoice/ui/FattureElettronicheList.h"

#include "einvoice/InvoiceDocuments.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/widgets/SpreadSheet.h"

#include <QMenu>
#include <QToolButton>
#include <fmt/format.h>

namespace {

std::string WithoutSignature(const std::string &name)
{
    constexpr std::string_view kSigned = ".P7M";
    return ToUpper(name).ends_with(kSigned) ? name.substr(0, name.size() - kSigned.size()) : name;
}

/// The readable document's; one of several in a file says which.
std::string PdfName(const InvoiceRow &invoice)
{
    const std::string stem = std::filesystem::path(WithoutSignature(invoice.file_name.str())).stem().string();
    return invoice.documents > 1 ? fmt::format("{}_{}.pdf", stem, invoice.document + 1) : stem + ".pdf";
}

/// Empty when the user gave up.
std::filesystem::path PickTarget(const char *title, const char *filter, const char *extension, const std::string &name)
{
    FilePicking picking;
    picking.title = title;
    picking.filter = filter;
    picking.default_extension = extension;
    picking.proposed = SafeFileName(name);
    picking.save = true;
    const std::vector<std::filesystem::path> picked = CurrentUserInterface().PickFiles(picking);
    return picked.empty() ? std::filesystem::path() : picked.front();
}

QString Written(const std::filesystem::path &file)
{
    return QStringLiteral("Scritto ") + ToQt(file.string());
}

} // namespace

void CFattureElettroniche::AddExportMenu(QAbstractButton *button)
{
    auto *menu = new QMenu(this);
    list_->exports = menu;
    list_->export_button = button;
    const auto add = [&](const char *text, std::function<void()> run) {
        connect(menu->addAction(QString::fromUtf8(text)), &QAction::triggered, this,
                [this, run = std::move(run)] { Guarded(LUMERA_TAG, run); });
    };
    add("&File Selezionato in formato XML", [this] { OnEsportaFileXml(); });
    add("&Tutti i Files Selezionati in formato XML", [this] { ExportMany(true, false); });
    add("&Tutti i Files in formato XML", [this] { ExportMany(false, false); });
    add("T&utti i Files Selezionati in formato XML/P7M", [this] { ExportMany(true, true); });
    add("T&utti i Files in formato XML/P7M", [this] { ExportMany(false, true); });
    if (auto *with_menu = qobject_cast<QToolButton *>(button)) {
        with_menu->setMenu(menu);
        with_menu->setPopupMode(QToolButton::MenuButtonPopup);
    }
}

void CFattureElettroniche::OnEsporta()
{
    const QAbstractButton *button = list_->export_button;
    list_->exports->popup(button->mapToGlobal(QPoint(0, button->height())));
}

void CFattureElettroniche::OnEsportaFileXml()
{
    const Row *row = Active();
    if (!row) return;
    const char *filter =
        row->invoice.is_signed ? "File con firma digitale xml (*.xml)|*.xml||" : "File xml (*.xml)|*.xml||";
    const std::filesystem::path file =
        PickTarget("Esporta XML", filter, "xml", WithoutSignature(row->invoice.file_name.str()));
    if (file.empty()) return;
    ExportInvoiceXml(nullptr, row->invoice.code, file);
    SetStatus(Written(file));
}

void CFattureElettroniche::OnEsportaP7m()
{
    const Row *row = Active();
    if (!row) return;
    const std::string name = row->invoice.file_name.str();
    if (!ToUpper(name).ends_with(".P7M")) {
        AfxMessageBox("Impossibile esportare il file!\n\nFormato file non corretto.", MB_OK | MB_ICONERROR);
        return;
    }
    const std::filesystem::path file =
        PickTarget("Esporta P7M", "File con firma digitale p7m (*.p7m)|*.p7m||", "p7m", name);
    if (file.empty()) return;
    ExportInvoiceP7m(nullptr, row->invoice.code, file);
    SetStatus(Written(file));
}

void CFattureElettroniche::OnEsportaPfd()
{
    const Row *row = Active();
    if (!row) return;
    const InvoiceRow &invoice = row->invoice;
    // What cannot be rendered is told before a name is asked for; a provider's document may be there all the same.
    if (!invoice.fault.empty()) StoredInvoicePdf(nullptr, invoice.code);
    const std::filesystem::path file = PickTarget("Esporta PDF", "File PDF (*.pdf)|*.pdf||", "pdf", PdfName(invoice));
    if (file.empty()) return;
    const bool is_one_of_several = invoice.documents > 1;
    ExportInvoicePdf(nullptr, invoice.code, file, is_one_of_several ? std::optional(invoice.document) : std::nullopt);
    if (list_->opened && list_->opened->code == invoice.code && !is_one_of_several) list_->opened->has_pdf = true;
    SetStatus(Written(file));
}

void CFattureElettroniche::OnEliminaPfd()
{
    const Row *row = Active();
    if (!row) return;
    const std::optional<long> deleted = DeleteInvoicePdf(nullptr, row->invoice.code);
    if (!deleted) return;
    if (list_->opened && list_->opened->code == row->invoice.code) list_->opened->has_pdf = false;
    SetStatus(QStringLiteral("PDF eliminato: la prossima richiesta ne crea uno nuovo"));
}

std::vector<long> CFattureElettroniche::ListedFiles() const
{
    std::vector<long> codes;
    for (long grid_row = 1; grid_row <= Spread()->RowCount(); ++grid_row)
        codes.push_back(list_->rows[static_cast<std::size_t>(Spread()->RowData(grid_row))].invoice.code);
    return codes;
}

std::vector<long> CFattureElettroniche::SelectedFiles() const
{
    std::vector<long> codes;
    for (long grid_row = 1; grid_row <= Spread()->RowCount(); ++grid_row) {
        const Row &row = list_->rows[static_cast<std::size_t>(Spread()->RowData(grid_row))];
        if (row.is_marked) codes.push_back(row.invoice.code);
    }
    const Row *active = Active();
    if (codes.empty() && active) codes.push_back(active->invoice.code);
    return codes;
}

void CFattureElettroniche::ExportMany(bool only_selected, bool keep_signed)
{
    const FilesExport what{only_selected ? SelectedFiles() : ListedFiles(), keep_signed};
    if (what.codes.empty()) return;
    const std::optional<FilesExported> exported = ExportAllFiles(nullptr, what);
    if (!exported) return;
    SetStatus(exported->written == 1 ? QStringLiteral("1 file esportato")
                                     : QStringLiteral("%1 file esportati").arg(exported->written));
}

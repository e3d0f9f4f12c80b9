#include "einvoice/ui/FattureElettronicheList.h"

#include "einvoice/InvoiceSync.h"
#include "einvoice/WatchedFolder.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/widgets/ListWindow.h"
#include "tarvodlg/widgets/SpreadColumns.h"
#include "tarvolumera/Company.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>

namespace {

const QString kResultWindow = QStringLiteral("EsitoFatture"); ///< under which its columns are remembered

/// What became of files: their names, outcomes and reasons; Enter shows the whole text of one.
class CEsitoFatture : public CElenco {
  public:
    CEsitoFatture(const QString &title, const QString &summary, CWnd *parent)
        : CElenco(title, kResultWindow, Columns(), parent)
    {
        SetStatus(summary);
        Spread()->on_dbl_click = [this](long row, long) {
            AfxMessageBox(whole_.at(static_cast<std::size_t>(Spread()->RowData(row))), MB_OK | MB_ICONINFORMATION);
        };
    }

    void Add(const std::string &name, const std::string &outcome, std::string text,
             const std::vector<std::string> &warnings)
    {
        whole_.push_back(fmt::format("{}\n\n{}", name, text));
        for (const std::string &warning : warnings) {
            whole_.back() += "\n\nAvviso: " + warning;
            text += (text.empty() ? "Avviso: " : ". Avviso: ") + warning;
        }
        AddRow({OnOneLine(name), outcome, OnOneLine(text)});
        Spread()->SetRowData(Spread()->RowCount(), static_cast<long>(whole_.size()) - 1);
    }

  private:
    std::vector<std::string> whole_;

    static std::vector<CSpreadSheet::Column> Columns()
    {
        std::vector<CSpreadSheet::Column> columns = {ListColumn("File", CSpreadSheet::Type::Text, 34),
                                                     ListColumn("Esito", CSpreadSheet::Type::Text, 13),
                                                     ListColumn("Che cosa", CSpreadSheet::Type::Text, 66)};
        columns.back().stretch = true;
        return columns;
    }
};

/// "3 già presenti" with what it counts in front; nothing for none.
void AddCount(QString *text, long count, const char *one, const char *many)
{
    if (count == 0) return;
    if (!text->isEmpty()) *text += QStringLiteral(", ");
    *text += QStringLiteral("%1 %2").arg(count).arg(QString::fromUtf8(count == 1 ? one : many));
}

} // namespace

/// Lists what was just filed, whatever period and filters say, and stands on the first of it.
/// @return what had to be changed for it, for the status line
QString CFattureElettroniche::ShowFiled(const std::vector<long> &codes)
{
    List &list = *list_;
    QString changed;
    const long today = CurrentUserInterface().Today();
    if (today < list.first || today > list.last) {
        list.first = std::min(list.first, today);
        list.last = std::max(list.last, today);
        ShowTitle();
        changed = QStringLiteral(". Il periodo ora comprende oggi");
    }
    LoadTable(nullptr, true);
    const std::vector<long> listed = ListedFiles();
    const auto is_listed = [&](long code) { return std::find(listed.begin(), listed.end(), code) != listed.end(); };
    if (HasFilters() && !std::all_of(codes.begin(), codes.end(), is_listed)) {
        list.seller.clear();
        list.number.clear();
        list.state = static_cast<long>(InvoiceState::Any);
        SetField();
        LoadTable(nullptr, true);
        changed += QStringLiteral(". I filtri sono stati tolti");
    }
    Select(codes.front(), 0);
    return changed;
}

void CFattureElettroniche::OnRecordAggiungi()
{
    if (const std::string fault = CompanyFaultForInvoices(lumera_db_impo); !fault.empty()) {
        AfxMessageBox(fault, MB_OK | MB_ICONEXCLAMATION);
        return;
    }
    FilePicking picking;
    picking.title = "Carica File";
    picking.filter = "Fatture elettroniche (*.xml;*.p7m;*.zip)|*.xml;*.p7m;*.zip|Tutti i file (*.*)|*.*||";
    picking.several = true;
    const std::vector<std::filesystem::path> files = CurrentUserInterface().PickFiles(picking);
    if (files.empty()) return;
    const std::vector<ImportResult> results = ImportInvoices(nullptr, files);

    std::vector<long> loaded;
    std::array<long, 4> counts{};
    bool is_all_well = true;
    for (const ImportResult &result : results) {
        ++counts.at(static_cast<std::size_t>(result.outcome));
        if (result.outcome == ImportOutcome::Loaded) loaded.push_back(result.code);
        is_all_well = is_all_well && result.outcome == ImportOutcome::Loaded && result.warnings.empty();
    }
    const auto count = [&](ImportOutcome outcome) { return counts.at(static_cast<std::size_t>(outcome)); };
    QString changed;
    if (!loaded.empty()) changed = ShowFiled(loaded);
    long documents = 0;
    for (const Row &row : list_->rows) documents += std::count(loaded.begin(), loaded.end(), row.invoice.code);
    QString text;
    AddCount(&text, documents, "fattura caricata", "fatture caricate");
    AddCount(&text, count(ImportOutcome::AlreadyThere), "file già presente", "file già presenti");
    AddCount(&text, count(ImportOutcome::Refused), "file rifiutato", "file rifiutati");
    AddCount(&text, count(ImportOutcome::Ignored), "file ignorato", "file ignorati");
    if (text.isEmpty()) text = QStringLiteral("Nessuna fattura nei file scelti");
    text += changed;
    if (results.size() == 1 && !results.front().message.empty()) {
        AfxMessageBox(results.front().message, MB_OK | MB_ICONERROR);
    } else if (!is_all_well) {
        CEsitoFatture window(QStringLiteral("Esito del caricamento"), text, this);
        for (const ImportResult &result : results)
            window.Add(std::filesystem::path(result.origin).filename().string(), ImportOutcomeText(result.outcome),
                       result.text, result.warnings);
        window.DoModal();
    }
    SetStatus(text);
    Spread()->setFocus();
}

void CFattureElettroniche::OnSincronizza()
{
    if (const std::string fault = CompanyFaultForInvoices(lumera_db_impo); !fault.empty()) {
        AfxMessageBox(fault, MB_OK | MB_ICONEXCLAMATION);
        return;
    }
    WatchedFolder provider(ReceivedInvoicesFolder());
    SyncResult result;
    {
        CTarvoProgressDlg progress;
        progress.SetStatus("Sincronizzazione in corso...");
        result = SynchroniseInvoices(nullptr, provider,
                                     [&](const SyncLine &line) { progress.SetStatus(OnOneLine(line.name)); });
    }
    std::vector<long> loaded;
    bool is_all_well = true;
    for (const SyncLine &line : result.lines) {
        if (line.outcome == SyncOutcome::Loaded) loaded.push_back(line.code);
        const bool is_noted = line.outcome == SyncOutcome::AlreadyThere || line.outcome == SyncOutcome::Waiting ||
                              line.outcome == SyncOutcome::Refused || !line.warnings.empty();
        is_all_well = is_all_well && !is_noted;
    }
    QString changed;
    if (!loaded.empty()) changed = ShowFiled(loaded);
    QString text;
    AddCount(&text, result.Count(SyncOutcome::Loaded), "file di fatture caricato", "file di fatture caricati");
    AddCount(&text, result.Count(SyncOutcome::AlreadyThere), "già presente", "già presenti");
    AddCount(&text, result.Count(SyncOutcome::Notification), "notifica", "notifiche");
    AddCount(&text, result.Count(SyncOutcome::Pdf), "PDF", "PDF");
    AddCount(&text, result.Count(SyncOutcome::Waiting), "rimandato", "rimandati");
    AddCount(&text, result.Count(SyncOutcome::Refused), "rifiutato", "rifiutati");
    text = (text.isEmpty() ? QStringLiteral("Nessun file nuovo") : text) + changed;
    if (!is_all_well) {
        CEsitoFatture window(QStringLiteral("Esito della sincronizzazione"), text, this);
        for (const SyncLine &line : result.lines)
            window.Add(line.name, SyncOutcomeText(line.outcome), line.text, line.warnings);
        window.DoModal();
    }
    SetStatus(text);
    Spread()->setFocus();
}

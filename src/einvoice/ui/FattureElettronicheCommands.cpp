#include "einvoice/ui/FattureElettronicheList.h"

#include "einvoice/CaricoMerci.h"
#include "einvoice/InvoiceDocuments.h"
#include "einvoice/ui/AccoppiaArticoli.h"
#include "einvoice/ui/Contabilizza.h"
#include "einvoice/ui/RegistraFatture.h"
#include "ledger/ui/GestionePrimaNota.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/print/TemporaryPdf.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/ReportPreview.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvolumera/ReceivedInvoices.h"

#include <QAbstractButton>
#include <algorithm>
#include <fmt/format.h>

namespace {

/// Asks for a text to look for.
class CTrovaFattura : public CTarvoDialog {
  public:
    CTrovaFattura(Text<60> *wanted, CWnd *parent) : CTarvoDialog(parent)
    {
        setWindowTitle(QStringLiteral("Trova"));
        {
            FormBuilder form(this);
            form.Text("&Testo da cercare", *wanted, 40);
            form.Hint("Parte del nome, del numero, della partita IVA o del nome del file; identificativo SdI intero");
        }
        AddCommand({.caption = "F2 - &Trova", .run = [this] { OnOK(); }});
        AddCommand({.caption = "&Annulla", .run = [this] { EndDialog(IDCANCEL); }, .checks_field = false});
    }

    bool PreTranslateMessage(QKeyEvent *message) override
    {
        const bool is_enter = message->key() == Qt::Key_Return || message->key() == Qt::Key_Enter;
        if (!is_enter || !qobject_cast<QLineEdit *>(focusWidget())) return CTarvoDialog::PreTranslateMessage(message);
        OnOK();
        return true;
    }

  protected:
    bool OnInitDialog() override
    {
        ShowFields();
        return true;
    }
    void OnOK() override
    {
        ReadFields();
        EndDialog(IDOK);
    }
    void OnCancel() override { EndDialog(IDCANCEL); }
};

} // namespace

void CFattureElettroniche::AddCommands()
{
    using Update = std::function<void(CCmdUI *)>;
    const auto add = [this](const char *caption, const char *tooltip, const char *icon,
                            void (CFattureElettroniche::*run)(), Update update, const char *shortcut = "") {
        return AddToolbarCommand({.caption = QString::fromUtf8(caption),
                                  .tooltip = QString::fromUtf8(tooltip),
                                  .icon = QString::fromUtf8(icon),
                                  .run = [this, run] { (this->*run)(); },
                                  .update = std::move(update),
                                  .shortcut = QString::fromUtf8(shortcut)});
    };
    const Update has_row = [this](CCmdUI *command) { command->Enable(Active() != nullptr); };
    const Update is_readable = [this](CCmdUI *command) {
        const Row *row = Active();
        command->Enable(row && row->invoice.fault.empty());
    };
    const Update has_pdf = [this](CCmdUI *command) {
        const Row *row = Active();
        const Opened *opened = list_->opened.get();
        command->Enable(row && opened && opened->code == row->invoice.code && opened->has_pdf);
    };
    using Desk = CFattureElettroniche;
    add("F2 - Carica File", "Caria files fatture elettroniche", "apri", &Desk::OnRecordAggiungi, {});
    add("F3 - Sincronizza", "Scarica files dal portale", "aggiorna", &Desk::OnSincronizza, {});
    add("F4 - Contabilizza", "Contabilizza Documento", "contabilita", &Desk::OnContabilizza, is_readable);
    add("F5 - Carico Merci", "Carico Merci sul Magazzino", "archivio", &Desk::OnCaricoMerci, is_readable);
    UseCommands({RecordCommand::Elimina});
    SetCommandCaption(RecordCommand::Elimina, "F6 - Elimina", "Elimina il file della fattura selezionata");
    AddExportMenu(add("F7 - Esporta", "Esporta il file in formato XML", "esporta", &Desk::OnEsportaFileXml, has_row));
    add("F8 - Esporta P7M", "Esporta il file firmato in formato P7M", "salva", &Desk::OnEsportaP7m, has_row);
    add("F9 - Esporta PDF", "Esporta il file in formato PDF", "pdf", &Desk::OnEsportaPfd, has_row);
    add("Elimina PDF", "Elimina PDF memorizzato e lo richiede nuovamente", "annulla", &Desk::OnEliminaPfd, has_pdf,
        "Shift+F9");
    add("Filtra", "Filtra Periodo Fatture Elettroniche Visualizzate", "calendario", &Desk::OnFiltra, {}, "Ctrl+D");
    add("Trova", "Cerca nelle fatture elencate per nome, numero, partita IVA, file o identificativo SdI", "cerca",
        &Desk::OnTrova, has_row, "Ctrl+F");
}

void CFattureElettroniche::AddFootCommands()
{
    AddCommand({.caption = "&Leggi",
                .tooltip = "Apre la fattura leggibile (anche Invio)",
                .run = [this] { OnLeggi(); },
                .update =
                    [this](CCmdUI *command) {
                        const Row *row = Active();
                        command->Enable(row && row->invoice.fault.empty());
                    },
                .shortcut = "Ctrl+L"});
    AddCommand({.caption = "&Movimento",
                .tooltip = "Apre il movimento di prima nota che registra la fattura",
                .run = [this] { OnMovimento(); },
                .update =
                    [this](CCmdUI *command) {
                        const Row *row = Active();
                        command->Enable(row && row->invoice.entry != 0);
                    },
                .shortcut = "Ctrl+M"});
    AddCommand({.caption = "&Registra tutte...",
                .tooltip = "Registra insieme le fatture selezionate, o tutte quelle elencate e non registrate",
                .run = [this] { OnRegistraTutte(); },
                .update = [this](CCmdUI *command) { command->Enable(list_->open > 0); },
                .shortcut = "Ctrl+R"});
    AddCommand({.caption = "&Esporta...",
                .tooltip = "Esporta i file di una o più fatture",
                .run = [this] { OnEsporta(); },
                .update = [this](CCmdUI *command) { command->Enable(Spread()->RowCount() > 0); },
                .shortcut = "Shift+F7"});
    AddCommand({.caption = "E&xcel",
                .tooltip = "Salva l'elenco in un foglio Excel o in un file CSV",
                .run = [this] { OnExport(); },
                .update = [this](CCmdUI *command) { command->Enable(Spread()->RowCount() > 0); },
                .shortcut = "Ctrl+E"});
}

void CFattureElettroniche::OnContabilizza()
{
    const Row *row = Active();
    if (!row || RemoveWhatIsGone(row->invoice.code)) return;
    const QString number = ToQt(row->invoice.number);
    const long entry = ContabilizzaFattura(this, row->invoice.code, row->invoice.document);
    Spread()->setFocus();
    RefreshRow();
    if (entry == 0) return;
    GoToNextOpen();
    SetStatus(QStringLiteral("La fattura n. %1 è registrata con il movimento %2").arg(number).arg(entry));
}

void CFattureElettroniche::OnCaricoMerci()
{
    const Row *row = Active();
    if (!row || RemoveWhatIsGone(row->invoice.code)) return;
    LoadChoices choices;
    choices.match_by_hand = CAccoppiaArticoli::Matcher(this);
    const QString number = ToQt(row->invoice.number);
    const LoadOutcome outcome = LoadIntoWarehouse(nullptr, row->invoice.code, row->invoice.document, choices);
    Spread()->setFocus();
    RefreshRow();
    if (!outcome.loaded) return;
    SetStatus(QStringLiteral("La fattura n. %1 è caricata in magazzino").arg(number));
}

/// Only this row is looked at again: a list of many thousands stands as it is.
void CFattureElettroniche::RefreshRow()
{
    Row *row = Active();
    if (!row || RemoveWhatIsGone(row->invoice.code)) return;
    ShowChosen();
    row = Active();
    const Opened *opened = list_->opened.get();
    if (!row || !opened || row->invoice.document >= opened->content.Count()) return;
    const bool was_unknown = row->invoice.supplier == 0;
    row->invoice = DescribeInvoice(nullptr, opened->filed, opened->content, row->invoice.document);
    ShowRow(Spread()->ActiveRow());
    if (was_unknown && row->invoice.supplier != 0) PutWithSupplier(row->invoice);
    CountRows();
    ShowState();
}

void CFattureElettroniche::PutWithSupplier(const InvoiceRow &registered)
{
    for (long grid_row = 1; grid_row <= Spread()->RowCount(); ++grid_row) {
        InvoiceRow &other = list_->rows[static_cast<std::size_t>(Spread()->RowData(grid_row))].invoice;
        const bool is_same_seller =
            other.vat_number == registered.vat_number && other.fiscal_code == registered.fiscal_code;
        if (other.supplier != 0 || !other.fault.empty() || !is_same_seller) continue;
        other.supplier = registered.supplier;
        other.supplier_name = registered.supplier_name;
        ShowRow(grid_row);
    }
}

void CFattureElettroniche::GoToNextOpen()
{
    const long rows = Spread()->RowCount(), from = Spread()->ActiveRow();
    for (long step = 1; step < rows; ++step) {
        const long grid_row = (from + step - 1) % rows + 1;
        const InvoiceRow &invoice = list_->rows[static_cast<std::size_t>(Spread()->RowData(grid_row))].invoice;
        if (invoice.is_registered || !invoice.fault.empty()) continue;
        return Spread()->SetActiveCell(grid_row, std::max(Spread()->ActiveColumn(), 1L));
    }
}

std::string CFattureElettroniche::DeletionQuestion(const InvoiceRow &invoice) const
{
    std::string text = fmt::format("Vuoi veramente eliminare il file {}?", invoice.file_name.str());
    if (!invoice.fault.empty()) return text;
    if (invoice.documents > 1)
        text += fmt::format("\n\nContiene {} documenti, che saranno eliminati tutti:", invoice.documents);
    else
        text += "\n\nContiene il documento:";
    CommandScope scope(nullptr);
    bool is_any_registered = false;
    for (std::size_t document = 0; document < invoice.documents; ++document) {
        FATTURE summary;
        if (!sqlfat.Search(scope.get(), invoice.code, static_cast<long>(document) + 1, &summary)) continue;
        InvoiceRow each;
        each.code = invoice.code;
        each.document = document;
        each.supplier = invoice.supplier;
        each.number = summary.fat_numero.str();
        each.day = summary.fat_data;
        each.type = summary.fat_tipo.str();
        CheckPNota(scope.get(), &each);
        is_any_registered = is_any_registered || each.is_registered;
        text += fmt::format("\nn. {} del {} di {}", each.number, FormatDate(each.day), invoice.seller_name);
        if (each.is_registered) text += fmt::format(" (registrato con il movimento {})", each.entry);
    }
    if (is_any_registered) text += "\n\nI movimenti già registrati restano, con la loro copia del file.";
    return text;
}

void CFattureElettroniche::OnRecordElimina()
{
    const Row *row = Active();
    if (!row) return;
    const long code = row->invoice.code;
    if (RemoveWhatIsGone(code)) return;
    const std::string name = row->invoice.file_name.str();
    if (AfxMessageBox(DeletionQuestion(row->invoice), MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES) return;
    DeleteInvoice(nullptr, code);
    RemoveFile(code);
    SetStatus(QStringLiteral("Il file %1 è eliminato").arg(ToQt(name)));
}

void CFattureElettroniche::RemoveFile(long code)
{
    const long active = Spread()->ActiveRow();
    {
        const SpreadUpdate update(Spread());
        for (long grid_row = Spread()->RowCount(); grid_row >= 1; --grid_row) {
            Row &row = list_->rows[static_cast<std::size_t>(Spread()->RowData(grid_row))];
            if (row.invoice.code != code) continue;
            row = {};
            Spread()->DeleteRow(grid_row);
        }
    }
    CountRows();
    if (const long rows = Spread()->RowCount(); rows > 0)
        Spread()->SetActiveCell(std::clamp(active, 1L, rows), std::max(Spread()->ActiveColumn(), 1L));
    RowChosen();
}

bool CFattureElettroniche::RemoveWhatIsGone(long code)
{
    if (IsFiled(nullptr, code)) return false;
    RemoveFile(code);
    SetStatus(QStringLiteral("Il file è stato eliminato da un'altra stazione"));
    return true;
}

void CFattureElettroniche::OnRegistraTutte()
{
    CRegistraFatture window(this);
    const bool has_marks = list_->marked > 0;
    for (const Row &row : list_->rows) {
        const InvoiceRow &invoice = row.invoice;
        const bool is_open = invoice.code != 0 && invoice.fault.empty() && !invoice.is_registered;
        if (is_open && (!has_marks || row.is_marked)) window.m_targets.push_back({invoice.code, invoice.document});
    }
    if (window.m_targets.empty()) {
        AfxMessageBox("Le fatture selezionate sono già registrate.", MB_OK | MB_ICONINFORMATION);
        return;
    }
    window.DoModal();
    Spread()->setFocus();
    if (window.m_registered == 0) return;
    LoadTable(nullptr, true);
    SetStatus(window.m_registered == 1 ? QStringLiteral("1 fattura registrata")
                                       : QStringLiteral("%1 fatture registrate").arg(window.m_registered));
}

void CFattureElettroniche::OnLeggi()
{
    const Row *row = Active();
    if (!row) return;
    if (!row->invoice.fault.empty()) return BeepRefused();
    const InvoiceRow &invoice = row->invoice;
    const TemporaryPdf pages;
    ExportInvoicePdf(nullptr, invoice.code, pages.Path(), invoice.document);
    ReportRequest request;
    request.title = fmt::format("{} n. {} del {} - {}", invoice.type_text, invoice.number, FormatDate(invoice.day),
                                invoice.seller_name);
    CReportPreview(request, pages.Path(), this).DoModal();
    if (list_->opened && list_->opened->code == invoice.code && invoice.documents == 1) list_->opened->has_pdf = true;
    Spread()->setFocus();
}

void CFattureElettroniche::OnMovimento()
{
    const Row *row = Active();
    if (!row || row->invoice.entry == 0) return;
    EditPNota(row->invoice.entry);
    Spread()->setFocus();
    RefreshRow(); // it may be another document's now, or gone
}

/// The number that the exchange system gave the file; whoever searches by it has all of it.
bool CFattureElettroniche::IsIdentifier(long row, const QString &text) const
{
    const std::string &sdi = list_->rows[static_cast<std::size_t>(Spread()->RowData(row))].invoice.sdi;
    return !sdi.empty() && text == ToQt(sdi);
}

void CFattureElettroniche::OnTrova()
{
    const bool is_asked = CTrovaFattura(&list_->searched, this).DoModal() == IDOK;
    Spread()->setFocus();
    const QString text = ToQt(list_->searched.str()).trimmed();
    if (!is_asked || text.isEmpty()) return;
    const auto find = [&](long from) {
        long found = 0;
        for (const long column : std::initializer_list<long>{kNumber, kSellerName, kSupplierName, kVatNumber, kFile}) {
            const long row = Spread()->FindText(from, column, text);
            if (row != 0 && (found == 0 || row < found)) found = row;
        }
        for (long row = from; row <= Spread()->RowCount() && (found == 0 || row < found); ++row)
            if (IsIdentifier(row, text)) return row;
        return found;
    };
    long found = find(Spread()->ActiveRow() + 1);
    if (found == 0) found = find(1);
    if (found != 0) {
        Spread()->SetActiveCell(found, std::max(Spread()->ActiveColumn(), 1L));
        if (IsIdentifier(found, text)) SetStatus(QStringLiteral("Identificativo SdI %1").arg(text));
        return;
    }
    BeepRefused();
    SetStatus(QStringLiteral("Nessuna fattura elencata contiene \"%1\"").arg(text));
}

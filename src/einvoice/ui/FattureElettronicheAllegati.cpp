#include "einvoice/SheetSections.h"
#include "einvoice/ui/DetailGrid.h"
#include "einvoice/ui/FatturePages.h"
#include "ledger/ui/PNotaAllegati.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvodlg/widgets/SpreadColumns.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <fmt/format.h>

namespace {

using fatturapa::AllegatiType;
using Type = CSpreadSheet::Type;

/// Size of the embedded file, told from its base64 without decoding it.
long long BytesOf(const AllegatiType &file)
{
    constexpr long long kLetters = 4, kBytes = 3;
    const auto letters = std::count_if(file.Attachment.begin(), file.Attachment.end(),
                                       [](unsigned char letter) { return letter > ' ' && letter != '='; });
    return letters * kBytes / kLetters;
}

std::string SizeText(const AllegatiType &file)
{
    const long long bytes = BytesOf(file);
    return bytes == 0 ? "vuoto" : FileSizeText(bytes);
}

/// The ending that a claimed format or compression stands for: "pdf" of " PDF". Empty for what cannot be one.
std::string EndingOf(const std::string &format)
{
    constexpr std::size_t kLettersMax = 5;
    std::string ending;
    for (const char letter : format) {
        const bool is_letter = (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9');
        const bool is_capital = letter >= 'A' && letter <= 'Z';
        if (is_letter || is_capital)
            ending += is_capital ? static_cast<char>(letter - 'A' + 'a') : letter;
        else if (letter != ' ' && letter != '.')
            return {};
    }
    return ending.size() <= kLettersMax ? ending : std::string();
}

/// A name to save under: what the sender called it, made safe, with an ending so that a program takes it.
std::string ProposedName(const AllegatiType &file)
{
    const std::string safe = SafeFileName(file.NomeAttachment);
    if (std::filesystem::path(safe).has_extension()) return safe;
    const std::string ending =
        EndingOf(file.AlgoritmoCompressione.empty() ? file.FormatoAttachment : file.AlgoritmoCompressione);
    return ending.empty() ? safe : SafeFileName(safe + "." + ending);
}

void ShowFault(const std::string &reason)
{
    AfxMessageBox("Impossibile salvare il file!\n\n" + reason, MB_OK | MB_ICONSTOP);
}

/// @return where the file went, empty when it was not saved
std::filesystem::path SaveAsked(const AllegatiType &file)
{
    const std::optional<std::string> bytes = file.Content();
    if (!bytes || bytes->empty()) {
        ShowFault(bytes ? "L'allegato è vuoto: la fattura ne riporta solo il nome."
                        : "Il contenuto dell'allegato è danneggiato.");
        return {};
    }
    FilePicking picking;
    picking.title = "Salva l'allegato";
    picking.filter = "Tutti i file (*)|*||";
    picking.proposed = ProposedName(file);
    picking.save = true; // asks before it replaces a file
    const auto picked = CurrentUserInterface().PickFiles(picking);
    if (picked.empty()) return {};
    try {
        WriteFileWhole(picked.front(), *bytes);
    } catch (const FileError &error) {
        ShowFault(error.what());
        return {};
    }
    return picked.front();
}

std::vector<DetailColumn> ColumnsOf(const std::vector<AllegatiType> &files)
{
    const auto member = [&files](std::string AllegatiType::*text) {
        return [&files, text](std::size_t i) -> SpreadValue { return files[i].*text; };
    };
    CSpreadSheet::Column description = ListColumn("Descrizione", Type::Text, 30);
    description.stretch = true;
    return {
        {ListColumn("Nome", Type::Text, 40),
         [&](std::size_t i) { return files[i].NomeAttachment.empty() ? "(senza nome)" : files[i].NomeAttachment; }},
        {description, member(&AllegatiType::DescrizioneAttachment)},
        {ListColumn("Formato", Type::Text, 10), member(&AllegatiType::FormatoAttachment)},
        {ListColumn("Compressione", Type::Text, 12), member(&AllegatiType::AlgoritmoCompressione), true},
        {ListColumn("Dimensione", Type::Text, 12), [&](std::size_t i) { return SizeText(files[i]); }},
    };
}

} // namespace

CFattureElettronicheAllegati::CFattureElettronicheAllegati(CTarvoDialog *dialog)
    : CFattureElettronichePage(dialog), grid_(new CSpreadSheet(this)), note_(DetailNote(this)),
      save_(new QPushButton("&Salva", this))
{
    grid_->setAccessibleName("Allegati del documento");
    grid_->RememberLayout("FattureElettronicheAllegati");
    grid_->on_dbl_click = [this](long row, long) {
        if (row > 0) OnSalva();
    };
    save_->setToolTip("Salva su disco l'allegato scelto");
    save_->setAutoDefault(false);
    connect(save_, &QPushButton::clicked, this, [this] { OnSalva(); });

    auto *foot = new QHBoxLayout;
    foot->addWidget(note_, 1);
    foot->addStretch();
    foot->addWidget(save_);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(grid_);
    layout->addLayout(foot);
    ShowNothing();
}

void CFattureElettronicheAllegati::OnSalva()
{
    Dialog()->Guarded(LUMERA_TAG, [this] {
        const fatturapa::FatturaElettronicaBody *body = Shown();
        const long row = grid_->ActiveRow();
        if (!body || row < 1 || row > static_cast<long>(body->Allegati.size())) return;
        const std::filesystem::path saved = SaveAsked(body->Allegati[static_cast<std::size_t>(row) - 1]);
        if (!saved.empty()) Dialog()->SetStatus("Salvato: " + ToQt(saved.filename().string()));
    });
}

void CFattureElettronicheAllegati::Show(const CFattureElettronicheDB &content, std::size_t document)
{
    const std::vector<AllegatiType> &files = content.Documents()[document].Allegati;
    ShowDetails(grid_, ColumnsOf(files), files.size());
    save_->setEnabled(!files.empty());
    ShowNote(note_, files.empty() ? "Il documento non contiene allegati." : "");
}

void CFattureElettronicheAllegati::ShowNothing()
{
    ShowDetails(grid_, ColumnsOf({}), 0);
    save_->setEnabled(false);
    ShowNote(note_, "");
}

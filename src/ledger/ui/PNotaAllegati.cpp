#include "ledger/ui/PNotaAllegati.h"

#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvodlg/widgets/Theme.h"
#include "tarvolumera/Attachments.h"

#include <QDesktopServices>
#include <QFileIconProvider>
#include <QIcon>
#include <QLabel>
#include <QMimeDatabase>
#include <fmt/format.h>

namespace {

enum FileColumn : long { kIcon = 1, kName, kDescription, kSize, kUser, kCreated, kUpdated };

constexpr const char *kGone = "L'allegato è stato eliminato da un'altra stazione.";

/// "15/03/2026 09:05"; empty for none.
std::string MomentText(const SADateTime &moment)
{
    if (moment.IsNull()) return {};
    return fmt::format("{:02}/{:02}/{:04} {:02}:{:02}", moment.GetDay(), moment.GetMonth(), moment.GetYear(),
                       moment.GetHour(), moment.GetMinute());
}

/// The icon that the desktop has for files of that name, by the extension alone: the file need not exist.
QIcon IconOf(const std::string &name)
{
    const QMimeType type = QMimeDatabase().mimeTypeForFile(ToQt(name), QMimeDatabase::MatchExtension);
    QIcon icon = QIcon::fromTheme(type.iconName());
    if (icon.isNull()) icon = QIcon::fromTheme(type.genericIconName());
    if (icon.isNull()) icon = QFileIconProvider().icon(QFileIconProvider::File);
    return icon.isNull() ? TarvoIcon("allegati") : icon;
}

/// The attachment that a file becomes. @throws FileError for an empty file or one that is too large
PNOTA_ALLEGATO ReadAttachment(long entry, const std::filesystem::path &path)
{
    const std::string name = path.filename().string();
    std::error_code error;
    const auto bytes = std::filesystem::file_size(path, error);
    if (!error && bytes == 0) throw FileError(fmt::format("Il file {} è vuoto: non c'è nulla da allegare.", name));
    if (!error && bytes > static_cast<std::uintmax_t>(CPNotaAllegati::kBytesMax))
        throw FileError(fmt::format("Il file {} è di {}: un allegato può avere al massimo {}.", name,
                                    FileSizeText(static_cast<long long>(bytes)),
                                    FileSizeText(CPNotaAllegati::kBytesMax)));
    PNOTA_ALLEGATO file;
    file.pat_pno = entry;
    file.pat_fname = SafeFileName(name);
    file.pat_desc = ToValidUtf8(path.stem().string());
    file.pat_data = ToBytes(ReadWholeFile(path, static_cast<std::size_t>(CPNotaAllegati::kBytesMax)));
    return file;
}

/// Where the copy of an attachment goes. Each has a folder of its own: two attachments may have one name.
std::filesystem::path CopyPath(const PNOTA_ALLEGATO &file)
{
    const std::filesystem::path folder = CompanyFolder("tmp") / fmt::format("allegato{}", file.pat_codice);
    std::filesystem::create_directories(folder);
    return folder / SafeFileName(file.pat_fname);
}

} // namespace

std::string FileSizeText(long long bytes)
{
    constexpr long long kKilo = 1024, kMega = 1024 * 1024;
    if (bytes < kMega) return FormatAmount(static_cast<double>((bytes + kKilo - 1) / kKilo), 0) + " KB";
    return FormatAmount(static_cast<double>(bytes) / kMega, 1) + " MB";
}

CPNotaAllegati::CPNotaAllegati(long entry, CWnd *parent)
    : CTarvoRecordBrowseDialog(parent), m_open(QDesktopServices::openUrl), entry_(entry)
{
    using enum RecordCommand;
    setWindowTitle(ToQt(fmt::format("Allegati del movimento n. {}", entry)));
    UseCommands({Nuovo, Apri, Elimina, Salva, Stampa});
    SetCommandCaption(Nuovo, "F3 - Nuovo", "Allega uno o più file");
    SetCommandCaption(Apri, "Apri", "Apre il record selezionato");
    SetCommandCaption(Elimina, "F6 - Elimina", "Elimina il record selezionato");
    SetCommandCaption(Salva, "F2 - Salva", "Scrive una copia del file");
    SetCommandCaption(Stampa, "Stampa", "Apre il file nel suo programma, che lo stampa");
    Spread()->SetColumns({{.title = "", .width = 3},
                          {.title = "File", .width = 22, .stretch = true},
                          {.title = "Descrizione", .width = 18},
                          {.title = "Dimensione", .width = 11},
                          {.title = "Utente", .width = 9},
                          {.title = "Inserito", .width = 16},
                          {.title = "Modificato", .width = 16}});
    for (long column = kIcon; column <= kUpdated; ++column) Spread()->LockColumn(column, true);
    Spread()->AllowSorting(false); // the icons stand on their rows
    Spread()->setAccessibleName("Allegati");
}

CPNotaAllegati::~CPNotaAllegati() = default;

bool CPNotaAllegati::OnInitDialog()
{
    return Guarded(LUMERA_TAG, [this] { LoadTable(nullptr, true); });
}

void CPNotaAllegati::LoadTable(SACommand *cmd, bool)
{
    const std::vector<PNOTA_ALLEGATO> files = sqlpat.ListOf(cmd, entry_);
    {
        const SpreadUpdate update(Spread());
        Spread()->Clear();
        Spread()->SetRowCount(static_cast<long>(files.size()));
        long row = 0;
        for (const PNOTA_ALLEGATO &file : files) {
            Spread()->SetRowData(++row, file.pat_codice);
            Spread()->SetText(row, kName, OnOneLine(file.pat_fname));
            Spread()->SetText(row, kDescription, OnOneLine(file.pat_desc));
            Spread()->SetText(row, kSize, FileSizeText(file.pat_bytes_size));
            Spread()->SetText(row, kUser, OnOneLine(file.pat_user));
            Spread()->SetText(row, kCreated, MomentText(file.pat_created_at));
            Spread()->SetText(row, kUpdated, MomentText(file.pat_last_update));
        }
    }
    ShowIcons();
    if (!files.empty()) Spread()->SetActiveCell(1, kName);
    SetStatus(files.empty() ? QStringLiteral("Nessun allegato: F3 ne aggiunge")
                            : ToQt(fmt::format("{} allegati", files.size())));
}

void CPNotaAllegati::ShowIcons()
{
    const int side = Spread()->fontMetrics().height();
    for (long row = 1; row <= Spread()->RowCount(); ++row) {
        auto *label = new QLabel(Spread());
        label->setAlignment(Qt::AlignCenter);
        label->setFocusPolicy(Qt::NoFocus);
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
        label->setPixmap(IconOf(Spread()->Text(row, kName)).pixmap(side, side));
        Spread()->setIndexWidget(Spread()->model()->index(static_cast<int>(row) - 1, kIcon - 1), label);
    }
}

long CPNotaAllegati::Selected() const
{
    return IsRecordLoaded() ? Spread()->RowData(Spread()->ActiveRow()) : 0;
}

void CPNotaAllegati::OnRecordNuovo()
{
    Guarded(LUMERA_TAG, [this] {
        FilePicking picking;
        picking.title = "Allega";
        picking.filter = "Tutti i file (*)|*||";
        picking.several = true;
        const auto paths = CurrentUserInterface().PickFiles(picking);
        if (paths.empty()) return;
        try {
            CommandScope scope(nullptr);
            SATransaction transaction(scope.get());
            for (const std::filesystem::path &path : paths) { // one in memory at a time
                PNOTA_ALLEGATO file = ReadAttachment(entry_, path);
                sqlpat.Store(scope.get(), &file);
            }
            transaction.Commit();
        } catch (const FileError &error) {
            AfxMessageBox(error.what(), MB_OK | MB_ICONSTOP);
            return;
        }
        LoadTable(nullptr, false);
        Spread()->SetActiveCell(Spread()->RowCount(), kName);
    });
}

void CPNotaAllegati::HandOver()
{
    PNOTA_ALLEGATO file;
    if (!sqlpat.Search(nullptr, Selected(), &file)) {
        AfxMessageBox(kGone, MB_OK | MB_ICONEXCLAMATION);
        return LoadTable(nullptr, false);
    }
    const std::filesystem::path copy = CopyPath(file);
    try {
        WriteFileWhole(copy, AsText(file.pat_data));
    } catch (const FileError &error) {
        AfxMessageBox(error.what(), MB_OK | MB_ICONSTOP);
        return;
    }
    if (!m_open(QUrl::fromLocalFile(ToQt(copy.string()))))
        AfxMessageBox(fmt::format("Nessun programma apre il file {}.", OnOneLine(file.pat_fname)),
                      MB_OK | MB_ICONEXCLAMATION);
}

void CPNotaAllegati::OnRecordApri()
{
    if (Selected() != 0) Guarded(LUMERA_TAG, [this] { HandOver(); });
}

void CPNotaAllegati::OnRecordStampa()
{
    if (Selected() == 0) return;
    Guarded(LUMERA_TAG, [this] {
        HandOver();
        SetStatus("Stampare il documento dal programma che lo ha aperto");
    });
}

void CPNotaAllegati::OnRecordSalva()
{
    if (Selected() == 0) return;
    Guarded(LUMERA_TAG, [this] {
        PNOTA_ALLEGATO file;
        if (!sqlpat.Search(nullptr, Selected(), &file)) {
            AfxMessageBox(kGone, MB_OK | MB_ICONEXCLAMATION);
            return LoadTable(nullptr, false);
        }
        FilePicking picking;
        picking.title = "Salva l'allegato";
        picking.filter = "Tutti i file (*)|*||";
        picking.proposed = SafeFileName(file.pat_fname);
        picking.save = true;
        const auto paths = CurrentUserInterface().PickFiles(picking);
        if (paths.empty()) return;
        try {
            WriteFileWhole(paths.front(), AsText(file.pat_data));
        } catch (const FileError &error) {
            AfxMessageBox(error.what(), MB_OK | MB_ICONSTOP);
            return;
        }
        SetStatus("Salvato: " + ToQt(paths.front().filename().string()));
    });
}

void CPNotaAllegati::OnRecordElimina()
{
    const long code = Selected();
    if (code == 0) return;
    if (AfxMessageBox(fmt::format("Vuoi eliminare l'allegato {}?", Spread()->Text(Spread()->ActiveRow(), kName)),
                      MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES)
        return;
    Guarded(LUMERA_TAG, [&] {
        PNOTA_ALLEGATO file;
        file.pat_codice = code;
        sqlpat.SqlTransaction(nullptr, kDelete, &file);
        LoadTable(nullptr, false);
    });
}

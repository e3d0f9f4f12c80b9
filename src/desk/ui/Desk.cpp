#include "desk/ui/Desk.h"

#include "desk/Companies.h"
#include "desk/UserFolders.h"
#include "desk/ui/DeskSettings.h"
#include "desk/ui/DeskWindow.h"
#include "tarvodlg/widgets/QtUserInterface.h"
#include "tarvodlg/widgets/ReportPreview.h"

#include <QApplication>
#include <cstdio>
#include <optional>

namespace {

/// The archive named on the command line, empty for none; nothing when a word is not understood.
std::optional<std::string> ArchiveOfWords(int argc, char **argv)
{
    std::string archive;
    bool seen_desk = false;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "desk" && !seen_desk) {
            seen_desk = true;
        } else if (word == "--archivio" && i + 1 < argc) {
            archive = argv[++i];
        } else if (word.starts_with("--archivio=")) {
            archive = word.substr(word.find('=') + 1);
        } else {
            std::fprintf(stderr,
                         "lumera: Argomento o opzione non riconosciuti: %s\nUso: lumera desk [--archivio "
                         "CARTELLA|INDIRIZZO]\n",
                         argv[i]);
            return std::nullopt;
        }
    }
    return archive;
}

/// What to open when nothing is named; empty when there is nothing yet.
std::string UsualArchive()
{
    if (!Environment("LUMERA_ARCHIVIO").empty()) return Environment("LUMERA_ARCHIVIO");
    const Companies companies;
    if (!companies.List().empty()) return companies.List().front().archive;
    std::error_code ignored;
    return std::filesystem::exists(ArchiveFile(DefaultArchive()), ignored) ? DefaultArchive() : std::string{};
}

} // namespace

DeskEnd RunDesk(int argc, char **argv)
{
    const std::optional<std::string> named = ArchiveOfWords(argc, argv);
    if (!named) return DeskEnd::WrongUsage;

    QApplication application(argc, argv);
    SetUpApplication();
    QGuiApplication::setDesktopFileName(QStringLiteral("it.lumera.Contabilita"));
    ApplyTheme(StoredTheme());
    QtUserInterface user;
    UserInterface *previous = SetUserInterface(&user);
    InstallReportPresenter();

    const std::string archive = named->empty() ? UsualArchive() : *named;
    DeskEnd end = DeskEnd::Done;
    {
        CDesk desk;
        RestoreWindow(&desk);
        desk.show();
        if (!archive.empty() && !desk.Open(archive)) end = DeskEnd::NotOpened;
        QApplication::exec();
    }
    if (!lumera_db_target.empty()) end = DeskEnd::Done;
    SAConnection::ClosePool();
    SetUserInterface(previous);
    return end;
}

#include "cli/CommandLine.h"
#include "desk/ui/Desk.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

bool IsSet(const char *variable)
{
    const char *value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool HasDisplay()
{
    return IsSet("WAYLAND_DISPLAY") || IsSet("DISPLAY");
}

/// True when the desk is only asked how it is used.
bool WantsHelp(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i)
        if (const std::string_view word = argv[i]; word == "--help" || word == "-h") return true;
    return false;
}

/// True for the words "desk", whatever common options stand before it, and for no words where there is a display.
bool MeansDesk(int argc, char **argv)
{
    if (argc == 1) return HasDisplay();
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "--archivio" || word == "--oggi")
            ++i;
        else if (!word.starts_with('-'))
            return word == "desk";
    }
    return false;
}

int ExitCode(DeskEnd end)
{
    switch (end) {
    case DeskEnd::Done:
        return kExitDone;
    case DeskEnd::WrongUsage:
        return kExitUsage;
    case DeskEnd::NotOpened:
        break;
    }
    return kExitFailed;
}

} // namespace

int main(int argc, char **argv)
{
    if (!MeansDesk(argc, argv)) return RunCommandLine(argc, argv);
    if (WantsHelp(argc, argv)) {
        std::puts("Apre la scrivania.\n\nUso: lumera desk [--archivio CARTELLA|INDIRIZZO]\n\n"
                  "Senza --archivio apre LUMERA_ARCHIVIO, altrimenti l'ultima azienda usata.");
        return kExitDone;
    }
    if (!HasDisplay() && !IsSet("QT_QPA_PLATFORM")) { // the toolkit would abort
        std::fputs("lumera: La scrivania ha bisogno di uno schermo (DISPLAY o WAYLAND_DISPLAY).\n", stderr);
        return kExitFailed;
    }
    return ExitCode(RunDesk(argc, argv));
}

#include "desk/ui/Guarded.h"

#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <fmt/format.h>

bool RunGuarded(const char *tag, const std::function<void()> &work)
{
    try {
        work();
        return true;
    } catch (const SAException &error) {
        SAExceptionDisplay(error, tag, false);
    } catch (const FileError &error) {
        AfxMessageBox(error.what(), MB_OK | MB_ICONSTOP);
    } catch (const std::exception &error) {
        AfxMessageBox(fmt::format("Errore imprevisto: {}\n\n[{}]", error.what(), tag), MB_OK | MB_ICONSTOP);
    }
    return false;
}

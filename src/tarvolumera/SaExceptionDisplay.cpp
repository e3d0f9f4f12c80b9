#include "tarvolumera/SaExceptionDisplay.h"

#include "sqlapi/SACommand.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Company.h"

#include <fmt/format.h>

namespace {

std::string_view PlainWords(SAFault fault)
{
    switch (fault) {
    case SAFault::RelationNotFound:
    case SAFault::TableNotFound:
    case SAFault::ViewNotFound:
        return "Nell'archivio manca una tabella.";
    case SAFault::UniqueViolation:
        return "Esiste già un record con lo stesso codice o numero.";
    case SAFault::ForeignKeyViolation:
        return "L'operazione lascerebbe un collegamento verso un record che non esiste, o eliminerebbe un record in "
               "uso.";
    case SAFault::CheckViolation:
    case SAFault::NotNullViolation:
        return "Un valore non è ammesso dall'archivio.";
    case SAFault::Busy:
        return "L'archivio è occupato da un'altra stazione. Riprovare.";
    case SAFault::ConnectionLost:
        return "Il collegamento con l'archivio si è interrotto.";
    case SAFault::CannotOpen:
        return "Impossibile aprire l'archivio.";
    case SAFault::DiskFull:
        return "Il disco è pieno.";
    case SAFault::ReadOnly:
        return "L'archivio è in sola lettura.";
    case SAFault::Corrupt:
        return "L'archivio è danneggiato o non è un archivio.";
    case SAFault::Changed:
    case SAFault::Other:
        break;
    }
    return {};
}

} // namespace

std::string DescribeError(const SAException &error)
{
    const std::string_view plain = PlainWords(error.Fault());
    if (plain.empty() || error.ErrClass() == SA_UserGenerated_Error) return error.ErrText();
    return fmt::format("{}\n\n{}", plain, error.ErrText());
}

void SAExceptionDisplay(const SAException &error, const char *tag, bool warning)
{
    AfxMessageBox(fmt::format("{}\n\n[{}]", DescribeError(error), tag),
                  MB_OK | (warning ? MB_ICONEXCLAMATION : MB_ICONSTOP));
}

bool RunUnit(const char *tag, const std::function<void(SACommand *)> &work)
{
    try {
        SAConnection connection;
        connection.Connect(lumera_db_target);
        SACommand command(&connection);
        work(&command);
        connection.Disconnect();
        return true;
    } catch (const SAException &error) {
        SAExceptionDisplay(error, tag, false);
    } catch (const std::exception &error) { // a host must never meet an exception of ours
        AfxMessageBox(fmt::format("Errore imprevisto: {}\n\n[{}]", error.what(), tag), MB_OK | MB_ICONSTOP);
    }
    return false;
}

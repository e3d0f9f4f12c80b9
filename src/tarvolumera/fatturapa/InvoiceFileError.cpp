#include "tarvolumera/fatturapa/InvoiceFileError.h"

#include <utility>

namespace {

std::string MessageFor(InvoiceFileError::Reason reason, std::string_view file_name)
{
    const std::string name(file_name);
    switch (reason) {
    case InvoiceFileError::Reason::InvalidSignature:
        return "Il file contiene una firma digitale non valida e non può essere aperto!\n\n" + name;
    case InvoiceFileError::Reason::NoCrypto:
        return "Impossibile inizializzare Crypt component!";
    case InvoiceFileError::Reason::NotAnInvoice:
        return "Impossibile caricare l'xml dal file :\n\n" + name;
    case InvoiceFileError::Reason::Unreadable:
        break;
    }
    return "Impossibile caricare il file :\n" + name;
}

} // namespace

InvoiceFileError::InvoiceFileError(Reason reason, std::string_view file_name, std::string detail)
    : std::runtime_error(MessageFor(reason, file_name)), reason_(reason), file_name_(file_name),
      detail_(std::move(detail))
{
}

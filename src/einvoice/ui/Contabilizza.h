#pragma once

#include "einvoice/InvoiceInbox.h"
#include "einvoice/InvoiceRegistration.h"

class QWidget;
using CWnd = QWidget;

/// What the registration asks for, answered in windows: the browsers of suppliers, causali and VAT codes, and the
/// supplier editor on the record prepared from the seller, which stores it.
RegistrationChoices WindowChoices(CWnd *parent);

/// Registers a document of a filed invoice through the entry editor: asks what is missing, opens the editor on the
/// prepared entry with the readable invoice beside it, compares what was stored with the document, and has its
/// instalments generated. Shows what goes wrong.
/// @return number of the stored entry, 0 when none was
long ContabilizzaFattura(CWnd *parent, long code, std::size_t document);

#pragma once

#include "einvoice/InvoiceInbox.h"

/// How commands name a document: "12", or "12.2" for the second one of a file that holds several.
std::string IdOf(const InvoiceRow &row);

#pragma once

#include "tarvolumera/fatturapa/FattureElettronicheDB.h"
#include "tarvolumera/fatturapa/SdiNotification.h"

#include <cmath>
#include <stdexcept>
#include <string>
#include <string_view>

/// Reads bytes as an invoice file the way import and list do, and everything that they and the windows then ask of it.
/// Plain and signed files are told apart by the reader itself. @return true when it was taken as an invoice
/// @throws whatever the reader must not throw, std::logic_error when a taken invoice is not what the reader promises
inline bool ReadFatturaInput(std::string_view bytes)
{
    (void)IsXmlComplete(std::string(bytes));
    const bool is_notification = ReadSdiNotification(std::string(bytes), "IT01234567890_00001_RC_001.xml").has_value();
    CFattureElettronicheDB db;
    try {
        db.Load(std::string(bytes), "prova.xml");
    } catch (const InvoiceFileError &error) {
        if (error.Detail().empty()) throw std::logic_error("a refusal without a reason");
        if (db.Count() != 0) throw std::logic_error("a refused file left documents behind");
        return false;
    }
    if (is_notification) throw std::logic_error("taken for an invoice and for a notification");
    if (db.Count() == 0) throw std::logic_error("an invoice without documents was taken");
    for (const fatturapa::FatturaElettronicaBody &body : db.Documents()) {
        if (body.DatiGenerali.DatiGeneraliDocumento.Data == 0) throw std::logic_error("a document without a date");
        if (!std::isfinite(fatturapa::TotaleDocumento(body))) throw std::logic_error("a total that is no number");
        for (const fatturapa::AllegatiType &attachment : body.Allegati) (void)attachment.Content();
    }
    const auto &seller = db.Header().CedentePrestatore.DatiAnagrafici;
    (void)fatturapa::NameOf(seller.Anagrafica);
    (void)fatturapa::VatNumber(seller.IdFiscaleIVA);
    return true;
}

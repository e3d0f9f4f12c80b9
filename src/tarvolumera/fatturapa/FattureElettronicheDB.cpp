#include "tarvolumera/fatturapa/FattureElettronicheDB.h"

#include "tarvolumera/fatturapa/FormatReaders.h"
#include "tarvolumera/fatturapa/SdiNotification.h"
#include "tarvolumera/fatturapa/XmlEncoding.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

using namespace fatturapa;

namespace {

void RequireDeclaredPrefix(const ReadContext &context)
{
    const std::string_view name = context.xml.Name();
    const std::size_t colon = name.find(':');
    if (colon == std::string_view::npos) return;
    if (context.xml.Attribute("xmlns:" + std::string(name.substr(0, colon))).empty()) {
        context.Refuse(fmt::format("elemento {}: il prefisso non è dichiarato", name.substr(0, 80)));
    }
}

/// Refuses a root with a name other than those of invoices. @return true for the simplified format
bool IsSimplified(const ReadContext &context)
{
    const std::string_view name = LocalName(context.xml.Name());
    if (name == "FatturaElettronica") return false;
    if (name == "FatturaElettronicaSemplificata") return true;
    if (const std::string_view notification = SdiNotificationText(name); !notification.empty()) {
        context.Refuse(fmt::format("è una notifica, non è una fattura: {}", notification));
    }
    context.Refuse(fmt::format("l'elemento {} non è una fattura elettronica", name.substr(0, 80)));
}

void RequireParts(const FatturaElettronica &fattura, const ReadContext &context)
{
    if (!context.has_header) context.Refuse("manca l'elemento FatturaElettronicaHeader");
    if (!context.has_seller) context.Refuse("manca l'elemento CedentePrestatore");
    if (!context.has_buyer) context.Refuse("manca l'elemento CessionarioCommittente");
    if (fattura.Body.empty()) context.Refuse("manca l'elemento FatturaElettronicaBody");
    const DatiAnagraficiType &seller = fattura.Header.CedentePrestatore.DatiAnagrafici;
    if (seller.IdFiscaleIVA.IdCodice.empty() && seller.CodiceFiscale.empty() && NameOf(seller.Anagrafica).empty()) {
        context.Refuse("CedentePrestatore: mancano partita IVA, codice fiscale e nome");
    }
}

void ReadFattura(ReadContext &context, FatturaElettronica &fattura)
{
    context.xml.OpenRoot();
    RequireDeclaredPrefix(context);
    fattura.is_simplified = IsSimplified(context);
    fattura.versione = context.xml.Attribute("versione");
    if (fattura.is_simplified) {
        ReadSimplified(context, fattura);
    } else {
        ReadOrdinary(context, fattura);
    }
    context.document = -1;
    if (!context.xml.CloseDocument()) context.Warn("Testo dopo la fine del documento XML: ignorato");
    if (context.xml.HasBareAmpersand()) context.Warn("Carattere & non codificato nei testi: letto come tale");
    RequireParts(fattura, context);
    WarnOfOddities(context, fattura);
}

} // namespace

void CFattureElettronicheDB::Clear()
{
    *this = CFattureElettronicheDB();
}

void CFattureElettronicheDB::Load(const char *path)
{
    const std::filesystem::path file(path); // before Clear: the caller may pass a name that came from here
    Clear();
    Load(ReadInvoiceFile(file.string()), file.filename().string());
}

void CFattureElettronicheDB::Load(std::string bytes, std::string_view file_name)
{
    const std::string name(file_name); // before Clear, as above
    if (!IsEmpty()) Clear();
    Load(ExtractInvoiceXml(std::move(bytes), name), name);
}

void CFattureElettronicheDB::Load(ExtractedXml extracted, std::string_view file_name)
{
    const std::string name(file_name);
    if (!IsEmpty()) Clear();
    try {
        file_name_ = name;
        envelope_ = std::move(extracted.envelope);
        std::string oddity;
        ReadContext context(std::make_shared<const std::string>(XmlToUtf8(std::move(extracted.xml), oddity)), name,
                            warnings_);
        if (!oddity.empty()) context.Warn(std::move(oddity));
        ReadFattura(context, fattura_);
    } catch (const XmlFault &fault) {
        Clear();
        throw InvoiceFileError(InvoiceFileError::Reason::NotAnInvoice, name, fault.what());
    } catch (...) {
        Clear();
        throw;
    }
}

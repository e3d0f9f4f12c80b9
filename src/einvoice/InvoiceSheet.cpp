#include "einvoice/InvoiceSheet.h"

#include "einvoice/SheetSections.h"
#include "tarvodlg/base/Dates.h"

#include <fmt/format.h>

namespace {

std::string HeadingOf(const std::string &type)
{
    const std::string_view text = fatturapa::TipoDocumentoText(type);
    return text.starts_with('*') ? "DOCUMENTO " + type : fmt::format("{} ({})", text, type);
}

} // namespace

InvoiceSheet SheetOf(const CFattureElettronicheDB &content, std::size_t document)
{
    const fatturapa::FatturaElettronicaBody &body = content.Documents().at(document);
    const auto &general = body.DatiGenerali.DatiGeneraliDocumento;
    InvoiceSheet sheet;
    sheet.heading = HeadingOf(general.TipoDocumento);
    sheet.number = fmt::format("n. {} del {}", general.Numero, FormatDate(general.Data));
    sheet.seller = fatturapa::NameOf(content.Header().CedentePrestatore.DatiAnagrafici.Anagrafica);
    sheet.foot = "Ricavato dalla fattura elettronica " + content.FileName();
    if (content.Count() > 1) sheet.foot += fmt::format(", documento {} di {}", document + 1, content.Count());
    sheet.sections = {PartiesSection(content.Header()),
                      OtherPartiesSection(content.Header()),
                      ReasonsSection(general),
                      ReferencesSection(body.DatiGenerali),
                      TransportSection(body.DatiGenerali),
                      LinesSection(content.Fattura(), body),
                      DiscountsSection(general),
                      PensionFundsSection(general),
                      WithholdingSection(general),
                      SummarySection(body),
                      TotalsSection(body),
                      PaymentsSection(body),
                      AttachmentsSection(body),
                      OtherDataSection(content, body),
                      WarningsSection(content, document)};
    return sheet;
}

#pragma once

#include <string_view>

// The code lists of FatturaPA: texts for people and the meaning of a code for the books.

namespace fatturapa {

/// "FATTURA" for TD01 and so on; "*** SCONOSCIUTO ***" for a code outside the list.
std::string_view TipoDocumentoText(std::string_view tipo_documento);
/// True for the types that reduce a debt: TD04 and, simplified, TD08.
bool IsCreditNote(std::string_view tipo_documento);
/// True for a code that the published formats know, also where no text is shown for it (TD09, TD28, TD29).
bool IsKnownTipoDocumento(std::string_view tipo_documento);

/// Kind of VAT code (iva_tip) of a Natura: 1 for none, sub-codes as their family ("N3.5" is 3); 0 for an unknown one.
short NaturaToIvaTip(std::string_view natura);
/// The Natura family of a kind of VAT code (3 gives "N3"); "" for taxable kinds and those without one.
std::string_view IvaTipToNatura(short iva_tip);
/// "IMPONIBILE" for none, "NON IMPONIBILE" for N3 and N3.x ...; "*** SCONOSCIUTO ***" for an unknown one.
std::string_view NaturaText(std::string_view natura);
/// True for N1 ... N7 and their published sub-codes.
bool IsKnownNatura(std::string_view natura);

/// "CONTANTI" for MP01 ...; "*** SCONOSCIUTO ***" for an unknown code, "" for none.
std::string_view ModalitaPagamentoText(std::string_view modalita);
/// "PAGAMENTO A RATE" for TP01 ...
std::string_view CondizioniPagamentoText(std::string_view condizioni);
/// "ORDINARIO" for RF01 ...
std::string_view RegimeFiscaleText(std::string_view regime);
/// "IMMEDIATA" for I, "DIFFERITA" for D, "SCISSIONE DEI PAGAMENTI" for S.
std::string_view EsigibilitaIvaText(std::string_view esigibilita);

} // namespace fatturapa

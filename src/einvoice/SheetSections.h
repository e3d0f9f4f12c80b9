#pragma once

#include "einvoice/InvoiceSheet.h"

#include <initializer_list>
#include <string_view>

// The parts of an invoice's sheet and the wordings that they share.

/// A section of rows that are few.
SheetSection SectionOf(std::string title, SheetFrame frame, std::vector<SheetColumn> columns,
                       std::vector<SheetRow> rows);

/// Labelled values; those without a value are left out.
class SheetFields {
  public:
    void Add(std::string_view label, std::string value);
    SheetSection Section(std::string title) &&;

  private:
    std::vector<SheetRow> rows_;
};

SheetCell Plain(std::string text);

/// With as many decimals as the value has, at least and at most so many.
std::string SheetNumber(double value, int decimals_min = 2);
std::string SheetNumber(const std::optional<double> &value, int decimals_min = 2); ///< empty for none
std::string SheetPercent(double value);                                            ///< "22%", "20,5%"
/// The texts that are not empty.
std::string Joined(std::string_view separator, std::initializer_list<std::string> texts);
/// "word text"; empty without a text.
std::string Labelled(std::string_view word, const std::string &text);
/// "TD01 FATTURA"; the code alone when its text says nothing.
std::string CodeWithText(const std::string &code, std::string_view text);
/// "1-5, 8": the lines that a reference is about.
std::string LineNumbers(const std::vector<long> &numbers);
std::string AddressText(const fatturapa::IndirizzoType &address);
std::string FiscalIdText(const fatturapa::IdFiscaleType &id); ///< "IT 02565617350"
std::string ContactsText(const fatturapa::ContattiType &contacts);
/// "sc. 10%", "magg. 5,00"
std::string DiscountText(const fatturapa::ScontoMaggiorazioneType &discount);
/// "22%", "N4", "22% N6.1"
std::string VatText(double rate, const std::string &nature);

std::string_view TipoCassaText(std::string_view code);
std::string_view TipoRitenutaText(std::string_view code);
std::string_view TipoCessionePrestazioneText(std::string_view code);

/// Name, numbers, registrations of a party: a line each.
SheetCell PersonLines(const fatturapa::DatiAnagraficiType &person);
SheetSection PartiesSection(const fatturapa::FatturaElettronicaHeader &header);
/// Permanent establishments, representatives, who issued it for the seller.
SheetSection OtherPartiesSection(const fatturapa::FatturaElettronicaHeader &header);

SheetSection ReasonsSection(const fatturapa::DatiGeneraliDocumentoType &general);
SheetSection ReferencesSection(const fatturapa::DatiGeneraliType &data);
SheetSection TransportSection(const fatturapa::DatiGeneraliType &data);
SheetSection LinesSection(const fatturapa::FatturaElettronica &invoice, const fatturapa::FatturaElettronicaBody &body);

SheetSection DiscountsSection(const fatturapa::DatiGeneraliDocumentoType &general);
SheetSection PensionFundsSection(const fatturapa::DatiGeneraliDocumentoType &general);
SheetSection WithholdingSection(const fatturapa::DatiGeneraliDocumentoType &general);
SheetSection SummarySection(const fatturapa::FatturaElettronicaBody &body);
SheetSection TotalsSection(const fatturapa::FatturaElettronicaBody &body);
SheetSection PaymentsSection(const fatturapa::FatturaElettronicaBody &body);
SheetSection AttachmentsSection(const fatturapa::FatturaElettronicaBody &body);
SheetSection OtherDataSection(const CFattureElettronicheDB &content, const fatturapa::FatturaElettronicaBody &body);
SheetSection WarningsSection(const CFattureElettronicheDB &content, std::size_t document);

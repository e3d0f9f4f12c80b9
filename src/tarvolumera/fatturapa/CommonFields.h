#pragma once

#include "tarvolumera/fatturapa/XmlFields.h"

// The elements that the ordinary and the simplified format share.

namespace fatturapa {

/// The date of the document itself: unlike every other date it must be there and be one. @throws InvoiceFileError
void ReadDocumentDay(ReadContext &context, long &value);

/// Reads one Allegati element; the content stays where it is, inside the text of the file.
void ReadAllegati(ReadContext &context, FatturaElettronicaBody &body);

/// @throws InvoiceFileError when a body lacks what no entry can be made without: type, number, date, a summary
void RequireUsable(const ReadContext &context, const FatturaElettronicaBody &body);

inline constexpr Field<IdFiscaleType> kIdFiscale[] = {
    {"IdPaese", Text<&IdFiscaleType::IdPaese>},
    {"IdCodice", Text<&IdFiscaleType::IdCodice>},
};

inline constexpr Field<IndirizzoType> kIndirizzo[] = {
    {"Indirizzo", Text<&IndirizzoType::Indirizzo>},
    {"NumeroCivico", Text<&IndirizzoType::NumeroCivico>},
    {"CAP", Text<&IndirizzoType::CAP>},
    {"Comune", Text<&IndirizzoType::Comune>},
    {"Provincia", Text<&IndirizzoType::Provincia>},
    {"Nazione", Text<&IndirizzoType::Nazione>},
};

inline constexpr Field<IscrizioneREAType> kIscrizioneREA[] = {
    {"Ufficio", Text<&IscrizioneREAType::Ufficio>},
    {"NumeroREA", Text<&IscrizioneREAType::NumeroREA>},
    {"CapitaleSociale", Amount<&IscrizioneREAType::CapitaleSociale>},
    {"SocioUnico", Text<&IscrizioneREAType::SocioUnico>},
    {"StatoLiquidazione", Text<&IscrizioneREAType::StatoLiquidazione>},
};

inline constexpr Field<ContattiType> kContatti[] = {
    {"Telefono", Text<&ContattiType::Telefono>},
    {"Fax", Text<&ContattiType::Fax>},
    {"Email", Text<&ContattiType::Email>},
};

inline constexpr Field<DatiTrasmissioneType> kDatiTrasmissione[] = {
    {"IdTrasmittente", Nested<&DatiTrasmissioneType::IdTrasmittente, kIdFiscale>},
    {"ProgressivoInvio", Text<&DatiTrasmissioneType::ProgressivoInvio>},
    {"FormatoTrasmissione", Text<&DatiTrasmissioneType::FormatoTrasmissione>},
    {"CodiceDestinatario", Text<&DatiTrasmissioneType::CodiceDestinatario>},
    {"ContattiTrasmittente", Nested<&DatiTrasmissioneType::ContattiTrasmittente, kContatti>},
    {"PECDestinatario", Text<&DatiTrasmissioneType::PECDestinatario>},
};

inline constexpr Field<AnagraficaType> kAnagrafica[] = {
    {"Denominazione", Text<&AnagraficaType::Denominazione>},
    {"Nome", Text<&AnagraficaType::Nome>},
    {"Cognome", Text<&AnagraficaType::Cognome>},
    {"Titolo", Text<&AnagraficaType::Titolo>},
    {"CodEORI", Text<&AnagraficaType::CodEORI>},
};

inline constexpr Field<DatiAnagraficiType> kDatiAnagrafici[] = {
    {"IdFiscaleIVA", Nested<&DatiAnagraficiType::IdFiscaleIVA, kIdFiscale>},
    {"CodiceFiscale", Text<&DatiAnagraficiType::CodiceFiscale>},
    {"Anagrafica", Nested<&DatiAnagraficiType::Anagrafica, kAnagrafica>},
    {"AlboProfessionale", Text<&DatiAnagraficiType::AlboProfessionale>},
    {"ProvinciaAlbo", Text<&DatiAnagraficiType::ProvinciaAlbo>},
    {"NumeroIscrizioneAlbo", Text<&DatiAnagraficiType::NumeroIscrizioneAlbo>},
    {"DataIscrizioneAlbo", Day<&DatiAnagraficiType::DataIscrizioneAlbo>},
    {"RegimeFiscale", Text<&DatiAnagraficiType::RegimeFiscale>},
    {"NumeroLicenzaGuida", Text<&DatiAnagraficiType::NumeroLicenzaGuida>},
};

/// A tax representative or intermediary: the data of the seller's stand in DatiAnagrafici, the buyer's and those of the
/// simplified format stand directly in the element.
inline constexpr Field<DatiAnagraficiType> kRappresentante[] = {
    {"DatiAnagrafici",
     [](ReadContext &context, DatiAnagraficiType &party) { ReadFields(context, party, kDatiAnagrafici); }},
    {"IdFiscaleIVA", Nested<&DatiAnagraficiType::IdFiscaleIVA, kIdFiscale>},
    {"Denominazione",
     [](ReadContext &context, DatiAnagraficiType &party) { ReadText(context, party.Anagrafica.Denominazione); }},
    {"Nome", [](ReadContext &context, DatiAnagraficiType &party) { ReadText(context, party.Anagrafica.Nome); }},
    {"Cognome", [](ReadContext &context, DatiAnagraficiType &party) { ReadText(context, party.Anagrafica.Cognome); }},
};

} // namespace fatturapa

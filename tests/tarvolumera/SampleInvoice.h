#pragma once

#include <string>
#include <string_view>

// Fictitious invoices for the tests of the FatturaPA reader.

/// The text with the first occurrence of `part` replaced; fails loudly by throwing when there is none.
inline std::string Replaced(std::string text, std::string_view part, std::string_view replacement)
{
    return text.replace(text.find(part), part.size(), replacement);
}

/// The smallest body that raises no warning: one line at 22%.
inline std::string SampleBody()
{
    return R"(<FatturaElettronicaBody>
    <DatiGenerali><DatiGeneraliDocumento>
      <TipoDocumento>TD01</TipoDocumento><Divisa>EUR</Divisa><Data>2024-02-29</Data><Numero>12/A</Numero>
      <ImportoTotaleDocumento>122.00</ImportoTotaleDocumento>
    </DatiGeneraliDocumento></DatiGenerali>
    <DatiBeniServizi>
      <DettaglioLinee><NumeroLinea>1</NumeroLinea><Descrizione>Merce</Descrizione><Quantita>2.00</Quantita>
        <PrezzoUnitario>50.00</PrezzoUnitario><PrezzoTotale>100.00</PrezzoTotale><AliquotaIVA>22.00</AliquotaIVA></DettaglioLinee>
      <DatiRiepilogo><AliquotaIVA>22.00</AliquotaIVA><ImponibileImporto>100.00</ImponibileImporto><Imposta>22.00</Imposta></DatiRiepilogo>
    </DatiBeniServizi>
  </FatturaElettronicaBody>)";
}

/// The smallest invoice that raises no warning.
inline std::string SampleInvoice(std::string_view bodies = SampleBody())
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<p:FatturaElettronica versione="FPR12" xmlns:p="http://ivaservizi.agenziaentrate.gov.it/docs/xsd/fatture/v1.2">
  <FatturaElettronicaHeader>
    <DatiTrasmissione><IdTrasmittente><IdPaese>IT</IdPaese><IdCodice>01234567897</IdCodice></IdTrasmittente>
      <ProgressivoInvio>1</ProgressivoInvio><FormatoTrasmissione>FPR12</FormatoTrasmissione>
      <CodiceDestinatario>ABCDEFG</CodiceDestinatario></DatiTrasmissione>
    <CedentePrestatore><DatiAnagrafici><IdFiscaleIVA><IdPaese>IT</IdPaese><IdCodice>01234567897</IdCodice></IdFiscaleIVA>
      <Anagrafica><Denominazione>FORNITORE DI PROVA SRL</Denominazione></Anagrafica><RegimeFiscale>RF01</RegimeFiscale></DatiAnagrafici>
      <Sede><Indirizzo>VIA DELLE PROVE 1</Indirizzo><CAP>20121</CAP><Comune>MILANO</Comune><Provincia>MI</Provincia><Nazione>IT</Nazione></Sede></CedentePrestatore>
    <CessionarioCommittente><DatiAnagrafici><CodiceFiscale>12345678903</CodiceFiscale>
      <Anagrafica><Denominazione>CLIENTE DI PROVA SPA</Denominazione></Anagrafica></DatiAnagrafici>
      <Sede><Indirizzo>PIAZZA 2</Indirizzo><CAP>00184</CAP><Comune>ROMA</Comune><Nazione>IT</Nazione></Sede></CessionarioCommittente>
  </FatturaElettronicaHeader>
  )" + std::string(bodies) +
           "\n</p:FatturaElettronica>\n";
}

/// A simplified invoice with the given DatiBeniServizi elements.
inline std::string SampleSimplified(std::string_view lines, std::string_view type = "TD07")
{
    return R"(<?xml version="1.0"?>
<p:FatturaElettronicaSemplificata versione="FSM10" xmlns:p="http://ivaservizi.agenziaentrate.gov.it/docs/xsd/fatture/v1.0">
  <FatturaElettronicaHeader>
    <DatiTrasmissione><IdTrasmittente><IdPaese>IT</IdPaese><IdCodice>01234567897</IdCodice></IdTrasmittente>
      <ProgressivoInvio>1</ProgressivoInvio><FormatoTrasmissione>FSM10</FormatoTrasmissione><CodiceDestinatario>0000000</CodiceDestinatario></DatiTrasmissione>
    <CedentePrestatore><IdFiscaleIVA><IdPaese>IT</IdPaese><IdCodice>01234567897</IdCodice></IdFiscaleIVA>
      <CodiceFiscale>RSSMRA80A01H501U</CodiceFiscale><Nome>Mario</Nome><Cognome>Rossi</Cognome>
      <Sede><Indirizzo>VIA 1</Indirizzo><CAP>20121</CAP><Comune>MILANO</Comune><Nazione>IT</Nazione></Sede>
      <RappresentanteFiscale><IdFiscaleIVA><IdPaese>IT</IdPaese><IdCodice>12345678903</IdCodice></IdFiscaleIVA><Denominazione>RAPPRESENTANTE</Denominazione></RappresentanteFiscale>
      <RegimeFiscale>RF01</RegimeFiscale></CedentePrestatore>
    <CessionarioCommittente><IdentificativiFiscali><CodiceFiscale>12345678903</CodiceFiscale></IdentificativiFiscali>
      <AltriDatiIdentificativi><Denominazione>CLIENTE</Denominazione></AltriDatiIdentificativi></CessionarioCommittente>
  </FatturaElettronicaHeader>
  <FatturaElettronicaBody><DatiGenerali><DatiGeneraliDocumento><TipoDocumento>)" +
           std::string(type) +
           R"(</TipoDocumento><Divisa>EUR</Divisa><Data>2024-05-01</Data><Numero>S1</Numero><BolloVirtuale>SI</BolloVirtuale></DatiGeneraliDocumento>
      <DatiFatturaRettificata><NumeroFR>7</NumeroFR><DataFR>2024-04-01</DataFR><ElementiRettificati>prezzo</ElementiRettificati></DatiFatturaRettificata></DatiGenerali>)" +
           std::string(lines) + "</FatturaElettronicaBody></p:FatturaElettronicaSemplificata>";
}

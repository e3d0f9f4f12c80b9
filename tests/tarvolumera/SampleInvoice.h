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

/// A body with every element that is read, consistent in itself.
inline std::string RichBody()
{
    return R"(<FatturaElettronicaBody>
  <DatiGenerali>
    <DatiGeneraliDocumento>
      <TipoDocumento>TD06</TipoDocumento><Divisa>EUR</Divisa><Data>2024-03-15</Data><Numero>7</Numero>
      <DatiRitenuta><TipoRitenuta>RT01</TipoRitenuta><ImportoRitenuta>200.00</ImportoRitenuta><AliquotaRitenuta>20.00</AliquotaRitenuta><CausalePagamento>A</CausalePagamento></DatiRitenuta>
      <DatiRitenuta><TipoRitenuta>RT03</TipoRitenuta><ImportoRitenuta>1.00</ImportoRitenuta><AliquotaRitenuta>2.00</AliquotaRitenuta><CausalePagamento>A</CausalePagamento></DatiRitenuta>
      <DatiBollo><BolloVirtuale>SI</BolloVirtuale><ImportoBollo>2.00</ImportoBollo></DatiBollo>
      <DatiCassaPrevidenziale><TipoCassa>TC01</TipoCassa><AlCassa>4.00</AlCassa><ImportoContributoCassa>40.00</ImportoContributoCassa><ImponibileCassa>1000.00</ImponibileCassa><AliquotaIVA>22.00</AliquotaIVA><Ritenuta>SI</Ritenuta></DatiCassaPrevidenziale>
      <ImportoTotaleDocumento>1270.80</ImportoTotaleDocumento><Arrotondamento>0.01</Arrotondamento>
      <Causale>prima</Causale><Causale>seconda</Causale><Art73>SI</Art73>
    </DatiGeneraliDocumento>
    <DatiOrdineAcquisto><RiferimentoNumeroLinea>1</RiferimentoNumeroLinea><RiferimentoNumeroLinea>2</RiferimentoNumeroLinea><IdDocumento>ORD1</IdDocumento><Data>2024-01-02</Data><NumItem>5</NumItem><CodiceCommessaConvenzione>COMM</CodiceCommessaConvenzione><CodiceCUP>CUP1</CodiceCUP><CodiceCIG>CIG1</CodiceCIG></DatiOrdineAcquisto>
    <DatiContratto><IdDocumento>CON1</IdDocumento></DatiContratto>
    <DatiConvenzione><IdDocumento>CNV1</IdDocumento></DatiConvenzione>
    <DatiRicezione><IdDocumento>RIC1</IdDocumento></DatiRicezione>
    <DatiFattureCollegate><IdDocumento>FC1</IdDocumento></DatiFattureCollegate>
    <DatiFattureCollegate><IdDocumento>FC2</IdDocumento></DatiFattureCollegate>
    <DatiSAL><RiferimentoFase>3</RiferimentoFase></DatiSAL>
    <DatiDDT><NumeroDDT>D1</NumeroDDT><DataDDT>2024-03-01</DataDDT><RiferimentoNumeroLinea>1</RiferimentoNumeroLinea></DatiDDT>
    <DatiTrasporto><DatiAnagraficiVettore><IdFiscaleIVA><IdPaese>IT</IdPaese><IdCodice>12345678903</IdCodice></IdFiscaleIVA><Anagrafica><Denominazione>VETTORE</Denominazione></Anagrafica><NumeroLicenzaGuida>AA1</NumeroLicenzaGuida></DatiAnagraficiVettore>
      <MezzoTrasporto>camion</MezzoTrasporto><NumeroColli>12</NumeroColli><PesoLordo>10.50</PesoLordo><DataOraRitiro>2024-03-15T10:00:00</DataOraRitiro><DataInizioTrasporto>2024-03-16</DataInizioTrasporto><TipoResa>EXW</TipoResa>
      <IndirizzoResa><Indirizzo>VIA RESA</Indirizzo><CAP>10100</CAP><Comune>TORINO</Comune><Nazione>IT</Nazione></IndirizzoResa></DatiTrasporto>
    <FatturaPrincipale><NumeroFatturaPrincipale>FP1</NumeroFatturaPrincipale><DataFatturaPrincipale>2024-02-01</DataFatturaPrincipale></FatturaPrincipale>
  </DatiGenerali>
  <DatiBeniServizi>
    <DettaglioLinee><NumeroLinea>1</NumeroLinea><TipoCessionePrestazione>AC</TipoCessionePrestazione>
      <CodiceArticolo><CodiceTipo>EAN</CodiceTipo><CodiceValore>8001</CodiceValore></CodiceArticolo><CodiceArticolo><CodiceTipo>INT</CodiceTipo><CodiceValore>A1</CodiceValore></CodiceArticolo>
      <Descrizione>Consulenza</Descrizione><Quantita>1.50000000</Quantita><UnitaMisura>ORE</UnitaMisura><DataInizioPeriodo>2024-01-01</DataInizioPeriodo><DataFinePeriodo>2024-01-31</DataFinePeriodo>
      <PrezzoUnitario>740.74074074</PrezzoUnitario><ScontoMaggiorazione><Tipo>SC</Tipo><Percentuale>10.00</Percentuale></ScontoMaggiorazione><ScontoMaggiorazione><Tipo>MG</Tipo><Importo>0.00000001</Importo></ScontoMaggiorazione>
      <PrezzoTotale>1000.00</PrezzoTotale><AliquotaIVA>22.00</AliquotaIVA><Ritenuta>SI</Ritenuta><RiferimentoAmministrazione>RA</RiferimentoAmministrazione>
      <AltriDatiGestionali><TipoDato>INTENTO</TipoDato><RiferimentoTesto>prot.</RiferimentoTesto><RiferimentoNumero>-3.125</RiferimentoNumero><RiferimentoData>2024-01-05</RiferimentoData></AltriDatiGestionali></DettaglioLinee>
    <DettaglioLinee><NumeroLinea>2</NumeroLinea><Descrizione>Bollo</Descrizione><PrezzoUnitario>2.00</PrezzoUnitario><PrezzoTotale>2.00</PrezzoTotale><AliquotaIVA>0.00</AliquotaIVA><Natura>N1</Natura></DettaglioLinee>
    <DatiRiepilogo><AliquotaIVA>22.00</AliquotaIVA><SpeseAccessorie>0.00</SpeseAccessorie><Arrotondamento>0.00100000</Arrotondamento><ImponibileImporto>1040.00</ImponibileImporto><Imposta>228.80</Imposta><EsigibilitaIVA>S</EsigibilitaIVA></DatiRiepilogo>
    <DatiRiepilogo><AliquotaIVA>0.00</AliquotaIVA><Natura>N1</Natura><ImponibileImporto>2.00</ImponibileImporto><Imposta>0.00</Imposta><RiferimentoNormativo>art. 15</RiferimentoNormativo></DatiRiepilogo>
  </DatiBeniServizi>
  <DatiVeicoli><Data>2023-12-31</Data><TotalePercorso>100 km</TotalePercorso></DatiVeicoli>
  <DatiPagamento><CondizioniPagamento>TP01</CondizioniPagamento>
    <DettaglioPagamento><Beneficiario>BEN</Beneficiario><ModalitaPagamento>MP12</ModalitaPagamento><DataRiferimentoTerminiPagamento>2024-03-15</DataRiferimentoTerminiPagamento><GiorniTerminiPagamento>30</GiorniTerminiPagamento><DataScadenzaPagamento>2024-04-30</DataScadenzaPagamento><ImportoPagamento>600.00</ImportoPagamento><CodUfficioPostale>P1</CodUfficioPostale><CognomeQuietanzante>QC</CognomeQuietanzante><NomeQuietanzante>QN</NomeQuietanzante><CFQuietanzante>QF</CFQuietanzante><TitoloQuietanzante>QT</TitoloQuietanzante><IstitutoFinanziario>BANCA</IstitutoFinanziario><IBAN>IT60X0542811101000000123456</IBAN><ABI>05428</ABI><CAB>11101</CAB><BIC>BLOPIT22</BIC><ScontoPagamentoAnticipato>1.00</ScontoPagamentoAnticipato><DataLimitePagamentoAnticipato>2024-03-20</DataLimitePagamentoAnticipato><PenalitaPagamentiRitardati>5.00</PenalitaPagamentiRitardati><DataDecorrenzaPenale>2024-05-01</DataDecorrenzaPenale><CodicePagamento>CP</CodicePagamento></DettaglioPagamento>
    <DettaglioPagamento><ModalitaPagamento>MP05</ModalitaPagamento><ImportoPagamento>441.99</ImportoPagamento></DettaglioPagamento></DatiPagamento>
  <DatiPagamento><CondizioniPagamento>TP03</CondizioniPagamento><DettaglioPagamento><ModalitaPagamento>MP01</ModalitaPagamento><ImportoPagamento>1.00</ImportoPagamento></DettaglioPagamento></DatiPagamento>
  <Allegati><NomeAttachment>nota.txt</NomeAttachment><AlgoritmoCompressione>ZIP</AlgoritmoCompressione><FormatoAttachment>TXT</FormatoAttachment><DescrizioneAttachment>una nota</DescrizioneAttachment><Attachment>Q2nDsg==</Attachment></Allegati>
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

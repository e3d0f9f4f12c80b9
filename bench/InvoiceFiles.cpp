#include "bench/InvoiceFiles.h"

#include <fmt/format.h>

InvoiceFile LongInvoice(long lines, long number)
{
    std::string xml = R"(<?xml version="1.0" encoding="UTF-8"?>
<p:FatturaElettronica xmlns:p="http://ivaservizi.agenziaentrate.gov.it/docs/xsd/fatture/v1.2" versione="FPR12">
  <FatturaElettronicaHeader>
    <DatiTrasmissione>
      <IdTrasmittente><IdPaese>IT</IdPaese><IdCodice>02565617350</IdCodice></IdTrasmittente>
      <ProgressivoInvio>0LUNG</ProgressivoInvio>
      <FormatoTrasmissione>FPR12</FormatoTrasmissione>
      <CodiceDestinatario>0000000</CodiceDestinatario>
    </DatiTrasmissione>
    <CedentePrestatore>
      <DatiAnagrafici>
        <IdFiscaleIVA><IdPaese>IT</IdPaese><IdCodice>02565617350</IdCodice></IdFiscaleIVA>
        <Anagrafica><Denominazione>Utensileria Marzavola S.r.l.</Denominazione></Anagrafica>
        <RegimeFiscale>RF01</RegimeFiscale>
      </DatiAnagrafici>
      <Sede>
        <Indirizzo>Via Gandhi</Indirizzo><CAP>42123</CAP><Comune>Reggio nell'Emilia</Comune>
        <Provincia>RE</Provincia><Nazione>IT</Nazione>
      </Sede>
    </CedentePrestatore>
    <CessionarioCommittente>
      <DatiAnagrafici>
        <IdFiscaleIVA><IdPaese>IT</IdPaese><IdCodice>08235227348</IdCodice></IdFiscaleIVA>
        <Anagrafica><Denominazione>Brenzola Forniture S.r.l.</Denominazione></Anagrafica>
      </DatiAnagrafici>
      <Sede>
        <Indirizzo>Via dell'Artigianato</Indirizzo><CAP>43126</CAP><Comune>Parma</Comune>
        <Provincia>PR</Provincia><Nazione>IT</Nazione>
      </Sede>
    </CessionarioCommittente>
  </FatturaElettronicaHeader>
  <FatturaElettronicaBody>
    <DatiGenerali>
      <DatiGeneraliDocumento>
        <TipoDocumento>TD01</TipoDocumento>
        <Divisa>EUR</Divisa>
        <Data>2026-01-31</Data>
        <Numero>)" + std::to_string(number) +
                      R"(/A</Numero>
)";
    const double taxable = 12.5 * static_cast<double>(lines);
    xml += fmt::format("        <ImportoTotaleDocumento>{:.2f}</ImportoTotaleDocumento>\n"
                       "      </DatiGeneraliDocumento>\n"
                       "    </DatiGenerali>\n"
                       "    <DatiBeniServizi>\n",
                       taxable * 1.22);
    for (long line = 1; line <= lines; ++line) {
        xml += fmt::format("      <DettaglioLinee>\n"
                           "        <NumeroLinea>{0}</NumeroLinea>\n"
                           "        <CodiceArticolo>\n"
                           "          <CodiceTipo>INT</CodiceTipo>\n"
                           "          <CodiceValore>UT-{0:06}</CodiceValore>\n"
                           "        </CodiceArticolo>\n"
                           "        <Descrizione>Bussola esagonale attacco 1/2&quot; mis. {1}, qualità officina"
                           "</Descrizione>\n"
                           "        <Quantita>5.00</Quantita>\n"
                           "        <UnitaMisura>NR</UnitaMisura>\n"
                           "        <PrezzoUnitario>2.50</PrezzoUnitario>\n"
                           "        <PrezzoTotale>12.50</PrezzoTotale>\n"
                           "        <AliquotaIVA>22.00</AliquotaIVA>\n"
                           "      </DettaglioLinee>\n",
                           line, 8 + line % 25);
    }
    xml += fmt::format(R"(      <DatiRiepilogo>
        <AliquotaIVA>22.00</AliquotaIVA>
        <ImponibileImporto>{:.2f}</ImponibileImporto>
        <Imposta>{:.2f}</Imposta>
      </DatiRiepilogo>
    </DatiBeniServizi>
  </FatturaElettronicaBody>
</p:FatturaElettronica>
)",
                       taxable, taxable * 0.22);
    return {fmt::format("IT02565617350_{:05}.xml", number), std::move(xml)};
}

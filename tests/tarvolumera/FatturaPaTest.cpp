#include "tarvolumera/fatturapa/FattureElettronicheDB.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvolumera/fatturapa/XmlFields.h"
#include "tests/tarvolumera/SampleInvoice.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>

namespace {

using namespace fatturapa;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

CFattureElettronicheDB Read(const std::string &xml)
{
    CFattureElettronicheDB db;
    db.Load(xml, "prova.xml");
    return db;
}

std::vector<std::string> WarningsOf(const CFattureElettronicheDB &db)
{
    std::vector<std::string> texts;
    for (const InvoiceWarning &warning : db.Warnings()) texts.push_back(warning.text);
    return texts;
}

/// The detail of the refusal, "" when the text is read.
std::string RefusalOf(const std::string &xml)
{
    CFattureElettronicheDB db;
    try {
        db.Load(xml, "prova.xml");
    } catch (const InvoiceFileError &error) {
        EXPECT_EQ(error.Why(), InvoiceFileError::Reason::NotAnInvoice);
        EXPECT_STREQ(error.what(), "Impossibile caricare l'xml dal file :\n\nprova.xml");
        return error.Detail();
    }
    return {};
}

// --- Everything in its place
// ------------------------------------------------------------------------------------------

std::string RichBody()
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

TEST(FatturaPa, ReadsEveryPartOfTheBody)
{
    const CFattureElettronicheDB db = Read(SampleInvoice(RichBody()));
    EXPECT_THAT(WarningsOf(db), IsEmpty());
    const FatturaElettronicaBody &body = db.Documents().at(0);
    const DatiGeneraliType &general = body.DatiGenerali;
    const DatiGeneraliDocumentoType &document = general.DatiGeneraliDocumento;
    EXPECT_EQ(document.TipoDocumento + document.Divisa + document.Numero + document.Art73, "TD06EUR7SI");
    EXPECT_EQ(document.Data, DateToJulian(15, 3, 2024));
    EXPECT_THAT(document.Causale, ElementsAre("prima", "seconda"));
    ASSERT_EQ(document.DatiRitenuta.size(), 2U);
    EXPECT_EQ(document.DatiRitenuta[1].TipoRitenuta, "RT03");
    EXPECT_EQ(document.DatiRitenuta[0].ImportoRitenuta, 200.0);
    EXPECT_EQ(document.DatiBollo.value().ImportoBollo, 2.0);
    ASSERT_EQ(document.DatiCassaPrevidenziale.size(), 1U);
    EXPECT_EQ(document.DatiCassaPrevidenziale[0].ImponibileCassa, 1000.0);
    EXPECT_EQ(document.DatiCassaPrevidenziale[0].Ritenuta, "SI");
    EXPECT_EQ(document.ImportoTotaleDocumento, 1270.80);
    EXPECT_EQ(document.Arrotondamento, 0.01);

    ASSERT_EQ(general.DatiOrdineAcquisto.size(), 1U);
    EXPECT_THAT(general.DatiOrdineAcquisto[0].RiferimentoNumeroLinea, ElementsAre(1, 2));
    EXPECT_EQ(general.DatiOrdineAcquisto[0].CodiceCUP + general.DatiOrdineAcquisto[0].CodiceCIG, "CUP1CIG1");
    EXPECT_EQ(general.DatiContratto.at(0).IdDocumento + general.DatiConvenzione.at(0).IdDocumento +
                  general.DatiRicezione.at(0).IdDocumento + general.DatiFattureCollegate.at(1).IdDocumento,
              "CON1CNV1RIC1FC2");
    EXPECT_THAT(general.DatiSAL, ElementsAre(3));
    EXPECT_EQ(general.DatiDDT.at(0).DataDDT, DateToJulian(1, 3, 2024));
    EXPECT_EQ(general.DatiTrasporto.value().DatiAnagraficiVettore.NumeroLicenzaGuida, "AA1");
    EXPECT_EQ(general.DatiTrasporto->NumeroColli, 12);
    EXPECT_EQ(general.DatiTrasporto->IndirizzoResa.Comune, "TORINO");
    EXPECT_EQ(general.FatturaPrincipale.value().NumeroFatturaPrincipale, "FP1");

    ASSERT_EQ(body.DatiBeniServizi.DettaglioLinee.size(), 2U);
    const DettaglioLineeType &line = body.DatiBeniServizi.DettaglioLinee[0];
    EXPECT_EQ(line.CodiceArticolo.at(1).CodiceValore, "A1");
    EXPECT_EQ(line.Quantita, 1.5);
    EXPECT_EQ(line.PrezzoUnitario, 740.74074074);
    EXPECT_EQ(line.ScontoMaggiorazione.at(0).Percentuale, 10.0);
    EXPECT_FALSE(line.ScontoMaggiorazione[0].Importo.has_value());
    EXPECT_EQ(line.ScontoMaggiorazione.at(1).Importo, 0.00000001);
    EXPECT_EQ(line.AltriDatiGestionali.at(0).RiferimentoNumero, -3.125);
    EXPECT_EQ(line.DataFinePeriodo, DateToJulian(31, 1, 2024));
    EXPECT_FALSE(body.DatiBeniServizi.DettaglioLinee[1].Quantita.has_value());

    ASSERT_EQ(body.DatiBeniServizi.DatiRiepilogo.size(), 2U);
    EXPECT_EQ(body.DatiBeniServizi.DatiRiepilogo[0].Arrotondamento, 0.001);
    EXPECT_EQ(body.DatiBeniServizi.DatiRiepilogo[0].EsigibilitaIVA, "S");
    EXPECT_EQ(body.DatiBeniServizi.DatiRiepilogo[1].RiferimentoNormativo, "art. 15");
    EXPECT_EQ(body.DatiVeicoli.value().TotalePercorso, "100 km");

    ASSERT_EQ(body.DatiPagamento.size(), 2U);
    ASSERT_EQ(body.DatiPagamento[0].DettaglioPagamento.size(), 2U);
    const DettaglioPagamentoType &payment = body.DatiPagamento[0].DettaglioPagamento[0];
    EXPECT_EQ(payment.Beneficiario + payment.CodUfficioPostale + payment.CognomeQuietanzante +
                  payment.NomeQuietanzante + payment.CFQuietanzante + payment.TitoloQuietanzante +
                  payment.CodicePagamento,
              "BENP1QCQNQFQTCP");
    EXPECT_EQ(payment.ABI + payment.CAB + payment.BIC, "0542811101BLOPIT22");
    EXPECT_EQ(payment.GiorniTerminiPagamento, 30);
    EXPECT_EQ(payment.DataDecorrenzaPenale, DateToJulian(1, 5, 2024));
    EXPECT_EQ(payment.PenalitaPagamentiRitardati, 5.0);
    EXPECT_EQ(body.DatiPagamento[0].DettaglioPagamento[1].ImportoPagamento, 441.99);

    ASSERT_EQ(body.Allegati.size(), 1U);
    EXPECT_EQ(body.Allegati[0].NomeAttachment + body.Allegati[0].FormatoAttachment, "nota.txtTXT");
    EXPECT_EQ(body.Allegati[0].Content(), "Ciò");
}

TEST(FatturaPa, ReadsEveryPartOfTheHeader)
{
    const std::string seller =
        R"(<CedentePrestatore><DatiAnagrafici><IdFiscaleIVA><IdPaese>IT</IdPaese><IdCodice>01234567897</IdCodice></IdFiscaleIVA>
      <CodiceFiscale>RSSMRA80A01H501U</CodiceFiscale><Anagrafica><Nome>Mario</Nome><Cognome>Rossi</Cognome><Titolo>Dott.</Titolo><CodEORI>IT123</CodEORI></Anagrafica>
      <AlboProfessionale>Avvocati</AlboProfessionale><ProvinciaAlbo>RM</ProvinciaAlbo><NumeroIscrizioneAlbo>99</NumeroIscrizioneAlbo><DataIscrizioneAlbo>2001-05-06</DataIscrizioneAlbo><RegimeFiscale>RF19</RegimeFiscale></DatiAnagrafici>
      <Sede><Indirizzo>VIA A</Indirizzo><NumeroCivico> 3 </NumeroCivico><CAP>20121</CAP><Comune>MILANO</Comune><Provincia>MI</Provincia><Nazione>IT</Nazione></Sede>
      <StabileOrganizzazione><Indirizzo>VIA B</Indirizzo><CAP>00100</CAP><Comune>ROMA</Comune><Nazione>IT</Nazione></StabileOrganizzazione>
      <IscrizioneREA><Ufficio>MI</Ufficio><NumeroREA>123</NumeroREA><CapitaleSociale>10000.00</CapitaleSociale><SocioUnico>SU</SocioUnico><StatoLiquidazione>LN</StatoLiquidazione></IscrizioneREA>
      <Contatti><Telefono>02</Telefono><Fax>03</Fax><Email>a@b.it</Email></Contatti><RiferimentoAmministrazione>RIF</RiferimentoAmministrazione></CedentePrestatore>
    <RappresentanteFiscale><DatiAnagrafici><IdFiscaleIVA><IdPaese>IT</IdPaese><IdCodice>1</IdCodice></IdFiscaleIVA><Anagrafica><Denominazione>RAPP</Denominazione></Anagrafica></DatiAnagrafici></RappresentanteFiscale>)";
    const std::string after_buyer =
        R"(<RappresentanteFiscale><IdFiscaleIVA><IdPaese>FR</IdPaese><IdCodice>2</IdCodice></IdFiscaleIVA><Denominazione>RAPPCLI</Denominazione></RappresentanteFiscale></CessionarioCommittente>
    <TerzoIntermediarioOSoggettoEmittente><DatiAnagrafici><CodiceFiscale>3</CodiceFiscale><Anagrafica><Denominazione>TERZO</Denominazione></Anagrafica></DatiAnagrafici></TerzoIntermediarioOSoggettoEmittente>
    <SoggettoEmittente>TZ</SoggettoEmittente>)";
    std::string xml = SampleInvoice();
    const std::size_t start = xml.find("<CedentePrestatore>");
    const std::size_t end = xml.find("<CessionarioCommittente>");
    xml.replace(start, end - start, seller);
    const CFattureElettronicheDB db = Read(Replaced(xml, "</CessionarioCommittente>", after_buyer));
    EXPECT_THAT(WarningsOf(db), IsEmpty());
    const FatturaElettronicaHeader &header = db.Header();
    const PartyType &party = header.CedentePrestatore;
    EXPECT_EQ(NameOf(party.DatiAnagrafici.Anagrafica), "Rossi Mario");
    EXPECT_EQ(party.DatiAnagrafici.Anagrafica.Titolo + party.DatiAnagrafici.Anagrafica.CodEORI, "Dott.IT123");
    EXPECT_EQ(party.DatiAnagrafici.AlboProfessionale + party.DatiAnagrafici.ProvinciaAlbo +
                  party.DatiAnagrafici.NumeroIscrizioneAlbo,
              "AvvocatiRM99");
    EXPECT_EQ(party.DatiAnagrafici.DataIscrizioneAlbo, DateToJulian(6, 5, 2001));
    EXPECT_EQ(party.Sede.NumeroCivico, "3");
    EXPECT_EQ(party.StabileOrganizzazione.value().Comune, "ROMA");
    EXPECT_EQ(party.IscrizioneREA.CapitaleSociale, 10000.0);
    EXPECT_EQ(party.IscrizioneREA.SocioUnico + party.IscrizioneREA.StatoLiquidazione, "SULN");
    EXPECT_EQ(party.Contatti.Telefono + party.Contatti.Fax + party.Contatti.Email, "0203a@b.it");
    EXPECT_EQ(header.RappresentanteFiscale.value().Anagrafica.Denominazione, "RAPP");
    EXPECT_EQ(header.CessionarioCommittente.RappresentanteFiscale.value().IdFiscaleIVA.IdPaese, "FR");
    EXPECT_EQ(header.TerzoIntermediarioOSoggettoEmittente.value().CodiceFiscale, "3");
    EXPECT_EQ(header.SoggettoEmittente, "TZ");
    EXPECT_EQ(header.DatiTrasmissione.CodiceDestinatario, "ABCDEFG");
}

TEST(FatturaPa, EachBodyIsADocumentWithItsOwnWarnings)
{
    const std::string second = Replaced(SampleBody(), "TD01", "TD77");
    const CFattureElettronicheDB db = Read(SampleInvoice(SampleBody() + second + SampleBody()));
    EXPECT_EQ(db.Count(), 3U);
    ASSERT_EQ(db.Warnings().size(), 1U);
    EXPECT_EQ(db.Warnings()[0].document, 1);
    EXPECT_EQ(RefusalOf(SampleInvoice(SampleBody() + Replaced(SampleBody(), "12/A", ""))),
              "documento 2: manca l'elemento Numero del documento");
}

// --- What is read without a word, with a warning, not at all
// ----------------------------------------------------------

struct Change {
    const char *name;
    std::string part;
    std::string replacement;
    std::string outcome; ///< a piece of the warning or of the refusal; "" where nothing is to be said
};

void PrintTo(const Change &change, std::ostream *out)
{
    *out << change.name;
}

std::string NameOfCase(const testing::TestParamInfo<Change> &info)
{
    return info.param.name;
}

class SilentTest : public testing::TestWithParam<Change> {};

TEST_P(SilentTest, ReadsTheSame)
{
    const CFattureElettronicheDB db = Read(Replaced(SampleInvoice(), GetParam().part, GetParam().replacement));
    EXPECT_THAT(WarningsOf(db), IsEmpty());
    ASSERT_EQ(db.Count(), 1U);
    const FatturaElettronicaBody &body = db.Documents()[0];
    EXPECT_EQ(body.DatiGenerali.DatiGeneraliDocumento.Numero, "12/A");
    EXPECT_EQ(body.DatiGenerali.DatiGeneraliDocumento.Data, DateToJulian(29, 2, 2024));
    EXPECT_EQ(body.DatiBeniServizi.DettaglioLinee.at(0).Descrizione, "Merce");
    EXPECT_EQ(SumOfSummary(body).totale, 122.0);
    EXPECT_EQ(db.Header().CedentePrestatore.Sede.Comune, "MILANO");
}

const std::string kDeclaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";

INSTANTIATE_TEST_SUITE_P(
    Variants, SilentTest,
    testing::Values(
        Change{"AsItIs", "", "", ""}, Change{"NoDeclaration", kDeclaration, "", ""},
        Change{"ByteOrderMark", "<?xml", "\xEF\xBB\xBF<?xml", ""},
        Change{"StyleSheet", "?>\n", "?>\n<?xml-stylesheet href=\"a.xsl\"?><!-- < & > -->\n", ""},
        Change{"OldNamespace", "docs/xsd/fatture/v1.2", "sdi/fatturapa/v1.0", ""},
        Change{"OldVersion", "versione=\"FPR12\"", "versione='1.1'", ""},
        Change{
            "SignatureInside", "\n</p:F",
            "<ds:Signature xmlns:ds=\"http://www.w3.org/2000/09/xmldsig#\"><ds:SignedInfo a='1'/></ds:Signature></p:F",
            ""},
        Change{"PrefixOnAnElement", "<Numero>12/A</Numero>", "<p:Numero>12/A</p:Numero>", ""},
        Change{"BlanksAround", "12/A", "\n\t 12/A \r\n", ""},
        Change{"CharacterData", "12/A", "<![CDATA[12]]>/<![CDATA[A]]>", ""},
        Change{"LineEndsOfWindows", ">Merce<", ">\r\nMerce\r\n<", ""},
        Change{"CommentInside", "12/A", "12<!-- x -->/A", ""}, Change{"CharacterNumbers", "12/A", "&#49;&#x32;/A", ""},
        Change{"BlanksInTags", "<Numero>12/A</Numero>", "<Numero  x = 'a>b' >12/A</Numero >", ""},
        Change{"TimeZone", "2024-02-29", "2024-02-29+01:00", ""},
        Change{"BlankAfterDate", "2024-02-29", "2024-02-29 ", ""},
        Change{"OutOfOrder", "<TipoDocumento>TD01</TipoDocumento><Divisa>EUR</Divisa>",
               "<Divisa>EUR</Divisa><TipoDocumento>TD01</TipoDocumento>", ""},
        Change{"EmptyElements", "<Divisa>", "<Causale/><Arrotondamento></Arrotondamento><Divisa>", ""},
        Change{"PlusSign", ">100.00<", ">+100.0<", ""},
        Change{"TextAfterTheEnd", "</p:FatturaElettronica>", "</p:FatturaElettronica>\n<!-- fine -->\r\n ", ""}),
    NameOfCase);

/// The element of the sample from its start tag to its end tag.
std::string Element(const std::string &name)
{
    const std::string xml = SampleInvoice();
    const std::size_t start = xml.find("<" + name + ">");
    const std::size_t end = xml.find("</" + name + ">", start);
    return xml.substr(start, end - start + name.size() + 3);
}

class WarningTest : public testing::TestWithParam<Change> {};

TEST_P(WarningTest, ReadsAndSaysSo)
{
    const CFattureElettronicheDB db = Read(Replaced(SampleInvoice(), GetParam().part, GetParam().replacement));
    EXPECT_EQ(db.Count(), 1U);
    EXPECT_THAT(WarningsOf(db), testing::Contains(HasSubstr(GetParam().outcome)));
}

const std::string kPayment = "</DatiBeniServizi><DatiPagamento><CondizioniPagamento>TP02</CondizioniPagamento>"
                             "<DettaglioPagamento><ModalitaPagamento>MP05</ModalitaPagamento>";
const std::string kPaymentEnd = "<ImportoPagamento>1.00</ImportoPagamento></DettaglioPagamento></DatiPagamento>";

INSTANTIATE_TEST_SUITE_P(
    Oddities, WarningTest,
    testing::Values(
        Change{"VatNumber", "<IdCodice>01234567897</IdCodice></IdFiscaleIVA>",
               "<IdCodice>01234567890</IdCodice></IdFiscaleIVA>", "IdCodice \"01234567890\": partita IVA errata"},
        Change{"RepeatedCountry", "<IdCodice>01234567897</IdCodice></IdFiscaleIVA>",
               "<IdCodice>IT 01234567897</IdCodice></IdFiscaleIVA>", "ripete il codice del paese"},
        Change{"Regime", "RF01", "RF03", "RegimeFiscale \"RF03\": codice sconosciuto"},
        Change{"BuyerUnknown", "<CodiceFiscale>12345678903</CodiceFiscale>", "", "CessionarioCommittente: mancano"},
        Change{"NoFormat", "<FormatoTrasmissione>FPR12</FormatoTrasmissione>", "",
               "FormatoTrasmissione: elemento mancante"},
        Change{"FormatAndVersion", "<FormatoTrasmissione>FPR12", "<FormatoTrasmissione>FPA12",
               "diverso dalla versione"},
        Change{"NoTotal", "<ImportoTotaleDocumento>122.00</ImportoTotaleDocumento>", "", "calcolato 122.00"},
        Change{"OtherTotal", "<ImportoTotaleDocumento>122.00", "<ImportoTotaleDocumento>122.02",
               "ImportoTotaleDocumento \"122.02\": il riepilogo IVA dà 122.00"},
        Change{"TotalIsNoNumber", "<ImportoTotaleDocumento>122.00", "<ImportoTotaleDocumento>122,00",
               "ImportoTotaleDocumento \"122,00\": non è un importo valido"},
        Change{"TotalOutOfAllBounds", "<ImportoTotaleDocumento>122.00", "<ImportoTotaleDocumento>1000000000000.00",
               "non è un importo valido"},
        Change{"UnknownType", "TD01", "TD99", "TipoDocumento \"TD99\": codice sconosciuto"},
        Change{"NoCurrency", "<Divisa>EUR</Divisa>", "", "Divisa: elemento mancante"},
        Change{"OtherCurrency", "EUR", "USD", "Divisa \"USD\""},
        Change{"NumberWithoutDigits", "12/A", "A", "senza cifre"},
        Change{"TaxTwoCentsOff", "<Imposta>22.00", "<Imposta>22.02", "DatiRiepilogo/Imposta \"22.02\""},
        Change{"LinesAndSummary", "<PrezzoTotale>100.00", "<PrezzoTotale>99.98", "danno 99.98"},
        Change{"RateWithoutSummary", "<AliquotaIVA>22.00</AliquotaIVA></DettaglioLinee>",
               "<AliquotaIVA>10.00</AliquotaIVA></DettaglioLinee>", "al 10.00% danno 100.00"},
        Change{"FractionAsRate", "<DatiRiepilogo><AliquotaIVA>22.00", "<DatiRiepilogo><AliquotaIVA>0.22",
               "non plausibile"},
        Change{"ZeroWithoutNature", "<DatiRiepilogo><AliquotaIVA>22.00", "<DatiRiepilogo><AliquotaIVA>0.00",
               "senza Natura"},
        Change{"NatureWithRate", "<ImponibileImporto>", "<Natura>N4</Natura><ImponibileImporto>",
               "presente con aliquota"},
        Change{"GenericNature", "<ImponibileImporto>", "<Natura>N3</Natura><ImponibileImporto>", "non più ammessa"},
        Change{"UnknownNature", "<ImponibileImporto>", "<Natura>N3.7</Natura><ImponibileImporto>",
               "Natura \"N3.7\": codice sconosciuto"},
        Change{"UnknownDueMode", "</Imposta>", "</Imposta><EsigibilitaIVA>X</EsigibilitaIVA>", "EsigibilitaIVA \"X\""},
        Change{"SplitOfReverseCharge", "<ImponibileImporto>",
               "<Natura>N6.3</Natura><EsigibilitaIVA>S</EsigibilitaIVA><ImponibileImporto>", "non compatibile"},
        Change{"NoLines", Element("DettaglioLinee"), "", "non contiene linee di dettaglio"},
        Change{"UnknownElement", "<Divisa>", "<Altro><Numero>9</Numero></Altro><Divisa>",
               "Elemento sconosciuto DatiGeneraliDocumento/Altro: ignorato"},
        Change{"ImplausibleDueDate", "</DatiBeniServizi>",
               kPayment + "<DataScadenzaPagamento>0001-01-01</DataScadenzaPagamento>" + kPaymentEnd,
               "DettaglioPagamento[1]/DataScadenzaPagamento \"0001-01-01\": data non plausibile"},
        Change{"ImpossibleDueDate", "</DatiBeniServizi>",
               kPayment + "<DataScadenzaPagamento>2022-02-30</DataScadenzaPagamento>" + kPaymentEnd,
               "non è una data valida"},
        Change{"UnknownPayment", "</DatiBeniServizi>",
               "</DatiBeniServizi><DatiPagamento><CondizioniPagamento>TP09</CondizioniPagamento></DatiPagamento>",
               "CondizioniPagamento \"TP09\""},
        Change{
            "EmptyAttachment", "</DatiBeniServizi>",
            "</DatiBeniServizi><Allegati><NomeAttachment>a.pdf</NomeAttachment><Attachment> </Attachment></Allegati>",
            "Allegati \"a.pdf\": allegato dichiarato ma vuoto"},
        Change{"BareAmpersand", "FORNITORE DI", "ROSSI & C.", "Carattere & non codificato"},
        Change{"LineNumber", "<NumeroLinea>1<", "<NumeroLinea>uno<", "DettaglioLinee[1]/NumeroLinea \"uno\""},
        Change{"TextBehind", "</p:FatturaElettronica>", "</p:FatturaElettronica>resto", "Testo dopo la fine"}),
    NameOfCase);

class RefusalTest : public testing::TestWithParam<Change> {};

TEST_P(RefusalTest, NamesWhatIsWrong)
{
    EXPECT_THAT(RefusalOf(Replaced(SampleInvoice(), GetParam().part, GetParam().replacement)),
                HasSubstr(GetParam().outcome));
}

std::string Renamed(const std::string &root)
{
    return "<?xml version=\"1.0\"?><n:" + root + " xmlns:n=\"x\"/>";
}

INSTANTIATE_TEST_SUITE_P(
    Unusable, RefusalTest,
    testing::Values(
        Change{"NoSeller", Element("CedentePrestatore"), "", "manca l'elemento CedentePrestatore"},
        Change{"SellerWithoutData", Element("CedentePrestatore"), "<CedentePrestatore/>", "mancano partita IVA"},
        Change{"NoBuyer", Element("CessionarioCommittente"), "", "manca l'elemento CessionarioCommittente"},
        Change{"NoHeader", Element("FatturaElettronicaHeader"), "", "manca l'elemento FatturaElettronicaHeader"},
        Change{"NoBody", Element("FatturaElettronicaBody"), "", "manca l'elemento FatturaElettronicaBody"},
        Change{"NoType", Element("TipoDocumento"), "", "manca l'elemento TipoDocumento"},
        Change{"NoNumber", Element("Numero"), "<Numero> </Numero>", "manca l'elemento Numero"},
        Change{"NoDate", Element("Data"), "<Data/>", "manca l'elemento Data"},
        Change{"NoDocument", Element("DatiGeneraliDocumento"), "", "manca l'elemento DatiGeneraliDocumento"},
        Change{"ImpossibleDate", "2024-02-29", "2022-02-30", "Data \"2022-02-30\": non è una data del calendario"},
        Change{"NotLeap", "2024-02-29", "2023-02-29", "non è una data del calendario"},
        Change{"ImplausibleDate", "2024-02-29", "0001-01-01", "data non plausibile"},
        Change{"NoGoods", Element("DatiBeniServizi"), "", "manca l'elemento DatiBeniServizi"},
        Change{"NoSummary", Element("DatiRiepilogo"), "", "manca l'elemento DatiRiepilogo"},
        Change{"NoTaxable", Element("ImponibileImporto"), "", "DatiRiepilogo[1]: manca l'elemento ImponibileImporto"},
        Change{"NoTax", Element("Imposta"), "", "DatiRiepilogo[1]: manca l'elemento Imposta"},
        Change{"NoRate", "<DatiRiepilogo><AliquotaIVA>22.00</AliquotaIVA>", "<DatiRiepilogo>",
               "DatiRiepilogo[1]: manca l'elemento AliquotaIVA"},
        Change{"TaxIsNoNumber", "<Imposta>22.00", "<Imposta>ventidue", "DatiRiepilogo[1]/Imposta \"ventidue\""},
        Change{"TaxIsInfinite", "<Imposta>22.00", "<Imposta>inf", "non è un numero"},
        Change{"TaxableWithComma", "<ImponibileImporto>100.00", "<ImponibileImporto>100,00",
               "\"100,00\": non è un numero"},
        Change{"Notification", SampleInvoice(), Renamed("RicevutaConsegna"),
               "è una notifica, non è una fattura: ricevuta"},
        Change{"Metadata", SampleInvoice(), Renamed("FileMetadati"), "è una notifica, non è una fattura"},
        Change{"OtherDocument", SampleInvoice(), "<html><body/></html>", "l'elemento html non è una fattura"},
        Change{"UndeclaredPrefix", "xmlns:p=", "xmlns:q=", "il prefisso non è dichiarato"},
        Change{"DocumentType", "?>\n", "?>\n<!DOCTYPE a [<!ENTITY b \"c\">]>\n", "DTD (DOCTYPE), non ammessa (riga 2"},
        Change{"TwoRoots", "</p:FatturaElettronica>", "</p:FatturaElettronica><a/>", "altri elementi dopo la fine"},
        Change{"TextInFront", "<?xml", "x<?xml", "non è XML"},
        Change{"WrongEndTag", "</Numero>", "</Numeri>", "l'elemento Numero è chiuso come Numeri (riga 16"},
        Change{"LongerEndTag", "</Numero>", "</Numero1>", "l'elemento Numero è chiuso come Numero1"},
        Change{"BadAttribute", "versione=\"FPR12\"", "versione=FPR12", "senza virgolette"},
        Change{"OpenAttribute", "versione=\"FPR12\" xmlns:p=\"", "versione=\"FPR12\" xmlns:p=", "senza virgolette"},
        Change{"OpenComment", "<Numero>", "<!-- <Numero>", "commento non chiuso"},
        Change{"NullCharacter", "FORNITORE DI", std::string("FORNITORE\0DI", 12), "carattere nullo (riga"},
        Change{"StrayLess", "<Divisa>", "< Divisa>", "carattere < fuori posto"}),
    NameOfCase);

TEST(FatturaPa, FailedLoadLeavesNothingOfTheFormer)
{
    CFattureElettronicheDB db = Read(SampleInvoice());
    EXPECT_THROW(db.Load(Replaced(SampleInvoice(), "<Imposta>22.00", "<Imposta>x"), "b.xml"), InvoiceFileError);
    EXPECT_EQ(db.Count(), 0U);
    EXPECT_TRUE(db.FileName().empty());
    EXPECT_TRUE(db.Header().CedentePrestatore.Sede.Comune.empty());
    db.Load(SampleInvoice(), "c.xml");
    EXPECT_EQ(db.Count(), 1U);
    EXPECT_THROW(db.Load("/non/esiste.xml"), InvoiceFileError);
    EXPECT_EQ(db.Count(), 0U);
}

// --- Encodings ------------------------------------------------------------------------------------------------------

std::string Utf16(std::string_view latin1, bool big_endian)
{
    std::string text;
    for (const char character : latin1) {
        if (big_endian) text += '\0';
        text += character;
        if (!big_endian) text += '\0';
    }
    return text;
}

TEST(FatturaPa, ReadsTheSellersNameInEveryEncoding)
{
    const auto with = [](std::string_view encoding, std::string_view seller) {
        std::string xml = Replaced(SampleInvoice(), "FORNITORE DI PROVA SRL", seller);
        return Replaced(xml, "UTF-8", encoding);
    };
    const std::string narrow = with("UTF-16", "PERCH\xC9");
    struct Case {
        const char *name;
        std::string bytes;
        std::string expected;
        std::size_t warnings;
    };
    for (const Case &c : {
             Case{"UTF-8", with("UTF-8", "PERCHÉ €"), "PERCHÉ €", 0},
             Case{"UTF-8 whatever the declaration after a mark", "\xEF\xBB\xBF" + with("windows-1252", "PERCHÉ"),
                  "PERCHÉ", 0},
             Case{"ISO-8859-1", with("ISO-8859-1", "PERCH\xC9"), "PERCHÉ", 0},
             Case{"windows-1252", with("Windows-1252", "\x93PERCH\xC9\x94 \x80"), "“PERCHÉ” €", 0},
             Case{"ISO-8859-15", with("iso-8859-15", "\xA4"), "€", 0},
             Case{"bytes that are not UTF-8", with("UTF-8", "PERCH\xC9"), "PERCHÉ", 1},
             Case{"no declaration", Replaced(with("UTF-8", "PERCH\xC9"), kDeclaration, ""), "PERCHÉ", 1},
             Case{"UTF-16LE", "\xFF\xFE" + Utf16(narrow, false), "PERCHÉ", 0},
             Case{"UTF-16BE", "\xFE\xFF" + Utf16(narrow, true), "PERCHÉ", 0},
             Case{"UTF-16LE without mark", Utf16(narrow, false), "PERCHÉ", 0},
             Case{"UTF-16 declared, UTF-8 written", with("UTF-16", "PERCHÉ"), "PERCHÉ", 0},
             Case{"character outside the first plane", with("UTF-8", "&#x1F600;"), "😀", 0},
         }) {
        const CFattureElettronicheDB db = Read(c.bytes);
        EXPECT_EQ(db.Header().CedentePrestatore.DatiAnagrafici.Anagrafica.Denominazione, c.expected) << c.name;
        EXPECT_EQ(db.Warnings().size(), c.warnings) << c.name;
    }
}

// --- Simplified invoices --------------------------------------------------------------------------------------------

struct Simple {
    const char *name;
    const char *lines;                        ///< "gross/tax/rate/nature", a line each, empty parts left out
    std::vector<std::vector<double>> summary; ///< rate, taxable, tax
    double total;
};

void PrintTo(const Simple &simple, std::ostream *out)
{
    *out << simple.name;
}

std::string GrossLines(std::string_view lines)
{
    std::string xml;
    while (!lines.empty()) {
        std::string_view line = lines.substr(0, lines.find(' '));
        lines.remove_prefix(std::min(lines.size(), line.size() + 1));
        const auto next = [&] {
            const std::string_view part = line.substr(0, line.find('/'));
            line.remove_prefix(std::min(line.size(), part.size() + 1));
            return part;
        };
        const auto element = [](std::string_view name, std::string_view value) {
            return value.empty() ? std::string() : fmt::format("<{0}>{1}</{0}>", name, value);
        };
        xml += "<DatiBeniServizi><Descrizione>Pranzo</Descrizione>" + element("Importo", next());
        const std::string tax = element("Imposta", next());
        xml += "<DatiIVA>" + tax + element("Aliquota", next()) + "</DatiIVA>";
        xml += element("Natura", next()) + "</DatiBeniServizi>";
    }
    return xml;
}

class SimplifiedTest : public testing::TestWithParam<Simple> {};

TEST_P(SimplifiedTest, BecomesASummary)
{
    const CFattureElettronicheDB db = Read(SampleSimplified(GrossLines(GetParam().lines)));
    EXPECT_TRUE(db.Fattura().is_simplified);
    const FatturaElettronicaBody &body = db.Documents().at(0);
    std::vector<std::vector<double>> rows;
    for (const DatiRiepilogoType &row : body.DatiBeniServizi.DatiRiepilogo) {
        rows.push_back({row.AliquotaIVA, row.ImponibileImporto, row.Imposta});
    }
    EXPECT_EQ(rows, GetParam().summary);
    EXPECT_EQ(TotaleDocumento(body), GetParam().total);
    EXPECT_EQ(SumOfSummary(body).totale, GetParam().total) << "nothing is lost by rounding";
}

INSTANTIATE_TEST_SUITE_P(
    Lines, SimplifiedTest,
    testing::Values(Simple{"TaxAlone", "110.00/10.00", {{10, 100.00, 10.00}}, 110.00},
                    Simple{"RateAlone", "12.20//22.00", {{22, 10.00, 2.20}}, 12.20},
                    Simple{"Both", "12.20/2.20/22.00", {{22, 10.00, 2.20}}, 12.20},
                    Simple{"RoundedOnceForTheGroup", "0.01//22 0.01//22 0.01//22 10.00//22", {{22, 8.22, 1.81}}, 10.03},
                    Simple{"TaxAndRateLinesMeet", "12.20/2.20 12.20//22.00", {{22, 20.00, 4.40}}, 24.40},
                    Simple{"TwoRates", "12.20//22.00 110.00/10.00", {{22, 10.00, 2.20}, {10, 100.00, 10.00}}, 122.20},
                    Simple{"Exempt", "50.00//0.00/N4", {{0, 50.00, 0}}, 50.00},
                    Simple{"SameRateOtherNature", "50.00//0.00/N4 1.00//0.00/N1", {{0, 50.00, 0}, {0, 1.00, 0}}, 51.00},
                    Simple{"NatureAlone", "50.00///N2.2", {{0, 50.00, 0}}, 50.00},
                    Simple{"RateFromARoundedTax", "0.99/0.18", {{22, 0.81, 0.18}}, 0.99},
                    Simple{"RateNobodyHas", "113.00/13.00", {{13, 100.00, 13.00}}, 113.00},
                    Simple{"TaxOfNothing", "63.90/63.90", {{0, 0.00, 63.90}}, 63.90},
                    Simple{"Negative", "-12.20//22.00", {{22, -10.00, -2.20}}, -12.20}),
    [](const auto &item) { return std::string(item.param.name); });

TEST(FatturaPa, SimplifiedPartiesStandWhereTheOrdinaryOnesDo)
{
    const CFattureElettronicheDB db = Read(SampleSimplified(GrossLines("12.20//22.00"), "TD08"));
    EXPECT_THAT(WarningsOf(db), IsEmpty());
    const FatturaElettronicaHeader &header = db.Header();
    EXPECT_EQ(NameOf(header.CedentePrestatore.DatiAnagrafici.Anagrafica), "Rossi Mario");
    EXPECT_EQ(header.CedentePrestatore.DatiAnagrafici.RegimeFiscale, "RF01");
    EXPECT_EQ(header.RappresentanteFiscale.value().Anagrafica.Denominazione, "RAPPRESENTANTE");
    EXPECT_EQ(header.CessionarioCommittente.DatiAnagrafici.CodiceFiscale, "12345678903");
    EXPECT_EQ(header.CessionarioCommittente.DatiAnagrafici.Anagrafica.Denominazione, "CLIENTE");
    const FatturaElettronicaBody &body = db.Documents().at(0);
    EXPECT_EQ(body.DatiGenerali.DatiFatturaRettificata.value().DataFR, DateToJulian(1, 4, 2024));
    EXPECT_EQ(body.DatiGenerali.DatiGeneraliDocumento.DatiBollo.value().BolloVirtuale, "SI");
    EXPECT_EQ(body.DatiBeniServizi.DettaglioLinee.at(0).PrezzoTotale, 10.0);
    EXPECT_THAT(RefusalOf(SampleSimplified("")), HasSubstr("DatiBeniServizi"));
    EXPECT_THAT(RefusalOf(SampleSimplified(GrossLines("/1.00"))), HasSubstr("Importo manca"));
    EXPECT_THAT(RefusalOf(SampleSimplified(GrossLines("1.00//-100.00"))), HasSubstr("negativa"));
}

// --- Codes and small questions --------------------------------------------------------------------------------------

TEST(FatturaCodes, NaturaGivesKindAndTextForItsSubCodes)
{
    struct Case {
        const char *natura;
        short kind;
        const char *text;
        bool known;
    };
    for (const Case &c : {Case{"", 1, "IMPONIBILE", false},
                          {"N1", 11, "ESCLUSA ART.15", true},
                          {"N2.1", 4, "NON SOGGETTO", true},
                          {"N3.5", 3, "NON IMPONIBILE", true},
                          {"N4", 2, "ESENTE", true},
                          {"N5", 12, "REGIME DEL MARGINE / IVA NON ESPOSTA IN FATTURA", true},
                          {"N6.9", 13, "INVERSIONE CONTABILE (OPERAZIONI IN REVERSE CHARGE - AUTOFATTURAZIONE)", true},
                          {"N7", 14, "IVA ASSOLTA IN ALTRO STATO UE", true},
                          {"N2.3", 4, "NON SOGGETTO", false},
                          {"N4.1", 2, "ESENTE", false},
                          {"N8", 0, "*** SCONOSCIUTO ***", false},
                          {".1", 0, "*** SCONOSCIUTO ***", false},
                          {"n1", 0, "*** SCONOSCIUTO ***", false}}) {
        EXPECT_EQ(NaturaToIvaTip(c.natura), c.kind) << c.natura;
        EXPECT_EQ(NaturaText(c.natura), c.text) << c.natura;
        EXPECT_EQ(IsKnownNatura(c.natura), c.known) << c.natura;
    }
    EXPECT_EQ(IvaTipToNatura(3), "N3");
    EXPECT_EQ(IvaTipToNatura(6), "N3");
    EXPECT_EQ(IvaTipToNatura(14), "N7");
    EXPECT_EQ(IvaTipToNatura(1), "");
    EXPECT_EQ(IvaTipToNatura(8), "");
}

TEST(FatturaCodes, DocumentTypes)
{
    EXPECT_EQ(TipoDocumentoText("TD04"), "NOTA DI CREDITO");
    EXPECT_EQ(TipoDocumentoText("TD25"), "FATTURA DIFFERITA DI CUI ALL'ART. 21, COMMA 4, TERZO PERIODO LETT. B)");
    EXPECT_EQ(TipoDocumentoText("TD28"), "*** SCONOSCIUTO ***");
    EXPECT_TRUE(IsKnownTipoDocumento("TD28"));
    EXPECT_FALSE(IsKnownTipoDocumento("TD13"));
    EXPECT_TRUE(IsCreditNote("TD04"));
    EXPECT_TRUE(IsCreditNote("TD08"));
    EXPECT_FALSE(IsCreditNote("TD05"));
    EXPECT_EQ(ModalitaPagamentoText("MP12"), "RIBA");
    EXPECT_EQ(ModalitaPagamentoText(""), "");
    EXPECT_EQ(RegimeFiscaleText("RF03"), "*** SCONOSCIUTO ***");
}

TEST(FatturaPa, TotalsAndSigns)
{
    FatturaElettronicaBody body;
    body.DatiBeniServizi.DatiRiepilogo.resize(2);
    body.DatiBeniServizi.DatiRiepilogo[0].ImponibileImporto = -0.1;
    body.DatiBeniServizi.DatiRiepilogo[1].ImponibileImporto = -0.2;
    EXPECT_EQ(SumOfSummary(body).totale, -0.3);
    EXPECT_TRUE(IsNegative(body));
    body.DatiGenerali.DatiGeneraliDocumento.Arrotondamento = 0.05;
    EXPECT_EQ(TotaleDocumento(body), -0.25);
    body.DatiBeniServizi.DatiRiepilogo[1].ImponibileImporto = 0.1;
    EXPECT_FALSE(IsNegative(body));
    body.DatiGenerali.DatiGeneraliDocumento.ImportoTotaleDocumento = -5;
    EXPECT_TRUE(IsNegative(body)) << "the declared total decides where the summary is zero";
    EXPECT_EQ(TotaleDocumento(body), -5);
}

TEST(FatturaPa, DueDay)
{
    DettaglioPagamentoType payment;
    EXPECT_EQ(DueDay(payment, 1'000), 1'000);
    payment.GiorniTerminiPagamento = 30;
    EXPECT_EQ(DueDay(payment, 1'000), 1'030);
    payment.DataRiferimentoTerminiPagamento = 2'000;
    EXPECT_EQ(DueDay(payment, 1'000), 2'030);
    payment.GiorniTerminiPagamento = 2'000'000'000;
    EXPECT_EQ(DueDay(payment, 1'000), 2'000);
    payment.DataScadenzaPagamento = 3'000;
    EXPECT_EQ(DueDay(payment, 1'000), 3'000);
}

TEST(FatturaPa, VatNumberLosesARepeatedCountry)
{
    EXPECT_EQ(VatNumber({"IT", "01234567897"}), "01234567897");
    EXPECT_EQ(VatNumber({"SM", "SM12345"}), "12345");
    EXPECT_EQ(VatNumber({"BE", "be 0477 472 701"}), "0477472701");
    EXPECT_EQ(VatNumber({"AT", "U12345678"}), "U12345678");
    EXPECT_EQ(VatNumber({"DE", "DE"}), "DE");
}

TEST(FatturaPa, AmountsAreTheNearestDoubles)
{
    std::mt19937_64 random(42);
    for (int i = 0; i < 20'000; ++i) {
        const auto whole = static_cast<long long>(random() % 100'000'000'000) >> (random() % 37);
        std::string text = fmt::format("{}{}.", i % 3 == 0 ? "-" : "", whole);
        for (auto digits = random() % 9; digits > 0; --digits) text += static_cast<char>('0' + random() % 10);
        const std::optional<double> read = ParseXmlAmount(text);
        ASSERT_TRUE(read.has_value()) << text;
        ASSERT_EQ(*read, std::strtod(text.c_str(), nullptr)) << text;
        ASSERT_FALSE(*read == 0 && std::signbit(*read)) << text;
    }
    for (const char *bad :
         {"", "-", ".", "+-1", "1.2.3", "1,5", "1e3", "0x10", " 1", "1 ", "nan", "--1", "1000000000000"}) {
        EXPECT_FALSE(ParseXmlAmount(bad).has_value()) << bad;
    }
}

// --- Attachments and hostile files ----------------------------------------------------------------------------------

TEST(FatturaPa, AttachmentsOutliveTheReaderThatGaveThem)
{
    const std::string attachments =
        "</DatiBeniServizi>"
        "<Allegati><NomeAttachment>../a.txt</NomeAttachment><Attachment>Y2lh\r\nbw==</Attachment></Allegati>"
        "<Allegati><Attachment>Y2&#13;\nlhbw==</Attachment></Allegati>"
        "<Allegati><Attachment><![CDATA[Y2lhbw==]]></Attachment></Allegati>"
        "<Allegati><Attachment>Y2!!</Attachment></Allegati>"
        "<Allegati><NomeAttachment>vuoto</NomeAttachment></Allegati>";
    std::vector<AllegatiType> kept;
    {
        const CFattureElettronicheDB db = Read(Replaced(SampleInvoice(), "</DatiBeniServizi>", attachments));
        kept = db.Documents().at(0).Allegati;
    }
    ASSERT_EQ(kept.size(), 5U);
    EXPECT_EQ(kept[0].NomeAttachment, "../a.txt");
    for (int i = 0; i < 3; ++i) EXPECT_EQ(kept[static_cast<std::size_t>(i)].Content(), "ciao") << i;
    EXPECT_EQ(kept[3].Content(), std::nullopt);
    EXPECT_EQ(kept[4].Content(), "");
}

TEST(FatturaPa, ControlCharactersNeverReachATerminal)
{
    const CFattureElettronicheDB db =
        Read(Replaced(SampleInvoice(), "FORNITORE DI PROVA SRL", "A\x1B[2J&#27;<![CDATA[\x07]]>B\r\nC\rD\tE"));
    EXPECT_EQ(db.Header().CedentePrestatore.DatiAnagrafici.Anagrafica.Denominazione, "A [2J&#27; B\nC\nD\tE");
}

TEST(FatturaPa, DeepNestingIsRefused)
{
    std::string deep;
    for (int i = 0; i < 100'000; ++i) deep += "<a>";
    EXPECT_THAT(RefusalOf(Replaced(SampleInvoice(), "<Divisa>", deep + "<Divisa>")), HasSubstr("troppi livelli"));
    EXPECT_THAT(RefusalOf(Replaced(SampleInvoice(), "12/A", deep + "12/A")), HasSubstr("troppi livelli"));
}

TEST(FatturaPa, EndlessListsAreRefused)
{
    std::string lines;
    for (int i = 0; i < 500'001; ++i) lines += "<DettaglioLinee/>";
    EXPECT_THAT(RefusalOf(Replaced(SampleInvoice(), "<DatiRiepilogo>", lines + "<DatiRiepilogo>")), HasSubstr("voci"));
}

TEST(FatturaPa, WarningsEndSomewhere)
{
    std::string odd;
    for (int i = 0; i < 10'000; ++i) odd += "<Strano>" + std::string(200, 'x') + "</Strano>";
    const CFattureElettronicheDB db = Read(Replaced(SampleInvoice(), "<Divisa>", odd + "<Divisa>"));
    ASSERT_EQ(db.Warnings().size(), 201U);
    EXPECT_EQ(db.Warnings().back().text, "Altre anomalie non elencate");
}

/// Reads whatever it is; true when it was taken. What is taken must be well-formed in the eyes of another parser too.
bool IsTaken(const std::string &xml)
{
    CFattureElettronicheDB db;
    try {
        db.Load(xml, "x");
    } catch (const InvoiceFileError &error) {
        EXPECT_FALSE(error.Detail().empty());
        return false;
    }
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(xml.data(), xml.size());
    EXPECT_TRUE(parsed) << parsed.description() << " at " << parsed.offset << "\n" << xml;
    return true;
}

TEST(FatturaPa, NoDamageCrashesOrHangs)
{
    const std::string xml = SampleInvoice(RichBody());
    ASSERT_TRUE(IsTaken(xml));
    for (std::size_t length = 0; length < xml.size() - 30; length += 97) {
        EXPECT_FALSE(IsTaken(xml.substr(0, length))) << "truncated at " << length;
    }
    std::mt19937 random(7);
    int taken = 0;
    for (int i = 0; i < 4'000; ++i) {
        std::string damaged = xml;
        const char *signs = "<>&/!?-[]\"'=\0 \r\n;#:.";
        damaged[random() % damaged.size()] = i % 2 == 0 ? signs[random() % 21] : static_cast<char>(random());
        if (i % 5 == 0) damaged.erase(random() % damaged.size(), random() % 20);
        taken += IsTaken(damaged) ? 1 : 0;
    }
    EXPECT_GT(taken, 400) << "most damage to texts does no harm";
    EXPECT_LT(taken, 3'600) << "damage to the structure is seen";
}

// --- The corpus of real and crafted invoices, where it is at hand
// ---------------------------------------------------------

/// Files of the corpus that cannot be used, with a piece of the reason; all the others must load.
const std::map<std::string, std::string> kUnusable = {
    {"crafted/IT01234567897_00041.xml", "file troncato"},
    {"crafted/IT01234567897_00043.xml", "non è XML"},
    {"crafted/IT01234567897_00045.xml", "2022-02-30"},
    {"crafted/IT01234567897_00063.xml.p7m", "danneggiata o incompleta"},
    {"simevo/invalid/malformed.xml", "file troncato"},
    {"simevo/invalid/missing_CessionarioCommittente.xml", "CessionarioCommittente"},
    {"simevo/invalid/missing_DatiBeniServizi.xml", "DatiBeniServizi"},
    {"simevo/invalid/missing_DatiGeneraliDocumento.xml", "DatiGeneraliDocumento"},
    {"simevo/invalid/missing_DatiGeneraliDocumento_TipoDocumento.xml", "TipoDocumento"},
    {"simevo/invalid/missing_FatturaElettronicaBody.xml", "FatturaElettronicaBody"},
    {"simevo/malicious/embedded_schema.xml", "DOCTYPE"},
    {"simevo/malicious/quadratic_blowup.xml", "DOCTYPE"},
    {"simevo/malicious/small_jumbo.xml", "DOCTYPE"},
    // Random texts: valid patterns, impossible dates.
    {"simevo/random/01.xml", "non è una data"},
    {"simevo/random/03.xml", "non è una data"},
    {"simevo/random/05.xml", "non è una data"},
    {"simevo/random/07.xml", "non è una data"},
    {"simevo/random/09.xml", "non è una data"},
};

std::vector<std::string> Columns(std::string_view line)
{
    std::vector<std::string> columns(1);
    for (const char character : line) {
        if (character == '\t') {
            columns.emplace_back();
        } else {
            columns.back() += character;
        }
    }
    return columns;
}

TEST(FatturaPaCorpus, EveryFileIsReadOrRefusedForItsReason)
{
    const std::filesystem::path folder = std::filesystem::path(LUMERA_SOURCE_DIR) / "../shared/reference/invoices";
    if (!std::filesystem::exists(folder / "INDEX.tsv")) GTEST_SKIP() << "no corpus beside the sources";
    const std::string index = ReadWholeFile(folder / "INDEX.tsv", 1'000'000);
    std::size_t files = 0;
    for (std::size_t start = index.find('\n') + 1; start < index.size(); start = index.find('\n', start) + 1) {
        const std::vector<std::string> columns =
            Columns(std::string_view(index).substr(start, index.find('\n', start) - start));
        ASSERT_GE(columns.size(), 9U);
        ++files;
        const std::string &name = columns[0];
        const auto unusable = kUnusable.find(name);
        CFattureElettronicheDB db;
        try {
            db.Load((folder / name).c_str());
            EXPECT_TRUE(unusable == kUnusable.end()) << name;
        } catch (const InvoiceFileError &error) {
            ASSERT_TRUE(unusable != kUnusable.end()) << name << ": " << error.Detail();
            EXPECT_NE(columns[8].substr(0, 5), "valid") << name;
            EXPECT_THAT(error.Detail(), HasSubstr(unusable->second)) << name;
            continue;
        }
        std::string types;
        for (const FatturaElettronicaBody &body : db.Documents()) {
            types += (types.empty() ? "" : ",") + body.DatiGenerali.DatiGeneraliDocumento.TipoDocumento;
        }
        if (!columns[3].empty()) {
            EXPECT_EQ(types, columns[3]) << name;
        }
        if (columns[6].starts_with("p7m")) {
            EXPECT_TRUE(db.Envelope().is_signed) << name;
        }
        if (!columns[7].empty()) {
            std::size_t attachments = 0;
            for (const FatturaElettronicaBody &body : db.Documents()) attachments += body.Allegati.size();
            EXPECT_EQ(std::to_string(attachments), columns[7]) << name;
        }
    }
    EXPECT_GT(files, 100U);
}

} // namespace

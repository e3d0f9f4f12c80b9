#include "tarvodlg/base/Dates.h"
#include "tests/tarvolumera/FatturaPaSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace fatturapa;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// --- Everything in its place
// ------------------------------------------------------------------------------------------

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
        Change{"PriceBeyondAllNumbers", "<PrezzoTotale>100.00", "<PrezzoTotale>1e400",
               "DettaglioLinee[1]/PrezzoTotale \"1e400\": non è un importo valido"},
        Change{"QuantityWithComma", "<Quantita>2.00", "<Quantita>2,00", "Quantita \"2,00\": non è un importo valido"},
        Change{"UnknownType", "TD01", "TD99", "TipoDocumento \"TD99\": codice sconosciuto"},
        Change{"NoCurrency", "<Divisa>EUR</Divisa>", "", "Divisa: elemento mancante"},
        Change{"BlankAfterDate", "2024-02-29", "2024-02-29 ", "Data \"2024-02-29\": spazi superflui"},
        Change{"BlankBeforeAmount", "<Imposta>22.00", "<Imposta>\n 22.00", "Imposta \"22.00\": spazi superflui"},
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
        Change{"MonthThirteen", "2024-02-29", "2024-13-01", "non è una data del calendario"},
        Change{"DateOfTheFarFuture", "2024-02-29", "9999-12-31", "data non plausibile"},
        Change{"DateWrittenForPeople", "2024-02-29", "29/02/2024", "non è una data del calendario"},
        Change{"NotLeap", "2024-02-29", "2023-02-29", "non è una data del calendario"},
        Change{"ImplausibleDate", "2024-02-29", "0001-01-01", "data non plausibile"},
        Change{"NoGoods", Element("DatiBeniServizi"), "", "manca l'elemento DatiBeniServizi"},
        Change{"NoSummary", Element("DatiRiepilogo"), "", "manca l'elemento DatiRiepilogo"},
        Change{"NoTaxable", Element("ImponibileImporto"), "", "DatiRiepilogo[1]: manca l'elemento ImponibileImporto"},
        Change{"NoTax", Element("Imposta"), "", "DatiRiepilogo[1]: manca l'elemento Imposta"},
        Change{"NoRate", "<DatiRiepilogo><AliquotaIVA>22.00</AliquotaIVA>", "<DatiRiepilogo>",
               "DatiRiepilogo[1]: manca l'elemento AliquotaIVA"},
        Change{"TaxIsNoNumber", "<Imposta>22.00", "<Imposta>ventidue", "DatiRiepilogo[1]/Imposta \"ventidue\""},
        Change{"TaxBeyondAllNumbers", "<Imposta>22.00", "<Imposta>1e400", "Imposta \"1e400\": non è un numero"},
        Change{"TaxWithExponent", "<Imposta>22.00", "<Imposta>2.2e1", "non è un numero"},
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

} // namespace

#pragma once

#include "tarvolumera/fatturapa/FatturaCodes.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The content of a FatturaPA file, as the file says it: signs, sums and codes are raw. Members are named after the XML
// elements, types after those of the published schema. Texts are UTF-8 without blanks around, "" when absent; dates are
// day numbers, 0 when absent or implausible; amounts and percentages keep every decimal of the file. What the schema
// leaves out at will and whose absence means something is a std::optional.

namespace fatturapa {

// --- Header ---------------------------------------------------------------------------------------------------------

struct IdFiscaleType {
    std::string IdPaese;
    std::string IdCodice;
};

struct AnagraficaType {
    std::string Denominazione; ///< of a body; a person has Nome and Cognome instead
    std::string Nome;
    std::string Cognome;
    std::string Titolo;
    std::string CodEORI;
};

/// Personal data of every party; what a party does not have stays empty.
struct DatiAnagraficiType {
    IdFiscaleType IdFiscaleIVA;
    std::string CodiceFiscale;
    AnagraficaType Anagrafica;
    std::string AlboProfessionale;
    std::string ProvinciaAlbo;
    std::string NumeroIscrizioneAlbo;
    long DataIscrizioneAlbo = 0;
    std::string RegimeFiscale;      ///< seller only
    std::string NumeroLicenzaGuida; ///< carrier only
};

struct IndirizzoType {
    std::string Indirizzo;
    std::string NumeroCivico;
    std::string CAP;
    std::string Comune;
    std::string Provincia;
    std::string Nazione;
};

struct IscrizioneREAType {
    std::string Ufficio;
    std::string NumeroREA;
    std::optional<double> CapitaleSociale;
    std::string SocioUnico;        ///< SU one member, SM several
    std::string StatoLiquidazione; ///< LS in liquidation, LN not
};

struct ContattiType {
    std::string Telefono;
    std::string Fax;
    std::string Email;
};

struct DatiTrasmissioneType {
    IdFiscaleType IdTrasmittente;
    std::string ProgressivoInvio;
    std::string FormatoTrasmissione; ///< FPA12, FPR12, FSM10
    std::string CodiceDestinatario;
    ContattiType ContattiTrasmittente;
    std::string PECDestinatario;
};

/// Seller (CedentePrestatore) or buyer (CessionarioCommittente); the buyer has no REA, contacts and reference.
struct PartyType {
    DatiAnagraficiType DatiAnagrafici;
    IndirizzoType Sede;
    std::optional<IndirizzoType> StabileOrganizzazione;
    IscrizioneREAType IscrizioneREA;
    ContattiType Contatti;
    std::string RiferimentoAmministrazione;
    std::optional<DatiAnagraficiType> RappresentanteFiscale; ///< of the buyer
};

struct FatturaElettronicaHeader {
    DatiTrasmissioneType DatiTrasmissione;
    PartyType CedentePrestatore;
    std::optional<DatiAnagraficiType> RappresentanteFiscale; ///< of the seller, in both formats
    PartyType CessionarioCommittente;
    std::optional<DatiAnagraficiType> TerzoIntermediarioOSoggettoEmittente;
    std::string SoggettoEmittente; ///< CC the buyer, TZ a third party, "" the seller
};

// --- Body: general data ---------------------------------------------------------------------------------------------

struct DatiRitenutaType {
    std::string TipoRitenuta;
    double ImportoRitenuta = 0;
    double AliquotaRitenuta = 0;
    std::string CausalePagamento;
};

struct DatiBolloType {
    std::string BolloVirtuale;
    std::optional<double> ImportoBollo;
};

struct DatiCassaPrevidenzialeType {
    std::string TipoCassa;
    double AlCassa = 0;
    double ImportoContributoCassa = 0;
    std::optional<double> ImponibileCassa;
    double AliquotaIVA = 0;
    std::string Ritenuta; ///< SI when subject to withholding
    std::string Natura;
    std::string RiferimentoAmministrazione;
};

struct ScontoMaggiorazioneType {
    std::string Tipo; ///< SC discount, MG surcharge
    std::optional<double> Percentuale;
    std::optional<double> Importo;
};

struct DatiGeneraliDocumentoType {
    std::string TipoDocumento;
    std::string Divisa;
    long Data = 0;
    std::string Numero;
    std::vector<DatiRitenutaType> DatiRitenuta;
    std::optional<DatiBolloType> DatiBollo;
    std::vector<DatiCassaPrevidenzialeType> DatiCassaPrevidenziale;
    std::vector<ScontoMaggiorazioneType> ScontoMaggiorazione;
    std::optional<double> ImportoTotaleDocumento; ///< as declared; see TotaleDocumento() for one that is always there
    std::optional<double> Arrotondamento;
    std::vector<std::string> Causale;
    std::string Art73;
};

/// Order, contract, convention, receipt or linked invoice.
struct DatiDocumentiCorrelatiType {
    std::vector<long> RiferimentoNumeroLinea; ///< empty: the whole document
    std::string IdDocumento;
    long Data = 0;
    std::string NumItem;
    std::string CodiceCommessaConvenzione;
    std::string CodiceCUP;
    std::string CodiceCIG;
};

struct DatiDDTType {
    std::string NumeroDDT;
    long DataDDT = 0;
    std::vector<long> RiferimentoNumeroLinea;
};

struct DatiTrasportoType {
    DatiAnagraficiType DatiAnagraficiVettore;
    std::string MezzoTrasporto;
    std::string CausaleTrasporto;
    std::optional<long> NumeroColli;
    std::string Descrizione;
    std::string UnitaMisuraPeso;
    std::optional<double> PesoLordo;
    std::optional<double> PesoNetto;
    std::string DataOraRitiro; ///< as written: "2022-03-08T10:00:00"
    long DataInizioTrasporto = 0;
    std::string TipoResa;
    IndirizzoType IndirizzoResa;
    std::string DataOraConsegna; ///< as written
};

struct FatturaPrincipaleType {
    std::string NumeroFatturaPrincipale;
    long DataFatturaPrincipale = 0;
};

/// Correction of an earlier document; simplified format only.
struct DatiFatturaRettificataType {
    std::string NumeroFR;
    long DataFR = 0;
    std::string ElementiRettificati;
};

struct DatiGeneraliType {
    DatiGeneraliDocumentoType DatiGeneraliDocumento;
    std::vector<DatiDocumentiCorrelatiType> DatiOrdineAcquisto;
    std::vector<DatiDocumentiCorrelatiType> DatiContratto;
    std::vector<DatiDocumentiCorrelatiType> DatiConvenzione;
    std::vector<DatiDocumentiCorrelatiType> DatiRicezione;
    std::vector<DatiDocumentiCorrelatiType> DatiFattureCollegate;
    std::vector<long> DatiSAL; ///< RiferimentoFase of each
    std::vector<DatiDDTType> DatiDDT;
    std::optional<DatiTrasportoType> DatiTrasporto;
    std::optional<FatturaPrincipaleType> FatturaPrincipale;
    std::optional<DatiFatturaRettificataType> DatiFatturaRettificata;
};

// --- Body: lines and summary ----------------------------------------------------------------------------------------

struct CodiceArticoloType {
    std::string CodiceTipo;
    std::string CodiceValore;
};

struct AltriDatiGestionaliType {
    std::string TipoDato;
    std::string RiferimentoTesto;
    std::optional<double> RiferimentoNumero;
    long RiferimentoData = 0;
};

struct DettaglioLineeType {
    long NumeroLinea = 0;
    std::string TipoCessionePrestazione; ///< SC, PR, AB, AC or ""
    std::vector<CodiceArticoloType> CodiceArticolo;
    std::string Descrizione;
    std::optional<double> Quantita;
    std::string UnitaMisura;
    long DataInizioPeriodo = 0;
    long DataFinePeriodo = 0;
    double PrezzoUnitario = 0;
    std::vector<ScontoMaggiorazioneType> ScontoMaggiorazione;
    double PrezzoTotale = 0; ///< net of VAT; of a simplified line computed from Importo
    double AliquotaIVA = 0;
    std::string Ritenuta; ///< SI when subject to withholding
    std::string Natura;
    std::string RiferimentoAmministrazione;
    std::vector<AltriDatiGestionaliType> AltriDatiGestionali;
};

struct DatiRiepilogoType {
    double AliquotaIVA = 0;
    std::string Natura;
    std::optional<double> SpeseAccessorie;
    std::optional<double> Arrotondamento;
    double ImponibileImporto = 0;
    double Imposta = 0;
    std::string EsigibilitaIVA; ///< I immediate, D deferred, S split payment or ""
    std::string RiferimentoNormativo;
};

struct DatiBeniServiziType {
    std::vector<DettaglioLineeType> DettaglioLinee;
    std::vector<DatiRiepilogoType> DatiRiepilogo; ///< of a simplified document: its lines added by rate and nature
};

struct DatiVeicoliType {
    long Data = 0;
    std::string TotalePercorso;
};

// --- Body: payment and attachments ----------------------------------------------------------------------------------

struct DettaglioPagamentoType {
    std::string Beneficiario;
    std::string ModalitaPagamento;
    long DataRiferimentoTerminiPagamento = 0;
    std::optional<long> GiorniTerminiPagamento;
    long DataScadenzaPagamento = 0;
    double ImportoPagamento = 0;
    std::string CodUfficioPostale;
    std::string CognomeQuietanzante;
    std::string NomeQuietanzante;
    std::string CFQuietanzante;
    std::string TitoloQuietanzante;
    std::string IstitutoFinanziario;
    std::string IBAN;
    std::string ABI;
    std::string CAB;
    std::string BIC;
    std::optional<double> ScontoPagamentoAnticipato;
    long DataLimitePagamentoAnticipato = 0;
    std::optional<double> PenalitaPagamentiRitardati;
    long DataDecorrenzaPenale = 0;
    std::string CodicePagamento;
};

struct DatiPagamentoType {
    std::string CondizioniPagamento; ///< TP01 instalments, TP02 full, TP03 advance
    std::vector<DettaglioPagamentoType> DettaglioPagamento;
};

/// An embedded file. Its content stays base64 inside the text of the invoice file, which it keeps alive, until it is
/// asked for.
struct AllegatiType {
    std::string NomeAttachment; ///< as claimed: pass it through SafeFileName before a file is created
    std::string AlgoritmoCompressione;
    std::string FormatoAttachment;
    std::string DescrizioneAttachment;
    std::string_view Attachment; ///< base64 text inside *file_text; may hold blanks and line ends
    std::shared_ptr<const std::string> file_text;

    /// The bytes of the embedded file. @return nothing when the base64 is damaged; an empty text when there is no
    /// content
    std::optional<std::string> Content() const;
};

struct FatturaElettronicaBody {
    DatiGeneraliType DatiGenerali;
    DatiBeniServiziType DatiBeniServizi;
    std::optional<DatiVeicoliType> DatiVeicoli;
    std::vector<DatiPagamentoType> DatiPagamento;
    std::vector<AllegatiType> Allegati;
};

struct FatturaElettronica {
    std::string versione;
    bool is_simplified = false;
    FatturaElettronicaHeader Header;
    std::vector<FatturaElettronicaBody> Body; ///< at least one after a successful load
};

// --- Questions about the content
// --------------------------------------------------------------------------------------

/// Sums of the DatiRiepilogo rows, each row rounded to cents; signs as in the file.
struct SummaryTotals {
    double imponibile = 0;
    double imposta = 0;
    double totale = 0; ///< imponibile + imposta
};
SummaryTotals SumOfSummary(const FatturaElettronicaBody &body);

/// The declared ImportoTotaleDocumento; when missing, the summary's total plus the document's Arrotondamento.
double TotaleDocumento(const FatturaElettronicaBody &body);

/// True when the amounts as written are below zero: by the summary, and where that is zero by the declared total.
bool IsNegative(const FatturaElettronicaBody &body);

/// Due day of an instalment: DataScadenzaPagamento; else DataRiferimentoTerminiPagamento, or the document's date where
/// that is missing, plus GiorniTerminiPagamento.
long DueDay(const DettaglioPagamentoType &payment, long document_day);

/// Denominazione, or "Cognome Nome" of a person.
std::string NameOf(const AnagraficaType &anagrafica);

/// IdCodice without blanks and without the country when that is repeated in front of it (seen with foreign sellers).
std::string VatNumber(const IdFiscaleType &id);

} // namespace fatturapa

#include "tarvolumera/fatturapa/CommonFields.h"
#include "tarvolumera/fatturapa/FormatReaders.h"

#include <fmt/format.h>

namespace fatturapa {

namespace {

// --- Header ---------------------------------------------------------------------------------------------------------

constexpr Field<PartyType> kParty[] = {
    {"DatiAnagrafici", Nested<&PartyType::DatiAnagrafici, kDatiAnagrafici>},
    {"Sede", Nested<&PartyType::Sede, kIndirizzo>},
    {"StabileOrganizzazione", Optional<&PartyType::StabileOrganizzazione, kIndirizzo>},
    {"IscrizioneREA", Nested<&PartyType::IscrizioneREA, kIscrizioneREA>},
    {"Contatti", Nested<&PartyType::Contatti, kContatti>},
    {"RiferimentoAmministrazione", Text<&PartyType::RiferimentoAmministrazione>},
    {"RappresentanteFiscale", Optional<&PartyType::RappresentanteFiscale, kRappresentante>},
};

constexpr Field<FatturaElettronicaHeader> kHeader[] = {
    {"DatiTrasmissione", Nested<&FatturaElettronicaHeader::DatiTrasmissione, kDatiTrasmissione>},
    {"CedentePrestatore",
     Present<&ReadContext::has_seller, Nested<&FatturaElettronicaHeader::CedentePrestatore, kParty>>},
    {"RappresentanteFiscale", Optional<&FatturaElettronicaHeader::RappresentanteFiscale, kRappresentante>},
    {"CessionarioCommittente",
     Present<&ReadContext::has_buyer, Nested<&FatturaElettronicaHeader::CessionarioCommittente, kParty>>},
    {"TerzoIntermediarioOSoggettoEmittente",
     Optional<&FatturaElettronicaHeader::TerzoIntermediarioOSoggettoEmittente, kRappresentante>},
    {"SoggettoEmittente", Text<&FatturaElettronicaHeader::SoggettoEmittente>},
};

// --- DatiGenerali ---------------------------------------------------------------------------------------------------

constexpr Field<DatiRitenutaType> kDatiRitenuta[] = {
    {"TipoRitenuta", Text<&DatiRitenutaType::TipoRitenuta>},
    {"ImportoRitenuta", Amount<&DatiRitenutaType::ImportoRitenuta>},
    {"AliquotaRitenuta", Amount<&DatiRitenutaType::AliquotaRitenuta>},
    {"CausalePagamento", Text<&DatiRitenutaType::CausalePagamento>},
};

constexpr Field<DatiBolloType> kDatiBollo[] = {
    {"BolloVirtuale", Text<&DatiBolloType::BolloVirtuale>},
    {"ImportoBollo", Amount<&DatiBolloType::ImportoBollo>},
};

constexpr Field<DatiCassaPrevidenzialeType> kDatiCassa[] = {
    {"TipoCassa", Text<&DatiCassaPrevidenzialeType::TipoCassa>},
    {"AlCassa", Amount<&DatiCassaPrevidenzialeType::AlCassa>},
    {"ImportoContributoCassa", Amount<&DatiCassaPrevidenzialeType::ImportoContributoCassa>},
    {"ImponibileCassa", Amount<&DatiCassaPrevidenzialeType::ImponibileCassa>},
    {"AliquotaIVA", Amount<&DatiCassaPrevidenzialeType::AliquotaIVA>},
    {"Ritenuta", Text<&DatiCassaPrevidenzialeType::Ritenuta>},
    {"Natura", Text<&DatiCassaPrevidenzialeType::Natura>},
    {"RiferimentoAmministrazione", Text<&DatiCassaPrevidenzialeType::RiferimentoAmministrazione>},
};

constexpr Field<ScontoMaggiorazioneType> kScontoMaggiorazione[] = {
    {"Tipo", Text<&ScontoMaggiorazioneType::Tipo>},
    {"Percentuale", Amount<&ScontoMaggiorazioneType::Percentuale>},
    {"Importo", Amount<&ScontoMaggiorazioneType::Importo>},
};

using Documento = DatiGeneraliDocumentoType;
constexpr Field<Documento> kDatiGeneraliDocumento[] = {
    {"TipoDocumento", Text<&Documento::TipoDocumento>},
    {"Divisa", Text<&Documento::Divisa>},
    {"Data", [](ReadContext &context, Documento &documento) { ReadDocumentDay(context, documento.Data); }},
    {"Numero", Text<&Documento::Numero>},
    {"DatiRitenuta", List<&Documento::DatiRitenuta, kDatiRitenuta>},
    {"DatiBollo", Optional<&Documento::DatiBollo, kDatiBollo>},
    {"DatiCassaPrevidenziale", List<&Documento::DatiCassaPrevidenziale, kDatiCassa>},
    {"ScontoMaggiorazione", List<&Documento::ScontoMaggiorazione, kScontoMaggiorazione>},
    {"ImportoTotaleDocumento", Amount<&Documento::ImportoTotaleDocumento>},
    {"Arrotondamento", Amount<&Documento::Arrotondamento>},
    {"Causale", TextList<&Documento::Causale>},
    {"Art73", Text<&Documento::Art73>},
};

constexpr Field<DatiDocumentiCorrelatiType> kCorrelati[] = {
    {"RiferimentoNumeroLinea", WholeList<&DatiDocumentiCorrelatiType::RiferimentoNumeroLinea>},
    {"IdDocumento", Text<&DatiDocumentiCorrelatiType::IdDocumento>},
    {"Data", Day<&DatiDocumentiCorrelatiType::Data>},
    {"NumItem", Text<&DatiDocumentiCorrelatiType::NumItem>},
    {"CodiceCommessaConvenzione", Text<&DatiDocumentiCorrelatiType::CodiceCommessaConvenzione>},
    {"CodiceCUP", Text<&DatiDocumentiCorrelatiType::CodiceCUP>},
    {"CodiceCIG", Text<&DatiDocumentiCorrelatiType::CodiceCIG>},
};

constexpr Field<DatiGeneraliType> kDatiSAL[] = {
    {"RiferimentoFase", WholeList<&DatiGeneraliType::DatiSAL>},
};

constexpr Field<DatiDDTType> kDatiDDT[] = {
    {"NumeroDDT", Text<&DatiDDTType::NumeroDDT>},
    {"DataDDT", Day<&DatiDDTType::DataDDT>},
    {"RiferimentoNumeroLinea", WholeList<&DatiDDTType::RiferimentoNumeroLinea>},
};

constexpr Field<DatiTrasportoType> kDatiTrasporto[] = {
    {"DatiAnagraficiVettore", Nested<&DatiTrasportoType::DatiAnagraficiVettore, kDatiAnagrafici>},
    {"MezzoTrasporto", Text<&DatiTrasportoType::MezzoTrasporto>},
    {"CausaleTrasporto", Text<&DatiTrasportoType::CausaleTrasporto>},
    {"NumeroColli", Whole<&DatiTrasportoType::NumeroColli>},
    {"Descrizione", Text<&DatiTrasportoType::Descrizione>},
    {"UnitaMisuraPeso", Text<&DatiTrasportoType::UnitaMisuraPeso>},
    {"PesoLordo", Amount<&DatiTrasportoType::PesoLordo>},
    {"PesoNetto", Amount<&DatiTrasportoType::PesoNetto>},
    {"DataOraRitiro", Text<&DatiTrasportoType::DataOraRitiro>},
    {"DataInizioTrasporto", Day<&DatiTrasportoType::DataInizioTrasporto>},
    {"TipoResa", Text<&DatiTrasportoType::TipoResa>},
    {"IndirizzoResa", Nested<&DatiTrasportoType::IndirizzoResa, kIndirizzo>},
    {"DataOraConsegna", Text<&DatiTrasportoType::DataOraConsegna>},
};

constexpr Field<FatturaPrincipaleType> kFatturaPrincipale[] = {
    {"NumeroFatturaPrincipale", Text<&FatturaPrincipaleType::NumeroFatturaPrincipale>},
    {"DataFatturaPrincipale", Day<&FatturaPrincipaleType::DataFatturaPrincipale>},
};

constexpr Field<DatiGeneraliType> kDatiGenerali[] = {
    {"DatiGeneraliDocumento", Nested<&DatiGeneraliType::DatiGeneraliDocumento, kDatiGeneraliDocumento>},
    {"DatiOrdineAcquisto", List<&DatiGeneraliType::DatiOrdineAcquisto, kCorrelati>},
    {"DatiContratto", List<&DatiGeneraliType::DatiContratto, kCorrelati>},
    {"DatiConvenzione", List<&DatiGeneraliType::DatiConvenzione, kCorrelati>},
    {"DatiRicezione", List<&DatiGeneraliType::DatiRicezione, kCorrelati>},
    {"DatiFattureCollegate", List<&DatiGeneraliType::DatiFattureCollegate, kCorrelati>},
    {"DatiSAL", [](ReadContext &context, DatiGeneraliType &generali) { ReadFields(context, generali, kDatiSAL); }},
    {"DatiDDT", List<&DatiGeneraliType::DatiDDT, kDatiDDT>},
    {"DatiTrasporto", Optional<&DatiGeneraliType::DatiTrasporto, kDatiTrasporto>},
    {"FatturaPrincipale", Optional<&DatiGeneraliType::FatturaPrincipale, kFatturaPrincipale>},
};

// --- DatiBeniServizi ------------------------------------------------------------------------------------------------

constexpr Field<CodiceArticoloType> kCodiceArticolo[] = {
    {"CodiceTipo", Text<&CodiceArticoloType::CodiceTipo>},
    {"CodiceValore", Text<&CodiceArticoloType::CodiceValore>},
};

constexpr Field<AltriDatiGestionaliType> kAltriDatiGestionali[] = {
    {"TipoDato", Text<&AltriDatiGestionaliType::TipoDato>},
    {"RiferimentoTesto", Text<&AltriDatiGestionaliType::RiferimentoTesto>},
    {"RiferimentoNumero", Amount<&AltriDatiGestionaliType::RiferimentoNumero>},
    {"RiferimentoData", Day<&AltriDatiGestionaliType::RiferimentoData>},
};

using Linea = DettaglioLineeType;
constexpr Field<Linea> kDettaglioLinee[] = {
    {"NumeroLinea", Whole<&Linea::NumeroLinea>},
    {"TipoCessionePrestazione", Text<&Linea::TipoCessionePrestazione>},
    {"CodiceArticolo", List<&Linea::CodiceArticolo, kCodiceArticolo>},
    {"Descrizione", Text<&Linea::Descrizione>},
    {"Quantita", Amount<&Linea::Quantita>},
    {"UnitaMisura", Text<&Linea::UnitaMisura>},
    {"DataInizioPeriodo", Day<&Linea::DataInizioPeriodo>},
    {"DataFinePeriodo", Day<&Linea::DataFinePeriodo>},
    {"PrezzoUnitario", Amount<&Linea::PrezzoUnitario>},
    {"ScontoMaggiorazione", List<&Linea::ScontoMaggiorazione, kScontoMaggiorazione>},
    {"PrezzoTotale", Amount<&Linea::PrezzoTotale>},
    {"AliquotaIVA", Amount<&Linea::AliquotaIVA>},
    {"Ritenuta", Text<&Linea::Ritenuta>},
    {"Natura", Text<&Linea::Natura>},
    {"RiferimentoAmministrazione", Text<&Linea::RiferimentoAmministrazione>},
    {"AltriDatiGestionali", List<&Linea::AltriDatiGestionali, kAltriDatiGestionali>},
};

/// A summary row while it is read: which of the amounts that the books cannot do without have been seen.
struct SummaryRow {
    DatiRiepilogoType row;
    std::optional<double> rate;
    std::optional<double> taxable;
    std::optional<double> tax;
};

template <std::optional<double> SummaryRow::*M>
void RequiredAmount(ReadContext &context, SummaryRow &target)
{
    const std::string_view text = context.xml.Text();
    context.WarnOfBlanks(text);
    target.*M = ParseXmlAmount(text);
    if (!(target.*M)) {
        context.RefuseDocument(
            fmt::format("{} \"{}\": non è un numero", context.xml.PlaceOfText(), text.substr(0, 40)));
    }
}

template <auto M>
void RowText(ReadContext &context, SummaryRow &target)
{
    ReadText(context, target.row.*M);
}

template <auto M>
void RowAmount(ReadContext &context, SummaryRow &target)
{
    ReadAmount(context, target.row.*M);
}

constexpr Field<SummaryRow> kDatiRiepilogo[] = {
    {"AliquotaIVA", RequiredAmount<&SummaryRow::rate>},
    {"Natura", RowText<&DatiRiepilogoType::Natura>},
    {"SpeseAccessorie", RowAmount<&DatiRiepilogoType::SpeseAccessorie>},
    {"Arrotondamento", RowAmount<&DatiRiepilogoType::Arrotondamento>},
    {"ImponibileImporto", RequiredAmount<&SummaryRow::taxable>},
    {"Imposta", RequiredAmount<&SummaryRow::tax>},
    {"EsigibilitaIVA", RowText<&DatiRiepilogoType::EsigibilitaIVA>},
    {"RiferimentoNormativo", RowText<&DatiRiepilogoType::RiferimentoNormativo>},
};

void ReadRiepilogo(ReadContext &context, DatiBeniServiziType &target)
{
    context.CountEntry(target.DatiRiepilogo.size() + 1);
    SummaryRow read;
    ReadFields(context, read, kDatiRiepilogo);
    const auto require = [&](const std::optional<double> &amount, const char *name) {
        if (!amount) {
            context.RefuseDocument(
                fmt::format("DatiRiepilogo[{}]: manca l'elemento {}", target.DatiRiepilogo.size() + 1, name));
        }
        return *amount;
    };
    read.row.AliquotaIVA = require(read.rate, "AliquotaIVA");
    read.row.ImponibileImporto = require(read.taxable, "ImponibileImporto");
    read.row.Imposta = require(read.tax, "Imposta");
    target.DatiRiepilogo.push_back(std::move(read.row));
}

constexpr Field<DatiBeniServiziType> kDatiBeniServizi[] = {
    {"DettaglioLinee", List<&DatiBeniServiziType::DettaglioLinee, kDettaglioLinee>},
    {"DatiRiepilogo", ReadRiepilogo},
};

// --- Payment and the whole body -------------------------------------------------------------------------------------

constexpr Field<DatiVeicoliType> kDatiVeicoli[] = {
    {"Data", Day<&DatiVeicoliType::Data>},
    {"TotalePercorso", Text<&DatiVeicoliType::TotalePercorso>},
};

using Pagamento = DettaglioPagamentoType;
constexpr Field<Pagamento> kDettaglioPagamento[] = {
    {"Beneficiario", Text<&Pagamento::Beneficiario>},
    {"ModalitaPagamento", Text<&Pagamento::ModalitaPagamento>},
    {"DataRiferimentoTerminiPagamento", Day<&Pagamento::DataRiferimentoTerminiPagamento>},
    {"GiorniTerminiPagamento", Whole<&Pagamento::GiorniTerminiPagamento>},
    {"DataScadenzaPagamento", Day<&Pagamento::DataScadenzaPagamento>},
    {"ImportoPagamento", Amount<&Pagamento::ImportoPagamento>},
    {"CodUfficioPostale", Text<&Pagamento::CodUfficioPostale>},
    {"CognomeQuietanzante", Text<&Pagamento::CognomeQuietanzante>},
    {"NomeQuietanzante", Text<&Pagamento::NomeQuietanzante>},
    {"CFQuietanzante", Text<&Pagamento::CFQuietanzante>},
    {"TitoloQuietanzante", Text<&Pagamento::TitoloQuietanzante>},
    {"IstitutoFinanziario", Text<&Pagamento::IstitutoFinanziario>},
    {"IBAN", Text<&Pagamento::IBAN>},
    {"ABI", Text<&Pagamento::ABI>},
    {"CAB", Text<&Pagamento::CAB>},
    {"BIC", Text<&Pagamento::BIC>},
    {"ScontoPagamentoAnticipato", Amount<&Pagamento::ScontoPagamentoAnticipato>},
    {"DataLimitePagamentoAnticipato", Day<&Pagamento::DataLimitePagamentoAnticipato>},
    {"PenalitaPagamentiRitardati", Amount<&Pagamento::PenalitaPagamentiRitardati>},
    {"DataDecorrenzaPenale", Day<&Pagamento::DataDecorrenzaPenale>},
    {"CodicePagamento", Text<&Pagamento::CodicePagamento>},
};

constexpr Field<DatiPagamentoType> kDatiPagamento[] = {
    {"CondizioniPagamento", Text<&DatiPagamentoType::CondizioniPagamento>},
    {"DettaglioPagamento", List<&DatiPagamentoType::DettaglioPagamento, kDettaglioPagamento>},
};

constexpr Field<FatturaElettronicaBody> kBody[] = {
    {"DatiGenerali", Nested<&FatturaElettronicaBody::DatiGenerali, kDatiGenerali>},
    {"DatiBeniServizi", Nested<&FatturaElettronicaBody::DatiBeniServizi, kDatiBeniServizi>},
    {"DatiVeicoli", Optional<&FatturaElettronicaBody::DatiVeicoli, kDatiVeicoli>},
    {"DatiPagamento", List<&FatturaElettronicaBody::DatiPagamento, kDatiPagamento>},
    {"Allegati", ReadAllegati},
};

constexpr Field<FatturaElettronica> kRoot[] = {
    {"FatturaElettronicaHeader", Present<&ReadContext::has_header, Nested<&FatturaElettronica::Header, kHeader>>},
    {"FatturaElettronicaBody",
     [](ReadContext &context, FatturaElettronica &fattura) {
         ++context.document;
         FatturaElettronicaBody &body = fattura.Body.emplace_back();
         ReadFields(context, body, kBody);
         RequireUsable(context, body);
     }},
};

} // namespace

void ReadOrdinary(ReadContext &context, FatturaElettronica &fattura)
{
    ReadFields(context, fattura, kRoot);
}

} // namespace fatturapa

#include "tarvolumera/fatturapa/CommonFields.h"
#include "tarvolumera/fatturapa/FormatReaders.h"

#include "tarvodlg/base/Numbers.h"

#include <fmt/format.h>

#include <cmath>

namespace fatturapa {

namespace {

// --- Header: what the ordinary format nests lies flat here
// ------------------------------------------------------------

void ReadDenominazione(ReadContext &context, PartyType &party)
{
    ReadText(context, party.DatiAnagrafici.Anagrafica.Denominazione);
}

void ReadNome(ReadContext &context, PartyType &party)
{
    ReadText(context, party.DatiAnagrafici.Anagrafica.Nome);
}

void ReadCognome(ReadContext &context, PartyType &party)
{
    ReadText(context, party.DatiAnagrafici.Anagrafica.Cognome);
}

void ReadIdFiscale(ReadContext &context, PartyType &party)
{
    ReadFields(context, party.DatiAnagrafici.IdFiscaleIVA, kIdFiscale);
}

void ReadCodiceFiscale(ReadContext &context, PartyType &party)
{
    ReadText(context, party.DatiAnagrafici.CodiceFiscale);
}

constexpr Field<PartyType> kSeller[] = {
    {"IdFiscaleIVA", ReadIdFiscale},
    {"CodiceFiscale", ReadCodiceFiscale},
    {"Denominazione", ReadDenominazione},
    {"Nome", ReadNome},
    {"Cognome", ReadCognome},
    {"Sede", Nested<&PartyType::Sede, kIndirizzo>},
    {"StabileOrganizzazione", Optional<&PartyType::StabileOrganizzazione, kIndirizzo>},
    {"RappresentanteFiscale", Optional<&PartyType::RappresentanteFiscale, kRappresentante>},
    {"IscrizioneREA", Nested<&PartyType::IscrizioneREA, kIscrizioneREA>},
    {"RegimeFiscale",
     [](ReadContext &context, PartyType &party) { ReadText(context, party.DatiAnagrafici.RegimeFiscale); }},
};

constexpr Field<PartyType> kIdentificativiFiscali[] = {
    {"IdFiscaleIVA", ReadIdFiscale},
    {"CodiceFiscale", ReadCodiceFiscale},
};

constexpr Field<PartyType> kAltriDatiIdentificativi[] = {
    {"Denominazione", ReadDenominazione},
    {"Nome", ReadNome},
    {"Cognome", ReadCognome},
    {"Sede", Nested<&PartyType::Sede, kIndirizzo>},
    {"StabileOrganizzazione", Optional<&PartyType::StabileOrganizzazione, kIndirizzo>},
    {"RappresentanteFiscale", Optional<&PartyType::RappresentanteFiscale, kRappresentante>},
};

constexpr Field<PartyType> kBuyer[] = {
    {"IdentificativiFiscali",
     [](ReadContext &context, PartyType &party) { ReadFields(context, party, kIdentificativiFiscali); }},
    {"AltriDatiIdentificativi",
     [](ReadContext &context, PartyType &party) { ReadFields(context, party, kAltriDatiIdentificativi); }},
};

constexpr Field<FatturaElettronicaHeader> kHeader[] = {
    {"DatiTrasmissione", Nested<&FatturaElettronicaHeader::DatiTrasmissione, kDatiTrasmissione>},
    {"CedentePrestatore",
     Present<&ReadContext::has_seller, Nested<&FatturaElettronicaHeader::CedentePrestatore, kSeller>>},
    {"CessionarioCommittente",
     Present<&ReadContext::has_buyer, Nested<&FatturaElettronicaHeader::CessionarioCommittente, kBuyer>>},
    {"SoggettoEmittente", Text<&FatturaElettronicaHeader::SoggettoEmittente>},
};

// --- Bodies ---------------------------------------------------------------------------------------------------------

/// One DatiBeniServizi element: an amount with the VAT inside, and either the VAT or its rate, or both.
struct GrossLine {
    std::string Descrizione;
    std::optional<double> Importo;
    std::optional<double> Imposta;
    std::optional<double> Aliquota;
    std::string Natura;
    std::string RiferimentoNormativo;
};

constexpr Field<GrossLine> kDatiIVA[] = {
    {"Imposta", Amount<&GrossLine::Imposta>},
    {"Aliquota", Amount<&GrossLine::Aliquota>},
};

constexpr Field<GrossLine> kGrossLine[] = {
    {"Descrizione", Text<&GrossLine::Descrizione>},
    {"Importo", Amount<&GrossLine::Importo>},
    {"DatiIVA", [](ReadContext &context, GrossLine &line) { ReadFields(context, line, kDatiIVA); }},
    {"Natura", Text<&GrossLine::Natura>},
    {"RiferimentoNormativo", Text<&GrossLine::RiferimentoNormativo>},
};

/// One rate and nature of the summary while the lines are added, in cents. What came with its tax and what came with
/// the rate alone are kept apart: the tax of the latter is split off once, from the sum, so that it is rounded once.
struct Group {
    double rate = 0;
    std::string natura;
    std::string riferimento;
    long long net = 0;
    long long tax = 0;
    long long gross_by_rate = 0;
};

struct GrossBody {
    DatiGeneraliType generali;
    std::vector<GrossLine> lines;
    FatturaElettronicaBody body; ///< takes the attachments, and at the end everything
};

using Documento = DatiGeneraliDocumentoType;
constexpr Field<Documento> kDatiGeneraliDocumento[] = {
    {"TipoDocumento", Text<&Documento::TipoDocumento>},
    {"Divisa", Text<&Documento::Divisa>},
    {"Data", [](ReadContext &context, Documento &documento) { ReadDocumentDay(context, documento.Data); }},
    {"Numero", Text<&Documento::Numero>},
    {"BolloVirtuale", [](ReadContext &context,
                         Documento &documento) { ReadText(context, documento.DatiBollo.emplace().BolloVirtuale); }},
};

constexpr Field<DatiFatturaRettificataType> kRettificata[] = {
    {"NumeroFR", Text<&DatiFatturaRettificataType::NumeroFR>},
    {"DataFR", Day<&DatiFatturaRettificataType::DataFR>},
    {"ElementiRettificati", Text<&DatiFatturaRettificataType::ElementiRettificati>},
};

constexpr Field<DatiGeneraliType> kDatiGenerali[] = {
    {"DatiGeneraliDocumento", Nested<&DatiGeneraliType::DatiGeneraliDocumento, kDatiGeneraliDocumento>},
    {"DatiFatturaRettificata", Optional<&DatiGeneraliType::DatiFatturaRettificata, kRettificata>},
};

constexpr Field<GrossBody> kBody[] = {
    {"DatiGenerali", Nested<&GrossBody::generali, kDatiGenerali>},
    {"DatiBeniServizi", List<&GrossBody::lines, kGrossLine>},
    {"Allegati", [](ReadContext &context, GrossBody &target) { ReadAllegati(context, target.body); }},
};

/// The rate that a tax was computed with. The tax is rounded to cents, so the rates in force are tried first and an
/// exact quotient only when none of them gives it.
/// @return nothing when there is no net amount to divide by: a document that corrects the tax alone
std::optional<double> RateFromTax(double net, double tax)
{
    if (TestIfZero(tax)) return 0.0;
    if (TestIfZero(net)) return std::nullopt;
    for (const double rate : {22.0, 10.0, 4.0, 5.0, 21.0, 20.0}) {
        if (TestIfZero(Round(net * rate / 100, 2) - tax)) return rate;
    }
    return Round(tax / net * 100, 2);
}

double RateOf(ReadContext &context, const GrossLine &line, std::size_t number)
{
    if (line.Aliquota) return *line.Aliquota;
    if (!line.Imposta) return 0;
    const std::optional<double> rate = RateFromTax(*line.Importo - *line.Imposta, *line.Imposta);
    if (!rate) {
        context.Warn(fmt::format("DatiBeniServizi[{}]: Imposta {:.2f} su imponibile zero, aliquota non ricavabile",
                                 number, *line.Imposta));
    }
    return rate.value_or(0);
}

Group &GroupFor(std::vector<Group> &groups, double rate, const GrossLine &line)
{
    for (Group &group : groups) {
        if (group.natura == line.Natura && TestIfZero(group.rate - rate)) return group;
    }
    return groups.emplace_back(Group{rate, line.Natura, {}, 0, 0, 0});
}

DettaglioLineeType NetLine(GrossLine &line, double rate, std::size_t number)
{
    DettaglioLineeType net;
    net.NumeroLinea = static_cast<long>(number);
    net.Descrizione = std::move(line.Descrizione);
    net.PrezzoTotale = Round(line.Imposta ? *line.Importo - *line.Imposta : *line.Importo / (1 + rate / 100), 2);
    net.PrezzoUnitario = net.PrezzoTotale;
    net.AliquotaIVA = rate;
    net.Natura = std::move(line.Natura);
    return net;
}

DatiRiepilogoType SummaryOf(Group &group)
{
    const double gross = FromCents(group.gross_by_rate);
    const double net = Round(gross / (1 + group.rate / 100), 2);
    DatiRiepilogoType row;
    row.AliquotaIVA = group.rate;
    row.Natura = std::move(group.natura);
    row.ImponibileImporto = FromCents(group.net + ToCents(net));
    row.Imposta = FromCents(group.tax + ToCents(gross - net));
    row.RiferimentoNormativo = std::move(group.riferimento);
    return row;
}

FatturaElettronicaBody ToOrdinary(ReadContext &context, GrossBody &&read)
{
    constexpr std::size_t groups_max = 200; // four rates are in force; a search through thousands would take for ever
    std::vector<Group> groups;
    long long total = 0;
    for (std::size_t i = 0; i < read.lines.size(); ++i) {
        GrossLine &line = read.lines[i];
        if (!line.Importo) {
            context.RefuseDocument(
                fmt::format("DatiBeniServizi[{}]: l'elemento Importo manca o non è un numero", i + 1));
        }
        const double rate = RateOf(context, line, i + 1);
        if (rate < 0) context.RefuseDocument(fmt::format("DatiBeniServizi[{}]: Aliquota {:.2f} negativa", i + 1, rate));
        Group &group = GroupFor(groups, rate, line);
        if (groups.size() > groups_max) context.RefuseDocument("troppe aliquote IVA diverse");
        if (group.riferimento.empty()) group.riferimento = std::move(line.RiferimentoNormativo);
        if (line.Imposta) {
            group.net += ToCents(*line.Importo) - ToCents(*line.Imposta);
            group.tax += ToCents(*line.Imposta);
        } else {
            group.gross_by_rate += ToCents(*line.Importo);
        }
        total += ToCents(*line.Importo);
        read.body.DatiBeniServizi.DettaglioLinee.push_back(NetLine(line, rate, i + 1));
    }
    for (Group &group : groups) read.body.DatiBeniServizi.DatiRiepilogo.push_back(SummaryOf(group));
    read.body.DatiGenerali = std::move(read.generali);
    if (!read.lines.empty()) {
        read.body.DatiGenerali.DatiGeneraliDocumento.ImportoTotaleDocumento = FromCents(total);
    }
    return std::move(read.body);
}

constexpr Field<FatturaElettronica> kRoot[] = {
    {"FatturaElettronicaHeader", Present<&ReadContext::has_header, Nested<&FatturaElettronica::Header, kHeader>>},
    {"FatturaElettronicaBody",
     [](ReadContext &context, FatturaElettronica &fattura) {
         ++context.document;
         GrossBody read;
         ReadFields(context, read, kBody);
         RequireUsable(context, fattura.Body.emplace_back(ToOrdinary(context, std::move(read))));
     }},
};

} // namespace

void ReadSimplified(ReadContext &context, FatturaElettronica &fattura)
{
    ReadFields(context, fattura, kRoot);
    // Where the ordinary format has it, so that readers need to look in one place.
    FatturaElettronicaHeader &header = fattura.Header;
    header.RappresentanteFiscale = std::move(header.CedentePrestatore.RappresentanteFiscale);
    header.CedentePrestatore.RappresentanteFiscale.reset();
}

} // namespace fatturapa

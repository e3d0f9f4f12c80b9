#include "tarvolumera/fatturapa/FormatReaders.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/FiscalCodes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace fatturapa {

namespace {

constexpr double kCent = 0.01 + 1e-6; // "by more than a cent", whatever the last bits of a double say

/// True for prefix and two digits from 1 to last: "TC01" ... "TC22".
bool IsNumberedCode(std::string_view code, std::string_view prefix, int last)
{
    if (code.size() != 4 || !code.starts_with(prefix)) return false;
    if (code[2] < '0' || code[2] > '9' || code[3] < '0' || code[3] > '9') return false;
    const int number = (code[2] - '0') * 10 + (code[3] - '0');
    return number >= 1 && number <= last;
}

constexpr std::string_view kSellerNumber = "CedentePrestatore/IdFiscaleIVA/IdCodice";
constexpr std::string_view kUnknownText = "*** SCONOSCIUTO ***";

class OddityFinder {
  public:
    explicit OddityFinder(ReadContext &context) : context_(context) {}

    void LookAtHeader(const FatturaElettronica &fattura)
    {
        const DatiTrasmissioneType &transmission = fattura.Header.DatiTrasmissione;
        if (transmission.IdTrasmittente.IdCodice.empty()) Missing("DatiTrasmissione/IdTrasmittente");
        if (transmission.ProgressivoInvio.empty()) Missing("DatiTrasmissione/ProgressivoInvio");
        const std::string &format = transmission.FormatoTrasmissione;
        if (format.empty()) {
            Missing("DatiTrasmissione/FormatoTrasmissione");
        } else if (fattura.versione.starts_with('F') && format != fattura.versione) { // up to 1.1 they were unrelated
            Odd("FormatoTrasmissione", format,
                fmt::format("diverso dalla versione del documento ({})", fattura.versione));
        }
        LookAtParties(fattura.Header);
        const std::string &issuer = fattura.Header.SoggettoEmittente;
        if (!issuer.empty() && issuer != "CC" && issuer != "TZ") Odd("SoggettoEmittente", issuer, "codice sconosciuto");
    }

    void LookAtBody(const FatturaElettronicaBody &body, bool is_simplified)
    {
        LookAtDocument(body);
        LookAtSummary(body, is_simplified);
        if (!is_simplified) CompareWithLines(body);
        LookAtPayments(body);
        for (const AllegatiType &allegato : body.Allegati) {
            if (allegato.Attachment.empty()) Odd("Allegati", allegato.NomeAttachment, "allegato dichiarato ma vuoto");
        }
    }

  private:
    void Odd(std::string_view element, std::string_view value, std::string_view what)
    {
        if (context_.WantsWarnings()) context_.Warn(fmt::format("{} \"{}\": {}", element, value.substr(0, 80), what));
    }

    void Missing(std::string_view element) { context_.Warn(fmt::format("{}: elemento mancante", element)); }

    void LookAtParties(const FatturaElettronicaHeader &header)
    {
        const DatiAnagraficiType &seller = header.CedentePrestatore.DatiAnagrafici;
        const IdFiscaleType &id = seller.IdFiscaleIVA;
        const std::string number = VatNumber(id);
        if (number.empty()) Missing("CedentePrestatore/IdFiscaleIVA");
        if (number != id.IdCodice) Odd(kSellerNumber, id.IdCodice, "contiene spazi o ripete il codice del paese");
        if (id.IdPaese == "IT" && !number.empty()) { // other countries have their own check characters
            const FiscalCodeCheck check = CheckVatNumber(number);
            if (!check.ok()) Odd(kSellerNumber, number, fmt::format("partita IVA errata ({})", check.text));
        }
        if (NameOf(seller.Anagrafica).empty()) Missing("CedentePrestatore/Anagrafica");
        if (seller.RegimeFiscale.empty()) {
            Missing("CedentePrestatore/RegimeFiscale");
        } else if (RegimeFiscaleText(seller.RegimeFiscale) == kUnknownText) {
            Odd("RegimeFiscale", seller.RegimeFiscale, "codice sconosciuto");
        }
        const DatiAnagraficiType &buyer = header.CessionarioCommittente.DatiAnagrafici;
        if (buyer.IdFiscaleIVA.IdCodice.empty() && buyer.CodiceFiscale.empty()) {
            context_.Warn("CessionarioCommittente: mancano sia la partita IVA sia il codice fiscale");
        }
    }

    void LookAtDocument(const FatturaElettronicaBody &body)
    {
        const DatiGeneraliDocumentoType &documento = body.DatiGenerali.DatiGeneraliDocumento;
        if (!IsKnownTipoDocumento(documento.TipoDocumento)) {
            Odd("TipoDocumento", documento.TipoDocumento, "codice sconosciuto");
        }
        if (documento.Divisa.empty()) {
            Missing("DatiGeneraliDocumento/Divisa");
        } else if (documento.Divisa != "EUR") {
            Odd("Divisa", documento.Divisa, "gli importi potrebbero non essere in euro");
        }
        if (documento.Numero.find_first_of("0123456789") == std::string::npos) {
            Odd("Numero", documento.Numero, "numero di documento senza cifre");
        }
        for (const DatiRitenutaType &ritenuta : documento.DatiRitenuta) {
            if (!IsNumberedCode(ritenuta.TipoRitenuta, "RT", 6)) {
                Odd("TipoRitenuta", ritenuta.TipoRitenuta, "codice sconosciuto");
            }
        }
        for (const DatiCassaPrevidenzialeType &cassa : documento.DatiCassaPrevidenziale) {
            if (!IsNumberedCode(cassa.TipoCassa, "TC", 22)) Odd("TipoCassa", cassa.TipoCassa, "codice sconosciuto");
        }
        LookAtTotal(body);
    }

    void LookAtTotal(const FatturaElettronicaBody &body)
    {
        const DatiGeneraliDocumentoType &documento = body.DatiGenerali.DatiGeneraliDocumento;
        if (!documento.ImportoTotaleDocumento) {
            context_.Warn(fmt::format("ImportoTotaleDocumento mancante: calcolato {:.2f}", TotaleDocumento(body)));
            return;
        }
        // Suppliers count the roundings of the document and of its rows as inside the total or outside of it:
        // every reading is in use.
        const double difference = *documento.ImportoTotaleDocumento - SumOfSummary(body).totale;
        double rows_rounding = 0;
        for (const DatiRiepilogoType &row : body.DatiBeniServizi.DatiRiepilogo) {
            rows_rounding += row.Arrotondamento.value_or(0);
        }
        for (const double reading : {0.0, documento.Arrotondamento.value_or(0), rows_rounding}) {
            if (std::fabs(difference - reading) <= kCent) return;
        }
        Odd("ImportoTotaleDocumento", fmt::format("{:.2f}", *documento.ImportoTotaleDocumento),
            fmt::format("il riepilogo IVA dà {:.2f}", SumOfSummary(body).totale));
    }

    void LookAtSummary(const FatturaElettronicaBody &body, bool is_simplified)
    {
        for (const DatiRiepilogoType &row : body.DatiBeniServizi.DatiRiepilogo) {
            // A simplified document that corrects the tax alone has no rate; its line has been named already.
            if (is_simplified && TestIfZero(row.AliquotaIVA) && !TestIfZero(row.Imposta)) continue;
            LookAtNatura(row, body.DatiGenerali.DatiGeneraliDocumento);
            const double expected = row.ImponibileImporto * row.AliquotaIVA / 100;
            if (std::fabs(Round(expected, 2) - row.Imposta) > kCent) {
                Odd("DatiRiepilogo/Imposta", fmt::format("{:.2f}", row.Imposta),
                    fmt::format("{:.2f} al {:.2f}% dà {:.2f}", row.ImponibileImporto, row.AliquotaIVA, expected));
            }
            if (row.AliquotaIVA < 0 || row.AliquotaIVA > 100 || (row.AliquotaIVA > 0 && row.AliquotaIVA < 1)) {
                Odd("DatiRiepilogo/AliquotaIVA", fmt::format("{:.2f}", row.AliquotaIVA), "aliquota non plausibile");
            }
            const std::string &due = row.EsigibilitaIVA;
            if (!due.empty() && due != "I" && due != "D" && due != "S")
                Odd("EsigibilitaIVA", due, "codice sconosciuto");
            if (due == "S" && row.Natura.starts_with("N6")) {
                Odd("EsigibilitaIVA", due, fmt::format("non compatibile con Natura {}", row.Natura));
            }
        }
    }

    void LookAtNatura(const DatiRiepilogoType &row, const DatiGeneraliDocumentoType &documento)
    {
        static const long sub_codes_day = DateToJulian(1, 1, 2021); // the generic natures ended on the day before
        const std::string &natura = row.Natura;
        if (natura.empty()) {
            if (TestIfZero(row.AliquotaIVA)) Odd("DatiRiepilogo/AliquotaIVA", "0.00", "aliquota zero senza Natura");
            return;
        }
        if (!IsKnownNatura(natura)) {
            Odd("DatiRiepilogo/Natura", natura, "codice sconosciuto");
        } else if ((natura == "N2" || natura == "N3" || natura == "N6") && documento.Data >= sub_codes_day) {
            Odd("DatiRiepilogo/Natura", natura, "natura generica, non più ammessa dal 01/01/2021");
        }
        // An integration (TD16) carries the nature of the invoice that it integrates and the rate of the tax owed.
        if (!TestIfZero(row.AliquotaIVA) && documento.TipoDocumento != "TD16") {
            Odd("DatiRiepilogo/Natura", natura, fmt::format("presente con aliquota {:.2f}", row.AliquotaIVA));
        }
    }

    /// What the lines and the summary say of one rate and nature.
    struct Taxable {
        double rate;
        std::string_view natura;
        double lines; ///< with pension fund contributions and accessory expenses
        double summary;
        double rounding; ///< inside the taxable amount for some sellers, outside for others
    };

    void CompareWithLines(const FatturaElettronicaBody &body)
    {
        const std::vector<DettaglioLineeType> &lines = body.DatiBeniServizi.DettaglioLinee;
        if (lines.empty()) {
            context_.Warn("DatiBeniServizi: il documento non contiene linee di dettaglio");
            return;
        }
        // Discounts of the whole document are spread over the rates by the seller in ways that the file does not tell.
        if (!body.DatiGenerali.DatiGeneraliDocumento.ScontoMaggiorazione.empty()) return;
        std::vector<Taxable> groups;
        if (!AddTaxables(body, groups)) return;
        for (const Taxable &group : groups) {
            const double difference = group.summary - group.lines;
            if (std::fabs(difference) <= kCent || std::fabs(difference - group.rounding) <= kCent) continue;
            Odd("DatiRiepilogo/ImponibileImporto", fmt::format("{:.2f}", group.summary),
                fmt::format("linee, cassa e spese al {:.2f}%{}{} danno {:.2f}", group.rate,
                            group.natura.empty() ? "" : " ", group.natura, group.lines));
        }
    }

    /// @return false when there are more rates than any document has; comparing them would only cost time
    static bool AddTaxables(const FatturaElettronicaBody &body, std::vector<Taxable> &groups)
    {
        constexpr std::size_t groups_max = 50;
        const auto group_of = [&](double rate, std::string_view natura) -> Taxable & {
            for (Taxable &group : groups) {
                if (group.natura == natura && std::fabs(group.rate - rate) < 0.005) return group;
            }
            return groups.emplace_back(Taxable{rate, natura, 0, 0, 0});
        };
        for (const DatiRiepilogoType &row : body.DatiBeniServizi.DatiRiepilogo) {
            Taxable &group = group_of(row.AliquotaIVA, row.Natura);
            group.summary += row.ImponibileImporto;
            group.lines += row.SpeseAccessorie.value_or(0);
            group.rounding += row.Arrotondamento.value_or(0);
            if (groups.size() > groups_max) return false;
        }
        for (const DettaglioLineeType &line : body.DatiBeniServizi.DettaglioLinee) {
            group_of(line.AliquotaIVA, line.Natura).lines += line.PrezzoTotale;
            if (groups.size() > groups_max) return false;
        }
        for (const DatiCassaPrevidenzialeType &cassa : body.DatiGenerali.DatiGeneraliDocumento.DatiCassaPrevidenziale) {
            group_of(cassa.AliquotaIVA, cassa.Natura).lines += cassa.ImportoContributoCassa;
            if (groups.size() > groups_max) return false;
        }
        return true;
    }

    void LookAtPayments(const FatturaElettronicaBody &body)
    {
        for (const DatiPagamentoType &pagamento : body.DatiPagamento) {
            if (CondizioniPagamentoText(pagamento.CondizioniPagamento) == kUnknownText) {
                Odd("CondizioniPagamento", pagamento.CondizioniPagamento, "codice sconosciuto");
            }
            for (const DettaglioPagamentoType &dettaglio : pagamento.DettaglioPagamento) {
                if (ModalitaPagamentoText(dettaglio.ModalitaPagamento) == kUnknownText) {
                    Odd("ModalitaPagamento", dettaglio.ModalitaPagamento, "codice sconosciuto");
                }
            }
        }
    }

    ReadContext &context_;
};

} // namespace

void WarnOfOddities(ReadContext &context, const FatturaElettronica &fattura)
{
    OddityFinder finder(context);
    context.document = -1;
    finder.LookAtHeader(fattura);
    for (const FatturaElettronicaBody &body : fattura.Body) {
        ++context.document;
        finder.LookAtBody(body, fattura.is_simplified);
    }
}

} // namespace fatturapa

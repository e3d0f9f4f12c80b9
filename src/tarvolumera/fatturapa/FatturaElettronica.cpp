#include "tarvolumera/fatturapa/FatturaElettronica.h"

#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/Text.h"
#include "tarvolumera/fatturapa/Base64.h"

#include <algorithm>

namespace fatturapa {

std::optional<std::string> AllegatiType::Content() const
{
    std::string bytes;
    if (!DecodeBase64(Attachment, bytes)) return std::nullopt;
    return bytes;
}

SummaryTotals SumOfSummary(const FatturaElettronicaBody &body)
{
    long long imponibile = 0;
    long long imposta = 0;
    for (const DatiRiepilogoType &row : body.DatiBeniServizi.DatiRiepilogo) {
        imponibile += ToCents(row.ImponibileImporto);
        imposta += ToCents(row.Imposta);
    }
    return {FromCents(imponibile), FromCents(imposta), FromCents(imponibile + imposta)};
}

double TotaleDocumento(const FatturaElettronicaBody &body)
{
    const DatiGeneraliDocumentoType &documento = body.DatiGenerali.DatiGeneraliDocumento;
    if (documento.ImportoTotaleDocumento) return *documento.ImportoTotaleDocumento;
    return Round(SumOfSummary(body).totale + documento.Arrotondamento.value_or(0), 2);
}

bool IsNegative(const FatturaElettronicaBody &body)
{
    const double total = SumOfSummary(body).totale;
    if (!TestIfZero(total)) return total < 0;
    return body.DatiGenerali.DatiGeneraliDocumento.ImportoTotaleDocumento.value_or(0) < 0;
}

long DueDay(const DettaglioPagamentoType &payment, long document_day)
{
    if (payment.DataScadenzaPagamento != 0) return payment.DataScadenzaPagamento;
    const long start = payment.DataRiferimentoTerminiPagamento;
    const long days = payment.GiorniTerminiPagamento.value_or(0);
    const bool is_sensible = days >= 0 && days <= 999; // what the schema admits
    return (start != 0 ? start : document_day) + (is_sensible ? days : 0);
}

std::string NameOf(const AnagraficaType &anagrafica)
{
    if (!anagrafica.Denominazione.empty()) return anagrafica.Denominazione;
    return std::string(Trimmed(anagrafica.Cognome + " " + anagrafica.Nome));
}

std::string VatNumber(const IdFiscaleType &id)
{
    std::string code = id.IdCodice;
    std::erase(code, ' ');
    const bool is_repeated =
        id.IdPaese.size() == 2 && code.size() > 2 && EqualsIgnoreCase(std::string_view(code).substr(0, 2), id.IdPaese);
    return is_repeated ? code.substr(2) : code;
}

} // namespace fatturapa

#include "einvoice/SheetSections.h"

#include "einvoice/InvoiceRounding.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

using fatturapa::DettaglioPagamentoType;

std::string DayText(std::string_view word, long day)
{
    return Labelled(word, FormatDate(day));
}

void AddTotal(std::vector<SheetRow> *rows, std::string label, double amount, SheetTone tone = SheetTone::Plain)
{
    rows->push_back({{}, {{std::move(label), tone}}, {{SheetNumber(amount), tone}}});
}

void AddStampDuty(std::vector<SheetRow> *rows, const fatturapa::DatiBolloType &stamp)
{
    const std::string how = stamp.BolloVirtuale == "SI" ? "assolta in modo virtuale" : stamp.BolloVirtuale;
    rows->push_back({{}, Plain(Joined(" ", {"Imposta di bollo", how})), Plain(SheetNumber(stamp.ImportoBollo))});
}

/// A column that has anything to say in one of the rows at least; its room is another's otherwise.
template <class Rows, class Has>
bool IsUsed(const Rows &rows, Has has)
{
    return std::any_of(rows.begin(), rows.end(), has);
}

void AddNote(SheetCell *cell, std::string text, SheetTone tone = SheetTone::Note)
{
    if (!text.empty()) cell->push_back({std::move(text), tone});
}

SheetCell BankCell(const DettaglioPagamentoType &payment)
{
    SheetCell cell;
    AddNote(&cell, Labelled("IBAN", payment.IBAN), SheetTone::Plain);
    AddNote(&cell,
            Joined(", ", {payment.IstitutoFinanziario, Labelled("ABI", payment.ABI), Labelled("CAB", payment.CAB),
                          Labelled("BIC", payment.BIC)}),
            SheetTone::Plain);
    AddNote(&cell, Labelled("Beneficiario:", payment.Beneficiario));
    AddNote(&cell, Labelled("Quietanzante:",
                            Joined(" ", {payment.TitoloQuietanzante, payment.CognomeQuietanzante,
                                         payment.NomeQuietanzante, Labelled("C.F.", payment.CFQuietanzante)})));
    AddNote(&cell, Labelled("Ufficio postale:", payment.CodUfficioPostale));
    AddNote(&cell, Labelled("Codice pagamento:", payment.CodicePagamento));
    const std::string days =
        payment.GiorniTerminiPagamento ? fmt::format("{} giorni", *payment.GiorniTerminiPagamento) : std::string{};
    AddNote(&cell, Labelled("Termini:", Joined(" ", {days, DayText("dal", payment.DataRiferimentoTerminiPagamento)})));
    AddNote(&cell, Labelled("Sconto per pagamento anticipato:",
                            Joined(" ", {SheetNumber(payment.ScontoPagamentoAnticipato),
                                         DayText("entro il", payment.DataLimitePagamentoAnticipato)})));
    AddNote(&cell,
            Labelled("Penale per ritardato pagamento:", Joined(" ", {SheetNumber(payment.PenalitaPagamentiRitardati),
                                                                     DayText("dal", payment.DataDecorrenzaPenale)})));
    return cell;
}

SheetCell DueCell(const DettaglioPagamentoType &payment, long document_day)
{
    if (payment.DataScadenzaPagamento != 0) return Plain(FormatDate(payment.DataScadenzaPagamento));
    if (payment.DataRiferimentoTerminiPagamento == 0 && !payment.GiorniTerminiPagamento) return {};
    return {{FormatDate(DueDay(payment, document_day)), SheetTone::Plain}, {"(dai termini)", SheetTone::Note}};
}

std::string SignatureText(const EnvelopeInfo &envelope)
{
    if (!envelope.is_signed) return "file non firmato";
    std::string text;
    for (const std::string &signer : envelope.signers) text += (text.empty() ? "firmato da " : ", ") + signer;
    if (text.empty()) text = "firmato";
    return fmt::format("{} ({})", text, envelope.encoding);
}

} // namespace

SheetSection DiscountsSection(const fatturapa::DatiGeneraliDocumentoType &general)
{
    SheetFields fields;
    for (const auto &discount : general.ScontoMaggiorazione)
        fields.Add(discount.Tipo == "MG" ? "Maggiorazione" : "Sconto", DiscountText(discount));
    return std::move(fields).Section("Sconti e maggiorazioni sul documento");
}

SheetSection PensionFundsSection(const fatturapa::DatiGeneraliDocumentoType &general)
{
    std::vector<SheetRow> rows;
    for (const auto &fund : general.DatiCassaPrevidenziale) {
        SheetCell name = Plain(CodeWithText(fund.TipoCassa, TipoCassaText(fund.TipoCassa)));
        if (!fund.Ritenuta.empty())
            AddNote(&name, fund.Ritenuta == "SI" ? "Soggetto a ritenuta" : "Ritenuta: " + fund.Ritenuta);
        AddNote(&name, Labelled("Riferimento amministrazione:", fund.RiferimentoAmministrazione));
        rows.push_back({std::move(name), Plain(SheetPercent(fund.AlCassa)), Plain(SheetNumber(fund.ImponibileCassa)),
                        Plain(VatText(fund.AliquotaIVA, fund.Natura)),
                        Plain(SheetNumber(fund.ImportoContributoCassa))});
    }
    return SectionOf("Cassa previdenziale", SheetFrame::Table,
                     {{"Cassa", 0, false},
                      {"Aliquota", 18, true},
                      {"Imponibile", 26, true},
                      {"IVA", 16, false},
                      {"Contributo", 26, true}},
                     std::move(rows));
}

SheetSection WithholdingSection(const fatturapa::DatiGeneraliDocumentoType &general)
{
    std::vector<SheetRow> rows;
    for (const auto &one : general.DatiRitenuta)
        rows.push_back({Plain(CodeWithText(one.TipoRitenuta, TipoRitenutaText(one.TipoRitenuta))),
                        Plain(one.CausalePagamento), Plain(SheetPercent(one.AliquotaRitenuta)),
                        Plain(SheetNumber(one.ImportoRitenuta))});
    return SectionOf("Ritenute", SheetFrame::Table,
                     {{"Tipo", 0, false}, {"Causale", 20, false}, {"Aliquota", 18, true}, {"Importo", 26, true}},
                     std::move(rows));
}

SheetSection SummarySection(const fatturapa::FatturaElettronicaBody &body)
{
    const std::vector<fatturapa::DatiRiepilogoType> &summary = body.DatiBeniServizi.DatiRiepilogo;
    const bool has_extra = IsUsed(summary, [](const auto &row) { return row.SpeseAccessorie.has_value(); });
    const bool has_rounding = IsUsed(summary, [](const auto &row) { return row.Arrotondamento.has_value(); });
    std::vector<SheetRow> rows;
    for (const fatturapa::DatiRiepilogoType &one : summary) {
        SheetCell nature;
        if (!one.Natura.empty()) nature = Plain(fmt::format("{} {}", one.Natura, fatturapa::NaturaText(one.Natura)));
        AddNote(&nature, one.RiferimentoNormativo, SheetTone::Plain);
        SheetRow &row = rows.emplace_back();
        row.push_back(Plain(SheetPercent(one.AliquotaIVA)));
        row.push_back(std::move(nature));
        row.push_back(Plain(CodeWithText(one.EsigibilitaIVA, fatturapa::EsigibilitaIvaText(one.EsigibilitaIVA))));
        if (has_extra) row.push_back(Plain(SheetNumber(one.SpeseAccessorie)));
        if (has_rounding) row.push_back(Plain(SheetNumber(one.Arrotondamento)));
        row.push_back(Plain(SheetNumber(one.ImponibileImporto)));
        row.push_back(Plain(SheetNumber(one.Imposta)));
    }
    std::vector<SheetColumn> columns = {
        {"Aliquota", 16, false}, {"Natura e riferimento normativo", 0, false}, {"Esigibilità", 28, false}};
    if (has_extra) columns.push_back({"Spese accessorie", 26, true});
    if (has_rounding) columns.push_back({"Arrotondamento", 26, true});
    columns.push_back({"Imponibile", 26, true});
    columns.push_back({"Imposta", 24, true});
    return SectionOf("Riepilogo IVA", SheetFrame::Table, std::move(columns), std::move(rows));
}

SheetSection TotalsSection(const fatturapa::FatturaElettronicaBody &body)
{
    const auto &general = body.DatiGenerali.DatiGeneraliDocumento;
    const fatturapa::SummaryTotals totals = fatturapa::SumOfSummary(body);
    const double total = fatturapa::TotaleDocumento(body);
    std::vector<SheetRow> rows;
    AddTotal(&rows, "Totale imponibile", totals.imponibile);
    AddTotal(&rows, "Totale imposta", totals.imposta);
    if (general.Arrotondamento) AddTotal(&rows, "Arrotondamento", *general.Arrotondamento);
    const bool is_stamp_in_total = ReadTotal(body).is_stamp_duty;
    if (general.DatiBollo && is_stamp_in_total) AddStampDuty(&rows, *general.DatiBollo);
    const std::string currency = general.Divisa.empty() || general.Divisa == "EUR" ? "€" : general.Divisa;
    AddTotal(&rows, "Totale documento " + currency, total, SheetTone::Total);
    if (!general.ImportoTotaleDocumento)
        rows.back()[1].push_back({"(calcolato: il file non lo dichiara)", SheetTone::Note});
    if (general.DatiBollo && !is_stamp_in_total) AddStampDuty(&rows, *general.DatiBollo);
    const double withheld = WithheldFrom(body), split_tax = SplitTaxOf(body);
    if (!TestIfZero(withheld)) AddTotal(&rows, "Ritenute", -withheld);
    if (!TestIfZero(split_tax)) AddTotal(&rows, "IVA in scissione dei pagamenti", -split_tax);
    if (!TestIfZero(withheld) || !TestIfZero(split_tax))
        AddTotal(&rows, "Netto a pagare " + currency, Round(total - withheld - split_tax, 2), SheetTone::Total);
    return SectionOf("", SheetFrame::Open, {{"", 0, false}, {"", 72, false}, {"", 34, true}}, std::move(rows));
}

SheetSection PaymentsSection(const fatturapa::FatturaElettronicaBody &body)
{
    const long document_day = body.DatiGenerali.DatiGeneraliDocumento.Data;
    std::vector<SheetRow> rows;
    for (const auto &block : body.DatiPagamento) {
        const std::string terms =
            CodeWithText(block.CondizioniPagamento, fatturapa::CondizioniPagamentoText(block.CondizioniPagamento));
        if (block.DettaglioPagamento.empty()) rows.push_back({Plain(terms), {}, {}, {}, {}});
        for (const DettaglioPagamentoType &payment : block.DettaglioPagamento)
            rows.push_back({&payment == &block.DettaglioPagamento.front() ? Plain(terms) : SheetCell{},
                            Plain(CodeWithText(payment.ModalitaPagamento,
                                               fatturapa::ModalitaPagamentoText(payment.ModalitaPagamento))),
                            BankCell(payment), DueCell(payment, document_day),
                            Plain(SheetNumber(payment.ImportoPagamento))});
    }
    return SectionOf("Pagamento", SheetFrame::Table,
                     {{"Condizioni", 30, false},
                      {"Modalità", 34, false},
                      {"Coordinate e termini", 0, false},
                      {"Scadenza", 21, false},
                      {"Importo", 25, true}},
                     std::move(rows));
}

SheetSection AttachmentsSection(const fatturapa::FatturaElettronicaBody &body)
{
    constexpr std::size_t kBase64Letters = 4, kBase64Bytes = 3, kKilobyte = 1024;
    std::vector<SheetRow> rows;
    for (const auto &file : body.Allegati) {
        const std::size_t bytes = file.Attachment.size() / kBase64Letters * kBase64Bytes;
        rows.push_back({Plain(file.NomeAttachment.empty() ? "(senza nome)" : file.NomeAttachment),
                        Plain(file.DescrizioneAttachment),
                        Plain(Joined(" ", {file.FormatoAttachment, file.AlgoritmoCompressione})),
                        Plain(fmt::format("{} KB", (bytes + kKilobyte - 1) / kKilobyte))});
    }
    return SectionOf("Allegati contenuti nel file", SheetFrame::Table,
                     {{"Nome", 70, false}, {"Descrizione", 0, false}, {"Formato", 24, false}, {"Circa", 20, true}},
                     std::move(rows));
}

SheetSection OtherDataSection(const CFattureElettronicheDB &content, const fatturapa::FatturaElettronicaBody &body)
{
    const fatturapa::DatiTrasmissioneType &sending = content.Header().DatiTrasmissione;
    const auto &data = body.DatiGenerali;
    SheetFields fields;
    if (!data.DatiGeneraliDocumento.Art73.empty())
        fields.Add("Art. 73 D.P.R. 633/72", data.DatiGeneraliDocumento.Art73);
    fields.Add("Stati di avanzamento", LineNumbers(data.DatiSAL));
    if (const auto &vehicle = body.DatiVeicoli)
        fields.Add("Veicolo", Joined(", ", {DayText("immatricolato il", vehicle->Data),
                                            Labelled("percorso", vehicle->TotalePercorso)}));
    fields.Add("Progressivo di invio", sending.ProgressivoInvio);
    fields.Add("Trasmittente",
               Joined(", ", {FiscalIdText(sending.IdTrasmittente), ContactsText(sending.ContattiTrasmittente)}));
    fields.Add("Destinatario", Joined(", ", {Labelled("codice", sending.CodiceDestinatario),
                                             Labelled("PEC", sending.PECDestinatario)}));
    fields.Add("Formato",
               Joined(", ", {sending.FormatoTrasmissione, Labelled("versione", content.Fattura().versione)}));
    fields.Add("File", content.FileName());
    fields.Add("Firma", SignatureText(content.Envelope()));
    return std::move(fields).Section("Altri dati");
}

SheetSection WarningsSection(const CFattureElettronicheDB &content, std::size_t document)
{
    std::vector<SheetRow> rows;
    for (const InvoiceWarning &warning : content.Warnings()) {
        const bool is_of_the_file = warning.document < 0 && document == 0;
        if (is_of_the_file || warning.document == static_cast<int>(document))
            rows.push_back({{{warning.text, SheetTone::Note}}});
    }
    return SectionOf("Avvisi", SheetFrame::Open, {{"", 0, false}}, std::move(rows));
}

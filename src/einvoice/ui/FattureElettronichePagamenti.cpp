#include "einvoice/SheetSections.h"
#include "einvoice/ui/DetailGrid.h"
#include "einvoice/ui/FatturePages.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/widgets/SpreadColumns.h"

#include <QLabel>
#include <QVBoxLayout>
#include <fmt/format.h>

namespace {

using fatturapa::DettaglioPagamentoType;
using Type = CSpreadSheet::Type;

/// An instalment with the terms of its block; a block without instalments has a row of its own for its terms.
struct PaymentLine {
    const std::string *terms;
    const DettaglioPagamentoType *payment;
    long due_day = 0;
};

const DettaglioPagamentoType kNoInstalment{};

std::vector<PaymentLine> LinesOf(const fatturapa::FatturaElettronicaBody &body)
{
    const long document_day = body.DatiGenerali.DatiGeneraliDocumento.Data;
    std::vector<PaymentLine> lines;
    for (const fatturapa::DatiPagamentoType &block : body.DatiPagamento) {
        if (block.DettaglioPagamento.empty()) lines.push_back({&block.CondizioniPagamento, &kNoInstalment});
        for (const DettaglioPagamentoType &payment : block.DettaglioPagamento) {
            const bool says_when = payment.DataScadenzaPagamento != 0 || payment.GiorniTerminiPagamento ||
                                   payment.DataRiferimentoTerminiPagamento != 0;
            lines.push_back(
                {&block.CondizioniPagamento, &payment, says_when ? fatturapa::DueDay(payment, document_day) : 0});
        }
    }
    return lines;
}

std::string DaysText(const DettaglioPagamentoType &payment)
{
    const std::string days =
        payment.GiorniTerminiPagamento ? fmt::format("{} giorni", *payment.GiorniTerminiPagamento) : std::string();
    return Joined(" ", {days, Labelled("dal", FormatDate(payment.DataRiferimentoTerminiPagamento))});
}

std::string ReceiptText(const DettaglioPagamentoType &payment)
{
    return Joined(" ", {payment.TitoloQuietanzante, payment.CognomeQuietanzante, payment.NomeQuietanzante,
                        Labelled("C.F.", payment.CFQuietanzante)});
}

std::string EarlyText(const DettaglioPagamentoType &payment)
{
    return Joined(" ", {SheetNumber(payment.ScontoPagamentoAnticipato),
                        Labelled("entro il", FormatDate(payment.DataLimitePagamentoAnticipato))});
}

std::string LateText(const DettaglioPagamentoType &payment)
{
    return Joined(" ", {SheetNumber(payment.PenalitaPagamentiRitardati),
                        Labelled("dal", FormatDate(payment.DataDecorrenzaPenale))});
}

std::vector<DetailColumn> ColumnsOf(const std::vector<PaymentLine> &lines)
{
    const auto text_of = [&lines](std::string (*text)(const DettaglioPagamentoType &)) {
        return [&lines, text](std::size_t i) -> SpreadValue { return text(*lines[i].payment); };
    };
    const auto member = [&lines](std::string DettaglioPagamentoType::*text) {
        return [&lines, text](std::size_t i) -> SpreadValue { return lines[i].payment->*text; };
    };
    CSpreadSheet::Column amount = ListColumn("Importo", Type::Amount, 13);
    amount.sum = true;
    CSpreadSheet::Column method = ListColumn("Modalità", Type::Text, 20);
    method.stretch = true;
    return {
        {ListColumn("Condizioni", Type::Text, 26),
         [&](std::size_t i) {
             return CodeWithText(*lines[i].terms, fatturapa::CondizioniPagamentoText(*lines[i].terms));
         }},
        {method, text_of([](const DettaglioPagamentoType &payment) {
             return CodeWithText(payment.ModalitaPagamento,
                                 fatturapa::ModalitaPagamentoText(payment.ModalitaPagamento));
         })},
        {ListColumn("Scadenza", Type::Date, 11), [&](std::size_t i) { return lines[i].due_day; }},
        {ListColumn("Termini", Type::Text, 23), text_of(DaysText), true},
        {amount,
         [&](std::size_t i) {
             return lines[i].payment == &kNoInstalment ? SpreadValue()
                                                       : SpreadValue(lines[i].payment->ImportoPagamento);
         }},
        {ListColumn("Banca", Type::Text, 26), member(&DettaglioPagamentoType::IstitutoFinanziario), true},
        {ListColumn("IBAN", Type::Text, 31), member(&DettaglioPagamentoType::IBAN), true},
        {ListColumn("ABI", Type::Text, 6), member(&DettaglioPagamentoType::ABI), true},
        {ListColumn("CAB", Type::Text, 6), member(&DettaglioPagamentoType::CAB), true},
        {ListColumn("BIC", Type::Text, 13), member(&DettaglioPagamentoType::BIC), true},
        {ListColumn("Beneficiario", Type::Text, 24), member(&DettaglioPagamentoType::Beneficiario), true},
        {ListColumn("Quietanzante", Type::Text, 24), text_of(ReceiptText), true},
        {ListColumn("Ufficio postale", Type::Text, 14), member(&DettaglioPagamentoType::CodUfficioPostale), true},
        {ListColumn("Codice pagamento", Type::Text, 18), member(&DettaglioPagamentoType::CodicePagamento), true},
        {ListColumn("Sconto per anticipo", Type::Text, 22), text_of(EarlyText), true},
        {ListColumn("Penale per ritardo", Type::Text, 22), text_of(LateText), true},
    };
}

/// "Netto a pagare € 2.137,60": the last total of the printed sheet, which the instalments should come to.
std::string ToPayText(const fatturapa::FatturaElettronicaBody &body)
{
    const SheetSection totals = TotalsSection(body);
    std::string text;
    for (std::size_t i = 0; i < totals.count; ++i) {
        const SheetRow row = totals.row(i);
        const SheetText &label = row[row.size() - 2].front();
        if (label.tone == SheetTone::Total) text = label.text + " " + row.back().front().text;
    }
    return text;
}

} // namespace

CFattureElettronichePagamenti::CFattureElettronichePagamenti(CTarvoDialog *dialog)
    : CFattureElettronichePage(dialog), grid_(new CSpreadSheet(this)), note_(DetailNote(this))
{
    grid_->setAccessibleName("Pagamenti del documento");
    grid_->RememberLayout("FattureElettronichePagamenti");
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(grid_);
    layout->addWidget(note_);
    ShowNothing();
}

void CFattureElettronichePagamenti::Show(const CFattureElettronicheDB &content, std::size_t document)
{
    const fatturapa::FatturaElettronicaBody &body = content.Documents()[document];
    const std::vector<PaymentLine> lines = LinesOf(body);
    ShowDetails(grid_, ColumnsOf(lines), lines.size());
    grid_->SetFootText(1, "Totale");
    grid_->ShowSums(!lines.empty());
    ShowNote(note_, lines.empty() ? "Il documento non contiene dati di pagamento."
                                  : ToPayText(body) + ". Le scadenze in contabilità seguono la modalità di "
                                                      "pagamento del fornitore.");
}

void CFattureElettronichePagamenti::ShowNothing()
{
    ShowDetails(grid_, ColumnsOf({}), 0);
    grid_->ShowSums(false);
    ShowNote(note_, "");
}

#include "einvoice/SheetSections.h"
#include "einvoice/ui/DetailGrid.h"
#include "einvoice/ui/FatturePages.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/widgets/SpreadColumns.h"

#include <QVBoxLayout>

namespace {

using fatturapa::DettaglioLineeType;
using Type = CSpreadSheet::Type;

constexpr int kSchemaDecimals = 8; // of quantities and prices

std::string CodesText(const DettaglioLineeType &line)
{
    std::string text;
    for (const fatturapa::CodiceArticoloType &code : line.CodiceArticolo)
        text =
            Joined(", ", {text, Joined(" ", {code.CodiceValore,
                                             code.CodiceTipo.empty() ? std::string() : "(" + code.CodiceTipo + ")"})});
    return text;
}

std::string DiscountsText(const DettaglioLineeType &line)
{
    std::string text;
    for (const fatturapa::ScontoMaggiorazioneType &discount : line.ScontoMaggiorazione)
        text = Joined(" + ", {text, DiscountText(discount)});
    return text;
}

std::string PeriodText(const DettaglioLineeType &line)
{
    const std::string first = FormatDate(line.DataInizioPeriodo), last = FormatDate(line.DataFinePeriodo);
    if (first.empty() || last.empty()) return Joined(" ", {Labelled("dal", first), Labelled("al", last)});
    return first + " - " + last;
}

std::string OtherDataText(const DettaglioLineeType &line)
{
    std::string text;
    for (const fatturapa::AltriDatiGestionaliType &data : line.AltriDatiGestionali)
        text = Joined("; ", {text, Joined(" ", {data.TipoDato.empty() ? std::string() : data.TipoDato + ":",
                                                data.RiferimentoTesto, SheetNumber(data.RiferimentoNumero, 0),
                                                FormatDate(data.RiferimentoData)})});
    return text;
}

std::vector<DetailColumn> ColumnsOf(const std::vector<DettaglioLineeType> &lines, bool is_simplified)
{
    const auto text_of = [&lines](std::string (*text)(const DettaglioLineeType &)) {
        return [&lines, text](std::size_t i) -> SpreadValue { return text(lines[i]); };
    };
    CSpreadSheet::Column quantity = ListColumn("Quantità", Type::Amount, 10);
    quantity.decimals = 0;
    quantity.blank_zero = false;
    CSpreadSheet::Column price = ListColumn("Prezzo unitario", Type::Amount, 14);
    price.blank_zero = false;
    CSpreadSheet::Column amount = ListColumn("Importo", Type::Amount, 13);
    amount.blank_zero = false;
    CSpreadSheet::Column description = ListColumn("Descrizione", Type::Text, 40);
    description.stretch = true;

    std::vector<DetailColumn> columns;
    columns.push_back({ListColumn("Riga", Type::Code, 5), [&](std::size_t i) { return lines[i].NumeroLinea; }});
    columns.push_back({ListColumn("Codice", Type::Text, 16), text_of(CodesText), true});
    columns.push_back({description, text_of([](const DettaglioLineeType &line) { return line.Descrizione; })});
    columns.push_back({quantity, [&](std::size_t i) { return AmountCell(lines[i].Quantita); }, true, kSchemaDecimals});
    columns.push_back({ListColumn("U.M.", Type::Text, 5),
                       text_of([](const DettaglioLineeType &line) { return line.UnitaMisura; }), true});
    // A simplified line has no price, only what it comes to.
    if (!is_simplified)
        columns.push_back({price, [&](std::size_t i) { return lines[i].PrezzoUnitario; }, false, kSchemaDecimals});
    columns.push_back({ListColumn("Sconti/magg.", Type::Text, 14), text_of(DiscountsText), true});
    columns.push_back({amount, [&](std::size_t i) { return lines[i].PrezzoTotale; }, false, kSchemaDecimals});
    columns.push_back({ListColumn("Aliquota", Type::Text, 8),
                       text_of([](const DettaglioLineeType &line) { return PercentText(line.AliquotaIVA); })});
    columns.push_back({ListColumn("Natura", Type::Text, 20), text_of([](const DettaglioLineeType &line) {
                           return CodeWithText(line.Natura, fatturapa::NaturaText(line.Natura));
                       }),
                       true});
    columns.push_back({ListColumn("Tipo", Type::Text, 12), text_of([](const DettaglioLineeType &line) {
                           return CodeWithText(line.TipoCessionePrestazione,
                                               TipoCessionePrestazioneText(line.TipoCessionePrestazione));
                       }),
                       true});
    columns.push_back({ListColumn("Periodo", Type::Text, 23), text_of(PeriodText), true});
    columns.push_back({ListColumn("Ritenuta", Type::Text, 8),
                       text_of([](const DettaglioLineeType &line) { return line.Ritenuta; }), true});
    columns.push_back({ListColumn("Rif. amministrazione", Type::Text, 18),
                       text_of([](const DettaglioLineeType &line) { return line.RiferimentoAmministrazione; }), true});
    columns.push_back({ListColumn("Altri dati", Type::Text, 24), text_of(OtherDataText), true});
    return columns;
}

} // namespace

CFattureElettronicheRows::CFattureElettronicheRows(CTarvoDialog *dialog)
    : CFattureElettronichePage(dialog), grid_(new CSpreadSheet(this))
{
    grid_->setAccessibleName("Linee del documento");
    grid_->RememberLayout("FattureElettronicheRows");
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(grid_);
    ShowNothing();
}

void CFattureElettronicheRows::Show(const CFattureElettronicheDB &content, std::size_t document)
{
    const std::vector<DettaglioLineeType> &lines = content.Documents()[document].DatiBeniServizi.DettaglioLinee;
    ShowDetails(grid_, ColumnsOf(lines, content.Fattura().is_simplified), lines.size());
}

void CFattureElettronicheRows::ShowNothing()
{
    ShowDetails(grid_, ColumnsOf({}, false), 0);
}

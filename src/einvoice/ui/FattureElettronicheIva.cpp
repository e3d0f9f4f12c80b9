#include "einvoice/InvoiceRounding.h"
#include "einvoice/SheetSections.h"
#include "einvoice/ui/DetailGrid.h"
#include "einvoice/ui/FatturePages.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/SpreadColumns.h"

#include <QLabel>
#include <QVBoxLayout>
#include <fmt/format.h>

namespace {

using fatturapa::DatiRiepilogoType;
using Type = CSpreadSheet::Type;

constexpr int kRoundingDecimals = 8; // of Arrotondamento in the published schema

CSpreadSheet::Column SumColumn(const char *title)
{
    CSpreadSheet::Column column = ListColumn(title, Type::Amount, 14);
    column.sum = true;
    column.blank_zero = false;
    return column;
}

std::vector<DetailColumn> ColumnsOf(const std::vector<DatiRiepilogoType> &rows)
{
    CSpreadSheet::Column nature = ListColumn("Natura", Type::Text, 24), law = nature;
    nature.stretch = law.stretch = true;
    CSpreadSheet::Column rounding = SumColumn("Arrotondamento");
    rounding.sum = false; // parts of a cent add up to nothing that a foot of two decimals could show
    law.title = "Riferimento normativo";
    return {
        {ListColumn("Aliquota", Type::Text, 8), [&](std::size_t i) { return PercentText(rows[i].AliquotaIVA); }},
        {nature,
         [&](std::size_t i) {
             return Joined(" ", {rows[i].Natura, std::string(fatturapa::NaturaText(rows[i].Natura))});
         }},
        {SumColumn("Imponibile"), [&](std::size_t i) { return rows[i].ImponibileImporto; }},
        {SumColumn("Imposta"), [&](std::size_t i) { return rows[i].Imposta; }},
        {SumColumn("Spese accessorie"), [&](std::size_t i) { return AmountCell(rows[i].SpeseAccessorie); }, true},
        {rounding, [&](std::size_t i) { return AmountCell(rows[i].Arrotondamento); }, true, kRoundingDecimals},
        {ListColumn("Esigibilità", Type::Text, 18),
         [&](std::size_t i) {
             return CodeWithText(rows[i].EsigibilitaIVA, fatturapa::EsigibilitaIvaText(rows[i].EsigibilitaIVA));
         },
         true},
        {law, [&](std::size_t i) { return rows[i].RiferimentoNormativo; }, true},
    };
}

/// "Totale imponibile 2.080,00   Totale imposta 457,60   Totale documento € 2.537,60", as on the printed sheet.
std::string TotalsText(const fatturapa::FatturaElettronicaBody &body)
{
    const SheetSection totals = TotalsSection(body);
    std::string text;
    for (std::size_t i = 0; i < totals.count; ++i) {
        std::string one;
        for (const SheetCell &cell : totals.row(i))
            for (const SheetText &part : cell) one = Joined(" ", {one, part.text});
        text = Joined("     ", {text, one});
    }
    return text;
}

/// How the declared total and the VAT summary get on.
std::string ComparisonText(const fatturapa::FatturaElettronicaBody &body)
{
    const TotalReading reading = ReadTotal(body);
    const bool is_declared = body.DatiGenerali.DatiGeneraliDocumento.ImportoTotaleDocumento.has_value();
    if (TestIfZero(reading.rounding))
        return is_declared ? "Il totale dichiarato corrisponde al riepilogo IVA."
                           : "Il file non dichiara il totale del documento: vale quello del riepilogo IVA.";
    const std::string words =
        fmt::format("differenza dal riepilogo IVA {}: {}.", FormatAmount(reading.rounding), reading.how);
    if (!reading.closes) return "Attenzione: " + words;
    return is_declared ? "Totale dichiarato, " + words : "Il file non dichiara il totale del documento; " + words;
}

} // namespace

CFattureElettronicheIva::CFattureElettronicheIva(CTarvoDialog *dialog)
    : CFattureElettronichePage(dialog), grid_(new CSpreadSheet(this)), total_(DetailNote(this))
{
    grid_->setAccessibleName("Riepilogo IVA");
    grid_->RememberLayout("FattureElettronicheIva");
    grid_->ShowSums(true);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(grid_);
    layout->addWidget(total_);
    ShowNothing();
}

void CFattureElettronicheIva::Show(const CFattureElettronicheDB &content, std::size_t document)
{
    const fatturapa::FatturaElettronicaBody &body = content.Documents()[document];
    const std::vector<DatiRiepilogoType> &rows = body.DatiBeniServizi.DatiRiepilogo;
    ShowDetails(grid_, ColumnsOf(rows), rows.size());
    grid_->SetFootText(1, "Totali");
    ShowNote(total_, TotalsText(body) + "\n" + ComparisonText(body));
}

void CFattureElettronicheIva::ShowNothing()
{
    ShowDetails(grid_, ColumnsOf({}), 0);
    ShowNote(total_, "");
}

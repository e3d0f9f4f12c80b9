#include "einvoice/InvoiceRounding.h"

#include "tarvodlg/base/Numbers.h"

namespace {

double SummaryRoundings(const fatturapa::FatturaElettronicaBody &body)
{
    double sum = 0;
    for (const auto &row : body.DatiBeniServizi.DatiRiepilogo) sum += row.Arrotondamento.value_or(0);
    return Round(sum, 2);
}

void TakeOff(double amount, const char *how, TotalReading *reading)
{
    reading->rounding = 0;
    reading->left_out = amount;
    reading->how = how;
}

} // namespace

double WithheldFrom(const fatturapa::FatturaElettronicaBody &body)
{
    double withheld = 0;
    for (const auto &one : body.DatiGenerali.DatiGeneraliDocumento.DatiRitenuta) withheld += one.ImportoRitenuta;
    return Round(withheld, 2);
}

double SplitTaxOf(const fatturapa::FatturaElettronicaBody &body)
{
    double tax = 0;
    for (const auto &row : body.DatiBeniServizi.DatiRiepilogo)
        if (row.EsigibilitaIVA == "S") tax += row.Imposta;
    return Round(tax, 2);
}

TotalReading ReadTotal(const fatturapa::FatturaElettronicaBody &body)
{
    const auto &document = body.DatiGenerali.DatiGeneraliDocumento;
    const double summary = fatturapa::SumOfSummary(body).totale;
    const double declared = fatturapa::TotaleDocumento(body);
    TotalReading reading;
    reading.rounding = Round(declared - summary, 2);
    if (TestIfZero(reading.rounding)) return reading;

    const double of_document = Round(document.Arrotondamento.value_or(0), 2);
    const double of_summary = SummaryRoundings(body);
    const double stamp = document.DatiBollo ? Round(document.DatiBollo->ImportoBollo.value_or(0), 2) : 0;
    const auto closes_with = [&](double part) { return !TestIfZero(part) && TestIfZero(reading.rounding - part); };
    if (closes_with(of_document)) {
        reading.how = "arrotondamento del documento, oltre il riepilogo IVA";
    } else if (closes_with(of_summary)) {
        reading.how = "arrotondamenti del riepilogo IVA, fuori dall'imponibile";
    } else if (closes_with(of_document + of_summary)) {
        reading.how = "arrotondamenti del documento e del riepilogo IVA";
    } else if (closes_with(stamp)) {
        reading.is_stamp_duty = true;
        reading.how = "imposta di bollo compresa nel totale";
    } else if (const double withheld = WithheldFrom(body); closes_with(-withheld)) {
        TakeOff(withheld, "al netto della ritenuta", &reading);
    } else if (const double tax = SplitTaxOf(body); closes_with(-tax)) {
        TakeOff(tax, "al netto dell'imposta che non è dovuta al fornitore", &reading);
    } else {
        reading.closes = false;
        reading.how = "differenza non dichiarata tra totale del documento e riepilogo IVA";
    }
    return reading;
}

int SignOf(const fatturapa::FatturaElettronicaBody &body)
{
    const bool credit_note = fatturapa::IsCreditNote(body.DatiGenerali.DatiGeneraliDocumento.TipoDocumento);
    return credit_note && !fatturapa::IsNegative(body) ? -1 : 1;
}

#include "einvoice/SheetSections.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

using fatturapa::DatiDocumentiCorrelatiType;
using fatturapa::DettaglioLineeType;

SheetRow ReferenceRow(const char *kind, const std::string &number, long day, const std::vector<long> &lines,
                      std::string more)
{
    return {Plain(kind), Plain(number), Plain(FormatDate(day)), Plain(LineNumbers(lines)), Plain(std::move(more))};
}

void AddReferences(std::vector<SheetRow> *rows, const char *kind, const std::vector<DatiDocumentiCorrelatiType> &list)
{
    for (const DatiDocumentiCorrelatiType &one : list)
        rows->push_back(ReferenceRow(
            kind, one.IdDocumento, one.Data, one.RiferimentoNumeroLinea,
            Joined(", ", {Labelled("CUP", one.CodiceCUP), Labelled("CIG", one.CodiceCIG),
                          Labelled("commessa", one.CodiceCommessaConvenzione), Labelled("voce", one.NumItem)})));
}

/// Which columns the lines of a document have anything to say in; the others leave their room to the description.
struct LineColumns {
    bool code = false, quantity = false, unit = false, price = false, discount = false;
};

LineColumns ColumnsOf(const std::vector<DettaglioLineeType> &lines, bool is_simplified)
{
    LineColumns columns;
    columns.price = !is_simplified; // a simplified line has no price
    for (const DettaglioLineeType &line : lines) {
        columns.code |= !line.CodiceArticolo.empty();
        columns.quantity |= line.Quantita.has_value();
        columns.unit |= !line.UnitaMisura.empty();
        columns.price |= line.PrezzoUnitario != 0;
        columns.discount |= !line.ScontoMaggiorazione.empty();
    }
    return columns;
}

void AddNote(SheetCell *cell, std::string text)
{
    if (!text.empty()) cell->push_back({std::move(text), SheetTone::Note});
}

std::string PeriodText(const DettaglioLineeType &line)
{
    return Labelled("Periodo:", Joined(" ", {Labelled("dal", FormatDate(line.DataInizioPeriodo)),
                                             Labelled("al", FormatDate(line.DataFinePeriodo))}));
}

SheetCell DescriptionCell(const DettaglioLineeType &line)
{
    SheetCell cell = Plain(line.Descrizione);
    AddNote(&cell,
            CodeWithText(line.TipoCessionePrestazione, TipoCessionePrestazioneText(line.TipoCessionePrestazione)));
    AddNote(&cell, PeriodText(line));
    if (!line.Ritenuta.empty())
        AddNote(&cell, line.Ritenuta == "SI" ? "Soggetta a ritenuta" : "Ritenuta: " + line.Ritenuta);
    AddNote(&cell, Labelled("Riferimento amministrazione:", line.RiferimentoAmministrazione));
    for (const auto &data : line.AltriDatiGestionali)
        AddNote(&cell, Joined(" ", {data.TipoDato.empty() ? "" : data.TipoDato + ":", data.RiferimentoTesto,
                                    SheetNumber(data.RiferimentoNumero, 0), FormatDate(data.RiferimentoData)}));
    return cell;
}

SheetRow LineRow(const DettaglioLineeType &line, const LineColumns &columns)
{
    SheetRow row = {Plain(std::to_string(line.NumeroLinea))};
    if (columns.code) {
        SheetCell &cell = row.emplace_back();
        for (const auto &code : line.CodiceArticolo) {
            cell.push_back({code.CodiceValore, SheetTone::Plain});
            AddNote(&cell, code.CodiceTipo);
        }
    }
    row.push_back(DescriptionCell(line));
    if (columns.quantity) row.push_back(Plain(SheetNumber(line.Quantita, 0)));
    if (columns.unit) row.push_back(Plain(line.UnitaMisura));
    if (columns.price) row.push_back(Plain(SheetNumber(line.PrezzoUnitario)));
    if (columns.discount) {
        SheetCell &cell = row.emplace_back();
        for (const auto &discount : line.ScontoMaggiorazione)
            cell.push_back({DiscountText(discount), SheetTone::Plain});
    }
    row.push_back(Plain(VatText(line.AliquotaIVA, line.Natura)));
    row.push_back(Plain(SheetNumber(line.PrezzoTotale)));
    return row;
}

std::string PackagesText(const fatturapa::DatiTrasportoType &transport)
{
    const std::string count = transport.NumeroColli ? std::to_string(*transport.NumeroColli) : "";
    return Joined(", ", {Labelled("colli", count), transport.Descrizione});
}

} // namespace

SheetSection ReasonsSection(const fatturapa::DatiGeneraliDocumentoType &general)
{
    std::vector<SheetRow> rows;
    for (const std::string &reason : general.Causale)
        if (!reason.empty()) rows.push_back({Plain(reason)});
    return SectionOf("Causale", SheetFrame::Open, {{"", 0, false}}, std::move(rows));
}

SheetSection ReferencesSection(const fatturapa::DatiGeneraliType &data)
{
    std::vector<SheetRow> rows;
    AddReferences(&rows, "Ordine di acquisto", data.DatiOrdineAcquisto);
    AddReferences(&rows, "Contratto", data.DatiContratto);
    AddReferences(&rows, "Convenzione", data.DatiConvenzione);
    AddReferences(&rows, "Ricezione", data.DatiRicezione);
    AddReferences(&rows, "Fattura collegata", data.DatiFattureCollegate);
    for (const auto &note : data.DatiDDT)
        rows.push_back(ReferenceRow("DDT", note.NumeroDDT, note.DataDDT, note.RiferimentoNumeroLinea, ""));
    if (data.FatturaPrincipale)
        rows.push_back(ReferenceRow("Fattura principale", data.FatturaPrincipale->NumeroFatturaPrincipale,
                                    data.FatturaPrincipale->DataFatturaPrincipale, {}, ""));
    if (const auto &corrected = data.DatiFatturaRettificata)
        rows.push_back(ReferenceRow("Fattura rettificata", corrected->NumeroFR, corrected->DataFR, {},
                                    Labelled("elementi rettificati:", corrected->ElementiRettificati)));
    const bool has_more =
        std::any_of(rows.begin(), rows.end(), [](const SheetRow &row) { return !row.back().empty(); });
    return SectionOf("Riferimenti", SheetFrame::Table,
                     {{"Tipo", 32, false},
                      {"Numero", 48, false},
                      {"Data", 22, false},
                      {"Righe", has_more ? 28.0 : 0.0, false},
                      {has_more ? "Altri estremi" : "", has_more ? 0.0 : 1.0, false}},
                     std::move(rows));
}

SheetSection TransportSection(const fatturapa::DatiGeneraliType &data)
{
    SheetFields fields;
    if (const auto &transport = data.DatiTrasporto) {
        const fatturapa::DatiAnagraficiType &carrier = transport->DatiAnagraficiVettore;
        std::string lines;
        if (!fatturapa::NameOf(carrier.Anagrafica).empty() || !carrier.IdFiscaleIVA.IdCodice.empty())
            for (const SheetText &line : PersonLines(carrier)) lines += (lines.empty() ? "" : ", ") + line.text;
        fields.Add("Vettore", lines);
        fields.Add("Mezzo", transport->MezzoTrasporto);
        fields.Add("Causale del trasporto", transport->CausaleTrasporto);
        fields.Add("Merce", PackagesText(*transport));
        fields.Add("Peso",
                   Joined(", ", {Labelled("lordo", SheetNumber(transport->PesoLordo, 0)),
                                 Labelled("netto", SheetNumber(transport->PesoNetto, 0)), transport->UnitaMisuraPeso}));
        fields.Add("Ritiro", transport->DataOraRitiro);
        fields.Add("Inizio del trasporto", FormatDate(transport->DataInizioTrasporto));
        fields.Add("Resa", Joined(" ", {transport->TipoResa, AddressText(transport->IndirizzoResa)}));
        fields.Add("Consegna", transport->DataOraConsegna);
    }
    return std::move(fields).Section("Trasporto");
}

SheetSection LinesSection(const fatturapa::FatturaElettronica &invoice, const fatturapa::FatturaElettronicaBody &body)
{
    const std::vector<DettaglioLineeType> &lines = body.DatiBeniServizi.DettaglioLinee;
    const LineColumns columns = ColumnsOf(lines, invoice.is_simplified);
    SheetSection section{"Beni e servizi", SheetFrame::Table, {{"N.", 8, false}}, lines.size(), {}};
    if (columns.code) section.columns.push_back({"Codice", 25, false});
    section.columns.push_back({"Descrizione", 0, false});
    if (columns.quantity) section.columns.push_back({"Quantità", 18, true});
    if (columns.unit) section.columns.push_back({"UM", 14, false});
    if (columns.price) section.columns.push_back({"Prezzo unitario", 25, true});
    if (columns.discount) section.columns.push_back({"Sconti", 20, false});
    section.columns.push_back({"IVA", 12, false});
    section.columns.push_back({"Importo", 22, true});
    section.row = [&lines, columns](std::size_t index) { return LineRow(lines[index], columns); };
    return section;
}

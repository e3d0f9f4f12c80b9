#include "schedule/ui/ScheduleGrid.h"

#include "tarvodlg/widgets/SpreadColumns.h"

#include <QApplication>

std::vector<CSpreadSheet::Column> ScheduleColumns()
{
    using Type = CSpreadSheet::Type;
    const auto column = ListColumn;
    return {column("Numero", Type::Code, 8),        column("Scadenza", Type::Date, 11),
            column("Fattura", Type::Text, 12),      column("Data fatt.", Type::Date, 11),
            column("Sez.", Type::Code, 5),          column("Descrizione", Type::Text, 26),
            column("Importo", Type::Amount, 13),    column("Codice", Type::Code, 7),
            column("Intestatario", Type::Text, 28), column("Dest.", Type::Code, 6),
            column("Destinazione", Type::Text, 18), column("Ag.", Type::Code, 5),
            column("Agente", Type::Text, 16),       column("Chiusa", Type::Text, 7),
            column("Chiusa il", Type::Date, 11),    column("Rata", Type::Text, 6),
            column("Tipo", Type::Text, 10),         column("In distinta", Type::Text, 10)};
}

namespace {

/// Between text and paper, near enough to the text to be read on every row.
QColor Receding()
{
    const QPalette palette = QApplication::palette();
    const QColor text = palette.color(QPalette::Text), paper = palette.color(QPalette::Base);
    const auto mix = [](float a, float b) { return 0.66F * a + 0.34F * b; };
    return QColor::fromRgbF(mix(text.redF(), paper.redF()), mix(text.greenF(), paper.greenF()),
                            mix(text.blueF(), paper.blueF()));
}

} // namespace

QColor OverdueColour()
{
    return QApplication::palette().color(QPalette::BrightText);
}

ScheduleColours::ScheduleColours() : overdue_(OverdueColour()), paid_(Receding()), open_() {}

const QColor &ScheduleColours::Of(const SCADENZE &instalment, long today) const
{
    if (instalment.sca_pagato != 0) return paid_;
    return IsOverdue(instalment, today) ? overdue_ : open_;
}

void ShowScheduleLine(CSpreadSheet *grid, long row, const ScheduleLine &line, const QColor &colour)
{
    const SCADENZE &instalment = line.scadenza;
    const auto yes = [](long flag) { return flag != 0 ? "Sì" : ""; };
    grid->SetRowData(row, instalment.sca_num);
    grid->SetLong(row, kNumColumn, instalment.sca_num);
    grid->SetLong(row, kDueColumn, instalment.sca_data);
    grid->SetText(row, kInvoiceColumn, instalment.sca_fattura);
    grid->SetLong(row, kInvoiceDateColumn, instalment.sca_data_fattura);
    grid->SetLong(row, kSectionColumn, instalment.sca_sez);
    grid->SetText(row, kDescriptionColumn, instalment.sca_desc);
    grid->SetNumber(row, kAmountColumn, instalment.sca_importo);
    grid->SetLong(row, kCounterpartColumn, instalment.sca_cli_for);
    grid->SetText(row, kNameColumn, line.name);
    grid->SetLong(row, kDestinationColumn, instalment.sca_dst);
    grid->SetText(row, kDestinationNameColumn, line.dst_desc);
    grid->SetLong(row, kAgentColumn, instalment.sca_age);
    grid->SetText(row, kAgentNameColumn, line.age_desc);
    grid->SetText(row, kPaidColumn, yes(instalment.sca_pagato));
    grid->SetLong(row, kPaidOnColumn, instalment.sca_data_pag);
    grid->SetText(row, kInstalmentColumn, InstalmentOfInvoice(instalment));
    grid->SetText(row, kTermsColumn, line.terms);
    grid->SetText(row, kHeldColumn, yes(instalment.sca_parked));
    grid->SetRowColor(row, colour);
}

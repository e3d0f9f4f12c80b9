#pragma once

#include "schedule/ScheduleList.h"
#include "tarvodlg/widgets/SpreadSheet.h"

/// Columns of the grids that list instalments.
enum ScheduleColumn : long {
    kNumColumn = 1,
    kDueColumn,
    kInvoiceColumn,
    kInvoiceDateColumn,
    kSectionColumn,
    kDescriptionColumn,
    kAmountColumn,
    kCounterpartColumn,
    kNameColumn,
    kDestinationColumn,
    kDestinationNameColumn,
    kAgentColumn,
    kAgentNameColumn,
    kPaidColumn,
    kPaidOnColumn,
    kInstalmentColumn,
    kTermsColumn,
    kHeldColumn
};

std::vector<CSpreadSheet::Column> ScheduleColumns();

/// What is overdue, and a total that does not agree: the theme's own warning red, the same in all these windows.
QColor OverdueColour();

/// Of the rows, made once for a whole list: what is readable depends on the theme and takes its time.
class ScheduleColours {
  public:
    ScheduleColours();
    /// Overdue ones stand out, paid ones stand back, the others have the colour of the text.
    const QColor &Of(const SCADENZE &instalment, long today) const;

  private:
    QColor overdue_, paid_, open_;
};

/// Writes a line into a row of such a grid; the row's data is the number of the instalment.
void ShowScheduleLine(CSpreadSheet *grid, long row, const ScheduleLine &line, const QColor &colour);

#include "tarvodlg/widgets/ListWindow.h"

#include "tarvodlg/widgets/FormBuilder.h"

CElenco::CElenco(const QString &title, const QString &name, std::vector<CSpreadSheet::Column> columns, CWnd *parent)
    : CTarvoDialog(parent)
{
    setWindowTitle(title);
    spread_ = new CSpreadSheet(this);
    constexpr int kAroundText = 2; // characters that a cell leaves free, and its share of the scroll bar
    int width = 0;
    for (CSpreadSheet::Column &column : columns) {
        column.locked = true;
        width += column.width + kAroundText;
    }
    spread_->SetColumns(std::move(columns));
    spread_->RememberLayout(name);
    spread_->setMinimumSize(CharactersWide(this, width), fontMetrics().height() * 20);
    {
        FormBuilder form(this);
        form.Fill(spread_);
    }
    AddCommand({QStringLiteral("&Chiudi"), {}, {}, [this] { EndDialog(IDCANCEL); }, {}, {}, false});
}

void CElenco::AddRow(const std::vector<std::string> &cells)
{
    const long row = spread_->RowCount() + 1;
    spread_->SetRowCount(row);
    for (std::size_t i = 0; i < cells.size(); ++i) spread_->SetText(row, static_cast<long>(i) + 1, cells[i]);
}

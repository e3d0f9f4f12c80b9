#pragma once

#include "tarvodlg/widgets/SpreadSheet.h"

#include <QHeaderView>
#include <QScrollBar>

/// A column of a list: its cells are shown and never typed into.
/// @param width  in characters
inline CSpreadSheet::Column ListColumn(const char *title, CSpreadSheet::Type type, int width)
{
    CSpreadSheet::Column column;
    column.title = QString::fromUtf8(title);
    column.type = type;
    column.width = width;
    column.locked = true;
    return column;
}

/// Size for a window whose list shows all its columns, and as many rows as a screen has; the screen cuts it.
/// @param window  what the window would be otherwise
inline QSize WholeListSize(const QSize &window, const CSpreadSheet *grid)
{
    const int around = window.width() - grid->sizeHint().width();
    const int inside = grid->verticalScrollBar()->sizeHint().width() + 2 * grid->frameWidth();
    return {grid->horizontalHeader()->length() + inside + around, grid->fontMetrics().height() * 48};
}

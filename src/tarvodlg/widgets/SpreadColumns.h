#pragma once

#include "tarvodlg/widgets/SpreadSheet.h"

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

#pragma once

#include "tables/ui/TableEditor.h"

/// The editor of VAT sections.
class CSezioni : public CTableEditor<SEZIONI> {
  public:
    explicit CSezioni(CWnd *parent = nullptr);
    static long Edit(CWnd *parent, long code) { return EditCode<CSezioni>(parent, code); } ///< 0 = a new one
};

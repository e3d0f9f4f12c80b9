#pragma once

#include "tables/ui/TableEditor.h"

/// The editor of agents.
class CAgenti : public CTableEditor<AGENTI> {
  public:
    explicit CAgenti(CWnd *parent = nullptr);
    static long Edit(CWnd *parent, long code) { return EditCode<CAgenti>(parent, code); } ///< 0 = a new one
};

#pragma once

#include "tables/ui/TableEditor.h"

/// The editor of cost centres.
class CCentriCosto : public CTableEditor<CENTRI> {
  public:
    explicit CCentriCosto(CWnd *parent = nullptr);
    static long Edit(CWnd *parent, long code) { return EditCode<CCentriCosto>(parent, code); } ///< 0 = a new one
};

#pragma once

#include "tables/ui/TableEditor.h"

/// The editor of warehouse reasons.
class CCausaliMagazzino : public CTableEditor<CAUMAG> {
  public:
    explicit CCausaliMagazzino(CWnd *parent = nullptr);
    static long Edit(CWnd *parent, long code) { return EditCode<CCausaliMagazzino>(parent, code); } ///< 0 = a new one
};

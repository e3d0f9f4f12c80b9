#pragma once

#include "tables/ui/TableEditor.h"

/// The editor of banks. ABI and CAB are taken from an Italian IBAN.
class CBanche : public CTableEditor<BANCHE> {
  public:
    explicit CBanche(CWnd *parent = nullptr);
    static long Edit(CWnd *parent, long code) { return EditCode<CBanche>(parent, code); } ///< 0 = a new one

  private:
    bool OnLostFocusEventIban();

    CTextField *abi_, *cab_, *iban_;
};

#pragma once

#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvodlg/widgets/TarvoDialog.h"

/// A window that only shows a list: results, keys. Typing searches, Esc closes.
class CElenco : public CTarvoDialog {
  public:
    /// @param name  under which the widths of its columns are remembered
    CElenco(const QString &title, const QString &name, std::vector<CSpreadSheet::Column> columns,
            CWnd *parent = nullptr);

    void AddRow(const std::vector<std::string> &cells);
    CSpreadSheet *Spread() const { return spread_; }

  private:
    CSpreadSheet *spread_;
};

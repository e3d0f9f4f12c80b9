#pragma once

#include "tarvodlg/widgets/TarvoDialog.h"
#include "tarvolumera/JournalEntry.h"

#include <optional>

class CSpreadSheet;
class QLabel;

/// Divides the amount of one row among cost centres. Works on the entry in memory; the editor stores it. What is left
/// to divide is always in sight, and an empty amount takes it.
class CPNotaCentriCosto : public CTarvoDialog {
  public:
    /// @param row  from 1 to 100, a row in use
    CPNotaCentriCosto(PNOTA *entry, long row, CWnd *parent);

    bool m_changed = false; ///< the split of the row is another one now

    void OnRecordSalva();   ///< puts the split into the entry and closes
    void OnRecordElimina(); ///< the row is not divided any more

  protected:
    bool OnInitDialog() override;

  private:
    PNOTA_RIGA &Row() const;
    void ShowLines();
    void ShowRest();
    long long RestCents() const;
    bool OnLeaveCellSpread(long row, long column);
    void OnDblClickSpread(long row, long column);
    bool OnKeyPressSpread(long row, class QKeyEvent *key);
    void ShowDescription(long row);
    /// The lines as they stand in the grid, those without amount left out; the grid gets the focus when one has an
    /// amount but no centre, and nothing comes back.
    std::optional<std::vector<PNOTA_CENTRO>> ReadLines();
    void Replace(std::vector<PNOTA_CENTRO> lines);

    PNOTA *entry_;
    long row_;
    CSpreadSheet *grid_ = nullptr;
    QLabel *rest_ = nullptr;
    QAbstractButton *save_ = nullptr;
};

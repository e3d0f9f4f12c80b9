#pragma once

#include "tables/BrowseDescription.h"
#include "tarvodlg/widgets/TarvoDialog.h"

#include <array>

class CSpreadSheet;

/// The chart of accounts, its three levels side by side: the accounts are those of the master, the sub-accounts those
/// of the account. Right and Left (or Tab) change the level, F3, Enter and F6 work on the level that has the focus.
class CPianoContiEd : public CTarvoDialog {
  public:
    explicit CPianoContiEd(CWnd *parent = nullptr);

    bool PreTranslateMessage(QKeyEvent *message) override;

  protected:
    bool OnInitDialog() override;

  private:
    static constexpr std::size_t kLevels = 3;

    void BuildLevel(std::size_t level, QWidget *host);
    void LoadLevel(std::size_t level, const std::string &code_to_stand_on = {});
    void LoadBelow(std::size_t level);
    /// Keys of the row on which the level stands, with those of the levels above; the last one "0" when it has none.
    RecordKeys KeysAt(std::size_t level) const;
    std::size_t FocusedLevel(); ///< the last one that had it while a button has it

    void OnRecordNuovo();
    void OnRecordApri();
    void OnRecordElimina();
    void OnRecordStampa();
    void Edited(std::size_t level, const std::optional<RecordKeys> &stored);

    std::array<const BrowseDescription *, kLevels> tables_;
    std::array<CSpreadSheet *, kLevels> lists_{};
    std::size_t last_level_ = 0; ///< see FocusedLevel
    bool is_loading_ = false;
};

#pragma once

#include "schedule/Instalments.h"
#include "tarvodlg/widgets/TarvoDialog.h"
#include "tarvolumera/Schedule.h"

class QKeyEvent;

/// The schedule generator: proposes the instalments of a stored journal entry from its payment terms, lets the user
/// correct dates, amounts, bank and description, and stores them. It ends at once, without being seen, when there is
/// nothing to generate or the entry has its instalments already.
///
/// A whole proposal is accepted with one key: the focus stands on OK. Where a date is missing it stands on that.
class CGenScadenze : public CTarvoDialog {
  public:
    /// @param entry  stored entry whose instalments are made; outlives the dialog
    CGenScadenze(PNOTA *entry, CWnd *parent);
    ~CGenScadenze() override;

    bool m_proposed = false; ///< there was something to generate, so that the user saw the dialog
    long m_stored = 0;       ///< how many instalments were stored

    /// Empties the record for a new instalment of a side: next number, due and issued today, not the last one.
    static void Blank(SACommand *cmd, SCADENZE *record, short side);

  protected:
    bool OnInitDialog() override;
    void OnOK() override;

  private:
    void BuildHead();
    void BuildGrid();
    void ShowRows();
    void ShowDifference();
    std::string LeftOutText(const std::vector<Instalment> &rows, bool is_total_reached) const;
    void EnterFirstField();
    std::vector<Instalment> ReadRows() const; ///< all rows of the grid, the empty ones too
    bool OnKeyPressSpread(long row, long column, QKeyEvent *key);
    bool TakeRest(long row); ///< an empty amount gets what is missing to the total
    void LeaveSpread(bool forward);

    struct Form;
    std::unique_ptr<Form> form_;
};

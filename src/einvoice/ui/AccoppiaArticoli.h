#pragma once

#include "einvoice/CaricoMerci.h"
#include "tarvodlg/widgets/TarvoDialog.h"

class CSpreadSheet;

/// Puts an article beside each line of an invoice before it is loaded into the warehouse. What is confirmed here is
/// remembered for the supplier, so the next invoice needs no window.
///
/// Keys: in the article column a code, or part of a description (the only article that has it is taken, of several the
/// list opens); F4 the list; F3 a new article made from the line; F2 confirms; Esc gives the load up.
class CAccoppiaArticoli : public CTarvoDialog {
  public:
    /// @param lines  changed only by F2
    CAccoppiaArticoli(long supplier, std::vector<LoadLine> *lines, CWnd *parent = nullptr);

    /// As LoadChoices wants it.
    static std::function<bool(long, std::vector<LoadLine> *)> Matcher(CWnd *parent);

    void OnRecordNuovo(); ///< an article from the active line

    QSize sizeHint() const override; ///< as wide as all columns

  protected:
    bool OnInitDialog() override;
    void OnOK() override;

  private:
    void BuildGrid();
    void ShowLines();
    void ShowArticle(long row);
    void ShowCount();
    void Take(long row, const std::string &article);
    bool OnLeaveCellSpread(long row, long column);
    /// Opens the list of articles; what was chosen goes into the row. @return false when none was
    bool Browse(long row, const std::string &typed);
    const LoadLine &Line(long row) const { return lines_->at(static_cast<std::size_t>(row) - 1); }

    long supplier_;
    std::vector<LoadLine> *lines_;
    CSpreadSheet *grid_ = nullptr;
    QAbstractButton *ok_ = nullptr;
};

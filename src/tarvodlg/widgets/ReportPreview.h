#pragma once

#include "tarvodlg/print/Crystal.h"
#include "tarvodlg/widgets/TarvoDialog.h"

#include <QPdfDocument>

class PreviewPages;
class QLineEdit;

/// Shows the pages of a report and goes on with them: to the printer, to a PDF, as rows to a spreadsheet.
/// Keys: + - and 0 zoom, Home and End, PgUp and PgDn, Ctrl+F finds (F3 the next one), Esc leaves.
class CReportPreview : public CTarvoDialog {
  public:
    /// @param request  to run it again as rows; without a query there are none
    /// @param pdf  the pages; the file must stay while the window is open
    CReportPreview(const ReportRequest &request, const std::filesystem::path &pdf, CWnd *parent = nullptr);
    ~CReportPreview() override;

    bool PreTranslateMessage(QKeyEvent *message) override;
    void OnKickIdle() override;

    void OnRecordStampa();
    void OnPdf();
    void OnExcel();
    void OnCsv();
    void OnTrova(); ///< the field to type into, or the next place when something was typed

    int Page() const; ///< the one in view, from 0
    int Pages() const { return document_.pageCount(); }
    double Zoom() const; ///< 1 = as on paper

  protected:
    bool OnInitDialog() override;

  private:
    void AddCommands();
    void ZoomBy(double factor);
    void GoTo(int page);
    bool ZoomKey(const QKeyEvent &key);
    void FindNext();
    /// Where to store a file of the report; empty when cancelled.
    std::filesystem::path PickTarget(const char *title, const char *filter, const char *extension) const;
    void SaveRows(const std::filesystem::path &file);

    ReportRequest request_;
    std::filesystem::path pdf_;
    QPdfDocument document_;
    PreviewPages *view_ = nullptr;
    QLineEdit *words_ = nullptr;
};

/// Sends the pages of a PDF to a printer that the user chooses. @return false when cancelled
/// @throws ReportError when the pages cannot be read or the printer does not answer
bool PrintPdf(CWnd *parent, const std::string &title, const std::filesystem::path &pdf, bool landscape);

/// From now on reports are shown in preview windows and printed through the printer's dialog.
void InstallReportPresenter();

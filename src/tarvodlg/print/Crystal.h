#pragma once

#include "tarvodlg/print/ReportRunner.h"

enum class ReportTarget { Preview, Printer, Pdf, Csv, Xlsx, Text };

/// Where a report goes. The file's name is proposed to the user in the preview and taken as it is by the others.
struct ReportDestination {
    ReportTarget target = ReportTarget::Preview;
    std::filesystem::path file;
};

/// Shows a finished report or sends it to the printer; the desk has one with windows. Without one Preview and Printer
/// are refused.
class ReportPresenter {
  public:
    virtual ~ReportPresenter() = default;
    /// @param request  to run it again as rows (CSV, XLSX)   @param pdf  the pages; the caller removes the file
    /// afterwards
    virtual void Preview(const ReportRequest &request, const std::filesystem::path &pdf) = 0;
    /// Sends the pages to a printer that the user chooses. @return false when cancelled
    virtual bool Print(const std::string &title, const std::filesystem::path &pdf, bool landscape) = 0;
};
ReportPresenter *SetReportPresenter(ReportPresenter *presenter); ///< @return the one before

inline constexpr int kPortrait = 1, kLandscape = 2;

/// The report wrapper that the dialogs print through: open a layout, select, give the parameters, run.
///
///     CCrystal cry;
///     if (!cry.CryOpen("pnotagest.rpt", "Movimenti Prima Nota", 0, 0)) return;
///     cry.CrySetDnsLessConn(lumera_db_type, 0);
///     cry.CrySetOrientation(kLandscape);
///     cry.CrySelect(formula, 0);
///     cry.CryStringParam(0, "Ditta", CompanyTitle());
///     cry.CryEsegui();
///     cry.CryClose();
///
/// Errors of layout, formula, database and file are shown through the UserInterface; the call then gives false.
class CCrystal {
  public:
    CCrystal();
    ~CCrystal();

    bool CryOpen(const std::string &file, const std::string &title, int, int);
    /// @param db_type  must be the dialect of the open archive (lumera_db_type)
    void CrySetDnsLessConn(long db_type, int);
    void CrySetOrientation(int orientation);
    void CrySelect(const std::string &formula, int);

    // Parameters by index and name; the name decides, the index is the order in the layout. While a sub-report is open
    // (CryOpenSubReport) they go to it. A name the layout does not have is refused when the report runs.
    void CryLongParam(int index, const char *name, long value);
    void CryStringParam(int index, const char *name, const std::string &value);
    void CryDoubleParam(int index, const char *name, double value);
    void CryDateParam(int index, const char *name, long day); ///< day number, 0 = none

    void CryOpenSubReport(const char *name);
    void CryCloseSubReport();
    /// Puts another table in the place of one of the layout's: a work table made for this print.
    void CrySetTable(const char *table, const std::string &real_table);
    void CrySetFirstPage(long number);
    void CrySetDestination(ReportDestination destination);

    /// Runs the report under the progress window. @return false when it failed or the user cancelled printing
    bool CryEsegui();
    void CryClose();

    /// Rows and pages of the last run. Registers go on numbering from them.
    const ReportResult &Result() const { return result_; }
    const ReportRequest &Request() const { return request_; }

  private:
    void SetParameter(const char *name, ReportValue value);
    bool Execute(const ReportDestination &destination);

    bool open_ = false;
    std::string sub_report_; ///< open one; empty = the report itself
    long db_type_ = -1;
    ReportRequest request_;
    std::optional<ReportDestination> destination_; ///< none = the program's
    ReportResult result_;
};

/// Where reports go that say nothing of it: the preview at the desk, a file named on the command line.
void SetDefaultDestination(ReportDestination destination);

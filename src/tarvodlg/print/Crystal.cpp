#include "tarvodlg/print/Crystal.h"

#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/print/PageBuilder.h"
#include "tarvodlg/print/PagePainter.h"
#include "tarvodlg/print/TemporaryPdf.h"
#include "tarvolumera/Company.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <utility>

#include <fmt/format.h>

namespace {

ReportPresenter *presenter_in_use = nullptr;
ReportDestination default_destination;

} // namespace

ReportPresenter *SetReportPresenter(ReportPresenter *presenter)
{
    return std::exchange(presenter_in_use, presenter);
}

ReportPresenter &RequirePresenter()
{
    if (presenter_in_use == nullptr)
        throw ReportError("Anteprima e stampante ci sono solo nel programma a finestre: indicare un file.");
    return *presenter_in_use;
}

void SetDefaultDestination(ReportDestination destination)
{
    default_destination = std::move(destination);
}

CCrystal::CCrystal() = default;
CCrystal::~CCrystal() = default;

namespace {

/// Runs one call of the wrapper and shows what it throws. @return false when it threw
bool Shown(const std::string &tag, const std::function<void()> &work)
{
    try {
        work();
        return true;
    } catch (const SAException &error) {
        SAExceptionDisplay(error, tag.c_str(), false);
    } catch (const std::exception &error) { // of layout, formula and file, with their own words
        AfxMessageBox(error.what(), MB_OK | MB_ICONSTOP);
    }
    return false;
}

} // namespace

bool CCrystal::CryOpen(const std::string &file, const std::string &title, int, int)
{
    CryClose();
    open_ = Shown(LUMERA_TAG, [&] {
        request_.layout = LoadLayout(file);
        request_.title = title.empty() ? request_.layout.title : title;
        request_.landscape = request_.layout.landscape;
    });
    return open_;
}

void CCrystal::CrySetDnsLessConn(long db_type, int)
{
    db_type_ = db_type;
}

void CCrystal::CrySetOrientation(int orientation)
{
    request_.landscape = orientation == kLandscape;
}

void CCrystal::CrySelect(const std::string &formula, int)
{
    if (sub_report_.empty())
        request_.selection = formula;
    else
        request_.sub_selections[sub_report_] = formula;
}

void CCrystal::SetParameter(const char *name, ReportValue value)
{
    std::map<std::string, ReportValue> &parameters =
        sub_report_.empty() ? request_.parameters : request_.sub_parameters[sub_report_];
    parameters[name] = std::move(value);
}

void CCrystal::CryLongParam(int, const char *name, long value)
{
    SetParameter(name, static_cast<long long>(value));
}

void CCrystal::CryStringParam(int, const char *name, const std::string &value)
{
    SetParameter(name, value);
}

void CCrystal::CryDoubleParam(int, const char *name, double value)
{
    SetParameter(name, value);
}

void CCrystal::CryDateParam(int, const char *name, long day)
{
    SetParameter(name, ReportDate{day});
}

void CCrystal::CryOpenSubReport(const char *name)
{
    sub_report_ = name;
}

void CCrystal::CryCloseSubReport()
{
    sub_report_.clear();
}

void CCrystal::CrySetTable(const char *table, const std::string &real_table)
{
    request_.tables[table] = real_table;
}

void CCrystal::CrySetFirstPage(long number)
{
    request_.first_page = number;
}

void CCrystal::CrySetDestination(ReportDestination destination)
{
    destination_ = std::move(destination);
}

namespace {

ReportResult RunAsRows(SACommand *cmd, const ReportRequest &request, const ReportDestination &destination,
                       const std::function<void(long)> &progress)
{
    const auto open = [&](std::vector<RowColumn> columns) {
        return destination.target == ReportTarget::Xlsx ? OpenXlsx(destination.file, request.title, std::move(columns))
                                                        : OpenCsv(destination.file, std::move(columns));
    };
    return RunReportRows(cmd, request, open, progress);
}

/// The connection is closed before the pages are shown: who reads them long holds nothing in the archive.
ReportResult RunWhole(const ReportRequest &request, const ReportDestination &destination,
                      const std::filesystem::path &pages)
{
    CTarvoProgressDlg progress;
    progress.SetStatus(fmt::format("{}: elaborazione stampa...", request.title));
    SAConnection connection;
    SACommand command;
    sqldit.OpenConnection(&connection, &command, true);
    const auto sign_of_life = [&](long rows) { progress.SetPos(rows); };
    if (destination.target == ReportTarget::Csv || destination.target == ReportTarget::Xlsx)
        return RunAsRows(&command, request, destination, sign_of_life);
    return WritePdf(&command, request, pages, sign_of_life);
}

} // namespace

bool CCrystal::CryEsegui()
{
    if (!open_) return false;
    result_ = {};
    bool is_done = true;
    const bool is_well = Shown(LUMERA_TAG, [&] {
        if (db_type_ >= 0 && db_type_ != lumera_db_type)
            throw ReportError(fmt::format("{}: la stampa è per un altro tipo di archivio", request_.layout.file));
        is_done = Execute(destination_ ? *destination_ : default_destination);
    });
    return is_well && is_done;
}

bool CCrystal::Execute(const ReportDestination &destination)
{
    switch (destination.target) {
    case ReportTarget::Text:
        throw ReportError(fmt::format("{}: questa stampa non si fa come testo a colonne; scegliere PDF, CSV o XLSX",
                                      request_.layout.file));
    case ReportTarget::Pdf:
    case ReportTarget::Csv:
    case ReportTarget::Xlsx:
        result_ = RunWhole(request_, destination, destination.file);
        return true;
    case ReportTarget::Preview:
    case ReportTarget::Printer:
        break;
    }
    ReportPresenter &presenter = RequirePresenter();
    const TemporaryPdf pages;
    result_ = RunWhole(request_, destination, pages.Path());
    if (destination.target == ReportTarget::Printer)
        return presenter.Print(request_.title, pages.Path(), IsLandscape(request_));
    presenter.Preview(request_, pages.Path());
    return true;
}

void CCrystal::CryClose()
{
    open_ = false;
    request_ = {};
    sub_report_.clear();
    destination_.reset();
}

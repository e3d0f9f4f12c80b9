#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/print/RowWriter.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvodlg/widgets/TarvoRecordDialog.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QSettings>
#include <QVBoxLayout>
#include <cstdlib>
#include <cxxabi.h>
#include <fmt/format.h>
#include <typeinfo>

namespace {

ColumnFormat FormatOf(CSpreadSheet::Type type)
{
    switch (type) {
    case CSpreadSheet::Type::Code:
        return ColumnFormat::Code;
    case CSpreadSheet::Type::Amount:
        return ColumnFormat::Amount;
    case CSpreadSheet::Type::Date:
        return ColumnFormat::Date;
    default:
        return ColumnFormat::Text;
    }
}

/// The value of a cell; a cell that shows nothing exports as nothing, not as a zero.
ReportValue ValueOf(const CSpreadSheet &sheet, long row, long column)
{
    const CSpreadSheet::Type type = sheet.ColumnAt(column).type;
    if (type == CSpreadSheet::Type::Text || type == CSpreadSheet::Type::Choice) return sheet.Text(row, column);
    if (type == CSpreadSheet::Type::Amount) {
        const double amount = sheet.Number(row, column);
        if (amount != 0 || !sheet.Text(row, column).empty()) return amount;
    } else {
        const long value = sheet.Long(row, column);
        if (type == CSpreadSheet::Type::Date) return ReportDate{value};
        if (value != 0 || !sheet.Text(row, column).empty()) return static_cast<long long>(value);
    }
    return std::monostate{};
}

void WriteRows(const CSpreadSheet &sheet, const std::filesystem::path &file, const std::string &title)
{
    std::vector<RowColumn> columns;
    for (long column = 1; column <= sheet.ColumnCount(); ++column)
        columns.push_back({FromQt(sheet.ColumnAt(column).title), FormatOf(sheet.ColumnAt(column).type)});
    const std::unique_ptr<RowWriter> writer = OpenRows(file, title, columns);

    CTarvoProgressDlg progress;
    progress.SetStatus("Esportazione in corso...");
    progress.SetRange(0, sheet.RowCount());
    std::vector<ReportValue> values(columns.size());
    for (long row = 1; row <= sheet.RowCount(); ++row) {
        for (std::size_t i = 0; i < values.size(); ++i) values[i] = ValueOf(sheet, row, static_cast<long>(i) + 1);
        writer->Add(values);
        progress.StepIt();
    }
    writer->Finish();
}

} // namespace

struct CTarvoRecordBrowseDialog::List {
    QWidget *filters = nullptr;
    CSpreadSheet *spread = nullptr;

    /// Under which this station remembers the window.
    static QString NameOf(const CTarvoRecordBrowseDialog &dialog)
    {
        if (!dialog.objectName().isEmpty()) return dialog.objectName();
        int status = 0;
        const std::unique_ptr<char, void (*)(void *)> name(
            abi::__cxa_demangle(typeid(dialog).name(), nullptr, nullptr, &status), std::free);
        return QString::fromUtf8(status == 0 ? name.get() : typeid(dialog).name());
    }
    static QString GeometryKey(const CTarvoRecordBrowseDialog &dialog)
    {
        return QStringLiteral("windows/%1/geometry").arg(NameOf(dialog));
    }
};

CTarvoRecordBrowseDialog::CTarvoRecordBrowseDialog(CWnd *parent)
    : CTarvoRecordDialog(parent), list_(std::make_unique<List>())
{
    TreatFieldsAsFilters();
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    auto *layout = new QVBoxLayout(Content());
    layout->setContentsMargins(0, 0, 0, 0);
    list_->filters = new QWidget(Content());
    layout->addWidget(list_->filters);
    list_->spread = new CSpreadSheet(Content());
    list_->spread->AllowSorting(true);
    list_->spread->on_dbl_click = [this](long, long) {
        if (IsRecordLoaded()) RunRecordCommand(RecordCommand::Apri);
    };
    layout->addWidget(list_->spread, 1);
}

CTarvoRecordBrowseDialog::~CTarvoRecordBrowseDialog() = default;

bool CTarvoRecordBrowseDialog::IsRecordLoaded() const
{
    return list_->spread->ActiveRow() > 0;
}

bool CTarvoRecordBrowseDialog::PreTranslateMessage(QKeyEvent *message)
{
    const bool is_insert = message->key() == Qt::Key_Insert && message->modifiers() == Qt::NoModifier;
    if (is_insert && focusWidget() == list_->spread && RunRecordCommand(RecordCommand::Nuovo)) return true;
    return CTarvoRecordDialog::PreTranslateMessage(message);
}

CSpreadSheet *CTarvoRecordBrowseDialog::Spread() const
{
    return list_->spread;
}

QWidget *CTarvoRecordBrowseDialog::FilterArea() const
{
    return list_->filters;
}

void CTarvoRecordBrowseDialog::OnExport()
{
    FilePicking picking;
    picking.title = "Esporta";
    picking.filter = "Foglio Excel (*.xlsx)|*.xlsx|File CSV (*.csv)|*.csv||";
    picking.default_extension = "xlsx";
    picking.save = true;
    const std::string title = FromQt(windowTitle());
    picking.proposed = FileNameFrom((title.empty() ? "elenco" : title) + ".xlsx");
    Guarded(LUMERA_TAG, [&] {
        const std::vector<std::filesystem::path> picked = CurrentUserInterface().PickFiles(picking);
        if (picked.empty()) return;
        WriteRows(*list_->spread, picked.front(), title);
        AfxMessageBox(fmt::format("Esportazione conclusa con {} righe!", list_->spread->RowCount()),
                      MB_OK | MB_ICONINFORMATION);
    });
}

void CTarvoRecordBrowseDialog::RestoreLayout()
{
    QLayout *filters = list_->filters->layout();
    list_->filters->setVisible(filters != nullptr);
    if (filters) filters->setContentsMargins(0, 0, 0, 0); // in line with the toolbar and the grid
    list_->spread->RememberLayout(List::NameOf(*this));
    if (restoreGeometry(QSettings().value(List::GeometryKey(*this)).toByteArray())) return;
    const QSizeF screen = QGuiApplication::primaryScreen()->availableSize();
    const QSize room = QSizeF(screen.width() * 0.98, screen.height() * 0.92).toSize(); // with its frame and title
    const QSize wanted(fontMetrics().averageCharWidth() * 130, fontMetrics().height() * 34);
    resize(wanted.expandedTo(sizeHint()).boundedTo(room));
}

void CTarvoRecordBrowseDialog::SaveLayout()
{
    QSettings().setValue(List::GeometryKey(*this), saveGeometry());
}

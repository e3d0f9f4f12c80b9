#include "schedule/ui/ScheduleViewWindow.h"

#include "sqlapi/SAConnection.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/SpreadColumns.h"
#include "tarvolumera/TarvoPostgreSQL.h"

#include <QLocale>
#include <QScopedValueRollback>

ScheduleViewWindow::ScheduleViewWindow(CWnd *parent) : CTarvoRecordBrowseDialog(parent)
{
    setMinimumSize(CharactersWide(this, 80), fontMetrics().lineSpacing() * 20);
}

CSpreadSheet::Column ScheduleViewWindow::GridColumn(const char *title, CSpreadSheet::Type type, int width)
{
    return ListColumn(title, type, width);
}

CSpreadSheet::Column ScheduleViewWindow::SumColumn(const char *title, int width)
{
    CSpreadSheet::Column column = GridColumn(title, CSpreadSheet::Type::Amount, width);
    column.sum = true;
    return column;
}

void ScheduleViewWindow::ReloadOn(CTarvoField *field)
{
    OnLostFocusEvent(field, [this] { return TakeFilter(); });
    if (auto *choice = dynamic_cast<CChoiceField *>(field))
        connect(choice, &QComboBox::activated, this, [this] { Guarded(LUMERA_TAG, [this] { TakeFilter(); }); });
}

void ScheduleViewWindow::AddViewCommands(const char *open, const char *open_tooltip, const char *print_tooltip)
{
    UseCommands({RecordCommand::Apri, RecordCommand::Stampa});
    SetCommandCaption(RecordCommand::Apri, QString::fromUtf8(open), QString::fromUtf8(open_tooltip));
    SetCommandCaption(RecordCommand::Stampa, QStringLiteral("F9 - Stampa"), QString::fromUtf8(print_tooltip));
    AddToolbarCommand({.caption = QStringLiteral("Esporta"),
                       .tooltip = QStringLiteral("Salva in un foglio Excel o in un file CSV"),
                       .icon = QStringLiteral("esporta"),
                       .run = [this] { Export(); },
                       .update = [this](CCmdUI *command) { command->Enable(HasRows()); },
                       .shortcut = QStringLiteral("Ctrl+E")});
}

bool ScheduleViewWindow::Refuse(CTarvoField *field, const char *reason)
{
    SetStatus(QString::fromUtf8(reason));
    RefuseField(field);
    return false;
}

bool ScheduleViewWindow::TakeFilter()
{
    GetField();
    if (!CheckFilter()) return false;
    SetChanged(false);
    SetField();
    // The focus may be in the next field already, whose text was selected when it was entered.
    if (CTarvoField *field = FieldOf(focusWidget())) field->SelectAll();
    LoadTable(nullptr, true);
    return true;
}

void ScheduleViewWindow::FillOrClear(const std::function<void()> &fill)
{
    try {
        fill();
    } catch (...) {
        Spread()->Clear();
        SetStatus({});
        throw;
    }
}

void ScheduleViewWindow::LoadTable(SACommand *cmd, bool progress)
{
    if (loading_) return; // the progress window lets events through
    const QScopedValueRollback<bool> loading(loading_, true);
    Guarded(LUMERA_TAG, [&] {
        CommandScope scope(cmd);
        SATransaction picture(scope.get(), SATransactionKind::Read); // rows and sums of one moment
        FillOrClear([&] { ReadRows(scope.get(), progress); });
        picture.Commit();
        OnKickIdle(); // commands on what is listed now
    });
}

void ScheduleViewWindow::OnUpdateRecordApri(CCmdUI *command)
{
    command->Enable(IsRecordLoaded());
}

void ScheduleViewWindow::OnUpdateRecordStampa(CCmdUI *command)
{
    command->Enable(HasRows());
}

QString Counted(long count, const char *one, const char *many)
{
    return QLocale(QLocale::Italian, QLocale::Italy).toString(static_cast<qlonglong>(count)) + QLatin1Char(' ') +
           QString::fromUtf8(count == 1 ? one : many);
}

#include "tarvodlg/widgets/TarvoRecordDialog.h"

#include "tarvodlg/widgets/DialogHelp.h"
#include "tarvodlg/widgets/DialogKeys.h"
#include "tarvodlg/widgets/DialogState.h"
#include "tarvodlg/widgets/Theme.h"

#include <QAction>
#include <QKeyEvent>
#include <QTabBar>
#include <QTabWidget>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <map>

namespace {

using Dialog = CTarvoRecordDialog;

struct RecordCommandSpec {
    RecordCommand command;
    const char *caption, *icon, *shortcut, *tooltip;
    /// Commands that leave the record do not insist on a good value in the field that is left.
    bool checks_field;
    int group; ///< a line stands between the groups of the toolbar
    void (Dialog::*run)();
    void (Dialog::*update)(CCmdUI *);
};

const RecordCommandSpec kSpecs[] = {
    {RecordCommand::Nuovo, "F3 - Nuovo", "nuovo", "", "Comincia un nuovo record", false, 0, &Dialog::OnRecordNuovo,
     &Dialog::OnUpdateRecordNuovo},
    {RecordCommand::Apri, "Apri", "apri", "Ctrl+O", "Apre il record", true, 0, &Dialog::OnRecordApri,
     &Dialog::OnUpdateRecordApri},
    {RecordCommand::Salva, "F2 - &Salva", "salva", "", "Salva il record", true, 0, &Dialog::OnRecordSalva,
     &Dialog::OnUpdateRecordSalva},
    {RecordCommand::Elimina, "F6 - &Elimina", "elimina", "", "Elimina il record", false, 0, &Dialog::OnRecordElimina,
     &Dialog::OnUpdateRecordElimina},
    {RecordCommand::Annulla, "Annulla", "annulla", "Ctrl+R", "Annulla le modifiche", false, 0, &Dialog::OnRecordAnnulla,
     &Dialog::OnUpdateRecordAnnulla},
    {RecordCommand::Cerca, "F5 - Cerca", "cerca", "", "Cerca un record", false, 1, &Dialog::OnRecordCerca,
     &Dialog::OnUpdateRecordCerca},
    {RecordCommand::Prec, "Precedente", "precedente", "PgUp", "Record precedente", false, 1, &Dialog::OnRecordPrec,
     &Dialog::OnUpdateRecordPrec},
    {RecordCommand::Succ, "Successivo", "successivo", "PgDown", "Record successivo", false, 1, &Dialog::OnRecordSucc,
     &Dialog::OnUpdateRecordSucc},
    {RecordCommand::Stampa, "Stampa", "stampa", "Ctrl+P", "Stampa", true, 2, &Dialog::OnRecordStampa,
     &Dialog::OnUpdateRecordStampa},
};

constexpr int kFurtherCommands = 3; ///< group of the commands that a dialog adds

/// Shown in the toolbar: the key stays, the mark of the mnemonic goes.
QString ToolbarText(const QString &caption)
{
    const QString plain = PlainCaption(caption);
    return KeyOfCaption(caption) != 0 ? caption.section(QLatin1String(" - "), 0, 0) + QStringLiteral(" - ") + plain
                                      : plain;
}

} // namespace

struct CTarvoRecordDialog::Toolbar {
    QToolBar *bar = nullptr;
    std::map<RecordCommand, std::size_t> commands; ///< their place among the dialog's
    std::map<std::size_t, QAction *> actions;
    int group = -1; ///< of the last button
    /// In a list the fields are filters, which searching completes first; nothing of a record is lost.
    bool is_list = false;

    void BeginGroup(int next)
    {
        if (group >= 0 && next != group) bar->addSeparator();
        group = next;
    }
};

CTarvoRecordDialog::CTarvoRecordDialog(CWnd *parent) : CTarvoDialog(parent), toolbar_(std::make_unique<Toolbar>())
{
    toolbar_->bar = new QToolBar(this);
    toolbar_->bar->setFocusPolicy(Qt::NoFocus);
    toolbar_->bar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    toolbar_->bar->setAccessibleName(QStringLiteral("Comandi"));
    toolbar_->bar->hide();
    if (auto *more = toolbar_->bar->findChild<QToolButton *>(QStringLiteral("qt_toolbar_ext_button"))) {
        more->setToolButtonStyle(Qt::ToolButtonTextOnly); // its picture is black on every theme
        more->setText(QStringLiteral("»"));
        more->setToolTip(QStringLiteral("Altri comandi"));
    }
    Frame()->insertWidget(0, toolbar_->bar);
}

CTarvoRecordDialog::~CTarvoRecordDialog() = default;

void CTarvoRecordDialog::OnUpdateRecordApri(CCmdUI *command)
{
    command->Enable(IsRecordLoaded());
}

void CTarvoRecordDialog::OnUpdateRecordElimina(CCmdUI *command)
{
    command->Enable(IsRecordLoaded());
}

void CTarvoRecordDialog::OnUpdateRecordAnnulla(CCmdUI *command)
{
    command->Enable(IsChanged());
}

void CTarvoRecordDialog::OnUpdateRecordStampa(CCmdUI *command)
{
    command->Enable(IsRecordLoaded());
}

void CTarvoRecordDialog::UseCommands(std::initializer_list<RecordCommand> commands)
{
    for (const RecordCommand command : commands) AddRecordCommand(command);
}

void CTarvoRecordDialog::AddRecordCommand(RecordCommand command)
{
    for (const RecordCommandSpec &spec : kSpecs) {
        if (spec.command != command) continue;
        toolbar_->BeginGroup(spec.group);
        DialogCommand taken;
        taken.caption = QString::fromUtf8(spec.caption);
        taken.tooltip = QString::fromUtf8(spec.tooltip);
        taken.icon = QString::fromUtf8(spec.icon);
        taken.shortcut = QString::fromUtf8(spec.shortcut);
        taken.checks_field = spec.checks_field || toolbar_->is_list;
        taken.run = [this, run = spec.run] { (this->*run)(); };
        taken.update = [this, update = spec.update](CCmdUI *now) { (this->*update)(now); };
        toolbar_->commands[command] = TakeToolbarCommand(std::move(taken));
        if (command == RecordCommand::Salva) LeadToSave();
    }
}

std::size_t CTarvoRecordDialog::TakeToolbarCommand(DialogCommand command)
{
    auto *action = new QAction(TarvoIcon(command.icon), command.caption, toolbar_->bar);
    toolbar_->bar->addAction(action);
    toolbar_->bar->show();
    toolbar_->bar->widgetForAction(action)->setFocusPolicy(Qt::NoFocus);
    const std::size_t index = TakeCommand(std::move(command), [action](const CCmdUI &now) {
        if (action->isEnabled() != now.IsEnabled()) action->setEnabled(now.IsEnabled());
        if (now.IsChecked()) action->setCheckable(true);
        if (action->isChecked() != now.IsChecked()) action->setChecked(now.IsChecked());
        if (now.Caption().isEmpty() || action->text() == now.Caption()) return;
        action->setText(now.Caption());
        action->setIconText(ToolbarText(now.Caption()));
    });
    toolbar_->actions[index] = action;
    ShowCaption(index);
    connect(action, &QAction::triggered, this, [this, index] { RunCommand(index); });
    return index;
}

void CTarvoRecordDialog::LeadToSave()
{
    const std::size_t index = toolbar_->commands[RecordCommand::Salva];
    auto *button = qobject_cast<QToolButton *>(toolbar_->bar->widgetForAction(toolbar_->actions[index]));
    button->setFocusPolicy(Qt::TabFocus); // not by a click, which leaves the user in his field
    state_->after_fields = button;
    connect(button, &QToolButton::clicked, this, [this, button] {
        // The record is stored and nothing moved the focus: the next one is typed from the beginning.
        if (button->hasFocus() && !state_->closing && !IsChanged()) EnterFirstField();
    });
}

void CTarvoRecordDialog::EnterFirstField()
{
    if (QWidget *first = EdgeOf(Content(), true)) first->setFocus(Qt::TabFocusReason);
}

void CTarvoRecordDialog::ShowCaption(std::size_t index)
{
    const DialogCommand &command = Commands()[index];
    QAction *action = toolbar_->actions[index];
    action->setText(command.caption);
    action->setIconText(ToolbarText(command.caption));
    action->setToolTip(TooltipOf(command));
}

void CTarvoRecordDialog::SetCommandCaption(RecordCommand command, const QString &caption, const QString &tooltip)
{
    const auto found = toolbar_->commands.find(command);
    if (found == toolbar_->commands.end()) return;
    SetCaption(found->second, caption, tooltip);
    ShowCaption(found->second);
}

QAbstractButton *CTarvoRecordDialog::AddToolbarCommand(DialogCommand command)
{
    toolbar_->BeginGroup(kFurtherCommands);
    const std::size_t index = TakeToolbarCommand(std::move(command));
    return qobject_cast<QToolButton *>(toolbar_->bar->widgetForAction(toolbar_->actions[index]));
}

bool CTarvoRecordDialog::RunRecordCommand(RecordCommand command)
{
    const auto found = toolbar_->commands.find(command);
    if (found == toolbar_->commands.end()) return false;
    RunCommand(found->second);
    return true;
}

void CTarvoRecordDialog::TreatFieldsAsFilters()
{
    toolbar_->is_list = true;
}

bool CTarvoRecordDialog::ConfirmDiscard()
{
    return MayLoseChanges();
}

CTarvoTabbedRecordDialog::CTarvoTabbedRecordDialog(CWnd *parent)
    : CTarvoRecordDialog(parent), tabs_(new QTabWidget(Content()))
{
    tabs_->tabBar()->setFocusPolicy(Qt::NoFocus); // Enter and Tab go from field to field
    auto *layout = new QVBoxLayout(Content());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tabs_);
}

bool CTarvoTabbedRecordDialog::PreTranslateMessage(QKeyEvent *message)
{
    return TranslateTabKey(this, tabs_, message) || CTarvoRecordDialog::PreTranslateMessage(message);
}

QWidget *CTarvoTabbedRecordDialog::AddTab(const QString &title)
{
    auto *page = new QWidget(tabs_);
    const int index = tabs_->addTab(page, title);
    if (index < 9) tabs_->setTabToolTip(index, QStringLiteral("Alt+%1").arg(index + 1));
    return page;
}

bool CTarvoTabbedRecordDialog::focusNextPrevChild(bool next)
{
    QWidget *page = tabs_->currentWidget(), *focus = focusWidget();
    const QWidget *edge = page && page->isAncestorOf(focus) ? EdgeOf(page, !next) : nullptr;
    const bool is_at_edge = edge && (edge == focus || edge->isAncestorOf(focus));
    const int step = next ? 1 : -1;
    int tab = tabs_->currentIndex() + step;
    while (tab >= 0 && tab < tabs_->count() && !tabs_->isTabEnabled(tab)) tab += step;
    if (!is_at_edge || tab < 0 || tab >= tabs_->count()) return CTarvoRecordDialog::focusNextPrevChild(next);

    if (!LeaveFocusedField()) return true;
    tabs_->setCurrentIndex(tab);
    if (QWidget *entered = EdgeOf(tabs_->currentWidget(), next))
        entered->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

void CTarvoTabbedRecordDialog::EnterFirstField()
{
    tabs_->setCurrentIndex(0);
    CTarvoRecordDialog::EnterFirstField();
}

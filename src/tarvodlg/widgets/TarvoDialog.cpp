#include "tarvodlg/widgets/TarvoDialog.h"

#include "sqlapi/SAException.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/DialogHelp.h"
#include "tarvodlg/widgets/DialogKeys.h"
#include "tarvodlg/widgets/DialogState.h"
#include "tarvodlg/widgets/Theme.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

namespace {

bool IsLineOfText(const QWidget *focus)
{
    if (!qobject_cast<const QLineEdit *>(focus) || KeepsItsKeys(focus)) return false;
    const QWidget *parent = focus->parentWidget();
    return !qobject_cast<const QComboBox *>(parent) && !qobject_cast<const QAbstractSpinBox *>(parent);
}

/// The mnemonic stays underlined, but its key comes through PreTranslateMessage as all keys of commands do: a button's
/// own shortcut would run the command a moment later, when the next keys have already gone to the field.
void SetButtonText(QPushButton *button, const QString &caption)
{
    if (button->text() == caption) return;
    button->setText(caption);
    button->setShortcut(QKeySequence());
}

bool IsPlainNavigation(const QKeySequence &shortcut)
{
    const QKeyCombination combination = shortcut[0];
    return combination.keyboardModifiers() == Qt::NoModifier &&
           (combination.key() < Qt::Key_F1 || combination.key() > Qt::Key_F35);
}

} // namespace

CTarvoDialog::CTarvoDialog(CWnd *parent) : QDialog(parent), state_(std::make_unique<State>())
{
    state_->frame = new QVBoxLayout(this);
    state_->content = new QWidget(this);
    state_->frame->addWidget(state_->content, 1);

    state_->foot = new QWidget(this);
    state_->buttons = new QHBoxLayout(state_->foot);
    state_->buttons->setContentsMargins(0, 0, 0, 0);
    state_->status = new QLabel(state_->foot);
    state_->status->setTextFormat(Qt::PlainText);
    state_->buttons->addWidget(state_->status, 1);
    state_->foot->hide();
    state_->frame->addWidget(state_->foot);
}

CTarvoDialog::~CTarvoDialog()
{
    state_->closing = true; // fields that lose the focus while they are destroyed are not checked
}

namespace {

/// Some window managers leave the keyboard with nobody when two windows of a program close at the same moment, as a
/// dialog and the question in front of it do. The window below asks for it when none of ours has it.
void GiveKeysTo(QPointer<QWidget> window)
{
    constexpr int kMillisecondsUntilSettled = 60;
    QTimer::singleShot(kMillisecondsUntilSettled, qApp, [window] {
        if (!window || !window->isVisible() || QApplication::activeWindow() || QApplication::activePopupWidget())
            return;
        if (QWidget *front = QApplication::activeModalWidget()) {
            front->activateWindow();
            return;
        }
        window->raise();
        window->activateWindow();
    });
}

} // namespace

int CTarvoDialog::DoModal()
{
    state_->initialised = false;
    if (!Initialise()) return IDCANCEL;
    if (state_->closing) return result() == 0 ? IDCANCEL : result(); // it ended itself while it was being filled
    const int ended_with = exec();
    return ended_with == 0 ? IDCANCEL : ended_with;
}

bool CTarvoDialog::Initialise()
{
    state_->initialised = true;
    state_->closing = state_->idle_failed = false;
    state_->refused = nullptr;
    bool may_open = false;
    if (!Guarded(LUMERA_TAG, [&] { may_open = Prepare(); }) || !may_open) return false;
    PutButtonsLast();
    // The whole form at once, where Qt would open at two thirds of a small screen.
    if (!testAttribute(Qt::WA_Resized)) resize(sizeHint().boundedTo(screen()->availableSize() * 0.95));
    RestoreLayout();
    Idle();
    return true;
}

void CTarvoDialog::PutButtonsLast()
{
    // The focus goes round in the order of creation, but the buttons come after the fields however the constructor was
    // written.
    QWidget *last = nullptr;
    for (QWidget *next = nextInFocusChain(); next != this; next = next->nextInFocusChain())
        if (next->focusPolicy() != Qt::NoFocus && !state_->foot->isAncestorOf(next) && next != state_->after_fields)
            last = next;
    if (last && state_->after_fields) {
        setTabOrder(last, state_->after_fields);
        last = state_->after_fields;
    }
    for (QWidget *button : state_->foot->findChildren<QPushButton *>()) {
        if (last) setTabOrder(last, button);
        last = button;
    }
}

bool CTarvoDialog::PreTranslateMessage(QKeyEvent *message)
{
    if (QApplication::activePopupWidget()) return false; // an open list uses Enter, Esc and the arrows itself
    if (RunCommandOfKey(message)) return true;

    QWidget *focus = focusWidget();
    CTarvoField *field = focus ? FieldOf(focus) : nullptr;
    const Qt::KeyboardModifiers modifiers = message->modifiers() & ~Qt::KeypadModifier;
    if (modifiers != Qt::NoModifier) return false;

    setAttribute(Qt::WA_KeyboardFocusChange); // styles show the focus of a button only to who moves it by key
    switch (message->key()) {
    case Qt::Key_F1:
        OnHelp();
        return true;
    case Qt::Key_F4:
        if (!field || !field->on_dbl_click || KeepsItsKeys(focus)) return false;
        OpenLookup(field);
        return true;
    case Qt::Key_Escape:
        // In a grid's cell Esc gives the value back.
        if (focus && KeepsItsKeys(focus->parentWidget())) return false;
        reject();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (KeepsItsKeys(focus)) return false;
        if (auto *button = qobject_cast<QAbstractButton *>(focus); button && !field)
            button->click();
        else
            focusNextPrevChild(true);
        return true;
    case Qt::Key_Down:
    case Qt::Key_Up:
        if (!IsLineOfText(focus)) return false;
        focusNextPrevChild(message->key() == Qt::Key_Down);
        return true;
    default:
        return false;
    }
}

bool CTarvoDialog::RunCommandOfKey(QKeyEvent *message)
{
    const Qt::KeyboardModifiers modifiers = message->modifiers() & ~Qt::KeypadModifier;
    const QKeySequence pressed(QKeyCombination(modifiers, static_cast<Qt::Key>(message->key())));
    // A sign that needs Shift on one keyboard and none on another is the same key: "Alt++".
    const bool is_sign = message->key() > Qt::Key_Space && message->key() <= Qt::Key_AsciiTilde &&
                         !QChar(message->key()).isLetterOrNumber();
    const QKeySequence without_shift(
        QKeyCombination(is_sign ? modifiers & ~Qt::ShiftModifier : modifiers, static_cast<Qt::Key>(message->key())));
    for (std::size_t i = 0; i < state_->commands.size(); ++i) {
        const DialogCommand &command = state_->commands[i];
        const QKeySequence shortcut(command.shortcut);
        const bool by_shortcut = !shortcut.isEmpty() && (shortcut == pressed || shortcut == without_shift);
        const bool is_its_key = by_shortcut ||
                                (modifiers == Qt::NoModifier && message->key() == KeyOfCaption(command.caption)) ||
                                (modifiers == Qt::AltModifier && QKeySequence::mnemonic(command.caption) == pressed);
        if (!is_its_key) continue;
        const bool is_navigation = by_shortcut && IsPlainNavigation(shortcut);
        if (is_navigation && KeepsItsKeys(focusWidget())) return false;
        if (!message->isAutoRepeat() || is_navigation) RunCommand(i);
        return true;
    }
    return false;
}

void CTarvoDialog::OnKickIdle()
{
    for (std::size_t i = 0; i < state_->commands.size(); ++i) UpdateCommand(i);
}

void CTarvoDialog::Idle()
{
    if (state_->closing || state_->idle_failed) return;
    const QPointer<CTarvoDialog> alive(this);
    const bool is_well = Guarded(LUMERA_TAG, [this] { OnKickIdle(); });
    if (alive && !is_well) state_->idle_failed = true;
}

QAbstractButton *CTarvoDialog::AddCommand(DialogCommand command)
{
    auto *button = new QPushButton(state_->foot);
    SetButtonText(button, command.caption);
    button->setToolTip(TooltipOf(command));
    if (!command.icon.isEmpty()) button->setIcon(TarvoIcon(command.icon));
    button->setAutoDefault(false);
    // A click does not take the focus: the field is asked before the command runs, or not at all.
    button->setFocusPolicy(Qt::TabFocus);
    state_->buttons->addWidget(button);
    state_->foot->show();
    const std::size_t index = TakeCommand(std::move(command), [button](const CCmdUI &now) {
        if (button->isEnabled() != now.IsEnabled()) button->setEnabled(now.IsEnabled());
        if (now.IsChecked()) button->setCheckable(true);
        if (button->isChecked() != now.IsChecked()) button->setChecked(now.IsChecked());
        if (!now.Caption().isEmpty()) SetButtonText(button, now.Caption());
    });
    connect(button, &QAbstractButton::clicked, this, [this, index] { RunCommand(index); });
    return button;
}

std::size_t CTarvoDialog::TakeCommand(DialogCommand command, std::function<void(const CCmdUI &)> show)
{
    state_->commands.push_back(std::move(command));
    state_->show.push_back(std::move(show));
    return state_->commands.size() - 1;
}

void CTarvoDialog::SetCaption(std::size_t index, const QString &caption, const QString &tooltip)
{
    state_->commands[index].caption = caption;
    if (!tooltip.isEmpty()) state_->commands[index].tooltip = tooltip;
}

bool CTarvoDialog::UpdateCommand(std::size_t index)
{
    CCmdUI now;
    if (state_->commands[index].update) state_->commands[index].update(&now);
    if (!now.Caption().isEmpty()) state_->commands[index].caption = now.Caption();
    state_->show[index](now);
    return now.IsEnabled();
}

void CTarvoDialog::RunCommand(std::size_t index)
{
    const QPointer<CTarvoDialog> alive(this);
    Guarded(LUMERA_TAG, [&] {
        if (!UpdateCommand(index)) return BeepRefused();
        if (state_->commands[index].checks_field) {
            if (!LeaveFocusedField() || !alive || state_->closing) return;
            // What the field's handler did may have taken the ground from under the command.
            if (!UpdateCommand(index)) return BeepRefused();
        }
        const std::function<void()> run = state_->commands[index].run;
        if (run) run();
    });
    if (alive) Idle();
}

void CTarvoDialog::SetStatus(const QString &text)
{
    state_->reason.clear();
    state_->status->setText(text);
    state_->foot->setVisible(!text.isEmpty() || state_->buttons->count() > 1);
}

bool CTarvoDialog::Guarded(const char *tag, const std::function<void()> &work)
{
    try {
        work();
        return true;
    } catch (const SAException &error) {
        SAExceptionDisplay(error, tag, false);
    } catch (const std::exception &error) {
        AfxMessageBox(error.what(), MB_OK | MB_ICONERROR);
    }
    return false;
}

void CTarvoDialog::EndDialog(int result)
{
    done(result);
}

void CTarvoDialog::done(int result)
{
    state_->closing = true;
    if (isVisible()) SaveLayout();
    const QPointer<QWidget> below = parentWidget() ? parentWidget()->window() : nullptr;
    QDialog::done(result);
    if (below) GiveKeysTo(below);
}

void CTarvoDialog::OnOK()
{
    if (LeaveFocusedField()) EndDialog(IDOK);
}

void CTarvoDialog::OnCancel()
{
    if (MayLoseChanges()) EndDialog(IDCANCEL);
}

bool CTarvoDialog::MayLoseChanges()
{
    return !IsChanged() || AfxMessageBox("Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?",
                                         MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) == IDYES;
}

void CTarvoDialog::OnHelp()
{
    ShowDialogHelp(this, windowTitle(), state_->commands);
}

QWidget *CTarvoDialog::Content() const
{
    return state_->content;
}

const std::vector<DialogCommand> &CTarvoDialog::Commands() const
{
    return state_->commands;
}

QVBoxLayout *CTarvoDialog::Frame() const
{
    return state_->frame;
}

void CTarvoDialog::reject()
{
    if (!state_->closing) Guarded(LUMERA_TAG, [this] { OnCancel(); });
}

void CTarvoDialog::showEvent(QShowEvent *event)
{
    if (!state_->initialised && !Initialise()) {
        QMetaObject::invokeMethod(
            this, [this] { EndDialog(IDCANCEL); }, Qt::QueuedConnection);
        return;
    }
    QDialog::showEvent(event);
    if (event->spontaneous()) return;
    // Not simply the first in the order of the focus: that goes round, and may begin with a button made before the
    // fields.
    if (QWidget *first = focusWidget() ? nullptr : EdgeOf(state_->content, true))
        first->setFocus(Qt::TabFocusReason);
    else if (!focusWidget())
        focusNextPrevChild(true);
    CTarvoField *field = focusWidget() ? FieldOf(focusWidget()) : nullptr;
    if (field) field->SelectAll();
}

void CTarvoDialog::closeEvent(QCloseEvent *event)
{
    const QPointer<CTarvoDialog> alive(this);
    reject();
    if (alive && isVisible())
        event->ignore(); // the user wants to stay
    else
        event->accept();
}

int KeyOfCaption(const QString &caption)
{
    if (!caption.startsWith(QLatin1Char('F'))) return 0;
    const qsizetype dash = caption.indexOf(QLatin1String(" - "));
    bool is_number = false;
    const int number = dash > 1 ? QStringView(caption).mid(1, dash - 1).toInt(&is_number) : 0;
    return is_number && number >= 2 && number <= 12 ? Qt::Key_F1 + number - 1 : 0;
}

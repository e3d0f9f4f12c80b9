// The part of CTarvoDialog that has to do with fields: coupling, leaving, refusing.
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/DialogKeys.h"
#include "tarvodlg/widgets/DialogState.h"
#include "tarvodlg/widgets/SpreadSheet.h"

#include <QLabel>
#include <QPointer>
#include <QScopedValueRollback>
#include <algorithm>

namespace {

/// The grid in which the focus is, in a cell or in the editor of one.
CSpreadSheet *SheetOf(QWidget *focus)
{
    for (; focus && !focus->isWindow(); focus = focus->parentWidget())
        if (auto *sheet = dynamic_cast<CSpreadSheet *>(focus)) return sheet;
    return nullptr;
}

} // namespace

void CTarvoDialog::OnLostFocusEvent(CTarvoField *field, std::function<bool()> handler)
{
    state_->handlers[field] = std::move(handler);
}

void CTarvoDialog::Bind(CTarvoField *field, std::function<void()> show, std::function<void()> read)
{
    state_->bindings.push_back({field, std::move(show), std::move(read)});
}

bool CTarvoDialog::IsChanged() const
{
    return state_->changed || std::any_of(state_->bindings.begin(), state_->bindings.end(),
                                          [](const State::Binding &binding) { return binding.field->IsModified(); });
}

void CTarvoDialog::SetChanged(bool changed)
{
    state_->changed = changed;
    if (changed) return;
    for (const State::Binding &binding : state_->bindings) binding.field->SetModified(false);
}

bool CTarvoDialog::LeaveFocusedField()
{
    QWidget *focus = focusWidget();
    if (!focus || state_->checking) return true;
    if (CSpreadSheet *sheet = SheetOf(focus)) return sheet->LeaveActiveCell();
    CTarvoField *field = FieldOf(focus);
    return !field || !field->IsModified() || CheckField(field);
}

void CTarvoDialog::FieldLeft(CTarvoField *field)
{
    if (state_->closing || state_->checking || state_->moving_focus || state_->refused || !isVisible()) return;
    if (field->IsModified()) CheckField(field);
}

bool CTarvoDialog::CheckField(CTarvoField *field)
{
    const QPointer<CTarvoDialog> alive(this);
    const int refusals_before = state_->refusals;
    if (std::any_of(state_->bindings.begin(), state_->bindings.end(),
                    [&](const State::Binding &binding) { return binding.field == field; }))
        state_->changed = true;

    bool is_good = false;
    state_->checking = true;
    Guarded(LUMERA_TAG, [&] {
        field->SetModified(false);
        if (!field->Complete()) return ShowReason(ToQt(field->Reason()));
        ForgetReason();
        const auto handler = state_->handlers.find(field);
        is_good = handler == state_->handlers.end() || handler->second();
    });
    if (!alive) return false;
    state_->checking = false;
    if (is_good || state_->closing) return is_good;

    if (state_->refusals == refusals_before)
        RefuseField(field);
    else
        field->SetModified(true); // the handler refused another field itself, whose turn it is now
    return false;
}

void CTarvoDialog::ShowReason(const QString &reason)
{
    ForgetReason();
    if (reason.isEmpty()) return;
    const QString before = state_->status->text();
    SetStatus(reason);
    state_->reason = reason;
    state_->status_before = before;
}

void CTarvoDialog::ForgetReason()
{
    if (!state_->reason.isEmpty()) SetStatus(state_->status_before);
}

void CTarvoDialog::RefuseField(CTarvoField *field)
{
    ++state_->refusals;
    field->SetModified(true);
    BeepRefused();
    state_->refused = field;
    SetFocusTo(field);
    // What moved the focus may still be on its way and move it once more.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (!state_->refused || state_->closing) return;
            if (state_->refused->Widget() != focusWidget()) SetFocusTo(state_->refused);
            state_->refused = nullptr;
        },
        Qt::QueuedConnection);
}

bool CTarvoDialog::IsRefusing() const
{
    return state_->refused != nullptr;
}

void CTarvoDialog::ForgetRefusal()
{
    state_->refused = nullptr;
}

void CTarvoDialog::SetFocusTo(CTarvoField *field)
{
    const QScopedValueRollback moving(state_->moving_focus, true);
    BringToFront(field->Widget());
    field->Widget()->setFocus(Qt::OtherFocusReason);
    field->SelectAll();
}

void CTarvoDialog::OpenLookup(CTarvoField *field)
{
    if (field->IsProtected()) return;
    // The function may be replaced by what it calls.
    Guarded(LUMERA_TAG, [open = field->on_dbl_click] { open(); });
}

void CTarvoDialog::ShowFields()
{
    for (const State::Binding &binding : state_->bindings) binding.show();
    ForgetReason();
    SetChanged(false);
}

void CTarvoDialog::ReadFields()
{
    for (const State::Binding &binding : state_->bindings) binding.read();
}

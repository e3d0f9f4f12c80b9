#pragma once

#include "tarvodlg/widgets/TarvoDialog.h"

#include <QPointer>
#include <map>

class QLabel;

/// What a dialog holds; for the sources of CTarvoDialog only.
struct CTarvoDialog::State {
    struct Binding {
        CTarvoField *field;
        std::function<void()> show, read;
    };

    QVBoxLayout *frame = nullptr;
    QWidget *content = nullptr, *foot = nullptr;
    QHBoxLayout *buttons = nullptr;
    QPointer<QWidget> after_fields; ///< the button outside the foot that Enter on the last field leads to
    QLabel *status = nullptr;

    std::vector<DialogCommand> commands;
    std::vector<std::function<void(const CCmdUI &)>> show; ///< one for each command

    std::vector<Binding> bindings;
    std::map<CTarvoField *, std::function<bool()>> handlers;

    QString reason, status_before; ///< why a field was refused, shown as the status; what it covers

    CTarvoField *refused = nullptr; ///< gets the focus back once what the user is doing has run its course
    int refusals = 0;
    bool initialised = false;
    bool closing = false;
    bool changed = false;
    bool checking = false;     ///< a field's handler is running
    bool moving_focus = false; ///< the program moves the focus, not the user
    bool idle_failed = false;  ///< an update handler threw; it would again at every idle moment
};

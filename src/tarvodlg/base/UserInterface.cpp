#include "tarvodlg/base/UserInterface.h"

#include "tarvodlg/base/ConsoleUserInterface.h"

namespace {

UserInterface *&InUse()
{
    // A program that sets none still gets its warnings out, on standard error.
    static ConsoleUserInterface fallback;
    static UserInterface *in_use = &fallback;
    if (in_use == nullptr) in_use = &fallback;
    return in_use;
}

} // namespace

int DefaultAnswer(unsigned flags)
{
    const unsigned button = (flags & 0x300) >> 8; // counted from 0
    switch (flags & 0xF) {
    case MB_YESNO:
        return button == 0 ? IDYES : IDNO;
    case MB_YESNOCANCEL:
        return button == 0 ? IDYES : button == 1 ? IDNO : IDCANCEL;
    default:
        return IDOK;
    }
}

UserInterface &CurrentUserInterface()
{
    return *InUse();
}

UserInterface *SetUserInterface(UserInterface *user_interface)
{
    UserInterface *before = InUse();
    InUse() = user_interface;
    return before;
}

int AfxMessageBox(const std::string &text, unsigned flags)
{
    return CurrentUserInterface().MessageBox(text, flags);
}

void Beep(int hertz, int milliseconds)
{
    CurrentUserInterface().Beep(hertz, milliseconds);
}

void BeepRefused()
{
    Beep(1000, 10);
}

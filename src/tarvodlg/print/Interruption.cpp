#include "tarvodlg/print/Interruption.h"

#include "tarvodlg/print/ReportError.h"

#include <csignal>

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t signal_that_came = 0;

void Remember(int number)
{
    signal_that_came = number;
}

} // namespace

InterruptionGuard::InterruptionGuard()
{
    signal_that_came = 0;
    for (const int number : kSignals) {
        struct sigaction before = {}, action = {};
        // nohup and background jobs of a shell have them ignored, and want it so.
        if (::sigaction(number, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) continue;
        action.sa_handler = Remember;
        action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
        ::sigaction(number, &action, nullptr);
    }
}

InterruptionGuard::~InterruptionGuard()
{
    for (const int number : kSignals) {
        struct sigaction before = {};
        if (::sigaction(number, nullptr, &before) == 0 && before.sa_handler == Remember) std::signal(number, SIG_DFL);
    }
    const int number = signal_that_came;
    signal_that_came = 0;
    if (number != 0) std::raise(number);
}

bool WasInterrupted()
{
    return signal_that_came != 0;
}

void RequireNotInterrupted()
{
    if (WasInterrupted()) throw ReportError("Stampa interrotta.");
}

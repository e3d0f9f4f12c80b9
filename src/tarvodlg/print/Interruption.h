#pragma once

/// While it lives, the signals that end a program (Ctrl+C, a closed terminal, a shutdown) stop a print at its next row,
/// so that it takes its unfinished files away. A second signal ends the program at once. For programs that print and
/// end, one at a time; at the desk these signals keep their meaning.
class InterruptionGuard {
  public:
    InterruptionGuard();
    ~InterruptionGuard(); ///< ends the program by the signal that came meanwhile
    InterruptionGuard(const InterruptionGuard &) = delete;
    InterruptionGuard &operator=(const InterruptionGuard &) = delete;
};

bool WasInterrupted();
/// @throws ReportError when a signal has come
void RequireNotInterrupted();

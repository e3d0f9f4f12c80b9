#pragma once

// Exit codes of the command line.
inline constexpr int kExitDone = 0;    ///< done
inline constexpr int kExitRefused = 1; ///< refused by a check of the books; nothing was changed
inline constexpr int kExitUsage = 2;   ///< wrong usage
inline constexpr int kExitFailed = 3;  ///< database or file error

/// Runs one command: data on standard output, messages and questions on standard error.
int RunCommandLine(int argc, const char *const *argv);

#pragma once

#include <functional>
#include <string>

class SACommand;

/// Runs long work on the archive in a thread and a session of its own, under the progress window "Attendere...": the
/// windows go on drawing themselves and take no keys. The work asks the user nothing and touches no window.
/// What it throws is thrown here.
void RunBehindProgress(const std::string &status, const std::function<void(SACommand *)> &work);

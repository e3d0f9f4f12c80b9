#pragma once

#include <functional>

/// Runs what the user started outside any dialog and shows what it throws: a database error with the tag of the place,
/// a file error as it is. @return false when it threw
bool RunGuarded(const char *tag, const std::function<void()> &work);

#pragma once

#include "sqlapi/SAException.h"

#include <functional>

class SACommand;

/// Shows a database error: what happened in plain Italian where the fault is known, the engine's own words, the tag of
/// the place ("PNota:2227").
/// @param warning  true shows it as a warning instead of an error
void SAExceptionDisplay(const SAException &error, const char *tag, bool warning);

/// The text SAExceptionDisplay shows, without the tag.
std::string DescribeError(const SAException &error);

/// A unit of database work: connects to the company's archive, runs the work, disconnects. A database error is shown
/// with its tag and ends the unit; what was not committed is rolled back.
/// @return false when the unit failed
bool RunUnit(const char *tag, const std::function<void(SACommand *)> &work);

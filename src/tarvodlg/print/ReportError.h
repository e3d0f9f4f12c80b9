#pragma once

#include <stdexcept>

/// A layout, a formula or a parameter that cannot be used. The text is Italian, names the file or the formula and the
/// position in it (line and column, or character), counted from 1.
class ReportError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

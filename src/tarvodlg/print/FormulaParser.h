#pragma once

#include "tarvodlg/print/FormulaNode.h"

/// Reads a formula that is not blank.
/// @param name  what messages call it   @throws ReportError
SelectionFormula::Node ParseFormula(std::string_view text, std::string_view name);

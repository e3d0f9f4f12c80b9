#pragma once

#include "sqlapi/engines/SqlTokens.h"

/// Translates the calls and operators of the zero dialect inside a statement; see ZeroDialect.h.
void TranslateExpressions(SqlTokens &tokens);

#pragma once

#include "tarvodlg/base/UserInterface.h"

/// The text of a numbered application message; "Errore n. %d" for a number that has none.
std::string ApplicationMessage(int number);

/// Shows the numbered message, followed by "\n\n[tag]" when a tag is given.
/// @param tag  source file and line, as "PNota:2227"
/// @param flags  MB_*; a question when it has MB_YESNO, then the answer is returned
int DBISAM(int number, const char *tag, unsigned flags = MB_OK | MB_ICONSTOP);

#pragma once

#include "tarvodlg/base/UserInterface.h"

#include <string>
#include <string_view>

/// The text of a numbered application message; "Errore n. %d" for a number that has none.
std::string ApplicationMessage(int number);

/// The tag of the place where it stands: source file and line, as "PNota:2227".
#define LUMERA_TAG (SourceTag(__FILE__, __LINE__).c_str())
std::string SourceTag(std::string_view file, int line);

/// Shows the numbered message, followed by "\n\n[tag]" when a tag is given; a question ends with its own words.
/// @param tag  source file and line, see LUMERA_TAG
/// @param flags  MB_*; a question when it has MB_YESNO, then the answer is returned
int DBISAM(int number, const char *tag, unsigned flags = MB_OK | MB_ICONSTOP);

#pragma once

#include <string>

/// The text of an XML file as UTF-8, whatever it was written in: UTF-8, UTF-16 (with or without byte order mark),
/// ISO-8859-1, ISO-8859-15, windows-1252. The declaration is believed for the one-byte encodings only; in a file that
/// should be UTF-8, bytes that are not are read as windows-1252, which is what such programs meant.
/// @param oddity  receives an Italian sentence when something had to be repaired
std::string XmlToUtf8(std::string bytes, std::string &oddity);

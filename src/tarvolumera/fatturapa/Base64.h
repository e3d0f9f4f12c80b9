#pragma once

#include <string>
#include <string_view>

/// Strict base64 with blanks and line ends allowed anywhere; missing '=' at the end are tolerated.
/// @return false, and bytes untouched, when a foreign character occurs or the length is impossible
bool DecodeBase64(std::string_view base64, std::string &bytes);

#pragma once

#include <string_view>
#include <vector>

// The files of schema/ as the program carries them.

/// The text of a file, named relative to schema/ ("0001_archivio.sql"); empty when there is none.
std::string_view ResourceText(std::string_view name);

/// The files whose name starts so ("base/"), sorted by name.
std::vector<std::string_view> ResourceNames(std::string_view prefix);

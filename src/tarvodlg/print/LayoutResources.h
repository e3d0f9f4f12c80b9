#pragma once

#include <string_view>
#include <vector>

/// The text of a layout that travels inside the library ("pnotagest.rpt"); empty when there is none.
std::string_view LayoutResourceText(std::string_view name);
/// Names of those that begin so; all for an empty text.
std::vector<std::string_view> LayoutResourceNames(std::string_view beginning);

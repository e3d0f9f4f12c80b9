#pragma once

#include <string_view>
#include <vector>

/// The statements of a script in order, without the ';' that ends them. Empty ones and trailing comments are left out.
/// The BEGIN ... END body of a trigger or routine is part of its statement.
std::vector<std::string_view> SplitScript(std::string_view script);

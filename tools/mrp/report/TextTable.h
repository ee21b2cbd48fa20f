#pragma once

#include <string>
#include <vector>

namespace MrpCli {

// Rows of words in aligned columns two spaces apart, one line each begun by
// `indent`; the last column is not padded. The first row is usually the
// heading.
std::string textTable(const std::vector<std::vector<std::string>>& rows, const std::string& indent = "");

}  // namespace MrpCli

#include "report/TextTable.h"

#include <algorithm>

namespace MrpCli {

std::string textTable(const std::vector<std::vector<std::string>>& rows, const std::string& indent) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    if (row.size() > widths.size()) widths.resize(row.size());
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  std::string text;
  for (const auto& row : rows) {
    text += indent;
    for (std::size_t i = 0; i < row.size(); ++i) {
      text += row[i];
      if (i + 1 < row.size()) text += std::string(widths[i] - row[i].size() + 2, ' ');
    }
    text += '\n';
  }
  return text;
}

}  // namespace MrpCli

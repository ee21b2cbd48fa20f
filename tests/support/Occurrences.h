#pragma once

#include <cstddef>
#include <string>

namespace MrpTest {

// How many times `literal` appears in `text`, without overlaps.
inline std::size_t occurrences(const std::string& text, const std::string& literal) {
  std::size_t count = 0;
  for (std::size_t at = text.find(literal); at != std::string::npos; at = text.find(literal, at + literal.size())) {
    ++count;
  }
  return count;
}

}  // namespace MrpTest

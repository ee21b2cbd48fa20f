#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace MrpTest {

// A PNG file's pixels, as 8-bit RGBA rows (libpng converts every colour type).
struct PngImage {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> rgba;  // width * height * 4

  // Reads `path`; throws std::runtime_error for a file that is not a PNG.
  static PngImage read(const std::string& path);
};

}  // namespace MrpTest

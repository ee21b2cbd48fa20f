#include "common/TextFile.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace MrpCli {

std::optional<std::string> textFileRead(const std::string& path, std::string& error) {
  std::error_code code;
  if (std::filesystem::is_directory(path, code)) {
    error = "'" + path + "' is a directory";
    return std::nullopt;
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = "cannot open '" + path + "': " + std::strerror(errno);
    return std::nullopt;
  }
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

}  // namespace MrpCli

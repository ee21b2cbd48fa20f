#include "support/Chromium.h"

#include <stdio.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "support/TempDir.h"

namespace MrpTest {

namespace {

// Each run has a profile of its own, so that tests run side by side; root
// cannot use chromium's sandbox.
std::string chromiumCommand(const TempDir& profile, const std::string& options, const std::string& htmlPath) {
  std::string command = "chromium --headless --disable-gpu --hide-scrollbars --no-first-run --user-data-dir='";
  command.append(profile.path().string()).append("' ");
  if (geteuid() == 0) command.append("--no-sandbox ");
  command.append(options).append(" 'file://").append(std::filesystem::absolute(htmlPath).string()).append("'");
  return command;
}

}  // namespace

bool chromiumAvailable() { return std::system("command -v chromium >/dev/null 2>&1") == 0; }

std::string chromiumDom(const std::string& htmlPath) {
  TempDir profile;
  const std::string command = chromiumCommand(profile, "--dump-dom", htmlPath) + " 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) throw std::runtime_error("cannot run: " + command);
  std::string dom;
  std::array<char, 65536> chunk;
  for (std::size_t read; (read = fread(chunk.data(), 1, chunk.size(), pipe)) > 0;) dom.append(chunk.data(), read);
  if (pclose(pipe) != 0) throw std::runtime_error("chromium failed: " + command);
  return dom;
}

void chromiumScreenshot(const std::string& htmlPath, const std::string& pngPath, int width, int height) {
  TempDir profile;
  const std::string options = "--screenshot='" + std::filesystem::absolute(pngPath).string() + "' --window-size=" +
                              std::to_string(width) + "," + std::to_string(height);
  const std::string command = chromiumCommand(profile, options, htmlPath) + " >/dev/null 2>&1";
  if (std::system(command.c_str()) != 0 || !std::filesystem::exists(pngPath)) {
    throw std::runtime_error("chromium failed: " + command);
  }
}

}  // namespace MrpTest

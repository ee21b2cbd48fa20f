#include "support/Tshark.h"

#include <stdio.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

#include "format/CaptureWriter.h"
#include "support/RequiredTool.h"
#include "support/TempDir.h"

namespace MrpTest {

namespace {

// The value of attribute `attr` in the tag `line`, entities resolved.
std::string attribute(const std::string& line, const std::string& attr) {
  const std::string key = " " + attr + "=\"";
  const std::size_t start = line.find(key);
  if (start == std::string::npos) return {};
  const std::size_t from = start + key.size();
  const std::size_t end = line.find('"', from);
  std::string raw = line.substr(from, end == std::string::npos ? std::string::npos : end - from);
  static const std::array<std::pair<const char*, char>, 5> kEntities = {
      {{"&quot;", '"'}, {"&apos;", '\''}, {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}}};
  std::string text;
  for (std::size_t i = 0; i < raw.size();) {
    bool replaced = false;
    for (const auto& [entity, c] : kEntities) {
      const std::string e(entity);
      if (raw.compare(i, e.size(), e) == 0) {
        text += c;
        i += e.size();
        replaced = true;
        break;
      }
    }
    if (!replaced) text += raw[i++];
  }
  return text;
}

// Writes `frames` as a pcap file, a second apart.
void writeCapture(const std::string& path, const std::vector<std::vector<std::uint8_t>>& frames) {
  MrpCli::CaptureWriter writer(path);
  Quarn::Seconds seconds = 0;
  for (const auto& frame : frames) writer.write(seconds++, frame);
  writer.flush();
  if (!writer.ok()) throw std::runtime_error(writer.error());
}

}  // namespace

bool tsharkAvailable() { return std::system("command -v tshark >/dev/null 2>&1") == 0; }

std::vector<DissectedFrame> tsharkDissect(const std::vector<std::vector<std::uint8_t>>& frames) {
  TempDir dir;
  const std::string pcap = dir.file("frames.pcap");
  writeCapture(pcap, frames);
  const std::string command = "tshark -n -r '" + pcap + "' -T pdml 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) throw std::runtime_error("cannot run: " + command);
  std::vector<DissectedFrame> dissected;
  std::string line;
  std::array<char, 4096> chunk;
  auto takeLine = [&dissected](const std::string& text) {
    const std::size_t tag = text.find_first_not_of(" \t");
    if (tag == std::string::npos) return;
    if (text.compare(tag, 8, "<packet>") == 0) {
      dissected.emplace_back();
    } else if (!dissected.empty() &&
               (text.compare(tag, 7, "<field ") == 0 || text.compare(tag, 7, "<proto ") == 0)) {
      dissected.back().push_back({attribute(text, "name"), attribute(text, "show")});
    }
  };
  while (fgets(chunk.data(), static_cast<int>(chunk.size()), pipe)) {
    line += chunk.data();
    if (!line.empty() && line.back() == '\n') {
      takeLine(line);
      line.clear();
    }
  }
  takeLine(line);
  const int status = pclose(pipe);
  if (status != 0) throw std::runtime_error("tshark failed: " + command);
  if (dissected.size() != frames.size()) throw std::runtime_error("tshark dissected a different number of frames");
  return dissected;
}

void requireTshark() { requireTool(tsharkAvailable(), "tshark", "the dissector cross-check"); }

}  // namespace MrpTest

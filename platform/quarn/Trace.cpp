#include "quarn/Trace.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>

namespace Quarn {

namespace {

class StderrTraceSink : public TraceSink {
 public:
  void trace(const std::string& tag, int level, const std::string& text) override {
    std::fprintf(stderr, "%s/%d %s\n", tag.c_str(), level, text.c_str());
  }
};

struct TraceRegistry {
  std::map<std::string, std::unique_ptr<TraceTag>, std::less<>> tags;
  // Selections already applied, replayed onto tags created later.
  std::vector<std::pair<std::string, std::uint32_t>> selections;
  StderrTraceSink stderrSink;
  TraceSink* sink = &stderrSink;

  TraceRegistry() {
    const char* env = std::getenv("MRP_TRACE");
    if (env && !apply(env)) std::fprintf(stderr, "MRP_TRACE: ignoring malformed selection \"%s\"\n", env);
  }

  bool apply(const std::string& selection);
  std::uint32_t levelsFor(const std::string& name) const {
    std::uint32_t mask = 0;
    for (const auto& [pattern, levels] : selections) {
      if (pattern == "*" || pattern == name) mask = levels;
    }
    return mask;
  }
};

TraceRegistry& registry() {
  static TraceRegistry r;
  return r;
}

// "0-9" or "4" -> bits; nullopt when malformed.
std::optional<std::uint32_t> parseLevelItem(const std::string& item) {
  auto digit = [](char c) -> std::optional<int> {
    if (c < '0' || c > '9') return std::nullopt;
    return c - '0';
  };
  if (item.size() == 1) {
    auto d = digit(item[0]);
    if (!d) return std::nullopt;
    return 1u << *d;
  }
  if (item.size() == 3 && item[1] == '-') {
    auto lo = digit(item[0]);
    auto hi = digit(item[2]);
    if (!lo || !hi || *lo > *hi) return std::nullopt;
    std::uint32_t mask = 0;
    for (int l = *lo; l <= *hi; ++l) mask |= 1u << l;
    return mask;
  }
  return std::nullopt;
}

std::vector<std::string> split(const std::string& s, char sep) {
  std::vector<std::string> parts;
  std::string::size_type start = 0;
  for (;;) {
    auto pos = s.find(sep, start);
    parts.push_back(s.substr(start, pos - start));
    if (pos == std::string::npos) return parts;
    start = pos + 1;
  }
}

// Parses "Tag/levels[,levels...][,Tag/levels...]": an item without '/' adds
// levels to the tag named before it.
bool TraceRegistry::apply(const std::string& selection) {
  std::vector<std::pair<std::string, std::uint32_t>> parsed;
  for (const std::string& item : split(selection, ',')) {
    std::string levels = item;
    if (auto slash = item.find('/'); slash != std::string::npos) {
      std::string name = item.substr(0, slash);
      if (name.empty()) return false;
      parsed.emplace_back(name, 0);
      levels = item.substr(slash + 1);
    }
    if (parsed.empty()) return false;
    auto mask = parseLevelItem(levels);
    if (!mask) return false;
    parsed.back().second |= *mask;
  }
  for (const auto& [name, mask] : parsed) {
    selections.emplace_back(name, mask);
    for (auto& [tagName, tag] : tags) {
      if (name == "*" || name == tagName) tag->levelsIs(mask);
    }
  }
  return true;
}

}  // namespace

void TraceTag::emit(int level, const std::string& text) const { registry().sink->trace(name_, level, text); }

TraceLine::TraceLine() : stream_(std::make_unique<std::ostringstream>()) {}

TraceLine::~TraceLine() = default;

std::ostream& TraceLine::stream() { return *stream_; }

std::string TraceLine::text() const { return stream_->str(); }

TraceTag& traceTag(const std::string& name) {
  TraceRegistry& r = registry();
  auto it = r.tags.find(name);
  if (it == r.tags.end()) {
    it = r.tags.emplace(name, std::make_unique<TraceTag>(name)).first;
    it->second->levelsIs(r.levelsFor(name));
  }
  return *it->second;
}

bool traceLevelsIs(const std::string& selection) { return registry().apply(selection); }

void traceLevelsClear() {
  TraceRegistry& r = registry();
  r.selections.clear();
  for (auto& [name, tag] : r.tags) tag->levelsIs(0);
}

void traceSinkIs(TraceSink* sink) {
  TraceRegistry& r = registry();
  r.sink = sink ? sink : &r.stderrSink;
}

CaptureTraceSink::CaptureTraceSink() { traceSinkIs(this); }
CaptureTraceSink::~CaptureTraceSink() { traceSinkIs(nullptr); }

void CaptureTraceSink::trace(const std::string& tag, int level, const std::string& text) {
  lines_.push_back({tag, level, text});
}

bool CaptureTraceSink::contains(const std::string& text) const {
  for (const Line& line : lines_) {
    if (line.text == text) return true;
  }
  return false;
}

}  // namespace Quarn

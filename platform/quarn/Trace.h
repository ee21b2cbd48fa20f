#pragma once

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace Quarn {

// Where enabled trace lines go. The default sink writes them to stderr.
class TraceSink {
 public:
  virtual ~TraceSink() = default;
  virtual void trace(const std::string& tag, int level, const std::string& text) = 0;
};

// One trace tag (a source file's name, e.g. "MrpSm") with its enabled levels
// 0-9. Levels are chosen at run time: traceLevelsIs(), or the MRP_TRACE
// environment variable read when the first tag is created, e.g.
// MRP_TRACE="MrpSm/0-9,Velo/4,6" or MRP_TRACE="*/0-4".
class TraceTag {
 public:
  static constexpr int kMaxLevel = 9;

  explicit TraceTag(std::string name) : name_(std::move(name)) {}
  TraceTag(const TraceTag&) = delete;
  TraceTag& operator=(const TraceTag&) = delete;

  const std::string& name() const { return name_; }
  // Levels outside 0-kMaxLevel are never enabled.
  bool enabled(int level) const { return level >= 0 && level <= kMaxLevel && ((levels_ >> level) & 1u); }
  std::uint32_t levels() const { return levels_; }
  void levelsIs(std::uint32_t mask) { levels_ = mask & ((1u << (kMaxLevel + 1)) - 1); }
  void emit(int level, const std::string& text) const;

 private:
  std::string name_;
  std::uint32_t levels_ = 0;
};

// The process-wide tag of that name, created on first use.
TraceTag& traceTag(const std::string& name);

// Applies a level selection such as "MrpSm/0-9,Velo/4,6" or "*/0-4" (replacing
// the levels of the tags it names) to existing and future tags. Returns false,
// changing nothing, when the text is not a valid selection.
bool traceLevelsIs(const std::string& selection);

// The text of one trace line while it is written.
class TraceLine {
 public:
  TraceLine();
  TraceLine(const TraceLine&) = delete;
  TraceLine& operator=(const TraceLine&) = delete;
  ~TraceLine();

  std::ostream& stream();
  std::string text() const;

 private:
  std::unique_ptr<std::ostringstream> stream_;
};

// Disables every level of every tag and forgets earlier selections.
void traceLevelsClear();

// Installs a sink; nullptr restores the default stderr sink.
void traceSinkIs(TraceSink* sink);

// Records trace lines while it exists; tests assert on exact texts.
class CaptureTraceSink : public TraceSink {
 public:
  struct Line {
    std::string tag;
    int level;
    std::string text;
  };

  CaptureTraceSink();
  ~CaptureTraceSink() override;
  void trace(const std::string& tag, int level, const std::string& text) override;

  const std::vector<Line>& lines() const { return lines_; }
  bool contains(const std::string& text) const;
  void clear() { lines_.clear(); }

 private:
  std::vector<Line> lines_;
};

}  // namespace Quarn

// Emits one trace line when the tag has the level enabled. A disabled trace
// costs one branch: `expr` (a stream expression) is not evaluated. The
// line's stream is made out of line (Quarn::TraceLine), so a function that
// traces does not carry a string stream in its frame.
#define QTRACE(tag, level, expr)                             \
  do {                                                       \
    if ((tag).enabled(level)) [[unlikely]] {                 \
      ::Quarn::TraceLine quarnTraceLine_;                    \
      quarnTraceLine_.stream() << expr;                      \
      (tag).emit((level), quarnTraceLine_.text());           \
    }                                                        \
  } while (0)

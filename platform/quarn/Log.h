#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace Quarn {

// A structured log message, defined once and emitted with printf-style
// arguments that fill its format.
struct LogMessage {
  const char* key;
  int severity;
  const char* description;
  const char* format;
  const char* recommendedAction;
};

inline constexpr const char* kNoActionRequired = "No action is required";

// Where emitted log lines go. The default sink writes "%KEY-severity: text"
// to stderr.
class LogSink {
 public:
  virtual ~LogSink() = default;
  virtual void log(const LogMessage& message, std::string_view text) = 0;
};

// Installs a sink; nullptr restores the default.
void logSinkIs(LogSink* sink);
void logEmit(const LogMessage& message, std::string_view text);

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
// Writes `format` with each "%s" replaced by the next of `args` into `out`
// (size `size`), for a format of "%s" fields only; false when it is not one
// or the line does not fit. Returns the length in `length`.
bool formatStrings(char* out, std::size_t size, const char* format, const char* const* args, std::size_t count,
                   std::size_t& length);

// Formats on the stack: a message of string fields without printf, any
// other with it; only a line longer than the stack buffer goes on the heap.
template <class... Args>
void log(const LogMessage& message, Args... args) {
  char line[512];
  if constexpr ((std::is_convertible_v<Args, const char*> && ...)) {
    const char* const strings[] = {static_cast<const char*>(args)..., nullptr};
    std::size_t length = 0;
    if (formatStrings(line, sizeof line, message.format, strings, sizeof...(Args), length)) {
      logEmit(message, std::string_view(line, length));
      return;
    }
  }
  const int n = std::snprintf(line, sizeof line, message.format, args...);
  if (n < 0) return;
  if (static_cast<std::size_t>(n) < sizeof line) {
    logEmit(message, std::string_view(line, static_cast<std::size_t>(n)));
    return;
  }
  std::string text(static_cast<std::size_t>(n), '\0');
  std::snprintf(text.data(), text.size() + 1, message.format, args...);
  logEmit(message, text);
}
#pragma GCC diagnostic pop

// Drops every line, for programs that run the engine without a log: the
// lines are still formatted.
class DiscardLogSink : public LogSink {
 public:
  void log(const LogMessage&, std::string_view) override {}
};

// Records log lines while it exists.
class CaptureLogSink : public LogSink {
 public:
  struct Line {
    std::string key;
    int severity;
    std::string text;
  };

  CaptureLogSink();
  ~CaptureLogSink() override;
  void log(const LogMessage& message, std::string_view text) override;
  const std::vector<Line>& lines() const { return lines_; }

 private:
  std::vector<Line> lines_;
};

}  // namespace Quarn

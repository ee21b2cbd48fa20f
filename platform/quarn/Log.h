#pragma once

#include <cstdio>
#include <string>
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
  virtual void log(const LogMessage& message, const std::string& text) = 0;
};

// Installs a sink; nullptr restores the default.
void logSinkIs(LogSink* sink);
void logEmit(const LogMessage& message, const std::string& text);

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
template <class... Args>
void log(const LogMessage& message, Args... args) {
  int n = std::snprintf(nullptr, 0, message.format, args...);
  std::string text(n > 0 ? static_cast<std::size_t>(n) : 0, '\0');
  if (n > 0) std::snprintf(text.data(), text.size() + 1, message.format, args...);
  logEmit(message, text);
}
#pragma GCC diagnostic pop

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
  void log(const LogMessage& message, const std::string& text) override;
  const std::vector<Line>& lines() const { return lines_; }

 private:
  std::vector<Line> lines_;
};

}  // namespace Quarn

#include "quarn/Log.h"

#include <cstring>

namespace Quarn {

namespace {

class StderrLogSink : public LogSink {
 public:
  void log(const LogMessage& message, std::string_view text) override {
    std::fprintf(stderr, "%%%s-%d: %.*s\n", message.key, message.severity, static_cast<int>(text.size()), text.data());
  }
};

StderrLogSink stderrLogSink;
LogSink* activeSink = &stderrLogSink;

}  // namespace

bool formatStrings(char* out, std::size_t size, const char* format, const char* const* args, std::size_t count,
                   std::size_t& length) {
  std::size_t n = 0;
  std::size_t next = 0;
  const auto put = [&](const char* text, std::size_t len) {
    if (n + len >= size) return false;
    std::memcpy(out + n, text, len);
    n += len;
    return true;
  };
  for (const char* p = format; *p; ++p) {
    if (*p != '%') {
      if (!put(p, 1)) return false;
      continue;
    }
    ++p;
    if (*p == '%') {
      if (!put(p, 1)) return false;
    } else if (*p == 's' && next < count) {
      const char* arg = args[next++];
      if (!put(arg, std::strlen(arg))) return false;
    } else {
      return false;  // a field other than %s: printf's business
    }
  }
  out[n] = '\0';
  length = n;
  return true;
}

void logSinkIs(LogSink* sink) { activeSink = sink ? sink : &stderrLogSink; }

void logEmit(const LogMessage& message, std::string_view text) { activeSink->log(message, text); }

CaptureLogSink::CaptureLogSink() { logSinkIs(this); }
CaptureLogSink::~CaptureLogSink() { logSinkIs(nullptr); }

void CaptureLogSink::log(const LogMessage& message, std::string_view text) {
  lines_.push_back({message.key, message.severity, std::string(text)});
}

}  // namespace Quarn

#include "quarn/Log.h"

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

void logSinkIs(LogSink* sink) { activeSink = sink ? sink : &stderrLogSink; }

void logEmit(const LogMessage& message, std::string_view text) { activeSink->log(message, text); }

CaptureLogSink::CaptureLogSink() { logSinkIs(this); }
CaptureLogSink::~CaptureLogSink() { logSinkIs(nullptr); }

void CaptureLogSink::log(const LogMessage& message, std::string_view text) {
  lines_.push_back({message.key, message.severity, std::string(text)});
}

}  // namespace Quarn

#include "quarn/Log.h"

namespace Quarn {

namespace {

class StderrLogSink : public LogSink {
 public:
  void log(const LogMessage& message, const std::string& text) override {
    std::fprintf(stderr, "%%%s-%d: %s\n", message.key, message.severity, text.c_str());
  }
};

StderrLogSink stderrLogSink;
LogSink* activeSink = &stderrLogSink;

}  // namespace

void logSinkIs(LogSink* sink) { activeSink = sink ? sink : &stderrLogSink; }

void logEmit(const LogMessage& message, const std::string& text) { activeSink->log(message, text); }

CaptureLogSink::CaptureLogSink() { logSinkIs(this); }
CaptureLogSink::~CaptureLogSink() { logSinkIs(nullptr); }

void CaptureLogSink::log(const LogMessage& message, const std::string& text) {
  lines_.push_back({message.key, message.severity, text});
}

}  // namespace Quarn

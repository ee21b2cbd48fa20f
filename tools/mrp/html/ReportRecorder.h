#pragma once

#include <optional>
#include <string>

#include "format/Scenario.h"
#include "html/ReportTimeline.h"
#include "report/TeeTimeline.h"

namespace MrpCli {

// A run's printed timeline and, when an HTML report is asked for
// (`--html FILE`), the report's timeline beside it; written when the run is
// over.
class ReportRecorder {
 public:
  ReportRecorder(Timeline& printed, const std::optional<std::string>& htmlPath, const Scenario& scenario,
                 const std::string& title, double until);
  ReportRecorder(const ReportRecorder&) = delete;
  ReportRecorder& operator=(const ReportRecorder&) = delete;

  // What the run tells: the printed timeline, and the report's too.
  Timeline& timeline() { return tee_ ? static_cast<Timeline&>(*tee_) : printed_; }
  // Flushes the timelines and writes the report, if one was asked for;
  // false with `error` saying why it could not be written.
  bool finish(std::string& error);

 private:
  Timeline& printed_;
  std::optional<std::string> htmlPath_;
  std::optional<ReportTimeline> report_;
  std::optional<TeeTimeline> tee_;
};

}  // namespace MrpCli

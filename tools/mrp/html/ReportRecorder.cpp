#include "html/ReportRecorder.h"

#include "html/HtmlReportFile.h"

namespace MrpCli {

ReportRecorder::ReportRecorder(Timeline& printed, const std::optional<std::string>& htmlPath,
                               const Scenario& scenario, const std::string& title, double until)
    : printed_(printed), htmlPath_(htmlPath) {
  if (!htmlPath_) return;
  report_.emplace(scenario, title, until);
  tee_.emplace(std::vector<Timeline*>{&printed_, &*report_});
}

bool ReportRecorder::finish(std::string& error) {
  timeline().flush();
  return !report_ || htmlReportWrite(*htmlPath_, report_->data(), error);
}

}  // namespace MrpCli

#include "html/HtmlReportFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include "html/HtmlReport.h"
#include "html/ReportJson.h"
#include "html/TopologySvg.h"

namespace MrpCli {

bool htmlReportWrite(const std::string& path, const ReportData& data, std::string& error) {
  std::string page;
  try {
    page = htmlReport(reportJson(data, kReportPixels), topologySvg(data));
  } catch (const std::runtime_error& failure) {
    error = failure.what();
    return false;
  }
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (file) file.write(page.data(), static_cast<std::streamsize>(page.size()));
  if (file) file.close();
  if (!file) {
    error = "cannot write '" + path + "': " + std::strerror(errno);
    return false;
  }
  return true;
}

}  // namespace MrpCli

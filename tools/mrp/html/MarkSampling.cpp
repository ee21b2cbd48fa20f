#include "html/MarkSampling.h"

#include <algorithm>
#include <map>

namespace MrpCli {

namespace {

bool thinned(const ReportData::Mark& mark) { return mark.kind == "leaveAllSent" || mark.kind == "leaveAllReceived"; }

}  // namespace

std::vector<ReportData::Mark> sampledMarks(const std::vector<ReportData::Mark>& marks, double until,
                                           std::size_t pixels) {
  const double pixelSeconds = until > 0 && pixels > 0 ? until / static_cast<double>(pixels) : 0;
  std::vector<ReportData::Mark> kept;
  // By kind: the pixel of the last mark kept, and where it is.
  std::map<std::string, std::pair<long, std::size_t>> lastKept;
  for (const ReportData::Mark& mark : marks) {
    if (!thinned(mark) || pixelSeconds == 0) {
      kept.push_back(mark);
      continue;
    }
    const long pixel = static_cast<long>(std::max(0.0, mark.t) / pixelSeconds);
    const auto last = lastKept.find(mark.kind);
    if (last != lastKept.end() && last->second.first == pixel) {
      kept[last->second.second].count += mark.count;
      continue;
    }
    lastKept[mark.kind] = {pixel, kept.size()};
    kept.push_back(mark);
  }
  return kept;
}

}  // namespace MrpCli

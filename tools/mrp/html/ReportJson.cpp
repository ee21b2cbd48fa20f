#include "html/ReportJson.h"

#include <cmath>
#include <map>

#include "html/LaneGrouping.h"
#include "html/MarkSampling.h"

namespace MrpCli {

namespace {

// Microseconds are the finest the timeline tells apart; fewer digits, less to load.
double timeJson(double t) { return std::round(t * 1e6) / 1e6; }

nlohmann::ordered_json endJson(const std::optional<double>& to) {
  return to ? nlohmann::ordered_json(timeJson(*to)) : nlohmann::ordered_json();
}

// Writes the marks, numbering the lines they stand for in order of use.
class MarkWriter {
 public:
  MarkWriter(const ReportData& data, std::size_t pixels) : data_(data), pixels_(pixels) {}

  nlohmann::ordered_json marks(const std::vector<ReportData::Mark>& marks) {
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (const ReportData::Mark& mark : sampledMarks(marks, data_.until, pixels_)) {
      nlohmann::ordered_json entry = {timeJson(mark.t), mark.kind, lineJson(mark.line)};
      if (mark.count > 1) entry.push_back(mark.count);
      json.push_back(std::move(entry));
    }
    return json;
  }

  nlohmann::ordered_json lines() const {
    nlohmann::ordered_json json = nlohmann::ordered_json::array();
    for (std::size_t index : used_) {
      const ReportData::Line& line = data_.lines[index];
      json.push_back({timeJson(line.t), line.bridge, line.port, line.app, line.text});
    }
    return json;
  }

 private:
  nlohmann::ordered_json lineJson(const std::optional<std::size_t>& line) {
    if (!line) return nullptr;
    const auto [found, added] = numbers_.try_emplace(*line, used_.size());
    if (added) used_.push_back(*line);
    return found->second;
  }

  const ReportData& data_;
  std::size_t pixels_;
  std::map<std::size_t, std::size_t> numbers_;  // the written number of each line used
  std::vector<std::size_t> used_;
};

nlohmann::ordered_json laneJson(const ReportData::Lane& lane, MarkWriter& writer) {
  nlohmann::ordered_json segments = nlohmann::ordered_json::array();
  for (const ReportData::Segment& segment : lane.segments) {
    segments.push_back({timeJson(segment.from), endJson(segment.to), segment.state});
  }
  return {{"kind", lane.kind}, {"label", lane.label}, {"segments", segments}, {"marks", writer.marks(lane.marks)}};
}

nlohmann::ordered_json portJson(const std::string& bridge, const std::string& name, const ReportData::Port& port,
                                MarkWriter& writer) {
  nlohmann::ordered_json tracks = nlohmann::ordered_json::array();
  for (const auto& [app, track] : port.tracks) {
    nlohmann::ordered_json lanes = nlohmann::ordered_json::array();
    for (const ReportData::Lane& lane : groupedLanes(track)) lanes.push_back(laneJson(lane, writer));
    tracks.push_back({{"app", app}, {"marks", writer.marks(track.marks)}, {"lanes", lanes}});
  }
  return {{"bridge", bridge}, {"port", name},         {"role", port.role},
          {"marks", writer.marks(port.marks)}, {"tracks", tracks}};
}

nlohmann::ordered_json linkJson(const ReportData::Link& link) {
  nlohmann::ordered_json cuts = nlohmann::ordered_json::array();
  for (const ReportData::Segment& cut : link.cuts) cuts.push_back({timeJson(cut.from), endJson(cut.to)});
  return {{"a", link.a}, {"b", link.b}, {"cuts", cuts}};
}

}  // namespace

nlohmann::ordered_json reportJson(const ReportData& data, std::size_t pixels) {
  MarkWriter writer(data, pixels);
  nlohmann::ordered_json json = {{"title", data.title}, {"until", timeJson(data.until)}};
  nlohmann::ordered_json& nodes = json["nodes"] = nlohmann::ordered_json::array();
  for (const ReportData::Node& node : data.nodes) {
    nodes.push_back({{"name", node.name}, {"ports", node.ports}, {"station", node.station}});
  }
  nlohmann::ordered_json& links = json["links"] = nlohmann::ordered_json::array();
  for (const ReportData::Link& link : data.links) links.push_back(linkJson(link));
  // In the order of the network's bridges and ports, a bridge's declarations on every port last.
  nlohmann::ordered_json& ports = json["ports"] = nlohmann::ordered_json::array();
  for (const ReportData::Node& node : data.nodes) {
    std::vector<std::string> names = node.ports;
    names.push_back("*");
    for (const std::string& name : names) {
      const auto port = data.ports.find({node.name, name});
      if (port != data.ports.end()) ports.push_back(portJson(node.name, name, port->second, writer));
    }
  }
  json["lines"] = writer.lines();
  nlohmann::ordered_json& tables = json["tables"] = nlohmann::ordered_json::array();
  for (const ReportData::Tables& table : data.tables) {
    tables.push_back({{"bridge", table.bridge}, {"registrations", table.registrations}, {"streams", table.streams}});
  }
  return json;
}

}  // namespace MrpCli

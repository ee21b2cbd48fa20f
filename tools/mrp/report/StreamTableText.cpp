#include "report/StreamTableText.h"

#include <algorithm>

#include <sstream>
#include <vector>

#include "CreditBasedShaper.h"
#include "report/BitRateText.h"
#include "report/TextTable.h"

namespace MrpCli {

namespace {

using Json = nlohmann::ordered_json;
using Rows = std::vector<std::vector<std::string>>;

const std::string kIndent = "  ";
const std::string kNone = "-";

// A table whose rows may each have a line under them, indented further:
// `notes` has one entry per row, "" for none.
std::string tableWithNotes(const Rows& rows, const std::vector<std::string>& notes) {
  std::istringstream table(textTable(rows, kIndent));
  std::string text;
  std::size_t row = 0;
  for (std::string line; std::getline(table, line); ++row) {
    text.append(line).append("\n");
    if (!notes[row].empty()) text.append(kIndent).append(kIndent).append(notes[row]).append("\n");
  }
  return text;
}

// "Talker Failed: ..." of a JSON talker that has failed; "" for another.
std::string failureNote(const Json& talker) {
  if (!talker.contains("failure")) return "";
  const Json& failure = talker["failure"];
  return std::string("Talker Failed: ")
      .append(failureText(failure.value("text", ""), failure.value("code", 0U), failure.value("bridgeId", "")));
}

// A stream's own cells: its id, its talker's port and kind, the talker's
// latency and the Listener declaration sent towards it.
constexpr std::size_t kStreamColumns = 4;
std::vector<std::string> streamCells(const Json& stream) {
  const std::string toTalker = stream.value("listenerDeclared", kNone);
  if (!stream.contains("talker")) {
    // A talker the bridge declares itself (an end station's) is registered nowhere.
    const Json ports = stream.value("ports", Json::array());
    const bool own = std::any_of(ports.begin(), ports.end(), [](const Json& port) { return port.contains("declared"); });
    return {stream.value("streamId", ""), own ? "own" : kNone, "", toTalker};
  }
  return {stream.value("streamId", ""), stream.value("talkerPort", "") + " " + stream.value("talker", ""),
          std::to_string(stream.value("accumulatedLatency", 0U)) + " ns", toTalker};
}

std::vector<std::string> portCells(const Json& port) {
  return {port.value("port", ""),
          port.value("listener", kNone),
          port.value("reserved", false) ? "yes" : "no",
          port.value("class", kNone),
          port.contains("bandwidth") ? bitRateText(port["bandwidth"].get<std::uint64_t>()) : kNone,
          port.value("declared", kNone)};
}

std::string streamsText(const Json& streams) {
  if (streams.empty()) return kIndent + "(none)\n";
  Rows rows{
      {"stream", "talker", "latency", "to talker", "port", "listener", "reserved", "class", "bandwidth", "declared"}};
  std::vector<std::string> notes{""};
  for (const Json& stream : streams) {
    Json ports = stream.value("ports", Json::array());
    // A stream heard of on no other port still has its row.
    if (ports.empty()) ports.push_back(Json::object());
    // A Talker Failed heard is told once, under the stream's first row; one
    // of this bridge's own under the row of its port.
    const bool failedBefore = stream.contains("failure");
    for (std::size_t i = 0; i < ports.size(); ++i) {
      std::vector<std::string> row = i == 0 ? streamCells(stream) : std::vector<std::string>(kStreamColumns);
      const std::vector<std::string> cells = portCells(ports[i]);
      row.insert(row.end(), cells.begin(), cells.end());
      rows.push_back(std::move(row));
      notes.push_back(failedBefore ? (i == 0 ? failureNote(stream) : "") : failureNote(ports[i]));
    }
  }
  return tableWithNotes(rows, notes);
}

std::string kbps(std::int64_t value) { return std::to_string(value) + " kbit/s"; }

std::string classesText(const Json& classes) {
  if (classes.empty()) return kIndent + "(none)\n";
  Rows rows{{"port", "speed", "class", "reserved", "total", "limit", "idleSlope", "sendSlope", "hiCredit", "loCredit"}};
  std::vector<std::string> notes{""};
  for (const Json& row : classes) {
    const MrpAgent::CbsParameters shaper{
        row.value("idleSlope", std::int64_t{0}), row.value("sendSlope", std::int64_t{0}),
        row.value("hiCredit", std::int64_t{0}), row.value("loCredit", std::int64_t{0})};
    const auto speed = row.value("portSpeed", std::uint64_t{0});
    rows.push_back({row.value("port", ""), bitRateText(speed), row.value("class", ""),
                    bitRateText(row.value("reserved", std::uint64_t{0})),
                    bitRateText(row.value("total", std::uint64_t{0})),
                    bitRateText(row.value("limit", std::uint64_t{0})), kbps(shaper.idleSlopeKbps()),
                    kbps(shaper.sendSlopeKbps(speed)), std::to_string(shaper.hiCredit) + " B",
                    std::to_string(shaper.loCredit) + " B"});
    notes.push_back(row.value("tc", ""));
  }
  return tableWithNotes(rows, notes);
}

}  // namespace

std::string failureText(const std::string& text, unsigned code, const std::string& bridgeId) {
  std::string out = text;
  std::string number = "code ";
  number.append(std::to_string(code));
  // A code without words of its own is its number already ("failure code 9").
  if (!text.ends_with(number)) out.append(" (").append(number).append(")");
  out.append(", bridge ").append(bridgeId);
  return out;
}

std::string streamTableText(const std::string& bridge, const nlohmann::ordered_json& table) {
  std::string text = bridge;
  text.append(" streams\n").append(streamsText(table.value("streams", Json::array())));
  text.append(bridge).append(" reservations\n").append(classesText(table.value("classes", Json::array())));
  return text;
}

}  // namespace MrpCli

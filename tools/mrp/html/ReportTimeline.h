#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "decode/Decoder.h"
#include "format/Scenario.h"
#include "html/ReportData.h"
#include "report/TextTimeline.h"
#include "report/Timeline.h"

namespace MrpCli {

// The timeline recorded for the HTML report (ReportData): the scenario's
// network, each port's attributes as lanes of registered (IN), leaving (LV)
// and gone stretches, and marks for what happened, each tied to the line the
// text timeline writes for it. The words are the text timeline's own: a
// TextTimeline runs inside and hands over its lines.
//
// A LeaveAll a port sends is received at the other end of its link while the
// link is up, and in a frame injected from outside. A leave indication comes
// the leave time after the registration went LV, so that is where the LV
// stretch starts.
class ReportTimeline : public Timeline {
 public:
  ReportTimeline(const Scenario& scenario, std::string title, double until);
  // The inner text timeline hands its lines to this object.
  ReportTimeline(const ReportTimeline&) = delete;
  ReportTimeline& operator=(const ReportTimeline&) = delete;

  const ReportData& data() const { return data_; }

  void requested(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool withdraw) override;
  void indicated(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool join) override;
  void forgot(const TimelinePlace& place, const MrpAgent::AttributeValue& value,
              MrpAgent::Bridge::ForgetCause cause) override;
  void transmitted(const TimelinePlace& place, Mrp::MrpApplication application, const std::vector<std::uint8_t>& frame,
                   const std::vector<std::uint8_t>& leaveAllTypes) override;
  void injected(const TimelinePlace& place, const std::vector<std::uint8_t>& frame) override;
  void linkChanged(Quarn::Seconds t, const std::string& a, const std::string& b, bool up) override;
  void roleChanged(const TimelinePlace& place, Stp::MstiPortStatus::Role from, Stp::MstiPortStatus::Role to) override;
  void portChanged(const TimelinePlace& place, const std::string& state) override;
  void reservationChanged(const TimelinePlace& place, const MrpAgent::ReservationChange& change) override;
  void talkerFailed(const TimelinePlace& place, const Mrp::MsrpTalkerFailedAttribute& declared) override;
  void listenerDeclared(const TimelinePlace& place, const Mrp::MsrpListenerAttribute& listener) override;
  void registrations(const TimelinePlace& place, const std::vector<MrpAgent::Registration>& held) override;
  void streams(const TimelinePlace& place, const MrpAgent::StreamTable& table) override;
  void flush() override;

 private:
  // A mark waiting for its line: the marks it is in, and where.
  using MarkRef = std::pair<std::vector<ReportData::Mark>*, std::size_t>;

  void lineWritten(const TimelinePlace& place, const std::string& app, const std::string& event);
  // Marks made by one event get the line the text timeline writes for it;
  // VLANs' lines come later, when the rest of their line is known.
  void eventDone(bool lineHeldBack);
  void mark(std::vector<ReportData::Mark>& marks, double t, const std::string& kind);
  ReportData::Port& port(const std::string& bridge, const std::string& port);
  ReportData::Track& track(const TimelinePlace& place, Mrp::MrpApplication application);
  ReportData::Lane& lane(const TimelinePlace& place, const MrpAgent::AttributeValue& value);
  ReportData::Lane& streamLane(const TimelinePlace& place, const std::string& kind, std::uint64_t streamId);
  void endStretch(ReportData::Lane& lane, double t);
  void leaveAllReceived(const std::string& bridge, const std::string& port, Mrp::MrpApplication application,
                        double t);
  // The port at the other end of "bridge:port"'s link while it is up; "" without one.
  std::string peerOf(const std::string& end) const;

  ReportData data_;
  double leaveTime_;
  std::ostream discarded_{nullptr};
  TextTimeline text_;
  Decoder decoder_;
  unsigned injected_ = 0;
  std::vector<MarkRef> current_;
  std::vector<MarkRef> heldBack_;
};

}  // namespace MrpCli

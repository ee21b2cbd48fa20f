#pragma once

#include <vector>

#include "report/Timeline.h"

namespace MrpCli {

// Tells every event to each of several timelines, in the order given: the
// printed timeline and the HTML report of one run.
class TeeTimeline : public Timeline {
 public:
  explicit TeeTimeline(std::vector<Timeline*> timelines) : timelines_(std::move(timelines)) {}

  void requested(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool withdraw) override {
    for (Timeline* t : timelines_) t->requested(place, value, withdraw);
  }
  void indicated(const TimelinePlace& place, const MrpAgent::AttributeValue& value, bool join) override {
    for (Timeline* t : timelines_) t->indicated(place, value, join);
  }
  void forgot(const TimelinePlace& place, const MrpAgent::AttributeValue& value,
              MrpAgent::Bridge::ForgetCause cause) override {
    for (Timeline* t : timelines_) t->forgot(place, value, cause);
  }
  void transmitted(const TimelinePlace& place, Mrp::MrpApplication application, const std::vector<std::uint8_t>& frame,
                   const std::vector<std::uint8_t>& leaveAllTypes) override {
    for (Timeline* t : timelines_) t->transmitted(place, application, frame, leaveAllTypes);
  }
  void injected(const TimelinePlace& place, const std::vector<std::uint8_t>& frame) override {
    for (Timeline* t : timelines_) t->injected(place, frame);
  }
  void linkChanged(Quarn::Seconds time, const std::string& a, const std::string& b, bool up) override {
    for (Timeline* t : timelines_) t->linkChanged(time, a, b, up);
  }
  void roleChanged(const TimelinePlace& place, Stp::MstiPortStatus::Role from, Stp::MstiPortStatus::Role to) override {
    for (Timeline* t : timelines_) t->roleChanged(place, from, to);
  }
  void portChanged(const TimelinePlace& place, const std::string& state) override {
    for (Timeline* t : timelines_) t->portChanged(place, state);
  }
  void reservationChanged(const TimelinePlace& place, const MrpAgent::ReservationChange& change) override {
    for (Timeline* t : timelines_) t->reservationChanged(place, change);
  }
  void talkerFailed(const TimelinePlace& place, const Mrp::MsrpTalkerFailedAttribute& declared) override {
    for (Timeline* t : timelines_) t->talkerFailed(place, declared);
  }
  void listenerDeclared(const TimelinePlace& place, const Mrp::MsrpListenerAttribute& listener) override {
    for (Timeline* t : timelines_) t->listenerDeclared(place, listener);
  }
  void registrations(const TimelinePlace& place, const std::vector<MrpAgent::Registration>& held) override {
    for (Timeline* t : timelines_) t->registrations(place, held);
  }
  void streams(const TimelinePlace& place, const MrpAgent::StreamTable& table) override {
    for (Timeline* t : timelines_) t->streams(place, table);
  }
  void flush() override {
    for (Timeline* t : timelines_) t->flush();
  }

 private:
  std::vector<Timeline*> timelines_;
};

}  // namespace MrpCli

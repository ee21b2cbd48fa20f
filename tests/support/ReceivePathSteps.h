#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "MrpModel/MrpApplication.h"
#include "MrpSm/MrpPamSm.h"
#include "stp/MstiPortStatus.h"
#include "support/ReceivePathFrames.h"
#include "support/ReceivePathRig.h"
#include "velo/EthHdr.h"

// The receive path's fuzz input: a sequence of steps, each an event of a
// ReceivePathRig engine, read front to back. StepWriter writes them (for
// the seed corpus), StepReader reads and runs them. Every step starts with
// its kind octet; missing octets at the end of the input read as zero.
//
//   frame       kind, target, framing, length (2 octets), octets...
//               framing 0: the octets are the whole frame; 1: behind the
//               application's Ethernet header; 2: the same behind a VLAN tag
//   advance     kind, amount: below 0x80 that many 10 ms, else (amount -
//               0x80) half seconds, so leave, LeaveAll, transmit and review
//               timers all run
//   request     kind, target, attribute type, event, key choice, value
//               octets (kValueOctets): the agent's declaration, withdrawal
//               or LeaveAll; a key choice below the size of the key table
//               puts a key the engines know into the value
//   role        kind, target, role code
//   port        kind, target: the port goes down, or up again
//   leaveAll    kind, target: LeaveAll on every type of the port, as
//               management asks for it
//
// A target octet picks the engine (bit 0: MSRP or MVRP) and the port (the
// rest, modulo the rig's ports).
namespace MrpTest::ReceivePath {

enum class StepKind : std::uint8_t { frame, advance, request, role, port, leaveAll, kinds };
enum class Framing : std::uint8_t { whole, header, taggedHeader, framings };

inline constexpr std::size_t kMaxSteps = 64;
inline constexpr std::size_t kMaxFrameOctets = 1600;
inline constexpr std::size_t kValueOctets = 34;  // the longest FirstValue, a Talker Failed
inline constexpr std::uint8_t kRoles = 5;

// The keys a request can put into its value: streams, SR classes and VLANs
// that the rig's registrations and the frames use.
inline constexpr std::array<std::uint64_t, 4> kStreams = {kStream1, kStream2, kStream9, 0};
inline constexpr std::array<std::uint8_t, 2> kClasses = {5, 6};
inline constexpr std::array<std::uint16_t, 8> kVlans = {1, 2, 10, 11, 12, 20, 40, 100};
inline constexpr std::uint8_t kKeyChoices = 8;

inline std::uint8_t targetOf(Mrp::MrpApplication application, std::size_t port) {
  return static_cast<std::uint8_t>((port << 1) | (application == Mrp::MrpApplication::msrp ? 0 : 1));
}

class StepWriter {
 public:
  StepWriter& frame(Mrp::MrpApplication application, std::size_t port, Framing framing,
                    std::span<const std::uint8_t> octets) {
    put({kind(StepKind::frame), targetOf(application, port), static_cast<std::uint8_t>(framing),
         static_cast<std::uint8_t>(octets.size() >> 8), static_cast<std::uint8_t>(octets.size())});
    bytes_.insert(bytes_.end(), octets.begin(), octets.end());
    return *this;
  }
  // Rounded down to what the encoding holds.
  StepWriter& advance(Quarn::Seconds seconds) {
    const auto amount = seconds < 1.28 ? static_cast<std::uint8_t>(seconds * 100)
                                       : static_cast<std::uint8_t>(0x80 + std::min(seconds * 2, 127.0));
    put({kind(StepKind::advance), amount});
    return *this;
  }
  StepWriter& request(Mrp::MrpApplication application, std::size_t port, std::uint8_t type, std::uint8_t event,
                      std::uint8_t keyChoice, std::span<const std::uint8_t> value = {}) {
    put({kind(StepKind::request), targetOf(application, port), type, event, keyChoice});
    std::array<std::uint8_t, kValueOctets> octets{};
    std::copy_n(value.begin(), std::min(value.size(), octets.size()), octets.begin());
    bytes_.insert(bytes_.end(), octets.begin(), octets.end());
    return *this;
  }
  StepWriter& role(Mrp::MrpApplication application, std::size_t port, Stp::MstiPortStatus::Role role) {
    put({kind(StepKind::role), targetOf(application, port), static_cast<std::uint8_t>(role)});
    return *this;
  }
  StepWriter& portToggle(Mrp::MrpApplication application, std::size_t port) {
    put({kind(StepKind::port), targetOf(application, port)});
    return *this;
  }
  StepWriter& leaveAll(Mrp::MrpApplication application, std::size_t port) {
    put({kind(StepKind::leaveAll), targetOf(application, port)});
    return *this;
  }

  const Bytes& bytes() const { return bytes_; }

 private:
  static std::uint8_t kind(StepKind k) { return static_cast<std::uint8_t>(k); }
  void put(std::initializer_list<std::uint8_t> octets) { bytes_.insert(bytes_.end(), octets); }

  Bytes bytes_;
};

class StepReader {
 public:
  StepReader(ReceivePathRig& rig, std::span<const std::uint8_t> input) : rig_(rig), input_(input) {}

  // Runs the next step; false when the input is used up or holds more
  // steps than a run takes.
  bool next() {
    if (at_ >= input_.size() || steps_ == kMaxSteps) return false;
    ++steps_;
    switch (static_cast<StepKind>(octet() % static_cast<std::uint8_t>(StepKind::kinds))) {
      case StepKind::frame: frameStep(); break;
      case StepKind::advance: advanceStep(); break;
      case StepKind::request: requestStep(); break;
      case StepKind::role: roleStep(); break;
      case StepKind::port: portStep(); break;
      case StepKind::leaveAll: leaveAllStep(); break;
      case StepKind::kinds: break;
    }
    return true;
  }

 private:
  std::uint8_t octet() { return at_ < input_.size() ? input_[at_++] : 0; }
  std::span<const std::uint8_t> octets(std::size_t n) {
    const std::span<const std::uint8_t> taken = input_.subspan(at_, std::min(n, input_.size() - at_));
    at_ += taken.size();
    return taken;
  }
  ReceivePathRig::Engine& targetEngine(std::uint8_t target) {
    return rig_.engine((target & 1) == 0 ? Mrp::MrpApplication::msrp : Mrp::MrpApplication::mvrp);
  }
  static std::size_t targetPort(std::uint8_t target) { return (target >> 1) % ReceivePathRig::kPorts; }

  void frameStep() {
    const std::uint8_t target = octet();
    const auto framing = static_cast<Framing>(octet() % static_cast<std::uint8_t>(Framing::framings));
    const std::size_t length = ((std::size_t{octet()} << 8) | octet()) % (kMaxFrameOctets + 1);
    const std::span<const std::uint8_t> body = octets(length);
    ReceivePathRig::Engine& engine = targetEngine(target);
    Bytes frame;
    if (framing == Framing::whole) {
      frame.assign(body.begin(), body.end());
    } else {
      frame = framed(engine.lib().application(), Bytes(body.begin(), body.end()));
      if (framing == Framing::taggedHeader) frame = vlanTagged(frame, kVlanTci);
    }
    rig_.receive(engine, targetPort(target), frame);
  }

  void advanceStep() {
    const std::uint8_t amount = octet();
    rig_.advance(amount < 0x80 ? amount * 0.01 : (amount - 0x80) * 0.5);
  }

  void requestStep() {
    const std::uint8_t target = octet();
    ReceivePathRig::Engine& engine = targetEngine(target);
    // One type beyond the application's on either side: type 0 and max + 1.
    const auto type = static_cast<std::uint8_t>(octet() % (engine.sm->maxAttrTypes() + 2));
    const auto event = static_cast<std::uint8_t>(octet() % 8);
    const std::uint8_t keyChoice = octet();
    std::array<std::uint8_t, kValueOctets> value{};
    const std::span<const std::uint8_t> given = octets(kValueOctets);
    std::copy(given.begin(), given.end(), value.begin());
    if (keyChoice < kKeyChoices) keyIs(engine.lib().application(), type, keyChoice, value);
    rig_.request(engine, targetPort(target), type, event, value);
  }

  // The key octets at the start of the value: a stream id, an SR class id
  // or a VLAN id.
  static void keyIs(Mrp::MrpApplication application, std::uint8_t type, std::uint8_t choice,
                    std::array<std::uint8_t, kValueOctets>& value) {
    const auto bigEndian = [&](std::uint64_t key, std::size_t n) {
      for (std::size_t i = 0; i < n; ++i) value[i] = static_cast<std::uint8_t>(key >> (8 * (n - 1 - i)));
    };
    if (application == Mrp::MrpApplication::mvrp) {
      bigEndian(kVlans[choice % kVlans.size()], 2);
    } else if (type == 4) {
      bigEndian(kClasses[choice % kClasses.size()], 1);
    } else {
      bigEndian(kStreams[choice % kStreams.size()], 8);
    }
  }

  void roleStep() {
    const std::uint8_t target = octet();
    rig_.roleIs(targetEngine(target), targetPort(target), static_cast<Stp::MstiPortStatus::Role>(octet() % kRoles));
  }

  void portStep() {
    const std::uint8_t target = octet();
    ReceivePathRig::Engine& engine = targetEngine(target);
    const std::size_t port = targetPort(target);
    rig_.portEnabledIs(engine, port, !engine.enabled[port]);
  }

  void leaveAllStep() {
    const std::uint8_t target = octet();
    ReceivePathRig::Engine& engine = targetEngine(target);
    engine.sm->mrpPamSm()->transmitAllLeaveAll(engine.ports[targetPort(target)]);
  }

  ReceivePathRig& rig_;
  std::span<const std::uint8_t> input_;
  std::size_t at_ = 0;
  std::size_t steps_ = 0;
};

// The seed corpus of the receive path's fuzz target: every frame of the
// set on a port of its engine followed by a little time, and a few
// conversations that reach the leave, LeaveAll, role and port handling.
inline std::vector<std::pair<std::string, Bytes>> seedCorpus() {
  using Mrp::MrpApplication;
  using Role = Stp::MstiPortStatus::Role;
  constexpr auto msrp = MrpApplication::msrp;
  constexpr auto mvrp = MrpApplication::mvrp;
  constexpr std::uint8_t kJoinIn = 1, kLv = 5, kLeaveAll = 6;
  std::vector<std::pair<std::string, Bytes>> seeds;
  for (const Frame& frame : frames()) {
    seeds.emplace_back(frame.name, StepWriter().frame(frame.application, 0, Framing::whole, frame.bytes).advance(0.3).bytes());
  }
  const Bytes leaveAllOnly = framed(mvrp, {0x00, 0x01, 0x02, 0x20, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00});
  seeds.emplace_back("leave_all_received_then_leave_timers_expire",
                     StepWriter().frame(mvrp, 0, Framing::whole, leaveAllOnly).advance(0.4).advance(0.4).bytes());
  seeds.emplace_back("leave_all_periods_run", StepWriter().advance(20).advance(20).bytes());
  seeds.emplace_back("declare_withdraw_and_leave_all", StepWriter()
                                                           .request(mvrp, 1, 1, kJoinIn, 4)
                                                           .request(msrp, 2, 3, kJoinIn, 1)
                                                           .advance(0.2)
                                                           .request(mvrp, 1, 1, kLv, 4)
                                                           .request(msrp, 0, 1, kLeaveAll, 0)
                                                           .advance(1)
                                                           .bytes());
  seeds.emplace_back("flush_then_redeclare", StepWriter()
                                                 .role(mvrp, 0, Role::root)
                                                 .role(mvrp, 0, Role::alternate)
                                                 .advance(0.1)
                                                 .role(mvrp, 0, Role::root)
                                                 .role(msrp, 0, Role::root)
                                                 .role(msrp, 0, Role::alternate)
                                                 .advance(1)
                                                 .bytes());
  seeds.emplace_back("port_down_and_up", StepWriter()
                                             .portToggle(msrp, 0)
                                             .advance(0.5)
                                             .portToggle(msrp, 0)
                                             .portToggle(mvrp, 1)
                                             .frame(mvrp, 1, Framing::header, Frames::kMvrpThreeVlans)
                                             .portToggle(mvrp, 1)
                                             .advance(2)
                                             .bytes());
  seeds.emplace_back("management_leave_all", StepWriter().leaveAll(msrp, 0).leaveAll(mvrp, 2).advance(1).bytes());
  seeds.emplace_back("tagged_body", StepWriter().frame(msrp, 1, Framing::taggedHeader, Frames::kMsrpAllTypes).advance(0.7).bytes());
  return seeds;
}

}  // namespace MrpTest::ReceivePath

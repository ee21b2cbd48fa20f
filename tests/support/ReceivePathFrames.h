#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "MrpModel/MrpApplication.h"
#include "MrpMsrp/MsrpDomainAttribute.h"
#include "MrpMsrp/MsrpListenerAttribute.h"
#include "MrpMsrp/MsrpTalkerAdvertiseAttribute.h"
#include "MrpMsrp/MsrpTalkerFailedAttribute.h"
#include "MrpMvrp/MvrpVlanAttribute.h"
#include "MrpSm/MrpLib.h"
#include "support/FrameBuilder.h"
#include "support/MrpduFrames.h"
#include "support/VlanTag.h"
#include "velo/EthAddr.h"
#include "velo/EthHdr.h"

// Valid frames of both applications, whole Ethernet frames as a port
// receives them: the MRPDUs the tests hold and ones the project's encoder
// builds, untagged and behind a VLAN tag, with LeaveAlls, every MSRP type and
// Listener declarations. The receive path's mutation test cuts and changes
// them; they seed the receive path's fuzz target. Header-only, for programs
// without the test framework too.
namespace MrpTest::ReceivePath {

using Bytes = std::vector<std::uint8_t>;

// Who sends the frames: the far end of the engine's ports.
inline const Velo::EthAddr kFarEndMac(0x02, 0x00, 0x00, 0x00, 0x00, 0x01);
// The VLAN tag of the tagged frames: priority 3, VLAN 2.
inline constexpr std::uint16_t kVlanTci = 0x6002;

// The streams and VLANs the frames (and the engine they are fed to) use, so
// that frames and registrations meet.
inline constexpr std::uint64_t kStream1 = 0x0011223344550001ULL;
inline constexpr std::uint64_t kStream2 = 0x0011223344550002ULL;
inline constexpr std::uint64_t kStream9 = 0x0011223344550009ULL;

inline Mrp::MsrpTalkerAdvertiseAttribute talkerOf(std::uint64_t streamId) {
  return Mrp::MsrpTalkerAdvertiseAttribute(
      streamId, Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xe0, 0xf0, 0x00, 0xfe, 0x00), 2), Mrp::Tspec(128, 1),
      Mrp::PriorityAndRank(3, 0), 4096);
}
inline Mrp::MsrpTalkerFailedAttribute talkerFailedOf(std::uint64_t streamId) {
  return Mrp::MsrpTalkerFailedAttribute(talkerOf(streamId), Mrp::FailureInformation(0x800000001c730001ULL, 5));
}
inline Mrp::MsrpDomainAttribute domainOf(std::uint8_t srClassId) { return Mrp::MsrpDomainAttribute(srClassId, 3, 2); }

struct Frame {
  std::string name;
  Mrp::MrpApplication application;
  Bytes bytes;
};

// `mrpdu` (from its ProtocolVersion octet on) behind the application's
// Ethernet header.
inline Bytes framed(Mrp::MrpApplication application, const Bytes& mrpdu) {
  const Mrp::MrpApplicationFraming framing = Mrp::mrpDefaultApplicationFraming(application);
  Bytes frame(Velo::EthHdr::kSize);
  Velo::EthHdr(framing.macAddr, kFarEndMac, framing.etype).toBytes(frame.data());
  frame.insert(frame.end(), mrpdu.begin(), mrpdu.end());
  return frame;
}

// The frames the encoder builds; `build` fills a fresh builder.
template <class Build>
Bytes built(Mrp::MrpApplication application, Build&& build) {
  const Quarn::Ptr<Mrp::MrpLib> lib = Mrp::mrpLibFactory();
  lib->applicationIs(application);
  FrameBuilder builder(*lib, application);
  build(builder);
  return builder.frame(kFarEndMac);
}

inline std::vector<Frame> untaggedFrames() {
  using Mrp::MrpApplication;
  constexpr auto msrp = MrpApplication::msrp;
  constexpr auto mvrp = MrpApplication::mvrp;
  constexpr std::uint8_t kNew = 0, kJoinIn = 1, kIn = 2, kJoinMt = 3, kMt = 4, kLv = 5, kLeaveAllOnly = 6;
  const auto ready = Mrp::MsrpListenerEvent::ready;
  const auto askingFailed = Mrp::MsrpListenerEvent::askingFailed;
  return {
      {"mvrp_three_vlans", mvrp, framed(mvrp, Frames::kMvrpThreeVlans)},
      {"mvrp_leave_all_and_two_vectors", mvrp, framed(mvrp, Frames::kMvrpTwoVectors)},
      {"mvrp_run_of_forty_join_in", mvrp, framed(mvrp, Frames::mvrpVlanRunPdu(1, 40, kJoinIn))},
      {"mvrp_run_of_new", mvrp, framed(mvrp, Frames::mvrpVlanRunPdu(20, 4, kNew))},
      {"mvrp_run_of_leaves", mvrp, framed(mvrp, Frames::mvrpVlanRunPdu(10, 5, kLv))},
      {"mvrp_leave_all_only", mvrp,
       built(mvrp, [](FrameBuilder& b) { b.message(1).vlan(Mrp::MvrpVlanAttribute(0), kLeaveAllOnly); })},
      {"mvrp_every_event", mvrp, built(mvrp, [&](FrameBuilder& b) {
         b.message(1).vlan(Mrp::MvrpVlanAttribute(10), kNew);
         for (std::uint8_t event : {kJoinIn, kIn, kJoinMt, kMt, kLv}) b.append(event);
       })},
      // Version 1: an unknown type skipped vector by vector, then VLAN 10.
      {"mvrp_future_version", mvrp,
       framed(mvrp, {0x01, 0x02, 0x03, 0x00, 0x03, 0xaa, 0xbb, 0xcc, 0x2b, 0x00, 0x00, 0x01, 0x02, 0x00, 0x01, 0x00,
                     0x0a, 0x24, 0x00, 0x00, 0x00, 0x00})},
      {"msrp_all_types_listener_leave_all", msrp, framed(msrp, Frames::kMsrpAllTypes)},
      {"msrp_listener_of_five", msrp, framed(msrp, Frames::msrpListenerFrame(Frames::kListenerListLength))},
      {"msrp_talker_join_in", msrp, built(msrp, [&](FrameBuilder& b) {
         b.message(1).talker(talkerOf(kStream1), kJoinIn).append(kJoinIn);
       })},
      {"msrp_talker_failed_join_mt", msrp,
       built(msrp, [&](FrameBuilder& b) { b.message(2).talkerFailed(talkerFailedOf(kStream9), kJoinMt); })},
      {"msrp_domains", msrp, built(msrp, [&](FrameBuilder& b) {
         b.message(4).domain(domainOf(6), kJoinIn).append(kJoinIn);
       })},
      {"msrp_listeners", msrp, built(msrp, [&](FrameBuilder& b) {
         b.message(3).listener(Mrp::MsrpListenerAttribute(kStream1, ready), kJoinIn).appendListener(kJoinMt, askingFailed);
       })},
      {"msrp_leave_all_only_every_type", msrp, built(msrp, [&](FrameBuilder& b) {
         b.message(1).talker(talkerOf(0), kLeaveAllOnly);
         b.message(2).talkerFailed(talkerFailedOf(0), kLeaveAllOnly);
         b.message(3).listener(Mrp::MsrpListenerAttribute(0, Mrp::MsrpListenerEvent::ignore), kLeaveAllOnly);
         b.message(4).domain(domainOf(0), kLeaveAllOnly);
       })},
      {"msrp_withdrawals", msrp, built(msrp, [&](FrameBuilder& b) {
         b.message(1).talker(talkerOf(kStream1), kLv);
         b.message(3).listener(Mrp::MsrpListenerAttribute(kStream2, ready), kLv);
       })},
      {"msrp_every_type_declared", msrp, built(msrp, [&](FrameBuilder& b) {
         b.message(1).talker(talkerOf(kStream2), kNew);
         b.message(2).talkerFailed(talkerFailedOf(kStream1), kJoinIn);
         b.message(3).listener(Mrp::MsrpListenerAttribute(kStream2, ready), kJoinIn);
         b.message(4).domain(domainOf(5), kJoinMt);
       })},
      // Version 1: an unknown type skipped by its list length, then a Domain.
      {"msrp_future_version", msrp,
       framed(msrp, {0x01, 0x09, 0x07, 0x00, 0x0c, 0x00, 0x01, 0xaa, 0xaa, 0xaa, 0xaa, 0xaa, 0xaa, 0xaa, 0x24, 0x00,
                     0x00, 0x04, 0x04, 0x00, 0x09, 0x00, 0x01, 0x06, 0x03, 0x00, 0x02, 0x24, 0x00, 0x00, 0x00, 0x00})},
  };
}

// Every frame of the set: the untagged ones, then each behind a VLAN tag.
inline std::vector<Frame> frames() {
  std::vector<Frame> all = untaggedFrames();
  const std::size_t untagged = all.size();
  for (std::size_t i = 0; i < untagged; ++i) {
    all.push_back({all[i].name + "_tagged", all[i].application, vlanTagged(all[i].bytes, kVlanTci)});
  }
  return all;
}

}  // namespace MrpTest::ReceivePath

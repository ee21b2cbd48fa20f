// Frames built by the encoder, decoded by tshark's MRP dissectors: the
// attribute types, FirstValues, NumberOfValues, LeaveAll flags and events
// that come out must be the ones that went in.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "support/EngineFixture.h"
#include "support/FrameBuilder.h"
#include "support/Tshark.h"

namespace MrpTest {
namespace {

using Mrp::MsrpListenerEvent;
using Fields = std::vector<std::string>;

constexpr std::uint8_t kNew = 0, kJoinIn = 1, kIn = 2, kJoinMt = 3, kMt = 4, kLv = 5, kLeaveAllOnly = 6;
const Velo::EthAddr kSrc(0x02, 0x00, 0x00, 0x00, 0x00, 0x01);

std::string hex(std::uint64_t value, int digits) {
  char text[32];
  std::snprintf(text, sizeof text, "0x%0*llx", digits, static_cast<unsigned long long>(value));
  return text;
}

std::string field(const std::string& proto, const std::string& name, const std::string& show) {
  return proto + "." + name + "=" + show;
}
std::string field(const std::string& proto, const std::string& name, std::uint64_t value) {
  return field(proto, name, std::to_string(value));
}

// What the dissector shows of each FirstValue, from the value records' fields.
Fields talkerFirstValue(const Mrp::MsrpTalkerAdvertiseAttribute& v) {
  const std::string p = "mrp-msrp";
  return {field(p, "stream_id", hex(v.streamId(), 16)),
          field(p, "stream_da", v.frame().dmac().toString()),
          field(p, "vlan_id", hex(v.frame().vlanId(), 4)),
          field(p, "tspec_max_frame_size", v.tSpec().maxFrameSize()),
          field(p, "tspec_max_interval_frames", v.tSpec().maxIntervalFrames()),
          field(p, "priority", v.priorityAndRank().priority()),
          field(p, "rank", v.priorityAndRank().rank()),
          field(p, "accumulated_latency", v.accumulatedLatency())};
}

Fields talkerFailedFirstValue(const Mrp::MsrpTalkerFailedAttribute& v) {
  Fields fields = talkerFirstValue(v.talkerAdvertiseAttribute());
  fields.push_back(field("mrp-msrp", "failure_bridge_id", hex(v.failureInformation().bridgeId(), 16)));
  fields.push_back(field("mrp-msrp", "failure_code", v.failureInformation().failureCode()));
  return fields;
}

Fields listenerFirstValue(std::uint64_t streamId) { return {field("mrp-msrp", "stream_id", hex(streamId, 16))}; }

Fields domainFirstValue(const Mrp::MsrpDomainAttribute& v) {
  return {field("mrp-msrp", "sr_class_id", v.srClassId()), field("mrp-msrp", "sr_class_priority", v.srClassPriority()),
          field("mrp-msrp", "sr_class_vid", v.srClassVID())};
}

Fields vlanFirstValue(std::uint16_t vid) { return {field("mrp-mvrp", "vid", vid)}; }

// One expected vector; events empty for a LeaveAll-only vector.
struct Vector {
  bool leaveAll;
  Fields firstValue;
  std::vector<std::uint8_t> events;
  std::vector<MsrpListenerEvent> declarations = {};
};

// The dissector's fields of one message: for MSRP with its list length,
// computed here from the vectors' sizes.
Fields message(const std::string& proto, unsigned type, unsigned length, const std::vector<Vector>& vectors) {
  unsigned listLength = 2;  // the list's EndMark
  Fields body;
  for (const Vector& v : vectors) {
    const auto n = static_cast<unsigned>(v.events.size());
    listLength += 2 + length + (n + 2) / 3 + (v.declarations.empty() ? 0 : (n + 3) / 4);
    body.push_back(field(proto, "leave_all_event", v.leaveAll ? 1 : 0));
    body.push_back(field(proto, "number_of_values", n));
    body.insert(body.end(), v.firstValue.begin(), v.firstValue.end());
    for (std::uint8_t e : v.events) body.push_back(field(proto, "three_packed_event", e));
    for (MsrpListenerEvent d : v.declarations) body.push_back(field(proto, "four_packed_event", static_cast<unsigned>(d)));
  }
  Fields fields = {field(proto, "attribute_type", type), field(proto, "attribute_length", length)};
  if (proto == "mrp-msrp") fields.push_back(field(proto, "attribute_list_length", listLength));
  fields.insert(fields.end(), body.begin(), body.end());
  fields.push_back(field(proto, "end_mark", "0x0000"));
  return fields;
}

Fields pdu(const std::string& proto, const std::vector<Fields>& messages) {
  Fields fields = {field(proto, "protocol_version", 0)};
  for (const Fields& m : messages) fields.insert(fields.end(), m.begin(), m.end());
  fields.push_back(field(proto, "end_mark", "0x0000"));
  return fields;
}

// The dissected fields this check compares: everything but containers and
// the raw header and priority octets, which their parts already cover.
Fields compared(const DissectedFrame& frame) {
  static const std::set<std::string> kSkipped = {"message", "attribute_list", "vector_attribute", "first_value",
                                                 "vector_header", "priority_and_rank", "reserved"};
  Fields fields;
  for (const DissectedField& f : frame) {
    for (const std::string proto : {"mrp-msrp.", "mrp-mvrp."}) {
      if (f.name.rfind(proto, 0) == 0 && !kSkipped.count(f.name.substr(proto.size()))) {
        fields.push_back(f.name + "=" + f.show);
      }
    }
  }
  return fields;
}

bool hasDissectorComplaint(const DissectedFrame& frame) {
  for (const DissectedField& f : frame) {
    if (f.name.rfind("_ws.malformed", 0) == 0 || f.name.rfind("_ws.expert", 0) == 0) return true;
  }
  return false;
}

struct Case {
  std::string name;
  std::vector<std::uint8_t> frame;
  Fields expected;
};

class DissectorCrossCheckTest : public EngineFixture {
 protected:
  void SetUp() override { requireTshark(); }

  void expectDissectedAsBuilt(const std::vector<Case>& cases) {
    std::vector<std::vector<std::uint8_t>> frames;
    for (const Case& c : cases) frames.push_back(c.frame);
    const std::vector<DissectedFrame> dissected = tsharkDissect(frames);
    for (std::size_t i = 0; i < cases.size(); ++i) {
      SCOPED_TRACE(cases[i].name);
      EXPECT_FALSE(hasDissectorComplaint(dissected[i]));
      EXPECT_EQ(compared(dissected[i]), cases[i].expected);
    }
  }
};

Mrp::MsrpTalkerAdvertiseAttribute talker(std::uint64_t streamId, std::uint8_t lastDmacOctet) {
  return {streamId, Mrp::DataFrameParameters(Velo::EthAddr(0x91, 0xE0, 0xF0, 0x00, 0xFE, lastDmacOctet), 2),
          Mrp::Tspec(224, 1), Mrp::PriorityAndRank(3, 1), 5000};
}

TEST_F(DissectorCrossCheckTest, MsrpFramesDecodeToTheEncodedTypesValuesAndEvents) {
  auto engine = engineNew(Mrp::MrpApplication::msrp, false);
  std::vector<Case> cases;

  {  // Talker Advertise: a vector of three values and one of a single value.
    const auto first = talker(0x0011223344556677, 0x00);
    const auto other = talker(0x00112233445566A0, 0x40);
    FrameBuilder b(*mrpLib, Mrp::MrpApplication::msrp);
    b.message(1).talker(first, kJoinIn).append(kIn).append(kLv).talker(other, kNew);
    cases.push_back({"TalkerAdvertise", b.frame(kSrc),
                     pdu("mrp-msrp", {message("mrp-msrp", 1, 25,
                                              {{false, talkerFirstValue(first), {kJoinIn, kIn, kLv}},
                                               {false, talkerFirstValue(other), {kNew}}})})});
  }
  {  // Talker Failed with a LeaveAll that the receive side asked for.
    const Mrp::MsrpTalkerFailedAttribute failed(talker(0x0000000000000001, 0x10),
                                                Mrp::FailureInformation(0x8000001122334455, 2));
    engine->parseContext()->sendTxLvAllIs(true);
    FrameBuilder b(*mrpLib, Mrp::MrpApplication::msrp);
    b.message(2).talkerFailed(failed, kJoinMt).append(kMt);
    cases.push_back({"TalkerFailedWithLeaveAll", b.frame(kSrc),
                     pdu("mrp-msrp", {message("mrp-msrp", 2, 34, {{true, talkerFailedFirstValue(failed), {kJoinMt, kMt}}})})});
  }
  {  // Listener: five values, two three-packed and two four-packed octets.
    FrameBuilder b(*mrpLib, Mrp::MrpApplication::msrp);
    b.message(3)
        .listener(Mrp::MsrpListenerAttribute(0x0102030405060708, MsrpListenerEvent::ready), kJoinIn)
        .appendListener(kIn, MsrpListenerEvent::ignore)
        .appendListener(kLv, MsrpListenerEvent::askingFailed)
        .appendListener(kJoinIn, MsrpListenerEvent::readyFailed)
        .appendListener(kJoinMt, MsrpListenerEvent::ready);
    cases.push_back({"Listener", b.frame(kSrc),
                     pdu("mrp-msrp", {message("mrp-msrp", 3, 8,
                                              {{false, listenerFirstValue(0x0102030405060708),
                                                {kJoinIn, kIn, kLv, kJoinIn, kJoinMt},
                                                {MsrpListenerEvent::ready, MsrpListenerEvent::ignore,
                                                 MsrpListenerEvent::askingFailed, MsrpListenerEvent::readyFailed,
                                                 MsrpListenerEvent::ready}}})})});
  }
  {  // Domain: two values.
    const Mrp::MsrpDomainAttribute domain(6, 3, 2);
    FrameBuilder b(*mrpLib, Mrp::MrpApplication::msrp);
    b.message(4).domain(domain, kJoinIn).append(kJoinIn);
    cases.push_back({"Domain", b.frame(kSrc),
                     pdu("mrp-msrp", {message("mrp-msrp", 4, 4, {{false, domainFirstValue(domain), {kJoinIn, kJoinIn}}})})});
  }
  {  // All four types in one PDU, and a LeaveAll-only Listener message.
    const auto t = talker(0x0011223344550001, 0x01);
    const Mrp::MsrpTalkerFailedAttribute f(talker(0x0011223344550002, 0x02), Mrp::FailureInformation(7, 1));
    const Mrp::MsrpDomainAttribute d(7, 4, 3);
    FrameBuilder b(*mrpLib, Mrp::MrpApplication::msrp);
    b.message(1).talker(t, kJoinMt).append(kJoinMt).append(kJoinMt).append(kJoinMt);
    b.message(2).talkerFailed(f, kLv);
    b.message(3).listener(Mrp::MsrpListenerAttribute(), kLeaveAllOnly);
    b.message(3)
        .listener(Mrp::MsrpListenerAttribute(0xAA, MsrpListenerEvent::askingFailed), kNew)
        .appendListener(kNew, MsrpListenerEvent::readyFailed)
        .appendListener(kNew, MsrpListenerEvent::ready)
        .appendListener(kNew, MsrpListenerEvent::ignore);
    b.message(4).domain(d, kMt);
    cases.push_back(
        {"AllTypes", b.frame(kSrc),
         pdu("mrp-msrp",
             {message("mrp-msrp", 1, 25, {{false, talkerFirstValue(t), {kJoinMt, kJoinMt, kJoinMt, kJoinMt}}}),
              message("mrp-msrp", 2, 34, {{false, talkerFailedFirstValue(f), {kLv}}}),
              message("mrp-msrp", 3, 8, {{true, listenerFirstValue(0), {}}}),
              message("mrp-msrp", 3, 8,
                      {{false, listenerFirstValue(0xAA), {kNew, kNew, kNew, kNew},
                        {MsrpListenerEvent::askingFailed, MsrpListenerEvent::readyFailed, MsrpListenerEvent::ready,
                         MsrpListenerEvent::ignore}}}),
              message("mrp-msrp", 4, 4, {{false, domainFirstValue(d), {kMt}}})})});
  }
  expectDissectedAsBuilt(cases);
}

TEST_F(DissectorCrossCheckTest, MvrpFramesDecodeToTheEncodedTypesValuesAndEvents) {
  auto engine = engineNew(Mrp::MrpApplication::mvrp, false);
  std::vector<Case> cases;

  {  // Two vectors: seven values from VLAN 10, one at VLAN 4094.
    FrameBuilder b(*mrpLib, Mrp::MrpApplication::mvrp);
    b.message(1).vlan(Mrp::MvrpVlanAttribute(10), kJoinIn);
    for (std::uint8_t e : {kIn, kLv, kJoinMt, kMt, kNew, kJoinIn}) b.append(e);
    b.vlan(Mrp::MvrpVlanAttribute(4094), kLv);
    cases.push_back({"TwoVectors", b.frame(kSrc),
                     pdu("mrp-mvrp", {message("mrp-mvrp", 1, 2,
                                              {{false, vlanFirstValue(10), {kJoinIn, kIn, kLv, kJoinMt, kMt, kNew, kJoinIn}},
                                               {false, vlanFirstValue(4094), {kLv}}})})});
  }
  {  // A LeaveAll-only message, then a message whose vector carries the LeaveAll the receive side asked for.
    FrameBuilder b(*mrpLib, Mrp::MrpApplication::mvrp);
    b.message(1).vlan(Mrp::MvrpVlanAttribute(), kLeaveAllOnly);
    engine->parseContext()->sendTxLvAllIs(true);
    b.message(1).vlan(Mrp::MvrpVlanAttribute(100), kJoinIn).append(kJoinIn);
    cases.push_back({"LeaveAll", b.frame(kSrc),
                     pdu("mrp-mvrp", {message("mrp-mvrp", 1, 2, {{true, vlanFirstValue(0), {}}}),
                                      message("mrp-mvrp", 1, 2, {{true, vlanFirstValue(100), {kJoinIn, kJoinIn}}})})});
  }
  expectDissectedAsBuilt(cases);
}

}  // namespace
}  // namespace MrpTest

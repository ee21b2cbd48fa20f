#include "decode/Decoder.h"

#include "AttributeValue.h"
#include "MrpModel/MrpWireFormat.h"
#include "MrpSm/MrpSmRecords.h"
#include "common/Applications.h"
#include "common/Hex.h"
#include "quarn/ClockScope.h"
#include "report/RegistrationText.h"
#include "velo/EthHdr.h"
#include "velo/Pkt.h"

namespace MrpCli {

namespace {

using Mrp::MrpApplication;

struct FrameCounters {
  std::uint64_t incorrectPduVersion;
  std::uint64_t unknownAttributeType;
  std::uint64_t malformedPkts;
  std::uint64_t unknownApplication;
};

FrameCounters countersOf(const Mrp::MrpCounters& c) {
  return {c.numOfIncorrectPduVersion(), c.numOfUnknownAttributeType(), c.numOfMalformedPkts(),
          c.numOfUnknownApplication()};
}

using Json = nlohmann::ordered_json;

Json attributesOf(MrpApplication application, const Mrp::MrpSm& engine, const Mrp::MrpReceivedFrame::KeyQueue& keys) {
  Json attributes = Json::array();
  for (const auto& [index, key] : keys) {
    Quarn::Ptr<Mrp::MrpParsedAttribute> parsed = engine.receivedFrame().mrpParsedAttribute(key);
    std::vector<std::uint8_t> octets;
    for (std::size_t i = 0; parsed && i < parsed->attributeValues().size(); ++i) {
      octets.push_back(parsed->attributeValue(Mrp::ValueIndex(static_cast<unsigned>(i))));
    }
    const auto known = MrpAgent::AttributeValue::fromOctets(application, key.attributeType, octets);
    // A Listener's stored octets end in its declaration, which has a field
    // of its own: "value" is the FirstValue, as in the other outputs.
    const std::vector<std::uint8_t> value = known ? known->firstValue() : octets;
    Json attribute = {{"type", unsigned{key.attributeType}},
                      {"key", attributeKeyJson(key.attributeKey)},
                      {"event", parsed ? unsigned{parsed->attributeEvent()} : 0u},
                      {"value", hexEncode(value.data(), value.size())}};
    if (known) valueFieldsJsonAdd(attribute, *known);
    attributes.push_back(std::move(attribute));
  }
  return attributes;
}

Json leaveAllOf(const Mrp::MrpSm& engine) {
  Json types = Json::array();
  for (const auto& [type, leaveAll] : engine.receivedFrame().mrpRxLeaveAll()) {
    if (leaveAll) types.push_back(unsigned{type});
  }
  return types;
}

Json skipped(unsigned frame, const char* reason) { return {{"frame", frame}, {"skipped", reason}}; }

}  // namespace

Decoder::Decoder() : clock_(new Quarn::SimClock) {}

Decoder::~Decoder() { engines_.clear(); }

Mrp::MrpSm& Decoder::engine(MrpApplication application) {
  Quarn::Ptr<Mrp::MrpSm>& engine = engines_[application];
  if (!engine) {
    // An engine takes the process clock of its creation for its timers.
    const Quarn::System::ClockScope clockScope(clock_);
    Quarn::Ptr<Mrp::MrpLib> lib = Mrp::mrpLibFactory();
    lib->applicationWithDefaultFramingIs(application);
    engine = Mrp::mrpSmFactory(Mrp::mrpSmRecordsNew(lib, "mrp-decode"), false);
  }
  return *engine;
}

// What one received frame leaves behind until the receive path has
// dispatched it; decoding stops before dispatch, so it is cleared here.
void Decoder::clearFrameState(Mrp::MrpSm& engine) {
  engine.receivedFrame().parseResultsDelAll();
}

Json Decoder::decodeMrpdu(unsigned frame, MrpApplication application, const std::vector<std::uint8_t>& mrpdu) {
  Mrp::MrpSm& e = engine(application);
  const FrameCounters before = countersOf(*e.mrpCounters());
  const std::uint32_t eventsBefore = e.parseContext()->eventsCounter();

  e.parseMrpdu(Velo::Pkt::pktNew(mrpdu.data(), mrpdu.size()));

  const FrameCounters after = countersOf(*e.mrpCounters());
  Json description = {
      {"frame", frame},
      {"application", applicationName(application)},
      {"leaveAll", leaveAllOf(e)},
      {"domain", attributesOf(application, e, e.receivedFrame().msrpParsedDomainKey())},
      {"attributes", attributesOf(application, e, e.receivedFrame().mrpParsedAttributeKey())},
      {"events", static_cast<std::uint32_t>(e.parseContext()->eventsCounter() - eventsBefore)},
      {"counters",
       {{"numOfIncorrectPduVersion", after.incorrectPduVersion - before.incorrectPduVersion},
        {"numOfUnknownAttributeType", after.unknownAttributeType - before.unknownAttributeType},
        {"numOfMalformedPkts", after.malformedPkts - before.malformedPkts},
        {"numOfUnknownApplication", after.unknownApplication - before.unknownApplication}}},
  };
  clearFrameState(e);
  return description;
}

std::optional<Decoder::MrpduPlace> Decoder::mrpduPlaceOf(std::span<const std::uint8_t> ethernetFrame) {
  const auto header = Velo::EthHdr::fromBytes(ethernetFrame.data(), ethernetFrame.size());
  if (!header) return std::nullopt;
  std::size_t offset = Velo::EthHdr::kSize;
  std::uint16_t etype = header->etherType();
  if (etype == Velo::EthHdr::kVlanEtherType && ethernetFrame.size() >= offset + 4) {
    etype = static_cast<std::uint16_t>(ethernetFrame[16] << 8 | ethernetFrame[17]);
    offset += 4;
  }
  for (MrpApplication application : {MrpApplication::msrp, MrpApplication::mvrp}) {
    const Mrp::MrpApplicationFraming framing = Mrp::mrpDefaultApplicationFraming(application);
    if (header->dst() == framing.macAddr && etype == framing.etype) return MrpduPlace{application, offset};
  }
  return std::nullopt;
}

Json Decoder::decodeFrame(unsigned frame, const std::vector<std::uint8_t>& ethernetFrame) {
  if (ethernetFrame.size() < Velo::EthHdr::kSize) return skipped(frame, "shorter than an Ethernet header");
  const auto place = mrpduPlaceOf(ethernetFrame);
  if (!place) return skipped(frame, "not an MSRP or MVRP frame");
  return decodeMrpdu(frame, place->application,
                     {ethernetFrame.begin() + static_cast<long>(place->offset), ethernetFrame.end()});
}

std::size_t Decoder::leaveAllsIn(std::span<const std::uint8_t> ethernetFrame) {
  const auto place = mrpduPlaceOf(ethernetFrame);
  if (!place) return 0;
  Mrp::MrpSm& e = engine(place->application);
  const std::span<const std::uint8_t> mrpdu = ethernetFrame.subspan(place->offset);
  e.parseMrpdu(Velo::Pkt::pktNew(mrpdu.data(), mrpdu.size()));
  const std::size_t leaveAlls = leaveAllOf(e).size();
  clearFrameState(e);
  return leaveAlls;
}

}  // namespace MrpCli

#include "decode/Decoder.h"

#include "AttributeValue.h"
#include "MrpModel/MrpWireFormat.h"
#include "MrpSm/MrpSmRecords.h"
#include "quarn/ClockScope.h"
#include "velo/EthHdr.h"
#include "velo/Pkt.h"

namespace MrpCli {

namespace {

using Mrp::MrpApplication;

DecodedCounters countersOf(const Mrp::MrpCounters& c) {
  return {c.numOfIncorrectPduVersion(), c.numOfUnknownAttributeType(), c.numOfMalformedPkts(),
          c.numOfUnknownApplication()};
}

DecodedCounters countedSince(const DecodedCounters& before, const DecodedCounters& after) {
  return {after.incorrectPduVersion - before.incorrectPduVersion,
          after.unknownAttributeType - before.unknownAttributeType, after.malformedPkts - before.malformedPkts,
          after.unknownApplication - before.unknownApplication};
}

std::vector<DecodedAttribute> attributesOf(MrpApplication application, const Mrp::MrpSm& engine,
                                           const Mrp::MrpReceivedFrame::KeyQueue& keys) {
  std::vector<DecodedAttribute> attributes;
  for (const auto& [index, key] : keys) {
    Quarn::Ptr<Mrp::MrpParsedAttribute> parsed = engine.receivedFrame().mrpParsedAttribute(key);
    DecodedAttribute attribute;
    attribute.type = key.attributeType;
    attribute.key = key.attributeKey;
    if (parsed) {
      attribute.event = parsed->attributeEvent();
      for (std::size_t i = 0; i < parsed->attributeValues().size(); ++i) {
        attribute.octets.push_back(parsed->attributeValue(Mrp::ValueIndex(static_cast<unsigned>(i))));
      }
    }
    attribute.value = MrpAgent::AttributeValue::fromOctets(application, key.attributeType, attribute.octets);
    attributes.push_back(std::move(attribute));
  }
  return attributes;
}

std::vector<std::uint8_t> leaveAllOf(const Mrp::MrpSm& engine) {
  std::vector<std::uint8_t> types;
  for (const auto& [type, leaveAll] : engine.receivedFrame().mrpRxLeaveAll()) {
    if (leaveAll) types.push_back(type);
  }
  return types;
}

DecodedFrame skipped(unsigned frame, std::optional<Velo::EthAddr> source, const char* reason) {
  DecodedFrame decoded;
  decoded.frame = frame;
  decoded.source = source;
  decoded.skipped = reason;
  return decoded;
}

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

DecodedFrame Decoder::describeMrpdu(unsigned frame, MrpApplication application,
                                    const std::vector<std::uint8_t>& mrpdu) {
  Mrp::MrpSm& e = engine(application);
  const DecodedCounters before = countersOf(*e.mrpCounters());
  const std::uint32_t eventsBefore = e.parseContext()->eventsCounter();

  e.parseMrpdu(Velo::Pkt::pktNew(mrpdu.data(), mrpdu.size()));

  DecodedFrame decoded;
  decoded.frame = frame;
  decoded.application = application;
  decoded.mrpdu = mrpdu;
  decoded.leaveAllTypes = leaveAllOf(e);
  decoded.domain = attributesOf(application, e, e.receivedFrame().msrpParsedDomainKey());
  decoded.attributes = attributesOf(application, e, e.receivedFrame().mrpParsedAttributeKey());
  decoded.events = static_cast<std::uint32_t>(e.parseContext()->eventsCounter() - eventsBefore);
  decoded.counters = countedSince(before, countersOf(*e.mrpCounters()));
  clearFrameState(e);
  return decoded;
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

DecodedFrame Decoder::describeFrame(unsigned frame, const std::vector<std::uint8_t>& ethernetFrame) {
  const auto header = Velo::EthHdr::fromBytes(ethernetFrame.data(), ethernetFrame.size());
  if (!header) return skipped(frame, std::nullopt, "shorter than an Ethernet header");
  const auto place = mrpduPlaceOf(ethernetFrame);
  if (!place) return skipped(frame, header->src(), "not an MSRP or MVRP frame");
  DecodedFrame decoded = describeMrpdu(frame, place->application,
                                       {ethernetFrame.begin() + static_cast<long>(place->offset), ethernetFrame.end()});
  decoded.source = header->src();
  return decoded;
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

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "MrpModel/MrpParseStatus.h"
#include "MrpModel/MrpParsedAttribute.h"
#include "quarn/Ptr.h"
#include "velo/Pkt.h"

namespace Mrp {

class MrpConfig;
class MrpCounters;
class MrpLib;
class MrpParseContext;
class MrpReceivedFrame;
class MrpSm;

// Reads received MRPDUs for an engine: a recursive descent that consumes
// the packet from its head, one level per layer of the PDU, writing the
// engine's parse context and the service object's receive slots as it goes
// and collecting the values into the received frame. Faults are counted and
// traced; a malformed PDU keeps what it collected before.
class MrpPduParser {
 public:
  // For the engine's active life: its parse context and counters exist.
  MrpPduParser(MrpSm& engine, MrpReceivedFrame& frame, MrpLib& lib, const MrpConfig& config, MrpParseContext& context,
               MrpCounters& counters)
      : engine_(engine), frame_(frame), lib_(lib), config_(config), context_(context), counters_(counters) {}
  MrpPduParser(const MrpPduParser&) = delete;
  MrpPduParser& operator=(const MrpPduParser&) = delete;

  // From the ProtocolVersion octet to the PDU's EndMark or its end.
  void parseMrpdu(const Quarn::Ptr<Velo::Pkt>& pkt);
  // The parse levels, each consuming what it reads from the packet's head.
  MrpParseStatus parseMessage(const Quarn::Ptr<Velo::Pkt>& pkt);
  void skipMessageDueToFutureProtocolVersion(const Quarn::Ptr<Velo::Pkt>& pkt);
  MrpParseStatus parseAttributeList(const Quarn::Ptr<Velo::Pkt>& pkt);
  MrpParseStatus parseVectorAttribute(const Quarn::Ptr<Velo::Pkt>& pkt);
  MrpParseStatus parseMsrpVector(const Quarn::Ptr<Velo::Pkt>& pkt);
  MrpParseStatus parseMvrpVector(const Quarn::Ptr<Velo::Pkt>& pkt);
  MrpParseStatus parseThreePackedEvents(const Quarn::Ptr<Velo::Pkt>& pkt);
  MrpParseStatus parseThreeFourPackedEvents(const Quarn::Ptr<Velo::Pkt>& pkt);
  // The head is at the vector's first three-packed octet; the Listener
  // declaration of `valueIndex` is read behind them without consuming it.
  void processThreeAndFourPacked(const Quarn::Ptr<Velo::Pkt>& pkt, std::uint8_t event, std::uint16_t valueIndex,
                                 std::uint16_t threePackedOctets);

  // One received value: derives it from the FirstValue, keys it, writes the
  // parse context and collects it (unless recycled or flooding).
  void processMrpEvent(std::uint8_t event, std::uint16_t valueIndex);
  void saveParsedMrpAttribute();
  void saveParsedMrpAttributeValue(MrpParsedAttribute& parsedAttribute);
  void saveParsedMsrpAttributeValue(MrpParsedAttribute& parsedAttribute);
  void saveParsedMvrpAttributeValue(MrpParsedAttribute& parsedAttribute);

 private:
  // A parse step whose read would run past the frame: counts it once as
  // malformed and marks the frame so that no level above counts it again.
  MrpParseStatus parseEndedEarly(const char* what);
  // The packed events of a vector reach past the frame: logged and counted,
  // but the frame has not ended early: the attribute list still looks for
  // its EndMark behind the vector's FirstValue, and counts again without it.
  MrpParseStatus packedEventsTooLong(std::size_t packedOctets, std::size_t bytesLeft);

  // Whether values are collected at all: not from a recycled frame, nor
  // while flooding.
  bool collecting() const;
  // Whether the current vector may be collected as a run.
  bool collectsRuns() const;
  // Collects the current vector, whose events (and declarations) are
  // decoded, as a run, leaving the receive slot and the parse context as
  // its last value would; false when its keys would repeat.
  bool collectRun();

  // The engine keys the values; the rest is held directly, as it is read
  // for every value.
  MrpSm& engine_;
  MrpReceivedFrame& frame_;
  MrpLib& lib_;
  const MrpConfig& config_;
  MrpParseContext& context_;
  MrpCounters& counters_;
  // One vector's events and Listener declarations while it is collected;
  // kept from vector to vector so that steady traffic does not allocate.
  std::vector<std::uint8_t> vectorEvents_;
  std::vector<std::uint8_t> vectorDeclarations_;
};

}  // namespace Mrp

#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "AttributeValue.h"
#include "MrpModel/MrpApplication.h"
#include "velo/EthAddr.h"

namespace MrpCli {

// One value the engine's parser collected from a frame.
struct DecodedAttribute {
  std::uint8_t type = 0;
  std::uint64_t key = 0;
  std::uint8_t event = 0;
  // The value's octets as the engine stores them.
  std::vector<std::uint8_t> octets;
  // The value record; nullopt for a type the application does not have.
  std::optional<MrpAgent::AttributeValue> value;
};

// What the engine's counters counted for one frame.
struct DecodedCounters {
  std::uint64_t incorrectPduVersion = 0;
  std::uint64_t unknownAttributeType = 0;
  std::uint64_t malformedPkts = 0;
  std::uint64_t unknownApplication = 0;
};

// The counters by their engine names, with what each counts in a few words.
struct DecodedCounterField {
  const char* name;
  const char* fault;
  std::uint64_t DecodedCounters::*count;
};
inline constexpr DecodedCounterField kDecodedCounterFields[] = {
    {"numOfIncorrectPduVersion", "bad protocol version", &DecodedCounters::incorrectPduVersion},
    {"numOfUnknownAttributeType", "unknown attribute type", &DecodedCounters::unknownAttributeType},
    {"numOfMalformedPkts", "malformed", &DecodedCounters::malformedPkts},
    {"numOfUnknownApplication", "unknown application", &DecodedCounters::unknownApplication},
};

// What one frame left behind in the engine's parser, for the decoder's
// outputs: a frame that is no MRPDU carries only why it was skipped.
struct DecodedFrame {
  unsigned frame = 0;
  // The sender, for a frame that came with its Ethernet header.
  std::optional<Velo::EthAddr> source;
  std::optional<std::string> skipped;
  Mrp::MrpApplication application = Mrp::MrpApplication::mvrp;
  // From the ProtocolVersion octet.
  std::vector<std::uint8_t> mrpdu;
  // The attribute types whose vectors carried a LeaveAll, ascending.
  std::vector<std::uint8_t> leaveAllTypes;
  // MSRP Domain values apart, all others in order of receipt.
  std::vector<DecodedAttribute> domain;
  std::vector<DecodedAttribute> attributes;
  std::uint32_t events = 0;
  DecodedCounters counters;
};

// The frame as one JSON object, `mrp decode --json`:
//   {"frame": 1, "application": "mvrp", "leaveAll": [], "domain": [], "attributes": [...],
//    "events": 3, "counters": {...}}, or {"frame": 4, "skipped": "..."}.
nlohmann::ordered_json decodedFrameJson(const DecodedFrame& decoded);

}  // namespace MrpCli

#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "MrpModel/MrpApplication.h"
#include "MrpSm/MrpSm.h"
#include "decode/DecodedFrame.h"
#include "quarn/Clock.h"

namespace MrpCli {

// Runs MRPDUs through the engine's own parser, as the receive path would on
// one engine per application (no sockets), and describes what each frame
// left behind: as a DecodedFrame, or as its JSON object.
class Decoder {
 public:
  // The engines' timers run on a simulated clock of the decoder's own, which
  // never moves: the process clock is left as it is.
  Decoder();
  ~Decoder();
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  // One MRPDU, from its ProtocolVersion octet.
  DecodedFrame describeMrpdu(unsigned frame, Mrp::MrpApplication application, const std::vector<std::uint8_t>& mrpdu);
  // One Ethernet frame: the application is chosen by destination address and
  // EtherType (behind at most one VLAN tag); other frames are skipped.
  DecodedFrame describeFrame(unsigned frame, const std::vector<std::uint8_t>& ethernetFrame);

  // The same, as decodedFrameJson writes them.
  nlohmann::ordered_json decodeMrpdu(unsigned frame, Mrp::MrpApplication application,
                                     const std::vector<std::uint8_t>& mrpdu) {
    return decodedFrameJson(describeMrpdu(frame, application, mrpdu));
  }
  nlohmann::ordered_json decodeFrame(unsigned frame, const std::vector<std::uint8_t>& ethernetFrame) {
    return decodedFrameJson(describeFrame(frame, ethernetFrame));
  }
  // The attribute types an Ethernet frame declares a LeaveAll for, counted;
  // 0 for a frame that is no MSRP or MVRP frame. Parses only.
  std::size_t leaveAllsIn(std::span<const std::uint8_t> ethernetFrame);

 private:
  // An Ethernet frame's application and where its MRPDU starts; none for
  // a frame that is no MSRP or MVRP frame.
  struct MrpduPlace {
    Mrp::MrpApplication application;
    std::size_t offset;
  };
  static std::optional<MrpduPlace> mrpduPlaceOf(std::span<const std::uint8_t> ethernetFrame);

  Mrp::MrpSm& engine(Mrp::MrpApplication application);
  void clearFrameState(Mrp::MrpSm& engine);

  Quarn::Ptr<Quarn::SimClock> clock_;
  std::map<Mrp::MrpApplication, Quarn::Ptr<Mrp::MrpSm>> engines_;
};

}  // namespace MrpCli

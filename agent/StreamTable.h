#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "AttributeValue.h"
#include "CreditBasedShaper.h"
#include "MrpMsrp/MsrpListenerEvent.h"
#include "SrClass.h"

namespace MrpAgent {

// What an MSRP bridge knows of its streams: for each, where its Talker is
// and what became of it on every other port; then, for each port and SR
// class with reservations, the total, the limit and the shaper.
struct StreamTable {
  struct PortRow {
    std::string port;
    // The Listener registered on the port.
    std::optional<Mrp::MsrpListenerEvent> listener;
    // The Talker Advertise or Talker Failed the bridge declares there.
    std::optional<AttributeValue> declared;
    bool reserved = false;
    std::optional<SrClass> srClass;
    std::uint64_t bandwidth = 0;  // bit/s; reserved or asked for
  };
  struct Stream {
    std::uint64_t streamId = 0;
    // Where the Talker is registered ("" when only Listeners are) and what it is.
    std::string talkerPort;
    std::optional<AttributeValue> talker;
    // The Listener declaration the bridge sends towards the Talker.
    std::optional<Mrp::MsrpListenerEvent> listenerDeclared;
    std::vector<PortRow> ports;
  };
  struct ClassRow {
    std::string port;
    SrClass srClass;
    std::uint64_t portSpeed = 0;  // bit/s
    std::uint64_t reserved = 0;   // this class's reservations, bit/s
    std::uint64_t total = 0;      // with the classes before it
    std::uint64_t limit = 0;      // what the class and those before it may reserve
    CbsParameters shaper;
    std::string tc;               // the command that would apply the shaper
  };

  std::vector<Stream> streams;
  std::vector<ClassRow> classes;
};

}  // namespace MrpAgent

#pragma once

#include <cstddef>
#include <cstdint>

#include "quarn/Ptr.h"
#include "velo/EthAddr.h"
#include "velo/IntfId.h"
#include "velo/Pam.h"
#include "velo/PamFilter.h"

namespace Velo {

// What a port's socket is opened with.
struct PamConfig {
  // Link-layer protocol received, host order (3: all protocols).
  std::uint16_t ethProtocol = 0;
  // Group address joined on the port; none when zero.
  EthAddr listenAddr;
  // Classic socket filter run on every received frame; none when empty.
  PamFilterProgram filterProgram;
  // Largest frame received, in bytes; longer frames are dropped.
  std::size_t maxRxPktData = 0;
};

// Opens ports' sockets. The process has one (pamFactoryIs); the packet
// access managers open every socket through it, so the agent plugs in
// Linux packet sockets and tests and the simulator plug in the in-memory wire.
class PamFactory : public Quarn::PtrInterface {
 public:
  // The socket of `intfId`; throws std::runtime_error (std::system_error for
  // a failed system call) saying why it cannot be opened.
  virtual Quarn::Ptr<Pam> pamNew(const IntfId& intfId, const PamConfig& config) = 0;
};

// The process's factory; null until one is installed.
Quarn::Ptr<PamFactory> pamFactory();
void pamFactoryIs(Quarn::Ptr<PamFactory> factory);

// The process-wide cap on a received frame, in bytes, which every socket's
// own maxRxPktData is held to. By default a standard VLAN-tagged frame.
inline constexpr std::size_t kDefaultMaxRxPktData = 1518;
std::size_t pamMaxRxPktData();
void pamMaxRxPktDataIs(std::size_t bytes);
// The receive limit of a socket opened with `config`.
std::size_t pamRxLimit(const PamConfig& config);

}  // namespace Velo

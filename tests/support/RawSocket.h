#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "velo/EthAddr.h"

namespace MrpTest {

// An unfiltered packet socket on one interface, independent of the code
// under test: it sends frames as given and reads every frame the interface
// receives (not the ones sent through it). The kernel may have taken a
// VLAN tag out of a received frame; this socket leaves it out.
class RawSocket {
 public:
  using Bytes = std::vector<std::uint8_t>;

  // Throws std::system_error when the interface cannot be opened.
  explicit RawSocket(const std::string& ifname);
  ~RawSocket();
  RawSocket(const RawSocket&) = delete;
  RawSocket& operator=(const RawSocket&) = delete;

  const Velo::EthAddr& ethAddr() const { return ethAddr_; }
  bool send(const Bytes& frame) const;
  // The next received frame, waiting at most `waitSeconds`; nullopt if none came.
  std::optional<Bytes> recv(double waitSeconds) const;
  // Reads frames until one satisfies `match` or `waitSeconds` pass without one.
  bool seen(const std::function<bool(const Bytes&)>& match, double waitSeconds) const;

 private:
  int fd_ = -1;
  Velo::EthAddr ethAddr_;
};

}  // namespace MrpTest

#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "MrpModel/MrpApplication.h"
#include "velo/EthAddr.h"

namespace CLI {
class App;
}

namespace MrpCli {

// `mrp replay CAPTURE [--app mvrp|msrp] [--from MAC | --to MAC] [--out OUT.pcap]
// [--json] [--no-leaveall] [--html FILE]`: one bridge with one port receives
// every MRP frame of a capture at its capture time (from the first frame
// on), and the timeline (and the HTML report) tells what its engines
// indicated and sent. A capture of a link
// holds the frames of both its ends: --from keeps those one station sent,
// --to those it heard.
class ReplayCommand {
 public:
  // The replaying bridge and its port, as the timeline names them.
  static constexpr const char* kBridge = "replay";
  static constexpr const char* kPort = "p1";
  // How long the replay goes on after the last frame: leaves that the
  // capture started take effect.
  static constexpr double kSettleSeconds = 1.0;

  explicit ReplayCommand(CLI::App& program);

  bool chosen() const;
  // Returns the exit status: 0; 2 after a one-line error on `err` for a
  // capture that cannot be read, has no MRP frame of the application (and
  // sender), or an output that cannot be written.
  int run(std::ostream& out, std::ostream& err) const;

 private:
  // Whether a frame from `source` is replayed, by --from and --to.
  bool replays(const Velo::EthAddr& source) const;
  // "MSRP or MVRP frame", "mvrp frame from 00:1b:21:aa:bb:01": what the
  // capture was searched for.
  std::string framesWanted() const;

  CLI::App* command_;
  std::string file_;
  std::optional<Mrp::MrpApplication> application_;
  std::optional<Velo::EthAddr> from_;
  std::optional<Velo::EthAddr> to_;
  std::optional<std::string> outFile_;
  bool json_ = false;
  bool noLeaveAll_ = false;
  std::optional<std::string> htmlFile_;
};

}  // namespace MrpCli

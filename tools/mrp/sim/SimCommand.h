#pragma once

#include <iosfwd>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace MrpCli {

// `mrp sim [SCENARIO.json] [--json] [--no-leaveall] [--until SECONDS]
// [--html FILE] [--pcap DIR] [--rss-every SECONDS]`: runs a network of
// bridges in simulated time (the embedded default without a file), prints
// its timeline and, with --html, writes the run's HTML report; the resident
// set samples go to the error stream, so that the timeline of a scenario
// and seed stays the same from run to run.
class SimCommand {
 public:
  explicit SimCommand(CLI::App& program);

  bool chosen() const;
  // Returns the exit status: 0; 2 after a one-line error on `err` for a bad
  // scenario or a capture directory that cannot be written (nothing runs
  // then); 1 when a capture fails while the simulation runs, or the HTML
  // report cannot be written.
  int run(std::ostream& out, std::ostream& err) const;

 private:
  CLI::App* command_;
  std::optional<std::string> file_;
  bool json_ = false;
  bool noLeaveAll_ = false;
  std::optional<double> until_;
  std::optional<std::string> htmlFile_;
  std::optional<std::string> pcapDir_;
  std::optional<double> rssEvery_;
};

}  // namespace MrpCli

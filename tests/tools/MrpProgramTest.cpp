#include "support/MrpRun.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using MrpTest::mrp;
using ProgramRun = MrpTest::MrpRun;

struct HelpCase {
  std::vector<std::string> args;
  std::string usage;                  // the line that opens the help
  std::vector<std::string> mentions;  // what else the help must name
};

class MrpProgramHelpTest : public ::testing::TestWithParam<HelpCase> {};

TEST_P(MrpProgramHelpTest, PrintsTheHelpOfTheCommandAndSucceeds) {
  const ProgramRun run = mrp(GetParam().args);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_NE(run.out.find("\n" + GetParam().usage + "\n"), std::string::npos) << run.out;
  for (const std::string& mention : GetParam().mentions) {
    EXPECT_NE(run.out.find(mention), std::string::npos) << mention << " is missing from:\n" << run.out;
  }
}

INSTANTIATE_TEST_SUITE_P(
    EveryCommand, MrpProgramHelpTest,
    ::testing::Values(HelpCase{{"--help"}, "Usage: mrp [OPTIONS] [SUBCOMMAND]", {"decode", "--version", "MRP_TRACE"}},
                      HelpCase{{"-h"}, "Usage: mrp [OPTIONS] [SUBCOMMAND]", {"decode"}},
                      HelpCase{{"decode", "--help"},
                               "Usage: mrp decode [OPTIONS] [FILE]",
                               {"--app msrp|mvrp", "--hex HEX", "pcapng", "standard input"}},
                      HelpCase{{"decode", "-h", "--app", "msrp"}, "Usage: mrp decode [OPTIONS] [FILE]", {"--hex"}},
                      HelpCase{{"--help"}, "Usage: mrp [OPTIONS] [SUBCOMMAND]", {"sim", "replay", "agent", "ctl"}},
                      HelpCase{{"agent", "--help"},
                               "Usage: mrp agent [OPTIONS]",
                               {"--ports IF,...", "--apps APP,...", "--config FILE", "--control PATH",
                                "/run/mrp/agent.sock", "SIGTERM"}},
                      HelpCase{{"ctl", "--help"},
                               "Usage: mrp ctl [OPTIONS] COMMAND [ARGUMENT]",
                               {"--control PATH", "--json", "declare", "counters", "trace MrpSm/0-9"}},
                      HelpCase{{"sim", "--help"},
                               "Usage: mrp sim [OPTIONS] [SCENARIO]",
                               {"--json", "--until SECONDS", "--pcap DIR", "h1 - sw1 - sw2 - sw3 - h2"}},
                      HelpCase{{"replay", "--help"},
                               "Usage: mrp replay [OPTIONS] CAPTURE",
                               {"--app msrp|mvrp", "--out OUT.pcap", "--json", "LeaveAll"}}));

TEST(MrpProgramTest, PrintsItsVersion) {
  for (const char* flag : {"--version", "-V"}) {
    const ProgramRun run = mrp({flag});
    EXPECT_EQ(run.status, 0) << flag;
    EXPECT_EQ(run.out, std::string("mrp ") + MRP_VERSION + "\n") << flag;
    EXPECT_EQ(run.err, "") << flag;
  }
}

struct BadCommandLine {
  std::vector<std::string> args;
  std::string error;
};

class MrpProgramErrorTest : public ::testing::TestWithParam<BadCommandLine> {};

TEST_P(MrpProgramErrorTest, FailsWithOneLineThatPointsAtTheHelpAndStatusTwo) {
  const ProgramRun run = mrp(GetParam().args);
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, GetParam().error + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    BadArguments, MrpProgramErrorTest,
    ::testing::Values(
        BadCommandLine{{}, "mrp: a command is needed: decode, sim, replay, agent, ctl (try 'mrp --help')"},
        BadCommandLine{{"--frobnicate"},
                       "mrp: The following argument was not expected: --frobnicate (try 'mrp --help')"},
        BadCommandLine{{"frobnicate"}, "mrp: The following argument was not expected: frobnicate (try 'mrp --help')"},
        BadCommandLine{{"decode", "--app", "mvrp", "--frobnicate"},
                       "mrp decode: The following argument was not expected: --frobnicate (try 'mrp decode --help')"},
        BadCommandLine{{"decode", "--hex"}, "mrp decode: --hex: 1 required HEX missing (try 'mrp decode --help')"},
        BadCommandLine{{"sim", "--until", "-1"},
                       "mrp sim: --until: '-1' is not a number of seconds (0 or more) (try 'mrp sim --help')"},
        BadCommandLine{{"sim", "--until", "1e12"},
                       "mrp sim: --until: '1e12' is longer than a week of simulated time (604800 s at most) (try 'mrp "
                       "sim --help')"},
        BadCommandLine{{"sim", "--rss-every", "0"},
                       "mrp sim: --rss-every: '0' is not a number of seconds (more than 0) (try 'mrp sim --help')"},
        BadCommandLine{{"replay"}, "mrp replay: CAPTURE is required (try 'mrp replay --help')"},
        BadCommandLine{{"agent"}, "mrp agent: --ports is required (try 'mrp agent --help')"},
        BadCommandLine{{"agent", "--ports", "a/b"},
                       "mrp agent: --ports: 'a/b' is not an interface name (try 'mrp agent --help')"},
        BadCommandLine{{"agent", "--ports", "eth1,eth2", "--apps", "mvrp,gvrp"},
                       "mrp agent: --apps: unknown application 'gvrp' (msrp or mvrp) (try 'mrp agent --help')"},
        BadCommandLine{{"ctl"}, "mrp ctl: COMMAND is required (try 'mrp ctl --help')"},
        BadCommandLine{{"replay", "x.pcap", "--app", "gvrp"},
                       "mrp replay: --app: unknown application 'gvrp' (msrp or mvrp) (try 'mrp replay --help')"}));

}  // namespace

#include "common/ListenAddress.h"

#include <gtest/gtest.h>

#include <string>

namespace MrpTest {
namespace {

using MrpCli::listenAddressFault;

class GoodListenAddressTest : public ::testing::TestWithParam<std::string> {};

TEST_P(GoodListenAddressTest, IsAccepted) { EXPECT_EQ(listenAddressFault(GetParam()), std::nullopt); }

INSTANTIATE_TEST_SUITE_P(Addresses, GoodListenAddressTest,
                         ::testing::Values("127.0.0.1:9464", "0.0.0.0:1", "localhost:9464", "mrp-agent.example.org:80",
                                           "host1:9464"));

struct BadListenAddress {
  std::string text;
  std::string fault;
};

class BadListenAddressTest : public ::testing::TestWithParam<BadListenAddress> {};

TEST_P(BadListenAddressTest, SaysWhatIsWrong) { EXPECT_EQ(listenAddressFault(GetParam().text), GetParam().fault); }

const std::string kNotAddressAndPort = " is not ADDR:PORT (e.g. 127.0.0.1:9464 or localhost:9464)";
const std::string kNotHost = " is not an IPv4 address or a host name";

INSTANTIATE_TEST_SUITE_P(
    Addresses, BadListenAddressTest,
    ::testing::Values(BadListenAddress{"localhost", "'localhost'" + kNotAddressAndPort},
                      BadListenAddress{":9464", "':9464'" + kNotAddressAndPort},
                      BadListenAddress{"[::1]", "'[::1]'" + kNotAddressAndPort},
                      BadListenAddress{"", "''" + kNotAddressAndPort},
                      BadListenAddress{"::1:9464", "'::1:9464': '::1'" + kNotHost},
                      BadListenAddress{"[::1]:9464", "'[::1]:9464': the metrics are served over IPv4 only"},
                      BadListenAddress{"[::]:65535", "'[::]:65535': the metrics are served over IPv4 only"},
                      BadListenAddress{"[127.0.0.1]:9464", "'[127.0.0.1]:9464': '[127.0.0.1]'" + kNotHost},
                      BadListenAddress{"300.1.1.1:9464", "'300.1.1.1:9464': '300.1.1.1'" + kNotHost},
                      BadListenAddress{"1.2.3:9464", "'1.2.3:9464': '1.2.3'" + kNotHost},
                      BadListenAddress{"-host:9464", "'-host:9464': '-host'" + kNotHost},
                      BadListenAddress{"a..b:9464", "'a..b:9464': 'a..b'" + kNotHost},
                      BadListenAddress{"a_b:9464", "'a_b:9464': 'a_b'" + kNotHost},
                      BadListenAddress{"localhost:0", "'localhost:0': the port is not a number 1-65535"},
                      BadListenAddress{"localhost:65536", "'localhost:65536': the port is not a number 1-65535"},
                      BadListenAddress{"localhost:", "'localhost:': the port is not a number 1-65535"},
                      BadListenAddress{"localhost:+80", "'localhost:+80': the port is not a number 1-65535"},
                      BadListenAddress{"localhost:80x", "'localhost:80x': the port is not a number 1-65535"}));

}  // namespace
}  // namespace MrpTest

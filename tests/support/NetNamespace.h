#pragma once

#include <gtest/gtest.h>

#include <string>

namespace MrpTest {

// A network namespace of its own for one test, with veth pairs in it. The
// calling thread enters it for the object's lifetime, so sockets opened
// meanwhile see only its interfaces; the destructor leaves and deletes it.
// Names are "mrptest-<pid>-<n>"; namespaces left behind by a test process
// that died are deleted when the next one is made. Needs root (or
// CAP_SYS_ADMIN and CAP_NET_ADMIN) and iproute2's `ip`.
class NetNamespace {
 public:
  NetNamespace();
  ~NetNamespace();
  NetNamespace(const NetNamespace&) = delete;
  NetNamespace& operator=(const NetNamespace&) = delete;

  // False, with the reason, when it could not be made or entered.
  bool ok() const { return entered_; }
  const std::string& error() const { return error_; }
  const std::string& name() const { return name_; }

  // Runs `ip <args>` inside the namespace; false (with error()) on failure.
  bool ip(const std::string& args);
  // A veth pair `a` - `b`, both up, `a` with its carrier showing.
  bool vethAdd(const std::string& a, const std::string& b);

 private:
  // Runs `command`; its output (stdout and stderr) goes to `output` if given.
  bool run(const std::string& command, std::string* output = nullptr);
  void quietIpv6();

  std::string name_;
  std::string error_;
  bool created_ = false;
  bool entered_ = false;
  int originalFd_ = -1;
};

}  // namespace MrpTest

// Ends the test unless `ns` is usable: skipped on a machine that cannot make
// namespaces, failed under CI (the CI environment variable set), where
// these tests must run.
#define MRP_REQUIRE_NET_NAMESPACE(ns)                                                        \
  do {                                                                                       \
    if (!(ns).ok()) {                                                                        \
      if (std::getenv("CI")) FAIL() << "network namespace needed under CI: " << (ns).error(); \
      GTEST_SKIP() << "no network namespace: " << (ns).error();                              \
    }                                                                                        \
  } while (0)

#include "support/NetNamespace.h"

#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "support/ChildProcess.h"

namespace MrpTest {

namespace {

constexpr const char* kPrefix = "mrptest-";
constexpr const char* kNetnsDir = "/run/netns/";
// How long a new veth's carrier may take to show.
constexpr int kCarrierSeconds = 3;

// Namespaces named after a test process that no longer runs.
std::vector<std::string> staleNamespaces() {
  std::vector<std::string> stale;
  DIR* dir = opendir(kNetnsDir);
  if (!dir) return stale;
  while (dirent* entry = readdir(dir)) {
    std::string name = entry->d_name;
    if (name.rfind(kPrefix, 0) != 0) continue;
    long pid = std::strtol(name.c_str() + std::strlen(kPrefix), nullptr, 10);
    if (pid > 0 && kill(static_cast<pid_t>(pid), 0) < 0 && errno == ESRCH) stale.push_back(name);
  }
  closedir(dir);
  return stale;
}

}  // namespace

NetNamespace::NetNamespace() {
  static int made = 0;
  name_ = kPrefix + std::to_string(getpid()) + "-" + std::to_string(++made);
  for (const std::string& stale : staleNamespaces()) run("ip netns del " + stale);
  if (!run("ip netns add " + name_)) return;
  created_ = true;
  originalFd_ = open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
  int nsFd = open((kNetnsDir + name_).c_str(), O_RDONLY | O_CLOEXEC);
  if (originalFd_ < 0 || nsFd < 0 || setns(nsFd, CLONE_NEWNET) < 0) {
    error_ = std::string("cannot enter ") + name_ + ": " + std::strerror(errno);
  } else {
    entered_ = true;
    quietIpv6();
  }
  if (nsFd >= 0) close(nsFd);
}

// A new link sends IPv6 traffic of the kernel's own for a while (router
// solicitations, multicast listener reports), which sockets that take every
// frame would receive beside the tests' frames; the links here carry only
// what the tests send. Where IPv6 is absent there is nothing to quiet.
void NetNamespace::quietIpv6() {
  for (const char* conf : {"all", "default"}) {
    std::ofstream(std::string("/proc/sys/net/ipv6/conf/") + conf + "/disable_ipv6") << 1;
  }
}

NetNamespace::~NetNamespace() {
  if (entered_) setns(originalFd_, CLONE_NEWNET);
  if (originalFd_ >= 0) close(originalFd_);
  if (created_) run("ip netns del " + name_);
}

bool NetNamespace::ip(const std::string& args) { return run("ip -n " + name_ + " " + args); }

bool NetNamespace::vethAdd(const std::string& a, const std::string& b) {
  if (!ip("link add " + a + " type veth peer name " + b) || !ip("link set " + a + " up") ||
      !ip("link set " + b + " up")) {
    return false;
  }
  // The kernel shows the carrier a moment later (up to a second when link
  // events come quickly): wait for it, so that the pair is up when this returns.
  const std::string show = "ip -n " + name_ + " -o link show " + a;
  std::string output;
  if (secondsUntil(kCarrierSeconds, [&] { return run(show, &output) && output.find(" state UP ") != std::string::npos; })) {
    return true;
  }
  error_ = a + ": no carrier within " + std::to_string(kCarrierSeconds) + " s: " + output;
  return false;
}

bool NetNamespace::run(const std::string& command, std::string* output) {
  FILE* out = popen((command + " 2>&1").c_str(), "r");
  if (!out) {
    error_ = command + ": " + std::strerror(errno);
    return false;
  }
  std::string text;
  char buf[256];
  while (std::fgets(buf, sizeof buf, out)) text += buf;
  int status = pclose(out);
  if (output) *output = text;
  if (status == 0) return true;
  error_ = command + " failed (" + std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : -1) + "): " + text;
  return false;
}

}  // namespace MrpTest

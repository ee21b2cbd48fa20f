#include "support/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <sstream>
#include <system_error>
#include <thread>

extern char** environ;

namespace MrpTest {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kPollInterval = std::chrono::milliseconds(50);

std::string fileText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& argv) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, dir_.file("out").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, dir_.file("err").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  std::vector<char*> args;
  for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
  args.push_back(nullptr);
  const int error = posix_spawnp(&pid_, args[0], &actions, nullptr, args.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::system_error(error, std::generic_category(), "cannot start " + argv[0]);
}

ChildProcess::~ChildProcess() {
  if (!running()) return;
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
}

void ChildProcess::signal(int signo) const { kill(pid_, signo); }

std::optional<int> ChildProcess::exitStatus(double seconds) {
  secondsUntil(seconds, [this] { return !running(); });
  return status_;
}

bool ChildProcess::running() {
  if (status_) return false;
  int status = 0;
  const pid_t done = waitpid(pid_, &status, WNOHANG);
  if (done == 0) return true;
  if (done < 0) {
    status_ = -1;
    return false;
  }
  status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return false;
}

std::string ChildProcess::out() const { return fileText(dir_.file("out")); }
std::string ChildProcess::err() const { return fileText(dir_.file("err")); }

std::optional<double> secondsUntil(double seconds, const std::function<bool()>& done) {
  const auto start = Clock::now();
  const auto deadline = start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  for (;;) {
    if (done()) return std::chrono::duration<double>(Clock::now() - start).count();
    if (Clock::now() >= deadline) return std::nullopt;
    std::this_thread::sleep_for(kPollInterval);
  }
}

}  // namespace MrpTest

#include "agent/WorkerProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ostream>
#include <system_error>
#include <vector>

namespace MrpCli {

namespace {

// The worker runs the same program as the supervisor.
constexpr const char* kSelf = "/proc/self/exe";
// The channel's descriptor in the worker.
constexpr int kChannelFd = 3;

std::string secondsText(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%g s", seconds);
  return text;
}

// Runs in the child between fork and exec: async-signal-safe calls only.
[[noreturn]] void execWorker(int channelFd, pid_t supervisor, char* const argv[]) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != supervisor) _exit(1);  // the supervisor went before prctl took
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  if (channelFd == kChannelFd) {
    fcntl(channelFd, F_SETFD, 0);
  } else {
    dup2(channelFd, kChannelFd);
  }
  execv(kSelf, argv);
  _exit(127);
}

}  // namespace

std::string exitText(int waitStatus) {
  if (WIFSIGNALED(waitStatus)) {
    const int signo = WTERMSIG(waitStatus);
    return "was killed by signal " + std::to_string(signo) + " (" + strsignal(signo) + ")";
  }
  return "exited with status " + std::to_string(WEXITSTATUS(waitStatus));
}

WorkerProcess::WorkerProcess(Quarn::Ptr<Quarn::EventLoop> loop, std::string name, Json start, Observer* observer,
                             std::ostream& log)
    : loop_(std::move(loop)),
      name_(std::move(name)),
      start_(std::move(start)),
      observer_(observer),
      log_(log),
      restart_(&loop_->clock(), this) {
  doStart();
  if (!running()) throw std::system_error(errno, std::generic_category(), "cannot start the " + name_ + " worker");
}

WorkerProcess::~WorkerProcess() {
  doKill();
  channel_.reset();
}

void WorkerProcess::doStart() {
  int fds[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fds) < 0) return;
  std::string arg0 = "mrp", arg1 = "agent-worker", arg2 = name_;
  char* const argv[] = {arg0.data(), arg1.data(), arg2.data(), nullptr};
  const pid_t supervisor = getpid();
  const pid_t pid = fork();
  if (pid == 0) execWorker(fds[1], supervisor, argv);
  close(fds[1]);
  if (pid < 0) {
    const int error = errno;
    close(fds[0]);
    log_ << "mrp agent: cannot start the " << name_ << " worker: " << std::strerror(error) << std::endl;
    errno = error;
    return;
  }
  pid_ = pid;
  ready_ = false;
  if (startedAt_ != 0) {
    ++restarts_;
    log_ << "mrp agent: " << name_ << " worker started again (pid " << pid_ << ")" << std::endl;
  }
  startedAt_ = loop_->clock().now();
  channel_ = std::make_unique<WorkerChannel>(
      loop_, fds[0], [this](const Json& message) { handleMessage(message); }, [] {});
  channel_->send(start_);
  observer_->onWorkerStarted(*this);
}

bool WorkerProcess::send(const Json& message) { return running() && channel_ && channel_->send(message); }

std::optional<nlohmann::ordered_json> WorkerProcess::ask(Json question, double seconds) {
  awaited_ = nextQuestion_++;
  question["id"] = awaited_;
  answer_.reset();
  if (!send(question)) return std::nullopt;
  channel_->waitUntil([this] { return answer_.has_value(); }, seconds);
  awaited_ = 0;
  return std::exchange(answer_, std::nullopt);
}

void WorkerProcess::handleMessage(const Json& message) {
  if (awaited_ != 0 && message.contains("id") && message["id"] == awaited_ && message.contains("answer")) {
    answer_ = message["answer"];
    return;
  }
  if (message.contains("id")) return;  // an answer given too late
  if (message.contains("ready")) {
    ready_ = true;
    observer_->onWorkerReady(*this);
    return;
  }
  observer_->onWorkerMessage(*this, message);
}

void WorkerProcess::handleChildExit() {
  if (!running()) return;
  int status = 0;
  const pid_t reaped = waitpid(pid_, &status, WNOHANG);
  if (reaped != pid_) return;
  // What it said before it went is still to be read.
  if (channel_) channel_->drain();
  channel_.reset();
  pid_ = -1;
  doReport(status);
}

void WorkerProcess::doReport(int status) {
  const bool clean = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  if (stopping_) {
    if (!clean) log_ << "mrp agent: " << name_ << " worker " << exitText(status) << std::endl;
    return;
  }
  const double delay = backoff_.delayAfter(loop_->clock().now() - startedAt_);
  log_ << "mrp agent: " << name_ << " worker " << exitText(status) << "; starting it again in " << secondsText(delay)
       << std::endl;
  restart_.timeIs(loop_->clock().now() + delay);
}

void WorkerProcess::doStop() {
  stopping_ = true;
  restart_.timeIs(Quarn::kInfinity);
  send({{"stop", true}});
}

void WorkerProcess::doKill() {
  if (!running()) return;
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
  pid_ = -1;
}

}  // namespace MrpCli

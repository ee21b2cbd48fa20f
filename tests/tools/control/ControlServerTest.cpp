#include "control/ControlServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "support/TempDir.h"

namespace MrpTest {
namespace {

using MrpCli::ControlAnswer;
using MrpCli::ControlServer;

// A client's end of a connection to the control socket; the test drives
// the server's loop in between, so nothing here may block.
class TestClient {
 public:
  explicit TestClient(const std::string& path) {
    fd_ = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    if (connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0) {
      throw std::system_error(errno, std::generic_category(), "connect");
    }
  }
  ~TestClient() { closeNow(); }

  // Sends what the socket takes now; the rest is for sendMore().
  void send(const std::string& bytes) {
    pending_ += bytes;
    sendMore();
  }
  bool sendMore() {
    while (!pending_.empty()) {
      const ssize_t n = ::send(fd_, pending_.data(), pending_.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
      if (n <= 0) return false;
      pending_.erase(0, static_cast<std::size_t>(n));
    }
    return true;
  }
  void halfClose() const { shutdown(fd_, SHUT_WR); }
  void closeNow() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
  }
  // Reads what has arrived; false once the server has closed.
  bool receive() {
    char buffer[65536];
    for (;;) {
      const ssize_t n = recv(fd_, buffer, sizeof buffer, MSG_DONTWAIT);
      if (n == 0) return false;
      if (n < 0) return true;
      received_.append(buffer, static_cast<std::size_t>(n));
    }
  }
  const std::string& received() const { return received_; }

 private:
  int fd_ = -1;
  std::string pending_;
  std::string received_;
};

class ControlServerTest : public ::testing::Test {
 protected:
  ControlServerTest()
      : server(loop, path, [this](const std::string& request) { return handle(request); },
               [this](const std::string& line) { logs.push_back(line); }) {}

  ControlAnswer handle(const std::string& request) {
    if (request == "throw") throw std::runtime_error("the handler gave up");
    ControlAnswer answer;
    answer.text = request == "big" ? std::string(kBigAnswer, 'x') : "heard " + request;
    return answer;
  }
  // The answer the client gets once the server has closed the connection.
  ControlAnswer answerTo(TestClient& client) {
    for (int i = 0; i < 1000 && client.receive(); ++i) {
      loop->runUntilIdle();
      loop->advance(0.02);
    }
    EXPECT_EQ(client.received().back(), '\n');
    const auto answer = ControlAnswer::fromLine(client.received().substr(0, client.received().size() - 1));
    EXPECT_TRUE(answer) << client.received();
    return answer.value_or(ControlAnswer::failure("no answer"));
  }

  static constexpr std::size_t kBigAnswer = 8 * 1024 * 1024;

  TempDir dir;
  std::string path = dir.file("agent.sock");
  Quarn::Ptr<Quarn::EventLoop> loop = Quarn::EventLoop::simLoopNew();
  std::vector<std::string> logs;
  ControlServer server;
};

TEST_F(ControlServerTest, AnswersTheRequestLineAndClosesTheConnection) {
  TestClient client(path);
  client.send("show\n");
  loop->runUntilIdle();
  const ControlAnswer answer = answerTo(client);
  EXPECT_TRUE(answer.ok);
  EXPECT_EQ(answer.text, "heard show");
  EXPECT_EQ(server.clientCount(), 0u);
}

TEST_F(ControlServerTest, OnlyTheOwnerMayReachTheSocket) {
  struct stat st {};
  ASSERT_EQ(stat(path.c_str(), &st), 0);
  EXPECT_TRUE(S_ISSOCK(st.st_mode));
  EXPECT_EQ(st.st_mode & 0777, 0700u);
}

TEST_F(ControlServerTest, ARequestCutShortGetsItsErrorAndTheServerGoesOn) {
  TestClient halfClosed(path);
  halfClosed.send(R"({"command": "sh)");
  halfClosed.halfClose();
  loop->runUntilIdle();
  const ControlAnswer answer = answerTo(halfClosed);
  EXPECT_FALSE(answer.ok);
  EXPECT_EQ(answer.error, "the request ended before its newline");

  TestClient gone(path);
  gone.send(R"({"command": "sh)");
  loop->runUntilIdle();
  gone.closeNow();
  loop->runUntilIdle();
  EXPECT_EQ(server.clientCount(), 0u);
  EXPECT_THAT(logs, ::testing::Contains("control: a client left in the middle of its request"));

  TestClient next(path);
  next.send("show\n");
  loop->runUntilIdle();
  EXPECT_EQ(answerTo(next).text, "heard show");
}

TEST_F(ControlServerTest, ARequestOverTheLimitIsRefusedWithoutWaitingForItsEnd) {
  TestClient client(path);
  client.send(std::string(ControlServer::kMaxRequestBytes + 4096, 'x'));
  for (int i = 0; i < 100 && !client.sendMore(); ++i) loop->runUntilIdle();
  loop->runUntilIdle();
  const ControlAnswer answer = answerTo(client);
  EXPECT_FALSE(answer.ok);
  EXPECT_EQ(answer.error, "a request is at most 65536 bytes, ended by a newline");
}

TEST_F(ControlServerTest, AClientThatSendsNothingIsDroppedWhenItsTimeIsUp) {
  TestClient client(path);
  loop->runUntilIdle();
  EXPECT_EQ(server.clientCount(), 1u);
  loop->advance(ControlServer::kClientSeconds - 0.1);
  EXPECT_EQ(server.clientCount(), 1u);
  loop->advance(0.1);
  EXPECT_EQ(server.clientCount(), 0u);
  EXPECT_FALSE(client.receive()) << "closed without an answer";
  EXPECT_THAT(logs, ::testing::Contains("control: a client took more than 5 s; dropped"));
}

TEST_F(ControlServerTest, AnAnswerLargerThanTheSocketTakesIsSentAsTheClientReads) {
  TestClient client(path);
  client.send("big\n");
  loop->runUntilIdle();
  EXPECT_EQ(server.clientCount(), 1u) << "the answer is still on its way";
  EXPECT_EQ(answerTo(client).text.size(), kBigAnswer);
}

TEST_F(ControlServerTest, AClientThatDoesNotReadItsAnswerIsDroppedWhenItsTimeIsUp) {
  TestClient client(path);
  client.send("big\n");
  loop->runUntilIdle();
  loop->advance(ControlServer::kClientSeconds);
  EXPECT_EQ(server.clientCount(), 0u);
}

TEST_F(ControlServerTest, ARequestTheHandlerThrowsOnIsAnsweredWithTheError) {
  TestClient client(path);
  client.send("throw\n");
  loop->runUntilIdle();
  const ControlAnswer answer = answerTo(client);
  EXPECT_FALSE(answer.ok);
  EXPECT_EQ(answer.error, "the handler gave up");
}

TEST_F(ControlServerTest, ClientsBeyondTheLimitAreRefused) {
  std::vector<std::unique_ptr<TestClient>> clients;
  for (std::size_t i = 0; i <= ControlServer::kMaxClients; ++i) {
    clients.push_back(std::make_unique<TestClient>(path));
    loop->runUntilIdle();
  }
  EXPECT_EQ(server.clientCount(), ControlServer::kMaxClients);
  EXPECT_FALSE(clients.back()->receive()) << "closed at once";
  EXPECT_THAT(logs, ::testing::Contains("control: more than 16 clients at once; one refused"));
}

TEST_F(ControlServerTest, ASecondServerOnALiveSocketIsRefusedAndAStaleFileIsReplaced) {
  EXPECT_THROW(ControlServer(loop, path, nullptr, nullptr), std::system_error);
  const std::string stale = dir.file("stale.sock");
  {
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, stale.data(), stale.size());
    ASSERT_EQ(bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(fd);
  }
  ControlServer replacing(loop, stale, nullptr, nullptr);
  TestClient client(stale);
  loop->runUntilIdle();
  EXPECT_EQ(replacing.clientCount(), 1u);
}

TEST_F(ControlServerTest, TheSocketFileGoesWithTheServer) {
  const std::string other = dir.file("sub/dir/other.sock");
  { ControlServer made(loop, other, nullptr, nullptr); }
  EXPECT_NE(access(other.c_str(), F_OK), 0);
  EXPECT_EQ(access(dir.file("sub/dir").c_str(), F_OK), 0) << "its directory is made when missing";
}

TEST(ControlAnswerTest, TravelsOnOneLine) {
  ControlAnswer answer;
  answer.result = {{"levels", "MrpSm/0-9"}};
  answer.text = "two\nlines\n";
  const std::string line = answer.line();
  EXPECT_EQ(line.find('\n'), std::string::npos);
  const auto back = ControlAnswer::fromLine(line);
  ASSERT_TRUE(back);
  EXPECT_TRUE(back->ok);
  EXPECT_EQ(back->result, answer.result);
  EXPECT_EQ(back->text, answer.text);
  const auto refused = ControlAnswer::fromLine(ControlAnswer::failure("no").line());
  ASSERT_TRUE(refused);
  EXPECT_FALSE(refused->ok);
  EXPECT_EQ(refused->error, "no");
  EXPECT_FALSE(ControlAnswer::fromLine("{\"result\": 1}"));
  EXPECT_FALSE(ControlAnswer::fromLine("not json"));
}

}  // namespace
}  // namespace MrpTest

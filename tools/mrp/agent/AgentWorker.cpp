#include "agent/AgentWorker.h"

#include <signal.h>

#include <ostream>
#include <utility>
#include <system_error>

#include "agent/SignalWatcher.h"
#include "common/Applications.h"
#include "control/AttributeMessage.h"
#include "format/AgentConfigReader.h"
#include "format/JsonNode.h"
#include "quarn/Trace.h"
#include "report/RelayTimeline.h"

namespace MrpCli {

namespace {

// How long a new worker waits for its start message.
constexpr double kStartSeconds = 10;

std::optional<std::string> portOf(const nlohmann::ordered_json& message) {
  if (message.contains("port") && message["port"].is_string()) return message["port"].get<std::string>();
  return std::nullopt;
}

}  // namespace

AgentWorker::AgentWorker(int channelFd, std::string application, std::ostream& log)
    : application_(std::move(application)),
      log_(log),
      loop_(Quarn::EventLoop::realLoopNew()),
      channel_(
          loop_, channelFd, [this](const Json& message) { handleMessage(message); }, [this] { loop_->stop(); }),
      batchEnd_(&loop_->clock(), this) {}

AgentWorker::~AgentWorker() = default;

int AgentWorker::run() {
  signal(SIGINT, SIG_IGN);
  if (!channel_.waitUntil([this] { return start_.has_value(); }, kStartSeconds)) {
    log_ << "mrp agent: worker: no start message from the supervisor" << std::endl;
    return 1;
  }
  try {
    const Agent::Options options = optionsOf(*start_);
    timeline_ = std::make_unique<RelayTimeline>([this](const Json& message) { doRelay(message); });
    const SignalWatcher signals(loop_, {SIGTERM}, [this](int) { loop_->stop(); });
    agent_ = std::make_unique<Agent>(options, loop_, *timeline_, log_);
    channel_.send({{"ready", true}});
    for (const Json& message : std::exchange(early_, {})) doCarryOut(message);
    if (channel_.open()) loop_->run();
    agent_->doStop();
    doSendBatch();
  } catch (const JsonInputError& error) {
    log_ << "mrp agent: worker: bad start message: " << error.what() << std::endl;
    return 1;
  } catch (const std::system_error& error) {
    log_ << "mrp agent: " << error.what() << std::endl;
    return 1;
  }
  return 0;
}

Agent::Options AgentWorker::optionsOf(const Json& start) const {
  const JsonNode node(start, "start");
  node.object({"app", "ports", "config", "origin"});
  Agent::Options options;
  const std::string app = node["app"].string();
  const auto application = applicationNamed(app);
  if (!application || app != application_) node["app"].fail("'" + app + "' is not this worker's application");
  options.application = *application;
  const JsonNode ports = node["ports"];
  for (std::size_t i = 0; i < ports.listSize(); ++i) options.ports.push_back(ports.item(i).string());
  options.config = agentConfigFromJson(node["config"].string(), options.ports);
  options.origin = node["origin"].seconds();
  return options;
}

void AgentWorker::doRelay(const Json& message) {
  batch_ += WorkerChannel::lineOf(message);
  if (batchEnd_.time() == Quarn::kInfinity) batchEnd_.timeIs(loop_->clock().now());
}

void AgentWorker::doSendBatch() {
  if (!batch_.empty()) channel_.sendLines(std::exchange(batch_, {}));
}

void AgentWorker::handleMessage(const Json& message) {
  if (!start_) {
    if (message.contains("start")) start_ = message["start"];
    return;
  }
  if (!agent_) {
    early_.push_back(message);
    return;
  }
  doCarryOut(message);
}

void AgentWorker::doCarryOut(const Json& message) {
  if (message.contains("stop")) {
    loop_->stop();
  } else if (message.contains("declare") || message.contains("withdraw")) {
    const bool declare = message.contains("declare");
    const Json& attributes = message[declare ? "declare" : "withdraw"];
    for (const Json& attribute : attributes.is_array() ? attributes : Json::array()) {
      const auto value = attributeFromMessage(attribute);
      if (!value) continue;
      if (declare) {
        agent_->declare(*value, portOf(message));
      } else {
        agent_->withdraw(*value, portOf(message));
      }
    }
  } else if (message.contains("ask") && message["ask"].is_string()) {
    channel_.send({{"id", message.value("id", 0)}, {"answer", answerOf(message["ask"].get<std::string>())}});
  } else if (message.contains("trace") && message["trace"].is_string()) {
    const std::string levels = message["trace"].get<std::string>();
    bool ok = true;
    if (levels == "off") {
      Quarn::traceLevelsClear();
    } else {
      ok = Quarn::traceLevelsIs(levels);
    }
    channel_.send({{"id", message.value("id", 0)}, {"answer", ok}});
  }
}

nlohmann::ordered_json AgentWorker::answerOf(const std::string& question) const {
  if (question == "show") return agent_->registrationsMessage();
  if (question == "counters") return agent_->countersMessage();
  if (question == "ports") return agent_->portsMessage();
  if (question == "streams") return agent_->streamsMessage();
  return nullptr;
}

}  // namespace MrpCli

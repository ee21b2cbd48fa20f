#include "agent/PortCounters.h"

#include <string>

namespace MrpCli {

void PortCounters::add(const Mrp::MrpCounters& before, const Mrp::MrpCounters& after) {
  framesReceived += after.numOfPktsProcessed() - before.numOfPktsProcessed();
  droppedWrongDestination += after.numOfIncorrectDmac() - before.numOfIncorrectDmac();
  droppedWrongEtherType += after.numOfIncorrectEtype() - before.numOfIncorrectEtype();
  droppedBadVersion += after.numOfIncorrectPduVersion() - before.numOfIncorrectPduVersion();
  droppedMalformed += after.numOfMalformedPkts() - before.numOfMalformedPkts();
  droppedUnknownType += after.numOfUnknownAttributeType() - before.numOfUnknownAttributeType();
  droppedUnknownApplication += after.numOfUnknownApplication() - before.numOfUnknownApplication();
  // Joins are indicated only for received values, so all of them are counted here.
  joinIndications += after.numOfJoinIndications() - before.numOfJoinIndications();
}

nlohmann::ordered_json PortCounters::json() const {
  nlohmann::ordered_json failed = nlohmann::ordered_json::object();
  for (const auto& [code, count] : talkerFailedDeclared) failed[std::to_string(code)] = count;
  return {{"framesReceived", framesReceived},
          {"framesSent", framesSent},
          {"dropped",
           {{"wrongDestination", droppedWrongDestination},
            {"wrongEtherType", droppedWrongEtherType},
            {"badVersion", droppedBadVersion},
            {"malformed", droppedMalformed},
            {"unknownType", droppedUnknownType},
            {"unknownApplication", droppedUnknownApplication}}},
          {"joinIndications", joinIndications},
          {"leaveIndications", leaveIndications},
          {"leaveAllsReceived", leaveAllsReceived},
          {"leaveAllsSent", leaveAllsSent},
          {"talkerFailedDeclared", std::move(failed)}};
}

}  // namespace MrpCli

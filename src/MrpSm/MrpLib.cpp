#include "MrpSm/MrpLib.h"

#include "MrpModel/MrpWireFormat.h"
#include "MrpSm/MrpSmTxPorts.h"

namespace Mrp {

bool MrpLib::mrpJoinIndication(const MrpParameters&) { return false; }
void MrpLib::applicationWithDefaultFramingIs(MrpApplication application) {
  const MrpApplicationFraming framing = mrpDefaultApplicationFraming(application);
  applicationIs(application);
  applicationMacAddrIs(framing.macAddr);
  applicationEtypeIs(framing.etype);
}

void MrpLib::mrpLeaveIndication(const MrpParameters&) {}
void MrpLib::mrpLeaveAllIndication(const MrpParameters&) {}

void MrpLib::mrpListenerJoinWithoutIndication(const MrpParameters&) {}

void MrpLib::mrpJoinReq(const MrpParameters&) {}
void MrpLib::mrpLeaveReq(const MrpParameters&) {}

void MrpLib::mrpSmIs(MrpSm* mrpSm) {
  mrpSm_ = mrpSm;
  std::unique_ptr<MrpTxPorts> ports;
  if (mrpSm) ports = std::make_unique<MrpSmTxPorts>(*mrpSm);
  transmitter_.txPortsIs(ports.get());
  if (!mrpSm) transmitter_.txTimerWheelIs(nullptr);
  enginePorts_ = std::move(ports);
}

Quarn::Ptr<MrpLib> mrpLibFactory() { return new MrpLib; }

}  // namespace Mrp

#include "MrpSm/MrpLib.h"

#include <sstream>
#include <stdexcept>

#include "MrpModel/MrpWireFormat.h"
#include "quarn/Collection.h"

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

Quarn::Ptr<MrpTxPacketContext> MrpLib::contextIs(TxPacketContextMap& map, const Velo::IntfId& intfId,
                                                 Quarn::Ptr<Velo::Pkt> pkt) {
  auto it = map.find(intfId);
  if (it == map.end()) {
    return map.emplace(intfId, new MrpTxPacketContext(intfId, std::move(pkt))).first->second;
  }
  if (it->second->pkt() != pkt) {
    std::ostringstream text;
    text << "Reinstantiating the pointer interface where constructor parameter attribute _pkt has a different value of"
         << pkt.ptr() << " than the current value of " << it->second->pkt().ptr() << " not allowed";
    throw std::invalid_argument(text.str());
  }
  return it->second;
}

Quarn::Ptr<MrpTxPacketContext> MrpLib::mrpTxPacketContext(const Velo::IntfId& intfId) const {
  return Quarn::entryOf(mrpTxPacketContext_, intfId);
}

Quarn::Ptr<MrpTxPacketContext> MrpLib::mrpTxPacketContextIs(const Velo::IntfId& intfId, Quarn::Ptr<Velo::Pkt> pkt) {
  return contextIs(mrpTxPacketContext_, intfId, std::move(pkt));
}

Quarn::Ptr<MrpTxPacketContext> MrpLib::mrpTxSecondPacketContext(const Velo::IntfId& intfId) const {
  return Quarn::entryOf(mrpTxSecondPacketContext_, intfId);
}

Quarn::Ptr<MrpTxPacketContext> MrpLib::mrpTxSecondPacketContextIs(const Velo::IntfId& intfId,
                                                                  Quarn::Ptr<Velo::Pkt> pkt) {
  return contextIs(mrpTxSecondPacketContext_, intfId, std::move(pkt));
}

Quarn::Ptr<MrpLib> mrpLibFactory() { return new MrpLib; }

}  // namespace Mrp

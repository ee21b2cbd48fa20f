#include "MrpSm/MrpPamWiring.h"

#include <ios>

#include "MrpSm/MrpSmTrace.h"
#include "kni/NamespaceName.h"
#include "kni/Status.h"
#include "velo/EthHdr.h"
#include "velo/PamFactory.h"

namespace Mrp {

namespace {

// The address's first two bytes and last four, most significant byte first.
std::uint32_t dmacUpperOf(const Velo::EthAddr& dmac) { return (std::uint32_t{dmac[0]} << 8) | dmac[1]; }
std::uint32_t dmacLowerOf(const Velo::EthAddr& dmac) {
  return (std::uint32_t{dmac[2]} << 24) | (std::uint32_t{dmac[3]} << 16) | (std::uint32_t{dmac[4]} << 8) | dmac[5];
}

}  // namespace

Velo::PamFilterProgram MrpPamWiring::pamFilterProgram_;

// Jump offsets count from the instruction after the jump; 10 is the drop.
Velo::PamFilterProgram MrpPamWiring::pamFilterProgramOf(const Velo::EthAddr& dmac, std::uint16_t etherType) {
  using namespace Velo::PamFilterOp;
  return {
      {kLoadWordAbs, 0, 0, 2},                             // 0: address bytes 2-5
      {kJumpIfEqual, 0, 8, dmacLowerOf(dmac)},             // 1: → 2, else drop
      {kLoadHalfAbs, 0, 0, 0},                             // 2: address bytes 0-1
      {kJumpIfEqual, 0, 6, dmacUpperOf(dmac)},             // 3: → 4, else drop
      {kLoadHalfAbs, 0, 0, 12},                            // 4: EtherType
      {kJumpIfEqual, 3, 0, etherType},                     // 5: → accept, else 6
      {kJumpIfEqual, 0, 3, Velo::EthHdr::kVlanEtherType},  // 6: VLAN tag → 7, else drop
      {kLoadHalfAbs, 0, 0, 16},                            // 7: EtherType behind the tag
      {kJumpIfEqual, 0, 1, etherType},                     // 8: → accept, else drop
      {kReturn, 0, 0, 0xffff},                             // 9: accept
      {kReturn, 0, 0, 0},                                  // 10: drop
  };
}

MrpPamWiring::MrpPamWiring(Hive::EntityManager& entityManager, const Velo::EthAddr& dmac, std::uint16_t etherType) {
  MRP_TRACE(6, "MrpSm::PamManEnable dmacUpper " << std::hex << dmacUpperOf(dmac) << " dmacLower "
                                                << dmacLowerOf(dmac) << " ethType " << etherType);
  if (pamFilterProgram_.empty()) pamFilterProgram_ = pamFilterProgramOf(dmac, etherType);

  allIntfStatusDir_ = entityManager.entity<Interface::AllIntfStatusDir>(Interface::AllIntfStatusDir::kAllPath);
  allIntfStatusLocalDir_ = entityManager.entity<Interface::AllIntfStatusDir>(Interface::AllIntfStatusDir::kLocalPath);
  KernelNetInfo::statusMount(entityManager, KernelNetInfo::NamespaceName());

  deviceIntfStatusDir_ = new Interface::DeviceIntfStatusDir(kDeviceIntfStatusDirName);
  desiredIntfDir_ = new Interface::PamDesiredIntfDir(kDesiredIntfDirName);
  pamCollection_ = new Interface::EthDevPamCollection(kPamCollectionName);
  intfStatusManagerRoot_ = new Hive::EntityManager(kIntfStatusManagerRootName);
  intfStatusManagerRoot_->entityIs(kDeviceIntfStatusDirName, deviceIntfStatusDir_);
  intfStatusManagerRoot_->entityIs(kDesiredIntfDirName, desiredIntfDir_);
  intfStatusManagerRoot_->entityIs(kPamCollectionName, pamCollection_);

  pamMan_ = new Interface::EthDevPamManager(desiredIntfDir_, pamCollection_, deviceIntfStatusDir_);
  pamMan_->ethProtocolIs(kPamEthProtocol);
  pamMan_->listenAddrIs(dmac);
  pamMan_->filterProgramIs(pamFilterProgram_);
  pamMan_->maxRxPktDataIs(kPamMaxRxPktData);
  pamMan_->perIntfSocketIs(true);
  Velo::pamMaxRxPktDataIs(kPamMaxRxPktData);
  pamMan_->enabledIs(true);
}

void MrpPamWiring::release() {
  deviceIntfStatusDir_ = nullptr;
  intfStatusManagerRoot_ = nullptr;
  desiredIntfDir_ = nullptr;
  pamCollection_ = nullptr;
  pamMan_ = nullptr;
}

}  // namespace Mrp

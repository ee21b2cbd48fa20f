#pragma once

#include <cstddef>
#include <cstdint>

#include "hive/EntityManager.h"
#include "interface/AllIntfStatusDir.h"
#include "interface/DeviceIntfStatusDir.h"
#include "interface/EthDevPamCollection.h"
#include "interface/EthDevPamManager.h"
#include "interface/PamDesiredIntfDir.h"
#include "quarn/Ptr.h"
#include "velo/EthAddr.h"
#include "velo/PamFilter.h"

namespace Mrp {

// What an engine's packet access is built on: the interface status found in
// the central state database, the engine's own directories (the ports
// wanted, the sockets opened) and the manager that opens a filtered socket
// for every wanted port.
class MrpPamWiring {
 public:
  // What the application's sockets are opened with.
  static constexpr std::uint16_t kPamEthProtocol = 3;  // all protocols
  static constexpr std::size_t kPamMaxRxPktData = 10000;
  // Names of the engine's local directories, the same for either application.
  static constexpr const char* kDeviceIntfStatusDirName = "deviceIntfStatusDirMsrp";
  static constexpr const char* kDesiredIntfDirName = "desiredIntfDirMsrp";
  static constexpr const char* kPamCollectionName = "pamCollectionMsrp";
  static constexpr const char* kIntfStatusManagerRootName = "intfStatusManagerRoot";

  // The kernel filter of an application's sockets: frames to `dmac` with
  // EtherType `etherType`, untagged or behind one VLAN tag.
  static Velo::PamFilterProgram pamFilterProgramOf(const Velo::EthAddr& dmac, std::uint16_t etherType);
  // The filter all engines of the process attach: made by the first engine
  // that initialises and reused unchanged by later ones, whatever their
  // application.
  static const Velo::PamFilterProgram& pamFilterProgram() { return pamFilterProgram_; }

  // Wires packet access for the application that listens on `dmac` for
  // `etherType`; the manager is enabled and opens sockets as ports are wanted.
  MrpPamWiring(Hive::EntityManager& entityManager, const Velo::EthAddr& dmac, std::uint16_t etherType);
  MrpPamWiring(const MrpPamWiring&) = delete;
  MrpPamWiring& operator=(const MrpPamWiring&) = delete;

  // Interface status from the central state database; null when absent.
  const Quarn::Ptr<Interface::AllIntfStatusDir>& allIntfStatusDir() const { return allIntfStatusDir_; }
  const Quarn::Ptr<Interface::AllIntfStatusDir>& allIntfStatusLocalDir() const { return allIntfStatusLocalDir_; }
  // The engine's own directories, kept by name in intfStatusManagerRoot.
  const Quarn::Ptr<Interface::DeviceIntfStatusDir>& deviceIntfStatusDir() const { return deviceIntfStatusDir_; }
  const Quarn::Ptr<Hive::EntityManager>& intfStatusManagerRoot() const { return intfStatusManagerRoot_; }
  // Ports listed true get a socket.
  const Quarn::Ptr<Interface::PamDesiredIntfDir>& desiredIntfDir() const { return desiredIntfDir_; }
  const Quarn::Ptr<Interface::EthDevPamCollection>& pamCollection() const { return pamCollection_; }
  const Quarn::Ptr<Interface::EthDevPamManager>& pamMan() const { return pamMan_; }

  // Lets go of the directories and then the manager, in that order.
  void release();

 private:
  friend class MrpSmPamPeer;
  static Velo::PamFilterProgram pamFilterProgram_;

  Quarn::Ptr<Interface::AllIntfStatusDir> allIntfStatusDir_;
  Quarn::Ptr<Interface::AllIntfStatusDir> allIntfStatusLocalDir_;
  Quarn::Ptr<Interface::DeviceIntfStatusDir> deviceIntfStatusDir_;
  Quarn::Ptr<Hive::EntityManager> intfStatusManagerRoot_;
  Quarn::Ptr<Interface::PamDesiredIntfDir> desiredIntfDir_;
  Quarn::Ptr<Interface::EthDevPamCollection> pamCollection_;
  Quarn::Ptr<Interface::EthDevPamManager> pamMan_;
};

}  // namespace Mrp

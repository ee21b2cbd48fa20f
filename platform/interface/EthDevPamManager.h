#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

#include "interface/DeviceIntfStatusDir.h"
#include "interface/EthDevPamCollection.h"
#include "interface/PamDesiredIntfDir.h"
#include "quarn/Ptr.h"
#include "velo/Pam.h"
#include "velo/PamFactory.h"

namespace Interface {

// Keeps one frame socket open, in the collection, for every port that the
// desired-interface directory lists true, while enabled. Sockets are opened
// through a Velo::PamFactory with this manager's socket configuration;
// whether a port's socket is open, and why not, is recorded in the device
// status directory. A socket whose port disappears leaves the collection;
// the port gets a new one when its entry in the directory is set again.
class EthDevPamManager : public Quarn::PtrInterface {
 public:
  EthDevPamManager(Quarn::Ptr<PamDesiredIntfDir> desiredIntfDir, Quarn::Ptr<EthDevPamCollection> pamCollection,
                   Quarn::Ptr<DeviceIntfStatusDir> deviceIntfStatusDir,
                   Quarn::Ptr<Velo::PamFactory> pamFactory = Velo::pamFactory());
  EthDevPamManager(const EthDevPamManager&) = delete;
  EthDevPamManager& operator=(const EthDevPamManager&) = delete;

  const Quarn::Ptr<PamDesiredIntfDir>& desiredIntfDir() const { return desiredIntfDir_; }
  const Quarn::Ptr<EthDevPamCollection>& pamCollection() const { return pamCollection_; }
  const Quarn::Ptr<DeviceIntfStatusDir>& deviceIntfStatusDir() const { return deviceIntfStatusDir_; }
  const Quarn::Ptr<Velo::PamFactory>& pamFactory() const { return pamFactory_; }

  // The socket configuration, set while the manager is disabled (asserted
  // "!enabled()"); sockets keep what they were opened with.
  const Velo::PamConfig& pamConfig() const { return pamConfig_; }
  std::uint16_t ethProtocol() const { return pamConfig_.ethProtocol; }
  void ethProtocolIs(std::uint16_t protocol);
  const Velo::EthAddr& listenAddr() const { return pamConfig_.listenAddr; }
  void listenAddrIs(const Velo::EthAddr& addr);
  const Velo::PamFilterProgram& filterProgram() const { return pamConfig_.filterProgram; }
  void filterProgramIs(Velo::PamFilterProgram program);
  std::size_t maxRxPktData() const { return pamConfig_.maxRxPktData; }
  void maxRxPktDataIs(std::size_t bytes);
  // One socket per port; the only mode there is, so false throws std::invalid_argument.
  bool perIntfSocket() const { return perIntfSocket_; }
  void perIntfSocketIs(bool perIntfSocket);

  // Enabling opens the sockets of all desired ports; disabling closes them all.
  bool enabled() const { return enabled_; }
  void enabledIs(bool enabled);

 protected:
  ~EthDevPamManager() override;

 private:
  class DesiredReactor : public PamDesiredIntfDir::Notifiee {
   public:
    explicit DesiredReactor(EthDevPamManager* owner) : owner_(owner) {}
    void onIntfDesired(const Velo::IntfId& intfId) override { owner_->handleIntfDesired(intfId); }

   private:
    EthDevPamManager* owner_;
  };

  class PamReactor : public Velo::Pam::Notifiee {
   public:
    PamReactor(EthDevPamManager* owner, Velo::Pam* pam) : owner_(owner) { notifierIs(pam); }
    // The last thing done here: it deletes this reactor.
    void onClosed() override { owner_->handlePamClosed(notifier()->intfId()); }

   private:
    EthDevPamManager* owner_;
  };

  void requireDisabled() const;
  void handleIntfDesired(const Velo::IntfId& intfId);
  void handlePamClosed(Velo::IntfId intfId);
  // Opens or closes the port's socket so that it is open exactly when wanted.
  void doSync(const Velo::IntfId& intfId);
  void doOpen(const Velo::IntfId& intfId);
  void doClose(const Velo::IntfId& intfId);

  Quarn::Ptr<PamDesiredIntfDir> desiredIntfDir_;
  Quarn::Ptr<EthDevPamCollection> pamCollection_;
  Quarn::Ptr<DeviceIntfStatusDir> deviceIntfStatusDir_;
  Quarn::Ptr<Velo::PamFactory> pamFactory_;
  Velo::PamConfig pamConfig_;
  bool perIntfSocket_ = true;
  bool enabled_ = false;
  DesiredReactor desiredReactor_;
  std::map<Velo::IntfId, std::unique_ptr<PamReactor>> pamReactors_;
};

}  // namespace Interface

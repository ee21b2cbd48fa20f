#pragma once

#include <map>
#include <utility>

#include "MrpModel/MrpApplication.h"
#include "velo/MemPam.h"
#include "velo/PamFactory.h"

namespace MrpCli {

// Opens in-memory ports for a simulated bridge: one per port and
// application, chosen by the group address the socket joins. On a Linux
// port every application's socket gets its own copy of the frames its
// filter passes; two engines sharing one in-memory end would take each
// other's frames instead.
class ApplicationPamFactory : public Velo::PamFactory {
 public:
  void pamIs(Mrp::MrpApplication application, const Quarn::Ptr<Velo::MemPam>& pam);

  // The port's end for the application whose group address `config` joins;
  // throws std::runtime_error for one that was not plugged in.
  Quarn::Ptr<Velo::Pam> pamNew(const Velo::IntfId& intfId, const Velo::PamConfig& config) override;

 private:
  std::map<std::pair<Velo::IntfId, Velo::EthAddr>, Quarn::Ptr<Velo::MemPam>> pams_;
};

}  // namespace MrpCli

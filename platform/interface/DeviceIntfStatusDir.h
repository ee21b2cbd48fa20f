#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "quarn/PtrMap.h"
#include "quarn/Types.h"
#include "velo/EthAddr.h"
#include "velo/IntfId.h"

namespace Interface {

// What the packet access manager found on a desired port's device.
class DeviceIntfStatus : public Quarn::PtrInterface {
 public:
  explicit DeviceIntfStatus(Velo::IntfId intfId) : intfId_(std::move(intfId)) {}

  const Velo::IntfId& intfId() const { return intfId_; }
  // The device's MAC address, once its socket is open.
  const Velo::EthAddr& ethAddr() const { return ethAddr_; }
  void ethAddrIs(const Velo::EthAddr& addr) { ethAddr_ = addr; }
  // Why the socket is not open; empty while it is.
  const std::string& pamError() const { return pamError_; }
  void pamErrorIs(std::string error) { pamError_ = std::move(error); }

 private:
  Velo::IntfId intfId_;
  Velo::EthAddr ethAddr_;
  std::string pamError_;
};

// The device status of every port an application wants a socket on.
class DeviceIntfStatusDir : public Quarn::PtrInterface {
 public:
  explicit DeviceIntfStatusDir(Quarn::Name name) : name_(std::move(name)) {}

  const Quarn::Name& name() const { return name_; }

  // The entry of `intfId`, created when absent.
  Quarn::Ptr<DeviceIntfStatus> deviceIntfStatusIs(const Velo::IntfId& intfId) {
    return deviceIntfStatus_.emplace(intfId).first;
  }
  // Null when absent.
  Quarn::Ptr<DeviceIntfStatus> deviceIntfStatus(const Velo::IntfId& intfId) const {
    return deviceIntfStatus_.find(intfId);
  }
  void deviceIntfStatusDel(const Velo::IntfId& intfId) { deviceIntfStatus_.erase(intfId); }
  std::size_t deviceIntfStatusCount() const { return deviceIntfStatus_.size(); }

 private:
  Quarn::Name name_;
  Quarn::PtrMap<Velo::IntfId, DeviceIntfStatus> deviceIntfStatus_;
};

}  // namespace Interface

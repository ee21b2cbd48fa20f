#pragma once

#include <cstdint>

namespace Quarn {

// Base of every reference-counted object. The count is intrusive and not
// atomic: all objects live on the one reactor thread.
class PtrInterface {
 public:
  PtrInterface() = default;
  // A copy is a new object: it starts without references.
  PtrInterface(const PtrInterface&) : references_(0) {}
  PtrInterface& operator=(const PtrInterface&) { return *this; }

  std::uint32_t references() const { return references_; }
  void newRef() const { ++references_; }
  void deleteRef() const {
    if (--references_ == 0) onZeroReferences();
  }

 protected:
  virtual ~PtrInterface() = default;
  virtual void onZeroReferences() const { delete this; }

 private:
  mutable std::uint32_t references_ = 0;
};

}  // namespace Quarn

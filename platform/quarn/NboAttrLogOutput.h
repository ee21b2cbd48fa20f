#pragma once

#include <utility>

#include "quarn/Ptr.h"
#include "quarn/Types.h"

namespace Quarn::NboAttrLog {

// A destination of the process's attribute log, known by its name.
class Output : public PtrInterface {
 public:
  const Name& name() const { return name_; }

 protected:
  explicit Output(Name name) : name_(std::move(name)) {}

 private:
  Name name_;
};

}  // namespace Quarn::NboAttrLog

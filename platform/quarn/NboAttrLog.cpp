#include "quarn/NboAttrLog.h"

#include <utility>

#include "quarn/Assert.h"
#include "quarn/PtrMap.h"

namespace Quarn::NboAttrLog {

namespace {

PtrMap<Name, Output>& outputs() {
  static PtrMap<Name, Output> registry;
  return registry;
}

}  // namespace

void outputIs(Ptr<Output> output) {
  QASSERT(output);
  Name name = output->name();
  outputs().assign(name, std::move(output));
}

Ptr<Output> output(const Name& name) { return outputs().find(name); }

void outputDel(const Name& name) { outputs().erase(name); }

void outputDelAll() { outputs().clear(); }

}  // namespace Quarn::NboAttrLog

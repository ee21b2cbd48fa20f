#pragma once

#include "quarn/NboAttrLogOutput.h"
#include "quarn/Ptr.h"
#include "quarn/Types.h"

// The process-wide registry of attribute-log outputs, keyed by name.
namespace Quarn::NboAttrLog {

// Registers `output` under its name, replacing any output of that name.
void outputIs(Ptr<Output> output);
// Null when no output has that name.
Ptr<Output> output(const Name& name);
void outputDel(const Name& name);
void outputDelAll();

}  // namespace Quarn::NboAttrLog

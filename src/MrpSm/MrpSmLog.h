#pragma once

#include "quarn/Log.h"

namespace Mrp {

// The engine's structured log messages.
inline constexpr Quarn::LogMessage MRP_ERROR{"MRP_ERROR", 6, "MRP error occurred", "%s", Quarn::kNoActionRequired};
inline constexpr Quarn::LogMessage MRP_JOIN{
    "MRP_JOIN", 6, "MRP Join was received on an interface",
    "MRP Join received on %s, attrType: %s, key: %s, state: %s, event: %s", Quarn::kNoActionRequired};
inline constexpr Quarn::LogMessage MRP_LV{"MRP_LV", 6, "MRP Lv was handled on an interface",
                                          "MRP Lv %s on %s, attrType: %s, key: %s, state: %s, event: %s",
                                          Quarn::kNoActionRequired};

// Names of spanning-tree topologies as the port-role coupling compares them.
inline constexpr const char* kCistName = "Cist";
inline constexpr const char* kMstNameFormat = "Mst%d";
inline constexpr const char* kVlanPrefix = "Vl";
inline constexpr const char* kNoStpName = "NoStp";
inline constexpr const char* kBackupPrefix = "Bkup";

}  // namespace Mrp

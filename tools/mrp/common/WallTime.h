#pragma once

#include <string>

namespace MrpCli {

// Seconds since the Unix epoch, now.
double wallTimeNow();

// A moment as a log line shows it: ISO 8601 in the local time zone, with
// milliseconds and the zone's offset, "2026-11-24T20:19:28.123+01:00".
std::string wallTimeText(double epochSeconds);

}  // namespace MrpCli

#include "common/WallTime.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>

namespace MrpCli {

double wallTimeNow() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::string wallTimeText(double epochSeconds) {
  const double whole = std::floor(epochSeconds);
  auto seconds = static_cast<std::time_t>(whole);
  auto millis = static_cast<int>(std::lround((epochSeconds - whole) * 1000.0));
  if (millis == 1000) {
    ++seconds;
    millis = 0;
  }
  std::tm local{};
  localtime_r(&seconds, &local);
  char date[32];
  std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
  // %z writes +hhmm; ISO 8601's extended form puts a colon in the offset.
  char zone[8];
  std::strftime(zone, sizeof zone, "%z", &local);
  char text[64];
  std::snprintf(text, sizeof text, "%s.%03d%.3s:%.2s", date, millis, zone, zone + 3);
  return text;
}

}  // namespace MrpCli

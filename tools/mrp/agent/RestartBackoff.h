#pragma once

#include <algorithm>

namespace MrpCli {

// How long to wait before a worker that died is started again: kFirstSeconds
// after one that had settled (it ran kSettledSeconds or more) or died for
// the first time, twice the last wait after one that died young again, at
// most kMaxSeconds. A crash loop thus slows down instead of spinning.
class RestartBackoff {
 public:
  static constexpr double kFirstSeconds = 1;
  static constexpr double kMaxSeconds = 30;
  static constexpr double kSettledSeconds = 10;

  // The wait after a worker that ran `livedSeconds` before it died.
  double delayAfter(double livedSeconds) {
    const bool again = livedSeconds < kSettledSeconds && last_ > 0;
    last_ = again ? std::min(last_ * 2, kMaxSeconds) : kFirstSeconds;
    return last_;
  }

 private:
  double last_ = 0;
};

}  // namespace MrpCli

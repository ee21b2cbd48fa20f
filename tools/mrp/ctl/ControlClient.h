#pragma once

#include <stdexcept>
#include <string>

namespace MrpCli {

// Why the agent could not be asked: "cannot reach the agent at PATH: ...".
class ControlClientError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Sends `request` (one line, the newline added here) to the agent's control
// socket at `path` and returns the answer line, without its newline.
// Throws ControlClientError when the agent cannot be reached, closes without
// an answer, or has not answered within `waitSeconds`.
std::string controlExchange(const std::string& path, const std::string& request, double waitSeconds = 10);

}  // namespace MrpCli

#include "quarn/Assert.h"

#include <cstdio>
#include <cstdlib>

namespace Quarn {

void assertionFailed(const char* text, const char* file, int line) {
  std::fprintf(stderr, "Assertion failed: %s (%s:%d)\n", text, file, line);
  std::fflush(stderr);
  std::abort();
}

}  // namespace Quarn

#pragma once

#include <string>

namespace MrpTest {

// A headless chromium, to see a page as a browser makes it: its DOM after
// its scripts ran, and a screenshot.

// Whether a chromium program is on the PATH.
bool chromiumAvailable();

// The DOM of the page at `htmlPath` once loaded, serialised
// (`--dump-dom`). Throws std::runtime_error when chromium fails.
std::string chromiumDom(const std::string& htmlPath);

// A screenshot of the page at `htmlPath` in a window `width` x `height`,
// written as a PNG to `pngPath`. Throws std::runtime_error when chromium fails.
void chromiumScreenshot(const std::string& htmlPath, const std::string& pngPath, int width, int height);

}  // namespace MrpTest

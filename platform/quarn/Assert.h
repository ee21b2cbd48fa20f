#pragma once

namespace Quarn {

// Reports a violated lifecycle assertion and aborts. Lifecycle assertions catch
// programming errors only; nothing that arrives from the wire may reach one.
[[noreturn]] void assertionFailed(const char* text, const char* file, int line);

}  // namespace Quarn

// Aborts with the condition's own text, e.g. "!initialized()". Variadic so a
// condition with a top-level comma, such as std::is_same_v<A, B>, is one condition.
#define QASSERT(...) \
  ((__VA_ARGS__) ? static_cast<void>(0) : ::Quarn::assertionFailed(#__VA_ARGS__, __FILE__, __LINE__))

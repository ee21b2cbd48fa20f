#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <type_traits>

namespace Mrp {

// For every code of a machine's 8-bit state, the transition that does
// nothing and keeps that state: what the machine does for a pair its table
// leaves out, or for a state out of range.
template <class Transition>
inline constexpr auto kMrpIgnoredTransitions = [] {
  using State = decltype(Transition::next);
  static_assert(sizeof(State) == 1, "one ignored transition per 8-bit state code");
  std::array<Transition, std::numeric_limits<std::underlying_type_t<State>>::max() + 1> ignored{};
  for (std::size_t code = 0; code < ignored.size(); ++code) ignored[code].next = static_cast<State>(code);
  return ignored;
}();

}  // namespace Mrp

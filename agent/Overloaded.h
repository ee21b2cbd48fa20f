#pragma once

namespace MrpAgent {

// One visitor made of several lambdas, one per alternative of a variant:
//   std::visit(Overloaded{[](const A&) {...}, [](const B&) {...}}, value);
template <class... F>
struct Overloaded : F... {
  using F::operator()...;
};

// Spelled out for compilers that do not deduce an aggregate's arguments.
template <class... F>
Overloaded(F...) -> Overloaded<F...>;

}  // namespace MrpAgent

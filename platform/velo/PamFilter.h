#pragma once

#include <cstdint>
#include <ostream>
#include <vector>

namespace Velo {

// One instruction of a classic socket filter program, laid out as the kernel
// expects it: opcode, jump offsets (relative to the next instruction) and
// operand.
struct PamFilterInstruction {
  std::uint16_t code = 0;
  std::uint8_t jt = 0;
  std::uint8_t jf = 0;
  std::uint32_t k = 0;

  friend bool operator==(const PamFilterInstruction&, const PamFilterInstruction&) = default;
};

std::ostream& operator<<(std::ostream& os, const PamFilterInstruction& insn);

// The opcodes the packet access uses.
namespace PamFilterOp {
inline constexpr std::uint16_t kLoadWordAbs = 0x20;  // A = 32-bit word at offset k
inline constexpr std::uint16_t kLoadHalfAbs = 0x28;  // A = 16-bit half-word at offset k
inline constexpr std::uint16_t kJumpIfEqual = 0x15;  // A == k ? jt : jf
inline constexpr std::uint16_t kReturn = 0x06;       // accept k bytes; 0 drops
}  // namespace PamFilterOp

// A filter program; empty means no filter.
using PamFilterProgram = std::vector<PamFilterInstruction>;

}  // namespace Velo

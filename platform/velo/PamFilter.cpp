#include "velo/PamFilter.h"

#include <linux/filter.h>

#include <cstddef>
#include <ios>

namespace Velo {

// The program is handed to the kernel as it is.
static_assert(sizeof(PamFilterInstruction) == sizeof(sock_filter));
static_assert(offsetof(PamFilterInstruction, jt) == offsetof(sock_filter, jt));
static_assert(offsetof(PamFilterInstruction, k) == offsetof(sock_filter, k));
static_assert(PamFilterOp::kLoadWordAbs == (BPF_LD | BPF_W | BPF_ABS));
static_assert(PamFilterOp::kLoadHalfAbs == (BPF_LD | BPF_H | BPF_ABS));
static_assert(PamFilterOp::kJumpIfEqual == (BPF_JMP | BPF_JEQ | BPF_K));
static_assert(PamFilterOp::kReturn == (BPF_RET | BPF_K));

std::ostream& operator<<(std::ostream& os, const PamFilterInstruction& insn) {
  std::ios_base::fmtflags flags = os.flags();
  os << "{ 0x" << std::hex << insn.code << ", " << std::dec << unsigned{insn.jt} << ", " << unsigned{insn.jf}
     << ", 0x" << std::hex << insn.k << " }";
  os.flags(flags);
  return os;
}

}  // namespace Velo

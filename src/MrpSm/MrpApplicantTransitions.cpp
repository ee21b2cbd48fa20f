#include "MrpSm/MrpApplicantTransitions.h"

namespace Mrp {

namespace {

const char* notationOf(MrpApplicantTransition::Send send) {
  using Send = MrpApplicantTransition::Send;
  switch (send) {
    case Send::newFirst: return "sN(false)";
    case Send::newSecond: return "sN(true)";
    case Send::joinFirst: return "sJ(false)";
    case Send::joinSecond: return "sJ(true)";
    case Send::registeredStateFirst: return "sR(false)";
    case Send::leave: return "sL";
  }
  return "?";
}

}  // namespace

std::ostream& operator<<(std::ostream& os, const MrpApplicantTransition& transition) {
  if (transition.messages().empty() && !transition.writesState) return os << "—";
  const char* separator = "";
  for (const MrpApplicantTransition::Send send : transition.messages()) {
    os << separator << notationOf(send);
    separator = ", ";
  }
  if (!transition.writesState) return os << ", stay";
  if (!transition.messages().empty()) os << ' ';
  return os << "→ " << transition.next;
}

}  // namespace Mrp

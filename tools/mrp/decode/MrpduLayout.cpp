#include "decode/MrpduLayout.h"

#include "MrpModel/MrpWireFormat.h"
#include "MrpMsrp/MsrpAttrType.h"

namespace MrpCli {

namespace {

// Reads fields off the front of the octets; a read that would run past the
// end takes nothing and returns false.
class OctetCursor {
 public:
  explicit OctetCursor(std::span<const std::uint8_t> octets) : octets_(octets) {}

  std::size_t left() const { return octets_.size() - at_; }
  bool take(std::size_t n, std::span<const std::uint8_t>& out) {
    if (n > left()) return false;
    out = octets_.subspan(at_, n);
    at_ += n;
    return true;
  }
  bool takeU8(std::uint8_t& out) {
    std::span<const std::uint8_t> field;
    if (!take(1, field)) return false;
    out = field[0];
    return true;
  }
  bool takeU16(std::uint16_t& out) {
    if (!peekU16(out)) return false;
    at_ += 2;
    return true;
  }
  bool peekU16(std::uint16_t& out) const {
    if (left() < 2) return false;
    out = static_cast<std::uint16_t>(octets_[at_] << 8 | octets_[at_ + 1]);
    return true;
  }
  // An EndMark at the front is taken.
  bool takeEndMark() {
    std::uint16_t word = 1;
    if (!peekU16(word) || word != 0) return false;
    at_ += kEndMark;
    return true;
  }

 private:
  static constexpr std::size_t kEndMark = Mrp::kMrpEndMarkOctets;
  std::span<const std::uint8_t> octets_;
  std::size_t at_ = 0;
};

bool hasDeclarations(Mrp::MrpApplication application, std::uint8_t attributeType) {
  return application == Mrp::MrpApplication::msrp &&
         static_cast<Mrp::MsrpAttrType>(attributeType) == Mrp::MsrpAttrType::listenerVector;
}

// The vector at the cursor, added to `message` once its header is read and
// filled as far as its octets go; the field it ends inside, or nullptr.
const char* readVector(OctetCursor& in, Mrp::MrpApplication application, MrpduLayout::Message& message) {
  std::uint16_t header = 0;
  if (!in.takeU16(header)) return "VectorHeader";
  MrpduLayout::Vector& vector = message.vectors.emplace_back();
  vector.leaveAll = (header & Mrp::kMrpLeaveAllBit) != 0;
  vector.numberOfValues = header & Mrp::kMrpNumberOfValuesMask;
  std::span<const std::uint8_t> field;
  if (!in.take(message.attributeLength, field)) return "FirstValue";
  vector.firstValue.emplace(field.begin(), field.end());
  if (!in.take(Mrp::mrpThreePackedOctets(vector.numberOfValues), field)) return "ThreePackedEvents";
  for (const std::uint8_t octet : field) {
    for (const std::uint8_t event : Mrp::mrpUnpackThreePacked(octet)) {
      if (vector.events.size() < vector.numberOfValues) vector.events.push_back(event);
    }
  }
  if (!hasDeclarations(application, message.attributeType)) return nullptr;
  if (!in.take(Mrp::mrpFourPackedOctets(vector.numberOfValues), field)) return "FourPackedEvents";
  for (unsigned i = 0; i < vector.numberOfValues; ++i) {
    vector.declarations.push_back(Mrp::mrpUnpackFourPacked(field[i / 4], i % 4));
  }
  return nullptr;
}

// The message at the cursor, added to `layout` once its header is read,
// with its vectors up to its EndMark.
const char* readMessage(OctetCursor& in, Mrp::MrpApplication application, MrpduLayout& layout) {
  std::uint8_t type = 0;
  std::uint8_t length = 0;
  if (!in.takeU8(type) || !in.takeU8(length)) return "message header";
  MrpduLayout::Message& message = layout.messages.emplace_back();
  message.attributeType = type;
  message.attributeLength = length;
  if (application == Mrp::MrpApplication::msrp) {
    std::uint16_t listLength = 0;
    if (!in.takeU16(listLength)) return "AttributeListLength";
    message.attributeListLength = listLength;
  }
  // A message has at least one vector: its first header is one even when
  // it reads as an EndMark. Every vector takes at least its header, so the
  // loop ends with the octets.
  do {
    if (const char* inside = readVector(in, application, message)) return inside;
    if (in.left() == 0) return "EndMark";
  } while (!in.takeEndMark());
  return nullptr;
}

}  // namespace

MrpduLayout MrpduLayout::read(Mrp::MrpApplication application, std::span<const std::uint8_t> mrpdu) {
  MrpduLayout layout;
  OctetCursor in(mrpdu);
  std::uint8_t version = 0;
  if (!in.takeU8(version)) {
    layout.endsShortOf = "ProtocolVersion";
    return layout;
  }
  layout.protocolVersion = version;
  while (in.left() > 0 && !in.takeEndMark()) {
    layout.endsShortOf = readMessage(in, application, layout);
    // Behind a message comes another or the PDU's EndMark.
    if (!layout.endsShortOf && in.left() == 0) layout.endsShortOf = "EndMark";
    if (layout.endsShortOf) break;
  }
  return layout;
}

}  // namespace MrpCli

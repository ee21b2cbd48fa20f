#include <algorithm>
#include <array>
#include <span>

#include "MrpModel/MrpValueBytes.h"
#include "MrpModel/MrpWireFormat.h"
#include "MrpMsrp/MsrpAttrType.h"
#include "MrpMvrp/MvrpAttrType.h"
#include "MrpSm/MrpSm.h"
#include "MrpSm/MrpValueFields.h"

namespace Mrp {

namespace {

// The store keeps a value as its FirstValue: the leading octets of the
// value record, as many as the attribute type's FirstValue length. For a
// Listener that is the StreamID alone; its declaration travels in the
// four-packed events and is not part of the stored value.
template <class Record>
std::span<const std::uint8_t> firstValueBytes(const MrpLib& lib, std::uint8_t attributeType, const Record& value) {
  const std::size_t length = mrpSizeOfAttribute(attributeType, static_cast<std::uint8_t>(lib.application()));
  return valueBytes(value).first(std::min(length, sizeof(Record)));
}

void storeValue(MrpAttrDatabase& entry, std::span<const std::uint8_t> octets) {
  for (std::size_t i = 0; i < octets.size(); ++i) entry.attributeValueIs(ValueIndex(i), octets[i]);
}

// Decodes the stored FirstValue into `field`, a value record; octets of the
// record beyond the FirstValue keep what they hold.
template <class Record>
void loadValue(const MrpLib& lib, std::uint8_t attributeType, const MrpAttrDatabase& entry, Record& field) {
  std::array<std::uint8_t, sizeof(Record)> octets;
  std::ranges::copy(valueBytes(field), octets.begin());
  const std::size_t length = firstValueBytes(lib, attributeType, field).size();
  std::copy_n(entry.attributeValues().begin(), length, octets.begin());
  field = valueFromBytes<Record>(octets);
}

template <class Record>
bool sameValue(const MrpLib& lib, std::uint8_t attributeType, const MrpAttrDatabase& entry, const Record& value) {
  const std::span<const std::uint8_t> octets = firstValueBytes(lib, attributeType, value);
  const auto& stored = entry.attributeValues();
  return std::equal(octets.begin(), octets.end(), stored.begin());
}

void mrpPopulateMsrpValueInDatabase(MrpLib& lib, std::uint8_t type, MrpAttrDatabase& entry, bool txAttribute) {
  withMsrpValue(lib, type, txAttribute, [&](const auto& value) { storeValue(entry, firstValueBytes(lib, type, value)); });
}

void mrpPopulateMvrpValueInDatabase(MrpLib& lib, std::uint8_t type, MrpAttrDatabase& entry, bool txAttribute) {
  withMvrpValue(lib, type, txAttribute, [&](const auto& value) { storeValue(entry, firstValueBytes(lib, type, value)); });
}

void mrpFillMsrpContextFromDatabase(MrpLib& lib, std::uint8_t type, const MrpAttrDatabase& entry) {
  withMsrpValue(lib, type, true, [&](auto& field) { loadValue(lib, type, entry, field); });
}

void mrpFillMvrpContextFromDatabase(MrpLib& lib, std::uint8_t type, const MrpAttrDatabase& entry) {
  withMvrpValue(lib, type, true, [&](auto& field) { loadValue(lib, type, entry, field); });
}

bool msrpRxVectorSameAsDatabaseAttr(MrpLib& lib, std::uint8_t type, const MrpAttrDatabase& entry) {
  bool same = false;
  withMsrpValue(lib, type, false, [&](const auto& value) { same = sameValue(lib, type, entry, value); });
  return same;
}

// The VLAN identifier is the whole value, and the key.
bool mvrpRxVectorSameAsDatabaseAttr(MrpLib& lib, const MrpParseContext& context) {
  return static_cast<MvrpAttrType>(context.attributeType()) == MvrpAttrType::vlanVector &&
         lib.mvrpVlanVectorRx().vlanId() == context.attributeKey();
}

}  // namespace

Quarn::Ptr<MrpAttrDatabase> MrpSm::mrpGetAttribute(bool create) {
  const MrpParseContext& context = *parseContext_;
  Quarn::Ptr<MrpAttrDatabase> entry =
      mrpGetAttrFromDatabase(context.intfId(), context.attributeType(), context.attributeKey(), true);
  if (entry || !create) return entry;
  return mrpAddAttrToDatabase(context.intfId(), context.attributeType(), context.attributeKey(), false);
}

// Re-adding a stored attribute resets its states too, deliberately.
Quarn::Ptr<MrpAttrDatabase> MrpSm::mrpAddAttrToDatabase(const Velo::IntfId& intfId, std::uint8_t attributeType,
                                                        const std::uint64_t& key, bool txAttribute) {
  Quarn::Ptr<MrpAttrDatabase> entry = addAttrToAddPending({intfId, attributeType, key});
  entry->applicantStateIs(MrpApplicantState::vo);
  entry->registrarStateIs(MrpRegistrarState::mt);
  mrpPopulateValueInDatabase(entry, txAttribute);
  return entry;
}

void MrpSm::mrpDeleteAttrFromDatabase() {
  addAttrToDeletePending({parseContext_->intfId(), parseContext_->attributeType(), parseContext_->attributeKey()});
}

void MrpSm::mrpPopulateValueInDatabase(const Quarn::Ptr<MrpAttrDatabase>& entry, bool txAttribute) {
  const std::uint8_t type = parseContext_->attributeType();
  switch (mrpLib_->application()) {
    case MrpApplication::msrp:
      mrpPopulateMsrpValueInDatabase(*mrpLib_, type, *entry, txAttribute);
      break;
    case MrpApplication::mvrp:
      mrpPopulateMvrpValueInDatabase(*mrpLib_, type, *entry, txAttribute);
      break;
  }
}

void MrpSm::mrpFillContextFromDatabase(const MrpAttribute& attribute) {
  const Quarn::Ptr<MrpAttrDatabase> entry =
      mrpGetAttrFromDatabase(attribute.intfId, attribute.attributeType, attribute.attributeKey, true);
  mrpFillContextFromDatabase(attribute, entry.ptr());
}

void MrpSm::mrpFillContextFromDatabase(const MrpAttribute& attribute, const MrpAttrDatabase* entry) {
  // The attribute becomes current even when absent: callers go on to look
  // it up and act on it.
  parseContext_->intfIdIs(attribute.intfId);
  parseContext_->attributeTypeIs(attribute.attributeType);
  parseContext_->attributeKeyIs(attribute.attributeKey);
  if (entry == nullptr) return;
  switch (mrpLib_->application()) {
    case MrpApplication::msrp:
      mrpFillMsrpContextFromDatabase(*mrpLib_, attribute.attributeType, *entry);
      break;
    case MrpApplication::mvrp:
      mrpFillMvrpContextFromDatabase(*mrpLib_, attribute.attributeType, *entry);
      break;
  }
}

bool MrpSm::mrpRxVectorSameAsDatabaseAttr() const {
  const MrpParseContext& context = *parseContext_;
  if (mrpLib_->application() == MrpApplication::mvrp) return mvrpRxVectorSameAsDatabaseAttr(*mrpLib_, context);
  const Quarn::Ptr<MrpAttrDatabase> entry =
      mrpGetAttrFromDatabase(context.intfId(), context.attributeType(), context.attributeKey(), true);
  return entry && mrpRxVectorSameAsDatabaseAttr(*entry);
}

bool MrpSm::mrpRxVectorSameAsDatabaseAttr(const MrpAttrDatabase& entry) const {
  switch (mrpLib_->application()) {
    case MrpApplication::msrp:
      return msrpRxVectorSameAsDatabaseAttr(*mrpLib_, parseContext_->attributeType(), entry);
    case MrpApplication::mvrp:
      return mvrpRxVectorSameAsDatabaseAttr(*mrpLib_, *parseContext_);
  }
  return false;
}

}  // namespace Mrp

#include "MrpSm/MrpReceivedFrame.h"

#include <algorithm>
#include <type_traits>

#include "MrpModel/MrpValueBytes.h"
#include "MrpMsrp/MsrpAttrType.h"
#include "MrpSm/MrpParsedRunValue.h"
#include "MrpSm/MrpValueFields.h"

namespace Mrp {

bool MrpReceivedFrame::collectsRuns() const {
  return parsedRunsEnabled_ && mrpParsedAttribute_.empty() && mrpParsedAttributeKey_.empty() &&
         msrpParsedDomainKey_.empty();
}

std::size_t MrpReceivedFrame::parsedRunValue(const MrpParsedRuns::Run& run, std::size_t index,
                                             ValueOctets& octets) const {
  std::size_t size = 0;
  withValueType(application_, run.attributeType, [&]<class Record>(std::type_identity<Record>) {
    const Record value = mrpParsedRunValue<Record>(parsedRuns_, run, index);
    const auto bytes = valueBytes(value);
    size = static_cast<std::size_t>(std::copy(bytes.begin(), bytes.end(), octets.begin()) - octets.begin());
  });
  return size;
}

std::optional<std::uint8_t> MrpReceivedFrame::parsedEventOf(std::uint8_t attributeType, std::uint64_t key) const {
  if (!parsedRuns_.empty()) return parsedRuns_.eventOf(attributeType, key);
  if (const Quarn::Ptr<MrpParsedAttribute> parsed = mrpParsedAttribute_.find({attributeType, key})) {
    return parsed->attributeEvent();
  }
  return std::nullopt;
}

void MrpReceivedFrame::parseResultsDelAll() {
  parsedRuns_.clear();
  mrpParsedAttribute_.clear();
  mrpParsedAttributeKey_.delAll();
  msrpParsedDomainKey_.delAll();
  mrpRxLeaveAll_.clear();
  futureProtocolVersion_ = false;
}

MrpReceivedFrame::KeyQueue& MrpReceivedFrame::keyQueueOf(std::uint8_t attributeType) const {
  const bool domain = application_ == MrpApplication::msrp &&
                      static_cast<MsrpAttrType>(attributeType) == MsrpAttrType::domainVector;
  return domain ? msrpParsedDomainKey_ : mrpParsedAttributeKey_;
}

void MrpReceivedFrame::materializeParsedRuns() const {
  if (parsedRuns_.empty()) return;
  ValueOctets octets{};
  for (const MrpParsedRuns::Run& run : parsedRuns_.runs()) {
    KeyQueue& queue = keyQueueOf(run.attributeType);
    for (std::size_t i = 0; i < run.count; ++i) {
      const MrpParsedAttributeKey key{run.attributeType, run.firstKey + i};
      const Quarn::Ptr<MrpParsedAttribute> parsed = mrpParsedAttribute_.findOrCreate(key);
      parsed->attributeEventIs(parsedRuns_.event(run, i));
      parsed->attributeValueIs(std::span(octets.data(), parsedRunValue(run, i, octets)));
      queue.enq(key);
    }
  }
  parsedRuns_.clear();
}

}  // namespace Mrp

#include "decode/FrameText.h"

#include <cctype>
#include <cstdio>
#include <utility>

#include "BridgeId.h"
#include "MrpModel/MrpThreePackedEvent.h"
#include "MrpModel/MrpWireFormat.h"
#include "MrpSm/MrpValueAt.h"
#include "Overloaded.h"
#include "SrClass.h"
#include "TalkerAdmission.h"
#include "common/Applications.h"
#include "common/Hex.h"
#include "decode/MrpduLayout.h"
#include "report/StreamTableText.h"
#include "report/ValueText.h"
#include "report/VlanSetText.h"

namespace MrpCli {

namespace {

using MrpAgent::AttributeValue;
using Field = std::pair<std::string, std::string>;

const char* eventText(std::uint8_t event) { return Mrp::enumText(static_cast<Mrp::MrpThreePackedEvent>(event)); }

std::string upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

std::string failedText(const Mrp::MsrpTalkerFailedAttribute& failed) {
  const Mrp::FailureInformation& failure = failed.failureInformation();
  return "talker failed " + talkerText(failed.talkerAdvertiseAttribute()) + ": " +
         failureText(MrpAgent::failureCodeText(failure.failureCode()), failure.failureCode(),
                     MrpAgent::bridgeIdText(failure.bridgeId()));
}

std::string leaveAllText(Mrp::MrpApplication application, const std::vector<std::uint8_t>& types) {
  std::string text = "LeaveAll ";
  for (std::size_t i = 0; i < types.size(); ++i) {
    if (i > 0) text.append(", ");
    text.append(attributeTypeText(application, types[i]));
  }
  return text;
}

// "[malformed: numOfMalformedPkts 1]" for each counter the frame moved.
std::vector<std::string> faultTexts(const DecodedCounters& counters) {
  std::vector<std::string> faults;
  for (const DecodedCounterField& field : kDecodedCounterFields) {
    if (counters.*field.count == 0) continue;
    std::string text = "[";
    text.append(field.fault).append(": ").append(field.name).append(" ");
    text.append(std::to_string(counters.*field.count)).append("]");
    faults.push_back(std::move(text));
  }
  return faults;
}

std::string secondsText(Quarn::Seconds seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6f", seconds);
  return text;
}

std::string joined(const std::vector<std::string>& pieces, const char* separator) {
  std::string text;
  for (const std::string& piece : pieces) {
    if (piece.empty()) continue;
    if (!text.empty()) text.append(separator);
    text.append(piece);
  }
  return text;
}

const Mrp::MvrpVlanAttribute* vlanOf(const DecodedAttribute& attribute) {
  return attribute.value ? std::get_if<Mrp::MvrpVlanAttribute>(&attribute.value->record()) : nullptr;
}

// ==== -V ====

std::vector<Field> talkerFields(const Mrp::MsrpTalkerAdvertiseAttribute& talker) {
  return {{"StreamID", streamIdText(talker.streamId())},
          {"DestinationAddress", talker.frame().dmac().toString()},
          {"VLAN", std::to_string(talker.frame().vlanId())},
          {"MaxFrameSize", std::to_string(talker.tSpec().maxFrameSize())},
          {"MaxIntervalFrames", std::to_string(talker.tSpec().maxIntervalFrames())},
          {"Priority", std::to_string(talker.priorityAndRank().priority())},
          {"Rank", std::to_string(talker.priorityAndRank().rank())},
          {"AccumulatedLatency", std::to_string(talker.accumulatedLatency())}};
}

std::string classIdText(std::uint8_t classId) {
  std::string text = std::to_string(classId);
  if (const auto srClass = MrpAgent::srClassOfId(classId)) text.append(" (class ").append(1, srClass->name).append(")");
  return text;
}

std::vector<Field> firstValueFields(const AttributeValue& value) {
  return std::visit(
      MrpAgent::Overloaded{
          [](const Mrp::MvrpVlanAttribute& v) {
            return std::vector<Field>{{"VLAN", std::to_string(v.vlanId())}};
          },
          [](const Mrp::MsrpTalkerAdvertiseAttribute& v) { return talkerFields(v); },
          [](const Mrp::MsrpTalkerFailedAttribute& v) {
            std::vector<Field> fields = talkerFields(v.talkerAdvertiseAttribute());
            const std::uint8_t code = v.failureInformation().failureCode();
            fields.emplace_back("FailureBridgeId", MrpAgent::bridgeIdText(v.failureInformation().bridgeId()));
            fields.emplace_back("FailureCode", std::to_string(code) + " (" + MrpAgent::failureCodeText(code) + ")");
            return fields;
          },
          [](const Mrp::MsrpListenerAttribute& v) {
            return std::vector<Field>{{"StreamID", streamIdText(v.streamId())}};
          },
          [](const Mrp::MsrpDomainAttribute& v) {
            return std::vector<Field>{{"SRclassID", classIdText(v.srClassId())},
                                      {"SRclassPriority", std::to_string(v.srClassPriority())},
                                      {"SRclassVID", std::to_string(v.srClassVID())}};
          }},
      value.record());
}

// The vector's value `index`, by the increment rule of its type.
AttributeValue valueAt(const AttributeValue& first, std::size_t index, const MrpduLayout::Vector& vector) {
  AttributeValue value =
      std::visit([&](const auto& record) { return AttributeValue(Mrp::mrpValueAt(record, index)); }, first.record());
  if (auto* listener = std::get_if<Mrp::MsrpListenerAttribute>(&value.record());
      listener && index < vector.declarations.size()) {
    Mrp::MsrpListenerAttribute declared = *listener;
    declared.listenerEventIs(static_cast<Mrp::MsrpListenerEvent>(vector.declarations[index]));
    return AttributeValue(declared);
  }
  return value;
}

// "1 (VLAN)"; the number alone for a type the application does not have.
std::string typeFieldText(Mrp::MrpApplication application, std::uint8_t type) {
  std::string text = std::to_string(type);
  const std::string name = attributeTypeText(application, type);
  if (name != text) text.append(" (").append(name).append(")");
  return text;
}

class FieldLines {
 public:
  void line(int depth, const std::string& text) { text_.append(4 + 2 * depth, ' ').append(text).append("\n"); }
  void field(int depth, const std::string& name, const std::string& value) { line(depth, name + ": " + value); }
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

// The vector's first value, when its octets are those of a type the
// application has.
std::optional<AttributeValue> firstValueOf(Mrp::MrpApplication application, const MrpduLayout::Message& message,
                                           const MrpduLayout::Vector& vector) {
  const std::uint16_t size = Mrp::mrpSizeOfAttribute(message.attributeType, static_cast<std::uint8_t>(application));
  if (!vector.firstValue || vector.firstValue->size() != size) return std::nullopt;
  return AttributeValue::fromOctets(application, message.attributeType, *vector.firstValue);
}

// "[1] JoinIn VLAN 11"; the event alone when the value is not known, or a
// Listener's declaration is not there to read.
std::string vectorEventText(const std::optional<AttributeValue>& first, const MrpduLayout::Vector& vector,
                            std::size_t index) {
  std::string text = std::string("[").append(std::to_string(index)).append("] ");
  const bool declared = !first || !std::holds_alternative<Mrp::MsrpListenerAttribute>(first->record()) ||
                        index < vector.declarations.size();
  if (!first || !declared) return text.append(eventText(vector.events[index]));
  return text.append(valueEventText(vector.events[index], valueAt(*first, index, vector)));
}

void vectorLines(FieldLines& out, Mrp::MrpApplication application, const MrpduLayout::Message& message,
                 const MrpduLayout::Vector& vector) {
  out.line(1, "Vector");
  out.field(2, "LeaveAllEvent", vector.leaveAll ? "1" : "0");
  out.field(2, "NumberOfValues", std::to_string(vector.numberOfValues));
  if (!vector.firstValue) return;
  const std::optional<AttributeValue> first = firstValueOf(application, message, vector);
  if (first) {
    out.line(2, "FirstValue");
    for (const auto& [name, value] : firstValueFields(*first)) out.field(3, name, value);
  } else {
    const std::vector<std::uint8_t>& octets = *vector.firstValue;
    out.field(2, "FirstValue", octets.empty() ? "(none)" : hexEncode(octets.data(), octets.size()));
  }
  if (vector.events.empty()) return;
  out.line(2, "Events");
  for (std::size_t i = 0; i < vector.events.size(); ++i) out.line(3, vectorEventText(first, vector, i));
}

}  // namespace

std::string valueEventText(std::uint8_t event, const AttributeValue& value) {
  std::string text = eventText(event);
  text.append(" ");
  if (const auto* failed = std::get_if<Mrp::MsrpTalkerFailedAttribute>(&value.record())) {
    return text.append(failedText(*failed));
  }
  text.append(valueText(value));
  // valueText leaves out an Ignore, which a stored Listener has when it has
  // no declaration; a received one always has one.
  if (value.declaration() == Mrp::MsrpListenerEvent::ignore) text.append(" ignore");
  return text;
}

std::string attributeEventsText(Mrp::MrpApplication application, const std::vector<DecodedAttribute>& attributes) {
  std::vector<std::string> pieces;
  for (std::size_t i = 0; i < attributes.size();) {
    const DecodedAttribute& attribute = attributes[i];
    if (vlanOf(attribute)) {
      std::vector<std::uint16_t> vlans;
      for (; i < attributes.size() && vlanOf(attributes[i]) && attributes[i].event == attribute.event; ++i) {
        vlans.push_back(vlanOf(attributes[i])->vlanId());
      }
      pieces.push_back(std::string(eventText(attribute.event)) + " VLAN " + vlanSetText(vlans));
      continue;
    }
    if (attribute.value) {
      pieces.push_back(valueEventText(attribute.event, *attribute.value));
    } else {
      pieces.push_back(std::string(eventText(attribute.event)) + " attribute type " +
                       attributeTypeText(application, attribute.type) + " key " + std::to_string(attribute.key));
    }
    ++i;
  }
  return joined(pieces, ", ");
}

std::string frameSummaryText(const DecodedFrame& decoded, std::optional<Quarn::Seconds> seconds) {
  std::vector<std::string> columns{std::to_string(decoded.frame)};
  if (seconds) columns.push_back(secondsText(*seconds));
  if (decoded.source) columns.push_back(decoded.source->toString());
  if (decoded.skipped) {
    columns.push_back("(skipped: " + *decoded.skipped + ")");
    return joined(columns, "  ");
  }
  columns.push_back(upper(applicationName(decoded.application)));
  if (!decoded.leaveAllTypes.empty()) columns.push_back(leaveAllText(decoded.application, decoded.leaveAllTypes));
  // Domains last, where an MSRP frame carries them.
  std::vector<DecodedAttribute> values = decoded.attributes;
  values.insert(values.end(), decoded.domain.begin(), decoded.domain.end());
  columns.push_back(attributeEventsText(decoded.application, values));
  for (std::string& fault : faultTexts(decoded.counters)) columns.push_back(std::move(fault));
  return joined(columns, "  ");
}

std::string frameFieldsText(const DecodedFrame& decoded) {
  if (decoded.skipped) return "";
  const MrpduLayout layout = MrpduLayout::read(decoded.application, decoded.mrpdu);
  FieldLines out;
  if (layout.protocolVersion) out.field(0, "ProtocolVersion", std::to_string(*layout.protocolVersion));
  for (const MrpduLayout::Message& message : layout.messages) {
    out.line(0, "Message");
    out.field(1, "AttributeType", typeFieldText(decoded.application, message.attributeType));
    out.field(1, "AttributeLength", std::to_string(message.attributeLength));
    if (message.attributeListLength) out.field(1, "AttributeListLength", std::to_string(*message.attributeListLength));
    for (const MrpduLayout::Vector& vector : message.vectors) vectorLines(out, decoded.application, message, vector);
  }
  if (layout.endsShortOf) out.line(0, std::string("[the frame ends short of its ") + layout.endsShortOf + "]");
  return out.text();
}

}  // namespace MrpCli

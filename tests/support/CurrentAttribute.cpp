#include "support/CurrentAttribute.h"

namespace MrpTest {

Quarn::Ptr<Mrp::MrpAttrDatabase> currentAttributeIs(Mrp::MrpSm& sm, const Mrp::MrpAttribute& attribute,
                                                    Mrp::MrpApplicantState applicantState,
                                                    Mrp::MrpRegistrarState registrarState) {
  Mrp::MrpParseContext& context = *sm.parseContext();
  context.intfIdIs(attribute.intfId);
  context.attributeTypeIs(attribute.attributeType);
  context.attributeKeyIs(attribute.attributeKey);
  Quarn::Ptr<Mrp::MrpAttrDatabase> entry = currentEntry(sm);
  if (!entry) {
    entry = sm.mrpAddAttrToDatabase(attribute.intfId, attribute.attributeType, attribute.attributeKey, true);
  }
  entry->applicantStateIs(applicantState);
  entry->registrarStateIs(registrarState);
  return entry;
}

Quarn::Ptr<Mrp::MrpAttrDatabase> currentEntry(const Mrp::MrpSm& sm) {
  const Mrp::MrpParseContext& context = *sm.parseContext();
  return sm.mrpGetAttrFromDatabase(context.intfId(), context.attributeType(), context.attributeKey(), true);
}

void applicantEventHandle(Mrp::MrpSm& sm, Mrp::MrpApplicantEvent event) {
  sm.applicantSm()->applicantEventIs(event);
  sm.applicantSm()->handleApplicantEvent();
}

void registrarEventHandle(Mrp::MrpSm& sm, Mrp::MrpRegistrarEvent event) {
  sm.registrarSm()->registrarEventIs(event);
  sm.registrarSm()->handleRegistrarEvent();
}

}  // namespace MrpTest

#pragma once

#include "MrpModel/MrpApplicantEvent.h"
#include "MrpModel/MrpApplicantState.h"
#include "MrpModel/MrpAttribute.h"
#include "MrpModel/MrpRegistrarEvent.h"
#include "MrpModel/MrpRegistrarState.h"
#include "MrpSm/MrpSm.h"

namespace MrpTest {

// Makes `attribute` the engine's current attribute and gives its database
// entry the two states. A missing entry is created (as a pending addition)
// with the value in the service object's transmit field of its type, so the
// caller puts the value there first.
Quarn::Ptr<Mrp::MrpAttrDatabase> currentAttributeIs(Mrp::MrpSm& sm, const Mrp::MrpAttribute& attribute,
                                                    Mrp::MrpApplicantState applicantState,
                                                    Mrp::MrpRegistrarState registrarState);

// The current attribute's entry, pending additions included; null when absent.
Quarn::Ptr<Mrp::MrpAttrDatabase> currentEntry(const Mrp::MrpSm& sm);

// One event of the current attribute, handled by the engine's applicant or
// registrar machine.
void applicantEventHandle(Mrp::MrpSm& sm, Mrp::MrpApplicantEvent event);
void registrarEventHandle(Mrp::MrpSm& sm, Mrp::MrpRegistrarEvent event);

}  // namespace MrpTest

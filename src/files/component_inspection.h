// COMPONENT and PARAM blocks under inspection.
#pragma once

#include <string>

#include "files/topology_inspection.h"

namespace photrak {

/// The COMPONENT word has been read. Ends after ENDCOMPONENT, or with the line of the next block
/// unread.
void InspectComponent(InspectionContext& context);

/// PARAM blocks through ENDCOMPONENT; `component.model` may be null.
void InspectParameters(InspectionContext& context, const TypedComponent& component);

}  // namespace photrak

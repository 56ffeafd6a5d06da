// Before the first run of a diagram that starts programs or loads libraries, its user is asked once
// for that content; and names that several blocks share are told.
#pragma once

#include <string>

#include "workbench/workbench.h"

namespace photrak {

/// Whether the diagram may run: it holds no command lines or libraries of users, these were allowed
/// before, or the user says yes now.
bool HasRunConsent(Workbench& workbench, const DiagramView& view);

/// What was allowed, a line each, and taking all of it back.
std::string AllowedContents();
void RevokeConsents();

/// Shows what was allowed and asks whether to take it back.
void ShowConsents(Workbench& workbench);

}  // namespace photrak

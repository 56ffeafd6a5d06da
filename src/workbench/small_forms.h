// Preferences and About.
#pragma once

#include "workbench/workbench.h"

namespace photrak {

void OpenPreferencesForm(Workbench& workbench);
void OpenAboutForm(Workbench& workbench);

}  // namespace photrak

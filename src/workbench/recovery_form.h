// The copies of diagrams that were not saved, to be opened or deleted.
#pragma once

#include "workbench/workbench.h"

namespace photrak {

/// Lists the copies that nobody has open; a box tells if there are none.
void OpenRecoveryForm(Workbench& workbench);

}  // namespace photrak

// What a topology sets, as tables of a report: sweeps and symbols, and the parameters that differ
// from the defaults of their models.
#pragma once

#include <vector>

#include "kernel/workspace.h"
#include "photrak/report_page.h"

namespace photrak {

/// Tables without rows are left out.
std::vector<ReportTable> SettingTables(const Workspace& workspace, const Catalogue& catalogue);

}  // namespace photrak

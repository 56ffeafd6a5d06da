// What the commands make of a topology that a load would take otherwise than it was typed: `run`,
// `scan` and `test` refuse to start, `check` tells more.
#pragma once

#include "files/value_inspection.h"
#include "photrak/session.h"

namespace photrak {

/// The topology of the session, its SuperBlocks through all levels, the parameter files and symbols
/// of the command line. Of a SuperBlock's inside the values that depend on what the block hands
/// down are left out.
Inspection InspectSession(const Session& session, const CommandOptions& options,
                          Thoroughness thoroughness);

/// Each finding on standard error, as an error if it changes a number, else as a warning. The
/// number of errors.
int ReportFindings(const LoadFindings& findings);

}  // namespace photrak

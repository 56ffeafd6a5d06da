// The commands of the program. Each gives the exit status.
#pragma once

#include "photrak/options.h"

namespace photrak {

namespace exitStatus {
inline constexpr int success = 0, failed = 1, warnings = 2, usage = 64;
/// A run that was asked to stop ends like a program killed by that signal.
inline constexpr int stoppedBase = 128;
}  // namespace exitStatus

int RunCommand(const CommandOptions& options);
int ScanCommand(const CommandOptions& options);
int MeasureCommand(const CommandOptions& options);
int CheckCommand(const CommandOptions& options);
int TestCommand(const CommandOptions& options);
int ModelsCommand(const CommandOptions& options);
int SuperBlockCommand(const CommandOptions& options);
int PlotCommand(const CommandOptions& options);
int ReportCommand(const CommandOptions& options);
int DrawCommand(const CommandOptions& options);
int ParamsCommand(const CommandOptions& options);
int ExplainCommand(const CommandOptions& options);
int NewCommand(const CommandOptions& options);
int ExampleCommand(const CommandOptions& options);

}  // namespace photrak

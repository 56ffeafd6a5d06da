// The fiber's entry in the race against other programs.
#pragma once

#include "plugin.h"

/// One run as bench_plugin_v1's `fiber` wants it: 0 on success.
int RunRaceFiber(double** fields, const bench_fiber* job);

// All operations on parameters.
#pragma once

#include "kernel/clamp_param.h"
#include "kernel/eval_param.h"
#include "kernel/param_lookup.h"
#include "kernel/parameter_records.h"
#include "kernel/parameter_types.h"

// The table of built-in models, in the order in which a component's type is compared.
#pragma once

#include "kernel/driver.h"

namespace photrak {

std::span<const ModelEntry> BuiltInModels();

}  // namespace photrak

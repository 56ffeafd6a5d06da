// Message texts that many models share.
#pragma once

#include <string>
#include <string_view>

#include "base/text.h"

namespace photrak {

/// Appends "Insufficient memory for dynamic allocation to NAME\n"; `name` is that of the array.
inline void ReportNoMemory(std::string& buffer, std::string_view name) {
    buffer += Concat("Insufficient memory for dynamic allocation to ", name, "\n");
}

}  // namespace photrak

// The ranges and their words.
#include "models/common/parameter_limits.h"

namespace photrak {

Status CheckRange(std::string_view owner, std::string_view name, double value, Range range,
                  std::string& errorText) {
    return CheckRange({owner, errorText}, name, value, range);
}

}  // namespace photrak

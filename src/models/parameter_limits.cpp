// The ranges and their words.
#include "models/parameter_limits.h"

namespace photrak {
namespace {

struct RangeRule {
    bool (*holds)(double value);  // of a finite value
    std::string_view rule;
};
// In the order of Range.
constexpr RangeRule rules[] = {{[](double) { return true; }, "a finite number"},
                               {[](double value) { return value != 0.0; }, "finite and not 0"},
                               {[](double value) { return value >= 0.0; }, "finite and at least 0"},
                               {[](double value) { return value > 0.0; }, "finite and above 0"}};

}  // namespace

Status CheckRange(std::string_view owner, std::string_view name, double value, Range range,
                  std::string& errorText) {
    const RangeRule& rule = rules[static_cast<int>(range)];
    if (std::isfinite(value) && rule.holds(value)) return Status::Success;
    return RefuseParameter(owner, name, value, rule.rule, errorText);
}

}  // namespace photrak

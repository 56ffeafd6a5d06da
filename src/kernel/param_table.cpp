// Units and ranges behind the rows.
#include "kernel/param_table.h"

#include <cmath>

#include "base/units.h"

namespace photrak {
namespace {

struct RangeRule {
    bool (*holds)(double value);  // of a finite value
    std::string_view rule;
};
// In the order of Range, from Finite on.
constexpr RangeRule rules[] = {{[](double) { return true; }, "a finite number"},
                               {[](double value) { return value != 0.0; }, "finite and not 0"},
                               {[](double value) { return value >= 0.0; }, "finite and at least 0"},
                               {[](double value) { return value > 0.0; }, "finite and above 0"}};

using Conversion = double (*)(double typed);
// In the order of ParamUnit.
constexpr Conversion conversions[] = {[](double typed) { return typed; }, PowerRatio, FieldRatio,
                                      WattsFromDbm,
                                      [](double typed) { return typed * radiansPerDegree; }};

}  // namespace

double ReadNumber(const ParamSpec& spec, Parameter* list) {
    const double typed =
        GetParamDouble(list, spec.name, spec.numberWhenAbsent.value_or(spec.number));
    return conversions[static_cast<int>(spec.unit)](typed);
}

std::int32_t ReadWhole(const ParamSpec& spec, Parameter* list) {
    return GetParamInt(list, spec.name, static_cast<std::int32_t>(spec.number));
}

std::string_view ReadWord(const ParamSpec& spec, Parameter* list) {
    return GetParamText(list, spec.name, spec.whenAbsent.empty() ? spec.text : spec.whenAbsent);
}

const ArrayRecord* ReadArray(const ParamSpec& spec, Parameter* list) {
    const Parameter* parameter = FindParamCursor(list, spec.name);
    if (!parameter || parameter->type != DoubleArrayType) return nullptr;
    const auto* array = static_cast<const ArrayRecord*>(parameter->valactual);
    return array && array->data && array->rows >= 1 && array->cols >= 1 ? array : nullptr;
}

Status CheckRange(const ModelReport& report, std::string_view name, double value, Range range) {
    if (range == Range::Any) return Status::Success;
    const RangeRule& rule = rules[static_cast<int>(range) - 1];
    if (std::isfinite(value) && rule.holds(value)) return Status::Success;
    return report.RefuseValue(name, value, rule.rule);
}

}  // namespace photrak

// The limits of a parameter: a value outside becomes the limit, with a warning that tells it.
#include "kernel/clamp_param.h"

#include <cmath>

#include "base/text.h"
#include "kernel/parameter_types.h"
#include "kernel/run_record.h"

namespace photrak {

namespace {

std::string LimitText(double limit) {
    return FormatExponent(limit);
}
std::string LimitText(std::int32_t limit) {
    return std::to_string(limit);
}
std::string LimitText(std::int16_t limit) {
    return std::to_string(limit);
}
/// Limits of characters compare as signed on every machine, hence the type.
std::string LimitText(signed char limit) {
    return std::string(1, static_cast<char>(limit));
}

/// As people write it; the told text keeps the form of its kind.
std::string PlainText(double value) {
    return FormatDefault(value);
}
template <class T>
std::string PlainText(T value) {
    return LimitText(value);
}

constexpr std::string_view belowMinimum = "less than minimum";

Status MoveTo(const void* limit, auto& value, std::string_view side, const Parameter& parameter,
              std::string& errorText) {
    const auto typed = value;
    value = *static_cast<const std::remove_reference_t<decltype(value)>*>(limit);
    const std::string told = FillIn("WARNING: parameter '%s' %s value; change to %s",
                                    {parameter.name, side, LimitText(value)});
    errorText += told + "\n";
    std::vector<ClampNote>& notes = CurrentRun().clamps;
    if (notes.size() < RunRecord::mostClamps) {
        notes.push_back({told, parameter.name, PlainText(typed), PlainText(value),
                         parameter.UNITS ? parameter.UNITS : "", side == belowMinimum});
    }
    return Status::Warning;
}

/// A limit that is absent does not bind.
template <class T>
Status Clamp(Parameter& parameter, std::string& errorText) {
    if (!parameter.valactual) {
        // By design: called a warning, without a newline, yet the status is an error.
        errorText += FillIn("WARNING: parameter '%s' has no valactual field", {parameter.name});
        return Status::Error;
    }
    T& value = *static_cast<T*>(parameter.valactual);
    const T* min = static_cast<const T*>(parameter.min);
    const T* max = static_cast<const T*>(parameter.max);
    // What is no number counts as below.
    if (min && (value < *min || std::isnan(static_cast<double>(value)))) {
        return MoveTo(min, value, belowMinimum, parameter, errorText);
    }
    if (max && value > *max) {
        return MoveTo(max, value, "greater than maximum", parameter, errorText);
    }
    return Status::Success;
}

}  // namespace

Status ClampParam(Parameter& parameter, std::string& errorText) {
    if (!HasValue(TypeOf(parameter.type))) return Status::Success;
    return WithForm(TypeOf(parameter.type).form, [&]<class T>(std::type_identity<T>) {
        if constexpr (std::is_arithmetic_v<T>) {
            return Clamp<T>(parameter, errorText);
        } else {
            errorText += "ERROR: Complex parameter types not yet supported\n";
            return Status::Error;
        }
    });
}

}  // namespace photrak

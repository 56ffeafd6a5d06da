// Values come from the evaluated parameters, texts from them too: "%g", "%d", or the text as typed.
#include "hierarchy/nested_parameters.h"

#include "base/text.h"
#include "kernel/parameters.h"

namespace photrak {
namespace {

template <class T>
const T& ValueOf(const Parameter& parameter) {
    return *static_cast<const T*>(parameter.valactual);
}

/// The variable that a parameter becomes. What it names out here is unknown inside, so its text is
/// made from the value wherever there is one.
Variable VariableOf(const Parameter& parameter) {
    constexpr int exactDigits = 17;
    Variable variable;
    variable.name = parameter.name;
    variable.type = parameter.type;
    variable.value = parameter.value ? parameter.value : "";
    if (!parameter.valactual) return variable;
    if (parameter.type == DoubleType) {
        variable.exact = ValueOf<double>(parameter);
        variable.value = FormatDefault(*variable.exact);
    } else if (parameter.type == IntType) {
        variable.exact = ValueOf<std::int32_t>(parameter);
        variable.value = Concat(ValueOf<std::int32_t>(parameter));
    } else if (parameter.type == ComplexType) {
        const auto& value = ValueOf<Complex>(parameter);
        variable.value = Concat(FormatSignificant(value.re, exactDigits), " ",
                                FormatSignificant(value.im, exactDigits));
    } else if (parameter.type == CharType) {
        variable.value = std::string(1, ValueOf<char>(parameter));
    }
    return variable;
}

const Parameter* FirstDeviation(const Component& component) {
    for (const Parameter& parameter : Items(component.parameters)) {
        const bool real =
            parameter.stddev && *parameter.stddev != 0.0 && parameter.PROBDIST != NoProbDist;
        const bool imaginary =
            parameter.istddev && *parameter.istddev != 0.0 && parameter.IPROBDIST != NoProbDist;
        if (real || imaginary) return &parameter;
    }
    return nullptr;
}

}  // namespace

void PassParameters(const Component& block, Workspace& inner) {
    std::vector<Variable> passed;
    for (const Parameter& parameter : Items(block.parameters)) {
        if (IsArrayType(parameter.type) || IsEvaluatedInside(block, parameter)) continue;
        passed.push_back(VariableOf(parameter));
    }
    inner.variables.insert(inner.variables.begin(), std::make_move_iterator(passed.begin()),
                           std::make_move_iterator(passed.end()));
}

std::string DeviationInside(const Workspace& inner) {
    for (const auto& component : inner.components) {
        const Parameter* parameter = FirstDeviation(*component);
        if (!parameter) continue;
        return Concat("parameter '", parameter->name, "' of '", inner.name, component->name, "'");
    }
    return {};
}

}  // namespace photrak

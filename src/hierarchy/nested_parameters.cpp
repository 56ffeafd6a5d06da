// Values come from the evaluated parameters, texts from them too: "%g", "%d", or the text as typed.
#include "hierarchy/nested_parameters.h"

#include <filesystem>
#include <optional>

#include "base/text.h"
#include "files/model_definition.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "kernel/symbols.h"

namespace photrak {
namespace {

/// The variable that a parameter becomes.
Variable VariableOf(const Parameter& parameter) {
    Variable variable;
    variable.name = parameter.name;
    variable.type = parameter.type;
    variable.value = parameter.value ? parameter.value : "";
    if (!parameter.valactual) return variable;
    if (parameter.type == DoubleType) {
        variable.exact = *static_cast<const double*>(parameter.valactual);
        variable.value = FormatDefault(*variable.exact);
    } else if (parameter.type == IntType) {
        const std::int32_t value = *static_cast<const std::int32_t*>(parameter.valactual);
        variable.exact = value;
        variable.value = Concat(value);
    }
    return variable;
}

/// The definition as it is on disk now; without one every parameter is handed down.
std::unique_ptr<Component> DefinitionBeside(const std::string& topologyFile) {
    auto definition = std::make_unique<Component>();
    definition->name = definition->type = superBlockType;
    const auto path = std::filesystem::path(topologyFile).replace_extension(".dts");
    std::string ignored;
    if (ReadModelDefinition(*definition, path.string(), ignored) == Status::Error) return nullptr;
    return definition;
}

bool KeepsInnerExpression(const Parameter& parameter, const Component* definition) {
    const std::string_view text = parameter.value ? parameter.value : "";
    if (!definition || IsNumber(text)) return false;
    if (parameter.type != DoubleType && parameter.type != IntType) return false;
    const Parameter* standard = FindParameter(parameter.name, definition->parameters);
    return standard && standard->value && text == standard->value;
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

Status PassParameters(const ModelCall& call, const std::string& file, Workspace& inner) {
    const std::unique_ptr<Component> definition = DefinitionBeside(file);
    std::vector<Variable> passed;
    for (const Parameter& parameter : Items(call.component.parameters)) {
        if (IsArrayType(parameter.type)) continue;
        if (!KeepsInnerExpression(parameter, definition.get())) {
            passed.push_back(VariableOf(parameter));
        }
    }
    inner.variables.insert(inner.variables.begin(), std::make_move_iterator(passed.begin()),
                           std::make_move_iterator(passed.end()));
    return Status::Success;
}

Status WarnOfDeviations(const ModelCall& call, const Workspace& inner) {
    if (!(call.options.mode & simMode::statistical)) return Status::Success;
    for (const auto& component : inner.components) {
        const Parameter* parameter = FirstDeviation(*component);
        if (!parameter) continue;
        return call.Warn("WARNING: the deviation of parameter '", parameter->name, "' of '",
                         inner.name, component->name,
                         "' does not draw: it is inside a SuperBlock\n");
    }
    return Status::Success;
}

}  // namespace photrak

// Saved PARAM blocks only overwrite values: limits, units and the parameters themselves come from
// the model's definition, so that a saved file follows the model when that changes.
#include "files/param_values.h"

#include <algorithm>

#include "files/array_values.h"
#include "files/model_definition.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"

namespace photrak {
namespace {

/// Second names under which a file may set a parameter.
constexpr struct {
    std::string_view alias, name;
} parameterAliases[] = {
    {"patternWidth", "patternLength"},
    {"Vpk", "Vmax"},
};

Status SkipBlock(std::string_view name, LineReader& reader, std::string& faults) {
    if (!reader.Next()) return TextEndedInside(name, reader, faults);
    return ForEachBodyLine(name, reader, faults, [](std::string_view) { return Status::Success; });
}

/// The ports of a block that has as many inputs as outputs: the rows and columns that a matrix over
/// them may be given. 0 for other blocks.
std::int32_t PortsOfMatrix(const Component& component) {
    const std::size_t ports = component.inputs.size();
    const bool square = component.NUMINEQNUMOUTNODES && ports == component.outputs.size();
    return square ? static_cast<std::int32_t>(ports) : 0;
}

Status ReadArrayBlock(const Component& component, Parameter& parameter, const ParameterType& type,
                      LineReader& reader, std::string& faults) {
    const bool matches = parameter.type == type.code;
    // A value of another kind is no array to read into.
    const bool isArray = IsArrayType(parameter.type) && parameter.valactual;
    const Status status =
        isArray ? ReadArrayValues(*static_cast<ArrayRecord*>(parameter.valactual), parameter.name,
                                  PortsOfMatrix(component), reader, faults)
                : SkipBlock(parameter.name, reader, faults);
    if (matches && isArray) return status;
    return AddFault(faults, reader,
                    Concat("the block of parameter '", parameter.name, "' is no good ", type.word));
}

/// One block, whose PARAM word has been read. The type word of the line, not the type of the
/// parameter, chooses the keywords.
Status ReadBlock(Component& component, Status running, LineReader& reader, std::string& faults) {
    const std::string name(reader.Word());
    const std::string_view token = reader.Word();
    Parameter* parameter = FindByNameOrAlias(name, component.parameters);
    if (!parameter) {
        MergeStatus(running, SkipBlock(name, reader, faults));
        return running;
    }
    const ParameterType* type = FindParameterType(token);
    if (!type) {
        return AddFault(faults, reader,
                        Concat("parameter '", name, "' of component '", component.name,
                               "' has the unknown type '", token, "'"));
    }
    if (IsArray(*type)) {
        MergeStatus(running, ReadArrayBlock(component, *parameter, *type, reader, faults));
        return running;
    }
    if (!reader.Next()) return TextEndedInside(name, reader, faults);
    const Status status = ReadScalarBody(*parameter, *type, BlockSource::Saved, reader, faults);
    if (status == Status::Success && type->code == EnumType) {
        // By design: as in a definition, the success of an enum is stored as the result.
        faults.clear();
        return ResolveEnumFields(*parameter);
    }
    MergeStatus(running, status);
    return running;
}

}  // namespace

Parameter* FindByNameOrAlias(std::string_view name, Parameter* list) {
    if (Parameter* parameter = FindParameter(name, list)) return parameter;
    for (const auto& row : parameterAliases) {
        if (row.alias == name) return FindParameter(row.name, list);
    }
    return nullptr;
}

Status ReadParamValues(Component& component, LineReader& reader, std::string& errorText) {
    Status result = Status::Success;
    std::string faults;
    while (reader.Next()) {
        if (reader.Line().find("ENDCOMPONENT") != std::string_view::npos) {
            if (result != Status::Success) errorText += faults;
            return result;
        }
        if (reader.Word() == "PARAM") result = ReadBlock(component, result, reader, faults);
    }
    errorText += Concat(faults, "ERROR: ", reader.Where(), ": the text ends inside component '",
                        component.name, "'\n");
    return Status::Error;
}

}  // namespace photrak

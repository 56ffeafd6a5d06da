// Lookup of parameters by name: with a memory of the last match, since models read their parameters
// in the order of the list.
#include "base/text.h"
#include "kernel/parameters.h"

namespace photrak {

namespace {

/// Shared by the whole program, like the run that uses it.
struct ParamCursor {
    const Parameter* list = nullptr;
    Parameter* next = nullptr;  // behind the last match
};
ParamCursor cursor;

/// Searches from `begin` up to `end`, which is not looked at.
Parameter* Search(Parameter* begin, const Parameter* end, std::string_view name) {
    for (Parameter* parameter = begin; parameter != end; parameter = parameter->next) {
        if (parameter->name == name) return parameter;
    }
    return nullptr;
}

template <class T>
const T& Value(const Parameter& parameter) {
    return *static_cast<const T*>(parameter.valactual);
}

}  // namespace

Parameter* FindParamCursor(Parameter* list, std::string_view name) {
    if (list != cursor.list) cursor = {list, list};
    Parameter* match = Search(cursor.next, nullptr, name);
    if (!match) match = Search(list, cursor.next, name);
    if (match) cursor.next = match->next;
    return match;
}

void ForgetParamCursor() {
    cursor = {};
}

double GetParamDouble(Parameter* list, std::string_view name, double fallback) {
    const Parameter* parameter = FindParamCursor(list, name);
    if (!parameter || !parameter->valactual) return fallback;
    switch (parameter->type) {
        case DoubleType:
            return Value<double>(*parameter);
        case IntType:
            return Value<std::int32_t>(*parameter);
        case EnumType:
            return Value<std::int16_t>(*parameter);
        default:
            return fallback;
    }
}

std::int32_t GetParamInt(Parameter* list, std::string_view name, std::int32_t fallback) {
    const Parameter* parameter = FindParamCursor(list, name);
    if (!parameter || !parameter->valactual) return fallback;
    switch (parameter->type) {
        case DoubleType:
            return SaturateToInt(Value<double>(*parameter));
        case IntType:
            return Value<std::int32_t>(*parameter);
        case EnumType:
            return Value<std::int16_t>(*parameter);
        default:
            return fallback;
    }
}

std::string_view GetParamText(Parameter* list, std::string_view name, std::string_view fallback) {
    const Parameter* parameter = FindParamCursor(list, name);
    return parameter ? std::string_view(parameter->value) : fallback;
}

}  // namespace photrak

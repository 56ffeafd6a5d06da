// Lookup of parameters by name: with a memory of the last match, since models read their parameters
// in the order of the list.
#include "kernel/param_lookup.h"

#include <optional>

#include "base/text.h"
#include "kernel/parameters.h"

namespace photrak {

namespace {

/// Shared by the whole program, like the run that uses it.
struct ParamCursor {
    const Parameter* list = nullptr;
    Parameter* next = nullptr;  // after the last match
};
thread_local ParamCursor cursor;

/// Searches from `begin` up to `end`, which is not looked at.
Parameter* Search(Parameter* begin, const Parameter* end, std::string_view name) {
    for (Parameter* parameter = begin; parameter != end; parameter = parameter->next) {
        if (parameter->name == name) return parameter;
    }
    return nullptr;
}

/// The evaluated number or index of a choice as a double; empty if there is none.
std::optional<double> NumberOf(const Parameter* parameter) {
    if (!parameter || !parameter->valactual || IsArrayType(parameter->type)) return std::nullopt;
    return WithForm(
        TypeOf(parameter->type).form, [&]<class T>(std::type_identity<T>) -> std::optional<double> {
            constexpr bool isNumber = std::is_arithmetic_v<T> && !std::is_same_v<T, signed char>;
            if constexpr (isNumber) return *static_cast<T*>(parameter->valactual);
            return std::nullopt;
        });
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
    return NumberOf(FindParamCursor(list, name)).value_or(fallback);
}

std::int32_t GetParamInt(Parameter* list, std::string_view name, std::int32_t fallback) {
    const auto number = NumberOf(FindParamCursor(list, name));
    return number ? SaturateToInt(*number) : fallback;
}

std::string_view GetParamText(Parameter* list, std::string_view name, std::string_view fallback) {
    const Parameter* parameter = FindParamCursor(list, name);
    return parameter ? std::string_view(parameter->value) : fallback;
}

}  // namespace photrak

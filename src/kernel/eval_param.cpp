// From the text of a parameter to the value that models read.
#include "kernel/eval_param.h"

#include <cstring>
#include <optional>

#include "base/memory.h"
#include "base/text.h"
#include "kernel/expression.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"

namespace photrak {

namespace {

constexpr std::size_t maxEvaluatedText = 1024;
constexpr int maxVariableHops = 64;  // variables that name each other end here

std::string_view TextOf(const char* text) {
    return text ? text : std::string_view();
}

/// Stores `value` at *place, allocating it first if need be.
template <class T, class Pointer>
bool StoreValue(Pointer*& place, const T& value) {
    if (!place) place = static_cast<Pointer*>(Allocate(sizeof(T)));
    if (!place) return false;
    std::memcpy(place, &value, sizeof(T));
    return true;
}

Status OutOfMemory(const Parameter& parameter, std::string& errorText) {
    errorText += FillIn("ERROR in EvalParam: insufficient memory for '%s'\n", {parameter.name});
    return Status::Error;
}

/// The number that a text stands for; a text without one gives 0.0 and the warning. `what` is the
/// word for the text in the message.
double NumberOf(const char* text, const char* what, const Parameter& parameter,
                const Workspace& workspace, Status& status, std::string& errorText) {
    ExprError error = ExprError::None;
    const double value =
        EvalNumberText(workspace.symbols, TextOf(text).substr(0, maxEvaluatedText), error);
    if (error != ExprError::None) {
        errorText +=
            FillIn("WARNING in EvalParam: '%s' %s cannot be evaluated\n", {parameter.name, what});
        status = Status::Warning;
    }
    return value;
}

Status EvalDouble(Parameter& parameter, Workspace& workspace, std::string& errorText) {
    Status status = Status::Success;
    const double value =
        NumberOf(parameter.value, "value", parameter, workspace, status, errorText);
    if (!StoreValue(parameter.valactual, value)) return OutOfMemory(parameter, errorText);
    const double stddev =
        NumberOf(parameter.STDDEV, "stddev", parameter, workspace, status, errorText);
    if (!StoreValue(parameter.stddev, stddev)) return OutOfMemory(parameter, errorText);
    return status;
}

Status EvalInt(Parameter& parameter, Workspace& workspace, std::string& errorText) {
    Status status = Status::Success;
    const double value =
        NumberOf(parameter.value, "value", parameter, workspace, status, errorText);
    const std::int32_t whole = SaturateToInt(value);
    if (!StoreValue(parameter.valactual, whole)) return OutOfMemory(parameter, errorText);
    return status;
}

/// A text followed through the variables that it names.
struct Followed {
    std::string_view text;         // of the last variable, or the parameter's own
    Variable* variable = nullptr;  // the last one met, which decides
};

/// Follows variables while `isName` holds for the text; nothing, with the message, when one is
/// absent or the chain does not end.
std::optional<Followed> FollowVariables(const Parameter& parameter, Workspace& workspace,
                                        bool (*isName)(std::string_view), std::string& errorText) {
    Followed followed{TextOf(parameter.value)};
    for (int hops = 0; isName(followed.text); ++hops) {
        Variable* next = hops < maxVariableHops ? FindVariable(followed.text, workspace) : nullptr;
        if (!next) {
            errorText += FillIn("ERROR: variable '%s' in parameter '%s' not found\n",
                                {followed.text, parameter.name});
            return std::nullopt;
        }
        followed = {next->value, next};
    }
    return followed;
}

/// Stores into the parameter, and into the place that a variable of the right type refreshes.
template <class T>
Status StoreFollowed(Parameter& parameter, const Followed& followed, const T& value,
                     std::string& errorText) {
    if (followed.variable && followed.variable->actual) {
        std::memcpy(followed.variable->actual, &value, sizeof(T));
    }
    if (!StoreValue(parameter.valactual, value)) return OutOfMemory(parameter, errorText);
    return Status::Success;
}

Status EvalComplex(Parameter& parameter, Workspace& workspace, std::string& errorText) {
    // By design: whatever starts at or above 'B' is a name, so that a name may not start
    // with 'A'.
    const auto isName = [](std::string_view text) {
        return !text.empty() && static_cast<unsigned char>(text[0]) >= 'B';
    };
    const auto followed = FollowVariables(parameter, workspace, isName, errorText);
    if (!followed) return Status::Error;
    if (followed->variable && followed->variable->type != ComplexType) {
        // By design: the wording says IntType, though the test is for ComplexType.
        errorText +=
            FillIn("ERROR: variable '%s' is not type IntType\n", {followed->variable->name});
        return Status::Error;
    }
    std::size_t used = 0;
    Complex value;
    value.re = ReadDouble(followed->text, &used);
    value.im = ReadDouble(followed->text.substr(used));
    return StoreFollowed(parameter, *followed, value, errorText);
}

Status EvalChar(Parameter& parameter, Workspace& workspace, std::string& errorText) {
    const auto isName = [](std::string_view text) { return text.size() > 1; };
    const auto followed = FollowVariables(parameter, workspace, isName, errorText);
    if (!followed) return Status::Error;
    if (followed->variable && followed->variable->type != CharType) {
        errorText +=
            FillIn("ERROR: variable '%s' is not type CharType\n", {followed->variable->name});
        return Status::Error;
    }
    const char value = followed->text.empty() ? '\0' : followed->text[0];
    return StoreFollowed(parameter, *followed, value, errorText);
}

/// Adds the deviation of the present draw and moves the ring on.
void ApplyDraw(Parameter& parameter) {
    const ParameterDraw& draw = *parameter.drawCursor;
    const double deviation = parameter.stddev ? *parameter.stddev * draw.re : 0.0;
    const Deviation kind = parameter.valactual ? TypeOf(parameter.type).deviation : Deviation::None;
    if (kind == Deviation::Real) *static_cast<double*>(parameter.valactual) += deviation;
    if (kind == Deviation::OfBothParts) {
        auto& value = *static_cast<Complex*>(parameter.valactual);
        value.re += deviation;
        if (parameter.istddev) value.im += *parameter.istddev * draw.im;
    }
    parameter.drawCursor = draw.next ? draw.next : parameter.draws;
}

}  // namespace

Status EvalParam(Parameter* parameter, Workspace* workspace, std::string& errorText) {
    if (!parameter) {
        errorText += "ERROR in EvalParam: thisParam == NULL\n";
        return Status::Error;
    }
    if (!workspace) {
        errorText += FillIn("ERROR in EvalParam for '%s': curWksp == NULL\n", {parameter->name});
        return Status::Error;
    }
    if (TextOf(parameter->value).empty()) {
        errorText += FillIn("ERROR in EvalParam: '%s' value == \"\"\n", {parameter->name});
        return Status::Error;
    }
    const ParameterType& type = TypeOf(parameter->type);
    if (IsArray(type)) return Status::Success;
    switch (type.form) {
        case ValueForm::Double:
            return EvalDouble(*parameter, *workspace, errorText);
        case ValueForm::Int32:
            return EvalInt(*parameter, *workspace, errorText);
        case ValueForm::Pair:
            return EvalComplex(*parameter, *workspace, errorText);
        case ValueForm::Char:
            return EvalChar(*parameter, *workspace, errorText);
        case ValueForm::Int16:  // a choice, whose index is found where its words are read
        case ValueForm::None:
            break;
    }
    return Status::Success;
}

bool IsEvaluatedInside(const Component& component, const Parameter& parameter) {
    if (component.innerTexts.empty()) return false;
    // What draws is drawn out here.
    if (parameter.PROBDIST != NoProbDist || parameter.IPROBDIST != NoProbDist) return false;
    const auto own = component.innerTexts.find(TextOf(parameter.name));
    return own != component.innerTexts.end() && own->second == TextOf(parameter.value);
}

Status EvalComponentParams(Component& component, Workspace* workspace, std::string& errorText) {
    Status result = Status::Success;
    Status status = Status::Success;  // a parameter that is not evaluated keeps the one before it
    for (Parameter* parameter = component.parameters; parameter; parameter = parameter->next) {
        if (IsEvaluatedInside(component, *parameter)) continue;
        if (HasValue(TypeOf(parameter->type))) status = EvalParam(parameter, workspace, errorText);
        MergeStatus(result, status);
        if (status != Status::Error && parameter->drawCursor) ApplyDraw(*parameter);
    }
    return result;
}

}  // namespace photrak

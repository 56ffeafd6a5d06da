// Variables, symbols, expressions and parameters from a text. A line NAME=VALUE declares a variable
// (TYPE:NAME=VALUE one of a type other than double, COUNT#NAME=VALUE as many as may fill a symbol
// table); every other line is evaluated as the value of a parameter of each type, and its
// deviation.
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "base/escape.h"
#include "base/memory.h"
#include "base/text.h"
#include "fuzz_support.h"
#include "kernel/expression.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"

namespace photrak {
namespace {

// One evaluation may take a million steps, so that a few lines are all that fits in a moment.
constexpr std::size_t maxEvaluatedLines = 4;
constexpr std::int32_t maxRepeated = 600;

struct Lines {
    std::vector<std::string_view> declarations, values;
};

Lines SplitLines(std::string_view text) {
    Lines lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        const bool declares = line.find('=') != std::string_view::npos;
        if (declares) lines.declarations.push_back(line);
        if (!declares && lines.values.size() < maxEvaluatedLines) lines.values.push_back(line);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

void Declare(std::string_view line, Workspace& workspace) {
    std::int32_t type = DoubleType;
    if (line.size() > 1 && line[1] == ':' && line[0] >= '0' && line[0] <= '9') {
        type = line[0] - '0';
        line.remove_prefix(2);
    }
    const std::size_t repeat = line.find('#');
    const std::int32_t asked = repeat < line.size() ? ReadInt(line) : 1;
    if (repeat < line.size()) line.remove_prefix(repeat + 1);
    const std::size_t mark = std::min(line.find('='), line.size() - 1);
    for (std::int32_t i = 0; i < std::min(asked, maxRepeated); ++i) {
        const std::string name = Concat(line.substr(0, mark), i ? Concat(i) : "");
        AddVariable(workspace, name, type, line.substr(mark + 1));
    }
}

/// What holds for every text: a failure gives 0, and the evaluator gives the same again.
void CheckExpression(const SymbolTable& table, std::string_view text) {
    ExprError error = ExprError::None, again = ExprError::None;
    const double value = ExprEval(table, text, error);
    const double repeated = ExprEval(table, text, again);
    Require(error == again);
    Require(value == repeated || (std::isnan(value) && std::isnan(repeated)));
    Require(error == ExprError::None || value == 0.0);
}

void CheckParameter(Workspace& workspace, std::int32_t type, std::string_view value) {
    Parameter* parameter = CreateParameter("p", type);
    Require(parameter && SetText(&parameter->value, value) && SetText(&parameter->STDDEV, value));
    std::string text;
    const Status status = EvalParam(parameter, &workspace, text);
    Require((status == Status::Success) == text.empty());
    parameter->max = AllocateZeroed(1, sizeof(Complex));  // large enough for every type
    static_cast<void>(ClampParam(*parameter, text));
    if (type == DoubleType && parameter->valactual) {
        Require(!(*static_cast<double*>(parameter->valactual) > 0.0));
    }
    FreeParameter(parameter);
}

void Run(std::string_view text) {
    Workspace workspace;
    const Lines lines = SplitLines(text);
    for (const std::string_view line : lines.declarations) Declare(line, workspace);
    std::string errorText;
    static_cast<void>(BuildSymbolTable(workspace, errorText));
    for (const std::string_view value : lines.values) {
        CheckExpression(workspace.symbols, value);
        constexpr std::array types{DoubleType, IntType, ComplexType, CharType, EnumType};
        for (const std::int32_t type : types) {
            const std::string chosen = Concat(type, value);
            if (IsOneIn(types.size(), chosen)) CheckParameter(workspace, type, value);
        }
    }
}

}  // namespace
}  // namespace photrak

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    static SilentMessages silent;
    Host host = CurrentHost();
    host.messages = &silent;
    const HostScope scope(host);
    const EscapeLevel level(/*armed=*/true);
    try {
        Run({reinterpret_cast<const char*>(data), size});
    } catch (const Escape&) {
        // More variables than a symbol table holds.
    }
    return 0;
}

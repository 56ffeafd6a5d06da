// Evaluation for dialogs: the table of symbols is made anew, so that what was just typed counts.
#include "workbench/value_text.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>

#include "base/text.h"
#include "kernel/expression.h"
#include "kernel/symbols.h"

namespace photrak {
namespace {

/// The names in an expression that nothing gives a value.
std::string UnknownName(const SymbolTable& table, std::string_view text) {
    constexpr std::string_view letters =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_0123456789";
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t begin = text.find_first_of(letters, at);
        if (begin == std::string_view::npos) break;
        const std::size_t end = std::min(text.find_first_not_of(letters, begin), text.size());
        const std::string_view word = text.substr(begin, end - begin);
        at = end;
        const bool isCall = text.substr(end).starts_with('(');
        if (IsNumber(word) || isCall || !CanNameASymbol(word)) continue;
        if (!FindSymbol(table, word)) return std::string(word);
    }
    return {};
}

std::size_t EditDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t change = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({change, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row[b.size()];
}

std::string Nearest(const SymbolTable& table, std::string_view name) {
    std::string nearest;
    std::size_t least = name.size() / 2 + 1;
    const Symbol* entries = table.entries.get();
    for (std::int32_t i = 0; i < table.count; ++i) {
        const std::size_t distance = EditDistance(entries[i].name, name);
        if (distance >= least) continue;
        least = distance;
        nearest = entries[i].name;
    }
    return nearest;
}

struct Evaluated {
    double value = 0.0;
    std::string fault;
};

Evaluated Evaluate(Workspace& workspace, std::string_view text) {
    std::string ignored;
    // More variables than the table holds are a matter of the run; here they leave it empty.
    if (workspace.variables.size() <= static_cast<std::size_t>(symbolTableCapacity)) {
        static_cast<void>(BuildSymbolTable(workspace, ignored));
    }
    Evaluated result;
    ExprError error = ExprError::None;
    result.value = EvalNumberText(workspace.symbols, text, error);
    const std::string unknown = UnknownName(workspace.symbols, text);
    if (!unknown.empty() && !IsNumber(text)) {
        const std::string nearest = Nearest(workspace.symbols, unknown);
        result.fault =
            Concat("unknown symbol '", unknown, "'", nearest.empty() ? "" : "; did you mean '",
                   nearest, nearest.empty() ? "" : "'?");
    } else if (error != ExprError::None) {
        result.fault = "cannot be evaluated";
    }
    FreeSymbolTable(workspace);
    return result;
}

std::string LimitFault(const Parameter& parameter, double value) {
    if (parameter.type == IntType) value = std::trunc(value);  // as a run reads it
    const auto limit = [&](const void* place) {
        return parameter.type == IntType ? *static_cast<const std::int32_t*>(place)
                                         : *static_cast<const double*>(place);
    };
    if (parameter.min && value < limit(parameter.min)) {
        return Concat("below the least value ", limit(parameter.min));
    }
    if (parameter.max && value > limit(parameter.max)) {
        return Concat("above the greatest value ", limit(parameter.max));
    }
    return {};
}

struct DistributionRow {
    std::string_view word;
    std::int32_t code;
};
constexpr DistributionRow distributions[] = {{"None", NoProbDist},
                                             {"Uniform", UniformProbDist},
                                             {"Gaussian", GausProbDist},
                                             {"TwoSigma", TwoSigmaGausProbDist}};

}  // namespace

ValueCheck CheckExpression(Workspace& workspace, std::string_view text) {
    if (text.empty()) return {};
    const Evaluated evaluated = Evaluate(workspace, text);
    if (!evaluated.fault.empty()) return {evaluated.fault, {}};
    if (IsNumber(text)) return {};
    return {{}, Concat("= ", evaluated.value)};
}

ValueCheck CheckValue(Workspace& workspace, const Parameter& parameter, std::string_view text) {
    if (text.empty()) return {"a value must be given", {}};
    const Evaluated evaluated = Evaluate(workspace, text);
    if (!evaluated.fault.empty()) return {evaluated.fault, {}};
    ValueCheck check;
    check.fault = LimitFault(parameter, evaluated.value);
    if (!IsNumber(text)) {
        const char* units = parameter.UNITS ? parameter.UNITS : "";
        check.shown = Concat("= ", evaluated.value, *units ? " " : "", units);
    }
    return check;
}

std::string ExactNumber(double value, int digits) {
    constexpr int most = 17;
    for (int n = digits; n < most; ++n) {
        std::string text = FormatSignificant(value, n);
        if (ReadDouble(text) == value) return text;
    }
    return FormatSignificant(value, most);
}

std::string OneLine(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return text;
}

std::string DistributionWord(std::int32_t code) {
    const auto row = std::ranges::find(distributions, code, &DistributionRow::code);
    return std::string(row == std::end(distributions) ? "None" : row->word);
}

std::int32_t DistributionCode(std::string_view word) {
    const auto row = std::ranges::find(distributions, word, &DistributionRow::word);
    return row == std::end(distributions) ? std::int32_t{NoProbDist} : row->code;
}

}  // namespace photrak

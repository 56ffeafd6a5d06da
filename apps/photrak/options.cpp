#include "photrak/options.h"

#include <algorithm>
#include <array>

#include "base/text.h"

namespace photrak {
namespace {

using Problem = std::optional<std::string>;

struct Option {
    const char* name;
    const char* value;  // its placeholder in the help, null for a switch
    unsigned commands;  // commandBit
    Problem (*apply)(CommandOptions& options, const std::string& value);
    const char* help;
};

Problem SetSymbol(CommandOptions& options, const std::string& value) {
    const std::size_t equals = value.find('=');
    if (equals == 0 || equals == std::string::npos || equals + 1 == value.size()) {
        return Concat("--set wants NAME=EXPR, not '", value, "'");
    }
    if (equals >= symbolNameCapacity) {
        return Concat("--set: the name '", value.substr(0, equals),
                      "' is longer than 31 characters");
    }
    options.symbols.emplace_back(value.substr(0, equals), value.substr(equals + 1));
    return {};
}

Problem SetPlotting(CommandOptions& options, const std::string& value) {
    static constexpr std::array<std::pair<std::string_view, std::int16_t>, 4> words{{
        {"none", DoNotPlot},
        {"save", PlotToFilesOnly},
        {"display", DisplayAllPlots},
        {"icon", UsePlotIconSettings},
    }};
    const auto* word = std::find_if(words.begin(), words.end(), [&](const auto& candidate) {
        return candidate.first == value;
    });
    if (word == words.end()) {
        return Concat("--plotting wants none, save, display or icon, not '", value, "'");
    }
    options.plotting = word->second;
    return {};
}

Problem SetPrefix(CommandOptions& options, const std::string& value) {
    options.prefix = value;
    return {};
}

template <bool CommandOptions::*flag>
Problem Raise(CommandOptions& options, const std::string&) {
    options.*flag = true;
    return {};
}

constexpr unsigned anyCommand = commandBit::run | commandBit::check | commandBit::models;
constexpr unsigned topologyCommand = commandBit::run | commandBit::check;

constexpr Option optionTable[] = {
    {"--set", "NAME=EXPR", topologyCommand, SetSymbol,
     "give a symbol a number or an expression for this run; repeatable"},
    {"--prefix", "TEXT", commandBit::run, SetPrefix, "start the names of result files with TEXT"},
    {"--plotting", "MODE", commandBit::run, SetPlotting,
     "none, save (files only), display (start the viewer) or icon (as each block says)"},
    {"--no-commands", nullptr, commandBit::run, Raise<&CommandOptions::noCommands>,
     "start no external program: no viewer, no command of a block"},
    {"--strict", nullptr, topologyCommand, Raise<&CommandOptions::strict>,
     "exit with 2 if there were warnings"},
    {"--quiet", nullptr, topologyCommand, Raise<&CommandOptions::quiet>,
     "no progress on standard error, only warnings and errors"},
    {"--verbose", nullptr, topologyCommand, Raise<&CommandOptions::verbose>,
     "tell more: catalogue, symbols, run order, times"},
    {"--help", nullptr, anyCommand, Raise<&CommandOptions::help>, "print this help"},
};

const Option* FindOption(std::string_view name, unsigned command) {
    for (const Option& option : optionTable) {
        if (name == option.name && (option.commands & command)) return &option;
    }
    return nullptr;
}

}  // namespace

std::optional<std::string> ParseOptions(const std::vector<std::string>& arguments, unsigned command,
                                        CommandOptions& options) {
    bool onlyFiles = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (onlyFiles || argument.size() < 2 || argument[0] != '-') {
            if (!options.file.empty())
                return Concat("one file at a time: '", argument, "' is too many");
            options.file = argument;
            continue;
        }
        if (argument == "--") {
            onlyFiles = true;
            continue;
        }
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        const Option* option = FindOption(name == "-h" ? "--help" : name, command);
        if (!option) return Concat("unknown option '", name, "'");
        std::string value;
        if (option->value) {
            if (equals != std::string::npos) {
                value = argument.substr(equals + 1);
            } else if (i + 1 < arguments.size()) {
                value = arguments[++i];
            } else {
                return Concat("option '", name, "' wants ", option->value);
            }
        } else if (equals != std::string::npos) {
            return Concat("option '", name, "' takes no value");
        }
        if (const Problem problem = option->apply(options, value)) return problem;
    }
    return {};
}

std::string OptionHelp(unsigned command) {
    std::string text;
    for (const Option& option : optionTable) {
        if (!(option.commands & command)) continue;
        std::string left =
            Concat("  ", option.name, option.value ? " " : "", option.value ? option.value : "");
        left.resize(std::max<std::size_t>(left.size() + 2, 24), ' ');
        text += Concat(left, option.help, "\n");
    }
    return text;
}

}  // namespace photrak

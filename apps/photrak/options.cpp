// The options of all commands as one table, from which they are read and listed in the help.
#include "photrak/options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <sys/ioctl.h>
#include <unistd.h>

#include "base/nearest.h"
#include "base/text.h"
#include "platform/full_path.h"
#include "results/result_table.h"

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

Problem AddParamFile(CommandOptions& options, const std::string& value) {
    const std::size_t equals = value.find('=');
    if (equals == 0 || equals == std::string::npos || equals + 1 == value.size()) {
        return Concat("--load-params wants COMPONENT=FILE.prm, not '", value, "'");
    }
    // From here, and not from the topology's directory, which the commands enter.
    options.loadParams.emplace_back(value.substr(0, equals), FullPath(value.substr(equals + 1)));
    return {};
}

Problem SetParamFile(CommandOptions& options, const std::string& value) {
    if (value.empty() || value.ends_with('/')) return "-o wants the name of a file";
    options.paramFile = FullPath(value);
    return {};
}

Problem SetTable(CommandOptions& options, const std::string& value) {
    if (!TableFormatOf(value))
        return Concat("--table wants FILE.csv or FILE.json, not '", value, "'");
    options.table = value;
    options.tablePath = FullPath(value);
    return {};
}

Problem SetFolder(CommandOptions& options, const std::string& value) {
    if (value.empty()) return "--out wants the name of a folder";
    options.out = value;
    return {};
}

Problem SetProgress(CommandOptions& options, const std::string& value) {
    if (value != "lines" && value != "json") {
        return Concat("--progress wants lines or json, not '", value, "'");
    }
    options.progress = value;
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

template <std::optional<std::string> CommandOptions::*text>
Problem SetText(CommandOptions& options, const std::string& value) {
    options.*text = value;
    return {};
}

template <std::optional<SweepOption> CommandOptions::*sweep>
Problem SetSweep(CommandOptions& options, const std::string& value) {
    const std::size_t equals = value.find('=');
    const std::size_t first = value.find(':', equals);
    const std::size_t second = first == std::string::npos ? first : value.find(':', first + 1);
    SweepOption read;
    if (second != std::string::npos && value.find(':', second + 1) == std::string::npos) {
        read = {value.substr(0, equals), value.substr(equals + 1, first - equals - 1),
                value.substr(first + 1, second - first - 1), value.substr(second + 1)};
    }
    if (read.name.empty() || read.start.empty() || read.stop.empty() || read.step.empty()) {
        return Concat("a sweep is NAME=START:STOP:STEP, not '", value, "'");
    }
    if (read.name.size() >= symbolNameCapacity) {
        return Concat("the name '", read.name, "' of a sweep is longer than 31 characters");
    }
    options.*sweep = std::move(read);
    return {};
}

Problem SetRuns(CommandOptions& options, const std::string& value) {
    std::int32_t runs = -1;
    const char* end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, runs);
    if (error != std::errc() || stop != end || runs < 0) {
        return Concat("--runs wants a number of runs, not '", value, "'");
    }
    options.runs = runs;
    return {};
}

Problem SetIsolateLimit(CommandOptions& options, const std::string& value) {
    const std::optional<double> seconds = WholeDouble(value);
    if (!seconds || !(*seconds > 0.0))
        return Concat("--isolate-limit wants a time in seconds, not '", value, "'");
    options.isolate = true;
    options.isolateLimit = *seconds;
    return {};
}

Problem SetJobs(CommandOptions& options, const std::string& value) {
    constexpr int most = 1024;
    const std::optional<std::int32_t> jobs = WholeInt(value);
    if (!jobs || *jobs < 1 || *jobs > most) {
        return Concat("--jobs wants a number of processes, not '", value, "'");
    }
    options.jobs = *jobs;
    return {};
}

Problem SetMemory(CommandOptions& options, const std::string& value) {
    constexpr std::pair<std::string_view, double> units[] = {
        {"", 1.0}, {"K", 1e3}, {"M", 1e6}, {"G", 1e9}, {"T", 1e12}};
    std::size_t used = 0;
    const double number = ReadDouble(value, &used);
    const auto* unit = std::ranges::find(units, value.substr(used),
                                         [](const auto& row) { return std::string(row.first); });
    if (used == 0 || unit == std::end(units) || !(number * unit->second >= 1.0)) {
        return Concat("--max-memory wants bytes, or a number with K, M, G or T, not '", value, "'");
    }
    options.maxMemory = number * unit->second;
    return {};
}

template <std::string CommandOptions::*text>
Problem SetWord(CommandOptions& options, const std::string& value) {
    if (value.empty()) return "an option wants a word, not ''";
    options.*text = value;
    return {};
}

Problem SetOutput(CommandOptions& options, const std::string& value) {
    options.plot.output = value;
    return {};
}

Problem SetTitle(CommandOptions& options, const std::string& value) {
    options.title = value;
    return {};
}

Problem SetSize(CommandOptions& options, const std::string& value) {
    std::size_t used = 0;
    const double width = ReadDouble(value, &used);
    const std::string rest = value.substr(used);
    std::size_t usedBehind = 0;
    const double height =
        rest.size() > 1 && rest[0] == 'x' ? ReadDouble(rest.substr(1), &usedBehind) : 0.0;
    if (used == 0 || usedBehind + 1 != rest.size() || !(width >= 200.0 && width <= 20'000.0) ||
        !(height >= 150.0 && height <= 20'000.0)) {
        return Concat("--size wants WIDTHxHEIGHT in pixels, from 200x150 to 20000x20000, not '",
                      value, "'");
    }
    options.plot.width = width;
    options.plot.height = height;
    return {};
}

Problem SetZoom(CommandOptions& options, const std::string& value) {
    std::size_t used = 0;
    options.draw.zoom = ReadDouble(value, &used);
    if (used == 0 || used != value.size() ||
        !(options.draw.zoom >= 0.05 && options.draw.zoom <= 20.0)) {
        return Concat("--zoom wants a number from 0.05 to 20, not '", value, "'");
    }
    return {};
}

Problem SetEye(CommandOptions& options, const std::string& value) {
    if (value != "traces" && value != "density")
        return Concat("--eye wants traces or density, not '", value, "'");
    options.plot.eye = value;
    return {};
}

template <bool PlotCommandOptions::*flag>
Problem RaisePlot(CommandOptions& options, const std::string&) {
    options.plot.*flag = true;
    return {};
}

template <bool CommandOptions::*flag>
Problem Raise(CommandOptions& options, const std::string&) {
    options.*flag = true;
    return {};
}

constexpr unsigned simulating = commandBit::run | commandBit::scan | commandBit::measure;
constexpr unsigned plotting = simulating | commandBit::test;
constexpr unsigned topologyCommand = plotting | commandBit::check;
constexpr unsigned anyCommand = topologyCommand | commandBit::models | commandBit::plot |
                                commandBit::params | commandBit::superblock | commandBit::draw |
                                commandBit::report | commandBit::explain | commandBit::create |
                                commandBit::example | commandBit::completion;

constexpr Option optionTable[] = {
    {"--set", "NAME=EXPR", topologyCommand, SetSymbol,
     "give a symbol a number or an expression for this run; repeatable"},
    {"--load-params", "C=FILE", topologyCommand, AddParamFile,
     "load the parameter file FILE into the component C first; repeatable"},
    {"--out", "DIR", plotting, SetFolder,
     "write results and log.txt into the folder DIR, which is made if need be"},
    {"--prefix", "TEXT", simulating, SetText<&CommandOptions::prefix>,
     "start the names of result files with TEXT"},
    {"--plotting", "MODE", plotting, SetPlotting,
     "none, save (files only), display (start the viewer) or icon (as each block says)"},
    {"--no-commands", nullptr, plotting, Raise<&CommandOptions::noCommands>,
     "start no external program: no viewer, no command of a block"},
    {"--trust", nullptr, plotting, Raise<&CommandOptions::trust>,
     "load user libraries too that belong to other users or that these can change"},
    {"--isolate", nullptr, simulating, Raise<&CommandOptions::isolate>,
     "call user libraries in processes of their own: a crash is an error of the block"},
    {"--isolate-limit", "SECONDS", simulating, SetIsolateLimit,
     "the same, and end a call after SECONDS instead of 60"},
    {"--max-memory", "SIZE", simulating, SetMemory,
     "refuse a run that would take more: bytes, or a number with K, M, G or T; tried first with "
     "short patterns"},
    {"--table", "FILE", simulating, SetTable,
     "write FILE.csv or FILE.json: a row for each point and tester (measure: each signal), as they "
     "finish"},
    {"--json", nullptr, simulating | commandBit::check, Raise<&CommandOptions::json>,
     "print one JSON document on standard output: files, readings, every warning and error"},
    {"--report", nullptr, simulating, Raise<&CommandOptions::report>,
     "write all results as a page at the end, FILE.html beside the topology"},
    {"--inner", "RANGE", commandBit::scan, SetSweep<&CommandOptions::inner>,
     "sweep a symbol; RANGE is NAME=START:STOP:STEP, of numbers or expressions"},
    {"--outer", "RANGE", commandBit::scan, SetSweep<&CommandOptions::outer>,
     "sweep another one around it: the whole inner sweep at each of its points"},
    {"--runs", "N", commandBit::scan, SetRuns,
     "N runs at each point, with new draws of the randomized parameters; 0 for none"},
    {"--inner-tag", "TEXT", commandBit::scan, SetText<&CommandOptions::innerTag>,
     "put TEXT and the number of the point into the names of result files;"},
    {"--outer-tag", "TEXT", commandBit::scan, SetText<&CommandOptions::outerTag>,
     "likewise for the outer sweep;"},
    {"--run-tag", "TEXT", commandBit::scan, SetText<&CommandOptions::runTag>,
     "likewise for the runs; an empty tag skips the plots of that loop"},
    {"--jobs", "N", commandBit::scan, SetJobs, "share the points among N processes"},
    {"-j", "N", commandBit::scan, SetJobs, "the same"},
    {"--shard", "K/N", commandBit::scan, SetWord<&CommandOptions::shard>,
     "run part K of N only and keep its points in --out DIR; 'auto' asks Slurm, MPI, SGE, PBS, "
     "LSF"},
    {"--merge", "DIR", commandBit::scan, SetWord<&CommandOptions::merge>,
     "write the results of all points in DIR, as one process would have"},
    {"--resume", nullptr, commandBit::scan, Raise<&CommandOptions::resume>,
     "run only points that are not yet in --out DIR, or are of other files or settings"},
    {"--dry-run", nullptr, commandBit::scan, Raise<&CommandOptions::dryRun>,
     "tell the number of points and estimate size, time and memory from the first two"},
    {"-o", "OUT", commandBit::plot, SetOutput,
     "write OUT.svg, .png or .pdf (a folder takes an .svg for each plot); without it the viewer"},
    {"-o", "OUT.html", commandBit::report, SetOutput,
     "write OUT.html; without it FILE.html beside the topology, or report.html in the folder"},
    {"--title", "TEXT", commandBit::report, SetTitle, "head of the page"},
    {"-o", "FILE.prm", commandBit::params, SetParamFile,
     "write FILE.prm; standard output without it"},
    {"--size", "WxH", commandBit::plot, SetSize,
     "size of the picture in pixels; 800x500 without it"},
    {"-o", "OUT.svg", commandBit::draw, SetOutput, "write OUT.svg; standard output without it"},
    {"--zoom", "Z", commandBit::draw, SetZoom,
     "pixels for each unit of the diagram, a cell of which has 45; 1 without it"},
    {"--line-patterns", nullptr, commandBit::draw,
     [](CommandOptions& options, const std::string&) -> Problem {
         options.draw.linePatterns = true;
         return {};
     },
     "tell the types of wires by dashes too"},
    {"--dark", nullptr, commandBit::plot | commandBit::draw, RaisePlot<&PlotCommandOptions::dark>,
     "light curves on dark ground"},
    {"--eye", "STYLE", commandBit::plot, SetEye,
     "draw eyes as traces or density; without it by their number"},
    {"--overlay", nullptr, commandBit::plot, RaisePlot<&PlotCommandOptions::overlay>,
     "draw the curves of all files on the axes of the first"},
    {"--lenient", nullptr, plotting, Raise<&CommandOptions::lenient>,
     "run even if a mistyped line, value or name would change a number"},
    {"--strict", nullptr, topologyCommand | commandBit::params | commandBit::superblock,
     Raise<&CommandOptions::strict>, "exit with 2 if there were warnings"},
    {"--progress", "STYLE", simulating, SetProgress,
     "lines or json: a line for each step on standard error, also where that is no terminal"},
    {"--quiet", nullptr,
     topologyCommand | commandBit::plot | commandBit::params | commandBit::report,
     Raise<&CommandOptions::quiet>, "no progress on standard error, only warnings and errors"},
    {"--verbose", nullptr, simulating | commandBit::check, Raise<&CommandOptions::verbose>,
     "tell more: catalogue, symbols, sweeps, times"},
    {"--block", nullptr, commandBit::models, Raise<&CommandOptions::block>,
     "print a block of the model with all its parameters, to paste into a topology"},
    {"--help", nullptr, anyCommand, Raise<&CommandOptions::help>, "print this help"},
};

const Option* FindOption(std::string_view name, unsigned command) {
    for (const Option& option : optionTable) {
        if (name == option.name && (option.commands & command)) return &option;
    }
    return nullptr;
}

std::string NearestOption(std::string_view name, unsigned command) {
    return NearestOf(name, optionTable, [&](const Option& option) {
        return option.commands & command ? std::string_view(option.name) : std::string_view();
    });
}

}  // namespace

std::optional<std::string> ParseOptions(const std::vector<std::string>& arguments, unsigned command,
                                        Operands operands, CommandOptions& options) {
    bool onlyOperands = false;
    std::size_t given = 0;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (onlyOperands || argument.size() < 2 || argument[0] != '-') {
            if (command == commandBit::plot) {
                options.files.push_back(argument);
                continue;
            }
            if (given == operands.size() && command == commandBit::measure) {
                options.files.push_back(argument);
                continue;
            }
            if (given == operands.size()) return Concat("the word '", argument, "' is too many");
            options.*operands[given++] = argument;
            continue;
        }
        if (argument == "--") {
            onlyOperands = true;
            continue;
        }
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        const Option* option = FindOption(name == "-h" ? "--help" : name, command);
        if (!option) {
            return Concat("unknown option '", name, "'", DidYouMean(NearestOption(name, command)));
        }
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
        if (Problem problem = option->apply(options, value)) return problem;
    }
    return {};
}

bool OffersOption(std::string_view name, unsigned command) {
    return FindOption(name, command) != nullptr;
}

std::string OptionNames(unsigned command) {
    std::string names;
    for (const Option& option : optionTable) {
        if (option.commands & command) names += Concat(names.empty() ? "" : " ", option.name);
    }
    return names;
}

namespace {

/// The columns of the terminal that standard output is, or of a page.
std::size_t HelpColumns() {
    winsize size{};
    constexpr std::size_t page = 100, least = 50;
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return page;
    return std::max<std::size_t>(size.ws_col, least);
}

/// `text` behind what stands in its first `indent` columns, broken at blanks.
std::string Wrapped(std::string left, std::string_view text, std::size_t indent) {
    const std::size_t columns = HelpColumns();
    std::size_t column = left.size();
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        if (column + word.size() > columns && column > indent) {
            left += "\n" + std::string(indent, ' ');
            column = indent;
        }
        left += Concat(word, text.empty() ? "" : " ");
        column += word.size() + 1;
    }
    return left + "\n";
}

}  // namespace

namespace {

/// A hyphen of its own would be set as a dash that no terminal takes back.
std::string ForManual(std::string_view text) {
    std::string escaped;
    for (const char c : text) escaped += c == '-' ? std::string("\\-") : std::string(1, c);
    const bool isRequest = escaped.starts_with('.') || escaped.starts_with('\'');
    return isRequest ? "\\&" + escaped : escaped;
}

}  // namespace

std::string OptionManual(unsigned command, unsigned except) {
    std::string text;
    for (const Option& option : optionTable) {
        if (!(option.commands & command) || (option.commands & except)) continue;
        text += Concat(".TP\n.B ", ForManual(option.name));
        if (option.value) text += Concat("\\fI ", ForManual(option.value), "\\fR");
        text += Concat("\n", ForManual(option.help), "\n");
    }
    return text;
}

std::string OptionHelp(unsigned command, unsigned except) {
    std::string text;
    for (const Option& option : optionTable) {
        if (!(option.commands & command) || (option.commands & except)) continue;
        std::string left =
            Concat("  ", option.name, option.value ? " " : "", option.value ? option.value : "");
        left.resize(std::max<std::size_t>(left.size() + 2, 24), ' ');
        text += Wrapped(left, option.help, 24);
    }
    return text;
}

}  // namespace photrak

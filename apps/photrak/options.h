// Command line options of the program: one table for parsing and for the help texts.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "kernel/workspace.h"

namespace photrak {

/// NAME=START:STOP:STEP, expressions as typed.
struct SweepOption {
    std::string name, start, stop, step;
};

/// What `plot` is asked for.
struct PlotCommandOptions {
    std::string output;                    // a picture file or a folder
    double width = 800.0, height = 500.0;  // pixels
    bool dark = false, overlay = false;
    std::string eye;  // "traces", "density" or empty
};

/// What `draw` is asked for.
struct DrawCommandOptions {
    double zoom = 1.0;  // pixels for each unit of the diagram
    bool linePatterns = false;
};

/// What the user asked for on the command line, for the commands that run or load a topology.
struct CommandOptions {
    std::string component;           // the block of `test` and `params`
    std::string file;                // the topology, or the model type of `models`
    std::vector<std::string> files;  // the plots of `plot`
    PlotCommandOptions plot;         // `draw` takes its output and its theme too
    DrawCommandOptions draw;
    std::string paramFile;  // -o of `params`, a full path
    // --load-params COMPONENT=FILE.prm, in order, with full paths
    std::vector<std::pair<std::string, std::string>> loadParams;
    std::vector<std::pair<std::string, std::string>> symbols;  // --set NAME=EXPR, in order
    std::string table;      // --table as typed, from where the program was called
    std::string tablePath;  // the same, a full path
    std::string out;        // --out, the folder of the results; empty: beside the topology
    std::string progress;   // "lines", "json" or empty
    std::optional<std::string> prefix;
    std::optional<std::int16_t> plotting;  // PLOTTING code
    std::optional<SweepOption> inner, outer;
    std::optional<std::int32_t> runs;
    std::optional<std::string> innerTag, outerTag, runTag;
    std::int32_t jobs = 1;  // processes of a scan
    std::string shard;      // "K/N", "auto" or empty
    std::string merge;      // the folder of the points to merge, or empty
    bool resume = false, dryRun = false;
    double maxMemory = 0.0;               // bytes, 0 without a limit
    std::string title;                    // of the page of `report`
    bool report = false;                  // a page at the end of a run
    bool scans = false;                   // the command is `scan`
    bool trust = false, isolate = false;  // of user libraries
    double isolateLimit = 60.0;           // s
    bool noCommands = false, strict = false, lenient = false, block = false, quiet = false,
         verbose = false, help = false, json = false;
};

/// What the words of a command that are no options mean, in order.
using Operands = std::span<std::string CommandOptions::*const>;

/// Reads the arguments after the command's word; those of `plot` and `measure` beyond the operands
/// join `files`. A text that says what is wrong, or nothing. `command` is the bit of the command in
/// the option table. Words may be missing at the end.
std::optional<std::string> ParseOptions(const std::vector<std::string>& arguments, unsigned command,
                                        Operands operands, CommandOptions& options);

/// True if the command has this option.
bool OffersOption(std::string_view name, unsigned command);

/// The names of a command's options, separated by blanks.
std::string OptionNames(unsigned command);

/// The option lines of a command's help, aligned, without those of the commands in `except`.
std::string OptionHelp(unsigned command, unsigned except = 0);
/// The same as items of a manual page.
std::string OptionManual(unsigned command, unsigned except = 0);

/// Bits of the commands in the option table.
namespace commandBit {
inline constexpr unsigned run = 1, check = 2, models = 4, scan = 8, test = 16, plot = 32,
                          params = 64, superblock = 128, draw = 256, report = 512, explain = 1024,
                          create = 2048, example = 4096, completion = 8192, measure = 16384;
}  // namespace commandBit

}  // namespace photrak

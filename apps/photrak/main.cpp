// The command line program: finds the command and its options, and turns the rest over to it.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <new>
#include <unistd.h>

#include "base/memory.h"
#include "base/nearest.h"
#include "base/text.h"
#include "kernel/external_commands.h"
#include "photrak/commands.h"
#include "photrak/completion.h"
#include "photrak/console.h"
#include "photrak/outcome.h"
#include "platform/file_system.h"
#include "platform/memory_shortage.h"
#include "results/result_table.h"

namespace photrak {
namespace {

struct Command {
    std::string_view name;
    const char* usage;
    const char* help;
    unsigned bit;
    Operands operands;
    const char* wants;  // what must not be missing among them; null if all may
    int (*run)(const CommandOptions& options);
};

constexpr std::string CommandOptions::*fileOnly[] = {&CommandOptions::file};
constexpr std::string CommandOptions::*componentAndFile[] = {&CommandOptions::component,
                                                             &CommandOptions::file};

int CompletionCommand(const CommandOptions&);

constexpr Command commandTable[] = {
    {"run", "photrak run [options] FILE.top", "simulate a topology once and write its results",
     commandBit::run, fileOnly, "a topology file", RunCommand},
    {"scan", "photrak scan [options] FILE.top",
     "simulate it at each point of its sweeps and for each statistical run", commandBit::scan,
     fileOnly, "a topology file", ScanCommand},
    {"measure", "photrak measure [options] FILE.top NODE|COMPONENT[:PORT]...",
     "simulate it once and print power, OSNR, extinction ratio and eye opening at some places",
     commandBit::measure, fileOnly, "a topology file and what to measure", MeasureCommand},
    {"check", "photrak check [options] FILE.top",
     "load a topology and list all its faults; run nothing", commandBit::check, fileOnly,
     "a topology file", CheckCommand},
    {"test", "photrak test [options] COMPONENT FILE.top",
     "draw what one block does (a filter its response), without a run", commandBit::test,
     componentAndFile, "a component and a topology file", TestCommand},
    {"params", "photrak params [options] COMPONENT FILE.top",
     "write the parameter file of one component", commandBit::params, componentAndFile,
     "a component and a topology file", ParamsCommand},
    {"superblock", "photrak superblock FILE.top",
     "write the definition that makes a topology with In and Out blocks a block of others",
     commandBit::superblock, fileOnly, "a topology file", SuperBlockCommand},
    {"plot",
     "photrak plot [options] FILE.pc?...",
     "show results in the viewer, or write them as pictures",
     commandBit::plot,
     {},
     "the command file of a plot",
     PlotCommand},
    {"report", "photrak report [options] FILE.top|FOLDER",
     "write diagram, error rates, plots and log as one HTML page", commandBit::report, fileOnly,
     "a topology file or a folder of results", ReportCommand},
    {"draw", "photrak draw [options] FILE.top", "draw a topology as an SVG picture",
     commandBit::draw, fileOnly, "a topology file", DrawCommand},
    {"new", "photrak new FILE.top", "write a topology to begin with", commandBit::create, fileOnly,
     "the name of a file", NewCommand},
    {"example", "photrak example [NAME]",
     "list the examples, or copy one and the files that it needs to here", commandBit::example,
     fileOnly, nullptr, ExampleCommand},
    {"completion",
     "photrak completion",
     "print the completion of commands and names for bash: source <(photrak completion)",
     commandBit::completion,
     {},
     nullptr,
     CompletionCommand},
    {"explain", "photrak explain [CODE]", "tell what a code such as P1201 in a message means",
     commandBit::explain, fileOnly, nullptr, ExplainCommand},
    {"models", "photrak models [options] [TYPE|SuperBlock:NAME]",
     "list the models, or the ports and parameters of one", commandBit::models, fileOnly, nullptr,
     ModelsCommand},
};

int CompletionCommand(const CommandOptions&) {
    std::vector<CompletedCommand> commands;
    for (const Command& command : commandTable) commands.push_back({command.name, command.bit});
    WriteOut(BashCompletion(commands));
    return exitStatus::success;
}

constexpr struct {
    std::string_view command, text;
} helpExamples[] = {
    {"run", "photrak run link.top\n  photrak run --set length=40e3 --out results link.top"},
    {"scan",
     "photrak scan --inner 'received=-24:-18:1' link.top\n  photrak scan -j 4 --runs 40 link.top"},
    {"measure",
     "photrak measure link.top Fiber Receiver\n  photrak measure --json link.top Mux:2 12"},
    {"check", "photrak check link.top\n  photrak check --strict --set length=40e3 link.top"},
    {"test", "photrak test Filter link.top\n  photrak test --set width=20e9 Filter link.top"},
    {"params", "photrak params Fiber link.top\n  photrak params -o fiber.prm Fiber link.top"},
    {"superblock", "photrak superblock span.top\n  photrak superblock --strict span.top"},
    {"plot", "photrak plot eye.pce\n  photrak plot -o eye.svg --dark eye.pce"},
    {"report", "photrak report link.top\n  photrak report results"},
    {"draw", "photrak draw link.top -o link.svg\n  photrak draw --dark -o link.svg link.top"},
    {"models", "photrak models SignalPlot\n  photrak models --block CWLaserModel >>link.top"},
    {"new", "photrak new link.top\n  photrak new links/first.top"},
    {"example", "photrak example\n  photrak example nrz-link"},
    {"explain", "photrak explain P1208\n  photrak explain"},
    {"completion", "source <(photrak completion)\n  photrak completion >>~/.bashrc"},
};

std::string HelpOf(const Command& command) {
    std::string text =
        Concat("Usage: ", command.usage, "\n", command.help, "\n\n", OptionHelp(command.bit));
    for (const auto& row : helpExamples) {
        if (row.command == command.name) text += Concat("\nExamples:\n  ", row.text, "\n");
    }
    return text;
}

std::string Help() {
    std::string text =
        "Photrak designs and simulates fiber-optical links.\n\n"
        "Usage:\n";
    for (const Command& command : commandTable) {
        std::string left = Concat("  ", command.usage);
        left.resize(std::max<std::size_t>(left.size() + 2, 38), ' ');
        text += Concat(left, command.help, "\n");
    }
    text +=
        "  photrak [FILE.top...]               open the workbench, a window\n"
        "  photrak help COMMAND                tell the options of one command\n"
        "  photrak --help | --version\n\n"
        "Options of run and scan, of which check and test have some:\n";
    text += OptionHelp(commandBit::run);
    text += "\nMore options of scan, which replace what the topology asks for:\n";
    text += OptionHelp(commandBit::scan, commandBit::run);
    text +=
        "\nResult files and log.txt are written in the topology's directory, or in that of --out; "
        "'-'\n"
        "as FILE.top is standard input. Standard output lists the result files; progress, warnings "
        "and\n"
        "errors go to standard error.\n"
        "Exit status: 0 success (with warnings too, unless --strict), 1 the load or the run "
        "failed,\n"
        "2 warnings under --strict, 64 bad usage, 128 + signal after a stop on request.\n";
    return text;
}

/// The options as they stand in the manual page, which tools/man-options takes from here.
std::string ManualOptions() {
    constexpr unsigned shown = commandBit::run | commandBit::scan;
    std::string text =
        Concat(".SS Of run and scan\n", OptionManual(commandBit::run), ".SS Of scan alone\n",
               OptionManual(commandBit::scan, commandBit::run));
    for (const Command& command : commandTable) {
        const std::string own = OptionManual(command.bit, shown);
        if (!own.empty()) text += Concat(".SS Of ", command.name, "\n", own);
    }
    return text;
}

int BadUsage(std::string_view problem) {
    Report("error", problem);
    WriteError("Try 'photrak --help'.\n");
    return exitStatus::usage;
}

/// While the command runs, what it starts writes to standard error: the document stands alone.
class OutputForDocument {
  public:
    void Take() {
        kept_ = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        if (kept_ >= 0) ::dup2(STDERR_FILENO, STDOUT_FILENO);
    }
    void Print(std::string_view document) {
        std::fflush(stdout);
        if (kept_ >= 0) ::dup2(kept_, STDOUT_FILENO);
        std::fwrite(document.data(), 1, document.size(), stdout);
    }

  private:
    int kept_ = -1;
};
OutputForDocument outputForDocument;

int Execute(const Command& command, const std::vector<std::string>& arguments) {
    CommandOptions options;
    // Also for a line that is wrong elsewhere.
    const bool isJson = OffersOption("--json", command.bit) &&
                        std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
    if (isJson) {
        CurrentOutcome().Ask(command.name);
        outputForDocument.Take();
    }
    if (const auto problem = ParseOptions(arguments, command.bit, command.operands, options))
        return BadUsage(*problem);
    CurrentOutcome().SetTopology(options.file);
    if (options.help) {
        if (isJson) CurrentOutcome().AddMember("help", JsonText(HelpOf(command)));
        WriteOut(HelpOf(command));
        return exitStatus::success;
    }
    if (command.wants && options.file.empty() && options.files.empty()) {
        return BadUsage(Concat("'", command.name, "' wants ", command.wants));
    }
    const Doing doing("carrying out the command", command.name);
    return command.run(options);
}

/// Becomes the program with the window, which lies beside this one or on the path.
int StartWorkbenchProgram(const std::vector<std::string>& files) {
    const std::string beside = ExecutableDirectory() + "photrak-workbench";
    const std::string program = FileExists(beside) ? beside : "photrak-workbench";
    std::vector<char*> words = {const_cast<char*>(program.c_str())};
    for (const std::string& file : files) words.push_back(const_cast<char*>(file.c_str()));
    words.push_back(nullptr);
    ::execvp(program.c_str(), words.data());
    Report("error",
           "the workbench 'photrak-workbench' is not installed: it is built where Qt 6 is found "
           "(Debian: qt6-base-dev); 'photrak run' simulates a topology without it");
    return exitStatus::failed;
}

int Main(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        return HasDisplay() ? StartWorkbenchProgram({}) : BadUsage("no command given");
    }
    const std::string& word = arguments.front();
    if (word == "help" && arguments.size() == 2) return Main({arguments[1], "--help"});
    if (word == "--help" || word == "-h" || word == "help") {
        WriteOut(Help());
        return exitStatus::success;
    }
    if (word == "--manual-options") {  // for tools/man-options
        WriteOut(ManualOptions());
        return exitStatus::success;
    }
    if (word == "--version") {
        WriteOut("photrak " PHOTRAK_VERSION "\n");
        return exitStatus::success;
    }
    for (const Command& command : commandTable) {
        if (word == command.name) return Execute(command, {arguments.begin() + 1, arguments.end()});
    }
    if (std::filesystem::path(word).extension() == ".top") {
        return StartWorkbenchProgram(arguments);
    }
    const std::string nearest =
        NearestOf(word, commandTable, [](const Command& command) { return command.name; });
    return BadUsage(Concat("unknown command '", word, "'", DidYouMean(nearest)));
}

/// What memory ran out for is the last word, whoever took no notice of it or spoke of it already:
/// no success is one then. Allocates nothing but for the document.
int TellShortage() {
    const std::string_view parts[] = {"photrak: error: ", ShortageText(), "\n"};
    std::fflush(stderr);
    for (const std::string_view part : parts) {
        if (::write(STDERR_FILENO, part.data(), part.size()) < 0) break;
    }
    CurrentOutcome().Add("error", ShortageText());
    return exitStatus::failed;
}

/// A listing that does not arrive is no success.
int Finished(int status) {
    if (ShortageCount() > 0) status = TellShortage();
    if (CurrentOutcome().IsAsked()) outputForDocument.Print(CurrentOutcome().Document(status));
    if (std::fflush(stdout) == 0 && !std::ferror(stdout)) return status;
    Report("error", "standard output could not be written");
    return status == exitStatus::success ? exitStatus::failed : status;
}

}  // namespace
}  // namespace photrak

namespace {

int Guarded(int argc, char** argv) {
    try {
        return photrak::Main({argv + 1, argv + argc});
    } catch (const std::bad_alloc&) {  // told at the end
        photrak::NoteShortage(0);
    } catch (const std::exception& failure) {
        photrak::Report("error", failure.what());
    }
    return photrak::exitStatus::failed;
}

}  // namespace

int main(int argc, char** argv) {
    photrak::KeepFreedMemory();
    try {
        return photrak::Finished(Guarded(argc, argv));
    } catch (const std::bad_alloc&) {  // for the document; the words were told
        return photrak::exitStatus::failed;
    }
}

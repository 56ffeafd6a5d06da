// photrak new and photrak example: a topology to begin with, empty or from the examples.

#include <algorithm>
#include <filesystem>
#include <vector>

#include "base/nearest.h"
#include "base/text.h"
#include "files/superblock_file.h"
#include "files/topology_blocks.h"
#include "files/value_inspection.h"
#include "kernel/result_names.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/session.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view firstLink =
    R"(NOTE A new link: 128 bits and a plot of them. 'photrak run' writes new-bits_bin.sig; docs/formats/topology.md tells how a topology is written.
LOCKED NO

BEGINVARIABLES
rate DoubleType 10e9
ENDVARIABLES

SIMOPTIONS
SIMMODE SpecifiedValueMode
PLOTTING UsePlotIconSettings
OUTPUTPREFIX new-
ENDSIMOPTIONS

NODEBEGIN 1 BinSigType
SIGNALSAVEMODE DeleteIntermediate
ENDNODE

COMPONENT Bits PseudoRandomBinarySequenceGenerator
NOTE a source: its input stands on node 0, its output on node 1, where the plot reads
ICON pseudorandombinarysequencegenerator 45 45
NUMINPUTS 1
NUMOUTPUTS 1
INPUTFROM 0
OUTPUTTO 1

PARAM bitRate DoubleType
VALUE rate
ENDPARAM

PARAM patternLength IntType
VALUE 7
ENDPARAM

ENDCOMPONENT

COMPONENT Trace SignalPlot
NOTE 'photrak models TYPE --block' prints a block to add; 'photrak check' tells what does not fit
ICON signalplot 90 45
NUMINPUTS 1
NUMOUTPUTS 1
INPUTFROM 1
OUTPUTTO 0

PARAM FilenameRoot StringType
VALUE bits
ENDPARAM

PARAM Plot EnumType
VALUE Save
ENDPARAM

ENDCOMPONENT
)";

/// Never over a file of the user.
bool WriteNew(const std::string& path, std::string_view text) {
    std::error_code error;
    std::string reason = "it exists already";
    const bool isNew = !fs::exists(fs::symlink_status(path, error));
    if (isNew && WriteFileAtOnce(path, text, reason)) {
        WriteOut(path + "\n");
        return true;
    }
    Report("error", Concat("could not write '", path, "': ", reason));
    return false;
}

std::string ExampleFolder() {
    return ExecutableDirectory() + "examples/";
}

std::vector<std::string> ExampleNames() {
    std::vector<std::string> files, names;
    std::string error;
    // Where there is no folder there are no examples.
    [[maybe_unused]] const bool listed = ListFolder(ExampleFolder(), files, error);
    for (const std::string& file : files) {
        if (file.size() > 4 && file.ends_with(".top"))
            names.push_back(file.substr(0, file.size() - 4));
    }
    std::ranges::sort(names);
    return names;
}

/// The note of a topology up to its first sentence's end.
std::string FirstSentence(const std::string& text) {
    LineReader lines(text, {});
    if (!lines.Next() || lines.Word() != "NOTE") return {};
    const std::string note(lines.Rest());
    for (std::size_t at = note.find_first_of(".:"); at != std::string::npos;
         at = note.find_first_of(".:", at + 1)) {
        if (at + 1 == note.size() || note[at + 1] == ' ') return note.substr(0, at);
    }
    return note;
}

int ListExamples() {
    std::size_t width = 0;
    for (const std::string& name : ExampleNames()) width = std::max(width, name.size());
    for (std::string name : ExampleNames()) {
        std::string text, reason;
        if (!ReadWholeFile(ExampleFolder() + name + ".top", text, reason)) continue;
        name.resize(width + 2, ' ');
        WriteOut(Concat(name, FirstSentence(text), "\n"));
    }
    return exitStatus::success;
}

/// The names of a topology and of all files beside it that it needs, through its SuperBlocks.
void GatherFiles(const std::string& name, const Catalogue& catalogue,
                 std::vector<std::string>& files) {
    std::string text, reason;
    const std::string path = ExampleFolder() + name;
    if (std::ranges::find(files, name) != files.end()) return;
    if (!ReadWholeFile(path, text, reason, maxTopologyBytes)) return;
    files.push_back(name);
    if (!name.ends_with(".top")) return;
    const Inspection found = InspectTopologyText(text, path, catalogue);
    for (const TypedValue& value : found.values) {
        if (value.definition->type == StringType && IsAllowedResultName(value.text)) {
            GatherFiles(value.text, catalogue, files);
        }
    }
    for (const TypedComponent& block : found.components) {
        if (block.superBlock.empty()) continue;
        GatherFiles(block.superBlock + ".dts", catalogue, files);
        GatherFiles(block.superBlock + ".top", catalogue, files);
    }
}

}  // namespace

int NewCommand(const CommandOptions& options) {
    const bool hasExtension = !fs::path(options.file).extension().empty();
    const std::string path = hasExtension ? options.file : options.file + ".top";
    return WriteNew(path, firstLink) ? exitStatus::success : exitStatus::failed;
}

int ExampleCommand(const CommandOptions& options) {
    if (options.file.empty()) return ListExamples();
    Session session;
    if (!OpenCatalogue(session)) return exitStatus::failed;
    const std::string name = options.file.ends_with(".top") ? options.file : options.file + ".top";
    std::vector<std::string> files;
    const std::vector<std::string> known = ExampleNames();
    if (std::ranges::find(known, fs::path(name).stem().string()) != known.end()) {
        GatherFiles(fs::path(name).filename().string(), session.catalogue, files);
    }
    if (files.empty()) {
        const auto self = [](const std::string& one) { return one; };
        Report("error", Concat("no example '", options.file, "'; see photrak example",
                               DidYouMean(NearestOf(options.file, known, self))));
        return exitStatus::failed;
    }
    bool isWhole = true;
    for (const std::string& file : files) {
        std::string text, reason;
        isWhole =
            ReadWholeFile(ExampleFolder() + file, text, reason) && WriteNew(file, text) && isWhole;
    }
    return isWhole ? exitStatus::success : exitStatus::failed;
}

}  // namespace photrak

// One or more COMPONENT blocks of name, type, note and values, all for the same component.
#include "files/param_file.h"

#include <cerrno>
#include <cstring>
#include <new>

#include "base/escape.h"
#include "base/line_reader.h"
#include "base/text.h"
#include "files/param_save.h"
#include "files/param_values.h"
#include "files/topology_blocks.h"
#include "files/topology_words.h"
#include "kernel/parameters.h"
#include "kernel/symbols.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

// Each block evaluates all parameters, and may report on each of them.
constexpr int maxBlocks = 1024;
constexpr std::size_t enoughText = 16384;

/// Evaluates over a symbol table of its own, which may be too small for the variables. `stepsLeft`
/// is the evaluator's budget for all blocks of a file.
Status Evaluate(Component& component, Workspace& workspace, std::int64_t& stepsLeft,
                std::string& text) {
    Status status = Status::Error;
    const EscapeLevel level(/*armed=*/true);
    try {
        if (level.Refused()) {
            text += "ERROR: nested too deeply\n";
            return Status::Error;
        }
        status = BuildSymbolTable(workspace, text);
        workspace.symbols.stepsLeft = stepsLeft;
        MergeStatus(status, EvalComponentParams(component, &workspace, text));
        stepsLeft = workspace.symbols.stepsLeft;
    } catch (const Escape& escape) {
        text += Concat("ERROR: ", escape.message, "\n");
    } catch (const std::bad_alloc&) {
        text += "ERROR: out of memory\n";
    }
    FreeSymbolTable(workspace);
    return status;
}

/// Limits what evaluates to one value. A complex number has no limits to bite.
Status Clamp(Component& component, std::string& text) {
    Status status = Status::Success;
    for (Parameter& parameter : Items(component.parameters)) {
        if (!HasValue(TypeOf(parameter.type)) || parameter.type == ComplexType) continue;
        if (parameter.valactual) MergeStatus(status, ClampParam(parameter, text));
    }
    return status;
}

/// One load: the component that is filled and what is reported of it.
class ParamFileReader {
  public:
    ParamFileReader(Component& component, Workspace& workspace, LineReader& lines)
        : component_(component), workspace_(workspace), lines_(lines) {}

    Status Read(std::string& text);

  private:
    bool ReadHead(std::string& fault);
    void ReadNote();
    void ReadBlock();

    Component& component_;
    Workspace& workspace_;
    LineReader& lines_;
    Status status_ = Status::Success;
    std::string report_;
    std::int64_t stepsLeft_ = symbolTableSteps;
};

/// The line "COMPONENT name type [file]", whose first word has been read.
bool ParamFileReader::ReadHead(std::string& fault) {
    const std::string_view name = lines_.Word();
    const std::string_view type = lines_.Word();
    const std::string_view file = lines_.Word();
    if (name.empty()) {
        fault = "Error: Component name missing in parameter file";
    } else if (type.empty()) {
        fault = "Component type missing in parameter file";
    } else if (type != component_.type || (!file.empty() && !component_.superBlockFile.empty() &&
                                           file != component_.superBlockFile)) {
        fault = "Error: Parameter file model type doesn't match component";
    }
    return fault.empty();
}

/// The line after the head, if it is a note; any other belongs to the values. An empty note leaves
/// the one that the component has.
void ParamFileReader::ReadNote() {
    const LineReader atHead = lines_;
    if (!lines_.Next() || lines_.Word() != "NOTE") {
        lines_ = atHead;
        return;
    }
    const std::string note = CleanLine(lines_.Text());
    if (!note.empty()) component_.NOTE = note;
}

void ParamFileReader::ReadBlock() {
    ReadNote();
    std::string report;
    Status status = ReadParamValues(component_, lines_, report);
    if (status == Status::Error && report.empty()) {
        report = Concat("ERROR: ", lines_.Where(), ": a parameter does not fit its model\n");
    }
    if (status != Status::Error) {
        MergeStatus(status, Evaluate(component_, workspace_, stepsLeft_, report));
        MergeStatus(status, Clamp(component_, report));
    }
    MergeStatus(status_, status);
    if (report_.size() < enoughText) report_ += report;
}

Status ParamFileReader::Read(std::string& text) {
    int blocks = 0;
    while (lines_.Next()) {
        if (lines_.Word() != "COMPONENT") continue;
        std::string fault;
        if (!ReadHead(fault)) {
            text += fault;
            return Status::Error;
        }
        if (++blocks > maxBlocks) {
            status_ = Status::Error;
            report_ += Concat("ERROR: ", lines_.Where(), ": more than ", maxBlocks, " blocks\n");
            break;
        }
        ReadBlock();
    }
    text += Concat(status_ == Status::Error ? "Error loading parameters: " : "", report_);
    return status_;
}

}  // namespace

Status EvaluateForParamFile(Component& component, Workspace& workspace, std::string& text) {
    std::int64_t stepsLeft = symbolTableSteps;
    return Evaluate(component, workspace, stepsLeft, text);
}

std::string ParamFileName(const std::string& chosen, const std::string& former) {
    if (chosen.empty() || chosen.ends_with('/')) return former;
    const std::size_t separator = chosen.rfind('/');
    const std::size_t element = separator == std::string::npos ? 0 : separator + 1;
    return chosen.find('.', element) == std::string::npos ? chosen + ".prm" : chosen;
}

Status ParamFileText(const Component& component, std::string& out) {
    Status status = Status::Success;
    const std::string file = CleanWord(component.superBlockFile);
    out += Concat("COMPONENT ", CleanName(component.name), " ", CleanWord(component.type),
                  file.empty() ? "" : " ", file, "\n");
    out += Concat("NOTE ", CleanLine(component.NOTE), "\n");
    for (const Parameter& parameter : Items(component.parameters)) {
        std::string block;
        WriteParamBlock(parameter, block);
        if (block.empty()) {
            status = Status::Error;
        } else {
            out += "\n" + block;
        }
    }
    out += "\nENDCOMPONENT\n";
    return status;
}

Status SaveParamFile(const Component& component, const std::string& fileName, std::string& text) {
    std::string out;
    const Status status = ParamFileText(component, out);
    errno = ENOENT;
    if (fileName.empty() || !ReplaceFile(fileName, out)) {
        text += Concat("Cannot open file to save parameters. (", std::strerror(errno), ")");
        return Status::Error;
    }
    if (status == Status::Error) text += "Error saving parameters.";
    return status;
}

Status LoadParamText(Component& component, Workspace& workspace, std::string_view fileText,
                     const std::string& name, std::string& text) {
    LineReader lines(fileText, name);
    return ParamFileReader(component, workspace, lines).Read(text);
}

Status LoadParamFile(Component& component, Workspace& workspace, const std::string& fileName,
                     std::string& text) {
    std::string fileText, reason;
    if (!ReadWholeFile(fileName, fileText, reason, maxTopologyBytes)) {
        text += "Cannot open file to load parameters.";
        return Status::Error;
    }
    return LoadParamText(component, workspace, fileText, fileName, text);
}

}  // namespace photrak

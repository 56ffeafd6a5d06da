// The steps of an execution in their order: load, ports, options, parameters, run, outputs.
#include "hierarchy/nested_run.h"

#include <filesystem>

#include "base/text.h"
#include "files/topology.h"
#include "hierarchy/nested_parameters.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "kernel/result_names.h"
#include "kernel/signals.h"
#include "platform/full_path.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

/// A signal between two topologies, owned.
struct TransferCell {
    std::int32_t sigType = UnknownSigType;
    void* sig = nullptr;

    TransferCell() = default;
    ~TransferCell() { FreeSignal(&sig, sigType); }
    TransferCell(const TransferCell&) = delete;
    TransferCell& operator=(const TransferCell&) = delete;
};

TransferCell* CellOf(const Component& block) {
    return static_cast<TransferCell*>(block.transfer.get());
}

bool IsSignal(std::int32_t sigType) {
    return sigType == OpSigType || sigType == ElecSigType || sigType == BinSigType;
}

/// A deep copy of a port's signal in a new cell of the block. False when it cannot be copied.
bool FillCell(Component& block, const Nodelist& port) {
    auto cell = std::make_shared<TransferCell>();
    cell->sigType = port.sigType;
    if (IsSignal(port.sigType) && port.sig && CopySignal(&cell->sig, port.sig, port.sigType) != 0) {
        return false;
    }
    block.transfer = std::move(cell);
    return true;
}

void MoveCell(Component& block, Nodelist& port) {
    TransferCell* cell = CellOf(block);
    if (!cell) return;
    port.sigType = cell->sigType;
    port.sig = std::exchange(cell->sig, nullptr);
    block.transfer.reset();
}

std::string_view CopyFailure(std::int32_t sigType) {
    if (sigType == ElecSigType) return "ERROR copying electrical signal in SuperBlock \n";
    if (sigType == OpSigType) return "ERROR copying optical signal in SuperBlock \n";
    return "ERROR copying binary signal in SuperBlock \n";
}

/// Port by port, until inputs or In blocks run out.
Status HandIn(const ModelCall& call, const std::vector<Component*>& ins) {
    const Nodelist* input = call.inputs;
    for (Component* block : ins) {
        if (!input) break;
        if (!FillCell(*block, *input)) {
            return call.Fail(CopyFailure(input->sigType),
                             "ERROR copying signals to lower hierarchy in SuperBlock:",
                             call.component.superBlockFile, "\n");
        }
        input = input->next;
    }
    return Status::Success;
}

void HandOut(const ModelCall& call, const std::vector<Component*>& outs) {
    Nodelist* output = call.outputs;
    for (Component* block : outs) {
        if (!output) break;
        MoveCell(*block, *output);
        output = output->next;
    }
}

/// By design nothing of the inner file's own sweeps and prefixes is left: the run outside rules.
void SetOptions(const SimOptions& outer, std::string_view name, SimOptions& inner) {
    RunSettings settings;
    settings.SAVEPARAMS = outer.SAVEPARAMS;
    // Without a tag the passes of a loop would overwrite each other's plots.
    settings.PLOTTING = SomeLoopLacksItsTag(outer) ? DoNotPlot : outer.PLOTTING;
    settings.SIGSAVEMODE = outer.SIGSAVEMODE;
    settings.set = outer.set;
    settings.innerIndex = outer.innerIndex;
    settings.outerIndex = outer.outerIndex;
    settings.runIndex = outer.runIndex;
    settings.binIndex = outer.binIndex;
    settings.loopIndex = outer.loopIndex;
    settings.loopSuffix = outer.loopSuffix;
    settings.OUTPUTPREFIX = NestedPrefix(outer, name);
    static_cast<RunSettings&>(inner) = settings;
}

/// Leaves the list of files under way when the run ends, however it ends.
class OpenFile {
  public:
    OpenFile(std::vector<std::string>& open, std::string file) : open_(open) {
        open_.push_back(std::move(file));
    }
    ~OpenFile() { open_.pop_back(); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

  private:
    std::vector<std::string>& open_;
};

/// The files from the first that is met again on, as "a.top -> b.top -> a.top"; empty if the file
/// is not under way.
std::string ChainTo(const std::vector<std::string>& open, const std::string& file) {
    std::string chain;
    bool inside = false;
    for (const std::string& one : open) {
        inside = inside || one == file;
        if (inside) chain += fs::path(one).filename().string() + " -> ";
    }
    return inside ? chain + fs::path(file).filename().string() : chain;
}

}  // namespace

std::string NestedPrefix(const SimOptions& outer, std::string_view name) {
    const std::string& prefix = PrefixInUse(outer);
    std::string nested = prefix.empty() ? "phtmp" : prefix;
    if (!nested.ends_with('_')) nested += '_';
    return Concat(nested, name, ResultTags(outer), "_");
}

std::string NestedFile(const Component& block, std::string_view extension,
                       const Workspace& workspace, const Catalogue& catalogue) {
    const std::string folder = fs::path(workspace.fileName).parent_path().string();
    return FindSuperBlockFile(Concat(block.superBlockFile, extension), catalogue, folder)
        .value_or("");
}

Status SuperBlockRuns::Run(const ModelCall& call, const ModelTable& models) const {
    const std::string found = NestedFile(call.component, ".top", call.workspace, catalogue_);
    const std::string file = found.empty() ? call.component.superBlockFile + ".top" : found;
    if (!stack_.open.empty()) return RunFile(call, models, file);
    if (stack_.outermost != &call.workspace || stack_.set != call.options.set) {
        stack_ = {{}, &call.workspace, call.options.set};
        stack_.draws = (call.options.mode & simMode::statistical) != 0;
    }
    const OpenFile outermost(stack_.open, ResolvedPath(call.workspace.fileName));
    return RunFile(call, models, file);
}

/// Once in a run for each parameter; the draws were made for the outermost topology alone.
Status SuperBlockRuns::WarnOfDeviation(const ModelCall& call, const Workspace& inner) const {
    if (!stack_.draws) return Status::Success;
    const std::string undrawn = DeviationInside(inner);
    if (undrawn.empty() || !stack_.undrawn.insert(undrawn).second) return Status::Success;
    return call.Warn("WARNING: the deviation of ", undrawn,
                     " does not draw: it is inside a SuperBlock\n");
}

Status SuperBlockRuns::RunFile(const ModelCall& call, const ModelTable& models,
                               const std::string& file) const {
    const std::string canonical = ResolvedPath(file);
    const std::string chain = ChainTo(stack_.open, canonical);
    if (!chain.empty()) return call.Refuse("a SuperBlock contains itself: ", chain);
    if (stack_.open.size() > deepestNesting) {
        return call.Refuse("SuperBlocks are nested more than ", deepestNesting, " deep");
    }
    const OpenFile open(stack_.open, canonical);

    std::unique_ptr<Workspace> inner;
    Status status = TopologyLoad(file, inner, catalogue_);
    if (inner) {
        call.errorText += inner->errorText;
        inner->errorText.clear();
    }
    if (status == Status::Error || !inner) {
        return call.Refuse("its topology '", file, "' did not load");
    }
    inner->name = Concat(call.path, call.owner, ":");
    inner->fileName = file;
    const SuperBlockPorts ports = FindSuperBlockPorts(*inner);
    if (HandIn(call, ports.ins) == Status::Error) return Status::Error;
    SetOptions(call.options, call.component.name, *inner->options);
    PassParameters(call.component, *inner);
    MergeStatus(status, WarnOfDeviation(call, *inner));
    MergeStatus(status, SimulateNested(*inner, models, call.errorText));
    if (status != Status::Error) HandOut(call, ports.outs);
    DestroyWorkspace(inner);
    return status;
}

// --- Ports ---

namespace {

struct InBlockParams {
    std::int32_t portNumber = 0;
};
constexpr ParamRow<InBlockParams> portRows[] = {{"portNumber", &InBlockParams::portNumber, 1}};
// Read by whoever writes the definition of the SuperBlock, not by the run.
constexpr ParamRow<InBlockParams> typeRows[] = {
    {"signalType", NoEffect{}, "UnknownSigType",
     Words{"UnknownSigType OpSigType ElecSigType OpOrElecSigType BinSigType"}}};

}  // namespace

std::vector<ParamSpec> InBlockParamSpecs() {
    return SpecsOf(portRows, typeRows);
}

std::vector<ParamSpec> OutBlockParamSpecs() {
    return SpecsOf(portRows);
}

Status RunInBlock(const ModelCall& call) {
    if (!call.outputs) return Status::Success;
    if (CellOf(call.component)) {
        MoveCell(call.component, *call.outputs);
        return Status::Success;
    }
    InBlockParams params;
    ReadParams(portRows, call.component.parameters, params);
    return call.Warn("WARNING: component '", call.path, call.owner,
                     "': nothing stands at input port ", params.portNumber,
                     "; a topology with In blocks is meant to run as a SuperBlock\n");
}

Status RunOutBlock(const ModelCall& call) {
    if (!call.inputs || FillCell(call.component, *call.inputs)) return Status::Success;
    return call.Fail("ERROR copying signals to OutBlock ", call.component.name, "\n");
}

}  // namespace photrak

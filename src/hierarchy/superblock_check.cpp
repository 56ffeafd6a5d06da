// One walk through the levels; the definition beside each topology is held against what the
// topology says now.
#include "hierarchy/superblock_check.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <vector>

#include "base/text.h"
#include "files/model_definition.h"
#include "files/topology.h"
#include "files/topology_check.h"
#include "hierarchy/nested_parameters.h"
#include "hierarchy/nested_run.h"
#include "kernel/expression.h"
#include "kernel/graph.h"
#include "kernel/order.h"
#include "kernel/parameters.h"
#include "platform/full_path.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

constexpr int mostBlocks = 2000;  // looked into; a file can ask for any number of copies

void Warn(std::string& text, Status& status, const std::string& warning) {
    text += "WARNING: " + warning + "\n";
    MergeStatus(status, Status::Warning);
}

/// Ports that meet at one number, or leave a number out.
void CheckPortNumbers(std::string_view side, const std::vector<Component*>& blocks,
                      std::string& text, Status& status) {
    std::int32_t expected = 1;
    for (const Component* block : blocks) {
        const std::int32_t number = GetParamInt(block->parameters, "portNumber", 0);
        if (number < expected) {
            Warn(text, status,
                 Concat(side, " port ", number, " stands twice, again at block '", block->name,
                        "'"));
        } else if (number > expected) {
            Warn(text, status,
                 Concat(side, " port ", expected, " is left out: block '", block->name,
                        "' with port ", number, " takes its place"));
            expected = number + 1;
        } else {
            ++expected;
        }
    }
}

class Walk {
  public:
    Walk(const Catalogue& catalogue, std::string& text) : catalogue_(catalogue), text_(text) {}

    Status Into(const Workspace& workspace) {
        open_.push_back(ResolvedPath(workspace.fileName));
        for (const auto& component : workspace.components) {
            if (component->type == superBlockType) Block(*component, workspace);
        }
        open_.pop_back();
        return status_;
    }

  private:
    void Block(const Component& block, const Workspace& workspace) {
        const std::string path = workspace.name + block.name;
        if (++blocks_ > mostBlocks) return;
        if (open_.size() > deepestNesting) {
            Fault(Concat("ERROR: component '", path, "': SuperBlocks are nested more than ",
                         deepestNesting, " deep\n"));
            return;
        }
        const std::string file = NestedFile(block, ".top", workspace, catalogue_);
        if (file.empty()) {
            Fault(Concat("ERROR: component '", path, "': the topology '", block.superBlockFile,
                         ".top' is nowhere to be found\n"));
            return;
        }
        if (std::ranges::find(open_, ResolvedPath(file)) != open_.end()) {
            Fault(Concat("ERROR: component '", path,
                         "': a SuperBlock contains itself: ", Chain(ResolvedPath(file)), "\n"));
            return;
        }
        Inside(block, workspace, path, file);
    }

    void Inside(const Component& block, const Workspace& workspace, const std::string& path,
                const std::string& file) {
        std::unique_ptr<Workspace> inner;
        std::string own;
        const Status loaded = TopologyCheckNamed(file, path + ":", inner, catalogue_);
        MergeStatus(status_, loaded);
        if (!inner) return;
        text_ += Prefixed(path, inner->errorText);
        inner->fileName = file;
        const Status ports = CheckAsSuperBlock(*inner, own);
        MergeStatus(status_, ports);
        text_ += Prefixed(path, own);
        CheckDefinition(block, workspace, path, *inner);
        CheckWithValues(block, path, *inner);
        MergeStatus(status_, Into(*inner));
        DestroyWorkspace(inner);
    }

    /// Again with the values that the block hands down; what is known is not told twice.
    void CheckWithValues(const Component& block, const std::string& path, Workspace& inner) {
        PassParameters(block, inner);
        const std::size_t known = inner.errorText.size();
        MergeStatus(status_, CheckTopologyGraph(inner, inner.errorText));
        text_ += Prefixed(path, inner.errorText.substr(known));
    }

    /// The definition is older than the topology when their ports or names differ.
    void CheckDefinition(const Component& block, const Workspace& workspace,
                         const std::string& path, const Workspace& inner) {
        const std::string stale = Concat("component '", path, "': '", inner.fileName,
                                         "' has changed since its definition was written: ");
        const std::string remedy = " ('photrak superblock' writes it anew)";
        Component definition;
        definition.name = definition.type = superBlockType;
        std::string ignored;  // the topology around the block did load it
        static_cast<void>(ReadModelDefinition(
            definition, NestedFile(block, ".dts", workspace, catalogue_), ignored));
        if (!HasPortsOf(definition, FindSuperBlockPorts(inner))) {
            Warn(text_, status_, Concat(stale, "its ports differ", remedy));
        }
        std::set<std::string_view> names;
        for (const Variable& variable : inner.variables) {
            if (!names.insert(variable.name).second) continue;
            if (FindParameter(variable.name, block.parameters)) continue;
            Warn(text_, status_,
                 Concat(stale, "it lacks the parameter '", variable.name, "'", remedy));
        }
        for (const Parameter& parameter : Items(block.parameters)) {
            if (names.contains(parameter.name)) continue;
            Warn(text_, status_,
                 Concat(stale, "no variable has the name of its parameter '", parameter.name, "'",
                        remedy));
        }
    }

    void Fault(const std::string& text) {
        text_ += text;
        status_ = Status::Error;
    }

    std::string Chain(const std::string& file) const {
        std::string chain;
        for (auto one = std::ranges::find(open_, file); one != open_.end(); ++one) {
            chain += fs::path(*one).filename().string() + " -> ";
        }
        return chain + fs::path(file).filename().string();
    }

    /// Every line that is a finding of its own tells where it was found.
    static std::string Prefixed(const std::string& path, const std::string& text) {
        return text.empty() ? text : Concat("in '", path, "':\n", text);
    }

    const Catalogue& catalogue_;
    std::string& text_;
    std::vector<std::string> open_;
    int blocks_ = 0;
    Status status_ = Status::Success;
};

}  // namespace

Status CheckSuperBlocks(const Workspace& workspace, const Catalogue& catalogue,
                        std::string& errorText) {
    Status status = Status::Success;
    const SuperBlockPorts ports = FindSuperBlockPorts(workspace);
    if (!ports.ins.empty() || !ports.outs.empty()) status = CheckAsSuperBlock(workspace, errorText);
    MergeStatus(status, Walk(catalogue, errorText).Into(workspace));
    return status;
}

Status CheckAsSuperBlock(const Workspace& workspace, std::string& errorText) {
    Status status = Status::Success;
    const SuperBlockPorts ports = FindSuperBlockPorts(workspace);
    CheckPortNumbers("input", ports.ins, errorText, status);
    CheckPortNumbers("output", ports.outs, errorText, status);
    if (!workspace.fileName.empty() && !CanNameASuperBlock(workspace.fileName)) {
        Warn(errorText, status,
             Concat("no block can name '", workspace.fileName,
                    "': the name of a SuperBlock's file may hold no blank, colon or quote"));
    }
    std::set<std::string_view> names;
    for (const Variable& variable : workspace.variables) {
        if (!names.insert(variable.name).second) {
            Warn(errorText, status,
                 Concat("variable '", variable.name, "' is declared twice; the first counts"));
        } else if (!CanNameASymbol(variable.name)) {
            Warn(errorText, status,
                 Concat("variable '", variable.name, "' is hidden by the built-in value"));
        }
    }
    return status;
}

}  // namespace photrak

// Loading a topology: the top-level keywords of the file, in one pass, under an escape level of its
// own.
#include "files/topology_load.h"

#include <algorithm>
#include <iostream>
#include <new>

#include "base/escape.h"
#include "base/text.h"
#include "files/topology.h"
#include "files/topology_blocks.h"
#include "files/topology_check.h"
#include "files/topology_words.h"
#include "kernel/graph.h"
#include "kernel/symbols.h"
#include "platform/file_system.h"

namespace photrak {

namespace {

struct BlockKeyword {
    std::string_view keyword;
    Status (*read)(TopologyContext& context);
};
constexpr BlockKeyword blockKeywords[] = {
    {"NOTE", ReadNoteLine},
    {"LOCKED", ReadLockedLine},
    {"BEGINVARIABLES", ReadVariables},
    {"SIMOPTIONS", ReadOptions},
    {"BEGINNODES", ReadBeginNodes},
    {"ENDNODES", ReadEndNodes},
    {"NODEBEGIN", ReadNodeBlock},
    {"COMPONENT", ReadComponentBlock},
};

constexpr int maxFaultsTold = 1000;

Status ReadBlock(TopologyContext& context) {
    const std::string_view keyword = context.lines.Word();
    const auto block = std::ranges::find(blockKeywords, keyword, &BlockKeyword::keyword);
    if (block != std::end(blockKeywords)) return block->read(context);
    // By design: an unknown keyword is reported on the error stream only, so that a file with
    // keywords of another tool loads.
    if (!keyword.empty() && context.unknownKeywords++ < maxFaultsTold) {
        std::cerr << "\nTopologyLoad: I do not understand the following keyword: "
                  << CleanWord(keyword) << "\n";
    }
    return Status::Success;
}

Status ReadBlocks(TopologyContext& context) {
    Status status = Status::Success;
    int faults = 0;
    for (;;) {
        if (context.lineIsUnread) {
            context.lineIsUnread = false;
            context.lines.Rewind();
        } else if (!context.lines.Next()) {
            return status;
        }
        const Status block = ReadBlock(context);
        MergeStatus(status, block);
        if (block != Status::Error) continue;
        if (context.afterFault == AfterFault::Stop || ++faults == maxFaultsTold) return status;
    }
}

NodeListCells CellsOf(const std::vector<Node*>& nodes) {
    NodeListCells list;
    list.cells.assign(nodes.begin(), nodes.end());
    for (const Node* node : nodes) list.numbers.insert(node->number);
    return list;
}

/// From the order of the file into that of a workspace: ascending by name, of equal names the later
/// first. At once, since a sorted list of 10^5 blocks is not built one by one.
void SortComponents(ComponentList& components) {
    std::ranges::reverse(components);
    std::ranges::stable_sort(components, {}, [](const auto& component) -> const std::string& {
        return component->name;
    });
}

/// Reads all blocks into a new workspace. The lists of nodes are put back and the symbol table is
/// freed however the reading ends.
Status ReadTopology(LineReader& lines, Workspace& workspace, const Catalogue& catalogue,
                    AfterFault afterFault) {
    TopologyContext context{lines,
                            workspace,
                            catalogue,
                            afterFault,
                            CellsOf(workspace.BEGINNODES),
                            CellsOf(workspace.ENDNODES),
                            {}};
    Status status = Status::Error;
    const EscapeLevel level(/*armed=*/true);
    try {
        if (level.Refused()) return Fault(context, "ERROR: TopologyLoad: nested too deeply\n");
        status = ReadBlocks(context);
    } catch (const Escape& escape) {
        status = Fault(context, Concat("ERROR: TopologyLoad: ", escape.message, "\n"));
    } catch (const std::bad_alloc&) {
        status = Fault(context, "ERROR: TopologyLoad: out of memory\n");
    }
    SortComponents(workspace.components);
    workspace.BEGINNODES.assign(context.beginNodes.cells.begin(), context.beginNodes.cells.end());
    workspace.ENDNODES.assign(context.endNodes.cells.begin(), context.endNodes.cells.end());
    FreeSymbolTable(workspace);
    return status;
}

bool Renew(std::unique_ptr<Workspace>& workspace) {
    DestroyWorkspace(workspace);
    workspace = CreateWorkspace();
    return workspace != nullptr;
}

/// Where the text of a topology comes from; false with a reason in the error text.
bool ReadTopologyFile(const std::string& fileName, std::string& text, std::string& errorText) {
    if (fileName.empty()) {
        errorText += "ERROR: TopologyLoad: The filename was \"\"\n";
        return false;
    }
    std::string reason;
    if (ReadWholeFile(fileName, text, reason, maxTopologyBytes)) return true;
    errorText += Concat("ERROR: TopologyLoad: cannot read '", fileName, "': ", reason, "\n");
    return false;
}

}  // namespace

Status TopologyLoadText(std::string_view text, const std::string& fileName,
                        std::unique_ptr<Workspace>& workspace, const Catalogue& catalogue) {
    if (!Renew(workspace)) return Status::Error;
    LineReader lines(text, fileName);
    return ReadTopology(lines, *workspace, catalogue, AfterFault::Stop);
}

Status TopologyLoad(const std::string& fileName, std::unique_ptr<Workspace>& workspace,
                    const Catalogue& catalogue) {
    if (!Renew(workspace)) return Status::Error;
    std::string text;
    if (!ReadTopologyFile(fileName, text, workspace->errorText)) return Status::Error;
    return TopologyLoadText(text, fileName, workspace, catalogue);
}

namespace {

Status CheckText(std::string_view text, const std::string& fileName, Workspace& workspace,
                 const Catalogue& catalogue) {
    LineReader lines(text, fileName);
    Status status = ReadTopology(lines, workspace, catalogue, AfterFault::GoOn);
    MergeStatus(status, CheckTopologyGraph(workspace, workspace.errorText));
    return status;
}

}  // namespace

Status TopologyCheckText(std::string_view text, const std::string& fileName,
                         std::unique_ptr<Workspace>& workspace, const Catalogue& catalogue) {
    if (!Renew(workspace)) return Status::Error;
    return CheckText(text, fileName, *workspace, catalogue);
}

Status TopologyCheckNamed(const std::string& fileName, const std::string& path,
                          std::unique_ptr<Workspace>& workspace, const Catalogue& catalogue) {
    if (!Renew(workspace)) return Status::Error;
    workspace->name = path;
    std::string text;
    if (!ReadTopologyFile(fileName, text, workspace->errorText)) return Status::Error;
    return CheckText(text, fileName, *workspace, catalogue);
}

Status TopologyCheck(const std::string& fileName, std::unique_ptr<Workspace>& workspace,
                     const Catalogue& catalogue) {
    if (!Renew(workspace)) return Status::Error;
    std::string text;
    if (!ReadTopologyFile(fileName, text, workspace->errorText)) return Status::Error;
    return TopologyCheckText(text, fileName, workspace, catalogue);
}

}  // namespace photrak

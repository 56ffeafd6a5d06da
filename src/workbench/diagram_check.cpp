// The same checks as the command line's, against the diagram as it stands.
#include "workbench/diagram_check.h"

#include "base/log.h"
#include "base/text.h"
#include "files/topology_check.h"
#include "hierarchy/superblock_check.h"
#include "kernel/components.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

/// The first text in single quotes that names a component, or a block within one ("Line:Fiber").
std::string BlockNamed(const Workspace& workspace, std::string_view line) {
    std::size_t at = line.find('\'');
    while (at != std::string_view::npos) {
        const std::size_t end = line.find('\'', at + 1);
        if (end == std::string_view::npos) break;
        const std::string_view quoted = line.substr(at + 1, end - at - 1);
        for (const std::string_view name : {quoted, quoted.substr(0, quoted.find(':'))}) {
            if (FindComponent(name, workspace.components)) return std::string(name);
        }
        at = line.find('\'', end + 1);
    }
    return {};
}

std::string CountText(std::size_t count) {
    return count == 0   ? "Check: no faults"
           : count == 1 ? "Check: 1 finding"
                        : Concat("Check: ", count, " findings");
}

}  // namespace

std::map<std::string, std::string> FindingsByBlock(const Workspace& workspace,
                                                   std::string_view text) {
    std::map<std::string, std::string> findings;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1);
        const std::string_view line = text.substr(0, end + 1);
        text.remove_prefix(line.size());
        if (line != "\n") findings[BlockNamed(workspace, line)] += line;
    }
    return findings;
}

void CheckDiagram(Workbench& workbench, DiagramView& view) {
    if (view.running) {
        workbench.ErrorBox("Simulation already in progress.");
        return;
    }
    Workspace& workspace = *view.workspace;
    std::string text;
    const WorkingDirectory there(view.directory);
    workspace.fileName = view.fileName;
    static_cast<void>(CheckTopologyGraph(workspace, text));
    static_cast<void>(CheckSuperBlocks(workspace, workbench.catalogue, text));
    view.findings = FindingsByBlock(workspace, text);
    std::size_t count = 0;
    for (const char c : text) count += c == '\n';
    if (!text.empty() && !there.Failed()) LogText(text);
    // As at the start of a run the pane tells of the first name that several blocks have.
    const std::string repeated = RepeatedNamesText(workspace);
    const std::string first = repeated.substr(0, repeated.find('\n'));
    workbench.pane = first.empty() ? CountText(count)
                     : count == 1  ? first
                                   : Concat(first, "; ", CountText(count));
    const auto unnamed = view.findings.find("");
    if (unnamed != view.findings.end()) workbench.InfoBox(unnamed->second);
}

}  // namespace photrak

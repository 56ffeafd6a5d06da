// Files of results lie in the directory of the diagram.
#include "workbench/block_opening.h"

#include <filesystem>

#include "base/text.h"
#include "kernel/result_names.h"
#include "platform/file_system.h"
#include "results/signal_summary_file.h"
#include "workbench/file_commands.h"
#include "workbench/plot_choice_form.h"
#include "workbench/superblock_paths.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

/// Without a prefix of the user the file begins as other results do.
std::string SummaryName(const SimOptions& options, const Node& node) {
    const std::string name = SummaryFileName(options, node);
    return PrefixInUse(options).empty() ? "phtmp" + name : name;
}

void OpenSummary(Workbench& workbench, const DiagramView& view, const Hit& hit) {
    if (view.running) {
        workbench.ErrorBox("Simulation already in progress.");
        return;
    }
    const Node* node =
        PortsOf(*hit.component, hit.side)[static_cast<std::size_t>(hit.port) - 1].node;
    if (!node || node->summaries.empty()) {
        workbench.InfoBox("No signal on this port yet.");
        return;
    }
    const std::string name = SummaryName(*view.workspace->options, *node);
    const std::string path = (fs::path(view.directory) / name).string();
    if (!IsAllowedResultName(name) || !WriteWholeFile(path, SummaryText(node->summaries))) {
        workbench.ErrorBox("Could not open file for signal summary data\n");
        return;
    }
    if (!workbench.desktop.StartEditor(name, view.directory)) {
        workbench.ErrorBox(Concat("Cannot start '", name, "'"));
    }
}

/// The topology of the block, found from the diagram's directory.
void OpenInside(Workbench& workbench, const DiagramView& view, const Component& block) {
    const std::string file = block.superBlockFile + ".top";
    const auto path = FindFromDiagram(file, view.directory, workbench.catalogue);
    if (path) {
        OpenDiagram(workbench, *path, OpenAgain::BringToFront);
    } else {
        workbench.ErrorBox(Concat("Cannot open '", file, "'"));
    }
}

}  // namespace

void ShowPlot(Workbench& workbench, const DiagramView& view, const std::string& file) {
    if (!workbench.desktop.StartViewer(file, view.directory)) {
        workbench.ErrorBox(Concat("Cannot start '", file, "'"));
    }
}

void OpenBlock(Workbench& workbench, DiagramView& view, const Hit& hit) {
    if (!hit.component) return;
    if (hit.port > 0) {
        OpenSummary(workbench, view, hit);
        return;
    }
    if (hit.component->type == "SuperBlock") {
        OpenInside(workbench, view, *hit.component);
        return;
    }
    if (view.running) {  // the run is writing the lists
        workbench.ErrorBox("Simulation already in progress.");
        return;
    }
    const std::vector<std::string>& plots = hit.component->plots;
    if (plots.size() == 1) {
        ShowPlot(workbench, view, plots.front());
    } else if (plots.size() > 1) {
        OpenPlotChoiceForm(workbench, view, *hit.component);
    }
}

}  // namespace photrak

// The checks of a run that need no run, over the whole graph and without stopping at the first.
#include "files/topology_check.h"

#include "base/escape.h"
#include "base/text.h"
#include "kernel/graph.h"
#include "kernel/order.h"
#include "kernel/parameters.h"
#include "kernel/symbols.h"

namespace photrak {

namespace {

constexpr int maxFindings = 1000;

/// Collects findings, each once.
class Findings {
  public:
    explicit Findings(std::string& errorText) : errorText_(errorText) {}

    void Add(Status status, const std::string& text) {
        MergeStatus(status_, status);
        if (text.empty() || errorText_.find(text) != std::string::npos) return;
        if (++told_ > maxFindings) return;
        errorText_ += text;
        if (!text.ends_with('\n')) errorText_ += '\n';
        if (told_ == maxFindings) errorText_ += "Further findings are not told.\n";
    }
    bool IsFull() const { return told_ >= maxFindings; }
    Status Result() const { return status_; }

  private:
    std::string& errorText_;
    Status status_ = Status::Success;
    int told_ = 0;
};

/// False if a port of the component stands on no node.
bool CheckNodes(const std::string& path, const Component& component, Findings& findings) {
    bool complete = true;
    const auto check = [&](const std::vector<Port>& ports, std::string_view side) {
        for (std::size_t i = 0; i < ports.size(); ++i) {
            if (ports[i].node) continue;
            complete = false;
            findings.Add(Status::Error, Concat("ERROR: component '", path, "' ", side, " port ",
                                               i + 1, " stands on no node\n"));
        }
    };
    check(component.inputs, "input");
    check(component.outputs, "output");
    return complete;
}

/// Node 0 is the ground: what reads it is a source by intent.
void CheckDrivers(const std::string& path, const Component& component, Findings& findings) {
    for (std::size_t i = 0; i < component.inputs.size(); ++i) {
        const Node* node = component.inputs[i].node;
        if (!node || node->number == 0 || !node->drivers.empty()) continue;
        findings.Add(Status::Warning,
                     Concat("WARNING: component '", path, "' input port ", i + 1,
                            " is not wired: nothing drives node ", node->number, "\n"));
    }
}

void CheckParameters(Component& component, Workspace& workspace, Findings& findings) {
    const std::string prefix =
        Concat("Component '", workspace.name, component.name, "' of type '", component.type, "': ");
    std::string report = prefix;
    const Status evaluated = EvalComponentParams(component, &workspace, report);
    findings.Add(evaluated, report == prefix ? std::string() : report);
    report.clear();
    const Status checked = CheckPorts(component, report, workspace.name);
    findings.Add(checked, report);
}

void AddRepeatedNames(const Workspace& workspace, Findings& findings) {
    const std::string text = RepeatedNamesText(workspace);
    for (std::size_t at = 0; at < text.size() && !findings.IsFull();) {
        const std::size_t end = text.find('\n', at) + 1;
        findings.Add(Status::Warning, text.substr(at, end - at));
        at = end;
    }
}

/// Every component against the symbols of the workspace; false if a port stands on no node.
bool CheckComponents(Workspace& workspace, Findings& findings) {
    std::string report;
    const Status built = BuildSymbolTable(workspace, report);
    findings.Add(built, report);
    AddRepeatedNames(workspace, findings);
    bool complete = true;
    for (const auto& component : workspace.components) {
        if (findings.IsFull()) break;
        const std::string path = workspace.name + component->name;
        complete = CheckNodes(path, *component, findings) && complete;
        CheckDrivers(path, *component, findings);
        CheckParameters(*component, workspace, findings);
    }
    return complete;
}

/// The run order tells of wired cycles.
void CheckOrder(Workspace& workspace, Findings& findings) {
    std::string report;
    RunOrder order;
    NodeSet nodes;
    const Status status = OrderWorkspace(workspace, order, nodes, report);
    findings.Add(status, report);
    for (const auto& component : workspace.components) component->runFlags = 0;
}

}  // namespace

Status CheckTopologyGraph(Workspace& workspace, std::string& errorText) {
    Findings findings(errorText);
    const EscapeLevel level(/*armed=*/true);
    try {
        if (level.Refused()) return Status::Error;
        if (CheckComponents(workspace, findings)) CheckOrder(workspace, findings);
    } catch (const Escape& escape) {
        findings.Add(Status::Error, Concat("ERROR: ", escape.message, "\n"));
    }
    FreeSymbolTable(workspace);
    return findings.Result();
}

std::string RepeatedNamesText(const Workspace& workspace) {
    std::string text;
    const ComponentList& all = workspace.components;
    for (std::size_t i = 0; i < all.size();) {
        std::size_t end = i + 1;
        while (end < all.size() && all[end]->name == all[i]->name) ++end;
        if (end - i > 1) {
            text += Concat("WARNING: ", end - i, " components are named '", all[i]->name, "'\n");
        }
        i = end;
    }
    return text;
}

}  // namespace photrak

// Wires are nodes that ports share, so that every question is one of a node or of a port.
#include "files/graph_inspection.h"

#include <algorithm>
#include <map>

#include "base/escape.h"
#include "base/text.h"
#include "files/diagnostics.h"
#include "files/result_clashes.h"
#include "files/topology_words.h"
#include "kernel/order.h"
#include "kernel/port_types.h"

namespace photrak {
namespace {

namespace d = diagnostic;

constexpr std::size_t most = 1000;

/// The kind of an end of a wire, after the model that it belongs to.
struct WireEnd {
    const Component* component;
    std::size_t port;  // from 1
    std::int32_t kind;
};

bool CanMeet(std::int32_t a, std::int32_t b) {
    const auto isOpen = [](std::int32_t kind) {
        return kind == UnknownSigType || kind == NoSigType || kind == EtcSigType;
    };
    return a == b || isOpen(a) || isOpen(b) || IsMoreParticular(a, b) || IsMoreParticular(b, a);
}

class GraphInspector {
  public:
    GraphInspector(Workspace& workspace, Inspection& inspection)
        : workspace_(workspace), found_(inspection) {
        for (const TypedComponent& component : inspection.components) {
            places_.emplace(component.name, component.place);
        }
    }

    void Run() {
        Names();
        bool isWhole = true;
        for (const auto& component : workspace_.components) {
            isWhole = Ports(*component, component->inputs, "input") && isWhole;
            isWhole = Ports(*component, component->outputs, "output") && isWhole;
        }
        for (const auto& [number, node] : workspace_.nodes) {
            if (number != 0) Wires(*node);
        }
        Results();
        if (isWhole) Order();
    }

  private:
    std::string Place(const std::string& component) const {
        const auto place = places_.find(component);
        return place == places_.end() ? "wires" : place->second;
    }
    LoadFinding& Tell(const std::string& component, const char* code, std::string text) {
        if (found_.findings.size() >= most) found_.findings.pop_back();
        found_.findings.push_back({code, Place(component), std::move(text), component, {}, {}});
        return found_.findings.back();
    }
    void Names();
    bool Ports(const Component& component, const std::vector<Port>& ports, std::string_view side);
    void Wires(const Node& node);
    void Results();
    void Order();

    Workspace& workspace_;
    Inspection& found_;
    std::map<std::string, std::string, std::less<>> places_;
};

void GraphInspector::Names() {
    const Component* former = nullptr;
    for (const auto& component : workspace_.components) {
        if (former && former->name == component->name) {
            Tell(component->name, d::doubleName,
                 Concat("several components have the name '", component->name, "'"))
                .changesNumber = false;
        }
        former = component.get();
    }
}

bool GraphInspector::Ports(const Component& component, const std::vector<Port>& ports,
                           std::string_view side) {
    bool isWhole = true;
    for (std::size_t i = 0; i < ports.size(); ++i) {
        if (ports[i].node) {
            // Node 0 is the ground: what reads it is a source by intent.
            const bool isOpen =
                side == "input" && ports[i].node->number != 0 && ports[i].node->drivers.empty();
            if (!isOpen) continue;
            Tell(component.name, d::openPort,
                 Concat("component '", component.name, "': input port ", i + 1,
                        " is not wired: nothing drives node ", ports[i].node->number))
                .changesNumber = false;
            continue;
        }
        isWhole = false;
        Tell(component.name, d::openPort,
             Concat("component '", component.name, "': ", side, " port ", i + 1,
                    " stands on no node"));
    }
    return isWhole;
}

/// The ports of each component in one of the lists of a node, each component once.
std::vector<WireEnd> EndsOn(const Node& node, const std::list<Component*>& components,
                            std::vector<Port> Component::*ports) {
    std::vector<WireEnd> ends;
    std::vector<const Component*> seen;
    for (const Component* component : components) {
        if (std::ranges::find(seen, component) != seen.end()) continue;
        seen.push_back(component);
        const std::vector<Port>& all = component->*ports;
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (all[i].node == &node) ends.push_back({component, i + 1, all[i].modelType});
        }
    }
    return ends;
}

void GraphInspector::Wires(const Node& node) {
    const std::vector<WireEnd> drivers = EndsOn(node, node.drivers, &Component::outputs);
    if (drivers.size() > 1) {
        Tell(drivers.back().component->name, d::twoDrivers,
             Concat("node ", node.number, " is driven by output ", drivers.back().port, " of '",
                    drivers.back().component->name, "' and output ", drivers.front().port, " of '",
                    drivers.front().component->name, "'"));
        return;
    }
    if (drivers.empty()) return;
    const WireEnd& driver = drivers.front();
    for (const WireEnd& reader : EndsOn(node, node.readers, &Component::inputs)) {
        if (CanMeet(driver.kind, reader.kind)) continue;
        Tell(reader.component->name, d::wrongKind,
             Concat("component '", reader.component->name, "': input port ", reader.port, " takes ",
                    WordOf(sigTypeWords, reader.kind, "another kind"), ", but '",
                    driver.component->name, "' gives ",
                    WordOf(sigTypeWords, driver.kind, "another"), " on node ", node.number));
    }
}

void GraphInspector::Results() {
    for (LoadFinding& finding : FindResultClashes(workspace_)) {
        Tell(finding.typed, finding.code, std::move(finding.text));
    }
}

void GraphInspector::Order() {
    std::string report;
    RunOrder order;
    NodeSet nodes;
    const EscapeLevel level(/*armed=*/true);
    try {
        if (level.Refused()) return;
        const Status status = OrderWorkspace(workspace_, order, nodes, report);
        for (std::size_t at = 0; at < report.size();) {
            const std::size_t end = std::min(report.find('\n', at), report.size());
            std::string line = report.substr(at, end - at);
            at = end + 1;
            if (line.empty()) continue;
            for (const std::string_view kind : {"ERROR: ", "WARNING: "}) {
                if (line.starts_with(kind)) line.erase(0, kind.size());
            }
            found_.findings.push_back({d::noOrder,
                                       workspace_.fileName.empty() ? "wires" : workspace_.fileName,
                                       line,
                                       {},
                                       {},
                                       {},
                                       status == Status::Error});
        }
    } catch (const Escape& escape) {
        Tell({}, d::noOrder, escape.message);
    }
    for (const auto& component : workspace_.components) component->runFlags = 0;
}

}  // namespace

void InspectGraph(Workspace& workspace, Inspection& inspection) {
    GraphInspector(workspace, inspection).Run();
}

}  // namespace photrak

// Distances to the segments of all wires: a tip is asked for rarely.
#include "workbench/canvas_tip.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "base/units.h"
#include "drawing/number_text.h"
#include "drawing/text_measure.h"
#include "files/catalogue.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "kernel/symbols.h"
#include "workbench/canvas_picture.h"
#include "workbench/mouse.h"
#include "workbench/value_text.h"

namespace photrak {
namespace {

double DistanceToSegment(CanvasPoint p, CanvasPoint a, CanvasPoint b) {
    const double dx = b.x - a.x, dy = b.y - a.y, length = dx * dx + dy * dy;
    const double along = length > 0.0 ? ((p.x - a.x) * dx + (p.y - a.y) * dy) / length : 0.0;
    const double t = std::clamp(along, 0.0, 1.0);
    return std::hypot(p.x - (a.x + t * dx), p.y - (a.y + t * dy));
}

double DistanceTo(const Wire& wire, CanvasPoint p) {
    double least = HUGE_VAL;
    for (std::int32_t i = 1; i < wire.count; ++i) {
        least = std::min(least, DistanceToSegment(p, wire.points[i - 1], wire.points[i]));
    }
    return least;
}

}  // namespace

std::optional<Wire> WireNear(const Workspace& workspace, CanvasPoint point, const Scale& scale,
                             double tolerance) {
    std::optional<Wire> nearest;
    double least = tolerance;
    for (const Wire& wire : Wires(workspace, scale)) {
        const double distance = DistanceTo(wire, point);
        if (distance > least || (nearest && distance == least)) continue;
        nearest = wire;
        least = distance;
    }
    return nearest;
}

namespace {

constexpr std::string_view kinds[] = {"optical", "electrical", "binary", "type not settled"};
constexpr std::size_t mostChannels = 8, mostParameters = 8, mostNoteLetters = 120;

std::string_view KindOf(const Node* node, std::int32_t sigType) {
    return kinds[static_cast<std::size_t>(WireRoleOf(node ? node->type : sigType))];
}

std::string ChannelText(const SignalSummary& channel) {
    constexpr double nanometers = 1e9;
    constexpr int digits = 4;
    return Concat(ReadableText(nanometers * channel.wavelength, 7),
                  " nm: ", FixedText(DbmFromWatts(channel.average), 0.01), " dBm (",
                  EngineeringText(channel.average, "W", digits), ")");
}

std::string LevelText(const SignalSummary& signal) {
    constexpr int digits = 4;
    const std::string duration = EngineeringText(signal.duration, "s", digits);
    if (signal.sigType == ElecSigType) {
        return Concat("mean level ", EngineeringText(signal.average, signal.unit, digits), " over ",
                      duration);
    }
    return Concat(signal.patternLength, " bits at ",
                  EngineeringText(signal.bitRate, "bit/s", digits), ", ",
                  ReadableText(100.0 * signal.average, digits), " % ones");
}

bool AreOfOneSignal(const SignalSummary& a, const SignalSummary& b) {
    return a.SET == b.SET && a.INNERSWEEP == b.INNERSWEEP && a.OUTERSWEEP == b.OUTERSWEEP &&
           a.RUN == b.RUN && a.LOOP == b.LOOP && a.BIN == b.BIN;
}

/// What the node carried last, a line for each channel.
std::string LastSignal(const Node& node) {
    std::string text;
    std::size_t channels = 0;
    for (const SignalSummary& summary : node.summaries) {
        if (!AreOfOneSignal(summary, node.summaries.front())) break;
        if (++channels > mostChannels) continue;
        text +=
            Concat("\n", summary.sigType == OpSigType ? ChannelText(summary) : LevelText(summary));
    }
    if (channels > mostChannels) text += Concat("\n... and ", channels - mostChannels, " more");
    return text;
}

/// "L = 80000 m", with the number behind an expression.
std::string ValueLine(Workbench& workbench, const DiagramView& view, const Component& block,
                      const Parameter& parameter) {
    const std::string value = parameter.value ? parameter.value : "";
    const std::string line = Concat(DrawableText(parameter.name), " = ", DrawableText(value));
    const bool isText = parameter.type == StringType || parameter.type == EnumType;
    if (isText || block.innerTexts.contains(parameter.name)) return line;
    if (!IsNumber(value) && !workbench.run.active) {
        return Concat(line, " ", CheckValue(*view.workspace, parameter, value).shown);
    }
    const std::string_view unit = parameter.UNITS ? parameter.UNITS : "";
    return unit.empty() || unit == "none" ? line : Concat(line, " ", unit);
}

/// Lines of the parameters whose texts are not those of the model.
std::string SetParameters(Workbench& workbench, const DiagramView& view, const Component& block) {
    const Component* model = FindModel(workbench.catalogue, block.type);
    std::string text;
    std::size_t set = 0;
    for (const Parameter& parameter : Items<const Parameter>(block.parameters)) {
        if (!parameter.value || !*parameter.value) continue;
        const Parameter* usual = model ? FindParameter(parameter.name, model->parameters) : nullptr;
        if (usual && usual->value && std::string_view(usual->value) == parameter.value) continue;
        if (++set > mostParameters) continue;
        text += Concat("\n", ValueLine(workbench, view, block, parameter));
    }
    if (set > mostParameters) text += Concat("\n... and ", set - mostParameters, " more");
    return text;
}

std::string BlockTip(Workbench& workbench, const DiagramView& view, const Component& block) {
    std::string text = Concat(DrawableText(block.name), "\n", DrawableText(block.type));
    if (!block.superBlockFile.empty()) text += Concat(":", DrawableText(block.superBlockFile));
    std::string note = OneLine(block.NOTE);
    if (note.size() > mostNoteLetters) {
        note.resize(std::min(note.rfind(' ', mostNoteLetters), mostNoteLetters));
        note += " ...";
    }
    if (!note.empty()) text += Concat("\n", DrawableText(note));
    const auto finding = view.findings.find(block.name);
    if (finding != view.findings.end()) text += Concat("\n", finding->second);
    return text + SetParameters(workbench, view, block);
}

std::string PortTip(const Hit& hit) {
    const Port& port = PortsOf(*hit.component, hit.side)[static_cast<std::size_t>(hit.port - 1)];
    return Concat(DrawableText(hit.component->name),
                  hit.side == Side::Input ? " input " : " output ", hit.port, ", ",
                  KindOf(port.node && port.node->number != 0 ? port.node : nullptr, port.sigType));
}

}  // namespace

std::string WireTip(const Workbench& workbench, const DiagramView& view, CanvasPoint point) {
    constexpr double tolerance = 3.0;  // pixels
    const auto wire = WireNear(*view.workspace, point, workbench.scale, tolerance);
    if (!wire) return {};
    const std::string text =
        Concat(DrawableText(wire->from->name), " output ", wire->output, " to ",
               DrawableText(wire->to->name), " input ", wire->input, ", ",
               KindOf(wire->node, UnknownSigType), ", node ", wire->node->number);
    // The records of a run in progress belong to its worker.
    return view.running ? text : text + LastSignal(*wire->node);
}

std::string CanvasTip(Workbench& workbench, const DiagramView& view, CanvasPoint point) {
    const Hit hit = HitTest(view.Index(), point, workbench.scale);
    if (!hit.component) return WireTip(workbench, view, point);
    return hit.OnBody() ? BlockTip(workbench, view, *hit.component) : PortTip(hit);
}

}  // namespace photrak

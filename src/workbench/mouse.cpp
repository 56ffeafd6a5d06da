// Presses, moves and releases by mode. A drag works on the pointer alone; the diagram changes once,
// at the release.
#include "workbench/mouse.h"

#include <algorithm>
#include <cstdlib>
#include <list>

#include "base/text.h"
#include "kernel/graph.h"
#include "workbench/block_opening.h"
#include "workbench/placing.h"
#include "workbench/property_form.h"

namespace photrak {
namespace {

constexpr std::int32_t dragThreshold = 4;  // pixels: below it a press stays a click

Hit HitAt(const Workbench& workbench, const DiagramView& view, CanvasPoint at) {
    return HitTest(view.Index(), at, workbench.scale);
}

/// Shift: a hit on body or port takes the block into the selection or out of it. True if it was
/// added.
bool Toggle(DiagramView& view, const Hit& hit) {
    if (!hit.component) return false;
    if (view.IsSelected(hit.component)) {
        view.Deselect(hit.component);
        view.current = nullptr;
        return false;
    }
    view.Select(hit.component);
    view.current = hit.component;
    return true;
}

/// A press on empty paper or on a body. True if a block is now current.
bool SelectPlain(DiagramView& view, const Hit& hit) {
    if (hit.component && hit.port > 0) return false;
    if (!hit.component || !view.IsSelected(hit.component)) view.ClearSelection();
    if (!hit.component) return false;
    if (!view.IsSelected(hit.component)) view.Select(hit.component);
    view.current = hit.component;
    return true;
}

void Arm(DiagramView& view, CanvasPoint at) {
    view.drag = {};
    view.drag.kind = DragKind::Press;
    view.drag.start = view.drag.last = at;
}

void PressSelect(Workbench& workbench, DiagramView& view, const PressEvent& event) {
    const Hit hit = HitAt(workbench, view, event.at);
    if (event.isDouble && !event.shift) {
        OpenBlock(workbench, view, hit);
        return;
    }
    if (event.shift ? Toggle(view, hit) : SelectPlain(view, hit)) Arm(view, event.at);
}

void StartWire(DiagramView& view, const Hit& hit, DragKind kind, bool byRightButton) {
    view.drag = {kind, byRightButton, hit.wireEnd, hit.wireEnd, hit.component, hit.port};
}

void PressConnect(Workbench& workbench, DiagramView& view, const PressEvent& event) {
    if (view.running || event.shift) return;
    const Hit hit = HitAt(workbench, view, event.at);
    if (hit.OnPort(Side::Output)) StartWire(view, hit, DragKind::Connect, false);
}

void PressLeft(Workbench& workbench, DiagramView& view, const PressEvent& event) {
    view.lastClick = workbench.scale.ToCell(event.at);
    switch (view.mode) {
        case Mode::Select:
            PressSelect(workbench, view, event);
            break;
        case Mode::Connect:
            PressConnect(workbench, view, event);
            break;
        case Mode::Icon:
            if (!view.running && !event.shift) PlaceBlock(workbench, view, event.at);
            break;
        case Mode::Zoom:
            break;
    }
}

void HideGhost(DiagramView& view) {
    view.ghost.shown = false;
}

void PressRight(Workbench& workbench, DiagramView& view, const PressEvent& event) {
    if (view.mode == Mode::Zoom) return;
    const Hit hit = HitAt(workbench, view, event.at);
    if (view.mode == Mode::Connect) {
        if (!view.running && hit.OnPort(Side::Output)) {
            StartWire(view, hit, DragKind::Disconnect, true);
        }
        return;
    }
    if (!hit.component) return;
    if (view.mode == Mode::Select) event.shift ? Toggle(view, hit) : SelectPlain(view, hit);
    HideGhost(view);
    OpenPropertyForm(workbench, view, *hit.component);
}

/// A port of a signal's type that a file put on the ground gets a node of its own, so that it can
/// be wired. Goes back to the ground, in its old place, unless the wire is made.
class GroundLeave {
  public:
    GroundLeave(Component& component, Side side, std::int32_t position, Workspace& workspace)
        : workspace_(workspace),
          port_(PortsOf(component, side)[static_cast<std::size_t>(position) - 1]),
          readers_(side == Side::Input) {
        if (!port_.node || port_.node->number != 0 || port_.modelType == NoSigType) return;
        auto& list = ListOf(*port_.node);
        const auto entry = std::find(list.begin(), list.end(), &component);
        if (entry == list.end()) return;
        ground_ = port_.node;
        formerType_ = port_.sigType;
        next_ = std::next(entry);
        kept_.splice(kept_.begin(), list, entry);
        port_.node = nullptr;
        port_.sigType = port_.modelType;
        number_ = NewNodeNumber(workspace);
        readers_ ? AttachInput(component, position, number_, workspace)
                 : AttachOutput(component, position, number_, workspace);
        ground_->settledType = NoSettledType;
    }
    void Undo() {
        if (!ground_) return;
        ListOf(*ground_).splice(next_, kept_);
        ground_->settledType = NoSettledType;
        port_.node = ground_;
        port_.sigType = formerType_;
        workspace_.nodes.erase(number_);
    }

  private:
    std::list<Component*>& ListOf(Node& node) const {
        return readers_ ? node.readers : node.drivers;
    }

    Workspace& workspace_;
    Port& port_;
    bool readers_;
    Node* ground_ = nullptr;
    std::int32_t formerType_ = NoSigType, number_ = 0;
    std::list<Component*> kept_;  // the entry of the ground's list
    std::list<Component*>::iterator next_;
};

Status MakeWire(Workspace& workspace, const Drag& drag, const Hit& hit) {
    GroundLeave output(*drag.component, Side::Output, drag.port, workspace);
    GroundLeave input(*hit.component, Side::Input, hit.port, workspace);
    const Status status = ConnectComponents(workspace, *drag.component, drag.port, *hit.component,
                                            hit.port, workspace.errorText);
    if (status != Status::Success) {
        input.Undo();
        output.Undo();
    }
    return status;
}

/// The reason without the words around it.
std::string Reason(std::string_view text) {
    constexpr std::string_view error = "ERROR: ";
    if (text.starts_with(error)) text.remove_prefix(error.size());
    return std::string(text.substr(0, text.find('\n')));
}

void EndWire(Workbench& workbench, DiagramView& view, const Drag& drag, CanvasPoint at) {
    const Hit hit = HitAt(workbench, view, at);
    if (view.running || !hit.OnPort(Side::Input)) return;
    Workspace& workspace = *view.workspace;
    workspace.errorText.clear();
    const bool connects = drag.kind == DragKind::Connect;
    Touched touched;
    touched.AddAround(*drag.component);
    touched.AddAround(*hit.component);
    const Status status = connects
                              ? MakeWire(workspace, drag, hit)
                              : DisconnectComponents(workspace, *drag.component, drag.port,
                                                     *hit.component, hit.port, workspace.errorText);
    if (status == Status::Success) {
        view.undo.modified = true;
    } else {
        workbench.pane = Reason(workspace.errorText);
    }
    touched.AddAround(*drag.component);
    touched.AddAround(*hit.component);
    // A refused wire may have narrowed the types of its ends, which a save would write.
    EndChange(workbench, view, connects ? "Connect" : "Disconnect", &touched);
}

void EndMove(Workbench& workbench, DiagramView& view, CanvasPoint at) {
    const Component* current = view.current;
    view.current = nullptr;
    if (!current) return;
    const CanvasPoint cell = workbench.scale.ToCell(at), from = DrawnAt(*current);
    Touched touched;
    if (!MoveSelection(view, {cell.x - from.x, cell.y - from.y}, touched)) return;
    view.undo.modified = true;
    EndChange(workbench, view, "Move", &touched);
}

}  // namespace

void MousePress(Workbench& workbench, DiagramView& view, const PressEvent& pressed) {
    PressEvent event = pressed;
    event.at = Bounded(event.at);
    if (view.drag.IsUnderWay()) {
        if (event.right) view.DropDrag();
        return;
    }
    view.drag = {};  // a press that never became a drag
    event.right ? PressRight(workbench, view, event) : PressLeft(workbench, view, event);
}

void MouseMove(Workbench& workbench, DiagramView& view, CanvasPoint pointer) {
    const CanvasPoint at = Bounded(pointer);
    Drag& drag = view.drag;
    drag.last = at;
    const bool farEnough = std::abs(at.x - drag.start.x) >= dragThreshold ||
                           std::abs(at.y - drag.start.y) >= dragThreshold;
    if (drag.kind == DragKind::Press && view.current && farEnough) {
        drag.kind = DragKind::Move;
        view.ghost.exists = true;
    }
    if (!view.ghost.exists) return;
    // Within half an icon of the left or top edge the picture would leave the canvas: it hides.
    const std::int32_t half = workbench.scale.iconSize / 2;
    view.ghost.shown = at.x >= half && at.y >= half;
    view.ghost.pointer = at;
}

void MouseRelease(Workbench& workbench, DiagramView& view, CanvasPoint at, bool right) {
    if (view.drag.kind == DragKind::None || view.drag.byRightButton != right) return;
    const Drag drag = view.drag;
    view.drag = {};
    if (drag.kind == DragKind::Move) {
        view.ghost = {};
        EndMove(workbench, view, at);
    } else if (drag.kind != DragKind::Press) {
        EndWire(workbench, view, drag, Bounded(at));
    }
}

void DropDragOf(DiagramView& view) {
    view.DropDrag();
}

}  // namespace photrak

// Names stand below the icons where there is room for them; a block without a picture gets a
// frame with the letters of its type, so that it can be seen and hit.
#include "workbench/canvas_drawing.h"

#include <algorithm>
#include <cctype>

#include "base/text.h"
#include "files/topology.h"
#include "workbench/canvas_picture.h"
#include "workbench/mouse.h"

namespace photrak {
namespace {

constexpr double nameSize = 9.0, leastNameZoom = 0.8, wireWidth = 1.5;
// Below these sides of an icon, in pixels, nobody can point at a port or a block, or read letters.
constexpr std::int32_t leastPortMark = 20, leastBlockMark = 8;
constexpr double leastLetters = 12.0;
constexpr std::size_t mostSingleWires = 2000;

struct WireLook {
    Role role;
    Dash dash;
    std::string_view name;
};
constexpr WireLook wireLooks[] = {{Role::WireOptical, Dash::Solid, "optical"},
                                  {Role::WireElectrical, Dash::Dashed, "electrical"},
                                  {Role::WireBinary, Dash::Dotted, "binary"},
                                  {Role::WireOther, Dash::DashDot, "undecided"}};

const WireLook& LookOf(WireRole role) {
    return wireLooks[static_cast<std::size_t>(role)];
}

/// The capital letters of a type, at most three: "ReceiverModel" gives "RM".
std::string Initials(const std::string& type) {
    std::string letters;
    for (const char c : type) {
        if (letters.size() < 3 && std::isupper(static_cast<unsigned char>(c))) letters += c;
    }
    return letters.empty() ? type.substr(0, 3) : letters;
}

class CanvasPainter {
  public:
    CanvasPainter(const Workbench& workbench, const DiagramView& view, const CanvasLook& look)
        : workbench_(workbench), view_(view), look_(look), picture_(PictureOf(workbench, view)) {}

    /// For a file: blocks carry their names, and the page is cut to what is drawn, with a margin.
    void CutToDiagram() {
        named_ = true;
        const double margin = workbench_.scale.gridSize / 2;
        std::optional<Rect> around;
        for (const PictureIcon& icon : picture_.icons) {
            const Rect square = SquareAt(icon.at, picture_.iconSide);
            around = around ? United(*around, square) : square;
        }
        for (const PictureWire& picture : picture_.wires) {
            for (std::int32_t i = 0; around && i < picture.wire.count; ++i) {
                around = United(*around, SquareAt(picture.wire.points[i], 1.0));
            }
        }
        const Rect page = around.value_or(Rect{}).Grown(margin);
        origin_ = {page.x, page.y};
        size_ = {page.width, page.height};
    }

    Drawing Draw() {
        workbench_.icons->LoadModelIcons(workbench_.palette, workbench_.catalogue.modelDirectory,
                                         view_.directory);
        drawing_.size = size_;
        drawing_.items.reserve(2 * picture_.icons.size());
        for (const PictureIcon& icon : picture_.icons) AddBlock(icon);
        AddTicks();
        AddWires();
        if (workbench_.scale.zoom >= leastNameZoom * look_.unit) AddNames();
        AddOverlay();
        return std::move(drawing_);
    }

  private:
    Rect SquareAt(CanvasPoint at, double side) const {
        return {at.x - origin_.x, at.y - origin_.y, side, side};
    }
    Point CenterOf(CanvasPoint at) const {
        return {at.x - origin_.x + 0.5, at.y - origin_.y + 0.5};
    }

    bool IsSeen(const Rect& area) const { return !look_.seen || look_.seen->Overlaps(area); }

    void AddBlock(const PictureIcon& icon) {
        const double side = picture_.iconSide;
        const Rect square = SquareAt(icon.at, side);
        if (!IsSeen(square.Grown(side))) return;
        const Component& block = *icon.component;
        if (named_) drawing_.Add(GroupBegin{Concat("block:", block.name), block.type});
        AddIcon(icon, block.type, square, drawing_.items);
        if (named_) drawing_.Add(GroupEnd{});
        if (picture_.iconSide < leastBlockMark) return;
        std::string hint = block.type;
        const auto finding = view_.findings.find(block.name);
        if (finding != view_.findings.end()) {
            hint += "\n" + finding->second;
            AddFaultSign(square);
        }
        drawing_.marks.push_back(
            {Concat("block:", block.name), square, DrawableText(block.name), std::move(hint)});
    }

    /// A frame, and a sign at its corner: color is never the only mark.
    void AddFaultSign(const Rect& square) {
        drawing_.AddOver(Box{.rect = square.Grown(1.5), .pen = {Role::Fault, 2.0}});
        const double side = std::clamp(0.4 * square.width, 9.0, 18.0);
        const Rect sign{square.Right() - 0.6 * side, square.y - 0.4 * side, side, side};
        drawing_.AddOver(
            Box{.rect = sign, .filled = true, .fill = Role::Fault, .outlined = false, .pen = {}});
        TextItem text;
        text.text = "!";
        text.size = 0.9 * side;
        text.role = Role::Paper;
        text.weight = Weight::Bold;
        text.anchor = Anchor::Middle;
        text.at = {sign.Center().x, sign.Bottom() - 0.18 * side};
        drawing_.AddOver(std::move(text));
    }

    void AddIcon(const PictureIcon& icon, const std::string& type, const Rect& square,
                 std::vector<DrawItem>& items) const {
        IconStore& store = *workbench_.icons;
        if (icon.own >= 0 &&
            store.DrawFile(picture_.ownFiles[static_cast<std::size_t>(icon.own)], square, items)) {
            return;
        }
        if (icon.own < 0 && store.DrawModel(icon.file, square, items)) return;
        items.emplace_back(
            Box{.rect = square, .filled = true, .fill = Role::Paper, .pen = {Role::Ink}});
        if (square.width < leastLetters) return;
        TextItem letters;
        letters.size = 0.36 * square.width;
        letters.at = {square.Center().x, square.Center().y + 0.36 * letters.size};
        letters.text = DrawableText(Initials(type));
        letters.anchor = Anchor::Middle;
        items.emplace_back(std::move(letters));
    }

    /// On paper of their own: a wire may run through the gap below an icon.
    void AddNames() {
        const double size = nameSize * look_.unit;
        const double room = workbench_.scale.gridSize - 3.0 * look_.unit;
        for (const PictureIcon& icon : picture_.icons) {
            const Rect square = SquareAt(icon.at, picture_.iconSide);
            if (!IsSeen(square.Grown(square.width))) continue;
            TextItem text;
            text.size = size;
            text.role = Role::Dim;
            text.anchor = Anchor::Middle;
            text.at = {square.Center().x, square.Bottom() + 2.0 * look_.unit + size};
            text.text = Elided(DrawableText(icon.component->name), room, size, *look_.measure);
            drawing_.Add(Box{.rect = TextBox(text, *look_.measure).Grown(0.5),
                             .filled = true,
                             .opacity = 0.85,
                             .outlined = false,
                             .pen = {}});
            drawing_.Add(std::move(text));
        }
    }

    /// Squares as short thick lines: one item for each type of signal, however many there are.
    void AddTicks() {
        Segments byRole[std::size(wireLooks)];
        const double side = picture_.tickSide;
        const bool named = picture_.iconSide >= leastPortMark;
        for (const PictureTick& tick : picture_.ticks) {
            const Rect square = SquareAt(tick.at, side);
            if (!IsSeen(square.Grown(picture_.iconSide))) continue;
            const Port& port =
                PortsOf(*tick.component, tick.side)[static_cast<std::size_t>(tick.port) - 1];
            const WireRole role = WireRoleOf(port.sigType);
            std::vector<Point>& points = byRole[static_cast<std::size_t>(role)].points;
            points.push_back({square.x, square.Center().y});
            points.push_back({square.Right(), square.Center().y});
            if (named) AddPortMark(tick, square, LookOf(role));
        }
        for (std::size_t role = 0; role < std::size(wireLooks); ++role) {
            if (byRole[role].points.empty()) continue;
            byRole[role].pen = {wireLooks[role].role, side};
            drawing_.Add(std::move(byRole[role]));
        }
    }

    void AddPortMark(const PictureTick& tick, const Rect& square, const WireLook& look) {
        const std::string& block = tick.component->name;
        const bool isInput = tick.side == Side::Input;
        drawing_.marks.push_back(
            {Concat("port:", block, isInput ? ":in" : ":out", tick.port), square.Grown(portZone),
             Concat(isInput ? "input " : "output ", tick.port, " of ", DrawableText(block)),
             std::string(look.name)});
    }

    /// Each wire as a line of its own; very many as one item for each type of signal.
    void AddWires() {
        const bool batched = !named_ && picture_.wires.size() > mostSingleWires;
        Segments byRole[std::size(wireLooks)];
        for (const PictureWire& picture : picture_.wires) {
            const Wire& wire = picture.wire;
            Rect around = SquareAt(wire.points[0], 0.0);
            for (std::int32_t i = 1; i < wire.count; ++i) {
                around = United(around, SquareAt(wire.points[i], 1.0));
            }
            if (!IsSeen(around.Grown(wireWidth * look_.unit))) continue;
            if (batched) {
                std::vector<Point>& points = byRole[static_cast<std::size_t>(picture.role)].points;
                for (std::int32_t i = 1; i < wire.count; ++i) {
                    points.push_back(CenterOf(wire.points[i - 1]));
                    points.push_back(CenterOf(wire.points[i]));
                }
                continue;
            }
            Polyline line;
            for (std::int32_t i = 0; i < wire.count; ++i) {
                line.points.push_back(CenterOf(wire.points[i]));
            }
            line.pen = PenOf(LookOf(picture.role));
            if (named_) {
                drawing_.Add(GroupBegin{Concat("wire:", wire.node->number),
                                        Concat(wire.from->name, " to ", wire.to->name)});
            }
            drawing_.Add(std::move(line));
            if (named_) drawing_.Add(GroupEnd{});
        }
        for (std::size_t role = 0; role < std::size(wireLooks); ++role) {
            if (byRole[role].points.empty()) continue;
            byRole[role].pen = PenOf(wireLooks[role]);
            drawing_.Add(std::move(byRole[role]));
        }
    }

    Pen PenOf(const WireLook& look) const {
        return {look.role, wireWidth * look_.unit, look_.linePatterns ? look.dash : Dash::Solid};
    }

    void AddOverlay() {
        for (const PictureIcon& selected : picture_.selected) {
            const Rect square = SquareAt(selected.at, picture_.selectedSide).Grown(-0.5);
            if (!IsSeen(square)) continue;
            drawing_.AddOver(Box{.rect = square, .pen = {Role::Selected, 2.0}});
        }
        for (const CanvasPoint cell : LandingCells(workbench_, view_)) {
            const Rect square = SquareAt(workbench_.scale.ToPixel(cell), picture_.iconSide);
            if (!IsSeen(square)) continue;
            drawing_.AddOver(Box{.rect = square, .pen = {Role::Selected, 1.0, Dash::Dashed}});
        }
        for (const PictureIcon& ghost : picture_.ghost) {
            const std::string& type = view_.drag.kind == DragKind::Move && view_.current
                                          ? view_.current->type
                                          : workbench_.palette.Row(view_.modelIndex).name;
            AddIcon(ghost, type, SquareAt(ghost.at, picture_.iconSide), drawing_.overlay);
        }
        if (!picture_.rubber.empty()) AddLanding();
        for (const PictureRubber& rubber : picture_.rubber) {
            const Role role = rubber.connects ? Role::WireElectrical : Role::WireOther;
            drawing_.AddOver(Segments{{CenterOf(rubber.from), CenterOf(rubber.to)}, {role, 1.5}});
        }
    }

    /// A ring around the port that a wire would end at.
    void AddLanding() {
        const Hit hit = HitTest(view_.Index(), view_.drag.last, workbench_.scale);
        if (!hit.OnPort(Side::Input)) return;
        const CanvasPoint tick = TickAt(*hit.component, hit.side, hit.port, workbench_.scale);
        drawing_.AddOver(Box{.rect = SquareAt(tick, picture_.tickSide).Grown(portZone),
                             .pen = {Role::Selected, 1.5}});
    }

    const Workbench& workbench_;
    const DiagramView& view_;
    const CanvasLook& look_;
    CanvasPicture picture_;
    Point origin_;
    PageSize size_{static_cast<double>(picture_.size.x), static_cast<double>(picture_.size.y)};
    bool named_ = false;
    Drawing drawing_;
};

}  // namespace

Drawing DrawCanvas(const Workbench& workbench, const DiagramView& view, const CanvasLook& look) {
    return CanvasPainter(workbench, view, look).Draw();
}

Drawing DrawDiagram(const Workbench& workbench, const DiagramView& view, const CanvasLook& look) {
    CanvasPainter painter(workbench, view, look);
    painter.CutToDiagram();
    return painter.Draw();
}

std::optional<Drawing> DrawTopologyFile(const Workbench& workbench, const std::string& path,
                                        const CanvasLook& look, std::string& errorText) {
    DiagramView view;
    const std::size_t slash = path.rfind('/');
    view.directory = slash == std::string::npos ? "." : path.substr(0, slash);
    const Status loaded = TopologyLoad(path, view.workspace, workbench.catalogue);
    if (view.workspace) errorText = std::move(view.workspace->errorText);
    if (loaded == Status::Error || !view.workspace) return std::nullopt;
    return DrawDiagram(workbench, view, look);
}

}  // namespace photrak

// Everything that a script can print, a function each, in one table.
#include <algorithm>
#include <charconv>
#include <filesystem>
#include <set>

#include "base/log.h"
#include "base/text.h"
#include "files/topology_words.h"
#include "platform/file_system.h"
#include "platform/host.h"
#include "workbench/canvas_picture.h"
#include "workbench/commands.h"
#include "workbench/script_player.h"
#include "workbench/script_words.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

struct Printing {
    Workbench& workbench;
    ScriptDesktop& desktop;
    const std::vector<std::string>& words;

    const DiagramView* View() const { return workbench.Active(); }
};

std::string Number(double value) {
    return FormatSignificant(value, 10);
}

/// The name in quotes; behind the second of its name in the list stands #2, and so on.
std::string BlockName(const ComponentList& list, const Component& block) {
    auto twin = std::ranges::lower_bound(list, block.name, {}, &Component::name);
    int place = 1;
    while (twin != list.end() && twin->get() != &block) ++place, ++twin;
    return place > 1 ? Concat(Quoted(block.name), "#", place) : Quoted(block.name);
}

std::string NameIn(const Printing& p, const Component& block) {
    return BlockName(p.View()->workspace->components, block);
}

std::string_view ModeWord(Mode mode) {
    static constexpr std::string_view words[] = {"select", "zoom", "connect", "icon"};
    return words[static_cast<int>(mode) - 1];
}

std::string ScaleLine(const Scale& s) {
    return Concat("scale zoom ", Number(s.zoom), " previous ", Number(s.previousZoom), " icon ",
                  s.iconSize, " grid ", s.gridSize, " tick ", s.portTick, " pitch ", s.portPitch,
                  "\n");
}

std::string_view DragWord(DragKind kind) {
    switch (kind) {
        case DragKind::Move:
            return "move";
        case DragKind::Connect:
            return "connect";
        case DragKind::Disconnect:
            return "disconnect";
        default:
            return "none";
    }
}

std::string PlaceOf(const Printing& p, const DiagramView& view) {
    const auto found =
        std::ranges::find(p.workbench.views, &view, &std::unique_ptr<DiagramView>::get);
    return Concat(found - p.workbench.views.begin() + 1);
}

std::string PrintView(const Printing& p) {
    const DiagramView* view = p.View();
    if (!view) return "view none\n" + ScaleLine(p.workbench.scale);
    std::string text =
        Concat("view ", PlaceOf(p, *view), " of ", p.workbench.views.size(), " ",
               Quoted(p.desktop.Shown(view->fileName)), "\nmode ", ModeWord(view->mode));
    if (view->mode == Mode::Icon) {
        text += Concat(" ", view->modelIndex, " ", p.workbench.palette.Row(view->modelIndex).name);
    }
    text += Concat("\nsize ", view->width, " ", view->height, "\nclick ", view->lastClick.x, " ",
                   view->lastClick.y, "\nselected");
    for (const Component* component : view->selection) text += Concat(" ", NameIn(p, *component));
    text += Concat("\ncurrent ", view->current ? NameIn(p, *view->current) : std::string("none"));
    const bool armed = view->drag.kind == DragKind::Press;
    text += Concat("\nflags modified ", int{view->undo.modified}, " undo ", int{view->undo.valid},
                   " running ", int{view->running != 0}, " armed ", int{armed}, " differs ",
                   int{view->Differs()}, "\ndrag ", DragWord(view->drag.kind), "\nghost ",
                   !view->ghost.exists ? "none"
                   : view->ghost.shown ? "shown"
                                       : "hidden",
                   "\n");
    text += ScaleLine(p.workbench.scale);
    const std::string& status = p.workbench.highlighted;
    return text + (status.empty()
                       ? Concat("pane ", Quoted(p.desktop.ShownText(p.workbench.pane)), "\n")
                       : Concat("status ", Quoted(status), "\n"));
}

std::string PrintViews(const Printing& p) {
    std::string text;
    for (const auto& view : p.workbench.views) {
        text += Concat("view ", PlaceOf(p, *view), " ", Quoted(p.desktop.Shown(view->fileName)),
                       " mode ", ModeWord(view->mode), " modified ", int{view->undo.modified},
                       " running ", int{view->running != 0},
                       view.get() == p.View() ? " active\n" : "\n");
    }
    return text;
}

std::string BlocksText(const Workspace& workspace) {
    std::string text;
    for (const auto& block : workspace.components) {
        const std::string name = BlockName(workspace.components, *block);
        text += Concat("block ", name, " ", block->type, " ", block->x, " ", block->y, " icon ",
                       Quoted(block->ICON), " inputs ", block->inputs.size(), " outputs ",
                       block->outputs.size(), "\n");
        for (const Side side : {Side::Input, Side::Output}) {
            int number = 0;
            for (const Port& port : PortsOf(*block, side)) {
                text += Concat("port ", name, side == Side::Input ? " in " : " out ", ++number,
                               " node ", port.node ? port.node->number : 0, " ",
                               WordOf(sigTypeWords, port.sigType, "UnknownSigType"), "\n");
            }
        }
    }
    return text;
}

std::string PrintBlocks(const Printing& p) {
    return p.View() ? BlocksText(*p.View()->workspace) : std::string();
}

std::string PrintClipboard(const Printing& p) {
    return BlocksText(*p.workbench.clipboard);
}

std::string At(CanvasPoint at) {
    return Concat(" ", at.x, " ", at.y);
}

std::string WiresText(const CanvasPicture& picture) {
    static constexpr std::string_view roles[] = {"optical", "electrical", "binary", "other"};
    std::string text;
    for (const PictureWire& wire : picture.wires) {
        text += Concat("wire ", wire.wire.node->number, " ", roles[static_cast<int>(wire.role)]);
        for (std::int32_t i = 0; i < wire.wire.count; ++i) text += At(wire.wire.points[i]);
        text += '\n';
    }
    return text;
}

std::string PrintDrawing(const Printing& p) {
    if (!p.View()) return {};
    const CanvasPicture picture = PictureOf(p.workbench, *p.View());
    std::string text = Concat("canvas", At(picture.size), "\n");
    auto tick = picture.ticks.begin();
    for (const PictureIcon& icon : picture.icons) {
        const std::string name = NameIn(p, *icon.component);
        text +=
            Concat("icon ", name, " ", Quoted(icon.file), At(icon.at), " ", picture.iconSide, "\n");
        for (; tick != picture.ticks.end() && tick->component == icon.component; ++tick) {
            text += Concat("tick ", name, tick->side == Side::Input ? " in " : " out ", tick->port,
                           At(tick->at), " ", picture.tickSide, "\n");
        }
    }
    text += WiresText(picture);
    for (const PictureIcon& icon : picture.selected) {
        text += Concat("selected ", NameIn(p, *icon.component), At(icon.at), " ",
                       picture.selectedSide, "\n");
    }
    for (const PictureIcon& ghost : picture.ghost) {
        text += Concat("ghost ", Quoted(ghost.file), At(ghost.at), " ", picture.iconSide, "\n");
    }
    for (const PictureRubber& rubber : picture.rubber) {
        text += Concat("rubber ", rubber.connects ? "connect" : "disconnect", At(rubber.from),
                       At(rubber.to), "\n");
    }
    return text;
}

std::string PrintHit(const Printing& p) {
    const CanvasPoint at{ReadInt(p.words[1]), ReadInt(p.words[2])};
    if (!p.View()) return "hit nothing\n";
    const Hit hit = HitTest(p.View()->Index(), at, p.workbench.scale);
    if (!hit.component) return "hit nothing\n";
    const std::string name = NameIn(p, *hit.component);
    if (hit.port == 0) return Concat("hit ", name, " body\n");
    return Concat("hit ", name, hit.side == Side::Input ? " in " : " out ", hit.port,
                  At(hit.wireEnd), "\n");
}

std::string PrintTopology(const Printing& p) {
    std::string text;
    if (!p.View()) return text;
    const std::string saved = TextOf(*p.View()->workspace);
    for (std::size_t at = 0; at < saved.size();) {
        const std::size_t end = std::min(saved.find('\n', at), saved.size());
        text += Concat("  ", saved.substr(at, end - at), "\n");
        at = end + 1;
    }
    return text;
}

std::string ChoicesText(const std::vector<std::string>& choices) {
    std::string text = choices.empty() ? "" : " of";
    for (const std::string& choice : choices) text += Concat(" ", Quoted(choice));
    return text;
}

std::string FieldText(const FormField& field) {
    static constexpr std::string_view kinds[] = {"text", "number", "value", "integer", "choice"};
    const std::string column =
        field.column.empty() ? std::string() : Concat(" ", Quoted(field.column));
    const std::string_view state = !field.fault.empty() ? "fault" : field.enabled ? "on" : "off";
    return Concat("field ", Quoted(field.label), column, " ", kinds[static_cast<int>(field.kind)],
                  " ", state, " ", Quoted(field.text), ChoicesText(field.choices), "\n");
}

std::string TableText(const FormTable& table) {
    std::string text = Concat("table ", table.rows.size(), " shown ", table.rowsShown, " steps ",
                              table.Steps(), "\n");
    for (const FormRow& row : table.rows) {
        text += Concat("row ", Quoted(row.name), row.isChoice ? " enum " : " text ",
                       row.fault.empty() ? "on " : "fault ", Quoted(row.value), " ",
                       Quoted(row.least), " ", Quoted(row.greatest), " ", Quoted(row.deviation),
                       " ", Quoted(row.distribution), " ", Quoted(row.units),
                       ChoicesText(row.choices), "\n");
    }
    return text;
}

std::string PrintDialog(const Printing& p) {
    if (p.workbench.forms.empty()) return "dialog none\n";
    const Form& form = *p.workbench.forms.back();
    std::string text = Concat("dialog ", form.kind, " ", Quoted(form.title), "\n");
    for (const FormField& field : form.fields) text += FieldText(field);
    for (const FormTable& table : form.tables) text += TableText(table);
    if (!form.note.empty()) text += Concat("note ", Quoted(form.note), "\n");
    for (const FormList& list : form.lists) {
        std::int32_t row = 0;
        for (const std::string& line : list.rows) {
            const bool selected = ++row == list.selected;
            text += Concat("list ", row, selected ? " * " : " ", Quoted(p.desktop.ShownText(line)),
                           "\n");
        }
    }
    if (!form.focus.empty()) text += Concat("focus ", Quoted(form.focus), "\n");
    for (const FormButton& button : form.buttons) {
        text += Concat("button ", Quoted(button.label), button.enabled ? " on\n" : " off\n");
    }
    return text;
}

std::string Lines(std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : std::exchange(lines, {})) text += line + "\n";
    return text;
}

std::string PrintBoxes(const Printing& p) {
    return Lines(p.desktop.boxes);
}

std::string PrintStarted(const Printing& p) {
    return Lines(p.desktop.started);
}

std::string PrintUndo(const Printing& p) {
    const DiagramView* view = p.View();
    if (!view) return {};
    return Concat("undo valid ", int{view->undo.valid}, "\nhistory ", view->history.Steps(), " at ",
                  view->history.Place(), "\n");
}

std::string ButtonsText(const std::vector<BarButton>& buttons) {
    std::string text;
    for (const BarButton& button : buttons) {
        text += Concat("button ", button.x, " ", button.y, " ", Quoted(button.tooltip),
                       button.latches ? " latching" : " push", button.isDown ? " down" : " up",
                       button.isOn ? " on\n" : " off\n");
    }
    return text;
}

std::string PrintPalette(const Printing& p) {
    return ButtonsText(Palette(p.workbench));
}

std::string PrintToolBar(const Printing& p) {
    return ButtonsText(ToolBar(p.workbench));
}

std::string PrintMenu(const Printing&) {
    std::string text;
    for (const Command& command : Commands()) {
        text += Concat("entry ", Quoted(Concat(command.menu, " ", command.entry)), " ",
                       Quoted(InterpretPercent(command.status)));
        for (const std::string_view key : command.keys) text += Concat(" ", key);
        text += '\n';
    }
    return text;
}

std::string PrintFiles(const Printing& p) {
    std::set<std::string> names;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(p.workbench.startDirectory, error)) {
        names.insert(entry.path().filename().string());
    }
    std::string text;
    for (const std::string& name : names) text += Concat(Quoted(name), "\n");
    return text;
}

/// Lines that came since the last time they were asked for.
std::string PrintLog(const Printing& p) {
    const DiagramView* view = p.View();
    std::string log, reason, text;
    if (!view || !ReadWholeFile(view->directory + "/log.txt", log, reason)) return {};
    std::size_t& printed = p.desktop.logPrinted[view->directory];
    std::size_t at = std::min(printed, log.size());
    while (at < log.size()) {
        const std::size_t end = std::min(log.find('\n', at), log.size());
        text += Concat(Quoted(p.desktop.ShownText(log.substr(at, end - at))), "\n");
        at = end + 1;
    }
    printed = log.size();
    return text;
}

std::string PrintProfile(const Printing&) {
    std::string text;
    for (const auto& [key, value] : CurrentHost().profile->Ints("PHOTRAK")) {
        text += Concat(key, " ", value, "\n");
    }
    return text;
}

struct Printer {
    std::string_view what;
    std::string (*print)(const Printing& p);
};
constexpr Printer printers[] = {
    {"view", PrintView},
    {"views", PrintViews},
    {"blocks", PrintBlocks},
    {"drawing", PrintDrawing},
    {"hit", PrintHit},
    {"topology", PrintTopology},
    {"dialog", PrintDialog},
    {"boxes", PrintBoxes},
    {"undo", PrintUndo},
    {"started", PrintStarted},
    {"clipboard", PrintClipboard},
    {"palette", PrintPalette},
    {"toolbar", PrintToolBar},
    {"menu", PrintMenu},
    {"files", PrintFiles},
    {"log", PrintLog},
    {"profile", PrintProfile},
};

}  // namespace

std::optional<std::string> PrintedText(Workbench& workbench, ScriptDesktop& desktop,
                                       const std::vector<std::string>& words) {
    const auto* printer = std::ranges::find(printers, words.front(), &Printer::what);
    if (printer == std::end(printers)) return std::nullopt;
    return printer->print({workbench, desktop, words});
}

}  // namespace photrak

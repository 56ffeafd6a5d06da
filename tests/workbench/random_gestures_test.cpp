// Sequences of random gestures: the graph stays sound after each event, the history leads back to
// the first diagram and forward to the last, and a save and load changes nothing.
// PHOTRAK_GESTURE_SEQUENCES asks for more sequences, PHOTRAK_GESTURE_SEED for others.
#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <random>

#include "base/text.h"
#include "files/topology.h"
#include "kernel/graph.h"
#include "platform/file_system.h"
#include "support/paths.h"
#include "support/test_workbench.h"
#include "workbench/canvas_drawing.h"
#include "workbench/commands.h"
#include "workbench/file_commands.h"
#include "workbench/mouse.h"
#include "workbench/run_control.h"
#include "workbench/symbols_form.h"

namespace photrak {
namespace {

constexpr int eventsOfSequence = 100;
constexpr std::size_t mostViews = 3;

std::uint32_t NumberFrom(const char* variable, std::uint32_t otherwise) {
    const char* text = std::getenv(variable);
    return text ? static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10)) : otherwise;
}

/// Every port stands in its node's list as often as it is on it, and nothing else does.
std::string GraphFault(const Workspace& workspace) {
    std::map<const Node*, std::multiset<const Component*>> readers, drivers;
    for (const auto& component : workspace.components) {
        for (const Port& port : component->inputs) {
            if (port.node) readers[port.node].insert(component.get());
        }
        for (const Port& port : component->outputs) {
            if (port.node) drivers[port.node].insert(component.get());
        }
    }
    for (const auto& [number, node] : workspace.nodes) {
        const std::multiset<const Component*> r(node->readers.begin(), node->readers.end());
        const std::multiset<const Component*> d(node->drivers.begin(), node->drivers.end());
        if (node->number != number) return Concat("node ", number, " calls itself otherwise");
        if (r != readers[node.get()]) return Concat("readers of node ", number);
        if (d != drivers[node.get()]) return Concat("drivers of node ", number);
        if (number != 0 && node->drivers.size() > 1) return Concat("two drivers on ", number);
    }
    if (readers.size() > workspace.nodes.size()) return "a port stands on a node that is gone";
    const bool sorted = std::ranges::is_sorted(workspace.components, {}, &Component::name);
    return sorted ? "" : "the list of components is not sorted";
}

std::string ViewFault(const DiagramView& view) {
    const auto isThere = [&](const Component* component) {
        return std::ranges::any_of(view.workspace->components,
                                   [&](const auto& c) { return c.get() == component; });
    };
    if (!std::ranges::all_of(view.selection, isThere)) return "a selected block is gone";
    std::set<const Component*> once(view.selection.begin(), view.selection.end());
    if (once.size() != view.selection.size()) return "a block is selected twice";
    if (view.current && !isThere(view.current)) return "the current block is gone";
    if (view.drag.component && !isThere(view.drag.component)) return "the drag's block is gone";
    return GraphFault(*view.workspace);
}

/// What gestures tell of their changes must be all that changed.
std::string HistoryFault(DiagramView& view) {
    DiagramState state;
    std::string text;
    const DiagramState& present = view.history.Present();
    EXPECT_EQ(TakeState(*view.workspace, &present, nullptr, view.ids, state, text),
              Status::Success);
    if (state == present) return "";
    if (state.header != present.header) return "run options or symbols changed unseen";
    return state.blocks != present.blocks ? "a block changed unseen" : "a node changed unseen";
}

/// The hit test as the rule has it: block by block in list order, then port by port.
Hit PlainHit(const Workspace& workspace, CanvasPoint point, const Scale& scale) {
    for (const auto& component : workspace.components) {
        if (IsOnBlock(IconAt(*component, scale), point, scale)) {
            return HitOnComponent(*component, point, scale);
        }
    }
    Hit best;
    for (const auto& component : workspace.components) {
        for (const Side side : {Side::Input, Side::Output}) {
            const Hit hit = HitOnTick(*component, side, point, scale);
            const auto off = [&](const Hit& h) { return std::abs(point.y - h.wireEnd.y); };
            if (hit.component && (!best.component || off(hit) < off(best))) best = hit;
        }
    }
    return best;
}

bool SameHit(const Hit& a, const Hit& b) {
    return a.component == b.component && a.port == b.port && (!a.component || a.side == b.side) &&
           a.wireEnd == b.wireEnd;
}

class Gestures {
  public:
    Gestures(std::uint32_t seed, TestWorkbench& test)
        : random_(seed), test_(test), workbench_(*test.workbench) {}

    /// Plays one sequence; a fault names the event at which it showed.
    std::string Play() {
        Begin();
        for (int event = 0; event < eventsOfSequence; ++event) {
            const std::string what = One();
            for (const auto& view : workbench_.views) {
                if (!first_.contains(view.get())) first_[view.get()] = TextOf(*view->workspace);
                std::string fault = ViewFault(*view);
                if (fault.empty()) fault = HistoryFault(*view);
                if (!fault.empty()) return Concat("event ", event, " (", what, "): ", fault);
            }
            const std::string fault = HitFault();
            if (!fault.empty()) return Concat("event ", event, " (", what, "): ", fault);
        }
        return EndFault();
    }

  private:
    int Below(int count) { return static_cast<int>(random_() % static_cast<std::uint32_t>(count)); }
    DiagramView& View() { return *workbench_.Active(); }

    void Begin() {
        while (!workbench_.forms.empty()) ClosePending();
        FinishRun(workbench_);
        EXPECT_TRUE(CloseAll(workbench_));
        first_.clear();
        const char* examples[] = {"wdm8.top", "nested.top", "mach-zehnder.top", "add-drop.top"};
        const int choice = Below(6);
        if (choice < 4) {
            OpenDiagram(workbench_, std::string("examples/") + examples[choice],
                        OpenAgain::NewView);
        } else {
            NewDiagram(workbench_);
        }
        first_[&View()] = TextOf(*View().workspace);
    }

    /// On a block, on a port, beside it, or anywhere.
    CanvasPoint Point() {
        const Scale& scale = workbench_.scale;
        const ComponentList& blocks = View().workspace->components;
        const int kind = blocks.empty() ? 5 : Below(8);
        if (kind >= 6 || blocks.empty()) {
            return {Below(800) - 50, Below(600) - 50};
        }
        const Component& block =
            *blocks[static_cast<std::size_t>(Below(static_cast<int>(blocks.size())))];
        const CanvasPoint icon = IconAt(block, scale);
        if (kind < 2) return {icon.x + scale.iconSize / 2, icon.y + scale.iconSize / 2};
        const Side side = Below(2) == 0 ? Side::Input : Side::Output;
        const std::int32_t ports = ShownPorts(block, side);
        if (ports == 0) return {icon.x + Below(50) - 10, icon.y + Below(50) - 10};
        const CanvasPoint end = WireEndAt(block, side, 1 + Below(ports), scale);
        return {end.x + Below(5) - 2, end.y + Below(5) - 2};
    }

    std::string One() {
        if (!workbench_.forms.empty()) return ClosePending();
        if (workbench_.views.empty()) NewDiagram(workbench_);
        const int kind = Below(100);
        if (kind < 12) return Wire();
        if (kind < 35) return Press();
        if (kind < 45) return MouseMove(workbench_, View(), Point()), "move";
        if (kind < 65) return Release();
        if (kind < 77) return SetAMode();
        if (kind < 78) return OpenSymbolsForm(workbench_, View()), "symbols";
        if (kind < 95) return Command();
        if (kind < 96) return Run();
        return Views();
    }

    /// From an output to an input: a wire is made, or taken away with the right button.
    std::string Wire() {
        const ComponentList& blocks = View().workspace->components;
        const auto count = static_cast<int>(blocks.size());
        if (count == 0) return "wire";
        const Component& from = *blocks[static_cast<std::size_t>(Below(count))];
        const Component* to = blocks[static_cast<std::size_t>(Below(count))].get();
        const bool right = Below(3) == 0;
        const std::int32_t outputs = ShownPorts(from, Side::Output);
        if (outputs == 0) return "wire";
        const std::int32_t output = 1 + Below(outputs);
        const Node* node = from.outputs[static_cast<std::size_t>(output) - 1].node;
        if (right && node && !node->readers.empty()) to = node->readers.front();
        const std::int32_t inputs = ShownPorts(*to, Side::Input);
        if (inputs == 0) return "wire";
        SetMode(workbench_, Mode::Connect);
        MousePress(workbench_, View(),
                   {WireEndAt(from, Side::Output, output, workbench_.scale), right});
        const CanvasPoint end = WireEndAt(*to, Side::Input, 1 + Below(inputs), workbench_.scale);
        MouseMove(workbench_, View(), end);
        MouseRelease(workbench_, View(), end, right);
        return "wire";
    }

    std::string Press() {
        PressEvent event{Point(), Below(6) == 0, Below(5) == 0, Below(12) == 0};
        MousePress(workbench_, View(), event);
        // Most presses end where a wire or a block may go.
        if (Below(3) > 0 && workbench_.forms.empty()) {
            const CanvasPoint to = Point();
            MouseMove(workbench_, View(), to);
            MouseRelease(workbench_, View(), to, event.right);
        }
        return "press";
    }

    std::string Release() {
        MouseRelease(workbench_, View(), Point(), Below(4) == 0);
        return "release";
    }

    std::string SetAMode() {
        const int mode = 1 + Below(5);
        if (mode < 4) {
            SetMode(workbench_, static_cast<Mode>(mode));
            return "mode";
        }
        std::int32_t index = 0;
        while (!workbench_.palette.HasButton(index)) index = 1 + Below(lastBuiltInModel);
        SetMode(workbench_, Mode::Icon, index);
        return "model";
    }

    std::string Command() {
        static constexpr const char* keys[] = {
            "Ctrl+Z",    "Ctrl+X",   "Ctrl+C", "Ctrl+V", "Delete", "Escape", "Alt+Left",
            "Alt+Right", "Alt+Left", "Left",   "Right",  "Up",     "Down",   "Ctrl+V"};
        static constexpr const char* entries[] = {
            "Edit Duplicate",     "Edit Select All", "View In",   "View Out",
            "View Full",          "View Normal",     "View Last", "View ReDraw",
            "Run Check",          "Edit Find",       "Run Go",    "Run Scan Variable",
            "Options Preferences"};
        const int choice = Below(static_cast<int>(std::size(keys) + std::size(entries)));
        if (choice < static_cast<int>(std::size(keys))) {
            PressKey(workbench_, keys[choice]);
            return keys[choice];
        }
        const char* entry = entries[choice - static_cast<int>(std::size(keys))];
        // Doubling again and again leaves no time for anything else.
        if (View().selection.size() < 60 || entry != entries[0]) {
            FindCommand(entry)->run(workbench_);
        }
        return entry;
    }

    /// A run begins and stands before its first block; or the one on is stopped there.
    std::string Run() {
        if (!workbench_.run.active) {
            constexpr std::size_t fewBlocks = 12;  // a stop waits for what has begun
            if (View().workspace->components.size() > fewBlocks) return "run";
            StartRun(workbench_, View(), Below(2) == 0);
            return "run";
        }
        test_.desktop.answers.push_back(Answer::Yes);
        StopRun(workbench_);
        FinishRun(workbench_);
        return "stop";
    }

    std::string Views() {
        const auto count = static_cast<int>(workbench_.views.size());
        const int kind = Below(4);
        if (kind == 0 && workbench_.views.size() < mostViews) {
            NewDiagram(workbench_);
            return "new";
        }
        if (kind == 1) {
            DrawCanvas(workbench_, View());
            return "draw";
        }
        if (kind == 2) return SaveAndLoad();
        Activate(workbench_, *workbench_.views[static_cast<std::size_t>(Below(count))]);
        return "activate";
    }

    std::string SaveAndLoad() {
        const std::string text = TextOf(*View().workspace);
        const WorkingDirectory there(View().directory);  // of its SuperBlocks
        std::unique_ptr<Workspace> again;
        EXPECT_NE(TopologyLoadText(text, "again.top", again, workbench_.catalogue), Status::Error)
            << again->errorText;
        EXPECT_EQ(TextOf(*again), text);
        return "save and load";
    }

    /// Types into a dialog, pushes some of its buttons and leaves it.
    std::string ClosePending() {
        Form& form = *workbench_.forms.back();
        static constexpr const char* texts[] = {"1", "2*3", "-7", "x y", ""};
        if (!form.tables.empty() && !form.tables[0].rows.empty()) {
            const FormTable& table = form.tables[0];
            const auto row = static_cast<std::size_t>(Below(static_cast<int>(table.rows.size())));
            form.EditRow(table.rows[row].name, "Value", texts[Below(5)]);
        }
        if (!form.fields.empty()) {
            const int count = static_cast<int>(form.fields.size());
            const FormField field = form.fields[static_cast<std::size_t>(Below(count))];
            form.Edit(field.label, field.column, texts[Below(5)]);
        }
        static constexpr const char* buttons[] = {"New Symbol", "Accept Symbol", "Delete Symbol",
                                                  "Reject Symbol", "Symbols..."};
        for (int i = Below(4); i > 0; --i) workbench_.Push(buttons[Below(5)]);
        if (Below(3) > 0) workbench_.Push("OK");
        while (!workbench_.forms.empty()) {
            if (!workbench_.Push("Cancel")) workbench_.forms.clear();
        }
        return "dialog";
    }

    std::string HitFault() {
        if (workbench_.views.empty()) return "";
        const DiagramView& view = View();
        const CanvasPoint at = Point();
        const Hit plain = PlainHit(*view.workspace, at, workbench_.scale);
        return SameHit(plain, HitTest(view.Index(), at, workbench_.scale)) ? "" : "the hit test";
    }

    std::string EndFault() {
        while (!workbench_.forms.empty()) ClosePending();
        if (workbench_.run.active) Run();
        std::vector<DiagramView*> views;
        for (const auto& view : workbench_.views) views.push_back(view.get());
        for (DiagramView* view : views) {
            Activate(workbench_, *view);
            const std::string last = TextOf(*view->workspace);
            const std::size_t place = view->history.Place();
            while (view->history.Place() > 0) PressKey(workbench_, "Alt+Left");
            if (TextOf(*view->workspace) != first_[view]) return "the way back to the start";
            if (view->Differs()) return "the start counts as changed";
            while (view->history.Place() < place) PressKey(workbench_, "Alt+Right");
            if (TextOf(*view->workspace) != last) return "the way forward to the end";
            const std::string fault = ViewFault(*view) + HistoryFault(*view);
            if (!fault.empty()) return "after the way back and forth: " + fault;
            SaveAndLoad();
        }
        return "";
    }

    std::mt19937 random_;
    TestWorkbench& test_;
    Workbench& workbench_;
    std::map<const DiagramView*, std::string> first_;
};

TEST(RandomGestures, LeaveTheDiagramSoundAndTheHistoryWhole) {
    TestWorkbench test;
    ASSERT_TRUE(test.started);
    // A check writes a log beside the diagram.
    std::filesystem::copy(SourceDir() + "/examples", test.folder.Path() + "examples",
                          std::filesystem::copy_options::recursive);
    const std::uint32_t sequences = NumberFrom("PHOTRAK_GESTURE_SEQUENCES", 60);
    const std::uint32_t seed = NumberFrom("PHOTRAK_GESTURE_SEED", 1);
    for (std::uint32_t i = 0; i < sequences && !testing::Test::HasFailure(); ++i) {
        ASSERT_EQ(Gestures(seed + i, test).Play(), "") << "seed " << seed + i;
    }
}

}  // namespace
}  // namespace photrak

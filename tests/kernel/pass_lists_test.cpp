// What depends on a change: by names, through symbols, along wires and around repetition loops; and
// that no pass of a sweep leaves a result behind that a plain run would not give.
#include "kernel/pass_lists.h"

#include <random>

#include "kernel/symbols.h"
#include "support/sweep_link.h"

namespace photrak {
namespace {

using Names = std::vector<std::string>;

struct PassListLink : SweepLink {
    using SweepLink::SweepLink;

    /// The names in the list of what depends on a symbol.
    Names DependOn(const std::string& name) {
        RunOrder order;
        NodeSet nodes;
        EXPECT_EQ(BuildSymbolTable(*workspace, errorText), Status::Success) << errorText;
        EXPECT_EQ(OrderWorkspace(*workspace, order, nodes, errorText), Status::Success);
        PassChange change{.flag = runFlag::inner, .symbols = {}};
        change.symbols.emplace_back(name, workspace->symbols);
        Names names;
        for (const Component* component : CollectPassList(change, order)) {
            names.push_back(component->name);
            EXPECT_TRUE(component->runFlags & runFlag::inner);
        }
        return names;
    }
};

TEST(SymbolUse, FollowsNamesThroughSymbols) {
    Workspace workspace;
    const std::pair<const char*, const char*> variables[] = {
        {"far", "2*near"},         {"near", "sqrt(gain2)"}, {"gain2", "4"}, {"round", "about - 1"},
        {"about", "round + gain"}, {"other", "far2"},       {"far2", "1"}};
    for (const auto& [name, value] : variables) AddVariable(workspace, name, DoubleType, value);
    std::string text;
    ASSERT_EQ(BuildSymbolTable(workspace, text), Status::Success) << text;
    const SymbolUse use("gain", workspace.symbols);
    for (const char* user : {"2*gain", "regained", "far", "1 + near;", "round", "(far)*2"}) {
        EXPECT_TRUE(use.InText(user)) << user;
    }
    for (const char* stranger : {"other", "far2", "nearly", "", "7"}) {
        EXPECT_FALSE(use.InText(stranger)) << stranger;
    }
    EXPECT_FALSE(SymbolUse("", workspace.symbols).InText("gain"));
}

TEST(PassList, ByDesignTakesANameInsideALongerOne) {
    PassListLink link;
    link.Draw("Source source > Step step > Sink sink");
    link.GiveNumber(link["step"], "number", "max(1, 2)");
    EXPECT_EQ(link.DependOn("x"), (Names{"step", "sink"}));
    EXPECT_EQ(link.DependOn("y"), Names{});
}

TEST(PassList, HoldsWhatIsFedOnceAndInOrder) {
    PassListLink link;
    link.Draw(
        "Source source > Step swept > Join join > Sink sink\n"
        "source > Step plain > Sink elsewhere\nplain > join.2\nswept > Sink plot");
    Parameter& number = link.GiveNumber(link["swept"], "number", "1");
    for (const auto text : {&Parameter::value, &Parameter::STDDEV, &Parameter::ISTDDEV}) {
        SetText(&(number.*text), "x");
        EXPECT_EQ(link.DependOn("x"), (Names{"swept", "plot", "join", "sink"}));
        SetText(&(number.*text), "1");
    }
}

// The end block takes the signals off its input nodes at each repetition, so what feeds it from
// outside must run again with the loop.
TEST(PassList, TakesALoopAsAWholeAndWhatFeedsItsEnd) {
    PassListLink link(/*loopPorts=*/2);
    link.Draw(
        "Source source > LoopBeginBlock begin > Step step > LoopEndBlock end > Sink sink\n"
        "source > begin.2\nSource feeder > end.2");
    link.GiveNumber(link["step"], "number", "x");
    EXPECT_EQ(link.DependOn("x"), (Names{"feeder", "begin", "step", "end", "sink"}));
}

/// A diagram grown by chance: steps, joins, loops in a row and in each other, plots anywhere.
struct RandomDiagram : SweepLink {
    std::map<std::string, std::map<std::string, double>> visits;  // by place, then by component
    std::mt19937 random;
    std::vector<Component*> ends{&Add("Source", "source")};  // where a wire may start
    int made = 0;

    explicit RandomDiagram(unsigned seed) : random(seed) {
        Grow(14, 2);
        Append("Sink");
        for (const char* name : {"x", "y"}) AddVariable(*workspace, name, DoubleType, "1");
        AddVariable(*workspace, "z", DoubleType, "x + 1");
        for (const char* type : {"Sink", "Join"}) {
            models.byType[type] = [this, plain = models.byType[type]](const ModelCall& call) {
                const Status status = plain(call);
                visits[Coordinates(call.options)][call.component.name] =
                    ValueOf(call.component.type == "Sink" ? call.inputs : call.outputs);
                return status;
            };
        }
    }

    std::size_t Below(std::size_t n) { return random() % n; }
    Component& New(const std::string& type) { return Add(type, Concat(type, ++made)); }
    Component& NewStep() {
        static constexpr const char* texts[] = {"1", "2", "0.5", "1", "3", "x", "2*y", "z", "x*y"};
        Component& step = New("Step");
        GiveNumber(step, "number", texts[Below(std::size(texts))]);
        return step;
    }
    Component& Append(Component& component) {
        Wire(*ends.back(), 1, component, 1);
        ends.push_back(&component);
        return component;
    }
    Component& Append(const char* type) { return Append(New(type)); }

    void Grow(int blocks, int mayNest) {
        for (; blocks > 0; --blocks) {
            const std::size_t kind = Below(10);
            if (kind < 4) Append(NewStep());
            if (kind == 4 || kind == 5) Wire(*ends.back(), 1, New("Sink"), 1);
            if (kind == 6 || kind == 7) {
                Component& second = kind == 6 ? *ends[Below(ends.size())] : NewStep();
                if (kind == 7) Wire(New("Source"), 1, second, 1);
                Wire(second, 1, Append("Join"), 2);
            }
            if (kind > 7 && mayNest > 0) GrowLoop(mayNest - 1);
        }
    }

    /// What is inside a loop feeds nothing outside but through its end.
    void GrowLoop(int mayNest) {
        const auto inside = static_cast<std::ptrdiff_t>(ends.size());
        SetText(&Append("LoopBeginBlock").parameters->value, Concat(1 + Below(3)));
        Grow(4, mayNest);
        Append("LoopEndBlock");
        ends.erase(ends.begin() + inside, ends.end() - 1);
    }
};

// The outcome that counts: whatever was not run again holds what a plain run would have given.
TEST(PassList, LeavesNoStaleResult) {
    for (unsigned seed = 1; seed <= 25; ++seed) {
        SCOPED_TRACE(seed);
        RandomDiagram link(seed);
        link.Outer("x", "1", "3", "1");
        link.Inner("y", "10", "30", "10");
        ASSERT_NE(link.Scan(), Status::Error) << link.Text();
        auto scanned = std::exchange(link.visits, {});
        AskForSimulation(link.Options());
        std::map<std::string, double> present;
        for (int x = 1; x <= 3; ++x) {
            for (int y = 1; y <= 3; ++y) {
                FindVariable("x", *link.workspace)->value = Concat(x);
                FindVariable("y", *link.workspace)->value = Concat(10 * y);
                link.visits.clear();
                ASSERT_NE(link.Run(), Status::Error) << link.Text();
                for (const auto& [name, value] : scanned[Concat(x, " ", y, " 1")]) {
                    present[name] = value;
                }
                ASSERT_EQ(present, link.visits["1 1 1"]) << x << " " << y;
            }
        }
    }
}

}  // namespace
}  // namespace photrak

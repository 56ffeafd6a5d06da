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
    std::string text;

    /// The names in the list of what depends on a symbol.
    Names DependOn(const std::string& name) {
        EXPECT_EQ(BuildSymbolTable(*workspace, text), Status::Success) << text;
        RunOrder order;
        NodeSet nodes;
        EXPECT_EQ(OrderWorkspace(*workspace, order, nodes, text), Status::Success) << text;
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
        {"gain", "3"},          {"far", "2*near"},         {"near", "sqrt(gain2)"}, {"gain2", "4"},
        {"round", "about - 1"}, {"about", "round + gain"}, {"other", "far2"},       {"far2", "1"},
    };
    for (const auto& [name, value] : variables) AddVariable(workspace, name, DoubleType, value);
    std::string text;
    ASSERT_EQ(BuildSymbolTable(workspace, text), Status::Success) << text;
    struct Row {
        const char* text;
        bool uses;
    };
    const Row rows[] = {
        {"2*gain", true},  {"regained", true}, {"far", true},   {"1 + near;", true},
        {"round", true},   {"other", false},   {"far2", false}, {"nearly", false},
        {"(far)*2", true}, {"", false},        {"7", false},
    };
    const SymbolUse use("gain", workspace.symbols);
    for (const Row& row : rows) EXPECT_EQ(use.InText(row.text), row.uses) << row.text;
    EXPECT_FALSE(SymbolUse("", workspace.symbols).InText("gain"));
}

TEST(PassList, KeptDeliberatelyTakesANameInsideALongerOne) {
    PassListLink link;
    link.Chain({&link.Add("Source", "source"), &link.AddStep("step", "max(1, 2)"),
                &link.Add("Sink", "sink")});
    EXPECT_EQ(link.DependOn("x"), (Names{"step", "sink"}));
    EXPECT_EQ(link.DependOn("y"), Names{});
}

TEST(PassList, LooksAtDeviationsToo) {
    PassListLink link;
    Component& step = link.AddStep("step", "1");
    link.Chain({&link.Add("Source", "source"), &step, &link.Add("Sink", "sink")});
    SetText(&step.parameters->ISTDDEV, "x");
    EXPECT_EQ(link.DependOn("x"), (Names{"step", "sink"}));
}

TEST(PassList, HoldsWhatIsFedOnceAndInOrder) {
    PassListLink link;
    Component& source = link.Add("Source", "source");
    Component& swept = link.AddStep("swept", "x");
    Component& plain = link.AddStep("plain", "1");
    Component& join = link.Add("Join", "join");
    Component& plot = link.Add("Sink", "plot");
    Component& sink = link.Add("Sink", "sink");
    Component& elsewhere = link.Add("Sink", "elsewhere");
    link.Chain({&source, &swept, &join, &sink});
    link.Chain({&source, &plain, &elsewhere});
    link.Wire(plain, 1, join, 2);
    link.Wire(swept, 1, plot, 1);
    EXPECT_EQ(link.DependOn("x"), (Names{"swept", "plot", "join", "sink"}));
}

/// source - begin - first - second - end - sink, with a plot and a side input inside the loop.
struct LoopedLink : PassListLink {
    Component& source = Add("Source", "source");
    Component& begin = Add("LoopBeginBlock", "begin");
    Component& first = AddStep("first", "a");
    Component& join = Add("Join", "join");
    Component& second = AddStep("second", "b");
    Component& end = Add("LoopEndBlock", "end");
    Component& sink = Add("Sink", "sink");
    Component& plot = Add("Sink", "plot");
    Component& side = AddStep("side", "c");

    LoopedLink() {
        Chain({&source, &begin, &first, &join, &second, &end, &sink});
        Wire(first, 1, plot, 1);
        Chain({&Add("Source", "other"), &side});
        Wire(side, 1, join, 2);
        GiveNumber(source, "number", "d");
    }
};

TEST(PassList, TakesALoopAsAWhole) {
    LoopedLink link;
    const Names loop = {"begin", "first", "plot", "join", "second", "end", "sink"};
    EXPECT_EQ(link.DependOn("b"), loop);
    EXPECT_EQ(link.DependOn("a"), loop);
    Names withSource = loop;
    withSource.insert(withSource.begin(), "source");
    EXPECT_EQ(link.DependOn("d"), withSource);
    const Names withSide = link.DependOn("c");
    EXPECT_EQ(std::count(withSide.begin(), withSide.end(), "side"), 1);
    EXPECT_EQ(withSide.size(), loop.size() + 1);
}

// The end block takes the signals off its input nodes at each repetition: what stands there must
// come anew.
TEST(PassList, RunsAgainWhatFeedsTheEndOfALoop) {
    PassListLink link;
    link.catalogue.models.clear();
    link.Model("Source", {NoSigType}, {BinSigType});
    link.Model("Step", {BinSigType}, {BinSigType});
    link.Model("Sink", {BinSigType}, {NoSigType});
    link.Model("Taker", {BinSigType, BinSigType}, {NoSigType});
    link.LoopModels(2);
    Component& source = link.Add("Source", "source");
    Component& side = link.Add("Source", "side");
    Component& begin = link.Add("LoopBeginBlock", "begin");
    Component& body = link.AddStep("body", "x");
    Component& end = link.Add("LoopEndBlock", "end");
    Component& taker = link.Add("Taker", "taker");
    SetText(&begin.parameters->value, "2");
    link.Chain({&source, &begin, &body, &end, &taker});
    link.Wire(source, 1, begin, 2);
    link.Wire(side, 1, end, 2);
    link.Wire(end, 2, taker, 2);
    const Names names = link.DependOn("x");
    EXPECT_EQ(std::count(names.begin(), names.end(), "side"), 1);
    EXPECT_EQ(std::count(names.begin(), names.end(), "source"), 0);
}

/// Chains of any length and nodes with any number of wires, in time that grows with them.
TEST(PassList, ManagesLongChainsAndWideNodes) {
    PassListLink link;
    std::vector<Component*> chain = {&link.Add("Source", "source"),
                                     &link.Add("LoopBeginBlock", "begin")};
    constexpr int length = 3000;
    for (int i = 0; i < length; ++i) chain.push_back(&link.Add("Step", Concat("s", 10000 + i)));
    chain.push_back(&link.Add("LoopEndBlock", "end"));
    chain.push_back(&link.Add("Sink", "sink"));
    link.Chain(chain);
    for (int i = 0; i < length; ++i) link.Wire(*chain[1], 1, link.Add("Sink", Concat("p", i)), 1);
    link.GiveNumber(*chain[length / 2], "number", "x");
    EXPECT_EQ(link.DependOn("x").size(), static_cast<std::size_t>(2 * length + 3));
}

/// A diagram grown by chance: steps, joins, loops in a row and in each other, plots anywhere.
class RandomDiagram {
  public:
    explicit RandomDiagram(unsigned seed) : random_(seed) {
        ends_.push_back(&link.Add("Source", "source"));
        Grow(14, 2);
        link.Wire(*ends_.back(), 1, link.Add("Sink", "sink"), 1);
        AddVariable(*link.workspace, "x", DoubleType, "1");
        AddVariable(*link.workspace, "y", DoubleType, "1");
        AddVariable(*link.workspace, "z", DoubleType, "x + 1");
        for (const char* type : {"Sink", "Join"}) Note(type);
    }

    SweepLink link;
    std::map<std::string, std::map<std::string, double>> visits;  // by place, then by component

  private:
    int Below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
    std::string NewName(const char* kind) { return Concat(kind, ++made_); }

    std::string Number() {
        static constexpr const char* texts[] = {"1", "2", "0.5", "1", "3", "x", "2*y", "z", "x*y"};
        return texts[Below(std::size(texts))];
    }

    void Append(Component& component) {
        link.Wire(*ends_.back(), 1, component, 1);
        ends_.push_back(&component);
    }

    void Grow(int blocks, int mayNest) {
        for (; blocks > 0; --blocks) {
            const int kind = Below(10);
            if (kind < 4) Append(link.AddStep(NewName("step"), Number()));
            if (kind == 4 || kind == 5) {
                Component& plot = link.Add("Sink", NewName("plot"));
                link.Wire(*ends_[ends_.size() - 1], 1, plot, 1);
            }
            if (kind == 6) AppendJoin(*ends_[static_cast<std::size_t>(Below(Reach()))]);
            if (kind == 7) {
                Component& side = link.AddStep(NewName("side"), Number());
                link.Wire(link.Add("Source", NewName("other")), 1, side, 1);
                AppendJoin(side);
            }
            if (kind > 7 && mayNest > 0) AppendLoop(mayNest - 1);
        }
    }

    int Reach() const { return static_cast<int>(ends_.size()); }

    void AppendJoin(Component& second) {
        Component& join = link.Add("Join", NewName("join"));
        Append(join);
        link.Wire(second, 1, join, 2);
    }

    /// What is inside a loop feeds nothing outside but through its end.
    void AppendLoop(int mayNest) {
        Component& begin = link.Add("LoopBeginBlock", NewName("begin"));
        SetText(&begin.parameters->value, Concat(1 + Below(3)));
        Append(begin);
        const std::size_t inside = ends_.size();
        Grow(4, mayNest);
        Append(link.Add("LoopEndBlock", NewName("end")));
        ends_.erase(ends_.begin() + static_cast<std::ptrdiff_t>(inside), ends_.end() - 1);
        ends_.erase(ends_.end() - 2);  // the begin block is inside too
    }

    void Note(const std::string& type) {
        link.models.byType[type] = [this, plain = link.models.byType[type]](const ModelCall& call) {
            const Status status = plain(call);
            const Nodelist* value = call.component.type == "Sink" ? call.inputs : call.outputs;
            visits[Coordinates(call.options)][call.component.name] = ValueOf(value);
            return status;
        };
    }

    std::mt19937 random_;
    std::vector<Component*> ends_;  // where a wire may start
    int made_ = 0;
};

// The outcome that counts: whatever was not run again holds what a plain run would have given.
TEST(PassList, LeavesNoStaleResult) {
    for (unsigned seed = 1; seed <= 25; ++seed) {
        SCOPED_TRACE(seed);
        RandomDiagram diagram(seed);
        SweepLink& link = diagram.link;
        link.Outer("x", "1", "3", "1");
        link.Inner("y", "10", "30", "10");
        const Status status = link.Scan();
        ASSERT_NE(status, Status::Error) << link.Text();
        const auto scanned = std::exchange(diagram.visits, {});
        AskForSimulation(link.Options());
        std::map<std::string, double> present;
        for (int x = 1; x <= 3; ++x) {
            for (int y = 1; y <= 3; ++y) {
                FindVariable("x", *link.workspace)->value = Concat(x);
                FindVariable("y", *link.workspace)->value = Concat(10 * y);
                diagram.visits.clear();
                ASSERT_NE(link.Run(), Status::Error) << link.Text();
                if (const auto ran = scanned.find(Concat(x, " ", y, " 1")); ran != scanned.end()) {
                    for (const auto& [name, value] : ran->second) present[name] = value;
                }
                ASSERT_EQ(present, diagram.visits["1 1 1"]) << x << " " << y;
            }
        }
    }
}

}  // namespace
}  // namespace photrak

// Sweeps and statistical runs: points, coordinates, what runs again, how they fail and stop.
#include <chrono>
#include <set>
#include <thread>

#include "base/escape.h"
#include "kernel/result_names.h"
#include "platform/stop_point.h"
#include "support/sweep_link.h"

namespace photrak {
namespace {

using Names = std::vector<std::string>;
using Values = std::vector<double>;

/// source (gives 1) - front - back - sink; by default back adds x.
struct ChainLink : SweepLink {
    explicit ChainLink(const std::string& atFront = "0", const std::string& atBack = "x") {
        Draw("Source source > Step front > Step back > Sink sink");
        GiveNumber((*this)["front"], "number", atFront);
        GiveNumber((*this)["back"], "number", atBack);
    }
};

TEST(Sweep, TakesItsPoints) {
    const struct {
        const char *start, *stop, *step;
        Values values;  // with the 1 of the source
    } rows[] = {
        {"0", "10", "3", {1, 4, 7, 10, 11}},  // the last one is moved to the stop
        {"10", "0", "-4", {11, 7, 3, 1}},
        {"5", "5", "-1", {6}},
        {"1", "0.5", "1", {2}},  // the step points away, but not by a whole one
        {" 2*k ", "k^2, ", "k - 2;", {7, 8, 9, 10}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Concat(row.start, ":", row.stop, ":", row.step));
        ChainLink link;
        AddVariable(*link.workspace, "k", DoubleType, "3");
        link.Inner("x", row.start, row.stop, row.step);
        EXPECT_EQ(link.Scan(), Status::Success) << link.Text();
        EXPECT_EQ(link.arrived, row.values);
    }
}

TEST(Sweep, ByDesignCountsPointsWithoutTolerance) {
    ChainLink link;
    link.Outer("x", "0", "0.07", "0.01");
    EXPECT_EQ(link.Scan(), Status::Success) << link.Text();
    ASSERT_EQ(link.arrived.size(), 9u);
    EXPECT_EQ(link.arrived.back(), 1 + 0.07);
}

TEST(Sweep, RefusesSettingsThatMakeNone) {
    struct Row {
        const char *start, *stop, *step;
        std::vector<const char*> words;  // of the faults, as in "ERROR in outer sweep start..."
        std::string name = "x";
    };
    const Row rows[] = {
        {"0", "10", "0", {""}},
        {"0", "10", "1e-9", {""}},
        {"1e999 - 1e999", "1", "1", {""}},
        {"0", "1", "1", {""}, std::string(32, 'x')},
        {"nobody", "(", "1/0", {"start ", "stop ", "step ", ""}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Concat(row.start, ":", row.stop, ":", row.step));
        std::string expected;
        for (const char* word : row.words) {
            expected += Concat("ERROR in outer sweep ", word, "settings\n");
        }
        ChainLink link;
        link.Outer(row.name, row.start, row.stop, row.step);
        EXPECT_EQ(link.Scan(), Status::Error);
        EXPECT_EQ(link.Text(), expected);
        EXPECT_TRUE(link.models.calls.empty());
    }
}

TEST(Sweep, WarnsOfANameThatExpressionsDoNotRead) {
    for (const std::string name : {"c", "1e3", "a b", "x;", "sqrt", "x"}) {
        SCOPED_TRACE(name);
        ChainLink link("0", name + "+x");
        AddVariable(*link.workspace, "x", DoubleType, "2");
        link.Outer(name, "1", "3", "1");
        const bool isRead = name == "sqrt" || name == "x";
        EXPECT_EQ(link.Scan(), isRead ? Status::Success : Status::Warning);
        const std::string text = "WARNING: the outer sweep of '" + name +
                                 "' changes nothing: expressions read no symbol of that name\n";
        const std::string log = link.Log();
        EXPECT_EQ(log.find(text) != std::string::npos, !isRead) << log;
        EXPECT_EQ(log.rfind(text), log.find(text));
        EXPECT_EQ(link.arrived.size(), 3u);
    }
}

TEST(Sweep, IsAskedForByAllItsTextsOnly) {
    ChainLink link("0", "1");
    link.Outer("x", "0", "3", "");
    link.Inner("x", "0", "3", "1");
    link.Options().NUMRUNSTODO = -4;
    link.Options().mode = simMode::savedStatistical | simMode::statistical | simMode::outerSweep;
    AskForScan(link.Options());
    EXPECT_EQ(link.Options().mode, simMode::savedStatistical | simMode::innerSweep);
    EXPECT_EQ(link.Options().NUMRUNSTODO, 0);
}

/// The outer sweep, the inner one and the runs, from the outside in, with the first pass of an
/// inner loop at the first value again; only what depends on what changed runs.
TEST(Sweep, NestsWithStatisticalRunsInside) {
    ChainLink link("y", "100*x");
    link.Outer("y", "1", "2", "1");
    link.Inner("x", "0", "1", "1");
    link.Draw("source > Step noisy > Sink tail");
    Parameter& number = link.GiveNumber(link["noisy"], "number", "0");
    SetText(&number.STDDEV, "1e-3");
    number.PROBDIST = UniformProbDist;
    link.Options().NUMRUNSTODO = 2;
    link.Options().SCANMETA2 = "o";
    link.Options().SCANMETA1 = "i";
    link.Options().RUNMETA = "r";
    Names places;
    link.models.byType["Sink"] = [&](const ModelCall& call) {
        const SigRecord& record = *call.component.inputs[0].node->signals;
        // What nothing will read any more goes, and only that.
        if (call.component.name == "tail") {
            places.push_back(ResultStem(call.options, ""));
            EXPECT_EQ(!link.Behind("source").signals, places.back() == "o2i2r2");
        } else {
            EXPECT_EQ(!link.Behind("front").signals, call.options.innerIndex == 2);
            link.arrived.push_back(ValueOf(call.inputs));
            EXPECT_EQ(Concat(record.OUTERSWEEP, " ", record.INNERSWEEP, " ", record.RUN),
                      Coordinates(call.options));
        }
        return Status::Success;
    };
    EXPECT_EQ(link.Scan(), Status::Success) << link.Text();
    EXPECT_EQ(link.arrived, (Values{2, 102, 3, 103}));
    EXPECT_EQ(places, (Names{"o1i1r1", "o1i1r2", "o1i2r1", "o1i2r2", "o2i1r1", "o2i1r2", "o2i2r1",
                             "o2i2r2"}));
    EXPECT_EQ(link.RunsOf({"source", "front", "back"}), (std::vector<long>{1, 2, 4}));
}

TEST(Sweep, WarnsAtEachPointWithNothingToRun) {
    ChainLink link("0", "1");
    link.Outer("unused", "1", "3", "1");
    EXPECT_EQ(link.Scan(), Status::Warning);
    EXPECT_EQ(link.arrived.size(), 1u);
    EXPECT_EQ(link.Text(), "");
    const std::string log = link.Log();
    EXPECT_EQ(log.substr(log.find("WARNING")),
              "WARNING: nothing to simulate in outer sweep 2, inner sweep 1, run 1\n"
              "WARNING: nothing to simulate in outer sweep 3, inner sweep 1, run 1\n");
}

TEST(Sweep, StopsBeforeTheNextComponent) {
    ChainLink link("y", "x");
    link.Outer("y", "1", "9", "1");
    link.Inner("x", "0", "9", "1");
    link.Options().stop = 1;  // of an earlier run
    link.models.byType["Step"] = [&, plain = link.models.byType["Step"]](const ModelCall& call) {
        if (call.options.outerIndex == 2) call.options.stop = 1;
        return plain(call);
    };
    EXPECT_EQ(link.Scan(), Status::Success) << link.Text();
    EXPECT_EQ(link.models.calls.back(), "front");
    EXPECT_EQ(link.arrived.size(), 10u);
    for (const auto& [number, node] : link.workspace->nodes) EXPECT_EQ(node->signals, nullptr);
}

/// A block that is nearly done is finished; one that goes on is left, and hands nothing on. Code of
/// others is never left.
TEST(Sweep, LeavesALongBlockOnceStopped) {
    ChainLink link;
    int looks = 0;
    link.models.byType["Step"] = [&](const ModelCall& call) {
        static_cast<void>(Emit(call.outputs, 3));
        call.options.stop = 1;
        StopPoint();
        {
            const StopScope foreign(nullptr);
            std::this_thread::sleep_for(std::chrono::milliseconds(120));
            StopPoint();
        }
        const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        for (; std::chrono::steady_clock::now() < giveUp; ++looks) StopPoint();
        return Status::Success;
    };
    EXPECT_EQ(link.Run(), Status::Success) << link.Text();
    EXPECT_GT(looks, 0);
    EXPECT_EQ(link.models.calls.back(), "front");
    EXPECT_TRUE(link.arrived.empty());
    EXPECT_NE(link.Log().find("Stopped within the component\n"), std::string::npos);
    for (const auto& [number, node] : link.workspace->nodes) EXPECT_EQ(node->signals, nullptr);
    StopPoint();  // outside of a run nothing happens
}

/// A block with a deviation inside a loop of two repetitions, in three runs.
struct RandomLink : SweepLink {
    Values seen;

    RandomLink() {
        Draw("Source source > LoopBeginBlock begin > Step body > LoopEndBlock end > Sink sink");
        SetText(&(*this)["begin"].parameters->value, "2");
        Parameter& number = GiveNumber((*this)["body"], "number", "5");
        SetText(&number.STDDEV, "s");
        number.PROBDIST = GausProbDist;
        AddVariable(*workspace, "s", DoubleType, "0.5");
        Options().NUMRUNSTODO = 3;
        models.byType["Step"] = [this, plain = models.byType["Step"]](const ModelCall& call) {
            seen.push_back(Number(call.component));
            return plain(call);
        };
    }

    /// What a simulation sees after what went before: no draws.
    void ExpectPlainRun() {
        models.byType["Sink"] = [](const ModelCall&) { return Status::Success; };
        seen.clear();
        AskForSimulation(Options());
        EXPECT_EQ(Run(), Status::Success) << Text();
        EXPECT_EQ(seen, (Values{5, 5}));
    }
};

TEST(StatisticalRuns, TakeEveryDrawOnce) {
    RandomLink link;
    Values draws;  // in the order of the ring
    link.models.byType["Source"] = [&](const ModelCall& call) {
        const Parameter& number = *FindParameter("number", link["body"].parameters);
        for (const ParameterDraw* d = number.draws; d; d = d->next) draws.push_back(d->re);
        return Emit(call.outputs, 1);
    };
    EXPECT_EQ(link.Scan(), Status::Success) << link.Text();
    ASSERT_EQ(draws.size(), 6u);
    ASSERT_EQ(link.seen.size(), 6u);
    for (std::size_t i = 0; i < 6; ++i) EXPECT_DOUBLE_EQ(link.seen[i], 5 + 0.5 * draws[i]);
    EXPECT_EQ(std::set<double>(draws.begin(), draws.end()).size(), 6u);
    ASSERT_EQ(link.arrived.size(), 3u);
    for (std::size_t run = 0; run < 3; ++run) {
        EXPECT_DOUBLE_EQ(link.arrived[run], 1 + link.seen[2 * run] + link.seen[2 * run + 1]);
    }
    EXPECT_EQ(link.RunsOf({"source"}), std::vector<long>{1});

    const Values first = std::exchange(link.seen, {});
    EXPECT_EQ(link.Scan(), Status::Success) << link.Text();
    EXPECT_EQ(link.seen, first);  // each run of the program draws the same
    link.ExpectPlainRun();
}

TEST(StatisticalRuns, LeaveNoDrawsBehindAnEscape) {
    RandomLink link;
    link.models.byType["Sink"] = [](const ModelCall&) -> Status { throw Escape{"gone"}; };
    EXPECT_EQ(link.Scan(), Status::Error);
    link.ExpectPlainRun();
}

}  // namespace
}  // namespace photrak

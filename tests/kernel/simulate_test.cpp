// Whole runs over fake models: what is called, stored, logged and reclaimed, how failures end, and
// that the workspace lives on.
#include <limits>
#include <new>

#include "base/escape.h"
#include "base/log.h"
#include "support/small_link.h"

namespace photrak {
namespace {

using Names = std::vector<std::string>;

struct ChainLink : SmallLink {
    ChainLink() { Draw("Source source > Step step > Sink sink"); }
};

std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

TEST(Simulate, CarriesSignalsFromSourcesToSinks) {
    ChainLink link;
    link.workspace->name = "outer:";
    EXPECT_EQ(link.Run(), Status::Success) << link.Text();
    EXPECT_EQ(link.models.calls, (Names{"source", "step", "sink"}));
    EXPECT_EQ(link.arrived, std::vector<double>{2});
    EXPECT_EQ(link.Log(),
              "Simulating component outer:'source' of type 'Source'\n"
              "Simulating component outer:'step' of type 'Step'\n"
              "Simulating component outer:'sink' of type 'Sink'\n");
    EXPECT_EQ(link.host.statusTexts[1], "Simulating component outer:'step' of type 'Step'");
    EXPECT_TRUE(link.host.boxes.empty());
    for (const auto& [number, node] : link.workspace->nodes) EXPECT_EQ(node->signals, nullptr);
    EXPECT_EQ(link["source"].runFlags, 0);
}

// A text of a warning is logged and forgotten; that of an error reaches the box in full, also
// behind a warning, and serves as its format there.
TEST(Simulate, LogsWarningsAndShowsErrors) {
    const Status ok = Status::Success, warns = Status::Warning, fails = Status::Error;
    const struct {
        Status answers[3], status;
        std::string box;
        std::size_t calls;
    } rows[] = {
        {{warns, warns, warns}, warns, "", 3},
        {{warns, fails, ok}, fails, "step says 1% of %n%s\n", 2},
        {{ok, ok, fails}, fails, "sink says 1% of %n%s\n", 3},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.box);
        ChainLink link;
        for (auto& [type, run] : link.models.byType) {
            run = [&, plain = run](const ModelCall& call) {
                (void)plain(call);
                const Status status = row.answers[link.models.calls.size() - 1];
                if (status == Status::Success) return status;
                AppendPiece(call.errorText, Concat(call.component.name, " says ",
                                                   static_cast<int>(status), "%% of %n%s\n"));
                return status;
            };
        }
        // Values were moved to their limits, and outputs of warnings go on.
        link["source"].parameters = LimitedParameter("n", IntType, "90 + 9", 0, 9);
        EXPECT_EQ(link.Run(), row.status);
        EXPECT_EQ(Count(link.Log(), "change to 9\nin component source\n"), 1u);
        EXPECT_EQ(link.models.calls.size(), row.calls);
        EXPECT_EQ(link.arrived, std::vector<double>(row.calls == 3 ? 1 : 0, 2.0));
        EXPECT_EQ(link.host.Errors(), row.box);
        EXPECT_EQ(InterpretPercent(link.Text()), row.box);
        for (std::size_t i = 0; i < 3; ++i) {
            const bool spoke = i < row.calls && row.answers[i] != ok;
            const std::string name = Names{"source", "step", "sink"}[i];
            EXPECT_EQ(Count(link.Log(), name + " says"), spoke ? 1u : 0u) << link.Log();
        }
    }
}

TEST(Simulate, ReportsUnknownTypesAndPrefersBuiltInModels) {
    ChainLink link;
    const ModelEntry entries[] = {
        {"Source", [](const ModelCall& call) { return Emit(call.outputs, 10); }},
        {"Source", nullptr}};
    link.models.byType.erase("Sink");
    EXPECT_EQ(RunSimulation(link.workspace.get(), {entries, &link.models}), Status::Error);
    EXPECT_EQ(link.models.calls, Names{"step"});
    EXPECT_EQ(link.Text(), "ERROR: don't know model type 'Sink' for component 'sink'\n");
}

TEST(Simulate, SurvivesEveryWayInWhichAModelCanThrow) {
    const struct {
        std::function<void()> fail;
        const char* text;
        bool escapes;
    } rows[] = {
        {[] { FatalError("cannot go on"); }, "cannot go on\n", true},
        {[] { throw std::bad_alloc(); },
         "ERROR: the model of component 'step' failed: out of memory\n", false},
        {[] { throw std::runtime_error("bad day"); },
         "ERROR: the model of component 'step' failed: bad day\n", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        ChainLink link;
        const FakeModels::Model plain = link.models.byType["Step"];
        link.models.byType["Step"] = [&](const ModelCall& call) {
            static_cast<void>(Emit(call.outputs, 3));
            row.fail();
            return Status::Success;
        };
        EXPECT_EQ(link.Run(), Status::Error);
        EXPECT_EQ(link.Text(), row.text);
        EXPECT_EQ(link.host.boxes.size(), 1u);
        // An escape leaves the signals on their nodes; the next run begins by freeing them.
        EXPECT_EQ(link.Behind("source").signals != nullptr, row.escapes);
        EXPECT_EQ(EscapeLevelCount(), 0);
        link.models.byType["Step"] = plain;
        link.models.byType["Source"] = [&](const ModelCall& call) {
            EXPECT_EQ(link.Behind("source").signals, nullptr);
            return Emit(call.outputs, 1);
        };
        EXPECT_EQ(link.Run(), Status::Success) << link.Text();
        EXPECT_EQ(link.arrived, std::vector<double>{2});
    }
}

// Whatever a model or a user library computes, no infinity or NaN reaches a result file.
TEST(Simulate, RefusesValuesThatAreNotFinite) {
    constexpr double huge = 1e170, nan = std::numeric_limits<double>::quiet_NaN();
    const std::function<void(OpSignal&)> rows[] = {
        [](OpSignal& light) { light.channels->Ex_samples[2].im = nan; },
        [](OpSignal& light) { light.channels->Ex_samples[1].re = -huge; },  // an infinite power
        [](OpSignal& light) { light.channels->startTime = huge * -huge; },
        [](OpSignal& light) { light.noise->powerSamples[2] = huge * huge; },
    };
    for (const auto& spoil : rows) {
        SCOPED_TRACE("row " + std::to_string(&spoil - rows));
        ChainLink link;
        link.models.byType["Source"] = [&](const ModelCall& call) {
            Owned<OpSignal> light;
            EXPECT_EQ(Make(light, CreateOpSignalWithSig, 2), 0);
            EXPECT_EQ(CreateOpSigASE(&light->noise, 2), 0);
            light->noise->powerSamples[1] = huge;
            spoil(*light);
            call.outputs->sigType = OpSigType;
            call.outputs->sig = light.release();
            return Status::Success;
        };
        EXPECT_EQ(link.Run(), Status::Error);
        EXPECT_EQ(link.Text(),
                  "ERROR: component 'source' left an output with a value that is not finite, or "
                  "too large to be squared\n");
        EXPECT_EQ(link.models.calls.size(), 1u);
    }
}

TEST(Simulate, EndsRunsNestedTooDeep) {
    ChainLink link;
    Names texts;  // of the inner runs, the innermost first
    link.models.byType["Step"] = [&](const ModelCall&) {
        ChainLink inner;  // a host and a directory of its own
        const Status status = RunSimulation(inner.workspace.get(), {{}, &link.models});
        texts.push_back(inner.Text());
        return status;
    };
    EXPECT_EQ(link.Run(), Status::Error);
    EXPECT_EQ(texts.size(), static_cast<std::size_t>(maxEscapeLevels) - 1);
    EXPECT_EQ(texts.front(), "ERROR: simulations nested too deep\n");
    EXPECT_EQ(EscapeLevelCount(), 0);
}

// Every allocation of a run refused in turn: an error each time, and a workspace that still runs.
TEST(Simulate, SurvivesExhaustedMemoryAnywhere) {
    ChainLink link;
    link["step"].parameters = LimitedParameter("n", IntType, "1 + 1", 0, 9);
    ASSERT_EQ(link.Run(), Status::Success);  // values made by the first evaluation stay
    const std::int64_t before = AllocationCount();
    ASSERT_EQ(link.Run(), Status::Success);
    const std::int64_t needed = AllocationCount() - before;
    ASSERT_GT(needed, 5);
    for (std::int64_t n = 1; n <= needed; ++n) {
        SCOPED_TRACE(n);
        RefuseAllocationsFrom(n);
        const Status status = link.Run();
        RefuseAllocationsFrom(-1);
        EXPECT_EQ(status, Status::Error);
        EXPECT_EQ(EscapeLevelCount(), 0);
        EXPECT_EQ(link.Run(), Status::Success) << link.Text();
    }
}

}  // namespace
}  // namespace photrak

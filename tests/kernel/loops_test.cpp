// Repetition loops: how often the body runs, what goes round, what the coordinates tell, what stays
// on the nodes meanwhile, and the errors.
#include "kernel/loops.h"

#include "support/small_link.h"

namespace photrak {
namespace {

using Texts = std::vector<std::string>;
using Values = std::vector<double>;

struct LoopLink : SmallLink {
    Texts visits;  // of steps and sinks: the coordinates of the loops, and those of the input

    explicit LoopLink(std::size_t ports = 1) {
        LoopModels(ports);
        for (const char* type : {"Step", "Sink"}) {
            models.byType[type] = [this, plain = models.byType[type]](const ModelCall& call) {
                const SimOptions& options = call.options;
                visits.push_back(Concat(options.loopSuffix, " ", options.loopIndex, "/",
                                        options.loopReps, " of ",
                                        call.component.inputs[0].node->signals->LOOP));
                return plain(call);
            };
        }
    }
    void Repeat(const char* begin, const char* reps) const {
        SetText(&(*this)[begin].parameters->value, reps);
    }
};

constexpr const char* plainLoop =
    "Source source > LoopBeginBlock begin > Step body > LoopEndBlock end > Sink sink";

TEST(RepetitionLoop, NestsAndNamesEveryRepetition) {
    LoopLink link;
    link.Draw(
        "Source source > LoopBeginBlock begin > LoopBeginBlock inner > Step body > "
        "LoopEndBlock innerEnd > LoopEndBlock end > Sink sink");
    link.Repeat("begin", "2");
    link.Repeat("inner", "3");
    SetText(&FindParameter("Name", link["inner"].parameters)->value, "m");
    EXPECT_EQ(link.Run(), Status::Success) << link.Text();
    EXPECT_EQ(link.arrived, Values{7});
    // The inner block's iterations count on through the pass.
    EXPECT_EQ(link.visits, (Texts{"L1m1 1/3 of 1", "L1m2 2/3 of 2", "L1m3 3/3 of 3",
                                  "L2m1 4/3 of 4", "L2m2 5/3 of 5", "L2m3 6/3 of 6", " 0/0 of 0"}));
    EXPECT_EQ(link.workspace->options->loopReps, 0);
}

// What comes from outside must stand on its node until the last repetition has read it, and go
// then. Wired to the first input, it runs ahead of the loop.
TEST(RepetitionLoop, KeepsSideInputsUntilTheLastRepetition) {
    LoopLink link;
    link.Draw(
        "Source side > Join join > LoopEndBlock end > Sink sink\n"
        "Source source > LoopBeginBlock begin > join.2");
    link.Repeat("begin", "4");
    link.models.byType["Sink"] = [&](const ModelCall& call) {
        EXPECT_EQ(link.Behind("side").signals, nullptr);
        link.arrived.push_back(ValueOf(call.inputs));
        return Status::Success;
    };
    EXPECT_EQ(link.Run(), Status::Success) << link.Text();
    EXPECT_EQ(link.arrived, Values{5});
    EXPECT_EQ(std::count(link.models.calls.begin(), link.models.calls.end(), "side"), 1);
}

// By design: with no repetition asked for the body runs once and nothing leaves the loop.
TEST(RepetitionLoop, LetsNothingOutWithNoRepetitionAskedFor) {
    SmallLink link;
    link.LoopModels();
    link.Draw(plainLoop);
    SetText(&link["begin"].parameters->value, "0");
    EXPECT_EQ(link.Run(), Status::Success) << link.Text();
    EXPECT_EQ(link.models.calls, (Texts{"source", "body", "sink"}));
    EXPECT_EQ(link.arrived, Values{-1});
}

TEST(RepetitionLoop, RefusesEndsThatDoNotFitTheirBegin) {
    const std::pair<const char*, const char*> rows[] = {
        {"Source source > LoopEndBlock end > Sink sink",
         "ERROR: Loop End encountered when not looping\n"},
        {"Source source > LoopBeginBlock begin > Convert convert > LoopEndBlock end > Any any",
         "ERROR: Loop End port signal types do not match Loop Begin signal types\n"},
        {"Source source > LoopBeginBlock begin > Step body > WideEnd end > Sink sink\n"
         "Source other > end.2",
         "Loop End port count does not match Loop Begin port count\n"},
    };
    for (const auto& [diagram, text] : rows) {
        SCOPED_TRACE(text);
        LoopLink link;
        link.Model("WideEnd", {UnknownSigType, UnknownSigType}, {UnknownSigType});
        link.Model("Any", {UnknownSigType}, {NoSigType});
        link.Model("Convert", {BinSigType}, {ElecSigType});
        link.models.byType["Convert"] = [](const ModelCall&) { return Status::Success; };
        link.Draw(diagram);
        link["end"].type = "LoopEndBlock";
        if (FindComponent("begin", link.workspace->components)) link.Repeat("begin", "2");
        EXPECT_EQ(link.Run(), Status::Error);
        EXPECT_EQ(link.Text(), text);
    }
}

TEST(PrepareLoopCounts, LogsACountOutsideItsLimits) {
    LoopLink link;
    link.Draw(plainLoop);
    link.Repeat("begin", "5000");
    const RunOrder order = {&link["begin"], &link["end"]};
    PrepareLoopCounts(order, *link.workspace);
    EXPECT_EQ(order[0]->reps, 1);
    EXPECT_EQ(link.Log(),
              "\nWARNING: number of loop repetitions for component 'begin' outside limits.\n");
}

}  // namespace
}  // namespace photrak

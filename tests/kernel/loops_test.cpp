// Repetition loops: how often the body runs, what goes round, what the coordinates tell, what stays
// on the nodes meanwhile, and the errors.
#include "kernel/loops.h"

#include "support/small_link.h"

namespace photrak {
namespace {

/// source - begin - body - end - sink, every body visit noted with the coordinates of the loops.
struct LoopLink : SmallLink {
    Component *source, *begin, *body, *end, *sink;
    std::vector<std::string> visits;

    explicit LoopLink(const std::string& reps) {
        LoopModels();
        source = &Add("Source", "source");
        begin = &Add("LoopBeginBlock", "begin");
        body = &Add("Step", "body");
        end = &Add("LoopEndBlock", "end");
        sink = &Add("Sink", "sink");
        SetText(&begin->parameters->value, reps);
        NoteVisits("Step");
    }

    void NoteVisits(const std::string& type) {
        models.byType[type] = [this, plain = models.byType[type]](const ModelCall& call) {
            const SimOptions& options = call.options;
            visits.push_back(
                Concat(options.loopSuffix, " ", options.loopIndex, "/", options.loopReps));
            return plain(call);
        };
    }
};

using Texts = std::vector<std::string>;

TEST(RepetitionLoop, RunsItsBodyAsOftenAsAsked) {
    LoopLink link("3");
    link.Chain({link.source, link.begin, link.body, link.end, link.sink});
    EXPECT_EQ(link.Run(), Status::Success) << link.Text();
    EXPECT_EQ(link.arrived, std::vector<double>{4});
    EXPECT_EQ(link.visits, (Texts{"L1 1/3", "L2 2/3", "L3 3/3"}));
    EXPECT_EQ(link.workspace->options->loopReps, 0);
    EXPECT_EQ(link.workspace->options->loopSuffix, "");
}

TEST(RepetitionLoop, StoresTheRepetitionWithWhatItsBlocksMake) {
    LoopLink link("2");
    link.Chain(
        {link.source, link.begin, link.body, &link.Add("Step", "second"), link.end, link.sink});
    std::vector<std::int32_t> repetitions;
    for (const char* type : {"Step", "Sink"}) {
        link.models.byType[type] = [&, plain = link.models.byType[type]](const ModelCall& call) {
            repetitions.push_back(call.component.inputs[0].node->signals->LOOP);
            return plain(call);
        };
    }
    EXPECT_EQ(link.Run(), Status::Success) << link.Text();
    EXPECT_EQ(repetitions, (std::vector<std::int32_t>{1, 1, 2, 2, 0}));
}

TEST(RepetitionLoop, NestsAndNamesEveryRepetition) {
    LoopLink link("2");
    Component& inner = link.Add("LoopBeginBlock", "inner");
    Component& innerEnd = link.Add("LoopEndBlock", "innerEnd");
    SetText(&inner.parameters->value, "3");
    SetText(&FindParameter("Name", inner.parameters)->value, "m");
    link.Chain({link.source, link.begin, &inner, link.body, &innerEnd, link.end, link.sink});
    EXPECT_EQ(link.Run(), Status::Success) << link.Text();
    EXPECT_EQ(link.arrived, std::vector<double>{7});
    // The inner block's iterations count on through the pass.
    EXPECT_EQ(link.visits,
              (Texts{"L1m1 1/3", "L1m2 2/3", "L1m3 3/3", "L2m1 4/3", "L2m2 5/3", "L2m3 6/3"}));
}

// What comes from outside must stand on its node until the last repetition has read it, and go
// then.
TEST(RepetitionLoop, KeepsSideInputsUntilTheLastRepetition) {
    LoopLink link("4");
    Component& side = link.Add("Source", "side");
    Component& join = link.Add("Join", "join");
    link.Chain({link.source, link.begin, &join, link.end, link.sink});
    link.Wire(side, 1, join, 2);
    link.models.byType["Sink"] = [&](const ModelCall& call) {
        EXPECT_EQ(side.outputs[0].node->signals, nullptr);
        link.arrived.push_back(ValueOf(call.inputs));
        return Status::Success;
    };
    EXPECT_EQ(link.Run(), Status::Success) << link.Text();
    EXPECT_EQ(link.arrived, std::vector<double>{5});
}

TEST(RepetitionLoop, GoesRoundWithTwoPortsOnOneNode) {
    SmallLink link;
    link.LoopModels(2);
    Component& source = link.Add("Source", "source");
    Component& begin = link.Add("LoopBeginBlock", "begin");
    Component& join = link.Add("Join", "join");
    Component& end = link.Add("LoopEndBlock", "end");
    Component& sink = link.Add("Sink", "sink");
    SetText(&begin.parameters->value, "3");
    link.Chain({&source, &begin, &join, &end, &sink});
    link.Wire(source, 1, begin, 2);
    link.Wire(begin, 2, join, 2);
    link.Wire(join, 1, end, 2);
    EXPECT_EQ(link.Run(), Status::Success) << link.Text();
    EXPECT_EQ(link.arrived, std::vector<double>{8});
}

// Kept deliberately: with no repetition asked for the body runs once and nothing leaves the loop.
TEST(RepetitionLoop, LetsNothingOutWithNoRepetitionAskedFor) {
    for (const char* reps : {"0", "-3"}) {
        LoopLink link(reps);
        link.Chain({link.source, link.begin, link.body, link.end, link.sink});
        EXPECT_EQ(link.Run(), Status::Success) << link.Text();
        EXPECT_EQ(link.visits.size(), 1u);
        EXPECT_EQ(link.arrived, std::vector<double>{-1});
    }
}

TEST(RepetitionLoop, RefusesAnEndWithoutABegin) {
    LoopLink link("2");
    link.Chain({link.source, link.end, link.sink});
    EXPECT_EQ(link.Run(), Status::Error);
    EXPECT_EQ(link.Text(), "ERROR: Loop End encountered when not looping\n");
}

TEST(RepetitionLoop, ComparesItsTwoEndsWhenItGoesRound) {
    LoopLink link("2");
    link.Model("Convert", {BinSigType}, {ElecSigType});
    Component& convert = link.Add("Convert", "convert");
    link.Chain({link.source, link.begin, &convert, link.end});
    link.Model("Any", {UnknownSigType}, {NoSigType});
    link.Wire(*link.end, 1, link.Add("Any", "any"), 1);
    link.models.byType["Convert"] = [](const ModelCall& call) {
        ElecSig* made = nullptr;
        EXPECT_EQ(CreateElecSig(&made, 4), 0);
        call.outputs->sig = made;
        call.outputs->sigType = ElecSigType;
        return Status::Success;
    };
    EXPECT_EQ(link.Run(), Status::Error);
    EXPECT_EQ(link.Text(),
              "ERROR: Loop End port signal types do not match Loop Begin signal types\n");
}

TEST(RepetitionLoop, ComparesItsPortCounts) {
    LoopLink link("2");
    link.catalogue.models.clear();
    link.Model("LoopEndBlock", {UnknownSigType, UnknownSigType}, {UnknownSigType});
    link.Model("Source", {NoSigType}, {BinSigType});
    Component& wide = link.Add("LoopEndBlock", "wide");
    link.Chain({link.source, link.begin, link.body, &wide, link.sink});
    link.Wire(link.Add("Source", "other"), 1, wide, 2);
    EXPECT_EQ(link.Run(), Status::Error);
    EXPECT_EQ(link.Text(), "Loop End port count does not match Loop Begin port count\n");
}

TEST(PrepareLoopCounts, LogsACountOutsideItsLimits) {
    LoopLink link("5000");
    link.Chain({link.source, link.begin, link.body, link.end, link.sink});
    const RunOrder order = {link.source, link.begin, link.body, link.end, link.sink};
    PrepareLoopCounts(order, *link.workspace);
    EXPECT_EQ(link.begin->reps, 1);
    EXPECT_EQ(link.Log(),
              "\nWARNING: number of loop repetitions for component 'begin' outside limits.\n");
    SetText(&link.begin->parameters->value, "4 + 3");
    PrepareLoopCounts(order, *link.workspace);
    EXPECT_EQ(link.begin->reps, 7);
}

}  // namespace
}  // namespace photrak

// A workspace built in memory over a catalogue of the test's own, with models that are functions of
// the test. Signals are bits whose bitRate serves as the value that travels.
#pragma once

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "base/text.h"
#include "kernel/driver.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace photrak {

/// Models by type, each a function of the test; every call is noted.
struct FakeModels : UserModels {
    using Model = std::function<Status(const ModelCall&)>;
    std::map<std::string, Model, std::less<>> byType;
    mutable std::vector<std::string> calls;  // component names, in the order of the run

    bool Knows(std::string_view type) const override { return byType.find(type) != byType.end(); }
    Status Run(const ModelCall& call) const override {
        calls.push_back(call.component.name);
        return byType.find(call.component.type)->second(call);
    }
};

/// Stores bits of the given value in an output cell.
inline void Emit(Nodelist* cell, double value) {
    BinSig* bits = nullptr;
    ASSERT_EQ(CreateBinSig(&bits, 1), 0);
    bits->bitRate = value;
    bits->bitSequence[1] = 0;
    cell->sig = bits;
    cell->sigType = BinSigType;
}

/// The value of bits in a cell, -1 without a signal.
inline double ValueOf(const Nodelist* cell) {
    return cell && cell->sig ? static_cast<const BinSig*>(cell->sig)->bitRate : -1;
}

class SmallLink {
  public:
    RecordingHost host;
    TempDir directory;
    Catalogue catalogue;
    FakeModels models;
    std::unique_ptr<Workspace> workspace = CreateWorkspace();
    std::string errorText;

    /// Types that most tests use: Source gives 1, Step adds 1, Join adds its inputs, Sink takes
    /// one.
    SmallLink() {
        Model("Source", {NoSigType}, {BinSigType});
        Model("Step", {BinSigType}, {BinSigType});
        Model("Join", {BinSigType, BinSigType}, {BinSigType});
        Model("Sink", {BinSigType}, {NoSigType});
        models.byType["Source"] = [](const ModelCall& call) {
            Emit(call.outputs, 1);
            return Status::Success;
        };
        models.byType["Step"] = [](const ModelCall& call) {
            Emit(call.outputs, ValueOf(call.inputs) + 1);
            return Status::Success;
        };
        models.byType["Join"] = [](const ModelCall& call) {
            Emit(call.outputs, ValueOf(call.inputs) + ValueOf(call.inputs->next));
            return Status::Success;
        };
        models.byType["Sink"] = [this](const ModelCall& call) {
            arrived.push_back(ValueOf(call.inputs));
            return Status::Success;
        };
    }

    std::vector<double> arrived;  // values at sinks

    /// A prototype with these port types, whose counts are fixed.
    Component& Model(const std::string& type, const std::vector<std::int32_t>& inputs,
                     const std::vector<std::int32_t>& outputs) {
        auto model = std::make_unique<Component>();
        model->name = model->type = type;
        for (std::int32_t sigType : inputs) model->inputs.push_back({nullptr, sigType});
        for (std::int32_t sigType : outputs) model->outputs.push_back({nullptr, sigType});
        model->NUMINPUTS = model->MININPUTS = model->MAXINPUTS =
            static_cast<std::int32_t>(inputs.size());
        model->NUMOUTPUTS = model->MINOUTPUTS = model->MAXOUTPUTS =
            static_cast<std::int32_t>(outputs.size());
        Component& made = *model;
        const auto place = std::find_if(catalogue.models.begin(), catalogue.models.end(),
                                        [&](const auto& other) { return !(other->name < type); });
        catalogue.models.insert(place, std::move(model));
        return made;
    }

    /// The two loop blocks for `ports` signals of any kind.
    void LoopModels(std::size_t ports = 1) {
        const std::vector<std::int32_t> any(ports, UnknownSigType);
        Component& begin = Model("LoopBeginBlock", any, any);
        begin.parameters = IntParameter("NumReps", "1", -10, 1000);
        begin.parameters->next = CreateParameter("Name", StringType);
        SetText(&begin.parameters->next->value, "L");
        Model("LoopEndBlock", any, any);
    }

    static Parameter* IntParameter(const std::string& name, const std::string& value,
                                   std::int32_t least, std::int32_t greatest) {
        Parameter* parameter = CreateParameter(name, IntType);
        EXPECT_NE(parameter, nullptr);
        SetText(&parameter->value, value);
        parameter->min = Allocate(sizeof(std::int32_t));
        parameter->max = Allocate(sizeof(std::int32_t));
        *static_cast<std::int32_t*>(parameter->min) = least;
        *static_cast<std::int32_t*>(parameter->max) = greatest;
        return parameter;
    }

    /// A number without limits to speak of, on any component.
    static Parameter& GiveNumber(Component& component, const std::string& name,
                                 const std::string& value) {
        Parameter* parameter = CreateParameter(name, DoubleType);
        EXPECT_NE(parameter, nullptr);
        SetText(&parameter->value, value);
        SetText(&parameter->STDDEV, "0");
        parameter->min = Allocate(sizeof(double));
        parameter->max = Allocate(sizeof(double));
        *static_cast<double*>(parameter->min) = -1e300;
        *static_cast<double*>(parameter->max) = 1e300;
        InsertParameterSorted(&component.parameters, parameter);
        return *parameter;
    }

    Component& Add(const std::string& type, const std::string& name, std::int32_t inputs = 0,
                   std::int32_t outputs = 0) {
        Component* made = AddComponent(*workspace, type, name, inputs, outputs, catalogue);
        EXPECT_NE(made, nullptr) << type;
        return *made;
    }

    /// Wires the output to the input and expects that it works.
    void Wire(Component& from, std::int32_t output, Component& to, std::int32_t input) {
        std::string text;
        EXPECT_EQ(ConnectComponents(*workspace, from, output, to, input, text), Status::Success)
            << text;
    }
    /// First output to first input along the list.
    void Chain(const std::vector<Component*>& components) {
        for (std::size_t i = 1; i < components.size(); ++i) {
            Wire(*components[i - 1], 1, *components[i], 1);
        }
    }

    Status Run() { return RunSimulation(workspace.get(), {{}, &models}); }
    const std::string& Text() const { return workspace->errorText; }
    std::string Log() const { return directory.Read("log.txt"); }
};

}  // namespace photrak

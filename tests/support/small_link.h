// A workspace built in memory over a catalogue of the test's own, with models that are functions of
// the test. Signals are bits whose bitRate serves as the value that travels.
#pragma once

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "base/text.h"
#include "kernel/driver.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "support/parameter_list.h"
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

/// Stores bits of the given value in an output cell; an error if memory is refused.
inline Status Emit(Nodelist* cell, double value) {
    BinSig* bits = nullptr;
    if (CreateBinSig(&bits, 1) != 0) return Status::Error;
    bits->bitRate = value;
    bits->bitSequence[1] = 0;
    cell->sig = bits;
    cell->sigType = BinSigType;
    return Status::Success;
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
        models.byType["Source"] = [](const ModelCall& call) { return Emit(call.outputs, 1); };
        models.byType["Step"] = [](const ModelCall& call) {
            return Emit(call.outputs, ValueOf(call.inputs) + 1);
        };
        models.byType["Join"] = [](const ModelCall& call) {
            return Emit(call.outputs, ValueOf(call.inputs) + ValueOf(call.inputs->next));
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
        begin.parameters = LimitedParameter("NumReps", IntType, "1", -10, 1000);
        begin.parameters->next = ParameterList::NewParameter("Name", StringType, "L");
        Model("LoopEndBlock", any, any);
    }

    /// A number without limits to speak of, on any component.
    static Parameter& GiveNumber(Component& component, const std::string& name,
                                 const std::string& value) {
        Parameter* parameter = LimitedParameter(name, DoubleType, value, -1e300, 1e300);
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
    /// The component of that name.
    Component& operator[](std::string_view name) const {
        Component* found = FindComponent(name, workspace->components);
        EXPECT_NE(found, nullptr) << name;
        return *found;
    }
    /// The node of its first output.
    Node& Behind(std::string_view name) const { return *(*this)[name].outputs[0].node; }
    /// Makes and wires what is drawn: "Source a > Join join > Sink sink\nSource b > join.2". A type
    /// stands before the name of what is new. The second port of `join` is join.2: an output where
    /// it begins a line, else an input.
    void Draw(const std::string& diagram) {
        std::istringstream lines(diagram);
        for (std::string line; std::getline(lines, line);) {
            std::istringstream words(line);
            Component* from = nullptr;
            std::int32_t output = 1;
            for (std::string word, type; words >> word;) {
                if (word == ">") continue;
                if (FindComponent(word, catalogue.models)) {
                    type = word;
                    continue;
                }
                const std::size_t dot = word.find('.');
                const std::int32_t port = dot == std::string::npos ? 1 : word[dot + 1] - '0';
                const std::string name = word.substr(0, dot);
                Component& to = type.empty() ? (*this)[name] : Add(type, name);
                type.clear();
                if (from) Wire(*from, output, to, port);
                output = from ? 1 : port;
                from = &to;
            }
        }
    }

    Status Run() { return RunSimulation(workspace.get(), {{}, &models}); }
    const std::string& Text() const { return workspace->errorText; }
    std::string Log() const { return directory.Read("log.txt"); }
};

}  // namespace photrak

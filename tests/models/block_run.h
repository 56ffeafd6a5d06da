// Runs a model on borrowed signals and frees what it stored at its outputs.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "kernel/driver.h"
#include "support/model_parameters.h"

namespace photrak {

class BlockRun {
  public:
    struct Input {
        Input(OpSignal* light, std::int32_t type = OpSigType) : sigType(type), sig(light) {}
        /// What another run made; a model never changes its input.
        Input(const OpSignal& light) : Input(const_cast<OpSignal*>(&light)) {}
        Input(ElecSig* wave, std::int32_t type = ElecSigType) : sigType(type), sig(wave) {}
        Input(const Owned<OpSignal>& light) : Input(light.get()) {}
        Input(const Owned<ElecSig>& wave) : Input(wave.get()) {}
        std::int32_t sigType;
        void* sig;
    };

    BlockRun(Status (*model)(const ModelCall&), ModelBlock& block, std::vector<Input> signals,
             std::size_t outputCount = 1, std::int32_t outputType = UnknownSigType)
        : BlockRun(model, block.component, std::move(signals), outputCount, outputType) {}
    BlockRun(Status (*model)(const ModelCall&), Component& component, std::vector<Input> signals,
             std::size_t outputCount = 1, std::int32_t outputType = UnknownSigType)
        : outputs_(outputCount) {
        std::vector<Nodelist> inputs(signals.size() + 1);
        for (std::size_t i = 0; i < signals.size(); ++i) {
            inputs[i] = {i + 1 < signals.size() ? &inputs[i + 1] : nullptr, signals[i].sigType,
                         signals[i].sig};
        }
        for (std::size_t i = 0; i < outputCount; ++i) {
            outputs_[i] = {i + 1 < outputCount ? &outputs_[i + 1] : nullptr, outputType, nullptr};
        }
        status = model({{component.name, text},
                        workspace_,
                        component,
                        options_,
                        signals.empty() ? nullptr : inputs.data(),
                        outputs_.data()});
    }
    ~BlockRun() {
        for (Nodelist& cell : outputs_) FreeSignal(&cell.sig, cell.sigType);
    }
    BlockRun(const BlockRun&) = delete;
    BlockRun& operator=(const BlockRun&) = delete;

    bool IsEmpty(std::size_t port = 0) const { return !outputs_[port].sig; }
    const OpSignal& Light(std::size_t port = 0) const { return At<OpSignal>(port); }
    const OpSig& Channel(std::size_t port = 0) const { return *Light(port).channels; }
    const ElecSig& Wave(std::size_t port = 0) const { return At<ElecSig>(port); }

    Status status = Status::Error;
    std::string text;

  private:
    /// A port without a signal fails the test with what the model said.
    template <class Signal>
    const Signal& At(std::size_t port) const {
        if (IsEmpty(port)) throw std::runtime_error("no signal at the output: " + text);
        return *static_cast<const Signal*>(outputs_[port].sig);
    }

    Workspace workspace_;
    SimOptions options_;
    std::vector<Nodelist> outputs_;
};

}  // namespace photrak

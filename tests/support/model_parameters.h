// A component with the parameters that a run would have evaluated, for tests of models.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "base/memory.h"
#include "kernel/signals.h"
#include "kernel/workspace.h"
#include "support/parameter_list.h"

namespace photrak {

class ModelBlock {
  public:
    Component component;

    explicit ModelBlock(std::string_view name = "block") { component.name = name; }

    ModelBlock& Number(std::string_view name, double value) {
        Add(name, DoubleType, "").valactual = NewBlock(value);
        return *this;
    }
    ModelBlock& Whole(std::string_view name, std::int32_t value) {
        Add(name, IntType, "").valactual = NewBlock(value);
        return *this;
    }
    ModelBlock& Word(std::string_view name, std::string_view value) {
        Add(name, EnumType, value);
        return *this;
    }

  private:
    Parameter& Add(std::string_view name, std::int32_t type, std::string_view value) {
        Parameter* parameter = ParameterList::NewParameter(name, type, value);
        parameter->next = component.parameters;
        return *(component.parameters = parameter);
    }
};

/// An output cell that frees what a model stored.
struct OutputCell : Nodelist {
    explicit OutputCell(std::int32_t type) : Nodelist{nullptr, type, nullptr} {}
    ~OutputCell() { FreeSignal(&sig, sigType); }
    OutputCell(const OutputCell&) = delete;
    OutputCell& operator=(const OutputCell&) = delete;

    template <class Signal>
    const Signal& As() const {
        return *static_cast<const Signal*>(sig);
    }
};

/// What a model with one output did.
struct Outcome {
    OutputCell output;
    std::string text;
    Status status = Status::Success;

    explicit Outcome(std::int32_t type) : output(type) {}

    /// The signal of a model that succeeded.
    template <class Signal>
    const Signal& Made() const {
        EXPECT_EQ(status, Status::Success) << text;
        return output.As<Signal>();
    }
    /// An error that tells this, and an empty port. Allocations work again.
    void ExpectRefusal(std::string_view reason) const {
        RefuseAllocationsFrom(-1);
        EXPECT_EQ(status, Status::Error);
        EXPECT_NE(text.find(reason), std::string::npos) << text << "\ninstead of " << reason;
        EXPECT_EQ(output.sig, nullptr);
    }
};

}  // namespace photrak

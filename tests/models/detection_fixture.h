// Runs one block of the detection models over one input and one output cell.
#pragma once

#include "kernel/driver.h"
#include "support/parameter_list.h"
#include "support/signals.h"

namespace photrak {

struct BlockResult {
    Status status = Status::Success;
    std::string text;
    Owned<ElecSig> output;
};

/// `parameters` stay with the caller; `input` is of the type `inputType`, or null.
inline BlockResult RunBlock(Status (*model)(const ModelCall&), const ParameterList& parameters,
                            void* input, std::int32_t inputType,
                            std::int32_t outputType = ElecSigType) {
    Workspace workspace;
    SimOptions options;
    Component component;
    component.name = "block";
    component.parameters = parameters.head;
    Nodelist in{nullptr, inputType, input}, out{nullptr, outputType, nullptr};
    BlockResult result;
    result.status = model({workspace, component, options, &in, &out, result.text});
    result.output.reset(static_cast<ElecSig*>(out.sig));
    component.parameters = nullptr;
    return result;
}

}  // namespace photrak

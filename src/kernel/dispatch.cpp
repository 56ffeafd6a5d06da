// From a component's type to its model: the built-in entries in their order, then the user models.
#include <algorithm>
#include <exception>
#include <new>

#include "base/escape.h"
#include "base/text.h"
#include "kernel/driver.h"

namespace photrak {
namespace {

Status RunModel(const ModelTable& models, const ModelCall& call) {
    const Component& component = call.component;
    const auto entry = std::find_if(models.entries.begin(), models.entries.end(),
                                    [&](const ModelEntry& e) { return e.type == component.type; });
    if (entry != models.entries.end()) return entry->run(call);
    if (models.nestedRuns && component.type == superBlockType) {
        return models.nestedRuns->Run(call, models);
    }
    if (models.userModels && models.userModels->Knows(component.type)) {
        return models.userModels->Run(call);
    }
    AppendPiece(call.errorText, Concat("ERROR: don't know model type '", component.type,
                                       "' for component '", call.path, call.owner, "'\n"));
    return Status::Error;
}

Status FailModel(const ModelCall& call, std::string_view reason) {
    AppendPiece(call.errorText, Concat("ERROR: the model of component '", call.path, call.owner,
                                       "' failed: ", reason, "\n"));
    return Status::Error;
}

}  // namespace

Status DispatchModel(const ModelTable& models, const ModelCall& call) {
    try {
        const Status status = RunModel(models, call);
        if (status == Status::Success || status == Status::Warning) return status;
        return Status::Error;  // whatever a user library returned
    } catch (const Escape&) {
        throw;
    } catch (const std::bad_alloc&) {
        return FailModel(call, "out of memory");
    } catch (const std::exception& failure) {
        return FailModel(call, failure.what());
    }
}

}  // namespace photrak

// A model definition from a text, then what a topology does with it: a component, its evaluation
// and checks, and its description.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "files/catalogue.h"
#include "files/model_definition.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"

namespace photrak {
namespace {

void MakeComponentOf(const Component& prototype) {
    const auto workspace = CreateWorkspace();
    Component* block = CreateComponentFrom(prototype, "block", 3, 0, workspace->components);
    if (!block) return;
    std::string errorText;
    static_cast<void>(EvalComponentParams(*block, workspace.get(), errorText));
    static_cast<void>(CheckPorts(*block, errorText));
    // A parameter that a definition accepts is whole: its array has what it counts.
    for (const Parameter& parameter : Items(block->parameters)) {
        if (!IsArrayType(parameter.type)) continue;
        const auto& array = *static_cast<const ArrayRecord*>(parameter.valactual);
        const std::int64_t count = std::int64_t{array.rows} * array.cols;
        if (count < 0 || (count > 0) != (array.data != nullptr)) std::abort();
    }
}

}  // namespace
}  // namespace photrak

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Component prototype;
    prototype.name = prototype.type = "SuperBlock";
    LineReader reader(text, "input");
    std::string errorText;
    const Status status = ReadModelDefinition(prototype, reader, errorText);
    if (status == Status::Error && errorText.empty()) std::abort();
    static_cast<void>(DescribeModel(prototype));
    MakeComponentOf(prototype);
    return 0;
}

// The definition file of a SuperBlock from a text; then the other way around: variables of every
// type with parts of the input as their texts, written as a definition, must come back from it.
#include <cstddef>
#include <cstdint>
#include <set>

#include "files/model_definition.h"
#include "files/superblock_file.h"
#include "files/topology_words.h"
#include "fuzz_support.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"

namespace photrak {
namespace {

/// What a definition makes of one variable, as a topology makes it from the variables that it
/// wrote.
std::vector<Variable> VariablesOf(const Component& prototype) {
    std::vector<Variable> variables;
    for (const Parameter& parameter : Items(prototype.parameters)) {
        Variable variable;
        variable.name = parameter.name;
        variable.type = parameter.type;
        variable.value = parameter.value ? parameter.value : "";
        variables.push_back(std::move(variable));
    }
    return variables;
}

Status Read(Component& prototype, std::string_view text) {
    prototype.name = prototype.type = "SuperBlock";
    LineReader reader(text, "input");
    std::string errorText;
    const Status status = ReadModelDefinition(prototype, reader, errorText);
    Require(status != Status::Error || !errorText.empty());
    return status;
}

void RunOnce(std::string_view input) {
    Component hostile;
    const Status status = Read(hostile, input);
    const auto workspace = CreateWorkspace();
    if (Component* block = CreateComponentFrom(hostile, "block", 0, 0, workspace->components)) {
        std::string errorText;
        static_cast<void>(EvalComponentParams(*block, workspace.get(), errorText));
        static_cast<void>(CheckPorts(*block, errorText));
    }
    if (status != Status::Success) return;
    // Written once, a definition stays as it is however often it is read and written again.
    const std::string once = SuperBlockText("stem", {}, VariablesOf(hostile));
    Component again;
    if (Read(again, once) != Status::Success) return;
    Require(again.superBlockFile == "stem");
    const std::string twice = SuperBlockText("stem", {}, VariablesOf(again));
    Component last;
    Require(Read(last, twice) == Status::Success);
    Require(SuperBlockText("stem", {}, VariablesOf(last)) == twice);
}

}  // namespace
}  // namespace photrak

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    SilentMessages silent;
    Host host = CurrentHost();
    host.messages = &silent;
    const HostScope scope(host);
    RunOnce({reinterpret_cast<const char*>(data), size});
    return 0;
}

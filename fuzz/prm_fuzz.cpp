// Parameter files from a text, loaded into a component that has a parameter of every type; what is
// saved after a load without fault loads again and is saved alike.
#include <cstddef>
#include <cstdint>

#include "files/model_definition.h"
#include "files/param_file.h"
#include "fuzz_support.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"

namespace photrak {
namespace {

constexpr std::string_view definition =
    "COMPONENT Every\n"
    "PARAM d DoubleType\nMINVALUE 0\nMAXVALUE 9\nVALUE 1\nSTDDEV 0\nPROBDIST NoProbDist\nENDPARAM\n"
    "PARAM i IntType\nMINVALUE 0\nMAXVALUE 9\nVALUE 1\nENDPARAM\n"
    "PARAM z ComplexType\nVALUE 1 2\nENDPARAM\n"
    "PARAM c CharType\nMINVALUE a\nMAXVALUE z\nVALUE q\nENDPARAM\n"
    "PARAM s StringType\nVALUE\nENDPARAM\n"
    "PARAM e EnumType\nVALUE a\nFIELD a b c\nENDPARAM\n"
    "PARAM da DoubleArrayType\nROWS 2\nCOLS 2\nDATA\n1 2 3 4\nENDPARAM\n"
    "PARAM ba BinaryArrayType\nROWS 1\nCOLS 2\nDATA\n1 0\nENDPARAM\nENDCOMPONENT\n";

std::string Saved(const Component& component) {
    std::string out;
    Require(ParamFileText(component, out) == Status::Success);
    return out;
}

void LoadAndSave(Component& component, Workspace& workspace, std::string_view input) {
    std::string text;
    const Status loaded = LoadParamText(component, workspace, input, "input", text);
    Require((loaded == Status::Success) == text.empty());
    static_cast<void>(EvaluateForParamFile(component, workspace, text));
    const std::string first = Saved(component);
    if (loaded != Status::Success) return;
    text.clear();
    Require(LoadParamText(component, workspace, first, "saved", text) == Status::Success);
    // Six digits of an element are all that a file keeps, and they stay.
    Require(Saved(component) == first);
}

}  // namespace
}  // namespace photrak

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    SilentMessages silent;
    Host host = CurrentHost();
    host.messages = &silent;
    const HostScope scope(host);
    Component prototype;
    prototype.name = prototype.type = "Every";
    LineReader reader(definition, "definition");
    std::string errorText;
    Require(ReadModelDefinition(prototype, reader, errorText) == Status::Success);
    const auto workspace = CreateWorkspace();
    AddVariable(*workspace, "x", DoubleType, "2");
    Component* block = CreateComponentFrom(prototype, "block", 0, 0, workspace->components);
    Require(block != nullptr);
    LoadAndSave(*block, *workspace, {reinterpret_cast<const char*>(data), size});
    return 0;
}

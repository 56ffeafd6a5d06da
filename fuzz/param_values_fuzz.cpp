// Saved parameter blocks from a text, read into a component that has a parameter of every type, and
// into the same component once more.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "files/model_definition.h"
#include "files/param_values.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"

namespace photrak {
namespace {

constexpr std::string_view definition =
    "COMPONENT Every\n"
    "PARAM d DoubleType\nMINVALUE 0\nMAXVALUE 9\nVALUE 1\nSTDDEV 0\nPROBDIST NoProbDist\nENDPARAM\n"
    "PARAM i IntType\nMINVALUE 0\nMAXVALUE 9\nVALUE 1\nENDPARAM\n"
    "PARAM z ComplexType\nMINVALUE 0\nMAXVALUE 9\nVALUE 1 2\nENDPARAM\n"
    "PARAM c CharType\nMINVALUE a\nMAXVALUE z\nVALUE q\nENDPARAM\n"
    "PARAM s StringType\nVALUE\nENDPARAM\n"
    "PARAM e EnumType\nVALUE a\nFIELD a b c\nENDPARAM\n"
    "PARAM da DoubleArrayType\nROWS 2\nCOLS 2\nDATA\n1 2 3 4\nENDPARAM\n"
    "PARAM ia IntArrayType\nROWS 1\nCOLS 2\nDATA\n1 2\nENDPARAM\n"
    "PARAM ba BinaryArrayType\nROWS 1\nCOLS 2\nDATA\n1 0\nENDPARAM\n"
    "PARAM za ComplexArrayType\nROWS 1\nCOLS 2\nDATA\n1 2\n3 4\nENDPARAM\n";

void ReadTwice(Component& component, Workspace& workspace, std::string_view text) {
    for (int i = 0; i < 2; ++i) {
        LineReader reader(text, "input");
        std::string errorText;
        const Status status = ReadParamValues(component, reader, errorText);
        if (status == Status::Error && errorText.empty()) std::abort();
        static_cast<void>(EvalComponentParams(component, &workspace, errorText));
        static_cast<void>(CheckPorts(component, errorText));
        Parameter* copy = nullptr;
        static_cast<void>(CopyParameterList(&copy, component.parameters));
        FreeParameterList(&copy);
    }
}

}  // namespace
}  // namespace photrak

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    Component prototype;
    LineReader reader(definition, "definition");
    std::string errorText;
    if (ReadModelDefinition(prototype, reader, errorText) != Status::Success) std::abort();
    const auto workspace = CreateWorkspace();
    Component* block = CreateComponentFrom(prototype, "block", 0, 0, workspace->components);
    if (!block) std::abort();
    ReadTwice(*block, *workspace, {reinterpret_cast<const char*>(data), size});
    return 0;
}

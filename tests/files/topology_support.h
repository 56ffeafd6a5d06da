// What the tests of topology files share: one catalogue, loading and saving in memory, and texts of
// blocks.
#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>

#include "base/text.h"
#include "files/topology.h"
#include "kernel/graph.h"
#include "platform/file_system.h"
#include "support/paths.h"
#include "support/small_catalogue.h"

namespace photrak {

inline std::string DataFile(const std::string& name) {
    std::string text, error;
    EXPECT_TRUE(ReadWholeFile(SourceDir() + "/tests/data/" + name, text, error)) << error;
    return text;
}

/// A file with every block, as it is saved.
inline const std::string savedFile = DataFile("every_block.top");

inline const Catalogue& Models() {
    static const Catalogue catalogue = SmallCatalogue();
    return catalogue;
}

struct Loaded {
    Status status = Status::Success;
    std::unique_ptr<Workspace> workspace;

    const std::string& Errors() const { return workspace->errorText; }
    Component& Only() const { return *workspace->components.at(0); }
    Node& NodeAt(std::int32_t number) const { return FindOrCreateNode(number, *workspace); }
};

inline Loaded Load(std::string_view text, const Catalogue& catalogue = Models()) {
    Loaded loaded;
    loaded.status = TopologyLoadText(text, "link.top", loaded.workspace, catalogue);
    return loaded;
}

inline std::string Save(Workspace& workspace) {
    std::string text;
    EXPECT_NE(TopologySaveText(workspace, text), Status::Error) << workspace.errorText;
    return text;
}

/// A component on the given nodes, with the given parameter blocks.
inline std::string Block(std::string_view head, std::string_view inputs, std::string_view outputs,
                         std::string_view parameters = "") {
    return Concat("COMPONENT ", head, "\nNOTE\nICON x 1 2\nNUMINPUTS 1\nNUMOUTPUTS 1\nINPUTFROM ",
                  inputs, "\nOUTPUTTO ", outputs, "\n", parameters, "ENDCOMPONENT\n");
}

inline std::string Parameter1(std::string_view name, std::string_view type,
                              std::string_view value) {
    return Concat("PARAM ", name, " ", type, "\nVALUE ", value, "\nENDPARAM\n");
}

inline const std::string faultyHead = "COMPONENT a Sink\nNOTE\nICON x 1 2\n";
/// Files with one fault each, what is reported of it, and in which line.
inline const struct {
    std::string text, message;
    int line;
} faultyFiles[] = {
    {"BEGINVARIABLES\nx float 1\nENDVARIABLES\n",
     "Error loading topology: variable cannot be type float\n", 2},
    {"SIMOPTIONS\n", "the file ends inside the SIMOPTIONS block\n", 1},
    // Its end is missing: the next block begins all the same.
    {faultyHead + "NUMOUTPUTS 1\n",
     "ERROR reading topology file: component 'a' needs NUMINPUTS here\n", 4},
    {"NODEBEGIN 1 Light\nENDNODE\n",
     "Error loading topology: node signaltype cannot be type Light\n", 1},
    {"NODEBEGIN 1 OpSigType\nENDNODE\nNODEBEGIN 1 OpSigType\nENDNODE\n",
     "Error loading topology: node signaltype conflicts in node 1\n", 3},
    {"COMPONENT\n", "Error loading topology: component name and type missing\n", 1},
    {Block("a Nothing%s", "1", "0"), "Cannot create component 'a' of model type 'Nothing%s'\n", 5},
    {Block("a SuperBlock none", "1", "0"),
     "SuperBlock:'none'\ncannot read 'none.dts': No such file or directory\n", 5},
    {faultyHead + "NUMINPUTS 1\nNUMOUTPUTS 1\nOUTPUTTO 0\n",
     "TopologyLoad: Error in Component INPUT_FROM field\n", 6},
    {Block("a Bare", "1 2", "3"), "\nTopology load ERROR in a input or output node counts\n", 7},
    {faultyHead + "NUMINPUTS 1\nNUMOUTPUTS 1\n", "the file ends inside the COMPONENT 'a' block\n",
     5},
};

}  // namespace photrak

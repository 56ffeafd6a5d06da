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
#include "support/small_catalogue.h"

namespace photrak {

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

}  // namespace photrak

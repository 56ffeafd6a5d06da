// A diagram of 10,000 blocks and 20,000 wires: the outputs of a coupler run to its right and lower
// neighbors.
#pragma once

#include <cstdlib>
#include <string>
#include <vector>

#include "base/text.h"
#include "files/catalogue.h"
#include "kernel/graph.h"
#include "platform/file_system.h"
#include "workbench/file_commands.h"

namespace photrak {

inline constexpr std::int32_t latticeColumns = 112, latticeBlocks = 10000;

/// Writes it to a file; the workbench is left without diagrams.
inline void WriteLattice(Workbench& workbench, const std::string& path) {
    Workspace& workspace = *NewDiagram(workbench).workspace;
    std::vector<Component*> made;
    for (std::int32_t i = 0; i < latticeBlocks; ++i) {
        const std::string digits = Concat(100000 + i).substr(1);
        Component* block = AddComponent(workspace, "OpticalCoupler", Concat("Coupler", digits), 0,
                                        0, workbench.catalogue);
        block->x = i % latticeColumns * gridUnits;
        block->y = i / latticeColumns * gridUnits;
        made.push_back(block);
    }
    const auto wire = [&](std::int32_t from, std::int32_t port, std::int32_t by) {
        std::string text;
        const std::int32_t to = (from + by) % latticeBlocks;
        const Status status =
            ConnectComponents(workspace, *made[static_cast<std::size_t>(from)], port,
                              *made[static_cast<std::size_t>(to)], port, text);
        if (status == Status::Error) std::abort();
    };
    for (std::int32_t i = 0; i < latticeBlocks; ++i) {
        wire(i, 1, 1);
        wire(i, 2, latticeColumns);
    }
    if (!ReplaceFile(path, TextOf(workspace))) std::abort();
    CloseAll(workbench);
}

}  // namespace photrak

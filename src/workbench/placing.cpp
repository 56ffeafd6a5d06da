// Placing goes on with numbered names that the diagram does not hold yet.
#include "workbench/placing.h"

#include <algorithm>
#include <filesystem>

#include "base/text.h"
#include "files/catalogue.h"
#include "files/model_definition.h"
#include "files/topology.h"
#include "kernel/graph.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

std::string NextName(Workbench& workbench, const Workspace& workspace) {
    std::string name;
    do {
        name = Concat("unnamed", ++workbench.unnamedCounter);
    } while (FindComponent(name, workspace.components));
    return name;
}

/// Port counts asked for with the model in hand. One count serves both sides where they must agree.
Component* AddModel(Workbench& workbench, DiagramView& view) {
    const std::string& type = workbench.palette.Row(view.modelIndex).name;
    const Component* prototype = FindModel(workbench.catalogue, type);
    if (!prototype) return nullptr;
    std::int32_t inputs = workbench.palette.activeInputs[view.modelIndex];
    std::int32_t outputs = workbench.palette.activeOutputs[view.modelIndex];
    if (prototype->NUMINEQNUMOUTNODES != 0) inputs = outputs = std::max(inputs, outputs);
    return AddComponent(*view.workspace, type, NextName(workbench, *view.workspace), inputs,
                        outputs, workbench.catalogue);
}

/// What the component keeps of the chosen file: its stem if the path rule finds the very file by
/// it, else the path without extension, relative to the diagram where it lies below it.
std::string SuperBlockName(const Workbench& workbench, const DiagramView& view,
                           const fs::path& definition) {
    std::error_code error;
    const std::string stem = definition.stem().string();
    const std::string file = definition.filename().string();
    for (const fs::path& folder :
         {fs::path(view.directory), fs::path(workbench.catalogue.superBlockDirectory)}) {
        const fs::path found = folder / file;
        if (!fs::exists(found, error)) continue;
        if (fs::equivalent(found, definition, error)) return stem;
        break;
    }
    const fs::path whole = fs::path(definition).replace_extension();
    const fs::path relative = whole.lexically_relative(view.directory);
    return relative.empty() || *relative.begin() == ".." ? whole.string() : relative.string();
}

/// The definition of what was chosen: NAME.top stands for NAME.dts beside it.
fs::path DefinitionOf(const fs::path& chosen) {
    return chosen.extension() == ".top" ? fs::path(chosen).replace_extension(".dts") : chosen;
}

std::unique_ptr<Component> ReadSuperBlock(Workbench& workbench, const fs::path& definition,
                                          const std::string& name) {
    auto prototype = std::make_unique<Component>();
    prototype->name = prototype->type = "SuperBlock";
    std::string text;
    if (ReadModelDefinition(*prototype, definition.string(), text) == Status::Error) {
        workbench.ErrorBox(text);
        return nullptr;
    }
    prototype->superBlockFile = name;
    return prototype;
}

Component* AddSuperBlock(const Component& prototype, Workspace& workspace) {
    Component* made = CreateComponentFrom(prototype, "SuperBlock", 0, 0, workspace.components);
    if (!made) return nullptr;
    const auto number = [&](const Port& port) {
        return port.sigType == NoSigType ? 0 : NewNodeNumber(workspace);
    };
    std::int32_t position = 0;
    for (const Port& port : made->inputs) {
        AttachInput(*made, ++position, number(port), workspace);
    }
    position = 0;
    for (const Port& port : made->outputs) {
        AttachOutput(*made, ++position, number(port), workspace);
    }
    return made;
}

}  // namespace

void PlaceBlock(Workbench& workbench, DiagramView& view, CanvasPoint at) {
    const CanvasPoint cell = workbench.scale.ToCell(at);
    if (view.modelIndex == 0 || IsCellTaken(*view.workspace, cell)) return;
    const bool isSuperBlock = workbench.palette.Row(view.modelIndex).name == "SuperBlock";
    if (isSuperBlock) ++workbench.unnamedCounter;
    Component* made = isSuperBlock ? ChooseSuperBlock(workbench, view) : AddModel(workbench, view);
    if (!made) return;
    made->x = cell.x;
    made->y = cell.y;
    view.undo.modified = true;
    EndChange(workbench, view, "Place");
}

Component* ChooseSuperBlock(Workbench& workbench, DiagramView& view) {
    static constexpr FileFilter definitions{"SuperBlock Data Files (*.dts)", "*.dts"};
    static constexpr FileFilter topologies{"SuperBlock Topology Files (*.top)", "*.top"};
    static constexpr FileFilter all{"All Files (*.*)", "*.*"};
    const std::string& start =
        workbench.superBlockDirectory.empty() ? view.directory : workbench.superBlockDirectory;
    const auto chosen = workbench.desktop.ChooseFile(
        {false, "Choose SuperBlock", {definitions, topologies, all}, start});
    if (!chosen) return nullptr;
    const fs::path file = fs::path(view.directory) / *chosen, definition = DefinitionOf(file);
    std::error_code error;
    if (definition != file && !fs::exists(definition, error)) {
        workbench.ErrorBox(Concat("'", *chosen, "' has no In or Out block: it is no SuperBlock"));
        return nullptr;
    }
    const std::string name = SuperBlockName(workbench, view, definition);
    if (name.find_first_of(" \t:") != std::string::npos) {
        workbench.ErrorBox(Concat("'", name,
                                  "': a SuperBlock's file has no blank or colon in its "
                                  "path"));
        return nullptr;
    }
    const std::unique_ptr<Component> prototype = ReadSuperBlock(workbench, definition, name);
    if (!prototype) return nullptr;
    workbench.superBlockDirectory = definition.parent_path().string();
    return AddSuperBlock(*prototype, *view.workspace);
}

}  // namespace photrak

// The rule of a load, without a working directory: every diagram has a directory of its own.
#include "workbench/superblock_paths.h"

#include <filesystem>

#include "base/text.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

constexpr const char* definitionSuffix = ".dts";

}  // namespace

std::optional<std::string> FindFromDiagram(const std::string& name, const std::string& directory,
                                           const Catalogue& catalogue) {
    std::error_code error;
    for (const std::string& folder : {directory, catalogue.superBlockDirectory}) {
        const fs::path path = fs::path(folder) / name;
        if (fs::is_regular_file(path, error)) return path.lexically_normal().string();
    }
    return std::nullopt;
}

std::string SuperBlockNameOf(const std::string& definition, const std::string& directory,
                             const Catalogue& catalogue) {
    std::error_code error;
    const fs::path file(definition);
    const std::string stem = file.stem().string();
    const auto found = FindFromDiagram(stem + definitionSuffix, directory, catalogue);
    if (found && fs::equivalent(*found, file, error)) return stem;
    const fs::path whole = fs::path(file).replace_extension();
    const fs::path relative = whole.lexically_relative(directory);
    return relative.empty() ? whole.string() : relative.string();
}

std::string LostSuperBlocks(const Workspace& workspace, const std::string& former,
                            const std::string& directory, const Catalogue& catalogue) {
    std::string text;
    std::error_code error;
    for (const auto& component : workspace.components) {
        if (component->type != "SuperBlock") continue;
        const std::string name = component->superBlockFile + definitionSuffix;
        const auto before = FindFromDiagram(name, former, catalogue);
        const auto now = FindFromDiagram(name, directory, catalogue);
        if (!before || (now && fs::equivalent(*before, *now, error))) continue;
        text += Concat("WARNING: '", component->name, "' does not find its SuperBlock '", *before,
                       "' from here\n");
    }
    return text;
}

bool IsSuperBlockName(const std::string& name) {
    return name.find_first_of(" \t:\"") == std::string::npos;
}

}  // namespace photrak

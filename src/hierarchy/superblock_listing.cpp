// Topologies are loaded and walked, nothing is evaluated.
#include "hierarchy/superblock_listing.h"

#include <filesystem>
#include <set>

#include "base/text.h"
#include "files/catalogue_listing.h"
#include "files/model_definition.h"
#include "files/superblock_file.h"
#include "files/topology.h"
#include "hierarchy/nested_run.h"
#include "kernel/graph.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostLines = 2000;  // of one description

std::unique_ptr<Workspace> LoadInner(const std::string& file, const Catalogue& catalogue) {
    std::unique_ptr<Workspace> inner;
    if (TopologyLoad(file, inner, catalogue) == Status::Error) return nullptr;
    inner->fileName = file;
    return inner;
}

/// The note of the topology up to its first full stop.
std::string NoteOf(const std::string& definition, const Catalogue& catalogue) {
    const std::string file = fs::path(definition).replace_extension(".top").string();
    const std::unique_ptr<Workspace> inner = LoadInner(file, catalogue);
    if (!inner) return "its topology does not load";
    const std::size_t end = inner->NOTE.find(". ");
    return inner->NOTE.substr(0, end);
}

void ListInside(const Workspace& workspace, const std::string& path, std::size_t depth,
                const Catalogue& catalogue, std::size_t& lines, std::string& text) {
    for (const auto& block : workspace.components) {
        if (++lines > mostLines) return;
        const std::string name = Concat(path, ":", block->name);
        const bool nests = block->type == superBlockType;
        text += Concat("  ", name, "  ", block->type, nests ? ":" : "",
                       nests ? block->superBlockFile : "", "\n");
        if (!nests || depth >= deepestNesting) continue;
        const std::string file = NestedFile(*block, ".top", workspace, catalogue);
        const auto inner = file.empty() ? nullptr : LoadInner(file, catalogue);
        if (inner) ListInside(*inner, name, depth + 1, catalogue, lines, text);
    }
}

}  // namespace

std::string ListSuperBlocks(const Catalogue& catalogue) {
    std::set<std::string> definitions;
    std::vector<std::string> names;
    std::string error;
    // Where there is no folder there are no SuperBlocks.
    [[maybe_unused]] const bool listed = ListFolder(catalogue.superBlockDirectory, names, error);
    for (const std::string& name : names) {
        if (name.size() > 4 && name.ends_with(".dts"))
            definitions.insert(catalogue.superBlockDirectory + name);
    }
    std::string text;
    for (const std::string& definition : definitions) {
        text += Concat("  SuperBlock:", fs::path(definition).stem().string(), "  ",
                       NoteOf(definition, catalogue), "\n");
    }
    return text.empty() ? text : Concat("\nSuperBlocks\n", text);
}

std::optional<std::string> DescribeSuperBlock(const std::string& stem, const Catalogue& catalogue,
                                              std::string& errorText) {
    const auto file = FindSuperBlockFile(stem + ".dts", catalogue);
    Component block;
    block.name = block.type = superBlockType;
    if (!file) {
        errorText += Concat("no SuperBlock '", stem, "': there is no '", stem,
                            ".dts' here or beside the program\n");
        return std::nullopt;
    }
    if (ReadModelDefinition(block, *file, errorText) == Status::Error) return std::nullopt;
    block.name = Concat(superBlockType, ":", stem);
    block.NOTE = NoteOf(*file, catalogue);
    std::string text = DescribeModel(block);
    const auto inner = LoadInner(fs::path(*file).replace_extension(".top").string(), catalogue);
    if (!inner) return text;
    text += "\nBlocks inside\n";
    std::size_t lines = 0;
    ListInside(*inner, fs::path(stem).filename().string(), 1, catalogue, lines, text);
    return text;
}

}  // namespace photrak

// What a block writes is known from its type and its parameters: a root, and the endings of the
// files that tell it from others.
#include "files/result_clashes.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <utility>
#include <vector>

#include "base/text.h"
#include "files/diagnostics.h"
#include "kernel/param_lookup.h"
#include "kernel/result_names.h"
#include "platform/full_path.h"

namespace photrak {
namespace {

bool PlotsAreOn(const SimOptions& options, Parameter* parameters) {
    if (options.PLOTTING == DoNotPlot) return false;
    const bool asEachSays =
        options.PLOTTING != PlotToFilesOnly && options.PLOTTING != DisplayAllPlots;
    return !asEachSays || GetParamText(parameters, "Plot", "Save") != "No";
}

bool SavesRows(const SimOptions&, Parameter* parameters) {
    return GetParamText(parameters, "SaveAllData", "YES") == "YES";
}

bool SavesCurve(const SimOptions&, Parameter* parameters) {
    return GetParamText(parameters, "PlotCurves", "YES") == "YES";
}

bool Always(const SimOptions&, Parameter*) {
    return true;
}

struct Writer {
    std::string_view type, root, ending;
    bool takesPrefix;
    bool (*writes)(const SimOptions& options, Parameter* parameters);
};
constexpr std::string_view savesSignals = "SaveSigBlock", loadsSignals = "LoadSigBlock";
constexpr Writer writers[] = {{"EyeDiagram", "FilenameRoot", ".pce", true, PlotsAreOn},
                              {"SignalPlot", "FilenameRoot", ".pcs", true, PlotsAreOn},
                              {"ChirpPlot", "FilenameRoot", ".pcs", true, PlotsAreOn},
                              {"SignalSpectra", "FilenameRoot", ".pcf", true, PlotsAreOn},
                              {"BERTester", "FilenameRoot", ".bdt", false, SavesRows},
                              {"BERTester", "FilenameRoot", ".ber", false, SavesCurve},
                              {savesSignals, "FileName", ".sgd", true, Always}};

/// Where a name leads from a folder, links resolved; as it is written where that cannot be known.
std::string Resolved(const std::string& folder, std::string_view name) {
    return ResolvedPath((std::filesystem::path(folder) / name).string());
}

/// The files without the tags of a scan, which are those of all blocks.
std::vector<std::string> FilesOf(const Component& component, const SimOptions& options) {
    std::vector<std::string> files;
    for (const Writer& writer : writers) {
        if (component.type != writer.type || !writer.writes(options, component.parameters))
            continue;
        const std::string_view root = GetParamText(component.parameters, writer.root, {});
        files.push_back(Concat(writer.takesPrefix ? PrefixInUse(options) : std::string(),
                               root.empty() ? std::string_view(component.name) : root,
                               writer.ending));
    }
    return files;
}

LoadFinding Clash(const char* code, const Component& component, std::string text) {
    LoadFinding finding;
    finding.code = code;
    finding.typed = component.name;
    finding.text = Concat("component '", component.name, "': ", text);
    return finding;
}

}  // namespace

LoadFindings FindResultClashes(const Workspace& workspace, const std::string& inputFolder) {
    const SimOptions& options = *workspace.options;
    LoadFindings findings;
    std::map<std::string, const Component*> owners;  // by file
    std::map<std::string, const Component*> readers;
    for (const auto& component : workspace.components) {
        if (component->type != loadsSignals) continue;
        const std::string_view name = GetParamText(component->parameters, "FileName", {});
        if (!name.empty()) readers.emplace(Resolved(inputFolder, name), component.get());
    }
    for (const auto& component : workspace.components) {
        if (findings.size() >= mostLoadFindings) break;
        bool isTold = false;  // of the files of a block the first is enough
        for (const std::string& file : FilesOf(*component, options)) {
            const std::string place = Resolved({}, file);
            const auto [owner, isFirst] = owners.emplace(place, component.get());
            if (!isFirst && !std::exchange(isTold, true)) {
                findings.push_back(Clash(
                    diagnostic::sameResult, *component,
                    Concat("writes '", file, "', as component '", owner->second->name, "' does")));
            }
            const auto reader = readers.find(place);
            if (component->type != savesSignals || reader == readers.end()) continue;
            findings.push_back(Clash(diagnostic::savesOverInput, *component,
                                     Concat("saves onto '", file, "', which component '",
                                            reader->second->name, "' reads")));
        }
    }
    return findings;
}

}  // namespace photrak

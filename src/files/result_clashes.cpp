// What a block writes is known from its type and its parameters: a root, and the ending of one file
// that it always writes.
#include "files/result_clashes.h"

#include <algorithm>
#include <filesystem>
#include <map>

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

bool TesterWrites(const SimOptions&, Parameter* parameters) {
    return GetParamText(parameters, "PlotCurves", "YES") == "YES" ||
           GetParamText(parameters, "SaveAllData", "YES") == "YES";
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
                              {"BERTester", "FilenameRoot", ".bdt", false, TesterWrites},
                              {savesSignals, "FileName", ".sgd", true, Always}};

/// Where a name leads from a folder, links resolved; as it is written where that cannot be known.
std::string Resolved(const std::string& folder, std::string_view name) {
    return ResolvedPath((std::filesystem::path(folder) / name).string());
}

/// The file without the tags of a scan, which are those of all blocks; empty if it writes none.
std::string FileOf(const Component& component, const SimOptions& options) {
    const auto writer = std::ranges::find(writers, component.type, &Writer::type);
    Parameter* parameters = component.parameters;
    if (writer == std::end(writers) || !writer->writes(options, parameters)) return {};
    const std::string_view root = GetParamText(parameters, writer->root, {});
    return Concat(writer->takesPrefix ? PrefixInUse(options) : std::string(),
                  root.empty() ? std::string_view(component.name) : root, writer->ending);
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
        const std::string file = FileOf(*component, options);
        if (file.empty() || findings.size() >= mostLoadFindings) continue;
        const auto [owner, isFirst] = owners.emplace(Resolved({}, file), component.get());
        if (!isFirst) {
            findings.push_back(Clash(
                diagnostic::sameResult, *component,
                Concat("writes '", file, "', as component '", owner->second->name, "' does")));
        }
        if (component->type != savesSignals) continue;
        const auto reader = readers.find(Resolved({}, file));
        if (reader == readers.end()) continue;
        findings.push_back(Clash(
            diagnostic::savesOverInput, *component,
            Concat("saves onto '", file, "', which component '", reader->second->name, "' reads")));
    }
    return findings;
}

}  // namespace photrak

// From the executable and a file name to a catalogue, a working directory and a loaded topology.
#include "photrak/session.h"

#include <algorithm>
#include <filesystem>

#include "base/log.h"
#include "base/text.h"
#include "files/catalogue.h"
#include "files/param_file.h"
#include "files/topology.h"
#include "kernel/graph.h"
#include "kernel/run_record.h"
#include "models/dispatch.h"
#include "photrak/console.h"

namespace photrak {

Session::~Session() {
    DestroyWorkspace(workspace);
    ReleaseModels(catalogue);
}

ModelTable Session::Models() const {
    return {BuiltInModels(), &userModels, &nestedRuns};
}

bool OpenCatalogue(Session& session) {
    std::string text;
    if (InitializeModels(ExecutableDirectory(), session.catalogue, text) == Status::Error) {
        Report("error", Concat(catalogueFailureText, "\n", text));
        return false;
    }
    Report("warning", text);
    std::string libraries;
    session.userModels.LoadUserModels(session.catalogue, libraries);
    Report("warning", libraries);
    return true;
}

bool EnterDirectory(Session& session, const std::string& path) {
    const std::filesystem::path file(path);
    session.fileName = file.filename().string();
    const std::string directory = file.has_parent_path() ? file.parent_path().string() : ".";
    session.directory = std::make_unique<WorkingDirectory>(directory);
    if (session.directory->Failed()) {
        Report("error", Concat(path, ": cannot enter the directory '", directory, "'"));
        return false;
    }
    return true;
}

bool OpenTopology(Session& session, const CommandOptions& options, Status& loaded) {
    if (!OpenCatalogue(session) || !EnterDirectory(session, options.file)) return false;
    loaded = TopologyLoad(session.fileName, session.workspace, session.catalogue);
    if (!session.workspace) return false;
    std::string& text = session.workspace->errorText;
    if (!text.empty()) LogText(Concat(text, "\n"));
    Report(loaded == Status::Error ? "error" : "warning", text);
    text.clear();
    if (loaded == Status::Error) {
        Report("error", Concat(options.file, ": the topology did not load"));
        return false;
    }
    session.workspace->fileName = session.fileName;
    if (!ApplyParamFiles(session, options, loaded)) return false;
    ApplySymbols(*session.workspace, options);
    return true;
}

Component* FindNamed(const Session& session, const std::string& name,
                     const CommandOptions& options) {
    Component* component = FindComponent(name, session.workspace->components);
    if (!component) Report("error", Concat(options.file, ": no component '", name, "'"));
    return component;
}

bool ApplyParamFiles(const Session& session, const CommandOptions& options, Status& status) {
    for (const auto& [name, file] : options.loadParams) {
        Component* component = FindNamed(session, name, options);
        if (!component) return false;
        std::string text;
        const Status loaded = LoadParamFile(*component, *session.workspace, file, text);
        MergeStatus(status, loaded);
        if (!text.empty()) text = Concat("component '", name, "', file '", file, "': ", text);
        if (!text.empty()) LogText(Concat(text, "\n"));
        Report(loaded == Status::Error ? "error" : "warning", text);
        if (loaded == Status::Error) return false;
    }
    return true;
}

void ApplySymbols(Workspace& workspace, const CommandOptions& options) {
    for (const auto& [name, value] : options.symbols) {
        if (Variable* variable = FindVariable(name, workspace)) {
            variable->value = value;
        } else {
            AddVariable(workspace, name, DoubleType, value);
        }
    }
}

Status ListResultFiles() {
    for (const std::string& name : CurrentRun().written.Names()) WriteOut(Concat(name, "\n"));
    constexpr std::size_t most = 10;  // a full disk fails every point of a scan alike
    const std::vector<std::string>& failed = CurrentRun().failed.Names();
    for (std::size_t i = 0; i < std::min(failed.size(), most); ++i) {
        Report("warning", Concat("could not write all of '", failed[i], "'"));
    }
    if (failed.size() > most) {
        Report("warning", Concat("nor of ", failed.size() - most, " more result files"));
    }
    return failed.empty() ? Status::Success : Status::Warning;
}

}  // namespace photrak

// From the executable and a file name to a catalogue, a working directory and a loaded topology.
#include "photrak/session.h"

#include <algorithm>
#include <filesystem>

#include "base/line_reader.h"
#include "base/log.h"
#include "base/nearest.h"
#include "base/text.h"
#include "files/catalogue.h"
#include "files/diagnostics.h"
#include "files/param_file.h"
#include "files/topology.h"
#include "kernel/graph.h"
#include "kernel/run_record.h"
#include "models/dispatch.h"
#include "photrak/console.h"
#include "photrak/inspection.h"

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
    LineReader lines(libraries, {});
    for (; lines.Next(); ++session.missingLibraries) {
        Report("warning", Concat(diagnostic::noLibrary, ": ", lines.Line()));
    }
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

namespace {

/// True after a report of what a run would take otherwise than it was typed.
bool Refuses(Session& session, const CommandOptions& options) {
    Inspection inspection = InspectSession(session, options, Thoroughness::ForRun);
    for (const TypedValue& value : inspection.values) {
        if (value.keyword != "VALUE") continue;
        session.places[{value.component, value.definition->name}] = value.place;
    }
    if (options.lenient) return false;
    std::erase_if(inspection.findings,
                  [](const LoadFinding& finding) { return !finding.changesNumber; });
    const int faults = ReportFindings(inspection.findings);
    if (faults == 0) return false;
    Report("error", Concat(options.file, ": ", faults, faults == 1 ? " fault" : " faults",
                           ", nothing was run; 'photrak explain CODE' tells more, '--lenient' goes "
                           "on all the same"));
    return true;
}

}  // namespace

bool OpenTopology(Session& session, const CommandOptions& options, Status& loaded, Faults faults) {
    if (!OpenCatalogue(session) || !EnterDirectory(session, options.file)) return false;
    if (faults != Faults::Told && Refuses(session, options)) return false;
    loaded = TopologyLoad(session.fileName, session.workspace, session.catalogue);
    if (!session.workspace) return false;
    std::string text = std::move(session.workspace->errorText);
    session.workspace->errorText.clear();
    if (!text.empty()) LogText(Concat(text, "\n"));
    // What the load warns of has been looked at with all symbols of the command line, and is fine.
    if (faults == Faults::Refused && loaded == Status::Warning) {
        loaded = Status::Success;
        text.clear();
    }
    Report(loaded == Status::Error ? "error" : "warning", text);
    if (loaded == Status::Error) {
        Report("error",
               Concat(options.file, ": ", diagnostic::notLoaded, ": the topology did not load"));
        return false;
    }
    session.workspace->fileName = session.fileName;
    std::string report;
    const Status applied = ApplyParamFiles(session, options, report);
    MergeStatus(loaded, applied);
    Report(applied == Status::Error ? "error" : "warning", report);
    if (applied == Status::Error) return false;
    ApplySymbols(*session.workspace, options);
    return true;
}

namespace {

std::string NoComponent(const Session& session, const std::string& name,
                        const CommandOptions& options) {
    return Concat(options.file, ": no component '", name, "'",
                  DidYouMean(NearestOf(name, session.workspace->components,
                                       [](const auto& one) { return one->name; })));
}

}  // namespace

Component* FindNamed(const Session& session, const std::string& name,
                     const CommandOptions& options) {
    Component* component = FindComponent(name, session.workspace->components);
    if (!component) Report("error", NoComponent(session, name, options));
    return component;
}

Status ApplyParamFiles(const Session& session, const CommandOptions& options, std::string& report) {
    Status status = Status::Success;
    for (const auto& [name, file] : options.loadParams) {
        Component* component = FindComponent(name, session.workspace->components);
        if (!component) {
            report += NoComponent(session, name, options) + "\n";
            return Status::Error;
        }
        std::string text;
        const Status loaded = LoadParamFile(*component, *session.workspace, file, text);
        MergeStatus(status, loaded);
        if (text.empty()) continue;
        text = Concat("component '", name, "', file '", file, "': ", text, "\n");
        LogText(text);
        report += text;
        if (loaded == Status::Error) return Status::Error;
    }
    return status;
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

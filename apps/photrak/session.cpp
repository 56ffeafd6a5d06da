// From the executable and a file name to a catalogue, a working directory and a loaded topology.
#include "photrak/session.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "base/line_reader.h"
#include "base/log.h"
#include "base/nearest.h"
#include "base/text.h"
#include "files/catalogue.h"
#include "files/diagnostics.h"
#include "files/param_file.h"
#include "files/topology.h"
#include "files/topology_blocks.h"
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

namespace {

/// Tells each line with the code; gives how many there were.
int WarnLines(const char* code, std::string_view text) {
    constexpr std::string_view mark = "WARNING: ";
    int count = 0;
    for (LineReader lines(text, {}); lines.Next(); ++count) {
        std::string_view line = lines.Line();
        if (line.starts_with(mark)) line.remove_prefix(mark.size());
        Report("warning", Concat(code, ": ", line));
    }
    return count;
}

}  // namespace

bool OpenCatalogue(Session& session) {
    std::string text;
    if (InitializeModels(ExecutableDirectory(), session.catalogue, text) == Status::Error) {
        Report("error", Concat(catalogueFailureText, "\n", text));
        return false;
    }
    session.catalogueWarnings = WarnLines(diagnostic::brokenDefinition, text);
    text.clear();
    session.userModels.LoadUserModels(session.catalogue, text);
    session.catalogueWarnings += WarnLines(diagnostic::noLibrary, text);
    return true;
}

namespace {

/// As it stands in front of the name of a file: with the last separator, or empty for here.
std::string AsPrefix(const std::string& folder) {
    return folder.empty() || folder.back() == '/' ? folder : folder + '/';
}

std::string ReadStandardInput() {
    std::string text;
    std::array<char, 65536> part{};
    while (text.size() <= maxTopologyBytes) {
        const std::size_t got = std::fread(part.data(), 1, part.size(), stdin);
        text.append(part.data(), got);
        if (got == 0) break;
    }
    return text;
}

/// Makes the folder of the results the working directory; inputs stay where they are. The topology
/// of a pipe is kept beside its results.
bool EnterOut(Session& session, const std::string& folder, const std::string& out) {
    std::error_code failed;
    const std::string inputs = std::filesystem::absolute(folder, failed).string();
    if (!failed) std::filesystem::create_directories(out, failed);
    if (!failed) session.directory = std::make_unique<WorkingDirectory>(out);
    if (failed || session.directory->Failed()) {
        Report("error", Concat("--out '", out,
                               "': ", failed ? failed.message() : session.directory->Reason()));
        return false;
    }
    session.resultFolder = AsPrefix(out);
    session.inputs = std::make_unique<InputFolder>(inputs);
    session.inputFolder = inputs;
    return true;
}

bool KeepStandardInput(Session& session) {
    session.fileName = "standard-input.top";
    std::string reason;
    if (WriteFileAtOnce(session.fileName, ReadStandardInput(), reason)) return true;
    Report("error", Concat("could not write '", session.fileName, "': ", reason));
    return false;
}

}  // namespace

bool EnterDirectory(Session& session, const std::string& path, const std::string& out) {
    const bool isPipe = path == "-";
    if (isPipe && out.empty()) {
        Report("error", "a topology from standard input wants '--out DIR' for its results");
        return false;
    }
    const std::filesystem::path file(path);
    session.fileName = file.filename().string();
    const bool isHere = isPipe || !file.has_parent_path();
    const std::string folder = isHere ? "." : file.parent_path().string();
    if (!out.empty()) {
        return EnterOut(session, folder, out) && (!isPipe || KeepStandardInput(session));
    }
    session.resultFolder = isHere ? std::string() : AsPrefix(folder);
    session.directory = std::make_unique<WorkingDirectory>(folder);
    if (!session.directory->Failed()) return true;
    Report("error", Concat(path, ": cannot enter the directory '", folder,
                           "': ", session.directory->Reason()));
    return false;
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
    if (!OpenCatalogue(session) || !EnterDirectory(session, options.file, options.out))
        return false;
    const bool writes = faults != Faults::Told;
    if (writes && (Refuses(session, options) || !LockFolder(session))) return false;
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

LibraryPolicy PolicyFor(const CommandOptions& options) {
    return {options.trust, options.isolate ? options.isolateLimit : 0.0};
}

bool LockFolder(Session& session) {
    session.lock = std::make_unique<FolderLock>();
    if (session.lock->Owner().empty()) return true;
    Report("error", Concat("process ", session.lock->Owner(),
                           " is writing results into this folder; '--out DIR' gives these a folder "
                           "of their own"));
    return false;
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

Status ListResultFiles(const Session& session) {
    for (const std::string& name : CurrentRun().written.Names()) {
        WriteOut(Concat(session.resultFolder, name, "\n"));
    }
    constexpr std::size_t most = 10;  // a full disk fails every point of a scan alike
    const std::vector<std::string>& failed = CurrentRun().failed.Names();
    for (std::size_t i = 0; i < std::min(failed.size(), most); ++i) {
        Report("error", Concat("could not write ", failed[i]));
    }
    if (failed.size() > most) {
        Report("error", Concat("nor ", failed.size() - most, " more result files"));
    }
    if (!failed.empty()) return Status::Error;
    const std::string logFailure = TakeLogFailure();
    if (logFailure.empty()) return Status::Success;
    Report("warning", Concat("could not write '", session.resultFolder, "log.txt': ", logFailure));
    return Status::Warning;
}

}  // namespace photrak

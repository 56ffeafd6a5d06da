// File names are absolute from the start, and nothing depends on the working directory.
#include "workbench/file_commands.h"

#include <algorithm>
#include <filesystem>

#include "base/log.h"
#include "base/text.h"
#include "files/diagnostics.h"
#include "files/topology.h"
#include "files/topology_inspection.h"
#include "kernel/graph.h"
#include "platform/file_system.h"
#include "platform/host.h"
#include "workbench/recovery.h"
#include "workbench/superblock_paths.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

constexpr FileFilter photrakFiles{"Photrak Files (*.top)", "*.top"};
constexpr FileFilter allFiles{"All Files (*.*)", "*.*"};

std::string Absolute(const std::string& path, const std::string& directory) {
    return (fs::path(directory) / path).lexically_normal().string();
}

DiagramView& AddView(Workbench& workbench) {
    static std::int32_t opened = 0;
    auto view = std::make_unique<DiagramView>();
    view->number = ++opened;
    view->fileName = DiagramView::untitledName;
    view->directory = workbench.startDirectory;
    view->title = view->fileName;
    view->workspace = CreateWorkspace();
    workbench.views.push_back(std::move(view));
    return *workbench.views.back();
}

/// A new view comes to the front in Select mode at zoom 1; its history and what counts as saved
/// begin here.
void BeginView(Workbench& workbench, DiagramView& view) {
    view.ForgetIndex();
    std::string text;
    DiagramState state;
    if (TakeState(*view.workspace, nullptr, nullptr, view.ids, state, text) != Status::Error) {
        view.history.Start(std::move(state));
    }
    view.MarkSaved();
    workbench.scale.SetZoom(1.0);
    Activate(workbench, view);
    SetMode(workbench, Mode::Select);
}

/// Lines for log.txt of the view's directory, wherever the process stands; of where it stands if
/// that directory is gone.
void LogIn(const DiagramView& view, std::string_view text) {
    const WorkingDirectory there(view.directory);
    LogText(text);
}

void FailedToLoad(Workbench& workbench, DiagramView& view, const fs::path& file) {
    LogIn(view, view.workspace->errorText + "\n");
    DestroyWorkspace(view.workspace);
    view.workspace = CreateWorkspace();
    view.title = file.filename().string() + " (not loaded)";
    workbench.ErrorBox("ERROR loading topology: see log file for details");
}

/// What a file of a newer version may have and a save of this one would lose.
void NoteLostLines(const Workbench& workbench, DiagramView& view) {
    static constexpr std::string_view losses[] = {
        diagnostic::unknownKeyword, diagnostic::unknownWord, diagnostic::unknownParameter,
        diagnostic::unknownBodyWord};
    const Inspection found = InspectTopologyText(view.diskText, view.title, workbench.catalogue);
    const auto isLoss = [](const LoadFinding& finding) {
        return std::ranges::find(losses, std::string_view(finding.code)) != std::end(losses);
    };
    const auto lost = std::ranges::find_if(found.findings, isLoss);
    view.lostLines = lost != found.findings.end();
    if (!view.lostLines) return;
    LogIn(view,
          Concat("WARNING: ", FindingLine(*lost), "\nWhat is not understood is lost by a save; ",
                 "the first one keeps the file as '", view.title, "~'.\n"));
}

void Load(Workbench& workbench, DiagramView& view, const std::string& path) {
    const fs::path file(path);
    view.directory = file.parent_path().string();
    Status status = Status::Error;
    {
        const WorkingDirectory there(view.directory);
        // Without its directory the bare name would find another file.
        const std::string name = there.Failed() ? path : file.filename().string();
        status = TopologyLoad(name, view.workspace, workbench.catalogue);
    }
    if (!view.workspace) view.workspace = CreateWorkspace();
    if (status == Status::Error) {
        FailedToLoad(workbench, view, file);
        return;
    }
    view.fileName = path;
    view.title = file.filename().string();
    std::string reason;
    if (!ReadWholeFile(path, view.diskText, reason)) view.diskText.clear();
    NoteLostLines(workbench, view);
    if (status == Status::Warning) {
        LogIn(view, view.workspace->errorText + "\n");
        workbench.InfoBox("WARNING loading topology: see log file for details");
    }
    view.workspace->errorText.clear();
}

DiagramView* ViewOf(Workbench& workbench, const std::string& path) {
    for (const auto& view : workbench.views) {
        if (view->fileName == path) return view.get();
    }
    return nullptr;
}

/// Whether the user lets a file be replaced that somebody else has changed since it was read.
bool MayReplace(Workbench& workbench, const DiagramView& view) {
    std::string now, reason;
    if (view.diskText.empty() || !ReadWholeFile(view.fileName, now, reason)) return true;
    if (now == view.diskText) return true;
    return workbench.desktop.Query(queryTitle,
                                   Concat("'", view.fileName,
                                          "' was changed by another program since it was read.\n"
                                          "Replace it?")) == Answer::Yes;
}

/// Evaluating and writing happen in the diagram's directory, where its SuperBlocks are found.
bool Write(Workbench& workbench, DiagramView& view, const std::string& formerDirectory) {
    view.workspace->errorText.clear();
    Status status = Status::Error;
    {
        const WorkingDirectory there(view.directory);
        status = TopologySave(view.fileName, view.workspace.get(), workbench.catalogue);
    }
    std::string& text = view.workspace->errorText;
    text += LostSuperBlocks(*view.workspace, formerDirectory, view.directory, workbench.catalogue);
    if (!text.empty()) {
        status == Status::Error ? workbench.ErrorBox(text) : workbench.InfoBox(text);
    }
    text.clear();
    return status != Status::Error;
}

void Saved(Workbench& workbench, DiagramView& view) {
    view.undo.modified = view.undo.valid = view.lostLines = false;
    view.MarkSaved();
    std::string reason;
    if (!ReadWholeFile(view.fileName, view.diskText, reason)) view.diskText.clear();
    ForgetRecoveryCopy(workbench, view);
}

/// The dot rule looks at the whole path, so that a directory with a full stop prevents the suffix.
std::string WithSuffix(std::string name) {
    return name.find('.') == std::string::npos ? name + ".top" : name;
}

/// `formerDirectory` is where the diagram's SuperBlocks were found so far.
bool SaveNamed(Workbench& workbench, DiagramView& view, const std::string& formerDirectory) {
    if (view.running) {
        workbench.ErrorBox("Simulation already in progress.");
        return false;
    }
    if (!MayReplace(workbench, view)) return false;
    if (view.lostLines && !view.diskText.empty() &&
        !ReplaceFile(view.fileName + "~", view.diskText)) {
        workbench.ErrorBox(Concat("Cannot keep the file as '", view.fileName, "~'"));
        return false;
    }
    workbench.pane = Concat("Saving ", view.fileName);
    const bool written = Write(workbench, view, formerDirectory);
    if (written) Saved(workbench, view);
    workbench.pane = ModeText(workbench, view);
    return written;
}

}  // namespace

DiagramView& NewDiagram(Workbench& workbench) {
    DiagramView& view = AddView(workbench);
    BeginView(workbench, view);
    return view;
}

DiagramView& OpenDiagram(Workbench& workbench, const std::string& path, OpenAgain again) {
    if (path.empty()) return NewDiagram(workbench);
    const std::string file = Absolute(path, workbench.startDirectory);
    if (again == OpenAgain::BringToFront) {
        if (DiagramView* open = ViewOf(workbench, file)) {
            Activate(workbench, *open);
            return *open;
        }
    }
    DiagramView& view = AddView(workbench);
    Load(workbench, view, file);
    BeginView(workbench, view);
    return view;
}

void ChooseAndOpen(Workbench& workbench) {
    const DiagramView* view = workbench.Active();
    const auto chosen =
        workbench.desktop.ChooseFile({false,
                                      "Open File",
                                      {photrakFiles, allFiles},
                                      view ? view->directory : workbench.startDirectory});
    if (chosen) OpenDiagram(workbench, *chosen, OpenAgain::NewView);
}

bool SaveDiagram(Workbench& workbench, DiagramView& view) {
    if (view.IsUntitled()) return SaveDiagramAs(workbench, view);
    return SaveNamed(workbench, view, view.directory);
}

bool SaveDiagramAs(Workbench& workbench, DiagramView& view) {
    if (view.running) {
        workbench.ErrorBox("Simulation already in progress.");
        return false;
    }
    const auto chosen =
        workbench.desktop.ChooseFile({true, "Save As", {photrakFiles, allFiles}, view.directory});
    if (!chosen || chosen->empty() || chosen->back() == '/') return false;
    const std::string formerName = view.fileName, formerDirectory = view.directory;
    const std::string formerTitle = view.title, formerDisk = view.diskText;
    view.fileName = Absolute(WithSuffix(*chosen), workbench.startDirectory);
    view.directory = fs::path(view.fileName).parent_path().string();
    view.title = fs::path(view.fileName).filename().string();
    // Another file was never read here: nothing of it can have changed or be lost.
    if (view.fileName != formerName) view.diskText.clear();
    if (SaveNamed(workbench, view, formerDirectory)) return true;
    view.fileName = formerName;
    view.directory = formerDirectory;
    view.title = formerTitle;
    view.diskText = formerDisk;
    return false;
}

bool CloseDiagram(Workbench& workbench, DiagramView& view) {
    if (view.running) {
        workbench.ErrorBox("Cannot close topology while simulation in process");
        return false;
    }
    if (view.Differs()) KeepRecoveryCopy(workbench, view);
    if (workbench.run.view == &view) workbench.run.view = nullptr;
    std::erase(workbench.recent, &view);
    DestroyWorkspace(view.workspace);
    std::erase_if(workbench.views, [&](const auto& owned) { return owned.get() == &view; });
    workbench.pane.clear();
    if (DiagramView* next = workbench.Active()) Activate(workbench, *next);
    return true;
}

bool CloseAll(Workbench& workbench) {
    while (DiagramView* view = workbench.Active()) {
        if (!CloseDiagram(workbench, *view)) return false;
    }
    return true;
}

}  // namespace photrak

// A copy is one file: a line with the diagram's file name, then the text of a save. It is written
// beside its place and renamed, so that a crash at any moment leaves the old or the new one whole.
#include "workbench/recovery.h"

#include <algorithm>
#include <filesystem>
#include <unistd.h>

#include "base/text.h"
#include "files/topology.h"
#include "kernel/graph.h"
#include "platform/file_system.h"
#include "platform/host.h"
#include "workbench/file_commands.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t mostGestures = 20;
/// A copy of more blocks takes longer than a gesture may: it waits for the timer.
constexpr std::size_t mostBlocksAtOnce = 2000;
constexpr std::string_view headLine = "photrak-recovery 1 ";
constexpr const char* outOfMemoryText = "Out of memory opening the copy\n";
constexpr std::size_t mostCopyBytes = std::size_t{1} << 28;

std::optional<fs::path> Folder() {
    Environment& environment = *CurrentHost().environment;
    const auto state = environment.Get("XDG_STATE_HOME");
    if (state && !state->empty()) return fs::path(*state) / "photrak" / "recovery";
    const auto home = environment.Get("HOME");
    if (!home || home->empty()) return std::nullopt;
    return fs::path(*home) / ".local" / "state" / "photrak" / "recovery";
}

/// A name of its own for each view of each process.
std::string NewCopyPath(const fs::path& folder, const DiagramView& view) {
    return (folder / Concat(static_cast<std::int64_t>(::getpid()), "-", view.number, ".copy"))
        .string();
}

/// The process that writes to the copy, 0 if the name tells none.
pid_t OwnerOf(const fs::path& copy) {
    return static_cast<pid_t>(ReadInt(copy.filename().string()));
}

bool IsRunning(pid_t process) {
    std::error_code error;
    return process > 0 && fs::exists(Concat("/proc/", static_cast<std::int64_t>(process)), error);
}

bool SplitCopy(const std::string& text, std::string_view& fileName, std::string_view& topology) {
    const std::size_t end = text.find('\n');
    if (!text.starts_with(headLine) || end == std::string::npos) return false;
    fileName = std::string_view(text).substr(headLine.size(), end - headLine.size());
    topology = std::string_view(text).substr(end + 1);
    return true;
}

std::size_t CountBlocks(std::string_view topology) {
    constexpr std::string_view begin = "\nCOMPONENT ";
    std::size_t count = 0;
    for (std::size_t at = topology.find(begin); at != std::string_view::npos; ++count) {
        at = topology.find(begin, at + begin.size());
    }
    return count;
}

/// The diagram's file, or where it would lie: its SuperBlocks are looked for from there.
std::string NameInCopy(const DiagramView& view) {
    if (!view.IsUntitled()) return view.fileName;
    const bool isNew = view.recoveredName.empty();
    return (fs::path(view.directory) / (isNew ? view.fileName : view.recoveredName)).string();
}

/// What a save would write. During a run the workspace is the run's, sweeps change its variables:
/// the present state of the history is written instead, through a workspace of its own.
std::optional<std::string> TextToKeep(const DiagramView& view) {
    if (!view.running) return TextOf(*view.workspace);
    if (view.history.Empty()) return std::nullopt;
    const std::unique_ptr<Workspace> copy = CreateWorkspace();
    BlockIds ids;
    DiagramState nothing;
    std::string error;
    if (TakeState(*copy, nullptr, nullptr, ids, nothing, error) == Status::Error ||
        RestoreState(view.history.Present(), nothing, *copy, ids, error) == Status::Error) {
        return std::nullopt;
    }
    return TextOf(*copy);
}

}  // namespace

void KeepRecoveryCopy(Workbench& /*workbench*/, DiagramView& view) {
    const auto folder = Folder();
    if (!folder) return;
    std::error_code error;
    fs::create_directories(*folder, error);
    if (view.recoveryPath.empty()) view.recoveryPath = NewCopyPath(*folder, view);
    const auto topology = TextToKeep(view);
    if (!topology) return;
    const std::string text = Concat(headLine, NameInCopy(view), "\n", *topology);
    if (ReplaceFile(view.recoveryPath, text)) view.unkept = 0;
}

void NoteForRecovery(Workbench& workbench, DiagramView& view) {
    ++view.unkept;
    const bool isSmall = view.workspace->components.size() <= mostBlocksAtOnce;
    if (view.unkept >= mostGestures && isSmall) KeepRecoveryCopy(workbench, view);
}

void KeepPendingCopies(Workbench& workbench) {
    for (const auto& view : workbench.views) {
        if (view->unkept > 0) KeepRecoveryCopy(workbench, *view);
    }
}

void ForgetRecoveryCopy(Workbench& /*workbench*/, DiagramView& view) {
    std::error_code error;
    if (!view.recoveryPath.empty()) fs::remove(view.recoveryPath, error);
    view.unkept = 0;
}

std::vector<RecoveryCopy> RecoveryCopies(const Workbench& workbench) {
    std::vector<RecoveryCopy> copies;
    const auto folder = Folder();
    std::error_code error;
    if (!folder) return copies;
    for (const fs::directory_entry& entry : fs::directory_iterator(*folder, error)) {
        const std::string path = entry.path().string();
        const bool isOpen = std::ranges::any_of(
            workbench.views, [&](const auto& view) { return view->recoveryPath == path; });
        const pid_t owner = OwnerOf(entry.path());
        if (entry.path().extension() != ".copy" || isOpen ||
            (owner != ::getpid() && IsRunning(owner))) {
            continue;
        }
        std::string text, reason;
        std::string_view fileName, topology;
        if (ReadWholeFile(path, text, reason, mostCopyBytes) &&
            SplitCopy(text, fileName, topology)) {
            copies.push_back({path, std::string(fileName), CountBlocks(topology)});
        }
    }
    std::ranges::sort(copies, {}, &RecoveryCopy::path);
    return copies;
}

DiagramView* OpenRecoveryCopy(Workbench& workbench, const RecoveryCopy& copy) {
    std::string text, reason;
    std::string_view fileName, topology;
    if (!ReadWholeFile(copy.path, text, reason, mostCopyBytes) ||
        !SplitCopy(text, fileName, topology)) {
        workbench.ErrorBox(Concat("Cannot open '", copy.path, "'"));
        return nullptr;
    }
    DiagramView& view = NewDiagram(workbench);
    const fs::path file(copy.fileName);
    if (file.has_parent_path()) view.directory = file.parent_path().string();
    if (TopologyLoadText(topology, copy.fileName, view.workspace, workbench.catalogue) ==
        Status::Error) {
        // The copy stays as it is: what is missing, as the file of a SuperBlock, may come back.
        workbench.ErrorBox(view.workspace ? view.workspace->errorText : outOfMemoryText);
        view.workspace = CreateWorkspace();
        view.ForgetIndex();
        view.title = file.filename().string() + " (not loaded)";
        return &view;
    }
    view.workspace->errorText.clear();
    view.recoveredName = file.filename().string();
    view.title = view.recoveredName + " (recovered)";
    view.recoveryPath = copy.path;
    EndChange(workbench, view, "Recover");
    return &view;
}

void DiscardRecoveryCopy(const RecoveryCopy& copy) {
    std::error_code error;
    fs::remove(copy.path, error);
}

}  // namespace photrak

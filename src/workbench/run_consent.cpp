// What was allowed is remembered in the state folder as the text itself, so that any change of a
// command line or of a library's block asks anew.
#include "workbench/run_consent.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>

#include "base/text.h"
#include "files/topology.h"
#include "hierarchy/nested_run.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "platform/file_system.h"
#include "platform/host.h"

namespace photrak {
namespace {

namespace fs = std::filesystem;

std::optional<std::string> ConsentFile() {
    Environment& environment = *CurrentHost().environment;
    const auto state = environment.Get("XDG_STATE_HOME");
    if (state && !state->empty()) return *state + "/photrak/allowed.txt";
    const auto home = environment.Get("HOME");
    if (!home || home->empty()) return std::nullopt;
    return *home + "/.local/state/photrak/allowed.txt";
}

/// One line, whatever the text holds.
std::string OneLine(std::string text) {
    std::ranges::replace_if(
        text, [](unsigned char c) { return c < ' ' || c == 127; }, ' ');
    return text;
}

/// The programs and libraries that runs of the blocks would start, through all SuperBlocks.
void AddForeign(const Workbench& workbench, const Workspace& workspace, const std::string& path,
                std::size_t depth, std::set<std::string>& lines) {
    constexpr std::size_t mostLines = 1000;
    for (const auto& component : workspace.components) {
        if (lines.size() >= mostLines) return;
        if (workbench.userModels.Knows(component->type)) {
            lines.insert(OneLine(Concat("user library of model ", component->type)));
        }
        const std::string name = path + component->name;
        const Parameter* command = FindParameter("CommandLine", component->parameters);
        if (command && command->value && *command->value) {
            lines.insert(OneLine(Concat("command line of ", name, ": ", command->value)));
        }
        if (component->type != superBlockType || depth >= deepestNesting) continue;
        const std::string file = NestedFile(*component, ".top", workspace, workbench.catalogue);
        std::unique_ptr<Workspace> inner;
        if (file.empty() || TopologyLoad(file, inner, workbench.catalogue) == Status::Error)
            continue;
        inner->fileName = file;
        AddForeign(workbench, *inner, name + ":", depth + 1, lines);
    }
}

/// The same of a diagram, a line each, sorted.
std::string ForeignContent(const Workbench& workbench, const DiagramView& view) {
    const WorkingDirectory there(view.directory);  // where its SuperBlocks are found
    std::set<std::string> lines;
    AddForeign(workbench, *view.workspace, {}, 0, lines);
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
}

bool IsAllowed(const std::string& allowed, const std::string& line) {
    return ("\n" + allowed).find("\n" + line + "\n") != std::string::npos;
}

}  // namespace

std::string AllowedContents() {
    const auto file = ConsentFile();
    std::string text, reason;
    return file && ReadWholeFile(*file, text, reason) ? text : std::string();
}

void RevokeConsents() {
    std::error_code error;
    if (const auto file = ConsentFile()) fs::remove(*file, error);
}

bool HasRunConsent(Workbench& workbench, const DiagramView& view) {
    const std::string content = ForeignContent(workbench, view), allowed = AllowedContents();
    std::string missing;
    for (std::size_t at = 0; at < content.size();) {
        const std::size_t end = content.find('\n', at);
        const std::string line = Concat(view.fileName, ": ", content.substr(at, end - at));
        if (!IsAllowed(allowed, line)) missing += line + "\n";
        at = end + 1;
    }
    if (missing.empty()) return true;
    const std::string question =
        Concat("This diagram starts programs or loads libraries:\n", missing, "Run it?");
    if (workbench.desktop.Query(queryTitle, question) != Answer::Yes) return false;
    const auto file = ConsentFile();
    if (!file) return true;
    std::error_code error;
    fs::create_directories(fs::path(*file).parent_path(), error);
    // If it cannot be remembered the question comes again.
    [[maybe_unused]] const bool kept = ReplaceFile(*file, allowed + missing);
    return true;
}

void ShowConsents(Workbench& workbench) {
    const std::string allowed = AllowedContents();
    if (allowed.empty()) {
        workbench.InfoBox("No diagram may start programs or load libraries without being asked.");
        return;
    }
    const std::string question =
        Concat("These may start without being asked:\n", allowed, "Ask again for all of them?");
    if (workbench.desktop.Query(queryTitle, question) == Answer::Yes) RevokeConsents();
}

}  // namespace photrak

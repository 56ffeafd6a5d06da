// Notes of boxes, file dialogs and starts, in the form in which they are printed.
#include <filesystem>

#include "base/text.h"
#include "platform/host.h"
#include "workbench/script_player.h"
#include "workbench/script_words.h"

namespace photrak {

namespace fs = std::filesystem;

std::string ScriptDesktop::Shown(const std::string& path) const {
    if (!fs::path(path).is_absolute()) return path;
    const fs::path relative = fs::path(path).lexically_relative(start_);
    return relative.empty() || *relative.begin() == ".." ? ShownText(path) : relative.string();
}

std::string ScriptDesktop::ShownText(std::string_view text) const {
    const auto replaced = [](std::string in, std::string_view folder, std::string_view by) {
        if (folder.size() < 2) return in;
        for (std::size_t at = in.find(folder); at != in.npos;
             at = in.find(folder, at + by.size())) {
            in.replace(at, folder.size(), by);
        }
        return in;
    };
    const std::string here = fs::path(start_).lexically_normal().string();
    const std::string_view slash = here.ends_with('/') ? "" : "/";
    return replaced(replaced(std::string(text), Concat(here, slash), ""), install_, "$INSTALL/");
}

void ScriptDesktop::Box(BoxKind kind, std::string_view title, std::string_view text) {
    boxes.push_back(Concat("box ", kind == BoxKind::Error ? "error " : "info ",
                           Quoted(ShownText(title)), " ", Quoted(ShownText(text))));
}

Answer ScriptDesktop::Query(std::string_view title, std::string_view text) {
    static constexpr std::string_view words[] = {"yes", "no", "cancel"};
    if (answers.empty()) {
        missing = Concat("no answer for the question ", Quoted(text));
        return Answer::Cancel;
    }
    const Answer answer = answers.front();
    answers.pop_front();
    boxes.push_back(Concat("box query ", Quoted(ShownText(title)), " ", Quoted(ShownText(text)),
                           " ", words[static_cast<int>(answer)]));
    return answer;
}

std::optional<std::string> ScriptDesktop::ChooseFile(const FileRequest& request) {
    if (files.empty()) {
        missing = Concat("no name for the file dialog ", Quoted(request.title));
        return std::nullopt;
    }
    const std::optional<std::string> file = files.front();
    files.pop_front();
    std::string line = Concat("file ", request.saves ? "save " : "open ", Quoted(request.title),
                              " ", file ? Quoted(*file) : std::string("cancel"));
    for (const FileFilter& filter : request.filters) {
        line += Concat(" ", Quoted(Concat(filter.text, "|", filter.pattern)));
    }
    boxes.push_back(std::move(line));
    if (!file) return std::nullopt;
    return (fs::path(start_) / *file).lexically_normal().string();
}

bool ScriptDesktop::StartViewer(const std::string& file, const std::string& directory) {
    started.push_back(Concat("viewer ", Quoted(Shown(file)), " in ", Quoted(Shown(directory))));
    return true;
}

bool ScriptDesktop::StartEditor(const std::string& file, const std::string& directory) {
    started.push_back(Concat("editor ", Quoted(Shown(file)), " in ", Quoted(Shown(directory))));
    return true;
}

bool ScriptDesktop::Start(const std::vector<std::string>& arguments, const std::string& directory) {
    std::string line = "start";
    for (const std::string& argument : arguments) line += Concat(" ", Quoted(Shown(argument)));
    started.push_back(Concat(line, " in ", Quoted(Shown(directory))));
    return true;
}

int ScriptProcesses::Start(const std::vector<std::string>& arguments) {
    const std::string directory = fs::current_path().string();
    if (arguments.size() == 2 && arguments[1].starts_with('@')) {
        desktop_.StartViewer(arguments[1].substr(1), directory);
    } else {
        desktop_.Start(arguments, directory);
    }
    return 0;
}

int ScriptProcesses::RunAndWait(const std::vector<std::string>& arguments, WindowState,
                                const StopWord*) {
    return Start(arguments);
}

void ScriptDesktop::ShowHelp(std::int32_t topic) {
    started.push_back(topic == 0 ? std::string("help contents") : Concat("help ", topic));
}

}  // namespace photrak

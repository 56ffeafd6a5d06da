// workbench_script: plays events against the workbench without a window and prints what a user
// would see. docs/workbench-scripts.md has the language.
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "base/text.h"
#include "models/block_tests.h"
#include "models/dispatch.h"
#include "platform/file_system.h"
#include "platform/host.h"
#include "workbench/script_player.h"

namespace photrak {
namespace {

struct Arguments {
    std::string directory = ".", file;
    bool updates = false;
};

bool ReadArguments(const std::vector<std::string>& words, Arguments& arguments) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i] == "-C" && i + 1 < words.size()) {
            arguments.directory = words[++i];
        } else if (words[i] == "--update") {
            arguments.updates = true;
        } else if (arguments.file.empty() && (words[i] == "-" || words[i][0] != '-')) {
            arguments.file = words[i];
        } else {
            return false;
        }
    }
    return !arguments.file.empty();
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

bool IsExpectation(const std::string& line) {
    return line.starts_with('|');
}

/// A script with its expectations; what it gave is kept for --update.
class Script {
  public:
    Script(const Arguments& arguments, ScriptPlayer& player)
        : arguments_(arguments), player_(player) {}

    int Run(const std::vector<std::string>& lines) {
        for (std::size_t i = 0; i < lines.size(); ++i) {
            updated_ += lines[i] + "\n";
            const std::string& line = lines[i];
            const std::size_t text = line.find_first_not_of(" \t\r");
            if (text == std::string::npos || line[text] == '#') continue;
            std::string reason;
            if (!player_.Play(line, reason)) return Fail(i, reason);
            const std::string output = player_.TakeOutput();
            std::fwrite(output.data(), 1, output.size(), stdout);
            if (!Compare(lines, i, output)) return 1;
        }
        player_.Finish();
        return 0;
    }
    const std::string& Updated() const { return updated_; }

  private:
    int Fail(std::size_t line, const std::string& reason) {
        const std::string text = Concat(arguments_.file, ":", line + 1, ": ", reason, "\n");
        std::fwrite(text.data(), 1, text.size(), stderr);
        return 1;
    }

    /// Reads the expectations behind line i and moves i to the last of them.
    bool Compare(const std::vector<std::string>& lines, std::size_t& i, const std::string& output) {
        std::size_t end = i + 1;
        while (end < lines.size() && IsExpectation(lines[end])) ++end;
        if (end == i + 1) return true;
        std::vector<std::string> given = Lines(output);
        if (!given.empty()) given.erase(given.begin());  // the head names what was asked for
        for (const std::string& line : given) updated_ += "| " + line + "\n";
        const std::size_t first = i + 1;
        i = end - 1;
        if (arguments_.updates) return true;
        for (std::size_t k = 0; k < std::max(given.size(), end - first); ++k) {
            const std::string got = k < given.size() ? "| " + given[k] : "";
            const std::string wanted = first + k < end ? lines[first + k] : "";
            if (got != wanted) {
                Fail(std::min(first + k, lines.size() - 1), Concat("it gives '", got, "'"));
                return false;
            }
        }
        return true;
    }

    const Arguments& arguments_;
    ScriptPlayer& player_;
    std::string updated_;
};

int Main(const std::vector<std::string>& words) {
    Arguments arguments;
    if (!ReadArguments(words, arguments)) {
        std::fputs("Usage: workbench_script [-C DIR] [--update] FILE\n", stderr);
        return 64;
    }
    std::string text, reason;
    if (arguments.file == "-") {
        text.assign(std::istreambuf_iterator<char>(std::cin), {});
    } else if (!ReadWholeFile(arguments.file, text, reason)) {
        std::fputs(Concat(arguments.file, ": ", reason, "\n").c_str(), stderr);
        return 1;
    }
    const std::string script = std::filesystem::absolute(arguments.file).string();
    const std::string install = ExecutableDirectory();
    std::filesystem::current_path(arguments.directory);
    const std::string start = std::filesystem::current_path().string();
    ScriptDesktop desktop(start, install);
    ScriptProcesses processes(desktop);
    Host host = CurrentHost();
    host.processes = &processes;
    const HostScope scope(host);
    Workbench workbench{desktop, {BuiltInModels(), HasBlockTest, TestByStages}, install, start};
    workbench.run.holds = true;
    if (!StartWorkbench(workbench)) {
        for (const std::string& box : desktop.boxes) std::fputs((box + "\n").c_str(), stderr);
        return 1;
    }
    ScriptPlayer player(workbench, desktop);
    Script run(arguments, player);
    const int status = run.Run(Lines(text));
    if (status == 0 && arguments.updates && arguments.file != "-" &&
        !ReplaceFile(script, run.Updated())) {
        return 1;
    }
    return status;
}

}  // namespace
}  // namespace photrak

int main(int argc, char** argv) {
    try {
        return photrak::Main({argv + 1, argv + argc});
    } catch (const std::exception& failure) {
        std::fputs(photrak::Concat("workbench_script: ", failure.what(), "\n").c_str(), stderr);
        return 1;
    }
}

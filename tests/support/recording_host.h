// A Host that shows nothing and remembers everything: status texts, boxes, commands. Answers, the
// profile and the environment are what the test sets. Libraries are the system's own.
#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/host.h"

namespace photrak {

/// Installed from construction to destruction.
class RecordingHost : public Messages, public Processes, public Profile, public Environment {
  public:
    enum class Kind { Error, Info, Query };
    struct Box {
        Kind kind;
        std::string text, title;
    };
    struct Command {
        std::vector<std::string> arguments;
        bool waited;
        WindowState state;
    };

    std::vector<std::string> statusTexts;
    std::vector<Box> boxes;
    std::vector<Command> commands;
    std::deque<bool> answers;  // to the coming questions; none left: no
    int startResult = 0, waitResult = 0;
    std::map<std::pair<std::string, std::string>, int> profile;  // by section and key
    std::map<std::string, std::string> environment;

    RecordingHost() : scope_({this, this, SystemHost().libraries, this, this}) {}

    /// Texts of all error boxes, one after another.
    std::string Errors() const {
        std::string all;
        for (const Box& box : boxes) {
            if (box.kind == Kind::Error) all += box.text;
        }
        return all;
    }

    void ShowStatusText(std::string_view text) override { statusTexts.emplace_back(text); }
    void ErrorBox(std::string_view text, std::string_view title) override {
        boxes.push_back({Kind::Error, std::string(text), std::string(title)});
    }
    void InfoBox(std::string_view text, std::string_view title) override {
        boxes.push_back({Kind::Info, std::string(text), std::string(title)});
    }
    bool QueryBox(std::string_view text, std::string_view title) override {
        boxes.push_back({Kind::Query, std::string(text), std::string(title)});
        if (answers.empty()) return false;
        const bool answer = answers.front();
        answers.pop_front();
        return answer;
    }

    int Start(const std::vector<std::string>& arguments) override {
        commands.push_back({arguments, false, WindowState::Normal});
        return startResult;
    }
    int RunAndWait(const std::vector<std::string>& arguments, WindowState state,
                   const StopWord*) override {
        commands.push_back({arguments, true, state});
        return waitResult;
    }

    int ReadInt(std::string_view section, std::string_view key, int fallback) override {
        const auto found = profile.find({std::string(section), std::string(key)});
        return found == profile.end() ? fallback : found->second;
    }
    void WriteInt(std::string_view section, std::string_view key, int value) override {
        profile[{std::string(section), std::string(key)}] = value;
    }

    std::optional<std::string> Get(const char* name) override {
        const auto found = environment.find(name);
        if (found == environment.end()) return std::nullopt;
        return found->second;
    }

  private:
    HostScope scope_;
};

}  // namespace photrak

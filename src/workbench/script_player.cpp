// The events as a table of word, operands and action.
#include "workbench/script_player.h"

#include <algorithm>
#include <charconv>

#include "base/text.h"
#include "workbench/commands.h"
#include "workbench/file_commands.h"
#include "workbench/mouse.h"
#include "workbench/script_words.h"

namespace photrak {
namespace {

bool ReadWhole(std::string_view word, std::int32_t& value) {
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    return error == std::errc() && end == word.data() + word.size();
}

bool ReadPoint(const std::vector<std::string>& words, CanvasPoint& point, std::string& reason) {
    if (ReadWhole(words[0], point.x) && ReadWhole(words[1], point.y)) return true;
    reason = "a point is two whole numbers";
    return false;
}

struct Flag {
    std::string_view word;
    bool* value;
};

/// The words behind a point: each is one of the flags.
bool ReadFlags(const std::vector<std::string>& words, std::initializer_list<Flag> flags,
               std::string& reason) {
    for (std::size_t i = 2; i < words.size(); ++i) {
        const auto* flag = std::ranges::find(flags, words[i], &Flag::word);
        if (flag == flags.end()) {
            reason = Concat("unknown word '", words[i], "'");
            return false;
        }
        *flag->value = true;
    }
    return true;
}

}  // namespace

const ScriptPlayer::Event ScriptPlayer::events_[] = {
    {"new", 0, 0, false, &ScriptPlayer::New},
    {"open", 1, 2, false, &ScriptPlayer::Open},
    {"activate", 1, 1, false, &ScriptPlayer::ActivateView},
    {"close", 0, 0, false, &ScriptPlayer::Close},
    {"size", 2, 2, false, &ScriptPlayer::Size},
    {"frame", 4, 4, false, &ScriptPlayer::Frame},
    {"profile", 2, 2, false, &ScriptPlayer::SetProfile},
    {"mode", 1, 2, false, &ScriptPlayer::SelectMode},
    {"press", 2, 5, false, &ScriptPlayer::Press},
    {"move", 2, 2, false, &ScriptPlayer::Move},
    {"release", 2, 3, false, &ScriptPlayer::Release},
    {"key", 1, 1, false, &ScriptPlayer::Key},
    {"menu", 1, 1, false, &ScriptPlayer::Menu},
    {"palette", 1, 1, false, &ScriptPlayer::PushPalette},
    {"toolbar", 1, 1, false, &ScriptPlayer::PushToolBar},
    {"highlight", 0, 1, false, &ScriptPlayer::HighlightEntry},
    {"answer", 1, 1, true, &ScriptPlayer::AnswerNext},
    {"file", 0, 1, true, &ScriptPlayer::FileNext},
    {"field", 2, 3, true, &ScriptPlayer::Field},
    {"row", 3, 3, true, &ScriptPlayer::Row},
    {"select", 1, 1, true, &ScriptPlayer::SelectRow},
    {"push", 1, 1, true, &ScriptPlayer::Push},
    {"wait", 0, 0, true, &ScriptPlayer::Wait},
    {"print", 1, 3, true, &ScriptPlayer::Print},
};

bool ScriptPlayer::Play(std::string_view line, std::string& reason) {
    const auto words = SplitWords(line);
    if (!words) {
        reason = "a quote or an escape in it is no good";
        return false;
    }
    if (words->empty()) return true;
    const auto* event = std::ranges::find(events_, words->front(), &Event::word);
    if (event == std::end(events_)) {
        reason = Concat("unknown event '", words->front(), "'");
        return false;
    }
    const Words rest(words->begin() + 1, words->end());
    if (rest.size() < event->least || rest.size() > event->most) {
        reason = Concat("'", event->word, "' with ", rest.size(), " words");
        return false;
    }
    if (!workbench_.forms.empty() && !event->inDialog) {
        reason = Concat("'", event->word, "' while a dialog is open");
        return false;
    }
    if (!(this->*event->play)(rest, reason)) return false;
    played_ = played_ || event->word != "profile";
    reason = std::exchange(desktop_.missing, {});
    return reason.empty();
}

std::string ScriptPlayer::TakeOutput() {
    return std::exchange(output_, {});
}

void ScriptPlayer::Finish() {
    FinishRun(workbench_);
}

DiagramView* ScriptPlayer::Front(std::string& reason) {
    DiagramView* view = workbench_.Active();
    if (!view) reason = "no view is open";
    return view;
}

bool ScriptPlayer::New(const Words&, std::string&) {
    NewDiagram(workbench_);
    return true;
}

bool ScriptPlayer::Open(const Words& words, std::string& reason) {
    const bool again = words.size() == 2;
    if (again && words[0] != "-s") {
        reason = Concat("unknown word '", words[0], "'");
        return false;
    }
    OpenDiagram(workbench_, words.back(), again ? OpenAgain::BringToFront : OpenAgain::NewView);
    return true;
}

bool ScriptPlayer::ActivateView(const Words& words, std::string& reason) {
    std::int32_t number = 0;
    const auto count = static_cast<std::int32_t>(workbench_.views.size());
    if (!ReadWhole(words[0], number) || number < 1 || number > count) {
        reason = "no such view";
        return false;
    }
    Activate(workbench_, *workbench_.views[static_cast<std::size_t>(number) - 1]);
    return true;
}

bool ScriptPlayer::Close(const Words&, std::string& reason) {
    DiagramView* view = Front(reason);
    if (!view) return false;
    static_cast<void>(CloseDiagram(workbench_, *view));
    return true;
}

bool ScriptPlayer::Size(const Words& words, std::string& reason) {
    DiagramView* view = Front(reason);
    CanvasPoint size;
    if (!view || !ReadPoint(words, size, reason)) return false;
    view->width = size.x;
    view->height = size.y;
    return true;
}

bool ScriptPlayer::Frame(const Words& words, std::string& reason) {
    FramePlace place;
    std::int32_t* const numbers[] = {&place.left, &place.top, &place.width, &place.height};
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (ReadWhole(words[i], *numbers[i])) continue;
        reason = Concat("'", words[i], "' is no whole number");
        return false;
    }
    workbench_.frame = place;
    return true;
}

bool ScriptPlayer::SetProfile(const Words& words, std::string& reason) {
    std::int32_t number = 0;
    if (played_) reason = "the profile is set before all other events";
    if (!ReadWhole(words[1], number)) reason = Concat("'", words[1], "' is no whole number");
    if (!reason.empty()) return false;
    CurrentHost().profile->WriteInt("PHOTRAK", words[0], number);
    ReadProfile(workbench_);
    return true;
}

bool ScriptPlayer::SelectMode(const Words& words, std::string& reason) {
    static constexpr std::pair<std::string_view, Mode> modes[] = {
        {"select", Mode::Select}, {"zoom", Mode::Zoom}, {"connect", Mode::Connect}};
    if (!Front(reason)) return false;
    for (const auto& [word, mode] : modes) {
        if (words[0] != word || words.size() != 1) continue;
        SetMode(workbench_, mode);
        return true;
    }
    if (words[0] != "icon" || words.size() != 2) {
        reason = "unknown mode";
        return false;
    }
    std::int32_t index = 0;
    if (!ReadWhole(words[1], index)) index = workbench_.palette.IndexOf(words[1]);
    for (const BarButton& button : Palette(workbench_)) {
        if (!button.latches || button.mode != Mode::Icon || button.modelIndex != index) continue;
        if (!button.isOn) break;
        SetMode(workbench_, Mode::Icon, index);
        return true;
    }
    reason = "no such model";
    return false;
}

bool ScriptPlayer::Press(const Words& words, std::string& reason) {
    DiagramView* view = Front(reason);
    PressEvent event;
    const bool isRead = ReadFlags(
        words, {{"right", &event.right}, {"shift", &event.shift}, {"double", &event.isDouble}},
        reason);
    if (!isRead || !view || !ReadPoint(words, event.at, reason)) return false;
    MousePress(workbench_, *view, event);
    return true;
}

bool ScriptPlayer::Move(const Words& words, std::string& reason) {
    DiagramView* view = Front(reason);
    CanvasPoint at;
    if (!view || !ReadPoint(words, at, reason)) return false;
    MouseMove(workbench_, *view, at);
    return true;
}

bool ScriptPlayer::Release(const Words& words, std::string& reason) {
    DiagramView* view = Front(reason);
    CanvasPoint at;
    bool right = false;
    if (!view || !ReadPoint(words, at, reason)) return false;
    if (!ReadFlags(words, {{"right", &right}}, reason)) return false;
    MouseRelease(workbench_, *view, at, right);
    return true;
}

bool ScriptPlayer::Key(const Words& words, std::string&) {
    PressKey(workbench_, words[0]);
    return true;
}

bool ScriptPlayer::Menu(const Words& words, std::string& reason) {
    const Command* command = FindCommand(words[0]);
    if (!command) {
        reason = "no such entry";
        return false;
    }
    workbench_.highlighted.clear();
    RunCommand(workbench_, *command);
    return true;
}

bool ScriptPlayer::PushButtonOf(const std::vector<BarButton>& buttons, const Words& words,
                                std::string& reason) {
    const auto button = std::ranges::find(buttons, words[0], &BarButton::tooltip);
    if (button == buttons.end()) {
        reason = "no such button";
        return false;
    }
    PushBarButton(workbench_, *button);
    return true;
}

bool ScriptPlayer::PushPalette(const Words& words, std::string& reason) {
    return PushButtonOf(Palette(workbench_), words, reason);
}

bool ScriptPlayer::PushToolBar(const Words& words, std::string& reason) {
    return PushButtonOf(ToolBar(workbench_), words, reason);
}

bool ScriptPlayer::HighlightEntry(const Words& words, std::string& reason) {
    if (!words.empty() && !FindCommand(words[0])) {
        reason = "no such entry";
        return false;
    }
    Highlight(workbench_, words.empty() ? std::string_view() : std::string_view(words[0]));
    return true;
}

bool ScriptPlayer::AnswerNext(const Words& words, std::string& reason) {
    static constexpr std::pair<std::string_view, Answer> answers[] = {
        {"yes", Answer::Yes}, {"no", Answer::No}, {"cancel", Answer::Cancel}};
    for (const auto& [word, answer] : answers) {
        if (words[0] != word) continue;
        desktop_.answers.push_back(answer);
        return true;
    }
    reason = "an answer is yes, no or cancel";
    return false;
}

bool ScriptPlayer::FileNext(const Words& words, std::string&) {
    desktop_.files.push_back(words.empty() ? std::optional<std::string>() : words[0]);
    return true;
}

bool ScriptPlayer::Field(const Words& words, std::string& reason) {
    if (!workbench_.forms.empty() &&
        workbench_.forms.back()->Edit(words.front(), words.size() == 3 ? words[1] : "",
                                      words.back())) {
        return true;
    }
    reason = "no such field, or the text is none of its choices";
    return false;
}

bool ScriptPlayer::Row(const Words& words, std::string& reason) {
    if (!workbench_.forms.empty() &&
        workbench_.forms.back()->EditRow(words[0], words[1], words[2])) {
        return true;
    }
    reason = "no such cell, or the text is none of its choices";
    return false;
}

bool ScriptPlayer::SelectRow(const Words& words, std::string& reason) {
    std::int32_t row = 0;
    if (!workbench_.forms.empty() && ReadWhole(words[0], row) &&
        workbench_.forms.back()->Select(row)) {
        return true;
    }
    reason = "no such row";
    return false;
}

bool ScriptPlayer::Push(const Words& words, std::string& reason) {
    if (workbench_.Push(words[0])) return true;
    reason = "no such button, or it is off";
    return false;
}

bool ScriptPlayer::Wait(const Words&, std::string&) {
    FinishRun(workbench_);
    return true;
}

bool ScriptPlayer::Print(const Words& words, std::string& reason) {
    CanvasPoint at;
    const bool isHit = words[0] == "hit";
    if (words.size() != (isHit ? 3 : 1)) {
        reason = isHit ? "'print hit' wants a point" : "one thing is printed at a time";
        return false;
    }
    if (isHit && !ReadPoint({words[1], words[2]}, at, reason)) return false;
    const std::optional<std::string> text = PrintedText(workbench_, desktop_, words);
    if (!text) {
        reason = "nothing of that name can be printed";
        return false;
    }
    std::string head = "==";
    for (const std::string& word : words) head += Concat(" ", word);
    output_ = head + "\n" + *text;
    return true;
}

}  // namespace photrak

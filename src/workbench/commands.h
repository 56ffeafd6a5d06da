// All commands of the menus as one table: text, status text, keys and what they do. Menu bar, keys,
// tool bar and palette read it.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "workbench/workbench.h"

namespace photrak {

struct Command {
    std::string_view menu, entry;  // "File", "New"; an empty entry is a separator
    std::string_view status;       // shown while the entry is highlighted
    std::vector<std::string_view> keys;
    void (*run)(Workbench& workbench);
};
std::span<const Command> Commands();
/// The command of "File New"; null if there is none.
const Command* FindCommand(std::string_view menuAndEntry);

/// Drops a drag under way, as Escape does, then does what the command does.
void RunCommand(Workbench& workbench, const Command& command);
/// A key with exactly these modifiers, as "Ctrl+Z". False if nothing is bound to it.
bool PressKey(Workbench& workbench, std::string_view key);
/// Shows the status text of an entry, "%%" as one percent sign; an empty name ends that.
void Highlight(Workbench& workbench, std::string_view menuAndEntry);

/// A button of the tool bar or of the palette.
struct BarButton {
    std::int32_t x = 0, y = 0;  // left top, pixels
    std::string tooltip = {};
    bool latches = false, isDown = false, isOn = true;
    Mode mode = Mode::Select;  // of a latching one
    std::int32_t modelIndex = 0;
    std::string command = {};  // of a push button, else empty
};
std::vector<BarButton> ToolBar(const Workbench& workbench);
std::vector<BarButton> Palette(const Workbench& workbench);
/// Does what a press of the button does.
void PushBarButton(Workbench& workbench, const BarButton& button);

}  // namespace photrak

// One open diagram: its workspace, what is selected, the mode and the drag under way, the snapshot
// of Undo and the history behind Step Back.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "workbench/canvas_index.h"
#include "workbench/diagram_state.h"
#include "workbench/history.h"

namespace photrak {

enum class Mode { Select = 1, Zoom = 2, Connect = 3, Icon = 4 };

enum class DragKind { None, Press, Move, Connect, Disconnect };

/// A button that is down. By design only its own release ends it. `Press` waits to become a Move.
struct Drag {
    DragKind kind = DragKind::None;
    bool byRightButton = false;
    CanvasPoint start;  // pixels: where the button went down, or the end of the port's wire
    CanvasPoint last;   // where the pointer is
    Component* component = nullptr;  // of a wire's start
    std::int32_t port = 0;

    bool IsUnderWay() const { return kind != DragKind::None && kind != DragKind::Press; }
};

/// The picture that follows the pointer: of the model to place or of the block that moves.
struct Ghost {
    bool exists = false, shown = false;
    CanvasPoint pointer;  // its middle, pixels
};

/// What Edit Undo brings back: the diagram before the latest Cut or Delete.
struct UndoRecord {
    bool modified = false, valid = false;
    DiagramState state;
    std::string command;     // "Delete" or "Cut"
    std::size_t blocks = 0;  // that it removed
    DiagramState after;      // right after it
};

struct DiagramView {
    std::int32_t number = 0;  // in order of opening, from 1, of the process
    std::string fileName;     // absolute, or "untitled.top"
    std::string directory;    // of the file, or where the program was started; no last separator
    std::string title;
    std::unique_ptr<Workspace> workspace;
    std::vector<Component*> selection;  // in the order of selecting
    Component* current = nullptr;       // last clicked
    UndoRecord undo;
    Mode mode = Mode::Select;
    std::int32_t modelIndex = 0;
    CanvasPoint lastClick;  // where a paste goes, model units
    Drag drag;
    Ghost ghost;
    std::atomic<std::int16_t> running{0};
    std::int32_t width = 600, height = 400;  // of the client area, pixels
    BlockIds ids;
    History history;
    DiagramState saved;         // after the last load, save or New
    std::string diskText;       // the file as it was read or written last
    bool lostLines = false;     // the load dropped something that the file still has
    mutable CanvasIndex index;  // of Index
    mutable bool indexed = false;
    std::string readings;                         // of the testers of the last run, a line each
    std::map<std::string, std::string> findings;  // of the latest check, by name of block
    std::int32_t unkept = 0;                      // gestures since the latest recovery copy
    std::string recoveryPath;                     // of the copy, once there is one
    std::string recoveredName;                    // of the file that an opened copy was of

    /// The blocks by their places as they stand after the latest change that was ended.
    const CanvasIndex& Index() const;
    /// Blocks came, went or moved.
    void ForgetIndex() { indexed = false; }

    bool IsUntitled() const { return fileName.empty() || fileName == untitledName; }
    bool IsSelected(const Component* component) const;
    void Select(Component* component);
    void Deselect(const Component* component);
    void ClearSelection();
    /// Drops a drag, as Escape does; the selection stays.
    void DropDrag();
    /// A save would write another text than right after the last load, save or New.
    bool Differs() const;
    /// The diagram as it stands counts as saved.
    void MarkSaved();

    static constexpr const char* untitledName = "untitled.top";
};

/// What a save would write, the parameters as typed: nothing is evaluated.
std::string TextOf(const Workspace& workspace);

}  // namespace photrak

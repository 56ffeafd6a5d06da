// Commands that change several blocks at once. Only Cut and Delete make the snapshot of Undo; every
// change is a step of the history.
#include "workbench/edit_commands.h"

#include "base/escape.h"
#include "base/text.h"
#include "workbench/clipboard.h"
#include "workbench/mouse.h"
#include "workbench/recovery.h"
#include "workbench/superblock_paths.h"

namespace photrak {
namespace {

/// The view in front if its diagram may be edited, its drag dropped.
DiagramView* Editable(Workbench& workbench) {
    DiagramView* view = workbench.Active();
    if (!view) return nullptr;
    view->DropDrag();
    return view->running ? nullptr : view;
}

bool SaveUndo(Workbench& workbench, DiagramView& view, std::string_view command) {
    const EscapeLevel level(/*armed=*/true);
    view.undo.valid = false;
    std::string text;
    DiagramState state;
    const Touched nothing;  // all changes are in the history; run options may have moved on
    try {
        const bool isKnown = !view.history.Empty();
        const Status status =
            TakeState(*view.workspace, isKnown ? &view.history.Present() : nullptr,
                      isKnown ? &nothing : nullptr, view.ids, state, text);
        if (status == Status::Error) {
            workbench.ErrorBox(text);
            return false;
        }
    } catch (const Escape& escape) {
        workbench.ErrorBox(escape.message);
        return false;
    }
    view.undo.state = WithHeaderOf(std::move(state), *view.workspace);
    view.undo.command = command;
    view.undo.blocks = view.selection.size();
    view.undo.modified = view.undo.valid = true;
    return true;
}

bool CopySelection(Workbench& workbench, DiagramView& view) {
    std::string text;
    const Status status = CopySelectionToClipboard(view.selection, *workbench.clipboard, text);
    view.workspace->dirty = static_cast<std::int16_t>(status);
    if (status == Status::Error) workbench.ErrorBox(text);
    workbench.clipboardDirectory = view.directory;
    return status != Status::Error;
}

/// A SuperBlock that comes from another directory must find its own file from this one.
void KeepSuperBlocks(const Workbench& workbench, const DiagramView& view,
                     const std::vector<Component*>& pasted) {
    if (view.directory == workbench.clipboardDirectory) return;
    for (Component* block : pasted) {
        if (block->type != "SuperBlock") continue;
        const auto definition = FindFromDiagram(block->superBlockFile + ".dts",
                                                workbench.clipboardDirectory, workbench.catalogue);
        if (!definition) continue;
        const std::string name = SuperBlockNameOf(*definition, view.directory, workbench.catalogue);
        if (IsSuperBlockName(name)) block->superBlockFile = name;
    }
}

void RemoveSelection(Workbench& workbench, DiagramView& view, std::string_view name) {
    const std::vector<Component*> gone = view.selection;
    view.ClearSelection();
    Touched touched;
    for (const Component* component : gone) touched.AddAround(*component);
    DeleteComponents(gone, *view.workspace);
    EndChange(workbench, view, name, &touched);
    if (!view.history.Empty()) view.undo.after = view.history.Present();
}

/// Adds the clipboard's blocks and selects them; a negative corner leaves them where they were.
void PasteBlocks(Workbench& workbench, DiagramView& view, const CanvasPoint* corner,
                 std::string_view name) {
    view.ClearSelection();
    std::vector<Component*> pasted;
    std::string text;
    const Status status =
        PasteIntoWorkspace(view.workspace.get(), workbench.clipboard.get(), &pasted, text);
    view.selection = pasted;
    if (corner) MoveGroupTo(pasted, *corner);
    KeepSuperBlocks(workbench, view, pasted);
    if (status == Status::Error) workbench.ErrorBox(text);
    Touched touched;
    for (const Component* component : pasted) touched.Add(*component);
    EndChange(workbench, view, name, &touched);
}

std::string UndoneText(const UndoRecord& undo, bool later) {
    return Concat("Undone: ", undo.command, " of ", undo.blocks,
                  undo.blocks == 1 ? " block" : " blocks",
                  later ? " and all later changes (Alt+Left brings them back)" : "");
}

void GoTo(Workbench& workbench, const DiagramState* (History::*step)(),
          const DiagramState* (History::*back)()) {
    DiagramView* view = Editable(workbench);
    if (!view) return;
    if (view->history.Empty()) return;
    const DiagramState present = view->history.Present();
    const DiagramState* state = (view->history.*step)();
    if (!state) return;
    std::string text;
    view->ClearSelection();
    view->ForgetIndex();
    const DiagramState target = KeepingUnsaved(*state, *view->workspace);
    if (RestoreState(target, present, *view->workspace, view->ids, text) == Status::Error) {
        (view->history.*back)();
        workbench.ErrorBox(text);
        return;
    }
    view->undo.valid = false;
    view->undo.modified = true;
    NoteForRecovery(workbench, *view);
}

}  // namespace

void EditUndo(Workbench& workbench) {
    DiagramView* view = Editable(workbench);
    if (!view || !view->undo.valid || view->history.Empty()) return;
    const DiagramState& present = view->history.Present();
    const bool later = !SavesAlike(present, view->undo.after);
    std::string text;
    view->ClearSelection();
    view->ForgetIndex();
    if (RestoreState(view->undo.state, present, *view->workspace, view->ids, text) ==
        Status::Error) {
        workbench.ErrorBox(text);
        return;
    }
    view->undo.valid = false;
    if (view->history.Commit(view->undo.state, "Undo")) NoteForRecovery(workbench, *view);
    workbench.pane = UndoneText(view->undo, later);
}

void EditCut(Workbench& workbench) {
    DiagramView* view = Editable(workbench);
    if (!view || view->selection.empty()) return;
    const bool wasModified = view->undo.modified;
    if (!SaveUndo(workbench, *view, "Cut")) return;
    if (!CopySelection(workbench, *view)) {
        view->undo.valid = false;
        view->undo.modified = wasModified;
        return;
    }
    RemoveSelection(workbench, *view, "Cut");
}

void EditCopy(Workbench& workbench) {
    DiagramView* view = workbench.Active();
    if (!view) return;
    view->DropDrag();
    if (!view->selection.empty()) CopySelection(workbench, *view);
}

void EditPaste(Workbench& workbench) {
    DiagramView* view = Editable(workbench);
    if (!view || workbench.clipboard->components.empty()) return;
    PasteBlocks(workbench, *view, &view->lastClick, "Paste");
}

void EditDelete(Workbench& workbench) {
    DiagramView* view = Editable(workbench);
    if (!view || view->selection.empty()) return;
    if (SaveUndo(workbench, *view, "Delete")) RemoveSelection(workbench, *view, "Delete");
}

void EditDuplicate(Workbench& workbench) {
    DiagramView* view = Editable(workbench);
    if (!view || view->selection.empty() || !CopySelection(workbench, *view)) return;
    PasteBlocks(workbench, *view, nullptr, "Duplicate");
}

void EditSelectAll(Workbench& workbench) {
    DiagramView* view = workbench.Active();
    if (!view) return;
    view->DropDrag();
    view->ClearSelection();
    for (const auto& component : view->workspace->components) view->Select(component.get());
}

void StepBack(Workbench& workbench) {
    GoTo(workbench, &History::Back, &History::Forward);
}

void StepForward(Workbench& workbench) {
    GoTo(workbench, &History::Forward, &History::Back);
}

void Nudge(Workbench& workbench, std::int32_t columns, std::int32_t rows) {
    DiagramView* view = workbench.Active();
    if (!view || view->selection.empty()) return;
    view->DropDrag();
    Touched touched;
    if (!MoveSelection(*view, {columns * gridUnits, rows * gridUnits}, touched)) return;
    view->undo.modified = true;
    EndChange(workbench, *view, "Move", &touched);
}

}  // namespace photrak

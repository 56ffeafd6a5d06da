// Copies of modified diagrams in the state folder, so that no crash and no close costs work:
// $XDG_STATE_HOME/photrak/recovery, else ~/.local/state/photrak/recovery.
#pragma once

#include <string>
#include <vector>

#include "workbench/workbench.h"

namespace photrak {

/// Writes the copy of a view now: the text that a save would write, with a note of the file that it
/// belongs to. Silent if the folder cannot be written.
void KeepRecoveryCopy(Workbench& workbench, DiagramView& view);
/// Counts a change; the copy is written after twenty of them.
void NoteForRecovery(Workbench& workbench, DiagramView& view);
/// Writes what is pending; to be called every two seconds.
void KeepPendingCopies(Workbench& workbench);
/// After a save: the copy is not needed any more.
void ForgetRecoveryCopy(Workbench& workbench, DiagramView& view);

/// A copy that nobody has open.
struct RecoveryCopy {
    std::string path;      // of the copy
    std::string fileName;  // of the diagram that it belongs to; of a new one in its directory
    std::size_t blocks = 0;
};
std::vector<RecoveryCopy> RecoveryCopies(const Workbench& workbench);
/// Opens a copy as an untitled diagram with a title that says where it came from. One that does not
/// load leaves an empty diagram and stays for another time.
DiagramView* OpenRecoveryCopy(Workbench& workbench, const RecoveryCopy& copy);
void DiscardRecoveryCopy(const RecoveryCopy& copy);

}  // namespace photrak

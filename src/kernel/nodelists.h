// Signals of any type by their code: on the cells that models see, and stored on nodes.
#pragma once

#include <cstdint>
#include <string>

#include "base/complex.h"

namespace photrak {

/// Deep copy of what `sig` points to by its type code (0, 1, 3); a null sig or another code gives a
/// null copy and success.
[[nodiscard]] std::int32_t CopySignal(void** place, const void* sig, std::int32_t sigType);
/// Frees what `sig` points to by its type code, the OpSignal pair included, and clears the
/// reference. A channel that refuses stays allocated, and so does its pair.
void FreeSignal(void** sig, std::int32_t sigType);
/// Cells of a Nodelist. A failure prints "Out of memory in allocating Nodelist.\n" on the error
/// stream.
[[nodiscard]] std::int32_t CreateNodelist(Nodelist** place, std::int32_t sigType);
/// New chain of cells of the same types with empty sig.
[[nodiscard]] std::int32_t CopyNodelistShape(Nodelist** place, const Nodelist* source);
/// Frees each cell and its signal and empties the reference.
void FreeNodelistSignals(Nodelist** head);
/// Frees the cells only; the signals stay with whoever owns them.
void FreeNodelistCells(Nodelist** head);
/// A signal stored on a node, with the coordinates of the run that made it. Owns the signal.
struct SigRecord {
    std::int32_t SET = 0, INNERSWEEP = 0, OUTERSWEEP = 0, RUN = 0, LOOP = 0, BIN = 0;
    std::int32_t sigType = 0;
    std::string NAME;
    void* sig = nullptr;
    SigRecord* next = nullptr;
};
/// Frees the head record with its signal; the reference moves to next.
void FreeSigRecord(SigRecord** place);

}  // namespace photrak

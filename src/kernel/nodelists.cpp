// Signals of any kind by their type code, and what carries them: the port cells that a model sees
// (Nodelist) and the records that hang on nodes (SigRecord).
#include "kernel/nodelists.h"

#include <cstdio>

#include "kernel/sample_arrays.h"
#include "kernel/signals.h"

namespace photrak {
namespace {

template <class T>
std::int32_t CopyInto(void** place, const void* sig,
                      std::int32_t (*copy)(T** place, const T* source)) {
    T* made = nullptr;
    const std::int32_t result = copy(&made, static_cast<const T*>(sig));
    *place = made;
    return result;
}

/// Frees the list cell by cell; `release` deals with the cell's signal.
template <class ReleaseSignal>
void FreeCells(Nodelist** head, ReleaseSignal release) {
    if (!head) return;
    for (Nodelist& cell : Items(*head)) {
        release(cell);
        Release(&cell);
    }
    *head = nullptr;
}

}  // namespace

std::int32_t CopySignal(void** place, const void* sig, std::int32_t sigType) {
    if (!place) return 1;
    *place = nullptr;
    if (!sig) return 0;
    switch (sigType) {
        case OpSigType:
            return CopyInto<OpSignal>(place, sig, CopyOpSignal);
        case ElecSigType:
            return CopyInto<ElecSig>(place, sig, CopyElecSig);
        case BinSigType:
            return CopyInto<BinSig>(place, sig, CopyBinSig);
        default:
            return 0;
    }
}

void FreeSignal(void** sig, std::int32_t sigType) {
    if (!sig || !*sig) return;
    if (sigType == OpSigType) {
        auto* pair = static_cast<OpSignal*>(*sig);
        // A pair whose channel is in propagation stays allocated with it.
        if (FreeOpSignal(&pair) == 0) Release(pair);
    } else if (sigType == ElecSigType) {
        auto* waveform = static_cast<ElecSig*>(*sig);
        FreeElecSig(&waveform);
    } else if (sigType == BinSigType) {
        auto* bits = static_cast<BinSig*>(*sig);
        FreeBinSig(&bits);
    }
    *sig = nullptr;
}

std::int32_t CreateNodelist(Nodelist** place, std::int32_t sigType) {
    if (!place) return 1;
    *place = NewRecord<Nodelist>();
    if (!*place) {
        std::fputs("Out of memory in allocating Nodelist.\n", stderr);
        return 1;
    }
    (*place)->sigType = sigType;
    return 0;
}

std::int32_t CopyNodelistShape(Nodelist** place, const Nodelist* source) {
    return CopyList(place, source, [](Nodelist** copy, const Nodelist* cell) {
        return CreateNodelist(copy, cell->sigType);
    });
}

void FreeNodelistSignals(Nodelist** head) {
    FreeCells(head, [](Nodelist& cell) { FreeSignal(&cell.sig, cell.sigType); });
}

void FreeNodelistCells(Nodelist** head) {
    FreeCells(head, [](Nodelist&) {});
}

void FreeSigRecord(SigRecord** place) {
    if (!place || !*place) return;
    std::unique_ptr<SigRecord> record(*place);
    *place = record->next;
    FreeSignal(&record->sig, record->sigType);
}

}  // namespace photrak

// Making, copying and freeing signals. Every operation gives 0, or 1 when memory is exhausted or a
// required reference is null; a creation that fails leaves its place empty and frees what it had
// made. New arrays are all zeros, except bitSequence, which is left as it comes. These functions
// are the entries of the support table, hence their C signatures.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "base/complex.h"
#include "base/memory.h"

namespace photrak {

[[nodiscard]] std::int32_t CreateOpSig(OpSig** place, std::int32_t n);
[[nodiscard]] std::int32_t AddEySamples(OpSig* sig);
/// The contents are lost unless n is the present size. A failure leaves a record of 0 samples
/// without arrays.
[[nodiscard]] std::int32_t ResizeOpSig(OpSig* sig, std::int32_t n);
[[nodiscard]] std::int32_t CreateOpSigFromElec(OpSig** place, const ElecSig* source);
[[nodiscard]] std::int32_t CreateOpSigFromBin(OpSig** place, const BinSig* source,
                                              std::int32_t samplesPerBit);
/// Refuses with 1 while the fiber's record (fos) is set. The reference is emptied.
std::int32_t FreeOpSig(OpSig** place);
[[nodiscard]] std::int32_t CopyOpSig(OpSig** place, const OpSig* source);
/// One channel that refuses does so for the whole list: 1, nothing is freed, the head stays valid.
std::int32_t FreeOpSigList(OpSig** place);
[[nodiscard]] std::int32_t CopyOpSigList(OpSig** place, const OpSig* source);

[[nodiscard]] std::int32_t CreateOpSigASE(OpSigASE** place, std::int32_t n);
/// Frees the head record; the reference moves to its next.
std::int32_t FreeOpSigASE(OpSigASE** place);
[[nodiscard]] std::int32_t CopyOpSigASE(OpSigASE** place, const OpSigASE* source);
std::int32_t FreeOpSigASEList(OpSigASE** place);
[[nodiscard]] std::int32_t CopyOpSigASEList(OpSigASE** place, const OpSigASE* source);

[[nodiscard]] std::int32_t CreateOpSignal(OpSignal** place);
[[nodiscard]] std::int32_t CreateOpSignalWithSig(OpSignal** place, std::int32_t n);
[[nodiscard]] std::int32_t CreateOpSignalFromBin(OpSignal** place, const BinSig* source,
                                                 std::int32_t samplesPerBit);
[[nodiscard]] std::int32_t CreateOpSignalFromElec(OpSignal** place, const ElecSig* source);
/// Frees the channels, then the noise spectra; the pair itself stays with its owner.
std::int32_t FreeOpSignal(OpSignal** place);
[[nodiscard]] std::int32_t CopyOpSignal(OpSignal** place, const OpSignal* source);

/// Below 0 samples gives 1, as does a BinSig of fewer than 0 bits.
[[nodiscard]] std::int32_t CreateElecSig(ElecSig** place, std::int32_t n);
[[nodiscard]] std::int32_t ResizeElecSig(ElecSig* sig, std::int32_t n);
[[nodiscard]] std::int32_t CreateElecSigFromBin(ElecSig** place, const BinSig* source,
                                                std::int32_t samplesPerBit);
[[nodiscard]] std::int32_t CreateElecSigFromOp(ElecSig** place, const OpSig* source);
std::int32_t FreeElecSig(ElecSig** place);
[[nodiscard]] std::int32_t CopyElecSig(ElecSig** place, const ElecSig* source);

[[nodiscard]] std::int32_t CreateBinSig(BinSig** place, std::int32_t n);
[[nodiscard]] std::int32_t CreateBinSigFromElec(BinSig** place, const ElecSig* source);
[[nodiscard]] std::int32_t CreateBinSigFromOp(BinSig** place, const OpSig* source);
/// Leaves the caller's reference as it was; the caller clears it.
std::int32_t FreeBinSig(BinSig** place);
[[nodiscard]] std::int32_t CopyBinSig(BinSig** place, const BinSig* source);

/// bitRate and patternLength only; from bits the pattern length is their number.
std::int32_t CopyBitInfoBinToOp(const BinSig* source, OpSig* target);
std::int32_t CopyBitInfoElecToOp(const ElecSig* source, OpSig* target);
std::int32_t CopyBitInfoBinToElec(const BinSig* source, ElecSig* target);
std::int32_t CopyBitInfoOpToElec(const OpSig* source, ElecSig* target);

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

/// Scope owner of a record: Owned<OpSig>, Owned<ElecSig>, ...; Release() hands over.
struct SignalDeleter {
    void operator()(OpSig* p) const { FreeOpSigList(&p); }
    void operator()(OpSigASE* p) const { FreeOpSigASEList(&p); }
    void operator()(ElecSig* p) const { FreeElecSig(&p); }
    void operator()(BinSig* p) const { FreeBinSig(&p); }
    void operator()(OpSignal* p) const {
        void* sig = p;
        FreeSignal(&sig, OpSigType);
    }
    void operator()(Nodelist* p) const { FreeNodelistSignals(&p); }
};
template <class T>
using Owned = std::unique_ptr<T, SignalDeleter>;

/// Fills an Owned from a creating operation: `if (Make(sig, CreateElecSig, n)) return error;`
template <class T, class Create, class... Arguments>
[[nodiscard]] std::int32_t Make(Owned<T>& owner, Create create, Arguments&&... arguments) {
    T* made = nullptr;
    const std::int32_t result = create(&made, std::forward<Arguments>(arguments)...);
    owner.reset(made);
    return result;
}

/// Range-for over a singly linked list: `for (OpSig& channel : Items(signal->channels))`. The next
/// link is read before the body runs, so the body may free the item.
template <class T>
class Items {
  public:
    explicit Items(T* head) : head_(head) {}
    class Iterator {
      public:
        explicit Iterator(T* at) : at_(at), next_(at ? at->next : nullptr) {}
        T& operator*() const { return *at_; }
        Iterator& operator++() {
            at_ = next_;
            next_ = at_ ? at_->next : nullptr;
            return *this;
        }
        bool operator!=(const Iterator& other) const { return at_ != other.at_; }

      private:
        T *at_, *next_;
    };
    Iterator begin() const { return Iterator(head_); }
    Iterator end() const { return Iterator(nullptr); }

  private:
    T* head_;
};

}  // namespace photrak

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
#include "kernel/binary_signals.h"
#include "kernel/electrical_signals.h"
#include "kernel/nodelists.h"
#include "kernel/noise_spectra.h"
#include "kernel/optical_pairs.h"
#include "kernel/optical_signals.h"

namespace photrak {

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

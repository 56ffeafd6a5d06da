// Records go through a pipe as they lie in memory: both ends are one program.
#include "files/isolated_call.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <type_traits>
#include <unistd.h>
#include <utility>

#include "base/arrays.h"
#include "base/text.h"
#include "kernel/sample_arrays.h"
#include "kernel/signals.h"
#include "platform/descriptor.h"
#include "platform/host.h"
#include "platform/memory_shortage.h"

namespace photrak {
namespace {

// --- Records as bytes ---

class Packer {
  public:
    template <class T>
    requires std::is_trivially_copyable_v<T>
    void Put(const T& value) { bytes_.append(reinterpret_cast<const char*>(&value), sizeof value); }
    /// A one-based array of n + 1 elements, which may be absent.
    template <class T>
    void PutSamples(const T* samples, std::int32_t n) {
        Put(samples != nullptr && n >= 0);
        if (samples && n >= 0) {
            bytes_.append(reinterpret_cast<const char*>(samples),
                          (static_cast<std::size_t>(n) + 1) * sizeof(T));
        }
    }
    void PutText(const std::string& text) {
        Put(text.size());
        bytes_ += text;
    }
    void PutSignal(const BinSig& sig) {
        Put(sig);
        PutSamples(sig.bitSequence, sig.noPoints);
    }
    void PutSignal(const ElecSig& sig) {
        Put(sig);
        PutSamples(sig.elecSamples, sig.noPoints);
        PutSamples(sig.sigmaSamples, sig.noPoints);
    }
    void PutSignal(const OpSignal& pair) {
        for (const OpSig& channel : Items(pair.channels)) {
            Put(true);
            Put(channel);
            PutSamples(channel.Ex_samples, channel.noPoints);
            PutSamples(channel.Ey_samples, channel.noPoints);
        }
        Put(false);
        for (const OpSigASE& spectrum : Items(pair.noise)) {
            Put(true);
            Put(spectrum);
            PutSamples(spectrum.powerSamples, spectrum.noPoints);
        }
        Put(false);
    }
    const std::string& Bytes() const { return bytes_; }

  private:
    std::string bytes_;
};

/// Gives false from the first byte that is missing on.
class Unpacker {
  public:
    explicit Unpacker(std::string_view bytes) : rest_(bytes) {}
    template <class T>
    requires std::is_trivially_copyable_v<T>
    bool Take(T& value) { return TakeBytes(&value, sizeof value); }
    template <class T>
    bool TakeSamples(T*& samples, std::int32_t n) {
        bool isThere = false;
        samples = nullptr;
        if (!Take(isThere) || !isThere) return !isThere && isWhole_;
        samples = NewUnclearedSamples<T>(n);
        isWhole_ = isWhole_ && samples;
        return TakeBytes(samples, (static_cast<std::size_t>(n) + 1) * sizeof(T));
    }
    bool TakeText(std::string& text) {
        std::size_t size = 0;
        if (!Take(size) || size > rest_.size()) return false;
        text = rest_.substr(0, size);
        rest_.remove_prefix(size);
        return true;
    }
    bool TakeSignal(BinSig& sig) { return Take(sig) && TakeSamples(sig.bitSequence, sig.noPoints); }
    bool TakeSignal(ElecSig& sig) {
        bool whole = Take(sig);
        sig.elecSamples = sig.sigmaSamples = nullptr;
        whole = whole && TakeSamples(sig.elecSamples, sig.noPoints) &&
                TakeSamples(sig.sigmaSamples, sig.noPoints);
        sig.fftView = DoubleView(sig.elecSamples);
        sig.sigmaFftView = DoubleView(sig.sigmaSamples);
        return whole;
    }
    bool TakeSignal(OpSignal& pair) { return TakeList(&pair.channels) && TakeList(&pair.noise); }

  private:
    bool TakeBytes(void* to, std::size_t size) {
        isWhole_ = isWhole_ && size <= rest_.size();
        if (!isWhole_) return false;
        std::memcpy(to, rest_.data(), size);
        rest_.remove_prefix(size);
        return true;
    }
    bool TakeRecord(OpSig& channel) {
        const bool whole = Take(channel);
        channel.prev = channel.next = nullptr;
        channel.Ex_samples = channel.Ey_samples = channel.auxSamples = nullptr;
        channel.fos = nullptr;
        const bool filled = whole && TakeSamples(channel.Ex_samples, channel.noPoints) &&
                            TakeSamples(channel.Ey_samples, channel.noPoints);
        channel.fftView = DoubleView(channel.Ex_samples);
        return filled;
    }
    bool TakeRecord(OpSigASE& spectrum) {
        const bool whole = Take(spectrum);
        spectrum.next = nullptr;
        spectrum.powerSamples = nullptr;
        return whole && TakeSamples(spectrum.powerSamples, spectrum.noPoints);
    }
    template <class T>
    bool TakeList(T** place) {
        T* former = nullptr;
        for (bool more = false; Take(more);) {
            if (!more) return true;
            T* record = NewRecord<T>();
            if (!record) return false;
            *place = record;
            const bool whole = TakeRecord(*record);
            if constexpr (requires { record->prev; }) record->prev = former;
            former = record;
            place = &record->next;
            if (!whole) return false;
        }
        return false;
    }

    std::string_view rest_;
    bool isWhole_ = true;
};

// --- The child ---

void PackOutputs(Packer& packer, Nodelist* outputs) {
    for (const Nodelist& cell : Items(outputs)) {
        packer.Put(cell.sigType);
        packer.Put(cell.sig != nullptr);
        if (!cell.sig) continue;
        switch (cell.sigType) {
            case BinSigType:
                packer.PutSignal(*static_cast<const BinSig*>(cell.sig));
                break;
            case ElecSigType:
                packer.PutSignal(*static_cast<const ElecSig*>(cell.sig));
                break;
            case OpSigType:
                packer.PutSignal(*static_cast<const OpSignal*>(cell.sig));
                break;
            default:
                break;
        }
    }
}

/// What a child says of itself when memory was refused to it.
constexpr int shortOfMemory = 71;

/// A cell of no known signal kind cannot be handed over; the driver refuses it all the same.
[[noreturn]] void RunChild(const ModelCall& call, int file,
                           const std::function<Status(const ModelCall&)>& run) {
    std::string text;
    ModelCall own = {{call.owner, text, call.path},
                     call.workspace,
                     call.component,
                     call.options,
                     call.inputs,
                     call.outputs};
    const std::uint64_t known = ShortageCount();
    bool told = false;
    try {
        Packer packer;
        packer.Put(run(own));
        packer.PutText(text);
        PackOutputs(packer, call.outputs);
        told = ShortageCount() == known && WriteAll(file, packer.Bytes());
    } catch (...) {
        // Nothing may lead this copy of the program back into the run; the parent tells of its end.
    }
    ::_exit(ShortageCount() > known ? shortOfMemory : told ? 0 : 1);
}

// --- The parent ---

/// Whatever happens meanwhile, the process does not outlive its owner here.
struct Child {
    Child() = default;
    ~Child() { End(); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// Closes the pipe and ends the process; gives its state.
    int End() {
        int state = 0;
        if (file >= 0) ::close(std::exchange(file, -1));
        const pid_t ending = std::exchange(process, -1);
        if (ending <= 0) return state;
        ::kill(ending, SIGKILL);  // one that has ended already keeps its state
        while (::waitpid(ending, &state, 0) < 0 && errno == EINTR) {
        }
        return state;
    }

    pid_t process = -1;
    int file = -1;
    bool isLate = false, isStopped = false;
    std::string bytes;
};

void Start(Child& child, const ModelCall& call,
           const std::function<Status(const ModelCall&)>& run) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return;
    std::fflush(nullptr);  // or the child would write it once more
    child.process = ::fork();
    if (child.process == 0) {
        ::close(ends[0]);
        RunChild(call, ends[1], run);
    }
    ::close(ends[1]);
    child.file = ends[0];
}

/// Reads until the child has closed its end, the time is up or the run is stopped.
void Read(Child& child, double seconds, const StopWord& stop) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    std::string part(std::size_t{1} << 16, '\0');
    for (;;) {
        child.isStopped = stop.load(std::memory_order_relaxed) != 0;
        child.isLate = std::chrono::duration<double>(Clock::now() - start).count() > seconds;
        if (child.isStopped || child.isLate) return;
        pollfd ready{child.file, POLLIN, 0};
        constexpr int milliseconds = 50;
        if (::poll(&ready, 1, milliseconds) <= 0) continue;
        const ssize_t got = ::read(child.file, part.data(), part.size());
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return;  // its end is closed: it has no more to say
        child.bytes.append(part, 0, static_cast<std::size_t>(got));
    }
}

/// How a child without a whole answer ended.
std::string EndOf(const Child& child, int state, double seconds) {
    if (child.isStopped) return "was stopped";
    if (child.isLate) return Concat("did not return within ", seconds, " s");
    if (WIFSIGNALED(state)) {
        const int signal = WTERMSIG(state);
        const char* name = ::sigabbrev_np(signal);
        return Concat("crashed: SIG", name ? name : "?");
    }
    const int status = WIFEXITED(state) ? WEXITSTATUS(state) : -1;
    if (status == shortOfMemory) return "ran out of memory";
    return Concat("ended its process with status ", status);
}

template <class T>
bool TakeInto(Nodelist& cell, Unpacker& unpacker) {
    Owned<T> record(NewRecord<T>());
    const bool whole = record && unpacker.TakeSignal(*record);
    if (whole) cell.sig = record.release();
    return whole;
}

bool UnpackOutputs(Unpacker& unpacker, Nodelist* outputs) {
    for (Nodelist& cell : Items(outputs)) {
        bool isThere = false;
        if (!unpacker.Take(cell.sigType) || !unpacker.Take(isThere)) return false;
        if (!isThere) continue;
        const bool whole = cell.sigType == BinSigType    ? TakeInto<BinSig>(cell, unpacker)
                           : cell.sigType == ElecSigType ? TakeInto<ElecSig>(cell, unpacker)
                           : cell.sigType == OpSigType   ? TakeInto<OpSignal>(cell, unpacker)
                                                         : true;
        if (!whole) return false;
    }
    return true;
}

}  // namespace

Status CallIsolated(const ModelCall& call, double seconds,
                    const std::function<Status(const ModelCall&)>& run) {
    Child child;
    Start(child, call, run);
    if (child.process < 0) {
        return call.Refuse("no process for the user library: ", std::strerror(errno));
    }
    Read(child, seconds, call.options.stop);
    const int state = child.End();
    Unpacker unpacker(child.bytes);
    Status status = Status::Error;
    std::string text;
    const bool isWhole = !child.isLate && !child.isStopped && unpacker.Take(status) &&
                         unpacker.TakeText(text) && UnpackOutputs(unpacker, call.outputs);
    if (isWhole) {
        call.errorText += text;
        return status;
    }
    if (child.isStopped) return Status::Success;  // the run ends, and this block hands nothing on
    return call.Refuse("the user library ", EndOf(child, state, seconds));
}

}  // namespace photrak

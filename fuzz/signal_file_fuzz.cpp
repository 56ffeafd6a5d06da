// Groups of a signal file from a text. What loads is written and loaded again: nothing may change.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "files/signal_file.h"
#include "fuzz_support.h"

namespace photrak {
namespace {

struct Signal {
    std::int32_t type = UnknownSigType;
    void* sig = nullptr;
    Signal() = default;
    ~Signal() { FreeSignal(&sig, type); }
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;
};

void CheckRoundTrip(const Signal& signal) {
    const SimOptions options;
    std::string text, again, errorText;
    SigFileWriter(text, signal.type, signal.sig, options);
    LineReader stream(text, "again");
    Signal loaded;
    const Status status = ReadSignalGroup(&stream, &loaded.type, &loaded.sig, errorText);
    // The greatest numbers round up to what is none.
    if (status == Status::Error && text.find("e+308") != std::string::npos) return;
    Require(status == Status::Success && loaded.type == signal.type);
    SigFileWriter(again, loaded.type, loaded.sig, options);
    Require(text == again);
}

}  // namespace
}  // namespace photrak

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    LineReader stream({reinterpret_cast<const char*>(data), size}, "input");
    for (bool more = true; more;) {
        Signal signal;
        std::string errorText;
        const Status status = ReadSignalGroup(&stream, &signal.type, &signal.sig, errorText);
        Require((status == Status::Error) == !errorText.empty());
        more = status == Status::Success && signal.sig;
        if (more) CheckRoundTrip(signal);
    }
    return 0;
}

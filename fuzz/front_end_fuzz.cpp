// The measured table of a receiver's front end from a text: rows in order, or a reason.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "models/detection/front_end.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    FrontEndParams frontEnd;
    std::string reason;
    const Status status =
        ReadFrontEndTable({reinterpret_cast<const char*>(data), size}, frontEnd, reason);
    Require((status == Status::Success) == reason.empty());
    Require(status == Status::Success || frontEnd.count == 0);
    const double* frequency = frontEnd.frequency.get();
    for (std::int32_t i = 2; i <= frontEnd.count; ++i) {
        const bool rises = frequency[2] > frequency[1];
        Require(rises ? frequency[i] > frequency[i - 1] : frequency[i] < frequency[i - 1]);
        Require(std::isfinite(frontEnd.realPart.get()[i] + frontEnd.imagPart.get()[i]));
    }
    return 0;
}

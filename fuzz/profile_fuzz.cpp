// The profile from a text: what is written is found again, and the other keys stay as they were.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "platform/profile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto width = FindProfileInt(text, "PHOTRAK", "FrameXSize");
    const std::string written = WithProfileInt(text, "PHOTRAK", "FrameYSize", -7);
    Require(FindProfileInt(written, "PHOTRAK", "FrameYSize") == -7);
    Require(FindProfileInt(written, "PHOTRAK", "FrameXSize") == width);
    Require(WithProfileInt(written, "PHOTRAK", "FrameYSize", -7) == written);
    static_cast<void>(ProfileInts(written, "PHOTRAK"));
    return 0;
}

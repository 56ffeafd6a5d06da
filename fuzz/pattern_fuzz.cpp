// Integers of a bit pattern's file: the text gets shorter with each, or stays and gives no more.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz_support.h"
#include "models/sources/integer_scan.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    std::string_view text(reinterpret_cast<const char*>(data), size);
    std::int16_t value = 0;
    std::size_t left = text.size();
    while (ScanShort(text, value)) {
        Require(text.size() < left);
        left = text.size();
    }
    const std::int16_t last = value;
    Require(text.size() == left && !ScanShort(text, value) && value == last);
    return 0;
}

// Outcomes of points from a text: what is taken for whole is written and read again.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "results/point_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    PointFile file, again;
    std::string reason;
    if (!ReadPointFile({reinterpret_cast<const char*>(data), size}, file, reason)) {
        Require(!reason.empty());
        return 0;
    }
    const std::string text = PointFileText(file);
    Require(ReadPointFile(text, again, reason) && PointFileText(again) == text);
    return 0;
}

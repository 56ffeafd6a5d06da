// What the fuzz targets share: message boxes that nobody reads, and a demand that ends the program.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <functional>
#include <string_view>

#include "platform/host.h"

namespace photrak {

/// Boxes would fill the fuzzer's own report.
struct SilentMessages : Messages {
    void ShowStatusText(std::string_view) override {}
    void ErrorBox(std::string_view, std::string_view) override {}
    void InfoBox(std::string_view, std::string_view) override {}
    bool QueryBox(std::string_view, std::string_view) override { return false; }
};

inline void Require(bool condition) {
    if (!condition) std::abort();
}

/// True for one in `n` inputs of the fuzzer, and always the same ones: for what takes longer than
/// the reader itself. True for all inputs of a replay.
inline bool IsOneIn([[maybe_unused]] std::size_t n, [[maybe_unused]] std::string_view input) {
#ifdef PHOTRAK_LIBFUZZER
    return std::hash<std::string_view>{}(input) % n == 0;
#else
    return true;
#endif
}

}  // namespace photrak

// What the fuzz targets share: message boxes that nobody reads, and a demand that ends the program.
#pragma once

#include <cstdlib>
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

}  // namespace photrak

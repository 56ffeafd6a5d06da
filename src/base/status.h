// The three-valued status of every operation of a run or a load.
#pragma once

#include <cstdint>

namespace photrak {

enum class [[nodiscard]] Status : std::int16_t{Success = 0, Error = 1, Warning = 2};

/// Merges `next` into `running`: an error beats a warning, a warning beats success.
constexpr void MergeStatus(Status& running, Status next) {
    if (running == Status::Success || (running == Status::Warning && next == Status::Error)) {
        running = next;
    }
}

}  // namespace photrak

// What a call that stops the run says.
#pragma once

#include <functional>
#include <string>

#include "base/escape.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace photrak {

/// The message with which `action` takes the escape, or an empty text when it returns. Boxes and
/// pherror.txt stay out of the test's way.
inline std::string FailureOf(const std::function<void()>& action) {
    const TempDir directory;
    const RecordingHost host;
    try {
        action();
    } catch (const Escape& escape) {
        return escape.message;
    }
    return {};
}

}  // namespace photrak

// Where a run stands, as one line: a status text, the share of a long block, the point of a scan,
// the time taken and the time left.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace photrak {

struct SimOptions;

/// Silent; one line of the terminal that rewrites itself; a line of text or of JSON for each step.
enum class ProgressStyle { Silent, Rewriting, Lines, Json };

/// "lines", "json" or nothing: on a terminal Rewriting, otherwise Silent. `quiet` silences what was
/// not asked for by a word.
ProgressStyle StyleOf(std::string_view word, bool quiet);

class ProgressText {
  public:
    using Clock = std::chrono::steady_clock;

    /// A new block or stage begins.
    void Begin(std::string_view status) {
        status_ = status;
        blockStart_ = lastShown_ = Clock::now();
    }
    /// True if a share of the block is due to be shown: not within its first second, then once a
    /// second, on a terminal more often.
    bool IsDue(ProgressStyle style);
    /// The line without its end; `fraction` below 0 leaves the share out, `options` may be null.
    std::string Line(ProgressStyle style, const SimOptions* options, double fraction) const;

  private:
    std::string status_;
    Clock::time_point start_ = Clock::now(), blockStart_ = start_, lastShown_ = start_;
};

}  // namespace photrak

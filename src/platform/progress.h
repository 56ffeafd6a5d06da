// How far a long block is, told from within its loop to whoever shows it.
#pragma once

namespace photrak {

struct ProgressSink {
    virtual ~ProgressSink() = default;
    /// `fraction` from 0 to 1 of the block that runs. Called often: a sink looks at the clock.
    virtual void ShowFraction(double fraction) = 0;
};

/// The sink in use, null without one. Of the thread that runs the blocks.
inline ProgressSink*& CurrentProgress() {
    static ProgressSink* sink = nullptr;
    return sink;
}

inline void NoteProgress(double fraction) {
    if (ProgressSink* sink = CurrentProgress()) sink->ShowFraction(fraction);
}

}  // namespace photrak

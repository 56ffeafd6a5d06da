// A scan shared among processes: which of its points this one runs, and what becomes of the others.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "base/status.h"
#include "kernel/run_record.h"

namespace photrak {

/// What a point left behind, beside its files, its log and its readings.
struct PointOutcome {
    Status status = Status::Success;  // of the run, for this point alone
    Status blocks = Status::Success;  // the worst of its blocks
    std::string errorText;            // of a run that failed
};

/// Asked at each point of the outermost topology, in their order. Random sources are then set anew
/// for each block from the point that its result belongs to, so that no result depends on which
/// process ran what before.
class ScanPoints {
  public:
    enum class Part { Runs, PassesOver, Takes };

    virtual ~ScanPoints() = default;
    /// Points count from 1.
    virtual Part PartOf(std::int64_t point) = 0;
    /// The blocks of a point that this process runs begin. What runs before, to make up for points
    /// of others, belongs to no point.
    virtual void Begin(std::int64_t point) = 0;
    virtual void End(std::int64_t point, const PointOutcome& outcome) = 0;
    /// Brings log, messages and files of a point that another process ran; `read` is called for
    /// every reading of its testers, between the files that came before and after it.
    virtual PointOutcome Take(std::int64_t point,
                              const std::function<void(const BerReading&)>& read) = 0;
};

}  // namespace photrak

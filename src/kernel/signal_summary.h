// What remains of a signal when its samples are gone: a record of numbers for each optical channel,
// electrical signal or bit sequence that was stored on a node.
#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <string_view>

#include "base/status.h"

namespace photrak {

struct Node;
struct SigRecord;

struct SignalSummary {
    std::int32_t SET = 0, INNERSWEEP = 0, OUTERSWEEP = 0, RUN = 0, LOOP = 0, BIN = 0;
    std::int16_t mode = 0;  // simMode, of the run that stored the signal
    std::int32_t sigType = 0;
    std::string NAME;
    std::string_view unit;                   // "V" or "A"; empty for power and bits
    double average = 0.0;                    // W, V, A, or the part of 1s
    double reservedBeforeNoise[2] = {};      // always 0
    double noiseFigure = 0.0;                // peak density, W/Hz; average deviation, V or A
    double reservedAfterNoise[6] = {};       // always 0
    double bitRate = 0.0;                    // bit/s
    double startTime = 0.0, duration = 0.0;  // s
    double tStep = 0.0;                      // s, 0 for bits
    double wavelength = 0.0;                 // m, 0 unless optical
    std::int32_t patternLength = 0;          // bits
};

/// Newest signal first; the channels of one signal in their own order.
using SignalSummaries = std::list<SignalSummary>;

/// Records kept on a node: a scan of any length may pass it. The newest signal stays whole.
inline constexpr std::size_t maxSummariesOnNode = 256;

/// Measures a signal that is to be stored. An error without records when memory is exhausted.
Status SummarizeSignal(const SigRecord& record, std::int16_t mode, SignalSummaries& made,
                       std::string& errorText);
/// Puts the records of a stored signal in front of those that the node keeps, and drops the oldest
/// beyond the bound.
void KeepSummaries(SignalSummaries made, Node& node);

}  // namespace photrak

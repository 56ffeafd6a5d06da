// The bit error rate tester: one result per pass, kept over sweeps and statistical runs and written
// as a curve and a table. The rate itself comes from ber_computation.h.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "kernel/driver.h"
#include "models/detection/ber_computation.h"
#include "results/ber_curve.h"
#include "results/ber_files.h"

namespace photrak {

/// The rows of its table.
std::vector<ParamSpec> BerParamSpecs();

/// The result of a pass, or a statistic of several.
struct BerSlot {
    double BER = -1.0;  // below 0: not yet computed
    double Q = 0.0;
};

/// Results from the first pass to the last of a simulation; a component keeps them as its
/// modelState. Slots of a sweep point: one without statistical runs, otherwise average, minimum,
/// maximum, then one for each run. Points: inner values within outer values.
struct BERResults {
    std::int32_t innerPoints = 1, outerPoints = 1;  // I, O
    std::int32_t runs = 1;
    std::vector<BerSlot> slots;
    std::vector<double> innerValues, outerValues;  // of the sweeps; 0 without one
    BerCurve curve;
    BerTable table;
    bool firstCurve = true;  // no curve yet in this simulation

    std::size_t SlotsPerPoint() const {
        return runs > 1 ? static_cast<std::size_t>(runs) + 3 : std::size_t{1};
    }
};

namespace berSlot {
inline constexpr std::size_t average = 0, minimum = 1, maximum = 2, beforeRuns = 2;
}

/// More slots than this are refused: 16 bytes each, for as long as the simulation lasts.
inline constexpr std::int64_t maxBerSlots = 10'000'000;

/// Slots and sweep values for what the options ask for.
Status MakeBerResults(const SimOptions& options, const SymbolTable& symbols, BERResults& results,
                      const ModelReport& report);

/// Stores the result of the present pass: its run, and what it does to the statistics. A pass that
/// found none stores BER 1 and Q 0.
void StoreBerResult(const SimOptions& options, const std::optional<BerSlot>& found,
                    BERResults& results);

/// The model.
Status RunBerTester(const ModelCall& call);

}  // namespace photrak

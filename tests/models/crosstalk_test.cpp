// The crosstalk block against sums by hand.
#include "models/detection/crosstalk.h"

#include <algorithm>

#include "base/memory.h"
#include "models/block_run.h"
#include "support/signals.h"

namespace photrak {
namespace {

constexpr double tolerance = 1e-12;

Owned<ElecSig> Wave(std::initializer_list<Complex> samples, double startTime = 0.0) {
    Owned<ElecSig> wave = RampWaveform(static_cast<std::int32_t>(samples.size()), 1e-12);
    wave->startTime = startTime;
    std::copy(samples.begin(), samples.end(), wave->elecSamples + 1);
    std::fill_n(wave->sigmaSamples + 1, samples.size(), Complex{3.0, 0.0});
    return wave;
}

/// Adds crosstalkMatrix and selects it.
void UseMatrix(ModelBlock& block, std::int32_t rows, std::int32_t cols,
               std::initializer_list<double> values) {
    Parameter* parameter = ParameterList::NewParameter("crosstalkMatrix", DoubleArrayType, "");
    auto* array = static_cast<ArrayRecord*>(AllocateZeroed(1, sizeof(ArrayRecord)));
    array->rows = rows;
    array->cols = cols;
    auto* data = static_cast<double*>(AllocateZeroed(values.size(), sizeof(double)));
    std::copy(values.begin(), values.end(), data);
    array->data = data;
    parameter->valactual = array;
    parameter->next = block.component.parameters;
    block.component.parameters = parameter;
    block.Word("ParameterType", "Array");
}

void ExpectReal(const ElecSig& wave, std::initializer_list<double> expected) {
    std::int32_t i = 0;
    for (const double value : expected) EXPECT_NEAR(wave.elecSamples[++i].re, value, tolerance);
}

// Element (k, i) leads from input k to output i; deviations add linearly, by design.
TEST(Crosstalk, ReadsTheMatrixByColumnsAndAddsDeviationsLinearly) {
    const Owned<ElecSig> a = Wave({{1.0, 1.0}, {2.0, 0.0}}), b = Wave({{10.0, 0.0}, {-20.0, 2.0}});
    ModelBlock block;
    UseMatrix(block, 2, 2, {1.0, 0.5, 0.25, 2.0});
    const BlockRun run(RunCrosstalkBlock, block, {a, b}, 2);
    ExpectReal(run.Wave(0), {1.0 + 2.5, 2.0 - 5.0});
    ExpectReal(run.Wave(1), {0.5 + 20.0, 1.0 - 40.0});
    EXPECT_NEAR(run.Wave(1).elecSamples[2].im, 4.0, tolerance);
    EXPECT_NEAR(run.Wave(0).sigmaSamples[1].re, 3.0 * 1.25, tolerance);
    EXPECT_EQ(run.Wave(0).spareCount, 3);
}

TEST(Crosstalk, EitherSwitchAsksForMagnitudes) {
    const Owned<ElecSig> a = Wave({{3.0, 4.0}}), b = Wave({{-1.0, 0.0}});
    for (const char* name : {"Mode", "coherency"}) {
        ModelBlock block;
        block.Word(name, "Magnitude");
        UseMatrix(block, 2, 2, {1.0, 0.0, 2.0, 1.0});
        const BlockRun run(RunCrosstalkBlock, block, {a, b}, 2);
        ExpectReal(run.Wave(0), {5.0 + 2.0});
        EXPECT_EQ(run.Wave(0).elecSamples[1].im, 0.0);
    }
}

TEST(Crosstalk, AddsSamplesOfOneTime) {
    // b starts one sample later: its last sample is that of a's first time.
    const Owned<ElecSig> a = Wave({{1, 0}, {2, 0}, {3, 0}, {4, 0}}, 5e-12);
    const Owned<ElecSig> b = Wave({{20, 0}, {30, 0}, {40, 0}, {10, 0}}, 6e-12);
    const Owned<ElecSig> none;
    ModelBlock block;
    block.Number("NearestNeighborXtlk", 0.0).Number("NextNearestNeighborXtlk", 10.0);
    const BlockRun run(RunCrosstalkBlock, block, {a, b, none}, 3);
    ExpectReal(run.Wave(0), {11, 22, 33, 44});
    ExpectReal(run.Wave(1), {22, 33, 44, 11});
    ExpectReal(run.Wave(2), {20, 40, 60, 80});  // 10 a + b, from the earliest start
    EXPECT_EQ(run.Wave(1).startTime, 6e-12);
}

TEST(Crosstalk, ExtendsConstantDiagonalsAndRefusesOtherSizes) {
    const Owned<ElecSig> a = Wave({{1, 0}}), b = Wave({{10, 0}}), c = Wave({{100, 0}});
    ModelBlock even, uneven;
    UseMatrix(even, 2, 2, {1.0, 0.5, 0.25, 1.0});
    const BlockRun run(RunCrosstalkBlock, even, {a, b, c}, 3);
    ExpectReal(run.Wave(0), {1.0 + 2.5});
    ExpectReal(run.Wave(1), {0.5 + 10.0 + 25.0});
    ExpectReal(run.Wave(2), {5.0 + 100.0});
    UseMatrix(uneven, 2, 2, {1.0, 0.5, 0.25, 2.0});
    EXPECT_EQ(BlockRun(RunCrosstalkBlock, uneven, {a, b, c}, 3).text,
              "CrosstalkBlock error: crosstalk matrix incompatible with number of input signals\n");
}

TEST(Crosstalk, RefusesInputsOfDifferentGrids) {
    const Owned<ElecSig> a = Wave({{1, 0}, {2, 0}}), shorter = Wave({{1, 0}});
    const Owned<ElecSig> late = Wave({{1, 0}, {2, 0}}, NAN);
    ModelBlock block;
    for (const auto* other : {&shorter, &late}) {
        EXPECT_EQ(BlockRun(RunCrosstalkBlock, block, {a, *other}, 2).text,
                  "CrosstalkBlock error: incompatible input signals\n");
    }
}

}  // namespace
}  // namespace photrak

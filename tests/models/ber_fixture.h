// Pairs of a waveform and its bits on input cells, for tests of the bit error rate tester: ideal
// two-level signals unless a test changes their samples.
#pragma once

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "kernel/run_record.h"
#include "models/detection/ber_computation.h"
#include "numeric/random.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace photrak {

/// Bits without a visible period, the same at every call.
inline std::vector<int> MixedBits(int n) {
    std::vector<int> bits;
    unsigned state = 0x5eed;
    for (int i = 0; i < n; ++i) {
        state = state * 1103515245u + 12345u;
        bits.push_back((state >> 16) & 1);
    }
    return bits;
}

/// The Gaussian tail beyond z deviations, by the system's own long arithmetic.
inline double TailBeyond(long double z) {
    return static_cast<double>(0.5L * std::erfc(z / std::sqrt(2.0L)));
}

class BerTest : public ::testing::Test {
  protected:
    static constexpr double tStep = 1e-12;

    BerTest() {
        ResetRunRecord();
        ResetRandomState();
        options.PLOTTING = DoNotPlot;
        params.root = "ber";
    }

    /// A rectangular waveform between `low` and `high` with equal noise everywhere, on two new
    /// ports.
    ElecSig& AddPair(const std::vector<int>& bits, int samplesPerBit, double low, double high,
                     double sigma) {
        const auto count = static_cast<std::int32_t>(bits.size());
        Owned<ElecSig> wave;
        Owned<BinSig> sent;
        EXPECT_EQ(Make(wave, CreateElecSig, count * samplesPerBit), 0);
        EXPECT_EQ(Make(sent, CreateBinSig, count), 0);
        wave->tStep = tStep;
        wave->bitRate = sent->bitRate = 10e9;
        wave->patternLength = count;
        wave->UnitType = VoltageUnit;
        wave->domain = TimeDomain;
        for (std::int32_t b = 0; b < count; ++b) {
            const bool mark = bits[static_cast<std::size_t>(b)] != 0;
            sent->bitSequence[b + 1] = mark ? 1 : 0;
            for (int i = 1; i <= samplesPerBit; ++i) {
                wave->elecSamples[b * samplesPerBit + i] = {mark ? high : low, 0.0};
                wave->sigmaSamples[b * samplesPerBit + i] = {sigma, 0.0};
            }
        }
        ElecSig& added = *wave;
        AddCell(wave.release(), ElecSigType);
        AddCell(sent.release(), BinSigType);
        return added;
    }
    void AddCell(void* sig, std::int32_t sigType) {
        Nodelist* cell = nullptr;
        EXPECT_EQ(CreateNodelist(&cell, sigType), 0);
        cell->sig = sig;
        Nodelist* last = inputs.get();
        while (last && last->next) last = last->next;
        if (!last) return inputs.reset(cell);
        last->next = cell;
    }
    /// The pairs as the computation sees them.
    BerPairs Filled() {
        BerPairs set;
        std::string text;
        EXPECT_EQ(ReadBerPairs(inputs.get(), set, {"ber", text}), Status::Success);
        EXPECT_EQ(FillBerPairs(set, {"ber", text}), Status::Success);
        EXPECT_EQ(text, "");
        return set;
    }

    Status Compute() {
        message.clear();
        eye = {};
        eye.decisionLevel = params.decisionLevel;
        return ComputeBER(options, inputs.get(), params, eye, {"ber", message});
    }
    /// The rate, of a computation that succeeds without a word.
    double Rate() {
        EXPECT_EQ(Compute(), Status::Success) << message;
        EXPECT_EQ(message, "");
        return eye.BER;
    }

    TempDir dir;
    RecordingHost host;
    SimOptions options;
    BerParams params;
    Owned<Nodelist> inputs;
    EyeResult eye;
    std::string message;
};

}  // namespace photrak

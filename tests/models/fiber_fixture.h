// Signals and runs for the tests of the fiber.
#pragma once

#include <cmath>
#include <complex>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "models/optical/fiber.h"
#include "models/optical_fixture.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace photrak {

using Waveform = std::function<Field(double t)>;  // sqrt(W) at t seconds from the middle

/// A channel, by its waveforms.
struct ChannelSpec {
    Waveform x, y;  // y may be empty
    double wavelength = 1.55e-6;
    double startTime = 0;
};

inline Owned<OpSignal> MakeSignal(const std::vector<ChannelSpec>& specs, int n, double tStep) {
    Owned<OpSignal> signal;
    EXPECT_EQ(Make(signal, CreateOpSignal), 0);
    for (const ChannelSpec& spec : specs) {
        Owned<OpSignal> one = Carrier(0, n, spec.wavelength);
        OpSig& sig = *one->channels;
        EXPECT_EQ(spec.y ? AddEySamples(&sig) : 0, 0);
        sig.tStep = tStep;
        sig.startTime = spec.startTime;
        sig.bitRate = 1e10;
        for (int i = 1; i <= n; ++i) {
            const double t = (i - 1 - n / 2) * tStep;
            sig.Ex_samples[i] = ToComplex(spec.x(t));
            if (spec.y) sig.Ey_samples[i] = ToComplex(spec.y(t));
        }
        AppendChannel(*signal, std::move(one));
    }
    return signal;
}

/// A lossless, linear, dispersionless fiber of 1 km in steps of 100 m without padding.
inline FiberParams BareFiber() {
    FiberParams params;
    params.dataType = "custom";
    params.distance = 1000;
    params.zStepSize = 100;
    params.diameter = 8e-6;
    params.aEff = 1.5625;  // 78.5 um^2
    params.curve.n1 = 1.468;
    params.curve.lambda0 = 1.55e-6;
    params.optimizationLevel = 2;
    return params;
}

/// gamma = 2 pi n2 / (lambda Aeff) with BareFiber's area, that of a circle of 10 um.
inline double GammaOf(double n2, double wavelength) {
    return n2 * 2 * M_PI / (wavelength * M_PI * 0.25e-10);
}

struct FiberResult {
    Status status = Status::Success;
    std::string text;
    Owned<OpSignal> signal;
    FiberParams params;  // as the fiber left them

    const OpSig& Channel(int index = 0) const {
        const OpSig* at = signal->channels;
        while (index-- > 0) at = at->next;
        return *at;
    }
    Field X(int i, int channel = 0) const { return Value(Channel(channel).Ex_samples[i]); }
    Field Y(int i, int channel = 0) const { return Value(Channel(channel).Ey_samples[i]); }
};

/// One run in the present directory under the present host.
inline FiberResult RunFor(const OpSignal& input, FiberParams params,
                          const std::atomic<std::int16_t>& stop, std::string_view owner = "Fib") {
    Nodelist in{nullptr, OpSigType, const_cast<OpSignal*>(&input)}, out{};
    FiberResult result;
    result.status = Fiber(&in, params, stop, &out, {owner, result.text});
    result.signal.reset(static_cast<OpSignal*>(out.sig));
    result.params = std::move(params);
    return result;
}

/// One run in a fresh directory; `threads` is a text for PHOTRAK_THREADS.
inline FiberResult RunThrough(const OpSignal& input, const FiberParams& params,
                              const std::string& threads = "1") {
    const TempDir directory;
    RecordingHost host;
    host.environment["PHOTRAK_THREADS"] = threads;
    return RunFor(input, params, 0);
}

inline FiberResult RunThrough(const Owned<OpSignal>& input, const FiberParams& params,
                              const std::string& threads = "1") {
    FiberResult result = RunThrough(*input, params, threads);
    EXPECT_EQ(result.status, Status::Success) << result.text;
    return result;
}

/// Sum, mean time and mean square width of |Ex|^2 (or |Ey|^2), in seconds from the middle.
struct Moments {
    double energy = 0, mean = 0, variance = 0;
};
inline Moments MomentsOf(const OpSig& sig, Complex* OpSig::*samples = &OpSig::Ex_samples) {
    double sum = 0, first = 0, second = 0;
    for (int i = 1; i <= sig.noPoints; ++i) {
        const double p = SquaredMagnitude((sig.*samples)[i]);
        const double t = (i - 1 - sig.noPoints / 2) * sig.tStep;
        sum += p;
        first += p * t;
        second += p * t * t;
    }
    const double mean = first / sum;
    return {sum, mean, second / sum - mean * mean};
}

inline Waveform Gauss(double power, double T0, double chirp = 0) {
    return [=](double t) {
        const Field exponent(1, chirp);
        return std::sqrt(power) * std::exp(-0.5 * exponent * (t / T0) * (t / T0));
    };
}

inline Waveform Constant(Field field) {
    return [=](double) { return field; };
}

}  // namespace photrak

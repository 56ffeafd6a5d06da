// The yardstick of the fiber: the split-step scheme written down step by step, with four textbook
// transforms per step and field, channels turned sample by sample, and nothing saved. Slow and easy
// to check against docs/models/fiber.md.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "models/fiber_fixture.h"
#include "models/optical/fiber_raman.h"
#include "numeric/fft.h"
#include "numeric/random.h"
#include "numeric/samples.h"

namespace photrak {

class PlainFiber {
  public:
    /// Works on the signal in place. The parameters are those with which Fiber has been run, so
    /// that distance and area are known.
    PlainFiber(OpSignal& signal, const FiberParams& params) : params_(params) {
        for (OpSig& sig : Items(signal.channels)) channels_.push_back(&sig);
        n_ = channels_[0]->noPoints;
        points_ = params.DoublesWindow() ? 2 * n_ : n_;
        first_ = params.DoublesWindow() ? n_ / 2 : 0;
        for (OpSig* sig : channels_) {
            EXPECT_EQ(IsCoarse() ? AddEySamples(sig) : 0, 0);
            x_.push_back(Load(sig->Ex_samples));
            y_.push_back(Load(sig->Ey_samples));
        }
        Renew();
    }

    void Run() {
        double z = 0, carry = 0, carryRate = 0, dz = Next(0);
        const double L = params_.distance;
        for (; z < L; ++steps) {
            const double r = IsCoarse() ? params_.pmdCoefficient / std::sqrt(dz) : 0;
            const std::vector<long> shifts = Shifts();
            if (carry > 0) Linear(carry, carryRate);
            Linear(dz / 2, r);
            if (channels_.size() > 1) Renew();
            Walk(shifts, +1);
            Nonlinear(dz);
            Walk(shifts, -1);
            if (IsCoarse()) Turn();
            carry = params_.MergesHalfSteps() && z + dz < L ? dz / 2 : 0;
            carryRate = r;
            if (carry == 0) Linear(dz / 2, r);
            for (OpSig* sig : channels_)
                sig->startTime += dz * params_.curve.GroupDelay(sig->wavelength);
            z += dz;
            dz = Next(z);
        }
        for (std::size_t c = 0; c < channels_.size(); ++c) {
            Store(x_[c], channels_[c]->Ex_samples);
            Store(y_[c], channels_[c]->Ey_samples);
        }
    }

    int steps = 0;

  private:
    using Samples = std::vector<Complex>;  // one-based; zeros without that polarization

    bool IsCoarse() const { return params_.pmdMethod == PmdMethod::CoarseStep; }

    Samples Load(const Complex* samples) const {
        Samples field(points_ + 1);
        if (samples) std::copy_n(samples + 1, n_, field.begin() + 1 + first_);
        return field;
    }
    void Store(const Samples& field, Complex* samples) const {
        if (samples) std::copy_n(field.begin() + 1 + first_, n_, samples + 1);
    }
    /// The padding holds the ends.
    void Renew() {
        for (auto* fields : {&x_, &y_}) {
            for (Samples& field : *fields) {
                std::fill_n(field.begin() + 1, first_, field[1 + first_]);
                std::fill(field.begin() + 1 + first_ + n_, field.end(), field[first_ + n_]);
            }
        }
    }

    double Next(double z) const {
        const double L = params_.distance;
        double dz = params_.zStepSize;
        if (params_.zStepFac > 0) {
            double peaks = 0;
            for (std::size_t c = 0; c < x_.size(); ++c) {
                double peak = 0;
                for (std::int32_t i = first_ + 1; i <= first_ + n_; ++i)
                    peak = std::max(peak, SquaredMagnitude(x_[c][i]) + SquaredMagnitude(y_[c][i]));
                peaks += peak;
            }
            const double lengths[] = {params_.LD, params_.L3, 1 / (Gamma(0) * peaks)};
            dz = L - z;
            for (double length : lengths)
                if (length != infiniteLength) dz = std::min(dz, params_.zStepFac * length);
        }
        return z + dz > L && z < L ? L - z : dz;
    }
    double Gamma(std::size_t c) const {
        return params_.n2 * 2 * M_PI / (channels_[c]->wavelength * params_.effectiveArea);
    }

    std::vector<long> Shifts() const {
        std::vector<long> shifts;
        for (const OpSig* sig : channels_) {
            const double x = std::fabs((sig->startTime - channels_[0]->startTime) / sig->tStep);
            const long shift = static_cast<long>(x - points_ * std::floor(x / points_) + 0.5);
            shifts.push_back(sig->startTime < channels_[0]->startTime ? -shift : shift);
        }
        return shifts;
    }
    void Walk(const std::vector<long>& shifts, int way) {
        for (std::size_t c = 0; c < shifts.size(); ++c)
            for (Samples* field : {&x_[c], &y_[c]})
                RotateSamples(way * shifts[c], points_, field->data());
    }

    void Linear(double s, double r) {
        const double dw = 2 * M_PI / (points_ * channels_[0]->tStep);
        for (std::size_t c = 0; c < channels_.size(); ++c) {
            const double omega0 = 2 * M_PI * 299792458.0 / channels_[c]->wavelength;
            DoFFTFlagged(x_[c].data(), points_, +1, 0);
            DoFFTFlagged(y_[c].data(), points_, +1, 0);
            for (std::int32_t k = 1; k <= points_; ++k) {
                const double w = FFTIndexToBin(points_, k) * dw;
                const double lambda = 2 * M_PI * 299792458.0 / (w + omega0);
                const double beta2 = params_.curve.Beta2(lambda);
                const double beta3 = params_.curve.Beta3(lambda);
                const double phi = ((beta2 - beta3 * w / 3) * w * 0.5 - r * 0.5) * w;
                const Complex h = Exp({-params_.alpha / 2 * s, phi * s});
                x_[c][k] = x_[c][k] * h;
                y_[c][k] = y_[c][k] * (h * Exp({0, r * w * s}));
            }
            DoFFTFlagged(x_[c].data(), points_, -1, fftDivideByN);
            DoFFTFlagged(y_[c].data(), points_, -1, fftDivideByN);
        }
    }

    void Nonlinear(double dz) {
        const std::size_t count = channels_.size();
        for (std::int32_t i = 1; i <= points_; ++i) {
            std::vector<double> px, py;
            double sx = 0, sy = 0;
            for (std::size_t c = 0; c < count; ++c) {
                sx += px.emplace_back(SquaredMagnitude(x_[c][i]));
                sy += py.emplace_back(SquaredMagnitude(y_[c][i]));
            }
            for (std::size_t c = 0; c < count; ++c) {
                const double a = 2 * sx - px[c], b = 2 * sy - py[c];
                double gain = 0;
                for (std::size_t other = 0; params_.hasRaman && other < count; ++other) {
                    if (other == c) continue;
                    gain += (px[other] + py[other]) *
                            RamanCoefficient(channels_[c]->wavelength, channels_[other]->wavelength,
                                             c < other, params_.effectiveArea);
                }
                const double g = Gamma(c) * dz;
                x_[c][i] = x_[c][i] * Exp({gain * dz, g * (a + b * 2 / 3)});
                y_[c][i] = y_[c][i] * Exp({gain * dz, g * (b + a * 2 / 3)});
            }
        }
    }

    void Turn() {
        for (std::size_t c = 0; c < channels_.size(); ++c) {
            const double a = M_PI * ShuffledUniformRandom(&seed_);
            const double b = M_PI * ShuffledUniformRandom(&seed_);
            for (std::int32_t i = 1; i <= points_; ++i) {
                const Complex x = x_[c][i], y = y_[c][i];
                x_[c][i] = Exp({0, b}) * (std::cos(a) * x + std::sin(a) * y);
                y_[c][i] = -std::sin(a) * x + std::cos(a) * y;
            }
        }
    }

    FiberParams params_;
    std::vector<OpSig*> channels_;
    std::vector<Samples> x_, y_;
    std::int32_t n_ = 0, points_ = 0, first_ = 0;
    int seed_ = -1;
};

}  // namespace photrak

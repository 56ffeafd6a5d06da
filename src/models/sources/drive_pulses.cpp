// All positions are counted in samples, as doubles: position x is that of samples[x + 1]. A pulse
// is painted over a window of two bits around its center, and the paints of neighbors add up.
#include "models/sources/drive_pulses.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

#include "numeric/random.h"
#include "platform/stop_point.h"

namespace photrak {

struct DriveType {
    std::string_view word;
    bool sloped;         // edges have a duration of their own
    double margin;       // of the start inside a run of ones, in standard deviations of the jitter
    bool shiftsAsWhole;  // one draw moves the pulse, instead of one for each edge
};

namespace {

constexpr DriveType driveTypes[] = {{"on_off_ramp", true, 1.2, false},
                                    {"on_off_exp", false, 2.0, false},
                                    {"raisedCosine", true, 0.0, true}};

// Far above the rounding of positions and far below what could be seen.
constexpr double positionTolerance = 1e-6;

/// First sample at or after a position, last one at or before it. A position that should be a
/// whole number is one.
std::int64_t FirstFrom(double position) {
    return static_cast<std::int64_t>(std::ceil(position - positionTolerance));
}
std::int64_t LastUpTo(double position) {
    return static_cast<std::int64_t>(std::floor(position + positionTolerance));
}

/// Positions. The pulse rises from `start` to `flatStart` and falls from `flatEnd` to `end`.
struct Pulse {
    double start, flatStart, flatEnd, end;
    double shift;              // of the pulse as a whole
    std::int64_t first, last;  // samples of its window
};

Pulse Later(Pulse pulse, std::int64_t samples) {
    const auto distance = static_cast<double>(samples);
    for (double* position : {&pulse.start, &pulse.flatStart, &pulse.flatEnd, &pulse.end}) {
        *position += distance;
    }
    pulse.first += samples;
    pulse.last += samples;
    return pulse;
}

class Painter {
  public:
    Painter(const DrivePulses& drive, const BinSig& bits, Complex* samples)
        : type_(*drive.type),
          bits_(bits),
          samples_(samples),
          size_(std::int64_t{bits.noPoints} * drive.samplesPerBit),
          samplesPerBit_(drive.samplesPerBit),
          amplitude_(drive.amplitude) {
        const double perSecond = drive.samplesPerBit / drive.bitTime;
        const double relativeWidth = drive.bitWidth / drive.bitTime;
        constexpr double sameWidth = 1e-9, similarWidth = 0.01;
        fillsSlot_ = std::fabs(relativeWidth - 1.0) < similarWidth;
        // Edges of full pulses lie on slot boundaries whatever the rounding of the two times.
        width_ = drive.samplesPerBit *
                 (std::fabs(relativeWidth - 1.0) < sameWidth ? 1.0 : relativeWidth);
        rise_ = type_.sloped ? drive.riseTime * perSecond : 0.0;
        fall_ = type_.sloped ? drive.fallTime * perSecond : 0.0;
        jitter_ = drive.timeJitter * perSecond;
    }

    void Paint() {
        const std::int32_t count = bits_.noPoints;
        const Pulse first = FirstPulse();
        if (IsOne(1)) Paint(first);
        Pulse previous = first;
        for (std::int32_t k = 2; k <= count; ++k) {
            if (k % 4096 == 0) StopPoint();
            const bool run = IsOne(k - 1) && IsOne(k);
            const Pulse pulse =
                k < count ? DrawnPulse(k, run, previous) : NominalPulse(k, previous.shift);
            if (run) Bridge(previous, pulse);
            if (IsOne(k)) Paint(pulse);
            previous = pulse;
        }
        if (IsOne(count) && IsOne(1)) Bridge(previous, Later(first, size_));
    }

  private:
    bool IsOne(std::int32_t k) const { return bits_.bitSequence[k] == 1; }
    double Center(std::int32_t k) const {
        const std::int64_t half = samplesPerBit_ / 2;  // a whole number of samples
        return static_cast<double>(std::int64_t{k - 1} * samplesPerBit_ + half);
    }
    double DrawJitter() const {
        NoteNoise(jitter_);
        return jitter_ * ClippedGaussianRandom(&ProcessSeeds().timeJitter);
    }

    Pulse ShapedPulse(std::int32_t k, double start, double end, double shift,
                      double formerShift) const {
        Pulse pulse{};
        const double bit = static_cast<double>(samplesPerBit_);  // in samples
        const double center = Center(k) + shift;
        pulse.start = start;
        pulse.end = end;
        pulse.flatStart = type_.shiftsAsWhole ? center : start + rise_;
        pulse.flatEnd = type_.shiftsAsWhole ? center : end - fall_;
        pulse.shift = shift;
        pulse.first = LastUpTo(Center(k) - bit + formerShift) + 1;
        pulse.last = LastUpTo(center + bit);
        return pulse;
    }

    Pulse ShiftedPulse(std::int32_t k, double shift, double formerShift) const {
        const double center = Center(k) + shift;
        return ShapedPulse(k, center - width_, center + width_, shift, formerShift);
    }

    Pulse NominalPulse(std::int32_t k, double formerShift) const {
        if (type_.shiftsAsWhole) return ShiftedPulse(k, 0.0, formerShift);
        const double center = Center(k);
        return ShapedPulse(k, center - (width_ + rise_) / 2, center + (width_ + fall_) / 2, 0.0,
                           0.0);
    }

    /// The edges of the first bit are steady; a pulse that moves as a whole does so here too.
    Pulse FirstPulse() const {
        return type_.shiftsAsWhole ? ShiftedPulse(1, DrawJitter(), 0.0) : NominalPulse(1, 0.0);
    }

    /// The draws are made for a bit of 0 too: the jitter of an edge does not depend on the pattern
    /// before it, runs of ones excepted.
    Pulse DrawnPulse(std::int32_t k, bool run, const Pulse& previous) const {
        if (type_.shiftsAsWhole) return ShiftedPulse(k, DrawJitter(), previous.shift);
        const double center = Center(k);
        const double startShift = run ? -type_.margin * jitter_ : DrawJitter();
        const double endShift = DrawJitter();
        return ShapedPulse(k, center - (width_ + rise_) / 2 + startShift,
                           center + (width_ + fall_) / 2 + endShift, 0.0, 0.0);
    }

    /// Positions go round the period.
    double& Sample(std::int64_t position) const {
        if (position < 0 || position >= size_) position = ((position % size_) + size_) % size_;
        return samples_[position + 1].re;
    }

    void Paint(const Pulse& pulse) const {
        const std::int64_t end = std::min(pulse.last + 1, FirstFrom(pulse.end));
        for (std::int64_t i = std::max(pulse.first, FirstFrom(pulse.start)); i < end; ++i) {
            PaintSample(pulse, static_cast<double>(i), Sample(i));
        }
    }

    void PaintSample(const Pulse& pulse, double position, double& sample) const {
        if (type_.shiftsAsWhole) {
            const double angle = std::numbers::pi * (position - pulse.flatStart) / width_;
            Add(0.5 * (1.0 + std::cos(angle)), sample);
        } else if (position > pulse.flatEnd && fall_ > 0.0) {
            Add((pulse.end - position) / fall_, sample);
        } else if (position >= pulse.flatStart || rise_ == 0.0) {
            sample = amplitude_;
        } else {
            Add((position - pulse.start) / rise_, sample);
        }
    }

    void Add(double height, double& sample) const {
        sample = std::min(sample + std::max(height, 0.0) * amplitude_, amplitude_);
    }

    /// Between two ones the level stays: neither the paints' sum nor jitter may leave a notch.
    void Bridge(const Pulse& former, const Pulse& pulse) const {
        if (!type_.shiftsAsWhole && !fillsSlot_) return;
        std::int64_t from = pulse.first;
        if (!type_.shiftsAsWhole) {
            from = std::min(from, std::max(FirstFrom(former.flatEnd), former.first));
        }
        const std::int64_t end = std::min(pulse.last + 1, FirstFrom(pulse.flatStart));
        for (std::int64_t i = from; i < end; ++i) Sample(i) = amplitude_;
    }

    const DriveType& type_;
    const BinSig& bits_;
    Complex* samples_;
    std::int64_t size_, samplesPerBit_;
    double amplitude_;
    bool fillsSlot_;                       // pulses as wide as the distance of the bits
    double width_, rise_, fall_, jitter_;  // in samples
};

}  // namespace

const DriveType* FindDriveType(std::string_view word) {
    const auto* type =
        std::find_if(std::begin(driveTypes), std::end(driveTypes),
                     [&](const DriveType& candidate) { return candidate.word == word; });
    return type == std::end(driveTypes) ? nullptr : type;
}

void PaintPulses(const DrivePulses& drive, const BinSig& bits, Complex* samples) {
    if (bits.noPoints > 0) Painter(drive, bits, samples).Paint();
}

}  // namespace photrak

// Integer recurrences as published, in 64 bits where a product needs them.
#include "numeric/random.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

#include "base/escape.h"

namespace photrak {
namespace {

/// x -> 16807 x mod (2^31 - 1).
constexpr int multiplier = 16807, modulus = 2147483647;
constexpr int uniformTableSize = 32, warmUpSteps = 8;
constexpr int outputsPerEntry = 67108864;  // 2^31 / 32
constexpr double unitPerStep = 4.656612875245797e-10;
constexpr double largestUniform = 0.99999988;  // so that 1 is never returned
constexpr double clipLimit = 2.8;

struct UniformState {
    std::array<int, uniformTableSize> table{};
    int output = 0;  // 0: the table has never been filled
};
struct GaussianState {
    bool hasSpare = false;
    double spare = 0.0;
};

/// x -> (factor x + increment) mod modulus, never below 0.
struct Congruence {
    std::int64_t factor, increment, modulus;
    std::int64_t Step(std::int64_t x) const { return Reduce(factor * x + increment); }
    std::int64_t Reduce(std::int64_t x) const { return (x % modulus + modulus) % modulus; }
};
constexpr Congruence high{7141, 54773, 259200}, low{8121, 28411, 134456},
    shuffle{4561, 51349, 243000};
constexpr int shuffleTableSize = 97;
constexpr float perLowStep = 7.4373775e-06F, perHighStep = 3.8580247e-06F;  // 1/134456, 1/259200

struct ShuffleState {
    bool started = false;
    std::int64_t x1 = 0, x2 = 0, x3 = 0;
    std::array<float, shuffleTableSize + 1> table{};  // 1..97
};

UniformState uniform;
GaussianState gaussian;
ShuffleState shuffled;
SeedWords seeds;
bool noiseNoted = false;

/// The product folded at bit 31: 2^31 leaves 1 when divided by the modulus.
void StepMinimalStandard(int* seed) {
    const std::int64_t product = std::int64_t{*seed} * multiplier;
    const std::int64_t folded = (product & modulus) + (product >> 31);
    *seed = static_cast<int>(folded >= modulus ? folded - modulus : folded);
}

void FillUniformTable(int* seed) {
    // 0 and the modulus itself would stay where they are.
    *seed = *seed < 0 && *seed > -modulus ? -*seed : 1;
    for (int j = uniformTableSize + warmUpSteps - 1; j >= 0; --j) {
        StepMinimalStandard(seed);
        if (j < uniformTableSize) uniform.table[static_cast<std::size_t>(j)] = *seed;
    }
    uniform.output = uniform.table[0];
}

/// Every operation in single precision: the sequence is defined that way.
float NextShuffleValue() {
    shuffled.x1 = high.Step(shuffled.x1);
    shuffled.x2 = low.Step(shuffled.x2);
    const float fine = static_cast<float>(shuffled.x2) * perLowStep;
    const float sum = static_cast<float>(shuffled.x1) + fine;
    return sum * perHighStep;
}

void StartShuffle(int* seed) {
    shuffled.started = true;
    shuffled.x1 = high.Step(high.Reduce(high.increment - std::int64_t{*seed}));
    shuffled.x2 = shuffled.x1 % low.modulus;
    shuffled.x1 = high.Step(shuffled.x1);
    shuffled.x3 = shuffled.x1 % shuffle.modulus;
    std::generate(shuffled.table.begin() + 1, shuffled.table.end(), NextShuffleValue);
    *seed = 1;
}

inline double NextUniform(int* seed) {
    if (*seed < 1 || uniform.output == 0) FillUniformTable(seed);
    StepMinimalStandard(seed);
    int& entry = uniform.table[static_cast<std::size_t>(uniform.output / outputsPerEntry)];
    uniform.output = entry;
    entry = *seed;
    return std::min(uniform.output * unitPerStep, largestUniform);
}

/// A point in the unit circle, of which the polar method makes two normals.
struct PolarPoint {
    double v1 = 0.0, v2 = 0.0, r = 0.0;  // r: the distance from the center, squared

    double Factor() const { return std::sqrt(-2.0 * std::log(r) / r); }
};

inline PolarPoint NextPolarPoint(int* seed) {
    PolarPoint point;
    do {
        point.v1 = 2.0 * NextUniform(seed) - 1.0;
        point.v2 = 2.0 * NextUniform(seed) - 1.0;
        point.r = point.v1 * point.v1 + point.v2 * point.v2;
    } while (point.r >= 1.0 || point.r == 0.0);
    return point;
}

inline double TakeSpare() {
    gaussian.hasSpare = false;
    return gaussian.spare;
}

inline double FirstOfPair(const PolarPoint& point) {
    const double f = point.Factor();
    gaussian = {true, point.v1 * f};
    return point.v2 * f;
}

}  // namespace

double UniformRandom(int* seed) {
    return NextUniform(seed);
}

double GaussianRandom(int* seed) {
    return gaussian.hasSpare ? TakeSpare() : FirstOfPair(NextPolarPoint(seed));
}

double ClippedGaussianRandom(int* seed) {
    double value = 0.0;
    do {
        value = GaussianRandom(seed);
    } while (std::fabs(value) > clipLimit);
    return value;
}

void SkipClippedGaussians(int* seed, long count) {
    // A normal squared is at most -2 ln r. From this r on (exp(-2.8^2 / 2) = 0.0198) neither of a
    // pair is clipped, whatever its value.
    constexpr double surelyKept = 0.02;
    while (count > 0) {
        double value = 0.0;
        if (gaussian.hasSpare) {
            value = TakeSpare();
        } else {
            const PolarPoint point = NextPolarPoint(seed);
            if (point.r > surelyKept && count >= 2) {
                count -= 2;
                continue;
            }
            value = FirstOfPair(point);
        }
        if (std::fabs(value) <= clipLimit) --count;
    }
}

float ShuffledUniformRandom(int* seed) {
    if (*seed < 0 || !shuffled.started) StartShuffle(seed);
    // The order of steps within a draw does not matter: the sequences are independent.
    shuffled.x3 = shuffle.Step(shuffled.x3);
    const std::int64_t j = 1 + shuffleTableSize * shuffled.x3 / shuffle.modulus;
    if (j > shuffleTableSize || j < 1) NumericFailure("problem in random number generator");
    float& entry = shuffled.table[static_cast<std::size_t>(j)];
    const float value = entry;
    entry = NextShuffleValue();
    return value;
}

SeedWords& ProcessSeeds() {
    return seeds;
}

void NoteNoise(double amplitude) {
    if (amplitude != 0.0) noiseNoted = true;
}

bool TakeNoiseNote() {
    return std::exchange(noiseNoted, false);
}

void ForgetSpareGaussian() {
    gaussian = {};
}

void ResetRandomState() {
    uniform = {};
    gaussian = {};
    shuffled = {};
    seeds = {};
}

void SeedRandomState(std::uint64_t seed) {
    ResetRandomState();
    for (int* word : {&seeds.timeJitter, &seeds.eyeData, &seeds.signalPlot, &seeds.eyePlot}) {
        // SplitMix64 (Steele, Lea, Flood 2014): every seed gives words without a visible relation.
        seed += 0x9E3779B97F4A7C15;
        std::uint64_t mixed = seed;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EB;
        mixed ^= mixed >> 31;
        constexpr std::uint64_t mostMagnitude = (std::uint64_t{1} << 30) - 1;
        *word = -1 - static_cast<int>(mixed & mostMagnitude);
    }
}

}  // namespace photrak

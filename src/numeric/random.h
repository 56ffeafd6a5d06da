// The three random sources. The seed word belongs to the caller; table, spare value and present
// output are one for the process, so the sequences depend on the order of all calls. They are fixed
// algorithms: results of seeded runs must repeat on every machine.
#pragma once

#include <cstdint>

namespace photrak {

/// Uniform in (0, 1): the "minimal standard" multiplicative generator (Park and Miller) with the
/// shuffle of Bays and Durham. A negative seed word restarts the sequence from its magnitude; 0, or
/// a first call, restarts it from 1. The word is the generator's state from then on.
double UniformRandom(int* seed);
/// Standard normal, by the polar method on pairs of UniformRandom. The second value of a pair is
/// kept and goes to the next call, whosever it is.
double GaussianRandom(int* seed);
/// GaussianRandom, redrawn until its magnitude is at most 2.8.
double ClippedGaussianRandom(int* seed);
/// As many calls of ClippedGaussianRandom whose values nobody wants: all sources stand afterwards
/// as they would then. Takes a third of the time.
void SkipClippedGaussians(int* seed, long count);
/// Uniform in (0, 1), single precision: three linear congruential sequences, two for the value and
/// one for the shuffle. A negative seed word, or the first call, starts it and sets the word to 1.
float ShuffledUniformRandom(int* seed);

/// Seed words that live as long as the process: noise differs from block to block and from pass to
/// pass, and repeats between program starts.
struct SeedWords {
    int timeJitter = 157;  // edges of electrical generators
    int eyeData = -10;     // samples of a tester's eye
    int signalPlot = -10;  // traces with noise
    int eyePlot = -10;     // traces of an eye diagram
};
SeedWords& ProcessSeeds();
/// Told by whoever draws from those: a result now depends on what was drawn before, unless the
/// amplitude is 0.
void NoteNoise(double amplitude);
/// Whether there was such a draw since the last call.
bool TakeNoiseNote();

/// Drops the second value of a pair, so that a reseeded sequence of normals repeats.
void ForgetSpareGaussian();
/// Sources and seed words back to the state of a fresh process; for tests.
void ResetRandomState();
/// Sources as fresh, each of the process's seed words restarts from a value of its own that follows
/// from `seed`.
void SeedRandomState(std::uint64_t seed);

}  // namespace photrak

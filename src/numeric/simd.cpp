// Detection of the processor and the tables of hot loops.
#include "numeric/simd.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string_view>

#include "numeric/fft_kernels.h"

#if defined(__x86_64__)
#define PHOTRAK_WIDE_LEVELS 1
#else
#define PHOTRAK_WIDE_LEVELS 0
#endif

namespace photrak {

namespace simd_plain {
extern const FFTKernels kernels;
}
#if PHOTRAK_WIDE_LEVELS
namespace simd_avx2 {
extern const FFTKernels kernels;
}
namespace simd_avx512 {
extern const FFTKernels kernels;
}
#endif

namespace {

struct Level {
    SimdLevel level;
    const char* name;
    const FFTKernels* kernels;
    bool (*supported)();
};

constexpr Level levels[] = {
    {SimdLevel::Plain, "plain", &simd_plain::kernels, [] { return true; }},
#if PHOTRAK_WIDE_LEVELS
    {SimdLevel::Avx2, "avx2", &simd_avx2::kernels,
     [] { return __builtin_cpu_supports("avx2") != 0; }},
    {SimdLevel::Avx512, "avx512", &simd_avx512::kernels,
     [] {
         return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
                __builtin_cpu_supports("avx512vl");
     }},
#endif
};

const Level* Detect() {
    const char* wish = std::getenv("PHOTRAK_SIMD");
    const Level* best = &levels[0];
    for (const Level& candidate : levels) {
        if (candidate.supported()) best = &candidate;
        if (wish && std::string_view(wish) == candidate.name) break;
    }
    return best;
}

std::atomic<const Level*>& Active() {
    static std::atomic<const Level*> active = Detect();
    return active;
}

}  // namespace

SimdLevel ActiveSimdLevel() {
    return Active().load()->level;
}

bool UseSimdLevel(SimdLevel level) {
    for (const Level& candidate : levels)
        if (candidate.level == level && candidate.supported()) {
            Active() = &candidate;
            return true;
        }
    return false;
}

const char* SimdLevelName(SimdLevel level) {
    for (const Level& candidate : levels)
        if (candidate.level == level) return candidate.name;
    return "";
}

const FFTKernels& Kernels() {
    return *Active().load(std::memory_order_relaxed)->kernels;
}

}  // namespace photrak

// The working pattern by type, the shift register, the custom pattern file, and the rotated copies
// on the output ports.
#include "models/sources/prbs.h"

#include <algorithm>

#include "base/text.h"
#include "models/sources/integer_scan.h"
#include "platform/file_system.h"
#include "platform/stop_point.h"

namespace photrak {
namespace {

constexpr std::int32_t valuesPerRow = 8, maxRows = 512;
// Far above what 4096 values need, with room for generous white space.
constexpr std::size_t maxPatternFileBytes = std::size_t{1} << 24;

constexpr ParamRow<PrbsParams> rows[] = {{"patternType", &PrbsParams::patternType, "PRBS",
                                          Words{"PRBS alternating one zero single custom"}},
                                         {"filename", &PrbsParams::filename, ""},
                                         {"bitRate", &PrbsParams::bitRate, 1e10, Range::Any},
                                         {"patternLength", &PrbsParams::patternLength, 7},
                                         {"offset", &PrbsParams::offset, 0},
                                         {"shift", &PrbsParams::shift, 0},
                                         {"preBits", &PrbsParams::preBits, 0},
                                         {"postBits", &PrbsParams::postBits, 0},
                                         {"startTime", &PrbsParams::startTime, 0.0, Range::Any}};

struct RegisterTaps {
    std::uint32_t test, taps;
};
// Galois form of primitive polynomials: x^n + sum of taps_i x^(i+1) + 1. Index 0 is never used.
constexpr RegisterTaps registerTaps[maxPatternExponent + 1] = {
    {0, 0},        {0x1, 0x1},     {0x2, 0x1},     {0x4, 0x1},     {0x8, 0x1},
    {0x10, 0x2},   {0x20, 0x1},    {0x40, 0x1},    {0x80, 0xE},    {0x100, 0x8},
    {0x200, 0x4},  {0x400, 0x2},   {0x800, 0x29},  {0x1000, 0xD},  {0x2000, 0x15},
    {0x4000, 0x1}, {0x8000, 0x16}, {0x10000, 0x4}, {0x20000, 0x13}};

/// 2^n bits; a negative exponent makes an empty pattern.
std::int32_t PatternSize(std::int32_t exponent) {
    return exponent < 0 ? 0 : std::int32_t{1} << exponent;
}

Status RefuseType(const PrbsParams& params, std::string_view allowed, const ModelReport& report) {
    const std::string first =
        FillIn("Error pattern type for the pattern generator: %s\n", {params.patternType});
    return report.Fail(first + std::string(allowed));
}

Status CheckLength(const PrbsParams& params, const ModelReport& report) {
    if (params.patternLength <= maxPatternExponent) return Status::Success;
    return report.Fail("Error pattern length for the pattern generator: ", params.patternLength,
                       "\nThe exponent of the pattern length must be at most ", maxPatternExponent,
                       ". \n");
}

/// Texts for the two allocations of a BinSig, which differ by what is being made.
struct MemoryTexts {
    std::string_view record, bits;
};
constexpr MemoryTexts generatorTexts = {
    "Insufficient memory for dynamic allocation to binSigOut in PRBS_Generator().\n",
    "Insufficient memory for dynamic allocation to bitSequence in PRBS_Generator().\n"};
constexpr MemoryTexts customTexts = {
    "Insufficient memory for dynamic allocation to binSigOut in PRBS_Custom().\n",
    "Insufficient memory for dynamic allocation to bitSequence in PRBS_Custom().\n"};
// By design: the custom generator reports its outputs under the other generator's name.
constexpr MemoryTexts outputTexts = {
    "Insufficient memory for dynamic allocation to binary signal in PRBS_Generator().\n",
    "Insufficient memory for dynamic allocation to bit sequence in PRBS_Generator().\n"};

/// A BinSig whose bits, the unused element 0 included, are all 0. The record and its bits are made
/// one by one, because a failure of each has a text of its own.
Status MakePattern(Owned<BinSig>& place, const PrbsParams& params, std::int32_t size,
                   const MemoryTexts& texts, const ModelReport& report) {
    place.reset(static_cast<BinSig*>(AllocateZeroed(1, sizeof(BinSig))));
    if (!place) return report.Fail(texts.record);
    place->bitSequence = static_cast<std::int16_t*>(
        AllocateZeroed(static_cast<std::size_t>(size) + 1, sizeof(std::int16_t)));
    if (!place->bitSequence) return report.Fail(texts.bits);
    place->noPoints = size;
    place->bitRate = params.bitRate;
    place->startTime = params.startTime;
    return Status::Success;
}

void FillPseudoRandom(PrbsParams& params, BinSig& pattern) {
    std::int16_t* bits = pattern.bitSequence;
    if (pattern.noPoints == 2) {
        bits[2] = 1;
    } else if (pattern.noPoints == 4) {
        // By design: this short pattern is 1, 0 and two elements never written (zero).
        bits[1] = 1;
    } else if (pattern.noPoints > 4) {
        for (std::int32_t i = 1; i <= pattern.noPoints; ++i) {
            LookForStop(i);
            bits[i] = static_cast<std::int16_t>(
                StepShiftRegister(params.patternLength, params.shiftRegister));
        }
    }
}

void FillAlternating(PrbsParams&, BinSig& pattern) {
    for (std::int32_t i = 1; i <= pattern.noPoints; i += 2) pattern.bitSequence[i] = 1;
}

void FillOne(PrbsParams&, BinSig& pattern) {
    std::fill_n(pattern.bitSequence + 1, pattern.noPoints, std::int16_t{1});
}

void FillZero(PrbsParams&, BinSig&) {}

void FillSingle(PrbsParams&, BinSig& pattern) {
    if (pattern.noPoints > 0) pattern.bitSequence[(pattern.noPoints + 1) / 2] = 1;
}

struct PatternType {
    std::string_view word;
    void (*fill)(PrbsParams& params, BinSig& pattern);
};
constexpr PatternType patternTypes[] = {{"PRBS", FillPseudoRandom},
                                        {"alternating", FillAlternating},
                                        {"one", FillOne},
                                        {"zero", FillZero},
                                        {"single", FillSingle}};

/// Integers in the file's order. The file is read in whole rows of eight, at most 512 of them, as
/// long as a row begins inside the pattern; what a row holds beyond the pattern is dropped. From
/// the first word that is no integer on, the last value repeats; elements after the last row are
/// 0.
void FillFromText(std::string_view text, BinSig& pattern) {
    const std::int32_t count = std::min(pattern.noPoints, valuesPerRow * maxRows);
    std::int16_t last = 0;
    for (std::int32_t i = 1; i <= count; ++i) {
        ScanShort(text, last);
        pattern.bitSequence[i] = last;
    }
}

/// `target` is `source` rotated left by `start` bits. N is a power of two, so that a start that
/// wrapped around 32 bits (a negative one) still counts right.
void CopyRotated(const BinSig& source, std::uint32_t start, BinSig& target) {
    if (source.noPoints == 0) return;
    const auto first =
        static_cast<std::int32_t>(start % static_cast<std::uint32_t>(source.noPoints));
    std::rotate_copy(source.bitSequence + 1, source.bitSequence + 1 + first,
                     source.bitSequence + 1 + source.noPoints, target.bitSequence + 1);
}

void ClearEnds(const PrbsParams& params, BinSig& sig) {
    const auto limit = [&](std::int32_t count) { return std::clamp(count, 0, sig.noPoints); };
    std::fill_n(sig.bitSequence + 1, limit(params.preBits), std::int16_t{0});
    const std::int32_t post = limit(params.postBits);
    std::fill_n(sig.bitSequence + 1 + sig.noPoints - post, post, std::int16_t{0});
}

enum class Ends { Keep, Clear };

Status StorePattern(const PrbsParams& params, const BinSig& pattern, Ends ends, Nodelist* outputs,
                    const ModelReport& report) {
    auto start = static_cast<std::uint32_t>(params.offset);
    for (Nodelist& cell : Items(outputs)) {
        Owned<BinSig> sig;
        const Status made = MakePattern(sig, params, pattern.noPoints, outputTexts, report);
        if (made != Status::Success) return made;
        CopyRotated(pattern, start, *sig);
        if (ends == Ends::Clear) ClearEnds(params, *sig);
        cell.sig = sig.release();
        cell.sigType = BinSigType;
        start += static_cast<std::uint32_t>(params.shift);
    }
    return Status::Success;
}

}  // namespace

std::vector<ParamSpec> PrbsParamSpecs() {
    return SpecsOf(rows);
}

PrbsParams ReadPrbsParams(Parameter* parameters) {
    PrbsParams params;
    ReadParams(rows, parameters, params);
    return params;
}

int StepShiftRegister(std::int32_t n, std::uint32_t& shiftRegister) {
    if (n <= 0 || n > maxPatternExponent) return 0;
    const RegisterTaps& degree = registerTaps[n];
    if ((shiftRegister & degree.test) == 0) {
        shiftRegister <<= 1;
        return 0;
    }
    shiftRegister = ((shiftRegister ^ degree.taps) << 1) | 1u;
    return 1;
}

Status PRBS_Generator(PrbsParams params, Nodelist* outputs, const ModelReport& report) {
    if (params.patternType == "custom") return PRBS_Custom(params, outputs, report);
    const auto* type = std::find_if(
        std::begin(patternTypes), std::end(patternTypes),
        [&](const PatternType& candidate) { return candidate.word == params.patternType; });
    if (type == std::end(patternTypes)) {
        return RefuseType(params,
                          "Allowed types are PRBS, alternating, one, zero, single, and custom. \n",
                          report);
    }
    if (CheckLength(params, report) != Status::Success) return Status::Error;
    Owned<BinSig> pattern;
    const Status made =
        MakePattern(pattern, params, PatternSize(params.patternLength), generatorTexts, report);
    if (made != Status::Success) return made;
    type->fill(params, *pattern);
    return StorePattern(params, *pattern, Ends::Clear, outputs, report);
}

Status PRBS_Custom(const PrbsParams& params, Nodelist* outputs, const ModelReport& report) {
    if (params.patternType != "custom") {
        return RefuseType(params, "Allowed type is 'custom'. \n", report);
    }
    if (CheckLength(params, report) != Status::Success) return Status::Error;
    Owned<BinSig> pattern;
    const Status made =
        MakePattern(pattern, params, PatternSize(params.patternLength), customTexts, report);
    if (made != Status::Success) return made;
    std::string text, reason;
    if (!ReadWholeFile(params.filename, text, reason, maxPatternFileBytes)) {
        static_cast<void>(report.Fail(FillIn("Can not open file: %s.\n", {params.filename})));
        return report.Refuse("pattern file '", params.filename, "': ", reason);
    }
    FillFromText(text, *pattern);
    return StorePattern(params, *pattern, Ends::Keep, outputs, report);
}

Status RunPrbs(const ModelCall& call) {
    return PRBS_Generator(ReadPrbsParams(call.component.parameters), call.outputs, call);
}

}  // namespace photrak

// Bit pattern generator: the model PseudoRandomBinarySequenceGenerator, from which every modulated
// source of a link starts. A pattern of given settings is the same in every run, sweep and trial.
#pragma once

#include <string>

#include "kernel/driver.h"

namespace photrak {

/// The shift register's table ends here; longer patterns are refused for every pattern type.
inline constexpr std::int32_t maxPatternExponent = 18;

struct PrbsParams {
    std::string patternType;         // "PRBS", "alternating", "one", "zero", "single", "custom"
    std::string filename;            // of the custom pattern
    double bitRate = 0.0;            // bit/s
    double startTime = 0.0;          // s
    std::int32_t patternLength = 0;  // exponent n of 2^n bits, and degree of the shift register
    std::int32_t offset = 0;         // rotation on the first output port, bits
    std::int32_t shift = 0;          // further rotation from each port to the next, bits
    std::int32_t preBits = 0;        // leading bits forced to 0
    std::int32_t postBits = 0;       // trailing bits forced to 0
    std::uint32_t shiftRegister = 127;
};

/// The rows of its table, and the record read from them.
std::vector<ParamSpec> PrbsParamSpecs();
PrbsParams ReadPrbsParams(Parameter* parameters);

/// One step of the shift register of degree n (0 to maxPatternExponent): the next bit.
int StepShiftRegister(std::int32_t n, std::uint32_t& shiftRegister);

/// Stores one BinSig of 2^n bits in each output cell. Success, or an error with a text appended.
Status PRBS_Generator(PrbsParams params, Nodelist* outputs, const ModelReport& report);
/// The same for the type "custom": the bits come from a text file of integers.
Status PRBS_Custom(const PrbsParams& params, Nodelist* outputs, const ModelReport& report);

/// The model: reads the parameters, generates.
Status RunPrbs(const ModelCall& call);

}  // namespace photrak

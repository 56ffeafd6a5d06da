// The data file of the custom signal generator: a time and one or two values to a line, turned into
// a table of complex samples.
#pragma once

#include <string>
#include <string_view>

#include "base/complex.h"
#include "base/memory.h"
#include "kernel/model_report.h"

namespace photrak {

/// More lines are refused: the table is there to be resampled.
inline constexpr std::int32_t maxCustomLines = std::int32_t{1} << 22;

/// What the values of a line mean, by the name of the signal type.
struct CustomSampleForm {
    std::string_view signalType;
    PhotrakSigType sigType;    // of the signal made from it
    PhotrakUnitType unitType;  // of an electrical signal
    int values;                // 1 or 2, after the time
    Complex (*sample)(double first, double second);
};
/// Null for a name that is none of the eight.
const CustomSampleForm* FindCustomSampleForm(std::string_view signalType);

/// One-based arrays; the times rise.
struct CustomTable {
    std::int32_t rows = 0;
    OwnedBlock<double> time;             // s
    OwnedBlock<double> real, imaginary;  // V, A or sqrt(W)
};

/// Reads the file into the table. An error names the file and the line.
Status ReadCustomTable(const CustomSampleForm& form, const std::string& filename,
                       CustomTable& table, const ModelReport& report);

}  // namespace photrak

// The receiver's front-end amplifier: its transfer array, current in, voltage out, from two corner
// frequencies or from a measured table.
#pragma once

#include <string>
#include <string_view>

#include "base/memory.h"
#include "kernel/driver.h"

namespace photrak {

struct FrontEndParams {
    std::string modelType;  // "defined" or "custom"
    double tZ = 0.0;        // transimpedance, V/A
    double zero = 0.0;      // low corner, Hz
    double pole = 0.0;      // high corner, Hz
    std::string filename;   // of the custom table

    // The custom table: rows 1..count, frequency (Hz) strictly rising or falling, transfer in V/A.
    OwnedBlock<double> frequency, realPart, imagPart;
    std::int32_t count = 0;
};

/// The table of a custom front end is read apart.
inline constexpr ParamRow<FrontEndParams> frontEndRows[] = {
    {"fe_modeltype", &FrontEndParams::modelType, "defined", Words{"defined custom"}},
    {"fe_tZ", &FrontEndParams::tZ, 500.0},
    {"fe_zero", &FrontEndParams::zero, 30e3},
    {"fe_pole", &FrontEndParams::pole, 15e9},
    {"fe_filename", &FrontEndParams::filename, ""}};

/// Fills the table from the text of a file: a number of rows n, then in each line a frequency and
/// the two parts of the transfer; what follows n rows is not looked at. A text that ends
/// early gives the rows that it has. Anything else leaves the table empty and a reason (one clause,
/// no new line) in `reason`.
Status ReadFrontEndTable(std::string_view text, FrontEndParams& frontEnd, std::string& reason);

/// "Error reading receiver front end custom data file 'NAME'\n".
std::string BadTableText(const FrontEndParams& frontEnd);

/// Fills H[1..esOut->noPoints], V/A, in transform order. esOut tells the sampling and must be in
/// the frequency domain.
Status FrontEnd(const ElecSig* esOut, const FrontEndParams& frontEnd, Complex* H,
                const ModelReport& report);

}  // namespace photrak

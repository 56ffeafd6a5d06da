// What an optical filter does to a field of a given optical frequency: the record of its
// parameters, filled by filter and multiplexer blocks alike, and the response prepared from it.
#pragma once

#include <cstdint>
#include <string>

#include "base/complex.h"
#include "files/transfer_matrix.h"
#include "kernel/model_report.h"

namespace photrak {

enum class Inversion { None = 0, Power = 1, Amplitude = 2 };

struct OpticalFilterRecord {
    std::string type = "Gaussian";  // a word that names no filter: light passes as it is
    std::string filename = "none";  // transfer matrix file of the custom types
    bool usePadding = true;         // twice the window, with flat ends
    bool shiftCarrier = false;      // channels move onto the filter's frequency
    std::int32_t order = 1;         // of the Gaussian
    double loss = 0.0;              // dB
    Inversion inversion = Inversion::None;
    double wavelength = 1.0;           // center, m; "Custom2": offset from that of the file
    double BW = 1.0;                   // m; a scale factor of "Custom2"
    double BW0dB = 1e-09;              // flat width of the trapezoid, m
    double FSR = 1.21e-07;             // free spectral range, m
    double reflectivity = 0.0;         // of the mirrors; 0: from FSR and BW
    std::int32_t row = 1, column = 1;  // element of a custom file
};

/// A width in m around a center in m as a width in Hz, or the other way round.
double OppositeWidth(double center, double width);
/// Amplitude factor of a loss in dB.
double LossFactor(double decibels);

/// A response ready for use; filled by PrepareFilterResponse.
struct FilterResponse {
    OpticalFilterRecord record;
    /// H without loss at f, Hz; null when the type names no filter.
    Complex (*value)(const FilterResponse& response, double f) = nullptr;
    double nu0 = 0.0, dnu = 0.0;   // center and width, Hz
    double low = 0.0, high = 0.0;  // pass band or flat top, Hz
    double slope = 0.0;            // of the trapezoid: decades over 10 Hz
    double dark = 0.0;             // half widths from which on the Gaussian is 0 as a double
    double R = 0.0, T = 1.0;       // reflectivity of the mirrors, and 1 - R
    double tau = 0.0;              // phase of a single pass, rad/Hz
    double L = 1.0;                // amplitude factor of the loss
    TransferMatrix matrix;         // of a custom type
    std::string matrixFile;        // that it was read from; empty without

    bool PassesAll() const { return !value; }
    /// The field's factor at the optical frequency f in Hz, loss included; 1 for no filter.
    Complex operator()(double f) const { return value ? L * value(*this, f) : MakeComplex(1.0); }
};

/// Checks the record and works out what the response needs; reads the file of a custom type unless
/// the response holds it from a record before. A file that cannot be opened gives "ERROR: can't
/// open custom filter file.\n" and its reason.
Status PrepareFilterResponse(const OpticalFilterRecord& record, FilterResponse& response,
                             const ModelReport& report);

}  // namespace photrak

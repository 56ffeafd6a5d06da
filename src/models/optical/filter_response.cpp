// One row for each type: what it prepares and its value at a frequency. G is the plain amplitude of
// the real responses, A that of the resonator.
#include "models/optical/filter_response.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "base/text.h"
#include "base/units.h"
#include "models/common/parameter_limits.h"
#include "models/common/refusals.h"
#include "models/common/spectrum_grid.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

constexpr double stopBand = 1e-32;     // of the ideal filter: plots show a floor and no hole
constexpr double endlessSlope = 1e30;  // of a trapezoid that is a rectangle

/// The complement of a real amplitude.
Complex Invert(Inversion inversion, double G) {
    switch (inversion) {
        case Inversion::Power:
            return MakeComplex(std::sqrt(std::max(0.0, 1.0 - G * G)));
        case Inversion::Amplitude:
            return MakeComplex(1.0 - G);
        default:
            return MakeComplex(G);
    }
}

/// Center and width in frequency, of all but the custom types.
Status PrepareBand(FilterResponse& response, std::string& errorText) {
    const OpticalFilterRecord& record = response.record;
    const Status status = CheckRange(record.owner, "BW", record.BW, Range::Positive, errorText);
    if (status != Status::Success) return status;
    response.nu0 = lightSpeed / record.wavelength;
    response.dnu = OppositeWidth(record.wavelength, record.BW);
    if (response.dnu > 0.0 && std::isfinite(response.dnu)) return Status::Success;
    return RefuseComponent(record.owner,
                           Concat("the bandwidth ", record.BW, " m does not fit the wavelength ",
                                  record.wavelength, " m"),
                           errorText);
}

// --- Gaussian ---

Status PrepareGaussian(FilterResponse& response, std::string& errorText) {
    const OpticalFilterRecord& record = response.record;
    if (record.order < 1) {
        return RefuseParameter(record.owner, "order", record.order, "at least 1", errorText);
    }
    return PrepareBand(response, errorText);
}

Complex Gaussian(const FilterResponse& response, double f) {
    const double halfPower = std::log(std::numbers::sqrt2);
    const double x = 2.0 * (f - response.nu0) / response.dnu;
    const double power =
        response.record.order == 1 ? x * x : std::pow(std::fabs(x), 2.0 * response.record.order);
    return Invert(response.record.inversion, std::exp(-halfPower * power));
}

// --- Ideal ---

Status PrepareIdeal(FilterResponse& response, std::string& errorText) {
    const Status status = PrepareBand(response, errorText);
    response.low = response.nu0 - response.dnu / 2.0;
    response.high = response.nu0 + response.dnu / 2.0;
    return status;
}

Complex Ideal(const FilterResponse& response, double f) {
    // Both inversions are the same, and either way the edges pass.
    const bool passes = response.record.inversion == Inversion::None
                            ? f >= response.low && f <= response.high
                            : f <= response.low || f >= response.high;
    return MakeComplex(passes ? 1.0 : stopBand);
}

// --- Trapezoidal ---

Status PrepareTrapezoid(FilterResponse& response, std::string& errorText) {
    const OpticalFilterRecord& record = response.record;
    Status status = PrepareBand(response, errorText);
    if (status == Status::Success) {
        status = CheckRange(record.owner, "BW0dB", record.BW0dB, Range::NotNegative, errorText);
    }
    if (status != Status::Success) return status;
    const double flat =
        record.BW0dB >= record.BW
            ? response.dnu
            : std::min(response.dnu, OppositeWidth(record.wavelength, record.BW0dB));
    response.low = response.nu0 - flat / 2.0;
    response.high = response.nu0 + flat / 2.0;
    // The amplitude falls to 10^-0.15, half the power, over half of what the flat top leaves of
    // dnu.
    response.slope = response.dnu == flat ? endlessSlope : 3.0 / (response.dnu - flat);
    return status;
}

Complex Trapezoidal(const FilterResponse& response, double f) {
    double G = 1.0;
    if (f > response.high) G = std::pow(0.1, (f - response.high) * response.slope * 0.1);
    if (f < response.low) G = std::pow(10.0, (f - response.low) * response.slope * 0.1);
    return Invert(response.record.inversion, G);
}

// --- Fabry-Perot ---

/// Mirrors that give the resonator its free range and width: R + 1/R = 2 + (tau dnu)^2.
Status PrepareFromFreeRange(FilterResponse& response, std::string& errorText) {
    const OpticalFilterRecord& record = response.record;
    const Status status = CheckRange(record.owner, "FSR", record.FSR, Range::Positive, errorText);
    if (status != Status::Success) return status;
    const double lambda = record.wavelength;
    const double freeRange = lambda > record.FSR / 2.0
                                 ? OppositeWidth(lambda, record.FSR)
                                 : (1.0 / lambda - 1.0 / (lambda + record.FSR)) * lightSpeed;
    response.tau = pi / freeRange;
    const double d = std::pow(response.tau * response.dnu, 2) + 2.0;
    // The smaller root, without the difference of nearly equal numbers.
    response.R = 2.0 / (d + std::sqrt(d * d - 4.0));
    return Status::Success;
}

Status PrepareFabryPerot(FilterResponse& response, std::string& errorText) {
    const OpticalFilterRecord& record = response.record;
    if (!(record.reflectivity >= 0.0 && record.reflectivity < 1.0)) {
        return RefuseParameter(record.owner, "reflectivity", record.reflectivity,
                               "at least 0 and below 1", errorText);
    }
    Status status = PrepareBand(response, errorText);
    if (status != Status::Success) return status;
    if (record.reflectivity == 0.0) {
        status = PrepareFromFreeRange(response, errorText);
    } else {
        response.R = record.reflectivity;
        response.tau = pi / (std::sqrt(response.R) / (1.0 - response.R) * response.dnu * pi);
    }
    if (status != Status::Success) return status;
    if (response.R < 1.0 && response.tau > 0.0 && std::isfinite(response.tau)) return status;
    return RefuseComponent(record.owner, "no resonator has this bandwidth and free spectral range",
                           errorText);
}

Complex FabryPerot(const FilterResponse& response, double f) {
    const double phi = (f - response.nu0) * response.tau, R = response.R;
    const Complex once{std::cos(phi), std::sin(phi)};
    const Complex twice{std::cos(2.0 * phi), std::sin(2.0 * phi)};
    const Complex one = MakeComplex(1.0);
    const Complex A = ((1.0 - R) * once) / (one - R * twice);
    switch (response.record.inversion) {
        case Inversion::Power:
            // By design: the complement of the field's square, not of its power. Off
            // resonance the two outputs together exceed the input.
            return Sqrt(one - A * A);
        case Inversion::Amplitude:
            return one - A;
        default:
            return A;
    }
}

// --- Custom ---

Status PrepareCustom(FilterResponse& response, std::string& errorText) {
    const OpticalFilterRecord& record = response.record;
    std::string text, reason;
    if (!ReadWholeFile(record.filename, text, reason, maxMatrixFileBytes)) {
        errorText += "ERROR: can't open custom filter file.\n";
        return RefuseComponent(record.owner, Concat("file '", record.filename, "': ", reason),
                               errorText);
    }
    if (ReadTransferMatrix(text, record.filename, response.matrix, reason) != Status::Success) {
        return RefuseComponent(record.owner, reason, errorText);
    }
    const TransferMatrix& matrix = response.matrix;
    if (matrix.points == 0) {
        return RefuseComponent(
            record.owner, Concat("'", record.filename, "' is no transfer matrix file"), errorText);
    }
    if (record.row >= 1 && record.row <= matrix.rows && record.column >= 1 &&
        record.column <= matrix.columns) {
        return Status::Success;
    }
    return RefuseComponent(
        record.owner,
        Concat("'", record.filename, "' has ", matrix.rows, " rows and ", matrix.columns,
               " columns, no element (", record.row, ", ", record.column, ")"),
        errorText);
}

Status PrepareScaledCustom(FilterResponse& response, std::string& errorText) {
    const OpticalFilterRecord& record = response.record;
    const Status status = CheckRange(record.owner, "BW", record.BW, Range::Positive, errorText);
    return status == Status::Success ? PrepareCustom(response, errorText) : status;
}

Complex AtFileWavelength(const FilterResponse& response, double wavelength) {
    return response.matrix.At(response.record.row, response.record.column, wavelength);
}

Complex Custom1(const FilterResponse& response, double f) {
    return AtFileWavelength(response, lightSpeed / f);
}

/// The file's width, scaled by BW, around the center.
Complex Custom2(const FilterResponse& response, double f) {
    const double low = response.matrix.firstWavelength, high = response.matrix.lastWavelength;
    const double BW = response.record.BW;
    const double start = (high + low) / 2.0 - (high - low) / 2.0 * BW + response.record.wavelength;
    return AtFileWavelength(response, (lightSpeed / f - start) / BW + low);
}

/// The file's whole range on center +- BW/2.
Complex Custom3(const FilterResponse& response, double f) {
    const double low = response.matrix.firstWavelength, high = response.matrix.lastWavelength;
    const double BW = response.record.BW, start = response.record.wavelength - BW / 2.0;
    return AtFileWavelength(response, (lightSpeed / f - start) * (high - low) / BW + low);
}

struct FilterType {
    std::string_view word;
    Status (*prepare)(FilterResponse& response, std::string& errorText);
    Complex (*value)(const FilterResponse& response, double f);
};
constexpr FilterType filterTypes[] = {
    {"Gaussian", PrepareGaussian, Gaussian},  {"FabryPerot", PrepareFabryPerot, FabryPerot},
    {"Ideal", PrepareIdeal, Ideal},           {"Trapezoidal", PrepareTrapezoid, Trapezoidal},
    {"Custom1", PrepareCustom, Custom1},      {"Custom2", PrepareScaledCustom, Custom2},
    {"Custom3", PrepareScaledCustom, Custom3}};

constexpr ParameterLimit<OpticalFilterRecord> limits[] = {
    {"wavelength", &OpticalFilterRecord::wavelength, Range::Positive},
    {"loss", &OpticalFilterRecord::L, Range::Finite}};

}  // namespace

double OppositeWidth(double center, double width) {
    return (1.0 / (center - width / 2.0) - 1.0 / (center + width / 2.0)) * lightSpeed;
}

double LossFactor(double decibels) {
    return std::pow(10.0, -decibels / 20.0);
}

Status PrepareFilterResponse(const OpticalFilterRecord& record, FilterResponse& response,
                             std::string& errorText) {
    response = FilterResponse{};
    response.record = record;
    const auto* type = std::find_if(std::begin(filterTypes), std::end(filterTypes),
                                    [&](const FilterType& row) { return row.word == record.type; });
    if (type == std::end(filterTypes)) return Status::Success;
    Status status = CheckLimits<OpticalFilterRecord>(record, limits, errorText);
    if (status == Status::Success) status = type->prepare(response, errorText);
    if (status == Status::Success) response.value = type->value;
    return status;
}

}  // namespace photrak

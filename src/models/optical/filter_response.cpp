// One row for each type: what it prepares and its value at a frequency. G is the plain amplitude of
// the real responses, A that of the resonator.
#include "models/optical/filter_response.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "base/units.h"
#include "kernel/param_table.h"
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
Status PrepareBand(FilterResponse& response, const ModelReport& report) {
    const OpticalFilterRecord& record = response.record;
    const Status status = CheckRange(report, "BW", record.BW, Range::Positive);
    if (status != Status::Success) return status;
    response.nu0 = lightSpeed / record.wavelength;
    response.dnu = OppositeWidth(record.wavelength, record.BW);
    if (response.dnu > 0.0 && std::isfinite(response.dnu)) return Status::Success;
    return report.Refuse("the bandwidth ", record.BW, " m does not fit the wavelength ",
                         record.wavelength, " m");
}

// --- Gaussian ---

const double halfPower = std::log(std::numbers::sqrt2);

Status PrepareGaussian(FilterResponse& response, const ModelReport& report) {
    const OpticalFilterRecord& record = response.record;
    if (record.order < 1) {
        return report.RefuseValue("order", record.order, "at least 1");
    }
    // exp(-746) is below half the smallest double; the margin covers the rounding of the power.
    constexpr double darkExponent = 746.0, margin = 1.001;
    response.dark = margin * std::pow(darkExponent / halfPower, 0.5 / record.order);
    return PrepareBand(response, report);
}

Complex Gaussian(const FilterResponse& response, double f) {
    const double x = 2.0 * (f - response.nu0) / response.dnu;
    if (std::fabs(x) > response.dark) return Invert(response.record.inversion, 0.0);
    const double power =
        response.record.order == 1 ? x * x : std::pow(std::fabs(x), 2.0 * response.record.order);
    return Invert(response.record.inversion, std::exp(-halfPower * power));
}

// --- Ideal ---

Status PrepareIdeal(FilterResponse& response, const ModelReport& report) {
    const Status status = PrepareBand(response, report);
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

Status PrepareTrapezoid(FilterResponse& response, const ModelReport& report) {
    const OpticalFilterRecord& record = response.record;
    Status status = PrepareBand(response, report);
    if (status == Status::Success) {
        status = CheckRange(report, "BW0dB", record.BW0dB, Range::NotNegative);
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

/// A width in m around a center in m as a width in Hz, without the difference of nearly equal
/// numbers that OppositeWidth takes: a resonator may be narrower than the center by any factor.
double NarrowWidth(double center, double width) {
    return lightSpeed * width / ((center - width / 2.0) * (center + width / 2.0));
}

/// Mirrors that give the resonator its free range and width: R + 1/R = 2 + u^2 with u = tau dnu.
/// The smaller root, and with it 1 - R, which is all that counts where R comes near 1.
Status PrepareFromFreeRange(FilterResponse& response, const ModelReport& report) {
    const OpticalFilterRecord& record = response.record;
    const Status status = CheckRange(report, "FSR", record.FSR, Range::Positive);
    if (status != Status::Success) return status;
    const double lambda = record.wavelength;
    const double freeRange = lambda > record.FSR / 2.0
                                 ? NarrowWidth(lambda, record.FSR)
                                 : (1.0 / lambda - 1.0 / (lambda + record.FSR)) * lightSpeed;
    response.tau = pi / freeRange;
    const double u = response.tau * response.dnu, root = std::sqrt(u * u + 4.0);
    const double divisor = u * u + 2.0 + u * root;
    response.R = 2.0 / divisor;
    response.T = u * (u + root) / divisor;
    return Status::Success;
}

Status PrepareFabryPerot(FilterResponse& response, const ModelReport& report) {
    const OpticalFilterRecord& record = response.record;
    if (!(record.reflectivity >= 0.0 && record.reflectivity < 1.0)) {
        return report.RefuseValue("reflectivity", record.reflectivity, "at least 0 and below 1");
    }
    Status status = PrepareBand(response, report);
    if (status != Status::Success) return status;
    response.dnu = NarrowWidth(record.wavelength, record.BW);
    if (record.reflectivity == 0.0) {
        status = PrepareFromFreeRange(response, report);
    } else {
        response.R = record.reflectivity;
        response.T = 1.0 - response.R;
        response.tau = response.T / (std::sqrt(response.R) * response.dnu);
    }
    if (status != Status::Success) return status;
    if (response.T > 0.0 && response.tau > 0.0 && std::isfinite(response.tau)) return status;
    return report.Refuse("no resonator has this bandwidth and free spectral range");
}

/// A = T exp(j phi) / (1 - R exp(2 j phi)), with T = 1 - R and exp(j phi) taken out of both.
Complex FabryPerot(const FilterResponse& response, double f) {
    const double phi = (f - response.nu0) * response.tau, R = response.R, T = response.T;
    const Complex one = MakeComplex(1.0);
    const Complex A = MakeComplex(T) / Complex{T * std::cos(phi), -(1.0 + R) * std::sin(phi)};
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

Status ReadCustomFile(const std::string& filename, FilterResponse& response,
                      const ModelReport& report) {
    std::string text, reason;
    if (!ReadWholeFile(filename, text, reason, maxMatrixFileBytes)) {
        static_cast<void>(report.Fail("ERROR: can't open custom filter file.\n"));
        return report.Refuse("file '", filename, "': ", reason);
    }
    if (ReadTransferMatrix(text, filename, response.matrix, reason) != Status::Success) {
        return report.Refuse(reason);
    }
    if (response.matrix.points == 0) {
        return report.Refuse("'", filename, "' is no transfer matrix file");
    }
    response.matrixFile = filename;
    return Status::Success;
}

Status PrepareCustom(FilterResponse& response, const ModelReport& report) {
    const OpticalFilterRecord& record = response.record;
    if (response.matrixFile.empty() || response.matrixFile != record.filename) {
        const Status status = ReadCustomFile(record.filename, response, report);
        if (status != Status::Success) return status;
    }
    const TransferMatrix& matrix = response.matrix;
    if (record.row >= 1 && record.row <= matrix.rows && record.column >= 1 &&
        record.column <= matrix.columns) {
        return Status::Success;
    }
    return report.Refuse("'", record.filename, "' has ", matrix.rows, " rows and ", matrix.columns,
                         " columns, no element (", record.row, ", ", record.column, ")");
}

Status PrepareScaledCustom(FilterResponse& response, const ModelReport& report) {
    const OpticalFilterRecord& record = response.record;
    const Status status = CheckRange(report, "BW", record.BW, Range::Positive);
    return status == Status::Success ? PrepareCustom(response, report) : status;
}

Complex AtFileWavelength(const FilterResponse& response, double wavelength) {
    return response.matrix.At(response.record.row, response.record.column, wavelength);
}

Complex Custom1(const FilterResponse& response, double f) {
    return AtFileWavelength(response, lightSpeed / f);
}

/// The file with its width scaled by BW and its center moved by the wavelength, which may be 0.
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
    Status (*prepare)(FilterResponse& response, const ModelReport& report);
    Complex (*value)(const FilterResponse& response, double f);
};
constexpr FilterType filterTypes[] = {
    {"Gaussian", PrepareGaussian, Gaussian},  {"FabryPerot", PrepareFabryPerot, FabryPerot},
    {"Ideal", PrepareIdeal, Ideal},           {"Trapezoidal", PrepareTrapezoid, Trapezoidal},
    {"Custom1", PrepareCustom, Custom1},      {"Custom2", PrepareScaledCustom, Custom2},
    {"Custom3", PrepareScaledCustom, Custom3}};

}  // namespace

double OppositeWidth(double center, double width) {
    return (1.0 / (center - width / 2.0) - 1.0 / (center + width / 2.0)) * lightSpeed;
}

double LossFactor(double decibels) {
    return std::pow(10.0, -decibels / 20.0);
}

Status PrepareFilterResponse(const OpticalFilterRecord& record, FilterResponse& response,
                             const ModelReport& report) {
    FilterResponse next;
    next.matrix = std::move(response.matrix);
    next.matrixFile = std::move(response.matrixFile);
    response = std::move(next);
    response.record = record;
    response.L = LossFactor(record.loss);
    const auto* type = std::find_if(std::begin(filterTypes), std::end(filterTypes),
                                    [&](const FilterType& row) { return row.word == record.type; });
    if (type == std::end(filterTypes)) return Status::Success;
    const bool isOffset = type->value == Custom2 && !record.shiftCarrier;
    Status status = CheckRange(report, "wavelength", record.wavelength,
                               isOffset ? Range::Finite : Range::Positive);
    if (status == Status::Success) status = CheckRange(report, "loss", record.loss, Range::Finite);
    if (status == Status::Success) status = type->prepare(response, report);
    if (status == Status::Success) response.value = type->value;
    return status;
}

}  // namespace photrak

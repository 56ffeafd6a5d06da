// The transfer matrix of a device with several optical ports: one complex field factor for each
// pair of ports over a uniform grid of wavelengths, and its file. Custom filters take single
// elements of the same files.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/complex.h"
#include "base/memory.h"
#include "base/status.h"

namespace photrak {

inline constexpr std::int32_t maxMatrixPorts = 64;  // rows, and columns
inline constexpr std::int32_t maxMatrixPoints = 1000000;
inline constexpr std::size_t maxMatrixFileBytes = std::size_t{1} << 28;

struct TransferMatrix {
    std::int32_t rows = 0, columns = 0;                  // input and output ports
    std::int32_t points = 0;                             // wavelengths; 0 is an empty matrix
    double firstWavelength = 0.0, lastWavelength = 0.0;  // m; of no meaning with one point
    OwnedBlock<Complex> values;  // rows * columns runs of `points` elements, row after row

    /// The element values over the wavelengths; row and column from 1.
    Complex* Element(std::int32_t row, std::int32_t column) const {
        return values.get() + (std::int64_t{row - 1} * columns + column - 1) * points;
    }
    /// The element at a wavelength in m: interpolated linearly in its real and imaginary parts, 0
    /// at and beyond the ends of the grid. One point holds for every wavelength.
    Complex At(std::int32_t row, std::int32_t column, double wavelength) const;
};

/// An empty matrix becomes one of zeros; false when memory is exhausted.
[[nodiscard]] bool SizeTransferMatrix(TransferMatrix& matrix, std::int32_t rows,
                                      std::int32_t columns, std::int32_t points);

/// Reads a file's text; `name` is the file's for messages. A text that does not begin with the
/// format's word leaves the matrix as it was, with success. So does a faulty file, with an error:
/// "NAME:LINE: REASON" is appended.
Status ReadTransferMatrix(std::string_view text, std::string_view name, TransferMatrix& matrix,
                          std::string& errorText);

}  // namespace photrak

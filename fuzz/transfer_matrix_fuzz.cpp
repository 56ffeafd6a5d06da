// Transfer matrices from a text; what was read is looked up between and beyond its ends.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "files/transfer_matrix.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    TransferMatrix matrix;
    std::string errorText;
    const Status status =
        ReadTransferMatrix({reinterpret_cast<const char*>(data), size}, "input", matrix, errorText);
    if ((status == Status::Success) != errorText.empty()) std::abort();
    if (matrix.points == 0) return 0;
    const double first = matrix.firstWavelength, last = matrix.lastWavelength;
    for (const double wavelength : {first, std::nextafter(first, last), 0.3 * first + 0.7 * last,
                                    std::nextafter(last, first), last, 1.0 / 0.0}) {
        const Complex element = matrix.At(matrix.rows, matrix.columns, wavelength);
        if (!std::isfinite(element.re) || !std::isfinite(element.im)) std::abort();
    }
    return 0;
}

// The samples of a custom signal from a file, one value and two values to a line: rising times and
// finite samples, or an error.
#include <cmath>

#include "input_file.h"
#include "models/sources/custom_table.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    const InputFile input(data, size);
    for (const char* type : {"VOLTAGE", "OPTICALDBM", "OPTICAL_AMP_PHASE"}) {
        const CustomSampleForm* form = FindCustomSampleForm(type);
        CustomTable table;
        std::string errorText;
        const Status status =
            ReadCustomTable(*form, input.Path(), table, ModelReport{"fuzz", errorText});
        Require((status == Status::Success) == errorText.empty());
        if (status != Status::Success) continue;
        for (std::int32_t i = 2; i <= table.rows; ++i) {
            Require(table.time.get()[i] > table.time.get()[i - 1]);
            Require(std::isfinite(table.real.get()[i]) && std::isfinite(table.imaginary.get()[i]));
        }
    }
    return 0;
}

// Saturation curves of an amplifier from a text, looked up within and beyond what they cover.
#include <cstddef>
#include <cstdint>
#include <string>

#include "base/escape.h"
#include "fuzz_support.h"
#include "models/optical/s_curves.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace photrak;
    static SilentMessages silent;
    Host host = CurrentHost();
    host.messages = &silent;
    const HostScope scope(host);
    SCurves curves;
    std::string errorText;
    const ModelReport report{"fuzz", errorText};
    const Status status = ReadSCurves({reinterpret_cast<const char*>(data), size}, "input",
                                      "%s does not begin with 0", curves, report);
    Require((status == Status::Error) == !errorText.empty());
    if (curves.empty()) return 0;
    const EscapeLevel level(/*armed=*/true);
    try {
        for (const double power : {0.0, 1e-12, 1e-3, 1e300}) {
            const SCurvePair pair = ChooseSCurves(curves, power);
            for (const double wavelength : {0.0, 1530.0, 1550.0, 1e300})
                static_cast<void>(SCurveValue(pair, wavelength));
        }
    } catch (const Escape&) {
        // Wavelengths so far apart that their distances are one number: the run fails.
    }
    return 0;
}

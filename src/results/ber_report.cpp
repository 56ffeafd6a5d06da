// A list, searched by name: a topology holds few testers.
#include "results/ber_report.h"

#include <algorithm>

namespace photrak {
namespace {

std::vector<BerReading>& Report() {
    static std::vector<BerReading> report;
    return report;
}

}  // namespace

void ReportBer(std::string_view component, double BER, double Q) {
    std::vector<BerReading>& report = Report();
    auto place = std::find_if(report.begin(), report.end(), [&](const BerReading& reading) {
        return reading.component == component;
    });
    if (place == report.end()) place = report.insert(place, {std::string(component), 0.0, 0.0});
    place->BER = BER;
    place->Q = Q;
}

const std::vector<BerReading>& BerReport() {
    return Report();
}

void ResetBerReport() {
    Report().clear();
}

}  // namespace photrak
